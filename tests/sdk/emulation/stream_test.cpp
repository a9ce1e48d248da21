// When frames are taken and which of them arrive: modes, rates, triggers, buffers.
#include <thread>

#include "base/emulation/pacer.h"

#include "sdk/emulation/world.h"

using namespace EmulationTest;
using GenICam::RuntimeException;

namespace {

std::vector<std::uint64_t> Numbers(const std::vector<Taken>& taken)
{
    std::vector<std::uint64_t> numbers;
    for (const Taken& t : taken)
        numbers.push_back(t.frame.blockId);
    return numbers;
}

TEST(Stream, EndsByItselfInTheFiniteModes)
{
    const std::pair<Settings, std::size_t> rows[] = {
        {{{"AcquisitionMode", "SingleFrame"}}, 1},
        {{{"AcquisitionMode", "MultiFrame"}, {"AcquisitionFrameCount", "5"}}, 5},
    };
    for (const auto& [settings, count] : rows) {
        World world(fast + settings);
        Sink sink;
        sink.GiveBuffersBackTo(*world.device);
        world.Start(sink);
        sink.WaitFor(count);
        world.Execute("AcquisitionStart");
        // The frames of the second start follow those of the first without more between.
        const auto taken = sink.WaitFor(2 * count);
        world.device->StopStream();
        EXPECT_EQ(world.Statistic("StreamDeliveredFrameCount"), std::to_string(2 * count));
        EXPECT_EQ(taken.back().frame.blockId, 2 * count);
    }
}

TEST(Stream, TellsWhatAFrameIs)
{
    World world(fast);
    world.Apply(
        {{"Width", "31"}, {"Height", "21"}, {"OffsetX", "3"}, {"OffsetY", "5"}, {"PixelFormat", "Mono12p"}});
    const SFrame frame = world.Take(3).back().frame;
    EXPECT_TRUE(frame.isComplete);
    EXPECT_EQ(frame.errorCode, 0U);
    EXPECT_EQ(frame.payloadType, EPayloadType::Image);
    EXPECT_EQ(frame.pixelType, EPixelType::Mono12p);
    EXPECT_EQ(frame.width, 31U);
    EXPECT_EQ(frame.height, 21U);
    EXPECT_EQ(frame.offsetX, 3U);
    EXPECT_EQ(frame.offsetY, 5U);
    EXPECT_EQ(frame.imageSize, 47U * 21);
    EXPECT_EQ(frame.payloadSize, frame.imageSize);
    EXPECT_EQ(frame.blockId, 3U);
    EXPECT_EQ(frame.componentCount, 0U);
    EXPECT_FALSE(frame.hasChunks);
    EXPECT_EQ(frame.buffer.context, 7U);
}

TEST(Stream, KeepsTheFrameRateByItsClock)
{
    World world({{"AcquisitionFrameRate", "300"}, {"ExposureTime", "100"}});
    const auto taken = world.Take(40);
    // 40 periods of 3333333.33 ns: whole numbers of them after the first frame, whatever the threads did.
    const std::uint64_t first = taken[0].frame.timestamp;
    const std::uint64_t firstNumber = taken[0].frame.blockId;
    for (const Taken& t : taken)
        EXPECT_NEAR(static_cast<double>(t.frame.timestamp - first),
                    static_cast<double>(t.frame.blockId - firstNumber) * 1e9 / 300, 1);
}

TEST(Stream, PacesByTable)
{
    using Clock = Emulation::Pacer::Clock;
    using Terms = Emulation::Pacer::Terms;
    using std::chrono::milliseconds;
    struct Row
    {
        const char* what;
        std::optional<double> rate;
        int exposure;  // ms
        bool triggered;
        std::vector<int> now;       // ms
        std::vector<int> expected;  // ms
    };
    const Row rows[] = {
        {"no rate: at once", {}, 50, false, {0, 1, 7}, {0, 1, 7}},
        {"a rate: whole periods, however late", 100, 1, false, {0, 3, 45, 46, 47}, {0, 10, 20, 30, 40}},
        {"exposure longer than the period", 100, 25, false, {0, 1, 2}, {0, 25, 50}},
        {"triggers: not before the period is over", 100, 1, true, {0, 3, 50, 51}, {0, 10, 50, 60}},
    };
    for (const Row& row : rows) {
        Emulation::Pacer pacer;
        const Clock::time_point zero = Clock::now();
        const Terms terms{row.rate, milliseconds(row.exposure), row.triggered};
        for (std::size_t i = 0; i < row.now.size(); ++i) {
            const Clock::time_point start = pacer.Next(zero + milliseconds(row.now[i]), terms);
            EXPECT_EQ(start - zero, milliseconds(row.expected[i])) << row.what << ", " << i;
            pacer.Take(start, terms);
        }
    }
    Emulation::Pacer pacer;
    const Clock::time_point zero = Clock::now();
    pacer.Take(zero, {0.01, {}, false});
    EXPECT_EQ(pacer.Next(zero, {0.01, {}, false}) - zero, milliseconds(100000));
    EXPECT_EQ(pacer.Next(zero, {50, {}, false}) - zero, milliseconds(20))
        << "a new rate counts from the last frame";
    pacer.Restart();
    EXPECT_EQ(pacer.Next(zero, {50, {}, false}), zero);
}

TEST(Stream, FollowsANewRateWhileItWaits)
{
    Sink sink;
    World world({{"AcquisitionFrameRate", "0.01"}, {"ExposureTime", "10"}});
    sink.GiveBuffersBackTo(*world.device);
    world.Start(sink);
    sink.WaitFor(1);
    world.Apply({{"AcquisitionFrameRate", "1000"}});
    sink.WaitFor(5);
    world.device->StopStream();
}

TEST(Stream, WaitsForTriggers)
{
    Sink sink;
    World world(fast + Settings{{"TriggerMode", "On"}});
    sink.GiveBuffersBackTo(*world.device);
    world.Start(sink);
    for (int i = 0; i < 10; ++i)
        world.Execute("TriggerSoftware");
    sink.WaitFor(10);
    EXPECT_EQ(world.Statistic("StreamDeliveredFrameCount"), "10");
    // The mode can be left at any time, also while a trigger is waited for.
    world.Apply({{"TriggerMode", "Off"}});
    sink.WaitFor(12);
    world.device->StopStream();
}

TEST(Stream, EndsWhileATriggerOrAnExposureIsWaitedFor)
{
    for (const Settings& settings :
         {Settings{{"TriggerMode", "On"}, {"TriggerSource", "Line1"}}, Settings{{"ExposureTime", "10000000"}},
          Settings{{"AcquisitionFrameRate", "0.01"}}})
    {
        World world(settings);
        Sink sink;
        world.Start(sink);
        world.device->StopStream();
        EXPECT_FALSE(world.device->IsRemoved());
    }
}

TEST(Stream, LosesFramesWithoutBuffers)
{
    Sink sink;
    World world({{"AcquisitionFrameRate", "2000"}, {"ExposureTime", "10"}});
    world.Start(sink, 2);
    sink.WaitFor(2);
    while (Number(world.device->GetStreamGrabberNodeMap(), "StreamLostFrameCount") < 3)
        std::this_thread::yield();
    world.device->QueueBuffer({world.buffers[0].data(), world.buffers[0].size(), 0});
    const auto numbers = Numbers(sink.WaitFor(3));
    EXPECT_EQ(numbers[1], 2U);
    EXPECT_GE(numbers[2], 6U) << "the numbers of the lost ones are missing";
    world.device->StopStream();
}

TEST(Stream, FailsWhatDoesNotFitItsBuffer)
{
    Sink sink;
    World world(fast);
    world.Start(sink, 1, 1);
    const SFrame frame = sink.WaitFor(1)[0].frame;
    EXPECT_FALSE(frame.isComplete);
    EXPECT_NE(frame.errorCode, 0U);
    EXPECT_STREQ(frame.errorDescription, "The buffer is too small for the frame.");
    EXPECT_EQ(frame.payloadSize, 0U);
}

TEST(Stream, StartsAgainFromOne)
{
    World world(fast);
    EXPECT_EQ(Numbers(world.Take(3)), (std::vector<std::uint64_t>{1, 2, 3}));
    EXPECT_EQ(Numbers(world.Take(2)), (std::vector<std::uint64_t>{1, 2}));
    Sink sink;
    world.Start(sink);
    ExpectFailure<RuntimeException>([&] { world.device->StartStream(sink); }, "streaming already");
    world.device->Close();
    ExpectFailure<RuntimeException>([&] { world.device->StartStream(sink); }, "is not open");
    EXPECT_EQ(world.device->GetStreamGrabberNodeMap(), nullptr);
}

}  // namespace
