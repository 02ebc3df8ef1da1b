#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "support/comparison.h"
#include "support/engine.h"

// The gradients by values worked out by hand. Pixels are written blue, green, red, fourth.

namespace tessarine::tests {
namespace {

constexpr int32_t black = 0;
constexpr int32_t white = 0xFFFFFF;
constexpr int32_t image = -1;

using Rows = std::vector<std::vector<uint8_t>>;
using Gradient = PixelBuffer (cBitFilter::*)(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                             int32_t, int32_t);
constexpr Gradient both[] = {&cBitFilter::GradientCircular, &cBitFilter::GradientLinear};

PixelBuffer call(Engine& engine, Gradient gradient, Point first, Point second, int32_t Color1,
                 int32_t Color2, int32_t Pressure, int32_t Frequency) {
    return (engine.filter.*gradient)(first.x, first.y, second.x, second.y, Color1, Color2, Pressure,
                                     Frequency);
}

TEST(Gradient, BetweenTwoEqualPointsIsThePictureAndReportsNothing) {
    for (const Gradient gradient : both) {
        Engine engine(randomBuffer(9, 7, 1));
        engine.reportAlways();
        EXPECT_EQ(call(engine, gradient, {4, 3}, {4, 3}, black, white, 100, 1), engine.picture);
        EXPECT_TRUE(engine.reports.empty());
    }
}

TEST(Gradient, BetweenFarPointsIsAsFlatAsTheirDistanceIsLong) {
    // 65536 squared is 2^32, which 32 bits do not hold; 8 pixels of the way are no level yet.
    for (const Gradient gradient : both)
        for (const int32_t far : {65536, 50000}) {
            Engine engine(randomBuffer(9, 7, 1));
            const PixelBuffer result =
                call(engine, gradient, {0, 0}, {far, 0}, white, black, 100, 1);
            EXPECT_EQ(levelsOf(result), Rows(7, std::vector<uint8_t>(9, 255)));
            EXPECT_EQ(engine.reports, std::vector<int32_t>{100});
        }
}

TEST(Gradient, RunsOnceFromColourToColour) {
    // 255 by 0, 1 / 4, 2 / 4, 3 / 4, 1 and, beyond the second point, 1: 63.75, 127.5, 191.25.
    for (const Gradient gradient : both)
        for (const int32_t frequency : {1, 0, -5}) {
            Engine engine(greys({{9, 9, 9, 9, 9, 9}}));
            EXPECT_EQ(
                levelsOf(call(engine, gradient, {0, 0}, {4, 0}, black, white, 100, frequency)),
                (Rows{{0, 64, 128, 191, 255, 255}}));
        }
}

TEST(Gradient, OfPressure0ChangesNothing) {
    for (const Gradient gradient : both) {
        Engine engine(randomBuffer(9, 7, 2));
        EXPECT_EQ(call(engine, gradient, {0, 0}, {8, 6}, 255, 65280, 0, 3), engine.picture);
    }
}

TEST(Gradient, OfHalfThePressureMixesWithThePicture) {
    // 0.5 * (0, 127.5, 255) + 0.5 * 100; 113.75.
    for (const Gradient gradient : both) {
        Engine engine(greys({{100, 100, 100}}));
        EXPECT_EQ(levelsOf(call(engine, gradient, {0, 0}, {2, 0}, black, white, 50, 1)),
                  (Rows{{50, 114, 178}}));
    }
}

TEST(Gradient, FadesFromTheImageToTheSecondColour) {
    // 200 by 3 / 4 and 1 / 2; 40 by 1 / 4 in blue.
    for (const Gradient gradient : both) {
        Engine engine(drawBuffer(5, 1, [](int32_t, int32_t) { return Pixel{40, 200, 120, 3}; }));
        const PixelBuffer result = call(engine, gradient, {0, 0}, {4, 0}, image, black, 100, 1);
        EXPECT_EQ(result.at(0, 0), (Pixel{40, 200, 120, 3}));
        EXPECT_EQ(result.at(1, 0), (Pixel{30, 150, 90, 3}));
        EXPECT_EQ(result.at(2, 0), (Pixel{20, 100, 60, 3}));
        EXPECT_EQ(result.at(4, 0), (Pixel{0, 0, 0, 3}));
    }
}

TEST(Gradient, FadesFromTheFirstColourToTheImage) {
    for (const Gradient gradient : both) {
        Engine engine(drawBuffer(5, 1, [](int32_t, int32_t) { return Pixel{40, 200, 120, 3}; }));
        const PixelBuffer result = call(engine, gradient, {0, 0}, {4, 0}, black, image, 100, 1);
        EXPECT_EQ(result.at(0, 0), (Pixel{0, 0, 0, 3}));
        EXPECT_EQ(result.at(1, 0), (Pixel{10, 50, 30, 3}));
        EXPECT_EQ(result.at(4, 0), (Pixel{40, 200, 120, 3}));
    }
}

TEST(Gradient, SplitsAColourIntoRedGreenBlueFromTheLowByteUp) {
    for (const Gradient gradient : both) {
        Engine engine(greys({{9, 9}}));
        // The highest byte says nothing.
        const PixelBuffer result =
            call(engine, gradient, {0, 0}, {1, 0}, 0x7F102030, 0x405060, 100, 1);
        EXPECT_EQ(result.at(0, 0), (Pixel{0x10, 0x20, 0x30, 0}));
        EXPECT_EQ(result.at(1, 0), (Pixel{0x40, 0x50, 0x60, 0}));
    }
}

TEST(Gradient, OfFrequency2ComesBackToTheFirstColour) {
    // The squared sine of 0, pi / 4, pi / 2, 3 pi / 4, pi: 127.5 on both sides, of which the
    // shortened pi leaves a little below and above.
    for (const Gradient gradient : both) {
        Engine engine(greys({{9, 9, 9, 9, 9}}));
        const Rows levels = levelsOf(call(engine, gradient, {0, 0}, {4, 0}, black, white, 100, 2));
        EXPECT_EQ(levels, (Rows{{0, 127, 255, 128, 0}}));
    }
}

TEST(Gradient, HasNoMoreBandsThanItsDistanceHolds) {
    // Over a distance of 1 the ramp's sine runs to 1 and no further: 255 * sin(1)^2 = 180.56.
    for (const Gradient gradient : both)
        for (const int32_t frequency : {2, 10, 2147483647}) {
            Engine engine(greys({{9, 9}}));
            EXPECT_EQ(
                levelsOf(call(engine, gradient, {0, 0}, {1, 0}, black, white, 100, frequency)),
                (Rows{{0, 181}}));
        }
}

TEST(Gradient, LeavesAChannelThatWouldLeaveAByte) {
    // Twice the gradient less the picture: red 510 - 100, green 0 - 100, blue 2 * 64 - 100.
    for (const Gradient gradient : both) {
        Engine engine(drawBuffer(2, 1, [](int32_t, int32_t) { return Pixel{100, 100, 100, 7}; }));
        const PixelBuffer result =
            call(engine, gradient, {0, 0}, {1, 0}, 0x4000FF, 0x4000FF, 200, 1);
        EXPECT_EQ(result.at(0, 0), (Pixel{28, 100, 100, 7}));
    }
}

TEST(Gradient, IsMeasuredFromItsPointsWhateverTheRegion) {
    for (const Gradient gradient : both) {
        Engine engine(greys({{9, 9, 9, 9, 9}}));
        engine.keepTo({{1, 0, 2, 1}, {3, 0, 9, 1}});
        EXPECT_EQ(levelsOf(call(engine, gradient, {0, 0}, {4, 0}, black, white, 100, 1)),
                  (Rows{{9, 64, 9, 191, 255}}));
    }
}

TEST(Gradient, LeavesTheMarginEvenWhereTheRegionReachesIt) {
    for (const Gradient gradient : both) {
        Engine engine(PixelBuffer(3, 3));
        engine.keepTo({{-2, -2, 5, 5}});
        const PixelBuffer result = call(engine, gradient, {0, 0}, {2, 0}, white, white, 100, 1);
        EXPECT_EQ(result.at(2, 2), (Pixel{255, 255, 255, 0}));
        EXPECT_EQ(result.at(3, 2), (Pixel{}));
        EXPECT_EQ(result.at(-1, -1), (Pixel{}));
    }
}

TEST(Gradient, CircularGoesByTheDistanceFromItsCentre) {
    // Distances 0, 1, sqrt(2) = 1.414 of 2: 127.5, 180.31; the rim and beyond are white.
    Engine engine(greys({{9, 9, 9, 9}, {9, 9, 9, 9}, {9, 9, 9, 9}}));
    EXPECT_EQ(levelsOf(engine.filter.GradientCircular(1, 1, 1, 3, black, white, 100, 1)),
              (Rows{{180, 128, 180, 255}, {128, 0, 128, 255}, {180, 128, 180, 255}}));
}

TEST(Gradient, LinearGoesStraightInEachDirection) {
    struct Direction {
        Point from;
        Point to;
        Rows levels;
    };
    for (const Direction& d : {
             Direction{{2, 0}, {0, 0}, {{255, 128, 0}, {255, 128, 0}, {255, 128, 0}}},
             Direction{{0, 0}, {0, 2}, {{0, 0, 0}, {128, 128, 128}, {255, 255, 255}}},
             Direction{{0, 2}, {0, 0}, {{255, 255, 255}, {128, 128, 128}, {0, 0, 0}}},
             Direction{{1, 1}, {2, 1}, {{0, 0, 255}, {0, 0, 255}, {0, 0, 255}}},
         }) {
        Engine engine(greys({{9, 9, 9}, {9, 9, 9}, {9, 9, 9}}));
        const Rows levels = levelsOf(
            engine.filter.GradientLinear(d.from.x, d.from.y, d.to.x, d.to.y, black, white, 100, 1));
        for (size_t y = 0; y < 3; ++y)
            for (size_t x = 0; x < 3; ++x)
                // The angle and pi are shortened: half a level may fall either way.
                EXPECT_NEAR(levels[y][x], d.levels[y][x], 1) << x << ", " << y;
    }
}

TEST(Gradient, CircularKeepsTheRampOfThePixelBeforeWhereItsSquaresHaveNoRoot) {
    // Seen from (-32768, -32767), the squares of column 0 add up to 2^31 - 65535, those of the
    // columns right of it to more than 2^31.
    Engine engine(greys({{9, 9, 9}}));
    const PixelBuffer result =
        engine.filter.GradientCircular(-32768, -32767, -32768, 0, black, white, 100, 1);
    // Beyond the rim all is white, for want of a root too.
    EXPECT_EQ(levelsOf(result), (Rows{{255, 255, 255}}));
    // Without any pixel that has a root the ramp stays where it began.
    engine.keepTo({{1, 0, 3, 1}});
    EXPECT_EQ(
        levelsOf(engine.filter.GradientCircular(-32768, -32767, -32768, 0, black, white, 100, 1)),
        (Rows{{9, 0, 0}}));
}

}  // namespace
}  // namespace tessarine::tests
