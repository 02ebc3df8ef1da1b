#include "noise.h"
#include "scenes.h"

// Two nights: the northern light over a frozen lake, and the Milky Way over a camp in the hills.

namespace draw {

namespace {

/// Stars as light: one to a cell of a lattice, few of them bright.
Vec3 stars(double x, double y, double perHeight, double bright, int64_t seed) {
    Vec3 light;
    const auto cx = static_cast<int64_t>(std::floor(x * perHeight));
    const auto cy = static_cast<int64_t>(std::floor(y * perHeight));
    for (int64_t i = cx - 1; i <= cx + 1; ++i) {
        for (int64_t k = cy - 1; k <= cy + 1; ++k) {
            const double power = std::pow(hash(i, k, seed), 14);
            if (power < 0.003) continue;
            const Vec2 at{(static_cast<double>(i) + hash(i, k, seed + 1)) / perHeight,
                          (static_cast<double>(k) + hash(i, k, seed + 2)) / perHeight};
            const Vec2 off = Vec2{x, y} - at;
            const double size = 0.0008 + 0.0011 * power;
            const double warmth = hash(i, k, seed + 3);
            const Vec3 tint = mix(srgb(0xA9C4FF), srgb(0xFFD9B0), warmth);
            light += tint * (bright * power *
                             (std::exp(-dot(off, off) / (size * size)) * 2.2 +
                              0.10 * std::exp(-length(off) / (size * 3))));
        }
    }
    return light;
}

/// Pointed trees along a line; the height of their tips above it.
double wood(double x, double spacing, double height, int64_t seed) {
    double top = 0;
    const double at = x / spacing;
    const auto nearest = static_cast<int64_t>(std::floor(at));
    for (int64_t i = nearest - 2; i <= nearest + 2; ++i) {
        const double middle = static_cast<double>(i) + hash(i, seed);
        const double tall = height * (0.3 + 0.7 * std::pow(hash(i, seed, 1), 2));
        const double out = std::fabs(at - middle) / (0.5 + 0.4 * hash(i, seed, 2));
        if (out >= 1) continue;
        const double teeth = 0.08 * std::fabs(fract((1 - out) * 11) - 0.5);
        top = std::max(top, tall * (1 - out + teeth * out));
    }
    return top;
}

Vec3 northernLight(double x, double y) {
    Vec3 light;
    struct Curtain {
        double height, sway, phase, strength;
    };
    constexpr Curtain curtains[] = {
        {0.50, 0.13, 0.2, 1.00}, {0.40, 0.16, 2.6, 0.75}, {0.30, 0.12, 4.4, 0.50}};
    int64_t number = 0;
    for (const Curtain& c : curtains) {
        ++number;
        const double bend = 0.55 * fractal(x * 1.1 + c.phase, 0.3, 3, 200 + number);
        const double hem = c.height + c.sway * std::sin(3.1 * x + c.phase + 4 * bend) - 0.10 * bend;
        const double along = x + 0.22 * bend + 0.05 * std::sin(9 * x + c.phase);
        const double rays = 0.35 + 0.65 * fractal(along * 34, 0.2 + y * 0.35, 4, 210 + number, 0.6);
        const double folds =
            0.35 + 0.9 * smoothstep(0.30, 0.75, noise(along * 4.2, 7, 220 + number));
        const double above = hem - y;
        const double length = 0.13 + 0.22 * rays * folds;
        const double glow =
            std::exp(-std::fabs(above) / length) * smoothstep(-0.022, 0.030, above) +
            0.16 * std::exp(-std::fabs(above) / 0.10) / (0.3 + rays);
        const Vec3 low = srgb(0x3DFFA2);
        const Vec3 high = srgb(0x8A4DFF);
        Vec3 tint = mix(low, high, smoothstep(0.05, 0.36, above));
        tint = mix(tint, srgb(0xFF5FA8), 0.22 * smoothstep(0.014, -0.018, above));
        light += tint * (0.68 * c.strength * glow * rays * rays * folds);
    }
    return light;
}

Vec3 polarNight(double x, double y) {
    Vec3 colour = mix(srgb(0x050B22), srgb(0x0F3A4A), smoothstep(0.0, 0.72, y));
    const Vec3 light = northernLight(x, y);
    const double clear = 1 / (1 + 5 * light.y);
    colour += (stars(x, y, 34, 0.9, 300) + stars(x, y, 95, 0.5, 310)) * clear;
    colour += light;
    const auto range = [&](double line, double swing, double wave, int64_t seed) {
        return line - swing * ridges(x * wave, 0.4, 6, seed);
    };
    const double far = range(0.72, 0.17, 1.6, 320);
    if (y > far) {
        const double slope = ridges(x * 7 + (y - far) * 5, (y - far) * 12, 5, 330) - 0.4;
        const double snow = saturate(0.45 + 1.3 * slope);
        colour = mix(srgb(0x0B1B2E), srgb(0x5FA59A), snow * 0.75 * smoothstep(0.2, 0.0, y - far));
    }
    const double near = 0.735 - 0.030 * fractal(x * 3, 1, 5, 340) - wood(x, 0.014, 0.055, 350);
    if (y > near) colour = mix(srgb(0x02060A), srgb(0x0A1A1A), smoothstep(0.0, 0.05, y - near));
    return colour;
}

Vec3 galaxy(double x, double y) {
    const Vec2 p = rotated({x - 0.80, y - 0.36}, 0.92);
    const double wobble = 0.07 * (fractal(p.x * 2.2, 3, 4, 400) - 0.5);
    const double across = (p.y + wobble) / (0.15 + 0.06 * std::exp(-p.x * p.x * 6));
    const double band = std::exp(-across * across);
    const double cloud = fractal(p.x * 4.5, p.y * 7, 8, 410, 0.58);
    const double dust = fractal(p.x * 3.6 + 5, p.y * 8.5 + 2, 8, 420, 0.58);
    const double lane = smoothstep(0.46, 0.66, dust + 0.16 * std::exp(-across * across * 7));
    const Vec3 core = mix(srgb(0x7E90C8), srgb(0xF2C9A0), std::exp(-p.x * p.x * 7));
    Vec3 light = core * (0.55 * band * std::pow(cloud, 1.7) * 2.1);
    light = mix(light, light * Vec3{0.22, 0.15, 0.13}, lane * band);
    light += srgb(0xD8587A) *
             (0.45 * band * smoothstep(0.70, 0.84, fractal(p.x * 11, p.y * 11, 5, 430)));
    light += stars(x, y, 210, 0.55 * band * (1 - 0.75 * lane), 440);
    return light;
}

}  // namespace

Scene aurora(double) {
    return [](double x, double y) {
        constexpr double shore = 0.755;
        if (y < shore) return polarNight(x, y);
        const double depth = (y - shore) / (1 - shore);
        const double ripple = fractal(x * 5, 10 / (0.1 + depth), 4, 360) - 0.5;
        const double up = shore - (y - shore) * 2.3 + 0.09 * depth * ripple;
        Vec3 water = polarNight(x + 0.02 * ripple, std::max(0.0, up)) * 0.62;
        // Broken plates of ice with bright rims.
        const double plates = ridges(x * 5 * (1.4 - 0.7 * depth), 9 / (0.35 + depth), 4, 370);
        const double crack = smoothstep(0.72, 0.90, plates);
        water = mix(water, srgb(0x2A6E74) * 0.8, 0.45 * smoothstep(0.30, 0.62, plates) * depth);
        return mix(water, srgb(0x9ADFC8), 0.35 * crack * smoothstep(0.05, 0.5, depth));
    };
}

Scene milkyWay(double) {
    return [](double x, double y) {
        Vec3 colour = mix(srgb(0x04070F), srgb(0x14233F), smoothstep(0.0, 0.75, y));
        colour = mix(colour, srgb(0x7A4A33), 0.55 * smoothstep(0.50, 0.82, y));
        colour += galaxy(x, y) * smoothstep(0.86, 0.45, y);
        const double clear = 1 - 0.7 * smoothstep(0.55, 0.82, y);
        colour +=
            (stars(x, y, 16, 1.3, 450) + stars(x, y, 60, 0.6, 460) + stars(x, y, 130, 0.5, 470)) *
            clear;
        const double far = 0.80 - 0.11 * fractal(x * 1.7, 1, 7, 480);
        if (y > far) colour = mix(srgb(0x0A0E18), srgb(0x241C22), smoothstep(0.06, 0.0, y - far));
        const double hill =
            0.915 - 0.09 * smoothstep(1.3, 0.3, x) - 0.02 * fractal(x * 4, 2, 6, 490);
        const double grass = 0.010 * noise(x * 420, 0, 495) * noise(x * 60, 0, 496);
        const double trees = wood(x, 0.020, 0.14, 497) * smoothstep(0.95, 1.25, x);
        if (y > hill - grass - trees) colour = srgb(0x020306);
        // A lit tent, and its light on the grass.
        const Vec2 tent{x - 0.52, y - (hill + 0.004)};
        const double glow = std::exp(-length(Vec2{tent.x, tent.y * 1.6}) * 22);
        if (y > hill - grass)
            colour += srgb(0xE08A35) * (0.35 * glow * fractal(x * 160, y * 60, 3, 498));
        const double roof = -0.062 + 1.05 * std::fabs(tent.x) + 1.6 * tent.x * tent.x;
        if (tent.y > roof && tent.y < 0.004) {
            const double seam = std::fabs(tent.x - 0.010 + 0.15 * tent.y);
            const double inside = std::exp(-length(tent - Vec2{0.0, -0.014}) * 26);
            colour = mix(srgb(0x8A3A12), srgb(0xFFC766), saturate(1.35 * inside));
            colour = mix(colour, srgb(0x5A2208), smoothstep(0.003, 0.001, seam));
        } else {
            colour += srgb(0xFF9A40) * (0.10 * glow);
        }
        return colour;
    };
}

}  // namespace draw
