// ImageLoading with nothing behind it: how well it keeps its rate, and how fast the first image is out. One step
// of ImageFormatConverter. "ratio" is the rate to the one asked for, the first image's time to that of loading the
// file alone, and the step's time to that of the bare conversion into memory that is there already.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <future>
#include <numeric>
#include <vector>

#include "utility/imageformatconverter.h"
#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

#include "core/image.h"
#include "core/string.h"
#include "imageformatconverter/imageformatconverter.h"
#include "imageloading/imageloading.h"

namespace {

using namespace Plugin::NivexStageletPackageBase;
namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// A folder with pictures of 640 x 480.
struct Folder
{
    Folder() : path(fs::temp_directory_path() / "stagelet-imageloading-bench")
    {
        fs::create_directories(path);
        std::vector<std::uint8_t> pixels(640 * 480);
        std::iota(pixels.begin(), pixels.end(), std::uint8_t{0});
        for (int i = 0; i < 10; ++i) {
            Nivex::CImagePersistence::Save(Nivex::EImageFileFormat::Bmp, file(i), pixels.data(), pixels.size(),
                                           Nivex::EPixelType::Mono8, 640, 480, 0,
                                           Nivex::EImageOrientation::TopDown);
        }
    }
    ~Folder() { fs::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string file(int index) const { return path / (std::to_string(index) + ".bmp"); }

    fs::path path;
};

/// Tells when an image has come; the time of the first, and of the one with the given number.
struct TimingSink : Core::IOutputSink
{
    explicit TimingSink(int lastImage) : last(lastImage) {}
    void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant&) override
    {
        if (++count == 1) first.set_value(Clock::now());
        if (count == last) end.set_value(Clock::now());
    }
    int last;
    int count = 0;
    std::promise<Clock::time_point> first;
    std::promise<Clock::time_point> end;
};

void rate(benchmark::State& state)
{
    const Folder folder;
    constexpr int images = 501;
    const auto framesPerSecond = static_cast<unsigned long>(state.range(0));
    double seconds = 0;
    for (auto _ : state) {
        ImageLoading node(nullptr);
        node.setSettings(folder.path.string(), SortBy::Ascending, 10, framesPerSecond, 1, true, true);
        const auto sink = std::make_shared<TimingSink>(images);
        node.attachOutputSink("Image", sink);
        node.start({});
        const Clock::time_point first = sink->first.get_future().get();
        seconds += std::chrono::duration<double>(sink->end.get_future().get() - first).count();
        node.stop();
    }
    const double achieved = static_cast<double>(images - 1) * static_cast<double>(state.iterations()) / seconds;
    state.counters["images/s"] = achieved;
    state.counters["ratio"] = achieved / static_cast<double>(framesPerSecond);
    state.SetLabel("to the rate asked for");
}
BENCHMARK(rate)->Name("imageloading/rate")->Arg(500)->Iterations(3)->Unit(benchmark::kMillisecond);

void firstImage(benchmark::State& state)
{
    const Folder folder;
    constexpr int loads = 50;
    const Clock::time_point loading = Clock::now();
    for (int i = 0; i < loads; ++i) {
        Nivex::CNivexImage image;
        image.Load(folder.file(0));
    }
    const double reference = std::chrono::duration<double>(Clock::now() - loading).count() / loads;

    Core::NodeArgumentCollection arguments;
    arguments.setArgument("AcquisitionMode", Utils::Variant(Core::String("SingleFrame")));
    double seconds = 0;
    for (auto _ : state) {
        ImageLoading node(nullptr);
        node.setSettings(folder.path.string(), SortBy::Ascending, 10, 500, 1, false, true);
        const auto sink = std::make_shared<TimingSink>(2);
        node.attachOutputSink("Image", sink);
        const Clock::time_point start = Clock::now();
        node.start(arguments);
        const double spent = std::chrono::duration<double>(sink->first.get_future().get() - start).count();
        state.SetIterationTime(spent);
        seconds += spent;
        node.stop();
    }
    state.counters["ratio"] = seconds / static_cast<double>(state.iterations()) / reference;
    state.SetLabel("to loading the file alone");
}
BENCHMARK(firstImage)->Name("imageloading/first_image")->UseManualTime()->Unit(benchmark::kMicrosecond);

/// Keeps the newest image, as a node downstream would.
struct HoldingSink : Core::IOutputSink
{
    void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant& value) override
    {
        held = value;
    }
    Utils::Variant held;
};

void convert(benchmark::State& state)
{
    constexpr std::uint32_t width = 4096;
    constexpr std::uint32_t height = 3072;
    Nivex::CNivexImage source;
    source.Reset(Nivex::EPixelType::Mono8, width, height);
    std::memset(source.GetBuffer(), 100, source.GetImageSize());

    Nivex::CImageFormatConverter converter;
    converter.MaxNumThreads.SetValue(1);
    Nivex::CNivexImage destination;
    converter.Convert(destination, source);
    constexpr int conversions = 20;
    const Clock::time_point bare = Clock::now();
    for (int i = 0; i < conversions; ++i)
        converter.Convert(destination, source);
    const double reference = std::chrono::duration<double>(Clock::now() - bare).count() / conversions;

    ImageFormatConverter node(nullptr);
    const auto sink = std::make_shared<HoldingSink>();
    node.attachOutputSink("Image", sink);
    const Utils::Variant image(Utils::COWPtr<Core::Image>::make(source, nullptr, false));
    const Clock::time_point start = Clock::now();
    for (auto _ : state) {
        node.startExecution(
            [&](std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues& values) { values["Image"] = image; });
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    state.counters["ratio"] = seconds / static_cast<double>(state.iterations()) / reference;
    state.SetLabel("to bare conversion");
}
BENCHMARK(convert)->Name("imageformatconverter/step_12MP_Mono8_to_BGRA8")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
