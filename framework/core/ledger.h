#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Nivex::DataProcessing::Core {

/// Why something that was offered did not end recorded.
enum class LossCause : std::uint8_t
{
    NoSpace,           ///< The source got no space for an update that it had in hand, as the recipe stopped.
    SourceFailed,      ///< The source gave up an update after a failure.
    LoadFailed,        ///< An image file could not be read.
    GrabFailed,        ///< The camera delivered a failed result.
    FramesMissed,      ///< The camera's frame numbers show a gap.
    EventsMissed,      ///< The camera, or its driver, had no room for events.
    InvalidInput,      ///< A node got an erroneous value and could do nothing with it.
    ConversionFailed,  ///< An image could not be converted.
    NodeFailed,        ///< A node's step ended with an exception.
    NoSession,         ///< The writer has no session folder to write into.
    FileNotWritten,    ///< A file or folder could not be written.
    EncoderFailed,     ///< The video encoder refused.
    Unsupported,       ///< The writer cannot write a value of this kind.
    RefusedByRule,     ///< No period and no trigger asked for a record. Counts only if nothing was recorded.
};

/// The causes' names in statistics, in the enumeration's order.
inline constexpr std::array<std::string_view, 14> lossCauseNames = {
    "no_space",         "source_failed",  "load_failed",       "grab_failed",    "frames_missed",
    "events_missed",    "invalid_input",  "conversion_failed", "node_failed",    "no_session",
    "file_not_written", "encoder_failed", "unsupported",       "refused_by_rule"};

inline constexpr std::size_t lossCauseCount = lossCauseNames.size();

/// Losses by cause.
using LossCounts = std::array<std::uint64_t, lossCauseCount>;

}  // namespace Nivex::DataProcessing::Core
