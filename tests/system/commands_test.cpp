// What the command tells of the modules of the package, against the package itself.
#include <set>

#include "genapi/genapi.h"

#include "core/inodemapcontainer.h"
#include "runtime/package.h"
#include "runtime/resourcepool.h"
#include "stagelettest.h"

namespace SystemTest {

using namespace Nivex::DataProcessing;

namespace {

constexpr const char* packageFile = STAGELET_LIB_DIR "/libNivexStageletPackageBase.so";
constexpr const char* modules[] = {"Camera", "ImageFormatConverter", "DataWriter", "ImageLoading"};

class CommandsTest : public StageletTest
{
protected:
    std::string result(const std::vector<std::string>& arguments) const
    {
        const Ended ended = stagelet(arguments);
        EXPECT_EQ(ended.code, 0);
        EXPECT_EQ(ended.err, "");
        return ended.out;
    }
};

}  // namespace

TEST_F(CommandsTest, ModulesAreThoseOfTheManifest)
{
    const json told = json::parse(result({"modules", "--json"}));
    const json manifest = json::parse(Runtime::Package(packageFile).getManifestText());
    EXPECT_EQ(told.at("schema"), "stagelet-modules/1");
    ASSERT_EQ(told.at("modules").size(), manifest.at("Modules").size());
    const std::pair<const char*, const char*> keys[] = {{"name", "Name"},
                                                        {"uuid", "Uuid"},
                                                        {"object_version", "ObjectVersion"},
                                                        {"interface_type", "InterfaceType"},
                                                        {"display_name", "DisplayName"},
                                                        {"tags", "Tags"},
                                                        {"short_description", "ShortDescription"},
                                                        {"detailed_description", "DetailedDescription"}};
    std::set<json> names;
    for (std::size_t i = 0; i < told.at("modules").size(); ++i) {
        const json& module = told.at("modules")[i];
        names.insert(module.at("name"));
        for (const auto& [key, manifestKey] : keys)
            EXPECT_EQ(module.at(key), manifest.at("Modules")[i].at(manifestKey)) << key;
    }
    EXPECT_EQ(names, (std::set<json>{"Camera", "DataWriter", "ImageFormatConverter", "ImageLoading"}));
}

// The text is the one that the node's map was made from, a map can be made from it again, and that map holds what
// the list of parameters shows.
TEST_F(CommandsTest, DescriptionsAreThoseOfTheNodes)
{
    const Runtime::Package package(packageFile);
    for (const char* module : modules) {
        SCOPED_TRACE(module);
        const std::string text = result({"describe", module});
        const auto node = package.createNode(module, std::make_shared<Runtime::ResourcePool>());
        const auto own = dynamic_cast<Core::INodeMapContainer&>(*node).getNodeMap("@Stagelet");
        EXPECT_EQ(text, own.GetNodeMap()->GetDescriptionText().str());

        const auto map = GenApi::CNodeMapFactory(GenApi::ContentType_Xml, text.data(), text.size())
                             .CreateNodeMap("Device", true);
        const json told = json::parse(result({"params", module, "--json"}));
        const json& parameters = told.at("modules").at(0).at("parameters");
        EXPECT_GE(parameters.size(), 5U);
        for (const json& parameter : parameters) {
            const std::string name = parameter.at("name");
            const auto* feature = map->GetNode(name.c_str());
            ASSERT_NE(feature, nullptr) << name;
            EXPECT_EQ(feature->GetDisplayName(), parameter.at("display_name").get<std::string>()) << name;
            EXPECT_EQ(feature->GetToolTip(), parameter.at("tool_tip").get<std::string>()) << name;
        }
    }
}

TEST_F(CommandsTest, ParameterDocumentIsUpToDate)
{
    EXPECT_EQ(result({"params", "--markdown"}), readFile(STAGELET_SOURCE_DIR "/docs/parameters.md"))
        << "If the change is meant: stagelet params --markdown > docs/parameters.md";
}

// What a fresh node saves can stand in a recipe as it is.
TEST_F(CommandsTest, SettingsAreThoseThatRecipesTake)
{
    for (const char* module : modules) {
        SCOPED_TRACE(module);
        const json node = {
            {"Name", "N"}, {"Module", module}, {"Settings", json::parse(result({"settings", module}))}};
        EXPECT_FALSE(node.at("Settings").empty());
        const Ended ended =
            stagelet({"check", writeRecipe(json{{"Recipe", 1}, {"Nodes", {node}}}.dump()).string()});
        EXPECT_EQ(ended.code, 0) << ended.err;
        EXPECT_EQ(countOf(ended.err, "setting"), 0U) << ended.err;
    }
}

TEST_F(CommandsTest, AFullDiskUnderStdoutIsAFault)
{
    const Ended ended = end(Program({"sh", "-c", command() + " modules >/dev/full"}, folder / "logs"));
    EXPECT_EQ(ended.code, 7);
    EXPECT_THAT(ended.err, HasSubstr("output not written: stdout: "));
}

}  // namespace SystemTest
