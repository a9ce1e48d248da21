#include "modulecommands.h"

#include <unistd.h>

#include <ostream>

#include "faults.h"
#include "hosterror.h"
#include "jsonbuild.h"
#include "packageset.h"
#include "parameterreport.h"
#include "recipe.h"
#include "runtime/resourcepool.h"
#include "texttable.h"

namespace Host {

using namespace Nivex::DataProcessing;
using Runtime::ModuleInfo;
using Runtime::Package;

namespace {

/// A node of one module, alone.
struct FreshNode
{
    std::shared_ptr<Core::IResourcePool> pool = std::make_shared<Runtime::ResourcePool>();
    Runtime::NodeHandle node;
    GenApi::CNodeMapRef map;

    FreshNode(const Package& package, const std::string& module) : node(package.createNode(module, pool))
    {
        const auto found = getNodeMap(*node, ownNodeMap);
        if (!found) GENICAM_THROW(RuntimeException, "The node map \"%s\" does not exist.", ownNodeMap);
        map = *found;
    }
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

ModuleParameters readParameters(const Package& package, const ModuleInfo& module, GenApi::EVisibility upTo)
{
    const FreshNode fresh(package, module.name);
    return {module, listParameters(fresh.map, upTo), {}};
}

std::vector<ModuleParameters> collectParameters(const PackageSet& packages, const ModuleOptions& options)
{
    std::vector<ModuleParameters> result;
    if (!options.module.empty()) {
        const Package& package = requirePackage(packages, options.module);
        try {
            result.push_back(readParameters(package, *package.findModule(options.module), options.visibility));
        } catch (...) {
            throw nodeNotMade(options.module);
        }
        return result;
    }
    for (const Package& package : packages.getPackages()) {
        for (const ModuleInfo& module : package.getManifest().modules) {
            try {
                result.push_back(readParameters(package, module, options.visibility));
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
        const FreshNode fresh(package, options.module);
        out << fresh.map.GetNodeMap()->GetDescriptionText();
    } catch (...) {
        throw nodeNotMade(options.module);
    }
}

void showDevices(const ModuleOptions& options, std::ostream& out)
{
    if (options.form == OutputForm::Json) {
        JsonObject root;
        add(root, "schema", std::string("stagelet-devices/1"));
        add(root, "devices", JsonArray());
        out << formatJson(JsonValue(std::move(root)));
    } else {
        out << TextTable({{"NAME"}, {"MODEL"}, {"SERIAL NUMBER"}, {"BACK END"}}).toText(0);
    }
}

}  // namespace Host
