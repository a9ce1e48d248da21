#pragma once

#include <optional>
#include <string>
#include <vector>

#include "genapi/genapi.h"

#include "core/nodebase.h"
#include "runtime/jsondocument.h"

namespace Host {

/// What a node map tells about one parameter at this moment.
struct ParameterRow
{
    using Scalar = Nivex::DataProcessing::Runtime::JsonValue::Data;

    std::string name;
    std::string displayName;
    std::string category;  ///< The display name of the category it stands in; empty directly below the root.
    std::string kind;      ///< "Integer", "Float", "Boolean", "String", "Enumeration", "Command", "Register".
    std::string valueText;
    Scalar value;  ///< Null where there is none, or it cannot be read.
    Scalar minimum;
    Scalar maximum;
    Scalar increment;
    std::string unit;
    std::vector<std::string> entries;  ///< Of an enumeration: those that can be chosen now.
    std::string access;
    std::string visibility;
    std::string toolTip;
    std::vector<std::string> selectors;  ///< The parameters that choose what this one shows.
};

/// The parameters of a map that are for users up to a level of experience, in the order of its categories. What is
/// not implemented is left out.
std::vector<ParameterRow> listParameters(const GenApi::CNodeMapRef& map, GenApi::EVisibility upTo);

/// "1 to 100 step 2 ms", "On, Off"; empty where nothing limits it.
std::string describeRange(const ParameterRow& row);

/// A value that a node map does not take. Beside the text, the name that is not known and those that are.
class ParameterError : public std::exception
{
public:
    explicit ParameterError(std::string text, std::string unknown = {}, std::vector<std::string> instead = {})
        : name(std::move(unknown)), known(std::move(instead)), text_(std::move(text))
    {}
    const char* what() const noexcept override { return text_.c_str(); }

    std::string name;
    std::vector<std::string> known;

private:
    std::string text_;
};

/// Gives a parameter the value of a text. A command takes "Execute". Raises ParameterError that says what is
/// allowed.
void assignParameter(const GenApi::CNodeMapRef& map, const std::string& name, const std::string& value);

/// The identifiers of the node's maps at this moment.
std::vector<std::string> listNodeMaps(Nivex::DataProcessing::Core::NodeBase& node);

/// The map of that identifier; nothing if the node does have one, but not now. Raises ParameterError if it has
/// none of that name.
std::optional<GenApi::CNodeMapRef> getNodeMap(Nivex::DataProcessing::Core::NodeBase& node,
                                              const std::string& identifier);

}  // namespace Host
