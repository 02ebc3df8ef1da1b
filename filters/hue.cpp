#include <array>
#include <cmath>
#include <cstdlib>

#include "filters/colour.h"
#include "filters/hls.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Filters that go by a pixel's colour rather than by its channels: each pixel from itself alone.

namespace tessarine {

namespace {

/// The squared distance up to which a colour counts as near; 1 for a Tolerance of 0.
int32_t toleranceCircle(int32_t Tolerance) {
    const double radius = Tolerance * 127.5 / 100;
    return roundToInteger(radius * radius + 1);
}

/// Turns one colour into another, and those near it less and less, where `gate(colours)` holds.
template <class Gate>
auto softReplacement(int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance, Gate gate) {
    return [from = channelsOf(colourOf(ColorFrom)), to = channelsOf(colourOf(ColorTo)),
            circle = toleranceCircle(Tolerance), gate](const Colour& c) {
        const int32_t distance = squaredDistance(c, from);
        const double nearness = single(1 - distance / static_cast<double>(circle));
        const double k = (distance <= circle) & gate(c) ? nearness : 0;
        const auto mixed = [k](int32_t v, int32_t goal) {
            return roundFitting(v + (goal - v) * k);
        };
        return Colour{mixed(c.blue, to.blue), mixed(c.green, to.green), mixed(c.red, to.red)};
    };
}

HueSaturationLightness hslOf(const Colour& c) { return RGBToHLS(c.red, c.green, c.blue); }

/// Levels beyond a byte keep their low eight bits.
Colour lowBytes(const RedGreenBlue& rgb) { return {rgb.b & 255, rgb.g & 255, rgb.r & 255}; }

/// The colour of a hue, saturation and lightness.
Colour colourOf(float H, float S, float L) { return lowBytes(HLSToRGB(H, S, L)); }

/// Gives each pixel a colour by the sum of its channels.
class BySum {
  public:
    /// \param colour gives the colour of sum / 765
    template <class ColourOf>
    explicit BySum(ColourOf colour) {
        for (size_t sum = 0; sum < colours_.size(); ++sum)
            colours_[sum] = bitsOfColour(colour(static_cast<double>(sum) / 765));
    }
    /// As a change of colours, for as long as this lives.
    auto change() const {
        return [colours = colours_.data()](const Colour& c) {
            return colourOfBits(colours[sumOf(c)]);
        };
    }

  private:
    std::array<uint32_t, 766> colours_;
};

/// The hue that HOffset hundredths of the circle stand for.
float hueOffset(int32_t HOffset) { return single(HOffset / 16.67); }

float hundredths(int32_t value) { return single(value / 100.0); }

}  // namespace

PixelBuffer cBitFilter::COLORIZE(float Hue, float SATURATION, float Luminosity) {
    const BySum bySum([=](double lightness) {
        return colourOf(Hue, SATURATION, single(lightness * Luminosity));
    });
    return filterPixels(OnFailure::raise, bySum.change());
}

PixelBuffer cBitFilter::ISOLATE(int32_t Color, int32_t EraseColor, int32_t Tolerance) {
    const Colour kept = channelsOf(colourOf(Color));
    const Colour erased = channelsOf(colourOf(EraseColor));
    const int32_t circle = toleranceCircle(Tolerance);
    return filterPixels(OnFailure::raise, [=](const Colour& c) {
        return either(squaredDistance(c, kept) >= circle, erased, c);
    });
}

PixelBuffer cBitFilter::REPLACE(int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance) {
    return filterPixels(OnFailure::skip, softReplacement(ColorFrom, ColorTo, Tolerance,
                                                         [](const Colour&) { return true; }));
}

PixelBuffer cBitFilter::ReplaceHS(int32_t ColorFrom, int32_t ColorTo, int32_t HTolerance,
                                  int32_t STolerance, int32_t Tolerance) {
    const HueSaturationLightness from = hslOf(channelsOf(colourOf(ColorFrom)));
    const double hueTolerance = hundredths(HTolerance);
    const double saturationTolerance = hundredths(STolerance);
    // A plain difference: hues at the two ends of the range are far from each other.
    const auto isNear = [=](const Colour& c) {
        const HueSaturationLightness hsl = hslOf(c);
        return (std::fabs(double{hsl.H} - from.H) <= hueTolerance) &
               (std::fabs(double{hsl.S} - from.S) <= saturationTolerance);
    };
    return filterPixels(OnFailure::raise, softReplacement(ColorFrom, ColorTo, Tolerance, isNear));
}

PixelBuffer cBitFilter::ReplaceL(int32_t ColorFrom, int32_t ColorTo, int32_t LTolerance,
                                 int32_t Tolerance) {
    const int32_t from = brightness(channelsOf(colourOf(ColorFrom)));
    const auto isNear = [=](const Colour& c) {
        return std::abs(brightness(c) - from) <= LTolerance;
    };
    return filterPixels(OnFailure::raise, softReplacement(ColorFrom, ColorTo, Tolerance, isNear));
}

PixelBuffer cBitFilter::RotateH(int32_t HOffset, int32_t SATURATION) {
    const double offset = hueOffset(HOffset);
    const double factor = hundredths(SATURATION);
    const auto filter = [=, this](auto round) {
        return filterPixels(OnFailure::raise, [=](const Colour& c) {
            const HueSaturationLightness hsl = hslOf(c);
            const float moved = single(hsl.H + offset);
            const float around = single(double{moved} - 6);
            const float H = moved > 5 ? around : moved;
            return lowBytes(HLSToRGB(H, single(factor * hsl.S), hsl.L, round));
        });
    };
    // Up to there no level comes near the ends of 32 bits.
    constexpr double near = 1000;
    if (std::fabs(offset) <= near && std::fabs(factor) <= near)
        return filter([](double value) { return roundFitting(value); });
    return filter([](double value) { return roundToInteger(value); });
}

PixelBuffer cBitFilter::RotateL(int32_t lOffset, int32_t LStep) {
    const double offset = single(lOffset / 10.0);
    const double step = single(LStep / 2.5);
    return filterPixels(OnFailure::raise, [=](const Colour& c) {
        const double y = 0.707 * c.green + 0.071 * c.blue + 0.222 * c.red;
        // The sine's range is that of a byte, so that nothing is left to wrap.
        const int32_t level = toByte(single(std::sin(y / 255 * step + offset) * 127.5 + 127.5));
        return Colour{level, level, level};
    });
}

PixelBuffer cBitFilter::StretchH(int32_t HOffset, int32_t SATURATION, int32_t HStep) {
    const double offset = hueOffset(HOffset);
    const float saturation = hundredths(SATURATION);
    const double step = single(HStep / 10.0);
    const BySum bySum([=](double lightness) {
        const float V = single(lightness);
        float H = single(3 * std::sin(step * V) + offset);
        if (H < -1)
            H = single(double{H} + 6);
        else if (H > 5)
            H = single(double{H} - 6);
        return colourOf(H, saturation, V);
    });
    return filterPixels(OnFailure::skip, bySum.change());
}

}  // namespace tessarine
