#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "hosterror.h"
#include "recipeloader.h"

namespace Host {

struct RunOptions
{
    std::string recipe;
    std::vector<std::string> packages;
    std::optional<std::chrono::nanoseconds>
        time;                   ///< Alone: how long it runs. Beside another end: the most it may take.
    std::uint64_t updates = 0;  ///< 0: no limit.
    std::optional<std::chrono::nanoseconds> idle;
    /// When a run that waits for another end than idleness says that it is idle. No option; tests shorten it.
    std::chrono::nanoseconds idleNote = std::chrono::seconds(5);
    std::vector<NodeAssignment> assignments;
    std::size_t emulatedCameras = 0;
    bool wantsStatistics = false;
    int logLevel = 4;
    std::optional<std::uint64_t> maxDrops;
};

/// Loads and connects a recipe, starts nothing. Says on `out` what it is, or raises HostError (RecipeInvalid)
/// after all its faults went to stderr. Makes the recipe's folder the process's working directory, since relative
/// paths in a recipe, those given to nodes as parameters included, count from there.
void checkRecipe(const RunOptions& options, std::ostream& out);

/// Runs a recipe to its end; see the command's help. The statistics, if wanted, are all that goes to `out`. Raises
/// HostError for what prevents the run; what the run brought is the result.
ExitCode runRecipe(const RunOptions& options, std::ostream& out);

}  // namespace Host
