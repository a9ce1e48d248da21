// Images, chunks and events on their way from the camera to the recipe, and the account of what was lost.
#include <atomic>
#include <future>
#include <optional>
#include <thread>

#include "cameranodetest.h"
#include "core/inodehost.h"
#include "fakecamera.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

using CameraTest::FakeDevice;
using Nivex::SFrame;
using testing::EndsWith;

const Core::Image& imageOf(const Utils::Variant& value)
{
    return value.getValue<Core::Image>();
}

std::string errorOf(const Core::IValue& value)
{
    return value.hasError() ? value.getError()->getDescription().str() : "no error";
}

class CameraGrabbing : public CameraNodeTest
{
protected:
    CameraGrabbing() { receiver.attachTo(node, "Image"); }
    ~CameraGrabbing() override { node.stop(); }

    void start(Utils::Variant mode = {})
    {
        Core::NodeArgumentCollection arguments;
        if (mode.isValid()) arguments.setArgument("AcquisitionMode", std::move(mode));
        node.allocateResources();
        node.start(arguments);
    }
    FakeDevice& device() { return *backend->device; }
    void addPin(bool isEvent, const char* line)
    {
        if (isEvent) {
            node.executeEventPinAdd();
            node.setEventPinConfiguration(line);
        } else {
            node.executeChunkPinAdd();
            node.setChunkPinConfiguration(line);
        }
        receiver.attachTo(node, std::string(line, std::strchr(line, '.')));
    }

    const std::shared_ptr<FakeBackend> backend = std::make_shared<FakeBackend>();
    Receiver receiver;
    Camera node{std::make_shared<Runtime::ResourcePool>(2, Runtime::ResourcePool::CameraBackends{backend})};
};

TEST_F(CameraGrabbing, StartArgumentsSetTheMode)
{
    const std::string ignored = GenICam::formatText(
        "Camera %p: Argument \"AcquisitionMode\" is not of type \"String\" or invalid and is therefore ignored.",
        static_cast<const void*>(&node));
    struct Row
    {
        Utils::Variant argument;
        AcquisitionMode mode;
        std::size_t refused;
    };
    const Row rows[] = {
        {Utils::Variant(Core::String("SingleFrame")), AcquisitionMode::SingleFrame, 0},
        {Utils::Variant(Core::String("Continuous")), AcquisitionMode::Continuous, 0},
        {Utils::Variant(Core::String("continuous")), AcquisitionMode::Continuous, 1},
        {Utils::Variant(Core::Integer(0L)), AcquisitionMode::Continuous, 2},
    };
    std::size_t images = 0;
    for (const Row& row : rows) {
        start(row.argument);
        EXPECT_EQ(node.getAcquisitionMode(), row.mode);
        const bool isSingle = row.mode == AcquisitionMode::SingleFrame;
        for (int i = 0; i < 3; ++i)
            device().PushFrame();
        images += isSingle ? 1 : 3;
        EXPECT_EQ(receiver.waitFor("Image", images).size(), images);
        // One frame does not end the node.
        EXPECT_EQ(node.getState(), Core::NodeState::Started);
        node.stop();
        EXPECT_EQ(receiver.waitFor("Image", 0).size(), images);
        EXPECT_EQ(logged(ignored), row.refused);
    }
}

TEST_F(CameraGrabbing, GoodImagesAreTheMemoryThatTheCameraWrote)
{
    start();
    std::vector<const void*> written;
    for (int i = 0; i < 3; ++i)
        device().PushFrame([&](SFrame& frame) { written.push_back(frame.buffer.data); });
    // A payload of several components: the intensity behind the range is the picture.
    device().PushFrame([&](SFrame& frame) {
        frame.payloadType = Nivex::EPayloadType::MultiComponent;
        frame.componentCount = 2;
        frame.components[0] = {.type = Nivex::EComponentType::Range,
                               .pixelType = Nivex::EPixelType::Mono8,
                               .width = 4,
                               .height = 4,
                               .size = 16};
        frame.components[1] = {.type = Nivex::EComponentType::Intensity,
                               .pixelType = Nivex::EPixelType::Mono8,
                               .width = 4,
                               .height = 2,
                               .offset = 16,
                               .size = 8};
        written.push_back(frame.buffer.data + 16);
    });
    const std::vector<Utils::Variant> images = receiver.waitFor("Image", 4);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(imageOf(images[i]).getDataConst(), written[i]);
    node.stop();
    node.freeResources();
    EXPECT_EQ(*static_cast<const std::uint8_t*>(imageOf(images[1]).getDataConst()), 2);
    EXPECT_FALSE(backend->state->isAlive);
}

TEST_F(CameraGrabbing, FailedResultsAreErrorsOrRepaired)
{
    struct Row
    {
        FixCorruptImages fix;
        bool isComplete;
        const char* description;
        const char* error;
        const char* corrupt;  ///< Of the pin "ImageCorrupt".
    };
    const Row rows[] = {
        {FixCorruptImages::Off, false, "", "The grabbed image is corrupt.", "no value"},
        {FixCorruptImages::Off, false, "Packets lost.", "Packets lost.", "no value"},
        {FixCorruptImages::On, true, "", "no error", "false"},
        {FixCorruptImages::Off, true, "", "no error", "no value"},
        // The fake camera states no form, so there is nothing to repair with; the flag tells all the same.
        {FixCorruptImages::On, false, "", "No image can have 0 x 0 pixels", "true"},
    };
    std::size_t count = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.error);
        node.setFixCorruptImages(row.fix);
        Receiver corruptReceiver;
        if (row.fix == FixCorruptImages::On) corruptReceiver.attachTo(node, "ImageCorrupt");
        log.clear();
        start();
        device().PushFrame([&](SFrame& frame) {
            frame.isComplete = row.isComplete;
            frame.errorDescription = row.description;
        });
        const std::string error = errorOf(imageOf(receiver.waitFor("Image", ++count).back()));
        EXPECT_THAT(error, testing::StartsWith(row.error));
        node.stop();
        EXPECT_EQ(logged(GenICam::formatText("Camera %p: An image could not be grabbed. Message: %s",
                                             static_cast<const void*>(&node), error.c_str())),
                  error == "no error" ? 0U : 1U);
        const Texts entries = log.messages(cameraChannelName);
        EXPECT_EQ(
            std::count_if(entries.begin(), entries.end(),
                          [](const std::string& text) { return text.find("grabbed.") != std::string::npos; }),
            error == "no error" ? 0 : 1);
        const auto values = corruptReceiver.waitFor("ImageCorrupt", 0);
        EXPECT_STREQ(values.empty()                                  ? "no value"
                     : values.back().getValue<Core::Boolean>().get() ? "true"
                                                                     : "false",
                     row.corrupt);
    }
}

TEST_F(CameraGrabbing, ChunksTravelWithTheirImageAndEventsAlone)
{
    addPin(false, "Number.Type=Integer.ValueName=ChunkNumber");
    addPin(false, "Absent.Type=Integer.ValueName=NoSuchChunk");
    addPin(true, "Event.Type=Integer.EventName=E.ValueName=EventData");
    addPin(true, "Unknown.Type=Integer.EventName=E.ValueName=NoSuchEvent");
    backend->state->description = CameraTest::FakeDescription(
        R"(<Enumeration Name="EventNotification"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
           <EnumEntry Name="On"><Value>1</Value></EnumEntry><Value>0</Value></Enumeration>)");
    node.allocateResources();
    EXPECT_TRUE(device().PushEvent(0xA001, 1)) << "before the start: not put out";
    std::vector<std::string> order;
    std::mutex mutex;
    receiver.onValue = [&](const Receiver::Value& value) {
        const std::lock_guard lock(mutex);
        order.push_back(value.pin);
    };
    start();
    EXPECT_EQ(logged(GenICam::formatText("Camera %p: Chunk pin \"Absent\" is without values. Message: The camera "
                                         "has no parameter \"NoSuchChunk\".",
                                         static_cast<const void*>(&node))),
              1U);
    device().PushFrame();
    receiver.waitFor("Image", 1);
    device().PushEvent(0xA001, 4711);
    device().PushEvent(0xBAD, 1);
    receiver.waitFor("Event", 1);
    device().PushFrame([](SFrame& frame) { CameraTest::AddChunk(frame, 16, 42); });
    receiver.waitFor("Image", 2);
    // A chunk that is longer than the frame.
    device().PushFrame([](SFrame& frame) {
        CameraTest::AddChunk(frame, 16, 43);
        frame.buffer.data[frame.payloadSize - 4] = std::byte{200};
    });
    receiver.waitFor("Image", 3);
    node.stop();
    device().PushEvent(0xA001, 2);
    EXPECT_EQ(receiver.waitFor("Number", 1).at(0).getValue<Core::Integer>().getUnsigned(), 42U);
    EXPECT_EQ(receiver.waitFor("Event", 1).at(0).getValue<Core::Integer>().getUnsigned(), 4711U);
    EXPECT_FALSE(receiver.waitFor("Absent", 1).at(0).isValid());
    EXPECT_THAT(order, ElementsAre("Image", "Event", "Image", "Number", "Absent", "Image"));
    EXPECT_EQ(logged(GenICam::formatText("Camera %p: Failed to get chunk data value for \"Number\" pin.",
                                         static_cast<const void*>(&node))),
              1U);
}

// Whatever goes wrong with a result ends that result only, and is counted.
TEST_F(CameraGrabbing, ExceptionsCostTheirResultOnly)
{
    struct Host : Core::INodeHost
    {
        struct Update : Core::IGraphUpdate
        {
            std::uint64_t getSequenceNumber() const override { return 0; }
            std::shared_ptr<IGraphUpdate> getParent() const override { return nullptr; }
        };
        bool waitUntilSpaceAvailable(Core::NodeBase&) override
        {
            raise();
            return true;
        }
        std::shared_ptr<Core::IGraphUpdate> createUpdate(Core::NodeBase&,
                                                         const std::shared_ptr<Core::IGraphUpdate>&, bool) override
        {
            if (failsToCreate.exchange(false)) GENICAM_THROW(RuntimeException, "no update");
            return std::make_shared<Update>();
        }
        void submit(Core::NodeBase&, const std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues&&,
                    std::function<void()>) override
        {
            ++submitted;
        }
        void reportLoss(Core::NodeBase&, Core::LossCause cause, const Core::IGraphUpdate*) override
        {
            lost = cause;
        }
        void reportMissed(Core::NodeBase&, Core::LossCause, std::uint64_t) override {}
        void reportSent(Core::NodeBase&) override {}
        void reportRecorded(Core::NodeBase&, std::uint64_t, std::uint64_t) override {}

        std::function<void()> raise = [] {};
        std::atomic<bool> failsToCreate = false;
        std::atomic<int> submitted = 0;
        std::optional<Core::LossCause> lost;
    };
    Host host;
    node.attachHost(&host);
    start();
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[] { GENICAM_THROW(RuntimeException, "one"); }, "Exception caught while grabbing an image. Message: one"},
        {[] { throw std::runtime_error("two"); }, "Exception caught while grabbing an image. Message: two"},
        {[] { throw 3; }, "Unknown exception caught while grabbing an image."},
    };
    for (const auto& [raise, ending] : rows) {
        host.raise = raise;
        device().PushFrame();
        const std::string text = GenICam::formatText("Camera %p: %s", static_cast<const void*>(&node), ending);
        await([&] { return logged(text) == 1; });
        EXPECT_FALSE(host.lost) << "an update that was made is counted by the host as it goes";
        node.stop();  // so that the grab thread has let go of the hook
        node.start({});
    }
    host.raise = [] {};
    host.failsToCreate = true;
    device().PushFrame();
    device().PushFrame();
    await([&] { return host.submitted == 1; });
    EXPECT_EQ(host.lost, Core::LossCause::SourceFailed);
    node.stop();
    node.attachHost(nullptr);
}

TEST_F(CameraGrabbing, AStartThatFailsLeavesTheNodeStoppedAndUsable)
{
    node.allocateResources();
    backend->state->before = [](const std::string& operation) {
        if (operation == "StartStream") GENICAM_THROW(RuntimeException, "No stream today.");
    };
    EXPECT_EQ(refusal<GenICam::RuntimeException>([&] { node.start({}); }), "No stream today.");
    EXPECT_EQ(node.getState(), Core::NodeState::Stopped);
    EXPECT_TRUE(GenApi::IsAvailable(map(node).GetNode("DeviceSelector")));
    backend->state->before = [](const std::string&) {};
    start();
    device().PushFrame();
    receiver.waitFor("Image", 1);
}

TEST_F(CameraGrabbing, AnOpeningThatFailsLeavesNoCamera)
{
    const auto allocate = [&](const std::function<void()>& atOpen) {
        backend->state->before = [atOpen](const std::string& operation) {
            if (operation == "Open") atOpen();
        };
        log.clear();
        return refusal<GenICam::RuntimeException>([&] { node.allocateResources(); });
    };
    const std::string caught = " caught while allocating camera resource..";
    EXPECT_EQ(allocate([] { GENICAM_THROW(RuntimeException, "The camera is busy."); }), "The camera is busy.");
    EXPECT_THAT(log.messages(cameraChannelName).at(0),
                EndsWith(": Exception" + caught + " Message: The camera is busy."));
    EXPECT_FALSE(backend->state->isAlive);
    EXPECT_EQ(maps(node).size(), 2U);
    EXPECT_EQ(allocate([] { throw 5; }), "Unknown exception caught while allocating camera resource.");
    EXPECT_THAT(log.messages(cameraChannelName).at(0), EndsWith(": Unknown exception" + caught));
    backend->state->before = [](const std::string&) {};
    start();
}

// The account

class CameraAccount : public CameraNodeTest
{
protected:
    struct Recipe
    {
        explicit Recipe(const std::shared_ptr<Runtime::ResourcePool>& itsPool) : graph(itsPool)
        {
            auto ownedCamera = std::make_unique<Camera>(itsPool);
            auto ownedSink = std::make_unique<SinkNode>(std::vector<std::string>{"Image", "Chunk", "Event"});
            camera = ownedCamera.get();
            sink = ownedSink.get();
            const auto end = [](Core::NodeBase* node) { delete node; };
            graph.addNode("Camera", "Camera", {ownedCamera.release(), end});
            graph.addNode("Sink", "Sink", {ownedSink.release(), end});
        }
        void addEventPin(const std::string& event = "ExposureEnd", const std::string& value = "FrameID")
        {
            camera->executeEventPinAdd();
            camera->setEventPinConfiguration(
                ("Event.Type=Integer.EventName=" + event + ".ValueName=Event" + event + value).c_str());
            graph.connect("Camera", "Event", "Sink", "Event");
        }
        void allocate()
        {
            graph.connect("Camera", "Image", "Sink", "Image");
            graph.allocate();
        }

        Camera* camera = nullptr;
        SinkNode* sink = nullptr;
        Runtime::Graph graph;
    };

    static std::string lossesOf(const Core::LossCounts& lost)
    {
        std::string text;
        for (std::size_t i = 0; i < lost.size(); ++i) {
            if (lost[i] > 0) text += std::string(Core::lossCauseNames[i]) + "=" + std::to_string(lost[i]) + " ";
        }
        return text;
    }
    /// Every update has one outcome.
    static void expectBalance(const Runtime::RunStatistics& statistics)
    {
        std::uint64_t settled = statistics.finished;
        for (const std::uint64_t count : statistics.lost)
            settled += count;
        EXPECT_EQ(statistics.offered, settled);
        EXPECT_EQ(statistics.inFlight, 0U);
    }

    /// Keeps the recipe's sink in its first step until the camera has stopped.
    class HeldSink
    {
    public:
        explicit HeldSink(Recipe& recipe) : recipe_(recipe)
        {
            recipe.sink->step = [opened = open_.get_future().share()](Core::PinValues&) { opened.wait(); };
        }
        Runtime::RunStatistics stop()
        {
            auto stopping = std::async(std::launch::async, [this] { recipe_.graph.stop(); });
            await([this] { return recipe_.camera->getState() == Core::NodeState::Stopped; });
            open_.set_value();
            stopping.get();
            const Runtime::RunStatistics statistics = recipe_.graph.getStatistics();
            expectBalance(statistics);
            return statistics;
        }

    private:
        Recipe& recipe_;
        std::promise<void> open_;
    };
};

TEST_F(CameraAccount, EndsExactlyAtTheLimit)
{
    struct Row
    {
        const char* name;
        std::vector<std::pair<const char*, const char*>> settings;
        const char* losses;
        std::uint64_t offered;
    };
    constexpr std::uint64_t limit = 50;
    const Row rows[] = {
        {"good frames", {}, "", limit},
        {"each fifth fails", {{"FailedFramesEvery", "5"}}, "grab_failed=10 ", limit},
        // Not those after the last one, which would be seen with the next.
        {"two after each tenth are missing",
         {{"LostFramesEvery", "10"}, {"LostFramesNumber", "2"}},
         "frames_missed=8 ",
         limit + 8},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto fresh = std::make_shared<Nivex::CEmulatedCameraBackend>(1);
        Recipe recipe(std::make_shared<Runtime::ResourcePool>(4, Runtime::ResourcePool::CameraBackends{fresh}));
        recipe.allocate();
        set(*recipe.camera, "@CameraDevice", "AcquisitionFrameRateEnable", "false");
        for (const auto& [name, value] : row.settings)
            set(*recipe.camera, "@CameraDevice", name, value);
        std::atomic<std::uint64_t> images = 0;
        recipe.sink->step = [&](Core::PinValues&) { ++images; };
        recipe.graph.setUpdateLimit(limit);
        recipe.graph.start();
        EXPECT_EQ(recipe.graph.wait(std::chrono::seconds(60), {}), Runtime::Graph::Event::LimitReached);
        recipe.graph.stop();
        const Runtime::RunStatistics statistics = recipe.graph.getStatistics();
        expectBalance(statistics);
        EXPECT_EQ(images, limit);
        EXPECT_EQ(statistics.offered, row.offered);
        EXPECT_EQ(lossesOf(statistics.lost), row.losses);
        EXPECT_EQ(lossesOf(statistics.nodes[0].lost), row.losses);
    }
}

// A camera may begin with any frame number, unless it says with which.
TEST_F(CameraAccount, FramesBeforeTheFirstAreMissedWhereItsNumberIsKnown)
{
    for (const std::uint64_t first : {0U, 41U}) {
        const auto backend = std::make_shared<FakeBackend>();
        backend->state->firstBlockId = first;
        backend->state->blockId = 42;
        Recipe recipe(std::make_shared<Runtime::ResourcePool>(2, Runtime::ResourcePool::CameraBackends{backend}));
        recipe.allocate();
        recipe.graph.start();
        for (int i = 0; i < 2; ++i, ++backend->state->blockId)
            EXPECT_TRUE(backend->device->PushFrame());
        await([&] { return recipe.graph.getStatistics().finished == 2; });
        recipe.graph.stop();
        EXPECT_EQ(lossesOf(recipe.graph.getStatistics().lost),
                  first == 0 ? "frames_missed=1 " : "frames_missed=3 ");
    }
}

// Frames that are in hand or wait in the camera's queue when the recipe stops are lost, and counted.
TEST_F(CameraAccount, CountsWhatASlowRecipeLeavesBehindAtItsStop)
{
    for (int round = 0; round < 2; ++round) {  // with the same camera
        Recipe recipe(pool);
        recipe.allocate();
        set(*recipe.camera, "@CameraDevice", "AcquisitionFrameRateEnable", "false");
        HeldSink held(recipe);
        recipe.graph.start();
        await([&] { return recipe.graph.getStatistics().inFlight > recipe.sink->getMaxInputJobCount(); });
        const Runtime::RunStatistics statistics = held.stop();
        EXPECT_EQ(statistics.finished, recipe.sink->getMaxInputJobCount());
        const std::uint64_t noSpace = statistics.lost[static_cast<std::size_t>(Core::LossCause::NoSpace)];
        EXPECT_GE(noSpace, 1U);
        EXPECT_EQ(statistics.nodes[0].lost[static_cast<std::size_t>(Core::LossCause::NoSpace)], noSpace);
        EXPECT_EQ(lossesOf(statistics.lost), "no_space=" + std::to_string(noSpace) + " ");
    }
}

TEST_F(CameraAccount, EventsAndImagesShareOneAccount)
{
    Recipe recipe(pool);
    recipe.addEventPin();
    recipe.camera->executeChunkPinAdd();
    recipe.camera->setChunkPinConfiguration("Chunk.Type=Integer.ValueName=ChunkFrameID");
    recipe.graph.connect("Camera", "Chunk", "Sink", "Chunk");
    recipe.allocate();
    set(*recipe.camera, "@CameraDevice", "AcquisitionFrameRate", "500");
    set(*recipe.camera, "@CameraDevice", "ChunkModeActive", "true");
    std::atomic<std::uint64_t> events = 0;
    std::vector<std::uint64_t> frames;
    std::atomic<std::size_t> wrong = 0;
    recipe.sink->step = [&](Core::PinValues& values) {
        if (values.count("Event")) {
            ++events;
            wrong += values.size() != 1;
        } else {
            wrong += values.size() != 2;
            frames.push_back(values.at("Chunk").getValue<Core::Integer>().getUnsigned());
        }
    };
    recipe.graph.setUpdateLimit(60);
    recipe.graph.start();
    EXPECT_EQ(recipe.graph.wait(std::chrono::seconds(60), {}), Runtime::Graph::Event::LimitReached);
    recipe.graph.stop();
    expectBalance(recipe.graph.getStatistics());
    EXPECT_EQ(wrong, 0U);
    EXPECT_GT(events, 20U);
    ASSERT_GT(frames.size(), 20U);
    EXPECT_TRUE(std::is_sorted(frames.begin(), frames.end()));
}

// Nothing takes pictures here: all updates are events, of which more come than the recipe and the camera can hold.
TEST_F(CameraAccount, CoversEveryEventOfACameraThatRunsOver)
{
    constexpr std::uint64_t sent = 1500;
    const auto of = [](const Core::LossCounts& lost, Core::LossCause cause) {
        return lost[static_cast<std::size_t>(cause)];
    };
    for (const std::uint64_t limit : {0U, 5U, 0U}) {
        SCOPED_TRACE(limit);
        Recipe recipe(pool);
        recipe.addEventPin("Test", "Timestamp");
        recipe.allocate();
        set(*recipe.camera, "@CameraDevice", "TriggerMode", "On");
        HeldSink held(recipe);
        recipe.graph.setUpdateLimit(limit);
        recipe.graph.start();
        for (std::uint64_t i = 0; i < sent; ++i)
            set(*recipe.camera, "@CameraDevice", "TestEventGenerate", "1");
        // One more than there is space for is in the source's hand.
        const std::uint64_t taken = limit != 0 ? limit : recipe.sink->getMaxInputJobCount() + 1;
        await([&] { return recipe.graph.getStatistics().offered >= taken; });
        const Runtime::RunStatistics statistics = held.stop();
        if (limit != 0) {  // What comes after it is nobody's loss.
            EXPECT_EQ(statistics.offered, limit);
            continue;
        }
        EXPECT_EQ(statistics.offered, sent);
        EXPECT_EQ(statistics.finished, recipe.sink->getMaxInputJobCount());
        EXPECT_GE(of(statistics.lost, Core::LossCause::NoSpace), 1000 - statistics.finished);
        EXPECT_GE(of(statistics.lost, Core::LossCause::EventsMissed), 100U);
    }
}

// Everything at once, stopped at any moment, again and again: the account is exact and nothing hangs.
TEST_F(CameraAccount, IsExactWhenStoppedAtAnyMoment)
{
    Recipe recipe(pool);
    recipe.addEventPin();
    recipe.allocate();
    set(*recipe.camera, "@CameraDevice", "AcquisitionFrameRateEnable", "false");
    set(*recipe.camera, "@CameraDevice", "FailedFramesEvery", "7");
    set(*recipe.camera, "@CameraDevice", "Width", "64");
    std::atomic<std::uint64_t> steps = 0;
    recipe.sink->step = [&](Core::PinValues&) {
        if (++steps % 16 == 0) std::this_thread::sleep_for(std::chrono::microseconds(200));
    };
    for (std::uint64_t round = 0; round < 25; ++round) {
        steps = 0;
        recipe.graph.start();
        await([&] { return steps >= 4 * round; });
        recipe.graph.stop();
        const Runtime::RunStatistics statistics = recipe.graph.getStatistics();
        expectBalance(statistics);
        EXPECT_EQ(statistics.nodes[0].out, steps);
        const auto delivered = std::stoull(get(*recipe.camera, "@StreamGrabber0", "StreamDeliveredFrameCount"));
        EXPECT_EQ(statistics.offered, 2 * delivered) << "each frame is a picture and an event";
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test
