#include "runtime/packagemanifest.h"

#include <algorithm>
#include <set>

#include "gcbase/exception.h"

#include "runtime/jsondocument.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

template <typename Record>
struct TextKey
{
    const char* name;
    std::string Record::*member;
};
template <typename Record>
struct ListKey
{
    const char* name;
    std::vector<std::string> Record::*member;
};

constexpr TextKey<PackageManifest> packageTexts[] = {
    {"Version", &PackageManifest::version},
    {"Vendor", &PackageManifest::vendor},
    {"Copyright", &PackageManifest::copyright},
    {"License", &PackageManifest::license},
};
constexpr TextKey<ModuleInfo> moduleTexts[] = {
    {"Name", &ModuleInfo::name},
    {"Uuid", &ModuleInfo::uuid},
    {"ObjectVersion", &ModuleInfo::objectVersion},
    {"MinRequiredSoftwareVersion", &ModuleInfo::minRequiredSoftwareVersion},
    {"MinRequiredFileVersion", &ModuleInfo::minRequiredFileVersion},
    {"InterfaceType", &ModuleInfo::interfaceType},
    {"DisplayName", &ModuleInfo::displayName},
    {"ShortDescription", &ModuleInfo::shortDescription},
    {"DetailedDescription", &ModuleInfo::detailedDescription},
    {"HasDynamicInfo", &ModuleInfo::hasDynamicInfo},
};
constexpr ListKey<ModuleInfo> moduleLists[] = {
    {"Tags", &ModuleInfo::tags},
    {"SupportedUuids", &ModuleInfo::supportedUuids},
};

bool isIdentifier(const std::string& name)
{
    const auto isPart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    };
    return !name.empty() && std::all_of(name.begin(), name.end(), isPart);
}

bool isUuid(const std::string& text)
{
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return text.size() == form.size() && std::equal(text.begin(), text.end(), form.begin(), [](char c, char f) {
               return f == '-' ? c == '-' : (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

class ManifestReader
{
public:
    PackageManifest read(std::string_view text)
    {
        JsonDocument document = parseJson(text);
        faults_ = std::move(document.faults);
        PackageManifest manifest;
        if (document.root) readPackage(*document.root, manifest);
        if (!faults_.empty()) raise();
        return manifest;
    }

private:
    [[noreturn]] void raise() const
    {
        std::string text;
        for (const TextFault& fault : faults_) {
            if (!text.empty()) text += "; ";
            text += std::to_string(fault.position.line) + ":" + std::to_string(fault.position.column) + ": " +
                    fault.message;
        }
        GENICAM_THROW(RuntimeException, "%s", text.c_str());
    }

    void add(TextPosition position, std::string message) { faults_.push_back({position, std::move(message)}); }

    /// The value of a key, or null after a fault was told.
    template <typename Kind>
    const Kind* require(const JsonValue& object, const char* key, const char* wanted)
    {
        const auto value = object.as<JsonObject>()->find(key);
        if (!value) {
            add(object.position, std::string("The key \"") + key + "\" is missing.");
            return nullptr;
        }
        const auto* result = value->as<Kind>();
        if (!result)
            add(value->position,
                std::string("\"") + key + "\" is " + value->describe() + "; wanted is " + wanted + ".");
        return result;
    }

    template <typename Record, std::size_t count>
    void readTexts(const JsonValue& object, const TextKey<Record> (&keys)[count], Record& record)
    {
        for (const auto& key : keys) {
            if (const auto* text = require<std::string>(object, key.name, "a text")) record.*key.member = *text;
        }
    }

    void readList(const JsonValue& object, const char* key, std::vector<std::string>& target)
    {
        const auto* list = require<JsonArray>(object, key, "a list of texts");
        if (!list) return;
        for (const auto& item : list->items) {
            if (const auto* text = item->as<std::string>()) {
                target.push_back(*text);
            } else {
                add(item->position,
                    std::string("An entry of \"") + key + "\" is " + item->describe() + "; wanted is a text.");
            }
        }
    }

    void readPackage(const JsonValue& root, PackageManifest& manifest)
    {
        if (!root.as<JsonObject>()) return add(root.position, "The manifest is no object.");
        readTexts(root, packageTexts, manifest);
        const auto* modules = require<JsonArray>(root, "Modules", "a list of objects");
        if (!modules) return;
        for (const auto& item : modules->items) {
            if (item->as<JsonObject>()) {
                manifest.modules.push_back(readModule(*item));
            } else {
                add(item->position, "A module is " + item->describe() + "; wanted is an object.");
            }
        }
    }

    ModuleInfo readModule(const JsonValue& object)
    {
        ModuleInfo module;
        const std::size_t before = faults_.size();
        readTexts(object, moduleTexts, module);
        for (const auto& key : moduleLists)
            readList(object, key.name, module.*key.member);
        if (faults_.size() == before) checkModule(object.position, module);
        return module;
    }

    void checkModule(TextPosition position, const ModuleInfo& module)
    {
        if (!isIdentifier(module.name)) {
            add(position,
                "The module name \"" + module.name + "\" has other characters than letters, digits and '_'.");
        } else if (!names_.insert(module.name).second) {
            add(position, "The module \"" + module.name + "\" stands here a second time.");
        }
        if (!isUuid(module.uuid)) {
            add(position, "The Uuid \"" + module.uuid + "\" of \"" + module.name +
                              "\" is not of the form 8-4-4-4-12 in lowercase hexadecimal digits.");
        }
        if (module.interfaceType != "Native") {
            add(position, "The InterfaceType \"" + module.interfaceType + "\" of \"" + module.name +
                              "\" is not known; it must be \"Native\".");
        }
    }

    std::vector<TextFault> faults_;
    std::set<std::string> names_;
};

}  // namespace

PackageManifest parseManifest(std::string_view text)
{
    return ManifestReader().read(text);
}

}  // namespace Nivex::DataProcessing::Runtime
