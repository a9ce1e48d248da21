#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "utility/niveximage.h"

#include "core/ibufferprovider.h"
#include "core/value.h"

namespace Nivex::DataProcessing::Core {

/// A picture as a pin value, or nothing, or an error. Its memory is shared with the image that it was built from
/// and with all copies; nobody may write to it any more.
class GENICAM_API Image : public ValueBase
{
public:
    /// An empty image.
    Image() = default;
    /// @param image lends its memory, its own or attached, which lives as long as one of the two. An image that is
    ///     not valid gives an empty Image.
    /// @param bufferProvider gives the memory for a copy; null: memory of the image's own.
    /// @param copy asks for a copy of the picture, for memory that its user will write to again.
    Image(const CNivexImage& image, const std::shared_ptr<IBufferProvider>& bufferProvider, bool copy);
    /// Raises InvalidArgumentException for null.
    explicit Image(std::shared_ptr<IError> error) : ValueBase(std::move(error)) {}

    void setError(std::shared_ptr<IError> error) override;

    // All 0, null or Undefined for an empty image and for one that holds an error.

    EPixelType getPixelType() const { return image_.GetPixelType(); }
    std::uint32_t getWidth() const { return image_.GetWidth(); }         ///< In pixels.
    std::uint32_t getHeight() const { return image_.GetHeight(); }       ///< In rows.
    std::size_t getLinePadding() const { return image_.GetPaddingX(); }  ///< Bytes behind each row.
    std::size_t getImageSize() const { return image_.GetImageSize(); }   ///< Bytes of the picture with padding.
    const void* getDataConst() const { return image_.GetBuffer(); }      ///< The first byte of the picture.
    const void* getBufferConst() const { return image_.GetBuffer(); }    ///< The memory that holds the picture.
    std::size_t getBufferSize() const { return image_.GetAllocatedBufferSize(); }  ///< In bytes.

    /// The picture as an image of the SDK that shares the memory; not valid if there is none.
    const CNivexImage& getNivexImage() const { return image_; }

private:
    CNivexImage image_;
};

}  // namespace Nivex::DataProcessing::Core
