#include "packageset.h"

#include <filesystem>

#include "hosterror.h"

namespace Host {

using Nivex::DataProcessing::Runtime::Package;

namespace {

constexpr const char* ownPackage = "../lib/libNivexStageletPackageBase.so";

std::string getOwnPackageFile()
{
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    return (program.parent_path() / ownPackage).lexically_normal().string();
}

}  // namespace

PackageSet::PackageSet(std::vector<std::string> files)
{
    if (files.empty()) files.push_back(getOwnPackageFile());
    for (const std::string& file : files)
        load(file);
}

void PackageSet::load(const std::string& file)
{
    constexpr const char* what = "package not loaded";
    constexpr const char* advice = "name the right file with --package FILE";
    try {
        Package package(file);
        for (const auto& module : package.getManifest().modules) {
            if (const Package* other = findPackage(module.name)) {
                throw HostError(ExitCode::PackageNotLoaded, what, file,
                                "It has a module \"" + module.name + "\", as has \"" + other->getFile() + "\".",
                                "load one of the two only");
            }
        }
        packages_.push_back(package);
    } catch (const HostError&) {
        throw;
    } catch (...) {
        throw HostError(ExitCode::PackageNotLoaded, what, file, describeCurrentException(), advice);
    }
}

const Package* PackageSet::findPackage(const std::string& module) const
{
    for (const Package& package : packages_) {
        if (package.findModule(module)) return &package;
    }
    return nullptr;
}

std::vector<std::string> PackageSet::getModuleNames() const
{
    std::vector<std::string> names;
    for (const Package& package : packages_) {
        for (const auto& module : package.getManifest().modules)
            names.push_back(module.name);
    }
    return names;
}

}  // namespace Host
