#include "runtime/package.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include "framework/refusal.h"
#include "runtime/resourcepool.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

using testing::HasSubstr;

std::string fakeFile(const std::string& name)
{
    return STAGELET_FAKE_DIR "/libfakepackage_" + name + ".so";
}

bool isLoaded(const std::string& file)
{
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
}

/// A manifest of one module, one of whose lines is replaced.
std::string manifestWith(const std::string& from, const std::string& to)
{
    std::string text = R"({
"Version": "1", "Vendor": "V", "Copyright": "C", "License": "L",
"Modules": [ {
"Name": "M",
"Uuid": "0123abcd-0000-0000-0000-000000000001",
"ObjectVersion": "1.0.0", "MinRequiredSoftwareVersion": "1", "MinRequiredFileVersion": "1",
"InterfaceType": "Native",
"DisplayName": "D",
"Tags": ["A=B"],
"ShortDescription": "S", "DetailedDescription": "H", "SupportedUuids": [], "HasDynamicInfo": "False"
} ] })";
    const auto place = text.find(from);
    return place == std::string::npos ? std::string() : text.replace(place, from.size(), to);
}

}  // namespace

TEST(Package, LivesAsLongAsItsLastNode)
{
    const std::string file = fakeFile("good");
    const auto pool = std::make_shared<ResourcePool>();
    NodeHandle node;
    {
        const Package package(file);
        EXPECT_EQ(package.getManifest().modules.size(), 3U);
        EXPECT_EQ(package.findModule("Source")->displayName, "A source");
        EXPECT_EQ(package.findModule("Other"), nullptr);
        EXPECT_THROW(package.createNode("Other", pool), GenICam::InvalidArgumentException);
        node = package.createNode("Source", pool);
    }
    EXPECT_EQ(node->getOutputDescriptors().size(), 1U);
    EXPECT_TRUE(isLoaded(file));
    node = NodeHandle();  // the deleter goes too
    EXPECT_FALSE(isLoaded(file)) << "the library was not really unloaded";
}

TEST(Package, FaultsNameFileAndCause)
{
    const struct
    {
        std::string file;
        const char* cause;
    } cases[] = {
        {"", "cannot be loaded: Invalid argument"},
        {"/nowhere/package.so", "loaded: cannot open shared object file: No such file"},
        {__FILE__, "cannot be loaded"},
        {STAGELET_LIB_DIR "/libGCBase.so", "no entry point \"get_InterfaceVersion\""},
        {fakeFile("version"), "Its interface version is 3; this host speaks version 2."},
        {fakeFile("manifest_broken"), "manifest is not in order: 10:63: "},
        {fakeFile("entry_missing"), "no entry point \"destroy_Sink\""},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(refusal<GenICam::RuntimeException>([&] { const Package package(c.file); }),
                    AllOf(HasSubstr("\"" + c.file + "\""), HasSubstr(c.cause)));
        EXPECT_FALSE(isLoaded(fakeFile("version")));
    }
}

TEST(PackageManifest, FaultsAreAllTold)
{
    const struct
    {
        const char* from;
        const char* to;
        std::vector<std::string> parts;
    } cases[] = {
        {"\"Vendor\": \"V\", ", "", {"1:1: The key \"Vendor\" is missing"}},
        {"\"V\", \"Copyright\"", "5, \"Copyright\"", {"2:27: \"Vendor\" is 5; wanted is a text"}},
        {"\"Name\": \"M\",", "", {"3:14: The key \"Name\" is missing"}},
        {"\"M\"", "\"M N\"", {"\"M N\" has other characters"}},
        {"0123abcd", "0123ABCD", {"8-4-4-4-12"}},
        {"\"Native\"", "\"Remote\"", {"must be \"Native\""}},
        {"[\"A=B\"]", "[1]", {"9:10: An entry of \"Tags\" is 1"}},
        {"\"D\",\n\"Tags\": [\"A=B\"]",
         "null,\n\"Tags\": {}",
         {"8:16: \"DisplayName\" is null", "9:9: \"Tags\" is an object"}},
        {"[ {", "[ 7, {", {"3:14: A module is 7"}},
        {"} ] }", "} ] } x", {"11:7: "}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.to);
        const std::string text = manifestWith(c.from, c.to);
        ASSERT_FALSE(text.empty());
        const std::string told = refusal<GenICam::RuntimeException>([&] { parseManifest(text); });
        for (const std::string& part : c.parts)
            EXPECT_THAT(told, HasSubstr(part));
    }
    EXPECT_EQ(parseManifest(manifestWith("\"D\"", "\"D\", \"Further\": 1")).modules[0].tags,
              std::vector<std::string>{"A=B"});
}

}  // namespace Nivex::DataProcessing::Runtime
