#include "utility/convert/colour.h"

#include <algorithm>

#include "utility/convert/widevectors.h"

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

// One bits where a column is even; taken from one place later, where it is odd. Long enough that a block of
// columns fills vectors.
template <typename T>
struct ColumnMask
{
    static constexpr std::size_t blockColumns = 64;
    std::array<T, blockColumns + 1> even{};

    constexpr ColumnMask()
    {
        for (std::size_t x = 0; x < even.size(); x += 2)
            even[x] = static_cast<T>(~T{0});
    }
};

template <typename T>
constexpr ColumnMask<T> columnMask;

// One row holds green and one of red and blue, here `own`; the rows beside it hold green and `other`. Columns of
// the parity `greenColumn` are green. Both cases are computed for every pixel and one is taken by a mask, since
// the compiler makes vector code of that.
template <typename T>
void demosaicBlock(const T* __restrict above, const T* __restrict row, const T* __restrict below,
                   const T* __restrict greenMask, std::ptrdiff_t columns, T* __restrict own, T* __restrict green,
                   T* __restrict other)
{
    for (std::ptrdiff_t x = 0; x < columns; ++x) {
        const T isGreen = greenMask[x];
        const T isOwn = static_cast<T>(~isGreen);
        const T sides = mean(row[x - 1], row[x + 1]);
        const T upright = mean(above[x], below[x]);
        const T cross = mean(row[x - 1], row[x + 1], above[x], below[x]);
        const T corners = mean(above[x - 1], above[x + 1], below[x - 1], below[x + 1]);
        own[x] = static_cast<T>((row[x] & isOwn) | (sides & isGreen));
        green[x] = static_cast<T>((cross & isOwn) | (row[x] & isGreen));
        other[x] = static_cast<T>((corners & isOwn) | (upright & isGreen));
    }
}

template <typename T>
void demosaicRow(const RawWindow<T>& window, std::size_t greenColumn, std::size_t width, T* own, T* green,
                 T* other)
{
    constexpr std::size_t block = ColumnMask<T>::blockColumns;
    const T* const greenMask = columnMask<T>.even.data() + greenColumn;
    for (std::size_t x = 0; x < width; x += block) {
        demosaicBlock(window.above + x, window.row + x, window.below + x, greenMask,
                      static_cast<std::ptrdiff_t>(std::min(block, width - x)), own + x, green + x, other + x);
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
constexpr std::uint16_t luma(std::uint16_t red, std::uint16_t green, std::uint16_t blue)
{
    return static_cast<std::uint16_t>((299U * red + 587U * green + 114U * blue + 500) / 1000);
}

// The same in numbers of 16 bits, which fill vectors twice as well: an eighth of the sum, split so that nothing is
// lost, and the division by 125 as a multiplication that is exact for all such sums.
constexpr std::uint8_t luma(std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    const std::uint16_t r = red;
    const std::uint16_t g = green;
    const std::uint16_t b = blue;
    const auto rest = static_cast<std::uint16_t>(static_cast<std::uint16_t>(3 * r + 3 * g + 2 * b + 4) >> 3);
    const auto eighth = static_cast<std::uint16_t>(37 * r + 73 * g + 14 * b + 62 + rest);
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>((std::uint32_t{eighth} * 33555U) >> 16) >> 6);
}

template <typename T>
void rgbToMonoRow(const T* __restrict red, const T* __restrict green, const T* __restrict blue, std::size_t width,
                  T* __restrict mono)
{
    for (std::size_t x = 0; x < width; ++x)
        mono[x] = luma(red[x], green[x], blue[x]);
}

template <typename T>
Channels<const T> rgbToMono(const Channels<const T>& line, std::size_t width, const Channels<T>& result)
{
    rgbToMonoRow(line[0], line[1], line[2], width, result[0]);
    return {result[0], result[0], result[0]};
}

// (own - green) / 2 - weight * (other - green) + 128, rounded half up, in units of 1 / 65536. Weights and rounding
// were found by search, so that for all colours the result is that of 0.16874 and 0.08131, exactly.
constexpr std::int16_t weightOfRedInU = 11058;
constexpr std::int16_t weightOfBlueInV = 5329;

constexpr std::uint8_t chroma(std::uint8_t own, std::uint8_t green, std::uint8_t other, std::int16_t weight)
{
    constexpr std::int32_t rounding = 8421420;
    const auto ownSurplus = static_cast<std::int16_t>(own - green);
    const auto otherSurplus = static_cast<std::int16_t>(other - green);
    const std::int32_t value =
        (std::int32_t{ownSurplus} * 32768 - std::int32_t{otherSurplus} * weight + rounding) >> 16;
    return static_cast<std::uint8_t>(value > 255 ? 255 : value);
}

void rgbToYuvRow(const std::uint8_t* __restrict red, const std::uint8_t* __restrict green,
                 const std::uint8_t* __restrict blue, std::size_t width, std::uint8_t* __restrict y,
                 std::uint8_t* __restrict u, std::uint8_t* __restrict v)
{
    for (std::size_t x = 0; x < width; ++x) {
        y[x] = luma(red[x], green[x], blue[x]);
        u[x] = chroma(blue[x], green[x], red[x], weightOfRedInU);
        v[x] = chroma(red[x], green[x], blue[x], weightOfBlueInV);
    }
}

Channels<const std::uint8_t> rgbToYuv(const Channels<const std::uint8_t>& line, std::size_t width,
                                      const Channels<std::uint8_t>& result)
{
    rgbToYuvRow(line[0], line[1], line[2], width, result[0], result[1], result[2]);
    return {result[0], result[1], result[2]};
}

constexpr std::uint8_t clampToByte(std::int32_t value)
{
    const std::int32_t positive = value < 0 ? 0 : value;
    return static_cast<std::uint8_t>(positive > 255 ? 255 : positive);
}

// Shifts in place of divisions, with coefficients and roundings found by search, so that for every chroma value
// the result is that of 1.402 V, -0.34414 U - 0.71414 V and 1.772 U, rounded half up.
constexpr std::int32_t redOf(std::int32_t v)
{
    return (11486 * v + 4096) >> 13;
}
constexpr std::int32_t greenOf(std::int32_t u, std::int32_t v)
{
    return (-360857 * u - 748830 * v + 524300) >> 20;
}
constexpr std::int32_t blueOf(std::int32_t u)
{
    return (14516 * u + 4130) >> 13;
}

void yuvToRgbRow(const std::uint8_t* __restrict y, const std::uint8_t* __restrict u,
                 const std::uint8_t* __restrict v, std::size_t width, std::uint8_t* __restrict red,
                 std::uint8_t* __restrict green, std::uint8_t* __restrict blue)
{
    for (std::size_t x = 0; x < width; ++x) {
        const std::int32_t cb = u[x] - 128;
        const std::int32_t cr = v[x] - 128;
        red[x] = clampToByte(y[x] + redOf(cr));
        green[x] = clampToByte(y[x] + greenOf(cb, cr));
        blue[x] = clampToByte(y[x] + blueOf(cb));
    }
}

Channels<const std::uint8_t> yuvToRgb(const Channels<const std::uint8_t>& line, std::size_t width,
                                      const Channels<std::uint8_t>& result)
{
    yuvToRgbRow(line[0], line[1], line[2], width, result[0], result[1], result[2]);
    return {result[0], result[1], result[2]};
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
    wide<demosaicRow<T>>(window, greenColumn, width, hasRed ? rgb[0] : rgb[2], rgb[1], hasRed ? rgb[2] : rgb[0]);
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
    if (from == LineKind::Rgb && to == LineKind::Mono) return wide<rgbToMono<T>>;
    if constexpr (sizeof(T) == 1) {
        if (from == LineKind::Yuv) return to == LineKind::Mono ? keep<T> : wide<yuvToRgb>;
        return from == LineKind::Mono ? monoToYuv : wide<rgbToYuv>;
    }
    return nullptr;
}

template void demosaic(const RawWindow<std::uint8_t>&, EBayerOrder, std::size_t, std::size_t,
                       const Channels<std::uint8_t>&);
template void demosaic(const RawWindow<std::uint16_t>&, EBayerOrder, std::size_t, std::size_t,
                       const Channels<std::uint16_t>&);
template void mirrorEnds(std::uint8_t*, std::size_t);
template void mirrorEnds(std::uint16_t*, std::size_t);
template ColourStage<std::uint8_t> findColourStage<std::uint8_t>(LineKind, LineKind);
template ColourStage<std::uint16_t> findColourStage<std::uint16_t>(LineKind, LineKind);

}  // namespace Nivex::Pixels
