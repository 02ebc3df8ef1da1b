#include "noise.h"
#include "scenes.h"

// The open sea after sunset, seen from a cliff, with a lighthouse on a headland.

namespace draw {

namespace {

constexpr double horizon = 0.50;

Vec3 duskSky(double x, double up, double aspect) {
    // `up` is the height above the horizon, in picture heights.
    const double side = x - 0.63 * aspect;
    Vec3 colour = mix(srgb(0xFF9A4A), srgb(0xD8567A), smoothstep(0.0, 0.16, up));
    colour = mix(colour, srgb(0x4A3F86), smoothstep(0.08, 0.34, up));
    colour = mix(colour, srgb(0x14234F), smoothstep(0.26, 0.62, up));
    const double toSun = length(Vec2{side * 0.8, (up - 0.012) * 1.4});
    colour += srgb(0xFFC060) * (0.9 * std::exp(-toSun * 8));
    colour += srgb(0xFFF0C0) * (3.0 * smoothstep(0.040, 0.032, length(Vec2{side, up - 0.012})));
    // Banks of cloud, lit from below, flatter towards the horizon.
    const double far = 1 / (0.12 + std::max(up, 0.0));
    const double cloud = fractal(x * 0.42 * far + 3, 2.6 * far, 7, 31, 0.55);
    const double thick = smoothstep(0.50, 0.72, cloud) * smoothstep(0.0, 0.06, up);
    const double below = fractal(x * 0.42 * far + 3, 2.6 * far + 0.16, 7, 31, 0.55);
    const double lit = saturate(0.45 + 3.2 * (cloud - below)) * std::exp(-std::fabs(side) * 0.9);
    const Vec3 shade = mix(srgb(0x3A2F5C), srgb(0x1C2750), smoothstep(0.1, 0.5, up));
    return mix(colour, mix(shade, srgb(0xFF8A5C), lit), 0.85 * thick);
}

double waves(double x, double z) {
    double height = 0;
    double weight = 1;
    Vec2 p{x, z};
    for (int i = 0; i < 6; ++i) {
        const double crest = 1 - std::fabs(2 * noise(p.x, p.y, 50 + i) - 1);
        height += weight * crest * crest;
        weight *= 0.52;
        p = rotated(p, 0.55) * 1.9;
    }
    return height;
}

}  // namespace

Scene seaAtDusk(double aspect) {
    return [=](double x, double y) {
        Vec3 colour;
        if (y < horizon) {
            colour = duskSky(x, horizon - y, aspect);
        } else {
            const double drop = y - horizon + 0.0015;
            const double z = 0.55 / drop;
            const double sideways = (x - 0.5 * aspect) * z;
            const double e = 0.01 + 0.004 * z;
            const double calm = 1 / (1 + 0.020 * z * z);
            const double here = waves(sideways * 1.1, z * 1.5);
            const double dx = (waves((sideways + e) * 1.1, z * 1.5) - here) / e;
            const double dz = (waves(sideways * 1.1, (z + e) * 1.5) - here) / e;
            const double tilt = 0.11 * calm + 0.012;
            // The mirrored sky: a wave that leans away shows a higher part of it.
            const double up = std::fabs(drop * 0.85 + tilt * 0.8 * dz + 0.03);
            const double across = x + tilt * 0.42 * dx;
            const double grazing = std::pow(saturate(1 - drop * 1.25 - 0.06 * dz * calm), 3);
            const Vec3 deep = mix(srgb(0x0A2238), srgb(0x0F4A5C), saturate(0.18 * here * here));
            colour = mix(deep, duskSky(across, up, aspect) * 0.92, 0.16 + 0.74 * saturate(grazing));
            const double foam =
                smoothstep(1.52, 1.75, here + 0.25 * fractal(sideways * 9, z * 9, 3, 90)) * calm;
            colour = mix(colour, srgb(0xC9B7C4), 0.55 * foam);
            colour = mix(colour, srgb(0xF08A55), 0.35 * std::exp(-drop * 60));
        }
        // The headland and its lighthouse.
        const double ridge = horizon + 0.006 - 0.105 * smoothstep(0.42, 0.05, x) -
                             0.030 * fractal(x * 8, 1, 6, 13) * smoothstep(0.46, 0.30, x);
        if (x < 0.46 && y > ridge && y < horizon + 0.012) {
            const double rock = fractal(x * 30, y * 60, 5, 17);
            colour = mix(srgb(0x0C0E1C), srgb(0x3A2A3C), rock * smoothstep(0.0, 0.46, x));
        }
        const Vec2 tower{x - 0.205, y};
        const double foot = 0.435;
        const double top = 0.285;
        if (y > top && y < foot) {
            const double half = mix(0.0105, 0.0165, (y - top) / (foot - top));
            if (std::fabs(tower.x) < half) {
                const bool band = std::fmod((y - top) / 0.030, 2.0) < 1;
                const double round = 0.35 + 0.65 * saturate(0.5 + 0.5 * tower.x / half);
                colour = (band ? srgb(0x7A2A33) : srgb(0x9C8FA3)) * round;
            }
        }
        if (std::fabs(tower.x) < 0.0155 && std::fabs(y - top) < 0.0035) colour = srgb(0x15141F);
        if (std::fabs(tower.x) < 0.0075 && y > 0.262 && y < top - 0.003)
            colour = srgb(0xFFF3C4) * 1.6;
        if (y < 0.262 && y > 0.245 && std::fabs(tower.x) < (y - 0.245) * 0.6)
            colour = srgb(0x2A1420);
        const Vec2 lamp{x - 0.205, y - 0.272};
        const double beam =
            std::exp(-std::fabs(lamp.y + 0.12 * lamp.x) / (0.004 + 0.045 * std::fabs(lamp.x)));
        colour += srgb(0xFFE3A0) * (0.16 * beam * std::exp(-std::fabs(lamp.x) * 2.2) +
                                    0.9 * std::exp(-dot(lamp, lamp) * 9000));
        return colour;
    };
}

}  // namespace draw
