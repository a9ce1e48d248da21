// Cameras that fail, go away, come back, and are wanted by several.
#include <atomic>
#include <thread>

#include "sdk/emulation/world.h"

using namespace EmulationTest;
using GenICam::InvalidArgumentException;
using GenICam::LogicalErrorException;
using GenICam::RuntimeException;

namespace {

TEST(Faults, FailFrames)
{
    struct Row
    {
        const char* cause;
        std::uint32_t code;
        const char* text;
    };
    const Row rows[] = {
        {"PacketsLost", 0xE0000001, "The frame is incomplete: parts of it were lost on the way."},
        {"SensorOverrun", 0xE0000002, "The sensor delivered faster than the camera could send."},
        {"WithoutText", 0xE0000003, ""},
    };
    for (const Row& row : rows) {
        World world(fast + Settings{{"ChunkModeActive", "1"},
                                    {"FailedFramesEvery", "3"},
                                    {"FailedFramesCause", row.cause}});
        for (const auto& [frame, bytes] : world.Take(6)) {
            const bool failed = frame.blockId % 3 == 0;
            EXPECT_EQ(frame.isComplete, !failed) << row.cause;
            EXPECT_EQ(frame.errorCode, failed ? row.code : 0) << row.cause;
            EXPECT_STREQ(frame.errorDescription, failed ? row.text : "");
            EXPECT_EQ(frame.hasChunks, !failed);
            EXPECT_EQ(frame.width, 640U) << "a failed frame still tells what it was to be";
        }
        EXPECT_EQ(std::stoi(world.Statistic("StreamFailedFrameCount")),
                  std::stoi(world.Statistic("StreamDeliveredFrameCount")) / 3);
    }
}

TEST(Faults, LoseFrames)
{
    World world(fast + Settings{{"LostFramesEvery", "3"}, {"LostFramesNumber", "2"}});
    std::vector<std::uint64_t> numbers;
    for (const Taken& taken : world.Take(7))
        numbers.push_back(taken.frame.blockId);
    EXPECT_EQ(numbers, (std::vector<std::uint64_t>{1, 2, 3, 6, 7, 8, 11}));
    EXPECT_GE(std::stoi(world.Statistic("StreamLostFrameCount")), 4);
}

TEST(Faults, SlowTheCameraDown)
{
    const World world(Settings{{"RegisterAccessDelay", "30"}});
    const auto before = std::chrono::steady_clock::now();
    world.Value("DeviceTemperature");
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
    const auto reads = [&] { return Get(world.device->GetTLNodeMap(), "RegisterReadCount"); };
    const std::string readsBefore = reads();
    world.Value("RegisterAccessDelay");
    EXPECT_EQ(reads(), readsBefore) << "what is known is not asked for again";
}

void ExpectGone(World& world)
{
    EXPECT_TRUE(world.listener.WaitForRemoval());
    EXPECT_TRUE(world.device->IsRemoved());
    EXPECT_TRUE(world.device->IsOpen());
    for (const char* name : {"DeviceTemperature", "TimestampLatchValue"})
        ExpectFailure<RuntimeException>([&] { world.Value(name); },
                                        "Emulated Camera (0815-0000) is not connected any more.");
    ExpectFailure<RuntimeException>([&] { world.Apply({{"ExposureTime", "77"}}); }, "is not connected any more.");
    Sink sink;
    ExpectFailure<RuntimeException>([&] { world.device->StartStream(sink); }, "is not connected any more.");
    EXPECT_EQ(Get(world.device->GetTLNodeMap(), "ConnectionStatus"), "Lost");
    EXPECT_TRUE(world.backend.EnumerateDevices().empty());
    world.device->Close();
    EXPECT_FALSE(world.device->IsOpen());
    ExpectFailure<RuntimeException>([&] { world.device->Open(world.listener); }, "is not connected any more.");
    EXPECT_EQ(world.listener.Removals(), 1);
}

TEST(Faults, PullTheCable)
{
    const std::pair<const char*, std::function<void(World&)>> ways[] = {
        {"by hand", [](World& world) { world.backend.Unplug("0815-0000"); }},
        {"by command", [](World& world) { world.Execute("UnplugNow"); }},
        {"while streaming",
         [](World& world) {
             Sink sink;
             sink.GiveBuffersBackTo(*world.device);
             world.Start(sink);
             sink.WaitFor(3);
             world.backend.Unplug("0815-0000");
             world.backend.Unplug("0815-0000");
             EXPECT_TRUE(world.listener.WaitForRemoval());
             world.device->StopStream();
         }},
        {"while waiting for a frame",
         [](World& world) {
             world.Apply({{"TriggerMode", "On"}});
             Sink sink;
             world.Start(sink);
             world.backend.Unplug("0815-0000");
             EXPECT_TRUE(world.listener.WaitForRemoval());
             world.device->StopStream();
         }},
    };
    for (const auto& [what, pull] : ways) {
        SCOPED_TRACE(what);
        World world;
        pull(world);
        ExpectGone(world);
    }
}

TEST(Faults, PullTheCableAfterSomeFrames)
{
    Sink sink;
    World world(fast + Settings{{"UnplugAfterFrames", "5"}});
    sink.GiveBuffersBackTo(*world.device);
    world.Start(sink);
    EXPECT_TRUE(world.listener.WaitForRemoval());
    EXPECT_EQ(sink.WaitFor(5).size(), 5U) << "no frame comes behind the removal";
    world.device.reset();
    world.backend.Plug("0815-0000");
    world.device = world.backend.CreateDevice(world.backend.EnumerateDevices().at(0));
    world.device->Open(world.listener);
    EXPECT_EQ(world.Value("UnplugAfterFrames"), "0") << "once only";
    EXPECT_EQ(world.Value("AcquisitionFrameRateEnable"), "0") << "settings stay";
    EXPECT_EQ(world.Take(6).size(), 6U);
}

TEST(Faults, PutTheCableBackByThemselves)
{
    World world(Settings{{"ReplugDelay", "1"}});
    world.Execute("UnplugNow");
    while (world.backend.EnumerateDevices().empty())
        std::this_thread::yield();
    EXPECT_TRUE(world.device->IsRemoved()) << "the old object stays without its camera";
    EXPECT_FALSE(world.backend.IsDeviceAccessible(world.device->GetDeviceInfo()));
    world.device.reset();
    EXPECT_TRUE(world.backend.IsDeviceAccessible(world.backend.EnumerateDevices()[0]));
}

TEST(Cameras, AreToldApartAndReservedOneByOne)
{
    CEmulatedCameraBackend backend(3);
    const auto infos = backend.EnumerateDevices();
    ASSERT_EQ(infos.size(), 3U);
    EXPECT_EQ(infos[2].GetSerialNumber(), "0815-0002");
    EXPECT_EQ(infos[2].GetDeviceClass(), "Emulated");
    EXPECT_EQ(infos[2].GetFullName(), "Emulated Camera (0815-0002)");
    auto first = backend.CreateDevice(infos[1]);
    ASSERT_NE(first, nullptr);
    EXPECT_FALSE(backend.IsDeviceAccessible(infos[1]));
    EXPECT_EQ(backend.CreateDevice(infos[1]), nullptr);
    EXPECT_TRUE(backend.IsDeviceAccessible(infos[0]));
    first.reset();
    EXPECT_TRUE(backend.IsDeviceAccessible(infos[1]));

    backend.Unplug("0815-0001");
    EXPECT_EQ(backend.EnumerateDevices().size(), 2U);
    EXPECT_EQ(backend.CreateDevice(infos[1]), nullptr);
    backend.Plug("0815-0001");
    EXPECT_EQ(backend.EnumerateDevices().size(), 3U);
    EXPECT_EQ(backend.CreateDevice(CDeviceInfo()), nullptr);
    ExpectFailure<InvalidArgumentException>([&] { backend.Unplug("4711"); }, "serial number \"4711\"");
    ExpectFailure<InvalidArgumentException>([] { CEmulatedCameraBackend(65); }, "allowed are 0 to 64");
}

TEST(Cameras, OutliveTheBackEnd)
{
    Listener listener;
    std::vector<std::byte> buffer(640 * 480);
    Sink sink;
    auto backend = std::make_unique<CEmulatedCameraBackend>(1);
    const auto device = backend->CreateDevice(backend->EnumerateDevices().at(0));
    device->Open(listener);
    ExpectFailure<LogicalErrorException>([&] { device->Open(listener); }, "already open");
    backend.reset();
    device->StartStream(sink);
    device->QueueBuffer({buffer.data(), buffer.size(), 0});
    Set(device->GetNodeMap(), "AcquisitionStart", "1");
    EXPECT_EQ(sink.WaitFor(1).size(), 1U);
    // A map that somebody kept has no camera behind it any more.
    const auto map = device->GetNodeMap();
    device->Close();
    EXPECT_THROW(Get(map, "DeviceTemperature"), GenICam::GenericException);
}

// Readers, writers and a stream on one camera while its cable is pulled: nobody hangs, nobody crashes.
TEST(Cameras, MayGoWhileAllAreBusy)
{
    for (int round = 0; round < 5; ++round) {
        World world(fast + Settings{{"Width", "64"}, {"Height", "64"}});
        Sink sink(10);
        sink.GiveBuffersBackTo(*world.device);
        world.Start(sink);
        std::atomic<int> failures{0};
        const auto untilGone = [&](const std::function<void()>& access) {
            for (;;) {
                try {
                    access();
                } catch (const RuntimeException&) {
                    ++failures;
                    return;
                }
            }
        };
        std::thread reader([&] { untilGone([&] { world.Value("DeviceTemperature"); }); });
        std::thread writer([&] {
            untilGone([&] { world.Apply({{"Gain", "1"}, {"EmulatedTemperature", "20"}}); });
        });
        sink.WaitFor(20);
        world.backend.Unplug("0815-0000");
        reader.join();
        writer.join();
        EXPECT_EQ(failures, 2);
        EXPECT_TRUE(world.listener.WaitForRemoval());
        world.device->Close();
        EXPECT_EQ(world.listener.Removals(), 1);
    }
}

}  // namespace
