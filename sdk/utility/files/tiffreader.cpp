// A TIFF picture is cut into segments, strips of whole rows or tiles, for all samples of a pixel together or for
// each sample apart. Each segment is decoded by the library and its rows are put where they belong. Colour spaces
// that machine vision does not write go through the library's own rendering to 8-bit RGB.

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "utility/files/codecs.h"
#include "utility/files/tiffhandle.h"
#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

namespace Nivex::Files {

namespace {

struct Form
{
    std::uint32_t width;
    std::uint32_t height;
    std::uint16_t bits;
    std::uint16_t samples;
    std::uint16_t photometric;
    std::uint16_t compression;
    std::uint16_t orientation;
    bool isSeparate;  ///< Each sample has segments of its own.
    bool isTiled;

    bool isGrey() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
    bool isPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
    bool isTransposed() const { return orientation >= ORIENTATION_LEFTTOP; }
};

/// Segments, all of the same size but for those at the right and lower edge.
struct Grid
{
    std::uint32_t width;
    std::uint32_t height;
    std::size_t rowBytes;  ///< Of a whole segment.
    std::size_t bytes;
};

std::uint16_t shortField(const TiffHandle& handle, std::uint32_t tag, std::uint16_t otherwise)
{
    std::uint16_t value = 0;
    return TIFFGetFieldDefaulted(handle.get(), tag, &value) ? value : otherwise;
}

Form readForm(const TiffHandle& handle)
{
    Form form = {};
    TIFFGetField(handle.get(), TIFFTAG_IMAGEWIDTH, &form.width);
    TIFFGetField(handle.get(), TIFFTAG_IMAGELENGTH, &form.height);
    form.bits = shortField(handle, TIFFTAG_BITSPERSAMPLE, 1);
    form.samples = shortField(handle, TIFFTAG_SAMPLESPERPIXEL, 1);
    form.photometric = shortField(handle, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    form.compression = shortField(handle, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    form.orientation = shortField(handle, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    form.isSeparate = shortField(handle, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    form.isTiled = TIFFIsTiled(handle.get()) != 0;
    if (form.orientation < ORIENTATION_TOPLEFT || form.orientation > ORIENTATION_LEFTBOT) {
        form.orientation = ORIENTATION_TOPLEFT;
    }
    if (form.photometric == PHOTOMETRIC_CFA) {
        fail(
            "it holds samples behind a colour filter pattern, as DNG files of Bayer cameras do, and no picture "
            "yet");
    }
    const std::uint16_t sampleFormat = shortField(handle, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (sampleFormat != SAMPLEFORMAT_UINT && sampleFormat != SAMPLEFORMAT_VOID) {
        fail("its samples are no unsigned integers (sample format %u)", sampleFormat);
    }
    return form;
}

/// The pixel type of a form whose segments we place ourselves; Undefined if the library has to render it.
EPixelType pixelTypeOf(const Form& form)
{
    const bool isWhole = form.bits == 8 || form.bits == 16;
    const bool isFine = form.bits == 1 || form.bits == 2 || form.bits == 4;
    const bool isColor = form.photometric == PHOTOMETRIC_RGB || form.photometric == photometricLinearRaw;
    const bool isRgb = isColor && form.samples >= 3 && isWhole;
    if (form.isGrey() && form.bits == 16) return EPixelType::Mono16;
    if (form.isGrey() && (isWhole || isFine)) return EPixelType::Mono8;
    if (form.isPalette() && form.samples == 1 && (form.bits == 8 || isFine)) return EPixelType::RGB8Packed;
    if (isRgb && form.bits == 16) return EPixelType::RGB16Packed;
    if (isRgb) return form.samples == 4 ? EPixelType::RGBA8Packed : EPixelType::RGB8Packed;
    return EPixelType::Undefined;
}

Grid readGrid(const TiffHandle& handle, const Form& form)
{
    // A segment is never larger than this in practice, however large the picture.
    constexpr std::uint64_t largestSegment = std::uint64_t{256} << 20;
    TIFF* const tiff = handle.get();
    Grid grid = {form.width, form.height, 0, 0};
    std::uint64_t bytes = 0;
    std::uint64_t rowBytes = 0;
    if (form.isTiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &grid.width);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &grid.height);
        bytes = TIFFTileSize64(tiff);
        rowBytes = TIFFTileRowSize64(tiff);
    } else {
        std::uint32_t rows = form.height;
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
        grid.height = std::clamp<std::uint32_t>(rows, 1, form.height);
        bytes = TIFFVStripSize64(tiff, grid.height);
        rowBytes = TIFFScanlineSize64(tiff);
    }
    const bool isSane = grid.width > 0 && grid.height > 0 && rowBytes > 0 && rowBytes <= bytes / grid.height;
    if (!isSane) fail("its segments of %u x %u pixels make no sense", grid.width, grid.height);
    if (form.isTiled && bytes > largestSegment) {
        fail("its tiles would take %llu bytes each; at most %llu are allowed",
             static_cast<unsigned long long>(bytes), static_cast<unsigned long long>(largestSegment));
    }
    grid.rowBytes = static_cast<std::size_t>(rowBytes);
    grid.bytes = static_cast<std::size_t>(bytes);
    return grid;
}

/// Colours of a palette, brought to 8 bits; files of old programs hold 8 bits where 16 are meant.
std::vector<std::array<std::uint8_t, 3>> readPalette(const TiffHandle& handle, const Form& form)
{
    std::array<std::uint16_t*, 3> channels{};
    handle.check(TIFFGetField(handle.get(), TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) == 1);
    const std::size_t count = std::size_t{1} << form.bits;
    const bool isDeep = std::any_of(channels.begin(), channels.end(), [count](const std::uint16_t* channel) {
        return std::any_of(channel, channel + count, [](std::uint16_t value) { return value > 255; });
    });
    std::vector<std::array<std::uint8_t, 3>> palette(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            palette[i][c] = static_cast<std::uint8_t>(isDeep ? channels[c][i] >> 8 : channels[c][i]);
        }
    }
    return palette;
}

/// Puts the rows of decoded segments into the picture.
class RowPlacer
{
public:
    RowPlacer(const TiffHandle& handle, const Form& form, IReusableImage& image)
        : form_(form),
          pixels_(static_cast<std::byte*>(image.GetBuffer())),
          channels_(BitsPerPixel(image.GetPixelType()) / (form.bits == 16 ? 16 : 8)),
          samplesAtOnce_(form.isSeparate ? 1U : form.samples)
    {
        if (form.isPalette()) palette_ = readPalette(handle, form);
    }

    /// True if rows in the file stand there as they do in the picture.
    bool isCopy() const
    {
        return form_.bits >= 8 && samplesAtOnce_ == channels_ && form_.photometric != PHOTOMETRIC_MINISWHITE &&
               palette_.empty();
    }

    /// Samples beyond those of the picture are passed over.
    bool wantsPlane(std::uint32_t plane) const { return plane < channels_ || !palette_.empty(); }

    void place(const std::byte* row, std::uint32_t plane, std::uint32_t x, std::uint32_t y, std::uint32_t count)
    {
        if (form_.bits == 16) {
            placeSamples(reinterpret_cast<const std::uint16_t*>(row), plane, x, y, count);
        } else {
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(row);
            if (form_.bits < 8) bytes = unpack(bytes, count);
            if (palette_.empty()) {
                placeSamples(bytes, plane, x, y, count);
            } else {
                placeColors(bytes, x, y, count);
            }
        }
    }

private:
    std::size_t pixelIndex(std::uint32_t x, std::uint32_t y) const { return std::size_t{y} * form_.width + x; }

    /// Brings samples of less than 8 bits to bytes: greys to the full range, palette indices as they are.
    const std::uint8_t* unpack(const std::uint8_t* packed, std::uint32_t count)
    {
        const std::size_t samples = std::size_t{count} * samplesAtOnce_;
        const unsigned largest = (1U << form_.bits) - 1;
        const unsigned scale = palette_.empty() ? 255 / largest : 1;
        unpacked_.resize(samples);
        for (std::size_t i = 0; i < samples; ++i) {
            const std::size_t bit = i * form_.bits;
            const unsigned value = packed[bit / 8] >> (8 - form_.bits - bit % 8) & largest;
            unpacked_[i] = static_cast<std::uint8_t>(value * scale);
        }
        return unpacked_.data();
    }

    template <typename Sample>
    void placeSamples(const Sample* row, std::uint32_t plane, std::uint32_t x, std::uint32_t y,
                      std::uint32_t count)
    {
        const auto flip = static_cast<Sample>(form_.photometric == PHOTOMETRIC_MINISWHITE ? ~Sample{0} : 0);
        const std::size_t wanted = std::min<std::size_t>(samplesAtOnce_, channels_);
        auto* to = reinterpret_cast<Sample*>(pixels_) + pixelIndex(x, y) * channels_ + plane;
        for (std::uint32_t i = 0; i < count; ++i, row += samplesAtOnce_, to += channels_) {
            for (std::size_t c = 0; c < wanted; ++c) {
                to[c] = static_cast<Sample>(row[c] ^ flip);
            }
        }
    }

    void placeColors(const std::uint8_t* row, std::uint32_t x, std::uint32_t y, std::uint32_t count)
    {
        auto* to = pixels_ + pixelIndex(x, y) * 3;
        for (std::uint32_t i = 0; i < count; ++i) {
            std::memcpy(to + i * std::size_t{3}, palette_[row[i]].data(), 3);
        }
    }

    const Form& form_;
    std::byte* pixels_;
    std::size_t channels_;
    std::size_t samplesAtOnce_;  ///< Of a pixel, in one segment.
    std::vector<std::array<std::uint8_t, 3>> palette_;
    std::vector<std::uint8_t> unpacked_;
};

/// Decodes all segments of a picture in the file's own orientation.
class SegmentReader
{
public:
    SegmentReader(TiffHandle& handle, const Form& form, RowPlacer& placer, std::byte* pixels)
        : handle_(handle), form_(form), grid_(readGrid(handle, form)), placer_(placer), pixels_(pixels)
    {}

    void read()
    {
        // Fax and JPEG data that are damaged or missing are made up by the library with no more than a warning.
        const bool isGuessed = form_.compression == COMPRESSION_CCITTRLE ||
                               form_.compression == COMPRESSION_CCITTFAX3 ||
                               form_.compression == COMPRESSION_CCITTFAX4 || form_.compression == COMPRESSION_JPEG;
        handle_.clearWarning();
        const std::uint32_t planes = form_.isSeparate ? form_.samples : 1;
        for (std::uint32_t plane = 0; plane < planes && placer_.wantsPlane(plane); ++plane) {
            readPlane(plane);
        }
        if (isGuessed && handle_.hasWarning()) fail("its compressed data are damaged");
    }

private:
    void readPlane(std::uint32_t plane)
    {
        for (std::uint32_t y = 0; y < form_.height; y += grid_.height) {
            const std::uint32_t rows = std::min(grid_.height, form_.height - y);
            for (std::uint32_t x = 0; x < form_.width; x += grid_.width) {
                readSegment(plane, x, y, rows);
            }
        }
    }

    void readSegment(std::uint32_t plane, std::uint32_t x, std::uint32_t y, std::uint32_t rows)
    {
        if (!form_.isTiled && placer_.isCopy()) {
            decodeStrip(plane, y, pixels_ + y * grid_.rowBytes, rows * grid_.rowBytes);
            return;
        }
        if (!segment_) segment_ = std::make_unique_for_overwrite<std::byte[]>(grid_.bytes);
        if (form_.isTiled) {
            decodeTile(plane, x, y);
        } else {
            decodeStrip(plane, y, segment_.get(), rows * grid_.rowBytes);
        }
        const std::uint32_t columns = std::min(grid_.width, form_.width - x);
        for (std::uint32_t i = 0; i < rows; ++i) {
            placer_.place(segment_.get() + i * grid_.rowBytes, plane, x, y + i, columns);
        }
    }

    void decodeStrip(std::uint32_t plane, std::uint32_t y, std::byte* to, std::size_t bytes)
    {
        const std::uint32_t strip = TIFFComputeStrip(handle_.get(), y, static_cast<std::uint16_t>(plane));
        const tmsize_t got = TIFFReadEncodedStrip(handle_.get(), strip, to, static_cast<tmsize_t>(bytes));
        handle_.check(got >= 0);
        if (static_cast<std::size_t>(got) != bytes) {
            fail("strip %u ends early: it has %lld bytes of %zu", strip, static_cast<long long>(got), bytes);
        }
    }

    void decodeTile(std::uint32_t plane, std::uint32_t x, std::uint32_t y)
    {
        const std::uint32_t tile = TIFFComputeTile(handle_.get(), x, y, 0, static_cast<std::uint16_t>(plane));
        const auto size = static_cast<tmsize_t>(grid_.bytes);
        const tmsize_t got = TIFFReadEncodedTile(handle_.get(), tile, segment_.get(), size);
        handle_.check(got >= 0);
        if (got != size) {
            fail("tile %u ends early: it has %lld bytes of %zu", tile, static_cast<long long>(got), grid_.bytes);
        }
    }

    TiffHandle& handle_;
    const Form& form_;
    Grid grid_;
    RowPlacer& placer_;
    std::byte* pixels_;
    std::unique_ptr<std::byte[]> segment_;
};

void readPlaced(TiffHandle& handle, const Form& form, EPixelType pixelType, IReusableImage& image)
{
    std::byte* pixels = prepareImage(image, pixelType, form.width, form.height);
    RowPlacer placer(handle, form, image);
    SegmentReader(handle, form, placer, pixels).read();
}

void readRendered(TiffHandle& handle, const Form& form, IReusableImage& image)
{
    std::array<char, 1024> text{};
    if (!TIFFRGBAImageOK(handle.get(), text.data())) fail("%s", text.data());
    checkLoadLimits(EPixelType::RGBA8Packed, form.width, form.height);
    const std::size_t pixelCount = std::size_t{form.width} * form.height;
    const auto raster = std::make_unique_for_overwrite<std::uint32_t[]>(pixelCount);
    constexpr int stopOnError = 1;
    handle.clearWarning();
    handle.check(TIFFReadRGBAImageOriented(handle.get(), form.width, form.height, raster.get(), form.orientation,
                                           stopOnError) == 1);
    if (form.compression == COMPRESSION_JPEG && handle.hasWarning()) fail("its compressed data are damaged");
    auto* to =
        reinterpret_cast<std::uint8_t*>(prepareImage(image, EPixelType::RGB8Packed, form.width, form.height));
    for (std::size_t i = 0; i < pixelCount; ++i) {
        *to++ = static_cast<std::uint8_t>(TIFFGetR(raster[i]));
        *to++ = static_cast<std::uint8_t>(TIFFGetG(raster[i]));
        *to++ = static_cast<std::uint8_t>(TIFFGetB(raster[i]));
    }
}

/// Copies a picture so that its first row is the upper one and its first column the left one.
void turnUpright(const IImage& stored, const Form& form, IReusableImage& upright)
{
    const std::uint16_t orientation = form.orientation;
    const bool isMirrored = orientation == ORIENTATION_TOPRIGHT || orientation == ORIENTATION_BOTRIGHT ||
                            orientation == ORIENTATION_RIGHTTOP || orientation == ORIENTATION_RIGHTBOT;
    const bool isUpsideDown = orientation == ORIENTATION_BOTRIGHT || orientation == ORIENTATION_BOTLEFT ||
                              orientation == ORIENTATION_RIGHTBOT || orientation == ORIENTATION_LEFTBOT;
    const std::uint32_t width = form.isTransposed() ? form.height : form.width;
    const std::uint32_t height = form.isTransposed() ? form.width : form.height;
    const std::size_t pixelBytes = BitsPerPixel(stored.GetPixelType()) / 8;
    const auto* from = static_cast<const std::byte*>(stored.GetBuffer());
    std::byte* to = prepareImage(upright, stored.GetPixelType(), width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x, to += pixelBytes) {
            std::uint32_t column = isMirrored ? width - 1 - x : x;
            std::uint32_t row = isUpsideDown ? height - 1 - y : y;
            if (form.isTransposed()) std::swap(column, row);
            std::memcpy(to, from + (std::size_t{row} * form.width + column) * pixelBytes, pixelBytes);
        }
    }
}

}  // namespace

void readTiff(ByteSource& source, IReusableImage& image)
{
    TiffHandle handle(source);
    const Form form = readForm(handle);
    const EPixelType pixelType = pixelTypeOf(form);
    CNivexImage stored;
    const bool isUpright = form.orientation == ORIENTATION_TOPLEFT;
    IReusableImage& target = isUpright ? image : stored;
    if (pixelType != EPixelType::Undefined) {
        readPlaced(handle, form, pixelType, target);
    } else {
        readRendered(handle, form, target);
    }
    if (!isUpright) turnUpright(stored, form, image);
}

}  // namespace Nivex::Files
