// Maps as a whole: what nodes tell of themselves, references, factories, locks and threads.
#include <thread>

#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::AccessException;

namespace {

std::vector<std::string> Names(const FeatureList_t& features)
{
    std::vector<std::string> names;
    for (IValue* feature : features)
        names.push_back(dynamic_cast<INode&>(*feature).GetName().str());
    return names;
}

const std::string gain = R"(<Category Name="Root"><pFeature>Gain</pFeature><pFeature>Selector</pFeature></Category>
    <Integer Name="Gain" MergePriority="+1">
        <ToolTip>
            Tip &amp; more
        </ToolTip>
        <Description>Text</Description>
        <DisplayName> The gain </DisplayName>
        <Visibility>Guru</Visibility>
        <DocuURL>http://x</DocuURL>
        <IsDeprecated>Yes</IsDeprecated>
        <EventID>0x9000</EventID>
        <pAlias>Selector</pAlias>
        <Streamable>Yes</Streamable>
        <pValue>GainValue</pValue>
        <Unit>dB</Unit>
        <Representation>Logarithmic</Representation>
    </Integer>
    <IntReg Name="GainValue"><Address>0x100</Address><Length>8</Length><AccessMode>RW</AccessMode>
        <pPort>Device</pPort><Cachable>NoCache</Cachable></IntReg>
    <Integer Name="Selector"><Value>0</Value><pSelected>Gain</pSelected></Integer>
    <Port Name = "Device"/>
)";

TEST(Nodes, TellWhatTheDescriptionSays)
{
    const NodeMapPtr map = MakeMap(Description(gain));
    INode& node = *map->GetNode("Gain");
    EXPECT_EQ(node.GetToolTip(), "Tip & more");
    EXPECT_EQ(node.GetDescription(), "Text");
    EXPECT_EQ(node.GetDisplayName(), "The gain ");
    EXPECT_EQ(node.GetVisibility(), Guru);
    EXPECT_EQ(node.GetDocuURL(), "http://x");
    EXPECT_EQ(node.GetEventID(), "9000");
    EXPECT_TRUE(node.IsDeprecated() && node.IsStreamable() && node.IsFeature());
    EXPECT_FALSE(node.IsCachable());
    EXPECT_EQ(node.GetPollingTime(), -1);
    EXPECT_EQ(node.GetPrincipalInterfaceType(), intfIInteger);
    EXPECT_EQ(node.GetDeviceName(), "Device");
    EXPECT_EQ(node.GetAlias(), map->GetNode("Selector"));
    EXPECT_EQ(node.GetNodeMap(), map.get());
    EXPECT_EQ(dynamic_cast<IInteger&>(node).GetRepresentation(), Logarithmic);
    INode& plain = *map->GetNode("GainValue");
    EXPECT_EQ(plain.GetDisplayName(), "GainValue");
    EXPECT_FALSE(plain.IsFeature() || plain.IsStreamable());
    NodeList_t nodes;
    node.GetChildren(nodes);
    EXPECT_EQ(nodes, NodeList_t{&plain});
    nodes.clear();
    plain.GetParents(nodes);
    EXPECT_EQ(nodes, NodeList_t{&node});
}

TEST(Nodes, KnowTheirCategoryAndSelectors)
{
    World world(gain.substr(0, gain.find("    <Port")));
    FeatureList_t features;
    world.Get<ICategory>("Root").GetFeatures(features);
    EXPECT_EQ(Names(features), (std::vector<std::string>{"Gain", "Selector"}));
    EXPECT_EQ(world.Value("Root").ToString(), "Root");
    ExpectFailure<AccessException>([&] { world.Value("Root").FromString("x", false); },
                                   "a category cannot be written");
    EXPECT_EQ(world.map->GetNode("Root")->GetAccessMode(), RO);
    auto& selector = world.Get<ISelector>("Selector");
    auto& selected = world.Get<ISelector>("Gain");
    EXPECT_TRUE(selector.IsSelector());
    EXPECT_FALSE(selected.IsSelector());
    features.clear();
    selector.GetSelectedFeatures(features);
    EXPECT_EQ(Names(features), std::vector<std::string>{"Gain"});
    features.clear();
    selected.GetSelectingFeatures(features);
    EXPECT_EQ(Names(features), std::vector<std::string>{"Selector"});
}

TEST(NodeMapFactory, LeavesOutStringsAndReleasesItsTextOnDemand)
{
    std::string text = Description(gain);
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size(), CacheUsage_Ignore, true);
    const std::string original = std::exchange(text, std::string(text.size(), 'x'));
    const NodeMapPtr first = factory.CreateNodeMap("Cam", false);
    EXPECT_EQ(first->GetDeviceName(), "Cam");
    EXPECT_EQ(first->GetDescriptionText(), original);
    EXPECT_EQ(first->GetNode("Gain")->GetToolTip(), "");
    EXPECT_EQ(first->GetNode("Gain")->GetDisplayName(), "Gain");
    CLock lock;
    const NodeMapPtr second = factory.CreateNodeMap("Cam", lock, true);
    EXPECT_NE(first->GetNode("Gain"), second->GetNode("Gain"));
    EXPECT_EQ(&second->GetLock(), &lock);
    EXPECT_NE(&first->GetLock(), &lock);
    ExpectFailure<GenICam::LogicalErrorException>([&] { factory.CreateNodeMap(); }, "released");
}

TEST(NodeMapRef, RefusesEverythingWithoutAMap)
{
    CNodeMapRef reference("Cam");
    EXPECT_EQ(reference.GetDeviceName(), "Cam");
    EXPECT_FALSE(reference);
    NodeList_t nodes;
    const std::function<void()> accessors[] = {
        [&] { reference.GetNode("X"); },      [&] { reference.GetNodes(nodes); },
        [&] { reference.Connect(nullptr); },  [&] { reference.Connect(nullptr, "P"); },
        [&] { reference.InvalidateNodes(); }, [&] { reference.GetLock(); },
        [&] { reference.Poll(1); },           [&] { reference.GetNumNodes(); }};
    for (const auto& access : accessors)
        ExpectFailure<AccessException>(access, "Feature not present (reference not valid)");

    NodeMapPtr map = MakeMap(Description(gain));
    reference.Attach(map);
    EXPECT_EQ(reference.GetDeviceName(), "Device");
    const CNodeMapRef copy = reference;
    const INode* const node = map->GetNode("Gain");
    map.reset();
    reference.Release();
    EXPECT_FALSE(reference.IsValid());
    EXPECT_EQ(copy.GetNode("Gain"), node);
    EXPECT_EQ(copy.GetNode("None"), nullptr);
    EXPECT_EQ(copy.GetNumNodes(), 5U);
    copy.GetNodes(nodes);
    EXPECT_EQ(nodes.front()->GetName(), "Root");
    EXPECT_EQ(nodes.size(), 5U);
    EXPECT_EQ(CNodeMapRef(CNodeMapFactory::CreateEmptyNodeMap()).GetNumNodes(), 0U);
}

TEST(Locking, LetsTheHolderInAndKeepsOthersOut)
{
    World world(gain.substr(0, gain.find("    <Port")));
    CLock& lock = world.map->GetLock();
    const AutoLock held(lock);
    world.Integer("Gain").SetValue(3);
    bool taken = true;
    world.device.onAccess = [&] { std::thread([&] { taken = lock.TryLock(); }).join(); };
    world.Integer("Gain").GetValue();
    EXPECT_FALSE(taken);
}

TEST(Locking, IsGivenBackAfterEachOperationAlsoAFailedOne)
{
    World world(gain.substr(0, gain.find("    <Port")));
    world.device.onAccess = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(world.Integer("Gain").GetValue(), std::runtime_error);
    world.device.onAccess = [&] { world.Integer("Gain").GetValue(); };
    ExpectFailure<GenICam::RuntimeException>([&] { world.Integer("Gain").GetValue(); },
                                             "operations inside each other");
    bool taken = false;
    std::thread([&] {
        taken = world.map->GetLock().TryLock();
        if (taken) world.map->GetLock().Unlock();
    }).join();
    EXPECT_TRUE(taken);
}

TEST(Locking, MakesOperationsOfManyThreadsWhole)
{
    World world(Node("Integer", "Wide", "<pValue>R</pValue>") + Reg("IntReg", "R", 0));
    IInteger& node = world.Integer("Wide");
    node.SetValue(0x0101010101010101);
    const auto work = [&](int64_t value) {
        for (int i = 0; i < 2000; ++i) {
            node.SetValue(value);
            const int64_t seen = node.GetValue(false, i % 2 == 0);
            if (seen % 0x0101010101010101 != 0) ADD_FAILURE() << seen;
        }
    };
    std::thread other(work, 0x0101010101010101);
    work(0x7070707070707070);
    other.join();
}

}  // namespace
