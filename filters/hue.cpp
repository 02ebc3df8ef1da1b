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

/// Turns one colour into another, and those near it less and less, where `gate(pixel)` holds. The
/// gate is asked last, about the pixels within the circle: it may take longer than the distance.
template <class Gate>
auto softReplacement(int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance, Gate gate) {
    return [from = colourOf(ColorFrom), to = colourOf(ColorTo), circle = toleranceCircle(Tolerance),
            gate](const Pixel& p) {
        const int32_t distance = squaredDistance(p, from);
        if (distance > circle || !gate(p)) return p;
        const double k = single(1 - distance / static_cast<double>(circle));
        const auto mixed = [k](uint8_t v, uint8_t goal) { return toByte(v + (goal - v) * k); };
        return Pixel{mixed(p.blue, to.blue), mixed(p.green, to.green), mixed(p.red, to.red), 0};
    };
}

HueSaturationLightness hslOf(const Pixel& p) { return RGBToHLS(p.red, p.green, p.blue); }

/// The pixel of a hue, saturation and lightness; levels beyond a byte keep their low eight bits.
Pixel pixelOf(float H, float S, float L) {
    const RedGreenBlue rgb = HLSToRGB(H, S, L);
    return {lowByte(rgb.b), lowByte(rgb.g), lowByte(rgb.r), 0};
}

/// Gives each pixel `colour(sum / 765)` of its channels' sum, worked out once for each of the 766
/// sums.
template <class Colour>
auto bySum(Colour colour) {
    std::array<Pixel, 766> colours;
    for (size_t sum = 0; sum < colours.size(); ++sum)
        colours[sum] = colour(static_cast<double>(sum) / 765);
    return [colours](const Pixel& p) {
        return colours[static_cast<size_t>(p.blue + p.green + p.red)];
    };
}

/// The hue that HOffset hundredths of the circle stand for.
float hueOffset(int32_t HOffset) { return single(HOffset / 16.67); }

float hundredths(int32_t value) { return single(value / 100.0); }

}  // namespace

PixelBuffer cBitFilter::COLORIZE(float Hue, float SATURATION, float Luminosity) {
    return filterPixels(OnFailure::raise, bySum([=](double lightness) {
                            return pixelOf(Hue, SATURATION, single(lightness * Luminosity));
                        }));
}

PixelBuffer cBitFilter::ISOLATE(int32_t Color, int32_t EraseColor, int32_t Tolerance) {
    const Pixel kept = colourOf(Color);
    const Pixel erased = colourOf(EraseColor);
    const int32_t circle = toleranceCircle(Tolerance);
    return filterPixels(OnFailure::raise, [=](const Pixel& p) {
        return squaredDistance(p, kept) >= circle ? erased : p;
    });
}

PixelBuffer cBitFilter::REPLACE(int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance) {
    return filterPixels(OnFailure::skip, softReplacement(ColorFrom, ColorTo, Tolerance,
                                                         [](const Pixel&) { return true; }));
}

PixelBuffer cBitFilter::ReplaceHS(int32_t ColorFrom, int32_t ColorTo, int32_t HTolerance,
                                  int32_t STolerance, int32_t Tolerance) {
    const HueSaturationLightness from = hslOf(colourOf(ColorFrom));
    const double hueTolerance = hundredths(HTolerance);
    const double saturationTolerance = hundredths(STolerance);
    // A plain difference: hues at the two ends of the range are far from each other.
    const auto isNear = [=](const Pixel& p) {
        const HueSaturationLightness hsl = hslOf(p);
        return std::fabs(double{hsl.H} - from.H) <= hueTolerance &&
               std::fabs(double{hsl.S} - from.S) <= saturationTolerance;
    };
    return filterPixels(OnFailure::raise, softReplacement(ColorFrom, ColorTo, Tolerance, isNear));
}

PixelBuffer cBitFilter::ReplaceL(int32_t ColorFrom, int32_t ColorTo, int32_t LTolerance,
                                 int32_t Tolerance) {
    const int32_t from = brightness(colourOf(ColorFrom));
    const auto isNear = [=](const Pixel& p) {
        return std::abs(brightness(p) - from) <= LTolerance;
    };
    return filterPixels(OnFailure::raise, softReplacement(ColorFrom, ColorTo, Tolerance, isNear));
}

PixelBuffer cBitFilter::RotateH(int32_t HOffset, int32_t SATURATION) {
    const double offset = hueOffset(HOffset);
    const double factor = hundredths(SATURATION);
    return filterPixels(OnFailure::raise, [=](const Pixel& p) {
        const HueSaturationLightness hsl = hslOf(p);
        float H = single(hsl.H + offset);
        if (H > 5) H = single(double{H} - 6);
        return pixelOf(H, single(factor * hsl.S), hsl.L);
    });
}

PixelBuffer cBitFilter::RotateL(int32_t lOffset, int32_t LStep) {
    const double offset = single(lOffset / 10.0);
    const double step = single(LStep / 2.5);
    return filterPixels(OnFailure::raise, [=](const Pixel& p) {
        const double y = 0.707 * p.green + 0.071 * p.blue + 0.222 * p.red;
        // The sine's range is that of a byte, so that nothing is left to wrap.
        const uint8_t level = toByte(single(std::sin(y / 255 * step + offset) * 127.5 + 127.5));
        return Pixel{level, level, level, 0};
    });
}

PixelBuffer cBitFilter::StretchH(int32_t HOffset, int32_t SATURATION, int32_t HStep) {
    const double offset = hueOffset(HOffset);
    const float saturation = hundredths(SATURATION);
    const double step = single(HStep / 10.0);
    return filterPixels(OnFailure::skip, bySum([=](double lightness) {
                            const float V = single(lightness);
                            float H = single(3 * std::sin(step * V) + offset);
                            if (H < -1)
                                H = single(double{H} + 6);
                            else if (H > 5)
                                H = single(double{H} - 6);
                            return pixelOf(H, saturation, V);
                        }));
}

}  // namespace tessarine
