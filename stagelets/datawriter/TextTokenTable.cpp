#include "datawriter/TextTokenTable.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Plugin::NivexStageletPackageBase {

namespace {

constexpr std::array<const char*, 64> tokenTexts = {
    "\\n",
    "\\t",
    "\\\\",
    "\\{",
    "\\}",
    "{Default}",
    "{Center_X}",
    "{Center_Y}",
    "{Radius}",
    "{Radius1}",
    "{Radius2}",
    "{Rotation}",
    "{RotationDeg}",
    "{PointA_X}",
    "{PointA_Y}",
    "{PointB_X}",
    "{PointB_Y}",
    "{X}",
    "{Y}",
    "{Width}",
    "{Height}",
    "{ReferenceSize_Width}",
    "{ReferenceSize_Height}",
    "{BoundingBox_TopLeftX}",
    "{BoundingBox_TopLeftY}",
    "{BoundingBox_Width}",
    "{BoundingBox_Height}",
    "{PixelFormat}",
    "{LinePadding}",
    "{ArrayIndex}",
    "{ArraySize}",
    "{RecordIndex}",
    "{UpdateIndex}",
    "{SessionIndex}",
    "{PinIndex}",
    "{MediaWriterIndex}",
    "{ErrorMessage}",
    "{ErrorMessageRecursive}",
    "{HasError}",
    "{HasErrorRecursive}",
    "{_Year_}",
    "{_Month_}",
    "{_Day_}",
    "{_Hour_}",
    "{_Minute_}",
    "{_Second_}",
    "{_Millisecond_}",
    "{_Precision_}",
    "{_Width_}",
    "{_Fill_}",
    "{_Fixed_}",
    "{_Scientific_}",
    "{_Hex_}",
    "{_Dec_}",
    "{_Oct_}",
    "{_Left_}",
    "{_Right_}",
    "{_Internal_}",
    "{_ShowPos_}",
    "{_ShowPoint_}",
    "{_UpperCase_}",
    "{_NoUpperCase_}",
    "{_BoolAlpha_}",
    "{_NoBoolAlpha_}",
};
static_assert(tokenTexts.size() == static_cast<std::size_t>(TextToken::NoBoolAlpha) + 1);

/// The child of that character; the end if there is none.
template <typename Nodes>
auto childOf(Nodes& nodes, char character)
{
    return std::find_if(nodes.begin(), nodes.end(),
                        [character](const auto& node) { return node.character == character; });
}

}  // namespace

TextTokenTable::TextTokenTable()
{
    for (std::size_t id = 0; id < tokenTexts.size(); ++id)
        addToken(tokenTexts[id], static_cast<std::int32_t>(id));
}

void TextTokenTable::addToken(const char* text, std::int32_t id)
{
    if (!text) throw std::invalid_argument("Failed to add token. The token string is null.");
    if (!*text) throw std::invalid_argument("Failed to add token. The token string is empty.");
    if (id == none) throw std::invalid_argument("Failed to add token. Its token id is invalid.");
    beginsToken_[static_cast<unsigned char>(*text)] = true;
    std::vector<Node>* level = &root_;
    std::int32_t* place = nullptr;
    for (; *text; ++text) {
        auto child = childOf(*level, *text);
        if (child == level->end()) child = level->insert(level->end(), Node{*text});
        place = &child->id;
        level = &child->children;
    }
    if (*place != none) throw std::invalid_argument("Failed to add token. It has already been added.");
    *place = id;
}

TextTokenTable::Match TextTokenTable::matchAt(const char* begin) const
{
    Match longest;
    const std::vector<Node>* level = &root_;
    for (const char* position = begin; *position; ++position) {
        const auto child = childOf(*level, *position);
        if (child == level->end()) break;
        if (child->id != none) longest = {child->id, begin, position + 1};
        level = &child->children;
    }
    return longest;
}

TextTokenTable::Match TextTokenTable::find(const char* text) const
{
    for (; *text; ++text) {
        if (!beginsToken_[static_cast<unsigned char>(*text)]) continue;
        if (const Match match = matchAt(text)) return match;
    }
    return {};
}

}  // namespace Plugin::NivexStageletPackageBase
