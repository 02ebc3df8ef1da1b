#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "member_checks.h"
#include "pixels/bit_filter.h"
#include "support/clock.h"
#include "support/comparison.h"
#include "support/pictures.h"

// The tone members by values worked out by hand. Pixels are written blue, green, red, fourth.

namespace tessarine::tests {
namespace {

/// Grey levels as a picture of one row.
PixelBuffer greys(const std::vector<uint8_t>& levels) {
    std::vector<Pixel> pixels;
    for (const uint8_t level : levels)
        pixels.push_back(grey(level));
    return rowOf(pixels);
}

/// The levels of a picture of one row, of which each pixel must be grey.
std::vector<uint8_t> levelsOf(const PixelBuffer& row) {
    std::vector<uint8_t> levels;
    for (const Pixel& p : pixelsOf(row)) {
        EXPECT_TRUE(p.blue == p.green && p.green == p.red);
        levels.push_back(p.blue);
    }
    return levels;
}

using Levels = std::vector<uint8_t>;

TEST(Tone, BrightnessAddsAndStopsAtBothEnds) {
    Engine engine(rowOf({{0, 100, 250, 7}, {255, 5, 6, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.BRIGHTNESS(6)), (Pixels{{6, 106, 255, 7}, {255, 11, 12, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.BRIGHTNESS(-6)), (Pixels{{0, 94, 244, 7}, {249, 0, 0, 9}}));
}

TEST(Tone, BrightnessAndShiftByNothingGiveTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 1);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.BRIGHTNESS(0), picture);
    EXPECT_EQ(engine.filter.ShiftRGB(0, 0, 0), picture);
}

TEST(Tone, BrightnessWrapsAt32Bits) {
    // 1 + 2147483647 wraps to the lowest integer, which the limit brings to 0; 0 + it does not.
    Engine engine(greys({0, 1}));
    EXPECT_EQ(levelsOf(engine.filter.BRIGHTNESS(2147483647)), (Levels{255, 0}));
}

TEST(Tone, ContrastByNothingGivesTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 2);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.Contrast(0), picture);
}

TEST(Tone, ContrastSpreadsAroundTheTruncatedMean) {
    // Brightnesses 10, 20, 21: mean 51 \ 3 = 17. At 50 percent: (10 - 17) * 1.5 + 17 = 6.5, to
    // the even 6; (20 - 17) * 1.5 + 17 = 21.5, to 22; (21 - 17) * 1.5 + 17 = 23.
    Engine engine(greys({10, 20, 21}));
    EXPECT_EQ(levelsOf(engine.filter.Contrast(50)), (Levels{6, 22, 23}));
}

TEST(Tone, ContrastMinus100GivesTheMeanEverywhere) {
    Engine engine(greys({10, 20, 21}));
    EXPECT_EQ(levelsOf(engine.filter.Contrast(-100)), (Levels{17, 17, 17}));
}

TEST(Tone, ContrastPassesOnHalfOfWhatAChannelLosesToEachOther) {
    // Brightnesses 250 \ 3 = 83 and 117: mean 100, c = 2. Blue, green, red start at -100, -100,
    // 400 and go, channel by channel:
    //   blue:  0, -150, 350    green: -75, 0, 275     red: -65, 10, 255
    //   blue:  0, -22, 223     green: -11, 0, 212
    //   blue:  0, -5, 207      green: -2, 0, 205
    //   blue:  0, -1, 204      green: -1 \ 2 = 0 goes on: 0, 0, 204
    // The other pixel is (117 - 100) * 2 + 100 = 134.
    Engine engine(rowOf({{0, 0, 250, 0}, grey(117)}));
    EXPECT_EQ(pixelsOf(engine.filter.Contrast(100)), (Pixels{{0, 0, 204, 0}, grey(134)}));
}

TEST(Tone, ContrastOfAPixelWithoutAPositiveChannelIsBlackAndAboveAllWhite) {
    // Mean (20 + 235) \ 2 = 127, c = 3: 20 gives -194 and 235 gives 451 in all three channels.
    Engine engine(greys({20, 235}));
    EXPECT_EQ(levelsOf(engine.filter.Contrast(200)), (Levels{0, 255}));
}

TEST(Tone, ContrastTakesItsMeanFromTheWholeImageWhateverTheRegion) {
    Engine engine(greys({10, 20, 21}));
    engine.region = regionOf({{1, 0, 2, 1}});
    engine.filter.BitsRegion(engine.region);
    EXPECT_EQ(levelsOf(engine.filter.Contrast(50)), (Levels{10, 22, 21}));
}

TEST(Tone, ContrastReportsTwoSeriesUpTo100) {
    const PixelBuffer picture = randomBuffer(3, 4, 3);
    Engine engine(picture);
    engine.region = regionOf({{0, 2, 3, 4}});
    engine.filter.BitsRegion(engine.region);
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    std::vector<int32_t> reports;
    keepReports(engine.filter, reports);
    engine.filter.Contrast(10);
    // Four rows of the whole image and the end; then the two rows of the region and the end.
    EXPECT_EQ(reports, (std::vector<int32_t>{0, 33, 66, 100, 100, 66, 100, 100}));
}

TEST(Tone, ContrastOfAnEmptyImageHasMean0) {
    // An image without pixels still has a margin, which the region may reach: 50 * 2 = 100 shows
    // that the mean was 0.
    PixelBuffer empty(0, 0);
    std::fill_n(empty.writableBlock(), empty.pixelCount(), grey(50));
    Engine engine(empty);
    engine.region = regionOf({{-2, -2, 2, 2}});
    engine.filter.BitsRegion(engine.region);
    std::vector<int32_t> reports;
    keepReports(engine.filter, reports);
    const PixelBuffer result = engine.filter.Contrast(100);
    for (size_t i = 0; i < result.pixelCount(); ++i)
        EXPECT_EQ(result.block()[i], grey(100));
    EXPECT_EQ(reports, (std::vector<int32_t>{100, 100}));
}

TEST(Tone, ContrastOfAnObjectWithoutABufferGivesNone) {
    cBitFilter filter;
    std::vector<int32_t> reports;
    keepReports(filter, reports);
    EXPECT_FALSE(filter.Contrast(10).isDimensioned());
    EXPECT_EQ(reports, (std::vector<int32_t>{100, 100}));
}

TEST(Tone, TheSpillOfContrastEndsForEveryFactor) {
    std::mt19937 random(4);
    Engine engine(randomBuffer(40, 25, 5));
    std::vector<int32_t> factors{2147483647, -2147483647 - 1, 2147483547, 2147483548, -101, -99};
    while (factors.size() < 1500)
        factors.push_back(static_cast<int32_t>(random()) >> random() % 32);
    size_t ended = 0;
    for (const int32_t factor : factors) {
        engine.filter.Contrast(factor);
        ++ended;
    }
    EXPECT_EQ(ended, factors.size());
}

TEST(Tone, GammaFollowsThePower) {
    // Factor 100: the square root, sqrt(64 * 255) = 127.75. Factor -50: the square,
    // 100 * 100 / 255 = 39.2 and 200 * 200 / 255 = 156.9.
    Engine engine(greys({0, 64, 100, 200, 255}));
    EXPECT_EQ(levelsOf(engine.filter.GammaCorrection(100)), (Levels{0, 128, 160, 226, 255}));
    EXPECT_EQ(levelsOf(engine.filter.GammaCorrection(-50)), (Levels{0, 16, 39, 157, 255}));
}

TEST(Tone, GammaByNothingGivesTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 6);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.GammaCorrection(0), picture);
}

TEST(Tone, GammaOfMinus100AndLessGivesBlackInTheRegion) {
    Engine engine(rowOf({{1, 2, 3, 4}, {5, 6, 7, 8}}));
    engine.region = regionOf({{1, 0, 2, 1}});
    engine.filter.BitsRegion(engine.region);
    const Pixels expected{{1, 2, 3, 4}, {0, 0, 0, 8}};
    EXPECT_EQ(pixelsOf(engine.filter.GammaCorrection(-100)), expected);
    EXPECT_EQ(pixelsOf(engine.filter.GammaCorrection(-5000)), expected);
    // 2147483647 + 100 wraps below 0.
    EXPECT_EQ(pixelsOf(engine.filter.GammaCorrection(2147483647)), expected);
}

TEST(Tone, EqualizeSendsTheMedianTo128) {
    // 12 pixels, half = 6. Running sums 2, 8: the walk stops at 50, and 6 \ 2 = 3 is above
    // 8 - 6, so the median is 50 itself. up = 127 / 205: 40 * 0.6195 + 128 = 152.8.
    // low = 127 / 49: 10 * 2.592 = 25.9.
    Engine engine(greys({10, 10, 50, 50, 50, 50, 50, 50, 90, 90, 90, 90}));
    const Levels levels = levelsOf(engine.filter.Equalize());
    EXPECT_EQ(levels, (Levels{26, 26, 128, 128, 128, 128, 128, 128, 153, 153, 153, 153}));
}

TEST(Tone, EqualizeTakesTheLevelBelowWhereHalfOfTheLevelReachesTheMiddle) {
    // 4 pixels, half = 2: the walk stops at 50 with 3, and 2 \ 2 is at most 3 - 2: median 49.
    // up = 127 / 206: 50 gives 128.6, 90 gives 41 * 0.6165 + 128 = 153.3. low = 127 / 48: 10
    // gives 26.5 (26.4583).
    Engine engine(greys({10, 50, 50, 90}));
    EXPECT_EQ(levelsOf(engine.filter.Equalize()), (Levels{26, 129, 129, 153}));
}

TEST(Tone, EqualizeOfOneColourCentresOnIt) {
    // All pixels lie at 100, the median just below: (100 - 99) * 127 / 156 + 128 = 128.8.
    Engine engine(greys({100, 100, 100}));
    EXPECT_EQ(levelsOf(engine.filter.Equalize()), (Levels{129, 129, 129}));
}

TEST(Tone, EqualizeWeighsTheChannels) {
    // Brightness 0.113 * 200 + 0.586 * 100 + 0.301 * 40 = 93.24: median 92. up = 127 / 163: 200
    // gives 108 * 0.7791 + 128 = 212.1; 100 gives 134.2. low = 127 / 91: 40 gives 55.8.
    Engine engine(rowOf({{200, 100, 40, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.Equalize()), (Pixels{{212, 134, 56, 0}}));
}

TEST(Tone, EqualizeWithMedian1KeepsLevel0) {
    // 5 pixels, half = 2: the walk stops at 2 with 5, 4 \ 2 is at most 3: median 1. low is
    // infinite and 0 times it no number: the channel keeps its 0. up = 127 / 254: 2 gives 128.5,
    // to the even 128.
    Engine engine(greys({0, 2, 2, 2, 2}));
    EXPECT_EQ(levelsOf(engine.filter.Equalize()), (Levels{0, 128, 128, 128, 128}));
}

TEST(Tone, EqualizeOfWhiteAndBlackStaysInAByte) {
    // The highest median there can be is 254: 1 * 127 + 128 = 255.
    Engine white(greys({255, 255}));
    EXPECT_EQ(levelsOf(white.filter.Equalize()), (Levels{255, 255}));
    // The lowest is -1: 1 * 127 / 256 + 128 = 128.5 less a little (128.496).
    Engine black(greys({0, 0}));
    EXPECT_EQ(levelsOf(black.filter.Equalize()), (Levels{128, 128}));
}

TEST(Tone, EqualizeTakesItsMedianFromTheWholeImageAndReportsTheRowsOfTheRegionOnly) {
    Engine engine(drawBuffer(1, 4, [](int32_t, int32_t y) {
        return grey(std::array<uint8_t, 4>{10, 50, 50, 90}[static_cast<size_t>(y)]);
    }));
    engine.region = regionOf({{0, 3, 1, 4}});
    engine.filter.BitsRegion(engine.region);
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    std::vector<int32_t> reports;
    keepReports(engine.filter, reports);
    const PixelBuffer result = engine.filter.Equalize();
    EXPECT_EQ(result.at(0, 0), grey(10));
    EXPECT_EQ(result.at(0, 2), grey(50));
    EXPECT_EQ(result.at(0, 3), grey(153));
    EXPECT_EQ(reports, (std::vector<int32_t>{100, 100}));
}

TEST(Tone, SaturationMovesAwayFromTheBrightness) {
    // Brightness 30, c = 0.5: 10 gives 0, 20 gives 15, 60 gives 75. Of 17, 13, 60: 10.5 to the
    // even 10, 4.5 to 4. Of 11, 20, 60 (30 again): 1.5 to 2.
    Engine engine(rowOf({{10, 20, 60, 1}, {17, 13, 60, 2}, {11, 20, 60, 3}}));
    EXPECT_EQ(pixelsOf(engine.filter.SATURATION(50)),
              (Pixels{{0, 15, 75, 1}, {10, 4, 75, 2}, {2, 15, 75, 3}}));
}

TEST(Tone, SaturationStopsAtBothEnds) {
    // Brightness 85, c = 2.5: 0 gives -212.5 and 255 gives 680.
    Engine engine(rowOf({{0, 0, 255, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.SATURATION(250)), (Pixels{{0, 0, 255, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.SATURATION(2147483647)), (Pixels{{0, 0, 255, 0}}));
}

TEST(Tone, SaturationMinus100GivesTheBrightnessAndNothingTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 7);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.SATURATION(0), picture);
    const PixelBuffer expected = drawBuffer(33, 21, [&](int32_t x, int32_t y) {
        const Pixel& p = picture.at(x, y);
        const auto level = static_cast<uint8_t>((p.blue + p.green + p.red) / 3);
        return Pixel{level, level, level, p.fourth};
    });
    EXPECT_EQ(engine.filter.SATURATION(-100), expected);
}

TEST(Tone, InvertTwiceGivesTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 8);
    Engine engine(picture);
    const PixelBuffer once = engine.filter.Invert();
    EXPECT_EQ(once.at(5, 5).green, 255 - picture.at(5, 5).green);
    EXPECT_EQ(once.at(5, 5).fourth, picture.at(5, 5).fourth);
    engine.filter.Bits(once);
    EXPECT_EQ(engine.filter.Invert(), picture);
}

TEST(Tone, GreyScaleWeighsTheChannels) {
    // 7.1, 70.7, 22.2, and the weights' sum is 1.
    Engine engine(rowOf({{100, 0, 0, 1}, {0, 100, 0, 2}, {0, 0, 100, 3}, {255, 255, 255, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.GreyScale()),
              (Pixels{{7, 7, 7, 1}, {71, 71, 71, 2}, {22, 22, 22, 3}, {255, 255, 255, 4}}));
}

TEST(Tone, ThresholdIsBlackUpToTheLevelItself) {
    // (1 + 2 + 5) \ 3 = 2.
    Engine engine(rowOf({{1, 2, 5, 9}, {3, 3, 3, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.Threshold(2)), (Pixels{{0, 0, 0, 9}, {255, 255, 255, 9}}));
}

TEST(Tone, Threshold255IsBlackAndMinus1WhiteEverywhere) {
    Engine engine(greys({0, 128, 255}));
    EXPECT_EQ(levelsOf(engine.filter.Threshold(255)), (Levels{0, 0, 0}));
    EXPECT_EQ(levelsOf(engine.filter.Threshold(-1)), (Levels{255, 255, 255}));
}

TEST(Tone, ReductionRoundsToStepsAndStopsAt255) {
    // Steps of 32: 16 / 32 = 0.5 to 0, 48 / 32 = 1.5 to 2, 100 / 32 = 3.1, 255 / 32 = 7.97 to
    // 8, which is 256.
    Engine engine(greys({16, 48, 100, 240, 255}));
    EXPECT_EQ(levelsOf(engine.filter.Reduction(31)), (Levels{0, 64, 96, 255, 255}));
}

TEST(Tone, ReductionByNothingGivesTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 9);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.Reduction(0), picture);
}

TEST(Tone, ReductionBelowTheFailingFactorHasItsSigns) {
    // Step -2: 3 / -2 = -1.5 to -2, times -2 is 4; 5 / -2 = -2.5 to -2 as well.
    Engine engine(greys({3, 5, 255}));
    EXPECT_EQ(levelsOf(engine.filter.Reduction(-3)), (Levels{4, 4, 255}));
}

TEST(Tone, ReductionMinus1FailsToTheCallerBeforeAnyReport) {
    Engine engine(greys({3, 5}));
    std::vector<int32_t> reports;
    keepReports(engine.filter, reports);
    EXPECT_THROW(engine.filter.Reduction(-1), StatementFailed);
    EXPECT_TRUE(reports.empty());
}

TEST(Tone, KillChannelClearsTheNamedOnes) {
    Engine engine(rowOf({{1, 2, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.KillChannel(true, false, false)), (Pixels{{1, 2, 0, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.KillChannel(false, true, false)), (Pixels{{1, 0, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.KillChannel(false, false, true)), (Pixels{{0, 2, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.KillChannel(false, false, false)), (Pixels{{1, 2, 3, 4}}));
}

TEST(Tone, ShiftHasAFactorForEachChannel) {
    Engine engine(rowOf({{100, 100, 100, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.ShiftRGB(1, -20, 300)), (Pixels{{255, 80, 101, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.ShiftRGB(-300, 0, 2)), (Pixels{{102, 100, 0, 4}}));
}

TEST(Tone, SwapRgbOfEachChannelToItselfGivesTheSource) {
    const PixelBuffer picture = randomBuffer(33, 21, 10);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.SwapRGB(2, 1, 0, false, false, false, false, false, false), picture);
}

TEST(Tone, SwapRgbTakesBanksInvertsAndKills) {
    Engine engine(rowOf({{10, 20, 30, 4}}));
    // Red from blue inverted, green from red, blue from green.
    EXPECT_EQ(pixelsOf(engine.filter.SwapRGB(0, 2, 1, true, false, false, false, false, false)),
              (Pixels{{20, 30, 245, 4}}));
    // Kill wins over invert.
    EXPECT_EQ(pixelsOf(engine.filter.SwapRGB(2, 1, 0, true, true, true, true, false, false)),
              (Pixels{{245, 235, 0, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SwapRGB(0, 0, 0, true, true, true, true, true, true)),
              (Pixels{{0, 0, 0, 4}}));
}

TEST(Tone, SwapRgbWithAnyOtherBankCountsBytesOnAndFindsNothingBeyondTheBuffer) {
    Engine engine(rowOf({{10, 20, 30, 40}, {50, 60, 70, 80}}));
    // Bank 3 is the fourth byte, 4 the next pixel's blue, -1 the byte before.
    const PixelBuffer near =
        engine.filter.SwapRGB(3, 4, -1, false, false, false, false, false, false);
    EXPECT_EQ(pixelsOf(near), (Pixels{{0, 50, 40, 40}, {40, 0, 80, 80}}));
    const PixelBuffer far = engine.filter.SwapRGB(2147483647, -2147483647 - 1, 100000, false, false,
                                                  true, false, false, false);
    EXPECT_EQ(pixelsOf(far), (Pixels{{255, 0, 0, 40}, {255, 0, 0, 80}}));
}

TEST(Tone, SwapBanksGivesTheFiveOrders) {
    Engine engine(rowOf({{1, 2, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SwapBanks(1)), (Pixels{{2, 3, 1, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SwapBanks(2)), (Pixels{{3, 1, 2, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SwapBanks(3)), (Pixels{{2, 1, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SwapBanks(4)), (Pixels{{3, 2, 1, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SwapBanks(5)), (Pixels{{1, 3, 2, 4}}));
}

TEST(Tone, SwapBanksOfAnyOtherNumberChangesNothingAndStillReports) {
    const PixelBuffer picture = randomBuffer(3, 3, 11);
    Engine engine(picture);
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    std::vector<int32_t> reports;
    keepReports(engine.filter, reports);
    for (const int32_t modo : {0, 6, -1}) {
        reports.clear();
        EXPECT_EQ(engine.filter.SwapBanks(modo), picture);
        EXPECT_EQ(reports, (std::vector<int32_t>{0, 50, 100, 100}));
    }
}

const NamedCall allMembers[] = {
    {"BRIGHTNESS", false, [](cBitFilter& f) { return f.BRIGHTNESS(7); }},
    {"Contrast", true, [](cBitFilter& f) { return f.Contrast(7); }},
    {"GammaCorrection", true, [](cBitFilter& f) { return f.GammaCorrection(7); }},
    {"Equalize", true, [](cBitFilter& f) { return f.Equalize(); }},
    {"SATURATION", true, [](cBitFilter& f) { return f.SATURATION(7); }},
    {"Invert", false, [](cBitFilter& f) { return f.Invert(); }},
    {"GreyScale", true, [](cBitFilter& f) { return f.GreyScale(); }},
    {"Threshold", true, [](cBitFilter& f) { return f.Threshold(7); }},
    {"Reduction", false, [](cBitFilter& f) { return f.Reduction(7); }},
    {"KillChannel", true, [](cBitFilter& f) { return f.KillChannel(true, false, false); }},
    {"ShiftRGB", true, [](cBitFilter& f) { return f.ShiftRGB(1, 2, 3); }},
    {"SwapRGB", true,
     [](cBitFilter& f) { return f.SwapRGB(0, 1, 2, false, false, false, false, false, false); }},
    {"SwapBanks", false, [](cBitFilter& f) { return f.SwapBanks(1); }},
};

TEST(Tone, AReportOfAPictureOneRowHighIsSkippedOrFailsAsTheMemberDoes) {
    const PixelBuffer picture = randomBuffer(9, 1, 12);
    for (const NamedCall& member : allMembers) {
        Engine late(picture);
        SteppingClock clock(100, 11);
        clock.attachTo(late.filter);
        Engine quiet(picture);
        const PixelBuffer expected = member.call(quiet.filter);
        std::vector<int32_t> reports;
        keepReports(late.filter, reports);
        if (member.skips) {
            EXPECT_EQ(member.call(late.filter), expected) << member.name;
            for (const int32_t percent : reports)
                EXPECT_EQ(percent, 100) << member.name;
            EXPECT_FALSE(reports.empty()) << member.name;
        } else {
            EXPECT_THROW(member.call(late.filter), StatementFailed) << member.name;
            EXPECT_TRUE(reports.empty()) << member.name;
        }
    }
}

TEST(Tone, EveryMemberKeepsMarginFourthChannelSourceAndWhatLiesOutsideTheRegion) {
    expectOnlyTheRegionsColoursToChange(allMembers);
}

TEST(Tone, EveryMemberOnAnEmptyRegionGivesTheSourceAndReportsItsEnd) {
    const PixelBuffer picture = randomBuffer(20, 12, 14);
    for (const NamedCall& member : allMembers) {
        Engine engine(picture);
        engine.region = std::make_shared<const Region>();
        engine.filter.BitsRegion(engine.region);
        std::vector<int32_t> reports;
        keepReports(engine.filter, reports);
        EXPECT_EQ(member.call(engine.filter), picture) << member.name;
        ASSERT_FALSE(reports.empty()) << member.name;
        EXPECT_EQ(reports.back(), 100) << member.name;
    }
}

}  // namespace
}  // namespace tessarine::tests
