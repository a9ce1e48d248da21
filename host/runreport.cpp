#include "runreport.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "jsonbuild.h"
#include "texttable.h"
#include "units.h"

namespace Host {

using namespace Nivex::DataProcessing;
using Core::LossCause;
using Core::LossCounts;
using Runtime::NodeStatistics;
using Runtime::RunStatistics;

namespace {

std::uint64_t sum(const LossCounts& lost)
{
    return std::accumulate(lost.begin(), lost.end(), std::uint64_t{0});
}

std::uint64_t countOf(const LossCounts& lost, LossCause cause)
{
    return lost[static_cast<std::size_t>(cause)];
}

/// Over all nodes.
std::uint64_t countOf(const RunStatistics& statistics, LossCause cause)
{
    std::uint64_t count = 0;
    for (const NodeStatistics& node : statistics.nodes)
        count += countOf(node.lost, cause);
    return count;
}

JsonObject toJson(const LossCounts& lost)
{
    JsonObject object;
    for (std::size_t i = 0; i < lost.size(); ++i) {
        if (lost[i] != 0) add(object, std::string(Core::lossCauseNames[i]), lost[i]);
    }
    return object;
}

JsonObject toJson(const NodeStatistics& node)
{
    JsonObject step;
    add(step, "mean", node.stepMeanNs);
    add(step, "p99", node.stepP99Ns);
    add(step, "max", node.stepMaxNs);
    JsonObject object;
    add(object, "name", node.name);
    add(object, "module", node.module);
    add(object, "in", node.in);
    add(object, "out", node.out);
    add(object, "failed", node.failed);
    add(object, "lost", toJson(node.lost));
    add(object, "files", node.files);
    add(object, "bytes", node.bytes);
    add(object, "queue_max", node.queueMax);
    add(object, "step_ns", std::move(step));
    return object;
}

/// " (2 load_failed, 1 file_not_written)"; empty without losses.
std::string describeCauses(const LossCounts& lost)
{
    std::string causes;
    for (std::size_t i = 0; i < lost.size(); ++i) {
        if (lost[i] == 0) continue;
        causes +=
            (causes.empty() ? " (" : ", ") + std::to_string(lost[i]) + " " + std::string(Core::lossCauseNames[i]);
    }
    return causes.empty() ? causes : causes + ")";
}

double perSecond(std::uint64_t count, std::chrono::nanoseconds duration)
{
    const double seconds = std::chrono::duration<double>(duration).count();
    return seconds > 0 ? static_cast<double>(count) / seconds : 0;
}

std::string formatRate(double rate)
{
    const auto tenths = std::llround(rate * 10);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + "/s";
}

template <typename Member>
std::uint64_t total(const RunStatistics& statistics, Member member)
{
    std::uint64_t result = 0;
    for (const NodeStatistics& node : statistics.nodes)
        result += node.*member;
    return result;
}

/// The fullest queue, for that is the one that holds the others back.
std::uint64_t fullestQueuePercent(const RunStatistics& statistics)
{
    std::uint64_t percent = 0;
    for (const NodeStatistics& node : statistics.nodes) {
        if (node.queueLimit != 0) percent = std::max(percent, node.queue * 100 / node.queueLimit);
    }
    return percent;
}

}  // namespace

std::string formatStatisticsJson(const RunStatistics& statistics)
{
    JsonObject updates;
    add(updates, "offered", statistics.offered);
    add(updates, "finished", statistics.finished);
    add(updates, "lost", toJson(statistics.lost));
    JsonArray nodes;
    for (const NodeStatistics& node : statistics.nodes)
        add(nodes, toJson(node));
    JsonObject root;
    add(root, "schema", std::string("stagelet-stats/1"));
    add(root, "duration_ns", static_cast<std::uint64_t>(statistics.duration.count()));
    add(root, "updates", std::move(updates));
    add(root, "nodes", std::move(nodes));
    return formatJson(JsonValue(std::move(root)));
}

std::string formatSummary(const RunStatistics& statistics)
{
    TextTable table({{"NODE"},
                     {"IN", 0, true},
                     {"OUT", 0, true},
                     {"FAILED", 0, true},
                     {"FILES", 0, true},
                     {"SIZE", 0, true},
                     {"STEP", 0, true},
                     {"LOST"}});
    for (const NodeStatistics& node : statistics.nodes) {
        table.addRow({node.name, std::to_string(node.in), std::to_string(node.out), std::to_string(node.failed),
                      std::to_string(node.files), formatSize(node.bytes),
                      formatDuration(std::chrono::nanoseconds(node.stepMeanNs)),
                      std::to_string(sum(node.lost)) + describeCauses(node.lost)});
    }
    return table.toText(0) + std::to_string(statistics.offered) + " updates offered, " +
           std::to_string(statistics.finished) + " finished, " + std::to_string(sum(statistics.lost)) + " lost" +
           describeCauses(statistics.lost) + ", in " + formatDuration(statistics.duration) + " (" +
           formatRate(perSecond(statistics.finished, statistics.duration)) + ")";
}

std::string formatProgress(const RunStatistics& now, const RunStatistics& before, std::size_t width)
{
    std::string text = std::to_string(now.finished) + " updates, " +
                       formatRate(perSecond(now.finished - before.finished, now.duration - before.duration)) +
                       ", " + std::to_string(total(now, &NodeStatistics::files)) + " files, " +
                       std::to_string(total(now, &NodeStatistics::failed)) + " errors, queue " +
                       std::to_string(fullestQueuePercent(now)) + " %";
    // A line that wraps could not be replaced in place.
    if (width != 0 && text.size() >= width) text.resize(width - 1);
    return text;
}

std::uint64_t countOutputFailures(const RunStatistics& statistics)
{
    return countOf(statistics, LossCause::FileNotWritten) + countOf(statistics, LossCause::NoSession) +
           countOf(statistics, LossCause::EncoderFailed);
}

std::string adviseOnOutput(const RunStatistics& statistics)
{
    std::string advice = "see the log entries above";
    if (countOf(statistics, LossCause::FileNotWritten) + countOf(statistics, LossCause::NoSession) != 0) {
        advice += ", the output folder's existence and its free space";
    }
    if (countOf(statistics, LossCause::EncoderFailed) != 0) {
        advice += "; give a video pictures of one size, or each size a video of its own";
    }
    return advice;
}

std::uint64_t countDrops(const RunStatistics& statistics)
{
    return sum(statistics.lost) - countOf(statistics.lost, LossCause::RefusedByRule);
}

}  // namespace Host
