#pragma once

#include <functional>
#include <memory>

#include "gcbase/gcstring.h"

#include "utility/image.h"

namespace Nivex {

/// A picture with shared ownership of its memory: copies of the object share the buffer until one of them is
/// reset, loaded or released. The buffer is its own (allocated, 64-byte aligned) or attached from a user.
/// Reading the same buffer from several threads is safe, and so is letting go of it there; an object itself
/// is not synchronised. A moved-from object is empty.
class GENICAM_API CNivexImage : public IReusableImage
{
public:
    CNivexImage() = default;
    ~CNivexImage() override;
    CNivexImage(const CNivexImage&) = default;
    CNivexImage(CNivexImage&& other) noexcept { Swap(other); }
    CNivexImage& operator=(const CNivexImage& other);
    CNivexImage& operator=(CNivexImage&& other) noexcept;
    void Swap(CNivexImage& other) noexcept;

    bool IsValid() const override { return static_cast<bool>(buffer_); }
    EPixelType GetPixelType() const override { return pixelType_; }
    std::uint32_t GetWidth() const override { return width_; }
    std::uint32_t GetHeight() const override { return height_; }
    std::size_t GetPaddingX() const override { return paddingX_; }
    EImageOrientation GetOrientation() const override { return orientation_; }
    void* GetBuffer() override { return buffer_.get(); }
    const void* GetBuffer() const override { return buffer_.get(); }
    std::size_t GetImageSize() const override { return imageSize_; }

    /// Bytes that the buffer can hold; at least GetImageSize().
    std::size_t GetAllocatedBufferSize() const { return bufferSize_; }
    bool IsUserBufferAttached() const { return attached_; }
    /// True when no other object shares the buffer; false for an empty object. True also means that whatever
    /// other threads read through shares they have let go of is done, so that the buffer may be written.
    bool IsUnique() const;

    /// Raises BadAllocException, and leaves the object empty, if there is no memory; after any other refusal
    /// the object keeps what it held.
    void Reset(EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX = 0,
               EImageOrientation orientation = EImageOrientation::TopDown) override;
    void Release() override;

    /// Reads a file (BMP, JPEG, PNG, TIFF; told by its content, not its ending). See CImagePersistence::Load
    /// for the pixel types and limits. Raises RuntimeException that names file and cause; the object keeps
    /// what it held when it fails.
    void Load(const GenICam::gcstring& path);

    /// Copies the picture of another image. Raises InvalidArgumentException if that holds none.
    void CopyImage(const IImage& source);
    /// Copies a picture from memory, which may be this object's own. Raises InvalidArgumentException if
    /// `buffer` is null or shorter than the layout needs, and for what Reset refuses.
    void CopyImage(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                   std::uint32_t height, std::size_t paddingX, EImageOrientation orientation);

    /// Shows a user's memory as an image, without a copy. `releaseHandler`, if any, is called once, when the
    /// last image that shares the buffer lets go of it, on that thread; it must not throw. Refusals are those
    /// of CopyImage; the handler is not called then.
    void AttachUserBuffer(void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                          std::uint32_t height, std::size_t paddingX, EImageOrientation orientation,
                          std::function<void()> releaseHandler = {});

    /// Shows the picture of a grab result (a CGrabResultPtr) without a copy. The grab buffer stays out of its
    /// camera's queue until the last image that shares it lets go. Refusals are those of AttachUserBuffer, and
    /// that of a pointer without result.
    template <typename GrabResultPtr>
    void AttachGrabResultBuffer(const GrabResultPtr& result)
    {
        AttachUserBuffer(result->GetBuffer(), result->GetBufferSize(), result->GetPixelType(), result->GetWidth(),
                         result->GetHeight(), result->GetPaddingX(), EImageOrientation::TopDown,
                         [keptResult = result] {});
    }

private:
    std::shared_ptr<std::byte> buffer_;  ///< Null when empty; all other members then have the values below.
    std::size_t bufferSize_ = 0;
    std::size_t imageSize_ = 0;
    EPixelType pixelType_ = EPixelType::Undefined;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::size_t paddingX_ = 0;
    EImageOrientation orientation_ = EImageOrientation::TopDown;
    bool attached_ = false;
};

}  // namespace Nivex
