// Image files of all formats: whatever the bytes, loading gives a whole picture within the limits or a failure of
// the platform's family.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "gcbase/exception.h"

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

using namespace Nivex;

namespace {

/// Reads every byte, so that a sanitizer sees what was not written and what lies outside.
bool isWhole(const CNivexImage& image)
{
    const auto* bytes = static_cast<const std::uint8_t*>(image.GetBuffer());
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < image.GetImageSize(); ++i) {
        sum += bytes[i];
    }
    volatile const std::uint32_t kept = sum;
    static_cast<void>(kept);
    return image.IsValid() && image.GetWidth() <= CImagePersistence::maxLoadDimension &&
           image.GetHeight() <= CImagePersistence::maxLoadDimension &&
           image.GetImageSize() <= CImagePersistence::maxLoadBytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CNivexImage image;
    try {
        CImagePersistence::LoadFromMemory(std::as_bytes(std::span(data, size)), image);
        if (!isWhole(image)) std::abort();
    } catch (const GenICam::GenericException&) {
        if (image.IsValid()) std::abort();
    }
    return 0;
}
