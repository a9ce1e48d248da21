// A BMP file: 14 bytes of file header, an information header that tells its own size, bit masks, a palette, and
// somewhere behind that the rows, each filled up to a multiple of 4 bytes, usually the lowest first.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>

#include "utility/files/codecs.h"

namespace Nivex::Files {

namespace {

constexpr std::size_t fileHeaderBytes = 14;
constexpr std::size_t coreHeaderBytes = 12;
constexpr std::size_t infoHeaderBytes = 40;
constexpr std::size_t longestHeader = 124;

enum Compression : std::uint32_t
{
    plain = 0,
    bitFields = 3,
    alphaBitFields = 6
};

struct Header
{
    std::uint64_t pixelOffset;
    std::uint32_t infoBytes;
    std::uint32_t width;
    std::uint32_t height;
    bool isTopDown;
    std::uint32_t bits;
    std::uint32_t compression;
    std::uint32_t usedColors;
    std::array<std::uint32_t, 4> masks;  ///< Blue, green, red, alpha: as they stand in our pixels.
};

struct Palette
{
    std::array<std::array<std::uint8_t, 3>, 256> colors;  ///< Blue, green, red.
    std::uint32_t count;
    bool isGrey;
};

/// The bytes of the headers, read as little-endian fields.
class Fields
{
public:
    explicit Fields(ByteSource& source) { count_ = source.read(0, bytes_.data(), bytes_.size()); }

    std::uint32_t get16(std::size_t at) const { return get8(at) | get8(at + 1) << 8; }
    std::uint32_t get32(std::size_t at) const { return get16(at) | get16(at + 2) << 16; }

private:
    std::uint32_t get8(std::size_t at) const
    {
        if (at >= count_) fail("it ends in the header, after %zu bytes", count_);
        return bytes_[at];
    }

    std::array<std::uint8_t, fileHeaderBytes + longestHeader> bytes_{};
    std::size_t count_;
};

std::array<std::uint32_t, 4> defaultMasks(std::uint32_t bits)
{
    if (bits == 16) return {0x1F, 0x1F << 5, 0x1F << 10, 0};
    return {0xFF, 0xFF << 8, 0xFF << 16, 0};
}

/// The masks follow the 40 bytes that all information headers share, be it as a part of a longer one.
std::array<std::uint32_t, 4> readMasks(const Fields& fields, const Header& header)
{
    constexpr std::size_t at = fileHeaderBytes + infoHeaderBytes;
    const bool hasAlpha = header.infoBytes >= 56 || header.compression == alphaBitFields;
    return {fields.get32(at + 8), fields.get32(at + 4), fields.get32(at), hasAlpha ? fields.get32(at + 12) : 0};
}

void checkMask(std::uint32_t mask, std::uint32_t bits)
{
    const std::uint32_t run = mask ? mask >> std::countr_zero(mask) : 0;
    const bool isOneRun = (run & (run + 1)) == 0;
    if (!isOneRun || (bits < 32 && mask >> bits != 0)) {
        fail("its colour mask 0x%08X is no run of bits within %u", mask, bits);
    }
}

Header readHeader(ByteSource& source)
{
    const Fields fields(source);
    Header header = {};
    header.pixelOffset = fields.get32(10);
    header.infoBytes = fields.get32(14);
    if (header.infoBytes == coreHeaderBytes) {
        header.width = fields.get16(18);
        header.height = fields.get16(20);
        header.bits = fields.get16(24);
        header.masks = defaultMasks(header.bits);
        return header;
    }
    if (header.infoBytes < 16 || header.infoBytes > longestHeader) {
        fail("its header of %u bytes is of no known kind", header.infoBytes);
    }
    const auto width = static_cast<std::int32_t>(fields.get32(18));
    const auto height = static_cast<std::int32_t>(fields.get32(22));
    if (width <= 0 || height == 0) fail("it claims %d x %d pixels", width, height);
    header.width = static_cast<std::uint32_t>(width);
    header.isTopDown = height < 0;
    header.height =
        header.isTopDown ? 0U - static_cast<std::uint32_t>(height) : static_cast<std::uint32_t>(height);
    header.bits = fields.get16(28);
    const bool isShort = header.infoBytes < infoHeaderBytes;
    header.compression = isShort ? std::uint32_t{plain} : fields.get32(30);
    header.usedColors = isShort ? 0 : fields.get32(46);
    const bool hasMasks = header.compression == bitFields || header.compression == alphaBitFields;
    header.masks = hasMasks ? readMasks(fields, header) : defaultMasks(header.bits);
    return header;
}

void checkHeader(const Header& header)
{
    if (header.compression == 1 || header.compression == 2) fail("run-length coded BMP files are not supported");
    const bool hasMasks = header.compression == bitFields || header.compression == alphaBitFields;
    if (header.compression != plain && !hasMasks) fail("its compression %u is not supported", header.compression);
    constexpr std::array<std::uint32_t, 7> knownBits = {1, 2, 4, 8, 16, 24, 32};
    if (std::find(knownBits.begin(), knownBits.end(), header.bits) == knownBits.end()) {
        fail("its %u bits per pixel are not supported", header.bits);
    }
    if (hasMasks && header.bits != 16 && header.bits != 32) fail("its %u-bit pixels have bit masks", header.bits);
    for (const std::uint32_t mask : header.masks) {
        checkMask(mask, std::max(header.bits, 24U));
    }
}

Palette readPalette(ByteSource& source, const Header& header)
{
    const std::size_t entryBytes = header.infoBytes == coreHeaderBytes ? 3 : 4;
    const std::uint32_t most = 1U << header.bits;
    Palette palette = {};
    palette.count = header.usedColors == 0 ? most : std::min(header.usedColors, most);
    std::array<std::uint8_t, 256 * 4> raw;
    source.readExactly(fileHeaderBytes + header.infoBytes, raw.data(), palette.count * entryBytes);
    palette.isGrey = true;
    for (std::uint32_t i = 0; i < palette.count; ++i) {
        const std::uint8_t* entry = raw.data() + i * entryBytes;
        palette.colors[i] = {entry[0], entry[1], entry[2]};
        palette.isGrey = palette.isGrey && entry[0] == entry[1] && entry[1] == entry[2];
    }
    return palette;
}

/// The bits of one mask brought to 8.
class Channel
{
public:
    explicit Channel(std::uint32_t mask)
        : mask_(mask), shift_(mask ? std::countr_zero(mask) : 0), largest_(mask_ >> shift_)
    {}

    std::uint8_t get(std::uint32_t pixel) const
    {
        const std::uint64_t value = (pixel & mask_) >> shift_;
        if (largest_ == 0 || largest_ == 255) return static_cast<std::uint8_t>(value);
        return static_cast<std::uint8_t>((value * 255 + largest_ / 2) / largest_);
    }

private:
    std::uint32_t mask_;
    int shift_;
    std::uint32_t largest_;
};

/// Turns one row of the file into one of the image.
class RowReader
{
public:
    RowReader(const Header& header, const Palette& palette)
        : header_(header),
          palette_(palette),
          channels_{Channel(header.masks[0]), Channel(header.masks[1]), Channel(header.masks[2]),
                    Channel(header.masks[3])}
    {}

    EPixelType pixelType() const
    {
        if (header_.bits <= 8 && palette_.isGrey) return EPixelType::Mono8;
        return header_.masks[3] ? EPixelType::BGRA8Packed : EPixelType::BGR8Packed;
    }

    /// True if the rows stand in the file as they do in the image.
    bool isCopy() const
    {
        constexpr std::array<std::uint32_t, 4> ours = {0xFF, 0xFF << 8, 0xFF << 16, 0xFFU << 24};
        return header_.bits == 24 || (header_.bits == 32 && header_.masks == ours);
    }

    void convert(const std::uint8_t* from, std::uint8_t* to) const
    {
        if (header_.bits <= 8) {
            convertIndexed(from, to);
        } else {
            convertMasked(from, to);
        }
    }

private:
    void convertIndexed(const std::uint8_t* from, std::uint8_t* to) const
    {
        const std::uint32_t bits = header_.bits;
        const std::uint32_t largest = (1U << bits) - 1;
        for (std::uint32_t x = 0; x < header_.width; ++x) {
            const std::size_t bit = std::size_t{x} * bits;
            const std::uint32_t index = from[bit / 8] >> (8 - bits - bit % 8) & largest;
            if (index >= palette_.count) fail("it uses colour %u of a palette of %u", index, palette_.count);
            const auto& color = palette_.colors[index];
            to = std::copy_n(color.begin(), palette_.isGrey ? 1 : 3, to);
        }
    }

    void convertMasked(const std::uint8_t* from, std::uint8_t* to) const
    {
        const std::size_t channelCount = header_.masks[3] ? 4 : 3;
        const std::size_t pixelBytes = header_.bits / 8;
        for (std::uint32_t x = 0; x < header_.width; ++x, from += pixelBytes) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, from, pixelBytes);
            for (std::size_t c = 0; c < channelCount; ++c) {
                *to++ = channels_[c].get(pixel);
            }
        }
    }

    const Header& header_;
    const Palette& palette_;
    std::array<Channel, 4> channels_;
};

/// Hands over the rows of the file, read some at a time.
class RowSource
{
public:
    RowSource(ByteSource& source, const Header& header)
        : source_(source),
          header_(header),
          stride_((std::size_t{header.width} * header.bits + 31) / 32 * 4),
          rowBytes_((std::size_t{header.width} * header.bits + 7) / 8),
          rowsAtOnce_(std::clamp<std::size_t>(chunkBytes / stride_, 1, header.height)),
          chunk_(std::make_unique_for_overwrite<std::uint8_t[]>(rowsAtOnce_ * stride_))
    {}

    /// The filling of the last row may be missing.
    std::uint64_t bytesNeeded() const { return header_.pixelOffset + stride_ * (header_.height - 1) + rowBytes_; }
    std::size_t rowBytes() const { return rowBytes_; }

    /// Calls `take` with the place of each row from the top, and its bytes.
    template <typename Take>
    void forEachRow(Take take)
    {
        for (std::size_t first = 0; first < header_.height; first += rowsAtOnce_) {
            const std::size_t rows = std::min<std::size_t>(rowsAtOnce_, header_.height - first);
            source_.readExactly(header_.pixelOffset + first * stride_, chunk_.get(),
                                (rows - 1) * stride_ + rowBytes_);
            for (std::size_t i = 0; i < rows; ++i) {
                const std::size_t y = header_.isTopDown ? first + i : header_.height - 1 - first - i;
                take(y, chunk_.get() + i * stride_);
            }
        }
    }

private:
    static constexpr std::size_t chunkBytes = std::size_t{256} << 10;

    ByteSource& source_;
    const Header& header_;
    std::size_t stride_;
    std::size_t rowBytes_;
    std::size_t rowsAtOnce_;
    std::unique_ptr<std::uint8_t[]> chunk_;
};

}  // namespace

void readBmp(ByteSource& source, IReusableImage& image)
{
    const Header header = readHeader(source);
    checkHeader(header);
    const Palette palette = header.bits <= 8 ? readPalette(source, header) : Palette{};
    const RowReader reader(header, palette);
    checkLoadLimits(reader.pixelType(), header.width, header.height);
    RowSource rows(source, header);
    if (rows.bytesNeeded() > source.size()) {
        fail("its %u x %u pixels need %llu bytes, but it has %llu", header.width, header.height,
             static_cast<unsigned long long>(rows.bytesNeeded()), static_cast<unsigned long long>(source.size()));
    }

    std::byte* pixels = prepareImage(image, reader.pixelType(), header.width, header.height);
    const std::size_t imageStride = image.GetImageSize() / header.height;
    rows.forEachRow([&](std::size_t y, const std::uint8_t* row) {
        std::byte* to = pixels + y * imageStride;
        if (reader.isCopy()) {
            std::memcpy(to, row, rows.rowBytes());
        } else {
            reader.convert(row, reinterpret_cast<std::uint8_t*>(to));
        }
    });
}

}  // namespace Nivex::Files
