#include "noise.h"
#include "scenes.h"

// Drops of water on a leaf, from near: each drop is a small lens that shows the leaf upside down.

namespace draw {

namespace {

Vec3 leafAt(double x, double y) {
    // The midrib runs across the picture; side veins leave it in pairs.
    const Vec2 p = rotated({x - 0.72, y - 0.52}, -0.42);
    const double side = std::fabs(p.y);
    const double rib = side - 0.014 * (1.2 - p.x);
    const double slant = p.x - 0.62 * side + 0.25 * side * side;
    const double spacing = 0.155;
    const double phase = fract(slant / spacing + (p.y > 0 ? 0.0 : 0.5));
    const double vein = std::min(phase, 1 - phase) * spacing * 0.8;
    const double web = ridges(p.x * 26, p.y * 26, 2, 600);
    const double tissue = fractal(p.x * 9, p.y * 9, 6, 610);
    Vec3 colour = mix(srgb(0x2C6B1E), srgb(0x7DB83A), 0.25 + 0.75 * tissue);
    colour = colour * (0.80 + 0.35 * phase * (1 - phase) * 4);
    colour = mix(colour, srgb(0xA9CF62), 0.30 * smoothstep(0.80, 0.95, web));
    colour = mix(colour, srgb(0xB9D97A), 0.75 * smoothstep(0.0045, 0.0015, vein));
    colour = mix(colour, srgb(0xD3E6A0), smoothstep(0.006, -0.004, rib));
    colour =
        mix(colour, colour * 0.62, smoothstep(0.022, 0.004, rib) * smoothstep(-0.004, 0.004, rib));
    const double light = 0.62 + 0.55 * smoothstep(1.5, 0.1, length(Vec2{x - 0.35, y - 0.20}));
    return colour * light;
}

struct Drop {
    Vec2 at;
    double radius = 0;
};

/// The drop that lies over a point, looking through the lattices of drops from large to small;
/// radius 0 where none does. `shade` gathers the shadows of drops beside the point.
Drop dropOver(Vec2 p, double& shade) {
    struct Lattice {
        double spacing, least, most, share;
    };
    constexpr Lattice lattices[] = {{0.42, 0.085, 0.150, 0.75},
                                    {0.19, 0.028, 0.060, 0.70},
                                    {0.085, 0.010, 0.026, 0.75},
                                    {0.036, 0.003, 0.010, 0.60}};
    Drop found;
    int64_t level = 0;
    for (const Lattice& l : lattices) {
        ++level;
        const auto cx = static_cast<int64_t>(std::floor(p.x / l.spacing));
        const auto cy = static_cast<int64_t>(std::floor(p.y / l.spacing));
        for (int64_t i = cx - 1; i <= cx + 1; ++i) {
            for (int64_t k = cy - 1; k <= cy + 1; ++k) {
                if (hash(i, k, 620 + level) > l.share) continue;
                const double radius = mix(l.least, l.most, std::pow(hash(i, k, 630 + level), 1.6));
                const double room = std::max(0.0, 1 - 2.1 * radius / l.spacing);
                const Vec2 at{(static_cast<double>(i) + 0.5 +
                               (hash(i, k, 640 + level) - 0.5) * (0.35 + room)) *
                                  l.spacing,
                              (static_cast<double>(k) + 0.5 +
                               (hash(i, k, 650 + level) - 0.5) * (0.35 + room)) *
                                  l.spacing};
                Vec2 off = p - at;
                const double angle = std::atan2(off.y, off.x);
                const double uneven =
                    1 + 0.035 * std::sin(2 * angle + 9 * hash(i, k)) + 0.02 * std::sin(3 * angle);
                const double away = length(off) / uneven;
                if (found.radius == 0 && away < radius) found = {p - off * (1 / uneven), radius};
                const Vec2 cast = off - Vec2{0.22, 0.26} * radius;
                shade = std::max(shade, smoothstep(1.22, 0.72, length(cast) / radius));
            }
        }
        if (found.radius > 0) return found;
    }
    return found;
}

}  // namespace

Scene drops(double) {
    return [](double x, double y) {
        double shade = 0;
        const Vec2 p{x, y};
        Drop drop = dropOver(p, shade);
        if (drop.radius == 0) return leafAt(x, y) * (1 - 0.62 * shade);
        const Vec2 centre = drop.at;
        // `at` holds the point drawn towards the drop's middle by its unevenness.
        const Vec2 n = (p - centre) * (1 / drop.radius);
        const Vec2 flat = n;
        const double away = std::min(0.999, length(flat));
        const double height = std::sqrt(1 - away * away);
        // What the lens shows: the leaf beneath, drawn together and turned over near the rim.
        const Vec2 through = centre + flat * (drop.radius * (0.35 - 1.05 * away * away));
        Vec3 colour = leafAt(through.x, through.y) * 1.02;
        const Vec2 light = Vec2{-0.64, -0.77};
        const double towards = dot(flat, light);
        colour = colour * (0.86 - 0.62 * smoothstep(-0.1, 1.0, towards));
        colour +=
            srgb(0xDDF0A0) * (0.85 * std::pow(saturate(-towards), 3) * smoothstep(1.0, 0.75, away));
        colour = mix(colour, srgb(0x16330C), 0.65 * smoothstep(0.90, 1.0, away));
        colour = mix(colour, srgb(0xEAF6FF), 0.22 * std::pow(1 - height, 4));
        // The sky's bright patch, with the bar of a window across it.
        const Vec2 patch = rotated(flat - Vec2{-0.36, -0.44}, 0.70);
        const double pane = std::max(std::fabs(patch.x) / 0.21,
                                     std::fabs(patch.y + 0.25 * patch.x * patch.x) / 0.12);
        const double bar = smoothstep(0.010, 0.022, std::fabs(patch.x));
        colour = mix(colour, {1.5, 1.55, 1.6}, smoothstep(1.08, 0.92, pane) * bar);
        colour +=
            Vec3{1, 1, 1} * (0.5 * std::exp(-std::pow(length(flat - Vec2{0.52, 0.58}) / 0.07, 2)));
        return colour;
    };
}

}  // namespace draw
