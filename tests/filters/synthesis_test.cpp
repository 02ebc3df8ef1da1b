#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "support/comparison.h"
#include "support/engine.h"

// The synthesis members by values worked out by hand. Pixels are written blue, green, red, fourth.

namespace tessarine::tests {
namespace {

using Rows = std::vector<std::vector<uint8_t>>;

/// A picture of one colour.
PixelBuffer plain(int32_t width, int32_t height, Pixel colour) {
    return drawBuffer(width, height, [=](int32_t, int32_t) { return colour; });
}

/// A picture in which every pixel tells its place.
PixelBuffer places(int32_t width, int32_t height) {
    return drawBuffer(width, height, [](int32_t x, int32_t y) {
        return Pixel{static_cast<uint8_t>(x + 1), static_cast<uint8_t>(y + 1), 255, 3};
    });
}

// Random displacement and grain.

TEST(Diffuse, ByNothingIsThePictureAndDrawsTwoNumbersAPixel) {
    Engine engine(randomBuffer(9, 7, 1));
    EXPECT_EQ(engine.filter.DIFFUSE(0, 0), engine.picture);
    EXPECT_EQ(engine.filter.random.state(), RandomGenerator().after(2 * 9 * 7).state());
}

TEST(Diffuse, TakesPixelsFromUpToHalfOfEachFactorAway) {
    Engine engine(places(60, 50));
    const PixelBuffer result = engine.filter.DIFFUSE(8, 4);
    int32_t farX = 0;
    int32_t farY = 0;
    for (int32_t y = 0; y < 50; ++y)
        for (int32_t x = 0; x < 60; ++x) {
            farX = std::max(farX, std::abs(result.at(x, y).blue - 1 - x));
            farY = std::max(farY, std::abs(result.at(x, y).green - 1 - y));
        }
    EXPECT_EQ(farX, 4);
    EXPECT_EQ(farY, 2);
}

TEST(Diffuse, DrawsTheColumnBeforeTheRowFromTheTopLeftOn) {
    Engine engine(places(20, 20));
    engine.keepTo({{0, 0, 20, 20}});
    const PixelBuffer result = engine.filter.DIFFUSE(6, 10);
    RandomGenerator draws;
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 20; ++x) {
            const auto sx = static_cast<int32_t>(std::nearbyint(x + double{draws.draw()} * 6 - 3));
            const auto sy = static_cast<int32_t>(std::nearbyint(y + double{draws.draw()} * 10 - 5));
            const bool covered = sx >= 0 && sx < 20 && sy >= 0 && sy < 20;
            ASSERT_EQ(result.at(x, y),
                      covered ? engine.picture.at(sx, sy) : engine.picture.at(x, y))
                << x << ", " << y;
        }
}

TEST(Diffuse, GoesOnDrawingWhereTheLastCallStopped) {
    Engine engine(places(20, 20));
    const PixelBuffer first = engine.filter.DIFFUSE(9, 9);
    EXPECT_FALSE(engine.filter.DIFFUSE(9, 9) == first);
    EXPECT_EQ(engine.filter.random.state(), RandomGenerator().after(4 * 20 * 20).state());
}

TEST(Diffuse, TestsTheSourcePointAndNotThePixel) {
    // Two bars and a gap of 4 columns: pixels of the gap take colours of the bars, and no pixel
    // takes a colour of the gap but its own.
    Engine engine(places(12, 40));
    engine.keepTo({{0, 0, 4, 40}, {8, 0, 12, 40}});
    const PixelBuffer result = engine.filter.DIFFUSE(12, 0);
    int painted = 0;
    for (int32_t y = 0; y < 40; ++y)
        for (int32_t x = 0; x < 12; ++x) {
            const int32_t from = result.at(x, y).blue - 1;
            if (from == x) continue;
            EXPECT_TRUE(from < 4 || from >= 8) << from;
            if (x >= 4 && x < 8) ++painted;
        }
    EXPECT_GT(painted, 40);
}

TEST(Diffuse, DrawsForScannedPixelsBeyondTheBufferToo) {
    Engine beyond(places(12, 9));
    beyond.keepTo({{-10, -20, 30, 15}});
    const PixelBuffer result = beyond.filter.DIFFUSE(6, 6);
    EXPECT_EQ(beyond.filter.random.state(), RandomGenerator().after(2 * 40 * 35).state());
    // Pixel (0, 0) stands in row 20 and column 10 of the scan.
    RandomGenerator draws = RandomGenerator().after(2 * (20 * 40 + 10));
    const auto sx = static_cast<int32_t>(std::nearbyint(double{draws.draw()} * 6 - 3));
    const auto sy = static_cast<int32_t>(std::nearbyint(double{draws.draw()} * 6 - 3));
    const Pixel from = beyond.picture.reached(sx, sy);
    EXPECT_EQ(result.at(0, 0), (Pixel{from.blue, from.green, from.red, 3}));
}

TEST(Diffuse, OfARegionOfTheWholeRangeDrawsForAllOfIt) {
    constexpr int32_t far = 2147483647;
    Engine engine(places(5, 4));
    engine.keepTo({{-far - 1, -far - 1, far, far}});
    engine.filter.DIFFUSE(3, 3);
    const uint64_t side = 0xFFFFFFFFU;
    EXPECT_EQ(engine.filter.random.state(), RandomGenerator().after(2 * side * side).state());
    engine.filter.random = RandomGenerator();
    engine.filter.NOISE(3, false);
    EXPECT_EQ(engine.filter.random.state(), RandomGenerator().after(3 * side * side).state());
}

TEST(Noise, OfFactor0AddsOneWhereTheDrawIsAboveHalf) {
    Engine engine(plain(10, 10, {100, 100, 100, 0}));
    const PixelBuffer result = engine.filter.NOISE(0, true);
    RandomGenerator draws;
    int added = 0;
    for (int32_t y = 0; y < 10; ++y)
        for (int32_t x = 0; x < 10; ++x) {
            const bool above = draws.draw() > 0.5F;
            EXPECT_EQ(result.at(x, y), grey(above ? 101 : 100));
            if (above) ++added;
        }
    EXPECT_GT(added, 20);
    EXPECT_LT(added, 80);
}

TEST(Noise, EqualizedKeepsGreyGreyAndDrawsOnceAPixel) {
    Engine engine(plain(20, 10, {90, 90, 90, 0}));
    const PixelBuffer result = engine.filter.NOISE(50, true);
    for (int32_t y = 0; y < 10; ++y)
        for (int32_t x = 0; x < 20; ++x)
            EXPECT_EQ(result.at(x, y), grey(result.at(x, y).blue));
    EXPECT_FALSE(result == engine.picture);
    EXPECT_EQ(engine.filter.random.state(), RandomGenerator().after(200).state());
}

TEST(Noise, DrawsForRedThenGreenThenBlue) {
    Engine engine(plain(30, 20, {100, 100, 100, 7}));
    const PixelBuffer result = engine.filter.NOISE(30, false);
    RandomGenerator draws;
    const auto noisy = [&draws] {
        return static_cast<uint8_t>(std::nearbyint(100 + (61 * double{draws.draw()} - 30)));
    };
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 30; ++x) {
            const uint8_t red = noisy();
            const uint8_t green = noisy();
            const uint8_t blue = noisy();
            ASSERT_EQ(result.at(x, y), (Pixel{blue, green, red, 7})) << x << ", " << y;
        }
    EXPECT_EQ(engine.filter.random.state(), draws.state());
}

TEST(Noise, DrawsForPixelsOfTheRegionAloneThoseBeyondTheBufferToo) {
    Engine engine(plain(8, 3, grey(100)));
    engine.keepTo({{1, 0, 3, 3}, {5, 1, 100, 2}});
    const PixelBuffer result = engine.filter.NOISE(30, true);
    EXPECT_EQ(engine.filter.random.state(), RandomGenerator().after(6 + 95).state());
    // Before (1, 2) come two pixels of row 0 and 97 of row 1.
    RandomGenerator draws = RandomGenerator().after(99);
    EXPECT_EQ(result.at(1, 2).blue, std::nearbyint(100 + (61 * double{draws.draw()} - 30)));
}

TEST(Noise, StopsAtBothEndsOfAByte) {
    Engine engine(plain(40, 40, {2, 128, 253, 0}));
    const PixelBuffer result = engine.filter.NOISE(100, false);
    int low = 0;
    int high = 0;
    for (int32_t y = 0; y < 40; ++y)
        for (int32_t x = 0; x < 40; ++x) {
            const Pixel& p = result.at(x, y);
            EXPECT_LE(p.blue, 103);
            EXPECT_GE(p.red, 152);
            low += p.blue == 0;
            high += p.red == 255;
        }
    EXPECT_GT(low, 600);
    EXPECT_GT(high, 600);
}

// Dots and blocks.

TEST(Halftone, PaintsADotInACellsMeanColourUpToItsReach) {
    // A reach of round((1 + 1) / 1 * 1 * 1) = 2 gives 1, 1 / 2 and 0 at the squares 0, 1 and 2.
    Engine engine(plain(3, 3, {40, 80, 100, 7}));
    const PixelBuffer result = engine.filter.HALFTONE(1, 1, 0);
    const Pixel none{0, 0, 0, 7};
    const Pixel half{20, 40, 50, 7};
    const Pixel full{40, 80, 100, 7};
    const std::array<std::array<Pixel, 3>, 3> expected = {
        {{none, half, none}, {half, full, half}, {none, half, none}}};
    for (size_t y = 0; y < 3; ++y)
        for (size_t x = 0; x < 3; ++x)
            EXPECT_EQ(result.at(static_cast<int32_t>(x), static_cast<int32_t>(y)), expected[y][x])
                << x << ", " << y;
}

TEST(Halftone, BlackensWhatLiesBeyondItsReach) {
    // A reach of (2 - 1) / 2 * 2 * 2 = 2: the squares 0, 1 and 2 of 8.
    Engine engine(greys({{80, 80, 80, 80, 80},
                         {80, 80, 80, 80, 80},
                         {80, 80, 80, 80, 80},
                         {80, 80, 80, 80, 80},
                         {80, 80, 80, 80, 80}}));
    EXPECT_EQ(levelsOf(engine.filter.HALFTONE(2, -1, 0)), (Rows{{0, 0, 0, 0, 0},
                                                                {0, 0, 40, 0, 0},
                                                                {0, 40, 80, 40, 0},
                                                                {0, 0, 40, 0, 0},
                                                                {0, 0, 0, 0, 0}}));
}

TEST(Halftone, TakesTheMeanOfTheRegionsPixelsAlone) {
    // (10 + 20 + 60) / 3 = 30 in the centre of the cell.
    Engine engine(greys({{10, 250, 250}, {250, 20, 250}, {250, 250, 60}}));
    engine.keepTo({{0, 0, 1, 1}, {1, 1, 2, 2}, {2, 2, 3, 3}});
    EXPECT_EQ(levelsOf(engine.filter.HALFTONE(1, 1, 0)),
              (Rows{{0, 250, 250}, {250, 30, 250}, {250, 250, 0}}));
}

TEST(Halftone, IntensityStrengthensADotUpToWhite) {
    // 9 pixels by (50 + 100) / 100 are 6: 9 * 80 / 6 = 120 and 9 * 200 / 6 = 300.
    Engine engine(plain(3, 3, {80, 200, 0, 0}));
    EXPECT_EQ(engine.filter.HALFTONE(1, 1, 50).at(1, 1), (Pixel{120, 255, 0, 0}));
}

TEST(Halftone, OfRadius0FailsBeforeAnythingElse) {
    Engine engine(randomBuffer(5, 5, 1));
    EXPECT_THROW(engine.filter.HALFTONE(0, 5, 5), StatementFailed);
    engine.region.reset();
    EXPECT_THROW(engine.filter.HALFTONE(0, 0, 0), StatementFailed);
    EXPECT_TRUE(engine.reports.empty());
}

TEST(Halftone, OfASumThatIsNotDividedFailsAbove255) {
    // An Intensity of -100 leaves no factor, and -200 makes the count negative.
    for (const int32_t intensity : {-100, -200}) {
        Engine dark(greys({{100, 100, 55}, {0, 0, 0}, {0, 0, 0}}));
        EXPECT_EQ(dark.filter.HALFTONE(1, 1, intensity).at(1, 1), grey(255));
        Engine light(greys({{100, 100, 56}, {0, 0, 0}, {0, 0, 0}}));
        EXPECT_THROW(light.filter.HALFTONE(1, 1, intensity), StatementFailed);
    }
    // A count of 2 by 5 rounds to 0: the sum of 300, by 1 - 2 / 4 and 1 - 1 / 4.
    Engine two(greys({{200, 100}}));
    EXPECT_EQ(levelsOf(two.filter.HALFTONE(1, 3, 400)), (Rows{{150, 225}}));
}

TEST(Halftone, OfANegativeRadiusPaintsNothing) {
    Engine engine(randomBuffer(5, 5, 1));
    EXPECT_EQ(engine.filter.HALFTONE(-3, 5, 5), engine.picture);
    engine.keepTo({{2, 2, 3, 3}});
    EXPECT_EQ(engine.filter.HALFTONE(-3, 5, 5), engine.picture);
}

TEST(Pixelize, OfSize1IsThePicture) {
    Engine engine(randomBuffer(9, 7, 1));
    EXPECT_EQ(engine.filter.PIXELIZE(1), engine.picture);
}

TEST(Pixelize, GivesEachBlockItsTruncatedMeanAndThoseAtTheEdgesTheirOwn) {
    Engine engine(greys({{10, 11, 20, 21, 7}, {10, 12, 20, 25, 8}, {1, 2, 4, 4, 90}}));
    EXPECT_EQ(levelsOf(engine.filter.PIXELIZE(2)),
              (Rows{{10, 10, 21, 21, 7}, {10, 10, 21, 21, 7}, {1, 1, 4, 4, 90}}));
}

TEST(Pixelize, TakesAMeanFromPixelsOutsideTheRegionToo) {
    Engine engine(greys({{0, 100, 50, 90}, {0, 100, 50, 90}}));
    engine.keepTo({{0, 0, 1, 1}, {2, 0, 3, 2}});
    EXPECT_EQ(levelsOf(engine.filter.PIXELIZE(2)), (Rows{{50, 100, 70, 90}, {0, 100, 70, 90}}));
}

TEST(Pixelize, APixelWhoseBlockStartsOutsideTheRegionTakesTheMeansBefore) {
    // Column 1 takes what is there at first, black, and in the next row the last of the row above.
    Engine engine(greys({{5, 6, 30, 40}, {7, 8, 30, 40}}));
    engine.keepTo({{1, 0, 4, 2}});
    EXPECT_EQ(levelsOf(engine.filter.PIXELIZE(2)), (Rows{{5, 0, 35, 35}, {7, 35, 35, 35}}));
}

TEST(Pixelize, OfSize0OrBelowBlackensTheRegion) {
    for (const int32_t size : {0, -1, -7, -2147483647 - 1}) {
        Engine engine(greys({{9, 9, 9}, {9, 9, 9}}));
        engine.keepTo({{0, 0, 2, 2}});
        EXPECT_EQ(levelsOf(engine.filter.PIXELIZE(size)), (Rows{{0, 0, 9}, {0, 0, 9}}));
    }
}

TEST(Pixelize, OfSizeAboveThePicturesIsItsMean) {
    Engine engine(greys({{10, 20}, {30, 41}}));
    EXPECT_EQ(levelsOf(engine.filter.PIXELIZE(2147483647)), (Rows{{25, 25}, {25, 25}}));
}

// Lines.

TEST(Scanlines, OfFactor0ChangeNothing) {
    Engine engine(randomBuffer(9, 7, 1));
    EXPECT_EQ(engine.filter.Scanlines(0), engine.picture);
}

TEST(Scanlines, OfFactor255BlackenEverySecondRowFromTheFirstOfTheScanOn) {
    Engine engine(greys({{9}, {9}, {9}, {9}, {255}, {9}}));
    EXPECT_EQ(levelsOf(engine.filter.Scanlines(255)), (Rows{{0}, {9}, {0}, {9}, {0}, {9}}));
    engine.keepTo({{0, 1, 1, 6}});
    EXPECT_EQ(levelsOf(engine.filter.Scanlines(255)), (Rows{{9}, {0}, {9}, {0}, {255}, {0}}));
    // The scan may start above the buffer: row -7 leads to the odd ones.
    engine.keepTo({{0, -7, 1, 6}});
    EXPECT_EQ(levelsOf(engine.filter.Scanlines(255)), (Rows{{9}, {0}, {9}, {0}, {255}, {0}}));
}

TEST(Scanlines, ANegativeFactorLeavesTheLowByteOfWhatPasses255) {
    Engine engine(greys({{100, 250, 245, 246}}));
    EXPECT_EQ(levelsOf(engine.filter.Scanlines(-10)), (Rows{{110, 4, 255, 0}}));
}

TEST(Grid, OfOpacity0ChangesNothing) {
    Engine engine(randomBuffer(9, 7, 1));
    EXPECT_EQ(engine.filter.Grid(2, 2, true, 0x123456, 0), engine.picture);
}

TEST(Grid, OfFullOpacityIsSolidAndWithoutForcedMarginsMayEndBeforeTheLastColumn) {
    Engine engine(plain(6, 4, {1, 2, 3, 9}));
    for (const bool force : {false, true}) {
        const PixelBuffer result = engine.filter.Grid(4, 2, force, 0x302010, 255);
        for (int32_t y = 0; y < 4; ++y)
            for (int32_t x = 0; x < 6; ++x) {
                const bool line = x % 4 == 0 || y % 2 == 0 || (force && (x == 5 || y == 3));
                EXPECT_EQ(result.at(x, y), (line ? Pixel{0x30, 0x20, 0x10, 9} : Pixel{1, 2, 3, 9}))
                    << x << ", " << y;
            }
    }
}

TEST(Grid, BlendsACrossingOnce) {
    // 51 / 255 is a fifth: 0.2 * 200 + 0.8 * 100 = 120 at the crossing too.
    Engine engine(greys({{100, 100}, {100, 100}}));
    EXPECT_EQ(levelsOf(engine.filter.Grid(5, 5, true, 200 * 0x010101, 51)),
              (Rows{{120, 120}, {120, 120}}));
}

TEST(Grid, StartsItsVerticalLinesAtTheRowOfTheLeftEdge) {
    Engine engine(greys({{9, 9, 9, 9}, {9, 9, 9, 9}, {9, 9, 9, 9}, {9, 9, 9, 9}}));
    engine.keepTo({{2, 0, 4, 4}});
    // The only horizontal line is row 0, the only vertical one column 2 from row 2 on.
    EXPECT_EQ(levelsOf(engine.filter.Grid(9, 9, false, 0, 255)),
              (Rows{{9, 9, 0, 0}, {9, 9, 9, 9}, {9, 9, 0, 9}, {9, 9, 0, 9}}));
    // A left edge above the top: the lines are the region's whole height.
    engine.keepTo({{0, 2, 2, 4}});
    EXPECT_EQ(levelsOf(engine.filter.Grid(9, 9, false, 0, 255)),
              (Rows{{9, 9, 9, 9}, {9, 9, 9, 9}, {0, 0, 9, 9}, {0, 9, 9, 9}}));
}

TEST(Grid, LeavesAChannelThatWouldLeaveAByte) {
    // Twice the colour less the picture: blue 2 * 100 - 10, green 2 * 0 - 20, red 2 * 200 - 30.
    Engine engine(plain(1, 1, {10, 20, 30, 0}));
    EXPECT_EQ(engine.filter.Grid(1, 1, false, 0x6400C8, 510).at(0, 0), (Pixel{190, 20, 30, 0}));
}

TEST(Grid, OfAStep0IsRefusedWhereItsLoopWouldNeverEnd) {
    Engine engine(randomBuffer(5, 5, 1));
    EXPECT_THROW(engine.filter.Grid(0, 3, false, 0, 255), StatementFailed);
    EXPECT_THROW(engine.filter.Grid(3, 0, false, 0, 255), StatementFailed);
    engine.region.reset();
    EXPECT_EQ(engine.filter.Grid(0, 0, false, 0, 255), engine.picture);
}

// Light and texture.

TEST(Light, OfNothingChangesNothing) {
    Engine engine(randomBuffer(9, 7, 1));
    EXPECT_EQ(engine.filter.Light(0.5F, 0.5F, 0.9F, 0, 30), engine.picture);
}

TEST(Light, FallsOffFromTheCentreToTheRim) {
    // Radius 2 around (2, 2), squares below 4: 100 * (1 - 1 / 2), 100 * (1 - 1.4142 / 2) = 29.3.
    Engine engine(greys(
        {{5, 5, 5, 5, 5}, {5, 5, 5, 5, 5}, {5, 5, 5, 5, 5}, {5, 5, 5, 5, 5}, {5, 5, 5, 5, 5}}));
    EXPECT_EQ(levelsOf(engine.filter.Light(0.5F, 0.5F, 0.5F, 100, 0)), (Rows{{5, 5, 5, 5, 5},
                                                                             {5, 34, 55, 34, 5},
                                                                             {5, 55, 105, 55, 5},
                                                                             {5, 34, 55, 34, 5},
                                                                             {5, 5, 5, 5, 5}}));
}

TEST(Light, OfFallOff100IsTheSameAllOverTheDiscAndStopsAt255) {
    Engine engine(plain(5, 5, {10, 200, 250, 7}));
    const PixelBuffer result = engine.filter.Light(0.5F, 0.5F, 0.5F, 50, 100);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 5; ++x) {
            const bool inDisc = x > 0 && x < 4 && y > 0 && y < 4;
            EXPECT_EQ(result.at(x, y), (inDisc ? Pixel{60, 250, 255, 7} : Pixel{10, 200, 250, 7}))
                << x << ", " << y;
        }
}

TEST(Light, ANegativeOneLeavesTheLowByteOfWhatGoesBelow0) {
    Engine engine(plain(3, 3, {10, 20, 30, 0}));
    EXPECT_EQ(engine.filter.Light(0.5F, 0.5F, 1.0F, -20, 100).at(1, 1), (Pixel{246, 0, 10, 0}));
}

TEST(Light, TakesItsRadiusFromTheLongerSide) {
    // 20 * 0.1 = 2 on a picture 21 by 3 as on one 3 by 21.
    for (const auto& [width, height] : {std::pair{21, 3}, std::pair{3, 21}}) {
        Engine engine(plain(width, height, grey(0)));
        const PixelBuffer result = engine.filter.Light(0.5F, 0.5F, 0.1F, 10, 100);
        int lit = 0;
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x)
                lit += result.at(x, y).blue == 10;
        EXPECT_EQ(lit, 9);
    }
}

TEST(Light, ReachesOutOfThePictureAndKeepsToTheRegionPixelByPixel) {
    Engine engine(plain(4, 4, grey(0)));
    engine.keepTo({{0, 0, 1, 1}, {1, 1, 3, 2}});
    EXPECT_EQ(levelsOf(engine.filter.Light(0.0F, 0.0F, 5.0F, 9, 100)),
              (Rows{{9, 0, 0, 0}, {0, 9, 9, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
}

TEST(Light, WithoutARadiusFailsAtAReportThatIsDueAndNoSooner) {
    Engine engine(randomBuffer(5, 5, 1));
    EXPECT_EQ(engine.filter.Light(0.5F, 0.5F, 0.0F, 50, 0), engine.picture);
    EXPECT_EQ(engine.reports, (std::vector<int32_t>{100}));
    engine.reportAlways();
    EXPECT_THROW(engine.filter.Light(0.5F, 0.5F, 0.0F, 50, 0), StatementFailed);
}

TEST(Light, FailsWhereTheSquaresOfAFarCentreHaveNoRoot) {
    // Centre (32768, 32768): the squares of (0, 0) add up to 2^31, which wraps below 0.
    Engine engine(randomBuffer(3, 3, 1));
    EXPECT_THROW(engine.filter.Light(16384.0F, 16384.0F, 20000.0F, 50, 0), StatementFailed);
    // A column nearer they have one.
    engine.keepTo({{1, 0, 3, 3}});
    EXPECT_NO_THROW(engine.filter.Light(16384.0F, 16384.0F, 20000.0F, 50, 0));
}

TEST(Texturize, GoesByTheBlueChannelOf128ForUnchanged) {
    // 10, 100 and 200 by 64 / 128, 255 / 128 = 1.9922 and 0; 199.2 and 398.4.
    const PixelBuffer texture = drawBuffer(5, 2, [](int32_t x, int32_t) {
        constexpr uint8_t levels[] = {128, 64, 255, 0, 77};
        return Pixel{levels[x], 1, 2, 3};
    });
    Engine engine(plain(4, 1, {10, 100, 200, 9}));
    const PixelBuffer result = engine.filter.Texturize(texture);
    EXPECT_EQ(result.at(0, 0), (Pixel{10, 100, 200, 9}));
    EXPECT_EQ(result.at(1, 0), (Pixel{5, 50, 100, 9}));
    EXPECT_EQ(result.at(2, 0), (Pixel{20, 199, 255, 9}));
    EXPECT_EQ(result.at(3, 0), (Pixel{0, 0, 0, 9}));
}

TEST(Texturize, OfTilesThatShareALineTheLaterOneWins) {
    // Columns 128 and 0 come again and again, the third one never; rows likewise.
    const PixelBuffer texture = greys({{128, 0, 64}, {255, 32, 64}, {64, 64, 64}});
    Engine engine(
        greys({{100, 100, 100, 100, 100}, {100, 100, 100, 100, 100}, {100, 100, 100, 100, 100}}));
    EXPECT_EQ(levelsOf(engine.filter.Texturize(texture)),
              (Rows{{100, 0, 100, 0, 100}, {199, 25, 199, 25, 199}, {100, 0, 100, 0, 100}}));
    engine.keepTo({{1, 1, 5, 3}});
    EXPECT_EQ(levelsOf(engine.filter.Texturize(texture)),
              (Rows{{100, 100, 100, 100, 100}, {100, 100, 0, 100, 0}, {100, 199, 25, 199, 25}}));
}

TEST(Texturize, OfOneRowOrColumnIsRefused) {
    Engine engine(randomBuffer(5, 5, 1));
    for (const PixelBuffer& texture :
         {PixelBuffer(), PixelBuffer(1, 1), PixelBuffer(4, 1), PixelBuffer(1, 4)})
        EXPECT_THROW(engine.filter.Texturize(texture), StatementFailed);
    EXPECT_EQ(engine.filter.Texturize(PixelBuffer(0, 0)), engine.picture);
    engine.region.reset();
    EXPECT_EQ(engine.filter.Texturize(PixelBuffer(1, 1)), engine.picture);
}

// Error diffusion.

TEST(StuckiBw, HasOnlyBlackAndWhiteInTheRegion) {
    Engine engine(randomBuffer(40, 30, 1));
    engine.keepTo({{5, 5, 35, 25}});
    const PixelBuffer result = engine.filter.StuckiBW(10);
    for (int32_t y = 5; y < 25; ++y)
        for (int32_t x = 5; x < 35; ++x) {
            const Pixel& p = result.at(x, y);
            ASSERT_TRUE(p.blue == 0 || p.blue == 255);
            ASSERT_TRUE(p.green == p.blue && p.red == p.blue);
        }
    EXPECT_EQ(result.at(4, 5), engine.picture.at(4, 5));
}

TEST(StuckiBw, TakesItsThresholdFromTheWholeImageWhateverTheRegion) {
    // The mean is (10 + 20 + 30 + 0 + 0 + 240) \ 6 = 50.
    Engine engine(greys({{10, 20, 30, 0, 0, 240}}));
    engine.keepTo({{0, 0, 3, 1}});
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(0)), (Rows{{0, 0, 0, 0, 0, 240}}));
    // Of those three alone it would be 20.
    Engine alone(greys({{10, 20, 30}}));
    EXPECT_EQ(levelsOf(alone.filter.StuckiBW(0)), (Rows{{0, 255, 255}}));
}

TEST(StuckiBw, OfMoreWhiteThan32BitsHoldTurnsBlackWhite) {
    // 4096 * 2100 = 8601600 pixels, one of them black: 8601599 * 255 = 2193407745, which wraps to
    // -2101559551 and makes the threshold -2101559551 \ 8601600 = -244. No level is below it.
    Engine engine(drawBuffer(4096, 2100, [](int32_t x, int32_t y) {
        return grey(x == 2 && y == 1 ? uint8_t{0} : uint8_t{255});
    }));
    engine.keepTo({{0, 0, 6, 3}});
    const PixelBuffer result = engine.filter.StuckiBW(10);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 6; ++x)
            EXPECT_EQ(result.at(x, y), grey(255)) << x << ", " << y;
}

TEST(StuckiBw, HandsErrorsOnToTheRightButNotToTheLastColumn) {
    // All at the threshold of 100. Column 0 becomes white, its error of -155 gives -29 and -14 to
    // the next two. 71 becomes black and gives 13 and 6; 99 becomes black and gives 18; 124
    // becomes white, and the last column takes nothing.
    Engine engine(greys({{100, 100, 100, 100, 100}}));
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(10)), (Rows{{255, 0, 0, 255, 255}}));
}

TEST(StuckiBw, TakesTheErrorByItsWeightInTenths) {
    // The second pixel, 105 at a threshold of 100, takes -29 of the first by 10 / 50: -290 \ 50 =
    // -5 keeps it white, and by 10 / 48, which is -6, it becomes black.
    Engine engine(greys({{100, 105, 100, 95}}));
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(50))[0][1], 255);
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(48))[0][1], 0);
}

TEST(StuckiBw, OfWeight0TakesNoErrors) {
    Engine engine(greys({{100, 105, 99, 96, 100}}));
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(0)), (Rows{{255, 255, 0, 0, 255}}));
}

TEST(StuckiBw, HandsErrorsDownButNotToTheLastRow) {
    // One column at a threshold of 100: row 0 gives -155 * 8 \ 42 = -29 and -155 * 4 \ 42 = -14 to
    // the next two. 71 becomes black and gives 13 and 6; 99 becomes black and gives 18; 124
    // becomes white, and the last row takes nothing.
    Engine engine(greys({{100}, {100}, {100}, {100}, {100}}));
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(10)), (Rows{{255}, {0}, {0}, {255}, {255}}));
    Engine two(greys({{100}, {100}}));
    EXPECT_EQ(levelsOf(two.filter.StuckiBW(10)), (Rows{{255}, {255}}));
}

TEST(StuckiBw, RowsWithoutPixelsOfTheRegionLetTheErrorsPass) {
    // Row 0's errors reach rows 1 and 2, and row 3 starts anew.
    const PixelBuffer picture = greys({{100}, {100}, {100}, {100}, {100}, {100}});
    Engine engine(picture);
    engine.keepTo({{0, 0, 1, 1}, {0, 3, 1, 4}});
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(10)),
              (Rows{{255}, {100}, {100}, {255}, {100}, {100}}));
    engine.keepTo({{0, 0, 1, 1}, {0, 2, 1, 3}});
    EXPECT_EQ(levelsOf(engine.filter.StuckiBW(10)), (Rows{{255}, {100}, {0}, {100}, {100}, {100}}));
}

}  // namespace
}  // namespace tessarine::tests
