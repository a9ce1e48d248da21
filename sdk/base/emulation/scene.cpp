#include "base/emulation/scene.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Nivex::Emulation {
namespace {

constexpr std::uint32_t fullScale = 0xFFFF;
// The belt: cells of equal size with one part each; it closes to a ring after `beltCells` of them.
constexpr std::uint32_t cellSize = 128;
constexpr std::uint32_t beltCells = 8;
constexpr std::uint32_t beltRows = cellSize * beltCells;
// Ramps repeat after 256 pixels, whose 8-bit values differ by 1 then.
constexpr std::uint32_t rampLength = 256;
constexpr std::uint32_t barWidth = 80;

/// The same number for the same place, and otherwise as good as random.
constexpr std::uint32_t scatter(std::uint32_t x, std::uint32_t y)
{
    std::uint32_t hash = x * 0x9E3779B1U ^ (y + 1) * 0x85EBCA77U;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6DU;
    return hash ^ hash >> 13;
}

constexpr Colour grey(std::uint32_t value)
{
    const auto level = static_cast<std::uint16_t>(std::min(value, fullScale));
    return {level, level, level};
}

constexpr Colour ramp(std::uint32_t position)
{
    return grey(position % rampLength * 257);
}

/// How much of a pixel lies within the part of its cell, 0 to 1: a disc, or a square in a few cells.
float coverage(std::uint32_t x, std::uint32_t row, std::uint32_t look, bool mayBeSquare)
{
    const float radius = 20.0F + static_cast<float>(look % 24);
    const auto middle = [&](unsigned bits) { return 48.0F + static_cast<float>(look >> bits & 31U); };
    const float dx = std::abs(static_cast<float>(x % cellSize) - middle(8));
    const float dy = std::abs(static_cast<float>(row % cellSize) - middle(14));
    const bool square = mayBeSquare && (look >> 20 & 3U) == 0;
    const float distance = square ? std::max(dx, dy) : std::sqrt(dx * dx + dy * dy);
    return std::clamp(radius - distance, 0.0F, 1.0F);
}

std::uint16_t blend(std::uint16_t below, std::uint16_t above, float share)
{
    return static_cast<std::uint16_t>(static_cast<float>(below) +
                                      share * (static_cast<float>(above) - static_cast<float>(below)));
}

Colour blend(Colour below, Colour above, float share)
{
    return {blend(below.red, above.red, share), blend(below.green, above.green, share),
            blend(below.blue, above.blue, share)};
}

std::uint32_t lookOfCell(std::uint32_t x, std::uint32_t row)
{
    return scatter(x / cellSize, row / cellSize % beltCells);
}

Colour colouredParts(std::uint32_t x, std::uint32_t row)
{
    constexpr Colour palette[] = {{60000, 14000, 12000}, {12000, 48000, 18000}, {14000, 24000, 60000},
                                  {62000, 52000, 10000}, {9000, 9000, 9000},    {58000, 58000, 58000}};
    const std::uint32_t look = lookOfCell(x, row);
    const std::uint32_t shade = std::min(x % 1024, 1023 - x % 1024);  // brighter and darker again
    const std::uint32_t texture = 20000 + shade * 16 + scatter(x, row) % 1536;
    const Colour belt = {static_cast<std::uint16_t>(texture), static_cast<std::uint16_t>(texture),
                         static_cast<std::uint16_t>(texture + 3000)};
    return blend(belt, palette[(look >> 24) % std::size(palette)], coverage(x, row, look, true));
}

Colour blobs(std::uint32_t x, std::uint32_t row)
{
    const std::uint32_t look = lookOfCell(x, row);
    const Colour part = grey((look >> 24 & 1U) != 0 ? 58000 : 7000);
    return blend(grey(30000 + scatter(x, row) % 1024), part, coverage(x, row, look, false));
}

Colour black(std::uint32_t, std::uint32_t)
{
    return grey(0);
}

Colour white(std::uint32_t, std::uint32_t)
{
    return grey(fullScale);
}

Colour horizontalRamp(std::uint32_t x, std::uint32_t)
{
    return ramp(x);
}

Colour verticalRamp(std::uint32_t, std::uint32_t row)
{
    return ramp(row);
}

// Each pair of rows is the ramp of one frame.
Colour shiftedRamp(std::uint32_t x, std::uint32_t row)
{
    return ramp(x + row / 2 * 2);
}

Colour diagonalRamp(std::uint32_t x, std::uint32_t row)
{
    return ramp(x + row);
}

Colour colourBar(std::uint32_t x, std::uint32_t)
{
    const std::uint32_t bar = 7 - x / barWidth % 8;
    const auto level = [&](std::uint32_t bit) {
        return static_cast<std::uint16_t>((bar & bit) != 0 ? fullScale : 0);
    };
    return {level(2), level(4), level(1)};
}

using enum ETestPattern;

// Columns: pattern, rows, step, scrolls, sees light, colour.
constexpr Scene scenes[] = {
    {Off, beltRows, 2, true, true, colouredParts},
    {Blobs, beltRows, 2, true, true, blobs},
    {Black, 2, 0, false, false, black},
    {White, 2, 0, false, false, white},
    {GreyHorizontalRamp, 2, 0, false, false, horizontalRamp},
    {GreyVerticalRamp, rampLength, 0, true, false, verticalRamp},
    {GreyHorizontalRampMoving, rampLength, 2, false, false, shiftedRamp},
    {GreyVerticalRampMoving, rampLength, 2, true, false, verticalRamp},
    {GreyDiagonalRampMoving, rampLength, 2, true, false, diagonalRamp},
    {ColorBar, 2, 0, false, false, colourBar},
};

}  // namespace

const Scene& sceneOf(ETestPattern pattern)
{
    const auto* const row = std::ranges::find(scenes, pattern, &Scene::pattern);
    return row != std::end(scenes) ? *row : scenes[0];
}

}  // namespace Nivex::Emulation
