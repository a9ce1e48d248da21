#pragma once

#include "utility/convert/decode.h"
#include "utility/convert/encode.h"
#include "utility/pixeltype.h"

namespace Nivex::Pixels {

/// One picture to convert, with every option resolved and every size checked.
struct Conversion
{
    EPixelType sourceType;
    const InputFormat* input;
    const OutputFormat* output;
    std::uint32_t width;
    std::uint32_t height;
    const std::uint8_t* source;
    ImageLayout sourceLayout;
    bool continuous;  ///< The source is one bit stream, rows start where the row before ends.
    std::uint8_t* destination;
    ImageLayout destinationLayout;
    bool flip;       ///< The first row becomes the last.
    unsigned shift;  ///< Left, of samples in 16-bit cells.
};

/// Converts on at most `maxThreads` threads, the calling one included, fewer for small pictures; the number does
/// not change the result. Raises std::bad_alloc before the first byte is written.
void run(const Conversion& conversion, std::size_t maxThreads);

}  // namespace Nivex::Pixels
