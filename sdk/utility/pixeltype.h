#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "gcbase/export.h"

namespace Nivex {

/// Pixel formats by their 32-bit value of the GenICam Pixel Format Naming Convention: bit 31 custom, bits 24-30
/// one (1) or several (2) components, bits 16-23 bits per pixel, bits 0-15 the identity.
/// Enumerators exist for the formats that code names; any further value may stand in the type.
enum class EPixelType : std::uint32_t
{
    Undefined = 0xFFFFFFFF,

    Mono1Packed = 0x01010037,
    Mono2Packed = 0x01020038,
    Mono4Packed = 0x01040039,
    Mono8 = 0x01080001,
    Mono10 = 0x01100003,
    Mono10Packed = 0x010C0004,
    Mono10p = 0x010A0046,
    Mono12 = 0x01100005,
    Mono12Packed = 0x010C0006,
    Mono12p = 0x010C0047,
    Mono14 = 0x01100025,
    Mono16 = 0x01100007,

    BayerGR8 = 0x01080008,
    BayerRG8 = 0x01080009,
    BayerGB8 = 0x0108000A,
    BayerBG8 = 0x0108000B,
    BayerGR10 = 0x0110000C,
    BayerRG10 = 0x0110000D,
    BayerGB10 = 0x0110000E,
    BayerBG10 = 0x0110000F,
    BayerGR12 = 0x01100010,
    BayerRG12 = 0x01100011,
    BayerGB12 = 0x01100012,
    BayerBG12 = 0x01100013,
    BayerGR10Packed = 0x010C0026,
    BayerRG10Packed = 0x010C0027,
    BayerGB10Packed = 0x010C0028,
    BayerBG10Packed = 0x010C0029,
    BayerGR12Packed = 0x010C002A,
    BayerRG12Packed = 0x010C002B,
    BayerGB12Packed = 0x010C002C,
    BayerBG12Packed = 0x010C002D,
    BayerGR16 = 0x0110002E,
    BayerRG16 = 0x0110002F,
    BayerGB16 = 0x01100030,
    BayerBG16 = 0x01100031,
    BayerBG10p = 0x010A0052,
    BayerBG12p = 0x010C0053,
    BayerGB10p = 0x010A0054,
    BayerGB12p = 0x010C0055,
    BayerGR10p = 0x010A0056,
    BayerGR12p = 0x010C0057,
    BayerRG10p = 0x010A0058,
    BayerRG12p = 0x010C0059,

    // In these names "Packed" means interleaved: 10 and 12 bits stand in 16-bit cells, but for RGB12V1Packed.
    RGB8Packed = 0x02180014,
    BGR8Packed = 0x02180015,
    RGBA8Packed = 0x02200016,
    BGRA8Packed = 0x02200017,
    RGB10Packed = 0x02300018,
    BGR10Packed = 0x02300019,
    RGB12Packed = 0x0230001A,
    BGR12Packed = 0x0230001B,
    RGB12V1Packed = 0x02240034,
    RGB16Packed = 0x02300033,
    RGB8Planar = 0x02180021,
    RGB16Planar = 0x02300024,

    YUV422Packed = 0x0210001F,
    YUV422_YUYV_Packed = 0x02100032,
    YCbCr422_8_YY_CbCr_Semiplanar = 0x02100113,
    YCbCr420_8_YY_CbCr_Semiplanar = 0x020C0112,
    YUV444Planar = 0x82180044,
    YUV422Planar = 0x82100042,
    YUV420Planar = 0x820C0040,
};

/// Colours of the first two pixels of row 0 of a Bayer picture.
enum class EBayerOrder : std::uint8_t
{
    GR,
    RG,
    GB,
    BG
};

/// The name of the naming convention ("Mono8", "BayerGR10", "RGB8"), of the table of pixelformats.h.
/// "InvalidPixelFormat" for Undefined, "UnknownPixelFormat" for a value that the table doesn't hold.
/// The text lives as long as the library.
GENICAM_API const char* GetPixelTypeName(EPixelType pixelType);

/// The format of that name, or of that second name ("RGB8Packed"); exact in case. Undefined if there is none.
GENICAM_API EPixelType GetPixelTypeByName(const char* name);

/// True if the table of formats holds it, so that name, depth and planes are known.
GENICAM_API bool HasPixelLayout(EPixelType pixelType);

/// Bits that a pixel takes on average, fill bits counted; 0 for Undefined. Also right for unknown formats.
GENICAM_API std::uint32_t BitsPerPixel(EPixelType pixelType);
/// Significant bits of a component (10 for Mono10), the largest if they differ; 0 for unknown formats.
GENICAM_API std::uint32_t BitDepth(EPixelType pixelType);

/// One grey value per pixel. False for Bayer, single colour channels, coordinates and plain data.
GENICAM_API bool IsMonochrome(EPixelType pixelType);
GENICAM_API bool IsBayer(EPixelType pixelType);
/// Empty if it is no Bayer format.
GENICAM_API std::optional<EBayerOrder> BayerOrder(EPixelType pixelType);
/// Several colour components per pixel: RGB and YUV families and bi-colour. False for Bayer.
GENICAM_API bool IsColor(EPixelType pixelType);
/// More than one plane, semi-planar included.
GENICAM_API bool IsPlanar(EPixelType pixelType);

/// Where one plane of a picture lies.
struct ImagePlane
{
    std::size_t offset;    ///< Of its first row, from the start of the picture.
    std::size_t rowBytes;  ///< That a row's pixels take, without padding.
    std::size_t stride;    ///< From row to row: rowBytes and padding.
    std::uint32_t rows;
};

/// Where a picture lies in memory: planes follow one another without a gap; a row starts on a byte boundary and
/// takes `ceil(width * bits / 8)` bytes and `paddingX` more, in every plane alike. Subsampled planes have
/// `ceil(n / 2)` columns or rows.
struct ImageLayout
{
    std::array<ImagePlane, 3> planes;
    std::size_t planeCount;
    std::size_t size;  ///< Of all planes, padding included.
};

/// Empty for Undefined, a format of 0 bits, a width or height of 0, or a size beyond the address space.
/// A format that the table doesn't hold counts as one plane of its bits per pixel.
GENICAM_API std::optional<ImageLayout> ComputeImageLayout(EPixelType pixelType, std::uint32_t width,
                                                          std::uint32_t height, std::size_t paddingX);

/// Bytes from row to row in the first plane; empty as ComputeImageLayout.
GENICAM_API std::optional<std::size_t> ComputeStride(EPixelType pixelType, std::uint32_t width,
                                                     std::size_t paddingX);
/// Bytes of the whole picture; empty as ComputeImageLayout.
GENICAM_API std::optional<std::size_t> ComputeImageSize(EPixelType pixelType, std::uint32_t width,
                                                        std::uint32_t height, std::size_t paddingX);

}  // namespace Nivex
