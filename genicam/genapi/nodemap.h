#pragma once

#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "genapi/inodemap.h"
#include "genapi/nodebase.h"

namespace GenApi {

/// A node map at work: the nodes, their lock, and the bookkeeping of operations.
///
/// Every public call of a map or node is an operation. Operations may nest, since a port may use the map that
/// reads through it; the outermost one calls the callbacks that it and the nested ones caused, after it unlocked.
class CNodeMap : public INodeMap, public std::enable_shared_from_this<CNodeMap>
{
public:
    /// Nodes and registers that one operation, without those nested in it, may evaluate before it is given up.
    /// Descriptions can be written whose evaluation doubles with each node; honest ones need a few hundred.
    static constexpr int maxSteps = 50000;
    /// Operations inside each other on one thread, by ports that use their own map.
    static constexpr int maxNesting = 16;

    /// Works under `lock`, or under a lock of its own for null.
    CNodeMap(gcstring deviceName, CLock* lock, gcstring descriptionText = {});
    CNodeMap(const CNodeMap&) = delete;
    CNodeMap& operator=(const CNodeMap&) = delete;
    ~CNodeMap() override;

    /// The map behind the interface; InvalidArgumentException for one of another make.
    static CNodeMap& Of(INodeMap& map);

    void GetNodes(NodeList_t& nodes) const override;
    INode* GetNode(const gcstring& name) const override;
    void InvalidateNodes() const override;
    bool Connect(IPort* port, const gcstring& portName) const override;
    bool Connect(IPort* port) const override;
    gcstring GetDeviceName() const override { return deviceName_; }
    void Poll(int64_t elapsedMs) override;
    CLock& GetLock() const override { return lock_; }
    uint64_t GetNumNodes() const override { return nodes_.size(); }
    const gcstring& GetDescriptionText() const override { return descriptionText_; }

    /// Runs `body` as one operation and gives its result.
    template <typename Body>
    auto Operate(Body&& body) const -> decltype(body());

    /// Marks `start` and all that depends on it as changed: own caches are dropped, callbacks noted. With
    /// `fromSources` also the caches that the value of `start` comes from.
    void Invalidate(CNodeBase& start, bool fromSources);
    /// The same for all of `starts`, in one walk.
    void Invalidate(std::span<CNodeBase* const> starts, bool fromSources);
    /// One evaluation of `node`, or one that costs as much as several; RuntimeException when the operation has had
    /// too many.
    void CountStep(const CNodeBase& node, int steps = 1) const;

    /// The Port nodes that read from chunks.
    std::span<CPortNode* const> ChunkPorts() const { return chunkPorts_; }
    /// The nodes that an event concerns.
    const std::vector<CNodeBase*>& EventNodes(uint64_t eventId) const;

private:
    friend class NodeBuilder;
    class Operation;

    struct Reached
    {
        CNodeBase* node;
        bool fromSources;
    };
    using Calls = std::vector<std::pair<INode*, std::shared_ptr<const NodeCallback>>>;

    void Reach(CNodeBase& node, bool fromSources);
    void Spread(const Reached& reached);
    /// Gives the count of steps of the operation around this one, which Leave puts back.
    int Enter() const;
    Calls Leave(int outerSteps) const;

    mutable CLock ownLock_;
    CLock& lock_;
    const gcstring deviceName_;
    const gcstring descriptionText_;
    std::vector<std::unique_ptr<CNodeBase>> nodes_;
    std::unordered_map<std::string_view, CNodeBase*> nodesByName_;
    std::vector<CNodeBase*> polled_;
    std::vector<CPortNode*> chunkPorts_;
    std::unordered_map<uint64_t, std::vector<CNodeBase*>> eventNodes_;

    // Guarded by lock_.
    mutable int nesting_ = 0;
    mutable int steps_ = 0;
    mutable std::vector<CNodeBase*> pendingCallbacks_;
    std::vector<Reached> reached_;
    uint64_t invalidation_ = 0;
};

}  // namespace GenApi
