// Who may read and write what: modes combined, predicates, ports, and what the checks raise.
#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::AccessException;

namespace {

TEST(AccessModes, CombineToWhatBothAllow)
{
    for (int a = NI; a <= RW; ++a) {
        for (int b = NI; b <= RW; ++b) {
            const auto first = static_cast<EAccessMode>(a);
            const auto second = static_cast<EAccessMode>(b);
            const EAccessMode both = Combine(first, second);
            EXPECT_EQ(IsImplemented(both), IsImplemented(first) && IsImplemented(second)) << a << " " << b;
            EXPECT_EQ(IsReadable(both), IsReadable(first) && IsReadable(second)) << a << " " << b;
            EXPECT_EQ(IsWritable(both), IsWritable(first) && IsWritable(second)) << a << " " << b;
        }
    }
    EXPECT_FALSE(IsImplemented(static_cast<const IBase*>(nullptr)));
    EXPECT_TRUE(IsImplemented(NA) && !IsAvailable(NA) && IsWritable(WO) && !IsReadable(WO) && IsReadable(RO));
}

TEST(AccessModes, FollowRegisterPortAndPredicates)
{
    const struct
    {
        const char* reg;
        const char* imposed;
        EAccessMode port;
        int implemented, available, locked;
        EAccessMode expected;
    } cases[] = {{"RW", "RW", RW, 1, 1, 0, RW},  {"RW", "RW", RW, 0, 0, 1, NI}, {"RW", "RW", RW, 1, 0, 1, NA},
                 {"RW", "RW", RW, 1, 1, 1, RO},  {"WO", "RW", RW, 1, 1, 1, NA}, {"WO", "RW", RW, 1, 1, 0, WO},
                 {"RO", "RW", RW, 2, -1, 0, RO}, {"RW", "RO", RW, 1, 1, 0, RO}, {"RW", "WO", RW, 1, 1, 1, NA},
                 {"RO", "WO", RW, 1, 1, 0, NA},  {"RW", "RW", RO, 1, 1, 0, RO}, {"RW", "RW", NA, 1, 1, 0, NA},
                 {"R", "RW", RW, 1, 1, 0, RO},   {"W", "RW", RW, 1, 1, 0, WO},  {"", "", RW, 1, 1, 0, RO}};
    for (const auto& c : cases) {
        World world(Node("Integer", "Feature",
                         "<ImposedAccessMode>" + std::string(c.imposed) +
                             "</ImposedAccessMode><pIsImplemented>Impl</pIsImplemented>"
                             "<pIsAvailable>Avail</pIsAvailable><pIsLocked>Lock</pIsLocked><pValue>R</pValue>") +
                    Reg("IntReg", "R", 0, 8, "<AccessMode>\n  " + std::string(c.reg) + "\n</AccessMode>") +
                    Node("Integer", "Impl", "<Value>" + std::to_string(c.implemented) + "</Value>") +
                    Node("Float", "Avail", "<Value>" + std::to_string(c.available) + ".0</Value>") +
                    Node("Boolean", "Lock", "<Value>" + std::to_string(c.locked) + "</Value>"));
        world.device.mode = c.port;
        EXPECT_EQ(world.map->GetNode("Feature")->GetAccessMode(), c.expected)
            << c.reg << c.imposed << c.port << c.implemented << c.available << c.locked;
    }
}

TEST(Predicates, ThatCannotBeReadDenyWhatTheyGuard)
{
    const std::string blind = Reg("IntReg", "Blind", 0, 8, "<AccessMode>WO</AccessMode>");
    World world(blind + Node("Integer", "Impl", "<pIsImplemented>Blind</pIsImplemented><Value>1</Value>") +
                Node("Integer", "Avail", "<pIsAvailable>Blind</pIsAvailable><Value>1</Value>") +
                Node("Integer", "Lock", "<pIsLocked>Blind</pIsLocked><Value>1</Value>") +
                Node("Integer", "One", "<Value>1</Value>") + Node("Integer", "Other", "<Value>0</Value>") +
                Node("Integer", "Both",
                     "<pIsAvailable>One</pIsAvailable><pIsAvailable>Other</pIsAvailable><Value>1</Value>"));
    EXPECT_EQ(world.map->GetNode("Impl")->GetAccessMode(), NI);
    EXPECT_EQ(world.map->GetNode("Avail")->GetAccessMode(), NA);
    EXPECT_EQ(world.map->GetNode("Lock")->GetAccessMode(), RO);
    EXPECT_EQ(world.map->GetNode("Both")->GetAccessMode(), NA);
    world.Integer("Other").SetValue(1);
    EXPECT_EQ(world.map->GetNode("Both")->GetAccessMode(), RW);
    EXPECT_EQ(world.device.reads, 0);
}

TEST(AccessChecks, NameTheNodeAndItsMode)
{
    World world(
        Reg("IntReg", "In", 0, 8, "<AccessMode>RO</AccessMode>") +
        Reg("IntReg", "Out", 8, 8, "<AccessMode>WO</AccessMode>") + Reg("IntReg", "Default", 16, 8, "") +
        Node("Integer", "NeedsOut", "<Value>1</Value><pMax>Out</pMax>") +
        Node("Command", "Gone", "<pIsAvailable>In</pIsAvailable><Value>0</Value><CommandValue>1</CommandValue>"));
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { world.Integer("In").SetValue(1); }, "Node \"In\" is not writable (access mode RO)."},
        {[&] { world.Integer("Default").SetValue(1); }, "Node \"Default\" is not writable (access mode RO)."},
        {[&] { world.Value("In").FromString("1"); }, "Node \"In\" is not writable (access mode RO)."},
        {[&] { world.Integer("Out").GetValue(); }, "Node \"Out\" is not readable (access mode WO)."},
        {[&] { world.Value("Out").ToString(); }, "Node \"Out\" is not readable (access mode WO)."},
        {[&] { world.Integer("NeedsOut").GetMax(); }, "Node \"Out\" is not readable (access mode WO)."},
        {[&] { world.Get<IRegister>("In").Set(nullptr, 8); }, "Node \"In\" is not writable (access mode RO)."},
        {[&] { world.Get<ICommand>("Gone").Execute(); }, "Node \"Gone\" is not writable (access mode NA)."},
        {[&] { world.Get<ICommand>("Gone").IsDone(); }, "Node \"Gone\" is not available (access mode NA)."}};
    for (const auto& [action, text] : cases)
        ExpectFailure<AccessException>(action, text);
    EXPECT_EQ(world.device.writes, 0);
    world.Integer("In").SetValue(1, false);  // unchecked, as far as the map is concerned
    EXPECT_EQ(world.device.writes, 1);
}

TEST(Ports, GiveNothingUntilConnected)
{
    World world(Reg("IntReg", "R", 0));
    ASSERT_TRUE(world.map->Connect(nullptr));
    EXPECT_EQ(world.map->GetNode("R")->GetAccessMode(), NA);
    EXPECT_EQ(world.map->GetNode("Device")->GetAccessMode(), NA);
    ExpectFailure<AccessException>([&] { world.Integer("R").GetValue(); }, "(access mode NA)");
    ExpectFailure<AccessException>([&] { world.Integer("R").SetValue(1, false); },
                                   "Port \"Device\" is not connected.");
    EXPECT_FALSE(world.map->Connect(&world.device, "Elsewhere"));
    EXPECT_FALSE(world.map->Connect(&world.device, "R"));
    ASSERT_TRUE(world.map->Connect(&world.device, "Device"));
    EXPECT_EQ(world.map->GetNode("R")->GetAccessMode(), RW);
}

TEST(Ports, ServeDirectAccessAndReplay)
{
    struct OneWrite : IPortWriteList
    {
        void Write(const void*, int64_t, int64_t) override {}
        void Replay(IPort* port) override { port->Write("\x07", 0, 1); }
    } list;
    World world(Reg("IntReg", "R", 0));
    EXPECT_EQ(world.Integer("R").GetValue(), 0);
    world.device.Replay(&list, false);
    EXPECT_EQ(world.Integer("R").GetValue(), 0);  // still cached
    world.device.Replay(&list);
    EXPECT_EQ(world.Integer("R").GetValue(), 7);
    auto& port = world.Get<IPort>("Device");
    port.Write("\x09", 0, 1);
    EXPECT_EQ(world.Integer("R").GetValue(), 9);
    char byte = 0;
    port.Read(&byte, 0, 1);
    EXPECT_EQ(byte, 9);
    ExpectFailure<GenICam::InvalidArgumentException>([&] { port.Read(&byte, 0, -1); }, "-1 bytes");
    ExpectFailure<GenICam::InvalidArgumentException>([&] { port.Write(&byte, 0, -1); }, "-1 bytes");
}

TEST(Ports, MayEndBeforeTheirMapOrAfterIt)
{
    const std::string nodes =
        Description(R"(<Port Name="First"/>)" + Reg("IntReg", "R", 0) + R"(<Port Name="Device"/>)");
    const NodeMapPtr map = MakeMap(nodes);
    {
        ByteDevice device;
        map->Connect(&device);
        EXPECT_EQ(map->GetNode("R")->GetAccessMode(), RW);
    }
    EXPECT_EQ(map->GetNode("R")->GetAccessMode(), NA);
    struct : ByteDevice
    {
        INode* last = nullptr;
        void SetPortImpl(IPort* node) override
        {
            if (!node) last->InvalidateNode();
        }
    } mourner;
    ByteDevice survivor;
    NodeMapPtr brief = MakeMap(nodes);
    brief->Connect(&mourner, "First");
    brief->Connect(&survivor);
    mourner.last = brief->GetNode("R");
    mourner.last->RegisterCallback([](INode*) { throw std::runtime_error("mine"); });
    brief.reset();
    survivor.InvalidateNode();  // has forgotten the node
}

}  // namespace
