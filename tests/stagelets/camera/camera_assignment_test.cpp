// Which camera a node takes.
#include "camera/deviceassignment.h"
#include "cameranodetest.h"
#include "core/ideviceresource.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using Bag = std::map<std::string, std::string>;

Core::ResourceInfo infoOf(const Bag& properties)
{
    Nivex::CDeviceInfo info;
    for (const auto& [key, value] : properties)
        info.SetPropertyValue(gcstring(key), gcstring(value));
    return Core::ResourceInfo(info);
}

struct FakeResource : Core::IDeviceResource
{
    bool isFree() override { return isFreeNow; }
    std::unique_ptr<Nivex::INivexDevice> getDevice() override
    {
        if (!gives) return nullptr;
        // Any device will do: what is reserved is looked at, nothing of it used.
        Nivex::CEmulatedCameraBackend backend(1);
        return backend.CreateDevice(backend.EnumerateDevices().front());
    }
    bool isFreeNow = true;
    bool gives = true;
};

enum class Answer
{
    Nothing,
    Busy,
    Gone,
    Free
};

/// Answers as the test says, one answer per query, and writes down what it was asked.
class FakePool : public Runtime::ResourcePool
{
public:
    explicit FakePool(std::vector<Answer> answers) : answers_(std::move(answers)) {}

    std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> query(const Utils::TypeInfo& type,
                                                                         const Core::ResourceInfo& wanted) override
    {
        EXPECT_EQ(type, Utils::TypeInfo::get<Core::IDeviceResource>());
        asked += "q";
        lastWanted = wanted.getInfo();
        const Answer answer = answers_.at(std::min(queries_++, answers_.size() - 1));
        if (answer == Answer::Nothing) return {};
        std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> found;
        const auto resource = std::make_shared<FakeResource>();
        resource->isFreeNow = answer != Answer::Busy;
        resource->gives = answer != Answer::Gone;
        found[infoOf({{"FullName", "1"}})] = nullptr;
        found[infoOf({{"FullName", "2"}})] = resource;
        return found;
    }
    void refresh(const Utils::TypeInfo&) override { asked += "r"; }

    std::string asked;
    Nivex::CInfoBase lastWanted;

private:
    std::vector<Answer> answers_;
    std::size_t queries_ = 0;
};

using CameraAssignment = CameraNodeTest;

TEST_F(CameraAssignment, LooksAnewOnceBeforeItGivesUp)
{
    const char* const none = "No suitable camera found to allocate.";
    const char* const busy = "No unused camera found to allocate.";
    const char* const gone = "Could not get camera device to allocate.";
    struct Row
    {
        std::vector<Answer> answers;
        bool mayRefresh;
        const char* asked;
        const char* text;  ///< Null: a camera was reserved.
    };
    const Row rows[] = {
        {{Answer::Free}, true, "q", nullptr},
        {{Answer::Nothing}, false, "q", none},
        {{Answer::Busy}, false, "q", busy},
        {{Answer::Gone}, false, "q", gone},
        {{Answer::Nothing}, true, "qrq", none},
        {{Answer::Busy}, true, "qrq", busy},
        {{Answer::Gone}, true, "qrq", gone},
        {{Answer::Nothing, Answer::Free}, true, "qrq", nullptr},
        {{Answer::Busy, Answer::Free}, true, "qrq", nullptr},
        {{Answer::Gone, Answer::Free}, true, "qrq", nullptr},
        {{Answer::Gone, Answer::Nothing}, true, "qrq", none},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.asked) + ": " + (row.text ? row.text : "reserved"));
        log.clear();
        FakePool fake(row.answers);
        const DeviceAssignment assignment(this);
        std::unique_ptr<Nivex::INivexDevice> device;
        const std::string text =
            refusal<GenICam::RuntimeException>([&] { device = assignment.reserve(fake, row.mayRefresh); });
        EXPECT_EQ(text, row.text ? row.text : "no exception");
        EXPECT_EQ(device != nullptr, row.text == nullptr);
        EXPECT_EQ(fake.asked, row.asked);
        EXPECT_EQ(log.lines().size(), row.text ? 1U : 0U);
        if (row.text) {
            EXPECT_THAT(
                log.lines().at(0).message,
                HasSubstr(std::string("allocateAdditionalResources failed. Message: \"") + row.text + "\""));
        }
    }
}

TEST_F(CameraAssignment, AsksForCompletePropertiesOnly)
{
    FakePool fake({Answer::Nothing});
    DeviceAssignment assignment(this);
    assignment.properties().assign(
        {{"SerialNumber", "7"}, {"", "x"}, {"IpAddress", ""}, {"Odd", notYetConfigured}, {"DeviceClass", "C"}});
    EXPECT_THROW(assignment.reserve(fake, true), GenICam::RuntimeException);
    EXPECT_EQ(fake.lastWanted, infoOf({{"SerialNumber", "7"}, {"DeviceClass", "C"}}).getInfo());
    EXPECT_THAT(log.lines().at(0).message,
                HasSubstr("A camera was wanted that has DeviceClass = \"C\", SerialNumber = \"7\"."));
}

TEST_F(CameraAssignment, KnowsACameraByWhatStays)
{
    const Bag camera = {{"_PortableIpConfigCurrent", "4"},
                        {"IpAddress", "1"},
                        {"ModelName", ""},
                        {"UserDefinedName", "n"},
                        {"Odd", "x"}};
    DeviceProperties properties = {{"an old", "row"}};
    getAssignmentProperties(infoOf(camera), properties);
    const DeviceProperties expected = {
        {"UserDefinedName", "n"}, {"IpAddress", "1"}, {"_PortableIpConfigCurrent", "4"}};
    EXPECT_EQ(properties, expected);
}

TEST_F(CameraAssignment, ListKeepsItsSelectionWhenItIsRenewed)
{
    struct ListPool : Runtime::ResourcePool
    {
        std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> query(const Utils::TypeInfo&,
                                                                             const Core::ResourceInfo&) override
        {
            std::map<Core::ResourceInfo, std::shared_ptr<Core::IResource>> found;
            for (const char* name : names)
                found[infoOf({{"ModelName", name}})] = std::make_shared<FakeResource>();
            return found;
        }
        std::vector<const char*> names;
    };
    const auto list = std::make_shared<ListPool>();
    DeviceAssignment assignment(this);
    EXPECT_EQ(assignment.getShown("ModelName"), "No device listed");
    assignment.updateDevices(nullptr);
    EXPECT_EQ(logged(GenICam::formatText(
                  "Camera %p: Failed to update resources because there is no resource pool available.",
                  static_cast<const void*>(this))),
              1U);

    struct Row
    {
        std::vector<const char*> names;
        const char* shown;
        std::size_t index;
    };
    list->names = {"b", "c"};
    assignment.updateDevices(list);
    assignment.selectDevice(1);
    for (const Row& row : {Row{{"a", "b", "c"}, "c", 2}, Row{{"b"}, "b", 0}, Row{{}, "No device listed", 0}}) {
        list->names = row.names;
        assignment.updateDevices(list);
        EXPECT_EQ(assignment.getShown("ModelName"), row.shown);
        EXPECT_EQ(assignment.getSelectedDevice(), row.index);
    }
}

TEST_F(CameraAssignment, ChoosesListedCamerasAndFindsThemAgain)
{
    const auto two = std::make_shared<Nivex::CEmulatedCameraBackend>(2);
    const auto twoPool = std::make_shared<Runtime::ResourcePool>(2, Runtime::ResourcePool::CameraBackends{two});
    Camera node(twoPool);
    EXPECT_EQ(get(node, "@Stagelet", "DeviceModelName"), "No device listed");
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.executeDeviceChoose(); }),
              "There is no camera to choose. Execute Device List Update while one is connected.");
    set(node, "@Stagelet", "DeviceListUpdate", "1");
    set(node, "@Stagelet", "DeviceSelector", "1");
    EXPECT_EQ(get(node, "@Stagelet", "DeviceSerialNumber"), "0815-0001");
    EXPECT_THROW(set(node, "@Stagelet", "DeviceSelector", "2"), GenICam::OutOfRangeException);
    set(node, "@Stagelet", "DeviceChoose", "1");
    EXPECT_THAT(node.getActiveAssignmentProperties(),
                ElementsAre(std::pair<gcstring, gcstring>("DeviceClass", "Emulated"),
                            std::pair<gcstring, gcstring>("SerialNumber", "0815-0001"),
                            std::pair<gcstring, gcstring>("ModelName", "Emulated Camera")));

    node.allocateResources();
    EXPECT_EQ(node.getCameraDeviceData().GetSerialNumber(), "0815-0001");
    node.allocateResources();  // which changes nothing
    Camera other(twoPool);
    other.allocateResources();
    EXPECT_EQ(other.getCameraDeviceData().GetSerialNumber(), "0815-0000");

    Camera third(twoPool);
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { third.allocateResources(); }),
              "No unused camera found to allocate.");
    EXPECT_EQ(loggedRefusals(third, "allocateAdditionalResources", "No unused camera found to allocate."), 1U);
    third.executeDevicePropertyAdd();
    third.setDevicePropertyKey("SerialNumber");
    third.setDevicePropertyValue("4711");
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { third.allocateResources(); }),
              "No suitable camera found to allocate.");
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { third.start({}); }), "No camera is allocated.");

    // What another node finds is there for all; who selected a camera keeps it.
    EXPECT_EQ(get(node, "@Stagelet", "DeviceSelector"), "1");
    two->Unplug(firstSerial);
    third.executeDeviceListUpdate();
    EXPECT_EQ(get(node, "@Stagelet", "DeviceSelector"), "0");
    EXPECT_EQ(get(node, "@Stagelet", "DeviceSerialNumber"), "0815-0001");
    two->Plug(firstSerial);

    other.freeResources();
    third.executeDevicePropertyRemove();
    third.allocateResources();
    EXPECT_EQ(third.getCameraDeviceData().GetSerialNumber(), "0815-0000");
}

TEST_F(CameraAssignment, ShowsTheCameraItHolds)
{
    const Texts own = {"@Stagelet=Camera", "@CameraInstance=Camera Instance"};
    Camera node(pool);
    int changes = 0;
    const Utils::ScopedConnection connection(node.getNodeMapsChangedSignal().connect([&] { ++changes; }));
    EXPECT_EQ(maps(node), own);
    EXPECT_EQ(get(node, "@Stagelet", "SelectedDeviceModelName"), "No device listed");
    EXPECT_FALSE(map(node, "@CameraDevice").IsValid());

    node.allocateResources();
    EXPECT_THAT(maps(node), ElementsAre(own[0], own[1], "@DeviceTransportLayer=Device Transport Layer",
                                        "@CameraDevice=Camera", "@StreamGrabber0=Stream Parameters"));
    EXPECT_EQ(get(node, "@Stagelet", "SelectedDeviceModelName"), "Emulated Camera");
    EXPECT_EQ(get(node, "@Stagelet", "SelectedDeviceSerialNumber"), firstSerial);
    EXPECT_EQ(logged(GenICam::formatText("Camera %p: Using camera \"Emulated Camera (0815-0000)\"",
                                         static_cast<const void*>(&node))),
              1U);
    const GenApi::CNodeMapRef kept = map(node, "@CameraDevice");

    node.freeResources();
    EXPECT_EQ(maps(node), own);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(get(node, "@Stagelet", "SelectedDeviceModelName"), "No device listed");
    EXPECT_TRUE(node.getCameraDeviceData().GetFullName().empty());
    EXPECT_FALSE(Nivex::CIntegerParameter(kept.GetNodeMap(), "Width").IsReadable());
    EXPECT_TRUE(cameras->IsDeviceAccessible(cameras->EnumerateDevices().front()));
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test
