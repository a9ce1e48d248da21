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
                    "No package has it." + suggest(module, packages.getModuleNames()), "stagelet modules");
}

HostError nodeNotMade(const std::string& module)
{
    return HostError(ExitCode::RunFailed, "node not made", module, describeCurrentException(),
                     "stagelet modules, for the modules there are");
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

ModuleParameters readParameters(const Package& package, const ModuleInfo& module, const ModuleOptions& options)
{
    FreshNode fresh(package, module.name, options.emulatedCameras);
    return {module, listParameters(fresh.getMap(options.map), options.visibility), {}};
}

std::vector<ModuleParameters> collectParameters(const PackageSet& packages, const ModuleOptions& options)
{
    std::vector<ModuleParameters> result;
    if (!options.module.empty()) {
        const Package& package = requirePackage(packages, options.module);
        try {
            result.push_back(readParameters(package, *package.findModule(options.module), options));
        } catch (const HostError&) {
            throw;
        } catch (...) {
            throw nodeNotMade(options.module);
        }
        return result;
    }
    for (const Package& package : packages.getPackages()) {
        for (const ModuleInfo& module : package.getManifest().modules) {
            try {
                result.push_back(readParameters(package, module, options));
            } catch (...) {
                result.push_back(
                    {module, {}, "A node of this module cannot be made: " + describeCurrentException()});
            }
        }
    }
    return result;
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
            out << formatParameterTable(modules, getTerminalWidth(STDOUT_FILENO));
            break;
        case OutputForm::Json:
            out << formatParameterJson(modules);
            break;
        case OutputForm::Markdown:
            out << formatParameterMarkdown(modules);
            break;
    }
}

void showDescription(const ModuleOptions& options, std::ostream& out)
{
    const PackageSet packages(options.packages);
    const Package& package = requirePackage(packages, options.module);
    try {
        FreshNode fresh(package, options.module);
        out << fresh.getMap(ownNodeMap).GetNodeMap()->GetDescriptionText();
    } catch (const HostError&) {
        throw;
    } catch (...) {
        throw nodeNotMade(options.module);
    }
}

}  // namespace Host
