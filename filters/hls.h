#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "pixels/numbers.h"

// Colours by hue, saturation and lightness, as the filters convert them for each pixel.

namespace tessarine {

/// A colour by hue, saturation and lightness, in single precision.
struct HueSaturationLightness {
    /// Sixths of the circle, -1 to 5: 0 red, 2 green, 4 blue; hues between magenta and red are
    /// negative.
    float H = 0;
    float S = 0;  ///< 0 to 1
    float L = 0;  ///< 0 to 1
};

/// Levels of red, green and blue, not limited to a byte.
struct RedGreenBlue {
    int32_t r = 0;
    int32_t g = 0;
    int32_t b = 0;
};

/// The 256 levels of a channel as singles from 0 to 1.
inline constexpr std::array<float, 256> levelShares = [] {
    std::array<float, 256> shares{};
    for (size_t level = 0; level < shares.size(); ++level)
        shares[level] = single(static_cast<double>(level) / 255);
    return shares;
}();

/// Grey has hue and saturation 0.
inline HueSaturationLightness RGBToHLS(uint8_t r, uint8_t g, uint8_t b) {
    const double rf = levelShares[r];
    const double gf = levelShares[g];
    const double bf = levelShares[b];
    const double max = std::max(std::max(rf, gf), bf);
    const double min = std::min(std::min(rf, gf), bf);
    HueSaturationLightness hsl;
    hsl.L = single((max + min) / 2);
    if (max == min) return hsl;

    const double spread = max - min;
    hsl.S = single(spread / (hsl.L <= 0.5F ? max + min : 2 - max - min));
    if (rf == max)
        hsl.H = single((gf - bf) / spread);
    else if (gf == max)
        hsl.H = single((bf - rf) / spread + 2);
    else
        hsl.H = single((rf - gf) / spread + 4);
    return hsl;
}

/// Rounded, not limited: values beyond the ranges of hue, saturation and lightness may give levels
/// beyond a byte. A hue beyond -1 to 5 goes on along the last slope of the circle.
inline RedGreenBlue HLSToRGB(float H, float S, float L) {
    const auto levels = [](double r, double g, double b) {
        return RedGreenBlue{roundToInteger(r * 255), roundToInteger(g * 255),
                            roundToInteger(b * 255)};
    };
    const double h = H;
    const double s = S;
    const double l = L;
    if (s == 0) return levels(l, l, l);

    const double min = l <= 0.5 ? (1 - s) * l : l - (1 - l) * s;
    const double max = 2 * l - min;
    const double spread = max - min;
    if (h < 0) return levels(max, min, min - spread * h);
    if (h < 1) return levels(max, min + spread * h, min);
    if (h < 2) return levels(min - spread * (h - 2), max, min);
    if (h < 3) return levels(min, max, min + spread * (h - 2));
    if (h < 4) return levels(min, min - spread * (h - 4), max);
    return levels(min + spread * (h - 4), min, max);
}

}  // namespace tessarine
