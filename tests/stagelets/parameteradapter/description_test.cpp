// The register description. All expected texts are written by hand.
#include <gtest/gtest.h>

#include <functional>
#include <locale>
#include <regex>
#include <sstream>

#include "fakenode.h"
#include "parameteradapter/anythingtonodemapadapter.h"
#include "parameteradapter/nodemapports.h"

namespace AnythingToNodeMapAdapter::Test {
namespace {

using namespace Detail;

/// What a row of the tests below expects of the 11 lines of a register.
struct Reg
{
    const char* kind = "IntReg";
    const char* name;
    const char* address;
    const char* mode = "RO";
    const char* port = "Device";
    const char* tail = "        <Sign>Unsigned</Sign>\n        <Endianess>LittleEndian</Endianess>\n";
    const char* length = "8";
    const char* visibility = "Expert";

    explicit operator std::string() const
    {
        std::string text =
            "    <KIND Name=\"NAME\">\n"
            "        <Visibility>VIS</Visibility>\n"
            "        <Address>ADDRESS</Address>\n"
            "        <Length>LENGTH</Length>\n"
            "        <AccessMode>MODE</AccessMode>\n"
            "        <pPort>PORT</pPort>\n"
            "        <Cachable>NoCache</Cachable>\n"
            "TAIL"
            "    </KIND>\n";
        const std::pair<const char*, const char*> fields[] = {
            {"KIND", kind},     {"NAME", name}, {"VIS\\b", visibility}, {"ADDRESS", address},
            {"LENGTH", length}, {"MODE", mode}, {"PORT", port},         {"TAIL", tail}};
        for (const auto& [field, value] : fields)
            text = std::regex_replace(text, std::regex(field), value);
        return text;
    }

    friend std::string operator+(const std::string& text, const Reg& next) { return text + std::string(next); }
};

constexpr const char* noSign = "        <Endianess>LittleEndian</Endianess>\n";
constexpr const char* isSigned = "        <Sign>Signed</Sign>\n        <Endianess>LittleEndian</Endianess>\n";
constexpr const char* invalidated =
    "        <pInvalidator>I</pInvalidator>\n        <Sign>Unsigned</Sign>\n"
    "        <Endianess>LittleEndian</Endianess>\n";
constexpr PortFlags readOnly{.writable = false};
constexpr PortFlags companions{.availableRegister = true, .lockedRegister = true};

const std::string gainText =
    std::string(R"(    <Integer Name="Gain">
        <ToolTip>Tip</ToolTip>
        <Description>Text</Description>
        <DisplayName>Gain</DisplayName>
        <Visibility>Beginner</Visibility>
        <Streamable>Yes</Streamable>
        <pValue>GainValue</pValue>
        <pMin>GainMin</pMin>
        <pMax>GainMax</pMax>
        <pInc>GainInc</pInc>
        <Unit>dB</Unit>
        <Representation>Linear</Representation>
    </Integer>
    <IntReg Name="GainValue">
        <Visibility>Beginner</Visibility>
        <Address>0x100</Address>
        <Length>8</Length>
        <AccessMode>RW</AccessMode>
        <pPort>Device</pPort>
        <Cachable>NoCache</Cachable>
        <Sign>Signed</Sign>
        <Endianess>LittleEndian</Endianess>
    </IntReg>
)") +
    Reg{.name = "GainMax", .address = "0x108", .tail = isSigned, .visibility = "Beginner"} +
    Reg{.name = "GainMin", .address = "0x110", .tail = isSigned, .visibility = "Beginner"} +
    Reg{.name = "GainInc", .address = "0x118", .tail = isSigned, .visibility = "Beginner"};

struct KindRow
{
    const char* name;
    std::function<std::shared_ptr<CBasicNodeMapPort>(FakeNode&)> make;
    std::string expected;
    std::int64_t block;
    bool ownPort = false;
    const char* prefix = "";
    std::vector<std::pair<const char*, const char*>> links = {};
};

/// A selector, all its links, and a port of its own.
const KindRow integerRow{
    "integer with everything",
    [](FakeNode& node) {
        return std::make_shared<CIntegerNodeMapPort>(
            node.makeCount({.writable = false, .availableRegister = true, .lockedRegister = true}), 3);
    },
    std::string(R"(    <Integer Name="Count" MergePriority="+1">
        <Visibility>Expert</Visibility>
        <pIsAvailable>P_CountIsAvailable</pIsAvailable>
        <pIsLocked>P_CountIsLocked</pIsLocked>
        <Streamable>Yes</Streamable>
        <pValue>P_CountValue</pValue>
        <pMin>P_CountMin</pMin>
        <pMax>P_CountMax</pMax>
        <pInc>P_CountInc</pInc>
        <Representation></Representation>
        <pSelected>Z</pSelected>
        <pSelected>A</pSelected>
    </Integer>
)") +
        Reg{.name = "P_CountValue",
            .address = "0x100",
            .mode = "RW",
            .port = "P_CountPort",
            .tail = "        <pInvalidator>I1</pInvalidator>\n"
                    "        <pInvalidator>I2</pInvalidator>\n"
                    "        <Sign>Unsigned</Sign>\n"
                    "        <Endianess>LittleEndian</Endianess>\n"} +
        Reg{.name = "P_CountMax", .address = "0x108", .port = "P_CountPort"} +
        Reg{.name = "P_CountMin", .address = "0x110", .port = "P_CountPort"} +
        Reg{.name = "P_CountInc", .address = "0x118", .port = "P_CountPort"} +
        Reg{.name = "P_CountIsAvailable", .address = "0x120", .port = "P_CountPort"} +
        Reg{.name = "P_CountIsLocked", .address = "0x128", .port = "P_CountPort"} +
        R"(    <Port Name = "P_CountPort">
        <ToolTip>Port node giving access to Count parameter.</ToolTip>
    </Port>
)",
    48,
    true,
    "P_",
    {{"Selected", "Z"},
     {"Selected", "A"},
     {"Invalidator", "I1"},
     {"Invalidator", "I2"},
     {"IsAvailable", "NotWritten"},
     {"IsLocked", "NotWritten"}}};

const KindRow floatRow{"float, read-only, with one companion and one linked condition",
                       [](FakeNode& node) {
                           return std::make_shared<CFloatNodeMapPort>(
                               node.makeFactor({.writable = false, .availableRegister = true}), -2);
                       },
                       std::string(R"(    <Float Name="Factor" MergePriority="-1">
        <Visibility>Expert</Visibility>
        <pIsAvailable>FactorIsAvailable</pIsAvailable>
        <pIsLocked>L1</pIsLocked>
        <pIsLocked>L2</pIsLocked>
        <Streamable>Yes</Streamable>
        <pValue>FactorValue</pValue>
        <pMin>FactorMin</pMin>
        <pMax>FactorMax</pMax>
        <Unit>s</Unit>
        <Representation>PureNumber</Representation>
    </Float>
)") +
                           Reg{.kind = "FloatReg",
                               .name = "FactorValue",
                               .address = "0x100",
                               .tail = "        <pInvalidator>I</pInvalidator>\n"
                                       "        <Endianess>LittleEndian</Endianess>\n"} +
                           Reg{.kind = "FloatReg", .name = "FactorMax", .address = "0x108", .tail = noSign} +
                           Reg{.kind = "FloatReg", .name = "FactorMin", .address = "0x110", .tail = noSign} +
                           Reg{.name = "FactorIsAvailable", .address = "0x118"},
                       48,
                       false,
                       "",
                       {{"IsAvailable", "NotWritten"},
                        {"IsLocked", "L1"},
                        {"IsLocked", "L2"},
                        {"Invalidator", "I"},
                        {"Selected", "NotWritten"}}};

const KindRow booleanRow{
    "boolean without invalidators",
    [](FakeNode& node) { return std::make_shared<CBooleanNodeMapPort>(node.makeFlag(companions), 0); },
    std::string(R"(    <Boolean Name="Flag">
        <Visibility>Expert</Visibility>
        <pIsAvailable>P_FlagIsAvailable</pIsAvailable>
        <pIsLocked>P_FlagIsLocked</pIsLocked>
        <Streamable>Yes</Streamable>
        <pValue>P_FlagValue</pValue>
    </Boolean>
)") + Reg{.name = "P_FlagValue", .address = "0x100", .mode = "RW"} +
        Reg{.name = "P_FlagIsAvailable", .address = "0x108"} + Reg{.name = "P_FlagIsLocked", .address = "0x110"},
    24,
    false,
    "P_",
    {{"Invalidator", "NotWritten"}}};

const KindRow commandRow{
    "command, never read-only",
    [](FakeNode& node) { return std::make_shared<CCommandNodeMapPort>(node.makeGo(false, readOnly), 0); },
    std::string(R"(    <Command Name="Go">
        <Visibility>Expert</Visibility>
        <pValue>GoValue</pValue>
        <CommandValue>1</CommandValue>
    </Command>
)") + Reg{.name = "GoValue", .address = "0x100", .mode = "RW", .tail = invalidated},
    24,
    false,
    "",
    {{"Invalidator", "I"}}};

const KindRow writeOnlyCommandRow{
    "write-only command with companions",
    [](FakeNode& node) { return std::make_shared<CCommandNodeMapPort>(node.makeGo(true, companions), 0); },
    std::string(R"(    <Command Name="Go">
        <Visibility>Expert</Visibility>
        <pIsAvailable>GoIsAvailable</pIsAvailable>
        <pIsLocked>GoIsLocked</pIsLocked>
        <pValue>GoValue</pValue>
        <CommandValue>1</CommandValue>
    </Command>
)") + Reg{.name = "GoValue", .address = "0x100", .mode = "WO"} +
        Reg{.name = "GoIsAvailable", .address = "0x108"} + Reg{.name = "GoIsLocked", .address = "0x110"},
    24};

const KindRow stringRow{
    "string with companions behind the text",
    [](FakeNode& node) { return std::make_shared<CStringNodeMapPort>(node.makeText(companions, 10000), 0); },
    std::string(R"(    <String Name="Text">
        <Visibility>Expert</Visibility>
        <pIsAvailable>TextIsAvailable</pIsAvailable>
        <pIsLocked>TextIsLocked</pIsLocked>
        <Streamable>Yes</Streamable>
        <pValue>TextValue</pValue>
    </String>
)") +
        Reg{.kind = "StringReg",
            .name = "TextValue",
            .address = "0x100",
            .mode = "RW",
            .tail = "        <pInvalidator>I</pInvalidator>\n",
            .length = "10000"} +
        Reg{.name = "TextIsAvailable", .address = "0x2810"} + Reg{.name = "TextIsLocked", .address = "0x2818"},
    10016,
    false,
    "",
    {{"Invalidator", "I"}}};

const KindRow categoryRow{"category",
                          [](FakeNode&) {
                              return std::make_shared<CCategoryNodeMapPort>(
                                  std::make_shared<CategoryParameterPort>("Root", "R", "T", "D", "Guru"), 1);
                          },
                          R"(    <Category Name="Root">
        <ToolTip>T</ToolTip>
        <Description>D</Description>
        <DisplayName>R</DisplayName>
        <pFeature>B</pFeature>
        <pFeature>A</pFeature>
    </Category>
)",
                          0,
                          true,
                          "P_",
                          {{"Feature", "B"}, {"Feature", "A"}}};

const KindRow emptyCategoryRow{"category without members",
                               [](FakeNode&) {
                                   return std::make_shared<CCategoryNodeMapPort>(
                                       std::make_shared<CategoryParameterPort>("Empty", "", "", "", "Expert"), 0);
                               },
                               "    <Category Name=\"Empty\">\n    </Category>\n", 0};

TEST(DescriptionText, OfEachKind)
{
    const KindRow gain{"the integer of the documentation",
                       [](FakeNode& node) { return std::make_shared<CIntegerNodeMapPort>(node.makeGain(), 0); },
                       gainText, 48};
    for (const KindRow& row : {gain, integerRow, floatRow, booleanRow, commandRow, writeOnlyCommandRow, stringRow,
                               categoryRow, emptyCategoryRow})
    {
        SCOPED_TRACE(row.name);
        FakeNode node;
        const auto port = row.make(node);
        for (const auto& [key, target] : row.links)
            port->addLink(key, target);
        std::ostringstream stream;
        std::int64_t address = 0x100;
        const GenICam::gcstring portName = row.ownPort ? port->getPortName(row.prefix) : "Device";
        port->writeDescription(stream, row.ownPort, portName, row.prefix, address);
        EXPECT_EQ(stream.str(), row.expected);
        EXPECT_EQ(address, 0x100 + row.block);
        EXPECT_EQ(port->baseAddress(), 0);
        EXPECT_EQ(port->blockLength(), 0);
    }
}

TEST(DescriptionText, OfAnEnumerationAndItsEntries)
{
    FakeNode node;
    CEnumNodeMapPort mode(node.makeMode(companions), 0);
    mode.addLink("Selected", "S");
    const auto plain = std::make_shared<CEnumEntryNodeMapPort>(
        std::make_shared<EnumEntryParameterPort<int>>(-3, PortTexts{"A", "Name", "Tip", "Text"}), -1);
    plain->setEnumName("Mode");
    plain->addLink("IsAvailable", "T1");
    plain->addLink("IsAvailable", "T2");
    const auto conditional = std::make_shared<CEnumEntryNodeMapPort>(
        FakeNode::makeEntry("B", Mode::Negative, {.availableRegister = true}), 0);
    conditional->setEnumName("Mode");
    mode.addEntry(plain);
    mode.addEntry(conditional);

    std::ostringstream stream;
    std::int64_t address = 0x130;
    mode.writeDescription(stream, false, "Device", "P_", address);
    const std::string expected = std::string(
                                     "    <Enumeration Name=\"Mode\">\n"
                                     "        <Visibility>Expert</Visibility>\n"
                                     "        <pIsAvailable>P_ModeIsAvailable</pIsAvailable>\n"
                                     "        <pIsLocked>P_ModeIsLocked</pIsLocked>\n"
                                     "        <Streamable>Yes</Streamable>\n"
                                     "        <EnumEntry Name=\"A\" MergePriority=\"-1\" > \n"
                                     "            <ToolTip>Tip</ToolTip>\n"
                                     "            <Description>Text</Description>\n"
                                     "            <DisplayName>Name</DisplayName>\n"
                                     "            <pIsAvailable>T1</pIsAvailable>\n"
                                     "            <pIsAvailable>T2</pIsAvailable>\n"
                                     "            <Value>-3</Value>\n"
                                     "        </EnumEntry>\n"
                                     "        <EnumEntry Name=\"B\" > \n"
                                     "            <pIsAvailable>EnumEntry_Mode_P_BIsAvailable</pIsAvailable>\n"
                                     "            <Value>4294967295</Value>\n"
                                     "        </EnumEntry>\n"
                                     "        <pValue>P_ModeIntValue</pValue>\n"
                                     "        <pSelected>S</pSelected>\n"
                                     "    </Enumeration>\n") +
                                 Reg{.name = "P_ModeIntValue", .address = "0x130", .mode = "RW"} +
                                 Reg{.name = "P_ModeIsAvailable", .address = "0x138"} +
                                 Reg{.name = "P_ModeIsLocked", .address = "0x140"};
    EXPECT_EQ(stream.str(), expected);
    EXPECT_EQ(address, 0x130 + 24);

    std::ostringstream entries;
    plain->writeDescription(entries, true, "X", "P_", address);
    EXPECT_EQ(entries.str(), "");
    EXPECT_EQ(address, 0x148);
    conditional->writeDescription(entries, true, conditional->getPortName("P_"), "P_", address);
    EXPECT_EQ(entries.str(),
              std::string(Reg{
                  .name = "EnumEntry_Mode_P_BIsAvailable", .address = "0x148", .port = "EnumEntry_Mode_P_BPort"}) +
                  "    <Port Name = \"EnumEntry_Mode_P_BPort\">\n"
                  "        <ToolTip>Port node giving access to B parameter.</ToolTip>\n"
                  "    </Port>\n");
    EXPECT_EQ(address, 0x150);
}

/// Fills an adapter whose keys are, in order: EnumEntry_Mode_B, Factor, Gain, Mode, Root, Text.
void addParameters(CAnythingToNodeMapAdapterBase& adapter, FakeNode& node)
{
    adapter.addParameter(node.makeText(), 1);
    adapter.addParameter(node.makeGain());
    adapter.addParameter(node.makeMode());
    adapter.addEnumEntry("Mode", FakeNode::makeEntry("A", Mode::A), -1);
    adapter.addEnumEntry("Mode", FakeNode::makeEntry("B", Mode::B, {.availableRegister = true}));
    adapter.addParameter(node.makeFactor());
    adapter.addParameter(std::make_shared<CategoryParameterPort>("Root", "", "", "", "Expert"));
    adapter.addLink("Feature", "Root", "Gain");
}

std::vector<std::string> findAll(const std::string& text, const char* expression)
{
    const std::regex regex(expression);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
        found.push_back(match->str(1) + (match->size() > 2 ? " " + match->str(2) : ""));
    }
    return found;
}

constexpr const char* registerAddresses = "Reg Name=\"(\\w+)\">\n.*\n        <Address>(\\w+)<";

TEST(DescriptionText, OfAWholeDocumentWithASharedPort)
{
    FakeNode node;
    CAnythingToNodeMapAdapter adapter;
    addParameters(adapter, node);
    GenICam::gcstring text;
    adapter.getDescriptionText(text, "ParameterPort", "");

    const std::string start =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" "
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_1\" SchemaSubMinorVersion=\"0\" "
        "VendorName=\"Tessmark\" SchemaMinorVersion=\"1\" SubMinorVersion=\"1\" "
        "VersionGuid=\"E6D851E3-9DF1-4875-B796-DA2477F1CA61\" SchemaMajorVersion=\"1\" MajorVersion=\"0\" "
        "MinorVersion=\"0\" StandardNameSpace=\"None\" ModelName=\"Params\" "
        "ProductGuid=\"85FC0460-25EB-4EBB-92B1-1BB54FF98422\" ToolTip=\"Parameters\">\n"
        "\n"
        "    <IntReg Name=\"EnumEntry_Mode_BIsAvailable\">\n";
    const std::string end =
        "    </StringReg>\n"
        "    <Port Name = \"ParameterPort\">\n"
        "        <ToolTip>Port node giving access to parameters.</ToolTip>\n"
        "    </Port>\n"
        "</RegisterDescription>\n";
    EXPECT_EQ(text.str().substr(0, start.size()), start);
    EXPECT_EQ(text.str().substr(text.size() - end.size()), end);
    EXPECT_EQ(findAll(text.str(), registerAddresses),
              (std::vector<std::string>{"EnumEntry_Mode_BIsAvailable 0x0", "FactorValue 0x8", "FactorMax 0x10",
                                        "FactorMin 0x18", "GainValue 0x38", "GainMax 0x40", "GainMin 0x48",
                                        "GainInc 0x50", "ModeIntValue 0x68", "TextValue 0x80"}));
    EXPECT_EQ(findAll(text.str(), "<Port Name = \"(\\w+)\"").size(), 1U);
    EXPECT_EQ(findAll(text.str(), "(\\w+)\" MergePriority=\"(.1)\""),
              (std::vector<std::string>{"A -1", "Text +1"}));
}

TEST(DescriptionText, OfAWholeDocumentWithAPortForEachParameter)
{
    FakeNode node;
    CAnythingToNodeMapAdapter adapter;
    addParameters(adapter, node);
    GenICam::gcstring text;
    adapter.getDescriptionText(text, "", "P_");
    EXPECT_EQ(
        findAll(text.str(), registerAddresses),
        (std::vector<std::string>{"EnumEntry_Mode_P_BIsAvailable 0x0", "P_FactorValue 0x0", "P_FactorMax 0x8",
                                  "P_FactorMin 0x10", "P_GainValue 0x0", "P_GainMax 0x8", "P_GainMin 0x10",
                                  "P_GainInc 0x18", "P_ModeIntValue 0x0", "P_TextValue 0x0"}));
    EXPECT_EQ(findAll(text.str(), "<Port Name = \"(\\w+)\""),
              (std::vector<std::string>{"EnumEntry_Mode_P_BPort", "P_FactorPort", "P_GainPort", "P_ModePort",
                                        "P_TextPort"}));
}

TEST(DescriptionText, IsTheSameBeforeAndAfterABuildAndInEveryLocale)
{
    struct Grouping : std::numpunct<char>
    {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    FakeNode node;
    CAnythingToNodeMapAdapter adapter;
    addParameters(adapter, node);
    GenICam::gcstring before;
    adapter.getDescriptionText(before, "ParameterPort", "");
    adapter.buildNodeMap(nullptr, "", "Other_");
    const std::locale previous = std::locale::global(std::locale(std::locale(), new Grouping));
    GenICam::gcstring after;
    adapter.getDescriptionText(after, "ParameterPort", "");
    std::locale::global(previous);
    EXPECT_EQ(before, after);
}

}  // namespace
}  // namespace AnythingToNodeMapAdapter::Test
