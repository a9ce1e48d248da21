#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Runtime {

/// One module of a package: a kind of node.
struct ModuleInfo
{
    std::string name;  ///< Also the ending of its entry points; letters, digits and '_'.
    std::string uuid;
    std::string objectVersion;
    std::string minRequiredSoftwareVersion;
    std::string minRequiredFileVersion;
    std::string interfaceType;
    std::string displayName;
    std::vector<std::string> tags;
    std::string shortDescription;
    std::string detailedDescription;  ///< An HTML fragment.
    std::vector<std::string> supportedUuids;
    std::string hasDynamicInfo;
};

/// What a package says about itself.
struct PackageManifest
{
    std::string version;
    std::string vendor;
    std::string copyright;
    std::string license;
    std::vector<ModuleInfo> modules;
};

/// Reads the manifest, strict JSON. Further keys are allowed. Raises RuntimeException that names every fault with
/// its line and column: keys that are missing or of a wrong type, a name that is no identifier or is given twice,
/// a UUID of another form than 8-4-4-4-12 lowercase hexadecimal digits, another InterfaceType than "Native".
GENICAM_API PackageManifest parseManifest(std::string_view text);

}  // namespace Nivex::DataProcessing::Runtime
