#pragma once

#include <array>

#include "utility/imageformatconverter.h"

#include "parameteradapter/stageletnodemapbase.h"

// The texts and values of the converter's parameters, in the order in which users see them.

namespace Plugin::NivexStageletPackageBase::ConverterParameters {

inline constexpr PortTexts outputPixelFormat{
    .name = "OutputPixelFormat",
    .displayName = "Output Pixel Format",
    .toolTip = "Sets the pixel format of the output image.",
    .description = "Sets the pixel format of the output image.",
    .visibility = "Beginner",
};

inline constexpr PortTexts outputBitAlignment{
    .name = "OutputBitAlignment",
    .displayName = "Output Bit Alignment",
    .toolTip = "Sets the alignment of the bits in the target pixel type.",
    .description =
        "Sets the alignment of the bits in the target pixel type if the target bit depth is greater "
        "than the source bit depth, e.g., if you are converting from a 10-bit to a 16-bit format.",
    .visibility = "Beginner",
};

inline constexpr PortTexts outputOrientation{
    .name = "OutputOrientation",
    .displayName = "Output Orientation",
    .toolTip = "Sets the vertical orientation of the output image in the buffer.",
    .description = "Sets the vertical orientation of the output image in the buffer.",
    .visibility = "Beginner",
};

inline constexpr PortTexts outputPaddingX{
    .name = "OutputPaddingX",
    .displayName = "Padding X",
    .toolTip = "Number of additional data bytes at the end of each line.",
    .description =
        "Number of additional data bytes at the end of each line. These bytes are set to zero during "
        "the conversion.",
    .visibility = "Beginner",
};

inline constexpr IntegerRange outputPaddingXRange{.min = 0, .max = 4294967295};

using PixelFormatRow = EnumEntryRow<unsigned int>;

inline constexpr std::array<PixelFormatRow, 11> pixelFormats = {{
    {0x02200017, "BGRA8Packed", "BGRA 8 Packed", "The output pixel format is set to BGRA 8 Packed.",
     "The output pixel format is set to BGRA 8 Packed."},
    {0x02180015, "BGR8Packed", "BGR 8 Packed", "The output pixel format is set to BGR 8 Packed.",
     "The output pixel format is set to BGR 8 Packed."},
    {0x01080001, "Mono8", "Mono 8", "The output pixel format is set to Mono 8 Packed.",  // sic
     "The output pixel format is set to Mono 8 Packed."},
    {0x01100007, "Mono16", "Mono 16", "The output pixel format is set to Mono 16 Packed.",  // sic
     "The output pixel format is set to Mono 16 Packed."},
    {0x02180014, "RGB8Packed", "RGB 8 Packed", "The output pixel format is set to RGB 8 Packed.",
     "The output pixel format is set to RGB 8 Packed."},
    {0x02300033, "RGB16Packed", "RGB 16 Packed", "The output pixel format is set to RGB 16 Packed.",
     "The output pixel format is set to RGB 16 Packed."},
    {0x02180021, "RGB8Planar", "RGB 8 Planar", "The output pixel format is set to RGB 8 Planar.",
     "The output pixel format is set to RGB 8 Planar."},
    {0x02300024, "RGB16Planar", "RGB 16 Planar", "The output pixel format is set to RGB 16 Planar.",
     "The output pixel format is set to RGB 16 Planar."},
    {0x82180044, "YUV444Planar", "YUV444 Planar", "The output pixel format is set to YUV444 Planar.",
     "The output pixel format is set to YUV444 Planar."},
    {0x82100042, "YUV422Planar", "YUV422 Planar", "The output pixel format is set to YUV422 Planar",  // sic
     "The output pixel format is set to YUV422 Planar."},
    {0x820C0040, "YUV420Planar", "YUV420 Planar", "The output pixel format is set to YUV420 Planar.",
     "The output pixel format is set ot YUV420 Planar."},  // sic
}};

using BitAlignmentRow = EnumEntryRow<Nivex::OutputBitAlignmentEnums>;

inline constexpr std::array<BitAlignmentRow, 2> bitAlignments = {{
    {Nivex::OutputBitAlignmentEnums::LsbAligned, "LsbAligned", "LSB Aligned ",  // sic
     "Image data is aligned with the least significant bit.",
     "Image data is aligned with the least significant bit."},
    {Nivex::OutputBitAlignmentEnums::MsbAligned, "MsbAligned", "MSB Aligned ",  // sic
     "Image data is aligned at the most significant bit.", "Image data is aligned with the most significant bit."},
}};

using OrientationRow = EnumEntryRow<Nivex::OutputOrientationEnums>;

inline constexpr std::array<OrientationRow, 3> orientations = {{
    {Nivex::OutputOrientationEnums::BottomUp, "BottomUp", "Bottom Up",
     "The last row of the image is located at the start of the image buffer.",
     "The last row of the image is located at the start of the image buffer."},
    {Nivex::OutputOrientationEnums::TopDown, "TopDown", "Top Down",
     "The first row of the image is located at the start of the image buffer.",
     "The first row of the image is located at the start of the image buffer."},
    {Nivex::OutputOrientationEnums::Unchanged, "Unchanged", "Unchanged",
     "The orientation of the image remains the same.", "The orientation of the image remains the same."},
}};

}  // namespace Plugin::NivexStageletPackageBase::ConverterParameters
