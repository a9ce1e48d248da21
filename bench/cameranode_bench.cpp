// What the camera node adds to the camera: the time from a grab result to the output pin, and how many frames of
// an emulated camera come through it.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <limits>

#include "base/emulation/emulatedbackend.h"
#include "base/instantcamera.h"
#include "base/parameters.h"

#include "camera/camera.h"
#include "core/image.h"
#include "runtime/graph.h"
#include "runtime/resourcepool.h"

namespace {

using namespace Nivex::DataProcessing;
using Plugin::NivexStageletPackageBase::Camera;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t width = 640;
constexpr std::uint32_t height = 480;

double nsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

/// A good result over memory of its own.
class Result : public Nivex::CGrabResultData, public std::enable_shared_from_this<Result>
{
public:
    Result() : bytes_(std::size_t{width} * height)
    {
        frame_.buffer = {.data = bytes_.data(), .size = bytes_.size()};
        frame_.isComplete = true;
        frame_.payloadType = Nivex::EPayloadType::Image;
        frame_.pixelType = Nivex::EPixelType::Mono8;
        frame_.width = width;
        frame_.height = height;
        frame_.imageSize = frame_.payloadSize = bytes_.size();
    }
    GenApi::NodeMapPtr GetChunkDataNodeMap() const override { return nullptr; }

private:
    Nivex::CGrabResultPtr Share() const override { return Nivex::CGrabResultPtr(shared_from_this()); }

    std::vector<std::byte> bytes_;
};

/// Takes anything and counts it.
class Sink : public Core::NodeBase
{
public:
    Sink() : NodeBase(nullptr) { createInputPin("In", "", Utils::TypeInfo(), false, 1); }
    ~Sink() override { cleanup(); }

    std::atomic<std::uint64_t> count = 0;

protected:
    void run(const std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues&) override { ++count; }
};

class Source : public Core::AdvancedNode
{
public:
    Source() : AdvancedNode(nullptr) { createOutput("Image", "", Utils::TypeInfo::get<Core::Image>()); }
    ~Source() override { cleanup(); }
    void push()
    {
        waitUntilSpaceAvailable();
        createJob(getUpdateFactory()->createUpdate(*this, nullptr, true), {{"Image", value_}});
    }
    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

private:
    Utils::Variant value_{Utils::COWPtr<Core::Image>::make()};
};

std::shared_ptr<Runtime::ResourcePool> makePool()
{
    return std::make_shared<Runtime::ResourcePool>(
        2, Runtime::ResourcePool::CameraBackends{std::make_shared<Nivex::CEmulatedCameraBackend>(1)});
}

/// A source of any kind and an empty node behind it.
struct Recipe
{
    Recipe(std::unique_ptr<Core::NodeBase> source, const std::shared_ptr<Runtime::ResourcePool>& pool)
        : graph(pool)
    {
        const auto destroy = [](Core::NodeBase* node) { delete node; };
        auto ownedSink = std::make_unique<Sink>();
        sink = ownedSink.get();
        graph.addNode("Source", "Bench", Runtime::NodeHandle(source.release(), destroy));
        graph.addNode("Sink", "Bench", Runtime::NodeHandle(ownedSink.release(), destroy));
        graph.connect("Source", "Image", "Sink", "In");
        graph.allocate();
    }

    Sink* sink;
    Runtime::Graph graph;
};

// Both sides of a ratio are measured in turns, and the best of each counts: the machine's mood counts more than
// either.
constexpr int turns = 5;

/// Nanoseconds of an update from a bare source to an empty node.
double bareHopNs()
{
    constexpr int count = 50000;
    auto owned = std::make_unique<Source>();
    Source& source = *owned;
    Recipe recipe(std::move(owned), makePool());
    recipe.graph.start();
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i)
        source.push();
    recipe.graph.stop();
    return nsSince(start) / count;
}

void setFeature(Camera& node, const char* name, bool value)
{
    Nivex::CBooleanParameter(node.getNodeMap("@CameraDevice").GetNodeMap(), name).SetValue(value);
}

// On one thread, without a graph: what the node itself does with a result.
void BM_ResultToOutputPin(benchmark::State& state)
{
    struct Receiver : Core::IOutputSink
    {
        void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant&) override { ++count; }
        std::uint64_t count = 0;
    };
    Camera node(makePool());
    const auto receiver = std::make_shared<Receiver>();
    node.attachOutputSink("Image", receiver);
    node.allocateResources();
    const auto deviceMap = node.getNodeMap("@CameraDevice").GetNodeMap();
    Nivex::CEnumParameter(deviceMap, "TriggerMode").SetValue("On");  // The camera itself is to stay quiet.
    node.start({});
    Nivex::CInstantCamera camera;
    const Nivex::CGrabResultPtr result(std::make_shared<Result>());
    constexpr std::uint64_t count = 200000;
    double ns = std::numeric_limits<double>::max();
    double hopNs = ns;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (std::uint64_t i = 0; i < count; ++i)
            node.OnImageGrabbed(camera, result);
        ns = std::min(ns, nsSince(start) / count);
        hopNs = std::min(hopNs, bareHopNs());
    }
    node.stop();
    if (receiver->count != count * turns) state.SkipWithError("results were lost");
    state.counters["ns_per_result"] = ns;
    state.counters["ratio"] = ns / hopNs;
    state.SetLabel("to a hop from a bare source to an empty node");
}
BENCHMARK(BM_ResultToOutputPin)->Iterations(turns)->Unit(benchmark::kMillisecond);

constexpr std::uint64_t frameCount = 20000;

/// Frames per second of a free-running emulated camera whose results nobody looks at.
double bareFramesPerSecond()
{
    struct Handler : Nivex::CImageEventHandler
    {
        void OnImageGrabbed(Nivex::CInstantCamera&, const Nivex::CGrabResultPtr&) override
        {
            if (++count == frameCount) all.set_value();
        }
        std::uint64_t count = 0;
        std::promise<void> all;
    };
    Nivex::CEmulatedCameraBackend backend(1);
    Handler handler;
    Nivex::CInstantCamera camera;
    camera.Attach(backend.CreateDevice(backend.EnumerateDevices().front()).release());
    camera.Open();
    Nivex::CBooleanParameter(camera.GetNodeMap(), "AcquisitionFrameRateEnable").SetValue(false);
    camera.RegisterImageEventHandler(&handler, Nivex::ERegistrationMode::Append, Nivex::ECleanup::None);
    const auto start = Clock::now();
    camera.StartGrabbing(Nivex::EGrabStrategy::OneByOne, Nivex::EGrabLoop::ProvidedByInstantCamera);
    handler.all.get_future().wait();
    const double seconds = nsSince(start) * 1e-9;
    camera.DetachDevice();
    camera.DeregisterImageEventHandler(&handler);
    return static_cast<double>(frameCount) / seconds;
}

void BM_EmulatedCameraToEmptyNode(benchmark::State& state)
{
    double rate = 0;
    double bareRate = 0;
    for (auto _ : state) {
        bareRate = std::max(bareRate, bareFramesPerSecond());
        const auto pool = makePool();
        auto owned = std::make_unique<Camera>(pool);
        Camera& node = *owned;
        Recipe recipe(std::move(owned), pool);
        setFeature(node, "AcquisitionFrameRateEnable", false);
        recipe.graph.setUpdateLimit(frameCount);
        const auto start = Clock::now();
        recipe.graph.start();
        recipe.graph.wait({}, {});
        const double seconds = nsSince(start) * 1e-9;
        recipe.graph.stop();
        const Runtime::RunStatistics statistics = recipe.graph.getStatistics();
        if (statistics.finished != frameCount || statistics.offered != frameCount) {
            state.SkipWithError("frames were lost");
        }
        rate = std::max(rate, static_cast<double>(frameCount) / seconds);
    }
    state.counters["frames_per_s"] = rate;
    state.counters["ratio"] = rate / bareRate;
    state.SetLabel("640x480 Mono8, to the same camera with an empty handler");
}
BENCHMARK(BM_EmulatedCameraToEmptyNode)->Iterations(turns)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
