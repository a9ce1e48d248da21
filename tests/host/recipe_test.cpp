// What a recipe's text alone tells. What its nodes refuse is in recipeloader_test.cpp.
#include "recipe.h"

#include <gmock/gmock.h>

#include "core/boolean.h"
#include "core/float.h"
#include "core/integer.h"
#include "core/string.h"
#include "faultmatch.h"

namespace Host {

using namespace Nivex::DataProcessing;

TEST(Recipe, ReadsAllItsParts)
{
    FaultList faults;
    const Recipe recipe = readRecipe(R"({ "Recipe": 1, "Nodes": [
        { "Name": "A b", "Module": "M", "Settings": { "anything": [1] },
          "Parameters": [ "P = 1", "Q=  x ", "@CameraDevice/Gain = a = b", "R =" ],
          "StartArguments": { "t": "x", "i": -3, "u": 18446744073709551615, "f": 0.5, "b": true } },
        { "Name": "B", "Module": "N" } ],
        "Connections": [ "A b.Out->B.In.1" ] })",
                                     faults);
    ASSERT_TRUE(faults.empty()) << testing::PrintToString(faults.toLines("file"));
    ASSERT_EQ(recipe.nodes.size(), 2U);
    const RecipeNode& node = recipe.nodes[0];
    EXPECT_EQ(node.module, "M");
    EXPECT_EQ(node.modulePosition, (TextPosition{2, 36}));
    EXPECT_TRUE(node.settings);
    EXPECT_FALSE(recipe.nodes[1].settings);

    const std::array<const char*, 3> expected[] = {{ownNodeMap, "P", "1"},
                                                   {ownNodeMap, "Q", " x"},
                                                   {"@CameraDevice", "Gain", "a = b"},
                                                   {ownNodeMap, "R", ""}};
    ASSERT_EQ(node.parameters.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(node.parameters[i].map, expected[i][0]);
        EXPECT_EQ(node.parameters[i].parameter, expected[i][1]);
        EXPECT_EQ(node.parameters[i].value, expected[i][2]);
    }

    const auto& arguments = node.startArguments;
    EXPECT_EQ(arguments.getArgumentValue("t").getValue<Core::String>().get(), "x");
    EXPECT_EQ(arguments.getArgumentValue("i").getValue<Core::Integer>().getSigned(), -3);
    EXPECT_EQ(arguments.getArgumentValue("u").getValue<Core::Integer>().getUnsigned(), ~std::uint64_t{0});
    EXPECT_EQ(arguments.getArgumentValue("f").getValue<Core::Float>().get(), 0.5);
    EXPECT_TRUE(arguments.getArgumentValue("b").getValue<Core::Boolean>().get());

    ASSERT_EQ(recipe.connections.size(), 1U);
    EXPECT_EQ(recipe.connections[0].from, (PinName{"A b", "Out"}));
    EXPECT_EQ(recipe.connections[0].to, (PinName{"B", "In.1"}));
}

TEST(Recipe, TellsAllFaultsInOneGo)
{
    const struct
    {
        const char* text;
        std::vector<ExpectedFault> faults;
    } cases[] = {
        {"[1]", {{1, 1, "recipe", "It is a list; wanted is an object"}}},
        {"{ x", {{1, 3, "recipe", "invalid literal"}}},
        {"{}", {{1, 1, "recipe", "\"Recipe\""}, {1, 1, "recipe", "\"Nodes\" is missing"}}},
        {R"({"Recipe": 1.0, "Nodes": {}, "Connections": "x"})",
         {{1, 12, "recipe", "is 1.0; it must be 1"},
          {1, 26, "recipe", "\"Nodes\" is an object; wanted is a list"},
          {1, 45, "recipe", "\"Connections\" is \"x\"; wanted is a list"}}},
        {R"({"Recipe": 2, "nodes": [],
 "Recipe": 1, "Nodes": [ 5, {"name": "A"}, {"Name": "A.b", "Module": 7},
  {"Name": "B", "Module": "M", "Settings": [], "Parameters": ["x", "= 3", "@m = 3", 4], "StartArguments": {"a": null}},
  {"Name": "B", "Module": "M"} ]})",
         {{1, 12, "recipe", "is 2; it must be 1"},
          {1, 15, "recipe", "\"nodes\" is not known. Did you mean \"Nodes\"?"},
          {2, 2, "recipe", "\"Recipe\" stands here a second time"},
          {2, 26, "Nodes[0]", "It is 5; wanted is an object"},
          {2, 29, "Nodes[1]", "\"Name\" is missing"},
          {2, 29, "Nodes[1]", "\"Module\" is missing"},
          {2, 30, "Nodes[1]", "Did you mean \"Name\"?"},
          {2, 53, "Nodes[2]", "The name \"A.b\" is not allowed"},
          {2, 70, "Nodes[2]", "\"Module\" is 7; wanted is a text"},
          {3, 44, "node \"B\"", "\"Settings\" is a list; wanted is an object"},
          {3, 63, "node \"B\"", "is \"x\"; wanted is a text \"NAME = value\""},
          {3, 68, "node \"B\"", "is \"= 3\""},
          {3, 75, "node \"B\"", "is \"@m = 3\""},
          {3, 85, "node \"B\"", "is 4"},
          {3, 113, "node \"B\"", "The start argument \"a\" is null"},
          {4, 12, "node \"B\"", "There is a node of that name already"}}},
        {R"({"Recipe": 1, "Nodes": [{"Name": "Loader", "Module": "M"}, {"Name": "W", "Module": "M"}],
"Connections": [ "Loader.A -> W.In", "Loder.A -> X.In", "Loader.B -> W.In", "Loader.A", "A -> B", ".A -> W.In", 3 ]})",
         {{2, 38, "connection \"Loder.A -> X.In\"", "There is no node \"Loder\". Did you mean \"Loader\"?"},
          {2, 38, "connection \"Loder.A -> X.In\"", "There is no node \"X\". Did you mean \"W\"?"},
          {2, 57, "connection \"Loader.B -> W.In\"", "has the connection \"Loader.A -> W.In\" already"},
          {2, 77, "Connections", "is \"Loader.A\"; wanted is a text \"NODE.OUTPUT -> NODE.INPUT\""},
          {2, 89, "Connections", "is \"A -> B\""},
          {2, 99, "Connections", "is \".A -> W.In\""},
          {2, 113, "Connections", "is 3"}}},
        // Nobody can tell whether a node whose name cannot be read is the one that is meant.
        {R"({"Recipe": 1, "Nodes": [{"Module": "M"}], "Connections": ["A.x -> B.y"]})",
         {{1, 25, "Nodes[0]", "\"Name\" is missing"}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        FaultList faults;
        readRecipe(c.text, faults);
        expectFaults(faults, c.faults);
    }
}

// Hostile sizes end soon, and what reaches the terminal is no command to it.
TEST(Recipe, BoundsAndCleansWhatItTells)
{
    std::string many = R"({"Recipe": 1, "Nodes": [)";
    for (int i = 0; i < 150; ++i)
        many += "{\"Nam\": 1, \"\\u001b[2J\": 2},";
    many.back() = ']';
    FaultList faults;
    readRecipe(many + "}", faults);
    EXPECT_EQ(faults.getCount(), 600U);
    const auto lines = faults.toLines("file");
    ASSERT_EQ(lines.size(), FaultList::most + 1);
    EXPECT_EQ(lines.back(), "file: 500 further faults.");
    EXPECT_THAT(lines[3], testing::HasSubstr("\\x1b[2J"));

    std::string tooMany = R"({"Recipe": 1, "Nodes": [0)";
    for (std::size_t i = 0; i < Recipe::mostNodes; ++i)
        tooMany += ",0";
    FaultList oneFault;
    readRecipe(tooMany + "]}", oneFault);
    expectFaults(oneFault, {{1, 24, "recipe", "It has 1001 nodes; allowed are 1000"}});
}

TEST(Nearest, NamesThatAreMeant)
{
    const std::vector<std::string> known = {"Name", "Module", "NumberOfImages", "Data1", "Data2"};
    const std::pair<const char*, const char*> cases[] = {
        {"name", "Name"},
        {"Modul", "Module"},
        {"Moduel", "Module"},
        {"NumberOfImage", "NumberOfImages"},
        {"Data3", "Data1"},
        {"Nane", "Name"},
        {"Quality", ""},
        {"", ""},
        {"NumberImages", "NumberOfImages"},
    };
    for (const auto& [word, nearest] : cases)
        EXPECT_EQ(suggest(word, known).find("\"" + std::string(nearest) + "\"") != std::string::npos,
                  *nearest != 0)
            << word << suggest(word, known);
    EXPECT_EQ(suggest("Quality", {"Name", "Module"}), " Known: Name, Module.");
}

}  // namespace Host
