// The parameters, pins and settings of a camera node.
#include <cstring>
#include <future>
#include <set>

#include "cameranodetest.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using CameraParametersTest = CameraNodeTest;

Texts namesOf(const GenApi::FeatureList_t& features)
{
    Texts names;
    for (GenApi::IValue* feature : features)
        names.push_back(dynamic_cast<GenApi::INode&>(*feature).GetName().str());
    return names;
}

TEST_F(CameraParametersTest, StandInTheirCategories)
{
    struct Row
    {
        const char* category;
        Texts members;
        std::set<std::string> readOnly = {};
    };
    const Row rows[] = {
        {"AcquisitionControl", {"AcquisitionMode", "FixCorruptImages"}},
        {"DeviceEnumerationControl",
         {"DeviceListUpdate", "DeviceSelector", "DeviceModelName", "DeviceVendorName", "DeviceSerialNumber",
          "DeviceUserDefinedName", "DeviceChoose", "DevicePropertySelector", "DevicePropertyKey",
          "DevicePropertyValue", "DevicePropertyAdd", "DevicePropertyRemove"},
         {"DeviceModelName", "DeviceVendorName", "DeviceSerialNumber", "DeviceUserDefinedName"}},
        {"SelectedDeviceInformation",
         {"SelectedDeviceModelName", "SelectedDeviceSerialNumber", "SelectedDeviceVendorName",
          "SelectedDeviceUserDefinedName"}},
        {"EventOutputControl", {"EventPinSelector", "EventPinConfiguration", "EventPinAdd", "EventPinRemove"}},
        {"ChunkOutputControl", {"ChunkPinSelector", "ChunkPinConfiguration", "ChunkPinAdd", "ChunkPinRemove"}},
        {"ConfigurationSetPersistence",
         {"ConfigurationSetSelector", "ConfigurationSetFetch", "ConfigurationSetStaged", "ConfigurationSetCommit",
          "ConfigurationSetActive", "ConfigurationSetClear"},
         {"ConfigurationSetActive"}},
    };
    Camera node(pool);
    const GenApi::CNodeMapRef nodeMap = map(node);
    GenApi::FeatureList_t features;
    dynamic_cast<GenApi::ICategory&>(*nodeMap.GetNode("Root")).GetFeatures(features);
    Texts categories;
    for (const Row& row : rows)
        categories.push_back(row.category);
    EXPECT_EQ(namesOf(features), categories);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.category);
        features.clear();
        dynamic_cast<GenApi::ICategory&>(*nodeMap.GetNode(row.category)).GetFeatures(features);
        EXPECT_EQ(namesOf(features), row.members);
        for (GenApi::IValue* feature : features) {
            GenApi::INode& described = dynamic_cast<GenApi::INode&>(*feature);
            SCOPED_TRACE(described.GetName().str());
            EXPECT_FALSE(described.GetDisplayName().empty());
            EXPECT_FALSE(described.GetToolTip().empty());
            EXPECT_GE(described.GetDescription().size() + 1, described.GetToolTip().size());
            const bool isOfSelected = std::string(row.category) == "SelectedDeviceInformation";
            EXPECT_EQ(described.GetVisibility(), isOfSelected ? GenApi::Beginner : GenApi::Expert);
            EXPECT_EQ(GenApi::IsWritable(&described),
                      row.readOnly.count(described.GetName().str()) == 0 && !isOfSelected);
        }
    }
    EXPECT_EQ(dynamic_cast<GenApi::IInteger&>(*nodeMap.GetNode("DeviceSelector")).GetRepresentation(),
              GenApi::Linear);
    EXPECT_THAT(nodeMap.GetNode("FixCorruptImages")->GetDescription().str(), HasSubstr("at the ouptput by"));
}

TEST_F(CameraParametersTest, SelectorsFollowTheirLists)
{
    struct Row
    {
        const char* selector;
        const char* value;
        const char* add;
        const char* remove;
        const char* text;
    };
    const Row rows[] = {
        {"DevicePropertySelector", "DevicePropertyKey", "DevicePropertyAdd", "DevicePropertyRemove", "Key"},
        {"DevicePropertySelector", "DevicePropertyValue", "DevicePropertyAdd", "DevicePropertyRemove", "Value"},
        {"EventPinSelector", "EventPinConfiguration", "EventPinAdd", "EventPinRemove",
         "E.Type=Integer.EventName=E.ValueName=V"},
        {"ChunkPinSelector", "ChunkPinConfiguration", "ChunkPinAdd", "ChunkPinRemove", "C.Type=Float.ValueName=V"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value);
        Camera node(pool);
        int notified = 0;
        const Utils::ScopedConnection connection(node.getSettingsChangedSignal().connect([&] { ++notified; }));
        const auto selector = [&] {
            auto& integer = dynamic_cast<GenApi::IInteger&>(*map(node).GetNode(row.selector));
            return GenICam::formatText("%d of %d", static_cast<int>(integer.GetValue()),
                                       static_cast<int>(integer.GetMax()));
        };
        EXPECT_THAT(refusal<GenICam::RuntimeException>([&] { set(node, "@Stagelet", row.value, row.text); }),
                    HasSubstr("Execute "));
        set(node, "@Stagelet", row.remove, "1");  // of nothing
        EXPECT_EQ(notified, 0);
        set(node, "@Stagelet", row.add, "1");
        set(node, "@Stagelet", row.value, row.text);
        set(node, "@Stagelet", row.value, row.text);  // no change
        set(node, "@Stagelet", row.add, "1");
        EXPECT_EQ(notified, 3);
        EXPECT_EQ(selector(), "1 of 1");
        EXPECT_EQ(get(node, "@Stagelet", row.value), "");
        set(node, "@Stagelet", row.selector, "0");
        EXPECT_EQ(get(node, "@Stagelet", row.value), row.text);
        EXPECT_THROW(set(node, "@Stagelet", row.selector, "2"), GenICam::OutOfRangeException);
        set(node, "@Stagelet", row.remove, "1");
        EXPECT_EQ(selector(), "0 of 0");
        EXPECT_EQ(get(node, "@Stagelet", row.value), "");
        EXPECT_EQ(notified, 5);
    }
}

// Who hears of a change may use the node from any thread.
TEST_F(CameraParametersTest, TellsOfChangesWithoutItsLock)
{
    Texts told;
    std::shared_ptr<Nivex::DataProcessing::Threading::IRecursiveLockable> lock;
    const auto tell = [&](const char* what) {
        const bool isFree = std::async(std::launch::async, [&lock] {
                                const bool taken = lock->tryLock();
                                if (taken) lock->unlock();
                                return taken;
                            }).get();
        told.push_back(std::string(what) + (isFree ? "" : " under the lock"));
    };
    Camera node(pool);
    lock = node.getLock();
    const Utils::ScopedConnection settings(node.getSettingsChangedSignal().connect([&] { tell("settings"); }));
    const Utils::ScopedConnection outputsChanged(node.getOutputsChangedSignal().connect([&] { tell("outputs"); }));
    const Utils::ScopedConnection mapsChanged(node.getNodeMapsChangedSignal().connect([&] { tell("maps"); }));
    const Utils::ScopedConnection errorChanged(node.getErrorChangedSignal().connect([&] { tell("error"); }));
    for (const char* name : {"FixCorruptImages", "SelectedDeviceModelName", "ChunkPinSelector", "DeviceSelector"})
    {
        map(node).GetNode(name)->RegisterCallback([&tell, name](GenApi::INode*) { tell(name); });
    }
    node.setFixCorruptImages(FixCorruptImages::On);
    node.setFixCorruptImages(FixCorruptImages::On);
    node.setDeviceSelector(node.getDeviceSelector());
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("outputs", "FixCorruptImages", "settings"));
    node.executeChunkPinAdd();
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("ChunkPinSelector", "settings"));
    node.allocateResources();
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("SelectedDeviceModelName", "maps"));
    cameras->Unplug(firstSerial);
    await([&] { return node.getCameraDeviceData().GetFullName().empty(); });
    EXPECT_THAT(told, ElementsAre("error", "SelectedDeviceModelName", "SelectedDeviceModelName", "maps"));
}

TEST_F(CameraParametersTest, ConfigurationsMakePins)
{
    struct Row
    {
        const char* name;
        Texts events;
        Texts chunks;
        FixCorruptImages fix;
        Texts pins;
        Texts logged;
    };
    const auto off = FixCorruptImages::Off;
    const Row rows[] = {
        {"none", {}, {}, off, {"Image"}, {}},
        {"fix", {}, {}, FixCorruptImages::On, {"Image", "ImageCorrupt"}, {}},
        {"all kinds",
         {"E.Type=Integer.EventName=X.ValueName=Y"},
         {"C.Type=Float.ValueName=Z", "B.Type=String.ValueName=Z"},
         off,
         {"Image", "E:Integer", "B:String", "C:Float"},
         {"Camera: Add camera event output: E of type Integer",
          "Camera: Add camera chunk data output: B of type String",
          "Camera: Add camera chunk data output: C of type Float"}},
        {"a chunk over two lines with two values",
         {},
         {"C.Type=Integer.ValueName=U", " .ValueName=V"},
         off,
         {"Image", "C:Array<Integer>"},
         {"Camera: Add camera chunk data output: C of type Integer"}},
        {"blank lines", {"", " "}, {""}, off, {"Image"}, {}},
        {"errors cost their own event pin, and the chunk pins behind",
         {"E.Type=Integer.ValueName=Y", "A.Type=Float.EventName=X.ValueName=Y B.Type=Float",
          "F.Type=Float.EventName=X.ValueName=Y"},
         {"C.Type=Float.ValueName=Z", "C Type=Float", "D.Type=Float"},
         off,
         {"Image", "F:Float", "C:Float"},
         {"Camera: Incomplete event configuration found", "Camera: Wrong number of event configurations found:2",
          "Camera: (1,3): Error : Unexpected content. Expected dot.",
          "Camera: Add camera event output: F of type Float",
          "Camera: Add camera chunk data output: C of type Float"}},
        {"names that are taken",
         {"C.Type=Integer.EventName=X.ValueName=Y", "E.Type=Integer.EventName=X.ValueName=Y",
          "E.Type=Float.EventName=X.ValueName=Z", "Image.Type=Float.EventName=X.ValueName=Z"},
         {"C.Type=Float.ValueName=Z", "ImageCorrupt.Type=Boolean.ValueName=Z"},
         off,
         {"Image", "E:Integer", "C:Float"},
         {"Camera: Duplicate name 'C' as pin.", "Camera: Duplicate name 'E' as pin.",
          "Camera: Duplicate name 'Image' as pin.", "Camera: Duplicate name 'ImageCorrupt' as pin.",
          "Camera: Add camera event output: C of type Integer",
          "Camera: Add camera event output: E of type Integer",
          "Camera: Add camera chunk data output: C of type Float"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Camera node(pool);
        const auto settings = std::make_shared<Runtime::JsonSettings>();
        for (std::size_t i = 0; i < row.events.size(); ++i)
            settings->setString(Core::SettingsPath("EventConfiguration").addElement(i), gcstring(row.events[i]));
        for (std::size_t i = 0; i < row.chunks.size(); ++i)
            settings->setString(Core::SettingsPath("ChunkPinConfigurations").addElement(i),
                                gcstring(row.chunks[i]));
        log.clear();
        node.loadSettings(settings);
        node.setFixCorruptImages(row.fix);
        Texts pins;
        for (const Core::OutputDescriptor& output : node.getOutputDescriptors()) {
            std::string type = output.getType().getName().str();
            for (const char* part : {"Nivex::DataProcessing::Core::", "Nivex::DataProcessing::Utils::"}) {
                for (auto at = type.find(part); at != std::string::npos; at = type.find(part))
                    type.erase(at, std::strlen(part));
            }
            const std::string name = output.getName().str();
            pins.push_back(name.rfind("Image", 0) == 0 ? name : name + ":" + type);
        }
        EXPECT_THAT(pins, testing::UnorderedElementsAreArray(row.pins));
        const Texts lines = log.messages(cameraChannelName);
        EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()),
                  std::set<std::string>(row.logged.begin(), row.logged.end()));
    }
}

TEST_F(CameraParametersTest, ChangesOfPinsLeaveOthersConnected)
{
    Camera node(pool);
    node.executeChunkPinAdd();
    node.setChunkPinConfiguration("C.Type=Float.ValueName=V");
    const auto attach = [&](const char* pin) {
        struct Sink : Core::IOutputSink
        {
            void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant&) override {}
        };
        return node.attachOutputSink(pin, std::make_shared<Sink>());
    };
    const auto image = attach("Image");
    const auto chunk = attach("C");
    node.setFixCorruptImages(FixCorruptImages::On);
    node.executeEventPinAdd();
    node.setEventPinConfiguration("E.Type=Float.EventName=X.ValueName=V");
    EXPECT_TRUE(node.isOutputSinkAttached(image));
    EXPECT_TRUE(node.isOutputSinkAttached(chunk));
    EXPECT_THROW(node.setChunkPinConfiguration("C.Type=Float.ValueName=V.ValueName=V"), std::runtime_error);
    EXPECT_EQ(node.getChunkPinConfiguration(), "C.Type=Float.ValueName=V");
    EXPECT_TRUE(node.isOutputSinkAttached(chunk));
    node.setChunkPinConfiguration("C.Type=Integer.ValueName=V");
    EXPECT_TRUE(node.isOutputSinkAttached(image));
    EXPECT_FALSE(node.isOutputSinkAttached(chunk));
    // An event pin that waited for the name is another pin, though of the same type.
    node.setEventPinConfiguration("C.Type=Integer.EventName=X.ValueName=V");
    node.executeChunkPinRemove();
    EXPECT_EQ(node.getOutputDescriptors().back().getDisplayName(), "A camera event.");
}

TEST_F(CameraParametersTest, ChoiceAndPinsCannotChangeWhileItRuns)
{
    Camera node(pool);
    node.executeDeviceListUpdate();
    node.executeEventPinAdd();
    node.allocateResources();
    const Texts fixed = {
        "DeviceListUpdate",  "DeviceSelector",        "DeviceChoose",      "DevicePropertySelector",
        "DevicePropertyKey", "DevicePropertyValue",   "DevicePropertyAdd", "DevicePropertyRemove",
        "EventPinSelector",  "EventPinConfiguration", "EventPinAdd",       "EventPinRemove",
        "ChunkPinSelector",  "ChunkPinConfiguration", "ChunkPinAdd",       "ChunkPinRemove"};
    const auto countAvailable = [&] {
        return std::count_if(fixed.begin(), fixed.end(), [&](const std::string& name) {
            return GenApi::IsAvailable(map(node).GetNode(gcstring(name)));
        });
    };
    EXPECT_EQ(countAvailable(), 16);
    node.start({});
    EXPECT_EQ(countAvailable(), 0);
    EXPECT_TRUE(GenApi::IsWritable(map(node).GetNode("AcquisitionMode")));
    const auto refused = [](const auto& call) {
        return refusal<GenICam::RuntimeException>(call).find("must not be running") != std::string::npos;
    };
    EXPECT_TRUE(refused([&] { node.executeChunkPinAdd(); }));
    EXPECT_TRUE(refused([&] { node.setEventPinConfiguration("E.Type=Float.EventName=X.ValueName=V"); }));
    EXPECT_TRUE(refused([&] { node.executeDeviceChoose(); }));
    EXPECT_TRUE(refused([&] { node.executeDeviceListUpdate(); }));
    const auto settings = std::make_shared<Runtime::JsonSettings>();
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.saveSettings(settings); }),
              "Stagelet must not be running to save.");
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.loadSettings(settings); }),
              "Stagelet must not be running to load.");
    EXPECT_EQ(settings->toText(), Runtime::JsonSettings().toText());
    EXPECT_EQ(refusal<GenICam::InvalidArgumentException>([&] { node.saveSettings(nullptr); }),
              "No settings passed.");
    node.stop();
    EXPECT_EQ(countAvailable(), 16);
    EXPECT_EQ(loggedRefusals(node, "saveSettings", "Stagelet must not be running to save."), 1U);
    EXPECT_EQ(loggedRefusals(node, "loadSettings", "Stagelet must not be running to load."), 1U);
    EXPECT_EQ(refusal<GenICam::InvalidArgumentException>([&] { node.loadSettings(nullptr); }),
              "No settings passed.");
}

TEST_F(CameraParametersTest, SettingsComeBack)
{
    const std::string saved = R"({
    "DeviceProperties": [
        {
            "Key": "SerialNumber",
            "Value": "0815-0001"
        },
        {
            "Key": "",
            "Value": ""
        }
    ],
    "EventConfiguration": [
        "E.Type=Integer.EventName=X.ValueName=Y",
        ""
    ],
    "ChunkPinConfigurations": [
        "C.Type=Float.ValueName=Z"
    ],
    "AcquisitionMode": "SingleFrame",
    "FixCorruptImages": "On",
    "FeatureStreams": {
        "@CameraDevice": "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nGain\t3",
        "@CameraInstance": "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nMaxNumBuffer\t7"
    }
})";
    Camera node(pool);
    node.loadSettings(std::make_shared<Runtime::JsonSettings>(Runtime::parseJson(saved).root));
    node.executeDevicePropertyAdd();
    node.setDevicePropertyKey("IpAddress");
    node.setDevicePropertyValue("<not yet configured>");
    EXPECT_EQ(node.getAcquisitionMode(), AcquisitionMode::SingleFrame);
    EXPECT_THAT(outputs(node), testing::UnorderedElementsAre("Image", "ImageCorrupt", "E", "C"));
    EXPECT_EQ(get(node, "@Stagelet", "ConfigurationSetActive"),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nGain\t3");
    const auto settings = std::make_shared<Runtime::JsonSettings>();
    node.saveSettings(settings);
    EXPECT_EQ(settings->toText(), Runtime::formatJson(*Runtime::parseJson(saved).root));

    // What a fresh node saves empties another; what is not there leaves it alone; what is wrong is refused by
    // name.
    node.loadSettings(std::make_shared<Runtime::JsonSettings>());
    EXPECT_EQ(outputs(node).size(), 4U);
    const auto fresh = std::make_shared<Runtime::JsonSettings>();
    Camera(pool).saveSettings(fresh);
    for (const char* list : {"DeviceProperties", "EventConfiguration", "ChunkPinConfigurations"})
        EXPECT_THAT(fresh->toText(), HasSubstr(std::string("\"") + list + "\": []"));
    node.loadSettings(fresh);
    EXPECT_THAT(outputs(node), ElementsAre("Image"));
    EXPECT_TRUE(node.getActiveAssignmentProperties().empty());
    EXPECT_EQ(get(node, "@Stagelet", "ConfigurationSetActive"), "");
    EXPECT_EQ(node.getAcquisitionMode(), AcquisitionMode::Continuous);
    node.executeDevicePropertyAdd();
    const char* const older = R"({"DeviceProperties": {}})";  // has its empty lists so
    node.loadSettings(std::make_shared<Runtime::JsonSettings>(Runtime::parseJson(older).root));
    EXPECT_TRUE(node.getActiveAssignmentProperties().empty());
    const auto wrong = std::make_shared<Runtime::JsonSettings>();
    wrong->setString("FixCorruptImages", "on");
    EXPECT_EQ(refusal<GenICam::InvalidArgumentException>([&] { node.loadSettings(wrong); }),
              "FixCorruptImages is \"on\", but must be one of \"On\", \"Off\".");
    wrong->setString("FeatureStreams", "Gain = 3");
    EXPECT_THAT(refusal<GenICam::RuntimeException>([&] { node.loadSettings(wrong); }),
                HasSubstr("\"FeatureStreams\""));
}

TEST_F(CameraParametersTest, NeedsAPool)
{
    EXPECT_EQ(refusal<GenICam::InvalidArgumentException>([] { Camera node(nullptr); }),
              "Resource pool must not be nullptr. ");
    EXPECT_THAT(log.messages(cameraChannelName).at(0),
                HasSubstr(": Camera failed. Message: \"Resource pool must not be nullptr. \" (camera/camera:"));
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test
