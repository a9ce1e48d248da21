#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "faults.h"
#include "noderesources.h"
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
    /// Of each node, by name; every node has one.
    std::map<std::string, std::shared_ptr<NodeResources>> resources;
    std::unique_ptr<Nivex::DataProcessing::Runtime::Graph> graph;
    std::map<std::string, Nivex::DataProcessing::Core::NodeArgumentCollection> startArguments;
    /// Values for maps that did not exist yet; see applyPending.
    std::vector<NodeAssignment> pending;
    /// Settings that no node asked for. No faults, as a store may hold those of another version.
    FaultList warnings;
};

/// Makes the nodes, loads their settings, gives them their parameters and then those of the command line, and
/// connects the pins, which may depend on all these. Starts nothing. A value for a map that a node with devices
/// does not have may be for a map of its device, and waits. What fails is added to `faults`, or for `assignments`
/// to `assignmentFaults`, and the rest goes on; the result may be used only if there are none.
///
/// `pool` is where the nodes get their resources from. `folder` is the absolute path of the recipe's folder, the
/// location of the settings.
LoadedRecipe loadRecipe(const Recipe& recipe, const PackageSet& packages,
                        const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool,
                        const std::string& folder, const std::vector<NodeAssignment>& assignments,
                        FaultList& faults, FaultList& assignmentFaults);

/// Gives the values that waited for their maps, after the resources were allocated. A map that still does not
/// exist and a value that is refused are faults, kept apart as by loadRecipe.
void applyPending(const LoadedRecipe& recipe, FaultList& faults, FaultList& assignmentFaults);

}  // namespace Host
