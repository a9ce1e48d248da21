#include <algorithm>
#include <array>
#include <bit>

#include "utility/files/codecs.h"

namespace Nivex::Files {

namespace {

static_assert(std::endian::native == std::endian::little, "Headers are written as they stand in memory.");

constexpr std::uint32_t fileHeaderBytes = 14;
constexpr std::uint32_t infoHeaderBytes = 40;
constexpr std::uint32_t masksHeaderBytes = 108;  // The fourth version, the first that readers trust for alpha.
constexpr std::uint32_t greyPaletteBytes = 256 * 4;
constexpr std::uint32_t pixelsPerMetre = 2835;  // 72 per inch, for programs that print.

/// Appends little-endian fields.
class HeaderBytes
{
public:
    void add16(std::uint32_t value)
    {
        bytes_[count_++] = static_cast<std::uint8_t>(value);
        bytes_[count_++] = static_cast<std::uint8_t>(value >> 8);
    }
    void add32(std::uint32_t value)
    {
        add16(value);
        add16(value >> 16);
    }
    void addZeros(std::size_t count) { count_ += count; }
    void writeTo(OutputFile& file) const { file.write(bytes_.data(), count_); }

private:
    std::array<std::uint8_t, fileHeaderBytes + masksHeaderBytes + greyPaletteBytes> bytes_{};
    std::size_t count_ = 0;
};

void addMasks(HeaderBytes& header)
{
    constexpr std::uint32_t standardRgb = 0x73524742;
    for (const std::uint32_t mask : {0x00FF0000U, 0x0000FF00U, 0x000000FFU, 0xFF000000U}) {
        header.add32(mask);
    }
    header.add32(standardRgb);
    header.addZeros(12 * 4);  // Primaries and gamma, unused with that colour space.
}

void addGreyPalette(HeaderBytes& header)
{
    for (std::uint32_t grey = 0; grey < 256; ++grey) {
        header.add32(grey * 0x010101);
    }
}

}  // namespace

void writeBmp(const PictureView& picture, int, OutputFile& file)
{
    const std::uint32_t bits = BitsPerPixel(picture.pixelType);
    const std::uint32_t infoBytes = bits == 32 ? masksHeaderBytes : infoHeaderBytes;
    const std::uint32_t pixelOffset = fileHeaderBytes + infoBytes + (bits == 8 ? greyPaletteBytes : 0);
    const std::size_t stride = (picture.rowBytes + 3) / 4 * 4;
    const std::uint64_t pixelBytes = std::uint64_t{stride} * picture.height;
    if (pixelOffset + pixelBytes > 0xFFFFFFFF) fail("a BMP file ends at 4 GiB");

    HeaderBytes header;
    header.add16('B' | 'M' << 8);
    header.add32(static_cast<std::uint32_t>(pixelOffset + pixelBytes));
    header.add32(0);
    header.add32(pixelOffset);
    header.add32(infoBytes);
    header.add32(picture.width);
    header.add32(picture.height);
    header.add16(1);  // Planes.
    header.add16(bits);
    header.add32(bits == 32 ? 3 : 0);  // Bit masks or plain.
    header.add32(static_cast<std::uint32_t>(pixelBytes));
    header.add32(pixelsPerMetre);
    header.add32(pixelsPerMetre);
    header.add32(bits == 8 ? 256 : 0);  // Colours in the palette, and how many of them matter.
    header.add32(0);
    if (bits == 32) addMasks(header);
    if (bits == 8) addGreyPalette(header);
    header.writeTo(file);

    constexpr std::array<std::byte, 3> filling{};
    for (std::uint32_t y = picture.height; y-- > 0;) {
        file.write(picture.row(y), picture.rowBytes);
        file.write(filling.data(), stride - picture.rowBytes);
    }
}

}  // namespace Nivex::Files
