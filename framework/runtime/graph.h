#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gcbase/exception.h"

#include "core/ledger.h"
#include "core/nodebase.h"

namespace Nivex::DataProcessing::Runtime {

/// A node with the way to destroy it, which is its package's.
using NodeHandle = std::unique_ptr<Core::NodeBase, std::function<void(Core::NodeBase*)>>;

/// Why two pins cannot be joined.
class GENICAM_API ConnectionError : public std::exception
{
public:
    enum class Kind
    {
        UnknownNode,
        UnknownOutput,
        UnknownInput,
        TypeMismatch,
        PinTaken,
        Cycle
    };

    ConnectionError(Kind kind, std::string text) : kind_(kind), text_(std::move(text)) {}
    Kind getKind() const { return kind_; }
    const char* what() const noexcept override { return text_.c_str(); }

private:
    Kind kind_;
    std::string text_;
};

/// A node's refusal to have its resources allocated or to start. The text begins with the node's name.
class GENICAM_API NodeFailure : public GenICam::RuntimeException
{
public:
    enum class Stage
    {
        Allocation,
        Start
    };

    NodeFailure(Stage stage, std::string node, std::string cause);
    ~NodeFailure() override;
    Stage getStage() const { return stage_; }
    const std::string& getNode() const { return node_; }
    /// What the node said.
    const std::string& getCause() const { return cause_; }

private:
    Stage stage_;
    std::string node_;
    std::string cause_;
};

struct NodeStatistics
{
    std::string name;
    std::string module;
    std::uint64_t in = 0;      ///< Updates that the node executed (a source: began).
    std::uint64_t out = 0;     ///< Updates that it sent values on for.
    std::uint64_t failed = 0;  ///< Updates in which it reported a loss that is not a rule's refusal, or threw.
    Core::LossCounts lost{};   ///< Every report, by cause.
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t queue = 0;  ///< Updates that wait at the node now.
    std::uint64_t queueMax = 0;
    std::uint64_t queueLimit = 0;
    std::uint64_t stepMeanNs = 0;
    std::uint64_t stepP99Ns = 0;
    std::uint64_t stepMaxNs = 0;
};

/// The ledger of a run: `offered == finished + sum(lost) + inFlight` at every moment, and inFlight is 0 after a
/// stop. An update counts as lost, once, by the first failure that any node reported for it, or as RefusedByRule
/// if a rule refused it and no node recorded anything of it.
struct RunStatistics
{
    std::uint64_t offered = 0;
    std::uint64_t finished = 0;
    std::uint64_t inFlight = 0;
    Core::LossCounts lost{};
    std::chrono::nanoseconds duration{0};  ///< From start to now, or to the end of stop.
    std::vector<NodeStatistics> nodes;
};

/// The graph of one recipe: nodes joined pin to pin, and what runs updates through them.
///
/// Life: addNode and connect; allocate; start; stop; free; and again. All these come from one thread. Destruction
/// stops and frees. `getStatistics`, `wait` and `requestStop` may be called from any thread.
///
/// An update visits every node that is reachable from its source. A node runs at most once for an update, after
/// all nodes upstream that take part have finished with it, and only if a value reached one of its pins; every
/// node sees updates in the order in which sources handed them over. Different nodes run in parallel on one thread
/// pool.
class GENICAM_API Graph
{
public:
    /// `pool` gives the threads. Raises InvalidArgumentException for null.
    explicit Graph(std::shared_ptr<Core::IResourcePool> pool);
    ~Graph();
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    /// Raises InvalidArgumentException for an empty or taken name or a null node; LogicalErrorException while
    /// running.
    void addNode(const std::string& name, const std::string& module, NodeHandle node);
    /// Null if there is none of that name.
    Core::NodeBase* findNode(const std::string& name) const;
    std::vector<std::string> getNodeNames() const;

    /// Joins an output pin to an input pin. Raises ConnectionError.
    void connect(const std::string& fromNode, const std::string& output, const std::string& toNode,
                 const std::string& input);

    /// Allocates the resources of all nodes. A failure frees those that were allocated and passes on as
    /// NodeFailure.
    void allocate();
    /// Starts sinks before sources. A failure, such as a connected output that is no more, stops those that were
    /// started and passes on as NodeFailure.
    void start(const std::map<std::string, Core::NodeArgumentCollection>& arguments = {});
    /// Stops sources first, lets what is in flight finish, then stops the rest. Does nothing when not started. A
    /// node's failure to stop is logged; the others stop all the same.
    void stop();
    /// Frees what was allocated. A node's failure is logged.
    void free();
    bool isRunning() const;

    /// No update beyond this number begins; 0 is no limit. Before start.
    void setUpdateLimit(std::uint64_t limit);

    enum class Event
    {
        StopRequested,
        LimitReached,  ///< The update limit is reached and nothing is in flight.
        Idle,          ///< Nothing in flight and nothing begun for `idleTime`.
        NodeError,     ///< A node has an error of its own.
        TimeOver
    };
    /// Waits for an event. An `idleTime` or `limit` of zero is never.
    Event wait(std::chrono::nanoseconds limit, std::chrono::nanoseconds idleTime);
    /// True as soon as a node has an error of its own, whether the graph runs or not; false if none has by then.
    /// For after a refusal: news of its cause, such as a camera that is gone, may come a moment later and on
    /// another thread.
    bool waitForNodeError(std::chrono::nanoseconds limit);
    /// Makes `wait` return; safe from any thread (not from a signal handler).
    void requestStop();

    RunStatistics getStatistics() const;

private:
    struct Private;
    std::unique_ptr<Private> private_;
};

}  // namespace Nivex::DataProcessing::Runtime
