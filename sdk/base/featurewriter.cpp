#include "base/featurewriter.h"

#include <algorithm>
#include <set>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

namespace Nivex {

using GenApi::INode;
using GenApi::IValue;

namespace {

/// Choices of selectors in one text; descriptions can be written that have more than there is time for.
constexpr std::size_t maxSteps = 20000;

IValue& valueOf(INode& node)
{
    return dynamic_cast<IValue&>(node);
}

/// The selectors of `node`, and theirs, outermost first.
void collectSelectors(INode& node, std::vector<INode*>& selectors, std::set<const INode*>& seen)
{
    const auto* choice = dynamic_cast<const GenApi::ISelector*>(&node);
    if (!choice || !seen.insert(&node).second) return;
    GenApi::FeatureList_t selecting;
    choice->GetSelectingFeatures(selecting);
    for (IValue* value : selecting) {
        auto& selector = dynamic_cast<INode&>(*value);
        collectSelectors(selector, selectors, seen);
        if (std::find(selectors.begin(), selectors.end(), &selector) == selectors.end() && &selector != &node)
            selectors.push_back(&selector);
    }
}

std::vector<INode*> selectorsOf(INode& node)
{
    std::vector<INode*> selectors;
    std::set<const INode*> seen;
    collectSelectors(node, selectors, seen);
    std::erase(selectors, &node);
    return selectors;
}

std::vector<std::string> numbersOf(GenApi::IInteger& selector)
{
    std::vector<std::string> values;
    const std::int64_t max = selector.GetMax();
    const std::int64_t step = std::max<std::int64_t>(selector.GetInc(), 1);
    std::int64_t value = selector.GetMin();
    for (; value <= max && values.size() <= maxSteps; value += step) {
        values.push_back(std::to_string(value));
        if (value > max - step) break;
    }
    return values;
}

/// What a selector can be set to now. Only the present value for one that is no choice.
std::vector<std::string> choicesOf(INode& selector)
{
    if (auto* entries = dynamic_cast<GenApi::IEnumeration*>(&selector)) {
        GenApi::StringList_t symbolics;
        entries->GetSymbolics(symbolics);
        return {symbolics.begin(), symbolics.end()};
    }
    if (dynamic_cast<GenApi::IBoolean*>(&selector)) return {"0", "1"};
    if (auto* number = dynamic_cast<GenApi::IInteger*>(&selector)) return numbersOf(*number);
    return {valueOf(selector).ToString().str()};
}

/// Runs `action`; its failure is told with the name of the feature.
template <typename Action>
void naming(const INode& node, const Action& action)
{
    try {
        action();
    } catch (const std::exception&) {
        GENICAM_THROW(RuntimeException, "The feature \"%s\" can't be saved: %s", node.GetName().c_str(),
                      GenICam::describeCurrentException().c_str());
    }
}

}  // namespace

bool isSetting(const INode& node)
{
    switch (node.GetPrincipalInterfaceType()) {
        case GenApi::intfIInteger:
        case GenApi::intfIBoolean:
        case GenApi::intfIFloat:
        case GenApi::intfIString:
        case GenApi::intfIRegister:
        case GenApi::intfIEnumeration:
            return true;
        case GenApi::intfIValue:
        case GenApi::intfIBase:
        case GenApi::intfICommand:
        case GenApi::intfICategory:
        case GenApi::intfIEnumEntry:
        case GenApi::intfIPort:
            return false;
    }
    return false;
}

std::string FeatureWriter::Write()
{
    for (const Group& group : FindGroups())
        Walk(group, 0);
    return std::move(text_);
}

std::vector<FeatureWriter::Group> FeatureWriter::FindGroups() const
{
    GenApi::NodeList_t nodes;
    nodeMap_.GetNodes(nodes);
    std::erase_if(nodes, [](const INode* node) { return !node->IsStreamable() || !isSetting(*node); });
    std::vector<Group> groups(1);  // those without selectors come first
    std::map<Nodes, std::size_t> places = {{Nodes{}, 0}};
    std::set<const INode*> walked;
    for (INode* node : nodes) {
        Nodes selectors = selectorsOf(*node);
        walked.insert(selectors.begin(), selectors.end());
        const auto [place, isNew] = places.try_emplace(selectors, groups.size());
        if (isNew) groups.push_back({std::move(selectors), {}});
        groups[place->second].settings.push_back(node);
    }
    // A selector is written where it is walked.
    for (Group& group : groups)
        std::erase_if(group.settings, [&](const INode* node) { return walked.contains(node); });
    return groups;
}

void FeatureWriter::Walk(const Group& group, std::size_t depth)
{
    if (depth == group.selectors.size()) return WriteSettings(group);
    INode& selector = *group.selectors[depth];
    if (selector.GetAccessMode() != GenApi::RW) return Walk(group, depth + 1);
    std::string original;
    naming(selector, [&] { original = valueOf(selector).ToString().str(); });
    written_.erase(&selector);
    const auto putBack = [&] { naming(selector, [&] { valueOf(selector).FromString(original.c_str()); }); };
    try {
        WalkValues(group, depth);
    } catch (...) {
        putBack();
        throw;
    }
    putBack();
    const auto last = written_.find(&selector);
    if (last != written_.end() && last->second != original) WriteLine(selector, original);
}

void FeatureWriter::WalkValues(const Group& group, std::size_t depth)
{
    INode& selector = *group.selectors[depth];
    std::vector<std::string> choices;
    naming(selector, [&] { choices = choicesOf(selector); });
    for (const std::string& choice : choices) {
        CountStep(selector);
        naming(selector, [&] { valueOf(selector).FromString(choice.c_str()); });
        Walk(group, depth + 1);
    }
}

void FeatureWriter::CountStep(const INode& selector)
{
    if (++steps_ > maxSteps)
        GENICAM_THROW(RuntimeException,
                      "The feature \"%s\" can't be saved: its selectors have more than %zu choices.",
                      selector.GetName().c_str(), maxSteps);
}

void FeatureWriter::WriteSettings(const Group& group)
{
    for (INode* node : group.settings) {
        std::string value;
        bool isSaved = false;
        naming(*node, [&] {
            isSaved = node->GetAccessMode() == GenApi::RW;
            if (isSaved) value = valueOf(*node).ToString().str();
            if (value.find('\n') != std::string::npos)
                GENICAM_THROW(RuntimeException, "its text has more than one line.");
        });
        if (!isSaved) continue;
        WriteSelectors(group);
        WriteLine(*node, value);
    }
}

void FeatureWriter::WriteSelectors(const Group& group)
{
    bool hasChanged = false;
    for (INode* selector : group.selectors) {
        if (selector->GetAccessMode() != GenApi::RW) continue;
        std::string value;
        naming(*selector, [&] { value = valueOf(*selector).ToString().str(); });
        const auto last = written_.find(selector);
        // The camera may keep another value of an inner selector for each choice of an outer one.
        hasChanged = hasChanged || last == written_.end() || last->second != value;
        if (!hasChanged) continue;
        WriteLine(*selector, value);
        written_[selector] = value;
    }
}

void FeatureWriter::WriteLine(const INode& node, const std::string& value)
{
    text_ += node.GetName().str() + '\t' + value + '\n';
}

}  // namespace Nivex
