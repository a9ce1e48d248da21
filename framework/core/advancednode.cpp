#include "core/advancednode.h"

#include <atomic>

#include "core/inodehost.h"

namespace Nivex::DataProcessing::Core {

namespace {

/// An update that reaches the sinks of one node outside a graph.
class LocalUpdate : public IGraphUpdate
{
public:
    LocalUpdate(std::uint64_t sequenceNumber, std::shared_ptr<IGraphUpdate> parent)
        : sequenceNumber_(sequenceNumber), parent_(std::move(parent))
    {}
    std::uint64_t getSequenceNumber() const override { return sequenceNumber_; }
    std::shared_ptr<IGraphUpdate> getParent() const override { return parent_; }

private:
    std::uint64_t sequenceNumber_;
    std::shared_ptr<IGraphUpdate> parent_;
};

class LocalUpdateFactory : public IUpdateFactory
{
public:
    std::shared_ptr<IGraphUpdate> createUpdate(NodeBase&, const std::shared_ptr<IGraphUpdate>& parent,
                                               bool) override
    {
        return std::make_shared<LocalUpdate>(++count_, parent);
    }

private:
    std::atomic<std::uint64_t> count_{0};
};

}  // namespace

AdvancedNode::AdvancedNode(const std::shared_ptr<IResourcePool>& pool) : NodeBase(pool) {}
AdvancedNode::~AdvancedNode() = default;

void AdvancedNode::allocateAdditionalResources(const std::shared_ptr<IResourcePool>& pool, bool mayRefresh)
{
    NodeBase::allocateAdditionalResources(pool, mayRefresh);
}

void AdvancedNode::freeAdditionalResources(bool final)
{
    NodeBase::freeAdditionalResources(final);
}

void AdvancedNode::run(const std::shared_ptr<IGraphUpdate>& update, PinValues& values)
{
    finishExecution(update, values);
}

std::shared_ptr<IUpdateFactory> AdvancedNode::getUpdateFactory()
{
    // The host outlives every run of the node, so the pointer needs no share in it.
    if (IUpdateFactory* factory = getHostUpdateFactory()) return {std::shared_ptr<void>(), factory};
    return std::make_shared<LocalUpdateFactory>();
}

}  // namespace Nivex::DataProcessing::Core
