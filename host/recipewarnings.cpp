#include "recipewarnings.h"

#include <algorithm>
#include <filesystem>

#include "parameters.h"

namespace Host {

using namespace Nivex::DataProcessing;

namespace {

/// The value of a node's text parameter; empty if it has none such.
std::string readTextParameter(Core::NodeBase& node, const char* name)
{
    try {
        const auto map = getNodeMap(node, ownNodeMap);
        auto* parameter = map ? dynamic_cast<GenApi::IString*>(map->GetNode(name)) : nullptr;
        return parameter && GenApi::IsReadable(parameter) ? parameter->GetValue().str() : std::string();
    } catch (const ParameterError&) {
        return {};
    }
}

bool isConnected(const Recipe& recipe, PinName RecipeConnection::*end, const std::string& node)
{
    return std::any_of(recipe.connections.begin(), recipe.connections.end(),
                       [&](const RecipeConnection& connection) { return (connection.*end).node == node; });
}

}  // namespace

void addWarnings(const Recipe& recipe, const Runtime::Graph& graph, FaultList& warnings)
{
    for (const RecipeNode& entry : recipe.nodes) {
        Core::NodeBase& node = *graph.findNode(entry.name);
        const auto warn = [&](const std::string& message) {
            warnings.add(entry.position, nodeObject(entry.name), message);
        };
        if (!node.getInputDescriptors().empty() && !isConnected(recipe, &RecipeConnection::to, entry.name)) {
            warn("No input is connected; it will have nothing to do.");
        }
        if (!node.getOutputDescriptors().empty() && !isConnected(recipe, &RecipeConnection::from, entry.name)) {
            warn("No output is connected; nothing takes what it gives.");
        }
        const std::string folder = readTextParameter(node, "OutputFolderName");
        std::error_code error;
        if (!folder.empty() && !std::filesystem::is_directory(folder, error)) {
            warn("The output folder \"" + folder + "\" does not exist; nothing will be written there.");
        }
    }
}

}  // namespace Host
