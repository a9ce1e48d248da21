#pragma once

#include "utility/image.h"
#include "utility/setting.h"

namespace Nivex {

/// How values of fewer bits stand in a wider cell of the output.
enum class OutputBitAlignmentEnums : std::uint32_t
{
    LsbAligned = 0,  ///< The value itself: 12 bits give 0 to 4095.
    MsbAligned = 1   ///< Shifted up to the top of the cell: 12 bits give 0 to 65520.
};

enum class OutputOrientationEnums : std::uint32_t
{
    BottomUp = 0,
    TopDown = 1,
    Unchanged = 2
};

/// Brings images into the pixel format, padding and orientation that its parameters ask for.
///
/// Formats. Out: BGRA8Packed, BGR8Packed, Mono8, Mono16, RGB8Packed, RGB16Packed, RGB8Planar, RGB16Planar,
/// YUV444Planar, YUV422Planar, YUV420Planar. In: these, and mono and Bayer of 8 to 16 bits in every packing, mono
/// of 1, 2 and 4 bits, RGB and BGR of 10 and 12 bits, RGBA, 4:2:2 and 4:2:0 of 8 bits. Every input goes to every
/// output.
///
/// Values.
/// - Samples of n > 8 bits lose their low n - 8 bits (no rounding) for an 8-bit output, before anything else.
/// - Samples of 1, 2 and 4 bits become v * 255 / (2^n - 1), and count as 8-bit values from then on.
/// - For a 16-bit output all is computed at the source's depth and the result is aligned by OutputBitAlignment.
/// - Bayer is interpolated bilinearly, means of two or four neighbours rounded half up; beyond the borders the
///   picture is mirrored at its outermost pixels, so their own values count and the pattern goes on. A picture of
///   one row or column has no such neighbours and repeats itself. The pattern counts from the first row in memory,
///   and interpolation comes before flipping. Bayer to mono is the luma of the interpolated picture.
/// - Colour equations, full range, with the rounded and clamped result of the real-number equations:
///   Y = 0.299 R + 0.587 G + 0.114 B (also RGB to mono), U = -0.16874 R - 0.33126 G + 0.5 B + 128,
///   V = 0.5 R - 0.41869 G - 0.08131 B + 128; R = Y + 1.402 (V-128),
///   G = Y - 0.34414 (U-128) - 0.71414 (V-128), B = Y + 1.772 (U-128).
/// - Chroma on input serves the nearest pixels: both of a pair, all four of a block. On output it is the mean over
///   the pixels of its pair or block that exist, rounded half up. YUV to YUV does not go through RGB. The last
///   pixel of a 4:2:2 row of odd width, which lacks its V, takes the V before it, or none (128) in a row of one
///   pixel.
/// - Alpha is written as 0xFF, except that a copy in the same format keeps it.
///
/// Rows. Padding stands behind each row of each plane, of the source as of the output, as ComputeImageLayout
/// tells. A source whose rows do not end on a byte, with padding 0 and exactly `ceil(width * height * bits / 8)`
/// bytes where rows that start on a byte would need more, is read as one bit stream.
///
/// One object is used by one thread at a time; its parameters are not synchronised. Conversion itself splits rows
/// over at most MaxNumThreads threads, which have ended when it returns; their number does not change the result.
class GENICAM_API CImageFormatConverter
{
public:
    CImageFormatConverter();
    ~CImageFormatConverter();
    CImageFormatConverter(const CImageFormatConverter&) = delete;
    CImageFormatConverter& operator=(const CImageFormatConverter&) = delete;

    CEnumSetting<EPixelType> OutputPixelFormat;                ///< Initially BGRA8Packed.
    CEnumSetting<OutputBitAlignmentEnums> OutputBitAlignment;  ///< Initially MsbAligned.
    CEnumSetting<OutputOrientationEnums> OutputOrientation;    ///< Initially Unchanged.
    CIntegerSetting OutputPaddingX;                            ///< Bytes per row, 0 to 4294967295; initially 0.
    CIntegerSetting MaxNumThreads;                             ///< 1 to 64; initially one per core.

    static bool IsSupportedInputFormat(EPixelType pixelType);
    static bool IsSupportedOutputFormat(EPixelType pixelType);

    /// True if an image of this form already is what the parameters ask for.
    bool ImageHasDestinationFormat(EPixelType pixelType, std::size_t paddingX,
                                   EImageOrientation orientation) const;

    /// Converts a picture in memory into `destination`, which is reset to the wanted form. Bytes of the
    /// padding are set to zero. The picture may lie within the image that `destination` holds, but not in memory
    /// that it keeps behind that. Raises InvalidArgumentException (with values and what is allowed) for an
    /// unsupported format, a size of 0, a source shorter than its form needs, or a result beyond the address
    /// space; `destination` is as before then.
    void Convert(IReusableImage& destination, const void* source, std::size_t sourceSize, EPixelType pixelType,
                 std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                 EImageOrientation orientation) const;
    /// As above for another image or the same one.
    void Convert(IReusableImage& destination, const IImage& source) const;
};

}  // namespace Nivex
