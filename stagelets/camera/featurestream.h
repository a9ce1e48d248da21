#pragma once

#include <cstddef>
#include <string_view>

#include "gcbase/gcstring.h"

// Feature-stream text as people write it. All here takes time in proportion to the text and no stack, unlike
// regular expressions of the standard library, so texts of any size may come.

namespace Plugin::NivexStageletPackageBase {

/// The comment that tells the format, without a line end.
inline constexpr std::string_view featureStreamHeader = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}";

/// What one line is. A line is looked at in this order.
enum class FeatureLineKind
{
    Comment,     ///< `\s*#` at its start.
    Assignment,  ///< `Name = Value`: `^([a-zA-Z0-9]+)(\s*=\s*)`.
    Feature,     ///< `Name<tab>Value`: `[a-zA-Z]+[\t]` anywhere, or `^[a-zA-Z0-9]+\t`.
    Invalid
};

struct FeatureLine
{
    FeatureLineKind kind;
    // Of an assignment only:
    std::size_t nameLength = 0;
    std::size_t valueStart = 0;  ///< The first character behind the separator.
};

/// @param line comes without its line feed; a carriage return at its end belongs to the value.
FeatureLine classifyFeatureLine(std::string_view line);

struct FeatureStream
{
    GenICam::gcstring text;
    /// The first line of what was given, from 1, that is neither comment nor feature, maybe a blank one; `text` is
    /// empty then. 0 if there is none.
    std::size_t invalidLine = 0;
};

/// The text with a tab in place of each ` = ` and the header as its first line if it stands nowhere in it;
/// everything else as given. An empty text stays empty.
FeatureStream normaliseFeatureStream(std::string_view text);

}  // namespace Plugin::NivexStageletPackageBase
