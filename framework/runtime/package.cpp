#include "runtime/package.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "gcbase/exception.h"

#include "core/packageentrypoints.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

namespace Entry = Core::Package;

struct EntryPoints
{
    Entry::CreateNode create;
    Entry::DestroyNode destroy;
};

[[noreturn]] void refuse(const std::string& file, const std::string& cause)
{
    GENICAM_THROW(RuntimeException, "The package \"%s\" cannot be loaded: %s", file.c_str(), cause.c_str());
}

struct CloseLibrary
{
    void operator()(void* handle) const { dlclose(handle); }
};
using LibraryHandle = std::unique_ptr<void, CloseLibrary>;

LibraryHandle openLibrary(const std::string& file)
{
    // A path, so that the loader does not search its own folders.
    std::error_code error;
    const std::string path = std::filesystem::absolute(file, error).string();
    if (error) refuse(file, error.message());
    LibraryHandle handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!handle) {
        const char* told = dlerror();  // NOLINT(concurrency-mt-unsafe): per thread in the platform's C library
        const std::string cause = told ? told : "unknown cause";
        refuse(file, cause.starts_with(path + ": ") ? cause.substr(path.size() + 2) : cause);
    }
    return handle;
}

}  // namespace

struct Package::Library
{
    std::string file;
    LibraryHandle handle;
    std::string manifestText;
    PackageManifest manifest;
    std::map<std::string, EntryPoints> entryPoints;

    explicit Library(const std::string& path) : file(path), handle(openLibrary(path))
    {
        checkVersion();
        readManifest();
        for (const ModuleInfo& module : manifest.modules) {
            entryPoints[module.name] = {getEntryPoint<Entry::CreateNode>(Entry::createNodePrefix + module.name),
                                        getEntryPoint<Entry::DestroyNode>(Entry::destroyNodePrefix + module.name)};
        }
    }

    template <typename Function>
    Function getEntryPoint(const std::string& name) const
    {
        void* symbol = dlsym(handle.get(), name.c_str());
        if (!symbol) refuse(file, "It has no entry point \"" + name + "\".");
        return reinterpret_cast<Function>(symbol);
    }

    void checkVersion() const
    {
        const int version = getEntryPoint<Entry::GetInterfaceVersion>(Entry::getInterfaceVersionName)();
        if (version != Entry::interfaceVersion) {
            refuse(file, "Its interface version is " + std::to_string(version) + "; this host speaks version " +
                             std::to_string(Entry::interfaceVersion) + ".");
        }
    }

    void readManifest()
    {
        const auto createStaticInfo = getEntryPoint<Entry::CreateInfo>(Entry::createStaticInfoName);
        const auto destroyInfo = getEntryPoint<Entry::DestroyInfo>(Entry::destroyInfoName);
        char* info = createStaticInfo();
        if (info) manifestText = info;
        destroyInfo(&info);
        try {
            manifest = parseManifest(manifestText);
        } catch (const GenICam::GenericException& e) {
            refuse(file, std::string("Its manifest is not in order: ") + e.GetDescription());
        }
    }
};

Package::Package(const std::string& file) : library_(std::make_shared<const Library>(file)) {}
Package::~Package() = default;
Package::Package(const Package&) noexcept = default;
Package& Package::operator=(const Package&) noexcept = default;

const std::string& Package::getFile() const
{
    return library_->file;
}

const PackageManifest& Package::getManifest() const
{
    return library_->manifest;
}

const std::string& Package::getManifestText() const
{
    return library_->manifestText;
}

const ModuleInfo* Package::findModule(const std::string& name) const
{
    const auto& modules = library_->manifest.modules;
    const auto found = std::find_if(modules.begin(), modules.end(), [&](const auto& m) { return m.name == name; });
    return found == modules.end() ? nullptr : &*found;
}

NodeHandle Package::createNode(const std::string& module, const std::shared_ptr<Core::IResourcePool>& pool) const
{
    const auto found = library_->entryPoints.find(module);
    if (found == library_->entryPoints.end()) {
        GENICAM_THROW(InvalidArgumentException, "The package \"%s\" has no module \"%s\".", library_->file.c_str(),
                      module.c_str());
    }
    const EntryPoints entries = found->second;
    // The deleter holds the library, and is itself code of this one.
    return NodeHandle(entries.create(pool),
                      [library = library_, destroy = entries.destroy](Core::NodeBase* node) { destroy(node); });
}

}  // namespace Nivex::DataProcessing::Runtime
