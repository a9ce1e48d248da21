// The account of a run is exact: whatever goes wrong, offered = finished + the sum of losses, and each loss stands
// under the node and the cause that the test itself counted.

#include <gmock/gmock.h>

#include <atomic>
#include <random>

#include "framework/graph/graphtest.h"
#include "framework/logcapture.h"
#include "runtime/steptimes.h"

using namespace GraphTest;
using namespace std::chrono_literals;

namespace {

TEST(Ledger, AnUpdateHasOneOutcomeByItsFirstFailure)
{
    using Causes = std::vector<LossCause>;
    using enum LossCause;
    // What two nodes report for an update, in order, and what becomes of it.
    const struct
    {
        const char* name;
        Causes first;
        Causes second;
        bool recorded;
        std::optional<LossCause> outcome;
    } rows[] = {
        {"nothing", {}, {}, false, {}},
        {"recorded", {}, {}, true, {}},
        {"failure", {}, {FileNotWritten}, false, FileNotWritten},
        {"failure beside a record", {}, {FileNotWritten}, true, FileNotWritten},
        {"first of two", {ConversionFailed}, {InvalidInput}, false, ConversionFailed},
        {"rule", {}, {RefusedByRule}, false, RefusedByRule},
        {"rule, but recorded elsewhere", {RefusedByRule}, {}, true, {}},
        {"rule before failure", {RefusedByRule}, {EncoderFailed}, false, EncoderFailed},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Runtime::Graph graph(std::make_shared<Pool>(2));
        Source& source = add(graph, "Source", std::make_unique<Source>());
        addStep(graph, "First", {"Source"}, [&](StepNode& n) {
            for (const LossCause cause : row.first)
                n.reportLoss(cause);
            n.put(0, 1);
        });
        addStep(graph, "Second", {"First"}, [&](StepNode& n) {
            if (row.recorded) n.reportRecorded(1, 10);
            for (const LossCause cause : row.second)
                n.reportLoss(cause);
        });
        graph.start();
        source.push(1);
        graph.stop();
        const auto statistics = graph.getStatistics();
        EXPECT_EQ(statistics.offered, 1U);
        EXPECT_EQ(statistics.finished, row.outcome ? 0U : 1U);
        if (row.outcome) {
            EXPECT_EQ(of(statistics.lost, *row.outcome), 1U);
        }
        EXPECT_EQ(sum(statistics.nodes[1].lost), row.first.size());
        EXPECT_EQ(statistics.nodes[2].files, row.recorded ? 1U : 0U);
    }
}

TEST(Ledger, UpdatesThatNeverStartAndFramesThatNeverCameAreCounted)
{
    using enum LossCause;
    Runtime::Graph graph(std::make_shared<Pool>(2));
    Source& source = add(graph, "Source", std::make_unique<Source>());
    graph.start();
    source.makeUpdate().reset();
    auto failed = source.makeUpdate();
    source.reportLoss(GrabFailed, failed.get());
    failed.reset();
    source.reportMissed(FramesMissed, 5);
    source.reportLoss(LoadFailed);
    auto inHand = source.makeUpdate();
    auto failedInHand = source.makeUpdate();
    source.reportLoss(GrabFailed, failedInHand.get());
    EXPECT_EQ(graph.getStatistics().inFlight, 2U);
    graph.stop();
    EXPECT_FALSE(source.waitUntilSpaceAvailable());
    inHand.reset();
    failedInHand.reset();

    const auto statistics = graph.getStatistics();
    EXPECT_EQ(statistics.offered, 10U);
    EXPECT_EQ(statistics.finished, 0U);
    const std::pair<LossCause, std::uint64_t> wanted[] = {
        {SourceFailed, 1}, {GrabFailed, 2}, {FramesMissed, 5}, {LoadFailed, 1}, {NoSpace, 1}};
    for (const auto& [cause, count] : wanted) {
        SCOPED_TRACE(Core::lossCauseNames[static_cast<std::size_t>(cause)]);
        EXPECT_EQ(of(statistics.lost, cause), count);
        EXPECT_EQ(of(statistics.nodes[0].lost, cause), count);
    }
}

// A random graph with random faults in every node, several sources, stopped at a random moment: the test keeps an
// account of its own by node and cause, and both must agree to the last update.
TEST(Ledger, IsExactInRandomRunsWithFaults)
{
    const ScopedLogCapture quiet;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Runtime::Graph graph(std::make_shared<Pool>(1 + seed % 4));
        const std::size_t sources = 1 + random() % 2;
        const std::size_t steps = 3 + random() % 6;
        std::vector<std::atomic<std::uint64_t>> threw(steps);
        std::vector<std::atomic<std::uint64_t>> reported(steps);
        Names outputs;
        for (std::size_t i = 0; i < sources; ++i) {
            outputs.push_back("Source" + std::to_string(i));
            add(graph, outputs.back(), std::make_unique<Source>(true));
        }
        for (std::size_t i = 0; i < steps; ++i) {
            const std::string name = "Step" + std::to_string(i);
            const auto dice = std::make_shared<std::mt19937>(seed * 100 + static_cast<unsigned>(i));
            const auto step = [&threw, &reported, i, dice](StepNode& n) {
                const auto chance = (*dice)() % 100;
                if (chance < 5) {
                    ++threw[i];
                    throw std::runtime_error("fault");
                }
                if (chance < 15) {
                    ++reported[i];
                    n.reportLoss(chance < 10 ? LossCause::FileNotWritten : LossCause::RefusedByRule);
                }
                if (chance < 80) n.put(0, std::max(n.get(0), n.get(1)));
            };
            add(graph, name, std::make_unique<StepNode>(Names{"A", "B"}, Names{"Out"}, step));
            graph.connect(outputs[random() % outputs.size()], "Out", name, "A");
            graph.connect(outputs[random() % outputs.size()], "Out", name, "B");
            outputs.push_back(name);
        }
        const std::uint64_t enough = 200 + random() % 800;
        graph.start();
        while (graph.getStatistics().finished < enough)
            std::this_thread::yield();
        graph.stop();

        const auto statistics = graph.getStatistics();
        EXPECT_EQ(statistics.inFlight, 0U);
        EXPECT_EQ(statistics.offered, statistics.finished + sum(statistics.lost));
        std::uint64_t begun = 0;
        for (std::size_t i = 0; i < sources; ++i)
            begun += statistics.nodes[i].in;
        EXPECT_EQ(statistics.offered, begun);
        for (std::size_t i = 0; i < steps; ++i) {
            const auto& node = statistics.nodes[sources + i];
            EXPECT_EQ(of(node.lost, LossCause::NodeFailed), threw[i]);
            EXPECT_EQ(sum(node.lost), threw[i] + reported[i]);
            EXPECT_LE(node.queueMax, node.queueLimit + sources - 1);
        }
    }
}

TEST(StepTimes, PercentilesAreWithinASixteenth)
{
    Runtime::StepTimes times;
    for (std::uint64_t ns = 1; ns <= 100000; ++ns)
        times.record(ns);
    EXPECT_EQ(times.getMax(), 100000U);
    EXPECT_EQ(times.getMean(), 50000U);
    for (const double share : {0.01, 0.5, 0.9, 0.99}) {
        const auto exact = share * 100000;
        EXPECT_GE(static_cast<double>(times.getPercentile(share)), exact);
        EXPECT_LE(static_cast<double>(times.getPercentile(share)), exact * 17 / 16 + 1);
    }
    times.clear();
    EXPECT_EQ(times.getPercentile(0.99), 0U);
}

}  // namespace
