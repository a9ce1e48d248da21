#pragma once

#include <cstddef>
#include <cstdint>

#include "gcbase/export.h"

#include "utility/pixeltype.h"

namespace Nivex {

/// Which row of the picture lies at the start of the buffer.
enum class EImageOrientation : std::uint32_t
{
    TopDown = 0,
    BottomUp = 1
};

/// A picture in one block of memory. An image that holds none has the pixel type Undefined, and 0 or null for
/// all else. A row takes `ceil(width * bits / 8)` bytes and `GetPaddingX()` bytes
/// of padding; planes follow one another without a gap and share that rule.
class GENICAM_API IImage
{
public:
    virtual ~IImage() = default;

    virtual bool IsValid() const = 0;  ///< True when it holds a picture.
    virtual EPixelType GetPixelType() const = 0;
    virtual std::uint32_t GetWidth() const = 0;   ///< In pixels.
    virtual std::uint32_t GetHeight() const = 0;  ///< In rows.
    virtual std::size_t GetPaddingX() const = 0;  ///< Bytes behind the pixels of each row.
    virtual EImageOrientation GetOrientation() const = 0;
    virtual void* GetBuffer() = 0;
    virtual const void* GetBuffer() const = 0;
    virtual std::size_t GetImageSize() const = 0;  ///< In bytes, padding included.
};

/// An image whose memory can be given up and made anew.
class GENICAM_API IReusableImage : public IImage
{
public:
    /// Makes room for a picture of that form, keeping the present memory where it is large enough and the
    /// image's own. The content is undefined afterwards. Raises InvalidArgumentException for an undefined
    /// pixel type, a width or height of 0, or a size that does not fit the address space.
    virtual void Reset(EPixelType pixelType, std::uint32_t width, std::uint32_t height, std::size_t paddingX = 0,
                       EImageOrientation orientation = EImageOrientation::TopDown) = 0;
    /// Lets go of the memory; IsValid() is false afterwards.
    virtual void Release() = 0;
};

}  // namespace Nivex
