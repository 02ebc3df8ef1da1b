#include "noise.h"
#include "scenes.h"
#include "solids.h"

// Dunes in low sun: long crests, sharp on the lee side, with ripples of sand.

namespace draw {

namespace {

/// Height of the sand. Wind from the left: slow rise, a crest, a steep fall.
double sand(double x, double z) {
    const double bend = 2.6 * noise(x * 0.10, z * 0.14, 900) + 0.8 * noise(x * 0.33, z * 0.30, 901);
    const double at = fract((x * 0.55 + z * 0.62) * 0.13 + bend * 0.30);
    const double rise =
        at < 0.72 ? smoothstep(-0.25, 0.72, at) : 1 - smoothstep(0.72, 1.0, at) * 0.95;
    const double base = smoothstep(-0.25, 0.72, 0.0);
    const double profile = at < 0.72 ? rise : mix(base, 1.0, (rise - 0.05) / 0.95);
    const double tall = 0.35 + 1.5 * noise(x * 0.08 + 4, z * 0.08, 902);
    return tall * profile + 0.25 * noise(x * 0.5, z * 0.5, 903);
}

}  // namespace

Scene dunes(double aspect) {
    const Vec3 sunward = normalized({-0.86, 0.36, 0.10});
    const Solids scene{
        .nearest =
            [](Vec3 p) {
                return Nearest{(p.y - sand(p.x, p.z)) * 0.6, 0};
            },
        .material =
            [](Vec3 p, Vec3 n, int) {
                const double warp = 1.6 * fractal(p.x * 0.9, p.z * 0.9, 3, 910);
                const double ripple = std::sin((p.x * 0.8 + p.z * 0.35) * 17 + warp * 9);
                const double near = std::exp(-0.05 * length(p - Vec3{0, 2, 9}));
                const double speck = fractal(p.x * 40, p.z * 40, 2, 920);
                const Vec3 base = mix(srgb(0xD98A4A), srgb(0xE9B070), 0.5 + 0.5 * n.y);
                return Material{
                    .colour = base * (0.93 + 0.16 * near * ripple * n.y + 0.10 * (speck - 0.5)),
                    .gloss = 0,
                    .polish = 8};
            },
        .sky =
            [](Vec3 d) {
                const Vec3 high = mix(srgb(0xF6D7B0), srgb(0x4A88C4), smoothstep(0.01, 0.26, d.y));
                const double cloud = fractal(d.x / (d.y + 0.12) * 0.9, 2.2 / (d.y + 0.12), 6, 930);
                return mix(high, srgb(0xFFF0DC),
                           0.55 * smoothstep(0.52, 0.80, cloud) * smoothstep(0.02, 0.12, d.y));
            },
        .lamp = sunward,
        .lampColour = {1.35, 1.10, 0.80},
        .skyLight = {0.24, 0.30, 0.44},
        .groundLight = {0.18, 0.11, 0.07},
        .softness = 55,
        .reach = 70,
        .step = 0.9,
    };
    return [=](double x, double y) {
        const Vec3 eye{0, 3.4, 9};
        const Vec3 ray = eyeRay(eye, {1.2, 2.0, 0}, 1.45, aspect, x, y);
        Vec3 seen = scene.look(eye, ray, 0);
        if (ray.y < 0.02) seen = mix(seen, srgb(0xF3D2AC), smoothstep(-0.13, 0.01, ray.y) * 0.75);
        return seen;
    };
}

}  // namespace draw
