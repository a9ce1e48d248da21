#pragma once

#include <vector>

#include "make_samples/shapes.h"

/// A conveyor belt with parts on it, seen from above in pixels of the camera, under soft light from the upper
/// left.
namespace Samples {

constexpr int frameWidth = 320;
constexpr int frameHeight = 240;
constexpr int frameCount = 24;
/// The belt moves on by this from frame to frame, and repeats itself after the last.
constexpr int beltStep = 28;
constexpr int beltLength = beltStep * frameCount;

struct Part
{
    Shape shape;
    Vec2 place;  ///< On the belt.
    double angle;
};

class BeltScene
{
public:
    /// Parts lie where `seed` puts them, none on another.
    explicit BeltScene(std::uint32_t seed);

    /// The light that comes from a point of the picture when the belt has moved on by `shift`.
    Vec3 light(Vec2 point, double shift) const;

private:
    Vec3 beltColor(Vec2 onBelt) const;
    double shadow(Vec2 onBelt) const;

    std::vector<Part> parts_;
    std::uint32_t seed_;
};

}  // namespace Samples
