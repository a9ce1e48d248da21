#include "camera/featurestream.h"

#include <algorithm>
#include <string>

#include "camera/characters.h"

namespace Plugin::NivexStageletPackageBase {

using namespace Characters;

namespace {

bool isAt(std::string_view line, std::size_t position, char c)
{
    return position < line.size() && line[position] == c;
}

/// Also a name with other characters in it counts, such as an underscore, if it ends in a letter.
bool isFeature(std::string_view line, std::size_t nameLength)
{
    if (nameLength > 0 && isAt(line, nameLength, '\t')) return true;
    const auto isEnd = [](char letter, char tab) { return isLetter(letter) && tab == '\t'; };
    return std::adjacent_find(line.begin(), line.end(), isEnd) != line.end();
}

}  // namespace

FeatureLine classifyFeatureLine(std::string_view line)
{
    if (isAt(line, endOfRun(line, 0, isSpace), '#')) return {FeatureLineKind::Comment};
    const std::size_t nameLength = endOfRun(line, 0, isAlnum);
    const std::size_t separator = endOfRun(line, nameLength, isSpace);
    if (nameLength > 0 && isAt(line, separator, '=')) {
        return {FeatureLineKind::Assignment, nameLength, endOfRun(line, separator + 1, isSpace)};
    }
    return {isFeature(line, nameLength) ? FeatureLineKind::Feature : FeatureLineKind::Invalid};
}

FeatureStream normaliseFeatureStream(std::string_view text)
{
    std::string body;
    body.reserve(text.size() + featureStreamHeader.size() + 1);
    if (!text.empty() && text.find(featureStreamHeader) == std::string_view::npos)
        body.append(featureStreamHeader).append(1, '\n');
    std::size_t number = 1;
    for (std::string_view rest = text; !rest.empty(); ++number) {
        const std::size_t length = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, length);
        const FeatureLine found = classifyFeatureLine(line);
        switch (found.kind) {
            case FeatureLineKind::Invalid:
                return {.text = {}, .invalidLine = number};
            case FeatureLineKind::Assignment:
                body.append(line.substr(0, found.nameLength))
                    .append(1, '\t')
                    .append(line.substr(found.valueStart));
                break;
            case FeatureLineKind::Comment:
            case FeatureLineKind::Feature:
                body.append(line);
                break;
        }
        rest.remove_prefix(length);
        if (rest.empty()) break;
        body.append(1, '\n');
        rest.remove_prefix(1);
    }
    return {.text = GenICam::gcstring(std::move(body))};
}

}  // namespace Plugin::NivexStageletPackageBase
