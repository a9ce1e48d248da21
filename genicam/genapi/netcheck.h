#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "genapi/nodebase.h"

namespace GenApi {

/// Walks the net of dependencies once, without recursion: finds values, limits and access modes that depend on
/// themselves and chains that are too long to be evaluated, and settles what each node inherits from the nodes
/// below it (caching mode).
class NetCheck
{
public:
    /// The longest chain of nodes that may depend on each other; evaluation recurses along it.
    static constexpr int maxChain = 256;

    /// What is wrong with the net below `node`; `culprit` is null if nothing is.
    struct Finding
    {
        const CNodeBase* culprit = nullptr;
        std::string cause;
    };

    /// Visits what hangs below `start` and was not visited before.
    Finding Visit(CNodeBase& start);

private:
    struct Step
    {
        CNodeBase* node;
        Aspect aspect;
        std::size_t nextDependency;
    };

    Finding Run();
    Finding Advance(Step& step);
    Finding Descend(CNodeBase& node, Aspect aspect);
    Finding Ascend();
    std::string CycleText(const CNodeBase& node, Aspect aspect) const;

    std::vector<Step> path_;
};

}  // namespace GenApi
