// Parameter ports: relays to a node, and what they tell their observer.
#include <gtest/gtest.h>

#include <functional>

#include "fakenode.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

struct WriteRow
{
    const char* name;
    std::function<void(bool isNew, bool fromNodeMap)> write;
    std::function<bool()> hasNew;
};

TEST(ParameterPorts, TellTheObserverOfChangesFromTheNodesSideOnly)
{
    FakeNode node;
    const auto gain = node.makeGain();
    const auto factor = node.makeFactor();
    const auto flag = node.makeFlag();
    const auto text = node.makeText();
    const auto mode = node.makeMode();
    StringParameterPort<GenICam::gcstring> info("old", 8, "Info", "", "", "", "Expert", true, false, false, false);
    CountingObserver observer;
    for (IBasicParameterPort* port : std::initializer_list<IBasicParameterPort*>{
             gain.get(), factor.get(), flag.get(), text.get(), mode.get(), &info})
    {
        port->setObserver(&observer);
    }
    const WriteRow rows[] = {
        {"Gain", [&](bool n, bool f) { gain->setValue(n ? 10 : 5, f); }, [&] { return node.gain == 10; }},
        {"Factor", [&](bool n, bool f) { factor->setValue(n ? 0.75 : 0.5, f); },
         [&] { return node.factor == 0.75; }},
        {"Flag", [&](bool n, bool f) { flag->setValue(n, f); }, [&] { return node.flag; }},
        {"Text", [&](bool n, bool f) { text->setValue(n ? "new" : "initial", f); },
         [&] { return node.text == "new"; }},
        {"Mode", [&](bool n, bool f) { mode->setIntValue(n, f); }, [&] { return node.mode == Mode::B; }},
        {"Info", [&](bool n, bool f) { info.setValue(n ? "new" : "old", f); },
         [&] {
             char buffer[4];
             info.getValue(buffer, sizeof(buffer));
             return std::string(buffer) == "new";
         }},
    };
    for (const WriteRow& row : rows) {
        SCOPED_TRACE(row.name);
        observer.names.clear();
        row.write(false, false);
        EXPECT_TRUE(observer.names.empty());
        row.write(true, true);
        EXPECT_TRUE(row.hasNew());
        EXPECT_TRUE(observer.names.empty());
        row.write(false, true);
        row.write(true, false);
        EXPECT_TRUE(row.hasNew());
        EXPECT_EQ(observer.names, std::vector<GenICam::gcstring>{row.name});
    }
}

TEST(ParameterPorts, CallTheObserverAfterTheSetter)
{
    struct Observer : IParameterPortObserver
    {
        virtual ~Observer() = default;
        void onParameterChanged(IBasicParameterPort&) override { seen = node->gain; }
        FakeNode* node = nullptr;
        long seen = 0;
    } observer;
    FakeNode node;
    observer.node = &node;
    const auto gain = node.makeGain();
    gain->setObserver(&observer);
    gain->setValue(15, false);
    EXPECT_EQ(observer.seen, 15);
    gain->setObserver(nullptr);
    gain->setValue(20, false);
    EXPECT_EQ(observer.seen, 15);
    node.refuse = true;
    EXPECT_THROW(gain->setValue(25, false), std::runtime_error);
}

TEST(ParameterPorts, TellOfNewLimitsAndFlagsOnceIfTheyDiffer)
{
    FakeNode node;
    const auto factor = node.makeFactor();
    const auto gain = node.makeGain();
    CountingObserver observer;
    factor->setObserver(&observer);
    gain->setObserver(&observer);

    EXPECT_FALSE(factor->setRange(-1.5, 1e9));
    EXPECT_FALSE(gain->changeLimits(-10, 90));
    EXPECT_FALSE(gain->changeWritable(true));
    EXPECT_TRUE(observer.names.empty());

    EXPECT_TRUE(factor->setRange(-1.5, 2.0));
    EXPECT_TRUE(gain->changeLimits(-10, 95));
    EXPECT_TRUE(gain->changeWritable(false));
    EXPECT_EQ(observer.names, (std::vector<GenICam::gcstring>{"Factor", "Gain", "Gain"}));
    EXPECT_EQ(factor->getMax(), 2.0);
    EXPECT_EQ(gain->getMax(), 95);
    EXPECT_FALSE(gain->isWritable());
}

TEST(ParameterPorts, FillStringBuffersExactly)
{
    FakeNode node;
    node.text = "initial";
    const auto text = node.makeText();
    char buffer[11];
    std::memset(buffer, 'x', sizeof(buffer));
    text->getValue(buffer, 4);
    EXPECT_EQ(std::string(buffer, 5), "initx");
    text->getValue(buffer, 10);
    EXPECT_EQ(std::string(buffer, 11), std::string("initial\0\0\0x", 11));
}

TEST(ParameterPorts, GiveNumbersOfTheirTypes)
{
    FakeNode node;
    node.count = ~0UL;
    const auto count = node.makeCount();
    EXPECT_EQ(count->getValue(), -1);
    EXPECT_FALSE(count->isSigned());
    EXPECT_TRUE(node.makeGain()->isSigned());

    node.mode = Mode::Negative;
    const auto mode = node.makeMode();
    EXPECT_EQ(mode->getIntValue(), 0xFFFFFFFFLL);
    CountingObserver observer;
    mode->setObserver(&observer);
    mode->setEnumValue(Mode::B);
    EXPECT_EQ(mode->getEnumValue(), Mode::B);
    EXPECT_EQ(observer.names.size(), 1U);
    EXPECT_EQ(FakeNode::makeEntry("Negative", Mode::Negative)->getValue(), 0xFFFFFFFFLL);

    EXPECT_EQ(node.makeText()->getLength(), 20U);
    EXPECT_EQ(mode->getLength(), 8U);
    EXPECT_STREQ(mode->getVisibility(), "Expert");
    mode->setVisibility("Guru");
    EXPECT_STREQ(mode->getVisibility(), "Guru");
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test
