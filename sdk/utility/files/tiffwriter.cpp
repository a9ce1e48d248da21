#include <tiffio.h>

#include "utility/files/codecs.h"
#include "utility/files/tiffstrips.h"

namespace Nivex::Files {

void writeTiff(const PictureView& picture, int, OutputFile& file)
{
    const bool isGrey = IsMonochrome(picture.pixelType);
    const TiffForm form = {picture.width, picture.height, BitDepth(picture.pixelType), isGrey ? 1U : 3U,
                           isGrey ? std::uint32_t{PHOTOMETRIC_MINISBLACK} : std::uint32_t{PHOTOMETRIC_RGB}};
    const TiffHandle handle(file, std::uint64_t{picture.rowBytes} * picture.height > largestSmallTiff);
    setForm(handle, form);
    writeStrips(handle, form, picture);
}

}  // namespace Nivex::Files
