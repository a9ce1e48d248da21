// What a frame of the emulated camera costs, and how many come in a second, at full speed: through the instant
// camera to an empty image handler, and to a bare sink on the camera's own thread. The ratio is the processor time
// of all threads to that of making the same frames in a plain loop into as many buffers; both are measured in
// turns.

#include <benchmark/benchmark.h>
#include <time.h>

#include <chrono>
#include <future>
#include <vector>

#include "base/emulation/emulatedbackend.h"
#include "base/emulation/framemaker.h"
#include "base/instantcamera.h"
#include "base/parameters.h"

namespace {

using namespace Nivex;
using Clock = std::chrono::steady_clock;

constexpr std::size_t bufferCount = 10;

struct Size
{
    std::uint32_t width;
    std::uint32_t height;
    std::size_t frames;  // in a run; so many that those made beyond the last one asked for count little
};

constexpr Size sizes[] = {{640, 480, 20000}, {4096, 3000, 500}};

/// Processor time of all threads, in us.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// Ends a promise with the last of some images.
class Counter : public CImageEventHandler
{
public:
    explicit Counter(std::size_t frames) : left_(frames) {}
    void OnImageGrabbed(CInstantCamera&, const CGrabResultPtr&) override
    {
        if (--left_ == 0) done.set_value();
    }

    std::promise<void> done;

private:
    std::size_t left_;
};

/// Makes the frames that the camera makes.
class PlainLoop
{
public:
    explicit PlainLoop(const Size& size)
    {
        settings_.pictures[0] = Emulation::PictureSettings{};
        Emulation::PictureSettings& picture = *settings_.pictures[0];
        picture.width = size.width;
        picture.height = size.height;
        picture.exposure = 10000;
        maker_.Prepare(settings_);
        buffers_.assign(bufferCount, std::vector<std::byte>(std::size_t{size.width} * size.height));
    }

    void Make(std::size_t frames)
    {
        for (std::size_t i = 0; i < frames; ++i) {
            std::vector<std::byte>& buffer = buffers_[i % bufferCount];
            benchmark::DoNotOptimize(maker_.Make({buffer.data(), buffer.size(), i}, {i + 1, 0}));
        }
    }

private:
    Emulation::FrameSettings settings_;
    Emulation::FrameMaker maker_;
    std::vector<std::vector<std::byte>> buffers_;
};

void grab(CInstantCamera& camera, std::size_t frames)
{
    Counter counter(frames);
    camera.RegisterImageEventHandler(&counter, ERegistrationMode::ReplaceAll, ECleanup::None);
    camera.StartGrabbing(frames, EGrabStrategy::OneByOne, EGrabLoop::ProvidedByInstantCamera);
    counter.done.get_future().wait();
    camera.WaitForGrabLoop();
    camera.DeregisterImageEventHandler(&counter);
}

void setUp(const GenApi::NodeMapPtr& map, const Size& size)
{
    CBooleanParameter(map, "AcquisitionFrameRateEnable").SetValue(false);
    CIntegerParameter(map, "Width").SetValue(size.width);
    CIntegerParameter(map, "Height").SetValue(size.height);
}

/// Measures `take`, which takes so many frames, against the plain loop.
template <typename Take>
void compare(benchmark::State& state, const Size& size, Take&& take)
{
    PlainLoop loop(size);
    take(bufferCount);
    loop.Make(bufferCount);
    double cameraTime = 0;
    double loopTime = 0;
    double seconds = 0;
    std::size_t frames = 0;
    for (auto _ : state) {
        const double before = processorTime();
        loop.Make(size.frames);
        const double between = processorTime();
        const auto start = Clock::now();
        take(size.frames);
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
        cameraTime += processorTime() - between;
        loopTime += between - before;
        frames += size.frames;
    }
    const auto count = static_cast<double>(frames);
    state.counters["frames/s"] = count / seconds;
    state.counters["us/frame"] = cameraTime / count;
    state.counters["loop us/frame"] = loopTime / count;
    state.counters["ratio"] = cameraTime / loopTime;
    state.SetLabel(std::to_string(size.width) + "x" + std::to_string(size.height) +
                   " Mono8; ratio: CPU time to that of a plain loop");
}

void EmulatedCameraToEmptyHandler(benchmark::State& state)
{
    const Size& size = sizes[state.range(0)];
    CEmulatedCameraBackend backend(1);
    CInstantCamera camera;
    camera.Attach(backend.CreateDevice(backend.EnumerateDevices().at(0)).release());
    camera.Open();
    setUp(camera.GetNodeMap(), size);
    CIntegerParameter(camera.GetInstantCameraNodeMap(), "MaxNumBuffer").SetValue(bufferCount);
    compare(state, size, [&](std::size_t frames) { grab(camera, frames); });
}
BENCHMARK(EmulatedCameraToEmptyHandler)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Gives buffers back at once, and ends a promise with the last of some frames.
class BareSink : public IStreamSink
{
public:
    BareSink(INivexDevice& device, std::size_t frames) : device_(device), left_(frames) {}
    void OnFrame(const SFrame& frame) noexcept override
    {
        if (left_ == 0) return;
        if (--left_ == 0)
            done.set_value();
        else
            device_.QueueBuffer(frame.buffer);
    }

    std::promise<void> done;

private:
    INivexDevice& device_;
    std::size_t left_;
};

class NoListener : public IDeviceListener
{
    void OnDeviceEvent(std::uint64_t, const std::uint8_t*, std::size_t) noexcept override {}
    void OnDeviceEventsLost(std::uint64_t, std::uint64_t) noexcept override {}
    void OnDeviceRemoved() noexcept override {}
};

void EmulatedCameraToBareSink(benchmark::State& state)
{
    const Size& size = sizes[state.range(0)];
    NoListener listener;
    CEmulatedCameraBackend backend(1);
    const auto device = backend.CreateDevice(backend.EnumerateDevices().at(0));
    device->Open(listener);
    setUp(device->GetNodeMap(), size);
    std::vector<std::vector<std::byte>> buffers(bufferCount, std::vector<std::byte>(device->GetPayloadSize()));
    compare(state, size, [&](std::size_t frames) {
        BareSink sink(*device, frames);
        device->StartStream(sink);
        for (std::vector<std::byte>& buffer : buffers)
            device->QueueBuffer({buffer.data(), buffer.size(), 0});
        CCommandParameter(device->GetNodeMap(), "AcquisitionStart").Execute();
        sink.done.get_future().wait();
        CCommandParameter(device->GetNodeMap(), "AcquisitionStop").Execute();
        device->StopStream();
    });
}
BENCHMARK(EmulatedCameraToBareSink)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
