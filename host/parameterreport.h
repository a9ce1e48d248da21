#pragma once

#include <string>
#include <vector>

#include "parameters.h"
#include "runtime/packagemanifest.h"

namespace Host {

/// The parameters of one module, or why a node of it cannot be made.
struct ModuleParameters
{
    Nivex::DataProcessing::Runtime::ModuleInfo module;
    std::vector<ParameterRow> rows;
    std::string failure;
};

/// Aligned columns; `width` as for TextTable.
std::string formatParameterTable(const std::vector<ModuleParameters>& modules, std::size_t width);
/// One table per category. The text depends on nothing but `modules`.
std::string formatParameterMarkdown(const std::vector<ModuleParameters>& modules);
/// {"schema": "stagelet-params/1", "modules": [{"module", "failure" or "parameters": [...]}]}
std::string formatParameterJson(const std::vector<ModuleParameters>& modules);

}  // namespace Host
