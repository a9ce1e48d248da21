// The adapter with a live node map.
#include <gtest/gtest.h>

#include <limits>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

#include "fakenode.h"
#include "parameteradapter/anythingtonodemapadapter.h"
#include "parameteradapter/anythingtonodemapadapterremote.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

template <typename Interface>
Interface& find(const GenApi::CNodeMapRef& map, const char* name)
{
    auto* found = dynamic_cast<Interface*>(map.GetNode(name));
    if (!found) throw std::runtime_error(std::string("no such node: ") + name);
    return *found;
}

/// Both ways of reaching the parameters: one shared port, or a port for each.
class AdapterModes : public testing::TestWithParam<const char*>
{
protected:
    // The end of the adapter disconnects its map, which is a change that callbacks are told of.
    int calls = 0;
    int factorCalls = 0;
    GenApi::CLock lock;
    FakeNode node;
    CAnythingToNodeMapAdapter adapter;
};

INSTANTIATE_TEST_SUITE_P(, AdapterModes, testing::Values("ParameterPort", ""),
                         [](const auto& row) { return *row.param ? "Shared" : "Own"; });

TEST_P(AdapterModes, ReadsAndWritesReachTheNode)
{
    addAll(adapter, node);
    const auto map = adapter.buildNodeMap(&lock, GetParam(), "P_");
    EXPECT_EQ(&map.GetLock(), &lock);
    EXPECT_EQ(map.GetDeviceName(), "Device");

    auto& gain = find<GenApi::IInteger>(map, "Gain");
    node.gain = 40;
    EXPECT_EQ(gain.GetValue(), 40);
    EXPECT_EQ(gain.GetMin(), -10);
    EXPECT_EQ(gain.GetMax(), 90);
    EXPECT_EQ(gain.GetInc(), 5);
    gain.SetValue(-5);
    EXPECT_EQ(node.gain, -5);
    EXPECT_ANY_THROW(gain.SetValue(91));
    EXPECT_ANY_THROW(gain.SetValue(41));
    EXPECT_EQ(node.gain, -5);

    auto& factor = find<GenApi::IFloat>(map, "Factor");
    factor.SetValue(0.125);
    EXPECT_EQ(node.factor, 0.125);
    EXPECT_EQ(factor.GetMax(), 1e9);
    find<GenApi::IBoolean>(map, "Flag").SetValue(true);
    EXPECT_TRUE(node.flag);
    find<GenApi::IString>(map, "Text").SetValue("12345678901234567890");
    EXPECT_EQ(node.text, "12345678901234567890");
    auto& mode = find<GenApi::IEnumeration>(map, "Mode");
    mode.FromString("B");
    EXPECT_EQ(node.mode, Mode::B);
    EXPECT_ANY_THROW(mode.FromString("C"));
    find<GenApi::ICommand>(map, "Go").Execute();
    EXPECT_EQ(node.executed, 1);

    GenApi::FeatureList_t selected;
    find<GenApi::ISelector>(map, "Count").GetSelectedFeatures(selected);
    EXPECT_EQ(selected.size(), 1U);
}

TEST_P(AdapterModes, ClientsHearOfTheNodesChanges)
{
    const auto gain = node.makeGain({.lockedRegister = true});
    adapter.addParameter(gain);
    adapter.addParameter(node.makeFactor());
    const auto map = adapter.buildNodeMap(nullptr, GetParam(), "");
    map.GetNode("Gain")->RegisterCallback([&](GenApi::INode*) { ++calls; });
    map.GetNode("Factor")->RegisterCallback([&](GenApi::INode*) { ++factorCalls; });

    gain->setValue(10, false);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(map.GetNode("Gain")->GetAccessMode(), GenApi::RW);
    gain->changeWritable(false);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(map.GetNode("Gain")->GetAccessMode(), GenApi::RO);
    EXPECT_ANY_THROW(find<GenApi::IInteger>(map, "Gain").SetValue(15));
    gain->changeLimits(-10, 200);
    EXPECT_EQ(find<GenApi::IInteger>(map, "Gain").GetMax(), 200);
    EXPECT_EQ(factorCalls, 0);
}

TEST_P(AdapterModes, ANewBuildTakesTheConnectionOver)
{
    const auto gain = node.makeGain();
    adapter.addParameter(gain);
    const auto first = adapter.buildNodeMap(nullptr, GetParam(), "P_");
    adapter.addParameter(node.makeFlag());
    const auto second = adapter.buildNodeMap(nullptr, GetParam(), "Q_");

    EXPECT_FALSE(first == second);
    EXPECT_TRUE(adapter.getNodeMap() == second);
    EXPECT_EQ(find<GenApi::IInteger>(second, "Gain").GetValue(), 5);
    EXPECT_ANY_THROW(find<GenApi::IInteger>(first, "Gain").SetValue(10));
    EXPECT_EQ(node.gain, 5);
    second.GetNode("Gain")->RegisterCallback([&](GenApi::INode*) { ++calls; });
    gain->setValue(10, false);
    EXPECT_EQ(calls, 1);
}

TEST_P(AdapterModes, AReplacedParameterIsNoLongerServed)
{
    FakeNode other;
    other.gain = 20;
    const auto old = node.makeGain();
    adapter.addParameter(old);
    adapter.addParameter(node.makeFactor());
    const auto first = adapter.buildNodeMap(nullptr, GetParam(), "");
    adapter.addParameter(other.makeGain());
    first.GetNode("Gain")->RegisterCallback([&](GenApi::INode*) { ++calls; });
    old->setValue(10, false);
    EXPECT_EQ(calls, 0) << "the replaced port must have lost its observer";
    try {
        EXPECT_EQ(find<GenApi::IInteger>(first, "Gain").GetValue(), 0);
    } catch (const GenICam::GenericException&) {
        EXPECT_STREQ(GetParam(), "") << "a shared port stays connected and reads zeros";
    }
    EXPECT_EQ(find<GenApi::IFloat>(first, "Factor").GetValue(), 0.5);

    const auto second = adapter.buildNodeMap(nullptr, GetParam(), "");
    EXPECT_EQ(find<GenApi::IInteger>(second, "Gain").GetValue(), 20);
}

TEST_P(AdapterModes, AMapOutlivesTheAdapterWithoutPort)
{
    GenApi::CNodeMapRef map;
    std::shared_ptr<FakeNode::GainPort> gain = node.makeGain();
    {
        CAnythingToNodeMapAdapter local;
        local.addParameter(gain);
        map = local.buildNodeMap(nullptr, GetParam(), "");
    }
    EXPECT_ANY_THROW(find<GenApi::IInteger>(map, "Gain").GetValue());
    gain->setValue(10, false);
}

TEST_P(AdapterModes, WhatASetterThrowsReachesTheClient)
{
    adapter.addParameter(node.makeGain());
    const auto map = adapter.buildNodeMap(nullptr, GetParam(), "");
    node.refuse = true;
    EXPECT_THROW(find<GenApi::IInteger>(map, "Gain").SetValue(10), std::runtime_error);
}

TEST(Adapter, IgnoresNullAndUnknownNames)
{
    FakeNode node;
    CAnythingToNodeMapAdapter adapter;
    adapter.addParameter(node.makeGain());
    adapter.addParameter(node.makeMode());
    adapter.addEnumEntry("Mode", FakeNode::makeEntry("A", Mode::A));
    GenICam::gcstring before;
    adapter.getDescriptionText(before, "Port", "");

    adapter.addParameter(std::shared_ptr<IIntegerParameterPort>());
    adapter.addEnumEntry("Mode", nullptr);
    adapter.addEnumEntry("Nothing", FakeNode::makeEntry("B", Mode::B));
    adapter.addEnumEntry("Gain", FakeNode::makeEntry("B", Mode::B));
    adapter.addLink(LinkKey::selected, "Nothing", "Gain");
    GenICam::gcstring after;
    adapter.getDescriptionText(after, "Port", "");
    EXPECT_EQ(before, after);

    const auto again = FakeNode::makeEntry("A", Mode::A, {.availableRegister = true});
    adapter.addEnumEntry("Mode", again);
    adapter.getDescriptionText(after, "Port", "");
    const auto count = [&](const char* part) {
        std::size_t found = 0;
        for (auto at = after.find(part); at != GenICam::gcstring::npos; at = after.find(part, at + 1))
            ++found;
        return found;
    };
    EXPECT_EQ(count("<EnumEntry Name=\"A\""), 2U);
    EXPECT_EQ(count("<IntReg Name=\"EnumEntry_Mode_AIsAvailable\""), 1U);
}

TEST(Adapter, GivesAnEmptyMapBeforeTheFirstBuild)
{
    CAnythingToNodeMapAdapter adapter;
    EXPECT_TRUE(adapter.getNodeMap().IsValid());
    EXPECT_EQ(adapter.getNodeMap().GetNumNodes(), 0U);
}

TEST(Adapter, ARefusedDescriptionLeavesTheMapInUse)
{
    FakeNode node;
    CAnythingToNodeMapAdapter adapter;
    adapter.addParameter(node.makeGain());
    const auto map = adapter.buildNodeMap(nullptr, "Port", "");
    adapter.addParameter(std::make_shared<CategoryParameterPort>("Bad", "", "", "<unclosed>", ""));
    EXPECT_THROW(adapter.buildNodeMap(nullptr, "Port", ""), GenICam::GenericException);
    EXPECT_TRUE(adapter.getNodeMap() == map);
    EXPECT_EQ(find<GenApi::IInteger>(map, "Gain").GetValue(), 5);
    adapter.addParameter(node.makeGain());
    EXPECT_EQ(find<GenApi::IInteger>(map, "Gain").GetValue(), 0);
}

/// Factor at 0 to 47, of which 40 to 47 hold no register; Flag at 48 to 71; Gain at 72 to 119.
TEST(RemoteAdapter, ServesRequestsThatLieInOneBlock)
{
    FakeNode node;
    CAnythingToNodeMapAdapterRemote remote;
    remote.addParameter(node.makeGain());
    remote.addParameter(node.makeFactor());
    remote.addParameter(node.makeFlag());
    remote.addParameter(std::make_shared<CategoryParameterPort>("Aaa", "", "", "", ""));
    constexpr std::int64_t untouched = 0x1122334455667788;
    const auto read = [&](std::int64_t address, std::int64_t length = 8) {
        std::int64_t words[8] = {untouched, untouched, untouched, untouched,
                                 untouched, untouched, untouched, untouched};
        remote.Read(words, address, length);
        return words[0];
    };
    EXPECT_EQ(read(72), 0) << "not connected yet";

    GenICam::gcstring text;
    GenICam::gcstring described;
    EXPECT_THROW(remote.connect(text, "", ""), GenICam::InvalidArgumentException);
    remote.getDescriptionText(described, "Port", "P_");
    remote.connect(text, "Port", "P_");
    EXPECT_EQ(text, described);
    remote.getDescriptionText(described, "", "Other_");

    struct Row
    {
        std::int64_t address;
        std::int64_t length;
        std::int64_t expected;
    };
    constexpr std::int64_t lastAddress = std::numeric_limits<std::int64_t>::max();
    const Row rows[] = {{72, 8, 5}, {80, 8, 90}, {112, 8, 0}, {40, 8, untouched},  {44, 8, 0},         {64, 16, 0},
                        {0, 64, 0}, {120, 8, 0}, {-8, 8, 0},  {lastAddress, 8, 0}, {72, -8, untouched}};
    for (const Row& row : rows) {
        EXPECT_EQ(read(row.address, row.length), row.expected) << row.address << " " << row.length;
    }

    const std::int64_t word = 15;
    remote.Write(&word, 72, 8);
    EXPECT_EQ(node.gain, 15);
    for (const std::int64_t address : {40, 68, 76, 80, 120})
        remote.Write(&word, address, 8);
    EXPECT_EQ(node.gain, 15);

    FakeNode other;
    remote.addParameter(other.makeGain());
    EXPECT_EQ(read(72), 0) << "a replaced parameter reads as zeros";
    EXPECT_EQ(read(80), 0);
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test
