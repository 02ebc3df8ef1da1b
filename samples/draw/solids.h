#pragma once

#include <functional>

#include "vec.h"

// Solids described by their distance from a point, and the light that falls on them.

namespace draw {

/// What a surface is made of, at one point of it.
struct Material {
    Vec3 colour;
    double gloss = 0;    ///< strength of the mirrored surroundings, 0 to 1, more at grazing angles
    double polish = 40;  ///< sharpness of highlights
    double glow = 0;     ///< light passing through thin or soft matter, 0 to 1
};

struct Nearest {
    double distance = 1e9;
    int solid = -1;  ///< whichever number the scene gives its solids

    void offer(double d, int number) {
        if (d < distance) *this = {d, number};
    }
};

/// A scene of solids under one lamp and a sky.
struct Solids {
    std::function<Nearest(Vec3 p)> nearest;
    std::function<Material(Vec3 p, Vec3 normal, int solid)> material;
    std::function<Vec3(Vec3 direction)> sky;  ///< what is seen beyond all solids
    Vec3 lamp;                                ///< direction towards the lamp, of length 1
    Vec3 lampColour;
    Vec3 skyLight;        ///< from above
    Vec3 groundLight;     ///< thrown back from below
    double softness = 8;  ///< of shadows: the smaller, the softer
    double reach = 30;    ///< farther than this is sky
    double step = 0.9;    ///< share of the distance that is walked; less for bent distances

    /// The light that comes back along a ray.
    Vec3 look(Vec3 from, Vec3 direction, int bounces = 2) const;

  private:
    double walk(Vec3 from, Vec3 direction, int& solid) const;
    Vec3 normalAt(Vec3 p) const;
    double lit(Vec3 p) const;
    double open(Vec3 p, Vec3 normal) const;
};

/// The direction of a picture's point (see Scene) for an eye at `from` that looks at `at`;
/// `lens` is the length of the lens in picture heights.
Vec3 eyeRay(Vec3 from, Vec3 at, double lens, double aspect, double x, double y);

inline double smoothUnion(double a, double b, double k) {
    const double h = saturate(0.5 + 0.5 * (b - a) / k);
    return mix(b, a, h) - k * h * (1 - h);
}
inline double ellipsoid(Vec3 p, Vec3 r) {
    const double k0 = length(Vec3{p.x / r.x, p.y / r.y, p.z / r.z});
    const double k1 = length(Vec3{p.x / (r.x * r.x), p.y / (r.y * r.y), p.z / (r.z * r.z)});
    return k1 > 0 ? k0 * (k0 - 1) / k1 : -std::min({r.x, r.y, r.z});
}
inline double roundedBox(Vec3 p, Vec3 half, double radius) {
    const Vec3 q{std::fabs(p.x) - half.x + radius, std::fabs(p.y) - half.y + radius,
                 std::fabs(p.z) - half.z + radius};
    const Vec3 outside{std::max(q.x, 0.0), std::max(q.y, 0.0), std::max(q.z, 0.0)};
    return length(outside) + std::min(std::max({q.x, q.y, q.z}), 0.0) - radius;
}
/// Turned about the upright axis.
inline Vec3 turned(Vec3 p, double angle) {
    const Vec2 q = rotated({p.x, p.z}, angle);
    return {q.x, p.y, q.y};
}
/// Distance from a point to a stretch of line.
inline double toSegment(Vec2 p, Vec2 a, Vec2 b) {
    const Vec2 ab = b - a;
    return length(p - (a + ab * saturate(dot(p - a, ab) / dot(ab, ab))));
}

}  // namespace draw
