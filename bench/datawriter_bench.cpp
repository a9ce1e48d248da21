// What a DataWriter costs beside its files: making its node map, one update, one name. All its media writers but
// those of the names take the data and write none.
//
// "ratio" of the node map is its time over that of a copy of its description, the least that making it could cost.
// That of an update is over an update that no record is taken of, that of a name over printing the same date with
// snprintf.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "genapi/genapi.h"

#include "core/integer.h"
#include "datawriter/DataWriter.h"
#include "datawriter/DataWriterSettings.h"
#include "datawriter/NameRendering.h"
#include "utils/log.h"

namespace {

using namespace Nivex::DataProcessing;
using namespace Plugin::NivexStageletPackageBase;

/// Takes all data and writes none.
class NoFiles : public IMediaWriter
{
public:
    static inline std::uint64_t itemCount = 0;  ///< Of all of them.

    explicit NoFiles(IWriterLedger& ledger) : ledger_(ledger) {}
    void beginSession(const MediaWriterContext&) override {}
    void beginRecord(const MediaWriterContext&) override {}
    void writeData(const Utils::Variant&, const Utils::TypeInfo&, const MediaWriterContext&) override
    {
        ++itemCount;
        ledger_.reportRecorded(0, 0);
    }
    void endRecord(const MediaWriterContext&) override {}
    void endSession(const MediaWriterContext&) override {}

private:
    IWriterLedger& ledger_;
};

std::shared_ptr<IMediaWriter> withoutFiles(MediaType, IWriterLedger& ledger)
{
    return std::make_shared<NoFiles>(ledger);
}

void setParameter(DataWriter& node, const char* name, const std::string& value)
{
    dynamic_cast<GenApi::IValue&>(*node.getNodeMap("@Stagelet").GetNode(name)).FromString(value.c_str());
}

/// Mean seconds of a call, over enough calls to be measured.
template <typename Call>
double secondsOf(const Call& call)
{
    using Clock = std::chrono::steady_clock;
    constexpr int calls = 2000;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < calls; ++i)
        call();
    return std::chrono::duration<double>(Clock::now() - start).count() / calls;
}

/// Ends a row: `reference` in seconds; `seconds` is the time of the whole loop.
void setRatio(benchmark::State& state, double seconds, double reference)
{
    state.counters["ratio"] = seconds / static_cast<double>(state.iterations()) / reference;
}

template <typename Work>
void measure(benchmark::State& state, double reference, const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
        work();
    setRatio(state, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), reference);
}

/// A fresh node, its map, and 100 pins through it.
void nodeMapWith100Pins(benchmark::State& state)
{
    DataWriter node(nullptr, withoutFiles);
    const GenICam::gcstring text = node.getNodeMap("@Stagelet").GetNodeMap()->GetDescriptionText();
    const double copy = secondsOf([&] {
        GenICam::gcstring copied = text;
        benchmark::DoNotOptimize(copied);
    });
    measure(state, copy, [] {
        DataWriter fresh(nullptr, withoutFiles);
        setParameter(fresh, "NumInputDataPins", "100");
    });
}

Core::PinValues valuesFor(std::size_t pins)
{
    Core::PinValues values;
    for (std::size_t pin = 1; pin <= pins; ++pin)
        values["Data" + std::to_string(pin)] = Utils::Variant(Core::Integer(1));
    return values;
}

/// Each pin goes to each writer.
void connectAll(DataWriter& node, std::size_t pins, std::size_t writers)
{
    setParameter(node, "NumInputDataPins", std::to_string(pins));
    setParameter(node, "NumMediaWriters", std::to_string(writers));
    for (std::size_t pin = 1; pin <= pins; ++pin) {
        setParameter(node, "InputDataPinSelector", std::to_string(pin));
        for (std::size_t writer = 1; writer <= writers; ++writer) {
            setParameter(node, "MediaWriterSelector", std::to_string(writer));
            setParameter(node, "UseMediaWriterEnable", "On");
        }
    }
}

void update(benchmark::State& state)
{
    const auto pins = static_cast<std::size_t>(state.range(0));
    const auto writers = static_cast<std::size_t>(state.range(1));
    const Core::PinValues values = valuesFor(pins);
    DataWriter node(nullptr, withoutFiles);
    connectAll(node, pins, writers);
    setParameter(node, "OutputFolderName", std::filesystem::temp_directory_path().string());
    setParameter(node, "SessionFolderName", "");
    const auto run = [&] { node.startExecution([&](auto&, Core::PinValues& target) { target = values; }); };
    setParameter(node, "RecordPeriod", "0");
    node.start({});
    const double refused = secondsOf(run);
    node.stop();
    setParameter(node, "RecordPeriod", "1");
    node.start({});
    NoFiles::itemCount = 0;
    measure(state, refused, run);
    node.stop();
    const auto items = static_cast<std::uint64_t>(state.iterations()) * pins * writers;
    if (NoFiles::itemCount != items) state.SkipWithError("not all items reached the writers");
}

void sessionName(benchmark::State& state)
{
    const TextTokenTable tokens;
    const DataWriterSettings settings;
    TimeSnapshot time;
    time.require();
    const double printed = secondsOf([&] {
        char text[80];
        std::snprintf(text, sizeof text, "Session__%d-%02d-%02d__%02d-%02d-%02d__%03d", time.year, time.month,
                      time.day, time.hour, time.minute, time.second, time.millisecond);
        std::string name(text);
        benchmark::DoNotOptimize(name);
    });
    measure(state, printed, [&] {
        benchmark::DoNotOptimize(renderName(tokens, settings.sessionFolderName.c_str(), time, WriterIndices()));
    });
}

BENCHMARK(nodeMapWith100Pins)
    ->Name("datawriter/node_map_100_pins/over_copy_of_text")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(update)
    ->Name("datawriter/update_recorded/over_refused")
    ->ArgNames({"pins", "writers"})
    ->Args({1, 1})
    ->Args({10, 1})
    ->Args({10, 4})
    ->Args({100, 1});
BENCHMARK(sessionName)->Name("datawriter/session_name/over_snprintf");

}  // namespace

BENCHMARK_MAIN();
