// Descriptions that must be refused, with node and cause, and hostile ones that must not crash or hang.
#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::RuntimeException;

namespace {

const std::string port = R"(<Port Name="Device"/>)";
const std::string value = "<Value>0</Value>";

void ExpectRefused(const std::string& description, const std::string& part)
{
    ExpectFailure<RuntimeException>([&] { MakeMap(description); }, part);
}

TEST(Refusals, OfWhatIsNoDescription)
{
    const std::pair<std::string, const char*> cases[] = {
        {"", "not well formed"},
        {"hello", "not well formed"},
        {"<RegisterDescription>", "line 1: it is not well formed"},
        {"<RegisterDescription>\n<Integer>\n</RegisterDescription>", "line 3: it is not well formed"},
        {"<Other/>", "the outermost element is <Other>"},
        {"<RegisterDescription/>\n<RegisterDescription/>", "line 2: it is not well formed"},
        {"<RegisterDescription/>\ntrailing", "line 2: it is not well formed"},
        {R"(<RegisterDescription ToolTip="a<b"/>)", "not well formed"},
        {R"(<RegisterDescription ToolTip="a" ToolTip="b"/>)", "duplicate attribute"},
        {"<RegisterDescription>a & b</RegisterDescription>", "not well formed"},
        {"<RegisterDescription>&foo;</RegisterDescription>", "undefined entity"},
        {"<RegisterDescription>\xFF\xFE</RegisterDescription>", "not well formed"},
        {"<RegisterDescription>\x01</RegisterDescription>", "not well formed"},
        {R"(<RegisterDescription SchemaMajorVersion="2"/>)", "schema version 2."},
        {R"(<RegisterDescription SchemaMajorVersion="1" SchemaMinorVersion="2"/>)", "schema version 1.2"},
        {std::string(17 << 20, ' '), "at most 16777216"}};
    for (const auto& [text, part] : cases)
        ExpectRefused(text, part);
    ExpectFailure<GenICam::InvalidArgumentException>([] { CNodeMapFactory(ContentType_Xml, nullptr, 0); }, "null");
    ExpectFailure<GenICam::InvalidArgumentException>([] { CNodeMapFactory(ContentType_ZippedXml, "x", 1); },
                                                     "content type 1");
}

TEST(Refusals, NameNodeAndCause)
{
    const std::pair<std::string, const char*> cases[] = {
        {Node("Integer", "A", ""), "line 3, Integer \"A\": it has neither <Value> nor <pValue>"},
        {Node("Integer", "", value), "Integer \"\": it has no name"},
        {Node("Integer", "A", value) + Node("Float", "A", value),
         "Float \"A\": line 3 declares a node of that name"},
        {Node("Integer", "A", "\n<pValue>B</pValue>"), "line 4, Integer \"A\", <pValue>: there is no node \"B\""},
        {Node("Integer", "A", "<pValue></pValue>"), "<pValue>: there is no node \"\""},
        {Node("Integer", "A", "<pValue>S</pValue>") + Node("String", "S", value),
         "\"S\" is of the kind String, not a node with a number"},
        {Node("String", "S", "<pValue>A</pValue>") + Node("Integer", "A", value),
         "\"A\" is of the kind Integer, not a node with a text"},
        {Reg("IntReg", "R", 0) + Node("Integer", "Device", value),
         "\"Device\" is of the kind Integer, not a Port"},
        {Node("Integer", "A", value + "<pError>B</pError>") + Node("Integer", "B", value), "not an Enumeration"},
        {Node("Category", "C", "<pFeature>Device</pFeature>") + port,
         "\"Device\" is of the kind Port, not a feature"},
        {Node("Integer", "A", value + "<pSelected>X</pSelected>"), "<pSelected>: there is no node \"X\""},
        {Node("Integer", "A", value + "<pInvalidator>X</pInvalidator>"), "<pInvalidator>: there is no node \"X\""},
        {Node("Integer", "A", "<Value>1x</Value>"), "<Value>: \"1x\" is no decimal or 0x number"},
        {Node("Integer", "A", "<Value>99999999999999999999</Value>"), "number of 64 bits"},
        {Node("Float", "A", "<Value>one</Value>"), "\"one\" is no number"},
        {Node("Boolean", "A", "<Value>maybe</Value>"), "\"maybe\" is not one of its words"},
        {Node("Boolean", "A", value + "<OnValue>0</OnValue>"), "<OnValue> and <OffValue> are the same"},
        {Node("Command", "A", value), "neither <CommandValue> nor <pCommandValue>"},
        {Node("Enumeration", "E", R"(<EnumEntry Name="X"/>)" + value),
         "EnumEntry \"EnumEntry_E_X\": it has no <Value>"},
        {Node("Enumeration", "E", "<EnumEntry><Value>0</Value></EnumEntry>" + value),
         "EnumEntry \"\": it has no name"},
        {Node("Enumeration", "E",
              R"(<EnumEntry Name="X"><Value>0</Value></EnumEntry><EnumEntry Name="X"/>)" + value),
         "\"EnumEntry_E_X\": line 3 declares a node of that name"},
        {Node("IntReg", "R", "<Length>8</Length><pPort>Device</pPort>") + port, "IntReg \"R\": it has no address"},
        {Node("IntReg", "R", "<Address>0</Address><Length>8</Length>"), "it has no <pPort>"},
        {Node("IntReg", "R", "<Address>0</Address><pPort>Device</pPort>") + port,
         "neither <Length> nor <pLength>"},
        {Reg("IntReg", "R", 0, 9) + port, "its length is 9; allowed are 1 to 8 bytes"},
        {Reg("IntReg", "R", 0, -1) + port, "its length is -1"},
        {Reg("FloatReg", "R", 0, 6) + port, "must be 4 or 8"},
        {Reg("StringReg", "R", 0, 17 << 20) + port, "allowed are 0 to 16777216 bytes"},
        {Reg("IntReg", "R", 0, 4, "<AccessMode>XX</AccessMode>") + port,
         "<AccessMode>: \"XX\" is not one of its words"},
        {Reg("IntReg", "R", 0, 4, "<Sign>None</Sign>") + port, "<Sign>: \"None\""},
        {Reg("IntReg", "R", 0, 4, "<Address>0x7fffffffffffffff</Address><Address>1</Address>") + port,
         "exceeds 64 bits"},
        {Reg("MaskedIntReg", "R", 0, 4) + port, "neither <Bit> nor both <LSB> and <MSB>"},
        {Reg("MaskedIntReg", "R", 0, 4, "<LSB>3</LSB><MSB>32</MSB>") + port, "bit 32 is none of its 32 bits"},
        {Reg("IntReg", "R", 0, 4, "<IntSwissKnife><Formula>1</Formula></IntSwissKnife>") + port,
         "IntSwissKnife \"\": it has no name"},
        {Node("Group", "", Node("Widget", "W", "")), "Widget \"W\": there is no such kind of node"},
        {Node("Port", "P", "<ChunkID>1g</ChunkID>"),
         "Port \"P\", <ChunkID>: \"1g\" is no row of hexadecimal digits"},
        {Node("Port", "P", "<pChunkID>R</pChunkID>") + Node("Integer", "R", value), "not a node with a text"},
        {Node("Integer", "A", value + "<EventID>11223344556677889</EventID>"),
         "<EventID>: \"11223344556677889\""}};
    for (const auto& [nodes, part] : cases)
        ExpectRefused(Description(nodes), part);
}

TEST(Refusals, OfCycles)
{
    const auto chain = [](const char* link) {
        const std::string tag = link;
        return Node("Integer", "A", value + "<" + tag + ">B</" + tag + ">") +
               Node("Integer", "B", value + "<" + tag + ">C</" + tag + ">") +
               Node("Integer", "C", value + "<" + tag + ">A</" + tag + ">");
    };
    for (const char* link : {"pValue", "pIsAvailable", "pIsLocked", "pIsImplemented", "pBlockPolling"})
        ExpectRefused(Description(chain(link)), "\"A\": it depends on itself: A -> B -> C -> A");
    for (const char* link : {"pMin", "pMax", "pSelected", "pInvalidator", "pAlias"}) {
        World world(chain(link));  // no data flow: allowed, and a write must end
        world.Integer("A").SetValue(0);
    }
    ExpectRefused(Description(Node("Category", "Root", "<pFeature>Sub</pFeature>") +
                              Node("Category", "Sub", "<pFeature>Root</pFeature>")),
                  "\"Root\": it depends on itself: Root -> Sub -> Root");
    ExpectRefused(Description(Node("Integer", "A", "<pValue>A</pValue>")), "A -> A");
    // Two that share a range are each other's limit, which asks for values only.
    const auto limitedBy = [](const char* name, const char* other, const char* suffix) {
        const std::string knife = std::string(name) + "Max";
        return Node("Integer", name, "<Value>4</Value><Min>0</Min><pMax>" + knife + "</pMax>") +
               Node("IntSwissKnife", knife,
                    std::string("<pVariable Name=\"X") + suffix + "\">" + other + "</pVariable><Formula>10 - X" +
                        suffix + "</Formula>");
    };
    World mutual(limitedBy("Width", "Offset", "") + limitedBy("Offset", "Width", ""));
    mutual.Integer("Width").SetValue(6);
    EXPECT_EQ(mutual.Integer("Offset").GetMax(), 4);
    ExpectFailure<GenICam::OutOfRangeException>([&] { mutual.Integer("Offset").SetValue(5); }, "0 to 4");
    ExpectRefused(Description(limitedBy("Width", "Offset", ".Max") + limitedBy("Offset", "Width", ".Max")),
                  "it depends on itself: Width -> WidthMax -> Offset -> OffsetMax -> Width");
    ExpectRefused(Description(Node("Port", "Device", "<pIsAvailable>R</pIsAvailable>") + Reg("IntReg", "R", 0)),
                  "Device -> R -> Device");
}

/// Nodes N0, N1 ... of the kind, each with the content, in which @ is the next one's name; the last is 1.
std::string Chain(int count, const std::string& kind, const std::string& content)
{
    std::string nodes;
    for (int i = 0; i < count; ++i) {
        std::string own = content;
        while (own.find('@') != std::string::npos)
            own.replace(own.find('@'), 1, "N" + std::to_string(i + 1));
        nodes += Node(kind, "N" + std::to_string(i), own);
    }
    return nodes + Node("Integer", "N" + std::to_string(count), "<Value>1</Value>");
}

TEST(HostileDescriptions, MayNotBeTooDeepOrTooLong)
{
    const auto groups = [](int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "<Group>";
        text += Node("Integer", "A", value);
        for (int i = 0; i < count; ++i)
            text += "</Group>";
        return Description(text);
    };
    EXPECT_NE(MakeMap(groups(61))->GetNode("A"), nullptr);
    ExpectRefused(groups(62), "more than 64 levels deep");
    std::string endless = "<RegisterDescription>";
    for (int i = 0; i < 1000000; ++i)
        endless += "<Group>";
    ExpectRefused(endless, "not well formed");

    World longest(Chain(255, "Integer", "<pValue>@</pValue>"));
    longest.Integer("N0").SetValue(5);
    EXPECT_EQ(longest.Integer("N255").GetValue(), 5);
    ExpectRefused(Description(Chain(256, "Integer", "<pValue>@</pValue>")),
                  "\"N0\": it depends on a chain of more than 256 nodes");
    ExpectRefused(Description(Chain(100000, "Integer", "<pValue>@</pValue>")), "chain of more than 256 nodes");
}

TEST(HostileDescriptions, CannotMakeAnEvaluationExplode)
{
    // Each node asks the next one more than once.
    const char* const cause = "depends on too many others";
    const World modes(Chain(100, "Integer",
                            "<pIsImplemented>@</pIsImplemented><pIsAvailable>@</pIsAvailable><pValue>@</pValue>"));
    EXPECT_EQ(modes.Integer("N95").GetValue(), 1);
    ExpectFailure<RuntimeException>([&] { modes.Integer("N0").GetValue(); }, cause);
    EXPECT_EQ(modes.Integer("N95").GetValue(), 1);  // the count starts anew with each operation
    for (const char* kind : {"Integer", "Float"}) {
        const World copies(Chain(100, kind, "<pValue>@</pValue><pValueCopy>@</pValueCopy>"));
        copies.Value("N95").FromString("2");
        ExpectFailure<RuntimeException>([&] { copies.Value("N0").FromString("3", false); }, cause);
        ExpectFailure<RuntimeException>([&] { copies.map->GetNode("N0")->GetAccessMode(); }, cause);
        if (auto* number = dynamic_cast<IInteger*>(copies.map->GetNode("N0")))
            ExpectFailure<RuntimeException>([&] { number->GetMin(); }, cause);
    }
    const World limits(
        Chain(100, "Converter", "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>@</pValue>"));
    ExpectFailure<RuntimeException>([&] { limits.Get<IFloat>("N0").GetMin(); }, cause);
    const World caches(
        Chain(100, "SwissKnife",
              R"(<pVariable Name="A">@</pVariable><pVariable Name="B">@</pVariable><Formula>A + B</Formula>)"));
    ExpectFailure<RuntimeException>([&] { caches.Value("N0").IsValueCacheValid(); }, cause);
}

TEST(HostileDescriptions, MayBeCutAnywhere)
{
    const std::string whole =
        Description(Node("Enumeration", "E", R"(<EnumEntry Name="X"><Value>0</Value></EnumEntry>)" + value) +
                    Reg("IntReg", "R", 0) + Node("Integer", "A", "<pValue>R</pValue>") + port);
    MakeMap(whole);
    const std::size_t end = whole.rfind('>');
    for (std::size_t length = 0; length < end; ++length)
        EXPECT_THROW(MakeMap(whole.substr(0, length)), RuntimeException) << length;
}

TEST(Tolerance, OfWhatIsCommonInTheField)
{
    const NodeMapPtr map =
        MakeMap(R"(<!-- c --><g:RegisterDescription xmlns:g="http://www.genicam.org/GenApi/Version_1_0"
        StandardNameSpace="Odd"><g:Group Comment="x"><g:Integer Name=" A " NameSpace="Standard" MergePriority="+1">
        <Extension><Value>7</Value></Extension><Vendor>x</Vendor><Value>
          1<!-- one, then -->2<![CDATA[3]]>
        </Value><Visibility>Somebody</Visibility></g:Integer></g:Group><Extension><Widget/></Extension>
        <Enumeration Name="Empty"><Value>0</Value></Enumeration><Node Name="N"/></g:RegisterDescription>)" +
                std::string(3, '\0'));
    EXPECT_EQ(map->GetNumNodes(), 3U);
    EXPECT_EQ(map->GetNode("A")->GetName(true), "Std::A");
    EXPECT_EQ(map->GetNode("A")->GetVisibility(), Beginner);
    EXPECT_EQ(dynamic_cast<IInteger&>(*map->GetNode("A")).GetValue(), 123);
    EXPECT_EQ(map->GetNode("N")->GetPrincipalInterfaceType(), intfIBase);
}

}  // namespace
