#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Nivex::DataProcessing::Runtime {

/// Who is joined to whom, by node number. Several edges between two nodes count as one.
class Topology
{
public:
    std::size_t addNode();
    void addEdge(std::size_t from, std::size_t to);
    std::size_t size() const { return successors_.size(); }

    /// True if values of `from` can reach `to`; a node reaches itself.
    bool reaches(std::size_t from, std::size_t to) const;

    /// All nodes, each behind all those upstream of it. The graph has no cycles.
    std::vector<std::size_t> sort() const;

    const std::vector<std::size_t>& getSuccessors(std::size_t node) const { return successors_[node]; }

private:
    std::vector<std::vector<std::size_t>> successors_;
};

/// The way of the updates of one source: the nodes that they visit and who waits for whom.
struct Route
{
    struct Stop
    {
        std::size_t node = 0;
        std::uint32_t predecessors = 0;         ///< How many stops (the source included) it waits for.
        std::vector<std::uint32_t> successors;  ///< Positions in `stops`.
    };

    static constexpr std::uint32_t none = ~std::uint32_t{0};

    Route() = default;
    Route(const Topology& topology, std::size_t source);

    std::vector<Stop> stops;                      ///< In topological order, without the source.
    std::vector<std::uint32_t> sourceSuccessors;  ///< Positions in `stops`.
    std::vector<std::uint32_t> positions;         ///< By node number: the position in `stops`, or `none`.
};

}  // namespace Nivex::DataProcessing::Runtime
