#include "utility/convert/encode.h"

#include <algorithm>

#include "utility/convert/widevectors.h"

namespace Nivex::Pixels {
namespace {

using Lines8 = Channels<const std::uint8_t>;

void encodeMono8(const Lines8* lines, std::size_t width, unsigned, const DestinationRow& destination)
{
    std::memcpy(destination.plane[0], lines[0][0], width);
}

template <typename T>
void encodeCellRow(const T* __restrict from, std::size_t width, unsigned shift, std::uint8_t* __restrict to)
{
    for (std::size_t x = 0; x < width; ++x)
        storeCell(to + 2 * x, static_cast<std::uint16_t>(from[x] << shift));
}

template <typename T>
void encodeMono16(const Channels<const T>* lines, std::size_t width, unsigned shift,
                  const DestinationRow& destination)
{
    encodeCellRow(lines[0][0], width, shift, destination.plane[0]);
}

template <unsigned Components, unsigned R, unsigned B>
void interleave8(const std::uint8_t* __restrict red, const std::uint8_t* __restrict green,
                 const std::uint8_t* __restrict blue, std::size_t width, std::uint8_t* __restrict to)
{
    for (std::size_t x = 0; x < width; ++x) {
        to[Components * x + R] = red[x];
        to[Components * x + 1] = green[x];
        to[Components * x + B] = blue[x];
        if (Components == 4) to[Components * x + 3] = 0xFF;
    }
}

template <unsigned Components, unsigned R, unsigned B>
void encodeColour8(const Lines8* lines, std::size_t width, unsigned, const DestinationRow& destination)
{
    interleave8<Components, R, B>(lines[0][0], lines[0][1], lines[0][2], width, destination.plane[0]);
}

template <typename T>
void interleave16(const T* __restrict red, const T* __restrict green, const T* __restrict blue, std::size_t width,
                  unsigned shift, std::uint8_t* __restrict to)
{
    for (std::size_t x = 0; x < width; ++x) {
        storeCell(to + 6 * x, static_cast<std::uint16_t>(red[x] << shift));
        storeCell(to + 6 * x + 2, static_cast<std::uint16_t>(green[x] << shift));
        storeCell(to + 6 * x + 4, static_cast<std::uint16_t>(blue[x] << shift));
    }
}

template <typename T>
void encodeRgb16(const Channels<const T>* lines, std::size_t width, unsigned shift,
                 const DestinationRow& destination)
{
    interleave16(lines[0][0], lines[0][1], lines[0][2], width, shift, destination.plane[0]);
}

void encodePlanes8(const Lines8* lines, std::size_t width, unsigned, const DestinationRow& destination)
{
    for (std::size_t i = 0; i < lines[0].size(); ++i)
        std::memcpy(destination.plane[i], lines[0][i], width);
}

template <typename T>
void encodePlanes16(const Channels<const T>* lines, std::size_t width, unsigned shift,
                    const DestinationRow& destination)
{
    for (std::size_t i = 0; i < lines[0].size(); ++i) {
        encodeCellRow(lines[0][i], width, shift, destination.plane[i]);
    }
}

void averagePairs(const std::uint8_t* __restrict from, std::size_t width, std::uint8_t* __restrict to)
{
    for (std::size_t x = 0; x < width / 2; ++x) {
        to[x] = static_cast<std::uint8_t>((from[2 * x] + from[2 * x + 1] + 1) >> 1);
    }
    if (width % 2 != 0) to[width / 2] = from[width - 1];
}

void encodeYuv422(const Lines8* lines, std::size_t width, unsigned, const DestinationRow& destination)
{
    std::memcpy(destination.plane[0], lines[0][0], width);
    averagePairs(lines[0][1], width, destination.plane[1]);
    averagePairs(lines[0][2], width, destination.plane[2]);
}

// Upper and lower may be the same row.
void averageBlocks(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower, std::size_t width,
                   std::uint8_t* __restrict to)
{
    for (std::size_t x = 0; x < width / 2; ++x) {
        const int sum = upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1];
        to[x] = static_cast<std::uint8_t>((sum + 2) >> 2);
    }
    if (width % 2 != 0) {
        to[width / 2] = static_cast<std::uint8_t>((upper[width - 1] + lower[width - 1] + 1) >> 1);
    }
}

void encodeYuv420(const Lines8* lines, std::size_t width, unsigned, const DestinationRow& destination)
{
    std::memcpy(destination.plane[0], lines[0][0], width);
    if (destination.secondLuma) std::memcpy(destination.secondLuma, lines[1][0], width);
    averageBlocks(lines[0][1], lines[1][1], width, destination.plane[1]);
    averageBlocks(lines[0][2], lines[1][2], width, destination.plane[2]);
}

using enum EPixelType;

constexpr OutputFormat outputFormats[] = {
    {BGRA8Packed, LineKind::Rgb, 8, 1, wide<encodeColour8<4, 2, 0>>, nullptr},
    {BGR8Packed, LineKind::Rgb, 8, 1, wide<encodeColour8<3, 2, 0>>, nullptr},
    {Mono8, LineKind::Mono, 8, 1, encodeMono8, nullptr},
    {Mono16, LineKind::Mono, 16, 1, wide<encodeMono16<std::uint8_t>>, wide<encodeMono16<std::uint16_t>>},
    {RGB8Packed, LineKind::Rgb, 8, 1, wide<encodeColour8<3, 0, 2>>, nullptr},
    {RGB16Packed, LineKind::Rgb, 16, 1, wide<encodeRgb16<std::uint8_t>>, wide<encodeRgb16<std::uint16_t>>},
    {RGB8Planar, LineKind::Rgb, 8, 1, encodePlanes8, nullptr},
    {RGB16Planar, LineKind::Rgb, 16, 1, wide<encodePlanes16<std::uint8_t>>, wide<encodePlanes16<std::uint16_t>>},
    {YUV444Planar, LineKind::Yuv, 8, 1, encodePlanes8, nullptr},
    {YUV422Planar, LineKind::Yuv, 8, 1, wide<encodeYuv422>, nullptr},
    {YUV420Planar, LineKind::Yuv, 8, 2, wide<encodeYuv420>, nullptr},
};

}  // namespace

const OutputFormat* findOutputFormat(EPixelType pixelType)
{
    const auto* const row = std::ranges::find(outputFormats, pixelType, &OutputFormat::pixelType);
    return row != std::end(outputFormats) ? row : nullptr;
}

}  // namespace Nivex::Pixels
