#include "utility/niveximage.h"

#include <cstring>
#include <new>
#include <utility>

#include "gcbase/exception.h"

#include "utility/imagepersistence.h"

namespace Nivex {

namespace {

constexpr std::align_val_t bufferAlignment{64};

/// Calls the handler of an attached buffer when the last share of it goes.
class UserMemory
{
public:
    explicit UserMemory(std::function<void()> releaseHandler) noexcept : releaseHandler_(std::move(releaseHandler))
    {}
    ~UserMemory()
    {
        if (releaseHandler_) releaseHandler_();
    }
    UserMemory(const UserMemory&) = delete;
    UserMemory& operator=(const UserMemory&) = delete;

private:
    std::function<void()> releaseHandler_;
};

std::shared_ptr<std::byte> allocate(std::size_t size)
{
    void* memory = ::operator new(size, bufferAlignment, std::nothrow);
    if (!memory) GENICAM_THROW(BadAllocException, "There is no memory for an image of %zu bytes.", size);
    return {static_cast<std::byte*>(memory), [](std::byte* bytes) { ::operator delete(bytes, bufferAlignment); }};
}

/// The size of a layout.
std::size_t layoutSize(EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX)
{
    const auto size = ComputeImageSize(pixelType, width, height, paddingX);
    if (!size) {
        GENICAM_THROW(
            InvalidArgumentException,
            "No image can have %u x %u pixels of type 0x%08X and %zu bytes of padding per row; width and "
            "height must be at least 1, the type defined and the size within the address space.",
            width, height, static_cast<unsigned>(pixelType), paddingX);
    }
    return *size;
}

/// The size of a layout that memory of `bufferSize` bytes must be able to hold.
std::size_t checkedImageSize(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                             std::uint32_t height, std::size_t paddingX)
{
    const std::size_t imageSize = layoutSize(pixelType, width, height, paddingX);
    if (!buffer) {
        GENICAM_THROW(InvalidArgumentException, "The image buffer is null; %zu bytes were expected.", imageSize);
    }
    if (bufferSize < imageSize) {
        GENICAM_THROW(InvalidArgumentException,
                      "The image buffer holds %zu bytes, but %u x %u pixels of type 0x%08X with %zu bytes of "
                      "padding per row need %zu.",
                      bufferSize, width, height, static_cast<unsigned>(pixelType), paddingX, imageSize);
    }
    return imageSize;
}

}  // namespace

CNivexImage::~CNivexImage() = default;

CNivexImage& CNivexImage::operator=(const CNivexImage& other)
{
    CNivexImage shared(other);
    Swap(shared);
    return *this;
}

CNivexImage& CNivexImage::operator=(CNivexImage&& other) noexcept
{
    CNivexImage taken(std::move(other));
    Swap(taken);
    return *this;
}

void CNivexImage::Swap(CNivexImage& other) noexcept
{
    std::swap(buffer_, other.buffer_);
    std::swap(bufferSize_, other.bufferSize_);
    std::swap(imageSize_, other.imageSize_);
    std::swap(pixelType_, other.pixelType_);
    std::swap(width_, other.width_);
    std::swap(height_, other.height_);
    std::swap(paddingX_, other.paddingX_);
    std::swap(orientation_, other.orientation_);
    std::swap(attached_, other.attached_);
}

bool CNivexImage::IsUnique() const
{
    // A plain use_count() orders nothing. Taking a share changes the counter, which puts us behind every
    // thread that has given up a share of its own.
    const std::shared_ptr<std::byte> share = buffer_;
    return share.use_count() == 2;
}

void CNivexImage::Reset(EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                        EImageOrientation orientation)
{
    const std::size_t size = layoutSize(pixelType, width, height, paddingX);
    if (attached_ || bufferSize_ < size || !IsUnique()) {
        Release();
        buffer_ = allocate(size);
        bufferSize_ = size;
    }
    imageSize_ = size;
    pixelType_ = pixelType;
    width_ = width;
    height_ = height;
    paddingX_ = paddingX;
    orientation_ = orientation;
}

void CNivexImage::Release()
{
    *this = CNivexImage();
}

void CNivexImage::Load(const GenICam::gcstring& path)
{
    CNivexImage loaded;
    CImagePersistence::Load(path, loaded);
    Swap(loaded);
}

void CNivexImage::CopyImage(const IImage& source)
{
    if (&source == this) return;
    if (!source.IsValid()) GENICAM_THROW(InvalidArgumentException, "The image to copy holds no picture.");
    CopyImage(source.GetBuffer(), source.GetImageSize(), source.GetPixelType(), source.GetWidth(),
              source.GetHeight(), source.GetPaddingX(), source.GetOrientation());
}

void CNivexImage::CopyImage(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                            std::uint32_t height, std::size_t paddingX, EImageOrientation orientation)
{
    const std::size_t size = checkedImageSize(buffer, bufferSize, pixelType, width, height, paddingX);
    const auto* bytes = static_cast<const std::byte*>(buffer);
    const std::less<> before;
    const bool isOurs = buffer_ && !before(bytes, buffer_.get()) && before(bytes, buffer_.get() + bufferSize_);
    // A source in our own memory has to outlive the reset of the form.
    CNivexImage fresh;
    CNivexImage& target = isOurs ? fresh : *this;
    target.Reset(pixelType, width, height, paddingX, orientation);
    std::memcpy(target.buffer_.get(), bytes, size);
    if (isOurs) Swap(fresh);
}

void CNivexImage::AttachUserBuffer(void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
                                   std::uint32_t height, std::size_t paddingX, EImageOrientation orientation,
                                   std::function<void()> releaseHandler)
{
    CNivexImage attached;
    attached.imageSize_ = checkedImageSize(buffer, bufferSize, pixelType, width, height, paddingX);
    const auto memory = std::make_shared<UserMemory>(std::move(releaseHandler));
    attached.buffer_ = std::shared_ptr<std::byte>(memory, static_cast<std::byte*>(buffer));
    attached.bufferSize_ = bufferSize;
    attached.pixelType_ = pixelType;
    attached.width_ = width;
    attached.height_ = height;
    attached.paddingX_ = paddingX;
    attached.orientation_ = orientation;
    attached.attached_ = true;
    Swap(attached);
}

}  // namespace Nivex
