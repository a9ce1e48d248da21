// A camera object from attachment to results, on one thread. What several threads do at once: threads_test.cpp.
#include "sdk/camera/cameraworld.h"

using namespace CameraTest;
using testing::ElementsAre;
using testing::HasSubstr;
using Log = std::vector<std::string>;

namespace {

// The result shows the very bytes that the device wrote, in the device's buffer, which then is queued again.
TEST(Camera, DeliversFramesInTheBuffersTheyWereWrittenInto)
{
    World world;
    world.camera.StartGrabbing();
    const std::byte* memory = nullptr;
    ASSERT_TRUE(world.device->PushFrame([&](SFrame& frame) {
        memory = frame.buffer.data;
        frame.timestamp = 77;
        frame.offsetX = 3;
    }));
    CGrabResultPtr result = world.Take();
    ASSERT_TRUE(result.IsValid() && result->GrabSucceeded());
    EXPECT_EQ(result->GetBuffer(), memory);
    EXPECT_EQ(memory[0], std::byte{1});
    EXPECT_EQ(result->GetBufferSize(), 64U);
    EXPECT_EQ(result->GetTimeStamp(), 77U);
    EXPECT_EQ(result->GetOffsetX(), 3U);
    EXPECT_TRUE(result.IsUnique());
    CNivexDataComponent component = result->GetDataComponent(0);
    EXPECT_FALSE(result.IsUnique());
    EXPECT_EQ(component.GetBuffer(), memory);
    EXPECT_EQ(component.GetComponentType(), EComponentType::Intensity);
    result.Release();
    EXPECT_EQ(world.state->QueuedCount(), 9U);
    component.Release();
    EXPECT_EQ(world.state->QueuedCount(), 10U);
    EXPECT_EQ(world.state->queued.back().data, memory);
}

// Each step is told before and after, around what the device is asked for.
TEST(Camera, TakesItsStepsInOrder)
{
    Steps steps;
    World world;
    steps.onStep = [&](const gcstring& step) { world.state->Note(step.str()); };
    world.Register(steps);
    CInstantCamera& camera = world.camera;
    camera.StartGrabbing();
    EXPECT_THAT(world.state->TakeLog(), ElementsAre("OnOpen", "Open", "OnOpened", "OnGrabStart", "write 12 1",
                                                    "StartStream", "write 0 1", "OnGrabStarted"));
    EXPECT_THROW(camera.StartGrabbing(), GenICam::LogicalErrorException);
    camera.DetachDevice();
    EXPECT_THAT(world.state->TakeLog(),
                ElementsAre("OnDetach", "OnClose", "OnGrabStop", "write 4 1", "StopStream", "write 12 0",
                            "OnGrabStopped", "Close", "OnClosed", "OnDetached"));
    EXPECT_FALSE(world.state->isAlive);
    for (const auto& operation :
         {&CInstantCamera::Close, &CInstantCamera::StopGrabbing, &CInstantCamera::DetachDevice})
        (camera.*operation)();
    EXPECT_EQ(world.state->TakeLog(), Log{});
    EXPECT_THROW(camera.Open(), GenICam::LogicalErrorException);
    EXPECT_THROW(camera.GetNodeMap(), GenICam::LogicalErrorException);

    // A device that stays the caller's; the camera is left to be started by others.
    FakeDevice lent(world.state);
    camera.Attach(&lent, ECleanup::None);
    EXPECT_THROW(camera.Attach(&lent, ECleanup::None), GenICam::InvalidArgumentException);
    world.Set("AcquisitionStartStopExecutionEnable", 0);
    camera.StartGrabbing();
    camera.ExecuteSoftwareTrigger();
    camera.StopGrabbing();
    EXPECT_THAT(world.state->TakeLog(),
                ElementsAre("OnAttach", "OnAttached", "OnOpen", "Open", "OnOpened", "OnGrabStart", "write 12 1",
                            "StartStream", "OnGrabStarted", "write 8 1", "OnGrabStop", "StopStream", "write 12 0",
                            "OnGrabStopped"));
    camera.DetachDevice();
    EXPECT_TRUE(world.state->isAlive);
}

// What fails on the way to results leaves a camera that is as before, and that can be started later.
TEST(Camera, AStartThatFailsIsUndone)
{
    for (const char* operation : {"Open", "OnOpened", "OnGrabStart", "GetPayloadSize", "write 12", "StartStream",
                                  "write 0", "no memory", "no payload"})
    {
        for (const bool isOpen : {false, true}) {
            SCOPED_TRACE(testing::Message() << operation << isOpen);
            Steps steps;
            World world;
            steps.onStep = [&](const gcstring& step) { world.state->before(step.str()); };
            world.Register(steps);
            if (isOpen) world.camera.Open();
            if (isOpen && operation == std::string("Open")) continue;
            if (isOpen && operation == std::string("OnOpened")) continue;
            bool fails = true;
            world.state->before = [&](const std::string& step) {
                if (step == operation && std::exchange(fails, false)) GENICAM_THROW(RuntimeException, "No.");
            };
            if (operation == std::string("no memory")) world.state->payloadSize = SIZE_MAX / 4;
            if (operation == std::string("no payload")) world.state->payloadSize = 0;
            EXPECT_THROW(world.camera.StartGrabbing(), GenICam::RuntimeException);
            EXPECT_FALSE(world.camera.IsGrabbing());
            EXPECT_EQ(world.camera.IsOpen(), isOpen);
            EXPECT_FALSE(world.state->isStreaming);
            EXPECT_EQ(world.state->registers[12], 0U);
            world.state->payloadSize = 64;
            world.camera.StartGrabbing();
            EXPECT_TRUE(world.device->PushFrame());
            EXPECT_TRUE(world.Take().IsValid());
        }
    }
}

// Frames 1 to 5 arrive before the first is fetched; what is missing in a row was skipped, and is told.
TEST(Camera, StrategiesChooseAmongWaitingResults)
{
    struct Row
    {
        EGrabStrategy strategy;
        std::int64_t outputQueueSize;
        std::vector<std::pair<int, int>> numbersAndSkipped;
    };
    const Row rows[] = {
        {EGrabStrategy::OneByOne, 1, {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}}},
        {EGrabStrategy::LatestImageOnly, 3, {{5, 4}}},
        {EGrabStrategy::LatestImages, 1, {{5, 4}}},
        {EGrabStrategy::LatestImages, 2, {{4, 3}, {5, 0}}},
        {EGrabStrategy::LatestImages, 99, {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.numbersAndSkipped.size());
        ImageHandler handler;
        std::size_t told = 0;
        handler.onSkipped = [&](std::size_t count) { told += count; };
        World world;
        world.Set("OutputQueueSize", row.outputQueueSize);
        world.Register(handler);
        world.camera.StartGrabbing(row.strategy);
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(world.device->PushFrame());
        EXPECT_EQ(world.Get("NumReadyBuffers"), static_cast<std::int64_t>(row.numbersAndSkipped.size()));
        EXPECT_EQ(world.Get("NumQueuedBuffers"), static_cast<std::int64_t>(10 - row.numbersAndSkipped.size()));
        std::vector<std::pair<int, int>> got;
        while (const CGrabResultPtr result = world.Take())
            got.emplace_back(result->GetImageNumber(), result->GetNumberOfSkippedImages());
        EXPECT_EQ(got, row.numbersAndSkipped);
        EXPECT_EQ(told + got.size(), 5U);
        // A stop drops what waits, and what was skipped for it.
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(world.device->PushFrame());
        world.camera.StopGrabbing();
        EXPECT_EQ(world.camera.GetNumberOfDiscardedResults(), 5U);
    }
}

// A user who keeps all buffers costs the camera frames, not the user his pictures.
TEST(Camera, HasNoMoreBuffersThanAskedFor)
{
    World world;
    world.Set("MaxNumBuffer", 2);
    world.camera.StartGrabbing();
    ASSERT_TRUE(world.device->PushFrame());
    ASSERT_TRUE(world.device->PushFrame());
    const CGrabResultPtr first = world.Take();
    CGrabResultPtr second = world.Take();
    EXPECT_FALSE(world.device->PushFrame());
    EXPECT_EQ(static_cast<std::uint8_t*>(first->GetBuffer())[0], 1U);
    second.Release();
    EXPECT_TRUE(world.device->PushFrame());
    EXPECT_EQ(world.Take()->GetBlockID(), 4U);
    world.camera.StopGrabbing();
    EXPECT_EQ(world.Get("NumEmptyBuffers"), 1);
    for (const char* node : {"MaxNumBuffer", "MaxNumBufferReg", "OutputQueueSizeReg"})
        EXPECT_THROW(world.Set(node, 0), GenICam::OutOfRangeException) << node;
}

TEST(Camera, EndsAfterTheLastImage)
{
    World world;
    EXPECT_THROW(world.camera.StartGrabbing(0), GenICam::InvalidArgumentException);
    world.camera.StartGrabbing(2);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(world.device->PushFrame());
    EXPECT_TRUE(world.Take() && world.camera.IsGrabbing());
    EXPECT_TRUE(world.Take() && !world.camera.IsGrabbing());
    EXPECT_FALSE(world.state->isStreaming);
    EXPECT_FALSE(world.Take());
    EXPECT_EQ(world.camera.GetNumberOfDiscardedResults(), 0U);
    world.camera.StartGrabbing(1);
    EXPECT_THROW(world.camera.RetrieveResult(1ms, *std::make_unique<CGrabResultPtr>()), GenICam::TimeoutException);
    // A frame that the camera sends while it is told to stop is counted.
    world.state->before = [&](const std::string& step) {
        if (step == "write 4") world.device->PushFrame();
    };
    world.camera.StopGrabbing();
    EXPECT_EQ(world.camera.GetNumberOfDiscardedResults(), 1U);
}

// A result outlives its grabbing, its device and its camera, and its buffer never gets into another grabbing.
TEST(Camera, ResultsOutliveEverything)
{
    auto world = std::make_unique<World>();
    const auto state = world->state;
    state->payloadSize = 100;
    CGrabResultPtr kept;
    CGrabResultPtr released;
    world->camera.StartGrabbing();
    for (CGrabResultPtr* result : {&kept, &released}) {
        world->device->PushFrame([](SFrame& frame) { AddChunk(frame, 40, 7); });
        *result = world->Take();
    }
    for (const std::size_t size : {100U, 200U}) {
        world->camera.StopGrabbing();
        state->payloadSize = size;
        world->camera.StartGrabbing();
        EXPECT_EQ(state->QueuedCount(), 10U);
        released.Release();
        EXPECT_EQ(state->QueuedCount(), 10U);
        for (const SStreamBuffer& buffer : state->queued)
            EXPECT_TRUE(buffer.size == size && buffer.data != kept->GetBuffer());
    }
    world.reset();
    EXPECT_FALSE(state->isAlive);
    EXPECT_EQ(static_cast<std::uint8_t*>(kept->GetBuffer())[39], 1U);
    EXPECT_EQ(CIntegerParameter(kept->GetChunkDataNodeMap(), "ChunkNumber").GetValue(), 7);
}

// Whatever a device says of a frame, nothing outside the buffer is shown.
TEST(Camera, ComponentsLieWithinTheBuffer)
{
    struct Row
    {
        SFrameComponent component;
        bool isValid;
    };
    const auto mono = [](std::uint32_t width, std::size_t padding, std::size_t offset, std::size_t size) {
        return SFrameComponent{.type = EComponentType::Range,
                               .pixelType = EPixelType::Mono8,
                               .width = width,
                               .height = 2,
                               .paddingX = padding,
                               .offset = offset,
                               .size = size};
    };
    SFrameComponent unknown = mono(4, 0, 0, 8);
    unknown.pixelType = static_cast<EPixelType>(0x010800FF);
    const Row rows[] = {
        {mono(4, 0, 56, 8), true},        {mono(4, 0, 57, 8), false},       {mono(4, 0, 56, 7), false},
        {mono(4, 1, 50, 10), true},       {mono(4, 1, 50, 9), false},       {mono(0, 0, 0, 8), false},
        {mono(4, 0, 1, SIZE_MAX), false}, {mono(4, SIZE_MAX, 0, 8), false}, {unknown, false}};
    World world;
    world.camera.StartGrabbing();
    for (const Row& row : rows) {
        world.device->PushFrame([&](SFrame& frame) {
            frame.payloadType = EPayloadType::MultiComponent;
            frame.componentCount = 1;
            frame.components[0] = row.component;
        });
        const CGrabResultPtr result = world.Take();
        CNivexDataComponent component = result->GetDataComponent(0);
        EXPECT_EQ(component.IsValid(), row.isValid) << row.component.offset;
        const void* expected =
            row.isValid ? static_cast<std::byte*>(result->GetBuffer()) + row.component.offset : nullptr;
        EXPECT_EQ(component.GetBuffer(), expected);
        EXPECT_FALSE(result->GetDataComponent(1).IsValid());
    }
    world.device->PushFrame([](SFrame& frame) {
        frame.payloadSize = frame.imageSize = 65;
        frame.componentCount = 1000;
        frame.errorDescription = nullptr;
    });
    const CGrabResultPtr result = world.Take();
    EXPECT_FALSE(result->GrabSucceeded());
    EXPECT_EQ(result->GetPayloadSize(), 64U);
    EXPECT_EQ(result->GetDataComponentCount(), SFrame::maxComponents);
    EXPECT_THAT(result->GetErrorDescription().str(), HasSubstr("more bytes"));
    EXPECT_THROW(CGrabResultPtr()->GetWidth(), GenICam::LogicalErrorException);
}

struct ChunkWorld : World
{
    CGrabResultPtr Grab(const std::function<void(SFrame&)>& change)
    {
        EXPECT_TRUE(device->PushFrame(change));
        return Take();
    }
    CGrabResultPtr Grab(std::uint32_t number)
    {
        return Grab([=](SFrame& frame) { AddChunk(frame, 8, number); });
    }
    static std::int64_t Number(const GenApi::NodeMapPtr& map)
    {
        return CIntegerParameter(map, "ChunkNumber").GetValueOrDefault(-1);
    }
};

// Each result has a map of its own, which is used again, but for one that somebody keeps.
TEST(Camera, EachResultShowsItsOwnChunks)
{
    ChunkWorld world;
    world.Set("MaxNumBuffer", 2);
    world.camera.StartGrabbing();
    CGrabResultPtr first = world.Grab(10);
    CGrabResultPtr second = world.Grab(20);
    EXPECT_EQ(ChunkWorld::Number(first->GetChunkDataNodeMap()), 10);
    EXPECT_EQ(ChunkWorld::Number(second->GetChunkDataNodeMap()), 20);
    const GenApi::NodeMapPtr kept = first->GetChunkDataNodeMap();
    first.Release();
    EXPECT_EQ(ChunkWorld::Number(kept), -1);
    second.Release();
    for (std::uint32_t number = 30; number < 34; ++number) {
        EXPECT_EQ(ChunkWorld::Number(world.Grab(number)->GetChunkDataNodeMap()), number);
        EXPECT_EQ(ChunkWorld::Number(kept), -1);
    }
    world.camera.StopGrabbing();
    world.camera.StartGrabbing();
    EXPECT_EQ(ChunkWorld::Number(world.Grab(40)->GetChunkDataNodeMap()), 40);
    EXPECT_EQ(world.state->chunkMapsMade, 3);
    // A camera that says it will send chunks has the maps before the first frame, once.
    world.camera.Close();
    world.state->description = FakeDescription("<Boolean Name=\"ChunkModeActive\"><Value>true</Value></Boolean>");
    for (int i = 0; i < 2; ++i) {
        world.camera.StartGrabbing();
        world.camera.StopGrabbing();
        EXPECT_EQ(world.state->chunkMapsMade, 5);
    }
}

TEST(Camera, SaysWhyThereAreNoChunks)
{
    ChunkWorld world;
    const auto why = [&](const std::function<void(SFrame&)>& change) -> std::string {
        const CGrabResultPtr result = world.Grab(change);
        for (int i = 0;; ++i) {
            try {
                result->GetChunkDataNodeMap();
                return "there are chunks";
            } catch (const GenICam::RuntimeException& refusal) {
                if (i == 1) return refusal.GetDescription();  // the second time as the first
            }
        }
    };
    const auto good = [](SFrame& frame) { AddChunk(frame, 8, 1); };
    world.camera.StartGrabbing();
    EXPECT_EQ(why({}), "Frame 1 carries no chunks.");
    EXPECT_THAT(why([&](SFrame& frame) {
                    good(frame);
                    --frame.payloadSize;
                }),
                HasSubstr("The chunks of frame 2 are damaged: "));
    EXPECT_EQ(why(good), "there are chunks");
    world.camera.Close();
    world.state->hasChunks = false;
    world.camera.StartGrabbing();
    EXPECT_THAT(why(good), HasSubstr("describes no chunks"));
    world.camera.StopGrabbing();
    world.Set("ChunkNodeMapsEnable", 0);
    world.camera.StartGrabbing();
    EXPECT_THAT(why(good), HasSubstr("ChunkNodeMapsEnable is off"));
}

// Only events call, not other changes of the node; each with its data, over closing and opening.
TEST(Camera, EventsReachTheHandlersOfTheirNodes)
{
    Log log;
    EventHandler handler;
    World world;
    handler.onEvent = [&](std::intptr_t id, GenApi::INode* node) {
        log.push_back(std::to_string(id) + " " + dynamic_cast<GenApi::IValue&>(*node).ToString().str());
        world.camera.GetNodeMap()->GetNode("EventData")->InvalidateNode();
    };
    handler.onLost = [&](std::intptr_t id, const GenApi::INode* node, std::uint64_t count) {
        log.push_back(std::to_string(count) + " lost for " + std::to_string(id) + " " + node->GetName().str());
    };
    const auto registerFor = [&](const char* node, std::intptr_t id) {
        world.camera.RegisterCameraEventHandler(&handler, node, id, ERegistrationMode::Append, ECleanup::None);
    };
    registerFor("EventData", 1);
    registerFor("OtherEventData", 2);
    registerFor("Nowhere", 3);
    registerFor("Gain", 4);
    EXPECT_THROW(registerFor("EventData", 5), GenICam::InvalidArgumentException);
    for (const int round : {0, 1}) {
        world.camera.Open();
        CIntegerParameter(world.camera.GetNodeMap(), "Gain").SetValue(5);
        EXPECT_TRUE(world.device->PushEvent(0xA001, 100));
        EXPECT_TRUE(world.device->PushEvent(0xA002, 200));
        EXPECT_TRUE(world.device->PushEvent(0xA003, 300));
        for (const std::uint64_t event : {0xA002U, 0xA003U})
            world.device->LoseEvents(event, 7);
        world.Set("GrabCameraEvents", 0);
        world.device->LoseEvents(0xA002, 8);
        EXPECT_TRUE(world.device->PushEvent(0xA001, 100));
        EXPECT_TRUE(world.device->PushEvent(0xA003, 300));
        world.Set("GrabCameraEvents", 1);
        EXPECT_THAT(std::exchange(log, {}), ElementsAre("1 100", "2 200", "7 lost for 2 OtherEventData"));
        EXPECT_EQ(world.camera.GetNumberOfUnknownEvents(), static_cast<std::uint64_t>(round + 1));
        world.camera.Close();
    }
    EXPECT_TRUE(world.camera.DeregisterCameraEventHandler(&handler, "EventData"));
    EXPECT_FALSE(world.camera.DeregisterCameraEventHandler(&handler, "EventData"));
    world.camera.Open();
    // What callbacks of nodes throw, whatever it is, keeps no handler from its event.
    world.camera.GetNodeMap()->GetNode("OtherEventData")->RegisterCallback([](GenApi::INode*) { throw 5; });
    world.device->PushEvent(0xA001, 1);
    world.device->PushEvent(0xA002, 2);
    EXPECT_THAT(log, ElementsAre("2 2"));
}

/// Counts itself, and what it is told of its registration.
struct Counted : CImageEventHandler
{
    explicit Counted(std::string& log, bool refuses = false) : log_(log), refuses_(refuses) {}
    ~Counted() override { log_ += "~"; }
    void OnImageGrabbed(CInstantCamera& camera, const CGrabResultPtr&) override
    {
        log_ += "i";
        if (leaves) camera.DeregisterImageEventHandler(this);
        if (fails) throw std::runtime_error("no pictures, please");
    }
    void OnImageEventHandlerRegistered(CInstantCamera&) override
    {
        log_ += "+";
        if (refuses_) throw std::runtime_error("not me");
    }
    void OnImageEventHandlerDeregistered(CInstantCamera&) override { log_ += "-"; }

    bool leaves = false;
    bool fails = false;

private:
    std::string& log_;
    bool refuses_;
};

TEST(Camera, HandlersComeAndGo)
{
    std::string log;
    World world;
    CInstantCamera& camera = world.camera;
    const auto add = [&](CImageEventHandler* handler, ERegistrationMode mode) {
        camera.RegisterImageEventHandler(handler, mode, ECleanup::Delete);
    };
    const auto push = [&] {
        world.device->PushFrame();
        EXPECT_TRUE(world.Take());
    };
    EXPECT_THROW(add(nullptr, ERegistrationMode::Append), GenICam::InvalidArgumentException);
    EXPECT_THROW(add(new Counted(log, true), ERegistrationMode::Append), std::runtime_error);
    EXPECT_EQ(std::exchange(log, {}), "+~");
    camera.StartGrabbing();
    auto* first = new Counted(log);
    add(first, ERegistrationMode::Append);
    EXPECT_THROW(add(first, ERegistrationMode::Append), GenICam::InvalidArgumentException);
    add(new Counted(log), ERegistrationMode::Append);
    push();
    EXPECT_EQ(std::exchange(log, {}), "++ii");
    add(first, ERegistrationMode::ReplaceAll);
    push();
    EXPECT_EQ(std::exchange(log, {}), "--~+i");
    // A handler's failure is told and costs nobody else the result; one may leave within its own call.
    Steps steps;
    steps.onStep = [&](const gcstring& step) { log += step.str(); };
    world.Register(steps);
    first->fails = first->leaves = true;
    add(new Counted(log), ERegistrationMode::Append);
    push();
    EXPECT_EQ(std::exchange(log, {}), "+i-OnGrabError no pictures, pleasei~");
    EXPECT_TRUE(camera.DeregisterConfiguration(&steps));
    camera.DetachDevice();
    EXPECT_EQ(std::exchange(log, {}), "");
}

// Whenever the cable is pulled, grabbing ends, it is told once, without the camera's lock, and closing works.
TEST(Camera, ARemovalEndsTheGrabbing)
{
    for (const std::string moment :
         {"idle", "grabbing", "StartStream", "StreamStarted", "write 0", "write 4", "StopStream", "write 16"})
    {
        SCOPED_TRACE(moment);
        int removals = 0;
        Steps steps;
        World world;
        steps.onStep = [&](const gcstring& step) {
            if (step != "OnCameraDeviceRemoved") return;
            ++removals;
            EXPECT_FALSE(world.camera.IsGrabbing());
        };
        world.Register(steps);
        world.camera.Open();
        const bool pulled = moment == "idle" || moment == "grabbing";
        if (!pulled)
            world.state->before = [&](const std::string& step) {
                if (step == moment && !world.device->IsRemoved()) world.device->Remove();
            };
        if (moment == "idle") world.device->Remove();
        if (moment == "StreamStarted") world.Set("AcquisitionStartStopExecutionEnable", 0);
        try {
            world.camera.StartGrabbing();
            world.device->PushFrame();
            CIntegerParameter(world.camera.GetNodeMap(), "Gain").SetValue(1);
        } catch (const GenICam::GenericException&) {
            EXPECT_TRUE(world.device->IsRemoved());
        }
        if (moment == "grabbing") world.device->Remove();
        EXPECT_EQ(world.camera.IsGrabbing(), !world.device->IsRemoved());
        EXPECT_NO_THROW(world.camera.StopGrabbing());
        world.state->before = [](const std::string&) {};
        world.device->Remove();  // a second time, which is not told
        EXPECT_FALSE(world.Take());
        EXPECT_EQ(removals, 1);
        EXPECT_TRUE(world.camera.IsCameraDeviceRemoved());
        EXPECT_THROW(world.camera.StartGrabbing(), GenICam::GenericException);
        EXPECT_NO_THROW(world.camera.Close());
        EXPECT_FALSE(world.state->isOpen);
        EXPECT_THROW(world.camera.Open(), GenICam::RuntimeException);
        world.camera.DetachDevice();
        EXPECT_FALSE(world.state->isAlive);
        EXPECT_FALSE(world.camera.IsCameraDeviceRemoved());
    }
}

// A feature that is not there says no, and raises when it is needed; one of another kind is not there.
TEST(Parameters, AnswerForFeaturesThatMayBeMissing)
{
    World world;
    world.camera.Open();
    const GenApi::NodeMapPtr map = world.camera.GetNodeMap();
    CIntegerParameter gain(map, "Gain");
    CIntegerParameter writeOnly(map, "StartReg");
    CIntegerParameter readOnly(map, "OtherEventData");
    EXPECT_TRUE(gain.IsValid() && gain.IsReadable() && gain.IsWritable() && gain.TrySetValue(3));
    EXPECT_EQ(gain.GetValueOrDefault(9), 3);
    EXPECT_EQ(writeOnly.GetValueOrDefault(9), 9);
    EXPECT_FALSE(readOnly.TrySetValue(1));
    EXPECT_THROW(readOnly.GetValue(), GenICam::AccessException);
    for (CEnumParameter parameter : {CEnumParameter(), CEnumParameter(nullptr, "Gain"),
                                     CEnumParameter(map, "Gain"), CEnumParameter(map, "Nowhere")})
    {
        EXPECT_FALSE(parameter.IsValid() || parameter.IsReadable() || parameter.IsWritable());
        EXPECT_FALSE(parameter.TrySetValue("a") || parameter.CanSetValue("a"));
        EXPECT_EQ(parameter.GetValueOrDefault("b"), "b");
        EXPECT_THROW(parameter.GetValue(), GenICam::AccessException);
    }
    // Gone is as good as missing.
    world.device->Remove();
    map->InvalidateNodes();
    EXPECT_EQ(gain.GetValueOrDefault(9), 9);
    EXPECT_FALSE(gain.TrySetValue(4) || CCommandParameter(map, "TriggerSoftware").TryExecute());
}

}  // namespace
