#include <array>
#include <cmath>
#include <cstdlib>

#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Recipes: the three channels of each pixel recombined in a fixed way.

namespace tessarine {

namespace {

constexpr Colour black{0, 0, 0};
constexpr Colour white{255, 255, 255};

bool isLight(const Colour& c) { return (c.blue & c.green & c.red) > 127; }
bool isDark(const Colour& c) { return (c.blue | c.green | c.red) < 128; }

/// The mean of two channels, a little darkened.
int32_t mean(int32_t a, int32_t b) { return roundFitting((a * 0.99 + b * 0.99) / 2); }

/// Half of a number and a quarter of one, 0 and up: to the nearest, ties to even.
int32_t half(int32_t value) { return (value + (value >> 1 & 1)) >> 1; }
int32_t quarter(int32_t value) { return (value + 1 + (value >> 2 & 1)) >> 2; }

/// The low eight bits of |NOT value|.
int32_t complement(int32_t value) { return std::abs(~value) & 255; }

/// What the arctangent of its green leaves of a pixel's blue.
class BlueShares {
  public:
    BlueShares() {
        for (size_t green = 0; green < shares_.size(); ++green) {
            const double share = std::atan(static_cast<double>(green)) / 1.9;
            shares_[green] = roundToInteger(share * one);
        }
    }
    int32_t of(int32_t blue, int32_t green) const {
        return (blue * shares_[static_cast<size_t>(green)] + one / 2) >> fractionBits;
    }

  private:
    // So fine that each of the 65,536 products is rounded as it would be without a bound.
    static constexpr int32_t fractionBits = 22;
    static constexpr int32_t one = 1 << fractionBits;
    std::array<int32_t, 256> shares_;
};

}  // namespace

PixelBuffer cBitFilter::OLDPHOTO() {
    return filterPixels(OnFailure::skip, [](const Colour& c) {
        const int32_t level = roundFitting(c.blue * 0.071 + c.green * 0.707 + c.red * 0.222);
        return Colour{c.blue, level, level};
    });
}

PixelBuffer cBitFilter::SpecialColors(int16_t R, int16_t G, int16_t b) {
    const auto mask = [](int16_t on) { return on == -1 ? 255 : 0; };
    const Colour kept{mask(b), mask(G), mask(R)};
    return filterPixels(OnFailure::skip, [kept](const Colour& c) { return c & kept; });
}

PixelBuffer cBitFilter::ClassyColors(int16_t Effect) {
    const auto filter = [this](auto recipe) {
        return filterPixels(OnFailure::raise,
                            [recipe](const Colour& c) { return recipe(c.blue, c.green, c.red); });
    };
    switch (Effect) {
        case 0:
            return filter([shares = BlueShares()](int32_t b, int32_t g, int32_t r) {
                return Colour{shares.of(b, g), mean(r, g), g};
            });
        case 1:
            return filter([](int32_t b, int32_t g, int32_t r) { return Colour{b, mean(r, g), g}; });
        case 2:
            return filter([](int32_t b, int32_t g, int32_t r) { return Colour{r, g, mean(r, b)}; });
        case 3:
            return filter([](int32_t b, int32_t g, int32_t r) { return Colour{g, mean(g, b), r}; });
        case 6:
            return filter([](int32_t b, int32_t g, int32_t r) {
                return Colour{quarter(2 * r + b), quarter(r + 2 * g), quarter(g + 2 * b)};
            });
        case 7:
            return filter([](int32_t b, int32_t g, int32_t r) {
                const int32_t t = roundFitting((b * 0.99 * 2 + r * 0.99) / 12);
                return Colour{complement(g - t), complement(r - t), complement(b - t)};
            });
        case 8:
            return filter([](int32_t, int32_t g, int32_t r) { return Colour{g, r, r}; });
        case 10:
            return filter([](int32_t, int32_t g, int32_t r) {
                return Colour{half(g), half(r), r};
            });
        case 11:
            return filter([](int32_t b, int32_t g, int32_t) { return Colour{g, b, 170}; });
        default:
            return filter([](int32_t b, int32_t g, int32_t r) { return Colour{b, g, r}; });
    }
}

PixelBuffer cBitFilter::THERMIQUE() {
    return filterPixels(OnFailure::skip, [](const Colour& c) {
        // A channel goes where another is the strongest alone.
        const bool red = (c.red > c.green) & (c.red > c.blue);
        const bool green = (c.green > c.red) & (c.green > c.blue);
        const bool blue = (c.blue > c.green) & (c.blue > c.red);
        return Colour{green | red ? 0 : c.blue, blue | red ? 0 : c.green, blue | green ? 0 : c.red};
    });
}

PixelBuffer cBitFilter::XBLACK() {
    return filterPixels(OnFailure::skip, [](const Colour& c) {
        return either(isLight(c), black, either(isDark(c), white, c));
    });
}

PixelBuffer cBitFilter::PHOTOCOP() {
    return filterPixels(OnFailure::skip, [](const Colour& c) {
        return either(isLight(c), white, either(isDark(c), black, c));
    });
}

}  // namespace tessarine
