#include "base/emulation/pixelencoder.h"

#include <algorithm>

#include "gcbase/exception.h"

#include "utility/imageformatconverter.h"

namespace Nivex::Emulation {
namespace {

/// Where the luma of a pair of pixels stands among its four samples: first, or behind the chroma sample.
enum class ELuma : std::uint8_t
{
    First,
    Second
};

struct ChromaFormat
{
    std::uint32_t value;
    ELuma luma;
};

constexpr ChromaFormat chromaFormats[] = {
    {0x0210001F, ELuma::Second},  // YUV422_8_UYVY
    {0x02100032, ELuma::First},   // YUV422_8
};

const ChromaFormat* findChroma(const PixelFormat& format)
{
    const auto* const row = std::ranges::find(chromaFormats, format.value, &ChromaFormat::value);
    return row != std::end(chromaFormats) ? row : nullptr;
}

bool isInterleavedColour(EPixelFamily family)
{
    using enum EPixelFamily;
    return family == RGB || family == RGBa || family == BGR || family == BGRa;
}

// The weights of ITU-R BT.601, full range, in units of 1/65536.
std::uint16_t luma(Colour c)
{
    return static_cast<std::uint16_t>((19595U * c.red + 38470U * c.green + 7471U * c.blue) >> 16);
}

std::uint16_t chroma(int difference, int unit)
{
    return static_cast<std::uint16_t>(std::clamp(32768 + difference * 1000 / unit, 0, 65535));
}

std::uint16_t blueChroma(Colour c)
{
    return chroma(c.blue - luma(c), 1772);
}

std::uint16_t redChroma(Colour c)
{
    return chroma(c.red - luma(c), 1402);
}

void packUnpacked(std::span<const std::uint16_t> samples, unsigned depth, std::byte* to)
{
    for (const std::uint16_t sample : samples) {
        const unsigned value = static_cast<unsigned>(sample) >> (16 - depth);
        *to++ = static_cast<std::byte>(value);
        if (depth > 8) *to++ = static_cast<std::byte>(value >> 8);
    }
}

void packBitStream(std::span<const std::uint16_t> samples, unsigned depth, std::byte* to)
{
    std::uint32_t waiting = 0;
    unsigned count = 0;
    for (const std::uint16_t sample : samples) {
        waiting |= static_cast<std::uint32_t>(sample) >> (16 - depth) << count;
        for (count += depth; count >= 8; count -= 8, waiting >>= 8)
            *to++ = static_cast<std::byte>(waiting);
    }
    if (count > 0) *to = static_cast<std::byte>(waiting);
}

// Two samples in three bytes: their high bits around one byte with the low bits of both.
void packPairs(std::span<const std::uint16_t> samples, unsigned depth, std::byte* to)
{
    const unsigned lowBits = depth - 8;
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        const unsigned first = static_cast<unsigned>(samples[i]) >> (16 - depth);
        const bool hasSecond = i + 1 < samples.size();
        const unsigned second = hasSecond ? static_cast<unsigned>(samples[i + 1]) >> (16 - depth) : 0;
        const unsigned mask = (1U << lowBits) - 1;
        *to++ = static_cast<std::byte>(first >> lowBits);
        *to++ = static_cast<std::byte>((first & mask) | (second & mask) << 4);
        if (hasSecond) *to++ = static_cast<std::byte>(second >> lowBits);
    }
}

}  // namespace

bool PixelEncoder::CanEncode(const PixelFormat& format)
{
    return format.planes == EPixelPlanes::Interleaved &&
           CImageFormatConverter::IsSupportedInputFormat(static_cast<EPixelType>(format.value)) &&
           (format.family == EPixelFamily::Mono || format.family == EPixelFamily::Bayer ||
            isInterleavedColour(format.family) || findChroma(format));
}

std::span<const PixelFormat* const> PixelEncoder::Formats()
{
    static const std::vector<const PixelFormat*> formats = [] {
        std::vector<const PixelFormat*> found;
        for (const PixelFormat& format : GetPixelFormats())
            if (CanEncode(format)) found.push_back(&format);
        return found;
    }();
    return formats;
}

PixelEncoder::PixelEncoder(EPixelType pixelType)
    : format_([&]() -> const PixelFormat& {
          const PixelFormat* const format = FindPixelFormat(pixelType);
          if (!format || !CanEncode(*format))
              GENICAM_THROW(InvalidArgumentException, "The emulated camera has no pixel format %s.",
                            GetPixelTypeName(pixelType));
          return *format;
      }())
{}

std::size_t PixelEncoder::RowBytes(std::size_t width) const
{
    return (width * BitsPerPixel(static_cast<EPixelType>(format_.value)) + 7) / 8;
}

void PixelEncoder::Encode(std::span<const Colour> pixels, std::uint32_t row, std::span<std::byte> bytes)
{
    samples_.clear();
    Gather(pixels, row);
    switch (format_.packing) {
        case EPixelPacking::Unpacked:
            return packUnpacked(samples_, format_.bitDepth, bytes.data());
        case EPixelPacking::LsbPacked:
            return packBitStream(samples_, format_.bitDepth, bytes.data());
        case EPixelPacking::GigEPacked:
            return packPairs(samples_, format_.bitDepth, bytes.data());
    }
}

void PixelEncoder::Gather(std::span<const Colour> pixels, std::uint32_t row)
{
    using enum EPixelFamily;
    if (format_.family == Bayer) return GatherBayer(pixels, row);
    if (!isInterleavedColour(format_.family) && format_.family != Mono) return GatherChroma(pixels);
    const bool blueFirst = format_.family == BGR || format_.family == BGRa;
    const bool hasAlpha = format_.family == RGBa || format_.family == BGRa;
    for (const Colour c : pixels) {
        if (format_.family == Mono) {
            samples_.push_back(luma(c));
            continue;
        }
        samples_.insert(samples_.end(), {blueFirst ? c.blue : c.red, c.green, blueFirst ? c.red : c.blue});
        if (hasAlpha) samples_.push_back(0xFFFF);
    }
}

void PixelEncoder::GatherBayer(std::span<const Colour> pixels, std::uint32_t row)
{
    const EBayerOrder order = *BayerOrder(static_cast<EPixelType>(format_.value));
    const bool redBelow = order == EBayerOrder::GB || order == EBayerOrder::BG;
    const bool greenFirst = (order == EBayerOrder::GR || order == EBayerOrder::GB) != (row % 2 != 0);
    const auto coloured = redBelow == (row % 2 != 0) ? &Colour::red : &Colour::blue;
    for (std::size_t x = 0; x < pixels.size(); ++x)
        samples_.push_back((x % 2 == 0) == greenFirst ? pixels[x].green : pixels[x].*coloured);
}

// The first pixel of a pair gives blue, the second red: neighbours on a belt look alike.
void PixelEncoder::GatherChroma(std::span<const Colour> pixels)
{
    const bool lumaFirst = findChroma(format_)->luma == ELuma::First;
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        const std::uint16_t colour = x % 2 == 0 ? blueChroma(pixels[x]) : redChroma(pixels[x]);
        const std::uint16_t grey = luma(pixels[x]);
        samples_.insert(samples_.end(), {lumaFirst ? grey : colour, lumaFirst ? colour : grey});
    }
}

}  // namespace Nivex::Emulation
