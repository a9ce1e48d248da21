#include "datawriter/DataWriterNodeMapBase.h"

#include <initializer_list>

#include "datawriter/DataWriterParameters.h"

namespace Plugin::NivexStageletPackageBase {

namespace Adapter = AnythingToNodeMapAdapter;
namespace Parameters = DataWriterParameters;

namespace {

constexpr const char* linear = "Linear";
constexpr const char* pureNumber = "PureNumber";

constexpr std::uint64_t maxTextLength = 10000;
constexpr std::uint64_t maxPathLength = 33000;

constexpr auto maxCount = static_cast<std::int64_t>(DataWriterSettings::maxCount);
constexpr auto maxRecordPeriod = static_cast<std::int64_t>(DataWriterSettings::maxRecordPeriod);
constexpr FloatRange qualityRange{0.0, 100.0};
/// Frames per second: from one frame in 100 s to what no player is faster than.
constexpr FloatRange playBackSpeedRange{0.01, 1000.0};

}  // namespace

/// One parameter, all of which a beginner sees.
struct DataWriterNodeMapBase::Row
{
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description = "";
    std::initializer_list<const char*> selectedBy = {};
    bool isFixedInSession = false;

    PortTexts texts() const { return {name, displayName, toolTip, description, "Beginner"}; }
    PortFlags flags(bool isWritable = true) const
    {
        return {.writable = isWritable, .lockedRegister = isFixedInSession};
    }
};

template <typename Port>
void DataWriterNodeMapBase::addRow(const Row& row, const std::shared_ptr<Port>& port)
{
    addFeature(port);
    for (const char* selector : row.selectedBy)
        addSelected(selector, row.name);
    if (row.isFixedInSession) {
        sessionParameters_.push_back([port](bool writable) { port->changeWritable(writable); });
    }
}

template <auto read, auto write>
void DataWriterNodeMapBase::addInteger(const Row& row, const IntegerRange& range, const char* representation,
                                       IntegerPort* kept)
{
    using Relay = Adapter::IntegerParameterPortRelay<std::uint64_t, DataWriterNodeMapBase, read, write>;
    const auto port = std::make_shared<Relay>(*this, row.texts(), range, representation, "", row.flags());
    addRow(row, port);
    if (kept) *kept = port;
}

template <auto read, auto write>
void DataWriterNodeMapBase::addFloat(const Row& row, const FloatRange& range, const char* representation)
{
    using Relay = Adapter::FloatParameterPortRelay<DataWriterNodeMapBase, read, write>;
    addRow(row, std::make_shared<Relay>(*this, row.texts(), range, representation, "", row.flags()));
}

template <auto read, auto write>
void DataWriterNodeMapBase::addText(const Row& row, std::uint64_t maxLength, bool isWritable)
{
    using Relay = Adapter::StringParameterPortRelay<DataWriterNodeMapBase, read, write>;
    addRow(row, std::make_shared<Relay>(*this, row.texts(), maxLength, row.flags(isWritable)));
}

template <auto read, auto write, typename E, std::size_t count>
void DataWriterNodeMapBase::addEnumeration(const Row& row, const std::array<EnumEntryRow<E>, count>& entries)
{
    using Relay = Adapter::EnumParameterPortRelay<E, DataWriterNodeMapBase, read, write>;
    addRow(row, std::make_shared<Relay>(*this, row.texts(), row.flags()));
    addEntries<E>(row.name, entries);
}

DataWriterNodeMapBase::DataWriterNodeMapBase()
{
    addRecordParameters();
    addPinParameters();
    addMediaWriterParameters();
    addFolderParameters();
}

void DataWriterNodeMapBase::setSessionParametersWritable(bool writable)
{
    for (const auto& setWritable : sessionParameters_)
        setWritable(writable);
}

void DataWriterNodeMapBase::setMaxInputDataPinSelector(std::uint64_t max)
{
    inputDataPinSelector_->changeLimits(1, static_cast<std::int64_t>(max));
}

void DataWriterNodeMapBase::setMaxMediaWriterSelectors(std::uint64_t max)
{
    useMediaWriterSelector_->changeLimits(1, static_cast<std::int64_t>(max));
    mediaWriterSelector_->changeLimits(1, static_cast<std::int64_t>(max));
}

/// The two functions of the parameter of that name.
#define RELAY(NAME) &DataWriterNodeMapBase::zRead##NAME, &DataWriterNodeMapBase::zWrite##NAME

void DataWriterNodeMapBase::addRecordParameters()
{
    addInteger<RELAY(NumInputDataPins)>(
        {.name = "NumInputDataPins",
         .displayName = "Num Input Data Pins",
         .toolTip = "Total number of input data pins provided by the Stagelet.",
         .description =
             "Specifies how many input data pins are available in the Stagelet. Each pin can be used to "
             "provide data for writing.",
         .isFixedInSession = true},
        {1, maxCount}, pureNumber);
    addInteger<RELAY(NumMediaWriters)>(
        {.name = "NumMediaWriters",
         .displayName = "Num Media Writers",
         .toolTip = "Total number of media writers with different configurations available in the Stagelet, such "
                    "as for image file output.",
         .isFixedInSession = true},
        {1, maxCount}, pureNumber);
    addInteger<RELAY(RecordPeriod)>({.name = "RecordPeriod",
                                     .displayName = "Record Period",
                                     .toolTip = "Indicates the specific interval at which data points are "
                                                "recorded. A setting of zero turns this feature off."},
                                    {0, maxRecordPeriod}, pureNumber);
    addEnumeration<RELAY(RecordPeriodUnit)>(
        {.name = "RecordPeriodUnit",
         .displayName = "Record Period Unit",
         .toolTip = "Indicates the unit of the interval at which data points are recorded."},
        Parameters::recordPeriodUnits);
}

void DataWriterNodeMapBase::addPinParameters()
{
    addInteger<RELAY(InputDataPinSelector)>(
        {.name = "InputDataPinSelector",
         .displayName = "Input Data Pin Selector",
         .toolTip = "Choose which input data pin to configure. Indexing starts at 1."},
        {1, 1}, linear, &inputDataPinSelector_);
    addText<RELAY(PinDescription)>({.name = "PinDescription",
                                    .displayName = "Pin Description",
                                    .toolTip = "Can be used to note down what is connected to this pin.",
                                    .description = "This value is intended solely for user reference and is not "
                                                   "utilized by the system.",
                                    .selectedBy = {"InputDataPinSelector"}},
                                   maxTextLength);
    addEnumeration<RELAY(WriteEnable)>({.name = "WriteEnable",
                                        .displayName = "Write Enable",
                                        .toolTip = "Turns writing of pin data on or off for the selected pin.",
                                        .selectedBy = {"InputDataPinSelector"}},
                                       Parameters::writeEnables);
    addEnumeration<RELAY(RecordTriggerSelector)>(
        {.name = "RecordTriggerSelector",
         .displayName = "Record Trigger Selector",
         .toolTip = "Selects the condition that triggers data recording. This is additional to triggers generated "
                    "by the RecordPeriod parameter.",
         .selectedBy = {"InputDataPinSelector"}},
        Parameters::recordTriggerSelectors);
    addEnumeration<RELAY(RecordTriggerEnable)>({.name = "RecordTriggerEnable",
                                                .displayName = "Record Trigger Enable",
                                                .toolTip = "Enable or disable the record trigger.",
                                                .selectedBy = {"RecordTriggerSelector"}},
                                               Parameters::recordTriggerEnables);
    addEnumeration<RELAY(TextFormatSelector)>({.name = "TextFormatSelector",
                                               .displayName = "Text Format Selector",
                                               .toolTip = "Selects the text format section for configuration.",
                                               .selectedBy = {"InputDataPinSelector"}},
                                              Parameters::textFormatSelectors);
    addText<RELAY(TextFormat)>({.name = "TextFormat",
                                .displayName = "Text Format",
                                .toolTip = "Defines the format for printed text output.",
                                .description = Parameters::textFormatHelp,
                                .selectedBy = {"TextFormatSelector", "InputDataPinSelector"}},
                               maxTextLength);
    addInteger<RELAY(UseMediaWriterSelector)>(
        {.name = "UseMediaWriterSelector",
         .displayName = "Use Media Writer Selector",
         .toolTip = "Select which media writer to enable or disable as a data sink.",
         .selectedBy = {"InputDataPinSelector"}},
        {1, 1}, linear, &useMediaWriterSelector_);
    addEnumeration<RELAY(UseMediaWriterEnable)>(
        {.name = "UseMediaWriterEnable",
         .displayName = "UseMediaWriterEnable",
         .toolTip = "Enable or disable writing of pin data for the selected pin.",
         .selectedBy = {"UseMediaWriterSelector", "InputDataPinSelector"}},
        Parameters::useMediaWriterEnables);
}

void DataWriterNodeMapBase::addMediaWriterParameters()
{
    addInteger<RELAY(MediaWriterSelector)>({.name = "MediaWriterSelector",
                                            .displayName = "Media Writer Selector",
                                            .toolTip = "Selects the media writer to configure."},
                                           {1, 1}, linear, &mediaWriterSelector_);
    addText<RELAY(MediaWriterDescription)>(
        {.name = "MediaWriterDescription",
         .displayName = "Media Writer Description",
         .toolTip = "Can be used to note down what is written by this media writer.",
         .selectedBy = {"MediaWriterSelector"}},
        maxTextLength);
    addEnumeration<RELAY(MediaType)>({.name = "MediaType",
                                      .displayName = "Media Type",
                                      .toolTip = "Specifies the type of media for data output.",
                                      .selectedBy = {"MediaWriterSelector"},
                                      .isFixedInSession = true},
                                     Parameters::mediaTypes);
    addEnumeration<RELAY(FileScope)>({.name = "FileScope",
                                      .displayName = "File Scope",
                                      .toolTip = "Specifies the scope for file writing operations.",
                                      .selectedBy = {"MediaWriterSelector"},
                                      .isFixedInSession = true},
                                     Parameters::fileScopes);
    addEnumeration<RELAY(FileMode)>({.name = "FileMode",
                                     .displayName = "File Mode",
                                     .toolTip = "Specifies how files are created and written.",
                                     .selectedBy = {"MediaWriterSelector"}},
                                    Parameters::fileModes);
    addFloat<RELAY(Quality)>({.name = "Quality",
                              .displayName = "Quality",
                              .toolTip = "A normalized quality setting. It is applied if applicable.",
                              .selectedBy = {"MediaWriterSelector"}},
                             qualityRange, linear);
}

void DataWriterNodeMapBase::addFolderParameters()
{
    addText<RELAY(OutputFolderName)>({.name = "OutputFolderName",
                                      .displayName = "Output Folder Name",
                                      .toolTip = "Name of the folder where output files and folders are created.",
                                      .description = "Specifies the output folder for saved files.",
                                      .isFixedInSession = true},
                                     maxTextLength);
    addText<RELAY(SessionFolderName)>({.name = "SessionFolderName",
                                       .displayName = "Session Folder Name",
                                       .toolTip = "The folder created each time the Stagelet is started.",
                                       .description = "Name of the folder created for each session.",
                                       .isFixedInSession = true},
                                      maxTextLength);
    addText<RELAY(RecordFolderName)>(
        {.name = "RecordFolderName",
         .displayName = "Record Folder Name",
         .toolTip = "Name of the folder created for a data record. No folder is created if empty.",
         .description = "Name of the folder for each data record."},
        maxTextLength);
    addText<RELAY(FileName)>({.name = "FileName",
                              .displayName = "File Name",
                              .toolTip = "Name of the file to write the data to.",
                              .description = "Specifies the file name for output data.",
                              .selectedBy = {"MediaWriterSelector"}},
                             maxTextLength);
    addFloat<RELAY(PlayBackSpeed)>({.name = "PlayBackSpeed",
                                    .displayName = "Play Back Speed",
                                    .toolTip = "The playback speed of the video to write.",
                                    .selectedBy = {"MediaWriterSelector"}},
                                   playBackSpeedRange, pureNumber);
    addText<RELAY(UsedSessionFolderPath)>(
        {.name = "UsedSessionFolderPath",
         .displayName = "Used Session Folder Path",
         .toolTip = "Folder path used for writing data to. Value changes are not notified."},
        maxPathLength, false);
    addText<RELAY(UsedRecordFolderPath)>(
        {.name = "UsedRecordFolderPath",
         .displayName = "Used Record Folder Path",
         .toolTip = "Record folder path used for writing data to. Value changes are not notified."},
        maxPathLength, false);
}

#undef RELAY

}  // namespace Plugin::NivexStageletPackageBase
