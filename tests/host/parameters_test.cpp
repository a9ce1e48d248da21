// Parameters and their reports, on a map without device.
#include "parameters.h"

#include <gmock/gmock.h>

#include <cstring>

#include "jsonbuild.h"
#include "parameterreport.h"
#include "texttable.h"

namespace Host {

namespace {

using testing::HasSubstr;

constexpr const char* description = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Fake" VendorName="Test" StandardNameSpace="None" SchemaMajorVersion="1"
    SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>Width</pFeature><pFeature>Inner</pFeature><pFeature>Total</pFeature></Category>
  <Category Name="Inner"><DisplayName>Inner | part</DisplayName><pFeature>Gain</pFeature><pFeature>Mode</pFeature>
    <pFeature>Go</pFeature></Category>
  <Integer Name="Width"><ToolTip>How wide &lt;it&gt; is.</ToolTip><Visibility>Beginner</Visibility>
    <Value>8</Value><Min>4</Min><Max>64</Max><Inc>4</Inc><Unit>px</Unit></Integer>
  <Integer Name="Total"><Visibility>Guru</Visibility><ImposedAccessMode>RO</ImposedAccessMode>
    <Value>-1</Value></Integer>
  <Float Name="Gain"><Visibility>Expert</Visibility><Value>0.1</Value><Min>-1</Min></Float>
  <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>
  <Command Name="Go"><Value>0</Value><CommandValue>5</CommandValue></Command>
  <Integer Name="Hidden"><Value>0</Value></Integer>
</RegisterDescription>)";

GenApi::CNodeMapRef makeMap()
{
    GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml, description, std::strlen(description));
    return GenApi::CNodeMapRef(factory.CreateNodeMap("Device", true));
}

std::vector<ModuleParameters> makeModules()
{
    ModuleParameters fake;
    fake.module = "Fake";
    fake.rows = listParameters(makeMap(), GenApi::Invisible);
    ModuleParameters other;
    other.module = "Other_one";
    other.failure = "No node: <x>";
    return {fake, other};
}

}  // namespace

TEST(Parameters, AreListedAsTheCategoriesSay)
{
    std::string names;
    for (const auto& row : listParameters(makeMap(), GenApi::Expert))
        names += row.name + " ";
    EXPECT_EQ(names, "Width Gain Mode Go ");
}

TEST(Parameters, TakeTextsAndSayWhatIsAllowed)
{
    const auto map = makeMap();
    for (const auto& [name, value] :
         {std::pair("Width", "12"), std::pair("Gain", "2"), std::pair("Mode", "Off"), std::pair("Go", "Execute")})
        assignParameter(map, name, value);
    EXPECT_EQ(dynamic_cast<GenApi::IInteger*>(map.GetNode("Width"))->GetValue(), 12);
    EXPECT_EQ(dynamic_cast<GenApi::IValue*>(map.GetNode("Mode"))->ToString(), "Off");

    const struct
    {
        const char* name;
        std::string value;
        const char* text;
    } cases[] = {
        {"Width", "13", "Allowed: 4 to 64 step 4 px."},
        {"Width", "", "Allowed: 4 to 64"},
        {"Gain", "-2", "Allowed: from -1."},
        {"Mode", "Of", "no entry \"Of\""},
        {"Go", "1", "Allowed: Execute."},
        {"Total", "1", "cannot be written now (its access is RO)"},
        {"With", "1", "no parameter \"With\""},
        {"Width", std::string("1\0002", 3), "does not take \"1\\x002\": "},
        {"Width", std::string(101, '7'), "777...\" (101 bytes): "},
        {"Inner", "1", "no parameter \"Inner\""},
    };
    for (const auto& c : cases) {
        try {
            assignParameter(map, c.name, c.value);
            ADD_FAILURE() << c.name << " " << c.value;
        } catch (const ParameterError& e) {
            EXPECT_THAT(e.what(), HasSubstr(c.text));
        }
    }
}

TEST(ParameterReport, TextIsATableInAFileAndParagraphsOnATerminal)
{
    EXPECT_EQ(formatParameterText({makeModules()[0]}, 0),
              "NAME   KIND         VALUE  RANGE              ACCESS  VISIBILITY  TOOL TIP\n"
              "Width  Integer      8      4 to 64 step 4 px  RW      Beginner    How wide <it> is.\n"
              "Gain   Float        0.1    from -1            RW      Expert\n"
              "Mode   Enumeration  On     Off, On            RW      Beginner\n"
              "Go     Command                                RW      Beginner\n"
              "Total  Integer      -1                        RO      Guru\n");
    EXPECT_EQ(formatParameterText({makeModules()[0]}, 26),
              "Width = 8\n"
              "    Integer (4 to 64 step\n"
              "    4 px), RW, Beginner\n"
              "    How wide <it> is.\n"
              "Gain = 0.1\n"
              "    Float (from -1), RW,\n"
              "    Expert\n"
              "Mode = On\n"
              "    Enumeration (Off, On),\n"
              "    RW, Beginner\n"
              "Go\n"
              "    Command, RW, Beginner\n"
              "Total = -1\n"
              "    Integer, RO, Guru\n");
    TextTable table({{"A", 4}, {"B", 0, true}, {"C"}});
    table.addRow({"\xC3\xBC\xC3\xBC \xC3\xBC", "1", "words that go on below\x1b"});
    table.addRow({"abcdef", "22", ""});
    EXPECT_EQ(table.toText(10),
              "A      B  C\n"
              "\xC3\xBC\xC3\xBC \xC3\xBC   1  words that go on\n"
              "          below\\x1b\n"
              "abcd  22\n"
              "ef\n");
    TextTable wide({{"A", 3}, {"B"}});
    wide.addRow({"abcd", "x"});
    wide.addRow({"ab", "x"});
    EXPECT_EQ(wide.toText(0), "A    B\nabcd  x\nab   x\n") << "one long cell moves its own line only";
}

TEST(ParameterReport, MarkdownShowsEveryTextAsItIs)
{
    EXPECT_EQ(formatParameterMarkdown(makeModules()), R"(# Parameters

The values are those of a fresh node. What they come to in a recipe and in files, such as `FileMode` for
images and videos, is told in [recipe files](recipes.md) and [image and video files](image-files.md).

## Fake

| Name | Kind | Value | Range | Access | Visibility | Description |
|---|---|---|---|---|---|---|
| Width | Integer | 8 | 4 to 64 step 4 px | RW | Beginner | How wide &lt;it> is. |

### Inner \| part

| Name | Kind | Value | Range | Access | Visibility | Description |
|---|---|---|---|---|---|---|
| Gain | Float | 0.1 | from -1 | RW | Expert |  |
| Mode | Enumeration | On | Off, On | RW | Beginner |  |
| Go | Command |  |  | RW | Beginner |  |

| Name | Kind | Value | Range | Access | Visibility | Description |
|---|---|---|---|---|---|---|
| Total | Integer | -1 |  | RO | Guru |  |

## Other\_one

No node: &lt;x>
)");
}

TEST(ParameterReport, JsonHasTypedValues)
{
    const auto document = Nivex::DataProcessing::Runtime::parseJson(formatParameterJson(makeModules()));
    ASSERT_TRUE(document.root);
    const auto& modules = document.root->as<JsonObject>()->find("modules")->as<JsonArray>()->items;
    EXPECT_EQ(modules[1]->as<JsonObject>()->find("failure")->describe(), "\"No node: <x>\"");
    std::string rows;
    for (const auto& row : modules[0]->as<JsonObject>()->find("parameters")->as<JsonArray>()->items) {
        for (const char* key : {"name", "value", "min", "max", "increment"})
            rows += row->as<JsonObject>()->find(key)->describe() + " ";
    }
    EXPECT_EQ(rows,
              "\"Width\" 8 4 64 4 \"Gain\" 0.1 -1.0 null null \"Mode\" \"On\" null null null "
              "\"Go\" null null null null \"Total\" -1 null null null ");
}

}  // namespace Host
