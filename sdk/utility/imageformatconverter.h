#pragma once

#include "utility/image.h"
#include "utility/parameter.h"

namespace Nivex {

/// How values of fewer bits stand in a wider cell of the output.
enum class OutputBitAlignmentEnums : std::uint32_t
{
    LsbAligned = 0,
    MsbAligned = 1
};

enum class OutputOrientationEnums : std::uint32_t
{
    BottomUp = 0,
    TopDown = 1,
    Unchanged = 2
};

/// Brings images into the pixel format, padding and orientation that its parameters ask for.
/// One object is used by one thread at a time; its parameters are not synchronised. Conversion itself splits
/// rows over at most MaxNumThreads threads.
class GENICAM_API CImageFormatConverter
{
public:
    CImageFormatConverter();
    ~CImageFormatConverter();
    CImageFormatConverter(const CImageFormatConverter&) = delete;
    CImageFormatConverter& operator=(const CImageFormatConverter&) = delete;

    CEnumParameter<EPixelType> OutputPixelFormat;                    ///< Initially BGRA8Packed.
    CEnumParameter<OutputBitAlignmentEnums> OutputBitAlignment;      ///< Initially MsbAligned.
    CEnumParameter<OutputOrientationEnums> OutputOrientation;        ///< Initially Unchanged.
    CIntegerParameter OutputPaddingX;                                ///< Bytes per row, 0 to 4294967295.
    CIntegerParameter MaxNumThreads;                                 ///< 1 to the number of cores.

    static bool IsSupportedInputFormat(EPixelType pixelType);
    static bool IsSupportedOutputFormat(EPixelType pixelType);

    /// True if an image of this form already is what the parameters ask for.
    bool ImageHasDestinationFormat(EPixelType pixelType, std::size_t paddingX, EImageOrientation orientation) const;

    /// Converts a picture in memory into `destination`, which is reset to the wanted form. Bytes of the
    /// padding are set to zero. Raises InvalidArgumentException (with values and what is allowed) for an
    /// unsupported format, a size of 0, or a source shorter than its form needs.
    void Convert(IReusableImage& destination, const void* source, std::size_t sourceSize, EPixelType pixelType,
                 std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                 EImageOrientation orientation) const;
    void Convert(IReusableImage& destination, const IImage& source) const;
};

}  // namespace Nivex
