#include "parameters.h"

#include <algorithm>
#include <limits>
#include <set>

#include "core/inodemapcontainer.h"
#include "hosterror.h"
#include "texttable.h"
#include "units.h"

namespace Host {

using namespace GenApi;
using namespace Nivex::DataProcessing;

namespace {

struct KindName
{
    EInterfaceType type;
    const char* name;
};
constexpr KindName kindNames[] = {{intfIInteger, "Integer"},        {intfIFloat, "Float"},
                                  {intfIBoolean, "Boolean"},        {intfIString, "String"},
                                  {intfICommand, "Command"},        {intfIRegister, "Register"},
                                  {intfIEnumeration, "Enumeration"}};

/// Null for nodes that are no parameters.
const char* getKindName(EInterfaceType type)
{
    for (const KindName& kind : kindNames) {
        if (kind.type == type) return kind.name;
    }
    return nullptr;
}

std::vector<std::string> toTexts(const StringList_t& list)
{
    return {list.begin(), list.end()};
}

ParameterRow::Scalar toScalar(std::int64_t number)
{
    if (number < 0) return number;
    return static_cast<std::uint64_t>(number);
}

std::string toText(const ParameterRow::Scalar& scalar)
{
    if (const auto* number = std::get_if<std::int64_t>(&scalar)) return std::to_string(*number);
    if (const auto* number = std::get_if<std::uint64_t>(&scalar)) return std::to_string(*number);
    if (const auto* number = std::get_if<double>(&scalar)) return formatNumber(*number);
    return {};
}

void fillInteger(IInteger& node, ParameterRow& row, bool isReadable)
{
    if (isReadable) row.value = toScalar(node.GetValue());
    // The whole range of the type limits nothing.
    if (node.GetMin() != std::numeric_limits<std::int64_t>::min()) row.minimum = toScalar(node.GetMin());
    if (node.GetMax() != std::numeric_limits<std::int64_t>::max()) row.maximum = toScalar(node.GetMax());
    if (node.GetInc() > 1) row.increment = toScalar(node.GetInc());
    row.unit = node.GetUnit().str();
}

void fillFloat(IFloat& node, ParameterRow& row, bool isReadable)
{
    if (isReadable) row.value = node.GetValue();
    if (node.GetMin() > std::numeric_limits<double>::lowest()) row.minimum = node.GetMin();
    if (node.GetMax() < std::numeric_limits<double>::max()) row.maximum = node.GetMax();
    if (node.HasInc()) row.increment = node.GetInc();
    row.unit = node.GetUnit().str();
}

void fillValue(INode& node, ParameterRow& row, bool isReadable)
{
    if (auto* integer = dynamic_cast<IInteger*>(&node)) {
        fillInteger(*integer, row, isReadable);
    } else if (auto* number = dynamic_cast<IFloat*>(&node)) {
        fillFloat(*number, row, isReadable);
    } else if (auto* flag = dynamic_cast<IBoolean*>(&node)) {
        if (isReadable) row.value = flag->GetValue();
    } else if (auto* choice = dynamic_cast<IEnumeration*>(&node)) {
        StringList_t symbolics;
        choice->GetSymbolics(symbolics);
        row.entries = toTexts(symbolics);
    }
    auto* value = dynamic_cast<IValue*>(&node);
    if (!isReadable || !value) return;
    if (const auto* flag = std::get_if<bool>(&row.value)) {
        row.valueText = *flag ? "true" : "false";
        return;
    }
    row.valueText = value->ToString().str();
    if (std::holds_alternative<std::monostate>(row.value)) row.value = row.valueText;
}

ParameterRow describeParameter(INode& node, const std::string& category)
{
    ParameterRow row;
    const EInterfaceType type = node.GetPrincipalInterfaceType();
    row.name = node.GetName().str();
    row.displayName = node.GetDisplayName().str();
    row.category = category;
    row.kind = getKindName(type);
    row.access = ToText(node.GetAccessMode());
    row.visibility = ToText(node.GetVisibility());
    row.toolTip = node.GetToolTip().str();
    if (auto* selector = dynamic_cast<ISelector*>(&node)) {
        FeatureList_t selecting;
        selector->GetSelectingFeatures(selecting);
        for (IValue* feature : selecting)
            row.selectors.push_back(dynamic_cast<INode&>(*feature).GetName().str());
    }
    if (type != intfICommand && type != intfIRegister) fillValue(node, row, IsReadable(&node));
    return row;
}

class ParameterWalk
{
public:
    explicit ParameterWalk(EVisibility upTo) : upTo_(upTo) {}

    void walk(ICategory& category, const std::string& title)
    {
        FeatureList_t features;
        category.GetFeatures(features);
        for (IValue* feature : features) {
            auto& node = dynamic_cast<INode&>(*feature);
            if (!seen_.insert(&node).second) continue;
            if (auto* inner = dynamic_cast<ICategory*>(&node)) {
                walk(*inner, node.GetDisplayName().str());
            } else if (getKindName(node.GetPrincipalInterfaceType()) && node.GetVisibility() <= upTo_ &&
                       IsImplemented(&node)) {
                rows_.push_back(describeParameter(node, title));
            }
        }
    }
    std::vector<ParameterRow> take() { return std::move(rows_); }

private:
    EVisibility upTo_;
    std::set<const INode*> seen_;
    std::vector<ParameterRow> rows_;
};

std::vector<std::string> listParameterNames(const CNodeMapRef& map)
{
    NodeList_t nodes;
    map.GetNodes(nodes);
    std::vector<std::string> names;
    for (INode* node : nodes) {
        if (node->IsFeature() && getKindName(node->GetPrincipalInterfaceType())) {
            names.push_back(node->GetName().str());
        }
    }
    return names;
}

/// A text that was given, as messages show it: not all of a long one, and no control characters.
std::string quote(const std::string& text)
{
    constexpr std::size_t most = 100;
    const std::string shown = escapeControls(text.substr(0, most));
    return "\"" + shown + (text.size() > most ? "...\" (" + std::to_string(text.size()) + " bytes)" : "\"");
}

/// Why the value is refused, which may repeat all of it.
std::string describeRefusal()
{
    constexpr std::size_t most = 300;
    const std::string cause = describeCurrentException();
    return cause.size() > most ? cause.substr(0, most) + "..." : cause;
}

/// What a refused value should have been; never raises.
std::string describeAllowed(INode& node)
{
    try {
        if (dynamic_cast<IBoolean*>(&node)) return " Allowed: true, false.";
        const std::string range = describeRange(describeParameter(node, {}));
        return range.empty() ? std::string() : " Allowed: " + range + ".";
    } catch (const std::exception&) {
        return {};
    }
}

void requireEntry(IEnumeration& choice, const std::string& name, const std::string& value)
{
    if (choice.GetEntryByName(GenICam::gcstring(value))) return;
    StringList_t symbolics;
    choice.GetSymbolics(symbolics);
    throw ParameterError("The parameter \"" + name + "\" has no entry " + quote(value) + ".", value,
                         toTexts(symbolics));
}

}  // namespace

std::vector<ParameterRow> listParameters(const CNodeMapRef& map, EVisibility upTo)
{
    ParameterWalk walk(upTo);
    if (auto* root = dynamic_cast<ICategory*>(map.GetNode("Root"))) walk.walk(*root, {});
    return walk.take();
}

std::string describeRange(const ParameterRow& row)
{
    std::string text;
    for (const std::string& entry : row.entries)
        text += (text.empty() ? "" : ", ") + entry;
    const std::string minimum = toText(row.minimum);
    const std::string maximum = toText(row.maximum);
    const std::string increment = toText(row.increment);
    if (!minimum.empty() && !maximum.empty()) {
        text += minimum + " to " + maximum;
    } else if (!minimum.empty()) {
        text += "from " + minimum;
    } else if (!maximum.empty()) {
        text += "up to " + maximum;
    }
    if (!increment.empty()) text += (text.empty() ? "step " : " step ") + increment;
    if (!row.unit.empty()) text += (text.empty() ? "" : " ") + row.unit;
    return text;
}

void assignParameter(const CNodeMapRef& map, const std::string& name, const std::string& value)
{
    INode* node = map.GetNode(GenICam::gcstring(name));
    auto* parameter = dynamic_cast<IValue*>(node);
    if (!parameter || !getKindName(node->GetPrincipalInterfaceType())) {
        throw ParameterError("There is no parameter " + quote(name) + ".", name, listParameterNames(map));
    }
    if (!IsWritable(node)) {
        throw ParameterError("The parameter \"" + name + "\" cannot be written now (its access is " +
                             ToText(node->GetAccessMode()) + ").");
    }
    if (auto* choice = dynamic_cast<IEnumeration*>(node)) requireEntry(*choice, name, value);
    auto* command = dynamic_cast<ICommand*>(node);
    if (command && value != "Execute") {
        throw ParameterError("The command \"" + name + "\" does not take " + quote(value) + ". Allowed: Execute.");
    }
    try {
        command ? command->Execute() : parameter->FromString(GenICam::gcstring(value));
    } catch (...) {
        throw ParameterError("The parameter \"" + name + "\" does not take " + quote(value) + ": " +
                             describeRefusal() + describeAllowed(*node));
    }
}

std::vector<std::string> listNodeMaps(Core::NodeBase& node)
{
    std::vector<std::string> identifiers;
    auto* container = dynamic_cast<Core::INodeMapContainer*>(&node);
    if (!container) return identifiers;
    for (const auto& info : container->getNodeMapInfos())
        identifiers.push_back(info.GetIdentifier().str());
    return identifiers;
}

std::optional<CNodeMapRef> getNodeMap(Core::NodeBase& node, const std::string& identifier)
{
    const std::vector<std::string> known = listNodeMaps(node);
    if (std::find(known.begin(), known.end(), identifier) == known.end()) {
        throw ParameterError("There is no node map \"" + identifier + "\".", identifier, known);
    }
    CNodeMapRef map = dynamic_cast<Core::INodeMapContainer&>(node).getNodeMap(GenICam::gcstring(identifier));
    if (!map.IsValid()) return std::nullopt;
    return map;
}

}  // namespace Host
