#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

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

/// Turns one colour into another, and those near it less and less.
class SoftReplacement {
  public:
    SoftReplacement(int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance)
        : from_(channelsOf(colourOf(ColorFrom))),
          to_(channelsOf(colourOf(ColorTo))),
          circle_(toleranceCircle(Tolerance)) {}

    bool isNear(const Colour& c) const { return squaredDistance(c, from_) <= circle_; }
    /// Of a colour for which `gate` holds, if it is near. The others stay.
    Colour operator()(const Colour& c, bool gate) const {
        const int32_t distance = squaredDistance(c, from_);
        const double nearness = single(1 - distance / static_cast<double>(circle_));
        const double k = (distance <= circle_) & gate ? nearness : 0;
        const auto mixed = [k](int32_t v, int32_t goal) {
            return roundFitting(v + (goal - v) * k);
        };
        return {mixed(c.blue, to_.blue), mixed(c.green, to_.green), mixed(c.red, to_.red)};
    }

  private:
    Colour from_;
    Colour to_;
    int32_t circle_;
};

HueSaturationLightness hslOf(const Colour& c) { return RGBToHLS(c.red, c.green, c.blue); }

/// Levels beyond a byte keep their low eight bits.
Colour lowBytes(const RedGreenBlue& rgb) { return {rgb.b & 255, rgb.g & 255, rgb.r & 255}; }

/// The colour of a hue, saturation and lightness.
Colour colourOf(float H, float S, float L) { return lowBytes(HLSToRGB(H, S, L)); }

/// The colours that `colour(sum / 765)` gives for each sum of a pixel's channels.
template <class ColourOf>
ColoursOfSums coloursOfSums(ColourOf colour) {
    ColoursOfSums colours;
    for (size_t sum = 0; sum < colours.size(); ++sum)
        colours[sum] = bitsOfColour(colour(static_cast<double>(sum) / 765));
    return colours;
}

/// The brightness by which RotateL goes, 0 to 255.
double weighted(const Colour& c) { return 0.707 * c.green + 0.071 * c.blue + 0.222 * c.red; }

/// Greys that go up and down with brightness.
struct GreyWave {
    double offset;
    double step;

    /// Before it becomes a whole number. The sine's range is that of a byte.
    float height(double y) const {
        return single(std::sin(y / 255 * step + offset) * 127.5 + 127.5);
    }
    int32_t level(double y) const { return roundFitting(height(y)); }
};

/// The levels of a GreyWave for all colours, by the thousandths of their brightness. Colours of the
/// same thousandths differ in the last bits of what floats make of them. Where these may decide,
/// which is close to the middle between two levels, the level is worked out from the colour.
class GreyTable {
  public:
    /// Whether the table costs less than the pixels of a rectangle do, and its bound holds: with
    /// larger terms the last bits weigh more.
    static bool isWorth(const GreyWave& wave, const Rect& scan) {
        constexpr double most = 1e6;
        const int64_t pixels = int64_t{scan.right - scan.left} * (scan.bottom - scan.top);
        return pixels >= 2 * count && std::fabs(wave.offset) <= most &&
               std::fabs(wave.step) <= most;
    }
    explicit GreyTable(const GreyWave& wave) : wave_(wave), levels_(count) {
        // Far above what the errors of floats come to: 127.5 * 5e-9 for the sine's argument, and
        // 8e-6 for the single that is kept of the height.
        constexpr double bound = 1e-4;
        constexpr int32_t atOnce = 1024;
        inParallel((count - 1) / atOnce + 1, [&](int32_t part) {
            const int32_t last = std::min(count, (part + 1) * atOnce);
            for (int32_t i = part * atOnce; i < last; ++i) {
                const double height = wave.height(i / 1000.0);
                const int32_t level = roundFitting(height);
                const bool isClear = std::fabs(height - level) < 0.5 - bound;
                levels_[static_cast<size_t>(i)] = static_cast<int16_t>(isClear ? level : -1);
            }
        });
    }
    int32_t level(const Colour& c) const {
        const int16_t level =
            levels_[static_cast<size_t>(707 * c.green + 71 * c.blue + 222 * c.red)];
        return level >= 0 ? level : wave_.level(weighted(c));
    }

  private:
    static constexpr int32_t count = 255001;

    GreyWave wave_;
    std::vector<int16_t> levels_;
};

/// The hue that HOffset hundredths of the circle stand for.
float hueOffset(int32_t HOffset) { return single(HOffset / 16.67); }

float hundredths(int32_t value) { return single(value / 100.0); }

}  // namespace

PixelBuffer cBitFilter::COLORIZE(float Hue, float SATURATION, float Luminosity) {
    return filterSums(OnFailure::raise, coloursOfSums([=](double lightness) {
                          return colourOf(Hue, SATURATION, single(lightness * Luminosity));
                      }));
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
    const SoftReplacement replaced(ColorFrom, ColorTo, Tolerance);
    return filterSome(
        OnFailure::skip, [=](const Colour& c) { return replaced.isNear(c); },
        [=](const Colour& c) { return replaced(c, true); });
}

PixelBuffer cBitFilter::ReplaceHS(int32_t ColorFrom, int32_t ColorTo, int32_t HTolerance,
                                  int32_t STolerance, int32_t Tolerance) {
    const SoftReplacement replaced(ColorFrom, ColorTo, Tolerance);
    const HueSaturationLightness from = hslOf(channelsOf(colourOf(ColorFrom)));
    const double hueTolerance = hundredths(HTolerance);
    const double saturationTolerance = hundredths(STolerance);
    return filterSome(
        OnFailure::raise, [=](const Colour& c) { return replaced.isNear(c); },
        [=](const Colour& c) {
            // A plain difference: hues at the two ends of the range are far from each other.
            const HueSaturationLightness hsl = hslOf(c);
            return replaced(c, (std::fabs(double{hsl.H} - from.H) <= hueTolerance) &
                                   (std::fabs(double{hsl.S} - from.S) <= saturationTolerance));
        });
}

PixelBuffer cBitFilter::ReplaceL(int32_t ColorFrom, int32_t ColorTo, int32_t LTolerance,
                                 int32_t Tolerance) {
    const SoftReplacement replaced(ColorFrom, ColorTo, Tolerance);
    const int32_t from = brightness(channelsOf(colourOf(ColorFrom)));
    return filterSome(
        OnFailure::raise, [=](const Colour& c) { return replaced.isNear(c); },
        [=](const Colour& c) { return replaced(c, std::abs(brightness(c) - from) <= LTolerance); });
}

PixelBuffer cBitFilter::RotateH(int32_t HOffset, int32_t SATURATION) {
    const double offset = hueOffset(HOffset);
    const double factor = hundredths(SATURATION);
    const auto filter = [=, this](auto round) {
        return filterPixels(OnFailure::raise, [=](const Colour& c) {
            const HueSaturationLightness hsl = hslOf(c);
            const float moved = single(hsl.H + offset);
            const float around = moved - 6;
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
    const GreyWave wave{single(lOffset / 10.0), single(LStep / 2.5)};
    const auto grey = [](int32_t level) { return Colour{level, level, level}; };
    if (GreyTable::isWorth(wave, regionBox(0).scan)) {
        const GreyTable table(wave);
        return filterPixels(OnFailure::raise,
                            [=, &table](const Colour& c) { return grey(table.level(c)); });
    }
    return filterPixels(OnFailure::raise,
                        [=](const Colour& c) { return grey(wave.level(weighted(c))); });
}

PixelBuffer cBitFilter::StretchH(int32_t HOffset, int32_t SATURATION, int32_t HStep) {
    const double offset = hueOffset(HOffset);
    const float saturation = hundredths(SATURATION);
    const double step = single(HStep / 10.0);
    const auto colourAt = [=](double lightness) {
        const float V = single(lightness);
        float H = single(3 * std::sin(step * V) + offset);
        if (H < -1)
            H = single(double{H} + 6);
        else if (H > 5)
            H = single(double{H} - 6);
        return colourOf(H, saturation, V);
    };
    return filterSums(OnFailure::skip, coloursOfSums(colourAt));
}

}  // namespace tessarine
