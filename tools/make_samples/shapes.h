#pragma once

#include <cstdint>
#include <functional>

#include "make_samples/samplemath.h"

namespace Samples {

/// What a part shows at a point inside it.
struct Surface
{
    Vec3 color;
    Vec3 normal = {0, 0, 1};
    double metal = 0;        ///< 0 paint, paper or plastic; 1 bare metal.
    double gloss = 0;        ///< Strength of the light's mirror image.
    Vec2 brushing = {0, 0};  ///< Direction of fine scratches, if not null.
};

/// A kind of part: its outline as a distance, and its surface. Points are in the part's own frame.
struct Shape
{
    double radius;  ///< Of a circle around all of it.
    double height;  ///< Above the belt, in pixels.
    std::function<double(Vec2)> distance;
    std::function<Surface(Vec2)> surface;
};

// Each kind comes sound or with its typical defect.
Shape makeWasher(double radius, bool isCracked);
Shape makeNut(bool isRusty);
Shape makeScrew(bool isBent);
Shape makeCap(Vec3 paint, bool isScratched);
Shape makeLabel(std::uint32_t number, bool isTorn);
Shape makeGear(Vec3 material, bool lacksTooth);

}  // namespace Samples
