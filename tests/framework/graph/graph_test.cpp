// How updates travel: joins, order, passing over, back-pressure, life cycle and connections.
// The ledger has a test file of its own.

#include <gmock/gmock.h>

#include <barrier>
#include <future>
#include <semaphore>

#include "core/errors.h"
#include "core/string.h"
#include "framework/graph/graphtest.h"
#include "framework/logcapture.h"
#include "framework/refusal.h"

using namespace GraphTest;
using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr auto ample = 60s;

class GraphTravel : public testing::Test
{
protected:
    Runtime::Graph graph{std::make_shared<Pool>(4)};
};

// (1) A join runs once per update, (2) with the values of one update, (3) in the order of the source, under load.
TEST_F(GraphTravel, ADiamondJoinsTheValuesOfOneUpdateInOneStepInOrder)
{
    constexpr long count = 3000;
    std::vector<std::pair<long, long>> seen;
    Source& source = add(graph, "Source", std::make_unique<Source>());
    addStep(graph, "Left", {"Source"}, [](StepNode& n) { n.put(0, 2 * n.get(0)); });
    addStep(graph, "Right", {"Source"}, [](StepNode& n) {
        if (n.get(0) % 7 == 0) std::this_thread::yield();
        n.put(0, 3 * n.get(0));
    });
    addStep(graph, "Join", {"Left", "Right"}, [&](StepNode& n) { seen.emplace_back(n.get(0), n.get(1)); });
    graph.start();
    for (long n = 1; n <= count; ++n)
        ASSERT_TRUE(source.push(n));
    graph.stop();

    ASSERT_EQ(seen.size(), static_cast<std::size_t>(count));
    for (long n = 1; n <= count; ++n) {
        EXPECT_EQ(seen[static_cast<std::size_t>(n - 1)], std::pair(2 * n, 3 * n));
    }
}

// A node that gets no value is not run for that update, and holds up neither others nor the order.
TEST_F(GraphTravel, ANodeWithoutValuesIsPassedOver)
{
    std::vector<long> evenOnly;
    std::vector<std::pair<long, long>> joined;
    Source& source = add(graph, "Source", std::make_unique<Source>());
    addStep(graph, "Even", {"Source"}, [](StepNode& n) {
        if (n.get(0) % 2 == 0) n.put(0, n.get(0));
    });
    addStep(graph, "AfterEven", {"Even"}, [&](StepNode& n) { evenOnly.push_back(n.get(0)); });
    addStep(graph, "Join", {"Source", "Even"}, [&](StepNode& n) { joined.emplace_back(n.get(0), n.get(1)); });
    graph.start();
    for (long n = 1; n <= 4; ++n)
        source.push(n);
    graph.stop();

    EXPECT_THAT(evenOnly, ElementsAre(2, 4));
    EXPECT_THAT(joined, ElementsAre(std::pair(1L, -1L), std::pair(2L, 2L), std::pair(3L, -1L), std::pair(4L, 4L)));
}

// Two nodes meet inside their steps: that ends only if they run at the same time.
TEST_F(GraphTravel, DifferentNodesRunInParallel)
{
    std::barrier meeting(2);
    Source& source = add(graph, "Source", std::make_unique<Source>());
    for (const char* name : {"A", "B"})
        addStep(graph, name, {"Source"}, [&](StepNode&) { meeting.arrive_and_wait(); });
    graph.start();
    for (long n = 1; n <= 100; ++n)
        source.push(n);
    graph.stop();
    EXPECT_EQ(graph.getStatistics().finished, 100U);
}

TEST_F(GraphTravel, AFullQueueHoldsTheSourceBackUntilTheRecipeStops)
{
    std::promise<void> open;
    auto opened = open.get_future().share();
    Source& source = add(graph, "Source", std::make_unique<Source>(true));
    StepNode& sink = addStep(graph, "Sink", {"Source"}, [&](StepNode&) { opened.wait(); });
    graph.start();
    while (graph.getStatistics().inFlight < sink.getMaxInputJobCount())
        std::this_thread::yield();

    // The worker of the source is held back now; releasing it and the sink lets stop come to its end.
    auto stopping = std::async(std::launch::async, [&] { graph.stop(); });
    while (source.getState() != Core::NodeState::Stopped)
        std::this_thread::yield();
    open.set_value();
    stopping.get();
    const Runtime::RunStatistics statistics = graph.getStatistics();
    EXPECT_EQ(statistics.offered, sink.getMaxInputJobCount());
    EXPECT_EQ(statistics.finished, statistics.offered);
    EXPECT_EQ(statistics.nodes[1].queueMax, sink.getMaxInputJobCount());
}

// Or else one that never waits could keep the other asleep for ever.
TEST_F(GraphTravel, AQueueOfSeveralSourcesIsRefilledPlaceByPlace)
{
    std::counting_semaphore<> steps(0);
    const Names sources = {"Source1", "Source2"};
    for (const std::string& name : sources)
        add(graph, name, std::make_unique<Source>(true));
    StepNode& sink = addStep(graph, "Sink", sources, [&](StepNode&) { steps.acquire(); });
    graph.start();
    for (std::uint64_t finished = 0; finished < 3; ++finished) {
        while (graph.getStatistics().offered < sink.getMaxInputJobCount() + finished)
            std::this_thread::yield();
        steps.release();
    }
    steps.release(1000);
    graph.stop();
}

TEST_F(GraphTravel, TheLimitLetsExactlySoManyUpdatesThroughFromAllSources)
{
    std::atomic<std::uint64_t> arrived = 0;
    for (const std::string name : {"1", "2"}) {
        add(graph, "Source" + name, std::make_unique<Source>(true));
        addStep(graph, "Sink" + name, {"Source" + name}, [&](StepNode&) { ++arrived; });
    }
    Source& camera = add(graph, "Camera", std::make_unique<Source>());
    graph.setUpdateLimit(50);
    graph.start();
    camera.reportMissed(Core::LossCause::FramesMissed, 7);
    EXPECT_EQ(graph.wait(ample, 0ns), Runtime::Graph::Event::LimitReached);
    graph.stop();
    EXPECT_EQ(arrived, 50U);
    EXPECT_EQ(graph.getStatistics().offered, 57U) << "frames that never came are no updates";
    EXPECT_EQ(graph.getStatistics().finished, 50U);
}

TEST_F(GraphTravel, AFailingStepIsCountedAndTheUpdateGoesOnWithoutItsValues)
{
    const ScopedLogCapture quiet;
    std::vector<long> seen;
    Source& source = add(graph, "Source", std::make_unique<Source>());
    addStep(graph, "Fails", {"Source"}, [](StepNode& n) {
        n.put(0, n.get(0));
        if (n.get(0) == 2) throw std::runtime_error("two");
        if (n.get(0) == 3) throw 3;
    });
    addStep(graph, "Sink", {"Fails"}, [&](StepNode& n) { seen.push_back(n.get(0)); });
    graph.start();
    for (long n = 1; n <= 4; ++n)
        source.push(n);
    graph.stop();
    EXPECT_THAT(seen, ElementsAre(1, 4));
    const auto statistics = graph.getStatistics();
    EXPECT_EQ(statistics.finished, 2U);
    EXPECT_EQ(of(statistics.lost, LossCause::NodeFailed), 2U);
    EXPECT_EQ(statistics.nodes[1].failed, 2U);
    EXPECT_EQ(statistics.nodes[1].in, 4U);
    EXPECT_EQ(statistics.nodes[1].out, 2U);
}

TEST_F(GraphTravel, AnUpdateCompletesAfterItsLastNodeAndNumbersRise)
{
    const ScopedLogCapture log;
    std::vector<std::string> order;
    Source& source = add(graph, "Source", std::make_unique<Source>());
    addStep(graph, "Sink", {"Source"}, [&](StepNode& n) { order.push_back("step " + std::to_string(n.get(0))); });
    graph.start();
    for (long n = 1; n <= 2; ++n) {
        std::promise<void> done;
        const auto update = source.makeUpdate();
        EXPECT_EQ(update->getSequenceNumber(), 0U);
        source.createJob(update, {{"Out", Variant(Integer(n))}}, [&] {
            order.push_back("done");
            done.set_value();
            throw n;  // which keeps the graph neither from the next update nor from its end
        });
        done.get_future().wait();
        EXPECT_EQ(update->getSequenceNumber(), static_cast<std::uint64_t>(n));
        EXPECT_THROW(source.createJob(update, {}), GenICam::InvalidArgumentException);
    }
    graph.stop();
    EXPECT_THAT(order, ElementsAre("step 1", "done", "step 2", "done"));
    EXPECT_THAT(log.messages(), Each(HasSubstr("node \"Source\" was told of an update's end. Message: unknown")));
}

class GraphLife : public testing::Test
{
protected:
    void SetUp() override
    {
        add(graph, "Source", std::make_unique<Source>(false, &events));
        for (const char* name : {"Middle", "Sink"}) {
            add(graph, name,
                std::make_unique<StepNode>(
                    Names{"In"}, Names{"Out"}, [](StepNode&) {}, &events, name));
        }
        graph.connect("Source", "Out", "Middle", "In");
        graph.connect("Middle", "Out", "Sink", "In");
    }

    Events events;
    Runtime::Graph graph{std::make_shared<Pool>(2)};
};

TEST_F(GraphLife, SinksStartFirstAndSourcesStopFirstEachTime)
{
    for (int run = 0; run < 2; ++run) {
        events.clear();
        graph.allocate();
        graph.start();
        EXPECT_THROW(graph.start(), GenICam::LogicalErrorException);
        graph.stop();
        graph.free();
        EXPECT_THAT(events,
                    ElementsAre("allocate Middle", "allocate Sink", "start Sink", "start Middle", "start Source",
                                "stop Source", "stop Middle", "stop Sink", "free Sink", "free Middle"));
    }
}

TEST_F(GraphLife, AFailureUndoesWhatWasDoneAndNamesTheNode)
{
    const ScopedLogCapture quiet;
    const std::string allocation = ": The node's resources cannot be allocated: No belt.";
    const std::string start = ": The node cannot be started: ";
    const struct
    {
        const char* middle;  ///< Where it fails.
        const char* sink;
        std::string failure;
        Events events;
    } rows[] = {
        {"start", "", "Middle" + start + "No belt.", {"start Sink", "start Middle", "stop Sink"}},
        {"start", "stop", "Middle" + start + "No belt.", {"start Sink", "start Middle", "stop Sink"}},
        {"", "allocate", "Sink" + allocation, {"allocate Middle", "allocate Sink", "free Middle"}},
        {"free", "allocate", "Sink" + allocation, {"allocate Middle", "allocate Sink", "free Middle"}},
    };
    auto& middle = dynamic_cast<StepNode&>(*graph.findNode("Middle"));
    auto& sink = dynamic_cast<StepNode&>(*graph.findNode("Sink"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure);
        events.clear();
        middle.failing = row.middle;
        sink.failing = row.sink;
        const bool allocates = row.failure.ends_with(allocation);
        EXPECT_EQ(refusal<Runtime::NodeFailure>([&] { allocates ? graph.allocate() : graph.start(); }),
                  row.failure);
        EXPECT_EQ(events, row.events);
        EXPECT_FALSE(graph.isRunning());
    }
    middle.failing = sink.failing = "";
    EXPECT_NO_THROW(graph.start());
    graph.stop();
    middle.removeOutput("Out");
    EXPECT_EQ(refusal<Runtime::NodeFailure>([&] { graph.start(); }),
              "Middle" + start + "There is no output \"Out\".");
}

// What nodes throw at their end goes no further, and each comes to all stages of its end.
TEST_F(GraphLife, EndsInWhateverOrderNodesFail)
{
    const ScopedLogCapture log;
    auto other = std::make_unique<Runtime::Graph>(std::make_shared<Pool>(2));
    for (const char* name : {"A", "B"}) {
        const auto step = [](StepNode&) {};
        add(*other, name, std::make_unique<StepNode>(Names{}, Names{}, step, &events, name)).failing =
            "stop free end";
    }
    other->allocate();
    other->start();
    events.clear();
    other.reset();
    EXPECT_THAT(events, testing::UnorderedElementsAre("stop A", "stop B", "free A", "free B", "end A", "end B"));
    EXPECT_THAT(log.messages(), testing::SizeIs(6));

    StepNode alone(
        {}, {}, [](StepNode&) {}, &events, "C");
    alone.failing = "stop";
    alone.start({});
    alone.cleanup();
    EXPECT_THAT(events, testing::IsSupersetOf({"stop C", "end C"}));
}

TEST_F(GraphLife, WaitTellsWhatHappened)
{
    using Event = Runtime::Graph::Event;
    EXPECT_FALSE(graph.waitForNodeError(1ms));
    graph.start();
    EXPECT_EQ(graph.wait(ample, 1ms), Event::Idle);
    EXPECT_EQ(graph.wait(1ms, 0ns), Event::TimeOver);
    auto waiting = std::async(std::launch::async, [&] { return graph.wait(ample, 0ns); });
    auto erring = std::async(std::launch::async, [&] { return graph.waitForNodeError(ample); });
    auto& sink = dynamic_cast<StepNode&>(*graph.findNode("Sink"));
    sink.setError(std::make_shared<Core::DeviceError>("Unplugged.", Utils::DateTime::now()));
    EXPECT_EQ(waiting.get(), Event::NodeError);
    EXPECT_TRUE(erring.get());
    graph.requestStop();
    EXPECT_EQ(graph.wait(ample, 0ns), Event::StopRequested);
}

class MixedNode : public StepNode
{
public:
    MixedNode() : StepNode({}, {}, [](StepNode&) {})
    {
        createInput("Text", "Text", text);
        createInput("Data1", "Data", any);
    }
    Utils::ResettableProperty<Core::String> text;
    Utils::VariantProperty any;
};

TEST(GraphConnection, EachRefusalHasItsKindAndNamesThePins)
{
    using Kind = Runtime::ConnectionError::Kind;
    Runtime::Graph graph(std::make_shared<Pool>(2));
    add(graph, "S", std::make_unique<Source>());
    const auto step = [](StepNode&) {};
    add(graph, "A", std::make_unique<StepNode>(Names{"In", "In2"}, Names{"Out"}, step));
    addStep(graph, "B", {"A"}, step);
    add(graph, "T", std::make_unique<MixedNode>());
    graph.connect("S", "Out", "A", "In");

    const struct
    {
        const char *fromNode, *output, *toNode, *input;
        Kind kind;
        const char* text;
    } rows[] = {
        {"X", "Out", "A", "In2", Kind::UnknownNode, "no node \"X\""},
        {"S", "Out", "X", "In2", Kind::UnknownNode, "no node \"X\""},
        {"S", "Aut", "A", "In2", Kind::UnknownOutput, "\"S\" has no output \"Aut\""},
        {"S", "Out", "A", "In3", Kind::UnknownInput, "\"A\" has no input \"In3\""},
        {"S", "Out", "B", "A", Kind::PinTaken, "connected to \"A.Out\" already"},
        {"B", "Out", "A", "In2", Kind::Cycle, "closes a cycle"},
        {"A", "Out", "A", "In2", Kind::Cycle, "closes a cycle"},
        {"S", "Out", "T", "Text", Kind::TypeMismatch, "it takes Nivex::DataProcessing::Core::String"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        try {
            graph.connect(row.fromNode, row.output, row.toNode, row.input);
            ADD_FAILURE() << "connected";
        } catch (const Runtime::ConnectionError& e) {
            EXPECT_EQ(e.getKind(), row.kind);
            EXPECT_THAT(e.what(), HasSubstr(row.text));
        }
    }
}

// An input without a type of its own takes one from its connection.
TEST(GraphConnection, NodesRefusePinsAndSinksThatCannotBe)
{
    struct Pins : Source
    {
        using Source::createInputPin;
        using Source::createOutput;
    } node;
    struct Sink : Core::IOutputSink
    {
        void onOutput(const std::shared_ptr<Core::IGraphUpdate>&, const Variant&) override {}
    };
    const auto type = Utils::TypeInfo::get<Integer>();
    const auto sink = std::make_shared<Sink>();
    node.createOutput("One", "One", type, false);
    node.createInputPin("In", "In", {}, false, 1);
    const auto attachment = node.attachOutputSink("One", sink);
    const auto binding = node.configureInputType("In", type);
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[&] { node.createOutput("One", "", type); }, "There is an output \"One\" already."},
        {[&] { node.createOutput("", "", type); }, "An output needs a name."},
        {[&] { node.createInputPin("In", "", type, false, 1); }, "There is an input \"In\" already."},
        {[&] { node.attachOutputSink("One", nullptr); }, "The sink for output \"One\" is null."},
        {[&] { node.attachOutputSink("Two", sink); }, "There is no output \"Two\"."},
        {[&] { node.attachOutputSink("One", sink); }, "The output \"One\" takes no more than 1 connections."},
        {[&] { node.configureInputType("In", type); }, "The input \"In\" has a type already."},
        {[&] { node.setAutoResetEnabled("Out", false); }, "There is no input \"Out\"."},
    };
    for (const auto& [call, text] : rows)
        EXPECT_EQ(refusal<GenICam::InvalidArgumentException>(call), text);
    EXPECT_TRUE(node.isOutputSinkAttached(attachment) && node.isConfigured(binding));
    node.detachOutputSink(attachment);
    node.unconfigureInputType(binding);
    EXPECT_FALSE(node.isOutputSinkAttached(attachment) || node.isConfigured(binding));
    EXPECT_TRUE(node.attachOutputSink("One", sink) && node.canConfigure("In"));
}

TEST(GraphConnection, AVariableInputIsBoundToTheTypeOfItsSource)
{
    Runtime::Graph graph(std::make_shared<Pool>(2));
    Source& source = add(graph, "S", std::make_unique<Source>());
    MixedNode& node = add(graph, "N", std::make_unique<MixedNode>());
    EXPECT_TRUE(node.canConfigure("Data1"));
    graph.connect("S", "Out", "N", "Data1");
    EXPECT_FALSE(node.canConfigure("Data1"));
    EXPECT_TRUE(node.getInputDescriptors()[1].getType() == Utils::TypeInfo::get<Integer>());
    graph.start();
    source.push(7);
    graph.stop();
    EXPECT_EQ(node.any.getVariant().getValue<Integer>().getSigned(), 7);
}

}  // namespace
