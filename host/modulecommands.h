#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "genapi/types.h"

namespace Host {

enum class OutputForm
{
    Text,
    Json,
    Markdown
};

/// The commands that show what packages hold. All write to `out`, which the caller checks. `packages` are files,
/// as for PackageSet. An unknown module is a HostError (WrongCommandLine).
struct ModuleOptions
{
    std::vector<std::string> packages;
    std::string module;  ///< Empty: all of them (showParameters only).
    OutputForm form = OutputForm::Text;
    GenApi::EVisibility visibility = GenApi::Invisible;
};

void showModules(const ModuleOptions& options, std::ostream& out);
/// The module named must be able to make a node; of all modules, those that cannot are shown with the reason.
void showParameters(const ModuleOptions& options, std::ostream& out);
void showDescription(const ModuleOptions& options, std::ostream& out);
void showDevices(const ModuleOptions& options, std::ostream& out);

}  // namespace Host
