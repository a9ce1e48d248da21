#pragma once

#include <memory>
#include <stdexcept>
#include <vector>

#include "parameteradapter/anythingtonodemapadapterbase.h"
#include "parameteradapter/parameterportrelay.h"

namespace AnythingToNodeMapAdapter::Test {

enum class Mode : std::uint32_t
{
    A = 0,
    B = 1,
    Negative = 0xFFFFFFFF
};

/// A node with one parameter of each kind, and ports on them. Ports are public so that tests change their flags.
struct FakeNode
{
    long gain = 5;
    unsigned long count = 7;
    double factor = 0.5;
    bool flag = false;
    GenICam::gcstring text = "initial";
    Mode mode = Mode::A;
    int executed = 0;
    bool executing = false;
    bool refuse = false;

    long getGain() const { return gain; }
    void setGain(long value)
    {
        if (refuse) throw std::runtime_error("refused");
        gain = value;
    }
    unsigned long getCount() const { return count; }
    void setCount(unsigned long value) { count = value; }
    double getFactor() const { return factor; }
    void setFactor(double value) { factor = value; }
    bool getFlag() const { return flag; }
    void setFlag(bool value) { flag = value; }
    GenICam::gcstring getText() const { return text; }
    void setText(const GenICam::gcstring& value) { text = value; }
    Mode getMode() const { return mode; }
    void setMode(Mode value) { mode = value; }
    bool isExecutingGo() const { return executing; }
    void executeGo() { ++executed; }

    using GainPort = IntegerParameterPortRelay<long, FakeNode, &FakeNode::getGain, &FakeNode::setGain>;
    using CountPort = IntegerParameterPortRelay<unsigned long, FakeNode, &FakeNode::getCount, &FakeNode::setCount>;
    using FactorPort = FloatParameterPortRelay<FakeNode, &FakeNode::getFactor, &FakeNode::setFactor>;
    using FlagPort = BooleanParameterPortRelay<FakeNode, &FakeNode::getFlag, &FakeNode::setFlag>;
    using TextPort = StringParameterPortRelay<FakeNode, &FakeNode::getText, &FakeNode::setText>;
    using ModePort = EnumParameterPortRelay<Mode, FakeNode, &FakeNode::getMode, &FakeNode::setMode>;
    using GoPort = CommandParameterPortRelay<FakeNode, &FakeNode::isExecutingGo, &FakeNode::executeGo>;

    std::shared_ptr<GainPort> makeGain(PortFlags flags = {})
    {
        return std::make_shared<GainPort>(*this, PortTexts{"Gain", "Gain", "Tip", "Text", "Beginner"},
                                          IntegerRange{-10, 90, 5}, "Linear", "dB", flags);
    }
    std::shared_ptr<CountPort> makeCount(PortFlags flags = {})
    {
        return std::make_shared<CountPort>(*this, PortTexts{"Count"}, IntegerRange{0, 100}, "", "", flags);
    }
    std::shared_ptr<FactorPort> makeFactor(PortFlags flags = {})
    {
        return std::make_shared<FactorPort>(*this, PortTexts{"Factor"}, FloatRange{-1.5, 1e9}, "PureNumber", "s",
                                            flags);
    }
    std::shared_ptr<FlagPort> makeFlag(PortFlags flags = {})
    {
        return std::make_shared<FlagPort>(*this, PortTexts{"Flag"}, flags);
    }
    std::shared_ptr<TextPort> makeText(PortFlags flags = {}, std::uint64_t maxLength = 20)
    {
        return std::make_shared<TextPort>(*this, PortTexts{"Text"}, maxLength, flags);
    }
    std::shared_ptr<ModePort> makeMode(PortFlags flags = {})
    {
        return std::make_shared<ModePort>(*this, PortTexts{"Mode"}, flags);
    }
    std::shared_ptr<GoPort> makeGo(bool writeOnly = false, PortFlags flags = {})
    {
        return std::make_shared<GoPort>(*this, PortTexts{"Go"}, writeOnly, flags);
    }
    static std::shared_ptr<EnumEntryParameterPort<Mode>> makeEntry(const char* name, Mode value,
                                                                   PortFlags flags = {})
    {
        return std::make_shared<EnumEntryParameterPort<Mode>>(value, PortTexts{name}, flags);
    }
};

/// The features of addAll in their order.
inline constexpr const char* allFeatures[] = {"Gain", "Count", "Factor", "Flag", "Text", "Mode", "Go"};

/// Adds a parameter of each kind, two entries and the links between them. Gives the entry B, whose availability is
/// read at run time.
inline std::shared_ptr<EnumEntryParameterPort<Mode>> addAll(CAnythingToNodeMapAdapterBase& adapter, FakeNode& node)
{
    adapter.addParameter(node.makeGain());
    adapter.addParameter(node.makeCount());
    adapter.addParameter(node.makeFactor());
    adapter.addParameter(node.makeFlag({.lockedRegister = true}));
    adapter.addParameter(node.makeText());
    adapter.addParameter(node.makeMode());
    adapter.addEnumEntry("Mode", FakeNode::makeEntry("A", Mode::A));
    const auto conditional = FakeNode::makeEntry("B", Mode::B, {.availableRegister = true});
    adapter.addEnumEntry("Mode", conditional);
    adapter.addParameter(node.makeGo());
    adapter.addParameter(std::make_shared<CategoryParameterPort>("Root", "", "Everything", "", "Beginner"));
    for (const char* name : allFeatures)
        adapter.addLink(LinkKey::feature, "Root", name);
    adapter.addLink(LinkKey::selected, "Count", "Text");
    return conditional;
}

/// Counts the changes that ports report.
struct CountingObserver : IParameterPortObserver
{
    virtual ~CountingObserver() = default;
    void onParameterChanged(IBasicParameterPort& port) override { names.emplace_back(port.getName()); }
    std::vector<GenICam::gcstring> names;
};

}  // namespace AnythingToNodeMapAdapter::Test
