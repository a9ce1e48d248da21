#include "datawriter/NameRendering.h"

#include <algorithm>
#include <locale>
#include <sstream>

#include "datawriter/TextFormatter.h"

namespace Plugin::NivexStageletPackageBase {

std::string sanitizeFileName(std::string_view text)
{
    constexpr std::string_view refused = "\\/:*?\"<>|";
    std::string name(text);
    std::replace_if(
        name.begin(), name.end(),
        [refused](char character) { return refused.find(character) != std::string_view::npos; }, '_');
    return name;
}

std::string renderName(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                       const WriterIndices& indices)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    formatStructuralText(tokens, templateText, time, stream, indices);
    return sanitizeFileName(stream.str());
}

}  // namespace Plugin::NivexStageletPackageBase
