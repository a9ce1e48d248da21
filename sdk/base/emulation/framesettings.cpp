#include "base/emulation/framesettings.h"

namespace Nivex::Emulation {
namespace {

std::size_t pictureSize(const PictureSettings& picture)
{
    return (std::size_t{picture.width} * BitsPerPixel(picture.pixelType) + 7) / 8 * picture.height;
}

}  // namespace

std::size_t FrameSettings::PayloadSize() const
{
    std::size_t size = 0;
    for (const auto& picture : pictures)
        if (picture) size += pictureSize(*picture);
    if (!hasChunks) return size;
    size += trailerSize;
    for (std::size_t i = 0; i < std::size(chunks); ++i)
        if (chunkEnabled[i]) size += chunks[i].size + trailerSize;
    return size;
}

}  // namespace Nivex::Emulation
