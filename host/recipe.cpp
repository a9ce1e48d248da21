#include "recipe.h"

#include <algorithm>
#include <limits>
#include <set>

#include "core/boolean.h"
#include "core/float.h"
#include "core/integer.h"
#include "core/string.h"

namespace Host {

using namespace Nivex::DataProcessing;
using Runtime::JsonArray;
using Runtime::JsonObject;
using Runtime::JsonValue;

namespace {

const std::vector<std::string> recipeKeys = {"Recipe", "Nodes", "Connections"};
const std::vector<std::string> nodeKeys = {"Name", "Module", "Settings", "Parameters", "StartArguments"};

std::string_view trim(std::string_view text)
{
    const auto first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string_view trimOneBlank(std::string_view text)
{
    if (text.starts_with(' ')) text.remove_prefix(1);
    if (text.ends_with(' ')) text.remove_suffix(1);
    return text;
}

/// Connections and command lines name nodes, so these characters would be ambiguous there.
bool isNodeName(std::string_view name)
{
    return !name.empty() && trim(name) == name && name.find('.') == std::string_view::npos &&
           name.find("->") == std::string_view::npos &&
           std::none_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

std::optional<PinName> parsePin(std::string_view text)
{
    text = trim(text);
    const auto dot = text.find('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == text.size()) return std::nullopt;
    return PinName{std::string(text.substr(0, dot)), std::string(text.substr(dot + 1))};
}

std::optional<RecipeConnection> parseConnection(std::string_view text)
{
    const auto arrow = text.find("->");
    if (arrow == std::string_view::npos) return std::nullopt;
    const auto from = parsePin(text.substr(0, arrow));
    const auto to = parsePin(text.substr(arrow + 2));
    if (!from || !to) return std::nullopt;
    return RecipeConnection{*from, *to, {}};
}

/// The value class of a start argument; empty for what has none.
struct ToVariant
{
    Utils::Variant operator()(bool value) const { return Utils::Variant(Core::Boolean(value)); }
    Utils::Variant operator()(std::int64_t value) const { return Utils::Variant(Core::Integer(value)); }
    Utils::Variant operator()(std::uint64_t value) const
    {
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return Utils::Variant(Core::Integer(value));
        }
        return (*this)(static_cast<std::int64_t>(value));
    }
    Utils::Variant operator()(double value) const { return Utils::Variant(Core::Float(value)); }
    Utils::Variant operator()(const std::string& value) const
    {
        return Utils::Variant(Core::String(GenICam::gcstring(value)));
    }
    template <typename Other>
    Utils::Variant operator()(const Other&) const
    {
        return {};
    }
};

class RecipeReader
{
public:
    explicit RecipeReader(FaultList& faults) : faults_(faults) {}

    Recipe read(const JsonValue& root)
    {
        const auto* object = open(root, "recipe", recipeKeys);
        if (!object) return {};
        checkVersion(root);
        readNodes(root);
        readConnections(root);
        return std::move(recipe_);
    }

private:
    void addWrongKind(const JsonValue& value, const std::string& object, const std::string& what,
                      const char* wanted)
    {
        faults_.add(value.position, object, what + " is " + value.describe() + "; wanted is " + wanted + ".");
    }

    /// Null, with a fault, if the value is no object. Keys that are not known are faults.
    const JsonObject* open(const JsonValue& value, const std::string& object,
                           const std::vector<std::string>& known)
    {
        const auto* result = value.as<JsonObject>();
        if (!result) {
            addWrongKind(value, object, "It", "an object");
            return nullptr;
        }
        for (const auto& member : result->members) {
            if (std::find(known.begin(), known.end(), member.name) != known.end()) continue;
            faults_.addUnknown(member.namePosition, object, "The key \"" + member.name + "\" is not known.",
                               member.name, known);
        }
        return result;
    }

    /// The value of a key if it is of the kind wanted. Null, with a fault, otherwise; without one if the key is
    /// missing and not required.
    template <typename Kind>
    std::shared_ptr<JsonValue> get(const JsonValue& parent, const std::string& object, const char* key,
                                   const char* wanted, bool isRequired)
    {
        auto value = parent.as<JsonObject>()->find(key);
        if (!value) {
            if (isRequired) {
                faults_.add(parent.position, object, std::string("The key \"") + key + "\" is missing.");
            }
            return nullptr;
        }
        if (value->as<Kind>()) return value;
        addWrongKind(*value, object, std::string("\"") + key + "\"", wanted);
        return nullptr;
    }

    void checkVersion(const JsonValue& root)
    {
        const auto version = root.as<JsonObject>()->find("Recipe");
        if (!version) {
            faults_.add(root.position, "recipe",
                        "The key \"Recipe\", the version of the form, is missing; it must be 1.");
        } else if (const auto* number = version->as<std::uint64_t>(); !number || *number != 1) {
            faults_.add(version->position, "recipe",
                        "\"Recipe\", the version of the form, is " + version->describe() + "; it must be 1.");
        }
    }

    void readNodes(const JsonValue& root)
    {
        const auto list = get<JsonArray>(root, "recipe", "Nodes", "a list of objects", true);
        if (!list) return;
        const auto& items = list->as<JsonArray>()->items;
        if (items.size() > Recipe::mostNodes) {
            faults_.add(list->position, "recipe",
                        "It has " + std::to_string(items.size()) + " nodes; allowed are " +
                            std::to_string(Recipe::mostNodes) + ".");
            return;
        }
        hasAllNames_ = true;
        for (std::size_t i = 0; i < items.size(); ++i)
            readNode(*items[i], "Nodes[" + std::to_string(i) + "]");
    }

    void readNode(const JsonValue& value, std::string object)
    {
        RecipeNode node;
        node.position = value.position;
        if (const auto* members = value.as<JsonObject>()) {
            const auto name = members->find("Name");
            if (name && name->as<std::string>() && isNodeName(*name->as<std::string>())) {
                object = nodeObject(*name->as<std::string>());
            }
        }
        if (!open(value, object, nodeKeys)) {
            hasAllNames_ = false;
            return;
        }
        const bool isNamed = readName(value, object, node);
        if (const auto module = get<std::string>(value, object, "Module", "a text", true)) {
            node.module = *module->as<std::string>();
            node.modulePosition = module->position;
        }
        node.settings = get<JsonObject>(value, object, "Settings", "an object", false);
        readParameters(value, object, node);
        readStartArguments(value, object, node);
        if (isNamed) recipe_.nodes.push_back(std::move(node));
    }

    bool readName(const JsonValue& value, const std::string& object, RecipeNode& node)
    {
        const auto name = get<std::string>(value, object, "Name", "a text", true);
        if (name) node.name = *name->as<std::string>();
        if (name && !isNodeName(node.name)) {
            faults_.add(
                name->position, object,
                "The name " + name->describe() +
                    " is not allowed; a name is not empty, has no '.', no \"->\", no control character and "
                    "no blank at its ends.");
        } else if (name && !names_.insert(node.name).second) {
            faults_.add(name->position, object, "There is a node of that name already.");
            return false;
        } else if (name) {
            return true;
        }
        hasAllNames_ = false;
        return false;
    }

    void readParameters(const JsonValue& value, const std::string& object, RecipeNode& node)
    {
        const auto list = get<JsonArray>(value, object, "Parameters", "a list of texts \"NAME = value\"", false);
        if (!list) return;
        for (const auto& item : list->as<JsonArray>()->items) {
            const auto* text = item->as<std::string>();
            auto assignment = text ? parseAssignment(*text) : std::nullopt;
            if (!assignment) {
                addWrongKind(*item, object, "An entry of \"Parameters\"",
                             "a text \"NAME = value\" or \"@MAP/NAME = value\"");
                continue;
            }
            assignment->position = item->position;
            node.parameters.push_back(std::move(*assignment));
        }
    }

    void readStartArguments(const JsonValue& value, const std::string& object, RecipeNode& node)
    {
        const auto arguments = get<JsonObject>(value, object, "StartArguments", "an object", false);
        if (!arguments) return;
        for (const auto& member : arguments->as<JsonObject>()->members) {
            Utils::Variant variant = std::visit(ToVariant(), member.value->data);
            if (variant.isValid()) {
                node.startArguments.setArgument(GenICam::gcstring(member.name), std::move(variant));
            } else {
                addWrongKind(*member.value, object, "The start argument \"" + member.name + "\"",
                             "a text, a number or a bool");
            }
        }
    }

    void readConnections(const JsonValue& root)
    {
        const auto list = get<JsonArray>(root, "recipe", "Connections", "a list of texts", false);
        if (!list) return;
        const auto& items = list->as<JsonArray>()->items;
        if (items.size() > Recipe::mostConnections) {
            faults_.add(list->position, "recipe",
                        "It has " + std::to_string(items.size()) + " connections; allowed are " +
                            std::to_string(Recipe::mostConnections) + ".");
            return;
        }
        for (const auto& item : items)
            readConnection(*item);
    }

    void readConnection(const JsonValue& item)
    {
        const auto* text = item.as<std::string>();
        auto connection = text ? parseConnection(*text) : std::nullopt;
        if (!connection) {
            addWrongKind(item, "Connections", "An entry", "a text \"NODE.OUTPUT -> NODE.INPUT\"");
            return;
        }
        connection->position = item.position;
        const std::string object = "connection " + item.describe();
        const bool isFromKnown = checkNode(connection->from.node, object, item.position);
        const bool isToKnown = checkNode(connection->to.node, object, item.position);
        if (!isFromKnown || !isToKnown) return;
        if (const auto [taken, isNew] = inputs_.insert({connection->to, item.describe()}); !isNew) {
            faults_.add(item.position, object,
                        "The input has the connection " + taken->second + " already; it takes one.");
            return;
        }
        recipe_.connections.push_back(std::move(*connection));
    }

    /// Silent about unknown names while the names of some nodes could not be read.
    bool checkNode(const std::string& name, const std::string& object, TextPosition position)
    {
        if (names_.count(name) != 0) return true;
        if (hasAllNames_) {
            faults_.addUnknown(position, object, "There is no node \"" + name + "\".", name,
                               {names_.begin(), names_.end()});
        }
        return false;
    }

    FaultList& faults_;
    Recipe recipe_;
    std::set<std::string> names_;
    bool hasAllNames_ = false;
    std::map<PinName, std::string> inputs_;  ///< The text of the connection of each input that has one.
};

}  // namespace

std::optional<Assignment> parseAssignment(std::string_view text)
{
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    std::string_view name = trim(text.substr(0, equals));
    std::string_view map = ownNodeMap;
    if (name.starts_with('@')) {
        const auto slash = name.find('/');
        if (slash == std::string_view::npos || slash == 1) return std::nullopt;
        map = name.substr(0, slash);
        name = name.substr(slash + 1);
    }
    if (name.empty()) return std::nullopt;
    return Assignment{std::string(map), std::string(name), std::string(trimOneBlank(text.substr(equals + 1))), {}};
}

std::string nodeObject(std::string_view name)
{
    return "node \"" + std::string(name) + "\"";
}

Recipe readRecipe(std::string_view text, FaultList& faults)
{
    const Runtime::JsonDocument document = Runtime::parseJson(text);
    for (const auto& fault : document.faults)
        faults.add(fault.position, "recipe", fault.message);
    return document.root ? RecipeReader(faults).read(*document.root) : Recipe();
}

}  // namespace Host
