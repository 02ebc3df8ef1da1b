#include "noise.h"
#include "scenes.h"

// Ranges in the morning haze above a lake: each range is a line across the picture, paler the
// farther it stands, with haze lying in the valley at its foot.

namespace draw {

namespace {

constexpr double shore = 0.815;

/// Height of a row of spruces above the ground at x, in picture heights.
double spruces(double x, double spacing, double height, int64_t seed) {
    double top = 0;
    const double at = x / spacing;
    const auto nearest = static_cast<int64_t>(std::floor(at));
    for (int64_t i = nearest - 2; i <= nearest + 2; ++i) {
        const double middle = static_cast<double>(i) + 0.2 + 0.6 * hash(i, seed);
        const double tall = height * (0.35 + 0.65 * hash(i, seed, 1) * hash(i, seed, 2));
        const double half = 0.55 + 0.35 * hash(i, seed, 3);
        const double out = std::fabs(at - middle) / half;
        if (out >= 1) continue;
        // Branches in storeys: the outline steps back towards the tip.
        const double storeys = 9;
        const double level = 1 - out;
        const double step = std::floor(level * storeys) / storeys;
        top = std::max(top, tall * mix(level, step + 0.9 / storeys, 0.45));
    }
    return top;
}

Vec3 sky(double x, double y, double aspect) {
    const Vec2 sun{0.66 * aspect, 0.30};
    const double toSun = length(Vec2{x, y} - sun);
    Vec3 colour = mix(srgb(0x5C93CC), srgb(0xF7E3C4), smoothstep(-0.05, 0.52, y));
    colour = mix(colour, srgb(0xFFC98A), 0.55 * std::exp(-toSun * 3.2));
    const double cirrus = fractal(x * 1.6 + 3 + 0.4 * y, y * 7.5 - 0.9 * x, 6, 41);
    colour = mix(colour, srgb(0xFFF4E6),
                 0.75 * smoothstep(0.50, 0.78, cirrus) * smoothstep(0.46, 0.10, y));
    colour += srgb(0xFFE2B0) * (1.1 * std::exp(-toSun * toSun * 900));
    colour += srgb(0xFFD9A0) * (0.35 * std::exp(-toSun * 9));
    return colour;
}

/// The high range: rock and snow, lit from the side of the sun.
bool peaks(double x, double y, double aspect, Vec3& colour) {
    const double massif = std::exp(-4.5 * std::pow((x / aspect - 0.30), 2) * aspect);
    const double crest = 0.47 - 0.245 * massif * (0.55 + 0.75 * ridges(x * 2.1, 0.7, 7, 11)) -
                         0.05 * fractal(x * 5, 2, 6, 9);
    if (y < crest) return false;
    const double depth = y - crest;
    const auto relief = [&](double dx) {
        return ridges((x + dx) * 4.2 + depth * 1.3, depth * 3.4 + 5, 7, 23);
    };
    const double slope = (relief(0.004) - relief(-0.004)) / 0.008;
    const double light = saturate(0.50 + 0.10 * slope);
    const double snow = smoothstep(0.33, 0.50, relief(0) + 0.40 - depth * 1.6);
    const Vec3 rock = mix(srgb(0x38455E), srgb(0xA08F88), light);
    const Vec3 white = mix(srgb(0x6F8CBE), srgb(0xFFF3E4), light);
    colour = mix(rock, white, snow);
    colour = mix(colour, srgb(0xD9D8DC), 0.18 + 0.62 * smoothstep(0.03, 0.28, depth));
    return true;
}

Vec3 land(double x, double y, double aspect) {
    Vec3 colour = sky(x, y, aspect);
    peaks(x, y, aspect, colour);
    struct Range {
        double line, swing, wave;
        int near, haze;
        double trees;
    };
    constexpr Range ranges[] = {
        {0.475, 0.090, 1.5, 0x8FA3BE, 0xEADFD2, 0},
        {0.545, 0.095, 1.9, 0x6C87A6, 0xE6DCD0, 0},
        {0.615, 0.090, 2.3, 0x4E6F8C, 0xDCD8CF, 0.010},
        {0.680, 0.085, 2.7, 0x37586F, 0xCBD2CF, 0.020},
        {0.735, 0.070, 3.1, 0x24434F, 0xB4C4C4, 0.040},
        {0.785, 0.045, 2.6, 0x152D30, 0x7F9A96, 0.085},
    };
    int64_t number = 0;
    for (const Range& r : ranges) {
        ++number;
        const double ground = r.line - r.swing *
                                           (fractal(x * r.wave + 7.7 * static_cast<double>(number),
                                                    0.5, 7, 60 + number) -
                                            0.35) *
                                           2;
        double top = ground;
        if (r.trees > 0) top -= spruces(x, r.trees * 0.30, r.trees, number);
        if (y < top) continue;
        const double depth = std::max(0.0, y - top);
        const double below = std::max(0.0, y - ground + 0.5 * r.trees);
        Vec3 side = srgb(r.near);
        const double wood = fractal(x * 70, y * 70 + static_cast<double>(number), 3, 80 + number);
        side = side * (0.78 + 0.44 * wood);
        const double warm = std::exp(-3.0 * std::fabs(x / aspect - 0.66));
        side += srgb(0xC98E55) * (0.10 * warm * std::exp(-depth * 30));
        const double drift = fractal(x * 2.2 + static_cast<double>(number), y * 9, 5, 100 + number);
        const double haze = smoothstep(0.02, 0.17, below) * (0.55 + 0.75 * drift);
        colour = mix(side, srgb(r.haze), saturate(haze) * (number < 6 ? 0.92 : 0.35));
    }
    return colour;
}

}  // namespace

Scene mountains(double aspect) {
    return [=](double x, double y) {
        if (y < shore) return land(x, y, aspect);
        // The lake mirrors the land, the more broken the nearer the water.
        const double depth = (y - shore) / (1 - shore);
        const double ripple = (fractal(x * 9, 26 / (0.10 + depth) * 0.7, 4, 7) - 0.5);
        const double fine = (fractal(x * 40, 90 / (0.12 + depth), 3, 8) - 0.5);
        const double bend = depth * (0.050 * ripple + 0.018 * fine);
        const double up = shore - (y - shore) * 2.1 - bend * 2;
        Vec3 water = land(x + bend * 0.5, std::max(up, 0.0), aspect);
        water = mix(water * Vec3{0.80, 0.86, 0.90}, srgb(0x16323F), 0.20 + 0.30 * depth);
        // Reeds in the corner stand before everything.
        const double reeds = smoothstep(0.36, 0.0, x);
        if (reeds > 0) {
            for (int i = 0; i < 46; ++i) {
                const double foot = 0.36 * hash(i, 5) * hash(i, 6);
                const double tall = 0.10 + 0.16 * hash(i, 7);
                const double lean = (hash(i, 8) - 0.35) * 0.10;
                const double up01 = (1.02 - y) / tall;
                if (up01 > 1) continue;
                const double middle = foot + lean * up01 * up01;
                const double half = 0.0022 * (1 - 0.85 * up01);
                const double inside = smoothstep(half, half * 0.6, std::fabs(x - middle));
                water = mix(water, mix(srgb(0x0D1A14), srgb(0x5A5A2E), up01 * hash(i, 9)), inside);
            }
        }
        return water;
    };
}

}  // namespace draw
