#include "utility/files/picture.h"

#include <cstdarg>
#include <cstdio>
#include <system_error>

#include "utility/imagepersistence.h"

namespace Nivex::Files {

void fail(const char* format, ...)
{
    char text[512];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    throw FormatError(text);
}

std::string systemText(int errorNumber)
{
    return std::generic_category().message(errorNumber);
}

void checkLoadLimits(EPixelType pixelType, std::uint64_t width, std::uint64_t height)
{
    constexpr std::uint64_t largest = CImagePersistence::maxLoadDimension;
    if (width == 0 || height == 0 || width > largest || height > largest) {
        fail("it claims %llu x %llu pixels; 1 to %llu are allowed each way",
             static_cast<unsigned long long>(width), static_cast<unsigned long long>(height),
             static_cast<unsigned long long>(largest));
    }
    const auto size =
        ComputeImageSize(pixelType, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), 0);
    if (!size || *size > CImagePersistence::maxLoadBytes) {
        fail("its %llu x %llu pixels would take %zu bytes; at most %zu are allowed",
             static_cast<unsigned long long>(width), static_cast<unsigned long long>(height), size.value_or(0),
             CImagePersistence::maxLoadBytes);
    }
}

std::byte* prepareImage(IReusableImage& image, EPixelType pixelType, std::uint64_t width, std::uint64_t height)
{
    checkLoadLimits(pixelType, width, height);
    image.Reset(pixelType, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    return static_cast<std::byte*>(image.GetBuffer());
}

}  // namespace Nivex::Files
