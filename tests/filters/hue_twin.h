#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twin of the hue family: one plain loop over x and y for each member, to be checked by
// eye. It shares nothing with the library but the buffer and the region type.

namespace tessarine::tests::twin {

inline void rgbToHls(int32_t r, int32_t g, int32_t b, float& H, float& L, float& S) {
    const float rf = static_cast<float>(r / 255.0);
    const float gf = static_cast<float>(g / 255.0);
    const float bf = static_cast<float>(b / 255.0);
    double Max = rf;
    if (gf > Max) Max = gf;
    if (bf > Max) Max = bf;
    double Min = rf;
    if (gf < Min) Min = gf;
    if (bf < Min) Min = bf;
    L = static_cast<float>((Max + Min) / 2.0);
    if (Max == Min) {
        S = 0;
        H = 0;
        return;
    }
    if (double{L} <= 0.5)
        S = static_cast<float>((Max - Min) / (Max + Min));
    else
        S = static_cast<float>((Max - Min) / (2.0 - Max - Min));
    if (double{rf} == Max)
        H = static_cast<float>((double{gf} - double{bf}) / (Max - Min));
    else if (double{gf} == Max)
        H = static_cast<float>((double{bf} - double{rf}) / (Max - Min) + 2.0);
    else
        H = static_cast<float>((double{rf} - double{gf}) / (Max - Min) + 4.0);
}

inline void hlsToRgb(float hue, float saturation, float lightness, int32_t& r, int32_t& g,
                     int32_t& b) {
    const double H = hue;
    const double S = saturation;
    const double L = lightness;
    if (S == 0.0) {
        r = round(L * 255.0);
        g = round(L * 255.0);
        b = round(L * 255.0);
        return;
    }
    double Min = 0;
    if (L <= 0.5)
        Min = (1.0 - S) * L;
    else
        Min = L - (1.0 - L) * S;
    const double Max = 2.0 * L - Min;
    const double D = Max - Min;
    double red = 0;
    double green = 0;
    double blue = 0;
    if (H < 0.0) {
        red = Max;
        green = Min;
        blue = Min - D * H;
    } else if (0.0 <= H && H < 1.0) {
        red = Max;
        green = Min + D * H;
        blue = Min;
    } else if (1.0 <= H && H < 2.0) {
        red = Min - D * (H - 2.0);
        green = Max;
        blue = Min;
    } else if (2.0 <= H && H < 3.0) {
        red = Min;
        green = Max;
        blue = Min + D * (H - 2.0);
    } else if (3.0 <= H && H < 4.0) {
        red = Min;
        green = Min - D * (H - 4.0);
        blue = Max;
    } else {
        red = Min + D * (H - 4.0);
        green = Min;
        blue = Max;
    }
    r = round(red * 255.0);
    g = round(green * 255.0);
    b = round(blue * 255.0);
}

/// The pixel of a hue, saturation and lightness by its levels' low eight bits.
inline Pixel ofHls(float H, float S, float L) {
    int32_t r = 0;
    int32_t g = 0;
    int32_t b = 0;
    hlsToRgb(H, S, L, r, g, b);
    return {static_cast<uint8_t>(b & 255), static_cast<uint8_t>(g & 255),
            static_cast<uint8_t>(r & 255), 0};
}

inline int32_t redOf(int32_t colour) { return colour & 255; }
inline int32_t greenOf(int32_t colour) { return colour >> 8 & 255; }
inline int32_t blueOf(int32_t colour) { return colour >> 16 & 255; }

inline int32_t circle(int32_t Tolerance) {
    return round(std::pow(Tolerance * 127.5 / 100.0, 2.0) + 1.0);
}

inline int32_t distance(const Pixel& p, int32_t colour) {
    return (p.blue - blueOf(colour)) * (p.blue - blueOf(colour)) +
           (p.green - greenOf(colour)) * (p.green - greenOf(colour)) +
           (p.red - redOf(colour)) * (p.red - redOf(colour));
}

inline Pixel softStep(const Pixel& p, int32_t ColorFrom, int32_t ColorTo, int32_t Tolerance) {
    const int32_t T = circle(Tolerance);
    const int32_t D = distance(p, ColorFrom);
    if (D > T) return p;
    const float k = static_cast<float>(1.0 - static_cast<double>(D) / T);
    const int32_t b = round(p.blue + (blueOf(ColorTo) - p.blue) * double{k});
    const int32_t g = round(p.green + (greenOf(ColorTo) - p.green) * double{k});
    const int32_t r = round(p.red + (redOf(ColorTo) - p.red) * double{k});
    return {static_cast<uint8_t>(b), static_cast<uint8_t>(g), static_cast<uint8_t>(r), 0};
}

inline PixelBuffer colorize(const PixelBuffer& source, const Region& region, float Hue,
                            float Saturation, float Luminosity) {
    return loop(source, region, [&](Pixel p) {
        const float L = static_cast<float>((p.blue + p.green + p.red) / 765.0 * double{Luminosity});
        return ofHls(Hue, Saturation, L);
    });
}

inline PixelBuffer isolate(const PixelBuffer& source, const Region& region, int32_t Color,
                           int32_t EraseColor, int32_t Tolerance) {
    return loop(source, region, [&](Pixel p) {
        if (distance(p, Color) >= circle(Tolerance))
            p = {static_cast<uint8_t>(blueOf(EraseColor)),
                 static_cast<uint8_t>(greenOf(EraseColor)), static_cast<uint8_t>(redOf(EraseColor)),
                 0};
        return p;
    });
}

inline PixelBuffer replaceColour(const PixelBuffer& source, const Region& region, int32_t ColorFrom,
                                 int32_t ColorTo, int32_t Tolerance) {
    return loop(source, region,
                [&](Pixel p) { return softStep(p, ColorFrom, ColorTo, Tolerance); });
}

inline PixelBuffer replaceHs(const PixelBuffer& source, const Region& region, int32_t ColorFrom,
                             int32_t ColorTo, int32_t HTolerance, int32_t STolerance,
                             int32_t Tolerance) {
    float H0 = 0;
    float L0 = 0;
    float S0 = 0;
    rgbToHls(redOf(ColorFrom), greenOf(ColorFrom), blueOf(ColorFrom), H0, L0, S0);
    const float HT = static_cast<float>(HTolerance / 100.0);
    const float ST = static_cast<float>(STolerance / 100.0);
    return loop(source, region, [&](Pixel p) {
        float H = 0;
        float L = 0;
        float S = 0;
        rgbToHls(p.red, p.green, p.blue, H, L, S);
        if (std::abs(double{H} - double{H0}) <= double{HT} &&
            std::abs(double{S} - double{S0}) <= double{ST})
            return softStep(p, ColorFrom, ColorTo, Tolerance);
        return p;
    });
}

inline PixelBuffer replaceL(const PixelBuffer& source, const Region& region, int32_t ColorFrom,
                            int32_t ColorTo, int32_t LTolerance, int32_t Tolerance) {
    const int32_t L0 = (redOf(ColorFrom) + greenOf(ColorFrom) + blueOf(ColorFrom)) / 3;
    return loop(source, region, [&](Pixel p) {
        const int32_t L = (p.blue + p.green + p.red) / 3;
        if (std::abs(L - L0) <= LTolerance) return softStep(p, ColorFrom, ColorTo, Tolerance);
        return p;
    });
}

inline PixelBuffer rotateH(const PixelBuffer& source, const Region& region, int32_t HOffset,
                           int32_t Saturation) {
    const float HO = static_cast<float>(HOffset / 16.67);
    const float SF = static_cast<float>(Saturation / 100.0);
    return loop(source, region, [&](Pixel p) {
        float H = 0;
        float L = 0;
        float S = 0;
        rgbToHls(p.red, p.green, p.blue, H, L, S);
        H = static_cast<float>(double{H} + double{HO});
        if (double{H} > 5.0) H = static_cast<float>(double{H} - 6.0);
        return ofHls(H, static_cast<float>(double{SF} * double{S}), L);
    });
}

inline PixelBuffer rotateL(const PixelBuffer& source, const Region& region, int32_t lOffset,
                           int32_t LStep) {
    const float O = static_cast<float>(lOffset / 10.0);
    const float ST = static_cast<float>(LStep / 2.5);
    return loop(source, region, [&](Pixel p) {
        const double Y = 0.707 * p.green + 0.071 * p.blue + 0.222 * p.red;
        float v = static_cast<float>(std::sin(Y / 255.0 * double{ST} + double{O}) * 127.5 + 127.5);
        if (double{v} > 255.0)
            v = static_cast<float>(double{v} - 255.0);
        else if (double{v} < 0.0)
            v = static_cast<float>(double{v} + 255.0);
        const auto level = static_cast<uint8_t>(round(double{v}));
        return Pixel{level, level, level, 0};
    });
}

inline PixelBuffer stretchH(const PixelBuffer& source, const Region& region, int32_t HOffset,
                            int32_t Saturation, int32_t HStep) {
    const float HO = static_cast<float>(HOffset / 16.67);
    const float SF = static_cast<float>(Saturation / 100.0);
    const float HS = static_cast<float>(HStep / 10.0);
    return loop(source, region, [&](Pixel p) {
        const float V = static_cast<float>((p.blue + p.green + p.red) / 765.0);
        float H = static_cast<float>(3.0 * std::sin(double{HS} * double{V}) + double{HO});
        if (double{H} < -1.0)
            H = static_cast<float>(double{H} + 6.0);
        else if (double{H} > 5.0)
            H = static_cast<float>(double{H} - 6.0);
        return ofHls(H, SF, V);
    });
}

}  // namespace tessarine::tests::twin
