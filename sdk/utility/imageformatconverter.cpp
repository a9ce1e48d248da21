#include "utility/imageformatconverter.h"

#include <algorithm>
#include <functional>
#include <new>
#include <optional>
#include <thread>
#include <vector>

#include "utility/convert/conversion.h"

namespace Nivex {
namespace {

// Fixed, and not the number of cores of this machine, so that a value saved on one machine is valid on any.
constexpr std::int64_t maxThreadLimit = 64;

std::int64_t coreCount()
{
    return std::clamp(static_cast<std::int64_t>(std::thread::hardware_concurrency()), std::int64_t{1},
                      maxThreadLimit);
}

void checkFormats(EPixelType from, EPixelType to)
{
    if (!Pixels::findInputFormat(from)) {
        GENICAM_THROW(InvalidArgumentException,
                      "Cannot convert from pixel format %s (0x%08X): mono, Bayer, RGB and YUV formats that "
                      "IsSupportedInputFormat tells are allowed.",
                      GetPixelTypeName(from), static_cast<unsigned>(from));
    }
    if (!Pixels::findOutputFormat(to)) {
        GENICAM_THROW(InvalidArgumentException, "Cannot convert to pixel format %s (0x%08X).",
                      GetPixelTypeName(to), static_cast<unsigned>(to));
    }
}

void checkOrientation(EImageOrientation orientation)
{
    if (orientation != EImageOrientation::TopDown && orientation != EImageOrientation::BottomUp) {
        GENICAM_THROW(InvalidArgumentException,
                      "Cannot convert an image of orientation %u: 0 (top-down) and 1 (bottom-up) are allowed.",
                      static_cast<unsigned>(orientation));
    }
}

ImageLayout checkedLayout(const char* which, EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                          std::size_t paddingX)
{
    const std::optional<ImageLayout> layout = ComputeImageLayout(pixelType, width, height, paddingX);
    if (!layout) {
        GENICAM_THROW(
            InvalidArgumentException,
            "Cannot convert an image of %u x %u pixels with %zu bytes of padding per line: width and height "
            "must be at least 1 and the %s image of format %s must fit the address space.",
            width, height, paddingX, which, GetPixelTypeName(pixelType));
    }
    return *layout;
}

// Bytes of a picture as one bit stream, whose rows do not start on a byte; empty where they always do.
std::optional<std::size_t> continuousSize(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                          std::size_t paddingX)
{
    const std::uint64_t rowBits = std::uint64_t{width} * BitsPerPixel(pixelType);
    std::uint64_t bits = 0;
    if (IsPlanar(pixelType) || paddingX != 0 || rowBits % 8 == 0 || __builtin_mul_overflow(rowBits, height, &bits))
    {
        return std::nullopt;
    }
    return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

void checkSource(const void* source, std::size_t size, std::size_t needed)
{
    if (!source) {
        GENICAM_THROW(InvalidArgumentException,
                      "Cannot convert an image without data: the source is a null pointer.");
    }
    if (size < needed) {
        GENICAM_THROW(InvalidArgumentException,
                      "Cannot convert the image: the source has %zu bytes, but needs %zu.", size, needed);
    }
}

bool overlaps(const void* first, std::size_t firstSize, const void* second, std::size_t secondSize)
{
    const std::less<const void*> before;
    return before(first, static_cast<const std::byte*>(second) + secondSize) &&
           before(second, static_cast<const std::byte*>(first) + firstSize);
}

EImageOrientation wantedOrientation(OutputOrientationEnums wanted, EImageOrientation present)
{
    switch (wanted) {
        case OutputOrientationEnums::BottomUp:
            return EImageOrientation::BottomUp;
        case OutputOrientationEnums::TopDown:
            return EImageOrientation::TopDown;
        case OutputOrientationEnums::Unchanged:
            break;
    }
    return present;
}

unsigned shiftOf(const Pixels::InputFormat& input, const Pixels::OutputFormat& output,
                 OutputBitAlignmentEnums alignment)
{
    const bool wider = output.depth > input.depth;
    return wider && alignment == OutputBitAlignmentEnums::MsbAligned ? unsigned{output.depth} - input.depth : 0;
}

std::uint8_t* checkedBuffer(IReusableImage& destination, std::size_t needed)
{
    if (!destination.GetBuffer() || destination.GetImageSize() < needed) {
        GENICAM_THROW(LogicalErrorException,
                      "The destination image has %zu bytes after it was reset, but needs %zu.",
                      destination.GetImageSize(), needed);
    }
    return static_cast<std::uint8_t*>(destination.GetBuffer());
}

}  // namespace

CImageFormatConverter::CImageFormatConverter()
    : OutputPixelFormat(
          {"OutputPixelFormat", "Output Pixel Format", "Sets the pixel format of the output image.",
           "Sets the pixel format of the output image."},
          EPixelType::BGRA8Packed,
          {EPixelType::BGRA8Packed, EPixelType::BGR8Packed, EPixelType::Mono8, EPixelType::Mono16,
           EPixelType::RGB8Packed, EPixelType::RGB16Packed, EPixelType::RGB8Planar, EPixelType::RGB16Planar,
           EPixelType::YUV444Planar, EPixelType::YUV422Planar, EPixelType::YUV420Planar}),
      OutputBitAlignment(
          {"OutputBitAlignment", "Output Bit Alignment",
           "Sets the alignment of the bits in the target pixel type.",
           "Sets the alignment of the bits in the target pixel type if the target bit depth is greater "
           "than the source bit depth."},
          OutputBitAlignmentEnums::MsbAligned,
          {OutputBitAlignmentEnums::LsbAligned, OutputBitAlignmentEnums::MsbAligned}),
      OutputOrientation(
          {"OutputOrientation", "Output Orientation",
           "Sets the vertical orientation of the output image in the buffer.",
           "Sets the vertical orientation of the output image in the buffer."},
          OutputOrientationEnums::Unchanged,
          {OutputOrientationEnums::BottomUp, OutputOrientationEnums::TopDown, OutputOrientationEnums::Unchanged}),
      OutputPaddingX(
          {"OutputPaddingX", "Padding X", "Number of additional data bytes at the end of each line.",
           "Number of additional data bytes at the end of each line. These bytes are set to zero during the "
           "conversion."},
          0, 0, 4294967295),
      MaxNumThreads(
          {"MaxNumThreads", "Max Num Threads", "Sets the maximum number of threads used for one conversion.",
           "Sets the maximum number of threads used for one conversion. The lines of large images are shared "
           "out among that many threads; the result does not depend on it."},
          coreCount(), 1, maxThreadLimit)
{}

CImageFormatConverter::~CImageFormatConverter() = default;

bool CImageFormatConverter::IsSupportedInputFormat(EPixelType pixelType)
{
    return Pixels::findInputFormat(pixelType) != nullptr;
}

bool CImageFormatConverter::IsSupportedOutputFormat(EPixelType pixelType)
{
    return Pixels::findOutputFormat(pixelType) != nullptr;
}

bool CImageFormatConverter::ImageHasDestinationFormat(EPixelType pixelType, std::size_t paddingX,
                                                      EImageOrientation orientation) const
{
    return pixelType == OutputPixelFormat.GetValue() &&
           paddingX == static_cast<std::size_t>(OutputPaddingX.GetValue()) &&
           orientation == wantedOrientation(OutputOrientation.GetValue(), orientation);
}

void CImageFormatConverter::Convert(IReusableImage& destination, const void* source, std::size_t sourceSize,
                                    EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                                    std::size_t paddingX, EImageOrientation orientation) const
{
    const EPixelType outputType = OutputPixelFormat.GetValue();
    const auto outputPadding = static_cast<std::size_t>(OutputPaddingX.GetValue());
    checkFormats(pixelType, outputType);
    checkOrientation(orientation);

    Pixels::Conversion conversion{};
    conversion.sourceType = pixelType;
    conversion.input = Pixels::findInputFormat(pixelType);
    conversion.output = Pixels::findOutputFormat(outputType);
    conversion.width = width;
    conversion.height = height;
    conversion.sourceLayout = checkedLayout("source", pixelType, width, height, paddingX);
    conversion.continuous = continuousSize(pixelType, width, height, paddingX) == sourceSize &&
                            sourceSize < conversion.sourceLayout.size;
    checkSource(source, sourceSize, conversion.continuous ? sourceSize : conversion.sourceLayout.size);
    conversion.destinationLayout = checkedLayout("output", outputType, width, height, outputPadding);
    const EImageOrientation outputOrientation = wantedOrientation(OutputOrientation.GetValue(), orientation);
    conversion.flip = orientation != outputOrientation;
    conversion.shift = shiftOf(*conversion.input, *conversion.output, OutputBitAlignment.GetValue());

    try {
        std::vector<std::uint8_t> sourceCopy;
        conversion.source = static_cast<const std::uint8_t*>(source);
        if (overlaps(source, sourceSize, destination.GetBuffer(), destination.GetImageSize())) {
            sourceCopy.assign(conversion.source, conversion.source + sourceSize);
            conversion.source = sourceCopy.data();
        }
        destination.Reset(outputType, width, height, outputPadding, outputOrientation);
        conversion.destination = checkedBuffer(destination, conversion.destinationLayout.size);
        Pixels::run(conversion, static_cast<std::size_t>(MaxNumThreads.GetValue()));
    } catch (const std::bad_alloc&) {
        GENICAM_THROW(BadAllocException, "Not enough memory to convert an image of %u x %u pixels from %s to %s.",
                      width, height, GetPixelTypeName(pixelType), GetPixelTypeName(outputType));
    }
}

void CImageFormatConverter::Convert(IReusableImage& destination, const IImage& source) const
{
    Convert(destination, source.GetBuffer(), source.GetImageSize(), source.GetPixelType(), source.GetWidth(),
            source.GetHeight(), source.GetPaddingX(), source.GetOrientation());
}

}  // namespace Nivex
