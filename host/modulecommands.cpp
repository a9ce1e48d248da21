#include "modulecommands.h"

#include <unistd.h>

#include <algorithm>
#include <ostream>

#include "cameras.h"
#include "core/ideviceresource.h"
#include "faults.h"
#include "hosterror.h"
#include "jsonbuild.h"
#include "noderesources.h"
#include "nodesettings.h"
#include "packageset.h"
#include "parameterreport.h"
#include "recipe.h"
#include "texttable.h"

namespace Host {

using namespace Nivex::DataProcessing;
using Runtime::ModuleInfo;
using Runtime::Package;

namespace {

/// A node of one module, alone.
class FreshNode
{
public:
    FreshNode(const Package& package, const std::string& module, std::size_t emulatedCameras = 0)
        : module_(module),
          pool_(std::make_shared<NodeResources>(makeResourcePool(emulatedCameras))),
          node_(package.createNode(module, pool_))
    {}
    ~FreshNode()
    {
        if (isAllocated_) node_->freeResources();
    }
    FreshNode(const FreshNode&) = delete;
    FreshNode& operator=(const FreshNode&) = delete;

    Core::NodeBase& operator*() const { return *node_; }

    /// Allocates the node's resources if need be. Raises HostError.
    GenApi::CNodeMapRef getMap(const std::string& identifier)
    {
        const auto present = listNodeMaps(*node_);
        if (std::find(present.begin(), present.end(), identifier) == present.end()) allocate();
        try {
            if (const auto map = getNodeMap(*node_, identifier)) return *map;
        } catch (const ParameterError& e) {
            throw HostError(ExitCode::WrongCommandLine, "unknown node map", identifier,
                            e.what() + suggest(e.name, e.known), "stagelet params " + module_);
        }
        throw HostError(ExitCode::RunFailed, "node map not present", identifier, "The module has no such map now.",
                        "stagelet params " + module_);
    }

private:
    void allocate()
    {
        try {
            node_->allocateResources();
            isAllocated_ = true;
        } catch (...) {
            throw HostError(pool_->usesDevices() ? ExitCode::CameraNotAvailable : ExitCode::RunFailed,
                            "resources not allocated", module_, describeCurrentException(),
                            "stagelet devices, for the cameras there are; --emulated-cameras 1, for one without "
                            "hardware");
        }
    }

    const std::string module_;
    const std::shared_ptr<NodeResources> pool_;
    const Runtime::NodeHandle node_;
    bool isAllocated_ = false;
};

const Package& requirePackage(const PackageSet& packages, const std::string& module)
{
    if (const Package* package = packages.findPackage(module)) return *package;
    throw HostError(ExitCode::WrongCommandLine, "unknown module", module,
                    "No package has it." + suggest(module, packages.getModuleNames()),
                    "stagelet modules; --package FILE, for each package that is needed");
}

JsonObject toJson(const ModuleInfo& module, const Package& package)
{
    JsonObject object;
    add(object, "name", module.name);
    add(object, "uuid", module.uuid);
    add(object, "object_version", module.objectVersion);
    add(object, "min_required_software_version", module.minRequiredSoftwareVersion);
    add(object, "min_required_file_version", module.minRequiredFileVersion);
    add(object, "interface_type", module.interfaceType);
    add(object, "display_name", module.displayName);
    add(object, "tags", toJsonArray(module.tags));
    add(object, "short_description", module.shortDescription);
    add(object, "detailed_description", module.detailedDescription);
    add(object, "supported_uuids", toJsonArray(module.supportedUuids));
    add(object, "has_dynamic_info", module.hasDynamicInfo);
    add(object, "package", package.getFile());
    add(object, "package_version", package.getManifest().version);
    add(object, "vendor", package.getManifest().vendor);
    return object;
}

std::string formatModuleJson(const PackageSet& packages)
{
    JsonArray list;
    for (const Package& package : packages.getPackages()) {
        for (const ModuleInfo& module : package.getManifest().modules)
            add(list, toJson(module, package));
    }
    JsonObject root;
    add(root, "schema", std::string("stagelet-modules/1"));
    add(root, "modules", std::move(list));
    return formatJson(JsonValue(std::move(root)));
}

/// Acts on a fresh node of the module that the options name.
template <typename Act>
void withNode(const PackageSet& packages, const ModuleOptions& options, const Act& act)
{
    const Package& package = requirePackage(packages, options.module);
    try {
        FreshNode fresh(package, options.module, options.emulatedCameras);
        act(fresh);
    } catch (const HostError&) {
        throw;
    } catch (...) {
        throw HostError(ExitCode::RunFailed, "node not made", options.module, describeCurrentException(),
                        "stagelet modules, for the modules there are");
    }
}

/// The options for each module alone, if they name none.
std::vector<ModuleOptions> eachModule(const PackageSet& packages, const ModuleOptions& options)
{
    if (!options.module.empty()) return {options};
    std::vector<ModuleOptions> each;
    for (const std::string& name : packages.getModuleNames()) {
        each.push_back(options);
        each.back().module = name;
    }
    return each;
}

std::vector<ModuleParameters> collectParameters(const PackageSet& packages, const ModuleOptions& options)
{
    std::vector<ModuleParameters> result;
    for (const ModuleOptions& single : eachModule(packages, options)) {
        try {
            withNode(packages, single, [&](FreshNode& fresh) {
                result.push_back(
                    {single.module, listParameters(fresh.getMap(options.map), options.visibility), {}});
            });
        } catch (const HostError& e) {
            if (!options.module.empty()) throw;
            result.push_back({single.module, {}, e.what()});
        }
    }
    return result;
}

/// The class of the values as recipes have to match it, "Array<Image>"; "any" where all are taken.
std::string describeType(const Utils::TypeInfo& type)
{
    const std::string name = type.getName().str();
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name.compare(i, 2, "::") == 0) {
            const auto begin = text.find_last_of("<, ");
            text.erase(begin == std::string::npos ? 0 : begin + 1);
            ++i;
        } else {
            text += name[i];
        }
    }
    constexpr std::string_view shared = "COWPtr<";
    if (text.starts_with(shared)) text = text.substr(shared.size(), text.size() - shared.size() - 1);
    return text.empty() || text == "IValue" ? "any" : text;
}

}  // namespace

void showModules(const ModuleOptions& options, std::ostream& out)
{
    const PackageSet packages(options.packages);
    if (options.form == OutputForm::Json) {
        out << formatModuleJson(packages);
        return;
    }
    TextTable table({{"NAME"}, {"VERSION"}, {"DISPLAY NAME"}, {"PACKAGE", 40}, {"DESCRIPTION"}});
    for (const Package& package : packages.getPackages()) {
        for (const ModuleInfo& module : package.getManifest().modules) {
            table.addRow({module.name, module.objectVersion, module.displayName,
                          package.getFile().substr(package.getFile().rfind('/') + 1), module.shortDescription});
        }
    }
    out << table.toText(getTerminalWidth(STDOUT_FILENO));
}

void showParameters(const ModuleOptions& options, std::ostream& out)
{
    const PackageSet packages(options.packages);
    const auto modules = collectParameters(packages, options);
    switch (options.form) {
        case OutputForm::Text:
            out << formatParameterText(modules, getTerminalWidth(STDOUT_FILENO));
            break;
        case OutputForm::Json:
            out << formatParameterJson(modules);
            break;
        case OutputForm::Markdown:
            out << formatParameterMarkdown(modules);
            break;
    }
}

void showPins(const ModuleOptions& options, std::ostream& out)
{
    const PackageSet packages(options.packages);
    TextTable table({{"MODULE"}, {"PIN"}, {"DIRECTION"}, {"TYPE"}});
    for (const ModuleOptions& single : eachModule(packages, options)) {
        withNode(packages, single, [&](FreshNode& fresh) {
            for (const auto& pin : (*fresh).getInputDescriptors())
                table.addRow({single.module, pin.getName().str(), "input", describeType(pin.getType())});
            for (const auto& pin : (*fresh).getOutputDescriptors())
                table.addRow({single.module, pin.getName().str(), "output", describeType(pin.getType())});
        });
    }
    out << table.toText(getTerminalWidth(STDOUT_FILENO));
}

void showSettings(const ModuleOptions& options, std::ostream& out)
{
    const PackageSet packages(options.packages);
    withNode(packages, options, [&](FreshNode& fresh) { out << saveSettings(*fresh)->toText(); });
}

void showDescription(const ModuleOptions& options, std::ostream& out)
{
    const PackageSet packages(options.packages);
    withNode(packages, options,
             [&](FreshNode& fresh) { out << fresh.getMap(ownNodeMap).GetNodeMap()->GetDescriptionText(); });
}

}  // namespace Host
