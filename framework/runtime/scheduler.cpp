#include "runtime/scheduler.h"

#include <algorithm>

#include "gcbase/exception.h"

#include "runtime/nodecall.h"

namespace Nivex::DataProcessing::Runtime {

using Core::LossCause;
using Core::NodeBase;

namespace {

using Counter = std::atomic<std::uint64_t>;

void raise(Counter& counter, std::uint64_t amount = 1)
{
    counter.fetch_add(amount, std::memory_order_relaxed);
}

}  // namespace

/// One visit of one update at one node.
struct Scheduler::Ticket
{
    Lane* lane = nullptr;
    Update* update = nullptr;
    const Route::Stop* stop = nullptr;
    std::uint32_t waitingFor = 0;  ///< Predecessors that are not done with the update.
    std::size_t firstInput = 0;    ///< Where the node's slots begin in the update's inputs.
};

/// One node with its queue and its figures.
struct Scheduler::Lane
{
    NodeBase* node = nullptr;
    std::string name;
    std::string module;
    std::vector<GenICam::gcstring> inputs;
    Route route;
    std::size_t routeInputs = 0;  ///< Slots of all nodes on the route.
    std::size_t sources = 0;      ///< On whose routes it is.

    // Under the scheduler's mutex.
    std::deque<Ticket*> queue;
    bool busy = false;

    std::mutex sourceMutex;                 ///< One update of a source at a time.
    std::atomic<Update*> current{nullptr};  ///< What the node executes now.
    std::atomic<bool> currentFailed{false};
    std::atomic<std::uint64_t> openUpdates{0};  ///< Made by the source, not handed over yet.
    std::atomic<bool> refusedSpace{false};

    Counter in{0};
    Counter out{0};
    Counter failed{0};
    Counter files{0};
    Counter bytes{0};
    Counter queueMax{0};
    std::array<Counter, Core::lossCauseCount> lost{};
    StepTimes steps;

    /// Waking a source for every place would cost a switch of threads per update: half a queue is worth one. But
    /// of several sources, one that needs no waking could keep the queue above half, and the others asleep.
    std::size_t wakeBelow() const
    {
        const std::size_t limit = node->getMaxInputJobCount();
        return sources > 1 ? limit : limit / 2 + 1;
    }

    void clearFigures()
    {
        in = out = failed = files = bytes = queueMax = 0;
        for (Counter& counter : lost)
            counter = 0;
        steps.clear();
        refusedSpace = false;
    }
};

class Scheduler::Update final : public Core::IGraphUpdate
{
public:
    Update(std::shared_ptr<Scheduler> owner, Lane& sourceLane, std::shared_ptr<IGraphUpdate> parentUpdate)
        : scheduler(std::move(owner)), source(sourceLane), parent(std::move(parentUpdate))
    {
        raise(source.openUpdates);
    }
    ~Update() override
    {
        if (sequenceNumber == 0) scheduler->drop(*this);
    }

    std::uint64_t getSequenceNumber() const override { return sequenceNumber; }
    std::shared_ptr<IGraphUpdate> getParent() const override { return parent; }

    /// Takes note of a loss; the first failure stays.
    void note(LossCause cause)
    {
        if (cause == LossCause::RefusedByRule) {
            refused = true;
        } else {
            int none = -1;
            failure.compare_exchange_strong(none, static_cast<int>(cause));
        }
    }

    std::optional<LossCause> getOutcome() const
    {
        if (failure >= 0) return static_cast<LossCause>(failure.load());
        if (refused && !recorded) return LossCause::RefusedByRule;
        return std::nullopt;
    }

    const std::shared_ptr<Scheduler> scheduler;
    Lane& source;
    const std::shared_ptr<IGraphUpdate> parent;
    std::uint64_t sequenceNumber = 0;
    std::vector<Ticket> tickets;
    std::vector<Utils::Variant> inputs;  ///< All slots of all stops; each is written by its one connection.
    std::size_t remaining = 0;           ///< Tickets not done; under the scheduler's mutex.
    std::function<void()> completed;
    std::shared_ptr<Update> self;  ///< Keeps it while it travels.
    std::atomic<int> failure{-1};
    std::atomic<bool> refused{false};
    std::atomic<bool> recorded{false};
};

class Scheduler::Sink : public Core::IOutputSink
{
public:
    Sink(std::size_t node, std::size_t slot) : node_(node), slot_(slot) {}

    void onOutput(const std::shared_ptr<Core::IGraphUpdate>& update, const Utils::Variant& value) override
    {
        // A node in a graph handles updates of its scheduler only: the factory and the queues give no others.
        auto& travelling = static_cast<Update&>(*update);
        const std::uint32_t position = travelling.source.route.positions[node_];
        travelling.inputs[travelling.tickets[position].firstInput + slot_] = value;
    }

private:
    std::size_t node_;
    std::size_t slot_;
};

/// What the end of a step makes possible.
struct Scheduler::Followers
{
    std::vector<Ticket*> ready;
    std::vector<Lane*> lanes;  ///< To be looked at.
    std::vector<std::shared_ptr<Update>> done;

    /// One per thread, so that a step allocates nothing.
    static Followers& ofThisThread()
    {
        static thread_local Followers followers;
        return followers;
    }
};

Scheduler::Scheduler(Threading::ThreadPool& pool, std::vector<NodeSetup> nodes, const Topology& topology)
    : pool_(pool)
{
    for (NodeSetup& setup : nodes) {
        auto lane = std::make_unique<Lane>();
        lane->node = setup.node;
        lane->name = std::move(setup.name);
        lane->module = std::move(setup.module);
        lane->inputs = std::move(setup.inputs);
        lanesByNode_[lane->node] = lane.get();
        lanes_.push_back(std::move(lane));
    }
    for (std::size_t i = 0; i < lanes_.size(); ++i) {
        lanes_[i]->route = Route(topology, i);
        for (const Route::Stop& stop : lanes_[i]->route.stops) {
            lanes_[i]->routeInputs += lanes_[stop.node]->inputs.size();
            if (!lanes_[i]->node->isForwardingUpdates()) ++lanes_[stop.node]->sources;
        }
    }
}

Scheduler::~Scheduler() = default;

std::shared_ptr<Core::IOutputSink> Scheduler::makeSink(std::size_t node, std::size_t slot)
{
    return std::make_shared<Sink>(node, slot);
}

void Scheduler::begin(std::uint64_t updateLimit)
{
    ledger_.reset(updateLimit);
    std::lock_guard guard(mutex_);
    lastSequenceNumber_ = 0;
    sourcesReleased_ = false;
    for (const auto& lane : lanes_)
        lane->clearFigures();
    touch();
}

void Scheduler::releaseSources()
{
    {
        std::lock_guard guard(mutex_);
        sourcesReleased_ = true;
    }
    spaceChanged_.notify_all();
}

void Scheduler::drain()
{
    std::unique_lock lock(mutex_);
    drained_.wait(lock, [this] { return travelling_ == 0 && executing_ == 0; });
}

Scheduler::Lane& Scheduler::laneOf(const NodeBase& node) const
{
    const auto found = lanesByNode_.find(&node);
    if (found == lanesByNode_.end())
        GENICAM_THROW(InvalidArgumentException, "The node is not part of this graph.");
    return *found->second;
}

std::shared_ptr<Core::IGraphUpdate> Scheduler::createUpdate(NodeBase& source,
                                                            const std::shared_ptr<Core::IGraphUpdate>& parent,
                                                            bool)
{
    Lane& lane = laneOf(source);
    if (!ledger_.tryOffer()) return nullptr;
    touch();
    return std::make_shared<Update>(shared_from_this(), lane, parent);
}

bool Scheduler::hasSpace(const Lane& source) const
{
    return std::all_of(source.route.stops.begin(), source.route.stops.end(), [this](const Route::Stop& stop) {
        const Lane& lane = *lanes_[stop.node];
        return lane.queue.size() < lane.node->getMaxInputJobCount();
    });
}

bool Scheduler::waitUntilSpaceAvailable(NodeBase& source)
{
    Lane& lane = laneOf(source);
    std::unique_lock lock(mutex_);
    ++waiters_;
    // With the limit reached there is nothing to wait for but the end, unless the last update is in the source's
    // hand.
    spaceChanged_.wait(lock, [&] {
        return sourcesReleased_ || (hasSpace(lane) && (lane.openUpdates > 0 || !ledger_.isLimitReached()));
    });
    --waiters_;
    if (sourcesReleased_ && lane.openUpdates > 0) lane.refusedSpace = true;
    return !sourcesReleased_;
}

void Scheduler::submit(NodeBase& source, const std::shared_ptr<Core::IGraphUpdate>& update,
                       Core::PinValues&& values, std::function<void()> completed)
{
    auto own = std::dynamic_pointer_cast<Update>(update);
    Lane& lane = laneOf(source);
    if (!own || &own->source != &lane) GENICAM_THROW(InvalidArgumentException, "The update is of another source.");
    std::lock_guard sourceGuard(lane.sourceMutex);
    {
        std::lock_guard guard(mutex_);
        if (own->sequenceNumber != 0)
            GENICAM_THROW(InvalidArgumentException, "The update was handed over before.");
        own->completed = std::move(completed);
        own->self = own;
        enqueue(*own);
    }
    --lane.openUpdates;
    runStep(lane, *own, [&](std::shared_ptr<Core::IGraphUpdate>& jobUpdate, Core::PinValues& jobValues) {
        jobUpdate = own;
        jobValues = std::move(values);
    });
    // Not the thread's own list: a source may submit from within a step of another graph.
    Followers followers;
    {
        std::lock_guard guard(mutex_);
        release(*own, lane.route.sourceSuccessors, followers);
        advance(followers);
    }
    settle(followers);
    dispatch(followers, false);
}

void Scheduler::enqueue(Update& update)
{
    const Route& route = update.source.route;
    update.sequenceNumber = ++lastSequenceNumber_;
    update.remaining = route.stops.size() + 1;
    update.tickets.resize(route.stops.size());
    update.inputs.resize(update.source.routeInputs);
    std::size_t firstInput = 0;
    for (std::size_t i = 0; i < route.stops.size(); ++i) {
        Lane& lane = *lanes_[route.stops[i].node];
        update.tickets[i] = {&lane, &update, &route.stops[i], route.stops[i].predecessors, firstInput};
        firstInput += lane.inputs.size();
        lane.queue.push_back(&update.tickets[i]);
        if (lane.queue.size() > lane.queueMax) lane.queueMax = lane.queue.size();
    }
    ++travelling_;
}

void Scheduler::execute(Ticket* ticket)
{
    ++executing_;
    Followers& followers = Followers::ofThisThread();
    while (ticket) {
        Lane& lane = *ticket->lane;
        Update& update = *ticket->update;
        runStep(lane, update,
                [ticket](std::shared_ptr<Core::IGraphUpdate>& jobUpdate, Core::PinValues& jobValues) {
                    jobUpdate = ticket->update->self;
                    for (std::size_t i = 0; i < ticket->lane->inputs.size(); ++i) {
                        Utils::Variant& value = ticket->update->inputs[ticket->firstInput + i];
                        if (value.isValid()) jobValues.emplace(ticket->lane->inputs[i], std::move(value));
                    }
                });
        {
            std::lock_guard guard(mutex_);
            lane.busy = false;
            leave(*ticket, followers);
            advance(followers);
        }
        settle(followers);
        ticket = dispatch(followers, true);
    }
    std::lock_guard guard(mutex_);
    if (--executing_ == 0) drained_.notify_all();
}

void Scheduler::runStep(Lane& lane, Update& update, const NodeBase::JobBody& body)
{
    lane.currentFailed = false;
    lane.current = &update;
    raise(lane.in);
    const auto start = std::chrono::steady_clock::now();
    const bool returned = callNode(lane.name, "executing", [&] { lane.node->startExecution(body); });
    if (!returned) countFailure(lane, LossCause::NodeFailed, &update);
    const auto time = std::chrono::steady_clock::now() - start;
    lane.steps.record(static_cast<std::uint64_t>(std::chrono::nanoseconds(time).count()));
    lane.current = nullptr;
}

void Scheduler::leave(Ticket& ticket, Followers& followers)
{
    Update& update = *ticket.update;
    Lane& lane = *ticket.lane;
    lane.queue.pop_front();
    if (waiters_ > 0 && lane.queue.size() < lane.wakeBelow()) spaceChanged_.notify_all();
    followers.lanes.push_back(&lane);
    release(update, ticket.stop->successors, followers);
}

void Scheduler::release(Update& update, const std::vector<std::uint32_t>& successors, Followers& followers)
{
    for (const std::uint32_t position : successors) {
        Ticket& next = update.tickets[position];
        if (--next.waitingFor == 0) followers.lanes.push_back(next.lane);
    }
    if (--update.remaining == 0) followers.done.push_back(std::move(update.self));
}

void Scheduler::advance(Followers& followers)
{
    while (!followers.lanes.empty()) {
        Lane& lane = *followers.lanes.back();
        followers.lanes.pop_back();
        consider(lane, followers);
    }
}

void Scheduler::consider(Lane& lane, Followers& followers)
{
    if (lane.busy || lane.queue.empty() || lane.queue.front()->waitingFor > 0) return;
    Ticket& head = *lane.queue.front();
    const auto first = head.update->inputs.begin() + static_cast<std::ptrdiff_t>(head.firstInput);
    const bool hasValue = std::any_of(first, first + static_cast<std::ptrdiff_t>(lane.inputs.size()),
                                      [](const Utils::Variant& value) { return value.isValid(); });
    if (hasValue) {
        lane.busy = true;
        followers.ready.push_back(&head);
    } else {
        leave(head, followers);
    }
}

void Scheduler::settle(Followers& followers)
{
    for (std::shared_ptr<Update>& update : followers.done) {
        ledger_.settle(update->getOutcome());
        touch();
        if (update->completed) callNode(update->source.name, "told of an update's end", update->completed);
        update.reset();
        // Last, so that who waits for the end sees all of it.
        std::lock_guard guard(mutex_);
        if (--travelling_ == 0) drained_.notify_all();
    }
    const bool limitMaybeSettled = !followers.done.empty() && limitCallback_;
    followers.done.clear();
    if (limitMaybeSettled && isLimitSettled()) limitCallback_();
}

Scheduler::Ticket* Scheduler::dispatch(Followers& followers, bool keepOne)
{
    Ticket* kept = nullptr;
    if (keepOne && !followers.ready.empty()) {
        kept = followers.ready.back();
        followers.ready.pop_back();
    }
    for (Ticket* ticket : followers.ready) {
        pool_.post([self = this, ticket] { self->execute(ticket); });
    }
    followers.ready.clear();
    return kept;
}

void Scheduler::drop(Update& update)
{
    Lane& lane = update.source;
    --lane.openUpdates;
    const auto failure = update.failure.load();
    const LossCause cause = failure >= 0        ? static_cast<LossCause>(failure)
                            : lane.refusedSpace ? LossCause::NoSpace
                                                : LossCause::SourceFailed;
    if (failure < 0) raise(lane.lost[static_cast<std::size_t>(cause)]);
    ledger_.settle(cause);
    touch();
    if (limitCallback_ && isLimitSettled()) limitCallback_();
}

void Scheduler::countFailure(Lane& lane, LossCause cause, Update* update)
{
    raise(lane.lost[static_cast<std::size_t>(cause)]);
    if (cause != LossCause::RefusedByRule && !(update == lane.current && lane.currentFailed.exchange(true))) {
        raise(lane.failed);
    }
    if (update) update->note(cause);
}

void Scheduler::reportLoss(NodeBase& node, LossCause cause, const Core::IGraphUpdate* update)
{
    Lane& lane = laneOf(node);
    Update* concerned = update ? const_cast<Update*>(dynamic_cast<const Update*>(update)) : lane.current.load();
    countFailure(lane, cause, concerned);
    if (!concerned) ledger_.miss(cause, 1);
}

void Scheduler::reportMissed(NodeBase& node, LossCause cause, std::uint64_t count)
{
    raise(laneOf(node).lost[static_cast<std::size_t>(cause)], count);
    ledger_.miss(cause, count);
}

void Scheduler::reportSent(NodeBase& node)
{
    raise(laneOf(node).out);
}

void Scheduler::reportRecorded(NodeBase& node, std::uint64_t files, std::uint64_t bytes)
{
    Lane& lane = laneOf(node);
    raise(lane.files, files);
    raise(lane.bytes, bytes);
    if (Update* update = lane.current) update->recorded = true;
}

RunStatistics Scheduler::getStatistics() const
{
    RunStatistics statistics;
    const RunLedger::Account account = ledger_.read();
    statistics.offered = account.offered;
    statistics.finished = account.finished;
    statistics.lost = account.lost;
    statistics.inFlight = account.getInFlight();
    std::lock_guard guard(mutex_);
    for (const auto& lane : lanes_) {
        NodeStatistics node;
        node.name = lane->name;
        node.module = lane->module;
        node.in = lane->in;
        node.out = lane->out;
        node.failed = lane->failed;
        for (std::size_t i = 0; i < node.lost.size(); ++i)
            node.lost[i] = lane->lost[i];
        node.files = lane->files;
        node.bytes = lane->bytes;
        node.queue = lane->queue.size();
        node.queueMax = lane->queueMax;
        node.queueLimit = lane->node->getMaxInputJobCount();
        node.stepMeanNs = lane->steps.getMean();
        node.stepP99Ns = lane->steps.getPercentile(0.99);
        node.stepMaxNs = lane->steps.getMax();
        statistics.nodes.push_back(std::move(node));
    }
    return statistics;
}

bool Scheduler::isLimitSettled() const
{
    return ledger_.isLimitReached() && ledger_.read().getInFlight() == 0;
}

void Scheduler::touch()
{
    lastActivityNs_.store(std::chrono::steady_clock::now().time_since_epoch().count(), std::memory_order_relaxed);
}

std::chrono::steady_clock::time_point Scheduler::getLastActivity() const
{
    return std::chrono::steady_clock::time_point(std::chrono::steady_clock::duration(lastActivityNs_.load()));
}

}  // namespace Nivex::DataProcessing::Runtime
