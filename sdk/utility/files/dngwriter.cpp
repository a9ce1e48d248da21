// A DNG file (version 1.4) is a TIFF file whose picture is what the sensor saw: one sample per pixel behind a
// colour filter pattern, or linear colour samples. Its further fields tell readers how to make colours of them.

#include <tiffio.h>

#include <array>
#include <cstring>
#include <vector>

#include "utility/convert/decode.h"
#include "utility/files/codecs.h"
#include "utility/files/tiffstrips.h"

namespace Nivex::Files {

namespace {

constexpr std::uint16_t illuminantD65 = 21;
constexpr std::uint16_t rectangularLayout = 1;
constexpr std::array<std::uint8_t, 4> version = {1, 4, 0, 0};
constexpr std::array<std::uint8_t, 4> oldestReader = {1, 1, 0, 0};
constexpr const char* cameraModel = "Stagelet Camera";

// No sensor is known here: its colours are taken to be those of linear sRGB, already balanced for daylight.
constexpr std::array<float, 9> sRgbOfXyz = {3.2404542F,  -1.5371385F, -0.4985314F,  //
                                            -0.9692660F, 1.8760108F,  0.0415560F,   //
                                            0.0556434F,  -0.2040259F, 1.0572252F};
constexpr std::array<float, 3> balanced = {1, 1, 1};

using Pattern = std::array<std::uint8_t, 4>;  ///< Colours of the upper left 2 x 2 pixels, row by row.

/// Colours of a pattern that starts with memory row 0.
Pattern patternOf(EBayerOrder order)
{
    constexpr std::uint8_t red = 0;
    constexpr std::uint8_t green = 1;
    constexpr std::uint8_t blue = 2;
    switch (order) {
        case EBayerOrder::GR:
            return {green, red, blue, green};
        case EBayerOrder::RG:
            return {red, green, green, blue};
        case EBayerOrder::GB:
            return {green, blue, red, green};
        case EBayerOrder::BG:
            break;
    }
    return {blue, green, green, red};
}

/// Colours as the eye sees them from the top, where bottom-up pictures of even height start with the other row.
Pattern patternFromTop(const PictureView& picture, EBayerOrder order)
{
    const Pattern pattern = patternOf(order);
    if (!picture.isBottomUp || picture.height % 2 == 1) return pattern;
    return {pattern[2], pattern[3], pattern[0], pattern[1]};
}

void setCameraFields(const TiffHandle& handle, const TiffForm& form, std::uint32_t whiteLevel)
{
    TIFF* const tiff = handle.get();
    const auto samples = static_cast<std::uint16_t>(form.samples);
    const std::array<std::uint32_t, 3> white = {whiteLevel, whiteLevel, whiteLevel};
    constexpr std::array<float, 3> black = {0, 0, 0};
    const bool isSet = TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, 0U) &&
                       TIFFSetField(tiff, TIFFTAG_SOFTWARE, "Stagelet") &&
                       TIFFSetField(tiff, TIFFTAG_DNGVERSION, version.data()) &&
                       TIFFSetField(tiff, TIFFTAG_DNGBACKWARDVERSION, oldestReader.data()) &&
                       TIFFSetField(tiff, TIFFTAG_UNIQUECAMERAMODEL, cameraModel) &&
                       TIFFSetField(tiff, TIFFTAG_BLACKLEVEL, samples, black.data()) &&
                       TIFFSetField(tiff, TIFFTAG_WHITELEVEL, samples, white.data()) &&
                       TIFFSetField(tiff, TIFFTAG_COLORMATRIX1, sRgbOfXyz.size(), sRgbOfXyz.data()) &&
                       TIFFSetField(tiff, TIFFTAG_CALIBRATIONILLUMINANT1, illuminantD65) &&
                       TIFFSetField(tiff, TIFFTAG_ASSHOTNEUTRAL, balanced.size(), balanced.data());
    handle.check(isSet);
}

void setFilterFields(const TiffHandle& handle, const Pattern& pattern)
{
    constexpr std::array<std::uint16_t, 2> repeat = {2, 2};
    constexpr std::array<std::uint8_t, 3> planes = {0, 1, 2};
    TIFF* const tiff = handle.get();
    const bool isSet = TIFFSetField(tiff, TIFFTAG_CFAREPEATPATTERNDIM, repeat.data()) &&
                       TIFFSetField(tiff, TIFFTAG_CFAPATTERN, pattern.size(), pattern.data()) &&
                       TIFFSetField(tiff, TIFFTAG_CFAPLANECOLOR, planes.size(), planes.data()) &&
                       TIFFSetField(tiff, TIFFTAG_CFALAYOUT, rectangularLayout);
    handle.check(isSet);
}

/// Brings the samples to cells of 16 bits, values in the low bits, and whatever else a cell held to zero.
void writeUnpacked(const TiffHandle& handle, const TiffForm& form, const PictureView& picture)
{
    const auto decode = Pixels::findInputFormat(picture.pixelType)->decode.to16;
    std::vector<std::uint16_t> buffer(form.width + 2 * Pixels::lineSlack);
    std::uint16_t* const line = buffer.data() + Pixels::lineSlack;
    writeStrips(handle, form, [&](std::uint32_t y, std::byte* row) {
        const auto* from = reinterpret_cast<const std::uint8_t*>(picture.row(y));
        decode({{from, nullptr, nullptr}}, form.width, {line, nullptr, nullptr});
        std::memcpy(row, line, form.rowBytes());
    });
}

}  // namespace

void writeDng(const PictureView& picture, int, OutputFile& file)
{
    const auto order = BayerOrder(picture.pixelType);
    const std::uint32_t depth = BitDepth(picture.pixelType);
    const TiffForm form = {picture.width, picture.height, depth > 8 ? 16U : 8U, order ? 1U : 3U,
                           order ? std::uint32_t{PHOTOMETRIC_CFA} : photometricLinearRaw};
    if (std::uint64_t{form.rowBytes()} * form.height > largestSmallTiff) fail("a DNG file ends at 4 GiB");
    const TiffHandle handle(file, false);
    setForm(handle, form);
    setCameraFields(handle, form, (1U << depth) - 1);
    if (order) setFilterFields(handle, patternFromTop(picture, *order));
    if (depth == form.bits) {
        writeStrips(handle, form, picture);
    } else {
        writeUnpacked(handle, form, picture);
    }
}

}  // namespace Nivex::Files
