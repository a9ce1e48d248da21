#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

/// The small mathematics of drawing: vectors, noise that depends only on its place, distances to shapes.
namespace Samples {

struct Vec2
{
    double x = 0;
    double y = 0;
};

inline Vec2 operator+(Vec2 a, Vec2 b)
{
    return {a.x + b.x, a.y + b.y};
}
inline Vec2 operator-(Vec2 a, Vec2 b)
{
    return {a.x - b.x, a.y - b.y};
}
inline Vec2 operator*(Vec2 a, double f)
{
    return {a.x * f, a.y * f};
}
inline double length(Vec2 a)
{
    return std::hypot(a.x, a.y);
}
inline Vec2 turned(Vec2 a, double angle)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c * a.x - s * a.y, s * a.x + c * a.y};
}

/// A direction, or a colour in linear light.
struct Vec3
{
    double x = 0;
    double y = 0;
    double z = 0;
};

inline Vec3 operator+(Vec3 a, Vec3 b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3 operator*(Vec3 a, Vec3 b)
{
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
inline Vec3 operator*(Vec3 a, double f)
{
    return {a.x * f, a.y * f, a.z * f};
}
inline double dot(Vec3 a, Vec3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 normalized(Vec3 a)
{
    return a * (1 / std::sqrt(dot(a, a)));
}
inline Vec3 mix(Vec3 a, Vec3 b, double t)
{
    return a * (1 - t) + b * t;
}

inline double smoothstep(double from, double to, double x)
{
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

/// 0 to 1, evenly spread, the same for the same place.
inline double hash(std::int64_t x, std::int64_t y, std::uint32_t seed)
{
    auto h = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15U ^
             static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4FU ^ std::uint64_t{seed} * 0x165667B19E3779F9U;
    h = (h ^ h >> 31) * 0xBF58476D1CE4E5B9U;
    h = (h ^ h >> 29) * 0x94D049BB133111EBU;
    return static_cast<double>((h ^ h >> 32) >> 11) * 0x1p-53;
}

/// Smooth noise, 0 to 1, with lattice distance 1; repeats itself after `period` lattice points along x.
inline double noise(double x, double y, std::int64_t period, std::uint32_t seed)
{
    const auto column = static_cast<std::int64_t>(std::floor(x));
    const auto row = static_cast<std::int64_t>(std::floor(y));
    const double u = smoothstep(0, 1, x - std::floor(x));
    const double v = smoothstep(0, 1, y - std::floor(y));
    const auto at = [&](std::int64_t c, std::int64_t r) {
        return hash(((c % period) + period) % period, r, seed);
    };
    const double upper = at(column, row) * (1 - u) + at(column + 1, row) * u;
    const double lower = at(column, row + 1) * (1 - u) + at(column + 1, row + 1) * u;
    return upper * (1 - v) + lower * v;
}

// Distances are negative inside.

inline double boxDistance(Vec2 p, Vec2 halfSize, double corner)
{
    const Vec2 q = {std::abs(p.x) - halfSize.x + corner, std::abs(p.y) - halfSize.y + corner};
    const double outside = std::hypot(std::max(q.x, 0.0), std::max(q.y, 0.0));
    return outside + std::min(std::max(q.x, q.y), 0.0) - corner;
}

/// A regular polygon given by the radius of its inner circle.
inline double polygonDistance(Vec2 p, int sides, double innerRadius)
{
    const double sector = 2 * std::numbers::pi / sides;
    const double angle = std::atan2(p.y, p.x);
    const double local = angle - sector * std::floor(angle / sector + 0.5);
    return length(p) * std::cos(local) - innerRadius;
}

}  // namespace Samples
