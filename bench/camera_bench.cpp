// What the way of a frame costs, from a device that does no work to an empty image handler on the camera's thread.
// The ratio is to handing a number to another thread through a queue with a mutex and a condition variable, the
// least that changing threads costs; both are measured in turns, as the machine's mood counts more than either.
// Heap allocations are counted over all threads, the start of grabbing included.

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <future>
#include <mutex>
#include <new>
#include <thread>

#include "genapi/nodemapfactory.h"

#include "base/instantcamera.h"

namespace {

std::atomic<std::size_t> allocations = 0;

}  // namespace

// Not inlined, or the compiler takes malloc and delete for a pair that does not belong together.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

using namespace Nivex;
using Clock = std::chrono::steady_clock;

constexpr std::size_t framesPerRun = 100000;

double nsSince(Clock::time_point start, std::size_t count)
{
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / static_cast<double>(count);
}

/// Sends as many frames as it is told to, each as soon as there is a buffer, and writes nothing into them.
class IdleDevice : public INivexDevice
{
public:
    ~IdleDevice() override { StopStream(); }

    const CDeviceInfo& GetDeviceInfo() const override { return info_; }
    void Open(IDeviceListener&) override { isOpen_ = true; }
    void Close() noexcept override { StopStream(); }
    bool IsOpen() const override { return isOpen_; }
    bool IsRemoved() const override { return false; }
    GenApi::NodeMapPtr GetNodeMap() const override { return map_; }
    GenApi::NodeMapPtr GetTLNodeMap() const override { return map_; }
    GenApi::NodeMapPtr GetStreamGrabberNodeMap() const override { return map_; }
    GenApi::NodeMapPtr CreateChunkNodeMap() const override { return nullptr; }
    ETrailerByteOrder GetTrailerByteOrder() const override { return ETrailerByteOrder::LittleEndian; }
    std::size_t GetPayloadSize() const override { return 640 * 480; }

    void StartStream(IStreamSink& sink) override
    {
        taken_ = put_ = 0;
        ends_ = false;
        thread_ = std::thread([this, &sink] { Run(sink); });
    }
    void StopStream() noexcept override
    {
        if (!thread_.joinable()) return;
        {
            const std::lock_guard lock(mutex_);
            ends_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }
    void QueueBuffer(const SStreamBuffer& buffer) override
    {
        {
            const std::lock_guard lock(mutex_);
            queued_[put_++ % queued_.size()] = buffer;
        }
        wake_.notify_one();
    }

private:
    void Run(IStreamSink& sink)
    {
        SFrame frame{.buffer = {},
                     .isComplete = true,
                     .payloadType = EPayloadType::Image,
                     .pixelType = EPixelType::Mono8,
                     .width = 640,
                     .height = 480,
                     .imageSize = 640 * 480,
                     .payloadSize = 640 * 480};
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [this] { return ends_ || taken_ != put_; });
                if (ends_) return;
                frame.buffer = queued_[taken_++ % queued_.size()];
            }
            ++frame.blockId;
            sink.OnFrame(frame);
        }
    }

    CDeviceInfo info_;
    bool isOpen_ = false;
    const GenApi::NodeMapPtr map_ = GenApi::CNodeMapFactory::CreateEmptyNodeMap();
    std::mutex mutex_;
    std::condition_variable wake_;
    std::array<SStreamBuffer, 64> queued_;  ///< More than there are buffers.
    std::size_t taken_ = 0;
    std::size_t put_ = 0;
    bool ends_ = false;
    std::thread thread_;
};

/// A queue of at most ten numbers between two threads.
double handOverNs()
{
    constexpr std::size_t depth = 10;
    std::mutex mutex;
    std::condition_variable filled;
    std::condition_variable emptied;
    std::deque<std::size_t> queue;
    std::size_t sum = 0;
    const auto start = Clock::now();
    std::thread taker([&] {
        for (std::size_t i = 0; i < framesPerRun; ++i) {
            std::unique_lock lock(mutex);
            filled.wait(lock, [&] { return !queue.empty(); });
            sum += queue.front();
            queue.pop_front();
            lock.unlock();
            emptied.notify_one();
        }
    });
    for (std::size_t i = 0; i < framesPerRun; ++i) {
        {
            std::unique_lock lock(mutex);
            emptied.wait(lock, [&] { return queue.size() < depth; });
            queue.push_back(i);
        }
        filled.notify_one();
    }
    taker.join();
    benchmark::DoNotOptimize(sum);
    return nsSince(start, framesPerRun);
}

/// Does nothing, and tells when it has done it often enough.
class EmptyHandler : public CImageEventHandler
{
public:
    void OnImageGrabbed(CInstantCamera&, const CGrabResultPtr&) override
    {
        if (++count_ == framesPerRun) done_.set_value();
    }
    void Restart()
    {
        count_ = 0;
        done_ = {};
    }
    void Wait() { done_.get_future().wait(); }

private:
    std::size_t count_ = 0;
    std::promise<void> done_;
};

void fetchAll(CInstantCamera& camera)
{
    CGrabResultPtr result;
    while (camera.RetrieveResult(std::chrono::minutes(1), result))
        result.Release();
}

double cameraNs(CInstantCamera& camera, EmptyHandler& handler, EGrabStrategy strategy, EGrabLoop loop)
{
    handler.Restart();
    const auto start = Clock::now();
    camera.StartGrabbing(framesPerRun, strategy, loop);
    if (loop == EGrabLoop::ProvidedByUser)
        fetchAll(camera);
    else
        handler.Wait();
    const double ns = nsSince(start, framesPerRun);
    camera.StopGrabbing();
    camera.WaitForGrabLoop();
    return ns;
}

void grabFrames(benchmark::State& state, EGrabStrategy strategy, EGrabLoop loop)
{
    IdleDevice device;
    EmptyHandler handler;
    CInstantCamera camera;
    camera.Attach(&device, ECleanup::None);
    camera.RegisterImageEventHandler(&handler, ERegistrationMode::Append, ECleanup::None);
    camera.Open();
    double frameNs = 0;
    double handOver = 0;
    std::size_t allocated = 0;
    for (auto _ : state) {
        const std::size_t before = allocations;
        frameNs += cameraNs(camera, handler, strategy, loop);
        allocated += allocations - before;
        handOver += handOverNs();
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["ns_per_frame"] = frameNs / runs;
    state.counters["hand_over_ns"] = handOver / runs;
    state.counters["allocations_per_frame"] = static_cast<double>(allocated) / runs / framesPerRun;
    state.counters["ratio"] = frameNs / handOver;
    state.SetLabel("to a bare hand-over between threads");
}
BENCHMARK_CAPTURE(grabFrames, camera_loop, EGrabStrategy::OneByOne, EGrabLoop::ProvidedByInstantCamera)
    ->Name("camera/frame_own_loop")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
BENCHMARK_CAPTURE(grabFrames, user_loop, EGrabStrategy::OneByOne, EGrabLoop::ProvidedByUser)
    ->Name("camera/frame_user_loop")
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

}  // namespace

BENCHMARK_MAIN();
