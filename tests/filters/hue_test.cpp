#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "filters/hls.h"
#include "member_checks.h"
#include "pixels/bit_filter.h"
#include "support/comparison.h"
#include "support/engine.h"

// The hue members by values worked out by hand. Pixels are written blue, green, red, fourth;
// colour arguments by rgb().

namespace tessarine::tests {
namespace {

constexpr int32_t rgb(int32_t r, int32_t g, int32_t b) { return r + 256 * g + 65536 * b; }

/// A conversion's outcome in the order of the circle's table.
using Three = std::array<int32_t, 3>;

Three levelsOf(float H, float S, float L) {
    const RedGreenBlue levels = HLSToRGB(H, S, L);
    return {levels.r, levels.g, levels.b};
}

TEST(Hue, PureColoursLieASixthApart) {
    EXPECT_EQ(RGBToHLS(255, 0, 0).H, 0);
    EXPECT_EQ(RGBToHLS(0, 255, 0).H, 2);
    EXPECT_EQ(RGBToHLS(0, 0, 255).H, 4);
    EXPECT_EQ(RGBToHLS(255, 0, 0).S, 1);
    EXPECT_EQ(RGBToHLS(255, 0, 0).L, 0.5F);
}

TEST(Hue, RedWinsATieWithBothOthersAndGreenOneWithBlue) {
    EXPECT_EQ(RGBToHLS(255, 255, 0).H, 1);
    EXPECT_EQ(RGBToHLS(255, 0, 255).H, -1);
    EXPECT_EQ(RGBToHLS(0, 255, 255).H, 3);
}

TEST(Hue, HuesBetweenMagentaAndRedAreNegative) {
    EXPECT_FLOAT_EQ(RGBToHLS(255, 0, 51).H, -0.2F);
    EXPECT_FLOAT_EQ(RGBToHLS(204, 0, 255).H, 4.8F);
}

TEST(Hue, GreyHasNoHueAndNoSaturation) {
    for (int32_t level = 0; level < 256; ++level) {
        const auto v = static_cast<uint8_t>(level);
        const HueSaturationLightness hsl = RGBToHLS(v, v, v);
        EXPECT_EQ(hsl.H, 0);
        EXPECT_EQ(hsl.S, 0);
        EXPECT_EQ(hsl.L, static_cast<float>(level / 255.0));
    }
}

TEST(Hue, SaturationIsMeasuredAgainstTheLightnessFromBothEnds) {
    // Lightness 64 of 255: spread 64 against a sum of 128.
    EXPECT_FLOAT_EQ(RGBToHLS(96, 32, 32).S, 0.5F);
    // Lightness 191 of 255: spread 64 against 2 * 255 - 382 = 128.
    EXPECT_FLOAT_EQ(RGBToHLS(223, 159, 159).S, 0.5F);
    EXPECT_FLOAT_EQ(RGBToHLS(223, 159, 159).L, 191 / 255.0F);
}

TEST(Hue, EachSixthOfTheCircleRisesOrFallsInOneChannel) {
    // Halfway 127.5 rounds to the even 128.
    EXPECT_EQ(levelsOf(-0.5F, 1, 0.5F), (Three{255, 0, 128}));
    EXPECT_EQ(levelsOf(0.5F, 1, 0.5F), (Three{255, 128, 0}));
    EXPECT_EQ(levelsOf(1.5F, 1, 0.5F), (Three{128, 255, 0}));
    EXPECT_EQ(levelsOf(2.5F, 1, 0.5F), (Three{0, 255, 128}));
    EXPECT_EQ(levelsOf(3.5F, 1, 0.5F), (Three{0, 128, 255}));
    EXPECT_EQ(levelsOf(4.5F, 1, 0.5F), (Three{128, 0, 255}));
}

TEST(Hue, TheSixthsMeetInThePureAndTheMixedColours) {
    EXPECT_EQ(levelsOf(-1, 1, 0.5F), (Three{255, 0, 255}));
    EXPECT_EQ(levelsOf(0, 1, 0.5F), (Three{255, 0, 0}));
    EXPECT_EQ(levelsOf(1, 1, 0.5F), (Three{255, 255, 0}));
    EXPECT_EQ(levelsOf(2, 1, 0.5F), (Three{0, 255, 0}));
    EXPECT_EQ(levelsOf(3, 1, 0.5F), (Three{0, 255, 255}));
    EXPECT_EQ(levelsOf(4, 1, 0.5F), (Three{0, 0, 255}));
    EXPECT_EQ(levelsOf(5, 1, 0.5F), (Three{255, 0, 255}));
}

TEST(Hue, SaturationSpreadsAroundTheLightness) {
    // Lightness 0.25: 0.125 to 0.375. Lightness 0.75: 0.625 to 0.875.
    EXPECT_EQ(levelsOf(0, 0.5F, 0.25F), (Three{96, 32, 32}));
    EXPECT_EQ(levelsOf(0, 0.5F, 0.75F), (Three{223, 159, 159}));
    EXPECT_EQ(levelsOf(3.3F, 0, 0.2F), (Three{51, 51, 51}));
}

TEST(Hue, LevelsAreNotLimited) {
    EXPECT_EQ(levelsOf(0, 0, 2), (Three{510, 510, 510}));
    EXPECT_EQ(levelsOf(0, 0, -1), (Three{-255, -255, -255}));
    EXPECT_EQ(levelsOf(7, 1, 0.5F), (Three{765, 0, 255}));
    EXPECT_EQ(levelsOf(-3, 1, 0.5F), (Three{255, 0, 765}));
    // A saturation of 3 at lightness 0.25: -0.5 to 1.
    EXPECT_EQ(levelsOf(0, 3, 0.25F), (Three{255, -128, -128}));
}

TEST(Hue, ThereAndBackGivesTheColour) {
    for (int32_t r = 0; r < 256; r += 3)
        for (int32_t g = 0; g < 256; g += 5)
            for (int32_t b = 0; b < 256; b += 5) {
                const HueSaturationLightness hsl = RGBToHLS(
                    static_cast<uint8_t>(r), static_cast<uint8_t>(g), static_cast<uint8_t>(b));
                ASSERT_EQ(levelsOf(hsl.H, hsl.S, hsl.L), (Three{r, g, b}));
            }
}

TEST(Hue, ColorizeTakesTheLightnessAlone) {
    // Three colours of the sum 384: lightness 0.502. Sepia spreads it to 0.3775 and 0.6265.
    Engine engine(rowOf({{128, 128, 128, 1}, {255, 129, 0, 2}, {0, 129, 255, 3}}));
    EXPECT_EQ(pixelsOf(engine.filter.COLORIZE(0.5F, 0.25F, 1)),
              (Pixels{{96, 128, 160, 1}, {96, 128, 160, 2}, {96, 128, 160, 3}}));
}

TEST(Hue, ColorizeByLuminosity1KeepsBlackAndWhite) {
    Engine engine(rowOf({grey(0), grey(255)}));
    for (const float hue : {-1.0F, 0.3F, 2.5F, 5.0F})
        for (const float saturation : {0.0F, 0.5F, 1.0F})
            EXPECT_EQ(pixelsOf(engine.filter.COLORIZE(hue, saturation, 1)),
                      (Pixels{grey(0), grey(255)}));
}

TEST(Hue, ColorizeAboveAByteKeepsTheLowEightBits) {
    // Lightness 2 at saturation 0.25 gives 2.25 and 1.75: 574, 510, 446, less 256 as often as
    // needed.
    Engine engine(rowOf({grey(255)}));
    EXPECT_EQ(pixelsOf(engine.filter.COLORIZE(0.5F, 0.25F, 2)), (Pixels{{62, 254, 190, 0}}));
    // Without saturation: 300 percent of 100 is 300.
    Engine dark(rowOf({grey(100)}));
    EXPECT_EQ(pixelsOf(dark.filter.COLORIZE(0, 0, 3)), (Pixels{grey(44)}));
}

TEST(Hue, ColorizeByWhatIsNoNumberGivesBlack) {
    // No 32 bits hold the levels; the lowest integer's low eight bits are 0.
    Engine engine(rowOf({grey(100), {1, 2, 3, 4}}));
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(pixelsOf(engine.filter.COLORIZE(0, 0.5F, none)), (Pixels{grey(0), {0, 0, 0, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.COLORIZE(0, 0, std::numeric_limits<float>::infinity())),
              (Pixels{grey(0), {0, 0, 0, 4}}));
}

TEST(Hue, IsolateAtTolerance0KeepsTheExactColourAlone) {
    Engine engine(rowOf({{10, 20, 30, 7}, {10, 20, 31, 8}, {255, 255, 255, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.ISOLATE(rgb(30, 20, 10), rgb(3, 2, 1), 0)),
              (Pixels{{10, 20, 30, 7}, {1, 2, 3, 8}, {1, 2, 3, 9}}));
}

TEST(Hue, IsolateErasesFromTheCircleItselfOn) {
    // (2 * 1.275) squared and 1 is 7.5: 8. Distances 5 = 4 + 1 and 8 = 4 + 4.
    Engine engine(rowOf({{102, 101, 100, 0}, {102, 98, 100, 0}}));
    const Pixels expected{{102, 101, 100, 0}, {0, 0, 255, 0}};
    EXPECT_EQ(pixelsOf(engine.filter.ISOLATE(rgb(100, 100, 100), rgb(255, 0, 0), 2)), expected);
    EXPECT_EQ(pixelsOf(engine.filter.ISOLATE(rgb(100, 100, 100), rgb(255, 0, 0), -2)), expected);
}

TEST(Hue, ReplaceAtTolerance0TurnsTheExactColourIntoTheOtherAndNothingElse) {
    // At distance 1, the circle itself, nothing is left of the effect.
    Engine engine(rowOf({{10, 20, 30, 7}, {10, 21, 30, 8}, {10, 20, 28, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.REPLACE(rgb(30, 20, 10), rgb(200, 0, 255), 0)),
              (Pixels{{255, 0, 200, 7}, {10, 21, 30, 8}, {10, 20, 28, 9}}));
}

TEST(Hue, ReplaceFadesOutTowardsTheCircle) {
    // The circle is 8. Distance 4: half of the way. Distance 5: 3 / 8 of it, 102 + 36.75 and
    // 101 - 0.375 and 100 - 37.5, to the even 62. Distances 8 and 9 stay.
    Engine engine(rowOf({grey(100),
                         {102, 100, 100, 0},
                         {102, 101, 100, 0},
                         {102, 102, 100, 0},
                         {103, 100, 100, 0}}));
    const Pixels expected{{200, 100, 0, 0},
                          {151, 100, 50, 0},
                          {139, 101, 62, 0},
                          {102, 102, 100, 0},
                          {103, 100, 100, 0}};
    EXPECT_EQ(pixelsOf(engine.filter.REPLACE(rgb(100, 100, 100), rgb(0, 100, 200), 2)), expected);
    EXPECT_EQ(pixelsOf(engine.filter.REPLACE(rgb(100, 100, 100), rgb(0, 100, 200), -2)), expected);
}

TEST(Hue, ColoursHighestByteSaysNothing) {
    const PixelBuffer picture = randomBuffer(20, 20, 1);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.REPLACE(rgb(9, 99, 199) + 0x7F000000, rgb(1, 2, 3) - 0x1000000, 150),
              engine.filter.REPLACE(rgb(9, 99, 199), rgb(1, 2, 3), 150));
}

TEST(Hue, AToleranceWhoseCircleNo32BitsHoldReachesNothing) {
    // 36346 percent is the first: its circle has 2147517402. 36345 percent still reaches all.
    const PixelBuffer picture = randomBuffer(20, 20, 2);
    const PixelBuffer erased = drawBuffer(20, 20, [&](int32_t x, int32_t y) {
        return Pixel{3, 2, 1, picture.at(x, y).fourth};
    });
    const int32_t own = rgb(picture.at(0, 0).red, picture.at(0, 0).green, picture.at(0, 0).blue);
    Engine engine(picture);
    for (const int32_t tolerance : {36346, -36346, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(engine.filter.REPLACE(own, rgb(1, 2, 3), tolerance), picture);
        EXPECT_EQ(engine.filter.ISOLATE(own, rgb(1, 2, 3), tolerance), erased);
    }
    EXPECT_EQ(engine.filter.ISOLATE(own, rgb(1, 2, 3), 36345), picture);
}

TEST(Hue, ReplaceHsTakesHuesUpToTheTolerance) {
    // From red, yellow lies a sixth away. (300 * 1.275) squared and 1 is 146307: at distance
    // 65025 there is 0.5556 of the effect, and 255 goes to 113.
    Engine engine(rowOf({{0, 255, 255, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, 100, 0, 300)),
              (Pixels{{0, 113, 113, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, 99, 0, 300)),
              (Pixels{{0, 255, 255, 0}}));
}

TEST(Hue, ReplaceHsTakesSaturationsUpToTheTolerance) {
    // Saturation 128 / 254 = 0.504 against 1. Distance 63 * 63 + 2 * 64 * 64 = 12161 of 146307:
    // 0.9169 of the effect, 192 goes to 15.96 and 64 to 5.3.
    Engine engine(rowOf({{64, 64, 192, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, 0, 50, 300)),
              (Pixels{{5, 5, 16, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, 0, 49, 300)),
              (Pixels{{64, 64, 192, 0}}));
}

TEST(Hue, ReplaceHsDoesNotJoinTheEndsOfTheHues) {
    // Magenta has hue -1; with one level less of red it has 4.996.
    Engine engine(rowOf({{255, 0, 255, 0}, {255, 0, 254, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 255), 0, 500, 100, 200)),
              (Pixels{{0, 0, 0, 0}, {255, 0, 254, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 255), 0, 600, 100, 200)),
              (Pixels{{0, 0, 0, 0}, {0, 0, 0, 0}}));
}

TEST(Hue, ReplaceHsKeepsToTheCircleToo) {
    // Distance 4 of a circle of 3.
    Engine engine(rowOf({{0, 0, 255, 0}, {0, 0, 253, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), rgb(0, 255, 0), 600, 100, 1)),
              (Pixels{{0, 255, 0, 0}, {0, 0, 253, 0}}));
}

TEST(Hue, ReplaceLTakesBrightnessesUpToTheToleranceAsItStands) {
    // Brightness 85; 261 \ 3 = 87 is 2 away, 264 \ 3 = 88 is 3. (20 * 1.275) squared and 1 is
    // 651: at distance 36 there is 0.9447 of the effect.
    Engine engine(rowOf({{0, 6, 255, 0}, {0, 9, 255, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceL(rgb(255, 0, 0), rgb(0, 255, 0), 2, 20)),
              (Pixels{{0, 241, 14, 0}, {0, 9, 255, 0}}));
}

TEST(Hue, NegativeTolerancesOfHueSaturationAndBrightnessTakeNothing) {
    Engine engine(rowOf({{0, 0, 255, 0}}));
    const Pixels source{{0, 0, 255, 0}};
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceL(rgb(255, 0, 0), 0, -1, 20)), source);
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, -1, 0, 20)), source);
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, 0, -1, 20)), source);
    EXPECT_EQ(pixelsOf(engine.filter.ReplaceHS(rgb(255, 0, 0), 0, 0, 0, 20)), Pixels{grey(0)});
}

TEST(Hue, RotateHByNothingGivesTheSource) {
    const PixelBuffer picture = randomBuffer(60, 50, 3);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.RotateH(0, 100), picture);
}

TEST(Hue, RotateHTurnsByHundredthsOfTheCircle) {
    // 50 / 16.67 = 2.9994 sixths: from red to cyan, less 0.15 of a level. Blue goes to 6.9994
    // and back to 0.9994, yellow.
    Engine engine(rowOf({{0, 0, 255, 0}, {255, 0, 0, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.RotateH(50, 100)),
              (Pixels{{255, 255, 0, 0}, {0, 255, 255, 0}}));
}

TEST(Hue, RotateHWrapsOnceAndAtTheUpperEndOnly) {
    Engine engine(rowOf({{0, 0, 255, 0}}));
    // 5.9988, which goes back to -0.0012.
    EXPECT_EQ(pixelsOf(engine.filter.RotateH(100, 100)), (Pixels{{0, 0, 255, 0}}));
    // 11.9976, which goes back to 5.9976: red 1.9976 * 255 = 509, whose low eight bits are 253.
    EXPECT_EQ(pixelsOf(engine.filter.RotateH(200, 100)), (Pixels{{255, 0, 253, 0}}));
    // -2.9994: blue 2.9994 * 255 = 765, whose low eight bits are 253.
    EXPECT_EQ(pixelsOf(engine.filter.RotateH(-50, 100)), (Pixels{{253, 0, 255, 0}}));
}

TEST(Hue, RotateHLeavesGreyGrey) {
    const PixelBuffer picture =
        drawBuffer(256, 1, [](int32_t x, int32_t) { return grey(static_cast<uint8_t>(x)); });
    Engine engine(picture);
    EXPECT_EQ(engine.filter.RotateH(0, 100), picture);
    EXPECT_EQ(engine.filter.RotateH(37, 250), picture);
}

TEST(Hue, RotateHWithoutSaturationGivesTheLightness) {
    // Half of the sum of the largest and the smallest: 127.5 to the even 128, 64, 121.
    Engine engine(rowOf({{0, 0, 255, 1}, {32, 96, 32, 2}, {200, 100, 42, 3}}));
    EXPECT_EQ(pixelsOf(engine.filter.RotateH(37, 0)),
              (Pixels{{128, 128, 128, 1}, {64, 64, 64, 2}, {121, 121, 121, 3}}));
}

TEST(Hue, RotateHBeyondFullSaturationKeepsTheLowEightBits) {
    // Saturation 0.5 times 3 at lightness 64 of 255: 160 and -32.
    Engine engine(rowOf({{32, 32, 96, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.RotateH(0, 300)), (Pixels{{224, 224, 160, 0}}));
}

TEST(Hue, RotateLGoesAsASineOfTheBrightness) {
    // sin(20 * Y / 255 + 1) * 127.5 + 127.5: 234.8, 94.3, 0.12, 234.2.
    Engine engine(rowOf({grey(0), grey(64), grey(128), grey(255)}));
    EXPECT_EQ(pixelsOf(engine.filter.RotateL(10, 50)),
              (Pixels{grey(235), grey(94), grey(0), grey(234)}));
}

TEST(Hue, RotateLWeighsTheChannels) {
    // The step 2 / 2.5 of the weights themselves.
    Engine engine(rowOf({{255, 0, 0, 1}, {0, 255, 0, 2}, {0, 0, 255, 3}}));
    Pixels expected;
    for (const double y : {0.071, 0.707, 0.222}) {
        const auto level = static_cast<uint8_t>(std::lround(std::sin(y * 0.8) * 127.5 + 127.5));
        expected.push_back({level, level, level, static_cast<uint8_t>(expected.size() + 1)});
    }
    EXPECT_EQ(pixelsOf(engine.filter.RotateL(0, 2)), expected);
}

TEST(Hue, RotateLOfBlackWithoutOffsetIsTheMiddle) {
    // 127.5, to the even 128.
    Engine engine(rowOf({grey(0)}));
    EXPECT_EQ(pixelsOf(engine.filter.RotateL(0, 77)), Pixels{grey(128)});
}

TEST(Hue, RotateLReachesBothEndsOfAByteAndStaysWithin) {
    const PixelBuffer picture = randomBuffer(200, 100, 4);
    Engine engine(picture);
    for (const int32_t step : {100, 2147483647, -2147483647 - 1}) {
        int lowest = 255;
        int highest = 0;
        const PixelBuffer result = engine.filter.RotateL(step, step);
        for (int32_t y = 0; y < 100; ++y)
            for (int32_t x = 0; x < 200; ++x) {
                const Pixel& p = result.at(x, y);
                ASSERT_TRUE(p.blue == p.green && p.green == p.red);
                lowest = std::min<int>(lowest, p.blue);
                highest = std::max<int>(highest, p.blue);
            }
        EXPECT_EQ(lowest, 0);
        EXPECT_EQ(highest, 255);
    }
}

TEST(Hue, StretchHGoesByTheBrightness) {
    // The sum 255 has lightness 1 / 3, at saturation 0.5 from 42.5 to 127.5, both a little above
    // as singles. Hue 3 * sin(2 / 3) + 0.6 = 2.455: blue 42.5 + 85 * 0.455 = 81.2.
    Engine engine(rowOf({{0, 0, 255, 1}, {255, 0, 0, 2}, {85, 85, 85, 3}, grey(0), grey(255)}));
    EXPECT_EQ(pixelsOf(engine.filter.StretchH(10, 50, 20)),
              (Pixels{{81, 128, 43, 1}, {81, 128, 43, 2}, {81, 128, 43, 3}, grey(0), grey(255)}));
}

TEST(Hue, StretchHWithoutAStepGivesEveryPixelOneHue) {
    // Hue 0.6: green 42.5 + 85 * 0.59988 = 93.49. The other pixel has another brightness.
    Engine engine(rowOf({{0, 0, 255, 0}, {0, 255, 255, 0}}));
    const PixelBuffer result = engine.filter.StretchH(10, 50, 0);
    EXPECT_EQ(result.at(0, 0), (Pixel{43, 93, 128, 0}));
    for (int32_t x = 0; x < 2; ++x) {
        const Pixel& p = result.at(x, 0);
        EXPECT_NEAR(RGBToHLS(p.red, p.green, p.blue).H, 10 / 16.67, 0.02);
        EXPECT_NEAR(RGBToHLS(p.red, p.green, p.blue).S, 0.5, 0.02);
    }
}

TEST(Hue, StretchHWrapsOnceAtBothEnds) {
    Engine engine(rowOf({{0, 0, 255, 0}}));
    // -1.19976 goes to 4.80024: red 42.5 + 85 * 0.80024 = 110.5 (110.52).
    EXPECT_EQ(pixelsOf(engine.filter.StretchH(-20, 50, 0)), (Pixels{{128, 43, 111, 0}}));
    // 5.9988 goes to -0.0012: blue 42.5 + 85 * 0.0012 = 42.6.
    EXPECT_EQ(pixelsOf(engine.filter.StretchH(100, 50, 0)), (Pixels{{43, 43, 128, 0}}));
    // 11.9976 goes to 5.9976 and no further: red 42.5 + 85 * 1.9976 = 212.3.
    EXPECT_EQ(pixelsOf(engine.filter.StretchH(200, 50, 0)), (Pixels{{128, 43, 212, 0}}));
}

const NamedCall hueMembers[] = {
    {"COLORIZE", false, [](cBitFilter& f) { return f.COLORIZE(0.5F, 0.25F, 1); }},
    {"ISOLATE", false, [](cBitFilter& f) { return f.ISOLATE(rgb(1, 2, 3), rgb(7, 8, 9), 5); }},
    {"REPLACE", true, [](cBitFilter& f) { return f.REPLACE(rgb(90, 90, 90), 0, 300); }},
    {"ReplaceHS", false,
     [](cBitFilter& f) { return f.ReplaceHS(rgb(99, 90, 90), 0, 600, 100, 300); }},
    {"ReplaceL", false, [](cBitFilter& f) { return f.ReplaceL(rgb(90, 90, 90), 0, 255, 300); }},
    {"RotateH", false, [](cBitFilter& f) { return f.RotateH(20, 90); }},
    {"RotateL", false, [](cBitFilter& f) { return f.RotateL(20, 90); }},
    {"StretchH", true, [](cBitFilter& f) { return f.StretchH(20, 90, 20); }},
};

TEST(Hue, AReportOfAPictureOneRowHighIsSkippedOrFailsAsTheMemberDoes) {
    expectTheRuleOfOneRow(hueMembers);
}

TEST(Hue, EveryMemberReportsItsRowsAndItsEnd) { expectReportsOfEachRowAndTheEnd(hueMembers); }

TEST(Hue, EveryMemberKeepsMarginFourthChannelSourceAndWhatLiesOutsideTheRegion) {
    expectOnlyTheRegionsColoursToChange(hueMembers);
}

TEST(Hue, EveryMemberWithoutARegionGivesTheSourceAndReportsItsEnd) {
    expectNoRegionToGiveTheSource(hueMembers);
}

TEST(Hue, EveryMemberTakesAnySizeAndAnyRegion) { expectNoSizeToMatter(hueMembers); }

}  // namespace
}  // namespace tessarine::tests
