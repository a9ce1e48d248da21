// Values that are copied to several nodes or chosen by an index, registers cut into entries, and kinds that stand
// in a map without being implemented.
#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::RuntimeException;

namespace {

TEST(Copies, ReceiveWhatIsWritten)
{
    World world(Node("Integer", "All", "<pValueCopy>B</pValueCopy><pValue>A</pValue><pValueCopy>C</pValueCopy>") +
                Node("Integer", "A", "<pValue>RegA</pValue><Min>0</Min><Max>100</Max>") +
                Node("Integer", "B", "<pValue>RegB</pValue><Min>10</Min><Max>200</Max>") +
                Node("Integer", "C", "<pValue>RegC</pValue><Min>-5</Min><Max>50</Max>") +
                Reg("IntReg", "RegA", 0, 4) + Reg("IntReg", "RegB", 4, 4) +
                Reg("IntReg", "RegC", 8, 4, "<AccessMode>WO</AccessMode>"));
    world.device.Put(0, {20, 0, 0, 0, 30});
    auto& all = world.Integer("All");
    EXPECT_EQ(all.GetValue(), 20);
    EXPECT_EQ(all.GetMin(), 10);
    EXPECT_EQ(all.GetMax(), 50);
    all.SetValue(40);
    EXPECT_EQ(world.device.Bytes(0, 9), (std::vector<int>{40, 0, 0, 0, 40, 0, 0, 0, 40}));
    EXPECT_EQ(all.GetValue(), 40);
    ExpectFailure<GenICam::OutOfRangeException>([&] { all.SetValue(60); }, "60 is not within 10 to 50");
}

TEST(Copies, MustAllTakeTheValue)
{
    const auto modeOf = [](const std::string& copy, const std::string& further = "") {
        return World(Node("Integer", "All", further + "<pValue>A</pValue><pValueCopy>B</pValueCopy>") +
                     Node("Integer", "A", "<Value>0</Value>") + Node("Integer", "B", "<Value>0</Value>" + copy))
            .map->GetNode("All")
            ->GetAccessMode();
    };
    EXPECT_EQ(modeOf(""), RW);
    EXPECT_EQ(modeOf("<ImposedAccessMode>RO</ImposedAccessMode>"), RO);
    EXPECT_EQ(modeOf("<ImposedAccessMode>WO</ImposedAccessMode>"), RW);
    EXPECT_EQ(modeOf("<Inc>2</Inc>"), RO);
    EXPECT_EQ(modeOf("<Inc>2</Inc>", "<Inc>2</Inc>"), RW);
}

const std::string indexed = R"(<pIndex>Sel</pIndex><ValueIndexed Index="1">11</ValueIndexed>
    <pValueIndexed Index="0x2">Two</pValueIndexed><pValueDefault>Rest</pValueDefault>)";

TEST(IndexedValues, AreChosenByTheIndex)
{
    for (const char* kind : {"Integer", "Float"}) {
        World world(Node("Integer", "Sel", "<Value>0</Value><pSelected>V</pSelected>") + Node(kind, "V", indexed) +
                    Node("Integer", "Two", "<Value>22</Value><Min>20</Min><Max>29</Max>") +
                    Node("Float", "Rest", "<Value>99</Value><ImposedAccessMode>RO</ImposedAccessMode>"));
        SCOPED_TRACE(kind);
        auto& value = world.Value("V");
        int calls = 0;
        world.map->GetNode("V")->RegisterCallback([&](INode*) { ++calls; });
        EXPECT_EQ(value.ToString(), "99");
        EXPECT_EQ(world.map->GetNode("V")->GetAccessMode(), RO);
        world.Integer("Sel").SetValue(1);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(value.ToString(), "11");
        value.FromString("12");
        EXPECT_EQ(value.ToString(), "12");
        world.Integer("Sel").SetValue(2);
        EXPECT_EQ(value.ToString(), "22");
        value.FromString("25");
        EXPECT_EQ(world.Integer("Two").GetValue(), 25);
        ExpectFailure<GenICam::OutOfRangeException>([&] { value.FromString("30"); }, "30 is not within 20 to 29");
        world.Integer("Sel").SetValue(1);
        EXPECT_EQ(value.ToString(), "12") << "the other place kept its value";
        world.map->GetNode("Sel")->InvalidateNode();
        EXPECT_EQ(value.ToString(), "12");
    }
}

TEST(IndexedValues, NeedAReadableIndexAndADefault)
{
    World world(Node("Integer", "Sel", "<Value>0</Value><ImposedAccessMode>WO</ImposedAccessMode>") +
                Node("Integer", "V", "<pIndex>Sel</pIndex><ValueDefault>1</ValueDefault>"));
    EXPECT_EQ(world.map->GetNode("V")->GetAccessMode(), NA);
    EXPECT_THROW(world.Integer("V").GetMax(), GenICam::AccessException);
    const std::string sel = Node("Integer", "Sel", "<Value>0</Value>");
    const std::pair<const char*, const char*> refused[] = {
        {"<pIndex>Sel</pIndex>", "neither <ValueDefault> nor <pValueDefault>"},
        {"<pIndex>Sel</pIndex><ValueDefault>1</ValueDefault><Value>1</Value>", "<pIndex> beside <Value>"},
        {"<Value>1</Value><ValueDefault>1</ValueDefault>", "indexed values without <pIndex>"},
        {"<Value>1</Value><pValueCopy>Sel</pValueCopy>", "<pValueCopy> without <pValue>"},
        {"<pIndex>Sel</pIndex><ValueIndexed>1</ValueIndexed>", "<ValueIndexed>: \"\" is no decimal"},
        {"<pIndex>V</pIndex><ValueDefault>1</ValueDefault>", "it depends on itself: V -> V"}};
    for (const auto& [content, part] : refused)
        ExpectFailure<RuntimeException>([&, c = content] { MakeMap(Description(sel + Node("Integer", "V", c))); },
                                        part);
}

TEST(Structures, ShareARegisterAmongTheirEntries)
{
    World world(R"(<Group Comment="g"><StructReg Comment="s"><Extension><X/></Extension><ToolTip>shared</ToolTip>
        <Address>0x10</Address><IntSwissKnife Name="Where"><Formula>0x10</Formula></IntSwissKnife><Length>4</Length>
        <AccessMode>RO</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>
        <StructEntry Name="High"><LSB>15</LSB><MSB>0</MSB></StructEntry>
        <StructEntry Name="Mid"><ToolTip>own</ToolTip><AccessMode>RW</AccessMode><LSB>23</LSB><MSB>20</MSB>
            <Sign>Signed</Sign></StructEntry>
        <StructEntry Name="Flag"><AccessMode>RW</AccessMode><Bit>31</Bit><Extension/></StructEntry>
        </StructReg></Group>)");
    world.device.Put(0x20, {0x12, 0x34, 0x0F, 0x01});
    EXPECT_EQ(world.Integer("High").GetValue(), 0x1234);
    EXPECT_EQ(world.Integer("Mid").GetValue(), -1);
    EXPECT_EQ(world.Integer("Flag").GetValue(), 1);
    EXPECT_EQ(world.map->GetNode("High")->GetAccessMode(), RO);
    EXPECT_EQ(world.map->GetNode("High")->GetToolTip(), "shared");
    EXPECT_EQ(world.map->GetNode("Mid")->GetToolTip(), "own");
    world.Integer("Mid").SetValue(5);
    world.Integer("Flag").SetValue(0);
    EXPECT_EQ(world.device.Bytes(0x20, 4), (std::vector<int>{0x12, 0x34, 0x05, 0x00}));
    EXPECT_EQ(world.Integer("Where").GetValue(), 0x10);
    EXPECT_EQ(world.map->GetNode("High")->GetPrincipalInterfaceType(), intfIInteger);
}

TEST(Structures, AreRefusedByEntry)
{
    const std::string common = "<Address>0</Address><Length>4</Length><pPort>Device</pPort>";
    const std::pair<std::string, const char*> refused[] = {
        {common + "<StructEntry><Bit>0</Bit></StructEntry>", "StructEntry \"\": it has no name"},
        {common + "<StructEntry Name=\"A\"/>", "StructEntry \"A\": it has neither <Bit> nor"},
        {common + "<StructEntry Name=\"A\"><Bit>32</Bit></StructEntry>", "bit 32 is none of its 32 bits"},
        {"<StructEntry Name=\"A\"><Bit>0</Bit></StructEntry>", "it has no address"}};
    for (const auto& [content, part] : refused)
        ExpectFailure<RuntimeException>(
            [c = content] { MakeMap(Description("<StructReg>" + c + "</StructReg><Port Name=\"Device\"/>")); },
            part);
    // A small text that would make millions of references.
    std::string large = "<StructReg>" + common;
    for (int i = 0; i < 1100; ++i)
        large += "<pInvalidator>A0</pInvalidator>";
    for (int i = 0; i < 1000; ++i)
        large += "<StructEntry Name=\"A" + std::to_string(i) + "\"><Bit>0</Bit></StructEntry>";
    ExpectFailure<RuntimeException>([&] { MakeMap(Description(large + "</StructReg><Port Name=\"Device\"/>")); },
                                    "take too many elements");
}

TEST(AbsentKinds, LeaveTheRestUsable)
{
    World world(R"(<ConfRom Name="Rom"><Unit>0</Unit><Address>0</Address><Length>4</Length><pPort>Device</pPort>
        <TextDesc Name="Vendor">81</TextDesc><IntKey Name="Key">38</IntKey></ConfRom>
        <TextDesc Name="Text"><p1212Parser>Rom</p1212Parser><Key>81</Key></TextDesc>
        <AdvFeatureLock Name="Lock"><FeatureID>1</FeatureID></AdvFeatureLock><SmartFeature Name="Smart"/>
        <Integer Name="Uses"><pValue>Key</pValue></Integer><String Name="Shows"><pValue>Text</pValue></String>
        <Integer Name="A"><Value>1</Value></Integer>)");
    for (const char* name : {"Rom", "Vendor", "Key", "Text", "Lock", "Smart", "Uses", "Shows"})
        EXPECT_EQ(world.map->GetNode(name)->GetAccessMode(), NI) << name;
    for (const char* name : {"Vendor", "Key", "Smart", "Uses", "Shows"}) {
        EXPECT_THROW(world.Value(name).ToString(), GenICam::AccessException) << name;
        EXPECT_THROW(world.Value(name).FromString("0", false), GenICam::GenericException) << name;
    }
    EXPECT_EQ(world.Integer("A").GetValue(), 1);
}

}  // namespace
