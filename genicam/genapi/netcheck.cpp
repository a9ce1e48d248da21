#include "genapi/netcheck.h"

#include <algorithm>

#include "gcbase/exception.h"
#include "genapi/nodebase.h"

namespace GenApi {

namespace {

constexpr int onPath = -1;  // chainLength_ of a node whose children are being visited

}  // namespace

NetCheck::Finding NetCheck::Visit(CNodeBase& start)
{
    path_.clear();
    Finding finding = Descend(start);
    while (!finding.culprit && !path_.empty()) {
        Step& step = path_.back();
        const auto& children = step.node->children_;
        finding = step.nextChild < children.size() ? Descend(*children[step.nextChild++]) : Ascend();
    }
    return finding;
}

NetCheck::Finding NetCheck::Descend(CNodeBase& node)
{
    if (node.chainLength_ == onPath) return {&node, CycleText(node)};
    if (node.chainLength_ > 0) return {};
    node.chainLength_ = onPath;
    path_.push_back({&node, 0});
    return {};
}

NetCheck::Finding NetCheck::Ascend()
{
    CNodeBase& node = *path_.back().node;
    path_.pop_back();
    int longest = 0;
    for (const CNodeBase* child : node.children_)
        longest = std::max(longest, child->chainLength_);
    node.chainLength_ = longest + 1;
    for (const CNodeBase* source : node.valueSources_)
        node.LimitCaching(source->caching_);
    if (node.chainLength_ <= maxChain) return {};
    return {&node, GenICam::formatText("it depends on a chain of more than %d nodes", maxChain)};
}

std::string NetCheck::CycleText(const CNodeBase& node) const
{
    constexpr std::size_t shown = 8;
    auto step = std::find_if(path_.begin(), path_.end(), [&](const Step& s) { return s.node == &node; });
    std::string text = "it depends on itself: ";
    for (std::size_t i = 0; step != path_.end() && i < shown; ++step, ++i)
        text += step->node->Name().str() + " -> ";
    return text + (step == path_.end() ? "" : "... -> ") + node.Name().str();
}

}  // namespace GenApi
