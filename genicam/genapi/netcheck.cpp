#include "genapi/netcheck.h"

#include <algorithm>

#include "gcbase/exception.h"
#include "genapi/nodebase.h"

namespace GenApi {

namespace {

constexpr int onPath = -1;  // chain length of an aspect whose dependencies are being visited

std::size_t indexOf(Aspect aspect)
{
    return static_cast<std::size_t>(aspect);
}

}  // namespace

NetCheck::Finding NetCheck::Visit(CNodeBase& start)
{
    for (const Aspect aspect : {Aspect::Value, Aspect::Limits, Aspect::Mode}) {
        path_.clear();
        Finding finding = Descend(start, aspect);
        if (!finding.culprit) finding = Run();
        if (finding.culprit) return finding;
    }
    return {};
}

NetCheck::Finding NetCheck::Run()
{
    Finding finding;
    while (!finding.culprit && !path_.empty())
        finding = Advance(path_.back());
    return finding;
}

NetCheck::Finding NetCheck::Advance(Step& step)
{
    const auto& dependencies = step.node->dependencies_;
    if (step.nextDependency == dependencies.size()) return Ascend();
    const auto& next = dependencies[step.nextDependency++];
    return next.of == step.aspect ? Descend(*next.on, next.from) : Finding();
}

NetCheck::Finding NetCheck::Descend(CNodeBase& node, Aspect aspect)
{
    int& length = node.chainLengths_[indexOf(aspect)];
    if (length == onPath) return {&node, CycleText(node, aspect)};
    if (length > 0) return {};
    length = onPath;
    path_.push_back({&node, aspect, 0});
    return {};
}

NetCheck::Finding NetCheck::Ascend()
{
    const Step done = path_.back();
    CNodeBase& node = *done.node;
    path_.pop_back();
    int longest = 0;
    for (const auto& dependency : node.dependencies_)
        if (dependency.of == done.aspect)
            longest = std::max(longest, dependency.on->chainLengths_[indexOf(dependency.from)]);
    node.chainLengths_[indexOf(done.aspect)] = longest + 1;
    if (done.aspect == Aspect::Value)
        for (const CNodeBase* source : node.valueSources_)
            node.LimitCaching(source->caching_);
    if (longest < maxChain) return {};
    return {&node, GenICam::formatText("it depends on a chain of more than %d nodes", maxChain)};
}

std::string NetCheck::CycleText(const CNodeBase& node, Aspect aspect) const
{
    constexpr std::size_t shown = 8;
    auto step = std::find_if(path_.begin(), path_.end(),
                             [&](const Step& s) { return s.node == &node && s.aspect == aspect; });
    std::string text = "it depends on itself: ";
    for (std::size_t i = 0; step != path_.end() && i < shown; ++step, ++i)
        text += step->node->Name().str() + " -> ";
    return text + (step == path_.end() ? "" : "... -> ") + node.Name().str();
}

}  // namespace GenApi
