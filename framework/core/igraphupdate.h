#pragma once

#include <cstdint>
#include <memory>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Core {

class NodeBase;

/// One journey of values through a graph, begun by a source node. Shared by all who handle it; a source that
/// lets go of an update without handing it to `createJob` drops it, which the ledger counts.
class GENICAM_API IGraphUpdate
{
public:
    virtual ~IGraphUpdate() = default;
    /// The place in the order of updates, from 1; 0 until it was handed to `createJob`. Every node sees
    /// updates in this order.
    virtual std::uint64_t getSequenceNumber() const = 0;
    virtual std::shared_ptr<IGraphUpdate> getParent() const = 0;
};

/// Makes updates for source nodes. Any thread may call it.
class GENICAM_API IUpdateFactory
{
public:
    virtual ~IUpdateFactory() = default;
    /// A new update of `source`, or null when no update may begin (the recipe ends).
    virtual std::shared_ptr<IGraphUpdate> createUpdate(NodeBase& source,
                                                       const std::shared_ptr<IGraphUpdate>& parent,
                                                       bool spaceAvailable) = 0;
};

}  // namespace Nivex::DataProcessing::Core
