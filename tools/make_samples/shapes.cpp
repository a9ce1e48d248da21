#include "make_samples/shapes.h"

#include <array>
#include <string>
#include <string_view>

namespace Samples {

namespace {

constexpr double pi = std::numbers::pi;
constexpr Vec3 steel = {0.62, 0.64, 0.67};
constexpr Vec3 zinc = {0.70, 0.69, 0.62};
constexpr Vec3 rust = {0.30, 0.11, 0.035};
constexpr Vec3 paper = {0.80, 0.79, 0.74};
constexpr Vec3 ink = {0.025, 0.025, 0.03};

/// The tilt of an edge that is rounded off over `width` inside the outline.
Vec3 bevelNormal(const std::function<double(Vec2)>& distance, Vec2 p, double width)
{
    constexpr double step = 0.05;
    const double d = distance(p);
    const double tilt = 1.3 * smoothstep(-width, 0, d);
    const double dx = (distance({p.x + step, p.y}) - d) / step;
    const double dy = (distance({p.x, p.y + step}) - d) / step;
    return normalized({dx * tilt, dy * tilt, 1});
}

Vec2 around(Vec2 p)
{
    const double r = std::max(length(p), 1e-6);
    return {-p.y / r, p.x / r};
}

/// Rows of 5 bits, the highest to the left.
struct Glyph
{
    char character;
    std::array<std::uint8_t, 7> rows;
};

constexpr Glyph glyphs[] = {
    {'0', {14, 17, 19, 21, 25, 17, 14}}, {'1', {4, 12, 4, 4, 4, 4, 14}},      {'2', {14, 17, 1, 6, 8, 16, 31}},
    {'3', {30, 1, 1, 14, 1, 1, 30}},     {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},
    {'6', {6, 8, 16, 30, 17, 17, 14}},   {'7', {31, 1, 2, 4, 8, 8, 8}},       {'8', {14, 17, 17, 14, 17, 17, 14}},
    {'9', {14, 17, 17, 15, 1, 2, 12}},   {'L', {16, 16, 16, 16, 16, 16, 31}}, {'O', {14, 17, 17, 17, 17, 17, 14}},
    {'T', {31, 4, 4, 4, 4, 4, 4}},
};

bool isInked(std::string_view text, double size, Vec2 p)
{
    const double column = p.x / size;
    const double row = p.y / size;
    if (column < 0 || row < 0 || row >= 7) return false;
    const auto place = static_cast<std::size_t>(column / 6);
    const int inGlyph = static_cast<int>(column) % 6;
    if (place >= text.size() || inGlyph == 5) return false;
    for (const Glyph& glyph : glyphs) {
        if (glyph.character == text[place]) return glyph.rows[static_cast<std::size_t>(row)] >> (4 - inGlyph) & 1;
    }
    return false;
}

}  // namespace

Shape makeWasher(double radius, bool isCracked)
{
    const double hole = radius * 0.52;
    const auto distance = [=](Vec2 p) {
        const double r = length(p);
        double d = std::max(r - radius, hole - r);
        if (isCracked) {
            const double jag = 1.6 * noise(p.x * 0.6, 0, 1000, 5) - 0.8;
            d = std::max(d, -boxDistance({p.x - radius * 0.75, p.y + jag}, {radius * 0.45, 1.0}, 0));
        }
        return d;
    };
    const auto surface = [=](Vec2 p) {
        const double grain = 0.9 + 0.2 * noise(length(p) * 3, std::atan2(p.y, p.x) * 2, 100000, 7);
        Surface s = {steel * grain, bevelNormal(distance, p, 1.8), 1, 0, {}};
        if (s.normal.z > 0.97) s.brushing = around(p);
        return s;
    };
    return {radius, 4, distance, surface};
}

Shape makeNut(bool isRusty)
{
    constexpr double inner = 15;
    constexpr double hole = 8.2;
    const auto distance = [](Vec2 p) { return std::max(polygonDistance(p, 6, inner), hole - 2 - length(p)); };
    const auto surface = [=](Vec2 p) {
        const double r = length(p);
        Surface s = {zinc, {0, 0, 1}, 1, 0, {}};
        if (r < hole) {  // The uppermost turn of the thread, falling inwards.
            const double fall = 1.4 + 0.6 * std::sin(r * 5 + std::atan2(p.y, p.x));
            s.normal = normalized({-p.x / r * fall, -p.y / r * fall, 1});
            s.color = zinc * 0.45;
        } else if (r > inner - 0.5) {  // Corners are turned off to a cone.
            s.normal = normalized({p.x / r * 0.75, p.y / r * 0.75, 1});
        } else {
            s.brushing = r < hole + 2 ? around(p) : Vec2{0.94, 0.34};
        }
        if (isRusty) {
            const double spots =
                noise(p.x * 0.16 + 40, p.y * 0.16, 1000, 21) * 0.7 + noise(p.x * 0.6, p.y * 0.6, 1000, 22) * 0.3;
            const double cover = smoothstep(0.47, 0.6, spots);
            s.color = mix(s.color, rust * (0.7 + 0.9 * noise(p.x, p.y, 1000, 23)), cover);
            s.metal *= 1 - cover;
        }
        return s;
    };
    return {inner / std::cos(pi / 6), 9, distance, surface};
}

Shape makeScrew(bool isBent)
{
    constexpr double shaftRadius = 4.4;
    constexpr double headRadius = 9.5;
    constexpr double from = -21;  // Where the shaft leaves the head.
    constexpr double to = 27;
    const auto bent = [isBent](Vec2 p) {
        const double t = std::max(0.0, (p.x - from) / (to - from));
        return isBent ? Vec2{p.x, p.y - 13 * t * t} : p;
    };
    const auto distance = [bent](Vec2 raw) {
        const Vec2 p = bent(raw);
        // A cone at the end, and teeth of the thread along the sides.
        const double taper = shaftRadius * std::clamp((to + 1.0 - p.x) / 7, 0.0, 1.0);
        const double teeth = p.x > from + 5 ? 0.55 * std::abs(std::sin(p.x * 1.15)) : 0.0;
        const double shaft = std::max({std::abs(p.y) - taper - teeth, from - p.x, p.x - to});
        const double dome = std::hypot((p.x - from) * 1.25, p.y) - headRadius;
        const double head = std::max({dome, p.x - from - 0.5});
        return std::min(shaft, head);
    };
    const auto surface = [bent](Vec2 raw) {
        const Vec2 p = bent(raw);
        Surface s = {steel, {}, 1, 0, {}};
        if (p.x < from + 0.5) {
            const double v = p.y / headRadius;
            const double u = (p.x - from) / headRadius * 1.25;
            s.normal = normalized({u * 1.1, v * 1.1, std::sqrt(std::max(0.05, 1 - u * u - v * v))});
            // The slot is seen from the side, at the crown of the head.
            if (std::abs(p.y) < 1.3 && p.x < from - 4.2) s.color = steel * 0.12;
        } else {
            const double v = std::clamp(p.y / (shaftRadius + 0.5), -0.98, 0.98);
            const double thread = p.x > from + 5 ? 0.85 * std::cos(p.x * 2.3 + p.y * 0.28) : 0.0;
            s.normal = normalized({thread, v, std::sqrt(1 - v * v)});
            s.color = steel * (thread < -0.5 ? 0.55 : 0.95);
        }
        return s;
    };
    return {33, 8, distance, surface};
}

Shape makeCap(Vec3 paint, bool isScratched)
{
    constexpr double radius = 23;
    constexpr double top = 17.5;
    constexpr int corrugations = 21;
    const auto distance = [](Vec2 p) {
        return length(p) - radius - 1.1 * std::cos(corrugations * std::atan2(p.y, p.x));
    };
    const auto surface = [=](Vec2 p) {
        const double r = length(p);
        const double angle = std::atan2(p.y, p.x);
        Surface s = {paint, {0, 0, 1}, 0, 0.55, {}};
        if (r > top) {
            const double fall = 1.5 * smoothstep(top, radius, r);
            const double wave = -0.9 * std::sin(corrugations * angle) * smoothstep(top, radius - 1, r);
            const Vec2 along = around(p);
            s.normal = normalized({p.x / r * fall + along.x * wave, p.y / r * fall + along.y * wave, 1});
        }
        // A ring and a star of five points, printed in a light colour.
        const double sector = 2 * pi / 5;
        const double inSector = std::abs(angle - sector * std::floor(angle / sector + 0.5));
        const bool isStar = r * (std::cos(inSector) + 2.5 * std::sin(inSector)) < 11;
        if (isStar || std::abs(r - 14) < 1.0) s.color = {0.82, 0.80, 0.70};
        if (isScratched) {
            const double wobble = 1.5 * noise(p.x * 0.25, 3, 1000, 31);
            const bool isLong = std::abs(p.y * 0.8 + p.x * 0.6 - 2 + wobble) < 0.75 && p.x > -15 && p.x < 11;
            const bool isShort = std::abs(p.y * 0.7 + p.x * 0.7 - 8 + wobble) < 0.5 && p.x > -2 && p.x < 13;
            if (isLong || isShort) s = {steel, {0, 0, 1}, 1, 0.3, {0.8, -0.6}};
        }
        return s;
    };
    return {radius + 1.2, 7, distance, surface};
}

Shape makeLabel(std::uint32_t number, bool isTorn)
{
    constexpr Vec2 half = {34, 21};
    const auto distance = [=](Vec2 p) {
        double d = boxDistance(p, half, 3);
        if (isTorn) {
            const double edge =
                2.5 * noise(p.x * 0.35 - p.y * 0.35, 1, 1000, 41) + 1.2 * noise(p.x - p.y, 2, 1000, 42);
            d = std::max(d, (p.x + p.y) * 0.707 - 25 + edge);
        }
        return d;
    };
    const auto surface = [=](Vec2 p) {
        const double fibre = 0.97 + 0.05 * noise(p.x * 0.9, p.y * 0.9, 1000, 43);
        // The paper curls up a little towards its right end.
        Surface s = {
            paper * fibre, normalized({-0.16 * smoothstep(0, half.x, p.x), 0.03 * p.x / half.x, 1}), 0, 0.03, {}};
        const std::string lot = "LOT " + std::to_string(2400 + number);
        const auto bar = static_cast<std::int64_t>(std::floor((p.x + 29) / 1.25));
        const bool isBar = p.y > 0 && p.y < 15 && p.x > -29 && p.x < 8 && hash(bar, number, 44) < 0.5;
        const Vec2 cell = {std::floor((p.x - 13) / 1.5), std::floor(p.y / 1.5)};
        const bool isInCode = cell.x >= 0 && cell.x < 10 && cell.y >= 0 && cell.y < 10;
        const bool isFrame = cell.x == 0 || cell.y == 9;
        const bool isDotted = (cell.y == 0 && static_cast<int>(cell.x) % 2 == 0) ||
                              (cell.x == 9 && static_cast<int>(cell.y) % 2 == 1);
        const bool isData =
            cell.x > 0 && cell.x < 9 && cell.y > 0 && cell.y < 9 &&
            hash(static_cast<std::int64_t>(cell.x), static_cast<std::int64_t>(cell.y), number) < 0.5;
        if (isBar || (isInCode && (isFrame || isDotted || isData)) || isInked(lot, 1.15, {p.x + 29, p.y + 15})) {
            s.color = ink;
        }
        if (p.y < -4 && p.y > -5.2 && std::abs(p.x) < 29) s.color = {0.55, 0.03, 0.03};
        return s;
    };
    return {length(half), 1, distance, surface};
}

Shape makeGear(Vec3 material, bool lacksTooth)
{
    constexpr int teeth = 16;
    constexpr double root = 20;
    constexpr double tip = 24.5;
    constexpr double bore = 6.5;
    const auto distance = [=](Vec2 p) {
        const double r = length(p);
        const double angle = std::atan2(p.y, p.x);
        double tooth = std::clamp(0.5 + 1.6 * std::cos(teeth * angle), 0.0, 1.0);
        if (lacksTooth && std::abs(angle - 2 * pi / teeth * 2) < pi / teeth) tooth *= 0.25;
        const double keyway = boxDistance({p.x, p.y + bore}, {2, 2.6}, 0);
        return std::max({r - root - (tip - root) * tooth, bore - r, -keyway});
    };
    const auto surface = [=](Vec2 p) {
        const double r = length(p);
        Surface s = {material, bevelNormal(distance, p, 1.4), 1, 0.1, {}};
        // A turned recess between hub and rim.
        const double inRecess = smoothstep(10, 11, r) - smoothstep(16, 17, r);
        const double slope = (std::abs(r - 10.5) < 0.7 ? 1.0 : 0.0) - (std::abs(r - 16.5) < 0.7 ? 1.0 : 0.0);
        if (slope != 0) s.normal = normalized({p.x / r * slope, p.y / r * slope, 1});
        if (s.normal.z > 0.97) s.brushing = around(p);
        s.color = s.color * (1 - 0.3 * inRecess) * (0.92 + 0.16 * noise(r * 4, 0, 100000, 51));
        return s;
    };
    return {tip, 8, distance, surface};
}

}  // namespace Samples
