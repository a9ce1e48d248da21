#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "genapi/inodemap.h"

namespace GenApi {
class IValue;
}

namespace Nivex {

/// True for a node whose value is a setting: no command, no category, no entry of an enumeration.
bool isSetting(const GenApi::INode& node);

/// Writes the settings of a node map as lines, walking the selectors. For one use, under the map's lock.
///
/// Settings that the same selectors choose are walked together: for each choice a line per selector that has
/// changed, outermost first, then their values. A selector is put back, in the map and by a line, when its walk is
/// over.
class FeatureWriter
{
public:
    explicit FeatureWriter(GenApi::INodeMap& nodeMap) : nodeMap_(nodeMap) {}

    std::string Write();

private:
    using Nodes = std::vector<GenApi::INode*>;

    /// Settings that depend on the same selectors.
    struct Group
    {
        Nodes selectors;  ///< Outermost first; each may depend on those before it.
        Nodes settings;
    };

    std::vector<Group> FindGroups() const;
    void Walk(const Group& group, std::size_t depth);
    void WalkValues(const Group& group, std::size_t depth);
    void WriteSettings(const Group& group);
    void WriteSelectors(const Group& group);
    void WriteLine(const GenApi::INode& node, const std::string& value);
    void CountStep(const GenApi::INode& selector);

    GenApi::INodeMap& nodeMap_;
    std::string text_;
    std::size_t steps_ = 0;
    std::map<const GenApi::INode*, std::string> written_;  ///< What the last line of a selector says.
};

}  // namespace Nivex
