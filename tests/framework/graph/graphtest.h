#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "core/advancednode.h"
#include "core/integer.h"
#include "core/simplenode.h"
#include "runtime/graph.h"
#include "runtime/resourcepool.h"
#include "utils/property.h"

namespace GraphTest {

using namespace Nivex::DataProcessing;
using Core::Integer;
using Core::LossCause;
using Utils::Variant;

using Pool = Runtime::ResourcePool;

using Events = std::vector<std::string>;
using Names = std::vector<std::string>;

/// A node whose step is a lambda; its pins carry numbers and are named on construction.
class StepNode : public Core::SimpleNode
{
public:
    using Step = std::function<void(StepNode&)>;

    StepNode(const Names& inputs, const Names& outputs, Step step, Events* events = nullptr, std::string name = {})
        : SimpleNode(nullptr), step_(std::move(step)), events_(events), name_(std::move(name))
    {
        for (const std::string& input : inputs)
            createInput(input, input, *in_.emplace_back(makePin()));
        for (const std::string& output : outputs)
            createOutput(output, output, *out_.emplace_back(makePin()));
    }
    ~StepNode() override { cleanup(); }

    /// The number at an input, or -1 if it holds none.
    long get(std::size_t input) const { return in_[input]->hasValue() ? in_[input]->getValue().getSigned() : -1; }
    void put(std::size_t output, long value) { out_[output]->setValue(Integer(value)); }

    using NodeBase::removeOutput;
    using NodeBase::reportLoss;
    using NodeBase::reportRecorded;
    using NodeBase::setError;

    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

    std::string failing;  ///< The stages of life that throw.

protected:
    void process() override { step_(*this); }
    void allocateAdditionalResources(const std::shared_ptr<Core::IResourcePool>&, bool) override
    {
        enter("allocate");
    }
    void onStarting(const Core::NodeArgumentCollection&) override { enter("start"); }
    void onStopping() override { enter("stop"); }
    void freeAdditionalResources(bool final) override
    {
        reportMissed(LossCause::SourceFailed, 0);  // as a node may as long as it lives
        enter(final ? "end" : "free");
    }

private:
    void enter(const std::string& stage)
    {
        if (events_) events_->push_back(stage + " " + name_);
        if (failing.find(stage) != std::string::npos) GENICAM_THROW(RuntimeException, "No belt.");
    }

    using Pin = Utils::ResettableProperty<Integer>;
    static std::unique_ptr<Pin> makePin() { return std::make_unique<Pin>(); }

    std::vector<std::unique_ptr<Pin>> in_;
    std::vector<std::unique_ptr<Pin>> out_;
    Step step_;
    Events* events_;
    std::string name_;
};

/// A source with one output "Out". The test pushes numbers, or a thread of its own counts from 1 while it runs.
class Source : public Core::AdvancedNode
{
public:
    explicit Source(bool counts = false, Events* events = nullptr)
        : AdvancedNode(nullptr), counts_(counts), events_(events)
    {
        createOutput("Out", "Out", Utils::TypeInfo::get<Integer>());
    }
    ~Source() override { cleanup(); }

    std::shared_ptr<Core::IGraphUpdate> makeUpdate()
    {
        return getUpdateFactory()->createUpdate(*this, nullptr, true);
    }

    /// False if there was no space (the graph stops) or no update (its limit is reached).
    bool push(long number)
    {
        if (!waitUntilSpaceAvailable()) return false;
        const auto update = makeUpdate();
        if (!update) return false;
        createJob(update, {{"Out", Variant(Integer(number))}});
        return true;
    }

    using NodeBase::createJob;
    using NodeBase::reportLoss;
    using NodeBase::reportMissed;
    using NodeBase::waitUntilSpaceAvailable;

    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

protected:
    void onStarting(const Core::NodeArgumentCollection&) override
    {
        if (events_) events_->push_back("start Source");
        if (counts_) worker_ = std::thread([this] { count(); });
    }
    void onStopping() override
    {
        if (worker_.joinable()) worker_.join();
        if (events_) events_->push_back("stop Source");
    }

private:
    void count()
    {
        long number = 1;
        while (push(number))
            ++number;
    }

    bool counts_;
    Events* events_;
    std::thread worker_;
};

template <typename Node>
Node& add(Runtime::Graph& graph, const std::string& name, std::unique_ptr<Node> node)
{
    Node& reference = *node;
    graph.addNode(name, "Test", Runtime::NodeHandle(node.release(), [](Core::NodeBase* n) { delete n; }));
    return reference;
}

/// A node with an output "Out" and an input for each of `sources`: it has the source's name and is connected to
/// "Out" of it.
inline StepNode& addStep(Runtime::Graph& graph, const std::string& name, const Names& sources, StepNode::Step step)
{
    StepNode& node = add(graph, name, std::make_unique<StepNode>(sources, Names{"Out"}, std::move(step)));
    for (const std::string& source : sources)
        graph.connect(source, "Out", name, source);
    return node;
}

inline std::uint64_t sum(const Core::LossCounts& lost)
{
    std::uint64_t total = 0;
    for (const std::uint64_t count : lost)
        total += count;
    return total;
}

inline std::uint64_t of(const Core::LossCounts& lost, LossCause cause)
{
    return lost[static_cast<std::size_t>(cause)];
}

}  // namespace GraphTest
