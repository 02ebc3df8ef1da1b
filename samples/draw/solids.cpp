#include "solids.h"

namespace draw {

Vec3 eyeRay(Vec3 from, Vec3 at, double lens, double aspect, double x, double y) {
    const Vec3 ahead = normalized(at - from);
    const Vec3 right = normalized(cross(ahead, {0, 1, 0}));
    const Vec3 up = cross(right, ahead);
    return normalized(ahead * lens + right * (x - aspect / 2) + up * (0.5 - y));
}

double Solids::walk(Vec3 from, Vec3 direction, int& solid) const {
    double t = 0.001;
    for (int i = 1; t < reach; ++i) {
        const Nearest n = nearest(from + direction * t);
        // A ray that creeps along a surface has as good as met it.
        if (n.distance < 0.0004 * t + 0.0002 || (i > 300 && n.distance < 0.05)) {
            solid = n.solid;
            return t;
        }
        t += n.distance * step;
    }
    solid = -1;
    return reach;
}

Vec3 Solids::normalAt(Vec3 p) const {
    const double e = 0.0008;
    const auto d = [&](Vec3 q) { return nearest(q).distance; };
    // Four corners of a tetrahedron are enough for a slope in three directions.
    const Vec3 a{1, -1, -1};
    const Vec3 b{-1, -1, 1};
    const Vec3 c{-1, 1, -1};
    const Vec3 f{1, 1, 1};
    return normalized(a * d(p + a * e) + b * d(p + b * e) + c * d(p + c * e) + f * d(p + f * e));
}

double Solids::lit(Vec3 p) const {
    double light = 1;
    double t = 0.02;
    for (int i = 0; i < 60 && t < 12; ++i) {
        const double d = nearest(p + lamp * t).distance;
        light = std::min(light, 0.5 + 0.5 * softness * d / t);
        if (light <= 0) return 0;
        t += std::clamp(d, 0.02, 0.4);
    }
    return light * light * (3 - 2 * light);
}

double Solids::open(Vec3 p, Vec3 normal) const {
    double covered = 0;
    double weight = 1;
    for (int i = 1; i <= 5; ++i) {
        const double h = 0.02 + 0.11 * i;
        covered += weight * std::max(0.0, h - nearest(p + normal * h).distance);
        weight *= 0.8;
    }
    return saturate(1 - 0.65 * covered);
}

Vec3 Solids::look(Vec3 from, Vec3 direction, int bounces) const {
    int solid = -1;
    const double t = walk(from, direction, solid);
    if (solid < 0) return sky(direction);
    const Vec3 p = from + direction * t;
    const Vec3 n = normalAt(p);
    const Material m = material(p, n, solid);
    const Vec3 start = p + n * 0.003;

    const double facing = std::max(0.0, dot(n, lamp));
    const double shine = lit(start);
    const double air = open(p, n);
    Vec3 light = lampColour * (facing * shine);
    light += mix(groundLight, skyLight, 0.5 + 0.5 * n.y) * air;
    light += lampColour * (m.glow * 0.35 * (0.4 + 0.6 * shine) * (1 - facing));
    Vec3 seen = m.colour * light;

    const Vec3 half = normalized(lamp - direction);
    const double highlight = std::pow(std::max(0.0, dot(n, half)), m.polish) * (m.polish + 8) / 60;
    const double grazing = std::pow(1 - std::max(0.0, -dot(n, direction)), 5);
    const double mirror = m.gloss * (0.06 + 0.94 * grazing);
    seen += lampColour * (highlight * shine * m.gloss * 0.4);
    if (mirror > 0.003 && bounces > 0) {
        seen = mix(seen, look(start, reflected(direction, n), bounces - 1), saturate(mirror));
    }
    return seen;
}

}  // namespace draw
