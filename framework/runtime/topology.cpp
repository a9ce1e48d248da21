#include "runtime/topology.h"

#include <algorithm>

namespace Nivex::DataProcessing::Runtime {

std::size_t Topology::addNode()
{
    successors_.emplace_back();
    return successors_.size() - 1;
}

void Topology::addEdge(std::size_t from, std::size_t to)
{
    auto& successors = successors_[from];
    if (std::find(successors.begin(), successors.end(), to) == successors.end()) successors.push_back(to);
}

bool Topology::reaches(std::size_t from, std::size_t to) const
{
    std::vector<bool> seen(size(), false);
    std::vector<std::size_t> open{from};
    seen[from] = true;
    while (!open.empty()) {
        const std::size_t node = open.back();
        open.pop_back();
        if (node == to) return true;
        for (const std::size_t next : successors_[node]) {
            if (!seen[next]) open.push_back(next);
            seen[next] = true;
        }
    }
    return false;
}

std::vector<std::size_t> Topology::sort() const
{
    std::vector<std::size_t> waiting(size(), 0);
    for (const auto& successors : successors_) {
        for (const std::size_t next : successors)
            ++waiting[next];
    }
    std::vector<std::size_t> order;
    order.reserve(size());
    for (std::size_t node = 0; node < size(); ++node) {
        if (waiting[node] == 0) order.push_back(node);
    }
    for (std::size_t i = 0; i < order.size(); ++i) {
        for (const std::size_t next : successors_[order[i]]) {
            if (--waiting[next] == 0) order.push_back(next);
        }
    }
    return order;
}

Route::Route(const Topology& topology, std::size_t source) : positions(topology.size(), none)
{
    for (const std::size_t node : topology.sort()) {
        if (node == source || !topology.reaches(source, node)) continue;
        positions[node] = static_cast<std::uint32_t>(stops.size());
        stops.push_back({node, 0, {}});
    }
    const auto follow = [&](std::size_t node, std::vector<std::uint32_t>& successors) {
        for (const std::size_t next : topology.getSuccessors(node)) {
            successors.push_back(positions[next]);
            ++stops[positions[next]].predecessors;
        }
    };
    follow(source, sourceSuccessors);
    for (Stop& stop : stops)
        follow(stop.node, stop.successors);
}

}  // namespace Nivex::DataProcessing::Runtime
