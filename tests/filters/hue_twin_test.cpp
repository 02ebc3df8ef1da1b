#include "hue_twin.h"

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "filters/hls.h"
#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

template <class... Arguments>
std::string textOf(Arguments... arguments) {
    std::string text;
    ((text += (text.empty() ? "(" : ", ") + std::to_string(arguments)), ...);
    return text + ")";
}

/// Any 32 bits, so that the highest byte says something that is to be passed over.
int32_t randomColour(std::mt19937& random) { return static_cast<int32_t>(random()); }

/// A tolerance: mostly such that its circle takes in some colours and leaves out others.
int32_t randomTolerance(std::mt19937& random) {
    return random() % 2 == 0 ? static_cast<int32_t>(random() % 401) - 200 : randomFactor(random);
}

/// A float: mostly near the ranges of hue, saturation and lightness, sometimes any bits at all.
float randomFloat(std::mt19937& random) {
    const auto bits = static_cast<uint32_t>(random());
    switch (random() % 8) {
        case 0: {
            float any = 0;
            std::memcpy(&any, &bits, sizeof any);
            return any;
        }
        case 1:
            return std::numeric_limits<float>::infinity() * (bits % 2 == 0 ? 1.0F : -1.0F);
        case 2:
            return std::numeric_limits<float>::quiet_NaN();
        case 3:
            return 0;
        default:
            return static_cast<float>(bits % 8001) / 1000.0F - 2.0F;
    }
}

TEST(HueTwin, BothConversionsAgreeOnColoursOfAllKinds) {
    for (int32_t r = 0; r < 256; r += 5)
        for (int32_t g = 0; g < 256; g += 3)
            for (int32_t b = 0; b < 256; b += 3) {
                const HueSaturationLightness hsl = RGBToHLS(
                    static_cast<uint8_t>(r), static_cast<uint8_t>(g), static_cast<uint8_t>(b));
                float H = 0;
                float L = 0;
                float S = 0;
                twin::rgbToHls(r, g, b, H, L, S);
                ASSERT_TRUE(hsl.H == H && hsl.L == L && hsl.S == S) << textOf(r, g, b);
                const RedGreenBlue rgb = HLSToRGB(H, S, L);
                int32_t red = 0;
                int32_t green = 0;
                int32_t blue = 0;
                twin::hlsToRgb(H, S, L, red, green, blue);
                ASSERT_TRUE(rgb.r == red && rgb.g == green && rgb.b == blue) << textOf(H, S, L);
            }
}

TEST(HueTwin, ConversionToRedGreenBlueAgreesOnAnyFloats) {
    std::mt19937 random(29);
    for (int i = 0; i < 200000; ++i) {
        const float H = randomFloat(random);
        const float S = randomFloat(random);
        const float L = randomFloat(random);
        const RedGreenBlue rgb = HLSToRGB(H, S, L);
        int32_t r = 0;
        int32_t g = 0;
        int32_t b = 0;
        twin::hlsToRgb(H, S, L, r, g, b);
        ASSERT_TRUE(rgb.r == r && rgb.g == g && rgb.b == b) << textOf(H, S, L);
    }
}

TEST(HueTwin, ColorizeAgrees) {
    compare("COLORIZE", 21, [](std::mt19937& random) {
        const float hue = randomFloat(random);
        const float saturation = randomFloat(random);
        const float luminosity = randomFloat(random);
        return Call{textOf(hue, saturation, luminosity),
                    [=](cBitFilter& f) { return f.COLORIZE(hue, saturation, luminosity); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::colorize(p, r, hue, saturation, luminosity);
                    }};
    });
}

TEST(HueTwin, IsolateAgrees) {
    compare("ISOLATE", 22, [](std::mt19937& random) {
        const int32_t color = randomColour(random);
        const int32_t erase = randomColour(random);
        const int32_t tolerance = randomTolerance(random);
        return Call{textOf(color, erase, tolerance),
                    [=](cBitFilter& f) { return f.ISOLATE(color, erase, tolerance); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::isolate(p, r, color, erase, tolerance);
                    }};
    });
}

TEST(HueTwin, ReplaceAgrees) {
    compare("REPLACE", 23, [](std::mt19937& random) {
        const int32_t from = randomColour(random);
        const int32_t to = randomColour(random);
        const int32_t tolerance = randomTolerance(random);
        return Call{textOf(from, to, tolerance),
                    [=](cBitFilter& f) { return f.REPLACE(from, to, tolerance); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::replaceColour(p, r, from, to, tolerance);
                    }};
    });
}

TEST(HueTwin, ReplaceHsAgrees) {
    compare("ReplaceHS", 24, [](std::mt19937& random) {
        const int32_t from = randomColour(random);
        const int32_t to = randomColour(random);
        const int32_t h = randomTolerance(random);
        const int32_t s = randomTolerance(random);
        const int32_t tolerance = randomTolerance(random);
        return Call{textOf(from, to, h, s, tolerance),
                    [=](cBitFilter& f) { return f.ReplaceHS(from, to, h, s, tolerance); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::replaceHs(p, r, from, to, h, s, tolerance);
                    }};
    });
}

TEST(HueTwin, ReplaceLAgrees) {
    compare("ReplaceL", 25, [](std::mt19937& random) {
        const int32_t from = randomColour(random);
        const int32_t to = randomColour(random);
        const int32_t l = randomTolerance(random);
        const int32_t tolerance = randomTolerance(random);
        return Call{textOf(from, to, l, tolerance),
                    [=](cBitFilter& f) { return f.ReplaceL(from, to, l, tolerance); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::replaceL(p, r, from, to, l, tolerance);
                    }};
    });
}

TEST(HueTwin, RotateHAgrees) {
    compare("RotateH", 26, [](std::mt19937& random) {
        const int32_t offset = randomFactor(random);
        const int32_t saturation = randomFactor(random);
        return Call{textOf(offset, saturation),
                    [=](cBitFilter& f) { return f.RotateH(offset, saturation); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::rotateH(p, r, offset, saturation);
                    }};
    });
}

TEST(HueTwin, RotateLAgrees) {
    compare("RotateL", 27, [](std::mt19937& random) {
        const int32_t offset = randomFactor(random);
        const int32_t step = randomFactor(random);
        return Call{textOf(offset, step), [=](cBitFilter& f) { return f.RotateL(offset, step); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::rotateL(p, r, offset, step);
                    }};
    });
}

TEST(HueTwin, StretchHAgrees) {
    compare("StretchH", 28, [](std::mt19937& random) {
        const int32_t offset = randomFactor(random);
        const int32_t saturation = randomFactor(random);
        const int32_t step = randomFactor(random);
        return Call{textOf(offset, saturation, step),
                    [=](cBitFilter& f) { return f.StretchH(offset, saturation, step); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::stretchH(p, r, offset, saturation, step);
                    }};
    });
}

}  // namespace
}  // namespace tessarine::tests
