#include "runreport.h"

#include <gmock/gmock.h>

namespace Host {

namespace {

using namespace Nivex::DataProcessing;
using Core::LossCause;
using Runtime::RunStatistics;

std::uint64_t& lost(Core::LossCounts& counts, LossCause cause)
{
    return counts[static_cast<std::size_t>(cause)];
}

RunStatistics makeStatistics()
{
    RunStatistics statistics;
    statistics.offered = 100;
    statistics.finished = 90;
    lost(statistics.lost, LossCause::LoadFailed) = 2;
    lost(statistics.lost, LossCause::FileNotWritten) = 3;
    lost(statistics.lost, LossCause::RefusedByRule) = 5;
    statistics.duration = std::chrono::milliseconds(2500);
    Runtime::NodeStatistics node;
    node.name = "Writer";
    node.module = "DataWriter";
    node.in = 98;
    node.out = 1;
    node.failed = 4;
    lost(node.lost, LossCause::FileNotWritten) = 4;
    node.files = 89;
    node.bytes = 3 << 20;
    node.queue = 3;
    node.queueMax = 7;
    node.queueLimit = 8;
    node.stepMeanNs = 1500;
    node.stepP99Ns = 1600;
    node.stepMaxNs = 1700;
    statistics.nodes.push_back(node);
    return statistics;
}

}  // namespace

TEST(RunReport, StatisticsFollowTheirSchema)
{
    EXPECT_EQ(formatStatisticsJson(makeStatistics()), R"({
    "schema": "stagelet-stats/1",
    "duration_ns": 2500000000,
    "updates": {
        "offered": 100,
        "finished": 90,
        "lost": {
            "load_failed": 2,
            "file_not_written": 3,
            "refused_by_rule": 5
        }
    },
    "nodes": [
        {
            "name": "Writer",
            "module": "DataWriter",
            "in": 98,
            "out": 1,
            "failed": 4,
            "lost": {
                "file_not_written": 4
            },
            "files": 89,
            "bytes": 3145728,
            "queue_max": 7,
            "step_ns": {
                "mean": 1500,
                "p99": 1600,
                "max": 1700
            }
        }
    ]
}
)");
    EXPECT_THAT(formatStatisticsJson({}), testing::HasSubstr("\"nodes\": []"));
}

TEST(RunReport, SummaryAndProgress)
{
    const RunStatistics statistics = makeStatistics();
    EXPECT_EQ(
        formatSummary(statistics),
        "NODE    IN  OUT  FAILED  FILES      SIZE  STEP  LOST\n"
        "Writer  98    1       4     89  3.00 MiB  2 us  4 (4 file_not_written)\n"
        "100 updates offered, 90 finished, 10 lost (2 load_failed, 3 file_not_written, 5 refused_by_rule), in "
        "2.5 s (36.0/s)");
    RunStatistics before;
    before.finished = 80;
    before.duration = std::chrono::milliseconds(2300);
    EXPECT_EQ(formatProgress(statistics, before, 0), "90 updates, 50.0/s, 89 files, 4 errors, queue 37 %");
    EXPECT_EQ(formatProgress(statistics, before, 11), "90 updates");
}

TEST(RunReport, RulesAreNoDropsAndOnlyOutputFailuresAreOutputFailures)
{
    EXPECT_EQ(countDrops(makeStatistics()), 5U);
    RunStatistics statistics;
    statistics.nodes.resize(2);
    for (std::size_t i = 0; i < Core::lossCauseCount; ++i)
        statistics.nodes[i % 2].lost[i] = 1;
    EXPECT_EQ(countOutputFailures(statistics), 3U);
}

}  // namespace Host
