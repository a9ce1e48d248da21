#pragma once

#include <cstdint>

#include "gcbase/export.h"

namespace Nivex {

/// Pixel formats by their 32-bit value of the GenICam Pixel Format Naming Convention: bit 31 custom, bits 24-30
/// one (1) or several (2) components, bits 16-23 bits per pixel, bits 0-15 the identity.
/// Enumerators exist for the formats that code names; any further value may stand in the type.
enum class EPixelType : std::uint32_t
{
    Undefined = 0xFFFFFFFF,
    Mono8 = 0x01080001,
    Mono16 = 0x01100007,
    RGB8Packed = 0x02180014,
    BGR8Packed = 0x02180015,
    RGBA8Packed = 0x02200016,
    BGRA8Packed = 0x02200017,
    RGB8Planar = 0x02180021,
    RGB16Planar = 0x02300024,
    RGB16Packed = 0x02300033,
    YUV444Planar = 0x82180044,
    YUV422Planar = 0x82100042,
    YUV420Planar = 0x820C0040,
};

}  // namespace Nivex
