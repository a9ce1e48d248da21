#pragma once

#include "utility/convert/lines.h"
#include "utility/pixeltype.h"

namespace Nivex::Pixels {

/// One decoder for lines of either width.
struct DecodeStages
{
    DecodeStage<std::uint8_t> to8;
    DecodeStage<std::uint16_t> to16;  ///< Null for samples of at most 8 bits.
};

/// How a source format is read.
struct InputFormat
{
    LineKind kind;
    std::uint8_t depth;        ///< Of its samples in a line: 8 for fewer bits, which are spread over 0 to 255.
    std::uint8_t groupPixels;  ///< Every so many pixels of a bit stream start on a byte.
    DecodeStages decode;
};

/// Null if the format can't be read.
const InputFormat* findInputFormat(EPixelType pixelType);

}  // namespace Nivex::Pixels
