#pragma once

#include "utility/convert/lines.h"
#include "utility/pixeltype.h"

namespace Nivex::Pixels {

/// How a destination format is written.
struct OutputFormat
{
    EPixelType pixelType;
    LineKind kind;            ///< Of the lines that it takes; never Raw.
    std::uint8_t depth;       ///< Bits of a cell, 8 or 16.
    std::uint8_t rowsAtOnce;  ///< Lines that an encode stage takes: 2 for 4:2:0, else 1.
    EncodeStage<std::uint8_t> from8;
    EncodeStage<std::uint16_t> from16;  ///< Null for a depth of 8.
};

/// Null if the format can't be written.
const OutputFormat* findOutputFormat(EPixelType pixelType);

}  // namespace Nivex::Pixels
