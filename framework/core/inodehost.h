#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "core/igraphupdate.h"
#include "core/ledger.h"
#include "core/pinvalues.h"

namespace Nivex::DataProcessing::Core {

class NodeBase;

/// What a graph does for the nodes in it. A node outside a graph has none and then delivers its outputs
/// directly to its sinks, on the caller's thread. All operations may be called from any thread, and must be
/// called without the node's lock where they say that they block.
class GENICAM_API INodeHost : public IUpdateFactory
{
public:
    /// Blocks while a queue downstream of `source` is full. False when the recipe stops.
    virtual bool waitUntilSpaceAvailable(NodeBase& source) = 0;
    /// Starts the journey of an update with the values at the source's output pins. `completed`, if any, is
    /// called once when the update has left the graph.
    virtual void submit(NodeBase& source, const std::shared_ptr<IGraphUpdate>& update, PinValues&& values,
                        std::function<void()> completed) = 0;
    /// Counts a loss of `update`, or of the update that the node is executing if that is null.
    virtual void reportLoss(NodeBase& node, LossCause cause, const IGraphUpdate* update) = 0;
    /// Counts things that were lost before they could become updates, such as frames missed.
    virtual void reportMissed(NodeBase& node, LossCause cause, std::uint64_t count) = 0;
    /// Counts an update that the node sent values on for.
    virtual void reportSent(NodeBase& node) = 0;
    /// Counts what the node recorded: finished files and payload bytes. Any call marks the update that the
    /// node is executing as recorded.
    virtual void reportRecorded(NodeBase& node, std::uint64_t files, std::uint64_t bytes) = 0;
};

}  // namespace Nivex::DataProcessing::Core
