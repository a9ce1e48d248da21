#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "genapi/types.h"

#include "recipe.h"

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
    std::string module;  ///< Empty: all of them (showParameters and showPins only).
    OutputForm form = OutputForm::Text;
    GenApi::EVisibility visibility = GenApi::Invisible;
    std::string map = ownNodeMap;  ///< Which of the module's node maps (showParameters only).
    std::size_t emulatedCameras = 0;
};

void showModules(const ModuleOptions& options, std::ostream& out);
/// The module named must be able to make a node; of all modules, those that cannot are shown with the reason. For
/// a map that a fresh node does not have, its resources are allocated.
void showParameters(const ModuleOptions& options, std::ostream& out);
/// The pins of a fresh node, with the classes of their values. Parameters may add further ones.
void showPins(const ModuleOptions& options, std::ostream& out);
/// The settings of a fresh node, as they stand in a recipe.
void showSettings(const ModuleOptions& options, std::ostream& out);
void showDescription(const ModuleOptions& options, std::ostream& out);

}  // namespace Host
