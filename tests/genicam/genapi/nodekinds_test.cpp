// The value of each kind of node: bytes to values and back, limits, texts. Access modes, caches and refused
// descriptions have files of their own.
#include <cmath>
#include <limits>

#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::AccessException;
using GenICam::InvalidArgumentException;
using GenICam::OutOfRangeException;
using GenICam::RuntimeException;

namespace {

constexpr int64_t lowest = std::numeric_limits<int64_t>::min();
constexpr int64_t highest = std::numeric_limits<int64_t>::max();
const std::string rw = "<AccessMode>RW</AccessMode>";

const std::string be = "<Endianess>BigEndian</Endianess>";

TEST(IntegerRegisters, ReadAndWriteTheirBits)
{
    const struct
    {
        const char* kind;
        int length;
        std::string elements;
        std::vector<int> bytes;
        int64_t value, min, max;
    } cases[] = {{"IntReg", 1, "<Sign/><Endianess/>", {0xF0}, 0xF0, 0, 255},
                 {"IntReg", 1, "<Sign>Signed</Sign>", {0xF0}, -16, -128, 127},
                 {"IntReg", 2, be, {1, 2}, 0x102, 0, 65535},
                 {"IntReg", 3, "<Sign>Signed</Sign>", {1, 2, 0x83}, 0x830201 - 0x1000000, -0x800000, 0x7FFFFF},
                 {"IntReg", 8, "<Sign>Signed</Sign>", {1, 0, 0, 0, 0, 0, 0, 0x80}, lowest + 1, lowest, highest},
                 {"IntReg", 8, "<Sign>Unsigned</Sign>", {0xFE, 255, 255, 255, 255, 255, 255, 255}, -2, 0, highest},
                 {"MaskedIntReg", 4, "<LSB>8</LSB><MSB>19</MSB>", {0x78, 0x56, 0x34, 0x12}, 0x456, 0, 0xFFF},
                 {"MaskedIntReg", 4, "<LSB>19</LSB><MSB>8</MSB>", {0x78, 0x56, 0x34, 0x12}, 0x456, 0, 0xFFF},
                 {"MaskedIntReg", 4, "<LSB>15</LSB><MSB>8</MSB>" + be, {0x12, 0x34, 0x56, 0x78}, 0x34, 0, 255},
                 {"MaskedIntReg", 2, "<Bit>0</Bit>" + be, {0x80, 0x01}, 1, 0, 1},
                 {"MaskedIntReg", 2, "<Bit>9</Bit>", {0xFF, 0xFD}, 0, 0, 1},
                 {"MaskedIntReg", 2, "<LSB>4</LSB><MSB>7</MSB><Sign>Signed</Sign>", {0xA5, 0x5A}, -6, -8, 7},
                 {"MaskedIntReg",
                  8,
                  "<LSB>0</LSB><MSB>63</MSB><Sign>Signed</Sign>",
                  {1, 0, 0, 0, 0, 0, 0, 0x80},
                  lowest + 1,
                  lowest,
                  highest}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.kind + std::to_string(c.length) + c.elements);
        World world(Reg(c.kind, "R", 16, c.length, rw + c.elements));
        std::copy(c.bytes.begin(), c.bytes.end(), world.device.bytes.begin() + 16);
        IInteger& node = world.Integer("R");
        EXPECT_EQ(node.GetValue(), c.value);
        EXPECT_EQ(node.GetMin(), c.min);
        EXPECT_EQ(node.GetMax(), c.max);
        // Flipped through another value and back, the bytes around the field must stand as they stood.
        node.SetValue(c.max);
        EXPECT_EQ(node.GetValue(false, true), c.max);
        node.SetValue(c.value, false);
        EXPECT_EQ(world.device.Bytes(16, c.length), c.bytes);
        EXPECT_EQ(world.device.Bytes(16 + c.length, 1), std::vector<int>{0});
        if (c.max < highest)
            ExpectFailure<OutOfRangeException>([&] { node.SetValue(c.max + 1, false); }, "does not fit");
    }
}

TEST(MaskedIntReg, KeepsTheOtherBitsOfAWriteOnlyRegisterFromEarlierWrites)
{
    const std::string wo = "<AccessMode>WO</AccessMode>";
    World world(Reg("MaskedIntReg", "Low", 0, 1, wo + "<LSB>0</LSB><MSB>3</MSB>") +
                Reg("MaskedIntReg", "High", 0, 1, wo + "<LSB>4</LSB><MSB>7</MSB>"));
    world.device.Put(0, {0xEE});
    world.Integer("Low").SetValue(3);
    world.Integer("High").SetValue(5);
    EXPECT_EQ(world.device.Bytes(0, 1), std::vector<int>{0x53});
    EXPECT_EQ(world.device.reads, 0);
}

TEST(MaskedIntReg, MayHaveALengthThatChanges)
{
    World world(Node("Integer", "L", "<Value>1</Value>") +
                Node("MaskedIntReg", "M",
                     "<Address>0</Address><pLength>L</pLength><pPort>Device</pPort><LSB>4</LSB><MSB>11</MSB>"));
    world.device.Put(0, {0x21, 0x43});
    ExpectFailure<RuntimeException>([&] { world.Integer("M").GetValue(); }, "\"M\": bit 11 is none of its 8 bits");
    world.Integer("L").SetValue(2);
    EXPECT_EQ(world.Integer("M").GetValue(), 0x32);
}

TEST(FloatReg, HoldsFloatsOfBothWidthsAndOrders)
{
    World world(Reg("FloatReg", "F4", 0, 4, rw) + Reg("FloatReg", "F4B", 8, 4, rw + be) +
                Reg("FloatReg", "F8", 16, 8, rw) + Reg("FloatReg", "F8B", 24, 8, rw + be));
    const std::vector<std::pair<const char*, std::vector<int>>> cases = {{"F4", {0, 0, 0x20, 0xC0}},
                                                                         {"F4B", {0xC0, 0x20, 0, 0}},
                                                                         {"F8", {0, 0, 0, 0, 0, 0, 4, 0xC0}},
                                                                         {"F8B", {0xC0, 4, 0, 0, 0, 0, 0, 0}}};
    for (const auto& [name, bytes] : cases) {
        auto& node = world.Get<IFloat>(name);
        node.SetValue(-2.5);
        EXPECT_EQ(world.device.Bytes(world.Get<IRegister>(name).GetAddress(), std::ssize(bytes)), bytes) << name;
        EXPECT_EQ(node.GetValue(), -2.5) << name;
    }
    ExpectFailure<OutOfRangeException>([&] { world.Get<IFloat>("F4").SetValue(1e39, false); }, "does not fit");
    EXPECT_EQ(world.Get<IFloat>("F4").GetMax(), std::numeric_limits<float>::max());
}

TEST(StringReg, EndsAtAZeroOrAtItsEnd)
{
    World world(Reg("StringReg", "S", 0, 4) + Node("String", "Text", "<pValue>S</pValue>") +
                Node("String", "Own", "<Value> a b </Value>"));
    auto& text = world.Get<IString>("Text");
    EXPECT_EQ(text.GetMaxLength(), 4);
    world.device.Put(0, {9, 9, 9, 9, 9});
    text.SetValue("ab");
    EXPECT_EQ(world.device.Bytes(0, 5), (std::vector<int>{'a', 'b', 0, 0, 9}));
    EXPECT_EQ(text.GetValue(), "ab");
    text.SetValue("abcd");
    EXPECT_EQ(world.device.Bytes(0, 5), (std::vector<int>{'a', 'b', 'c', 'd', 9}));
    EXPECT_EQ(text.GetValue(false, true), "abcd");
    ExpectFailure<OutOfRangeException>([&] { text.SetValue("abcde", false); }, "5 bytes; 4 are allowed");
    ExpectFailure<InvalidArgumentException>([&] { text.SetValue(gcstring("a\0b", 3)); }, "byte 1");
    EXPECT_EQ(world.Value("Own").ToString(), "a b");
    world.Value("Own").FromString("c");
    EXPECT_EQ(world.Value("Own").ToString(), "c");
}

// Four registers behind an Integer, as generated descriptions have them.
std::string limitedInteger()
{
    return Node("Integer", "Gain", "<pValue>GV</pValue><pMin>Gm</pMin><pMax>GM</pMax><pInc>Gi</pInc>") +
           Reg("IntReg", "GV", 0, 8, rw + "<Sign>Signed</Sign>") +
           Reg("IntReg", "Gm", 8, 8, rw + "<Sign>Signed</Sign>") + Reg("IntReg", "GM", 16) +
           Reg("IntReg", "Gi", 24);
}

TEST(Integer, WritesOnlyWhatItsLimitsAllow)
{
    World world(limitedInteger());
    world.Integer("Gm").SetValue(-10);
    world.Integer("GM").SetValue(20);
    const struct
    {
        int64_t inc, value;
        const char* refusal;
    } cases[] = {{5, -10, ""},
                 {5, 20, ""},
                 {5, -11, "is not within -10 to 20"},
                 {5, 21, "is not within -10 to 20"},
                 {5, 1, "in steps of 5"},
                 {0, 1, ""},
                 {1, 1, ""}};
    for (const auto& c : cases) {
        world.Integer("Gi").SetValue(c.inc);
        world.Integer("GV").SetValue(7);
        const auto write = [&] { world.Integer("Gain").SetValue(c.value); };
        if (*c.refusal) {
            ExpectFailure<OutOfRangeException>(write, c.refusal);
            EXPECT_EQ(world.Integer("GV").GetValue(), 7);
            world.Integer("Gain").SetValue(c.value, false);
            ExpectFailure<OutOfRangeException>([&] { world.Integer("Gain").GetValue(true); }, c.refusal);
        } else {
            write();
        }
        EXPECT_EQ(world.Integer("Gain").GetValue(), c.value);
    }
    // The distance from the smallest to the largest number exceeds a signed one.
    world.Integer("Gm").SetValue(lowest);
    world.Integer("GM").SetValue(highest);
    world.Integer("Gi").SetValue(2);
    ExpectFailure<OutOfRangeException>([&] { world.Integer("Gain").SetValue(highest); }, "in steps of 2");
    world.Integer("Gain").SetValue(highest - 1);
}

TEST(Integer, TakesLimitsUnitAndRepresentationFromItsSource)
{
    World world(Node("Integer", "A", "<pValue>B</pValue><Max>50</Max>") +
                Node("Integer", "B",
                     "<Value> 0x10 </Value><Min>-4</Min><Max>100</Max><Inc>4</Inc><Unit>us</Unit>"
                     "<Representation>HexNumber</Representation>") +
                Node("Integer", "Set", "<Value>1</Value><ValidValueSet>1; 2;40;</ValidValueSet>"));
    IInteger& a = world.Integer("A");
    EXPECT_EQ(a.GetMin(), -4);
    EXPECT_EQ(a.GetMax(), 50);
    EXPECT_EQ(a.GetInc(), 4);
    EXPECT_EQ(a.GetUnit(), "us");
    EXPECT_EQ(a.ToString(), "0x10");
    a.SetValue(-4);
    EXPECT_EQ(world.Integer("B").GetValue(), -4);
    world.Integer("Set").SetValue(40);
    ExpectFailure<OutOfRangeException>([&] { world.Integer("Set").SetValue(3); }, "valid values");
}

TEST(References, TakeNumbersOfAnyKind)
{
    World world(Node("Float", "F", "<Value>2.5</Value><Min>-1e300</Min><Max>1e300</Max><Inc>0.5</Inc>") +
                Node("Integer", "OfF", "<pValue>F</pValue>") +
                Node("Integer", "I", "<Value>3</Value><Max>9</Max>") + Node("Float", "OfI", "<pValue>I</pValue>") +
                Node("Boolean", "B", "<Value>true</Value>") + Node("Integer", "OfB", "<pValue>B</pValue>") +
                Node("Enumeration", "E",
                     R"(<EnumEntry Name="One"><Value>1</Value><NumericValue>0.25</NumericValue></EnumEntry>
                        <EnumEntry Name="Two"><Value>2</Value><NumericValue>0.5</NumericValue></EnumEntry>
                        <Value>1</Value>)") +
                Node("Float", "OfE", "<pValue>E</pValue>") + Node("Integer", "IntOfE", "<pValue>E</pValue>"));
    EXPECT_EQ(world.Integer("OfF").GetValue(), 3);  // rounded to the nearest
    EXPECT_EQ(world.Integer("OfF").GetMin(), lowest);
    EXPECT_EQ(world.Integer("OfF").GetMax(), highest);
    world.Integer("OfF").SetValue(-7);
    EXPECT_EQ(world.Get<IFloat>("F").GetValue(), -7);
    auto& ofI = world.Get<IFloat>("OfI");
    EXPECT_EQ(ofI.GetMax(), 9);
    ofI.SetValue(4.6);
    EXPECT_EQ(world.Integer("I").GetValue(), 5);
    ExpectFailure<OutOfRangeException>([&] { ofI.SetValue(1e30, false); }, "no 64-bit integer");
    ExpectFailure<OutOfRangeException>([&] { ofI.SetValue(std::nan("")); }, "NaN is not within");
    world.Integer("OfB").SetValue(0);
    EXPECT_FALSE(world.Get<IBoolean>("B").GetValue());
    ExpectFailure<OutOfRangeException>([&] { world.Integer("OfB").SetValue(2); }, "0 to 1");
    world.Get<IFloat>("OfE").SetValue(0.4);
    EXPECT_EQ(world.Value("E").ToString(), "Two");
    EXPECT_EQ(world.Get<IFloat>("OfE").GetValue(), 0.5);
    EXPECT_EQ(world.Integer("IntOfE").GetMax(), 2);
}

TEST(Float, HasAnIncrementOnlyIfDescribed)
{
    World world(Node("Float", "With",
                     "<Value>0</Value><Inc>0.5</Inc><DisplayNotation>Fixed</DisplayNotation>"
                     "<DisplayPrecision>3</DisplayPrecision>") +
                Node("Float", "Without", "<Value>INF</Value>"));
    auto& with = world.Get<IFloat>("With");
    auto& without = world.Get<IFloat>("Without");
    EXPECT_TRUE(with.HasInc());
    EXPECT_EQ(with.GetInc(), 0.5);
    with.SetValue(0.3);  // an increment is no limit
    EXPECT_EQ(with.GetDisplayNotation(), fnFixed);
    EXPECT_EQ(with.GetDisplayPrecision(), 3);
    EXPECT_FALSE(without.HasInc());
    EXPECT_EQ(without.GetDisplayPrecision(), 6);
    ExpectFailure<GenICam::LogicalErrorException>([&] { without.GetInc(); }, "Without");
    ExpectFailure<OutOfRangeException>([&] { without.GetValue(true); }, "INF is not within");
}

TEST(Boolean, ComparesWithItsOnValue)
{
    World world(Reg("IntReg", "R", 0) + Node("Boolean", "Plain", "<pValue>R</pValue>") +
                Node("Boolean", "Odd", "<pValue>R</pValue><OnValue>5</OnValue><OffValue>7</OffValue>"));
    auto& odd = world.Get<IBoolean>("Odd");
    odd.SetValue(true);
    EXPECT_EQ(world.Integer("R").GetValue(), 5);
    EXPECT_TRUE(odd.GetValue());
    EXPECT_FALSE(world.Get<IBoolean>("Plain").GetValue());
    odd.SetValue(false);
    EXPECT_EQ(world.Integer("R").GetValue(), 7);
}

TEST(Command, IsDoneWhenTheDeviceSaysSo)
{
    World world(Reg("IntReg", "R", 0) +
                Node("Command", "Run", "<pValue>R</pValue><CommandValue>3</CommandValue>") +
                Reg("IntReg", "W", 8, 8, "<AccessMode>WO</AccessMode>") +
                Node("Command", "Blind", "<pValue>W</pValue><CommandValue>1</CommandValue>") +
                Node("Command", "Local", "<Value>0</Value><CommandValue>1</CommandValue>"));
    auto& run = world.Get<ICommand>("Run");
    EXPECT_TRUE(run.IsDone());
    run.Execute();
    EXPECT_EQ(world.device.Bytes(0, 1), std::vector<int>{3});
    EXPECT_FALSE(run.IsDone());
    int calls = 0;
    world.map->GetNode("Run")->RegisterCallback([&](INode*) { ++calls; });
    world.device.Put(0, {0});  // the register is cached with 3
    EXPECT_TRUE(run.IsDone());
    EXPECT_TRUE(run.IsDone());
    EXPECT_EQ(calls, 1);
    run.FromString("3");
    EXPECT_EQ(run.ToString(), "3");
    ExpectFailure<InvalidArgumentException>([&] { run.FromString("4"); }, "\"4\" is not the command's number");
    for (const char* name : {"Blind", "Local"}) {
        world.Get<ICommand>(name).Execute();
        EXPECT_TRUE(world.Get<ICommand>(name).IsDone()) << name;
    }
    EXPECT_EQ(world.device.Bytes(8, 1), std::vector<int>{1});
}

class EnumerationNode : public testing::Test
{
protected:
    World world{Node("Enumeration", "Mode", R"(
        <EnumEntry Name="Off" > <Value>0</Value> </EnumEntry>
        <EnumEntry Name="On"><DisplayName>Switched on</DisplayName><Value>-1</Value></EnumEntry>
        <EnumEntry Name="Once"><pIsAvailable>OnceAvailable</pIsAvailable><Value>2</Value>
            <IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
        <EnumEntry Name="Never"><pIsImplemented>Zero</pIsImplemented><Value>3</Value></EnumEntry>
        <pValue>R</pValue><PollingTime>100</PollingTime>)") +
                Reg("IntReg", "R", 0) + Reg("IntReg", "OnceAvailable", 8) +
                Node("Integer", "Zero", "<Value>0</Value>")};
    IEnumeration& mode = world.Get<IEnumeration>("Mode");

    std::vector<std::string> Symbolics()
    {
        StringList_t names;
        mode.GetSymbolics(names);
        std::vector<std::string> texts;
        for (const gcstring& name : names)
            texts.push_back(name.str());
        return texts;
    }
};

TEST_F(EnumerationNode, OffersTheEntriesThatCanBeChosenNow)
{
    EXPECT_EQ(Symbolics(), (std::vector<std::string>{"Off", "On"}));
    world.Integer("OnceAvailable").SetValue(1);
    EXPECT_EQ(Symbolics(), (std::vector<std::string>{"Off", "On", "Once"}));
    NodeList_t entries;
    mode.GetEntries(entries);
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[3]->GetAccessMode(), NI);
    EXPECT_EQ(entries[1]->GetName(), "EnumEntry_Mode_On");
    EXPECT_EQ(entries[1]->GetDisplayName(), "Switched on");
    EXPECT_EQ(entries[0]->GetDisplayName(), "Off");
    EXPECT_EQ(dynamic_cast<IEnumEntry*>(entries[1])->GetValue(), -1);
    EXPECT_EQ(world.map->GetNode("EnumEntry_Mode_Once"), entries[2]);
}

TEST_F(EnumerationNode, IsSetByNameAndByNumber)
{
    mode.FromString("On");
    EXPECT_EQ(world.device.Bytes(0, 8), std::vector<int>(8, 0xFF));
    EXPECT_EQ(mode.GetIntValue(), -1);
    EXPECT_EQ(mode.ToString(), "On");
    mode.SetIntValue(0);
    EXPECT_EQ(mode.GetCurrentEntry(), mode.GetEntryByName("Off"));
    EXPECT_EQ(mode.GetEntry(7), nullptr);
    ExpectFailure<InvalidArgumentException>([&] { mode.FromString("off"); }, "\"off\" is not one of its entries");
    ExpectFailure<OutOfRangeException>([&] { mode.SetIntValue(9); }, "no entry has the value 9");
    ExpectFailure<AccessException>([&] { mode.FromString("Once"); },
                                   "entry \"Once\" cannot be chosen now (access mode NA)");
    ExpectFailure<AccessException>([&] { mode.SetIntValue(3); }, "(access mode NI)");
    ExpectFailure<AccessException>([&] { world.Value("EnumEntry_Mode_On").FromString("Off"); },
                                   "EnumEntry_Mode_On");
    mode.SetIntValue(9, false);
    ExpectFailure<RuntimeException>([&] { mode.ToString(); }, "9 belongs to no entry");
    EXPECT_EQ(mode.GetIntValue(), 9);
    ExpectFailure<RuntimeException>([&] { mode.GetIntValue(true); }, "9 belongs to no entry");
}

TEST_F(EnumerationNode, LooksPastTheCacheWhileItClearsItself)
{
    int calls = 0;
    world.map->GetNode("Mode")->RegisterCallback([&](INode*) { ++calls; });
    mode.FromString("Once", false);
    world.map->Poll(100);
    EXPECT_EQ(calls, 2) << "the write and the poll";
    world.device.Put(0, {0});
    EXPECT_EQ(mode.ToString(), "Off");  // R is cached with 2
    world.map->Poll(100);
    EXPECT_EQ(calls, 2) << "no more polls";
    world.device.Put(0, {2});
    EXPECT_EQ(mode.ToString(), "Off");
}

TEST(Register, TransfersItsBytes)
{
    World world(Reg("Register", "R", 4, 3) +
                Node("Register", "Long", "<Address>0</Address><pLength>L</pLength><pPort>Device</pPort>") +
                Node("Integer", "L", "<Value>2</Value>"));
    auto& reg = world.Get<IRegister>("R");
    const uint8_t bytes[] = {1, 0xAB, 3};
    reg.Set(bytes, 3);
    EXPECT_EQ(world.device.Bytes(3, 5), (std::vector<int>{0, 1, 0xAB, 3, 0}));
    EXPECT_EQ(reg.ToString(), "0x01ab03");
    reg.FromString("0xFF00fe");
    uint8_t read[3];
    reg.Get(read, 3);
    EXPECT_EQ(std::vector<int>(read, read + 3), (std::vector<int>{255, 0, 254}));
    ExpectFailure<InvalidArgumentException>([&] { reg.Get(read, 2); }, "2 bytes were given for a register of 3");
    for (const char* text : {"0x0102", "010203", "0x01020g", "0x010203 04"})
        ExpectFailure<InvalidArgumentException>([&] { reg.FromString(text); }, "each of 3 bytes");
    EXPECT_EQ(world.Get<IRegister>("Long").GetLength(), 2);
    for (const int64_t length : {int64_t{-1}, int64_t{17} << 20, highest}) {
        world.Integer("L").SetValue(length);
        ExpectFailure<RuntimeException>([&] { world.Value("Long").ToString(); }, "its length is");
    }
}

TEST(Register, AddsUpItsAddress)
{
    World world(Node("Integer", "Base", "<Value>0x100</Value>") + Node("Integer", "Index", "<Value>3</Value>") +
                Node("Integer", "Step", "<Value>16</Value>") +
                Node("IntReg", "R", R"(<Address>1</Address><pAddress>Base</pAddress><Address>0x10</Address>
                     <pIndex>Index</pIndex><pIndex Offset="0x20">Index</pIndex><pIndex pOffset="Step">Index</pIndex>
                     <Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>)"));
    EXPECT_EQ(world.Get<IRegister>("R").GetAddress(), 0x111 + 3 * 4 + 3 * 0x20 + 3 * 16);
    world.Integer("Index").SetValue(0);
    EXPECT_EQ(world.Get<IRegister>("R").GetAddress(), 0x111);
    world.Integer("Base").SetValue(highest);
    ExpectFailure<RuntimeException>([&] { world.Integer("R").GetValue(); }, "\"R\": its address exceeds 64 bits");
    world.Integer("Index").SetValue(highest / 2);
    world.Integer("Base").SetValue(0);
    ExpectFailure<RuntimeException>([&] { world.Integer("R").SetValue(1); }, "its address exceeds 64 bits");
}

TEST(Texts, ReadBackAsTheSameValue)
{
    const std::string any = "<Value>0</Value>";
    const auto shownAs = [&](const char* word) { return any + "<Representation>" + word + "</Representation>"; };
    World world(Node("Integer", "Dec", shownAs("Linear")) + Node("Integer", "Hex", shownAs("HexNumber")) +
                Node("Integer", "Ip", shownAs("IPV4Address")) + Node("Integer", "Mac", shownAs("MACAddress")) +
                Node("Integer", "Odd", shownAs("")) + Node("Float", "F", any) + Node("Boolean", "B", any));
    const struct
    {
        const char* node;
        const char* given;
        const char* shown;  // null: refused
    } cases[] = {{"Dec", " -17 ", "-17"},
                 {"Dec", "0x1F", "31"},
                 {"Dec", "0xFFFFFFFFFFFFFFFF", "-1"},
                 {"Dec", "", nullptr},
                 {"Dec", "+1", nullptr},
                 {"Dec", "1.5", nullptr},
                 {"Dec", "9223372036854775808", nullptr},
                 {"Dec", "0x", nullptr},
                 {"Dec", "0x10000000000000000", nullptr},
                 {"Dec", "12 3", nullptr},
                 {"Dec", "010", "10"},
                 {"Odd", "5", "5"},
                 {"Hex", "255", "0xff"},
                 {"Hex", "-1", "0xffffffffffffffff"},
                 {"Ip", "192.168.0.1", "192.168.0.1"},
                 {"Ip", "16909060", "1.2.3.4"},
                 {"Ip", "1.2.3", nullptr},
                 {"Ip", "1.2.3.256", nullptr},
                 {"Ip", "1.2.3.4.5", nullptr},
                 {"Ip", "-1", "-1"},
                 {"Mac", "00:11:22:aa:Bb:ff", "00:11:22:aa:bb:ff"},
                 {"Mac", "00:11:22:aa:bb", nullptr},
                 {"F", "0.1", "0.1"},
                 {"F", "+1E3", "1000"},
                 {"F", "+-1", nullptr},
                 {"F", "-1e-7", "-1e-07"},
                 {"F", "0x10", "16"},
                 {"F", "1,5", nullptr},
                 {"F", "1 2", nullptr},
                 {"F", "3.0000000000000004", "3.0000000000000004"},
                 {"B", "True", "1"},
                 {"B", "0", "0"},
                 {"B", "yes", nullptr}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.node) + " = " + c.given);
        IValue& value = world.Value(c.node);
        if (!c.shown) {
            ExpectFailure<InvalidArgumentException>([&] { value.FromString(c.given); }, "is not");
            continue;
        }
        value.FromString(c.given);
        EXPECT_EQ(value.ToString(), c.shown);
        value.FromString(c.shown);
        EXPECT_EQ(value.ToString(), c.shown);
    }
}

TEST(Errors, AreReadAfterEachWrite)
{
    World world(Node("Integer", "A", "<pError>Status</pError><pValue>R</pValue>") + Reg("IntReg", "R", 0) +
                Node("Enumeration", "Status", R"(<EnumEntry Name="Fine"><Value>0</Value></EnumEntry>
                    <EnumEntry Name="Hot"><ToolTip>Let it cool.</ToolTip><Value>1</Value></EnumEntry><pValue>S</pValue>)") +
                Reg("IntReg", "S", 8));
    world.Integer("A").SetValue(4);
    world.device.Put(8, {1});
    ExpectFailure<RuntimeException>([&] { world.Integer("A").SetValue(5); },
                                    "Writing node \"A\" failed: Status reports Hot. Let it cool.");
    EXPECT_FALSE(world.Value("A").IsValueCacheValid()) << "who knows what the device made of it";
}

}  // namespace
