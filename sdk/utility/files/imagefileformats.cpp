#include "utility/files/imagefileformats.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "gcbase/exception.h"

namespace Nivex::Files {

namespace {

using namespace std::string_view_literals;
using enum EPixelType;

constexpr const char* bmpExtensions[] = {"BMP", "DIB"};
constexpr const char* tiffExtensions[] = {"TIF", "TIFF"};
constexpr const char* jpegExtensions[] = {"JPG", "JPEG", "JPE"};
constexpr const char* pngExtensions[] = {"PNG"};

constexpr std::string_view bmpSignatures[] = {"BM"sv};
constexpr std::string_view tiffSignatures[] = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};
constexpr std::string_view jpegSignatures[] = {"\xFF\xD8\xFF"sv};
constexpr std::string_view pngSignatures[] = {"\x89PNG\r\n\x1A\n"sv};

constexpr EPixelType bmpTypes[] = {Mono8, BGR8Packed, BGRA8Packed};
constexpr EPixelType tiffTypes[] = {Mono8, Mono16, RGB8Packed, RGB16Packed};
constexpr EPixelType jpegTypes[] = {Mono8, RGB8Packed, BGR8Packed};
constexpr EPixelType pngTypes[] = {Mono8, Mono16, RGB8Packed, RGB16Packed};
constexpr EPixelType dngTypes[] = {
    BayerGR8,        BayerRG8,        BayerGB8,        BayerBG8,         //
    BayerGR10,       BayerRG10,       BayerGB10,       BayerBG10,        //
    BayerGR10Packed, BayerRG10Packed, BayerGB10Packed, BayerBG10Packed,  //
    BayerGR10p,      BayerRG10p,      BayerGB10p,      BayerBG10p,       //
    BayerGR12,       BayerRG12,       BayerGB12,       BayerBG12,        //
    BayerGR12Packed, BayerRG12Packed, BayerGB12Packed, BayerBG12Packed,  //
    BayerGR12p,      BayerRG12p,      BayerGB12p,      BayerBG12p,       //
    BayerGR16,       BayerRG16,       BayerGB16,       BayerBG16,        //
    RGB8Packed,      RGB16Packed,
};

constexpr std::uint32_t signedLimit = 0x7FFFFFFF;
constexpr std::uint32_t jpegLimit = 65500;  // Of the library; the format itself ends at 65535.
constexpr std::uint32_t noLimit = 0xFFFFFFFF;

constexpr std::array<ImageFileFormat, 6> formats = {{
    {EImageFileFormat::Bmp, "BMP", bmpExtensions, bmpSignatures, readBmp, writeBmp, bmpTypes, false, signedLimit},
    {EImageFileFormat::Tiff, "TIFF", tiffExtensions, tiffSignatures, readTiff, writeTiff, tiffTypes, false,
     noLimit},
    {EImageFileFormat::Jpeg, "JPEG", jpegExtensions, jpegSignatures, readJpeg, writeJpeg, jpegTypes, false,
     jpegLimit},
    {EImageFileFormat::Png, "PNG", pngExtensions, pngSignatures, readPng, writePng, pngTypes, false, signedLimit},
    {EImageFileFormat::Raw, "RAW", {}, {}, nullptr, writeRaw, {}, true, noLimit},
    {EImageFileFormat::Dng, "DNG", {}, {}, nullptr, writeDng, dngTypes, false, noLimit},
}};

}  // namespace

bool ImageFileFormat::takes(EPixelType pixelType) const
{
    return takesAnyPixelType || std::ranges::find(pixelTypes, pixelType) != pixelTypes.end();
}

std::span<const ImageFileFormat> imageFileFormats()
{
    return formats;
}

const ImageFileFormat& imageFileFormat(EImageFileFormat format)
{
    const auto number = static_cast<std::size_t>(format);
    if (number >= formats.size()) {
        GENICAM_THROW(InvalidArgumentException, "Image file format %zu is none of 0 to %zu.", number,
                      formats.size() - 1);
    }
    return formats[number];
}

void writeRaw(const PictureView& picture, int, OutputFile& file)
{
    file.write(picture.buffer, picture.size);
}

}  // namespace Nivex::Files
