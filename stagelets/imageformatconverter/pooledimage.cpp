#include "imageformatconverter/pooledimage.h"

namespace Plugin::NivexStageletPackageBase {

void PooledImage::Reset(Nivex::EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                        std::size_t paddingX, Nivex::EImageOrientation orientation)
{
    const auto size = Nivex::ComputeImageSize(pixelType, width, height, paddingX);
    if (!provider_ || !size) {
        image_.Reset(pixelType, width, height, paddingX, orientation);  // Also refuses what has no size.
        return;
    }
    const std::shared_ptr<std::byte> memory = provider_->getBuffer(*size);
    image_.AttachUserBuffer(memory.get(), *size, pixelType, width, height, paddingX, orientation,
                            [memory] { static_cast<void>(memory); });
}

}  // namespace Plugin::NivexStageletPackageBase
