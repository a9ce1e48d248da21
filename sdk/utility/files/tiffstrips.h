#pragma once

#include <functional>

#include "utility/files/picture.h"
#include "utility/files/tiffhandle.h"

namespace Nivex::Files {

/// What every uncompressed, upright TIFF picture says of itself, whatever its samples mean.
struct TiffForm
{
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t bits;  ///< 8 or 16, of each sample.
    std::uint32_t samples;
    std::uint32_t photometric;

    std::size_t rowBytes() const { return std::size_t{width} * samples * bits / 8; }
};

/// Pixels beyond this leave no room in the small form of the file, with its directory and lists of strips.
constexpr std::uint64_t largestSmallTiff = 0xF0000000;

/// Sets the fields of `form`, with strips of about 1 MiB. Further fields may follow until the strips are written.
void setForm(const TiffHandle& handle, const TiffForm& form);

/// Writes rows that stand in memory as they are to stand in the file, then the directory.
void writeStrips(const TiffHandle& handle, const TiffForm& form, const PictureView& picture);

/// Puts the row at place `y` from the top to `row`, which has room for `rowBytes()` bytes.
using MakeRow = std::function<void(std::uint32_t y, std::byte* row)>;

/// Writes rows that are made one by one from the top, then the directory.
void writeStrips(const TiffHandle& handle, const TiffForm& form, const MakeRow& makeRow);

}  // namespace Nivex::Files
