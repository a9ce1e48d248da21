// What is cached, what drops it, and who is told.
#include <thread>

#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;

namespace {

std::string cachable(const std::string& word)
{
    return "<AccessMode>RW</AccessMode><Cachable>" + word + "</Cachable>";
}

TEST(Caching, KeepsWhatItsModeSays)
{
    const struct
    {
        const char* kind;
        const char* word;
        ECachingMode mode;
        int readsOfTwo, readsAfterWrite;
    } cases[] = {{"IntReg", "NoCache", NoCache, 2, 1},         {"IntReg", "WriteThrough", WriteThrough, 1, 0},
                 {"IntReg", "WriteAround", WriteAround, 1, 1}, {"IntReg", "No", NoCache, 2, 1},
                 {"IntReg", nullptr, WriteThrough, 1, 0},      {"FloatReg", nullptr, WriteAround, 1, 1},
                 {"IntReg", "", WriteThrough, 1, 0},           {"FloatReg", "", WriteAround, 1, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.kind) + " " + (c.word ? c.word : "by default"));
        World world(Reg(c.kind, "R", 0, 8, c.word ? cachable(c.word) : "<AccessMode>RW</AccessMode>") +
                    Node("Float", "F", "<pValue>R</pValue>"));
        auto& node = world.Get<IFloat>("F");
        EXPECT_EQ(world.map->GetNode("F")->GetCachingMode(), c.mode);
        node.GetValue();
        node.GetValue();
        EXPECT_EQ(world.device.reads, c.readsOfTwo);
        EXPECT_EQ(node.IsValueCacheValid(), c.mode != NoCache);
        world.device.reads = 0;
        node.SetValue(1);
        EXPECT_EQ(node.GetValue(), 1);
        EXPECT_EQ(world.device.reads, c.readsAfterWrite);
        world.device.reads = 0;
        node.GetValue(false, true);
        EXPECT_EQ(world.device.reads, 1);
    }
}

TEST(Caching, FollowsTheAddress)
{
    World world(Node("Integer", "Index", "<Value>0</Value>") +
                Node("IntReg", "R", R"(<Address>0</Address><pIndex Offset="8">Index</pIndex><Length>1</Length>
                                       <AccessMode>RW</AccessMode><pPort>Device</pPort>)"));
    world.device.Put(8, {5});
    EXPECT_EQ(world.Integer("R").GetValue(), 0);
    world.Integer("Index").SetValue(1);
    EXPECT_EQ(world.Integer("R").GetValue(), 5);
    EXPECT_EQ(world.Integer("R").GetValue(), 5);
    EXPECT_EQ(world.device.reads, 2);
}

TEST(Caching, DropsBytesThatAnotherRegisterWrote)
{
    World world(Reg("IntReg", "Whole", 8, 4) +
                Reg("MaskedIntReg", "Bit", 9, 1, "<AccessMode>RW</AccessMode><Bit>0</Bit>") +
                Reg("IntReg", "Before", 4, 4) + Reg("IntReg", "After", 12, 4) + Reg("StringReg", "Long", 0, 100) +
                Node("IntReg", "Moving", "<pAddress>Place</pAddress><Length>1</Length><pPort>Device</pPort>") +
                Node("Integer", "Place", "<Value>9</Value>"));
    const char* const names[] = {"Whole", "Before", "After", "Long", "Moving"};
    for (const char* name : names)
        world.Value(name).ToString();
    world.Integer("Bit").SetValue(1);
    const bool kept[] = {false, true, true, false, false};
    for (std::size_t i = 0; i < std::size(names); ++i)
        EXPECT_EQ(world.Value(names[i]).IsValueCacheValid(), kept[i]) << names[i];
    EXPECT_EQ(world.Integer("Whole").GetValue(), 0x100);
    world.Integer("Whole").SetValue(0);
    EXPECT_EQ(world.Integer("Bit").GetValue(), 0);
}

TEST(Caching, FailuresOfThePortPassUnchangedAndDropTheCache)
{
    World world(Reg("IntReg", "R", 0, 8) + Node("Integer", "F", "<pValue>R</pValue>"));
    world.Integer("F").SetValue(3);
    int calls = 0;
    world.map->GetNode("F")->RegisterCallback([&](INode*) { ++calls; });
    world.device.onAccess = [] { throw std::domain_error("cable"); };
    for (const bool write : {true, false}) {
        try {
            write ? world.Integer("F").SetValue(4) : static_cast<void>(world.Integer("F").GetValue(false, true));
            ADD_FAILURE() << "the port's failure was lost";
        } catch (const std::domain_error& failure) {
            EXPECT_STREQ(failure.what(), "cable");
        }
        EXPECT_FALSE(world.Value("F").IsValueCacheValid());
        world.device.onAccess = nullptr;
        EXPECT_EQ(world.Integer("F").GetValue(), 3);
        world.device.onAccess = [] { throw std::domain_error("cable"); };
    }
    EXPECT_EQ(calls, 1);  // a failed write may have changed the device, a failed read has not
}

TEST(Caching, IsDroppedByInvalidatorsAndSelectorsAndByHand)
{
    const std::string feature = "<pValue>R</pValue>";
    const struct
    {
        const char* what;
        std::string extraOfFeature, extraOfOther;
        std::function<void(World&)> action;
        bool dropped;
    } cases[] = {
        {"nothing", "", "", [](World& w) { w.Integer("Other").SetValue(1); }, false},
        {"invalidator", "<pInvalidator>Other</pInvalidator>", "", [](World& w) { w.Integer("Other").SetValue(1); },
         true},
        {"invalidator's source", "<pInvalidator>Far</pInvalidator>", "",
         [](World& w) { w.Integer("Other").SetValue(1); }, true},
        {"selector", "", "<pSelected>Feature</pSelected>", [](World& w) { w.Integer("Other").SetValue(1); }, true},
        {"the node itself", "", "", [](World& w) { w.map->GetNode("Feature")->InvalidateNode(); }, true},
        {"another node", "", "", [](World& w) { w.map->GetNode("Other")->InvalidateNode(); }, false},
        {"the port", "", "", [](World& w) { w.map->GetNode("Device")->InvalidateNode(); }, true},
        {"the device", "", "", [](World& w) { w.device.InvalidateNode(); }, true},
        {"all", "", "", [](World& w) { w.map->InvalidateNodes(); }, true},
        {"reconnection", "", "", [](World& w) { w.map->Connect(&w.device); }, true},
        {"early poll", "<PollingTime>100</PollingTime>", "", [](World& w) { w.map->Poll(99); }, false},
        {"due poll", "<PollingTime>100</PollingTime>", "",
         [](World& w) {
             w.map->Poll(60);
             w.map->Poll(40);
         },
         true},
        {"blocked poll", "<pBlockPolling>One</pBlockPolling><PollingTime>100</PollingTime>", "",
         [](World& w) { w.map->Poll(100); }, false}};
    for (const auto& c : cases) {
        World world(Node("Integer", "Feature", c.extraOfFeature + feature) + Reg("IntReg", "R", 0) +
                    Node("Integer", "Other", "<Value>0</Value>" + c.extraOfOther) +
                    Node("Integer", "Far", "<pValue>Other</pValue>") + Node("Integer", "One", "<Value>1</Value>"));
        int calls = 0;
        world.map->GetNode("Feature")->RegisterCallback(
            [&](INode* node) { calls += node->GetName() == "Feature"; });
        world.Integer("Feature").GetValue();
        c.action(world);
        EXPECT_EQ(world.Value("Feature").IsValueCacheValid(), !c.dropped) << c.what;
        EXPECT_EQ(calls, c.dropped ? 1 : 0) << c.what;
    }
}

class Callbacks : public testing::Test
{
protected:
    // Selector chooses Value's register; Max bounds Value; Copy shows Value.
    World world{Node("Integer", "Selector", "<pValue>S</pValue><pSelected>Value</pSelected>") +
                Reg("IntReg", "S", 0) +
                Node("Integer", "Value", "<pValue>V</pValue><pMax>S</pMax><pInvalidator>S</pInvalidator>") +
                Node("IntReg", "V", R"(<Address>8</Address><pIndex>Selector</pIndex><Length>8</Length>
                                       <AccessMode>RW</AccessMode><pPort>Device</pPort>)") +
                Node("Integer", "Copy", "<pValue>Value</pValue>")};
    std::vector<std::string> calls;

    CallbackHandleType Listen(const char* name)
    {
        return world.map->GetNode(name)->RegisterCallback(
            [this](INode* node) { calls.push_back(node->GetName().str()); });
    }
    std::vector<std::string> Sorted()
    {
        std::sort(calls.begin(), calls.end());
        return std::exchange(calls, {});
    }
};

TEST_F(Callbacks, ComeOncePerNodeAndOperation)
{
    for (const char* name : {"Selector", "S", "Value", "V", "Copy"})
        Listen(name);
    world.Integer("Selector").SetValue(1);
    EXPECT_EQ(Sorted(), (std::vector<std::string>{"Copy", "S", "Selector", "V", "Value"}));
    world.Integer("Value").SetValue(1);
    EXPECT_EQ(Sorted(), (std::vector<std::string>{"Copy", "V", "Value"}));
    world.Integer("Value").GetValue();
    EXPECT_EQ(Sorted(), std::vector<std::string>{});
}

TEST_F(Callbacks, OfOperationsInsideAPortWaitForTheOutermostOne)
{
    Listen("Copy");
    world.device.onAccess = [&] {
        if (!calls.empty()) return;
        world.map->GetNode("Value")->InvalidateNode();
        world.map->GetNode("Copy")->InvalidateNode();
        EXPECT_TRUE(calls.empty());
    };
    world.Integer("Value").SetValue(0);
    EXPECT_EQ(Sorted(), std::vector<std::string>{"Copy"});
}

TEST_F(Callbacks, RunWithoutTheLock)
{
    bool free = false;
    world.map->GetNode("Value")->RegisterCallback([&](INode*) {
        std::thread([&] {
            free = world.map->GetLock().TryLock();
            if (free) world.map->GetLock().Unlock();
        }).join();
    });
    world.Integer("Value").SetValue(0);
    EXPECT_TRUE(free);
}

TEST_F(Callbacks, EndWithTheirRegistration)
{
    INode& node = *world.map->GetNode("Value");
    const CallbackHandleType first = Listen("Value");
    const CallbackHandleType second = Listen("Value");
    EXPECT_NE(first, second);
    EXPECT_TRUE(node.DeregisterCallback(first));
    EXPECT_FALSE(node.DeregisterCallback(first));
    node.InvalidateNode();
    EXPECT_EQ(Sorted().size(), 1U);
    ExpectFailure<GenICam::InvalidArgumentException>([&] { node.RegisterCallback(nullptr); }, "must not be empty");
}

TEST_F(Callbacks, ThatThrowDoNotSilenceTheOthers)
{
    world.map->GetNode("Value")->RegisterCallback([](INode*) { throw std::logic_error("mine"); });
    Listen("Value");
    EXPECT_THROW(world.map->GetNode("Value")->InvalidateNode(), std::logic_error);
    EXPECT_EQ(Sorted().size(), 1U);
    // The operation's own failure is the more important one. The address is cached: the write itself fails.
    world.Integer("S").GetValue();
    world.device.onAccess = [] { throw std::domain_error("cable"); };
    EXPECT_THROW(world.Integer("Value").SetValue(0, false), std::domain_error);
    EXPECT_EQ(Sorted().size(), 1U);
}

TEST_F(Callbacks, MayDropTheLastReferenceToTheMap)
{
    world.map->GetNode("Value")->RegisterCallback([&](INode*) { world.map.reset(); });
    Listen("Value");
    world.map->GetNode("Value")->InvalidateNode();
    EXPECT_EQ(world.map, nullptr);
    EXPECT_EQ(calls.size(), 1U);
}

TEST(Polling, OfACommandLastsUntilItIsDone)
{
    World world(
        Reg("IntReg", "Nowhere", 5000) +
        Node("Command", "Fails",
             "<pValue>Nowhere</pValue><CommandValue>1</CommandValue><PollingTime>0</PollingTime>") +
        Reg("IntReg", "R", 0, 8, cachable("NoCache")) +
        Node("Command", "Run", "<pValue>R</pValue><CommandValue>1</CommandValue><PollingTime>10</PollingTime>"));
    int calls = 0;
    world.map->GetNode("Run")->RegisterCallback([&](INode*) { ++calls; });
    world.map->Poll(10);
    EXPECT_EQ(calls, 0);
    world.Get<ICommand>("Run").Execute();
    world.map->Poll(10);
    EXPECT_EQ(calls, 2);  // the write and the poll
    world.device.Put(0, {0});
    // One whose polling fails does not keep the others from theirs.
    EXPECT_THROW(world.Get<ICommand>("Fails").Execute(), std::out_of_range);
    EXPECT_THROW(world.map->Poll(10), std::out_of_range);
    EXPECT_THROW(world.map->Poll(10), std::out_of_range);
    EXPECT_EQ(calls, 3);  // done, told once
    ExpectFailure<GenICam::InvalidArgumentException>([&] { world.map->Poll(-1); }, "-1 ms");
}

}  // namespace
