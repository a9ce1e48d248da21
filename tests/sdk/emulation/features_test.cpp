// What the node maps show and what may be written: names, limits, sizes, locks. What the features do is looked at
// in the other tests of this folder.
#include <set>

#include "genicam/aravisjudge.h"
#include "sdk/emulation/world.h"

using namespace EmulationTest;
using GenICam::GenericException;
using GenICam::RuntimeException;

namespace {

std::vector<GenApi::NodeMapPtr> AllMaps(const INivexDevice& device)
{
    return {device.GetNodeMap(), device.GetTLNodeMap(), device.GetStreamGrabberNodeMap()};
}

std::set<std::string> FeaturesOf(GenApi::INodeMap& map)
{
    std::set<std::string> names;
    GenApi::NodeList_t nodes;
    map.GetNodes(nodes);
    for (const GenApi::INode* node : nodes)
        if (node->IsFeature()) names.insert(node->GetName().str());
    return names;
}

// Chunk data and event data are there once a frame or an event is; all else reads at once, whatever is selected.
TEST(Features, ReadAllAndExplainThemselves)
{
    const World world;
    for (const auto& map : AllMaps(*world.device)) {
        for (const std::string& name : FeaturesOf(*map)) {
            GenApi::INode* const node = map->GetNode(name);
            EXPECT_FALSE(node->GetToolTip().empty()) << name;
            const bool isFrameData = name.starts_with("Chunk") && name != "ChunkModeActive" &&
                                     name != "ChunkSelector" && name != "ChunkEnable" &&
                                     name != "ChunkGainSelector" && name != "ChunkDataControl";
            const bool isEventData = name.starts_with("Event") && node->GetAccessMode() == GenApi::NA;
            if (isFrameData || isEventData) {
                EXPECT_EQ(node->GetAccessMode(), GenApi::NA) << name;
                continue;
            }
            ASSERT_TRUE(GenApi::IsReadable(node)) << name;
            auto* const value = dynamic_cast<GenApi::IValue*>(node);
            EXPECT_NO_THROW(value->ToString()) << name;
        }
    }
    EXPECT_EQ(FeaturesOf(*world.device->CreateChunkNodeMap()),
              (std::set<std::string>{"ChunkDataControl", "ChunkTimestamp", "ChunkFrameID", "ChunkExposureTime",
                                     "ChunkGainSelector", "ChunkGain", "ChunkLineStatusAll", "ChunkWidth",
                                     "ChunkHeight", "ChunkOffsetX", "ChunkOffsetY", "ChunkPixelFormat"}));
}

// The descriptions and the memory behind them, as an independent runtime understands them.
TEST(Features, AreReadAlikeByAnIndependentReader)
{
    const World world({{"Width", "101"},
                       {"OffsetX", "50"},
                       {"PixelFormat", "BayerGB12p"},
                       {"ExposureTime", "123.4"},
                       {"DeviceUserID", "Left"},
                       {"Gain", "1.5"},
                       {"ChunkModeActive", "1"}});
    std::vector<GenApiTest::Exemption> differences = {
        {"*", "inc", "raised", "no increment of formulas; the schema's default is 1"},
        {"*", "min", "raised", "no limits of formulas; we give those of the type"},
        {"*", "max", "raised", "no limits of formulas; we give those of the type"}};
    GenApi::NodeList_t nodes;
    world.device->GetNodeMap()->GetNodes(nodes);
    for (GenApi::INode* node : nodes)
        if (node->GetAccessMode() == GenApi::NA && node->GetPrincipalInterfaceType() != GenApi::intfIPort)
            differences.push_back({node->GetName().str(), "access", "RO", "no frame or event came yet"});
    for (const auto& map : AllMaps(*world.device)) {
        auto& port = dynamic_cast<GenApi::IPort&>(*map->GetNode("Device"));
        const GenApiTest::AravisJudge judge(map->GetDescriptionText().str(), port);
        for (const std::string& line : judge.Compare(*map, differences))
            ADD_FAILURE() << line;
        differences.clear();  // only the camera's map has any
    }
}

TEST(Features, OfEachSelectorsEntryAreApart)
{
    const World world;
    struct Row
    {
        const char* selector;
        const char* selected;
        std::vector<std::string> entries;
        std::vector<std::string> values;
    };
    const Row rows[] = {
        {"GainSelector", "Gain", {"All", "Red", "Green", "Blue"}, {"1", "-2", "3", "4"}},
        {"ComponentSelector", "ComponentEnable", {"Intensity", "Range", "Confidence"}, {"0", "1", "1"}},
        {"ChunkSelector", "ChunkEnable", {"Timestamp", "Gain", "PixelFormat"}, {"0", "1", "0"}},
        {"EventSelector", "EventNotification", {"FrameStart", "Test", "ExposureEnd"}, {"On", "Off", "On"}},
    };
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.entries.size(); ++i)
            world.Apply({{row.selector, row.entries[i]}, {row.selected, row.values[i]}});
        for (std::size_t i = 0; i < row.entries.size(); ++i) {
            world.Apply({{row.selector, row.entries[i]}});
            EXPECT_EQ(world.Value(row.selected), row.values[i]) << row.selected << ' ' << row.entries[i];
        }
        GenApi::FeatureList_t selected;
        dynamic_cast<GenApi::ISelector&>(*world.device->GetNodeMap()->GetNode(row.selector))
            .GetSelectedFeatures(selected);
        EXPECT_FALSE(selected.empty()) << row.selector;
    }
    const std::pair<const char*, const char*> ids[] = {
        {"Intensity", "1"}, {"Range", "4"}, {"Confidence", "6"}, {"ProcessedIntensity", "65281"}};
    for (const auto& [component, id] : ids) {
        world.Apply({{"ComponentSelector", component}});
        EXPECT_EQ(world.Value("ComponentIDValue"), id);
    }
}

TEST(Features, OfGeometryLimitEachOther)
{
    const World world;
    const auto most = [&](const char* name) {
        return dynamic_cast<GenApi::IInteger&>(*world.device->GetNodeMap()->GetNode(name)).GetMax();
    };
    EXPECT_EQ(most("Width"), 4096);
    world.Apply({{"Width", "1000"}, {"Height", "999"}, {"OffsetX", "96"}, {"OffsetY", "1"}});
    EXPECT_EQ(most("Width"), 4000);
    EXPECT_EQ(most("Height"), 2999);
    EXPECT_EQ(most("OffsetX"), 3096);
    EXPECT_EQ(most("OffsetY"), 2001);
    EXPECT_THROW(world.Apply({{"OffsetX", "3097"}}), GenericException);
    EXPECT_THROW(world.Apply({{"Width", "0"}}), GenericException);

    world.Apply({{"Width", "4000"}, {"OffsetX", "96"}});
    world.Apply({{"BinningHorizontal", "2"}, {"BinningVertical", "3"}});
    EXPECT_EQ(world.Value("WidthMax"), "2048");
    EXPECT_EQ(world.Value("HeightMax"), "1000");
    EXPECT_EQ(world.Value("Width"), "2048") << "the camera made it fit";
    EXPECT_EQ(world.Value("OffsetX"), "0");
    EXPECT_EQ(world.Value("Height"), "999");
}

TEST(Features, TellTheSizeOfFrames)
{
    const World world({{"Width", "37"}, {"Height", "11"}});
    const auto expect = [&](std::size_t size, const std::string& what) {
        EXPECT_EQ(world.device->GetPayloadSize(), size) << what;
        EXPECT_EQ(world.Value("PayloadSize"), std::to_string(size)) << what;
        EXPECT_EQ(world.Statistic("PayloadSize"), std::to_string(size)) << what;
    };
    GenApi::StringList_t formats;
    dynamic_cast<GenApi::IEnumeration&>(*world.device->GetNodeMap()->GetNode("PixelFormat")).GetSymbolics(formats);
    EXPECT_GT(formats.size(), 50U);
    for (const auto& format : formats) {
        world.Apply({{"PixelFormat", format.str()}});
        expect(*ComputeImageSize(GetPixelTypeByName(format), 37, 11, 0), format.str());
    }
    world.Apply({{"PixelFormat", "Mono8"}, {"ComponentSelector", "Range"}, {"ComponentEnable", "1"}});
    expect(3 * 37 * 11, "with distances");
    world.Apply({{"ChunkModeActive", "1"}});
    expect(3 * 37 * 11 + 8 + 9 * 16 + 40, "with chunks");
    world.Apply({{"ChunkSelector", "Gain"}, {"ChunkEnable", "0"}});
    expect(3 * 37 * 11 + 8 + 9 * 16, "with one chunk less");
}

TEST(Features, ExposureAndRate)
{
    const World world;
    world.Apply({{"ExposureTime", "123.4"}});
    EXPECT_EQ(world.Value("ExposureTimeRaw"), "1234");
    auto& exposure = dynamic_cast<GenApi::IFloat&>(*world.device->GetNodeMap()->GetNode("ExposureTime"));
    EXPECT_DOUBLE_EQ(exposure.GetMin(), 1);
    EXPECT_DOUBLE_EQ(exposure.GetMax(), 1e7);
    world.Apply({{"ExposureTime", "50000"}, {"AcquisitionFrameRate", "100"}});
    EXPECT_EQ(world.Value("ResultingFrameRate"), "20");
    world.Apply({{"AcquisitionFrameRate", "10"}});
    EXPECT_EQ(world.Value("ResultingFrameRate"), "10");
    world.Apply(fast);
    EXPECT_EQ(world.device->GetNodeMap()->GetNode("ResultingFrameRate")->GetAccessMode(), GenApi::NA);
}

TEST(Features, ThatChangeTheFrameAreLockedWhileStreaming)
{
    Sink sink;
    World world;
    world.Start(sink);
    EXPECT_EQ(world.Value("TLParamsLocked"), "1");
    const char* locked[] = {"Width",           "Height",      "OffsetX",         "PixelFormat", "BinningVertical",
                            "ChunkModeActive", "ChunkEnable", "ComponentEnable", "ReverseX",    "UserSetLoad"};
    for (const char* name : locked)
        EXPECT_FALSE(GenApi::IsWritable(world.device->GetNodeMap()->GetNode(name))) << name;
    for (const char* name : {"ExposureTime", "Gain", "TestPattern", "FailedFramesEvery"})
        EXPECT_TRUE(GenApi::IsWritable(world.device->GetNodeMap()->GetNode(name))) << name;
    // Who goes round the lock in the description meets that of the camera.
    ExpectFailure<RuntimeException>([&] { world.Apply({{"WidthReg", "10"}}); }, "refuses to change Width while");
    world.device->StopStream();
    EXPECT_EQ(world.Value("TLParamsLocked"), "0");
    EXPECT_NO_THROW(world.Apply({{"Width", "10"}}));
}

TEST(Features, AreKeptOverClosingAndResetByTheDefaultSet)
{
    World world({{"Width", "100"}, {"DeviceUserID", "Left"}, {"FailedFramesEvery", "3"}});
    world.device->Close();
    EXPECT_EQ(world.device->GetNodeMap(), nullptr);
    world.device->Open(world.listener);
    EXPECT_EQ(world.Value("Width"), "100");
    EXPECT_EQ(world.backend.EnumerateDevices().at(0).GetUserDefinedName(), "Left");
    world.Execute("UserSetLoad");
    EXPECT_EQ(world.Value("Width"), "640") << "not from a cache either";
    EXPECT_EQ(world.Value("FailedFramesEvery"), "0");
    EXPECT_EQ(world.Value("DeviceUserID"), "Left");
    EXPECT_EQ(world.Value("DeviceSerialNumber"), "0815-0000");
}

TEST(Features, ReadTheClock)
{
    const World world;
    const auto latch = [&] {
        world.Execute("TimestampLatch");
        return Number(world.device->GetNodeMap(), "TimestampLatchValue");
    };
    const std::int64_t first = latch();
    EXPECT_GT(latch(), first);
    const auto before = std::chrono::steady_clock::now();
    world.Execute("TimestampReset");
    const std::int64_t sinceReset = latch();
    EXPECT_LE(std::chrono::nanoseconds(sinceReset), std::chrono::steady_clock::now() - before);
}

TEST(Features, RefuseWhatTheCameraCannotDo)
{
    const World world;
    struct Row
    {
        Settings settings;
        const char* text;
    };
    const Row refusals[] = {
        {{{"WidthReg", "5000"}}, "refuses 5000 for Width; allowed is 1 to 4096"},
        {{{"PixelFormatReg", "7"}}, "refuses 7 for PixelFormat; allowed is the value of an entry"},
        {{{"ReverseXReg", "2"}}, "refuses 2 for ReverseX; allowed is 0 or 1"},
        {{{"GainReg1", "100"}}, "refuses 100 for Gain; allowed is -24 to 24"},
        {{{"TriggerSoftware", "1"}}, "waits for no software trigger"},
        {{{"ImageSource", "Folder"}, {"ImageFolder", "/no/such"}, {"AcquisitionStart", "1"}}, "\"/no/such\""},
        {{{"ComponentEnable", "0"}, {"AcquisitionStart", "1"}}, "no component is enabled"},
    };
    for (const Row& row : refusals)
        ExpectFailure<GenericException>([&] { world.Apply(row.settings); }, row.text);
    GenApi::IPort& port = dynamic_cast<GenApi::IPort&>(*world.device->GetNodeMap()->GetNode("Device"));
    std::vector<std::byte> bytes(64);
    for (const std::int64_t address : {std::int64_t{0}, std::int64_t{-8}, INT64_MAX - 8, INT64_MIN}) {
        EXPECT_THROW(port.Read(bytes.data(), address, 8), RuntimeException) << address;
        EXPECT_THROW(port.Write(bytes.data(), address, 8), RuntimeException) << address;
    }
}

// Whatever is written to the registers themselves, past all limits of the features, frames come afterwards.
TEST(Features, SurviveHostileWrites)
{
    World world;
    GenApi::NodeList_t nodes;
    world.device->GetNodeMap()->GetNodes(nodes);
    const std::set<std::string> harmful = {"UnplugNowReg", "RegisterAccessDelayReg", "UnplugAfterFramesReg"};
    const char* values[] = {"-1",    "0",  "1", "3", "255", "65535", "4294967296", "-9223372036854775808",
                            "1e300", "nan"};
    int accepted = 0;
    for (GenApi::INode* node : nodes) {
        auto* const value = dynamic_cast<GenApi::IValue*>(node);
        if (!value || harmful.contains(node->GetName().str()) || !node->GetName().view().ends_with("Reg"))
            continue;
        for (const char* text : values) {
            try {
                value->FromString(text, false);
                ++accepted;
            } catch (const GenericException&) {
            }
        }
    }
    EXPECT_GT(accepted, 100);
    world.Apply({{"TLParamsLocked", "0"},
                 {"ImageSource", "TestPattern"},
                 {"ComponentSelector", "Intensity"},
                 {"ComponentEnable", "1"},
                 {"TriggerMode", "Off"},
                 {"LostFramesEvery", "0"},
                 {"AcquisitionFrameRateEnable", "0"},
                 {"AcquisitionMode", "Continuous"}});
    EXPECT_EQ(world.Take(2).size(), 2U);
}

}  // namespace
