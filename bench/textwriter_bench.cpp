// What text files cost: an array of 1,000 rectangles in one record, one line each, against the same text by a
// plain std::ofstream. "ratio" is the lines per second over those of the plain stream, "lines" the lines per
// second.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "genapi/genapi.h"

#include "core/array.h"
#include "core/rectanglef.h"
#include "datawriter/DataWriter.h"

namespace {

using namespace Nivex::DataProcessing;
using namespace Plugin::NivexStageletPackageBase;
using Rectangles = Core::Array<Core::RectangleF>;
using Clock = std::chrono::steady_clock;

constexpr int itemCount = 1000;
constexpr int recordCount = 200;

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "textwriter-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

Rectangles makeRectangles()
{
    std::vector<Core::RectangleF> rectangles;
    for (int i = 0; i < itemCount; ++i)
        rectangles.emplace_back(Core::PointF(i * 0.37, i * 1.91), 10 + i * 0.1, 20 + i * 0.3, i * 0.001);
    return Rectangles(rectangles);
}

void setParameter(DataWriter& node, const char* name, const std::string& value)
{
    dynamic_cast<GenApi::IValue&>(*node.getNodeMap("@Stagelet").GetNode(name)).FromString(value.c_str());
}

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Seconds of a session that writes the array again and again.
double writeByNode(const std::filesystem::path& folder, const Rectangles& rectangles, const char* dataText)
{
    DataWriter node(nullptr);
    for (const auto& [name, value] : {std::pair<const char*, std::string>{"OutputFolderName", folder.string()},
                                      {"SessionFolderName", ""},
                                      {"MediaType", "TXT"},
                                      {"FileScope", "Session"},
                                      {"FileName", "node.txt"},
                                      {"TextFormatSelector", "TextFormat_Data"},
                                      {"TextFormat", dataText}})
    {
        setParameter(node, name, value);
    }
    const Utils::Variant value(rectangles);
    const auto start = Clock::now();
    node.start({});
    for (int i = 0; i < recordCount; ++i)
        node.startExecution([&](auto&, Core::PinValues& target) { target["Data1"] = value; });
    node.stop();
    return secondsSince(start);
}

double writePlainly(const std::filesystem::path& folder, const Rectangles& rectangles)
{
    const auto start = Clock::now();
    std::ofstream file(folder / "plain.txt");
    for (int i = 0; i < recordCount; ++i) {
        file << "Data1 Array[" << rectangles.getSize() << "]\n";
        for (const Core::RectangleF& item : *rectangles.getData()) {
            const Core::PointF center = item.getCenter();
            file << "Width=" << item.getWidth().get() << ";Height=" << item.getHeight().get()
                 << ";Center.X=" << center.getX().get() << ";Center.Y=" << center.getY().get()
                 << ";Rotation=" << item.getRotation().get() << '\n';
        }
        file << '\n';
    }
    file.close();
    return secondsSince(start);
}

std::string contentOf(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void rectangleLines(benchmark::State& state, const char* dataText)
{
    const TemporaryFolder folder;
    const Rectangles rectangles = makeRectangles();
    double byNode = 0.0;
    double plain = 0.0;
    for (auto _ : state) {
        plain += writePlainly(folder.path(), rectangles);
        const double seconds = writeByNode(folder.path(), rectangles, dataText);
        byNode += seconds;
        state.SetIterationTime(seconds);
    }
    if (contentOf(folder.path() / "node.txt") != contentOf(folder.path() / "plain.txt")) {
        state.SkipWithError("the two texts differ");
    }
    state.counters["lines"] = static_cast<double>(state.iterations()) * recordCount * itemCount / byNode;
    state.counters["ratio"] = plain / byNode;
    state.SetLabel("lines/s to a plain std::ofstream's");
}

BENCHMARK_CAPTURE(rectangleLines, default_text, "")
    ->Name("textwriter/1000_rectangles_default")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(rectangleLines, template_text,
                  "Width={Width};Height={Height};Center.X={Center_X};Center.Y={Center_Y};Rotation={Rotation}")
    ->Name("textwriter/1000_rectangles_template")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
