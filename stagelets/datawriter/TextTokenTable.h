#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Plugin::NivexStageletPackageBase {

/// What a token of the template language stands for. The values are the token ids, in the order of the table.
enum class TextToken : std::int32_t
{
    // Escapes
    NewLine,
    Tab,
    Backslash,
    OpeningBrace,
    ClosingBrace,
    // Data
    Default,
    Center_X,
    Center_Y,
    Radius,
    Radius1,
    Radius2,
    Rotation,
    RotationDeg,
    PointA_X,
    PointA_Y,
    PointB_X,
    PointB_Y,
    X,
    Y,
    Width,
    Height,
    ReferenceSize_Width,
    ReferenceSize_Height,
    BoundingBox_TopLeftX,
    BoundingBox_TopLeftY,
    BoundingBox_Width,
    BoundingBox_Height,
    PixelFormat,
    LinePadding,
    // Indices
    ArrayIndex,
    ArraySize,
    RecordIndex,
    UpdateIndex,
    SessionIndex,
    PinIndex,
    MediaWriterIndex,
    // Errors
    ErrorMessage,
    ErrorMessageRecursive,
    HasError,
    HasErrorRecursive,
    // Time
    Year,
    Month,
    Day,
    Hour,
    Minute,
    Second,
    Millisecond,
    // Stream; the first three take an argument
    Precision,
    FieldWidth,
    Fill,
    Fixed,
    Scientific,
    Hex,
    Dec,
    Oct,
    Left,
    Right,
    Internal,
    ShowPos,
    ShowPoint,
    UpperCase,
    NoUpperCase,
    BoolAlpha,
    NoBoolAlpha
};

/// Finds tokens in a template, the leftmost first, and of those that begin at one place the longest. A trie, never
/// changed after it was built, so that any number of threads may search it.
class TextTokenTable
{
public:
    struct Match
    {
        std::int32_t id = none;
        const char* begin = nullptr;
        const char* end = nullptr;  ///< Behind the token.

        explicit operator bool() const { return id != none; }
        TextToken token() const { return static_cast<TextToken>(id); }
        std::string_view text() const { return {begin, static_cast<std::size_t>(end - begin)}; }
    };

    static constexpr std::int32_t none = -1;

    /// A table of all tokens of the language.
    TextTokenTable();

    /// Raises std::invalid_argument for a null or empty text, the id -1, or a text that the table has.
    void addToken(const char* text, std::int32_t id);

    /// The first token in a text that ends in a zero byte; an empty match if there is none.
    Match find(const char* text) const;

private:
    struct Node
    {
        char character;
        std::int32_t id = none;
        std::vector<Node> children{};
    };

    Match matchAt(const char* begin) const;

    std::vector<Node> root_;
    std::array<bool, 256> beginsToken_{};  ///< By character; spares most of a template the way into the trie.
};

}  // namespace Plugin::NivexStageletPackageBase
