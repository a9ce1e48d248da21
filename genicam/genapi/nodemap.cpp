#include "genapi/nodemap.h"

#include <exception>

#include "gcbase/exception.h"
#include "genapi/nodemap_impl.h"
#include "genapi/portnode.h"

namespace GenApi {

namespace {

std::exception_ptr callAll(const auto& calls)
{
    std::exception_ptr first;
    for (const auto& [node, function] : calls) {
        try {
            (*function)(node);
        } catch (...) {
            if (!first) first = std::current_exception();
        }
    }
    return first;
}

}  // namespace

CNodeMap::Operation::~Operation()
{
    if (finished_) return;
    // The operation failed, and its own exception is on its way: one of a callback cannot be raised beside it.
    const Calls calls = map_.Leave(outerSteps_);
    if (calls.empty()) return;
    const auto keptAlive = map_.weak_from_this().lock();  // null while the map ends
    callAll(calls);
}

void CNodeMap::Operation::Finish()
{
    finished_ = true;
    const Calls calls = map_.Leave(outerSteps_);
    if (calls.empty()) return;
    const auto keptAlive = map_.weak_from_this().lock();
    if (const std::exception_ptr failure = callAll(calls)) std::rethrow_exception(failure);
}

CNodeMap::CNodeMap(gcstring deviceName, CLock* lock, gcstring descriptionText)
    : lock_(lock ? *lock : ownLock_),
      deviceName_(std::move(deviceName)),
      descriptionText_(std::move(descriptionText))
{}

CNodeMap::~CNodeMap()
{
    for (const auto& node : nodes_) {
        try {
            if (CPortNode* port = node->AsPort()) port->LetGo();
        } catch (...) {
            // The port is let go of all the same; its failure has no caller to go to, and the others must hear,
            // too.
            continue;
        }
    }
}

CNodeMap& CNodeMap::Of(INodeMap& map)
{
    if (auto* own = dynamic_cast<CNodeMap*>(&map)) return *own;
    GENICAM_THROW(InvalidArgumentException, "Node map \"%s\" was not made by this runtime.",
                  map.GetDeviceName().c_str());
}

const std::vector<CNodeBase*>& CNodeMap::EventNodes(uint64_t eventId) const
{
    static const std::vector<CNodeBase*> none;
    const auto found = eventNodes_.find(eventId);
    return found == eventNodes_.end() ? none : found->second;
}

void CNodeMap::GetNodes(NodeList_t& nodes) const
{
    nodes.reserve(nodes.size() + nodes_.size());
    for (const auto& node : nodes_)
        nodes.push_back(node.get());
}

INode* CNodeMap::GetNode(const gcstring& name) const
{
    const auto found = nodesByName_.find(name.view());
    return found == nodesByName_.end() ? nullptr : found->second;
}

void CNodeMap::InvalidateNodes() const
{
    Operate([this] {
        for (const auto& node : nodes_) {
            node->DropCache();
            if (node->callbacks_.empty() || std::exchange(node->callbackPending_, true)) continue;
            pendingCallbacks_.push_back(node.get());
        }
    });
}

bool CNodeMap::Connect(IPort* port, const gcstring& portName) const
{
    auto* node = dynamic_cast<CPortNode*>(GetNode(portName));
    if (!node) return false;
    Operate([&] { node->Connect(port); });
    return true;
}

bool CNodeMap::Connect(IPort* port) const
{
    return Connect(port, "Device");
}

void CNodeMap::Poll(int64_t elapsedMs)
{
    if (elapsedMs < 0)
        GENICAM_THROW(InvalidArgumentException, "A poll after %lld ms: time must not run backwards.",
                      static_cast<long long>(elapsedMs));
    Operate([&] {
        std::exception_ptr first;
        std::vector<CNodeBase*> due;
        for (CNodeBase* node : polled_) {
            try {
                if (node->PollIsDue(elapsedMs)) due.push_back(node);
            } catch (...) {
                if (!first) first = std::current_exception();
            }
        }
        Invalidate(due, true);
        if (first) std::rethrow_exception(first);
    });
}

void CNodeMap::Invalidate(CNodeBase& start, bool fromSources)
{
    CNodeBase* const one = &start;
    Invalidate(std::span(&one, 1), fromSources);
}

void CNodeMap::Invalidate(std::span<CNodeBase* const> starts, bool fromSources)
{
    ++invalidation_;
    reached_.clear();
    for (CNodeBase* start : starts)
        Reach(*start, fromSources);
    // The list grows while it is walked, hence the index.
    for (std::size_t i = 0; i < reached_.size(); ++i)
        Spread(Reached(reached_[i]));
}

void CNodeMap::Reach(CNodeBase& node, bool fromSources)
{
    if ((fromSources ? node.emptied_ : node.reached_) == invalidation_) return;
    if (fromSources) node.emptied_ = invalidation_;
    node.reached_ = invalidation_;
    reached_.push_back({&node, fromSources});
}

void CNodeMap::Spread(const Reached& reached)
{
    CNodeBase& node = *reached.node;
    node.DropCache();
    if (!node.callbacks_.empty() && !std::exchange(node.callbackPending_, true))
        pendingCallbacks_.push_back(&node);
    for (CNodeBase* follower : node.followers_)
        Reach(*follower, false);
    for (CNodeBase* dependant : node.dependants_)
        Reach(*dependant, true);
    if (!reached.fromSources) return;
    for (CNodeBase* source : node.valueSources_)
        Reach(*source, true);
}

void CNodeMap::CountStep(const CNodeBase& node, int steps) const
{
    steps_ += steps;
    if (steps_ > maxSteps)
        GENICAM_THROW(RuntimeException,
                      "Node \"%s\": its value depends on too many others (more than %d evaluations).",
                      node.Name().c_str(), maxSteps);
}

int CNodeMap::Enter() const
{
    lock_.Lock();
    if (nesting_ == maxNesting) {
        lock_.Unlock();
        GENICAM_THROW(RuntimeException,
                      "Node map \"%s\": more than %d operations inside each other; a port uses its own nodes.",
                      deviceName_.c_str(), maxNesting);
    }
    ++nesting_;
    return std::exchange(steps_, 0);
}

CNodeMap::Calls CNodeMap::Leave(int outerSteps) const
{
    steps_ = outerSteps;
    Calls calls;
    if (--nesting_ == 0 && !pendingCallbacks_.empty()) {
        for (CNodeBase* node : pendingCallbacks_) {
            node->callbackPending_ = false;
            node->AppendCallbacks(calls);
        }
        pendingCallbacks_.clear();
    }
    lock_.Unlock();
    return calls;
}

}  // namespace GenApi
