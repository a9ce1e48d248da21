#include "recipeloader.h"

#include <algorithm>

#include "hosterror.h"
#include "nodesettings.h"
#include "parameters.h"

namespace Host {

using namespace Nivex::DataProcessing;
using Runtime::ConnectionError;

namespace {

template <typename Descriptor>
std::vector<std::string> namesOf(const std::vector<Descriptor>& pins)
{
    std::vector<std::string> names;
    names.reserve(pins.size());
    for (const auto& pin : pins)
        names.push_back(pin.getName().str());
    return names;
}

/// How faults call an assignment of the command line, or the node that one of the recipe is for.
std::string objectOf(const NodeAssignment& entry)
{
    return entry.text.empty() ? nodeObject(entry.node) : entry.text;
}

class RecipeLoader
{
public:
    RecipeLoader(const PackageSet& packages, std::shared_ptr<Core::IResourcePool> pool, const std::string& folder)
        : packages_(packages), pool_(std::move(pool)), folder_(folder)
    {
        result_.graph = std::make_unique<Runtime::Graph>(pool_);
    }

    void addNode(const RecipeNode& node, FaultList& faults)
    {
        if (node.module.empty()) return;
        const Runtime::Package* package = packages_.findPackage(node.module);
        if (!package) {
            faults.addUnknown(node.modulePosition, nodeObject(node.name),
                              "There is no module \"" + node.module +
                                  "\"; --package FILE, for each package that is needed, brings others.",
                              node.module, packages_.getModuleNames());
            return;
        }
        const auto resources = std::make_shared<NodeResources>(pool_);
        result_.resources[node.name] = resources;
        try {
            result_.graph->addNode(node.name, node.module, package->createNode(node.module, resources));
        } catch (...) {
            faults.add(
                node.modulePosition, nodeObject(node.name),
                "A node of the module \"" + node.module + "\" cannot be made: " + describeCurrentException());
            return;
        }
        if (!node.startArguments.empty()) result_.startArguments[node.name] = node.startArguments;
        loadSettingsOf(node, faults);
        for (const Assignment& assignment : node.parameters)
            assign({{}, node.name, assignment}, faults);
    }

    /// Does nothing for a node that could not be made.
    void assign(const NodeAssignment& entry, FaultList& faults)
    {
        Core::NodeBase* node = result_.graph->findNode(entry.node);
        if (!node) return;
        const Assignment& assignment = entry.assignment;
        try {
            const auto map = findNodeMap(entry.node, *node, assignment.map);
            if (map) {
                assignParameter(*map, assignment.parameter, assignment.value);
            } else {
                result_.pending.push_back(entry);
            }
        } catch (const ParameterError& e) {
            faults.addUnknown(assignment.position, objectOf(entry), e.what(), e.name, e.known);
        } catch (...) {
            faults.add(assignment.position, objectOf(entry), describeCurrentException());
        }
    }

    void connect(const RecipeConnection& connection, FaultList& faults)
    {
        Core::NodeBase* from = result_.graph->findNode(connection.from.node);
        Core::NodeBase* to = result_.graph->findNode(connection.to.node);
        if (!from || !to) return;
        const std::string object = "connection \"" + connection.from.node + "." + connection.from.pin + " -> " +
                                   connection.to.node + "." + connection.to.pin + "\"";
        try {
            result_.graph->connect(connection.from.node, connection.from.pin, connection.to.node,
                                   connection.to.pin);
        } catch (const ConnectionError& e) {
            std::string name;
            std::vector<std::string> known;
            if (e.getKind() == ConnectionError::Kind::UnknownOutput) {
                name = connection.from.pin;
                known = namesOf(from->getOutputDescriptors());
            } else if (e.getKind() == ConnectionError::Kind::UnknownInput) {
                name = connection.to.pin;
                known = namesOf(to->getInputDescriptors());
            }
            faults.addUnknown(connection.position, object, e.what(), name, known);
        } catch (...) {
            faults.add(connection.position, object, describeCurrentException());
        }
    }

    LoadedRecipe take() { return std::move(result_); }

private:
    /// Nothing for a map that may come with the node's resources.
    std::optional<GenApi::CNodeMapRef> findNodeMap(const std::string& name, Core::NodeBase& node,
                                                   const std::string& identifier) const
    {
        if (result_.resources.at(name)->usesDevices()) {
            const auto present = listNodeMaps(node);
            if (std::find(present.begin(), present.end(), identifier) == present.end()) return std::nullopt;
        }
        return getNodeMap(node, identifier);
    }

    /// Goes on after a refused value with the one that the node itself would save, so that all of them are told.
    void loadSettingsOf(const RecipeNode& node, FaultList& faults)
    {
        if (!node.settings) return;
        Core::NodeBase& made = *result_.graph->findNode(node.name);
        for (std::string cause, before; faults.getCount() < FaultList::most; before = cause) {
            const auto store = std::make_shared<Runtime::JsonSettings>(node.settings, GenICam::gcstring(folder_));
            try {
                loadSettings(made, store);
                return warnOfUnread(node, *store);
            } catch (...) {
                cause = describeCurrentException();
            }
            if (cause == before) return;
            faults.add(store->getRefusalPosition().value_or(node.settings->position), nodeObject(node.name),
                       "The settings cannot be loaded: " + cause);
            if (!replaceRefused(made, *store)) return;
        }
    }

    static bool replaceRefused(Core::NodeBase& node, Runtime::JsonSettings& store)
    {
        try {
            return store.replaceRefused(*saveSettings(node));
        } catch (...) {
            return false;  // The fault that is known is told; the others show when it is mended.
        }
    }

    void warnOfUnread(const RecipeNode& node, const Runtime::JsonSettings& store)
    {
        for (const auto& entry : store.listUnread()) {
            result_.warnings.addUnknown(entry.position, nodeObject(node.name),
                                        "The module does not read the setting \"" + entry.path + "\".", entry.name,
                                        entry.missed);
        }
    }

    const PackageSet& packages_;
    std::shared_ptr<Core::IResourcePool> pool_;
    std::string folder_;
    LoadedRecipe result_;
};

std::vector<std::string> nodeNames(const Recipe& recipe)
{
    std::vector<std::string> names;
    for (const RecipeNode& node : recipe.nodes)
        names.push_back(node.name);
    return names;
}

}  // namespace

std::optional<NodeAssignment> parseNodeAssignment(const std::string& text)
{
    const auto dot = text.find('.');
    if (dot == std::string::npos || dot == 0) return std::nullopt;
    auto assignment = parseAssignment(std::string_view(text).substr(dot + 1));
    if (!assignment || text.find('=') < dot) return std::nullopt;
    return NodeAssignment{text, text.substr(0, dot), std::move(*assignment)};
}

LoadedRecipe loadRecipe(const Recipe& recipe, const PackageSet& packages,
                        const std::shared_ptr<Core::IResourcePool>& pool, const std::string& folder,
                        const std::vector<NodeAssignment>& assignments, FaultList& faults,
                        FaultList& assignmentFaults)
{
    RecipeLoader loader(packages, pool, folder);
    for (const RecipeNode& node : recipe.nodes)
        loader.addNode(node, faults);
    const std::vector<std::string> names = nodeNames(recipe);
    for (const NodeAssignment& entry : assignments) {
        if (std::find(names.begin(), names.end(), entry.node) == names.end()) {
            assignmentFaults.addUnknown({}, entry.text, "The recipe has no node \"" + entry.node + "\".",
                                        entry.node, names);
        } else {
            loader.assign(entry, assignmentFaults);
        }
    }
    for (const RecipeConnection& connection : recipe.connections)
        loader.connect(connection, faults);
    return loader.take();
}

void applyPending(const LoadedRecipe& recipe, FaultList& faults, FaultList& assignmentFaults)
{
    for (const NodeAssignment& entry : recipe.pending) {
        FaultList& list = entry.text.empty() ? faults : assignmentFaults;
        const Assignment& assignment = entry.assignment;
        try {
            const auto map = getNodeMap(*recipe.graph->findNode(entry.node), assignment.map);
            if (!map) {
                throw ParameterError("The node map \"" + assignment.map +
                                     "\" does not exist, even with all resources allocated.");
            }
            assignParameter(*map, assignment.parameter, assignment.value);
        } catch (const ParameterError& e) {
            list.addUnknown(assignment.position, objectOf(entry), e.what(), e.name, e.known);
        } catch (...) {
            list.add(assignment.position, objectOf(entry), describeCurrentException());
        }
    }
}

}  // namespace Host
