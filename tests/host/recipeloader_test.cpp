#include "recipeloader.h"

#include <gmock/gmock.h>

#include "cameras.h"
#include "faultmatch.h"
#include "parameters.h"

namespace Host {

namespace {

class RecipeLoaderTest : public testing::Test
{
protected:
    LoadedRecipe load(const char* text, const std::vector<std::string>& set = {})
    {
        std::vector<NodeAssignment> assignments;
        for (const std::string& entry : set)
            assignments.push_back(parseNodeAssignment(entry).value());
        return loadRecipe(readRecipe(text, faults), packages, makeResourcePool(1), "/", assignments, faults,
                          setFaults);
    }
    static std::string valueOf(const LoadedRecipe& recipe, const char* node, const char* parameter)
    {
        const auto map = getNodeMap(*recipe.graph->findNode(node), ownNodeMap);
        return dynamic_cast<GenApi::IValue*>(map->GetNode(parameter))->ToString().str();
    }

    PackageSet packages{{STAGELET_FAKE_DIR "/libfakepackage_good.so"}};
    FaultList faults;
    FaultList setFaults;
};

}  // namespace

// Settings, then the recipe's parameters, then those of the command line; then the pins that these made.
TEST_F(RecipeLoaderTest, GivesNodesTheirValuesInOrder)
{
    const LoadedRecipe recipe = load(R"({ "Recipe": 1, "Nodes": [
        { "Name": "A", "Module": "Source", "Settings": { "images": { "count": 7 } }, "StartArguments": { "x": 1 } },
        { "Name": "B", "Module": "Source", "Settings": { "images": { "count": 7 } }, "Parameters": [ "Count = 8" ] },
        { "Name": "C", "Module": "Sink", "Parameters": [ "Pins = 2", "@Late/Cause = 4" ] } ],
        "Connections": [ "A.Text -> C.In1", "A.Text -> C.In2", "B.Text -> C.In3" ] })",
                                     {"B.Count=9", "C.Pins=3"});
    expectFaults(faults, {});
    expectFaults(setFaults, {});
    EXPECT_EQ(valueOf(recipe, "A", "Count"), "7");
    EXPECT_EQ(valueOf(recipe, "B", "Count"), "9");
    EXPECT_TRUE(recipe.startArguments.at("A").hasArgument("x"));

    EXPECT_EQ(valueOf(recipe, "C", "Cause"), "-1");
    recipe.graph->allocate();
    applyPending(recipe, faults, setFaults);
    expectFaults(faults, {});
    EXPECT_EQ(valueOf(recipe, "C", "Cause"), "4");
}

// A node with a device may get any map with it, so that values wait for it, and their faults too.
TEST_F(RecipeLoaderTest, ValuesForADeviceWaitForIt)
{
    const LoadedRecipe recipe = load(R"({ "Recipe": 1, "Nodes": [
 { "Name": "A", "Module": "Grabber", "Parameters": [ "@Device/Count = 1", "@Device/Count = 101",
   "@Devise/Count = 2", "@Device/Cuont = 2" ] } ] })",
                                     {"A.@Device/Count=2", "A.@Device/Count=-1", "A.@Stagelet/Lost=0"});
    expectFaults(faults, {});
    expectFaults(setFaults, {});
    EXPECT_EQ(recipe.pending.size(), 6U);
    EXPECT_TRUE(recipe.resources.at("A")->usesDevices());
    recipe.graph->allocate();
    applyPending(recipe, faults, setFaults);
    expectFaults(faults, {{2, 75, "node \"A\"", "\"Count\" does not take \"101\""},
                          {3, 4, "node \"A\"", "no node map \"@Devise\". Did you mean \"@Device\"?"},
                          {3, 25, "node \"A\"", "no parameter \"Cuont\". Did you mean \"Count\"?"}});
    expectFaults(setFaults, {{0, 0, "A.@Device/Count=-1", "Allowed: 0 to 100."}});
    EXPECT_EQ(valueOf(recipe, "A", "Count"), "2") << "the command line comes last";
}

TEST_F(RecipeLoaderTest, TellsTheFaultsOfAllStages)
{
    load(R"({ "Recipe": 1, "Nodes": [
 { "Name": "A", "Module": "Sorce" },
 { "Name": "B", "Module": "Source", "Settings": { "images": { "count": "7" }, "refuse": 0.5 } },
 { "Name": "C", "Module": "Source", "Settings": { "images": {
     "cont": 7 } } },
 { "Name": "D", "Module": "Sink", "Parameters": [ "Pin = 2", "Pins = 10", "Pins = x", "@Lat/Pins = 1" ] },
 { "Name": "E", "Module": "Sink", "Parameters": [ "Root = 1" ] } ],
"Connections": [ "A.Text -> D.In9", "B.Tex -> D.In1", "B.Text -> E.In2" ] })",
         {"D.Pins=0", "F.Pins=1", "A.Count=3"});
    expectFaults(faults, {
                             {2, 27, "node \"A\"",
                              "There is no module \"Sorce\"; --package FILE, for each package that is needed, "
                              "brings others. Did you mean \"Source\"?"},
                             {3, 72, "node \"B\"", "\"images.count\" is \"7\""},
                             {3, 89, "node \"B\"", "\"refuse\" is 0.5"},
                             {4, 61, "node \"C\"", "\"images.count\" is missing"},
                             {6, 51, "node \"D\"", "no parameter \"Pin\". Did you mean \"Pins\"?"},
                             {6, 62, "node \"D\"", "Allowed: 1 to 9."},
                             {6, 75, "node \"D\"", "\"Pins\" does not take \"x\""},
                             {6, 87, "node \"D\"", "no node map \"@Lat\". Did you mean \"@Late\"?"},
                             {7, 51, "node \"E\"", "There is no parameter \"Root\""},
                             {8, 37, "connection \"B.Tex -> D.In1\"", "no output \"Tex\". Did you mean \"Text\"?"},
                             {8, 55, "connection \"B.Text -> E.In2\"", "no input \"In2\". Did you mean \"In1\"?"},
                         });
    expectFaults(setFaults, {{0, 0, "D.Pins=0", "\"Pins\" does not take \"0\""},
                             {0, 0, "F.Pins=1", "The recipe has no node \"F\""}});
}

TEST(NodeAssignment, NeedsNodeParameterAndValue)
{
    const auto assignment = parseNodeAssignment("A b.@Map/P.q=1=2.5").value();
    EXPECT_EQ(assignment.node, "A b");
    EXPECT_EQ(assignment.assignment.map, "@Map");
    EXPECT_EQ(assignment.assignment.parameter, "P.q");
    EXPECT_EQ(assignment.assignment.value, "1=2.5");
    for (const char* text : {"", "A", "A.P", "A=1", ".P=1", "A.=1", "A=b.P=1", "A.@Map=1"})
        EXPECT_FALSE(parseNodeAssignment(text)) << text;
}

}  // namespace Host
