// Converter and IntConverter: both directions, limits, increments, access, and formulas that read what they write.
#include <cmath>

#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;

namespace {

std::string Conversion(const char* to, const char* from, const std::string& further = "")
{
    return further + "<FormulaTo>" + to + "</FormulaTo><FormulaFrom>" + from +
           "</FormulaFrom><pValue>Raw</pValue>";
}

const std::string raw = Node("Integer", "Raw", "<pValue>Reg</pValue><Min>10</Min><Max>100</Max><Inc>5</Inc>") +
                        Reg("IntReg", "Reg", 0, 4);

TEST(Converters, ReadAndWriteInBothDirections)
{
    World world(raw + Node("Converter", "Gain", Conversion("FROM * 10", "TO / 10")) +
                Node("IntConverter", "Twice", Conversion("FROM / 2", "TO * 2")) +
                Node("Converter", "Plain", Conversion("FROM", "TO", "<Unit>ms</Unit>")) +
                Node("Float", "Top", "<pValue>Gain</pValue>"));
    world.device.Put(0, {25});
    auto& gain = world.Get<IFloat>("Gain");
    EXPECT_EQ(gain.GetValue(), 2.5);
    EXPECT_EQ(world.Integer("Twice").GetValue(), 50);
    world.Get<IFloat>("Top").SetValue(3.04);
    EXPECT_EQ(world.device.Bytes(0, 1), (std::vector<int>{30})) << "rounded to the nearest integer";
    EXPECT_EQ(gain.GetValue(), 3.0);
    gain.SetValue(3.96);
    EXPECT_EQ(world.Integer("Raw").GetValue(), 40);
    world.Integer("Twice").SetValue(31);
    EXPECT_EQ(world.Integer("Raw").GetValue(), 15) << "31 / 2 in integers";
    EXPECT_EQ(world.Get<IFloat>("Plain").GetUnit(), "ms");
    int calls = 0;
    world.map->GetNode("Top")->RegisterCallback([&](INode*) { ++calls; });
    world.Integer("Raw").SetValue(20);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(world.Value("Top").ToString(), "2");
}

TEST(Converters, HaveLimitsBySlope)
{
    const double least = std::numeric_limits<double>::lowest();
    const double most = std::numeric_limits<double>::max();
    struct Case
    {
        const char* from;
        const char* slope;
        const char* rawLimits;
        double min;
        double max;
    };
    const char* both = "<Min>10</Min><Max>100</Max>";
    const char* onlyMin = "<Min>10</Min>";
    const char* onlyMax = "<Max>-10</Max>";
    const Case cases[] = {{"TO * 2", "", both, 20, 200},
                          {"0 - TO", "", both, -100, -10},
                          {"TO * 2", "Increasing", both, 20, 200},
                          {"1000 / TO", "Decreasing", both, 10, 100},
                          {"1000 / TO", "Automatic", both, 10, 100},
                          {"1000 / TO", "Increasing", both, 100, 10},
                          {"TO", "Varying", both, least, most},
                          {"TO * 2", "", onlyMin, 20, most},
                          {"1000 / TO", "", onlyMin, least, 100},
                          {"TO * 2", "", onlyMax, least, -20},
                          {"0 - TO", "", onlyMax, 10, most},
                          {"TO", "", "", least, most},
                          {"1 / (TO - 10)", "", both, 1.0 / 90, most},
                          {"SQRT(50 - TO)", "Increasing", both, std::sqrt(40.0), most}};
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.from) + " " + each.slope + " " + each.rawLimits);
        const std::string slope = each.slope[0] ? "<Slope>" + std::string(each.slope) + "</Slope>" : "";
        World world(Node("Integer", "Raw", std::string("<Value>20</Value>") + each.rawLimits) +
                    Node("Converter", "C", Conversion("FROM", each.from, slope)));
        EXPECT_EQ(world.Get<IFloat>("C").GetMin(), each.min);
        EXPECT_EQ(world.Get<IFloat>("C").GetMax(), each.max);
    }
}

TEST(Converters, RefuseWhatIsOutsideTheirLimits)
{
    World world(raw + Node("Converter", "C", Conversion("FROM * 10", "TO / 10", "<IsLinear>Yes</IsLinear>")) +
                Node("Converter", "Offset", Conversion("FROM - 3", "2 * TO + 3", "<IsLinear>Yes</IsLinear>")) +
                Node("Converter", "Bent", Conversion("FROM", "TO ** 2")) +
                Node("IntConverter", "I", Conversion("FROM / 2", "TO * 2")));
    auto& converter = world.Get<IFloat>("C");
    EXPECT_EQ(converter.GetInc(), 0.5);
    EXPECT_EQ(world.Get<IFloat>("Offset").GetInc(), 10);
    EXPECT_FALSE(world.Get<IFloat>("Bent").HasInc());
    EXPECT_EQ(world.Integer("I").GetInc(), 1);
    EXPECT_EQ(world.Integer("I").GetMax(), 200);
    ExpectFailure<GenICam::OutOfRangeException>([&] { converter.SetValue(10.1); }, "10.1 is not within 1 to 10");
    ExpectFailure<GenICam::OutOfRangeException>([&] { converter.SetValue(1e30, false); }, "no 64-bit integer");
    ExpectFailure<GenICam::OutOfRangeException>([&] { world.Integer("I").SetValue(1); }, "not within 20 to 200");

    World valid(Node("Integer", "Raw", "<Value>1</Value><ValidValueSet>1; 2;4</ValidValueSet>") +
                Node("Integer", "Above", "<pValue>Raw</pValue>") +
                Node("Converter", "C", Conversion("FROM * 10", "TO / 10")));
    valid.Get<IFloat>("C").SetValue(0.4);
    EXPECT_EQ(valid.Integer("Raw").GetValue(), 4);
    ExpectFailure<GenICam::OutOfRangeException>([&] { valid.Get<IFloat>("C").SetValue(0.3); },
                                                "0.3 becomes 3, which is none of the valid values of \"Raw\"");
    ExpectFailure<GenICam::OutOfRangeException>([&] { valid.Integer("Above").SetValue(3); }, "none of its valid");
}

TEST(Converters, ReadWhatTheyChangeFromTheDevice)
{
    World world(Reg("IntReg", "Raw", 0, 1) +
                Node("IntConverter", "Bit7",
                     Conversion("(FROM = 1) ? (OLD | 0x80) : (OLD &amp; 0x7F)", "(OLD &gt;&gt; 7) &amp; 1",
                                R"(<pVariable Name="OLD">Raw</pVariable>)")));
    world.device.Put(0, {0x01});
    EXPECT_EQ(world.Integer("Bit7").GetValue(), 0);
    world.device.Put(0, {0x05});  // changes behind the cache
    world.Integer("Bit7").SetValue(1);
    EXPECT_EQ(world.device.Bytes(0, 1), (std::vector<int>{0x85}));
    EXPECT_EQ(world.Integer("Bit7").GetValue(), 1);
    world.Integer("Bit7").SetValue(0);
    EXPECT_EQ(world.device.Bytes(0, 1), (std::vector<int>{0x05}));
}

TEST(Converters, AreAccessibleAsTheirNodesAre)
{
    const auto modeOf = [](const char* rawMode, const char* variableMode, const char* to, const char* from) {
        World world(Reg("IntReg", "Raw", 0, 4, std::string("<AccessMode>") + rawMode + "</AccessMode>") +
                    Reg("IntReg", "X", 8, 4, std::string("<AccessMode>") + variableMode + "</AccessMode>") +
                    Node("Converter", "C", Conversion(to, from, R"(<pVariable Name="X">X</pVariable>)")));
        return world.map->GetNode("C")->GetAccessMode();
    };
    EXPECT_EQ(modeOf("RW", "RO", "FROM * X", "TO / X"), RW);
    EXPECT_EQ(modeOf("RO", "RO", "FROM * X", "TO / X"), RO);
    EXPECT_EQ(modeOf("WO", "RO", "FROM * X", "TO / X"), WO);
    EXPECT_EQ(modeOf("RW", "WO", "FROM", "TO / X"), WO);
    EXPECT_EQ(modeOf("RW", "WO", "FROM * X", "TO / X"), NA);
    EXPECT_EQ(modeOf("WO", "WO", "FROM * X", "TO"), NA);
}

TEST(Converters, FailWithTheirName)
{
    World world(Node("Integer", "Raw", "<Value>0</Value>") +
                Node("Converter", "C", Conversion("1 / FROM", "1 / TO")));
    ExpectFailure<GenICam::RuntimeException>([&] { world.Get<IFloat>("C").GetValue(); }, "Node \"C\"");
    ExpectFailure<GenICam::RuntimeException>([&] { world.Get<IFloat>("C").SetValue(0); }, "division by zero");
    EXPECT_EQ(world.Integer("Raw").GetValue(), 0);
    world.Get<IFloat>("C").SetValue(0.25);
    EXPECT_EQ(world.Get<IFloat>("C").GetValue(), 0.25);
    const std::pair<const char*, const char*> refused[] = {
        {"<FormulaTo>1</FormulaTo><FormulaFrom>1</FormulaFrom>", "it has no <pValue>"},
        {"<pValue>Raw</pValue><FormulaFrom>1</FormulaFrom>", "it has no <FormulaTo>"},
        {"<pValue>Raw</pValue><FormulaTo>1</FormulaTo>", "it has no <FormulaFrom>"},
        {"<pValue>Raw</pValue><FormulaTo>TO</FormulaTo><FormulaFrom>1</FormulaFrom>",
         "<FormulaTo>: the formula is wrong at character 1, \"TO\": there is no variable of that name"},
        {"<pValue>Raw</pValue><FormulaTo>1</FormulaTo><FormulaFrom>FROM</FormulaFrom>",
         "no variable of that name"}};
    for (const auto& [content, part] : refused)
        ExpectFailure<GenICam::RuntimeException>(
            [c = content] {
                MakeMap(Description(Node("Integer", "Raw", "<Value>0</Value>") + Node("IntConverter", "C", c)));
            },
            part);
}

}  // namespace
