#include "datawriter/DataWriterSettings.h"

#include <algorithm>
#include <concepts>
#include <type_traits>

#include "gcbase/exception.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

using GenICam::gcstring;
using Nivex::DataProcessing::Core::ISettings;

constexpr std::array<const char*, recordTriggerCount> recordTriggerKeys = {
    "RecordTriggerEnable_HasError", "RecordTriggerEnable_HasErrorRecursive", "RecordTriggerEnable_ArrayHasItems",
    "RecordTriggerEnable_DataPresent", "RecordTriggerEnable_BoolValue"};

constexpr std::array<const char*, textFormatCount> textFormatKeys = {
    "TextFormat_SessionBegin", "TextFormat_RecordBegin", "TextFormat_ArrayBegin",
    "TextFormat_DataBegin",    "TextFormat_Data",        "TextFormat_DataEnd",
    "TextFormat_ArrayEnd",     "TextFormat_RecordEnd",   "TextFormat_SessionEnd"};

gcstring numbered(const char* name, std::size_t number)
{
    return name + std::to_string(number);
}

// The keys and fields of each record, in the order in which recipes hold them; loading and saving walk these.

template <typename Settings, typename Visit>
void visitFields(Settings& settings, const Visit& visit)
{
    visit("NumInputDataPins", settings.numInputDataPins);
    visit("NumMediaWriters", settings.numMediaWriters);
    visit("RecordPeriod", settings.recordPeriod);
    visit("RecordPeriodUnit", settings.recordPeriodUnit);
    visit("OutputFolderName", settings.outputFolderName);
    visit("SessionFolderName", settings.sessionFolderName);
    visit("RecordFolderName", settings.recordFolderName);
    visit("InputDataPinSelector", settings.inputDataPinSelector);
    visit("MediaWriterSelector", settings.mediaWriterSelector);
}

template <typename Pin, typename Visit>
void visitPinFields(Pin& pin, const Visit& visit)
{
    visit("PinDescription", pin.pinDescription);
    visit("WriteEnable", pin.writeEnable);
    visit("RecordTriggerSelector", pin.recordTriggerSelector);
    for (std::size_t i = 0; i < recordTriggerCount; ++i)
        visit(recordTriggerKeys[i], pin.recordTriggerEnable[i]);
    visit("TextFormatSelector", pin.textFormatSelector);
    for (std::size_t i = 0; i < textFormatCount; ++i)
        visit(textFormatKeys[i], pin.textFormat[i]);
    visit("UseMediaWriterSelector", pin.useMediaWriterSelector);
    for (std::size_t i = 0; i < pin.useMediaWriterEnable.size(); ++i)
        visit.optional(numbered("UseMediaWriterEnable", i + 1), pin.useMediaWriterEnable[i]);
}

template <typename Writer, typename Visit>
void visitWriterFields(Writer& writer, const Visit& visit)
{
    visit("MediaWriterDescription", writer.mediaWriterDescription);
    visit("MediaType", writer.mediaType);
    visit("FileScope", writer.fileScope);
    visit("FileMode", writer.fileMode);
    visit("Quality", writer.quality);
    visit("FileName", writer.fileName);
    visit("PlayBackSpeed", writer.playBackSpeed);
}

template <typename E>
concept Enumeration = std::is_enum_v<E>;

struct Loader
{
    const ISettings& store;

    void operator()(const gcstring& key, std::uint64_t& value) const { value = store.getUnsigned(key); }
    void operator()(const gcstring& key, double& value) const { value = store.getDouble(key); }
    void operator()(const gcstring& key, gcstring& value) const { value = store.getString(key); }
    template <Enumeration E>
    void operator()(const gcstring& key, E& value) const
    {
        value = static_cast<E>(store.getSigned(key));
    }
    template <typename T>
    void optional(const gcstring& key, T& value) const
    {
        if (store.hasKey(key)) (*this)(key, value);
    }
};

struct Saver
{
    ISettings& store;

    void operator()(const gcstring& key, std::uint64_t value) const { store.setUnsigned(key, value); }
    void operator()(const gcstring& key, double value) const { store.setDouble(key, value); }
    void operator()(const gcstring& key, const gcstring& value) const { store.setString(key, value); }
    void operator()(const gcstring& key, Enumeration auto value) const
    {
        store.setSigned(key, static_cast<std::int64_t>(value));
    }
    template <typename T>
    void optional(const gcstring& key, const T& value) const
    {
        (*this)(key, value);
    }
};

constexpr const char* pinKey = "PinConfig";
constexpr const char* writerKey = "MediaWriterSetting";

template <typename Records, typename VisitRecord>
void loadRecords(const ISettings& store, const char* key, Records& records, const VisitRecord& visitRecord)
{
    for (std::size_t i = 0; i < records.size(); ++i) {
        const gcstring child = numbered(key, i);
        if (store.hasKey(child)) visitRecord(records[i], Loader{*store.openChild(child)});
    }
}

template <typename Records, typename VisitRecord>
void saveRecords(ISettings& store, const char* key, const Records& records, const VisitRecord& visitRecord)
{
    for (std::size_t i = 0; i < records.size(); ++i)
        visitRecord(records[i], Saver{*store.createChild(numbered(key, i))});
}

void clampToCount(std::uint64_t& number, std::uint64_t count)
{
    number = std::clamp<std::uint64_t>(number, 1, count);
}

template <typename Values, typename Selector>
auto& select(Values& values, Selector selector, const char* refusal)
{
    const auto index = static_cast<std::size_t>(selector);
    if (index >= values.size()) GENICAM_THROW(RuntimeException, "%s", refusal);
    return values[index];
}

constexpr const char* invalidTrigger = "Invalid RecordTriggerSelector setting.";
constexpr const char* invalidTextFormat = "Invalid TextFormatSelector setting.";

}  // namespace

void DataWriterSettings::fitToCounts()
{
    clampToCount(numInputDataPins, maxCount);
    clampToCount(numMediaWriters, maxCount);
    clampToCount(inputDataPinSelector, numInputDataPins);
    clampToCount(mediaWriterSelector, numMediaWriters);
    pins.resize(numInputDataPins);
    mediaWriters.resize(numMediaWriters);
    for (InputPinSettings& pin : pins) {
        pin.useMediaWriterEnable.resize(numMediaWriters, UseMediaWriterEnable::On);
        clampToCount(pin.useMediaWriterSelector, numMediaWriters);
    }
}

RecordTriggerEnable getRecordTriggerEnable(const InputPinSettings& pin, RecordTriggerSelector selector)
{
    return select(pin.recordTriggerEnable, selector, invalidTrigger);
}

void setRecordTriggerEnable(InputPinSettings& pin, RecordTriggerSelector selector, RecordTriggerEnable value)
{
    select(pin.recordTriggerEnable, selector, invalidTrigger) = value;
}

const gcstring& getTextFormat(const InputPinSettings& pin, TextFormatSelector selector)
{
    return select(pin.textFormat, selector, invalidTextFormat);
}

void setTextFormat(InputPinSettings& pin, TextFormatSelector selector, const gcstring& value)
{
    select(pin.textFormat, selector, invalidTextFormat) = value;
}

void load(DataWriterSettings& settings, const ISettings& store)
{
    DataWriterSettings loaded = settings;
    visitFields(loaded, Loader{store});
    loaded.recordPeriod = std::min(loaded.recordPeriod, DataWriterSettings::maxRecordPeriod);
    loaded.fitToCounts();
    loadRecords(store, pinKey, loaded.pins, [](auto& pin, const Loader& loader) { visitPinFields(pin, loader); });
    loadRecords(store, writerKey, loaded.mediaWriters,
                [](auto& writer, const Loader& loader) { visitWriterFields(writer, loader); });
    loaded.fitToCounts();
    settings = std::move(loaded);
}

void save(const DataWriterSettings& settings, ISettings& store)
{
    visitFields(settings, Saver{store});
    saveRecords(store, pinKey, settings.pins,
                [](const auto& pin, const Saver& saver) { visitPinFields(pin, saver); });
    saveRecords(store, writerKey, settings.mediaWriters,
                [](const auto& writer, const Saver& saver) { visitWriterFields(writer, saver); });
}

}  // namespace Plugin::NivexStageletPackageBase
