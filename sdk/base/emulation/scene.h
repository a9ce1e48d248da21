#pragma once

#include <cstddef>
#include <cstdint>

#include "base/emulation/feature.h"

namespace Nivex::Emulation {

/// Light that falls on a pixel, full scale 65535.
struct Colour
{
    std::uint16_t red;
    std::uint16_t green;
    std::uint16_t blue;
};

/// Entries of the feature TestPattern.
enum class ETestPattern : std::int64_t
{
    Off,
    Blobs,
    Black,
    White,
    GreyHorizontalRamp,
    GreyVerticalRamp,
    GreyHorizontalRampMoving,
    GreyVerticalRampMoving,
    GreyDiagonalRampMoving,
    ColorBar
};

/// One picture in motion. Its rows stand in a table of `rows` rows, of which a frame shows a stretch:
/// frame n begins with row `n * step`, and either scrolls on through the table, which closes to a ring, or repeats
/// the two rows there. All counts are even, so that colour filters of two rows keep their order.
struct Scene
{
    ETestPattern pattern;
    std::uint32_t rows;
    std::uint32_t step;
    bool scrolls;
    bool seesLight;  ///< Exposure, gain and black level change it.
    Colour (*colour)(std::uint32_t x, std::uint32_t row);
};

/// The row of a pattern; the first for a value that is none.
const Scene& sceneOf(ETestPattern pattern);

inline constexpr Choice testPatternChoices[] = {
    {"Off", static_cast<std::int64_t>(ETestPattern::Off), "Coloured parts on a belt that moves."},
    {"Blobs", static_cast<std::int64_t>(ETestPattern::Blobs), "Bright and dark discs on a grey belt that moves."},
    {"Black", static_cast<std::int64_t>(ETestPattern::Black), "All black."},
    {"White", static_cast<std::int64_t>(ETestPattern::White), "All white."},
    {"GreyHorizontalRamp", static_cast<std::int64_t>(ETestPattern::GreyHorizontalRamp), "From left to right."},
    {"GreyVerticalRamp", static_cast<std::int64_t>(ETestPattern::GreyVerticalRamp), "From top to bottom."},
    {"GreyHorizontalRampMoving", static_cast<std::int64_t>(ETestPattern::GreyHorizontalRampMoving),
     "Moves to the left."},
    {"GreyVerticalRampMoving", static_cast<std::int64_t>(ETestPattern::GreyVerticalRampMoving), "Moves upwards."},
    {"GreyDiagonalRampMoving", static_cast<std::int64_t>(ETestPattern::GreyDiagonalRampMoving),
     "Moves to the upper left."},
    {"ColorBar", static_cast<std::int64_t>(ETestPattern::ColorBar),
     "White, yellow, cyan, green, magenta, red, blue, black."},
};

}  // namespace Nivex::Emulation
