// What the way through a node map costs: reads and writes of one parameter of an ImageLoading node, and making the
// maps of the image nodes. "ratio" is to a direct call of the node's getter or setter, for the maps to a copy of
// their description, the least that making them could cost.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>

#include "genapi/genapi.h"

#include "imageformatconverter/imageformatconverter.h"
#include "imageloading/imageloading.h"

namespace {

using namespace Plugin::NivexStageletPackageBase;
using Clock = std::chrono::steady_clock;

/// Mean seconds of a call, over enough calls to be measured.
template <typename Call>
double secondsOf(const Call& call)
{
    constexpr int calls = 20000;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < calls; ++i)
        call();
    return std::chrono::duration<double>(Clock::now() - start).count() / calls;
}

template <typename Call>
void measure(benchmark::State& state, double reference, const Call& call)
{
    const Clock::time_point start = Clock::now();
    for (auto _ : state)
        call();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    state.counters["ratio"] = seconds / static_cast<double>(state.iterations()) / reference;
}

struct MappedNode
{
    ImageLoading node{nullptr};
    GenApi::CNodeMapRef map = node.getNodeMap("@Stagelet");

    template <typename Interface>
    Interface& find(const char* name)
    {
        return dynamic_cast<Interface&>(*map.GetNode(name));
    }
};

void readInteger(benchmark::State& state)
{
    MappedNode mapped;
    auto& feature = mapped.find<GenApi::IInteger>("NumberOfRuns");
    const double direct = secondsOf([&] { benchmark::DoNotOptimize(mapped.node.getNumberOfRuns()); });
    measure(state, direct, [&] { benchmark::DoNotOptimize(feature.GetValue()); });
    state.SetLabel("to getter");
}
BENCHMARK(readInteger)->Name("parameters/read_integer");

void writeInteger(benchmark::State& state)
{
    MappedNode mapped;
    auto& feature = mapped.find<GenApi::IInteger>("NumberOfRuns");
    unsigned long value = 0;
    const double direct = secondsOf([&] { mapped.node.setNumberOfRuns(1 + (++value & 1)); });
    measure(state, direct, [&] { feature.SetValue(static_cast<std::int64_t>(1 + (++value & 1))); });
    state.SetLabel("to setter");
}
BENCHMARK(writeInteger)->Name("parameters/write_integer_checked");

void writeIntegerUnchecked(benchmark::State& state)
{
    MappedNode mapped;
    auto& feature = mapped.find<GenApi::IInteger>("NumberOfRuns");
    unsigned long value = 0;
    const double direct = secondsOf([&] { mapped.node.setNumberOfRuns(1 + (++value & 1)); });
    measure(state, direct, [&] { feature.SetValue(static_cast<std::int64_t>(1 + (++value & 1)), false); });
    state.SetLabel("to setter");
}
BENCHMARK(writeIntegerUnchecked)->Name("parameters/write_integer_unchecked");

void readEnumeration(benchmark::State& state)
{
    MappedNode mapped;
    auto& feature = mapped.find<GenApi::IEnumeration>("SortBy");
    const double direct = secondsOf([&] { benchmark::DoNotOptimize(mapped.node.getSortBy()); });
    measure(state, direct, [&] { benchmark::DoNotOptimize(feature.GetIntValue()); });
    state.SetLabel("to getter");
}
BENCHMARK(readEnumeration)->Name("parameters/read_enumeration");

void writeEnumeration(benchmark::State& state)
{
    MappedNode mapped;
    auto& feature = mapped.find<GenApi::IEnumeration>("SortBy");
    unsigned value = 0;
    const double direct = secondsOf([&] { mapped.node.setSortBy(static_cast<SortBy>(++value & 1)); });
    measure(state, direct, [&] { feature.SetIntValue(++value & 1); });
    state.SetLabel("to setter");
}
BENCHMARK(writeEnumeration)->Name("parameters/write_enumeration_checked");

void readString(benchmark::State& state)
{
    MappedNode mapped;
    mapped.node.setSourcePath("/a/path/of/the/usual/length/to/some/images");
    auto& feature = mapped.find<GenApi::IString>("SourcePath");
    const double direct = secondsOf([&] { benchmark::DoNotOptimize(mapped.node.getSourcePath()); });
    measure(state, direct, [&] { benchmark::DoNotOptimize(feature.GetValue()); });
    state.SetLabel("to getter");
}
BENCHMARK(readString)->Name("parameters/read_string_of_1024");

void writeString(benchmark::State& state)
{
    MappedNode mapped;
    auto& feature = mapped.find<GenApi::IString>("SourcePath");
    const GenICam::gcstring paths[] = {"/a/path/of/the/usual/length/to/some/images",
                                       "/another/path/of/the/usual/length/to/others"};
    unsigned value = 0;
    const double direct = secondsOf([&] { mapped.node.setSourcePath(paths[++value & 1]); });
    measure(state, direct, [&] { feature.SetValue(paths[++value & 1]); });
    state.SetLabel("to setter");
}
BENCHMARK(writeString)->Name("parameters/write_string_of_1024");

template <typename Node>
void makeNode(benchmark::State& state)
{
    const std::string text = Node(nullptr).getNodeMap("@Stagelet").GetNodeMap()->GetDescriptionText().str();
    std::string copy(text.size(), '\0');
    const double reference = secondsOf([&] {
        std::memcpy(copy.data(), text.data(), text.size());
        benchmark::ClobberMemory();
    });
    measure(state, reference, [] { Node(nullptr).getNodeMap("@Stagelet"); });
    state.SetLabel("to copying the description");
}
BENCHMARK(makeNode<ImageLoading>)->Name("parameters/make_ImageLoading");
BENCHMARK(makeNode<ImageFormatConverter>)->Name("parameters/make_ImageFormatConverter");

}  // namespace

BENCHMARK_MAIN();
