// The command as a user meets it: how soon it starts and stops, and that its memory does not grow with the run.

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <sys/inotify.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "utility/imagepersistence.h"
#include "utility/niveximage.h"

#include "system/program.h"

namespace {

using namespace SystemTest;
using nlohmann::json;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// A folder with pictures of 64 by 64 and a recipe that loads, converts and writes them.
class Stage
{
public:
    Stage(int framesPerSecond, int recordPeriod)
    {
        std::string pattern = (fs::temp_directory_path() / "stagelet_bench_XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category(), "mkdtemp");
        folder_ = pattern;
        fs::create_directories(session());
        fs::create_directory(folder_ / "images");
        Nivex::CNivexImage image;
        image.Reset(Nivex::EPixelType::RGB8Packed, 64, 64);
        for (int i = 0; i < 20; ++i) {
            std::memset(image.GetBuffer(), i, image.GetImageSize());
            const fs::path file = folder_ / "images" / (std::to_string(100 + i) + ".png");
            Nivex::CImagePersistence::Save(Nivex::EImageFileFormat::Png, file.string(), image);
        }
        const json loader = {{"sourcePath", "images"},
                             {"numberOfImages", 100},
                             {"framesPerSecond", framesPerSecond},
                             {"runContinuously", true}};
        const json converter = {"OutputPixelFormat = Mono8"};
        const json writer = {"OutputFolderName = out", "SessionFolderName = S", "MediaType = BMP",
                             "RecordPeriod = " + std::to_string(recordPeriod)};
        const json recipe = {{"Recipe", 1},
                             {"Nodes",
                              {{{"Name", "Loader"}, {"Module", "ImageLoading"}, {"Settings", loader}},
                               {{"Name", "Grey"}, {"Module", "ImageFormatConverter"}, {"Parameters", converter}},
                               {{"Name", "Writer"}, {"Module", "DataWriter"}, {"Parameters", writer}}}},
                             {"Connections", {"Loader.Image -> Grey.Image", "Grey.Image -> Writer.Data1"}}};
        std::ofstream(folder_ / "recipe.json") << recipe;
    }
    ~Stage()
    {
        std::error_code error;
        fs::remove_all(folder_, error);
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    fs::path session() const { return folder_ / "out/S"; }
    const fs::path& folder() const { return folder_; }
    std::vector<std::string> command(const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> command = {STAGELET_BIN_DIR "/stagelet", "run",
                                            (folder_ / "recipe.json").string(), "--stats", "json"};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

private:
    fs::path folder_;
};

/// Tells when a file gets its final name in a folder.
class FileWatch
{
public:
    explicit FileWatch(const fs::path& folder) : handle_(inotify_init1(IN_CLOEXEC))
    {
        if (handle_ < 0 || inotify_add_watch(handle_, folder.c_str(), IN_MOVED_TO) < 0) {
            throw std::system_error(errno, std::generic_category(), "inotify");
        }
    }
    ~FileWatch() { close(handle_); }
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    bool wait() const
    {
        pollfd file{handle_, POLLIN, 0};
        return poll(&file, 1, 10000) > 0;
    }

private:
    int handle_;
};

double secondsSince(Clock::time_point start)
{
    return Seconds(Clock::now() - start).count();
}

double startOfAnEmptyProgram(const fs::path& logs)
{
    const auto start = Clock::now();
    Program({"/bin/true"}, logs).wait();
    return secondsSince(start);
}

/// A run that was told to stop after its first file.
struct ShortRun
{
    double firstFile;  ///< Seconds from the start of the process.
    double stop;       ///< Seconds from the signal to the end of the process.
    double peakMiB;
};

/// The same figures in every row, or else there is no table of them.
void report(benchmark::State& state, double longest, double peakMiB, double ratio, const char* label)
{
    state.counters["longest_ms"] = longest * 1000;
    state.counters["peak_MiB"] = peakMiB;
    state.counters["ratio"] = ratio;
    state.SetLabel(label);
}

std::optional<ShortRun> runShortly(const Stage& stage, benchmark::State& state)
{
    ShortRun times{};
    const FileWatch watch(stage.session());
    auto start = Clock::now();
    Program program(stage.command(), stage.folder());
    const bool hasFile = watch.wait();
    times.firstFile = secondsSince(start);
    start = Clock::now();
    program.send(SIGINT);
    const Ended ended = program.wait();
    times.stop = secondsSince(start);
    times.peakMiB = static_cast<double>(ended.peakKiB) / 1024;
    if (hasFile && ended.code == 0) return times;
    state.SkipWithError("the recipe did not run and stop in order");
    return std::nullopt;
}

ShortRun worstOf(const ShortRun& a, const ShortRun& b)
{
    return {std::max(a.firstFile, b.firstFile), std::max(a.stop, b.stop), std::max(a.peakMiB, b.peakMiB)};
}

void BM_StartToFirstFile(benchmark::State& state)
{
    const Stage stage(50, 1);
    double quickest = 1e9;
    double quickestEmpty = 1e9;
    ShortRun worst{};
    for (auto _ : state) {
        const auto times = runShortly(stage, state);
        if (!times) return;
        state.SetIterationTime(times->firstFile);
        quickest = std::min(quickest, times->firstFile);
        quickestEmpty = std::min(quickestEmpty, startOfAnEmptyProgram(stage.folder()));
        worst = worstOf(worst, *times);
    }
    report(state, worst.firstFile, worst.peakMiB, quickest / quickestEmpty, "of the quickest to an empty process");
}

void BM_SignalToEnd(benchmark::State& state)
{
    constexpr int framesPerSecond = 10;
    constexpr double allowed = 1.0 / framesPerSecond + 0.1;
    const Stage stage(framesPerSecond, 1);
    ShortRun worst{};
    for (auto _ : state) {
        const auto times = runShortly(stage, state);
        if (!times) return;
        state.SetIterationTime(times->stop);
        worst = worstOf(worst, *times);
    }
    report(state, worst.stop, worst.peakMiB, worst.stop / allowed, "of the longest to 100 ms and a period");
}

/// The most memory in KiB that a run of so many updates took; nothing, and an error, if it lost any.
std::optional<double> peakOf(const Stage& stage, int updates, benchmark::State& state)
{
    const Ended ended = Program(stage.command({"--updates", std::to_string(updates)}), stage.folder()).wait();
    rusage own{};
    getrusage(RUSAGE_SELF, &own);
    const json account = ended.code == 0 ? json::parse(ended.out).at("updates") : json();
    if (ended.code != 0 || account.at("offered") != updates || account.at("finished") != updates / 10 ||
        account.at("lost") != json{{"refused_by_rule", updates - updates / 10}})
    {
        state.SkipWithError("the run lost updates");
    } else if (ended.peakKiB <= own.ru_maxrss) {
        // A process begins as a copy of this one.
        state.SkipWithError("this program needs more memory than the one it measures");
    } else {
        return static_cast<double>(ended.peakKiB);
    }
    return std::nullopt;
}

void BM_MemoryOf2000Images(benchmark::State& state)
{
    const Stage stage(500, 10);
    for (auto _ : state) {
        const auto few = peakOf(stage, 200, state);
        if (!few) return;
        const auto start = Clock::now();
        const auto many = peakOf(stage, 2000, state);
        if (!many) return;
        const double duration = secondsSince(start);
        state.SetIterationTime(duration);
        report(state, duration, *many / 1024, *many / *few, "of its peak to that of 200 images");
    }
}

BENCHMARK(BM_StartToFirstFile)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(20);
BENCHMARK(BM_SignalToEnd)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(20);
BENCHMARK(BM_MemoryOf2000Images)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
