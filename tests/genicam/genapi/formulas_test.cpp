// The formula language, in formulas of integers and of floats: results, laziness, what variables mean, refusals,
// and formulas made to crash or hang.
#include <cmath>
#include <numbers>

#include "genicam/genapi/world.h"

using namespace GenApiTest;
using namespace GenApi;
using GenICam::RuntimeException;

namespace {

// Variables that the formulas of these tests may use.
const std::string variables = R"(<pVariable Name="A">Seven</pVariable><pVariable Name="Half">Half</pVariable>
    <pVariable Name="Big">Big</pVariable><pVariable Name="Zero">Zero</pVariable>
    <pVariable Name="LIM.Min">Limited</pVariable><pVariable Name="LIM.Max">Limited</pVariable>
    <pVariable Name="LIM.Inc">Limited</pVariable><pVariable Name="LIM.Value">Limited</pVariable>
    <pVariable Name="FLO">Float</pVariable><pVariable Name="Choice">Enum</pVariable>
    <pVariable Name="C.Entry.8Bit">Enum</pVariable><pVariable Name="L.AccessMode">Locked</pVariable>
    <pVariable Name="L.Visibility">Locked</pVariable><pVariable Name="L.CachingMode">Locked</pVariable>
    <Constant Name="K">0x10</Constant><Constant Name="Q">0.25</Constant>
    <Expression Name="Twice">2 * A</Expression><Expression Name="Four">Twice + Twice</Expression>)";
const std::string nodes =
    Node("Integer", "Seven", "<Value>7</Value>") + Node("Float", "Half", "<Value>-2.5</Value>") +
    Node("Integer", "Big", "<Value>0x7FFFFFFFFFFFFFFF</Value>") + Node("Integer", "Zero", "<Value>0</Value>") +
    Node("Integer", "Limited", "<Value>10</Value><Min>-10</Min><Max>50</Max><Inc>5</Inc>") +
    Node("Float", "Float", "<Value>1</Value><Min>0.5</Min><Max>1.5</Max>") +
    Node("Enumeration", "Enum",
         R"(<EnumEntry Name="8Bit"><Value>8</Value></EnumEntry><EnumEntry Name="Half"><Value>1</Value>
            <NumericValue>0.5</NumericValue></EnumEntry><Value>1</Value>)") +
    Node("Integer", "Locked",
         "<Visibility>Guru</Visibility><Value>1</Value><ImposedAccessMode>RO</ImposedAccessMode>");

std::string Knife(const std::string& kind, const std::string& name, const std::string& formula)
{
    return Node(kind, name, variables + "<Formula><![CDATA[" + formula + "]]></Formula>");
}

struct Row
{
    const char* formula;
    int64_t ofIntegers;
    double ofFloats;
};

TEST(Formulas, Compute)
{
    const double pi = std::numbers::pi;
    const Row rows[] = {
        // Precedence and order.
        {"1 + 2 * 3", 7, 7},
        {"(1 + 2) * 3", 9, 9},
        {"10 - 4 - 3", 3, 3},
        {"2 ** 3 ** 2", 512, 512},
        {"-2 ** 2", 4, 4},
        {"2 ** -1", 0, 0.5},
        {"- - 3", 3, 3},
        {"~5 & 0xF", 10, 10},
        {"1 | 6 ^ 3 & 2", 1 | (6 ^ (3 & 2)), 5},
        {"1 + 1 << 2", 8, 8},
        {"1 << 1 > 1", 1, 1},
        {"3 > 2 = 1", 1, 1},
        {"2 & 3 = 3", 0, 0},
        {"1 || 0 && 0", 1, 1},
        {"0 ? 1 : 0 ? 2 : 3", 3, 3},
        {"1 ? 0 ? 1 : 2 : 3", 2, 2},
        {"1 ? 2 : 3 + 4", 2, 2},
        {"0 || 0 ? 1 : 2", 2, 2},
        {"(A=1)?10:((A=7)?20:30)", 20, 20},
        // Comparisons in all spellings.
        {"1 = 1", 1, 1},
        {"1 == 2", 0, 0},
        {"1 <> 2", 1, 1},
        {"1 != 1", 0, 0},
        {"2 <= 2", 1, 1},
        {"3 < 2", 0, 0},
        {"3 >= 4", 0, 0},
        {"9223372036854775806 < 9223372036854775807", 1, 1},
        // Integers and floats.
        {"7 / 2", 3, 3.5},
        {"-7 / 2", -3, -3.5},
        {"7 / 2 * 2", 6, 7},
        {"7 % 4", 3, 3},
        {"-7 % 4", -3, -3},
        {"7.9 % 4", 3, 3},
        {"2.9 + 0.2", 2, 3.1},
        {"1e3", 1000, 1000},
        {".5 + 1.", 1, 1.5},
        {"1.5e-1 * 10", 0, 1.5},
        {"0.5 && 1", 0, 1},
        {"0.5 ? 1 : 2", 2, 1},
        {"0x10 + 0Xa", 26, 26},
        {"0xFFFFFFFFFFFFFFFF", -1, -1},
        {"Big + 1", INT64_MIN, 9223372036854775808.0},
        {"Big - 1 = Big", 0, 0},
        {"-9223372036854775808 / -1", INT64_MIN, 9223372036854775808.0},
        {"2 ** 63", INT64_MIN, 9223372036854775808.0},
        {"3 ** 39 % 1000", 267, 267},
        // Shifts.
        {"1 << 63 >> 63", -1, -1},
        {"1 << 64", 1, 1},
        {"-8 >> 1", -4, -4},
        {"6.9 >> 1", 3, 3},
        // Functions; in formulas of integers their results lose the fraction.
        {"SGN(-3) + SGN(0) + SGN(4.5)", 0, 0},
        {"NEG(5)", -5, -5},
        {"ABS(-7)", 7, 7},
        {"sqrt(16) + Sqrt(2)", 5, 4 + std::sqrt(2.0)},
        {"SIN(PI / 2)", 0, 1},
        {"COS(0)", 1, 1},
        {"TAN(1) + ASIN(1) + ACOS(0.5) + ATAN(1)", 3, std::tan(1.0) + pi / 2 + std::acos(0.5) + pi / 4},
        {"EXP(1)", 2, std::exp(1.0)},
        {"LN(E) + LG(1000)", 3, 4},
        {"TRUNC(-2.7) + FLOOR(-2.5) + CEIL(2.1)", -2, -2},
        {"ROUND(2.5) + ROUND(-2.5)", 0, 0},
        {"ROUND(3.14159, 2)", 3, 3.14},
        {"ROUND(1234.5, -2)", 1200, 1200},
        {"ROUND(1.5, 400) + ROUND(1.5, -400)", 1, 1.5},
        // Names.
        {"A*A", 49, 49},
        {"Half", -2, -2.5},
        {"K + Q", 16, 16.25},
        {"Twice + Four", 42, 42},
        {"LIM.Min + LIM.Max + LIM.Inc + LIM.Value", 55, 55},
        {"A.Value + FLO.Max", 8, 8.5},
        {"FLO.Min", 0, 0.5},
        {"Choice", 1, 0.5},
        {"C.Entry.8Bit + Choice.Entry.Half", 9, 9},
        {"L.AccessMode * 100 + L.Visibility * 10 + L.CachingMode", 322, 322},
        // What is not needed is not computed.
        {"Zero && 1 / Zero", 0, 0},
        {"1 || 1 / Zero", 1, 1},
        {"Zero = 0 ? 5 : 1 / Zero", 5, 5},
        {"A && Half", 1, 1},
        {" \n1\t+\r 1 ", 2, 2},
    };
    std::string text = nodes;
    int count = 0;
    for (const Row& row : rows) {
        text += Knife("IntSwissKnife", "I" + std::to_string(count), row.formula) +
                Knife("SwissKnife", "F" + std::to_string(count), row.formula);
        ++count;
    }
    const World world(text);
    for (int i = 0; i < count; ++i) {
        SCOPED_TRACE(rows[i].formula);
        EXPECT_EQ(world.Integer(("I" + std::to_string(i)).c_str()).GetValue(), rows[i].ofIntegers);
        const double result = world.Get<IFloat>(("F" + std::to_string(i)).c_str()).GetValue();
        EXPECT_NEAR(result, rows[i].ofFloats, 1e-12 * std::abs(rows[i].ofFloats));
    }
}

TEST(Formulas, DeclaredNamesWinOverConstantsAndFunctions)
{
    const World world(Node("Integer", "Seven", "<Value>7</Value>") +
                      Node("IntSwissKnife", "K",
                           R"(<pVariable Name="E">Seven</pVariable><Constant Name="PI">3000</Constant>
                              <Expression Name="ABS">1</Expression><Formula>PI + E + ABS + ABS(-100)</Formula>)"));
    EXPECT_EQ(world.Integer("K").GetValue(), 3108);
}

TEST(Formulas, WithoutAResultSayWhere)
{
    const std::pair<const char*, const char*> rows[] = {{"1 / Zero", "division by zero"},
                                                        {"1 % (A - 7)", "division by zero"},
                                                        {"Zero ** -1", "division by zero"},
                                                        {"1e300 | 1", "1e+300 is no 64-bit integer"},
                                                        {"SQRT(-1) & 1", "NaN is no 64-bit integer"},
                                                        {"FLO.Inc", "\"Float\" has no increment"}};
    for (const auto& [formula, cause] : rows) {
        for (const std::string kind : {"IntSwissKnife", "SwissKnife"}) {
            if (formula == std::string("1e300 | 1") && kind == "IntSwissKnife") continue;  // refused
            const World world(nodes + Knife(kind, "K", formula));
            ExpectFailure<RuntimeException>([&] { world.Value("K").ToString(); },
                                            std::string("Node \"K\": its formula has no result: ") + cause);
        }
    }
}

TEST(Formulas, ThatAreWrongAreRefused)
{
    const std::pair<std::string, const char*> rows[] = {
        {"", "at character 1, \"\": a number or name is missing"},
        {"1 +", "at character 4, \"\": a number or name is missing"},
        {"1 + * 2", "at character 5, \"* 2\": a number or name is missing"},
        {"1 2", "at character 3, \"2\": an operator is missing"},
        {"(1", "a \")\" is missing"},
        {"1)", "there is no \"(\" to this \")\""},
        {"()", "a number or name is missing"},
        {"1 ? 2", "a \"?\" has no \":\""},
        {"(1 ? 2)", "a \"?\" has no \":\""},
        {"1 : 2", "there is no \"?\" to this \":\""},
        {"(1 ? 2 : 3 : 4)", "there is no \"?\" to this \":\""},
        {"1, 2", "there is no function to this \",\""},
        {"ABS(1, 2)", "does not take so many numbers"},
        {"ROUND(1, 2, 3)", "does not take so many numbers"},
        {"SIN()", "a number or name is missing"},
        {"SIN", "there is no variable of that name"},
        {"X + 1", "at character 1, \"X + 1\": there is no variable of that name"},
        {"TO", "no variable of that name"},
        {"A.Size", "<pVariable>: the variable's name ends in \".Size\", which means nothing"},
        {"NOSUCH(1)", "there is no such function"},
        {"0x", "an operator is missing"},
        {"0x1FFFFFFFFFFFFFFFF", "this is no number"},
        {"1e999", "this is no number"},
        {"1 $ 2", "an operator is missing"},
        {std::string(70000, ' '), "a number or name is missing"},
        {std::string(70000, ' ') + "1", nullptr},
        {"1" + std::string(70000, ' ') + "+1", "the formula has 70003 characters; at most 65536 are allowed"}};
    for (const auto& [formula, part] : rows) {
        const std::string text = Description(nodes + Knife("IntSwissKnife", "K", formula));
        if (!part) {
            EXPECT_NO_THROW(MakeMap(text));
        } else {
            ExpectFailure<RuntimeException>([&] { MakeMap(text); }, part);
        }
    }
    const std::pair<const char*, const char*> elements[] = {
        {"<Formula>1</Formula><pVariable>Seven</pVariable>", "<pVariable>: it has no name"},
        {R"(<Formula>1</Formula><pVariable Name="A.Size">Seven</pVariable>)", "ends in \".Size\""},
        {R"(<Formula>1</Formula><pVariable Name="A.Entry.X">Enum</pVariable>)", "no entry \"X\""},
        {R"(<Formula>1</Formula><pVariable Name="A.Entry.X">Seven</pVariable>)", "not an Enumeration"},
        {R"(<Formula>1</Formula><Constant Name="A">x</Constant>)", "<Constant>: \"x\" is no number"},
        {R"(<Expression Name="X">Y</Expression><Expression Name="Y">1</Expression><Formula>X</Formula>)",
         "there is no variable of that name"},
        {R"(<Expression Name="X">X + 1</Expression><Formula>X</Formula>)", "there is no variable of that name"},
        {"", "it has no <Formula>"}};
    for (const auto& [content, part] : elements)
        ExpectFailure<RuntimeException>(
            [&, c = content] { MakeMap(Description(nodes + Node("SwissKnife", "K", c))); }, part);
}

TEST(Formulas, MayBeDeepAndLong)
{
    const auto repeated = [](const std::string& part, int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += part;
        return text;
    };
    const auto evaluate = [](const std::string& formula) {
        return World(nodes + Knife("IntSwissKnife", "K", formula)).Integer("K").GetValue();
    };
    EXPECT_EQ(evaluate(repeated("(", 30000) + "1" + repeated(")", 30000)), 1);
    EXPECT_EQ(evaluate(repeated("-", 16000) + "1"), 1);
    EXPECT_EQ(evaluate(repeated("A=1?2:", 2000) + "3"), 3);
    EXPECT_EQ(evaluate(repeated("A=1?2:(", 2000) + "3" + repeated(")", 2000)), 3);
    EXPECT_EQ(evaluate(repeated("1+(", 1000) + "1" + repeated(")", 1000)), 1001);
    EXPECT_EQ(evaluate(repeated("A?", 2000) + "1" + repeated(":2", 2000)), 1);
    const std::pair<std::string, const char*> refused[] = {
        {repeated("1+(", 1100) + "1" + repeated(")", 1100), "more than 1024 numbers at once"},
        {repeated("1+", 9000) + "1", "more than 16384 steps"}};
    for (const auto& [formula, part] : refused)
        ExpectFailure<RuntimeException>([&, f = formula] { evaluate(f); }, part);
}

TEST(Formulas, CannotGrowOrRunWithoutEnd)
{
    // Each expression doubles the one before it; each node evaluates the next one twice.
    std::string expressions = R"(<Expression Name="X0">1</Expression>)";
    for (int i = 1; i < 60; ++i) {
        const std::string before = "X" + std::to_string(i - 1);
        expressions +=
            "<Expression Name=\"X" + std::to_string(i) + "\">" + before + "+" + before + "</Expression>";
    }
    const auto knife = [&](const char* formula) {
        return Description(Node("IntSwissKnife", "K", expressions + "<Formula>" + formula + "</Formula>"));
    };
    MakeMap(knife("X8"));
    ExpectFailure<RuntimeException>([&] { MakeMap(knife("X20")); }, "more than 16384 steps");
    ExpectFailure<RuntimeException>([&] { MakeMap(knife("X59")); }, "more than 32 expressions mention each other");

    std::string chain = Node("Integer", "N60", "<Value>1</Value>");
    for (int i = 0; i < 60; ++i)
        chain += Node("IntSwissKnife", "N" + std::to_string(i),
                      "<pVariable Name=\"X\">N" + std::to_string(i + 1) + "</pVariable><Formula>X + X</Formula>");
    const World world(chain);
    EXPECT_EQ(world.Integer("N52").GetValue(), 256);
    ExpectFailure<RuntimeException>([&] { world.Integer("N0").GetValue(); }, "depends on too many others");

    const std::string self = Node("SwissKnife", "K", R"(<pVariable Name="X">K</pVariable><Formula>X</Formula>)");
    ExpectFailure<RuntimeException>([&] { MakeMap(Description(self)); }, "it depends on itself: K -> K");
    const std::string circle =
        Node("Converter", "C",
             R"(<pVariable Name="X">K</pVariable><FormulaTo>X</FormulaTo><FormulaFrom>TO</FormulaFrom>
                <pValue>V</pValue>)") +
        Node("SwissKnife", "K", R"(<pVariable Name="X">C</pVariable><Formula>X</Formula>)") +
        Node("Integer", "V", "<Value>1</Value>");
    ExpectFailure<RuntimeException>([&] { MakeMap(Description(circle)); }, "it depends on itself: C -> K -> C");
}

TEST(Formulas, AreReadableWithTheirVariables)
{
    World world(Node("SwissKnife", "K",
                     R"(<pVariable Name="X">X</pVariable><pVariable Name="Y.Max">Y</pVariable>
                        <Formula>X + Y.Max</Formula>)") +
                Node("Integer", "X", "<pIsAvailable>There</pIsAvailable><Value>1</Value>") +
                Node("Integer", "There", "<Value>1</Value>") +
                Node("Integer", "Y", "<Value>0</Value><Max>10</Max><ImposedAccessMode>WO</ImposedAccessMode>"));
    EXPECT_EQ(world.map->GetNode("K")->GetAccessMode(), RO);
    EXPECT_EQ(world.Value("K").ToString(), "11");
    world.Integer("X").SetValue(2);
    EXPECT_EQ(world.Value("K").ToString(), "12");
    EXPECT_THROW(world.Value("K").FromString("1"), GenICam::AccessException);
    EXPECT_THROW(world.Value("K").FromString("1", false), GenICam::AccessException);
    world.Integer("There").SetValue(0);
    EXPECT_EQ(world.map->GetNode("K")->GetAccessMode(), NA);
    EXPECT_THROW(world.Value("K").ToString(), GenICam::AccessException);
}

TEST(Formulas, FollowTheCachesOfTheirVariables)
{
    World world(
        Reg("IntReg", "Cached", 0) + Reg("IntReg", "Fresh", 8, 8, "<Cachable>NoCache</Cachable>") +
        Node("IntSwissKnife", "OfCached", R"(<pVariable Name="X">Cached</pVariable><Formula>X + 1</Formula>)") +
        Node("IntSwissKnife", "OfFresh", R"(<pVariable Name="X">Fresh</pVariable><Formula>X</Formula>)"));
    EXPECT_EQ(world.map->GetNode("OfCached")->GetCachingMode(), NoCache + 2);
    EXPECT_EQ(world.map->GetNode("OfFresh")->GetCachingMode(), NoCache);
    int calls = 0;
    world.map->GetNode("OfCached")->RegisterCallback([&](INode*) { ++calls; });
    world.Integer("OfCached").GetValue();
    world.Integer("OfCached").GetValue();
    EXPECT_EQ(world.device.reads, 1);
    world.device.Put(0, {5});
    EXPECT_EQ(world.Integer("OfCached").GetValue(false, true), 6);
    world.device.Put(0, {7});
    world.map->GetNode("OfCached")->InvalidateNode();
    EXPECT_EQ(world.Integer("OfCached").GetValue(), 8);
    world.Integer("Cached").FromString("9", false);
    EXPECT_EQ(calls, 2);
}

TEST(Formulas, GiveTheAddressesOfRegisters)
{
    World world(Node("Integer", "Sel", "<Value>1</Value>") +
                Node("IntReg", "R",
                     R"(<Address>0x10</Address><IntSwissKnife Name="Where"><pVariable Name="S">Sel</pVariable>
                        <Formula>S * 4</Formula></IntSwissKnife><Length>4</Length><AccessMode>RW</AccessMode>
                        <pPort>Device</pPort>)"));
    world.device.Put(0x14, {1, 0, 0, 0, 2});
    EXPECT_EQ(world.Integer("R").GetValue(), 1);
    world.Integer("Sel").SetValue(2);
    EXPECT_EQ(world.Integer("R").GetValue(), 2);
    EXPECT_EQ(world.Integer("Where").GetValue(), 8);
    EXPECT_EQ(world.Get<IRegister>("R").GetAddress(), 0x18);
}

}  // namespace
