// The settings record and its keys in a recipe.
#include <gtest/gtest.h>

#include "datawriter/DataWriterSettings.h"
#include "datawritertest.h"
#include "runtime/jsonsettings.h"

namespace DataWriterTest {
namespace {

using namespace Nivex::DataProcessing::Runtime;

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

/// A recipe's store, with the tree that it works on.
struct Store
{
    std::shared_ptr<JsonValue> tree = std::make_shared<JsonValue>(JsonObject());
    JsonSettings settings{tree};

    std::vector<JsonMember>& members(const char* child = nullptr)
    {
        auto* root = tree->as<JsonObject>();
        return child ? root->find(child)->as<JsonObject>()->members : root->members;
    }
    std::vector<std::string> names(const char* child = nullptr)
    {
        std::vector<std::string> all;
        for (const JsonMember& member : members(child))
            all.push_back(member.name);
        return all;
    }
    void remove(const char* name, const char* child = nullptr)
    {
        std::erase_if(members(child), [&](const JsonMember& member) { return member.name == name; });
    }
};

TEST(DataWriterSettings, ComeBackFromAStoreInTheOrderOfRecipes)
{
    const DataWriterSettings saved = everythingChanged();
    Store store;
    save(saved, store.settings);
    EXPECT_EQ(store.names(),
              words("NumInputDataPins NumMediaWriters RecordPeriod RecordPeriodUnit OutputFolderName "
                    "SessionFolderName RecordFolderName InputDataPinSelector MediaWriterSelector PinConfig0 "
                    "PinConfig1 MediaWriterSetting0 MediaWriterSetting1 MediaWriterSetting2"));
    EXPECT_EQ(store.names("PinConfig1"),
              words("PinDescription WriteEnable RecordTriggerSelector RecordTriggerEnable_HasError "
                    "RecordTriggerEnable_HasErrorRecursive RecordTriggerEnable_ArrayHasItems "
                    "RecordTriggerEnable_DataPresent RecordTriggerEnable_BoolValue TextFormatSelector "
                    "TextFormat_SessionBegin TextFormat_RecordBegin TextFormat_ArrayBegin TextFormat_DataBegin "
                    "TextFormat_Data TextFormat_DataEnd TextFormat_ArrayEnd TextFormat_RecordEnd "
                    "TextFormat_SessionEnd UseMediaWriterSelector UseMediaWriterEnable1 UseMediaWriterEnable2 "
                    "UseMediaWriterEnable3"));
    EXPECT_EQ(store.names("MediaWriterSetting2"),
              words("MediaWriterDescription MediaType FileScope FileMode Quality FileName PlayBackSpeed"));
    EXPECT_EQ(store.settings.openChild("MediaWriterSetting2")->getSigned("MediaType"), 7);

    DataWriterSettings loaded;
    load(loaded, store.settings);
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
        JsonSettings store;
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
    Store store;
    save(everythingChanged(), store.settings);
    store.remove("PinConfig1");
    store.remove("MediaWriterSetting2");
    store.remove("UseMediaWriterEnable2", "PinConfig0");
    DataWriterSettings loaded;
    load(loaded, store.settings);
    InputPinSettings defaults;
    defaults.useMediaWriterEnable.assign(3, UseMediaWriterEnable::On);
    EXPECT_TRUE(loaded.pins[1] == defaults);
    EXPECT_TRUE(loaded.mediaWriters[2] == MediaWriterSettings());
    EXPECT_EQ(loaded.pins[0].useMediaWriterEnable[1], UseMediaWriterEnable::On);

    store.remove("TextFormat_Data", "PinConfig0");
    store.settings.setString("OutputFolderName", "elsewhere");
    const DataWriterSettings before = loaded;
    EXPECT_THROW(load(loaded, store.settings), GenICam::RuntimeException);
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
