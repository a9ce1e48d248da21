#pragma once

#include <cstdint>
#include <string>

#include "runtime/graph.h"

namespace Host {

/// The statistics as JSON, {"schema": "stagelet-stats/1", ...}. Under "lost" stand the causes that occurred.
std::string formatStatisticsJson(const Nivex::DataProcessing::Runtime::RunStatistics& statistics);

/// What came of a run, for a person: a table of the nodes and one line on the whole.
std::string formatSummary(const Nivex::DataProcessing::Runtime::RunStatistics& statistics);

/// One line on the state of a running recipe. `before` is an earlier state, for the rate; `width` is the
/// terminal's.
std::string formatProgress(const Nivex::DataProcessing::Runtime::RunStatistics& now,
                           const Nivex::DataProcessing::Runtime::RunStatistics& before, std::size_t width);

/// Losses of all nodes because files, folders or videos could not be written.
std::uint64_t countOutputFailures(const Nivex::DataProcessing::Runtime::RunStatistics& statistics);

/// Where to look after output failures, by the causes that occurred.
std::string adviseOnOutput(const Nivex::DataProcessing::Runtime::RunStatistics& statistics);

/// Updates lost for other reasons than a rule of the recipe.
std::uint64_t countDrops(const Nivex::DataProcessing::Runtime::RunStatistics& statistics);

}  // namespace Host
