#pragma once

#include "recipeloader.h"

namespace Host {

/// Adds to `warnings` what is allowed and most likely not meant: nodes that nothing comes to or goes from, and
/// output folders that do not exist.
void addWarnings(const Recipe& recipe, const Nivex::DataProcessing::Runtime::Graph& graph, FaultList& warnings);

}  // namespace Host
