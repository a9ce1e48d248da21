#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// A conversion carries a picture row by row through lines: small buffers, one sample per pixel and channel, that
/// stay in the cache. A stage is a plain function on the lines of one row; it is chosen once per picture.
///
///     source row -> decode -> [demosaic] -> [colour] -> encode -> destination row
///
/// Samples of a line are 8 bits wide (T = uint8_t) where source or destination have no more, else 16 bits wide
/// (T = uint16_t) with a value of the source's depth in the low bits. Channel order is mono or raw; R, G, B; Y, U,
/// V, chroma at full width and with 128 added.
namespace Nivex::Pixels {

static_assert(std::endian::native == std::endian::little, "16-bit cells of pictures are little-endian");

/// What the channels of a line mean. Raw is one sample of a colour filter pattern per pixel.
enum class LineKind : std::uint8_t
{
    Mono,
    Raw,
    Rgb,
    Yuv
};

template <typename T>
using Channels = std::array<T*, 3>;

/// Samples that fit into a line before its first and behind its last pixel. Stages may write them.
constexpr std::size_t lineSlack = 16;

/// Where a row starts in each plane of the source.
struct SourceRow
{
    std::array<const std::uint8_t*, 3> plane;
};

/// Where a row starts in each plane of the destination; for 4:2:0 also where the second luma row starts, null when
/// the picture ends before.
struct DestinationRow
{
    std::array<std::uint8_t*, 3> plane;
    std::uint8_t* secondLuma;
};

/// Takes `width` pixels of a row apart. Reads only the bytes that hold them. Planes the format lacks are not read.
/// With T = uint8_t samples of more than 8 bits lose their low bits.
template <typename T>
using DecodeStage = void (*)(const SourceRow& source, std::size_t width, const Channels<T>& line);

/// Brings a line from one kind to another and gives back where its channels are, which may be those of `line`
/// itself. Writes to `result` only.
template <typename T>
using ColourStage = Channels<const T> (*)(const Channels<const T>& line, std::size_t width,
                                          const Channels<T>& result);

/// Puts a line, or two lines of equal kind for 4:2:0, into destination rows; `lines` holds as many. Samples are
/// shifted left by `shift` bits into cells of 16 bits; it has no effect on 8-bit outputs.
template <typename T>
using EncodeStage = void (*)(const Channels<const T>* lines, std::size_t width, unsigned shift,
                             const DestinationRow& destination);

inline std::uint16_t loadCell(const std::uint8_t* cell)
{
    std::uint16_t value = 0;
    std::memcpy(&value, cell, sizeof value);
    return value;
}

inline void storeCell(std::uint8_t* cell, std::uint16_t value)
{
    std::memcpy(cell, &value, sizeof value);
}

}  // namespace Nivex::Pixels
