#pragma once

#include <cstdint>

#include "vec.h"

// Repeatable irregularity: every number is a function of a position, so that a picture comes out
// the same on each drawing, whatever the number of threads.

namespace draw {

inline double hash(int64_t x, int64_t y = 0, int64_t z = 0) {
    uint64_t h = static_cast<uint64_t>(x) * 0x9E3779B97F4A7C15U;
    h ^= static_cast<uint64_t>(y) * 0xC2B2AE3D27D4EB4FU + (h >> 29);
    h ^= static_cast<uint64_t>(z) * 0x165667B19E3779F9U + (h << 13);
    h ^= h >> 33;
    h *= 0xFF51AFD7ED558CCDU;
    h ^= h >> 33;
    h *= 0xC4CEB9FE1A85EC53U;
    h ^= h >> 33;
    return static_cast<double>(h >> 11) / 9007199254740992.0;
}

/// Smooth noise from 0 to 1 with features about 1 apart.
inline double noise(double x, double y, int64_t seed = 0) {
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const auto ix = static_cast<int64_t>(fx);
    const auto iy = static_cast<int64_t>(fy);
    const auto ease = [](double t) { return t * t * t * (t * (t * 6 - 15) + 10); };
    const double u = ease(x - fx);
    const double v = ease(y - fy);
    return mix(mix(hash(ix, iy, seed), hash(ix + 1, iy, seed), u),
               mix(hash(ix, iy + 1, seed), hash(ix + 1, iy + 1, seed), u), v);
}

/// Noise summed over `octaves`, each twice as fine and `gain` as strong; 0 to 1, mean 0.5.
inline double fractal(double x, double y, int octaves, int64_t seed = 0, double gain = 0.5) {
    double sum = 0;
    double weight = 1;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += weight * noise(x, y, seed + i);
        total += weight;
        weight *= gain;
        // Turned a little between octaves, so that the lattice does not show.
        const Vec2 turned = rotated({x, y}, 0.6) * 2.03;
        x = turned.x;
        y = turned.y;
    }
    return sum / total;
}

/// Noise with sharp crests, as mountains and veins have them; 0 to 1.
inline double ridges(double x, double y, int octaves, int64_t seed = 0) {
    double sum = 0;
    double weight = 1;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        const double crest = 1 - std::fabs(2 * noise(x, y, seed + i) - 1);
        sum += weight * crest * crest;
        total += weight;
        weight *= 0.5;
        const Vec2 turned = rotated({x, y}, 0.7) * 2.07;
        x = turned.x;
        y = turned.y;
    }
    return sum / total;
}

}  // namespace draw
