// The package as a host sees it: a library, its symbols, its manifest, its nodes.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <regex>
#include <set>

#include "gcbase/exception.h"

#include "core/inodemapcontainer.h"
#include "core/packageentrypoints.h"
#include "runtime/resourcepool.h"
#include "utils/typeinfo.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

namespace Core = Nivex::DataProcessing::Core;
namespace Package = Core::Package;
using Json = nlohmann::ordered_json;

constexpr const char* library = STAGELET_LIB_DIR "/libNivexStageletPackageBase.so";
const std::array<std::string, 4> modules = {"Camera", "ImageFormatConverter", "DataWriter", "ImageLoading"};

class PackageTest : public testing::Test
{
protected:
    void SetUp() override { load(); }
    void TearDown() override { unload(); }

    void load()
    {
        handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
    }
    void unload()
    {
        if (handle) dlclose(std::exchange(handle, nullptr));
    }
    static bool isLoaded()
    {
        void* loaded = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
        if (loaded) dlclose(loaded);
        return loaded != nullptr;
    }
    template <typename Function>
    Function find(const std::string& name) const
    {
        auto* symbol = dlsym(handle, name.c_str());
        EXPECT_NE(symbol, nullptr) << name;
        return reinterpret_cast<Function>(symbol);
    }
    std::string manifest() const
    {
        char* text = find<Package::CreateInfo>(Package::createStaticInfoName)();
        std::string copy = text;
        find<Package::DestroyInfo>(Package::destroyInfoName)(&text);
        return copy;
    }
    auto makeNode(const std::string& module) const
    {
        const auto destroy = find<Package::DestroyNode>(Package::destroyNodePrefix + module);
        return std::unique_ptr<Core::NodeBase, Package::DestroyNode>(
            find<Package::CreateNode>(Package::createNodePrefix + module)(pool), destroy);
    }

    const std::shared_ptr<Core::IResourcePool> pool =
        std::make_shared<Nivex::DataProcessing::Runtime::ResourcePool>();

    void* handle = nullptr;
};

/// Parses, and refuses what strict JSON leaves open: a key that stands twice in an object.
Json parseStrictly(const std::string& text)
{
    std::vector<std::set<std::string>> keys;
    return Json::parse(text, [&](int, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) keys.emplace_back();
        if (event == Json::parse_event_t::object_end) keys.pop_back();
        if (event == Json::parse_event_t::key && !keys.back().insert(parsed.get<std::string>()).second) {
            throw std::runtime_error("key twice: " + parsed.get<std::string>());
        }
        return true;
    });
}

TEST_F(PackageTest, ShowsItsEntryPointsAndNoOtherCFunction)
{
    std::set<std::string> expected = {"get_InterfaceVersion", "create_StaticInfo", "create_DynamicInfo",
                                      "destroy_Info"};
    for (const std::string& module : modules) {
        expected.insert("create_" + module);
        expected.insert("destroy_" + module);
    }
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
        popen((std::string("nm -D --defined-only --format=posix ") + library).c_str(), "r"), pclose);
    ASSERT_TRUE(pipe);
    std::set<std::string> plain;
    std::set<std::string> mangled;
    char line[1024];
    while (std::fgets(line, sizeof(line), pipe.get())) {
        const std::string name(line, std::strcspn(line, " @"));
        (name.rfind("_Z", 0) == 0 ? mangled : plain).insert(name);
    }
    EXPECT_EQ(plain, expected);
    const std::regex members(
        "12ImageLoading11[gs]etSettings|6Camera(19getCameraDeviceData|"
        "29[gs]etActiveAssignmentProperties)");
    for (const std::string& name : mangled)
        EXPECT_TRUE(std::regex_search(name, members)) << name;
    EXPECT_EQ(mangled.size(), 5U);
}

TEST_F(PackageTest, HandsOutItsManifestAsFreshCopies)
{
    EXPECT_EQ(find<Package::GetInterfaceVersion>(Package::getInterfaceVersionName)(), 2);
    EXPECT_EQ(find<Package::CreateInfo>(Package::createDynamicInfoName)(), nullptr);
    const auto create = find<Package::CreateInfo>(Package::createStaticInfoName);
    const auto destroy = find<Package::DestroyInfo>(Package::destroyInfoName);
    char* first = create();
    char* second = create();
    EXPECT_NE(first, second);
    EXPECT_STREQ(first, second);
    first[0] = 'x';
    destroy(&first);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second[0], '{');
    destroy(&second);
    destroy(&second);
    EXPECT_EQ(second, nullptr);
}

TEST_F(PackageTest, ManifestKeepsItsForm)
{
    const std::string text = manifest();
    const Json json = parseStrictly(text);
    EXPECT_EQ(json.dump(4) + "\n", text);

    EXPECT_EQ(json["Version"], "8.1.0");
    EXPECT_EQ(json["Vendor"], "Tessmark");
    const struct
    {
        const char* uuid;
        const char* objectVersion;
        const char* softwareVersion;
        const char* displayName;
        const char* shortDescription;
        const char* useCase;
        const char* algorithm;
    } rows[] = {
        {"846bca11-6bf2-4895-88c4-fe038f5a659c", "7.0.1", "6.0.1", "Camera", "Camera Stagelet", "Acquisition",
         "Acquisition"},
        {"4049ea56-3827-4faf-9478-c3ba02e4a0cb", "7.0.1", "1.0.0", "Image Format Converter",
         "Image Format Converter Stagelet", "Supporters", "Classical"},
        {"726921ef-1686-49fa-9e9c-1e86bd7bf829", "1.0.0", "1.0.0", "Data Writer",
         "The Data Writer can be used to write any data, e.g. images to disk. Images can be saved in different "
         "formats including MP4 video.",
         "Experimental", "Classical"},
        {"4f2b72dc-294b-4503-885a-6b73d26eb6d7", "7.0.1", "1.0.0", "Image Loading", "Image Loading Stagelet",
         "Acquisition", "Acquisition"},
    };
    ASSERT_EQ(json["Modules"].size(), modules.size());
    Json expected = Json::array();
    for (std::size_t i = 0; i < modules.size(); ++i) {
        const auto& row = rows[i];
        const auto tags = {std::string("UseCaseIdentifier=") + row.useCase, std::string("OperationLevelGroup=Low"),
                           std::string("AlgorithmTypeGroup=") + row.algorithm};
        expected.push_back({{"Name", modules[i]},
                            {"Uuid", row.uuid},
                            {"ObjectVersion", row.objectVersion},
                            {"MinRequiredSoftwareVersion", row.softwareVersion},
                            {"MinRequiredFileVersion", "1.0.0"},
                            {"InterfaceType", "Native"},
                            {"DisplayName", row.displayName},
                            {"Tags", tags},
                            {"ShortDescription", row.shortDescription},
                            {"DetailedDescription", json["Modules"][i].value("DetailedDescription", "missing")},
                            {"SupportedUuids", Json::array({row.uuid})},
                            {"HasDynamicInfo", "False"}});
    }
    // As texts, for the order of the keys.
    EXPECT_EQ(json["Modules"].dump(4), expected.dump(4));
    const auto whole = {"Version", "Vendor", "Copyright", "License", "Modules"};
    EXPECT_TRUE(std::equal(whole.begin(), whole.end(), json.items().begin(), json.items().end(),
                           [](const char* key, const auto& item) { return item.key() == key; }));
}

TEST_F(PackageTest, HelpPagesAreWellFormedFragments)
{
    const std::set<std::string> allowed = {"h1", "h2", "h3", "p", "ul", "ol", "li", "strong", "i", "br"};
    const Json whole = parseStrictly(manifest());
    for (const Json& module : whole["Modules"]) {
        const std::string page = module["DetailedDescription"];
        SCOPED_TRACE(module["Name"].get<std::string>());
        EXPECT_EQ(page.rfind("<h1>" + module["DisplayName"].get<std::string>() + "</h1>\n", 0), 0U);
        std::vector<std::string> open;
        const std::regex tag("<(/?)([^>]*)>");
        for (std::sregex_iterator match(page.begin(), page.end(), tag), end; match != end; ++match) {
            const std::string name = match->str(2);
            ASSERT_TRUE(allowed.count(name)) << name;
            if (name == "br") continue;
            if (match->length(1) == 0) {
                open.push_back(name);
            } else {
                ASSERT_FALSE(open.empty());
                ASSERT_EQ(open.back(), name) << page.substr(static_cast<std::size_t>(match->position()), 60);
                open.pop_back();
            }
        }
        EXPECT_TRUE(open.empty());
        EXPECT_EQ(page.find('&'), std::string::npos);
    }
}

// A node map may be kept beyond its node.
TEST_F(PackageTest, MakesAndDestroysNodes)
{
    for (const std::string& module : modules) {
        SCOPED_TRACE(module);
        find<Package::DestroyNode>(Package::destroyNodePrefix + module)(nullptr);
        GenApi::CNodeMapRef map;
        {
            const auto node = makeNode(module);
            EXPECT_EQ(node->getState(), Core::NodeState::Stopped);
            map = dynamic_cast<Core::INodeMapContainer&>(*node).getNodeMap("@Stagelet");
        }
        EXPECT_GT(map.GetNumNodes(), 0U);
        EXPECT_NE(map.GetNode("Root"), nullptr);
    }
}

TEST_F(PackageTest, UnloadsAndLoadsAgainWithItsTypes)
{
    using Nivex::DataProcessing::Utils::TypeInfo;
    const auto isNodeType = [](const std::string& module) {
        const std::string name = "Plugin::NivexStageletPackageBase::" + module;
        const auto* entry = TypeInfo::getTypeRegistration().getEntry(name.c_str());
        const auto* data = entry ? entry->getData() : nullptr;
        return data && data->hasBase(TypeInfo::get<Core::NodeBase>().getData()) &&
               data->hasBase(TypeInfo::get<Core::INodeMapContainer>().getData());
    };
    for (int round = 0; round < 3; ++round) {
        for (const std::string& module : modules) {
            makeNode(module);
            EXPECT_TRUE(isNodeType(module)) << module;
        }
        unload();
        EXPECT_FALSE(isLoaded()) << "something keeps the package in memory";
        for (const std::string& module : modules)
            EXPECT_FALSE(isNodeType(module)) << module;
        load();
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test
