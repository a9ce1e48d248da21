// The settings record and its keys in a recipe.
#include <gtest/gtest.h>

#include "datawriter/DataWriterSettings.h"
#include "datawritertest.h"

namespace DataWriterTest {
namespace {

/// No field has its default.
DataWriterSettings everythingChanged()
{
    DataWriterSettings settings;
    settings.numInputDataPins = 2;
    settings.numMediaWriters = 3;
    settings.fitToCounts();
    settings.recordPeriod = 7;
    settings.recordPeriodUnit = RecordPeriodUnit::Hours;
    settings.outputFolderName = "out";
    settings.sessionFolderName = "session";
    settings.recordFolderName = "record";
    settings.inputDataPinSelector = 2;
    settings.mediaWriterSelector = 3;
    for (InputPinSettings& pin : settings.pins) {
        pin.pinDescription = "pin";
        pin.writeEnable = WriteEnable::Off;
        pin.recordTriggerSelector = RecordTriggerSelector::BoolValue;
        pin.textFormatSelector = static_cast<TextFormatSelector>(9);
        pin.useMediaWriterSelector = 2;
        for (std::size_t i = 0; i < recordTriggerCount; ++i)
            pin.recordTriggerEnable[i] = static_cast<RecordTriggerEnable>(1 + i % 2);
        for (std::size_t i = 0; i < textFormatCount; ++i)
            pin.textFormat[i] = "format " + std::to_string(i);
        pin.useMediaWriterEnable[1] = UseMediaWriterEnable::Off;
    }
    settings.mediaWriters[2] = {"writer", MediaType::TXT, FileScope::DataItem, FileMode::Append, 12.5, "name",
                                5.5};
    return settings;
}

TEST(DataWriterSettings, ComeBackFromAStoreInTheOrderOfRecipes)
{
    const DataWriterSettings saved = everythingChanged();
    MemorySettings store;
    save(saved, store);

    std::vector<std::string> expected = words(
        "NumInputDataPins NumMediaWriters RecordPeriod RecordPeriodUnit OutputFolderName SessionFolderName "
        "RecordFolderName InputDataPinSelector MediaWriterSelector");
    for (const std::string pin : {"PinConfig0/", "PinConfig1/"}) {
        for (const std::string& key :
             words("PinDescription WriteEnable RecordTriggerSelector RecordTriggerEnable_HasError "
                   "RecordTriggerEnable_HasErrorRecursive RecordTriggerEnable_ArrayHasItems "
                   "RecordTriggerEnable_DataPresent RecordTriggerEnable_BoolValue TextFormatSelector "
                   "TextFormat_SessionBegin TextFormat_RecordBegin TextFormat_ArrayBegin TextFormat_DataBegin "
                   "TextFormat_Data TextFormat_DataEnd TextFormat_ArrayEnd TextFormat_RecordEnd "
                   "TextFormat_SessionEnd UseMediaWriterSelector UseMediaWriterEnable1 UseMediaWriterEnable2 "
                   "UseMediaWriterEnable3"))
            expected.push_back(pin + key);
    }
    for (const std::string writer : {"MediaWriterSetting0/", "MediaWriterSetting1/", "MediaWriterSetting2/"}) {
        for (const std::string& key :
             words("MediaWriterDescription MediaType FileScope FileMode Quality FileName PlayBackSpeed"))
            expected.push_back(writer + key);
    }
    EXPECT_EQ(*store.order, expected);
    EXPECT_EQ(std::get<std::int64_t>(store.children.at("MediaWriterSetting2")->values.at("MediaType")), 7);

    DataWriterSettings loaded;
    load(loaded, store);
    EXPECT_TRUE(loaded == saved);
}

TEST(DataWriterSettings, AreBroughtWithinTheirLimitsByLoading)
{
    struct Case
    {
        const char* key;
        std::uint64_t stored;
        std::uint64_t DataWriterSettings::*field;
        std::uint64_t expected;
    };
    for (const Case& row : {Case{"NumInputDataPins", 0, &DataWriterSettings::numInputDataPins, 1},
                            {"NumInputDataPins", 250, &DataWriterSettings::numInputDataPins, 100},
                            {"NumMediaWriters", 0, &DataWriterSettings::numMediaWriters, 1},
                            {"NumMediaWriters", 101, &DataWriterSettings::numMediaWriters, 100},
                            {"RecordPeriod", 2147483648, &DataWriterSettings::recordPeriod, 2147483647},
                            {"RecordPeriod", 0, &DataWriterSettings::recordPeriod, 0},
                            {"InputDataPinSelector", 0, &DataWriterSettings::inputDataPinSelector, 1},
                            {"InputDataPinSelector", 9, &DataWriterSettings::inputDataPinSelector, 2},
                            {"MediaWriterSelector", 200, &DataWriterSettings::mediaWriterSelector, 3}})
    {
        SCOPED_TRACE(row.key + std::to_string(row.stored));
        MemorySettings store;
        save(everythingChanged(), store);
        store.setUnsigned(row.key, row.stored);
        DataWriterSettings loaded;
        load(loaded, store);
        EXPECT_EQ(loaded.*row.field, row.expected);
        EXPECT_EQ(loaded.pins.size(), loaded.numInputDataPins);
        EXPECT_EQ(loaded.mediaWriters.size(), loaded.numMediaWriters);
        for (const InputPinSettings& pin : loaded.pins) {
            EXPECT_EQ(pin.useMediaWriterEnable.size(), loaded.numMediaWriters);
            EXPECT_LE(pin.useMediaWriterSelector, loaded.numMediaWriters);
        }
    }
}

TEST(DataWriterSettings, KeepWhatAStoreLeavesOutAndRefuseAMissingKey)
{
    MemorySettings store;
    save(everythingChanged(), store);
    store.children.erase("PinConfig1");
    store.children.erase("MediaWriterSetting2");
    store.children.at("PinConfig0")->values.erase("UseMediaWriterEnable2");
    DataWriterSettings loaded;
    load(loaded, store);
    InputPinSettings defaults;
    defaults.useMediaWriterEnable.assign(3, UseMediaWriterEnable::On);
    EXPECT_TRUE(loaded.pins[1] == defaults);
    EXPECT_TRUE(loaded.mediaWriters[2] == MediaWriterSettings());
    EXPECT_EQ(loaded.pins[0].useMediaWriterEnable[1], UseMediaWriterEnable::On);

    store.children.at("PinConfig0")->values.erase("TextFormat_Data");
    store.setString("OutputFolderName", "elsewhere");
    const DataWriterSettings before = loaded;
    EXPECT_THROW(load(loaded, store), GenICam::RuntimeException);
    EXPECT_TRUE(loaded == before);
}

void expectRefusal(const char* text, const std::function<void()>& access)
{
    try {
        access();
        ADD_FAILURE() << text;
    } catch (const GenICam::RuntimeException& refusal) {
        EXPECT_STREQ(refusal.GetDescription(), text);
        EXPECT_STREQ(refusal.GetSourceFileName(), "datawriter/DataWriterSettings");
    }
}

TEST(DataWriterSettings, RefuseSelectorsWithoutName)
{
    InputPinSettings pin;
    for (const auto beyond : {static_cast<TextFormatSelector>(9), static_cast<TextFormatSelector>(-1)}) {
        expectRefusal("Invalid TextFormatSelector setting.", [&] { getTextFormat(pin, beyond); });
        expectRefusal("Invalid TextFormatSelector setting.", [&] { setTextFormat(pin, beyond, ""); });
    }
    for (const auto beyond : {static_cast<RecordTriggerSelector>(5), static_cast<RecordTriggerSelector>(-1)}) {
        expectRefusal("Invalid RecordTriggerSelector setting.", [&] { getRecordTriggerEnable(pin, beyond); });
        expectRefusal("Invalid RecordTriggerSelector setting.",
                      [&] { setRecordTriggerEnable(pin, beyond, RecordTriggerEnable::On); });
    }
    EXPECT_TRUE(pin == InputPinSettings());
}

}  // namespace
}  // namespace DataWriterTest
