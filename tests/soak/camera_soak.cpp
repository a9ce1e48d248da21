// A camera for a long time: 500 frames per second with chunk pins, an event pin and faults, while another thread
// reads parameters. Every frame that the camera made has to be seen or counted, and the memory of a run of more
// than a minute has to stay flat.
//
//     camera_soak [SECONDS]    600 by default; ends with 1 and the reasons if anything is wrong

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "genapi/genapi.h"

#include "base/emulation/emulatedbackend.h"

#include "core/advancednode.h"
#include "core/float.h"
#include "core/image.h"
#include "core/inodemapcontainer.h"
#include "core/integer.h"
#include "runtime/graph.h"
#include "runtime/package.h"
#include "runtime/resourcepool.h"

namespace {

using namespace Nivex::DataProcessing;
using namespace std::chrono_literals;
using Core::LossCause;

/// Takes what the camera puts out, and keeps its own account of it.
class Sink : public Core::AdvancedNode
{
public:
    Sink() : AdvancedNode(nullptr)
    {
        for (const char* name : {"Image", "FrameID", "Exposure", "Event"})
            createInputPin(name, name, {}, false, 1);
    }
    ~Sink() override { cleanup(); }

    std::atomic<std::uint64_t> images{0};
    std::atomic<std::uint64_t> failedImages{0};
    std::atomic<std::uint64_t> exposures{0};
    std::atomic<std::uint64_t> events{0};
    std::atomic<std::uint64_t> lastFrame{0};
    std::atomic<std::uint64_t> disorder{0};

    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

protected:
    void run(const std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues& values) override
    {
        for (const auto& [pin, value] : values) {
            if (const auto* image = value.tryGet<Core::Image>()) {
                ++(image->hasError() ? failedImages : images);
            } else if (pin == "FrameID") {
                const std::uint64_t frame = value.getValue<Core::Integer>().getUnsigned();
                if (frame <= lastFrame.exchange(frame)) ++disorder;
            } else if (pin == "Exposure") {
                exposures += value.getValue<Core::Float>().get() > 0;
            } else if (pin == "Event") {
                ++events;
            }
        }
    }
};

GenApi::NodeMapPtr mapOf(Core::NodeBase& node, const char* identifier)
{
    return dynamic_cast<Core::INodeMapContainer&>(node).getNodeMap(identifier).GetNodeMap();
}

void assign(const GenApi::NodeMapPtr& map, const char* name, const char* value)
{
    dynamic_cast<GenApi::IValue&>(*map->GetNode(name)).FromString(value);
}

using Assignments = std::vector<std::pair<const char*, const char*>>;

void assignAll(const GenApi::NodeMapPtr& map, const Assignments& assignments)
{
    for (const auto& [name, value] : assignments)
        assign(map, name, value);
}

const Assignments pins = {
    {"ChunkPinAdd", "1"},
    {"ChunkPinConfiguration", "FrameID.Type=Integer.ValueName=ChunkFrameID"},
    {"ChunkPinAdd", "1"},
    {"ChunkPinConfiguration", "Exposure.Type=Float.ValueName=ChunkExposureTime"},
    {"EventPinAdd", "1"},
    {"EventPinConfiguration", "Event.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID"},
};

const Assignments cameraSettings = {
    {"AcquisitionFrameRate", "500"}, {"ExposureTime", "1000"},   {"ChunkModeActive", "1"},
    {"FailedFramesEvery", "501"},    {"LostFramesEvery", "997"}, {"LostFramesNumber", "2"},
};

/// Reads every feature of all maps of a node, over and over.
class Reader
{
public:
    explicit Reader(Core::NodeBase& node) : thread_([this, &node] { read(node); }) {}
    ~Reader()
    {
        ending_ = true;
        thread_.join();
    }
    std::uint64_t getCount() const { return count_; }

private:
    void read(Core::NodeBase& node)
    {
        while (!ending_) {
            for (const char* identifier : {"@Stagelet", "@CameraInstance", "@CameraDevice", "@StreamGrabber0"}) {
                GenApi::NodeList_t nodes;
                const auto map = mapOf(node, identifier);
                map->GetNodes(nodes);
                for (GenApi::INode* feature : nodes)
                    readOne(*feature);
            }
        }
    }
    void readOne(GenApi::INode& feature)
    {
        auto* value = dynamic_cast<GenApi::IValue*>(&feature);
        if (ending_ || !value || !GenApi::IsReadable(value)) return;
        try {
            value->ToString();
            ++count_;
        } catch (const GenICam::AccessException&) {
            // It may have become unavailable since it was asked.
            return;
        }
    }

    std::atomic<bool> ending_{false};
    std::atomic<std::uint64_t> count_{0};
    std::thread thread_;
};

long residentPages()
{
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident;
}

std::uint64_t lost(const Runtime::RunStatistics& statistics, LossCause cause)
{
    return statistics.lost[static_cast<std::size_t>(cause)];
}

int failures = 0;

void expect(bool holds, const char* what)
{
    if (holds) return;
    std::printf("FAILED: %s\n", what);
    ++failures;
}

/// Frames that the camera made since it was started, by its own account.
std::uint64_t framesMade(Core::NodeBase& camera)
{
    const auto map = mapOf(camera, "@StreamGrabber0");
    const auto count = [&map](const char* name) {
        return static_cast<std::uint64_t>(dynamic_cast<GenApi::IInteger&>(*map->GetNode(name)).GetValue());
    };
    return count("StreamDeliveredFrameCount") + count("StreamLostFrameCount");
}

void judge(const Runtime::RunStatistics& all, const Sink& sink, std::uint64_t made, std::uint64_t reads,
           long early, long late)
{
    const std::uint64_t failed = lost(all, LossCause::GrabFailed);
    const std::uint64_t missed = lost(all, LossCause::FramesMissed);
    const std::uint64_t noSpace = lost(all, LossCause::NoSpace);
    const std::uint64_t sum = std::accumulate(all.lost.begin(), all.lost.end(), std::uint64_t{0});
    std::printf(
        "frames: made %llu, last %llu, images %llu, failed %llu, missed %llu, without space %llu; events %llu\n"
        "updates: offered %llu, finished %llu, lost %llu, in flight %llu\n"
        "parameter reads %llu; resident pages %ld after a tenth, %ld at the end, ratio %.3f\n",
        static_cast<unsigned long long>(made), static_cast<unsigned long long>(sink.lastFrame),
        static_cast<unsigned long long>(sink.images), static_cast<unsigned long long>(failed),
        static_cast<unsigned long long>(missed), static_cast<unsigned long long>(noSpace),
        static_cast<unsigned long long>(sink.events), static_cast<unsigned long long>(all.offered),
        static_cast<unsigned long long>(all.finished), static_cast<unsigned long long>(sum),
        static_cast<unsigned long long>(all.inFlight), static_cast<unsigned long long>(reads), early, late,
        static_cast<double>(late) / static_cast<double>(early));
    expect(all.offered == all.finished + sum && all.inFlight == 0, "offered = finished + lost");
    expect(sum == failed + missed + noSpace, "no loss but those of the faults and of the stop");
    expect(all.finished == sink.images + sink.events, "each update ended at the sink");
    expect(failed == sink.failedImages, "each failed frame was seen");
    expect(sink.disorder == 0, "frame numbers ascend");
    // What came behind the last image seen is counted, but has no number here.
    const std::uint64_t accounted = sink.images + failed + missed;
    expect(accounted >= sink.lastFrame && accounted <= made, "each frame was seen or counted");
    expect(sink.exposures == sink.images, "each image came with its chunk values");
    expect(failed > 0 && missed > 0 && sink.events > 0 && reads > 0, "all that was wanted happened");
    // In a short run the heap is still being warmed up.
    if (all.duration > 1min)
        expect(static_cast<double>(late) < 1.02 * static_cast<double>(early), "memory is flat");
}

int soak(std::chrono::nanoseconds duration)
{
    const auto pool = std::make_shared<Runtime::ResourcePool>(
        0, Runtime::ResourcePool::CameraBackends{std::make_shared<Nivex::CEmulatedCameraBackend>(1)});
    const Runtime::Package package(STAGELET_LIB_DIR "/libNivexStageletPackageBase.so");
    Runtime::Graph graph(pool);
    graph.addNode("Camera", "Camera", package.createNode("Camera", pool));
    auto ownedSink = std::make_unique<Sink>();
    const Sink& sink = *ownedSink;
    graph.addNode("Sink", "Sink", {ownedSink.release(), [](Core::NodeBase* node) { delete node; }});
    Core::NodeBase& camera = *graph.findNode("Camera");
    assignAll(mapOf(camera, "@Stagelet"), pins);
    for (const char* pin : {"Image", "FrameID", "Exposure", "Event"})
        graph.connect("Camera", pin, "Sink", pin);
    graph.allocate();
    assignAll(mapOf(camera, "@CameraDevice"), cameraSettings);
    graph.start();
    std::uint64_t reads = 0;
    long early = 0;
    {
        const Reader reader(camera);
        graph.wait(duration / 10, 0ns);
        early = residentPages();
        graph.wait(duration - duration / 10, 0ns);
        reads = reader.getCount();
    }
    const long late = residentPages();
    graph.stop();
    judge(graph.getStatistics(), sink, framesMade(camera), reads, early, late);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char** arguments)
{
    try {
        return soak(std::chrono::seconds(count > 1 ? std::max(1, std::atoi(arguments[1])) : 600));
    } catch (...) {
        std::printf("FAILED: %s\n", GenICam::describeCurrentException().c_str());
        return EXIT_FAILURE;
    }
}
