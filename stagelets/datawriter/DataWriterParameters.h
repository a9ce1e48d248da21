#pragma once

#include <array>

#include "datawriter/DataWriterSettings.h"
#include "parameteradapter/stageletnodemapbase.h"

// The choices of the enumerations among a DataWriter's parameters, in the order in which users see them, and the
// long texts.

namespace Plugin::NivexStageletPackageBase::DataWriterParameters {

inline constexpr auto recordPeriodUnits = std::to_array<EnumEntryRow<RecordPeriodUnit>>({
    {RecordPeriodUnit::Update, "Update", "Update", "Record data on every nth update.", ""},
    {RecordPeriodUnit::Milliseconds, "Milliseconds", "Milliseconds",
     "Record data at intervals specified in milliseconds.", ""},
    {RecordPeriodUnit::Seconds, "Seconds", "Seconds", "Record data at intervals specified in seconds.", ""},
    {RecordPeriodUnit::Minute, "Minute", "Minute", "Record data at intervals specified in minutes.", ""},
    {RecordPeriodUnit::Hours, "Hours", "Hours", "Record data at intervals specified in hours.", ""},
});

inline constexpr auto recordTriggerSelectors = std::to_array<EnumEntryRow<RecordTriggerSelector>>({
    {RecordTriggerSelector::HasError, "HasError", "Has Error", "Trigger when an error is present.", ""},
    {RecordTriggerSelector::HasErrorRecursive, "HasErrorRecursive", "Has Error Recursive",
     "Trigger when an error is present in any nested item.", ""},
    {RecordTriggerSelector::ArrayHasItems, "ArrayHasItems", "Array Has Items",
     "Trigger when the array contains items.", ""},
    {RecordTriggerSelector::DataPresent, "DataPresent", "Data Present", "Trigger when data is present.", ""},
    {RecordTriggerSelector::BoolValue, "BoolValue", "Bool Value",
     "Trigger based on a boolean value. The input must have a boolean or integer type.", ""},
});

inline constexpr auto recordTriggerEnables = std::to_array<EnumEntryRow<RecordTriggerEnable>>({
    {RecordTriggerEnable::On, "On", "On", "Enable the record trigger.", ""},
    {RecordTriggerEnable::OnInverted, "OnInverted", "On Inverted",
     "Enable the record trigger with inverted logic.", ""},
    {RecordTriggerEnable::Off, "Off", "Off", "Disable the record trigger.", ""},
});

inline constexpr auto writeEnables = std::to_array<EnumEntryRow<WriteEnable>>({
    {WriteEnable::On, "On", "On", "Activates writing of data for the selected pin.", ""},
    {WriteEnable::Off, "Off", "Off", "Deactivates writing of data for the selected pin.", ""},
});

inline constexpr auto useMediaWriterEnables = std::to_array<EnumEntryRow<UseMediaWriterEnable>>({
    {UseMediaWriterEnable::On, "On", "On", "Enable writing to media writer.", ""},
    {UseMediaWriterEnable::Off, "Off", "Off", "Disable writing to media writer.", ""},
});

inline constexpr auto textFormatSelectors = std::to_array<EnumEntryRow<TextFormatSelector>>({
    {TextFormatSelector::TextFormat_SessionBegin, "TextFormat_SessionBegin", "Session Begin",
     "Format for the begin session section.", ""},
    {TextFormatSelector::TextFormat_RecordBegin, "TextFormat_RecordBegin", "Record Begin",
     "Format for the begin record section.", ""},
    {TextFormatSelector::TextFormat_ArrayBegin, "TextFormat_ArrayBegin", "Array Begin",
     "Format for the begin array section.", ""},
    {TextFormatSelector::TextFormat_DataBegin, "TextFormat_DataBegin", "Data Begin",
     "Format for the begin data section.", ""},
    {TextFormatSelector::TextFormat_Data, "TextFormat_Data", "Data", "Format for the main data section.", ""},
    // sic: the ends of array and data stand in another order than their values
    {TextFormatSelector::TextFormat_ArrayEnd, "TextFormat_ArrayEnd", "Array End",
     "Format for the end array section.", ""},
    {TextFormatSelector::TextFormat_DataEnd, "TextFormat_DataEnd", "Data End", "Format for the end data section.",
     ""},
    {TextFormatSelector::TextFormat_RecordEnd, "TextFormat_RecordEnd", "Record End",
     "Format for the end record section.", ""},
    {TextFormatSelector::TextFormat_SessionEnd, "TextFormat_SessionEnd", "Session End",
     "Format for the end session section.", ""},
});

inline constexpr auto mediaTypes = std::to_array<EnumEntryRow<MediaType>>({
    {MediaType::MP4, "MP4", "MP4",
     "Write data as MP4. Indicates that the data will be saved in the MP4 video format.", ""},
    {MediaType::BMP, "BMP", "BMP",
     "Write data as BMP. Indicates that the data will be saved as a BMP (Bitmap) image file.", ""},
    {MediaType::TIFF, "TIFF", "TIFF",
     "Write data as TIFF. Indicates that the data will be saved as a TIFF (Tagged Image "
     "File Format) image file.",
     ""},
    {MediaType::JPEG, "JPEG", "JPEG",
     "Write data as JPEG. Indicates that the data will be saved as a JPEG (Joint "
     "Photographic Experts Group) image file.",
     ""},
    {MediaType::PNG, "PNG", "PNG",
     "Write data as PNG. Indicates that the data will be saved as a PNG (Portable Network "
     "Graphics) image file.",
     ""},
    {MediaType::RAW, "RAW", "RAW", "Write data as RAW. This is the content of the image buffer without header.",
     ""},
    {MediaType::DNG, "DNG", "DNG",
     "Write data as DNG. Indicates that the data will be saved as a DNG (Digital Negative) file.", ""},
    {MediaType::TXT, "TXT", "TXT",
     "Write data as text file. Indicates that the data will be saved as a plain text file.", ""},
});

inline constexpr auto fileScopes = std::to_array<EnumEntryRow<FileScope>>({
    {FileScope::Session, "Session", "Session", "Write data to one file for the entire session.", ""},
    {FileScope::Record, "Record", "Record", "Write data to one file for each record.", ""},
    {FileScope::DataItem, "DataItem", "Data Item", "Write data to one file for each data item.", ""},
});

inline constexpr auto fileModes = std::to_array<EnumEntryRow<FileMode>>({
    {FileMode::Create, "Create", "Create", "Create a new file and overwrite if it exists.", ""},
    {FileMode::CreateThenAppend, "CreateThenAppend", "Create Then Append",
     "Create a new file if it does not exist, otherwise append to the existing file.", ""},
    {FileMode::Append, "Append", "Append",
     "Append data to an existing file, or create a new file if it does not exist.", ""},
});

/// The help for templates; a section of its own in the description, as it holds markup characters.
inline constexpr const char* textFormatHelp =
    R"(<![CDATA[These tags can be used in string formatting fields to reference specific properties of geometric and image data.

- {Default}: Default tag prints all properties and is automatically used if TextFormat is empty.
- {Center_X}, {Center_Y}: Center coordinates of ellipses, circles, and rectangles.
- {Radius}: Radius of circles.
- {Radius1}, {Radius2}: Radii of ellipses along their first and second axis.
- {Rotation}: Rotation angle for ellipses and rectangles in radians. The rotation is defined relative to the x-axis and rotates counterclockwise.
- {RotationDeg}: Rotation angle for ellipses and rectangles in degrees.
- {PointA_X}, {PointA_Y}: Coordinates of the first point of lines.
- {PointB_X}, {PointB_Y}: Coordinates of the second point of lines.
- {X}, {Y}: Coordinates of points.
- {Width}, {Height}: Size of images and rectangles.
- {ReferenceSize_Width}, {ReferenceSize_Height}: Reference size of regions.
- {BoundingBox_TopLeftX}, {BoundingBox_TopLeftY}: Position of the bounding box of regions.
- {BoundingBox_Width}, {BoundingBox_Height}: Size of the bounding box of regions.
- {PixelFormat}: Pixel format of images.
- {LinePadding}: Line padding of images in bytes.
- {ArrayIndex}: Index of the item in its array, starting at 0.
- {ArraySize}: Number of items in the array.
- {RecordIndex}: Number of the record in the session, starting at 1.
- {UpdateIndex}: Number of the update in the session, starting at 1.
- {SessionIndex}: Number of the session, starting at 1.
- {PinIndex}: Number of the input data pin, starting at 1.
- {MediaWriterIndex}: Number of the media writer, starting at 1.
- {ErrorMessage}: Error message of the item, empty if there is no error.
- {ErrorMessageRecursive}: Error message of the item including errors of nested items.
- {HasError}: 1 if the item has an error, otherwise 0.
- {HasErrorRecursive}: 1 if the item or any nested item has an error, otherwise 0.
- {_Year_}, {_Month_}, {_Day_}: Current date.
- {_Hour_}, {_Minute_}, {_Second_}, {_Millisecond_}: Current time.
- {_Precision_}, {_Width_}, {_Fill_}: Stream formatting (requires a value, e.g. {_Precision_}{3}).
- {_Fixed_}, {_Scientific_}: Notation of floating-point numbers.
- {_Hex_}, {_Dec_}, {_Oct_}: Base of integer numbers.
- {_Left_}, {_Right_}, {_Internal_}: Alignment within the width.
- {_ShowPos_}: Show the plus sign of positive numbers.
- {_ShowPoint_}: Always show the decimal point of floating-point numbers.
- {_UpperCase_}, {_NoUpperCase_}: Use upper-case or lower-case letters in numbers.
- {_BoolAlpha_}, {_NoBoolAlpha_}: Print boolean values as words or as 1 and 0.

Use a backslash to escape newline 'n', tab 't', the backslash itself, and the braces '{' and '}'.

Example:
Width: {Width}; Height: {Height}; Time: {_Hour_}:{_Minute_}:{_Second_}; PixelFormat: {PixelFormat}
This will output the center coordinates, width, height, current time, and pixel format of the processed item.]]>)";

}  // namespace Plugin::NivexStageletPackageBase::DataWriterParameters
