// What comes with frames and beside them: chunks, components, events.
#include "sdk/emulation/world.h"

using namespace EmulationTest;
using ByteOrder = GenApi::CChunkAdapter::ByteOrder;

namespace {

std::uint64_t WordAt(const std::vector<std::uint8_t>& data, std::size_t index)
{
    std::uint64_t word = 0;
    std::memcpy(&word, data.data() + 8 * index, sizeof(word));
    return word;
}

const std::uint8_t* Bytes(const Taken& taken)
{
    return reinterpret_cast<const std::uint8_t*>(taken.bytes.data());
}

bool HasWholeChunks(const Taken& taken)
{
    return GenApi::CChunkAdapter::CheckBufferLayout(Bytes(taken), taken.frame.payloadSize,
                                                    ByteOrder::LittleEndian);
}

void Enable(const World& world, const char* selector, const char* feature, const char* entry, bool on)
{
    world.Apply({{selector, entry}, {feature, on ? "1" : "0"}});
}

TEST(Chunks, TellWhatTheFrameWas)
{
    World world(fast + Settings{{"ChunkModeActive", "1"},
                                {"Width", "101"},
                                {"Height", "33"},
                                {"OffsetX", "5"},
                                {"OffsetY", "6"},
                                {"PixelFormat", "Mono10p"},
                                {"ExposureTime", "1234.5"},
                                {"GainSelector", "Green"},
                                {"Gain", "2.5"}});
    const auto map = world.device->CreateChunkNodeMap();
    GenApi::CChunkAdapter adapter(*map);
    EXPECT_EQ(world.device->GetTrailerByteOrder(), ETrailerByteOrder::LittleEndian);
    for (const Taken& taken : world.Take(3)) {
        EXPECT_EQ(taken.frame.payloadType, EPayloadType::ChunkData);
        EXPECT_TRUE(taken.frame.hasChunks);
        EXPECT_EQ(taken.frame.imageSize, 127U * 33);
        ASSERT_EQ(taken.frame.payloadSize, world.device->GetPayloadSize());
        adapter.AttachBuffer(Bytes(taken), taken.frame.payloadSize, ByteOrder::LittleEndian);
        const Settings expected = {{"ChunkTimestamp", std::to_string(taken.frame.timestamp)},
                                   {"ChunkFrameID", std::to_string(taken.frame.blockId)},
                                   {"ChunkLineStatusAll", std::to_string(taken.frame.blockId % 16)},
                                   {"ChunkExposureTime", "1234.5"},
                                   {"ChunkWidth", "101"},
                                   {"ChunkHeight", "33"},
                                   {"ChunkOffsetX", "5"},
                                   {"ChunkOffsetY", "6"},
                                   {"ChunkPixelFormat", "Mono10p"}};
        for (const auto& [name, value] : expected)
            EXPECT_EQ(Get(map, name), value) << name;
        Set(map, "ChunkGainSelector", "Green");
        EXPECT_EQ(Get(map, "ChunkGain"), "2.5");
        Set(map, "ChunkGainSelector", "All");
        EXPECT_EQ(Get(map, "ChunkGain"), "0");
    }
    // The camera's own map has the same features, for programs that attach to it.
    GenApi::CChunkAdapter ownAdapter(*world.device->GetNodeMap());
    const Taken last = world.Take(4).back();
    ownAdapter.AttachBuffer(Bytes(last), last.frame.payloadSize, ByteOrder::LittleEndian);
    EXPECT_EQ(world.Value("ChunkFrameID"), "4");
}

TEST(Chunks, ComeOnlyIfEnabled)
{
    World world(fast + Settings{{"ChunkModeActive", "1"}});
    Enable(world, "ChunkSelector", "ChunkEnable", "FrameID", false);
    const auto map = world.device->CreateChunkNodeMap();
    GenApi::CChunkAdapter adapter(*map);
    const Taken taken = world.Take(1)[0];
    adapter.AttachBuffer(Bytes(taken), taken.frame.payloadSize, ByteOrder::LittleEndian);
    EXPECT_EQ(map->GetNode("ChunkFrameID")->GetAccessMode(), GenApi::NA);
    EXPECT_EQ(map->GetNode("ChunkTimestamp")->GetAccessMode(), GenApi::RO);
    world.Apply({{"ChunkModeActive", "0"}});
    EXPECT_FALSE(world.Take(1)[0].frame.hasChunks);
}

TEST(Chunks, AreDamagedOnDemand)
{
    World world(fast + Settings{{"ChunkModeActive", "1"}, {"DamagedChunksEvery", "3"}});
    for (const Taken& taken : world.Take(7)) {
        EXPECT_TRUE(taken.frame.isComplete);
        EXPECT_EQ(HasWholeChunks(taken), taken.frame.blockId % 3 != 0) << taken.frame.blockId;
    }
}

TEST(Components, LieOneBehindTheOther)
{
    World world(fast +
                Settings{{"Width", "64"}, {"Height", "16"}, {"PixelFormat", "RGB8"}, {"ChunkModeActive", "1"}});
    for (const char* component : {"Range", "Confidence", "ProcessedIntensity"})
        Enable(world, "ComponentSelector", "ComponentEnable", component, true);
    const Taken taken = world.Take(2).back();
    const SFrame& frame = taken.frame;
    EXPECT_EQ(frame.payloadType, EPayloadType::MultiComponent);
    EXPECT_TRUE(frame.hasChunks);
    EXPECT_TRUE(HasWholeChunks(taken)) << "all components together are the first chunk";
    struct Row
    {
        EComponentType type;
        EPixelType pixelType;
        std::size_t size;
    };
    const Row rows[] = {{EComponentType::Intensity, EPixelType::RGB8Packed, 64 * 16 * 3},
                        {EComponentType::Range, EPixelType::Mono16, 64 * 16 * 2},
                        {EComponentType::Confidence, EPixelType::Mono8, 64 * 16},
                        {EComponentType::ProcessedIntensity, EPixelType::Mono8, 64 * 16}};
    ASSERT_EQ(frame.componentCount, std::size(rows));
    std::size_t offset = 0;
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const SFrameComponent& component = frame.components[i];
        EXPECT_EQ(component.type, rows[i].type) << i;
        EXPECT_EQ(component.pixelType, rows[i].pixelType) << i;
        EXPECT_EQ(component.width, 64U);
        EXPECT_EQ(component.offset, offset) << i;
        EXPECT_EQ(component.size, rows[i].size) << i;
        offset += component.size;
    }
    // Distances slope from the upper left on, in steps of 257, and have moved by two rows.
    std::uint16_t range[2];
    std::memcpy(range, taken.bytes.data() + frame.components[1].offset, sizeof(range));
    EXPECT_EQ(range[0], 2 * 257);
    EXPECT_EQ(range[1], 3 * 257);
}

TEST(Components, OtherThanThePictureAloneAreAListOfOne)
{
    World world(fast);
    Enable(world, "ComponentSelector", "ComponentEnable", "Intensity", false);
    Enable(world, "ComponentSelector", "ComponentEnable", "Range", true);
    const SFrame frame = world.Take(1)[0].frame;
    EXPECT_EQ(frame.payloadType, EPayloadType::MultiComponent);
    EXPECT_EQ(frame.componentCount, 1U);
    EXPECT_EQ(frame.pixelType, EPixelType::Mono16);
}

TEST(Events, OfFramesComeInOrderWithTheirNumbers)
{
    World world({{"AcquisitionFrameRate", "500"},
                 {"ExposureTime", "700"},
                 {"AcquisitionMode", "MultiFrame"},
                 {"AcquisitionFrameCount", "5"}});
    for (const char* event : {"FrameStart", "ExposureEnd"})
        world.Apply({{"EventSelector", event}, {"EventNotification", "On"}});
    const auto map = world.device->GetNodeMap();
    Sink sink;
    world.Start(sink, 5);
    const auto taken = sink.WaitFor(5);
    const auto events = world.listener.WaitForEvents(10);
    world.device->StopStream();
    ASSERT_EQ(events.size(), 10U);
    GenApi::CEventAdapter adapter(*map);
    for (std::size_t i = 0; i < events.size(); ++i) {
        const std::string name = i % 2 == 0 ? "EventFrameStart" : "EventExposureEnd";
        EXPECT_EQ(events[i].id, static_cast<std::uint64_t>(Number(map, name))) << i;
        EXPECT_GT(adapter.DeliverEvent(events[i].id, events[i].data.data(), events[i].data.size()), 0U);
        const SFrame& frame = taken[i / 2].frame;
        EXPECT_EQ(Number(map, name + "FrameID"), static_cast<std::int64_t>(frame.blockId));
        EXPECT_EQ(Number(map, name + "Timestamp"),
                  static_cast<std::int64_t>(frame.timestamp + (i % 2 == 0 ? 0 : 700'000)));
    }
}

TEST(Events, OnRequest)
{
    World world;
    const auto map = world.device->GetNodeMap();
    GenApi::CEventAdapter adapter(*map);
    world.Execute("TestEventGenerate");  // not asked for yet: does not come
    for (const char* event : {"Test", "OverTemperature", "FrameTriggerMissed"})
        world.Apply({{"EventSelector", event}, {"EventNotification", "On"}});
    world.Execute("UnknownEventGenerate");
    world.Apply({{"EmulatedTemperature", "84"}, {"EmulatedTemperature", "85"}, {"EmulatedTemperature", "90"}});
    EXPECT_EQ(world.Value("DeviceTemperature"), "90");
    world.Execute("TestEventGenerate");
    const auto events = world.listener.WaitForEvents(3);
    ASSERT_EQ(events.size(), 3U);
    const auto nodesOf = [&](const Event& event) {
        return adapter.DeliverEvent(event.id, event.data.data(), event.data.size());
    };
    EXPECT_EQ(nodesOf(events[0]), 0U) << "an event that no feature knows";
    EXPECT_EQ(events[1].id, static_cast<std::uint64_t>(Number(map, "EventOverTemperature")));
    EXPECT_EQ(events[2].id, static_cast<std::uint64_t>(Number(map, "EventTest")));
    EXPECT_EQ(map->GetNode("EventTestTimestamp")->GetAccessMode(), GenApi::NA);
    EXPECT_GT(nodesOf(events[2]), 0U);
    EXPECT_EQ(Number(map, "EventTestTimestamp"), static_cast<std::int64_t>(WordAt(events[2].data, 0)));

    // Nobody can take frames: the triggers wait, until there are too many.
    world.Apply({{"TriggerMode", "On"}, {"ExposureTime", "10000000"}});
    Sink sink;
    world.Start(sink, 0);
    for (int i = 0; i < 300; ++i)
        world.Execute("TriggerSoftware");
    const auto missed = world.listener.WaitForEvents(3 + 40);
    EXPECT_EQ(missed.back().id, static_cast<std::uint64_t>(Number(map, "EventFrameTriggerMissed")));
}

// A listener that does not come to an end makes the queue run over; each event is delivered or told as lost.
TEST(Events, AreDroppedAndToldWhenTooManyWait)
{
    struct : Listener
    {
        void OnDeviceEvent(std::uint64_t id, const std::uint8_t* data, std::size_t size) noexcept override
        {
            {
                std::unique_lock lock(mutex);
                released.wait(lock, [this] { return isReleased; });
            }
            Listener::OnDeviceEvent(id, data, size);
        }
        std::mutex mutex;
        std::condition_variable released;
        bool isReleased = false;
    } blocked;
    CEmulatedCameraBackend backend(1);
    const auto device = backend.CreateDevice(backend.EnumerateDevices().at(0));
    device->Open(blocked);
    const auto map = device->GetNodeMap();
    Set(map, "EventSelector", "Test");
    Set(map, "EventNotification", "On");
    for (int i = 0; i < 600; ++i)
        for (const char* event : {"TestEventGenerate", "UnknownEventGenerate"})
            Set(map, event, "1");
    const std::int64_t lost = Number(device->GetTLNodeMap(), "EventLostCount");
    EXPECT_GE(lost, 199);
    EXPECT_LE(lost, 200) << "one is being delivered, 1000 wait";
    {
        const std::lock_guard lock(blocked.mutex);
        blocked.isReleased = true;
    }
    blocked.released.notify_all();
    device->FlushEvents();
    std::map<std::uint64_t, std::uint64_t> counts = blocked.LostEvents();
    ASSERT_EQ(counts.size(), 2U);
    for (const auto& [id, count] : counts)
        EXPECT_GE(count, 99U) << id;
    for (const Event& event : blocked.WaitForEvents(0))
        ++counts[event.id];
    for (const auto& [id, count] : counts)
        EXPECT_EQ(count, 600U) << id;

    // What was pulled or closed has nothing to wait for.
    Set(map, "UnplugNow", "1");
    ASSERT_TRUE(blocked.WaitForRemoval());
    device->FlushEvents();
    device->Close();
    device->FlushEvents();
}

}  // namespace
