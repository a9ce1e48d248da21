#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/nodeargumentcollection.h"
#include "faults.h"
#include "runtime/jsondocument.h"

namespace Host {

/// One value for one parameter: "NAME = value" on the node's own map, "@CameraDevice/NAME = value" on another. The
/// value runs to the end of the text; one blank on each side of it is no part of it.
struct Assignment
{
    std::string map;
    std::string parameter;
    std::string value;
    TextPosition position;
};

/// The node map of a node's own parameters.
inline constexpr const char* ownNodeMap = "@Stagelet";

/// Nothing if the text has no '=', no name before it, or a map without name behind it.
std::optional<Assignment> parseAssignment(std::string_view text);

struct RecipeNode
{
    std::string name;
    std::string module;
    TextPosition position;
    TextPosition modulePosition;
    std::shared_ptr<Nivex::DataProcessing::Runtime::JsonValue> settings;  ///< Null if the node has none.
    std::vector<Assignment> parameters;
    Nivex::DataProcessing::Core::NodeArgumentCollection startArguments;
};

struct PinName
{
    std::string node;
    std::string pin;

    friend auto operator<=>(const PinName&, const PinName&) = default;
};

struct RecipeConnection
{
    PinName from;
    PinName to;
    TextPosition position;
};

/// A recipe as its file says, not yet compared with any module.
struct Recipe
{
    static constexpr std::size_t mostNodes = 1000;
    static constexpr std::size_t mostConnections = 10000;

    std::vector<RecipeNode> nodes;
    std::vector<RecipeConnection> connections;
};

/// Reads a recipe. All faults that can be told from the text alone are added to `faults`: JSON, keys, types, names
/// given twice, nodes in connections that do not exist, second connections to one pin. The recipe holds what was
/// in order.
Recipe readRecipe(std::string_view text, FaultList& faults);

/// How faults call a node: `node "Writer"`.
std::string nodeObject(std::string_view name);

}  // namespace Host
