#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "packageset.h"
#include "recipe.h"
#include "runtime/graph.h"

namespace Host {

/// "NODE.PARAMETER=VALUE" of the command line.
struct NodeAssignment
{
    std::string text;  ///< As it was given.
    std::string node;
    Assignment assignment;
};

/// Nothing unless the text has that form.
std::optional<NodeAssignment> parseNodeAssignment(const std::string& text);

/// A recipe made of nodes, connected and ready to be allocated and started.
struct LoadedRecipe
{
    std::unique_ptr<Nivex::DataProcessing::Runtime::Graph> graph;
    std::map<std::string, Nivex::DataProcessing::Core::NodeArgumentCollection> startArguments;
    /// Values for maps that did not exist yet; see applyPending.
    std::vector<NodeAssignment> pending;
};

/// Makes the nodes, loads their settings, gives them their parameters and then those of the command line, and
/// connects the pins, which may depend on all these. Starts nothing. What fails is added to `faults`, or for
/// `assignments` to `assignmentFaults`, and the rest goes on; the result may be used only if there are none.
///
/// `folder` is the absolute path of the recipe's folder, the location of the settings.
LoadedRecipe loadRecipe(const Recipe& recipe, const PackageSet& packages, const std::string& folder,
                        const std::vector<NodeAssignment>& assignments, FaultList& faults,
                        FaultList& assignmentFaults);

/// Gives the values that waited for their maps, after the resources were allocated. Raises HostError (RunFailed)
/// if a map still does not exist or a value is refused.
void applyPending(const LoadedRecipe& recipe);

}  // namespace Host
