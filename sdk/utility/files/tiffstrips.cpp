#include "utility/files/tiffstrips.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace Nivex::Files {

namespace {

std::uint32_t rowsPerStrip(const TiffForm& form)
{
    constexpr std::size_t stripBytes = std::size_t{1} << 20;
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(stripBytes / form.rowBytes(), 1, form.height));
}

/// `getStrip` gives the bytes of so many rows from the first on.
template <typename GetStrip>
void write(const TiffHandle& handle, const TiffForm& form, GetStrip getStrip)
{
    const std::uint32_t most = rowsPerStrip(form);
    for (std::uint32_t first = 0; first < form.height; first += most) {
        const std::uint32_t rows = std::min(most, form.height - first);
        const auto size = static_cast<tmsize_t>(rows * form.rowBytes());
        // The library writes raw strips as they are, though its type says that it may change them.
        auto* strip = const_cast<std::byte*>(getStrip(first, rows));
        handle.check(TIFFWriteRawStrip(handle.get(), first / most, strip, size) == size);
    }
    handle.check(TIFFWriteDirectory(handle.get()) == 1);
}

}  // namespace

void setForm(const TiffHandle& handle, const TiffForm& form)
{
    TIFF* const tiff = handle.get();
    const bool isSet = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, form.width) &&
                       TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, form.height) &&
                       TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits) &&
                       TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form.samples) &&
                       TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric) &&
                       TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
                       TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) &&
                       TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
                       TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip(form));
    handle.check(isSet);
}

void writeStrips(const TiffHandle& handle, const TiffForm& form, const PictureView& picture)
{
    if (picture.stride == picture.rowBytes && !picture.isBottomUp) {
        write(handle, form, [&](std::uint32_t first, std::uint32_t) { return picture.row(first); });
    } else {
        writeStrips(handle, form,
                    [&](std::uint32_t y, std::byte* row) { std::memcpy(row, picture.row(y), picture.rowBytes); });
    }
}

void writeStrips(const TiffHandle& handle, const TiffForm& form, const MakeRow& makeRow)
{
    const std::size_t rowBytes = form.rowBytes();
    const auto strip = std::make_unique_for_overwrite<std::byte[]>(rowsPerStrip(form) * rowBytes);
    write(handle, form, [&](std::uint32_t first, std::uint32_t rows) -> const std::byte* {
        for (std::uint32_t i = 0; i < rows; ++i)
            makeRow(first + i, strip.get() + i * rowBytes);
        return strip.get();
    });
}

}  // namespace Nivex::Files
