#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "places.h"
#include "support/pictures.h"

// The members that take each pixel from a source point, by values worked out by hand.

namespace tessarine::tests::deformation {
namespace {

using Columns = std::vector<int32_t>;

TEST(Deformation, RotateAndStretchByNothingGiveTheSource) {
    Engine engine(randomBuffer(33, 20, 1));
    EXPECT_EQ(engine.filter.ROTATE(0, true), engine.picture);
    EXPECT_EQ(engine.filter.ROTATE(0, false), engine.picture);
    EXPECT_EQ(engine.filter.STRETCH(0, 0, true), engine.picture);
    EXPECT_EQ(engine.filter.FOLD(0, 0, true), engine.picture);
    EXPECT_EQ(engine.filter.RotateSmooth(0), engine.picture);
}

TEST(Deformation, RotateBy90OnAWideImageKeepsTheStripsWithoutSource) {
    // The centre is (3, 1): (x, y) is taken from (3 - (y - 1), 1 + (x - 3)), which has a row of
    // the image in the columns 2 to 4 only.
    Engine engine(places(7, 3));
    const PixelBuffer kept = engine.filter.ROTATE(90, false);
    const PixelBuffer cleaned = engine.filter.ROTATE(90, true);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 7; ++x) {
            if (x >= 2 && x <= 4) {
                EXPECT_EQ(placeOf(kept, x, y), (Point{4 - y, x - 2})) << x << ", " << y;
                EXPECT_EQ(placeOf(cleaned, x, y), (Point{4 - y, x - 2})) << x << ", " << y;
            } else {
                EXPECT_EQ(placeOf(kept, x, y), (Point{x, y})) << x << ", " << y;
                EXPECT_TRUE(isBlack(cleaned.at(x, y))) << x << ", " << y;
            }
        }
}

TEST(Deformation, RotateTurnsAnticlockwiseForNegativeDegrees) {
    Engine engine(places(5, 5));
    EXPECT_EQ(placeOf(engine.filter.ROTATE(90, false), 4, 2), (Point{2, 4}));
    EXPECT_EQ(placeOf(engine.filter.ROTATE(-90, false), 4, 2), (Point{2, 0}));
    EXPECT_EQ(placeOf(engine.filter.ROTATE(180, false), 4, 1), (Point{0, 3}));
}

TEST(Deformation, TheRegionIsTestedAtTheSourceAndNotAtThePixel) {
    // Two squares with the centre at (1, 1). ROTATE by 90 takes (x, y) from (2 - y, x).
    Engine engine(places(4, 4));
    engine.keepTo({{0, 0, 2, 2}, {2, 2, 4, 4}});
    const PixelBuffer turned = engine.filter.ROTATE(90, true);
    // (0, 2) is outside the region, but its source (0, 0) is in it.
    EXPECT_EQ(placeOf(turned, 0, 2), (Point{0, 0}));
    // (0, 0) is inside, but its source (2, 0) is not.
    EXPECT_TRUE(isBlack(turned.at(0, 0)));
    EXPECT_EQ(placeOf(engine.filter.ROTATE(90, false), 0, 0), (Point{0, 0}));
}

TEST(Deformation, TheCornersOfTheRegionsBoxAreBlackened) {
    Engine engine(places(6, 6));
    engine.keepTo({{1, 1, 2, 2}, {3, 3, 4, 4}});
    const PixelBuffer cleaned = engine.filter.ROTATE(0, true);
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 6; ++x) {
            const bool inBox = x >= 1 && x < 4 && y >= 1 && y < 4;
            EXPECT_EQ(isBlack(cleaned.at(x, y)), inBox && !engine.region->contains(x, y));
        }
    EXPECT_EQ(engine.filter.ROTATE(0, false), engine.picture);
}

TEST(Deformation, BendTakesTheColumnByTheAngleAndTheRowByTheDistance) {
    // k = 2, the centre is (10, 10). Straight below lies column 0, then a quarter each to the
    // left, above and to the right; two rows up from the bottom with each pixel of distance.
    Engine engine(places(21, 21));
    const PixelBuffer bent = engine.filter.BEND(0, false);
    EXPECT_EQ(placeOf(bent, 10, 13), (Point{0, 14}));
    EXPECT_EQ(placeOf(bent, 7, 10), (Point{5, 14}));
    EXPECT_EQ(placeOf(bent, 10, 6), (Point{10, 12}));
    EXPECT_EQ(placeOf(bent, 15, 10), (Point{15, 10}));
    // Just right of straight below the angle is nearly a full turn: atan(1 / 10) = 0.0997 short
    // of it, 20 - 0.317 columns; 20 - 2 * 10.05 = -0.1 rows.
    EXPECT_EQ(placeOf(bent, 11, 20), (Point{20, 0}));
    // The centre itself has the angle of straight left.
    EXPECT_EQ(placeOf(bent, 10, 10), (Point{5, 20}));
}

TEST(Deformation, BendWithCleanBackIsBlackBeyondTheRadius) {
    // sy = 20 - 2 * r, which rounds to a row down to r = 10.25.
    Engine engine(drawBuffer(21, 21, [](int32_t, int32_t) { return Pixel{9, 9, 9, 1}; }));
    const PixelBuffer bent = engine.filter.BEND(0, true);
    for (int32_t y = 0; y < 21; ++y)
        for (int32_t x = 0; x < 21; ++x)
            EXPECT_EQ(isBlack(bent.at(x, y)), std::hypot(x - 10, y - 10) > 10.25) << x << ", " << y;
}

TEST(Deformation, FoldShearsEachAxisByThePositionOnTheOther) {
    // hFactor 400 and maxY 4: sx = dx * (dy + 1) + 2.
    Engine engine(places(5, 5));
    const PixelBuffer folded = engine.filter.FOLD(0, 400, true);
    EXPECT_EQ(placeOf(folded, 1, 3), (Point{0, 3}));
    EXPECT_EQ(placeOf(folded, 3, 3), (Point{4, 3}));
    EXPECT_TRUE(isBlack(folded.at(4, 3)));
    for (int32_t x = 0; x < 5; ++x) {
        EXPECT_EQ(placeOf(folded, x, 1), (Point{2, 1}));
        EXPECT_EQ(placeOf(folded, x, 2), (Point{x, 2}));
    }
    const PixelBuffer across = engine.filter.FOLD(400, 0, true);
    EXPECT_EQ(placeOf(across, 3, 1), (Point{3, 0}));
    EXPECT_EQ(placeOf(across, 1, 4), (Point{1, 2}));
}

TEST(Deformation, StretchByMinus50EnlargesTheCentreToTwiceItsSize) {
    // (x - 4) * 0.5 + 4, halves to the even column.
    Engine engine(places(9, 9));
    const PixelBuffer enlarged = engine.filter.STRETCH(-50, -50, true);
    const Columns from{2, 2, 3, 4, 4, 4, 5, 6, 6};
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(placeOf(enlarged, x, y),
                      (Point{from[static_cast<size_t>(x)], from[static_cast<size_t>(y)]}));
}

TEST(Deformation, StretchByAPositiveFactorShrinksThePicture) {
    Engine engine(places(9, 3));
    const PixelBuffer shrunk = engine.filter.STRETCH(100, 0, true);
    for (int32_t x = 0; x < 9; ++x)
        if (x >= 2 && x <= 6)
            EXPECT_EQ(placeOf(shrunk, x, 1), (Point{2 * x - 4, 1}));
        else
            EXPECT_TRUE(isBlack(shrunk.at(x, 1)));
}

TEST(Deformation, TwirlTurnsEachRingByItsRadius) {
    // The centre is (5, 5) and t = 1.6 / 5: the ring at 5 turns by 1.6, the one at 1 by 0.32.
    Engine engine(places(11, 11));
    const PixelBuffer twirled = engine.filter.TWIRL(16, 0, false);
    EXPECT_EQ(placeOf(twirled, 10, 5), (Point{5, 0}));
    EXPECT_EQ(placeOf(twirled, 5, 10), (Point{10, 5}));
    EXPECT_EQ(placeOf(twirled, 0, 5), (Point{5, 10}));
    EXPECT_EQ(placeOf(twirled, 6, 5), (Point{6, 5}));
    EXPECT_EQ(placeOf(twirled, 5, 5), (Point{5, 5}));
}

TEST(Deformation, TwirlTurnsAllRingsByTheOffset) {
    Engine engine(places(11, 11));
    const PixelBuffer turned = engine.filter.TWIRL(0, 90, false);
    EXPECT_EQ(placeOf(turned, 8, 5), (Point{5, 8}));
    EXPECT_EQ(placeOf(turned, 5, 2), (Point{8, 5}));
    // The corner (0, 0) has the rounded distance 7: 7.07 columns become 4.95.
    EXPECT_EQ(placeOf(turned, 0, 0), (Point{10, 0}));
}

TEST(Deformation, TwirlOnTwoColumnsHasNoSourceButTheCentre) {
    // cx is 0: the turn of a ring is infinite, or no number for a Factor of 0.
    for (const int32_t factor : {0, 5, -5}) {
        Engine engine(places(2, 5));
        EXPECT_EQ(engine.filter.TWIRL(factor, 0, false), engine.picture);
        const PixelBuffer cleaned = engine.filter.TWIRL(factor, 0, true);
        for (int32_t y = 0; y < 5; ++y)
            for (int32_t x = 0; x < 2; ++x)
                EXPECT_EQ(isBlack(cleaned.at(x, y)), x != 0 || y != 2);
    }
}

/// Where the pixels of a picture of more columns than places() has were taken from.
PixelBuffer widePlaces(int32_t width, int32_t height) {
    return drawBuffer(width, height, [](int32_t x, int32_t y) {
        return Pixel{static_cast<uint8_t>(x), static_cast<uint8_t>(x >> 8),
                     static_cast<uint8_t>((x >> 16) + 10 * (y + 1)), 7};
    });
}

TEST(Deformation, TheSquareOfADistanceWrapsAt32Bits) {
    // The centre is (70000, 1). 65536 columns from it the square is 0 again, and 60000 columns from
    // it is below 0, which has no root.
    Engine engine(widePlaces(140001, 3));
    const PixelBuffer& source = engine.picture;
    const PixelBuffer twirled = engine.filter.TWIRL(0, 0, false);
    EXPECT_EQ(twirled.at(70000 + 65536, 1), source.at(70000, 1));
    EXPECT_EQ(twirled.at(70000 - 65536, 1), source.at(70000, 1));
    EXPECT_EQ(twirled.at(70000 + 60000, 1), source.at(70000 + 60000, 1)) << "it keeps its own";
    EXPECT_TRUE(isBlack(engine.filter.TWIRL(0, 0, true).at(70000 + 60000, 1)));
    EXPECT_EQ(twirled.at(70000 + 40000, 1), source.at(70000 + 40000, 1)) << "the same place";
    EXPECT_FALSE(isBlack(engine.filter.TWIRL(0, 0, true).at(70000 + 40000, 1)));
    // BEND takes a distance of 0 from the last row: to the right at three quarters of the columns.
    const PixelBuffer bent = engine.filter.BEND(0, true);
    EXPECT_EQ(bent.at(70000 + 65536, 1), source.at(105000, 2));
    EXPECT_EQ(bent.at(70000 - 65536, 1), source.at(35000, 2));
    EXPECT_TRUE(isBlack(bent.at(70000 + 60000, 1)));
}

TEST(Deformation, ARegionThatHoldsTheLowestCoordinateIsReadThereAsBlack) {
    // Divisions by 0 send the source to the lowest column and row; a region that contains even
    // that point lets it be copied.
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    for (const auto& [width, height] : {std::pair{5, 1}, std::pair{1, 5}}) {
        Engine engine(places(width, height));
        engine.keepTo({{lowest, lowest, 10, 10}});
        const PixelBuffer folded = engine.filter.FOLD(10, 10, false);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x)
                EXPECT_TRUE(isBlack(folded.at(x, y))) << x << ", " << y;
    }
    Engine narrow(places(2, 5));
    narrow.keepTo({{lowest, lowest, 10, 10}});
    const PixelBuffer twirled = narrow.filter.TWIRL(10, 0, false);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 2; ++x)
            if (x == 0 && y == 2)
                EXPECT_EQ(placeOf(twirled, x, y), (Point{0, 2}));
            else
                EXPECT_TRUE(isBlack(twirled.at(x, y))) << x << ", " << y;
}

TEST(Deformation, FoldOnOneRowOrColumnHasNoSource) {
    // The middle row divides 0 by 0, and the rows of the margin another number by 0.
    for (const auto& [width, height] : {std::pair{5, 1}, std::pair{1, 5}}) {
        Engine engine(places(width, height));
        engine.keepTo({{-2, -2, width + 2, height + 2}});
        EXPECT_EQ(engine.filter.FOLD(10, 10, false), engine.picture);
        const PixelBuffer cleaned = engine.filter.FOLD(10, 10, true);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x)
                EXPECT_TRUE(isBlack(cleaned.at(x, y)));
    }
}

TEST(Deformation, RotateSmoothMixesFourNeighbours) {
    // The centre is (1, 1). (2, 1) by 45 degrees is taken from (1.7071, 1.7071):
    // left = 0.2929 * 100 + 0.7071 * 200 = 170.7, right = 0.7071 * 50 = 35.4;
    // 171 * 0.2929 + 35 * 0.7071 = 74.8.
    PixelBuffer picture = drawBuffer(3, 3, [](int32_t, int32_t) { return Pixel{}; });
    Pixel* block = picture.writableBlock();
    block[picture.offsetOfRow(1) + 1] = {100, 10, 0, 0};
    block[picture.offsetOfRow(2) + 1] = {200, 20, 0, 0};
    block[picture.offsetOfRow(2) + 2] = {50, 5, 255, 0};
    Engine engine(picture);
    // Green: 17.07 and 3.5 (3.54): 17 * 0.2929 + 4 * 0.7071 = 7.8. Red: 180.3, 180 * 0.7071.
    EXPECT_EQ(engine.filter.RotateSmooth(45).at(2, 1), (Pixel{75, 8, 127, 0}));
}

TEST(Deformation, RotateSmoothReadsTheMarginsBytes) {
    // (2, 0) by 45 degrees is taken from (2.4142, 1): 200 * 0.5858 + margin * 0.4142.
    PixelBuffer picture = drawBuffer(3, 3, [](int32_t, int32_t) { return Pixel{200, 0, 0, 0}; });
    Engine black(picture);
    EXPECT_EQ(black.filter.RotateSmooth(45).at(2, 0).blue, 117);
    Pixel* block = picture.writableBlock();
    for (int32_t y = 0; y < 3; ++y)
        block[picture.offsetOfRow(y) + 3] = {100, 0, 0, 0};
    Engine grey(picture);
    EXPECT_EQ(grey.filter.RotateSmooth(45).at(2, 0).blue, 159);
}

TEST(Deformation, RotateSmoothWritesEveryPixelOfTheBoxWhateverTheRegionsShape) {
    Engine engine(drawBuffer(20, 20, [](int32_t x, int32_t y) {
        return Pixel{static_cast<uint8_t>(10 + x), static_cast<uint8_t>(10 + y), 200, 7};
    }));
    const PixelBuffer whole = engine.filter.RotateSmooth(45);
    engine.keepTo({{0, 0, 5, 5}, {15, 15, 20, 20}});
    EXPECT_EQ(engine.filter.RotateSmooth(45), whole);
    // The corners have no source in the image, the middle has.
    EXPECT_EQ(whole.at(0, 0), (Pixel{0, 0, 0, 7}));
    EXPECT_EQ(whole.at(19, 19), (Pixel{0, 0, 0, 7}));
    EXPECT_FALSE(isBlack(whole.at(9, 0)));
    // A box inside the image leaves all around it, and may sample beyond itself.
    engine.keepTo({{5, 5, 15, 15}});
    const PixelBuffer part = engine.filter.RotateSmooth(45);
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 20; ++x) {
            const bool inBox = x >= 5 && x < 15 && y >= 5 && y < 15;
            EXPECT_EQ(part.at(x, y), inBox ? whole.at(x, y) : engine.picture.at(x, y));
        }
}

TEST(Deformation, GlassTakesTheSourceOfItsStyleAndIntensity) {
    // The pixel (10, 14) of 60 columns is number 851 of the scan. sin 851 = 0.369,
    // tan 10 = 0.648, sin 10 = -0.544, cos 10 = -0.839; tan 14 = 7.245, sin 14 = 0.991,
    // cos 14 = 0.137.
    const std::map<std::pair<std::string, int16_t>, Point> sources{
        {{"slanting", 0}, {9, 14}},    {{"slanting", 1}, {10, 10}},   {{"vertical", 0}, {11, 14}},
        {{"vertical", 1}, {12, 14}},   {{"vertical", 2}, {18, 14}},   {{"horizontal", 0}, {10, 28}},
        {{"horizontal", 1}, {10, 11}}, {{"horizontal", 2}, {10, 13}}, {{"squary", 0}, {11, 28}},
        {{"squary", 1}, {13, 9}},      {{"squary", 2}, {18, 13}},     {{"curtain", 0}, {7, 14}},
        {{"curtain", 1}, {1, 14}},     {{"curtain", 2}, {5, 14}},     {{"curtain", 3}, {10, 8}}};
    Engine engine(places(60, 60));
    for (const auto& [row, source] : sources)
        EXPECT_EQ(placeOf(engine.filter.GLASS(row.first, row.second), 10, 14), source)
            << row.first << " " << row.second;
}

TEST(Deformation, GlassOfAnUnlistedStyleOrIntensityLeavesThePicture) {
    Engine engine(randomBuffer(30, 20, 2));
    engine.keepTo({{-2, -2, 2000000000, 2147483647}});
    const std::vector<std::pair<std::string, int16_t>> unlisted{
        {"slanting", 2},        {"slanting", -1},  {"vertical", 3},
        {"horizontal", -32768}, {"squary", 32767}, {"curtain", 4},
        {"Vertical", 1},        {"vertical ", 1},  {"", 0}};
    for (const auto& [style, intensity] : unlisted)
        EXPECT_EQ(engine.filter.GLASS(style, intensity), engine.picture) << style << intensity;
}

TEST(Deformation, GlassLeavesAPixelWhoseSourceIsOutside) {
    // 1 - 3 * sin 1 = -1.5.
    Engine engine(places(30, 5));
    EXPECT_EQ(placeOf(engine.filter.GLASS("vertical", 1), 1, 2), (Point{1, 2}));
}

TEST(Deformation, GlassVerticalDisplacesEveryRowTheSameWay) {
    Engine engine(places(60, 12));
    for (const int16_t intensity : {0, 1, 2}) {
        const PixelBuffer result = engine.filter.GLASS("vertical", intensity);
        EXPECT_FALSE(result == engine.picture);
        for (int32_t y = 0; y < 12; ++y)
            for (int32_t x = 0; x < 60; ++x)
                EXPECT_EQ(placeOf(result, x, y), (Point{placeOf(result, x, 0).x, y}));
    }
}

TEST(Deformation, GlassSlantingCountsThePixelsOfTheScan) {
    // In all 20 columns (10, 0) is number 11, and 10 - 3 * sin 11 = 13. From column 8 on it is
    // number 3, and 10 - 3 * sin 3 = 9.6.
    Engine engine(places(20, 5));
    EXPECT_EQ(placeOf(engine.filter.GLASS("slanting", 0), 10, 0), (Point{13, 0}));
    engine.keepTo({{8, 0, 20, 5}});
    EXPECT_EQ(placeOf(engine.filter.GLASS("slanting", 0), 10, 0), (Point{10, 0}));
    EXPECT_EQ(placeOf(engine.filter.GLASS("slanting", 0), 12, 0), (Point{15, 0}));
    // Pixels outside the region count as well: (11, 1) is number 16, and 11 - 3 * sin 16 = 11.9.
    engine.keepTo({{8, 0, 9, 1}, {8, 1, 20, 2}});
    EXPECT_EQ(placeOf(engine.filter.GLASS("slanting", 0), 11, 1), (Point{12, 1}));
}

TEST(Deformation, GlassSlantingCountsPixelsFarOutsideTheBufferAndWraps) {
    Engine engine(places(20, 5));
    const Rect box{-2000000000, -1000, 2000000000, 2000};
    engine.keepTo({box});
    const PixelBuffer result = engine.filter.GLASS("slanting", 1);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 20; ++x) {
            const int64_t number = (int64_t{y} - box.top) * 4000000000 + x - box.left + 1;
            const double ripple = std::sin(static_cast<double>(static_cast<int32_t>(number)));
            const auto sy = static_cast<int32_t>(std::rint(y - 10 * ripple));
            if (sy >= 0 && sy < 5) {
                EXPECT_EQ(placeOf(result, x, y), (Point{x, sy})) << x << ", " << y;
            }
        }
}

TEST(Deformation, WavesWithoutAmplitudeGivesTheSource) {
    Engine engine(randomBuffer(20, 30, 3));
    for (const int32_t f : {0, 7, 2147483647})
        for (const int32_t start : {0, 90, -2147483647})
            EXPECT_EQ(engine.filter.WAVES(f, 0, start), engine.picture);
}

TEST(Deformation, WavesDisplacesRowsBySinesAndStopsAtBothEdges) {
    const auto rowsOf = [](const PixelBuffer& waved) {
        Columns rows;
        for (int32_t y = 0; y < waved.height(); ++y) {
            EXPECT_EQ(placeOf(waved, 3, y).x, 3);
            rows.push_back(placeOf(waved, 3, y).y);
        }
        return rows;
    };
    // Amplitude 8 * 0.25 = 2; every row at the sine's top, at its bottom, and a quarter a row.
    Engine engine(places(5, 8));
    EXPECT_EQ(rowsOf(engine.filter.WAVES(0, 8, 90)), (Columns{2, 3, 4, 5, 6, 7, 7, 7}));
    EXPECT_EQ(rowsOf(engine.filter.WAVES(0, 8, -90)), (Columns{0, 0, 0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(rowsOf(engine.filter.WAVES(90, 8, 0)), (Columns{0, 3, 2, 1, 4, 7, 6, 5}));
}

TEST(Deformation, WavesKeepsToTheRegionAtTheDestination) {
    Engine engine(places(6, 6));
    engine.keepTo({{1, 1, 3, 3}, {3, 3, 5, 5}});
    const PixelBuffer waved = engine.filter.WAVES(0, 4, 90);
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 6; ++x)
            EXPECT_EQ(placeOf(waved, x, y), (Point{x, engine.region->contains(x, y) ? y + 1 : y}));
}

}  // namespace
}  // namespace tessarine::tests::deformation
