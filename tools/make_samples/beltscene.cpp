#include "make_samples/beltscene.h"

#include <random>

namespace Samples {

namespace {

constexpr double railHeight = 17;
constexpr Vec3 toCamera = {0, 0, 1};
const Vec3 toLight = normalized({-0.45, -0.60, 0.80});
const Vec3 half = normalized(toLight + toCamera);

/// A wide soft lamp above the left half, and the lens's fall of light towards the corners.
double lamp(Vec2 point)
{
    const double x = (point.x - 135) / 210;
    const double y = (point.y - 100) / 190;
    const Vec2 fromCentre = {(point.x - frameWidth / 2.0) / frameWidth,
                             (point.y - frameHeight / 2.0) / frameWidth};
    return (0.62 + 0.55 * std::exp(-x * x - y * y)) *
           (1 - 0.55 * (fromCentre.x * fromCentre.x + fromCentre.y * fromCentre.y));
}

/// What bare metal mirrors: a dim room, a bright lamp, and a window as a strip.
double mirrored(Vec3 normal)
{
    const Vec3 ray = normal * (2 * normal.z) + toCamera * -1.0;
    const double lampSpot = std::pow(std::max(0.0, dot(ray, toLight)), 7);
    const double window = smoothstep(0.35, 0.5, ray.x) * (1 - smoothstep(0.75, 0.9, ray.x));
    return 0.10 + 0.30 * std::max(0.0, ray.z) + 1.25 * lampSpot + 0.30 * window;
}

/// Fine scratches spread the light's image across themselves.
double brushed(Vec2 direction)
{
    const double along = direction.x * half.x + direction.y * half.y;
    const double across = std::sqrt(std::max(0.0, 1 - along * along));
    return 0.24 + 0.85 * std::pow(across, 55);
}

Vec3 shade(const Surface& surface, double angle)
{
    const Vec2 flat = turned({surface.normal.x, surface.normal.y}, angle);
    const Vec3 normal = {flat.x, flat.y, surface.normal.z};
    const bool isBrushed = surface.brushing.x != 0 || surface.brushing.y != 0;
    const double metal = isBrushed ? brushed(turned(surface.brushing, angle)) : mirrored(normal);
    const double matt = 0.26 + 0.80 * std::max(0.0, dot(normal, toLight));
    const double gloss = surface.gloss * std::pow(std::max(0.0, dot(normal, half)), 45);
    return surface.color * (metal * surface.metal + matt * (1 - surface.metal)) + Vec3{1, 1, 1} * gloss;
}

/// The aluminium profiles that the belt runs between. They stand still.
Vec3 railLight(Vec2 point)
{
    const double inside =
        point.y < frameHeight / 2.0 ? railHeight - point.y : point.y - (frameHeight - railHeight);
    const double grain = 0.93 + 0.14 * noise(point.x * 0.11, point.y * 2.5, 100000, 61);
    const Vec3 aluminium = Vec3{0.50, 0.51, 0.52} * grain;
    const double slot = smoothstep(5.5, 6.2, inside) * (1 - smoothstep(9.8, 10.5, inside));
    const double lip = std::exp(-(inside - 1.2) * (inside - 1.2) / 1.2);
    const double toBolt = std::hypot(std::fmod(point.x + 40, 120.0) - 60, inside - 8);
    if (toBolt < 5.2) {
        const bool isSocket = polygonDistance({std::fmod(point.x + 40, 120.0) - 60, inside - 8}, 6, 2.2) < 0;
        return Vec3{0.10, 0.10, 0.11} * (isSocket ? 0.25 : 1.0 + 1.2 * smoothstep(5.2, 3.5, toBolt));
    }
    return aluminium * (0.55 - 0.42 * slot + 0.45 * lip);
}

/// A point of the belt in a part's own frame; the belt has no beginning.
Vec2 inPart(const Part& part, Vec2 onBelt)
{
    Vec2 p = onBelt - part.place;
    p.x -= beltLength * std::round(p.x / beltLength);
    return turned(p, -part.angle);
}

bool keepsClear(const std::vector<Part>& parts, Vec2 place, double radius)
{
    constexpr double gap = 5;
    for (const Part& part : parts) {
        if (length(inPart(part, place)) < radius + part.shape.radius + gap) return false;
    }
    return true;
}

/// The parts of one lap of the belt; about one in four shows a defect.
std::vector<Shape> partsOfOneLap()
{
    constexpr Vec3 red = {0.48, 0.025, 0.03};
    constexpr Vec3 blue = {0.03, 0.10, 0.40};
    constexpr Vec3 green = {0.02, 0.22, 0.08};
    constexpr Vec3 brass = {0.80, 0.58, 0.25};
    constexpr Vec3 steelGear = {0.52, 0.54, 0.57};
    // Large ones first, so that all find their place.
    return {makeLabel(17, false),   makeLabel(18, false),   makeLabel(19, true),   makeLabel(20, false),
            makeScrew(false),       makeScrew(true),        makeScrew(false),      makeScrew(false),
            makeScrew(false),       makeGear(brass, false), makeGear(brass, true), makeGear(steelGear, false),
            makeGear(brass, false), makeCap(red, false),    makeCap(blue, false),  makeCap(red, true),
            makeCap(green, false),  makeCap(red, false),    makeCap(blue, true),   makeCap(green, false),
            makeWasher(17, false),  makeWasher(17, true),   makeWasher(17, false), makeWasher(13, false),
            makeWasher(13, false),  makeWasher(13, true),   makeWasher(11, false), makeNut(false),
            makeNut(true),          makeNut(false),         makeNut(false),        makeNut(false)};
}

}  // namespace

BeltScene::BeltScene(std::uint32_t seed) : seed_(seed)
{
    std::mt19937 random(seed);
    // Not the library's distributions, which differ from one to the next.
    const auto draw = [&random](double from, double to) { return from + (to - from) * random() / 4294967296.0; };
    for (Shape& shape : partsOfOneLap()) {
        constexpr int attempts = 4000;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            const double margin = railHeight + shape.radius + 3;
            const Vec2 place = {draw(0, beltLength), draw(margin, frameHeight - margin)};
            const double angle = draw(0, 2 * std::numbers::pi);
            if (!keepsClear(parts_, place, shape.radius)) continue;
            parts_.push_back({std::move(shape), place, angle});
            break;
        }
    }
}

Vec3 BeltScene::light(Vec2 point, double shift) const
{
    const double glow = lamp(point);
    if (point.y < railHeight || point.y > frameHeight - railHeight) return railLight(point) * glow;
    const double x = std::fmod(point.x + shift, double{beltLength});
    const Vec2 onBelt = {x, point.y};
    for (const Part& part : parts_) {
        const Vec2 p = inPart(part, onBelt);
        if (length(p) > part.shape.radius + 2 || part.shape.distance(p) > 0) continue;
        return shade(part.shape.surface(p), part.angle) * glow;
    }
    const double railShadow = smoothstep(0, 9, point.y - railHeight) * 0.6 + 0.4;
    return beltColor(onBelt) * (shadow(onBelt) * railShadow * glow);
}

/// Dark rubber, woven, worn along the way it runs, with dust.
Vec3 BeltScene::beltColor(Vec2 onBelt) const
{
    const auto at = [&](double sizeX, double sizeY, std::uint32_t layer) {
        const auto period = static_cast<std::int64_t>(std::lround(beltLength / sizeX));
        return noise(onBelt.x / sizeX, onBelt.y / sizeY, period, seed_ + layer);
    };
    const double weave = std::sin(onBelt.x * std::numbers::pi / 2) * std::sin(onBelt.y * std::numbers::pi / 2);
    const double wear = at(56, 2.5, 1) * 0.6 + at(28, 7, 2) * 0.4;
    const double stains = at(42, 42, 3) * 0.6 + at(16, 16, 4) * 0.4;
    const double dust = smoothstep(0.80, 0.97, at(2, 2, 5)) * smoothstep(0.45, 0.8, stains);
    const double seam = std::abs(onBelt.x + 0.18 * onBelt.y - 60) < 0.8 ? 0.55 : 1.0;
    const double rubber = (0.70 + 0.22 * weave + 0.35 * wear + 0.25 * (stains - 0.5)) * seam;
    return Vec3{0.046, 0.066, 0.060} * rubber + Vec3{0.09, 0.085, 0.075} * dust;
}

/// How much of the light reaches a point of the belt past the parts.
double BeltScene::shadow(Vec2 onBelt) const
{
    double light = 1;
    for (const Part& part : parts_) {
        const double height = part.shape.height;
        const Vec2 here = inPart(part, onBelt);
        if (length(here) > part.shape.radius + 2 * height + 6) continue;
        const Vec2 cast = Vec2{toLight.x, toLight.y} * (height / toLight.z);
        const double low = part.shape.distance(inPart(part, onBelt + cast * 0.5));
        const double high = part.shape.distance(inPart(part, onBelt + cast));
        const double softness = 0.6 + height * 0.35;
        light *= 0.30 + 0.70 * smoothstep(-softness, softness, std::min(low, high));
        light *= 1 - 0.35 * std::exp(-std::max(part.shape.distance(here), 0.0) / (1 + height * 0.3));
    }
    return light;
}

}  // namespace Samples
