// What the framework itself costs: updates per second through empty nodes, a chain of eight and a diamond.
// The ratio is the time of a hop to that of a std::function call through a thread's mutex-guarded queue, the least
// that handing work to another thread costs.

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "core/advancednode.h"
#include "core/integer.h"
#include "core/simplenode.h"
#include "runtime/graph.h"
#include "runtime/resourcepool.h"
#include "utils/property.h"

namespace {

using namespace Nivex::DataProcessing;
using Core::Integer;

/// Passes its input on.
class EmptyNode : public Core::SimpleNode
{
public:
    EmptyNode() : SimpleNode(nullptr)
    {
        createInput("A", "A", a_);
        createInput("B", "B", b_);
        createOutput("Out", "Out", out_);
    }
    ~EmptyNode() override { cleanup(); }
    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

protected:
    void process() override { out_.assign(a_); }

private:
    Utils::ResettableProperty<Integer> a_;
    Utils::ResettableProperty<Integer> b_;
    Utils::ResettableProperty<Integer> out_;
};

class Source : public Core::AdvancedNode
{
public:
    Source() : AdvancedNode(nullptr) { createOutput("Out", "Out", Utils::TypeInfo::get<Integer>()); }
    ~Source() override { cleanup(); }
    void push()
    {
        waitUntilSpaceAvailable();
        createJob(getUpdateFactory()->createUpdate(*this, nullptr, true), {{"Out", value_}});
    }
    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

private:
    Utils::Variant value_{Integer(1L)};
};

struct Edge
{
    const char *from, *to, *input;
};

/// Nanoseconds of one hand-over of a function to another thread, measured at full throughput.
double handOverNs()
{
    static const double ns = [] {
        constexpr int count = 200000;
        std::mutex mutex;
        std::condition_variable wake;
        std::deque<std::function<void()>> queue;
        int done = 0;
        const auto start = std::chrono::steady_clock::now();
        std::thread worker([&] {
            std::unique_lock lock(mutex);
            while (done < count) {
                wake.wait(lock, [&] { return !queue.empty(); });
                auto work = std::move(queue.front());
                queue.pop_front();
                lock.unlock();
                work();
                lock.lock();
            }
        });
        for (int i = 0; i < count; ++i) {
            {
                std::lock_guard guard(mutex);
                queue.emplace_back([&done] { ++done; });
            }
            wake.notify_one();
        }
        worker.join();
        const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
        return time.count() / count;
    }();
    return ns;
}

void runUpdates(benchmark::State& state, const std::vector<const char*>& nodes, const std::vector<Edge>& edges)
{
    Runtime::Graph graph(std::make_shared<Runtime::ResourcePool>(2));
    auto* source = new Source;
    const auto destroy = [](Core::NodeBase* node) { delete node; };
    graph.addNode("S", "Bench", Runtime::NodeHandle(source, destroy));
    for (const char* name : nodes)
        graph.addNode(name, "Bench", Runtime::NodeHandle(new EmptyNode, destroy));
    for (const Edge& edge : edges)
        graph.connect(edge.from, "Out", edge.to, edge.input);
    graph.start();
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
        source->push();
    graph.stop();
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    const double hopNs =
        time.count() / static_cast<double>(state.iterations()) / static_cast<double>(nodes.size());
    state.counters["ns_per_hop"] = hopNs;
    state.counters["ratio"] = hopNs / handOverNs();
    state.SetLabel("to a bare hand-over between threads");
}

void BM_ChainOfEight(benchmark::State& state)
{
    runUpdates(state, {"1", "2", "3", "4", "5", "6", "7", "8"},
               {{"S", "1", "A"},
                {"1", "2", "A"},
                {"2", "3", "A"},
                {"3", "4", "A"},
                {"4", "5", "A"},
                {"5", "6", "A"},
                {"6", "7", "A"},
                {"7", "8", "A"}});
}

void BM_Diamond(benchmark::State& state)
{
    runUpdates(state, {"L", "R", "J"}, {{"S", "L", "A"}, {"S", "R", "A"}, {"L", "J", "A"}, {"R", "J", "B"}});
}

BENCHMARK(BM_ChainOfEight)->UseRealTime();
BENCHMARK(BM_Diamond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
