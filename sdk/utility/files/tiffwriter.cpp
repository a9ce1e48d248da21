#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "utility/files/codecs.h"
#include "utility/files/tiffhandle.h"

namespace Nivex::Files {

namespace {

constexpr std::size_t stripBytes = std::size_t{1} << 20;

void setFields(const TiffHandle& handle, const PictureView& picture, std::uint32_t rowsPerStrip)
{
    TIFF* const tiff = handle.get();
    const bool isGrey = IsMonochrome(picture.pixelType);
    const bool isSet =
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width) &&
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height) &&
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, BitDepth(picture.pixelType)) &&
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, isGrey ? 1 : 3) &&
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, isGrey ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB) &&
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) &&
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    handle.check(isSet);
}

}  // namespace

void writeTiff(const PictureView& picture, int, OutputFile& file)
{
    // Leaves room for the directory with its lists of strips.
    constexpr std::uint64_t largestSmallFile = 0xF0000000;
    const std::uint64_t pixelBytes = std::uint64_t{picture.rowBytes} * picture.height;
    const TiffHandle handle(file, pixelBytes > largestSmallFile);
    const auto rowsPerStrip =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(stripBytes / picture.rowBytes, 1, picture.height));
    setFields(handle, picture, rowsPerStrip);

    const bool isGathered = picture.stride == picture.rowBytes && !picture.isBottomUp;
    const auto gathered =
        std::make_unique_for_overwrite<std::byte[]>(isGathered ? 0 : rowsPerStrip * picture.rowBytes);
    for (std::uint32_t first = 0; first < picture.height; first += rowsPerStrip) {
        const std::uint32_t rows = std::min(rowsPerStrip, picture.height - first);
        for (std::uint32_t i = 0; !isGathered && i < rows; ++i) {
            std::memcpy(gathered.get() + i * picture.rowBytes, picture.row(first + i), picture.rowBytes);
        }
        // The library writes raw strips as they are, though its type says that it may change them.
        auto* strip = isGathered ? const_cast<std::byte*>(picture.row(first)) : gathered.get();
        const auto size = static_cast<tmsize_t>(rows * picture.rowBytes);
        handle.check(TIFFWriteRawStrip(handle.get(), first / rowsPerStrip, strip, size) == size);
    }
    handle.check(TIFFWriteDirectory(handle.get()) == 1);
}

}  // namespace Nivex::Files
