#pragma once

#include <memory>

#include "utility/niveximage.h"

#include "core/ibufferprovider.h"

namespace Plugin::NivexStageletPackageBase {

/// A destination for one conversion whose memory comes from a recipe's buffer provider, so that it is not fresh
/// memory, which the system would have to clear page by page, for each image. For one thread.
class PooledImage final : public Nivex::IReusableImage
{
public:
    /// A null provider gives memory of the image's own.
    explicit PooledImage(std::shared_ptr<Nivex::DataProcessing::Core::IBufferProvider> provider)
        : provider_(std::move(provider))
    {}

    bool IsValid() const override { return image_.IsValid(); }
    Nivex::EPixelType GetPixelType() const override { return image_.GetPixelType(); }
    std::uint32_t GetWidth() const override { return image_.GetWidth(); }
    std::uint32_t GetHeight() const override { return image_.GetHeight(); }
    std::size_t GetPaddingX() const override { return image_.GetPaddingX(); }
    Nivex::EImageOrientation GetOrientation() const override { return image_.GetOrientation(); }
    void* GetBuffer() override { return image_.GetBuffer(); }
    const void* GetBuffer() const override { return image_.GetBuffer(); }
    std::size_t GetImageSize() const override { return image_.GetImageSize(); }

    void Reset(Nivex::EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX = 0,
               Nivex::EImageOrientation orientation = Nivex::EImageOrientation::TopDown) override;
    void Release() override { image_.Release(); }

    /// The picture, which keeps its memory until its last user lets go.
    const Nivex::CNivexImage& getNivexImage() const { return image_; }

private:
    std::shared_ptr<Nivex::DataProcessing::Core::IBufferProvider> provider_;
    Nivex::CNivexImage image_;
};

}  // namespace Plugin::NivexStageletPackageBase
