#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "gcbase/gcstring.h"

#include "core/isettings.h"

namespace Plugin::NivexStageletPackageBase {

// The values are those that recipes hold. A recipe may also bring values without a name, which are kept.

enum class RecordPeriodUnit : std::int32_t
{
    Update = 0,
    Milliseconds = 1,
    Seconds = 2,
    Minute = 3,
    Hours = 4
};

enum class WriteEnable : std::int32_t
{
    Off = 0,
    On = 1
};

enum class UseMediaWriterEnable : std::int32_t
{
    Off = 0,
    On = 1
};

enum class RecordTriggerSelector : std::int32_t
{
    HasError = 0,
    HasErrorRecursive = 1,
    ArrayHasItems = 2,
    DataPresent = 3,
    BoolValue = 4
};
inline constexpr std::size_t recordTriggerCount = 5;

enum class RecordTriggerEnable : std::int32_t
{
    Off = 0,
    On = 1,
    OnInverted = 2
};

enum class TextFormatSelector : std::int32_t
{
    TextFormat_SessionBegin = 0,
    TextFormat_RecordBegin = 1,
    TextFormat_ArrayBegin = 2,
    TextFormat_DataBegin = 3,
    TextFormat_Data = 4,
    TextFormat_DataEnd = 5,
    TextFormat_ArrayEnd = 6,
    TextFormat_RecordEnd = 7,
    TextFormat_SessionEnd = 8
};
inline constexpr std::size_t textFormatCount = 9;

enum class MediaType : std::int32_t
{
    MP4 = 0,
    BMP = 1,
    TIFF = 2,
    JPEG = 3,
    PNG = 4,
    RAW = 5,
    DNG = 6,
    TXT = 7
};

enum class FileScope : std::int32_t
{
    Session = 0,
    Record = 1,
    DataItem = 2
};

enum class FileMode : std::int32_t
{
    Create = 0,
    CreateThenAppend = 1,
    Append = 2
};

/// What belongs to one input pin.
struct InputPinSettings
{
    GenICam::gcstring pinDescription;
    WriteEnable writeEnable = WriteEnable::On;
    RecordTriggerSelector recordTriggerSelector = RecordTriggerSelector::HasError;
    std::array<RecordTriggerEnable, recordTriggerCount> recordTriggerEnable{};  ///< By RecordTriggerSelector.
    TextFormatSelector textFormatSelector = TextFormatSelector::TextFormat_Data;
    /// Templates by TextFormatSelector. A backslash and an n stand for a line feed there.
    std::array<GenICam::gcstring, textFormatCount> textFormat = {
        "", "", "Data{PinIndex} Array[{ArraySize}]\\n", "", "", "\\n", "\\n", "", ""};
    std::uint64_t useMediaWriterSelector = 1;  ///< 1-based.
    /// One entry per media writer.
    std::vector<UseMediaWriterEnable> useMediaWriterEnable = {UseMediaWriterEnable::On};

    bool operator==(const InputPinSettings&) const = default;
};

/// What belongs to one media writer.
struct MediaWriterSettings
{
    GenICam::gcstring mediaWriterDescription;
    MediaType mediaType = MediaType::PNG;
    FileScope fileScope = FileScope::Record;
    FileMode fileMode = FileMode::Create;
    double quality = 100.0;
    GenICam::gcstring fileName;   ///< A template; empty for the writer's own.
    double playBackSpeed = 25.0;  ///< Frames per second.

    bool operator==(const MediaWriterSettings&) const = default;
};

/// The whole configuration of a DataWriter: plain data, guarded by the node's lock.
///
/// Invariants, which `load` and the node map keep: `pins` and `mediaWriters` have as many entries as the two
/// counts say, each pin's `useMediaWriterEnable` one per media writer, and the 1-based selectors lie within these.
struct DataWriterSettings
{
    static constexpr std::uint64_t maxCount = 100;  ///< Of pins, and of media writers.
    static constexpr std::uint64_t maxRecordPeriod = 2147483647;

    std::uint64_t numInputDataPins = 1;
    std::uint64_t numMediaWriters = 1;
    std::uint64_t recordPeriod = 1;  ///< In recordPeriodUnit; 0 is off.
    RecordPeriodUnit recordPeriodUnit = RecordPeriodUnit::Update;
    GenICam::gcstring outputFolderName;  ///< Empty for the process's current folder.
    /// A template; empty to write into the output folder itself.
    GenICam::gcstring sessionFolderName =
        "Session__{_Fill_}{0}{_Year_}-{_Width_}{2}{_Month_}-{_Width_}{2}{_Day_}__{_Width_}{2}{_Hour_}-{_Width_}{2}"
        "{_Minute_}-{_Width_}{2}{_Second_}__{_Width_}{3}{_Millisecond_}";
    GenICam::gcstring recordFolderName;  ///< A template; empty for no folder of its own.
    std::uint64_t inputDataPinSelector = 1;
    std::uint64_t mediaWriterSelector = 1;
    std::vector<InputPinSettings> pins = std::vector<InputPinSettings>(1);
    std::vector<MediaWriterSettings> mediaWriters = std::vector<MediaWriterSettings>(1);

    /// Brings records, lists and selectors in line with the two counts, after these changed. New entries have
    /// the defaults; surplus ones go.
    void fitToCounts();

    bool operator==(const DataWriterSettings&) const = default;
};

// These raise RuntimeException for a selector that has no name.

RecordTriggerEnable getRecordTriggerEnable(const InputPinSettings& pin, RecordTriggerSelector selector);
void setRecordTriggerEnable(InputPinSettings& pin, RecordTriggerSelector selector, RecordTriggerEnable value);
const GenICam::gcstring& getTextFormat(const InputPinSettings& pin, TextFormatSelector selector);
void setTextFormat(InputPinSettings& pin, TextFormatSelector selector, const GenICam::gcstring& value);

/// Reads the settings and puts counts, period and selectors within their limits. A pin or writer without a child
/// store, and a list entry without a key, keep what they have; what the store throws for any other missing key
/// passes, and `settings` is then as before.
void load(DataWriterSettings& settings, const Nivex::DataProcessing::Core::ISettings& store);
void save(const DataWriterSettings& settings, Nivex::DataProcessing::Core::ISettings& store);

}  // namespace Plugin::NivexStageletPackageBase
