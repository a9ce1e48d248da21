#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/inodehost.h"
#include "core/nodebase.h"
#include "runtime/graph.h"
#include "runtime/runledger.h"
#include "runtime/steptimes.h"
#include "runtime/topology.h"
#include "threading/threadpool.h"

namespace Nivex::DataProcessing::Runtime {

/// Runs updates through the nodes of one graph.
///
/// When a source hands an update over, a ticket for it goes into the queue of every node on the source's route,
/// all in one step, so that all queues hold the same order. A ticket waits until the nodes upstream are done with
/// the update; when it is then at the head of its queue and the node is free, the node executes it on the thread
/// pool, or the ticket is passed over if no value reached the node. A thread that ends a step goes on with a step
/// that became possible by it, preferably of the same update, whose values are still in the cache.
///
/// Life: made with the nodes and their routes for one or more runs; `begin`; `releaseSources`; `drain`; and again.
/// All of it lives on until the last update is gone, which shares it.
class Scheduler : public Core::INodeHost, public std::enable_shared_from_this<Scheduler>
{
public:
    struct NodeSetup
    {
        Core::NodeBase* node;
        std::string name;
        std::string module;
        std::vector<GenICam::gcstring> inputs;  ///< The connected pins, by slot.
    };

    /// `pool` must stay until the last `drain` has returned.
    Scheduler(Threading::ThreadPool& pool, std::vector<NodeSetup> nodes, const Topology& topology);
    ~Scheduler() override;

    /// The sink that carries values to a slot of a node.
    std::shared_ptr<Core::IOutputSink> makeSink(std::size_t node, std::size_t slot);

    void begin(std::uint64_t updateLimit);
    /// From now on `waitUntilSpaceAvailable` gives false.
    void releaseSources();
    /// Waits until all updates handed over have left the graph and no thread of the pool is in here.
    void drain();

    // INodeHost, for any thread.
    std::shared_ptr<Core::IGraphUpdate> createUpdate(Core::NodeBase& source,
                                                     const std::shared_ptr<Core::IGraphUpdate>& parent,
                                                     bool spaceAvailable) override;
    bool waitUntilSpaceAvailable(Core::NodeBase& source) override;
    void submit(Core::NodeBase& source, const std::shared_ptr<Core::IGraphUpdate>& update,
                Core::PinValues&& values, std::function<void()> completed) override;
    void reportLoss(Core::NodeBase& node, Core::LossCause cause, const Core::IGraphUpdate* update) override;
    void reportMissed(Core::NodeBase& node, Core::LossCause cause, std::uint64_t count) override;
    void reportSent(Core::NodeBase& node) override;
    void reportRecorded(Core::NodeBase& node, std::uint64_t files, std::uint64_t bytes) override;

    /// The account and the nodes' figures; not the duration.
    RunStatistics getStatistics() const;

    /// True when the limit is reached and nothing is in flight.
    bool isLimitSettled() const;
    /// When an update last began or ended.
    std::chrono::steady_clock::time_point getLastActivity() const;
    std::uint64_t getInFlight() const { return ledger_.read().getInFlight(); }
    /// Called, on any thread, when the limit is settled. Before `begin`.
    void setLimitCallback(std::function<void()> callback) { limitCallback_ = std::move(callback); }

private:
    class Update;
    class Sink;
    struct Lane;
    struct Ticket;
    struct Followers;

    Lane& laneOf(const Core::NodeBase& node) const;
    bool hasSpace(const Lane& source) const;
    void execute(Ticket* ticket);
    void runStep(Lane& lane, Update& update, const Core::NodeBase::JobBody& body);
    void countFailure(Lane& lane, Core::LossCause cause, Update* update);
    // The caller holds mutex_.
    void enqueue(Update& update);
    void leave(Ticket& ticket, Followers& followers);
    void release(Update& update, const std::vector<std::uint32_t>& successors, Followers& followers);
    void advance(Followers& followers);
    void consider(Lane& lane, Followers& followers);
    // The caller does not hold mutex_.
    Ticket* dispatch(Followers& followers, bool keepOne);
    void settle(Followers& followers);
    void drop(Update& update);
    void touch();

    Threading::ThreadPool& pool_;
    std::vector<std::unique_ptr<Lane>> lanes_;
    std::unordered_map<const Core::NodeBase*, Lane*> lanesByNode_;
    RunLedger ledger_;
    std::function<void()> limitCallback_;
    std::atomic<std::int64_t> lastActivityNs_{0};

    mutable std::mutex mutex_;  // guards queues and ticket states of all lanes, and the members below
    std::condition_variable spaceChanged_;
    std::condition_variable drained_;
    std::uint64_t lastSequenceNumber_ = 0;
    std::uint64_t travelling_ = 0;
    std::atomic<int> executing_{0};  // threads in `execute`; raised without the mutex, as an update travels then
    std::size_t waiters_ = 0;
    bool sourcesReleased_ = true;
};

}  // namespace Nivex::DataProcessing::Runtime
