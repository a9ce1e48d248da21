// The parameters of a DataWriter, through its node map.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "datawritertest.h"
#include "runtime/jsonsettings.h"

namespace DataWriterTest {
namespace {

using testing::ElementsAre;

class DataWriterParameters : public testing::Test
{
protected:
    DataWriter node{nullptr};
    Parameters parameters{node};

    std::vector<std::string> pinNames() const
    {
        std::vector<std::string> names;
        for (const Core::InputDescriptor& input : node.getInputDescriptors())
            names.push_back(input.getName().str() + "/" + input.getDisplayName().str());
        return names;
    }
};

struct ParameterCase
{
    const char* name;
    const char* displayName;
    const char* initial;
    const char* selectedBy;
    const char* other;  ///< Another value that can be written; null for a read-only parameter.
};

TEST_F(DataWriterParameters, StandInTheirOrderWithNamesDefaultsAndSelectors)
{
    const std::string session =
        "Session__{_Fill_}{0}{_Year_}-{_Width_}{2}{_Month_}-{_Width_}{2}{_Day_}__{_Width_}{2}{_Hour_}-{_Width_}{2}"
        "{_Minute_}-{_Width_}{2}{_Second_}__{_Width_}{3}{_Millisecond_}";
    const std::vector<ParameterCase> cases = {
        {"NumInputDataPins", "Num Input Data Pins", "1", "", "100"},
        {"NumMediaWriters", "Num Media Writers", "1", "", "100"},
        {"RecordPeriod", "Record Period", "1", "", "2147483647"},
        {"RecordPeriodUnit", "Record Period Unit", "Update", "", "Hours"},
        {"InputDataPinSelector", "Input Data Pin Selector", "1", "", "100"},
        {"PinDescription", "Pin Description", "", "InputDataPinSelector", "text"},
        {"WriteEnable", "Write Enable", "On", "InputDataPinSelector", "Off"},
        {"RecordTriggerSelector", "Record Trigger Selector", "HasError", "InputDataPinSelector", "BoolValue"},
        {"RecordTriggerEnable", "Record Trigger Enable", "Off", "RecordTriggerSelector", "OnInverted"},
        {"TextFormatSelector", "Text Format Selector", "TextFormat_Data", "InputDataPinSelector",
         "TextFormat_SessionEnd"},
        {"TextFormat", "Text Format", "", "TextFormatSelector InputDataPinSelector", "{Default}"},
        {"UseMediaWriterSelector", "Use Media Writer Selector", "1", "InputDataPinSelector", "100"},
        {"UseMediaWriterEnable", "UseMediaWriterEnable", "On", "UseMediaWriterSelector InputDataPinSelector",
         "Off"},
        {"MediaWriterSelector", "Media Writer Selector", "1", "", "100"},
        {"MediaWriterDescription", "Media Writer Description", "", "MediaWriterSelector", "text"},
        {"MediaType", "Media Type", "PNG", "MediaWriterSelector", "TXT"},
        {"FileScope", "File Scope", "Record", "MediaWriterSelector", "DataItem"},
        {"FileMode", "File Mode", "Create", "MediaWriterSelector", "Append"},
        {"Quality", "Quality", "100", "MediaWriterSelector", "0"},
        {"OutputFolderName", "Output Folder Name", "", "", "/tmp"},
        {"SessionFolderName", "Session Folder Name", session.c_str(), "", "session"},
        {"RecordFolderName", "Record Folder Name", "", "", "record"},
        {"FileName", "File Name", "", "MediaWriterSelector", "name"},
        {"PlayBackSpeed", "Play Back Speed", "25", "MediaWriterSelector", "1000"},
        {"UsedSessionFolderPath", "Used Session Folder Path", "", "", nullptr},
        {"UsedRecordFolderPath", "Used Record Folder Path", "", "", nullptr},
    };
    GenApi::FeatureList_t features;
    parameters.as<GenApi::ICategory>("Root").GetFeatures(features);
    ASSERT_EQ(features.size(), cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const ParameterCase& row = cases[i];
        SCOPED_TRACE(row.name);
        GenApi::INode& feature = dynamic_cast<GenApi::INode&>(*features[i]);
        EXPECT_EQ(feature.GetName(), row.name);
        EXPECT_EQ(feature.GetDisplayName(), row.displayName);
        EXPECT_EQ(feature.GetVisibility(), GenApi::Beginner);
        EXPECT_FALSE(feature.GetToolTip().empty());
        EXPECT_EQ(parameters.get(row.name), row.initial);
        const bool isWritable = feature.GetAccessMode() == GenApi::RW;
        EXPECT_EQ(isWritable, row.other != nullptr);
        for (const std::string& selector : words(row.selectedBy)) {
            GenApi::FeatureList_t selected;
            parameters.as<GenApi::ISelector>(selector.c_str()).GetSelectedFeatures(selected);
            EXPECT_EQ(std::count_if(selected.begin(), selected.end(),
                                    [&](GenApi::IValue* value) {
                                        return dynamic_cast<GenApi::INode&>(*value).GetName() == row.name;
                                    }),
                      1)
                << selector;
        }
    }
    for (const ParameterCase& row : cases) {
        if (!row.other) continue;
        parameters.set(row.name, row.other);
        EXPECT_EQ(parameters.get(row.name), row.other) << row.name;
    }
}

TEST_F(DataWriterParameters, ListTheirChoicesInOrder)
{
    struct Case
    {
        const char* name;
        const char* entries;
    };
    for (const Case& row :
         {Case{"RecordPeriodUnit", "Update=0 Milliseconds=1 Seconds=2 Minute=3 Hours=4"},
          {"RecordTriggerSelector", "HasError=0 HasErrorRecursive=1 ArrayHasItems=2 DataPresent=3 BoolValue=4"},
          {"RecordTriggerEnable", "On=1 OnInverted=2 Off=0"},
          {"WriteEnable", "On=1 Off=0"},
          {"UseMediaWriterEnable", "On=1 Off=0"},
          {"TextFormatSelector",
           "TextFormat_SessionBegin=0 TextFormat_RecordBegin=1 TextFormat_ArrayBegin=2 "
           "TextFormat_DataBegin=3 TextFormat_Data=4 TextFormat_ArrayEnd=6 "
           "TextFormat_DataEnd=5 TextFormat_RecordEnd=7 TextFormat_SessionEnd=8"},
          {"MediaType", "MP4=0 BMP=1 TIFF=2 JPEG=3 PNG=4 RAW=5 DNG=6 TXT=7"},
          {"FileScope", "Session=0 Record=1 DataItem=2"},
          {"FileMode", "Create=0 CreateThenAppend=1 Append=2"}})
    {
        GenApi::NodeList_t nodes;
        parameters.as<GenApi::IEnumeration>(row.name).GetEntries(nodes);
        std::vector<std::string> entries;
        for (GenApi::INode* entry : nodes) {
            auto& choice = dynamic_cast<GenApi::IEnumEntry&>(*entry);
            entries.push_back(choice.GetSymbolic().str() + "=" + std::to_string(choice.GetValue()));
            EXPECT_FALSE(entry->GetToolTip().empty());
        }
        EXPECT_EQ(entries, words(row.entries)) << row.name;
    }
}

TEST_F(DataWriterParameters, ExplainTheTemplates)
{
    const std::string help = parameters.node("TextFormat").GetDescription().str();
    EXPECT_THAT(help,
                testing::StartsWith("These tags can be used in string formatting fields to reference specific "
                                    "properties of geometric and image data."));
    EXPECT_THAT(help,
                testing::EndsWith("This will output the center coordinates, width, height, current time, and "
                                  "pixel format of the processed item."));
    for (const char* token : {"{Default}", "{RotationDeg}", "{BoundingBox_TopLeftX}", "{_NoBoolAlpha_}"})
        EXPECT_THAT(help, testing::HasSubstr(token));
}

TEST_F(DataWriterParameters, RefuseValuesOutsideTheirLimits)
{
    const std::string tooLong(10001, 'x');
    const std::vector<std::pair<const char*, const char*>> refused = {
        {"NumInputDataPins", "0"},      {"NumInputDataPins", "101"},    {"NumMediaWriters", "101"},
        {"RecordPeriod", "-1"},         {"RecordPeriod", "2147483648"}, {"InputDataPinSelector", "2"},
        {"Quality", "100.5"},           {"PlayBackSpeed", "0"},         {"MediaType", "GIF"},
        {"UsedSessionFolderPath", "x"}, {"TextFormat", tooLong.c_str()}};
    for (const auto& [name, value] : refused)
        EXPECT_THROW(parameters.set(name, value), GenICam::GenericException) << name << " = " << value;
}

TEST_F(DataWriterParameters, BelongToWhatTheSelectorsName)
{
    parameters.set("NumInputDataPins", "2");
    parameters.set("NumMediaWriters", "2");
    parameters.set("InputDataPinSelector", "2");
    parameters.set("RecordTriggerSelector", "BoolValue");
    parameters.set("RecordTriggerEnable", "On");
    parameters.set("TextFormatSelector", "TextFormat_ArrayBegin");
    EXPECT_EQ(parameters.get("TextFormat"), "Data{PinIndex} Array[{ArraySize}]\\n");
    parameters.set("TextFormat", "changed");
    parameters.set("UseMediaWriterSelector", "2");
    parameters.set("UseMediaWriterEnable", "Off");
    parameters.set("MediaWriterSelector", "2");
    parameters.set("MediaType", "BMP");

    parameters.set("RecordTriggerSelector", "DataPresent");
    EXPECT_EQ(parameters.get("RecordTriggerEnable"), "Off");
    parameters.set("RecordTriggerSelector", "BoolValue");
    EXPECT_EQ(parameters.get("RecordTriggerEnable"), "On");

    parameters.set("InputDataPinSelector", "1");
    parameters.set("MediaWriterSelector", "1");
    EXPECT_EQ(parameters.get("RecordTriggerSelector"), "HasError");
    parameters.set("RecordTriggerSelector", "BoolValue");
    EXPECT_EQ(parameters.get("RecordTriggerEnable"), "Off");
    EXPECT_EQ(parameters.get("TextFormatSelector"), "TextFormat_Data");
    EXPECT_EQ(parameters.get("UseMediaWriterSelector"), "1");
    parameters.set("UseMediaWriterSelector", "2");
    EXPECT_EQ(parameters.get("UseMediaWriterEnable"), "On");
    EXPECT_EQ(parameters.get("MediaType"), "PNG");

    parameters.set("InputDataPinSelector", "2");
    EXPECT_EQ(parameters.get("TextFormat"), "changed");
    EXPECT_EQ(parameters.get("UseMediaWriterEnable"), "Off");
}

TEST_F(DataWriterParameters, FollowTheCountsOfPinsAndWriters)
{
    auto& selector = parameters.as<GenApi::IInteger>("InputDataPinSelector");
    // Shared: the map tells its end, too, and it outlives this body.
    const auto changes = std::make_shared<int>(0);
    parameters.node("InputDataPinSelector").RegisterCallback([changes](GenApi::INode*) { ++*changes; });
    int settingsChanges = 0;
    std::vector<std::string> pinsWhenTold;
    const auto connection = node.getSettingsChangedSignal().connect([&] {
        ++settingsChanges;
        pinsWhenTold = pinNames();
    });
    parameters.set("NumInputDataPins", "3");
    EXPECT_EQ(selector.GetMax(), 3);
    EXPECT_GE(*changes, 1);
    EXPECT_EQ(settingsChanges, 1);
    EXPECT_THAT(pinsWhenTold, ElementsAre("Data1/Data1 Input", "Data2/Data2 Input", "Data3/Data3 Input"));
    selector.SetValue(3);
    parameters.set("NumInputDataPins", "2");
    EXPECT_EQ(selector.GetValue(), 2);
    EXPECT_EQ(selector.GetMax(), 2);
    EXPECT_THAT(pinNames(), ElementsAre("Data1/Data1 Input", "Data2/Data2 Input"));

    parameters.set("NumMediaWriters", "3");
    parameters.set("MediaWriterSelector", "3");
    parameters.set("UseMediaWriterSelector", "3");
    EXPECT_EQ(parameters.get("UseMediaWriterEnable"), "On");
    parameters.set("NumMediaWriters", "2");
    for (const char* name : {"MediaWriterSelector", "UseMediaWriterSelector"}) {
        EXPECT_EQ(parameters.get(name), "2") << name;
        EXPECT_EQ(parameters.as<GenApi::IInteger>(name).GetMax(), 2) << name;
    }
}

TEST_F(DataWriterParameters, AreFixedInPartWhileTheNodeRuns)
{
    const TemporaryFolder folder;
    const auto fixed = {"NumMediaWriters",  "NumInputDataPins",  "MediaType",
                        "OutputFolderName", "SessionFolderName", "FileScope"};
    parameters.set("OutputFolderName", folder.path().string());
    for (int run = 0; run < 2; ++run) {
        node.start({});
        for (const char* name : fixed) {
            EXPECT_EQ(parameters.node(name).GetAccessMode(), GenApi::RO) << name;
            EXPECT_THROW(parameters.set(name, parameters.get(name)), GenICam::AccessException) << name;
        }
        parameters.set("FileName", "written");
        parameters.set("RecordFolderName", "written");
        node.stop();
        for (const char* name : fixed)
            parameters.set(name, parameters.get(name));
    }
}

TEST_F(DataWriterParameters, ComeBackThroughTheSettings)
{
    DataWriter other(nullptr);
    Parameters source(other);
    source.set("NumInputDataPins", "3");
    source.set("NumMediaWriters", "2");
    source.set("InputDataPinSelector", "3");
    source.set("PinDescription", "third");
    const auto store = std::make_shared<Nivex::DataProcessing::Runtime::JsonSettings>();
    other.saveSettings(store);

    // Shared: the map tells its end, too, and it outlives this body.
    const auto changes = std::make_shared<int>(0);
    parameters.node("PinDescription").RegisterCallback([changes](GenApi::INode*) { ++*changes; });
    EXPECT_EQ(parameters.get("PinDescription"), "");
    node.loadSettings(store);
    EXPECT_GE(*changes, 1);
    EXPECT_EQ(parameters.get("PinDescription"), "third");
    EXPECT_EQ(parameters.as<GenApi::IInteger>("InputDataPinSelector").GetMax(), 3);
    EXPECT_EQ(parameters.as<GenApi::IInteger>("MediaWriterSelector").GetMax(), 2);
    EXPECT_EQ(pinNames().size(), 3u);

    // Without other limits too, clients have to read anew.
    *changes = 0;
    store->openChild("PinConfig2")->setSigned("TextFormatSelector", 9);
    node.loadSettings(store);
    EXPECT_GE(*changes, 1);
    EXPECT_THROW(parameters.get("TextFormat"), GenICam::RuntimeException);
}

TEST(DataWriterNodeMaps, AreOne)
{
    DataWriter node(nullptr);
    const std::vector<Core::NodeMapInfo> infos = node.getNodeMapInfos();
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_EQ(infos[0].GetName(), "Data Writer");
    EXPECT_EQ(infos[0].GetIdentifier(), "@Stagelet");
    EXPECT_FALSE(node.getNodeMap("@Other").IsValid());
}

}  // namespace
}  // namespace DataWriterTest
