#pragma once

#include <cstdint>
#include <span>

#include "gcbase/export.h"

#include "utility/pixeltype.h"

namespace Nivex {

/// What the values of a pixel mean.
enum class EPixelFamily : std::uint8_t
{
    Mono,
    Bayer,
    SparseFilter,
    Coord3D,
    Confidence,
    Data,
    Red,
    Green,
    Blue,
    RGB,
    RGBa,
    BGR,
    BGRa,
    YUV,
    YCbCr,
    YCbCr601,
    YCbCr709,
    YCbCr2020,
    BiColor
};

/// How components lie in memory. 16-bit and wider cells are little-endian.
enum class EPixelPacking : std::uint8_t
{
    Unpacked,    ///< One component per byte-sized cell, value in the low bits.
    LsbPacked,   ///< One bit stream, first component in the low bits of byte 0.
    GigEPacked,  ///< Two components in three bytes, their low bits in the middle byte.
};

/// How a picture is split into planes.
enum class EPixelPlanes : std::uint8_t
{
    Interleaved,    ///< One plane holds all components of a pixel.
    Planar2,        ///< Two planes of full size.
    Planar3,        ///< Three planes of full size.
    Planar422,      ///< Luma; two chroma planes of half width.
    Planar420,      ///< Luma; two chroma planes of half width and height.
    Semiplanar422,  ///< Luma; one plane of chroma pairs of half width.
    Semiplanar420,  ///< Luma; one plane of chroma pairs of half width and height.
};

/// One row of the table of formats. Bits per pixel are bits 16-23 of `value`.
struct PixelFormat
{
    const char* name;   ///< As in the naming convention, "BayerGR10p".
    const char* alias;  ///< A second name in use, "RGB8Packed" for "RGB8"; null if there is none.
    std::uint32_t value;
    std::uint8_t bitDepth;  ///< Significant bits of a component, the largest if they differ.
    EPixelFamily family;
    EPixelPacking packing;
    EPixelPlanes planes;
};

/// All rows, grouped by family.
GENICAM_API std::span<const PixelFormat> GetPixelFormats();

/// The row of a format, null if the table doesn't hold it.
GENICAM_API const PixelFormat* FindPixelFormat(EPixelType pixelType);

}  // namespace Nivex
