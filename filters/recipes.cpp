#include <array>
#include <cmath>
#include <cstdlib>

#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Recipes: the three channels of each pixel recombined in a fixed way.

namespace tessarine {

namespace {

constexpr Pixel black{0, 0, 0, 0};
constexpr Pixel white{255, 255, 255, 0};

bool isLight(const Pixel& p) { return p.blue > 127 && p.green > 127 && p.red > 127; }
bool isDark(const Pixel& p) { return p.blue < 128 && p.green < 128 && p.red < 128; }

/// The mean of two channels, a little darkened.
uint8_t mean(uint8_t a, uint8_t b) { return toByte((a * 0.99 + b * 0.99) / 2); }

/// The low eight bits of |NOT value|.
uint8_t complement(int32_t value) { return lowByte(std::abs(~value)); }

/// What the arctangent of its green leaves of a pixel's blue.
using BlueShares = std::array<double, 256>;

BlueShares blueSharesByGreen() {
    BlueShares shares;
    for (size_t green = 0; green < shares.size(); ++green)
        shares[green] = std::atan(static_cast<double>(green)) / 1.9;
    return shares;
}

}  // namespace

PixelBuffer cBitFilter::OLDPHOTO() {
    return filterPixels(OnFailure::skip, [](const Pixel& p) {
        const uint8_t level = toByte(p.blue * 0.071 + p.green * 0.707 + p.red * 0.222);
        return Pixel{p.blue, level, level, 0};
    });
}

PixelBuffer cBitFilter::SpecialColors(int16_t R, int16_t G, int16_t b) {
    const auto kept = [](int16_t on, uint8_t v) { return on == -1 ? v : uint8_t{0}; };
    return filterPixels(OnFailure::skip, [=](const Pixel& p) {
        return Pixel{kept(b, p.blue), kept(G, p.green), kept(R, p.red), 0};
    });
}

PixelBuffer cBitFilter::ClassyColors(int16_t Effect) {
    const BlueShares blueShares = blueSharesByGreen();
    return filterPixels(OnFailure::raise, [Effect, &blueShares](const Pixel& p) {
        const auto [b, g, r, fourth] = p;
        switch (Effect) {
            case 0:
                return Pixel{toByte(b * blueShares[g]), mean(r, g), g, 0};
            case 1:
                return Pixel{b, mean(r, g), g, 0};
            case 2:
                return Pixel{r, g, mean(r, b), 0};
            case 3:
                return Pixel{g, mean(g, b), r, 0};
            case 6:
                return Pixel{toByte(r / 2.0 + b / 4.0), toByte(r / 4.0 + g / 2.0),
                             toByte(g / 4.0 + b / 2.0), 0};
            case 7: {
                const int32_t t = roundToInteger((b * 0.99 * 2 + r * 0.99) / 12);
                return Pixel{complement(g - t), complement(r - t), complement(b - t), 0};
            }
            case 8:
                return Pixel{g, r, r, 0};
            case 10:
                return Pixel{toByte(g / 2.0), toByte(r / 2.0), r, 0};
            case 11:
                return Pixel{g, b, 170, 0};
            default:
                return p;
        }
    });
}

PixelBuffer cBitFilter::THERMIQUE() {
    return filterPixels(OnFailure::skip, [](const Pixel& p) {
        if (p.red > p.green && p.red > p.blue) return Pixel{0, 0, p.red, 0};
        if (p.green > p.red && p.green > p.blue) return Pixel{0, p.green, 0, 0};
        if (p.blue > p.green && p.blue > p.red) return Pixel{p.blue, 0, 0, 0};
        return p;
    });
}

PixelBuffer cBitFilter::XBLACK() {
    return filterPixels(OnFailure::skip, [](const Pixel& p) {
        return isLight(p) ? black : isDark(p) ? white : p;
    });
}

PixelBuffer cBitFilter::PHOTOCOP() {
    return filterPixels(OnFailure::skip, [](const Pixel& p) {
        return isLight(p) ? white : isDark(p) ? black : p;
    });
}

}  // namespace tessarine
