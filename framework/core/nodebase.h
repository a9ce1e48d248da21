#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "gcbase/gcstring.h"

#include "core/descriptors.h"
#include "core/ibufferprovider.h"
#include "core/ierror.h"
#include "core/igraphupdate.h"
#include "core/ioutputsink.h"
#include "core/iresourcepool.h"
#include "core/ledger.h"
#include "core/nodeargumentcollection.h"
#include "core/nodestate.h"
#include "core/pinvalues.h"
#include "threading/irecursivelockable.h"
#include "utils/signal.h"

namespace Nivex::DataProcessing::Core {

class INodeHost;

/// The base of every node of a recipe: pins, states, resources, errors, and the way of values in and out.
///
/// Life: made by its package; parameters and settings while stopped; `allocateResources`; `start`, which
/// reaches `onStarting`; executions; `stop`, which reaches `onStopping`; `freeResources`; `cleanup`, which
/// every final class calls first in its destructor. Start and stop may repeat.
///
/// Threads: executions of one node never overlap but move from thread to thread. `start`, `stop`, allocation
/// and pin changes come from one thread at a time, never while an execution runs that they would disturb.
/// `getState`, errors, parameters and the report functions may be used from any thread. The node's lock
/// (`getLock`) guards the node's own state; the base never holds it while it calls the node or signals.
class GENICAM_API NodeBase
{
public:
    using JobBody = std::function<void(std::shared_ptr<IGraphUpdate>& update, PinValues& values)>;
    using VoidSignal = Utils::ISignal<void()>;
    /// Opaque proof of a configuration or an attachment.
    using Handle = std::shared_ptr<void>;

    static constexpr std::size_t unlimited = ~std::size_t{0};

    virtual ~NodeBase();
    NodeBase(const NodeBase&) = delete;
    NodeBase& operator=(const NodeBase&) = delete;

    /// True for nodes that pass the update they got on to their outputs.
    virtual bool isForwardingUpdates() const;

    /// @name Inputs
    virtual std::vector<InputDescriptor> getInputDescriptors() const;
    virtual VoidSignal& getInputsChangedSignal();
    /// Binds a type to an input of variable type. Raises InvalidArgumentException if there is no such input or
    /// it has a type already.
    virtual Handle configureInputType(const GenICam::gcstring& name, const Utils::TypeInfo& type);
    /// Ends a binding; an unknown handle does nothing.
    virtual void unconfigureInputType(const Handle& handle);
    virtual bool isConfigured(const Handle& handle) const;
    /// True for an input of variable type that has no type bound.
    virtual bool canConfigure(const GenICam::gcstring& name) const;
    /// Whether an input's property is reset before an execution that brings no value for it. Initially true.
    virtual void setAutoResetEnabled(const GenICam::gcstring& name, bool enabled);
    virtual bool isAutoResetEnabled(const GenICam::gcstring& name) const;
    virtual VoidSignal& getAutoResetChangedSignal();

    /// @name Outputs
    virtual std::vector<OutputDescriptor> getOutputDescriptors() const;
    virtual VoidSignal& getOutputsChangedSignal();
    /// Sends the values of an output to a sink until the handle is detached. Raises InvalidArgumentException
    /// for a null sink, an unknown output, or one with all its connections in use.
    virtual Handle attachOutputSink(const GenICam::gcstring& name, const std::shared_ptr<IOutputSink>& sink);
    virtual void detachOutputSink(const Handle& handle);
    virtual bool isOutputSinkAttached(const Handle& handle) const;

    /// @name Life
    virtual void allocateResources();
    virtual void freeResources();
    /// Raises LogicalErrorException unless stopped; what `onStarting` throws passes on and leaves it stopped.
    virtual void start(const NodeArgumentCollection& arguments);
    /// Does nothing when stopped. What `onStopping` throws passes on; the node is stopped all the same.
    virtual void stop();
    virtual NodeState getState() const;
    virtual VoidSignal& getStateChangedSignal();

    /// @name Executions
    /// True while started and without error.
    virtual bool canExecute() const;
    virtual VoidSignal& getCanExecuteSignal();
    /// Runs one job: `body` hands over the update and the values at the inputs, then `run` is called. An
    /// exception of `run` passes on, after the finishing and finished signals.
    virtual void startExecution(const JobBody& body);
    virtual VoidSignal& getExecutionStartedSignal();
    virtual VoidSignal& getExecutionFinishingSignal();
    virtual VoidSignal& getExecutionFinishedSignal();

    /// @name Errors
    virtual bool hasError() const;
    virtual std::vector<std::shared_ptr<IError>> getErrors() const;
    virtual VoidSignal& getErrorChangedSignal();

    virtual VoidSignal& getSettingsChangedSignal();

    /// Stops the node and frees its resources for good. What that throws is logged and goes no further. Every
    /// final class calls it first in its destructor.
    virtual void cleanup();

    /// Runtime only: joins the node to a graph, or takes it out with null.
    void attachHost(INodeHost* host) { host_.store(host); }

protected:
    /// A null pool gives the node the process's default thread pool and buffer provider.
    explicit NodeBase(const std::shared_ptr<IResourcePool>& pool);

    virtual void allocateAdditionalResources(const std::shared_ptr<IResourcePool>& pool, bool mayRefresh);
    virtual void freeAdditionalResources(bool final);
    virtual void onStarting(const NodeArgumentCollection& arguments);
    virtual void onStopping();
    /// An unknown pin does nothing. Sinks and bindings of the pin end.
    virtual void removeInput(const GenICam::gcstring& name);
    virtual void removeOutput(const GenICam::gcstring& name);

public:
    /// How many updates may wait at this node before sources are held back.
    virtual std::size_t getMaxInputJobCount() const;

protected:
    /// One execution. The base passes `values` on to the outputs of the same names.
    virtual void run(const std::shared_ptr<IGraphUpdate>& update, PinValues& values);
    /// Sends values to the sinks of the outputs they are named after; other names are ignored.
    virtual void finishExecution(const std::shared_ptr<IGraphUpdate>& update, PinValues& values);
    virtual void onInputTypeConfigured(const GenICam::gcstring& name, const Utils::TypeInfo& type);
    virtual void onInputTypeUnconfigured(const GenICam::gcstring& name);

public:
    std::shared_ptr<Threading::IRecursiveLockable> getLock() const;

protected:
    /// Replaces the lock; in the constructor only.
    void setLock(std::shared_ptr<Threading::IRecursiveLockable> lock);

    /// Both raise InvalidArgumentException for an empty or taken name.
    void createOutput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                      const Utils::TypeInfo& type, bool allowsMultipleConnections = true,
                      unsigned long maxConnections = ~0UL);
    void createInputPin(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                        const Utils::TypeInfo& type, bool allowsMultipleConnections, unsigned long maxConnections);

    std::shared_ptr<IBufferProvider> getBufferProvider() const;
    std::shared_ptr<Threading::ThreadPool> getThreadPool() const;

    /// Adds an error of the node (once) or takes it away, and tells the listeners.
    void setError(const std::shared_ptr<IError>& error);
    void resetError(const std::shared_ptr<IError>& error);

    /// Must be called without the node's lock held.
    void notifySettingsChanged();

    /// @name For source nodes, from any thread, without the node's lock held
    /// Hands an update with the values of the output pins to the graph. Raises InvalidArgumentException for a
    /// null update or one handed over before.
    void createJob(const std::shared_ptr<IGraphUpdate>& update, PinValues values,
                   std::function<void()> completed = {});
    /// Blocks while the recipe has no room for another update; false when it stops.
    bool waitUntilSpaceAvailable();

    /// @name Ledger: one call beside the log line (or where there is none) for everything that is lost
    void reportLoss(LossCause cause, const IGraphUpdate* update = nullptr);
    void reportMissed(LossCause cause, std::uint64_t count);
    void reportRecorded(std::uint64_t files, std::uint64_t bytes);

    IUpdateFactory* getHostUpdateFactory() const;

private:
    struct Private;
    std::unique_ptr<Private> private_;
    std::atomic<INodeHost*> host_{nullptr};
};

}  // namespace Nivex::DataProcessing::Core
