#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace GenApi {

class CNodeBase;

/// Walks the net of dependencies once, without recursion: finds nodes that depend on themselves and chains that
/// are too long to be evaluated, and settles what each node inherits from the nodes below it (caching mode).
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
        std::size_t nextChild;
    };

    Finding Descend(CNodeBase& node);
    Finding Ascend();
    std::string CycleText(const CNodeBase& node) const;

    std::vector<Step> path_;
};

}  // namespace GenApi
