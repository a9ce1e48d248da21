#include "utility/convert/decode.h"

#include <algorithm>

#include "utility/convert/widevectors.h"

namespace Nivex::Pixels {
namespace {

// No standard fixes the order of pixels within a byte for the names Mono1Packed, Mono2Packed and Mono4Packed; this
// is the order of Mono1p, Mono2p and Mono4p, whose values they share.
constexpr bool firstPixelInLowBits = true;

template <typename T, unsigned Depth>
constexpr T toSample(unsigned value)
{
    return static_cast<T>(sizeof(T) == 1 ? value >> (Depth - 8) : value);
}

template <unsigned Bits>
void decodeBits(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    constexpr unsigned pixelsPerByte = 8 / Bits;
    constexpr unsigned mask = (1U << Bits) - 1;
    const std::uint8_t* __restrict from = source.plane[0];
    std::uint8_t* __restrict to = line[0];
    for (std::size_t x = 0; x < width; x += pixelsPerByte) {
        const unsigned byte = from[x / pixelsPerByte];
        for (unsigned pixel = 0; pixel < pixelsPerByte; ++pixel) {
            const unsigned place = firstPixelInLowBits ? pixel : pixelsPerByte - 1 - pixel;
            to[x + pixel] = static_cast<std::uint8_t>(((byte >> (place * Bits)) & mask) * (255 / mask));
        }
    }
}

void decodeBytes(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    std::memcpy(line[0], source.plane[0], width);
}

template <typename T, unsigned Depth>
void decodeCellRow(const std::uint8_t* __restrict from, std::size_t width, T* __restrict to)
{
    constexpr unsigned mask = (1U << Depth) - 1;
    for (std::size_t x = 0; x < width; ++x)
        to[x] = toSample<T, Depth>(loadCell(from + 2 * x) & mask);
}

template <typename T, unsigned Depth>
void decodeCells(const SourceRow& source, std::size_t width, const Channels<T>& line)
{
    decodeCellRow<T, Depth>(source.plane[0], width, line[0]);
}

// Sample `index` of a bit stream, first sample in the low bits. Good for depths whose samples touch two bytes
// each.
template <unsigned Depth>
unsigned lsbSample(const std::uint8_t* stream, std::size_t index)
{
    static_assert(Depth == 10 || Depth == 12);
    const std::size_t bit = index * Depth;
    const unsigned bytes = stream[bit / 8] | static_cast<unsigned>(stream[bit / 8 + 1]) << 8;
    return (bytes >> (bit % 8)) & ((1U << Depth) - 1);
}

// Sample `index` where two samples share three bytes: high bits in the first and the last, low bits in the middle.
template <unsigned Depth>
unsigned gigeSample(const std::uint8_t* stream, std::size_t index)
{
    constexpr unsigned lowBits = Depth - 8;
    const std::uint8_t* const group = stream + index / 2 * 3;
    const unsigned low = (index % 2 == 0 ? group[1] : group[1] >> 4) & ((1U << lowBits) - 1);
    return static_cast<unsigned>(group[index % 2 == 0 ? 0 : 2]) << lowBits | low;
}

// Whole groups have constant places for their samples, which the compiler unrolls; the last, partial group has
// not.
template <typename T, unsigned Depth, unsigned Components, unsigned Group,
          unsigned (*Sample)(const std::uint8_t*, std::size_t)>
void decodeGroups(const SourceRow& source, std::size_t width, const Channels<T>& line)
{
    constexpr std::size_t groupBytes = Group * Components * (Sample == gigeSample<Depth> ? 12 : Depth) / 8;
    const std::uint8_t* __restrict from = source.plane[0];
    const Channels<T> to = line;  // A copy: bytes written through `line` could be its own pointers.
    const auto decodePixel = [&](std::size_t x, std::size_t pixel) {
        for (unsigned i = 0; i < Components; ++i)
            to[i][x + pixel] = toSample<T, Depth>(Sample(from, Components * pixel + i));
    };
    std::size_t x = 0;
    for (; x + Group <= width; x += Group, from += groupBytes) {
        for (std::size_t pixel = 0; pixel < Group; ++pixel)
            decodePixel(x, pixel);
    }
    for (std::size_t pixel = 0; x + pixel < width; ++pixel)
        decodePixel(x, pixel);
}

template <unsigned Components, unsigned R, unsigned B>
void separate8(const std::uint8_t* __restrict from, std::size_t width, std::uint8_t* __restrict red,
               std::uint8_t* __restrict green, std::uint8_t* __restrict blue)
{
    for (std::size_t x = 0; x < width; ++x) {
        red[x] = from[Components * x + R];
        green[x] = from[Components * x + 1];
        blue[x] = from[Components * x + B];
    }
}

template <unsigned Components, unsigned R, unsigned B>
void decodeColour8(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    separate8<Components, R, B>(source.plane[0], width, line[0], line[1], line[2]);
}

template <typename T, unsigned Depth, unsigned R, unsigned B>
void separateCells(const std::uint8_t* __restrict from, std::size_t width, T* __restrict red, T* __restrict green,
                   T* __restrict blue)
{
    constexpr unsigned mask = (1U << Depth) - 1;
    for (std::size_t x = 0; x < width; ++x) {
        red[x] = toSample<T, Depth>(loadCell(from + 6 * x + 2 * R) & mask);
        green[x] = toSample<T, Depth>(loadCell(from + 6 * x + 2) & mask);
        blue[x] = toSample<T, Depth>(loadCell(from + 6 * x + 2 * B) & mask);
    }
}

template <typename T, unsigned Depth, unsigned R, unsigned B>
void decodeColourCells(const SourceRow& source, std::size_t width, const Channels<T>& line)
{
    separateCells<T, Depth, R, B>(source.plane[0], width, line[0], line[1], line[2]);
}

void decodePlanes8(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    for (std::size_t i = 0; i < line.size(); ++i)
        std::memcpy(line[i], source.plane[i], width);
}

template <typename T>
void decodePlanes16(const SourceRow& source, std::size_t width, const Channels<T>& line)
{
    for (std::size_t i = 0; i < line.size(); ++i)
        decodeCellRow<T, 16>(source.plane[i], width, line[i]);
}

// Y, U and V are places within the four bytes of two pixels.
template <unsigned Y, unsigned U, unsigned V>
void separatePairs(const std::uint8_t* __restrict from, std::size_t pairs, std::uint8_t* __restrict y,
                   std::uint8_t* __restrict u, std::uint8_t* __restrict v)
{
    for (std::size_t i = 0; i < pairs; ++i) {
        y[2 * i] = from[4 * i + Y];
        y[2 * i + 1] = from[4 * i + Y + 2];
        u[2 * i] = u[2 * i + 1] = from[4 * i + U];
        v[2 * i] = v[2 * i + 1] = from[4 * i + V];
    }
}

// The lone last pixel of an odd width has no V of its own and takes that of the pair before it, or no colour.
template <unsigned Y, unsigned U, unsigned V>
void decodeYuv422(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    separatePairs<Y, U, V>(source.plane[0], width / 2, line[0], line[1], line[2]);
    if (width % 2 != 0) {
        const std::size_t last = width - 1;
        line[0][last] = source.plane[0][2 * last + Y];
        line[1][last] = source.plane[0][2 * last + U];
        line[2][last] = last == 0 ? std::uint8_t{128} : line[2][last - 1];
    }
}

void doubleChromaPairs(const std::uint8_t* __restrict from, std::size_t pairs, std::uint8_t* __restrict u,
                       std::uint8_t* __restrict v)
{
    for (std::size_t i = 0; i < pairs; ++i) {
        u[2 * i] = u[2 * i + 1] = from[2 * i];
        v[2 * i] = v[2 * i + 1] = from[2 * i + 1];
    }
}

void decodeSemiplanar(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    std::memcpy(line[0], source.plane[0], width);
    doubleChromaPairs(source.plane[1], (width + 1) / 2, line[1], line[2]);
}

void doubleSamples(const std::uint8_t* __restrict from, std::size_t count, std::uint8_t* __restrict to)
{
    for (std::size_t i = 0; i < count; ++i)
        to[2 * i] = to[2 * i + 1] = from[i];
}

void decodeHalfWidthChroma(const SourceRow& source, std::size_t width, const Channels<std::uint8_t>& line)
{
    std::memcpy(line[0], source.plane[0], width);
    doubleSamples(source.plane[1], (width + 1) / 2, line[1]);
    doubleSamples(source.plane[2], (width + 1) / 2, line[2]);
}

template <unsigned Depth>
constexpr DecodeStages cells = {wide<decodeCells<std::uint8_t, Depth>>, wide<decodeCells<std::uint16_t, Depth>>};
template <unsigned Depth, unsigned Components, unsigned Group,
          unsigned (*Sample)(const std::uint8_t*, std::size_t)>
constexpr DecodeStages groups = {wide<decodeGroups<std::uint8_t, Depth, Components, Group, Sample>>,
                                 wide<decodeGroups<std::uint16_t, Depth, Components, Group, Sample>>};
constexpr DecodeStages lsb10 = groups<10, 1, 4, lsbSample<10>>;
constexpr DecodeStages lsb12 = groups<12, 1, 2, lsbSample<12>>;
constexpr DecodeStages gige10 = groups<10, 1, 2, gigeSample<10>>;
constexpr DecodeStages gige12 = groups<12, 1, 2, gigeSample<12>>;
// Public texts leave the byte order of this format open. Read here as the stream R0 G0 B0 R1 G1 B1 in the grouping
// of Mono12Packed.
constexpr DecodeStages rgb12V1 = groups<12, 3, 2, gigeSample<12>>;
template <unsigned Depth, unsigned R, unsigned B>
constexpr DecodeStages colourCells = {wide<decodeColourCells<std::uint8_t, Depth, R, B>>,
                                      wide<decodeColourCells<std::uint16_t, Depth, R, B>>};
constexpr DecodeStages planes16 = {wide<decodePlanes16<std::uint8_t>>, wide<decodePlanes16<std::uint16_t>>};

using enum EPixelType;

// A Bayer format stores its samples as the mono format of the same ending does.
struct SampleFormats
{
    EPixelType mono;
    std::array<EPixelType, 4> bayer;
    std::uint8_t depth;
    std::uint8_t groupPixels;
    DecodeStages decode;
};

constexpr std::array<EPixelType, 4> noBayer = {Undefined, Undefined, Undefined, Undefined};

// clang-format off
constexpr SampleFormats sampleFormats[] = {
    {Mono1Packed, noBayer, 8, 8, {wide<decodeBits<1>>, nullptr}},
    {Mono2Packed, noBayer, 8, 4, {wide<decodeBits<2>>, nullptr}},
    {Mono4Packed, noBayer, 8, 2, {wide<decodeBits<4>>, nullptr}},
    {Mono8, {BayerGR8, BayerRG8, BayerGB8, BayerBG8}, 8, 1, {decodeBytes, nullptr}},
    {Mono10, {BayerGR10, BayerRG10, BayerGB10, BayerBG10}, 10, 1, cells<10>},
    {Mono10Packed, {BayerGR10Packed, BayerRG10Packed, BayerGB10Packed, BayerBG10Packed}, 10, 2, gige10},
    {Mono10p, {BayerGR10p, BayerRG10p, BayerGB10p, BayerBG10p}, 10, 4, lsb10},
    {Mono12, {BayerGR12, BayerRG12, BayerGB12, BayerBG12}, 12, 1, cells<12>},
    {Mono12Packed, {BayerGR12Packed, BayerRG12Packed, BayerGB12Packed, BayerBG12Packed}, 12, 2, gige12},
    {Mono12p, {BayerGR12p, BayerRG12p, BayerGB12p, BayerBG12p}, 12, 2, lsb12},
    {Mono14, noBayer, 14, 1, cells<14>},
    {Mono16, {BayerGR16, BayerRG16, BayerGB16, BayerBG16}, 16, 1, cells<16>},
};

struct ColourFormat
{
    EPixelType pixelType;
    InputFormat input;
};

constexpr ColourFormat colourFormats[] = {
    {RGB8Packed, {LineKind::Rgb, 8, 1, {wide<decodeColour8<3, 0, 2>>, nullptr}}},
    {BGR8Packed, {LineKind::Rgb, 8, 1, {wide<decodeColour8<3, 2, 0>>, nullptr}}},
    {RGBA8Packed, {LineKind::Rgb, 8, 1, {wide<decodeColour8<4, 0, 2>>, nullptr}}},
    {BGRA8Packed, {LineKind::Rgb, 8, 1, {wide<decodeColour8<4, 2, 0>>, nullptr}}},
    {RGB10Packed, {LineKind::Rgb, 10, 1, colourCells<10, 0, 2>}},
    {BGR10Packed, {LineKind::Rgb, 10, 1, colourCells<10, 2, 0>}},
    {RGB12Packed, {LineKind::Rgb, 12, 1, colourCells<12, 0, 2>}},
    {BGR12Packed, {LineKind::Rgb, 12, 1, colourCells<12, 2, 0>}},
    {RGB12V1Packed, {LineKind::Rgb, 12, 2, rgb12V1}},
    {RGB16Packed, {LineKind::Rgb, 16, 1, colourCells<16, 0, 2>}},
    {RGB8Planar, {LineKind::Rgb, 8, 1, {decodePlanes8, nullptr}}},
    {RGB16Planar, {LineKind::Rgb, 16, 1, planes16}},
    {YUV422Packed, {LineKind::Yuv, 8, 1, {wide<decodeYuv422<1, 0, 2>>, nullptr}}},
    {YUV422_YUYV_Packed, {LineKind::Yuv, 8, 1, {wide<decodeYuv422<0, 1, 3>>, nullptr}}},
    {YCbCr422_8_YY_CbCr_Semiplanar, {LineKind::Yuv, 8, 1, {wide<decodeSemiplanar>, nullptr}}},
    {YCbCr420_8_YY_CbCr_Semiplanar, {LineKind::Yuv, 8, 1, {wide<decodeSemiplanar>, nullptr}}},
    {YUV444Planar, {LineKind::Yuv, 8, 1, {decodePlanes8, nullptr}}},
    {YUV422Planar, {LineKind::Yuv, 8, 1, {wide<decodeHalfWidthChroma>, nullptr}}},
    {YUV420Planar, {LineKind::Yuv, 8, 1, {wide<decodeHalfWidthChroma>, nullptr}}},
};
// clang-format on

constexpr std::size_t inputFormatCount = 5 * std::size(sampleFormats) + std::size(colourFormats);

constexpr auto inputFormats = [] {
    std::array<ColourFormat, inputFormatCount> formats{};
    std::size_t count = 0;
    for (const SampleFormats& row : sampleFormats) {
        const InputFormat mono{LineKind::Mono, row.depth, row.groupPixels, row.decode};
        InputFormat raw = mono;
        raw.kind = LineKind::Raw;
        formats[count++] = {row.mono, mono};
        for (const EPixelType bayer : row.bayer)
            formats[count++] = {bayer, raw};
    }
    for (const ColourFormat& row : colourFormats)
        formats[count++] = row;
    return formats;
}();

}  // namespace

const InputFormat* findInputFormat(EPixelType pixelType)
{
    if (pixelType == Undefined) return nullptr;
    const auto* const row = std::ranges::find(inputFormats, pixelType, &ColourFormat::pixelType);
    return row != inputFormats.end() ? &row->input : nullptr;
}

}  // namespace Nivex::Pixels
