#include "runtime/graph.h"

#include <algorithm>
#include <mutex>

#include "runtime/bell.h"
#include "runtime/nodecall.h"
#include "runtime/scheduler.h"

namespace Nivex::DataProcessing::Runtime {

using Core::NodeBase;
using Clock = std::chrono::steady_clock;

namespace {

/// The end of a time from now on. Zero is never.
Clock::time_point endOf(std::chrono::nanoseconds time)
{
    const auto now = Clock::now();
    return time.count() > 0 && time < Bell::never - now ? now + time : Bell::never;
}

/// The type of a node's pin; `kind` is the error if there is none of that name.
template <typename Pin>
Utils::TypeInfo requirePin(const std::vector<Pin>& pins, ConnectionError::Kind kind, const std::string& node,
                           const std::string& name)
{
    const auto found =
        std::find_if(pins.begin(), pins.end(), [&](const Pin& pin) { return pin.getName() == name.c_str(); });
    if (found == pins.end()) {
        const char* direction = kind == ConnectionError::Kind::UnknownOutput ? "output" : "input";
        throw ConnectionError(kind, "The node \"" + node + "\" has no " + direction + " \"" + name + "\".");
    }
    return found->getType();
}

}  // namespace

NodeFailure::NodeFailure(Stage stage, std::string node, std::string cause)
    : RuntimeException(node +
                           (stage == Stage::Allocation ? ": The node's resources cannot be allocated: "
                                                       : ": The node cannot be started: ") +
                           cause,
                       GenICam::sourceUnitName(__FILE__).c_str(), __LINE__),
      stage_(stage),
      node_(std::move(node)),
      cause_(std::move(cause))
{}

NodeFailure::~NodeFailure() = default;

struct Graph::Private
{
    struct Connection
    {
        std::size_t from;
        std::string output;
        std::size_t to;
        std::string input;
        NodeBase::Handle typeBinding;
    };

    struct Node
    {
        std::string name;
        std::string module;
        NodeHandle handle;
        Utils::ScopedConnection errorConnection;
    };

    /// A node may hold values that came from another one's package, so all packages stay until the last node is
    /// gone: these copies hold them, and being the first member they end last.
    std::vector<NodeHandle::deleter_type> packages;
    std::shared_ptr<Core::IResourcePool> pool;
    const std::shared_ptr<Bell> bell = std::make_shared<Bell>();
    /// From the first start on, and replaced at each start. Nodes call it as long as they live, so it ends after
    /// them.
    std::shared_ptr<Scheduler> scheduler;
    std::vector<std::unique_ptr<Node>> nodes;
    std::vector<Connection> connections;
    Topology topology;
    std::uint64_t updateLimit = 0;
    bool allocated = false;
    std::vector<std::pair<NodeBase*, NodeBase::Handle>> attachments;

    mutable std::mutex mutex;  // guards the members below, and `scheduler` while it is replaced
    bool running = false;
    bool stopRequested = false;
    Clock::time_point startTime{};
    std::chrono::nanoseconds duration{0};

    std::size_t numberOf(const std::string& name) const
    {
        const auto found =
            std::find_if(nodes.begin(), nodes.end(), [&](const auto& node) { return node->name == name; });
        return static_cast<std::size_t>(found - nodes.begin());
    }

    std::size_t requireNode(const std::string& name) const
    {
        const std::size_t number = numberOf(name);
        if (number == nodes.size()) {
            throw ConnectionError(ConnectionError::Kind::UnknownNode, "There is no node \"" + name + "\".");
        }
        return number;
    }

    void requireFree(std::size_t node, const std::string& input) const
    {
        const auto taken = std::find_if(connections.begin(), connections.end(), [&](const Connection& connection) {
            return connection.to == node && connection.input == input;
        });
        if (taken == connections.end()) return;
        throw ConnectionError(ConnectionError::Kind::PinTaken, "The input \"" + nodes[node]->name + "." + input +
                                                                   "\" is connected to \"" +
                                                                   nodes[taken->from]->name + "." + taken->output +
                                                                   "\" already; an input takes one connection.");
    }

    void requireIdle(const char* what) const
    {
        std::lock_guard guard(mutex);
        if (running) GENICAM_THROW(LogicalErrorException, "The recipe is running: %s is not possible now.", what);
    }

    /// All nodes in topological order, sources first.
    std::vector<Node*> sorted() const
    {
        std::vector<Node*> order;
        for (const std::size_t number : topology.sort())
            order.push_back(nodes[number].get());
        return order;
    }

    void buildScheduler();
    void attachSinks(Scheduler& target);
    static void freeNode(Node* node);
    void stopNodes(const std::vector<Node*>& started);
    /// Null when the run is over or shall be.
    std::shared_ptr<const Scheduler> getRun() const
    {
        std::lock_guard guard(mutex);
        return stopRequested || !running ? nullptr : scheduler;
    }
    bool hasNodeError() const
    {
        return std::any_of(nodes.begin(), nodes.end(), [](const auto& node) { return node->handle->hasError(); });
    }
};

Graph::Graph(std::shared_ptr<Core::IResourcePool> pool) : private_(std::make_unique<Private>())
{
    if (!pool) GENICAM_THROW(InvalidArgumentException, "A graph needs a resource pool.");
    private_->pool = std::move(pool);
}

Graph::~Graph()
{
    stop();
    free();
}

void Graph::addNode(const std::string& name, const std::string& module, NodeHandle node)
{
    private_->requireIdle("adding a node");
    if (name.empty()) GENICAM_THROW(InvalidArgumentException, "A node needs a name.");
    if (!node) GENICAM_THROW(InvalidArgumentException, "The node \"%s\" is null.", name.c_str());
    if (findNode(name)) GENICAM_THROW(InvalidArgumentException, "There is a node \"%s\" already.", name.c_str());
    auto entry = std::make_unique<Private::Node>();
    entry->name = name;
    entry->module = module;
    entry->handle = std::move(node);
    entry->errorConnection.set(
        entry->handle->getErrorChangedSignal().connect([bell = private_->bell] { bell->ring(); }));
    private_->packages.push_back(entry->handle.get_deleter());
    private_->nodes.push_back(std::move(entry));
    private_->topology.addNode();
}

NodeBase* Graph::findNode(const std::string& name) const
{
    const std::size_t number = private_->numberOf(name);
    return number < private_->nodes.size() ? private_->nodes[number]->handle.get() : nullptr;
}

std::vector<std::string> Graph::getNodeNames() const
{
    std::vector<std::string> names;
    for (const auto& node : private_->nodes)
        names.push_back(node->name);
    return names;
}

void Graph::connect(const std::string& fromNode, const std::string& output, const std::string& toNode,
                    const std::string& input)
{
    using Kind = ConnectionError::Kind;
    private_->requireIdle("connecting pins");
    const std::size_t from = private_->requireNode(fromNode);
    const std::size_t to = private_->requireNode(toNode);
    NodeBase& source = *private_->nodes[from]->handle;
    NodeBase& target = *private_->nodes[to]->handle;
    const auto outputType = requirePin(source.getOutputDescriptors(), Kind::UnknownOutput, fromNode, output);
    const auto inputType = requirePin(target.getInputDescriptors(), Kind::UnknownInput, toNode, input);
    private_->requireFree(to, input);

    const std::string outputText = "\"" + fromNode + "." + output + "\"";
    const std::string inputText = "\"" + toNode + "." + input + "\"";
    if (private_->topology.reaches(to, from)) {
        throw ConnectionError(Kind::Cycle, "Connecting " + outputText + " to " + inputText + " closes a cycle.");
    }
    const bool isVariable = target.canConfigure(input.c_str());
    if (!isVariable && (!outputType.isValid() || !outputType.canConvert(inputType))) {
        throw ConnectionError(Kind::TypeMismatch, "The output " + outputText + " gives " +
                                                      outputType.getName().str() + ", which the input " +
                                                      inputText + " does not take; it takes " +
                                                      inputType.getName().str() + ".");
    }
    NodeBase::Handle binding;
    if (isVariable && outputType.isValid()) binding = target.configureInputType(input.c_str(), outputType);
    private_->connections.push_back({from, output, to, input, std::move(binding)});
    private_->topology.addEdge(from, to);
}

void Graph::Private::freeNode(Node* node)
{
    callNode(node->name, "freeing its resources", [node] { node->handle->freeResources(); });
}

void Graph::allocate()
{
    private_->requireIdle("allocating resources");
    std::vector<Private::Node*> done;
    for (Private::Node* node : private_->sorted()) {
        try {
            node->handle->allocateResources();
            done.push_back(node);
        } catch (...) {
            const std::string failure = GenICam::describeCurrentException();
            std::for_each(done.rbegin(), done.rend(), &Private::freeNode);
            throw NodeFailure(NodeFailure::Stage::Allocation, node->name, failure);
        }
    }
    private_->allocated = true;
}

void Graph::Private::buildScheduler()
{
    std::vector<Scheduler::NodeSetup> setups;
    for (const auto& node : nodes)
        setups.push_back({node->handle.get(), node->name, node->module, {}});
    for (const Connection& connection : connections) {
        setups[connection.to].inputs.emplace_back(connection.input.c_str());
    }
    auto fresh = std::make_shared<Scheduler>(*pool->getThreadPool(), std::move(setups), topology);
    fresh->setLimitCallback([bell = bell] { bell->ring(); });
    attachSinks(*fresh);
    for (const auto& node : nodes)
        node->handle->attachHost(fresh.get());
    std::lock_guard guard(mutex);
    scheduler = std::move(fresh);
}

void Graph::Private::attachSinks(Scheduler& target)
{
    for (const auto& [node, handle] : attachments)
        node->detachOutputSink(handle);
    attachments.clear();
    std::vector<std::size_t> nextSlot(nodes.size(), 0);
    for (const Connection& connection : connections) {
        const Node& source = *nodes[connection.from];
        const auto sink = target.makeSink(connection.to, nextSlot[connection.to]++);
        try {
            attachments.emplace_back(source.handle.get(),
                                     source.handle->attachOutputSink(connection.output.c_str(), sink));
        } catch (...) {
            throw NodeFailure(NodeFailure::Stage::Start, source.name, GenICam::describeCurrentException());
        }
    }
}

void Graph::start(const std::map<std::string, Core::NodeArgumentCollection>& arguments)
{
    private_->requireIdle("a second start");
    private_->buildScheduler();
    private_->scheduler->begin(private_->updateLimit);
    {
        std::lock_guard guard(private_->mutex);
        private_->running = true;
        private_->stopRequested = false;
        private_->startTime = Clock::now();
    }
    std::vector<Private::Node*> order = private_->sorted();
    std::reverse(order.begin(), order.end());
    std::vector<Private::Node*> started;
    for (Private::Node* node : order) {
        try {
            const auto found = arguments.find(node->name);
            node->handle->start(found == arguments.end() ? Core::NodeArgumentCollection() : found->second);
            started.insert(started.begin(), node);
        } catch (...) {
            const std::string failure = GenICam::describeCurrentException();
            private_->stopNodes(started);
            throw NodeFailure(NodeFailure::Stage::Start, node->name, failure);
        }
    }
}

void Graph::Private::stopNodes(const std::vector<Node*>& started)
{
    const auto stopThoseThat = [&started](bool forward) {
        for (Node* node : started) {
            if (node->handle->isForwardingUpdates() != forward) continue;
            callNode(node->name, "stopping", [node] { node->handle->stop(); });
        }
    };
    scheduler->releaseSources();
    stopThoseThat(false);
    scheduler->drain();
    stopThoseThat(true);
    std::lock_guard guard(mutex);
    running = false;
    duration = Clock::now() - startTime;
}

void Graph::stop()
{
    if (!isRunning()) return;
    private_->stopNodes(private_->sorted());
    private_->bell->ring();
}

void Graph::free()
{
    private_->requireIdle("freeing resources");
    if (!private_->allocated) return;
    private_->allocated = false;
    const auto order = private_->sorted();
    std::for_each(order.rbegin(), order.rend(), &Private::freeNode);
}

bool Graph::isRunning() const
{
    std::lock_guard guard(private_->mutex);
    return private_->running;
}

void Graph::setUpdateLimit(std::uint64_t limit)
{
    private_->updateLimit = limit;
}

Graph::Event Graph::wait(std::chrono::nanoseconds limit, std::chrono::nanoseconds idleTime)
{
    const auto end = endOf(limit);
    for (;;) {
        // Before the looks, so that what happens meanwhile ends the wait behind them.
        const std::uint64_t rings = private_->bell->getRings();
        const auto run = private_->getRun();
        if (!run) return Event::StopRequested;
        if (private_->hasNodeError()) return Event::NodeError;
        if (run->isLimitSettled()) return Event::LimitReached;
        const bool isIdle = idleTime.count() > 0 && run->getInFlight() == 0;
        const auto idleEnd = run->getLastActivity() + idleTime;
        const auto now = Clock::now();
        if (isIdle && now >= idleEnd) return Event::Idle;
        if (now >= end) return Event::TimeOver;
        // Nothing rings when the last update has ended; a look now and then is enough to see it.
        const auto look = idleTime.count() > 0 ? now + std::chrono::milliseconds(100) : Bell::never;
        private_->bell->waitUntil(std::min({end, isIdle ? idleEnd : look, look}), rings);
    }
}

bool Graph::waitForNodeError(std::chrono::nanoseconds limit)
{
    const auto end = Clock::now() + limit;
    for (;;) {
        const std::uint64_t rings = private_->bell->getRings();
        if (private_->hasNodeError()) return true;
        if (Clock::now() >= end) return false;
        private_->bell->waitUntil(end, rings);
    }
}

void Graph::requestStop()
{
    {
        std::lock_guard guard(private_->mutex);
        private_->stopRequested = true;
    }
    private_->bell->ring();
}

RunStatistics Graph::getStatistics() const
{
    std::unique_lock lock(private_->mutex);
    const std::shared_ptr<Scheduler> scheduler = private_->scheduler;
    const auto duration = private_->running ? Clock::now() - private_->startTime : private_->duration;
    lock.unlock();
    RunStatistics statistics = scheduler ? scheduler->getStatistics() : RunStatistics();
    statistics.duration = duration;
    return statistics;
}

}  // namespace Nivex::DataProcessing::Runtime
