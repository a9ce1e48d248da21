#include "core/nodebase.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "gcbase/exception.h"

#include "core/bufferprovider.h"
#include "core/inodehost.h"
#include "core/nodepins.h"
#include "threading/recursiveclock.h"
#include "utils/log.h"
#include "utils/signal.h"

namespace Nivex::DataProcessing::Core {

namespace {

using NodeSignal = Utils::Signal<void(), Utils::VoidCombiner>;

/// For calls in a destructor, out of which nothing may come.
template <typename Operation>
void logFailure(const NodeBase* node, const char* doing, const Operation& operation) noexcept
{
    try {
        operation();
    } catch (...) {
        static const Utils::CatId category = Utils::getCatId("nivex.dataprocessing.core.NodeBase");
        Utils::createLogEntry(Utils::SeverityFailure, category,
                              "NodeBase %p: Exception caught while the node was %s. Message: %s",
                              static_cast<const void*>(node), doing, GenICam::describeCurrentException().c_str());
    }
}

std::shared_ptr<Threading::ThreadPool> defaultThreadPool()
{
    static const auto pool = std::make_shared<Threading::ThreadPool>();
    return pool;
}

std::shared_ptr<IBufferProvider> defaultBufferProvider()
{
    static const std::shared_ptr<IBufferProvider> provider = std::make_shared<BufferProvider>();
    return provider;
}

}  // namespace

struct NodeBase::Private
{
    std::shared_ptr<IResourcePool> pool;
    std::shared_ptr<Threading::ThreadPool> threadPool;
    std::shared_ptr<IBufferProvider> bufferProvider;
    std::shared_ptr<Threading::IRecursiveLockable> lock = std::make_shared<Threading::RecursiveCLock>();
    std::atomic<NodeState> state{NodeState::Stopped};

    InputPins inputs;
    OutputPins outputs;
    std::mutex errorMutex;  // guards errors
    std::vector<std::shared_ptr<IError>> errors;

    NodeSignal inputsChanged;
    NodeSignal autoResetChanged;
    NodeSignal outputsChanged;
    NodeSignal stateChanged;
    NodeSignal canExecuteChanged;
    NodeSignal executionStarted;
    NodeSignal executionFinishing;
    NodeSignal executionFinished;
    NodeSignal errorChanged;
    NodeSignal settingsChanged;

    void setState(NodeState next)
    {
        state.store(next);
        stateChanged();
        if (next == NodeState::Started || next == NodeState::Stopped) canExecuteChanged();
    }
};

NodeBase::NodeBase(const std::shared_ptr<IResourcePool>& pool) : private_(std::make_unique<Private>())
{
    private_->pool = pool;
    private_->threadPool = pool ? pool->getThreadPool() : defaultThreadPool();
    private_->bufferProvider = pool ? pool->getBufferProvider() : defaultBufferProvider();
}

NodeBase::~NodeBase() = default;

bool NodeBase::isForwardingUpdates() const
{
    return false;
}

std::vector<InputDescriptor> NodeBase::getInputDescriptors() const
{
    return private_->inputs.getDescriptors();
}

NodeBase::VoidSignal& NodeBase::getInputsChangedSignal()
{
    return private_->inputsChanged;
}

NodeBase::Handle NodeBase::configureInputType(const GenICam::gcstring& name, const Utils::TypeInfo& type)
{
    Handle handle = private_->inputs.bind(name, type);
    onInputTypeConfigured(name, type);
    private_->inputsChanged();
    return handle;
}

void NodeBase::unconfigureInputType(const Handle& handle)
{
    const GenICam::gcstring name = private_->inputs.unbind(handle);
    if (name.empty()) return;
    onInputTypeUnconfigured(name);
    private_->inputsChanged();
}

bool NodeBase::isConfigured(const Handle& handle) const
{
    return private_->inputs.isBound(handle);
}

bool NodeBase::canConfigure(const GenICam::gcstring& name) const
{
    return private_->inputs.canBind(name);
}

void NodeBase::setAutoResetEnabled(const GenICam::gcstring& name, bool enabled)
{
    if (private_->inputs.setAutoReset(name, enabled)) private_->autoResetChanged();
}

bool NodeBase::isAutoResetEnabled(const GenICam::gcstring& name) const
{
    return private_->inputs.isAutoReset(name);
}

NodeBase::VoidSignal& NodeBase::getAutoResetChangedSignal()
{
    return private_->autoResetChanged;
}

std::vector<OutputDescriptor> NodeBase::getOutputDescriptors() const
{
    return private_->outputs.getDescriptors();
}

NodeBase::VoidSignal& NodeBase::getOutputsChangedSignal()
{
    return private_->outputsChanged;
}

NodeBase::Handle NodeBase::attachOutputSink(const GenICam::gcstring& name,
                                            const std::shared_ptr<IOutputSink>& sink)
{
    if (!sink) GENICAM_THROW(InvalidArgumentException, "The sink for output \"%s\" is null.", name.c_str());
    return private_->outputs.attach(name, sink);
}

void NodeBase::detachOutputSink(const Handle& handle)
{
    private_->outputs.detach(handle);
}

bool NodeBase::isOutputSinkAttached(const Handle& handle) const
{
    return private_->outputs.isAttached(handle);
}

void NodeBase::allocateResources()
{
    allocateAdditionalResources(private_->pool, true);
}

void NodeBase::freeResources()
{
    freeAdditionalResources(false);
}

void NodeBase::start(const NodeArgumentCollection& arguments)
{
    NodeState expected = NodeState::Stopped;
    if (!private_->state.compare_exchange_strong(expected, NodeState::Starting)) {
        GENICAM_THROW(LogicalErrorException, "The node has been started already.");
    }
    private_->stateChanged();
    try {
        onStarting(arguments);
    } catch (...) {
        private_->setState(NodeState::Stopped);
        throw;
    }
    private_->setState(NodeState::Started);
}

void NodeBase::stop()
{
    NodeState expected = NodeState::Started;
    if (!private_->state.compare_exchange_strong(expected, NodeState::Stopping)) return;
    private_->stateChanged();
    try {
        onStopping();
    } catch (...) {
        private_->setState(NodeState::Stopped);
        throw;
    }
    private_->setState(NodeState::Stopped);
}

NodeState NodeBase::getState() const
{
    return private_->state.load();
}

NodeBase::VoidSignal& NodeBase::getStateChangedSignal()
{
    return private_->stateChanged;
}

bool NodeBase::canExecute() const
{
    return getState() == NodeState::Started && !hasError();
}

NodeBase::VoidSignal& NodeBase::getCanExecuteSignal()
{
    return private_->canExecuteChanged;
}

void NodeBase::startExecution(const JobBody& body)
{
    // Signals that tell the end of an execution also when it ends with an exception.
    struct Ending
    {
        Private& node;
        ~Ending()
        {
            node.executionFinishing();
            node.executionFinished();
        }
    };
    std::shared_ptr<IGraphUpdate> update;
    PinValues values;
    body(update, values);
    private_->executionStarted();
    const Ending ending{*private_};
    run(update, values);
}

NodeBase::VoidSignal& NodeBase::getExecutionStartedSignal()
{
    return private_->executionStarted;
}
NodeBase::VoidSignal& NodeBase::getExecutionFinishingSignal()
{
    return private_->executionFinishing;
}
NodeBase::VoidSignal& NodeBase::getExecutionFinishedSignal()
{
    return private_->executionFinished;
}

bool NodeBase::hasError() const
{
    std::lock_guard guard(private_->errorMutex);
    return !private_->errors.empty();
}

std::vector<std::shared_ptr<IError>> NodeBase::getErrors() const
{
    std::lock_guard guard(private_->errorMutex);
    return private_->errors;
}

NodeBase::VoidSignal& NodeBase::getErrorChangedSignal()
{
    return private_->errorChanged;
}
NodeBase::VoidSignal& NodeBase::getSettingsChangedSignal()
{
    return private_->settingsChanged;
}

void NodeBase::cleanup()
{
    logFailure(this, "stopping", [this] { stop(); });
    logFailure(this, "freeing its resources", [this] { freeAdditionalResources(true); });
}

void NodeBase::allocateAdditionalResources(const std::shared_ptr<IResourcePool>&, bool) {}
void NodeBase::freeAdditionalResources(bool) {}
void NodeBase::onStarting(const NodeArgumentCollection&) {}
void NodeBase::onStopping() {}

void NodeBase::removeInput(const GenICam::gcstring& name)
{
    if (private_->inputs.remove(name)) private_->inputsChanged();
}

void NodeBase::removeOutput(const GenICam::gcstring& name)
{
    if (private_->outputs.remove(name)) private_->outputsChanged();
}

std::size_t NodeBase::getMaxInputJobCount() const
{
    return 8;
}

void NodeBase::run(const std::shared_ptr<IGraphUpdate>& update, PinValues& values)
{
    finishExecution(update, values);
}

void NodeBase::finishExecution(const std::shared_ptr<IGraphUpdate>& update, PinValues& values)
{
    if (values.empty()) return;
    const auto outputs = private_->outputs.getTable();
    bool sent = false;
    for (const OutputPins::Pin& pin : *outputs) {
        const auto value = values.find(pin.descriptor.getName());
        if (value == values.end()) continue;
        sent = true;
        for (const OutputPins::Attachment& attachment : pin.attachments)
            attachment.sink->onOutput(update, value->second);
    }
    if (INodeHost* host = host_.load(); host && sent) host->reportSent(*this);
}

void NodeBase::onInputTypeConfigured(const GenICam::gcstring&, const Utils::TypeInfo&) {}
void NodeBase::onInputTypeUnconfigured(const GenICam::gcstring&) {}

std::shared_ptr<Threading::IRecursiveLockable> NodeBase::getLock() const
{
    return private_->lock;
}

void NodeBase::setLock(std::shared_ptr<Threading::IRecursiveLockable> lock)
{
    if (!lock) GENICAM_THROW(InvalidArgumentException, "The node's lock is null.");
    private_->lock = std::move(lock);
}

void NodeBase::createOutput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                            const Utils::TypeInfo& type, bool allowsMultipleConnections,
                            unsigned long maxConnections)
{
    private_->outputs.add({name, displayName, type, allowsMultipleConnections, maxConnections});
    private_->outputsChanged();
}

void NodeBase::createInputPin(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                              const Utils::TypeInfo& type, bool allowsMultipleConnections,
                              unsigned long maxConnections)
{
    private_->inputs.add({name, displayName, type, allowsMultipleConnections, maxConnections});
    private_->inputsChanged();
}

std::shared_ptr<IBufferProvider> NodeBase::getBufferProvider() const
{
    return private_->bufferProvider;
}
std::shared_ptr<Threading::ThreadPool> NodeBase::getThreadPool() const
{
    return private_->threadPool;
}

void NodeBase::setError(const std::shared_ptr<IError>& error)
{
    if (!error) GENICAM_THROW(InvalidArgumentException, "The node's error is null.");
    {
        std::lock_guard guard(private_->errorMutex);
        auto& errors = private_->errors;
        if (std::find(errors.begin(), errors.end(), error) != errors.end()) return;
        errors.push_back(error);
    }
    private_->errorChanged();
    private_->canExecuteChanged();
}

void NodeBase::resetError(const std::shared_ptr<IError>& error)
{
    {
        std::lock_guard guard(private_->errorMutex);
        if (std::erase(private_->errors, error) == 0) return;
    }
    private_->errorChanged();
    private_->canExecuteChanged();
}

void NodeBase::notifySettingsChanged()
{
    private_->settingsChanged();
}

void NodeBase::createJob(const std::shared_ptr<IGraphUpdate>& update, PinValues values,
                         std::function<void()> completed)
{
    if (!update) GENICAM_THROW(InvalidArgumentException, "The update is null.");
    if (INodeHost* host = host_.load()) {
        host->submit(*this, update, std::move(values), std::move(completed));
        return;
    }
    startExecution([&](std::shared_ptr<IGraphUpdate>& jobUpdate, PinValues& jobValues) {
        jobUpdate = update;
        jobValues = std::move(values);
    });
    if (completed) completed();
}

bool NodeBase::waitUntilSpaceAvailable()
{
    if (INodeHost* host = host_.load()) return host->waitUntilSpaceAvailable(*this);
    const NodeState state = getState();
    return state == NodeState::Starting || state == NodeState::Started;
}

void NodeBase::reportLoss(LossCause cause, const IGraphUpdate* update)
{
    if (INodeHost* host = host_.load()) host->reportLoss(*this, cause, update);
}

void NodeBase::reportMissed(LossCause cause, std::uint64_t count)
{
    if (INodeHost* host = host_.load()) host->reportMissed(*this, cause, count);
}

void NodeBase::reportRecorded(std::uint64_t files, std::uint64_t bytes)
{
    if (INodeHost* host = host_.load()) host->reportRecorded(*this, files, bytes);
}

IUpdateFactory* NodeBase::getHostUpdateFactory() const
{
    return host_.load();
}

}  // namespace Nivex::DataProcessing::Core
