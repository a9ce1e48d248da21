// Configuration sets, and cameras that are pulled out at every moment.
#include <atomic>
#include <thread>

#include "base/instantcamera.h"

#include "cameranodetest.h"
#include "fakecamera.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

constexpr const char* header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";
constexpr const char* disconnected = "Stagelet has stopped working because the camera has been disconnected.";

class CameraLife : public CameraNodeTest
{
protected:
    static bool isHeld(Camera& node) { return !node.getCameraDeviceData().GetFullName().empty(); }
    /// Pulls the cable and waits until the node has dealt with it.
    void unplug(Camera& node)
    {
        cameras->Unplug(firstSerial);
        await([&] { return !isHeld(node); });
    }
    static void setActive(Camera& node, const std::string& text)
    {
        node.setCfgSetStagedContent(gcstring(text));
        node.executeCfgSetCommit();
    }
};

TEST_F(CameraLife, ConfigurationSetsGoFromCameraToRecipeAndBack)
{
    Camera node(pool);
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.executeCfgSetFetch(); }),
              "There is no node map \"@CameraDevice\" now: no camera has been allocated.");
    node.allocateResources();
    set(node, "@CameraDevice", "Gain", "3");
    node.executeCfgSetFetch();
    EXPECT_THAT(node.getCfgSetStagedContent().str(),
                testing::AllOf(testing::StartsWith(header), HasSubstr("\nGain\t3")));
    EXPECT_EQ(get(node, "@Stagelet", "ConfigurationSetActive"), "");
    set(node, "@Stagelet", "ConfigurationSetStaged", "Gain = 5");
    set(node, "@Stagelet", "ConfigurationSetCommit", "1");
    EXPECT_EQ(get(node, "@CameraDevice", "Gain"), "5");
    EXPECT_EQ(get(node, "@Stagelet", "ConfigurationSetActive"), std::string(header) + "Gain\t5");

    // What the camera or the format refuses changes nothing.
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.setCfgSetStagedContent("!!"); }),
              "The provided configuration set could not be committed because it is invalid.");
    for (const char* refused : {"NoSuchFeature = 1", "Gain = 99999", "Gain = x"}) {
        EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { setActive(node, refused); }),
                  "Failed to load camera feature stream from active configuration set.");
        EXPECT_EQ(get(node, "@Stagelet", "ConfigurationSetActive"), std::string(header) + "Gain\t5");
    }
    set(node, "@Stagelet", "ConfigurationSetSelector", "CameraInstance");
    EXPECT_EQ(get(node, "@Stagelet", "ConfigurationSetActive"), "");
    setActive(node, "MaxNumBuffer = 4");

    // Each allocation applies the active sets, until they are cleared.
    for (const bool isCleared : {false, true}) {
        set(node, "@CameraDevice", "Gain", "1");
        set(node, "@CameraInstance", "MaxNumBuffer", "9");
        node.freeResources();
        if (isCleared) {
            node.executeCfgSetClear();
            node.setStreamType(StreamType::CameraDevice);
            node.executeCfgSetClear();
            EXPECT_EQ(node.getCfgSetStagedContent(), "");
        }
        node.allocateResources();
        EXPECT_EQ(get(node, "@CameraDevice", "Gain"), isCleared ? "1" : "5");
        EXPECT_EQ(get(node, "@CameraInstance", "MaxNumBuffer"), isCleared ? "9" : "4");
    }
}

TEST_F(CameraLife, ABadConfigurationSetLeavesTheCameraToOthers)
{
    Camera node(pool);
    for (const char* bad : {"NoSuchFeature = 1", "Gain = 99999"}) {
        setActive(node, bad);
        const char* const text = "Failed to load feature streams from active configuration set.";
        log.clear();
        EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.allocateResources(); }), text);
        EXPECT_EQ(loggedRefusals(node, "allocateAdditionalResources", text), 1U);
        EXPECT_EQ(maps(node).size(), 2U);
        EXPECT_EQ(get(node, "@Stagelet", "SelectedDeviceModelName"), "No device listed");
        Camera other(pool);
        other.allocateResources();
    }
    node.executeCfgSetClear();
    node.allocateResources();
}

TEST_F(CameraLife, RemovalWhileIdleIsToldOnce)
{
    Camera node(pool);
    node.allocateResources();
    const GenApi::CNodeMapRef kept = map(node, "@CameraDevice");
    unplug(node);
    EXPECT_THAT(errors(node), ElementsAre(disconnected));
    EXPECT_NE(std::dynamic_pointer_cast<Core::DeviceError>(node.getErrors().at(0)), nullptr);
    EXPECT_FALSE(node.canExecute());
    EXPECT_EQ(maps(node).size(), 2U);
    for (const char* name : {"SelectedDeviceModelName", "SelectedDeviceSerialNumber", "SelectedDeviceVendorName",
                             "SelectedDeviceUserDefinedName"})
    {
        EXPECT_FALSE(GenApi::IsAvailable(map(node).GetNode(name))) << name;
    }
    EXPECT_THROW(Nivex::CIntegerParameter(kept.GetNodeMap(), "Width").SetValue(64), GenICam::GenericException);
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.start({}); }), disconnected);

    // Once more changes nothing.
    const auto error = node.getErrors().at(0);
    Nivex::CInstantCamera camera;
    const std::string removed =
        GenICam::formatText("Camera %p: Device has been removed.", static_cast<const void*>(&node));
    EXPECT_EQ(logged(removed), 1U);
    node.OnCameraDeviceRemoved(camera);
    await([&] { return logged(removed) == 2; });
    EXPECT_THAT(node.getErrors(), ElementsAre(error));

    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.allocateResources(); }),
              "No suitable camera found to allocate.");
    cameras->Plug(firstSerial);
    node.allocateResources();
    EXPECT_TRUE(errors(node).empty());
    EXPECT_EQ(get(node, "@Stagelet", "SelectedDeviceModelName"), "Emulated Camera");
    Receiver receiver;
    receiver.attachTo(node, "Image");
    node.start({});
    receiver.waitFor("Image", 2);
    node.stop();
}

TEST_F(CameraLife, RemovalEndsARunAndTheNextOneWorks)
{
    auto owned = std::make_unique<Camera>(pool);
    auto ownedSink = std::make_unique<SinkNode>(std::vector<std::string>{"Image"});
    Camera& node = *owned;
    const auto end = [](Core::NodeBase* ended) { delete ended; };
    std::atomic<std::uint64_t> steps = 0;
    ownedSink->step = [&](Core::PinValues&) { ++steps; };
    Runtime::Graph graph(pool);
    graph.addNode("Camera", "Camera", {owned.release(), end});
    graph.addNode("Sink", "Sink", {ownedSink.release(), end});
    graph.connect("Camera", "Image", "Sink", "Image");
    for (int round = 0; round < 3; ++round) {
        graph.allocate();
        set(node, "@CameraDevice", "AcquisitionFrameRateEnable", "false");
        steps = 0;
        graph.start();
        await([&] { return steps > 20; });
        cameras->Unplug(firstSerial);
        EXPECT_EQ(graph.wait(std::chrono::seconds(60), {}), Runtime::Graph::Event::NodeError);
        graph.stop();
        const Runtime::RunStatistics statistics = graph.getStatistics();
        EXPECT_EQ(statistics.inFlight, 0U);
        EXPECT_EQ(statistics.finished, steps);
        cameras->Plug(firstSerial);
        graph.free();
        EXPECT_THAT(errors(node), ElementsAre(disconnected));
    }
}

TEST_F(CameraLife, RemovalWhileAParameterIsWrittenFailsThatWriteOnly)
{
    Camera node(pool);
    node.allocateResources();
    node.start({});
    std::atomic<int> written = 0;
    const GenApi::NodeMapPtr kept = map(node, "@CameraDevice").GetNodeMap();
    std::thread writer([&] {
        Nivex::CFloatParameter gain(kept, "Gain");
        try {
            for (int i = 0;; ++i) {
                gain.SetValue(i % 2);
                ++written;
            }
        } catch (const GenICam::GenericException&) {
        }
    });
    await([&] { return written > 100; });
    unplug(node);
    writer.join();
    EXPECT_THAT(errors(node), ElementsAre(disconnected));
    node.stop();
}

// Stops, frees and destroys while the removal is on its way, and others look at the node maps meanwhile.
TEST_F(CameraLife, RemovalMeetsStopFreeAndDestruction)
{
    for (int round = 0; round < 45; ++round) {
        auto node = std::make_unique<Camera>(pool);
        Receiver receiver;
        receiver.attachTo(*node, "Image");
        node->allocateResources();
        set(*node, "@CameraDevice", "AcquisitionFrameRateEnable", "false");
        node->start({});
        receiver.waitFor("Image", 2);
        std::atomic<bool> isOver = false;
        std::thread looker([&] {
            while (!isOver) {
                for (const Core::NodeMapInfo& info : node->getNodeMapInfos()) {
                    if (const auto found = map(*node, info.GetIdentifier().c_str()); found.IsValid())
                        found.GetNode("Width");
                }
            }
        });
        std::thread puller([&] {
            for (int i = 0; i < round * 40; ++i)
                std::this_thread::yield();
            cameras->Unplug(firstSerial);
        });
        switch (round % 3) {
            case 0:
                node->stop();
                break;
            case 1:
                node->stop();
                node->freeResources();
                EXPECT_FALSE(isHeld(*node));
                break;
            default:
                break;
        }
        isOver = true;
        looker.join();
        node.reset();
        puller.join();
        cameras->Plug(firstSerial);
    }
    EXPECT_TRUE(cameras->IsDeviceAccessible(cameras->EnumerateDevices().front()));
}

// Neither in the middle of a start nor of a removal may an observer that throws leave the camera taken.
TEST_F(CameraLife, ObserversThatThrowKeepNothingFromItsEnd)
{
    const auto throwing = std::make_shared<std::atomic<bool>>(true);
    const auto raise = [throwing](GenApi::INode*) {
        if (*throwing) GENICAM_THROW(RuntimeException, "No!");
    };
    Camera node(pool);
    map(node).GetNode("SelectedDeviceModelName")->RegisterCallback(raise);
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.allocateResources(); }), "No!");
    EXPECT_FALSE(isHeld(node));
    Camera other(pool);
    other.allocateResources();
    map(other).GetNode("SelectedDeviceModelName")->RegisterCallback(raise);
    map(other).GetNode("DeviceSelector")->RegisterCallback(raise);
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { other.start({}); }), "No!");
    EXPECT_EQ(other.getState(), Core::NodeState::Stopped);
    EXPECT_TRUE(GenApi::IsAvailable(map(other).GetNode("DeviceSelector")));
    unplug(other);
    EXPECT_THAT(errors(other), ElementsAre(disconnected));
    *throwing = false;
}

// The start fails because the camera is gone, before the node has heard of it.
TEST_F(CameraLife, AStartThatMeetsARemovalHasItsError)
{
    const auto backend = std::make_shared<FakeBackend>();
    Camera node(std::make_shared<Runtime::ResourcePool>(2, Runtime::ResourcePool::CameraBackends{backend}));
    node.allocateResources();
    backend->state->isRemoved = true;
    EXPECT_THROW(node.start({}), GenICam::GenericException);
    EXPECT_THAT(errors(node), ElementsAre(disconnected));
    backend->device->Remove();
    await([&] { return !isHeld(node); });
    EXPECT_THAT(errors(node), ElementsAre(disconnected));
}

// The camera goes while the node is busy configuring it.
TEST_F(CameraLife, RemovalDuringAllocation)
{
    const auto backend = std::make_shared<FakeBackend>();
    Camera node(std::make_shared<Runtime::ResourcePool>(2, Runtime::ResourcePool::CameraBackends{backend}));
    backend->state->description = CameraTest::FakeDescription(
        R"(<Integer Name="Level"><Streamable>Yes</Streamable><pValue>Gain</pValue></Integer>)");
    setActive(node, "Level = 7");
    backend->state->before = [&](const std::string& operation) {
        if (operation == "write 16") backend->device->Remove();
    };
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.allocateResources(); }),
              "Failed to load feature streams from active configuration set.");
    await([&] { return node.hasError(); });
    EXPECT_THAT(errors(node), ElementsAre(disconnected));
    EXPECT_FALSE(backend->state->isAlive);

    backend->state->before = [](const std::string&) {};
    backend->state->isRemoved = false;
    node.allocateResources();
    EXPECT_TRUE(errors(node).empty());
    EXPECT_EQ(get(node, "@CameraDevice", "Level"), "7");
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test
