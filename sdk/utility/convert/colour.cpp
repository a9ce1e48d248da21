#include "utility/convert/colour.h"

#include <algorithm>

namespace Nivex::Pixels {
namespace {

template <typename T>
constexpr T mean(T a, T b)
{
    return static_cast<T>((static_cast<std::uint32_t>(a) + b + 1) >> 1);
}

template <typename T>
constexpr T mean(T a, T b, T c, T d)
{
    using Sum = std::conditional_t<sizeof(T) == 1, std::uint16_t, std::uint32_t>;
    return static_cast<T>(static_cast<Sum>(Sum{a} + b + c + d + 2) >> 2);
}

// One row holds green and one of red and blue, here `own`; the rows beside it hold green and `other`. Columns of
// the parity `greenColumn` are green. Both cases are computed for every pixel and one is taken by a mask, since
// the compiler makes vector code of that.
template <typename T>
void demosaicRow(const RawWindow<T>& window, std::size_t greenColumn, std::size_t width, T* __restrict own,
                 T* __restrict green, T* __restrict other)
{
    const T* __restrict above = window.above;
    const T* __restrict row = window.row;
    const T* __restrict below = window.below;
    const auto left = static_cast<std::ptrdiff_t>(-1);
    T greenMask[2] = {};
    greenMask[greenColumn] = static_cast<T>(~T{0});
    for (std::size_t x = 0; x < width; ++x) {
        const T isGreen = greenMask[x % 2];
        const T isOwn = static_cast<T>(~isGreen);
        const auto at = static_cast<std::ptrdiff_t>(x);
        const T sides = mean(row[at + left], row[at + 1]);
        const T upright = mean(above[at], below[at]);
        const T cross = mean(row[at + left], row[at + 1], above[at], below[at]);
        const T corners = mean(above[at + left], above[at + 1], below[at + left], below[at + 1]);
        own[x] = static_cast<T>((row[at] & isOwn) | (sides & isGreen));
        green[x] = static_cast<T>((cross & isOwn) | (row[at] & isGreen));
        other[x] = static_cast<T>((corners & isOwn) | (upright & isGreen));
    }
}

template <typename T>
Channels<const T> keep(const Channels<const T>& line, std::size_t, const Channels<T>&)
{
    return line;
}

template <typename T>
Channels<const T> monoToRgb(const Channels<const T>& line, std::size_t, const Channels<T>&)
{
    return {line[0], line[0], line[0]};
}

Channels<const std::uint8_t> monoToYuv(const Channels<const std::uint8_t>& line, std::size_t width,
                                       const Channels<std::uint8_t>& result)
{
    std::fill_n(result[1], width, std::uint8_t{128});
    return {line[0], result[1], result[1]};
}

// The coefficients are whole thousandths, so that this rounds as the real equation does.
constexpr std::uint32_t luma(std::uint32_t red, std::uint32_t green, std::uint32_t blue)
{
    return (299 * red + 587 * green + 114 * blue + 500) / 1000;
}

template <typename T>
Channels<const T> rgbToMono(const Channels<const T>& line, std::size_t width, const Channels<T>& result)
{
    const T* __restrict red = line[0];
    const T* __restrict green = line[1];
    const T* __restrict blue = line[2];
    T* __restrict mono = result[0];
    for (std::size_t x = 0; x < width; ++x)
        mono[x] = static_cast<T>(luma(red[x], green[x], blue[x]));
    return {mono, mono, mono};
}

// Coefficients in hundred-thousandths; 128 and the half for rounding are in the constant, so all sums are
// positive.
constexpr std::uint32_t chromaOne = 100000;
constexpr std::uint32_t chromaBias = 128 * chromaOne + chromaOne / 2;

constexpr std::uint8_t chroma(std::uint32_t plus, std::uint32_t minus)
{
    return static_cast<std::uint8_t>(std::min((chromaBias + plus - minus) / chromaOne, 255U));
}

Channels<const std::uint8_t> rgbToYuv(const Channels<const std::uint8_t>& line, std::size_t width,
                                      const Channels<std::uint8_t>& result)
{
    const std::uint8_t* __restrict red = line[0];
    const std::uint8_t* __restrict green = line[1];
    const std::uint8_t* __restrict blue = line[2];
    std::uint8_t* __restrict y = result[0];
    std::uint8_t* __restrict u = result[1];
    std::uint8_t* __restrict v = result[2];
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint32_t r = red[x];
        const std::uint32_t g = green[x];
        const std::uint32_t b = blue[x];
        y[x] = static_cast<std::uint8_t>(luma(r, g, b));
        u[x] = chroma(50000 * b, 16874 * r + 33126 * g);
        v[x] = chroma(50000 * r, 41869 * g + 8131 * b);
    }
    return {y, u, v};
}

constexpr std::uint8_t clampToByte(std::int32_t value)
{
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// Rounds `sum / chromaOne` half up for sums of either sign; the bias keeps the division unsigned.
constexpr std::int32_t roundChroma(std::int32_t sum)
{
    constexpr std::int32_t bias = 256;
    const auto positive = static_cast<std::uint32_t>(sum + bias * static_cast<std::int32_t>(chromaOne) +
                                                     static_cast<std::int32_t>(chromaOne / 2));
    return static_cast<std::int32_t>(positive / chromaOne) - bias;
}

Channels<const std::uint8_t> yuvToRgb(const Channels<const std::uint8_t>& line, std::size_t width,
                                      const Channels<std::uint8_t>& result)
{
    const std::uint8_t* __restrict y = line[0];
    const std::uint8_t* __restrict u = line[1];
    const std::uint8_t* __restrict v = line[2];
    std::uint8_t* __restrict red = result[0];
    std::uint8_t* __restrict green = result[1];
    std::uint8_t* __restrict blue = result[2];
    for (std::size_t x = 0; x < width; ++x) {
        const std::int32_t cb = u[x] - 128;
        const std::int32_t cr = v[x] - 128;
        red[x] = clampToByte(y[x] + roundChroma(140200 * cr));
        green[x] = clampToByte(y[x] + roundChroma(-34414 * cb - 71414 * cr));
        blue[x] = clampToByte(y[x] + roundChroma(177200 * cb));
    }
    return {red, green, blue};
}

}  // namespace

template <typename T>
void demosaic(const RawWindow<T>& window, EBayerOrder order, std::size_t row, std::size_t width,
              const Channels<T>& rgb)
{
    const bool firstRowHasRed = order == EBayerOrder::GR || order == EBayerOrder::RG;
    const bool firstIsGreen = order == EBayerOrder::GR || order == EBayerOrder::GB;
    const bool hasRed = firstRowHasRed == (row % 2 == 0);
    const std::size_t greenColumn = (firstIsGreen ? 0 : 1) ^ (row % 2);
    demosaicRow(window, greenColumn, width, hasRed ? rgb[0] : rgb[2], rgb[1], hasRed ? rgb[2] : rgb[0]);
}

template <typename T>
void mirrorEnds(T* line, std::size_t width)
{
    *(line - 1) = line[width > 1 ? 1 : 0];
    line[width] = line[width > 1 ? width - 2 : 0];
}

template <typename T>
ColourStage<T> findColourStage(LineKind from, LineKind to)
{
    if (from == to) return keep<T>;
    if (from == LineKind::Mono && to == LineKind::Rgb) return monoToRgb<T>;
    if (from == LineKind::Rgb && to == LineKind::Mono) return rgbToMono<T>;
    if constexpr (sizeof(T) == 1) {
        if (from == LineKind::Yuv) return to == LineKind::Mono ? keep<T> : yuvToRgb;
        return from == LineKind::Mono ? monoToYuv : rgbToYuv;
    }
    return nullptr;
}

#define INSTANTIATE(T)                                                                                         \
    template void demosaic<T>(const RawWindow<T>&, EBayerOrder, std::size_t, std::size_t, const Channels<T>&); \
    template void mirrorEnds<T>(T*, std::size_t);                                                              \
    template ColourStage<T> findColourStage<T>(LineKind, LineKind)
INSTANTIATE(std::uint8_t);
INSTANTIATE(std::uint16_t);
#undef INSTANTIATE

}  // namespace Nivex::Pixels
