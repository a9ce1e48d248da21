#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/emulation/scene.h"
#include "utility/pixelformats.h"

namespace Nivex::Emulation {

/// Writes rows of a picture in one pixel format, as a camera with that format would send them. Used by one thread.
class PixelEncoder
{
public:
    /// True for mono, Bayer, RGB, BGR (with alpha, too) and 4:2:2 formats that lie in one plane and that the
    /// converter of formats reads.
    static bool CanEncode(const PixelFormat& format);
    /// All such formats, in the order of the table of formats.
    static std::span<const PixelFormat* const> Formats();

    /// The format must be one that can be encoded.
    explicit PixelEncoder(EPixelType pixelType);

    std::size_t RowBytes(std::size_t width) const;
    /// Fills `bytes`, of RowBytes. `row` counts from the first of the picture and decides on the colour filters.
    void Encode(std::span<const Colour> pixels, std::uint32_t row, std::span<std::byte> bytes);

private:
    void Gather(std::span<const Colour> pixels, std::uint32_t row);
    void GatherBayer(std::span<const Colour> pixels, std::uint32_t row);
    void GatherChroma(std::span<const Colour> pixels);

    const PixelFormat& format_;
    std::vector<std::uint16_t> samples_;  // of one row, in the order of the format, full scale 65535
};

}  // namespace Nivex::Emulation
