#include "core/image.h"

#include <cstring>

namespace Nivex::DataProcessing::Core {

namespace {

CNivexImage copyOf(const CNivexImage& image, const std::shared_ptr<IBufferProvider>& bufferProvider)
{
    CNivexImage copy;
    if (!bufferProvider) {
        copy.CopyImage(image);
        return copy;
    }
    const std::size_t size = image.GetImageSize();
    std::shared_ptr<std::byte> buffer = bufferProvider->getBuffer(size);
    std::byte* const address = buffer.get();
    std::memcpy(address, image.GetBuffer(), size);
    copy.AttachUserBuffer(address, size, image.GetPixelType(), image.GetWidth(), image.GetHeight(),
                          image.GetPaddingX(), image.GetOrientation(), [held = std::move(buffer)] {});
    return copy;
}

}  // namespace

Image::Image(const CNivexImage& image, const std::shared_ptr<IBufferProvider>& bufferProvider, bool copy)
    : image_(copy && image.IsValid() ? copyOf(image, bufferProvider) : image)
{}

void Image::setError(std::shared_ptr<IError> error)
{
    keepError(std::move(error));
    image_.Release();
}

}  // namespace Nivex::DataProcessing::Core
