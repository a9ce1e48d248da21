#pragma once

#include <string>
#include <string_view>

#include "datawriter/TextTokenTable.h"
#include "datawriter/TimeSnapshot.h"
#include "datawriter/WriterIndices.h"

namespace Plugin::NivexStageletPackageBase {

/// The text with "_" in place of each backslash, "/", ":", "*", "?", double quote, "<", ">" and "|".
std::string sanitizeFileName(std::string_view text);

/// The name of one file or folder that a template gives, sanitised. It may be empty, "." or "..".
std::string renderName(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                       const WriterIndices& indices);

}  // namespace Plugin::NivexStageletPackageBase
