#pragma once

#include <string>
#include <vector>

#include "parameters.h"

namespace Host {

/// The parameters of one module, or why a node of it cannot be made.
struct ModuleParameters
{
    std::string module;
    std::vector<ParameterRow> rows;
    std::string failure;
};

/// For a terminal of that width a paragraph per parameter; for `width` 0 a table, one parameter a line.
std::string formatParameterText(const std::vector<ModuleParameters>& modules, std::size_t width);
/// One table per category. The text depends on nothing but `modules`.
std::string formatParameterMarkdown(const std::vector<ModuleParameters>& modules);
/// {"schema": "stagelet-params/1", "modules": [{"module", "failure" or "parameters": [...]}]}
std::string formatParameterJson(const std::vector<ModuleParameters>& modules);

}  // namespace Host
