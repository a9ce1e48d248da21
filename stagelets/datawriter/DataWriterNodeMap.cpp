#include "datawriter/DataWriterNodeMap.h"

#include "genapi/inode.h"
#include "genapi/nodemapref.h"

#include "threading/uniquelock.h"

namespace Plugin::NivexStageletPackageBase {

using GenICam::gcstring;
using Guard = Nivex::DataProcessing::Threading::UniqueLock<Nivex::DataProcessing::Threading::RecursiveCLock>;

namespace {

/// The record that a 1-based selector names.
template <typename Records>
auto& selected(Records& records, std::uint64_t selector)
{
    return records.at(selector - 1);
}

InputPinSettings& selectedPinOf(DataWriterSettings& settings)
{
    return selected(settings.pins, settings.inputDataPinSelector);
}

}  // namespace

DataWriterNodeMap::DataWriterNodeMap(Settings& settings, const std::filesystem::path& sessionFolder,
                                     const std::filesystem::path& recordFolder, INodeMapObserver& observer)
    : settings_(settings), sessionFolder_(sessionFolder), recordFolder_(recordFolder), observer_(observer)
{
    build();
}

// Reading and writing

template <typename Field>
auto DataWriterNodeMap::read(Field field) const
{
    const Guard guard(*getLock());
    return (*settings_).*field;
}

const InputPinSettings& DataWriterNodeMap::selectedPin() const
{
    return selected(settings_->pins, settings_->inputDataPinSelector);
}

template <typename Field>
auto DataWriterNodeMap::readPin(Field field) const
{
    const Guard guard(*getLock());
    return selectedPin().*field;
}

template <typename Field>
auto DataWriterNodeMap::readWriter(Field field) const
{
    const Guard guard(*getLock());
    return selected(settings_->mediaWriters, settings_->mediaWriterSelector).*field;
}

template <typename Change>
void DataWriterNodeMap::edit(const Change& change, NodeMapChange kind)
{
    {
        const Guard guard(*getLock());
        change(settings_.write());
    }
    observer_.onNodeMapChanged(kind);
}

template <typename Field, typename Value>
void DataWriterNodeMap::write(Field field, const Value& value)
{
    edit([&](DataWriterSettings& settings) { settings.*field = value; });
}

template <typename Field, typename Value>
void DataWriterNodeMap::writePin(Field field, const Value& value)
{
    edit([&](DataWriterSettings& settings) { selectedPinOf(settings).*field = value; });
}

template <typename Field, typename Value>
void DataWriterNodeMap::writeWriter(Field field, const Value& value)
{
    edit([&](DataWriterSettings& settings) {
        selected(settings.mediaWriters, settings.mediaWriterSelector).*field = value;
    });
}

void DataWriterNodeMap::writeCount(std::uint64_t DataWriterSettings::*count, std::uint64_t value,
                                   NodeMapChange kind)
{
    edit(
        [&](DataWriterSettings& settings) {
            settings.*count = value;
            settings.fitToCounts();
            setSelectorLimits();
        },
        kind);
}

void DataWriterNodeMap::setSelectorLimits()
{
    setMaxInputDataPinSelector(settings_->numInputDataPins);
    setMaxMediaWriterSelectors(settings_->numMediaWriters);
}

void DataWriterNodeMap::refresh()
{
    setSelectorLimits();
    if (GenApi::INode* port = getNodeMap().GetNode("ParameterPort")) port->InvalidateNode();
}

// The parameters, in their order

std::uint64_t DataWriterNodeMap::zReadNumInputDataPins() const
{
    return read(&DataWriterSettings::numInputDataPins);
}
void DataWriterNodeMap::zWriteNumInputDataPins(std::uint64_t value)
{
    writeCount(&DataWriterSettings::numInputDataPins, value, NodeMapChange::PinCount);
}

std::uint64_t DataWriterNodeMap::zReadNumMediaWriters() const
{
    return read(&DataWriterSettings::numMediaWriters);
}
void DataWriterNodeMap::zWriteNumMediaWriters(std::uint64_t value)
{
    writeCount(&DataWriterSettings::numMediaWriters, value, NodeMapChange::MediaWriterCount);
}

std::uint64_t DataWriterNodeMap::zReadRecordPeriod() const
{
    return read(&DataWriterSettings::recordPeriod);
}
void DataWriterNodeMap::zWriteRecordPeriod(std::uint64_t value)
{
    write(&DataWriterSettings::recordPeriod, value);
}

RecordPeriodUnit DataWriterNodeMap::zReadRecordPeriodUnit() const
{
    return read(&DataWriterSettings::recordPeriodUnit);
}
void DataWriterNodeMap::zWriteRecordPeriodUnit(RecordPeriodUnit value)
{
    write(&DataWriterSettings::recordPeriodUnit, value);
}

std::uint64_t DataWriterNodeMap::zReadInputDataPinSelector() const
{
    return read(&DataWriterSettings::inputDataPinSelector);
}
void DataWriterNodeMap::zWriteInputDataPinSelector(std::uint64_t value)
{
    write(&DataWriterSettings::inputDataPinSelector, value);
}

gcstring DataWriterNodeMap::zReadPinDescription() const
{
    return readPin(&InputPinSettings::pinDescription);
}
void DataWriterNodeMap::zWritePinDescription(const gcstring& text)
{
    writePin(&InputPinSettings::pinDescription, text);
}

WriteEnable DataWriterNodeMap::zReadWriteEnable() const
{
    return readPin(&InputPinSettings::writeEnable);
}
void DataWriterNodeMap::zWriteWriteEnable(WriteEnable value)
{
    writePin(&InputPinSettings::writeEnable, value);
}

RecordTriggerSelector DataWriterNodeMap::zReadRecordTriggerSelector() const
{
    return readPin(&InputPinSettings::recordTriggerSelector);
}
void DataWriterNodeMap::zWriteRecordTriggerSelector(RecordTriggerSelector value)
{
    writePin(&InputPinSettings::recordTriggerSelector, value);
}

RecordTriggerEnable DataWriterNodeMap::zReadRecordTriggerEnable() const
{
    const Guard guard(*getLock());
    return getRecordTriggerEnable(selectedPin(), selectedPin().recordTriggerSelector);
}
void DataWriterNodeMap::zWriteRecordTriggerEnable(RecordTriggerEnable value)
{
    edit([&](DataWriterSettings& settings) {
        InputPinSettings& pin = selectedPinOf(settings);
        setRecordTriggerEnable(pin, pin.recordTriggerSelector, value);
    });
}

TextFormatSelector DataWriterNodeMap::zReadTextFormatSelector() const
{
    return readPin(&InputPinSettings::textFormatSelector);
}
void DataWriterNodeMap::zWriteTextFormatSelector(TextFormatSelector value)
{
    writePin(&InputPinSettings::textFormatSelector, value);
}

gcstring DataWriterNodeMap::zReadTextFormat() const
{
    const Guard guard(*getLock());
    return getTextFormat(selectedPin(), selectedPin().textFormatSelector);
}
void DataWriterNodeMap::zWriteTextFormat(const gcstring& text)
{
    edit([&](DataWriterSettings& settings) {
        InputPinSettings& pin = selectedPinOf(settings);
        setTextFormat(pin, pin.textFormatSelector, text);
    });
}

std::uint64_t DataWriterNodeMap::zReadUseMediaWriterSelector() const
{
    return readPin(&InputPinSettings::useMediaWriterSelector);
}
void DataWriterNodeMap::zWriteUseMediaWriterSelector(std::uint64_t value)
{
    writePin(&InputPinSettings::useMediaWriterSelector, value);
}

UseMediaWriterEnable DataWriterNodeMap::zReadUseMediaWriterEnable() const
{
    const Guard guard(*getLock());
    return selected(selectedPin().useMediaWriterEnable, selectedPin().useMediaWriterSelector);
}
void DataWriterNodeMap::zWriteUseMediaWriterEnable(UseMediaWriterEnable value)
{
    edit([&](DataWriterSettings& settings) {
        InputPinSettings& pin = selectedPinOf(settings);
        selected(pin.useMediaWriterEnable, pin.useMediaWriterSelector) = value;
    });
}

std::uint64_t DataWriterNodeMap::zReadMediaWriterSelector() const
{
    return read(&DataWriterSettings::mediaWriterSelector);
}
void DataWriterNodeMap::zWriteMediaWriterSelector(std::uint64_t value)
{
    write(&DataWriterSettings::mediaWriterSelector, value);
}

gcstring DataWriterNodeMap::zReadMediaWriterDescription() const
{
    return readWriter(&MediaWriterSettings::mediaWriterDescription);
}
void DataWriterNodeMap::zWriteMediaWriterDescription(const gcstring& text)
{
    writeWriter(&MediaWriterSettings::mediaWriterDescription, text);
}

MediaType DataWriterNodeMap::zReadMediaType() const
{
    return readWriter(&MediaWriterSettings::mediaType);
}
void DataWriterNodeMap::zWriteMediaType(MediaType value)
{
    writeWriter(&MediaWriterSettings::mediaType, value);
}

FileScope DataWriterNodeMap::zReadFileScope() const
{
    return readWriter(&MediaWriterSettings::fileScope);
}
void DataWriterNodeMap::zWriteFileScope(FileScope value)
{
    writeWriter(&MediaWriterSettings::fileScope, value);
}

FileMode DataWriterNodeMap::zReadFileMode() const
{
    return readWriter(&MediaWriterSettings::fileMode);
}
void DataWriterNodeMap::zWriteFileMode(FileMode value)
{
    writeWriter(&MediaWriterSettings::fileMode, value);
}

double DataWriterNodeMap::zReadQuality() const
{
    return readWriter(&MediaWriterSettings::quality);
}
void DataWriterNodeMap::zWriteQuality(double value)
{
    writeWriter(&MediaWriterSettings::quality, value);
}

gcstring DataWriterNodeMap::zReadOutputFolderName() const
{
    return read(&DataWriterSettings::outputFolderName);
}
void DataWriterNodeMap::zWriteOutputFolderName(const gcstring& text)
{
    write(&DataWriterSettings::outputFolderName, text);
}

gcstring DataWriterNodeMap::zReadSessionFolderName() const
{
    return read(&DataWriterSettings::sessionFolderName);
}
void DataWriterNodeMap::zWriteSessionFolderName(const gcstring& text)
{
    write(&DataWriterSettings::sessionFolderName, text);
}

gcstring DataWriterNodeMap::zReadRecordFolderName() const
{
    return read(&DataWriterSettings::recordFolderName);
}
void DataWriterNodeMap::zWriteRecordFolderName(const gcstring& text)
{
    write(&DataWriterSettings::recordFolderName, text);
}

gcstring DataWriterNodeMap::zReadFileName() const
{
    return readWriter(&MediaWriterSettings::fileName);
}
void DataWriterNodeMap::zWriteFileName(const gcstring& text)
{
    writeWriter(&MediaWriterSettings::fileName, text);
}

double DataWriterNodeMap::zReadPlayBackSpeed() const
{
    return readWriter(&MediaWriterSettings::playBackSpeed);
}
void DataWriterNodeMap::zWritePlayBackSpeed(double value)
{
    writeWriter(&MediaWriterSettings::playBackSpeed, value);
}

gcstring DataWriterNodeMap::zReadUsedSessionFolderPath() const
{
    const Guard guard(*getLock());
    return sessionFolder_.string();
}
void DataWriterNodeMap::zWriteUsedSessionFolderPath(const gcstring&) {}

gcstring DataWriterNodeMap::zReadUsedRecordFolderPath() const
{
    const Guard guard(*getLock());
    return recordFolder_.string();
}
void DataWriterNodeMap::zWriteUsedRecordFolderPath(const gcstring&) {}

}  // namespace Plugin::NivexStageletPackageBase
