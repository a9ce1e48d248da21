#include "core/nodebase.h"

#include <algorithm>
#include <mutex>

#include "gcbase/exception.h"

#include "core/bufferprovider.h"
#include "core/inodehost.h"
#include "threading/recursiveclock.h"
#include "utils/signal.h"

namespace Nivex::DataProcessing::Core {

namespace {

using NodeSignal = Utils::Signal<void(), Utils::VoidCombiner>;

struct InputPin
{
    GenICam::gcstring name;
    GenICam::gcstring displayName;
    Utils::TypeInfo type;
    bool allowsMultipleConnections;
    std::size_t maxConnections;
    bool autoReset = true;
    Utils::TypeInfo boundType{};
    NodeBase::Handle binding{};
};

struct Attachment
{
    std::shared_ptr<IOutputSink> sink;
    NodeBase::Handle handle;
};

struct OutputPin
{
    OutputDescriptor descriptor;
    std::vector<Attachment> attachments;
};

using OutputPins = std::vector<OutputPin>;

template <typename Pins>
auto findPin(Pins& pins, const GenICam::gcstring& name)
{
    return std::find_if(pins.begin(), pins.end(), [&](const auto& pin) {
        if constexpr (requires { pin.name; }) {
            return pin.name == name;
        } else {
            return pin.descriptor.getName() == name;
        }
    });
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

    std::mutex mutex;  // guards the members down to `errors`
    std::vector<InputPin> inputs;
    // Replaced as a whole at each change, so that an execution needs the mutex for one copy of the pointer only.
    std::shared_ptr<const OutputPins> outputs = std::make_shared<OutputPins>();
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

    std::shared_ptr<const OutputPins> outputTable()
    {
        std::lock_guard guard(mutex);
        return outputs;
    }

    InputPin& requireInput(const GenICam::gcstring& name)
    {
        const auto pin = findPin(inputs, name);
        if (pin == inputs.end())
            GENICAM_THROW(InvalidArgumentException, "There is no input \"%s\".", name.c_str());
        return *pin;
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
    std::lock_guard guard(private_->mutex);
    std::vector<InputDescriptor> descriptors;
    descriptors.reserve(private_->inputs.size());
    for (const InputPin& pin : private_->inputs) {
        descriptors.emplace_back(pin.name, pin.displayName, pin.binding ? pin.boundType : pin.type,
                                 pin.allowsMultipleConnections, pin.maxConnections);
    }
    return descriptors;
}

NodeBase::VoidSignal& NodeBase::getInputsChangedSignal()
{
    return private_->inputsChanged;
}

NodeBase::Handle NodeBase::configureInputType(const GenICam::gcstring& name, const Utils::TypeInfo& type)
{
    Handle handle;
    {
        std::lock_guard guard(private_->mutex);
        InputPin& pin = private_->requireInput(name);
        if (pin.type.isValid() || pin.binding) {
            GENICAM_THROW(InvalidArgumentException, "The input \"%s\" has a type already.", name.c_str());
        }
        pin.boundType = type;
        pin.binding = handle = std::make_shared<char>();
    }
    onInputTypeConfigured(name, type);
    private_->inputsChanged();
    return handle;
}

void NodeBase::unconfigureInputType(const Handle& handle)
{
    GenICam::gcstring name;
    {
        std::lock_guard guard(private_->mutex);
        const auto pin = std::find_if(private_->inputs.begin(), private_->inputs.end(),
                                      [&](const InputPin& p) { return handle && p.binding == handle; });
        if (pin == private_->inputs.end()) return;
        pin->binding.reset();
        pin->boundType = {};
        name = pin->name;
    }
    onInputTypeUnconfigured(name);
    private_->inputsChanged();
}

bool NodeBase::isConfigured(const Handle& handle) const
{
    std::lock_guard guard(private_->mutex);
    return handle && std::any_of(private_->inputs.begin(), private_->inputs.end(),
                                 [&](const InputPin& pin) { return pin.binding == handle; });
}

bool NodeBase::canConfigure(const GenICam::gcstring& name) const
{
    std::lock_guard guard(private_->mutex);
    const auto pin = findPin(private_->inputs, name);
    return pin != private_->inputs.end() && !pin->type.isValid() && !pin->binding;
}

void NodeBase::setAutoResetEnabled(const GenICam::gcstring& name, bool enabled)
{
    {
        std::lock_guard guard(private_->mutex);
        InputPin& pin = private_->requireInput(name);
        if (pin.autoReset == enabled) return;
        pin.autoReset = enabled;
    }
    private_->autoResetChanged();
}

bool NodeBase::isAutoResetEnabled(const GenICam::gcstring& name) const
{
    std::lock_guard guard(private_->mutex);
    return private_->requireInput(name).autoReset;
}

NodeBase::VoidSignal& NodeBase::getAutoResetChangedSignal()
{
    return private_->autoResetChanged;
}

std::vector<OutputDescriptor> NodeBase::getOutputDescriptors() const
{
    const auto outputs = private_->outputTable();
    std::vector<OutputDescriptor> descriptors;
    descriptors.reserve(outputs->size());
    for (const OutputPin& pin : *outputs)
        descriptors.push_back(pin.descriptor);
    return descriptors;
}

NodeBase::VoidSignal& NodeBase::getOutputsChangedSignal()
{
    return private_->outputsChanged;
}

NodeBase::Handle NodeBase::attachOutputSink(const GenICam::gcstring& name,
                                            const std::shared_ptr<IOutputSink>& sink)
{
    if (!sink) GENICAM_THROW(InvalidArgumentException, "The sink for output \"%s\" is null.", name.c_str());
    std::lock_guard guard(private_->mutex);
    auto outputs = std::make_shared<OutputPins>(*private_->outputs);
    const auto pin = findPin(*outputs, name);
    if (pin == outputs->end()) GENICAM_THROW(InvalidArgumentException, "There is no output \"%s\".", name.c_str());
    if (pin->attachments.size() >= pin->descriptor.getMaxConnections()) {
        GENICAM_THROW(InvalidArgumentException, "The output \"%s\" takes no more than %zu connections.",
                      name.c_str(), pin->descriptor.getMaxConnections());
    }
    Handle handle = std::make_shared<char>();
    pin->attachments.push_back({sink, handle});
    private_->outputs = std::move(outputs);
    return handle;
}

void NodeBase::detachOutputSink(const Handle& handle)
{
    std::lock_guard guard(private_->mutex);
    auto outputs = std::make_shared<OutputPins>(*private_->outputs);
    for (OutputPin& pin : *outputs) {
        std::erase_if(pin.attachments, [&](const Attachment& attachment) { return attachment.handle == handle; });
    }
    private_->outputs = std::move(outputs);
}

bool NodeBase::isOutputSinkAttached(const Handle& handle) const
{
    const auto outputs = private_->outputTable();
    return std::any_of(outputs->begin(), outputs->end(), [&](const OutputPin& pin) {
        return std::any_of(pin.attachments.begin(), pin.attachments.end(),
                           [&](const Attachment& attachment) { return attachment.handle == handle; });
    });
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
    std::lock_guard guard(private_->mutex);
    return !private_->errors.empty();
}

std::vector<std::shared_ptr<IError>> NodeBase::getErrors() const
{
    std::lock_guard guard(private_->mutex);
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
    stop();
    freeAdditionalResources(true);
}

void NodeBase::allocateAdditionalResources(const std::shared_ptr<IResourcePool>&, bool) {}
void NodeBase::freeAdditionalResources(bool) {}
void NodeBase::onStarting(const NodeArgumentCollection&) {}
void NodeBase::onStopping() {}

void NodeBase::removeInput(const GenICam::gcstring& name)
{
    {
        std::lock_guard guard(private_->mutex);
        if (std::erase_if(private_->inputs, [&](const InputPin& pin) { return pin.name == name; }) == 0) return;
    }
    private_->inputsChanged();
}

void NodeBase::removeOutput(const GenICam::gcstring& name)
{
    {
        std::lock_guard guard(private_->mutex);
        auto outputs = std::make_shared<OutputPins>(*private_->outputs);
        const auto pin = findPin(*outputs, name);
        if (pin == outputs->end()) return;
        outputs->erase(pin);
        private_->outputs = std::move(outputs);
    }
    private_->outputsChanged();
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
    const auto outputs = private_->outputTable();
    bool sent = false;
    for (const OutputPin& pin : *outputs) {
        const auto value = values.find(pin.descriptor.getName());
        if (value == values.end()) continue;
        sent = true;
        for (const Attachment& attachment : pin.attachments)
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
    if (name.empty()) GENICAM_THROW(InvalidArgumentException, "An output needs a name.");
    {
        std::lock_guard guard(private_->mutex);
        auto outputs = std::make_shared<OutputPins>(*private_->outputs);
        if (findPin(*outputs, name) != outputs->end()) {
            GENICAM_THROW(InvalidArgumentException, "There is an output \"%s\" already.", name.c_str());
        }
        outputs->push_back({{name, displayName, type, allowsMultipleConnections, maxConnections}, {}});
        private_->outputs = std::move(outputs);
    }
    private_->outputsChanged();
}

void NodeBase::createInputPin(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                              const Utils::TypeInfo& type, bool allowsMultipleConnections,
                              unsigned long maxConnections)
{
    if (name.empty()) GENICAM_THROW(InvalidArgumentException, "An input needs a name.");
    {
        std::lock_guard guard(private_->mutex);
        if (findPin(private_->inputs, name) != private_->inputs.end()) {
            GENICAM_THROW(InvalidArgumentException, "There is an input \"%s\" already.", name.c_str());
        }
        private_->inputs.push_back({name, displayName, type, allowsMultipleConnections, maxConnections});
    }
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
        std::lock_guard guard(private_->mutex);
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
        std::lock_guard guard(private_->mutex);
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
