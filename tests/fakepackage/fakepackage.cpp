// A small package for the tests of loading packages and of running recipes. What is wrong with it is chosen when
// it is compiled: FAKE_VERSION, FAKE_MANIFEST_BROKEN, FAKE_ENTRY_MISSING.
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>

#include "genapi/genapi.h"

#include "core/advancednode.h"
#include "core/errors.h"
#include "core/ideviceresource.h"
#include "core/inodemapcontainer.h"
#include "core/string.h"
#include "utils/log.h"

using namespace Nivex::DataProcessing;

namespace {

/// A description of integers without registers, from lines "NAME VALUE MIN MAX".
std::string describe(const std::string& lines)
{
    std::string features;
    std::string nodes;
    std::istringstream rows(lines);
    for (std::string name, value, least, most; rows >> name >> value >> least >> most;) {
        features += "<pFeature>" + name + "</pFeature>";
        nodes += "<Integer Name=\"" + name + "\"><Value>" + value + "</Value><Min>" + least + "</Min><Max>" +
                 most + "</Max></Integer>";
    }
    return R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Fake" VendorName="Test" StandardNameSpace="None" SchemaMajorVersion="1"
    SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_1"><Category Name="Root">)" +
           features + "</Category>" + nodes + "</RegisterDescription>";
}

/// A node with the maps "@Stagelet" and, while its resources are allocated, "@Late", which are the same.
class FakeNode : public Core::AdvancedNode, public Core::INodeMapContainer
{
public:
    std::vector<Core::NodeMapInfo> getNodeMapInfos() override
    {
        return {{"Fake", "@Stagelet"}, {"Late", "@Late"}};
    }
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override
    {
        return identifier == "@Stagelet" || isAllocated_ ? GenApi::CNodeMapRef(map_) : GenApi::CNodeMapRef();
    }
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

protected:
    FakeNode(const std::shared_ptr<Core::IResourcePool>& pool, const std::string& parameters) : AdvancedNode(pool)
    {
        const std::string description = describe(parameters);
        map_ = GenApi::CNodeMapFactory(GenApi::ContentType_Xml, description.data(), description.size())
                   .CreateNodeMap("Device", true);
    }
    GenApi::IInteger& integer(const char* name) const
    {
        return dynamic_cast<GenApi::IInteger&>(*map_->GetNode(name));
    }

    void allocateAdditionalResources(const std::shared_ptr<Core::IResourcePool>& pool, bool mayRefresh) override
    {
        AdvancedNode::allocateAdditionalResources(pool, mayRefresh);
        isAllocated_ = true;
    }
    void freeAdditionalResources(bool final) override
    {
        isAllocated_ = false;
        AdvancedNode::freeAdditionalResources(final);
    }

    GenApi::NodeMapPtr map_;
    bool isAllocated_ = false;
};

/// Gives out as many texts as "Count" says, or refuses to start.
class Source : public FakeNode
{
public:
    explicit Source(const std::shared_ptr<Core::IResourcePool>& pool, const std::string& more = {})
        : FakeNode(pool, "Count 3 0 100 Refuse 0 0 1 " + more)
    {
        createOutput("Text", "Text", Utils::TypeInfo::get<Core::String>());
    }
    ~Source() override { cleanup(); }

    void loadSettings(const std::shared_ptr<Core::ISettings>& settings) override
    {
        integer("Count").SetValue(settings->openChild("images")->getSigned("count"));
        if (settings->hasKey("refuse")) integer("Refuse").SetValue(settings->getSigned("refuse"));
    }
    void saveSettings(const std::shared_ptr<Core::ISettings>& settings) override
    {
        settings->createChild("images")->setSigned("count", integer("Count").GetValue());
        settings->setSigned("refuse", integer("Refuse").GetValue());
    }

protected:
    void onStarting(const Core::NodeArgumentCollection& arguments) override
    {
        if (integer("Refuse").GetValue() != 0) GENICAM_THROW(RuntimeException, "It was told to refuse.");
        const bool isHalved = arguments.hasArgument("Half");
        thread_ = std::thread([this, isHalved, count = integer("Count").GetValue()] {
            for (std::int64_t i = 0; i < (isHalved ? count / 2 : count) && waitUntilSpaceAvailable(); ++i) {
                const auto update = getUpdateFactory()->createUpdate(*this, nullptr, true);
                if (!update) return;
                Core::PinValues values;
                values["Text"] = Utils::Variant(Core::String("text"));
                createJob(update, std::move(values));
            }
            onSent();
        });
    }
    virtual void onSent() {}
    void onStopping() override
    {
        if (thread_.joinable()) thread_.join();
    }

private:
    std::thread thread_;
};

/// A source with a camera, number "Camera" of the emulated ones, and with a map "@Device" while it has it. The
/// camera is gone at once if "Lost" is 1, or after the last text if it is 2.
class Grabber : public Source
{
public:
    explicit Grabber(const std::shared_ptr<Core::IResourcePool>& pool) : Source(pool, "Camera 0 0 9 Lost 0 0 2")
    {
        changed_.set(pool->getResourcesChangedSignal().connect([] {}), true);
    }
    ~Grabber() override { cleanup(); }

    std::vector<Core::NodeMapInfo> getNodeMapInfos() override
    {
        std::vector<Core::NodeMapInfo> infos = {{"Fake", "@Stagelet"}};
        if (isAllocated_) infos.emplace_back("Device", "@Device");
        return infos;
    }

protected:
    void allocateAdditionalResources(const std::shared_ptr<Core::IResourcePool>& pool, bool mayRefresh) override
    {
        Nivex::CDeviceInfo wanted;
        wanted.SetPropertyValue("SerialNumber",
                                ("0815-000" + std::to_string(integer("Camera").GetValue())).c_str());
        const auto found = pool->query(Utils::TypeInfo::get<Core::IDeviceResource>(), Core::ResourceInfo(wanted));
        if (found.empty()) GENICAM_THROW(RuntimeException, "No camera of that number.");
        device_ = dynamic_cast<Core::IDeviceResource&>(*found.begin()->second).getDevice();
        if (!device_) GENICAM_THROW(RuntimeException, "The camera is in use.");
        Source::allocateAdditionalResources(pool, mayRefresh);
        if (integer("Lost").GetValue() == 1) lose();
    }
    void onStarting(const Core::NodeArgumentCollection& arguments) override
    {
        if (hasError()) GENICAM_THROW(RuntimeException, "There is no camera to start.");
        Source::onStarting(arguments);
    }
    void onSent() override
    {
        if (integer("Lost").GetValue() == 2) lose();
    }

private:
    void lose()
    {
        const std::shared_ptr<Core::IError> cause =
            std::make_shared<Core::DeviceError>("The cable was pulled.", Utils::DateTime::now());
        setError(std::make_shared<Core::InvalidValueError>("The camera is gone.", Core::ErrorList{cause},
                                                           Utils::DateTime::now()));
    }

    Utils::ScopedConnection changed_;
    std::unique_ptr<Nivex::INivexDevice> device_;
};

/// Takes texts at as many inputs as "Pins" says, and loses each for the cause of that number, or else records it.
class Sink : public FakeNode
{
public:
    explicit Sink(const std::shared_ptr<Core::IResourcePool>& pool) : FakeNode(pool, "Pins 1 1 9 Cause -1 -1 13")
    {
        map_->GetNode("Pins")->RegisterCallback([this](GenApi::INode*) { makePins(); });
        makePins();
    }
    ~Sink() override { cleanup(); }

    bool isForwardingUpdates() const override { return true; }
    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}

protected:
    void run(const std::shared_ptr<Core::IGraphUpdate>&, Core::PinValues&) override
    {
        const auto cause = integer("Cause").GetValue();
        if (cause < 0) return reportRecorded(1, 10);
        static const Utils::CatId category = Utils::getCatId("test.sink");
        Utils::createLogEntry(Utils::SeverityFailure, category, "Sink %p: It was told to lose.",
                              static_cast<void*>(this));
        reportLoss(static_cast<Core::LossCause>(cause));
    }

private:
    void makePins()
    {
        for (; pins_ < integer("Pins").GetValue(); ++pins_) {
            const GenICam::gcstring name("In" + std::to_string(pins_ + 1));
            createInputPin(name, name, Utils::TypeInfo::get<Core::String>(), false, 1);
        }
    }

    std::int64_t pins_ = 0;
};

std::string makeManifest()
{
    std::string modules;
    for (const auto& [name, displayName] :
         {std::pair("Source", "A source"), std::pair("Sink", "A sink"), std::pair("Grabber", "A grabber")})
    {
        const std::string number = std::to_string(modules.size());  // another one for each
        modules += (modules.empty() ? "" : ", ") + std::string("{ \"Name\": \"") + name +
                   "\", \"Uuid\": \"00000000-0000-0000-0000-" + std::string(12 - number.size(), '0') + number +
                   "\", \"DisplayName\": \"" + displayName + R"(",
            "ObjectVersion": "1.0.0", "MinRequiredSoftwareVersion": "1.0.0", "MinRequiredFileVersion": "1.0.0",
            "InterfaceType": "Native", "Tags": ["A=B"], "ShortDescription": "Short", "DetailedDescription": "",
            "SupportedUuids": [], "HasDynamicInfo": "False" })";
    }
#ifdef FAKE_MANIFEST_BROKEN
    modules += ",";
#endif
    return R"({ "Version": "1.0", "Vendor": "Test", "Copyright": "", "License": "", "Modules": [)" + modules +
           "]}";
}

}  // namespace

#ifndef FAKE_VERSION
#define FAKE_VERSION 2
#endif
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

FAKE_EXPORT int get_InterfaceVersion()
{
    return FAKE_VERSION;
}

FAKE_EXPORT char* create_StaticInfo()
{
    return strdup(makeManifest().c_str());
}

FAKE_EXPORT void destroy_Info(char** info)
{
    std::free(*info);
    *info = nullptr;
}

#define FAKE_CREATE(NAME)                                                                       \
    FAKE_EXPORT Core::NodeBase* create_##NAME(const std::shared_ptr<Core::IResourcePool>& pool) \
    {                                                                                           \
        return new NAME(pool);                                                                  \
    }
#define FAKE_DESTROY(NAME)                                \
    FAKE_EXPORT void destroy_##NAME(Core::NodeBase* node) \
    {                                                     \
        delete node;                                      \
    }

FAKE_CREATE(Source)
FAKE_DESTROY(Source)
FAKE_CREATE(Grabber)
FAKE_DESTROY(Grabber)
FAKE_CREATE(Sink)
#ifndef FAKE_ENTRY_MISSING
FAKE_DESTROY(Sink)
#endif
