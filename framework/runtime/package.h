#pragma once

#include <memory>
#include <string>

#include "core/iresourcepool.h"
#include "runtime/graph.h"
#include "runtime/packagemanifest.h"

namespace Nivex::DataProcessing::Runtime {

/// A loaded package: one shared library with modules behind C entry points (core/packageentrypoints.h). The
/// library stays loaded as long as a copy of the Package or a node made by one lives, and is then really unloaded.
/// Any thread may use it.
class GENICAM_API Package
{
public:
    /// Loads the library and reads its manifest. Raises RuntimeException that names file and cause: no such file
    /// or no library, entry points that are missing (those of a module too), another interface version, a manifest
    /// that is not in order (see parseManifest).
    explicit Package(const std::string& file);
    ~Package();
    Package(const Package&) noexcept;
    Package& operator=(const Package&) noexcept;

    const std::string& getFile() const;
    const PackageManifest& getManifest() const;
    /// The manifest as the package gave it.
    const std::string& getManifestText() const;
    /// Null if the package has no such module.
    const ModuleInfo* findModule(const std::string& name) const;

    /// A new node. Raises InvalidArgumentException for an unknown module; what the node's constructor raises
    /// passes unchanged.
    NodeHandle createNode(const std::string& module, const std::shared_ptr<Core::IResourcePool>& pool) const;

private:
    struct Library;
    std::shared_ptr<const Library> library_;
};

}  // namespace Nivex::DataProcessing::Runtime
