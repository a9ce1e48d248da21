#pragma once

#include <memory>
#include <string>
#include <vector>

#include "runtime/package.h"

namespace Host {

/// The packages whose modules the command knows.
class PackageSet
{
public:
    /// Loads the files; the package beside the program (in ../lib) if none is given. Raises HostError
    /// (PackageNotLoaded) that names file and cause, also if two packages have a module of the same name.
    explicit PackageSet(std::vector<std::string> files);

    const std::vector<Nivex::DataProcessing::Runtime::Package>& getPackages() const { return packages_; }
    /// Null if no package has it.
    const Nivex::DataProcessing::Runtime::Package* findPackage(const std::string& module) const;
    std::vector<std::string> getModuleNames() const;

private:
    void load(const std::string& file);

    std::vector<Nivex::DataProcessing::Runtime::Package> packages_;
};

}  // namespace Host
