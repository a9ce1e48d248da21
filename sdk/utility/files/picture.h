#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "utility/image.h"

namespace Nivex::Files {

/// Why a file can't be read or written, as a half sentence; whoever knows the file's name puts that before it.
class FormatError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Raises FormatError with a printf-style text.
[[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The system's text for an errno value.
std::string systemText(int errorNumber);

/// Refuses a size that loading does not allow. To be called before anything of that size is allocated.
void checkLoadLimits(EPixelType pixelType, std::uint64_t width, std::uint64_t height);

/// Checks the limits, resets the image, top-down and without padding, and gives its memory.
std::byte* prepareImage(IReusableImage& image, EPixelType pixelType, std::uint64_t width, std::uint64_t height);

/// A picture to be written. All formats but RAW take it row by row in the order of the eye.
struct PictureView
{
    const std::byte* buffer;
    std::size_t size;  ///< Of the buffer's picture, padding included.
    EPixelType pixelType;
    std::uint32_t width;
    std::uint32_t height;
    std::size_t rowBytes;  ///< Without padding.
    std::size_t stride;    ///< From row to row in the buffer.
    bool isBottomUp;

    /// The row that stands at place `y` from the top.
    const std::byte* row(std::uint32_t y) const { return buffer + stride * (isBottomUp ? height - 1 - y : y); }
};

}  // namespace Nivex::Files
