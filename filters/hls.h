#pragma once

#include <cmath>
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

/// Grey has hue and saturation 0. Levels 0 to 255; arithmetic for loops over many pixels, in which
/// choices between doubles cost most: so it chooses among levels.
inline HueSaturationLightness RGBToHLS(int32_t r, int32_t g, int32_t b) {
    const int32_t greenBlueMost = g > b ? g : b;
    const int32_t greenBlueLeast = g < b ? g : b;
    const int32_t most = r > greenBlueMost ? r : greenBlueMost;
    const int32_t least = r < greenBlueLeast ? r : greenBlueLeast;
    const int32_t ahead = r == most ? g : g == most ? b : r;
    const int32_t behind = r == most ? b : g == most ? r : g;
    const int32_t sixths = r == most ? 0 : g == most ? 2 : 4;

    // The singles nearest to level / 255.
    const auto share = [](int32_t level) { return static_cast<float>(level) / 255.0F; };
    const double max = share(most);
    const double min = share(least);
    const double sum = max + min;
    // As single(sum / 2) <= 0.5 says.
    const bool isDark = most + least <= 255;
    const double whole = isDark ? sum : 2 - max - min;
    const double spread = max - min;
    const double way = double{share(ahead)} - share(behind);
    const float hue = single(way / spread + sixths);
    const float saturation = single(spread / whole);
    // What comes of dividing by a spread of 0 is passed over.
    const bool isGrey = most == least;
    return {isGrey ? 0 : hue, isGrey ? 0 : saturation, single(sum / 2)};
}

/// Not limited: values beyond the ranges of hue, saturation and lightness may give levels beyond a
/// byte. A hue beyond -1 to 5 goes on along the last slope of the circle. `round` makes whole
/// numbers; arithmetic for loops over many pixels, if that is.
template <class Round>
[[gnu::always_inline]] inline RedGreenBlue HLSToRGB(float H, float S, float L, Round round) {
    const double s = S;
    const double l = L;
    const float h = S == 0 ? 0 : H;  // which matters for no grey
    const double dark = (1 - s) * l;
    const double light = l - (1 - l) * s;
    const double least = L <= 0.5F ? dark : light;
    const double most = 2 * l - least;
    // Between red, green and blue the third channel goes up or down by the way from the nearest.
    const float nearest = h < 1 ? 0 : h < 3 ? 2 : 4;
    const double between = least + (most - least) * std::fabs(double{h} - nearest);
    const int32_t max = round(most * 255);
    const int32_t min = round(least * 255);
    const int32_t mid = round(between * 255);
    return {h < 1   ? max
            : h < 2 ? mid
            : h < 4 ? min
                    : mid,
            h < 0   ? min
            : h < 1 ? mid
            : h < 3 ? max
            : h < 4 ? mid
                    : min,
            h < 0   ? mid
            : h < 2 ? min
            : h < 3 ? mid
                    : max};
}

/// The same for any numbers.
inline RedGreenBlue HLSToRGB(float H, float S, float L) {
    return HLSToRGB(H, S, L, [](double value) { return roundToInteger(value); });
}

}  // namespace tessarine
