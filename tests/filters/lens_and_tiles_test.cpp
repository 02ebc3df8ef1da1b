#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "places.h"
#include "support/clock.h"
#include "support/pictures.h"

// LENS, TILE, TileMask and Shift by values worked out by hand. Pixels are written blue, green,
// red, fourth.

namespace tessarine::tests::deformation {
namespace {

using Columns = std::vector<int32_t>;
using Reports = std::vector<int32_t>;

/// The reports of a call while each reading of the clock is late.
template <class Call>
Reports reportsOf(Engine& engine, Call call) {
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    Reports reports;
    keepReports(engine.filter, reports);
    call(engine.filter);
    engine.filter.Progress = nullptr;
    return reports;
}

PixelBuffer plain(int32_t width, int32_t height, const Pixel& colour) {
    return drawBuffer(width, height, [&](int32_t, int32_t) { return colour; });
}

/// The columns of a row of a deformed places().
Columns columnsOf(const PixelBuffer& deformed, int32_t y) {
    Columns columns;
    for (int32_t x = 0; x < deformed.width(); ++x)
        columns.push_back(placeOf(deformed, x, y).x);
    return columns;
}

TEST(Lens, Factor0GivesTheSource) {
    Engine engine(randomBuffer(30, 20, 1));
    EXPECT_EQ(engine.filter.LENS(0.5F, 0.5F, 0.5F, 0), engine.picture);
}

TEST(Lens, Factor150SamplesTheCentreAloneInTheWholeDisc) {
    // Centre (5, 5), radius 3: the disc is what lies closer than 3.
    Engine engine(places(11, 11));
    const PixelBuffer result = engine.filter.LENS(0.5F, 0.5F, 0.3F, 150);
    for (int32_t y = 0; y < 11; ++y)
        for (int32_t x = 0; x < 11; ++x) {
            const bool inDisc = (x - 5) * (x - 5) + (y - 5) * (y - 5) < 9;
            EXPECT_EQ(placeOf(result, x, y), inDisc ? (Point{5, 5}) : (Point{x, y}));
        }
}

TEST(Lens, MagnifiesByTheDistanceFromTheCentre) {
    // R = 10, p = 5, q2 = 75. At (6, 0): z = 8, 30 \ 8 = 3. At (3, -4): z = 8.66 to 9,
    // 15 \ 9 = 1 and -20 \ 9 = -2.
    Engine engine(places(21, 21));
    const PixelBuffer result = engine.filter.LENS(0.5F, 0.5F, 0.5F, 75);
    EXPECT_EQ(placeOf(result, 16, 10), (Point{13, 10}));
    EXPECT_EQ(placeOf(result, 13, 6), (Point{11, 8}));
    // At (8, 1): z = 5.9 to 6, 40 \ 6 = 6 and 5 \ 6 = 0. (8, 4) has 80 and is outside.
    EXPECT_EQ(placeOf(result, 18, 11), (Point{16, 10}));
    EXPECT_EQ(placeOf(result, 18, 14), (Point{18, 14}));
}

TEST(Lens, TheRadiusIsMeasuredAgainstTheLongerSide) {
    for (const bool wide : {true, false}) {
        Engine engine(places(wide ? 21 : 9, wide ? 9 : 21));
        const PixelBuffer result = engine.filter.LENS(0.5F, 0.5F, 0.2F, 150);
        // Radius 4, around (10, 4) or (4, 10).
        EXPECT_EQ(placeOf(result, wide ? 13 : 4, wide ? 4 : 13),
                  placeOf(result, wide ? 10 : 4, wide ? 4 : 10));
        EXPECT_EQ(placeOf(result, wide ? 14 : 4, wide ? 4 : 14),
                  (Point{wide ? 14 : 4, wide ? 4 : 14}));
    }
}

TEST(Lens, KeepsToTheRegionAtTheDestinationAndSamplesBeyondIt) {
    Engine engine(places(11, 11));
    engine.keepTo({{6, 0, 11, 11}});
    const PixelBuffer result = engine.filter.LENS(0.5F, 0.5F, 0.3F, 150);
    EXPECT_EQ(placeOf(result, 6, 5), (Point{5, 5}));
    EXPECT_EQ(placeOf(result, 4, 5), (Point{4, 5}));
}

TEST(Lens, ReportsAgainstTheDiscsHeight) {
    // R = 2: 0 to 4 of 4 rows.
    Engine engine(places(11, 11));
    EXPECT_EQ(reportsOf(engine, [](cBitFilter& f) { f.LENS(0.5F, 0.5F, 0.2F, 100); }),
              (Reports{0, 25, 50, 75, 100, 100}));
}

TEST(Lens, ARadiusOf0ChangesNothingAndReportsItsEndOnly) {
    Engine engine(places(11, 11));
    EXPECT_EQ(
        reportsOf(engine,
                  [&](cBitFilter& f) { EXPECT_EQ(f.LENS(0.5F, 0.5F, 0, 150), engine.picture); }),
        (Reports{100}));
}

TEST(Lens, ArgumentsThatAreNoPlaceOrRadiusChangeNothing) {
    Engine engine(places(11, 11));
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(engine.filter.LENS(none, 0.5F, 0.5F, 100), engine.picture);
    EXPECT_EQ(engine.filter.LENS(0.5F, -infinity, 0.5F, 100), engine.picture);
    EXPECT_EQ(engine.filter.LENS(0.5F, 0.5F, none, 100), engine.picture);
    EXPECT_EQ(engine.filter.LENS(0.5F, 0.5F, infinity, 100), engine.picture);
    EXPECT_EQ(engine.filter.LENS(0.5F, 0.5F, -0.5F, 100), engine.picture);
    // A Factor outside 0 to 150 has p beyond R on either side.
    EXPECT_EQ(engine.filter.LENS(0.5F, 0.5F, 0.5F, -1), engine.picture);
    EXPECT_EQ(engine.filter.LENS(0.5F, 0.5F, 0.5F, 301), engine.picture);
}

TEST(Lens, ACentreOffTheImageReadsBlackBeyondTheBuffer) {
    // The centre is (5, -20) and the only source of the disc.
    Engine engine(places(11, 11));
    const PixelBuffer result = engine.filter.LENS(0.5F, -2, 2.5F, 150);
    EXPECT_TRUE(isBlack(result.at(5, 0)));
    EXPECT_EQ(placeOf(result, 5, 5), (Point{5, 5}));
}

TEST(Tile, FactorIsTheNumberOfTilesAcrossAndDown) {
    // 8 / 2 = 4 columns to a tile, each second one of the source; the ninth begins a third tile.
    Engine engine(places(9, 9));
    const PixelBuffer tiled = engine.filter.TILE(2);
    EXPECT_EQ(columnsOf(tiled, 0), (Columns{0, 2, 4, 6, 0, 2, 4, 6, 0}));
    for (int32_t y = 0; y < 9; ++y)
        EXPECT_EQ(placeOf(tiled, 3, y), (Point{6, y % 4 * 2}));
}

TEST(Tile, Factor1CopiesTheImageOntoItselfUpToTheNextTile) {
    // One column and one row, the last ones, belong to the tiles that begin there.
    Engine engine(places(9, 7));
    const PixelBuffer tiled = engine.filter.TILE(1);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(placeOf(tiled, x, y), (Point{x % 8, y % 6}));
}

TEST(Tile, TheSizeIsRoundedToTheEvenNumberAndAtLeast1) {
    // 5 / 2 = 2.5 to 2; the columns of a tile are 2.5 apart, which rounds to 2 as well.
    Engine engine(places(6, 6));
    EXPECT_EQ(columnsOf(engine.filter.TILE(2), 0), (Columns{0, 2, 0, 2, 0, 2}));
    for (const int32_t factor : {100, -1, -7, -2147483647 - 1, 0})
        EXPECT_EQ(columnsOf(engine.filter.TILE(factor), 3), (Columns{0, 0, 0, 0, 0, 0})) << factor;
}

TEST(Tile, Factor0LaysTilesOfOnePixel) {
    Engine engine(places(6, 4));
    const PixelBuffer tiled = engine.filter.TILE(0);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 6; ++x)
            EXPECT_EQ(placeOf(tiled, x, y), (Point{0, 0}));
}

TEST(Tile, TilesBeginAtTheRegionsBoxAndKeepToTheRegion) {
    Engine engine(places(9, 9));
    engine.keepTo({{3, 2, 8, 4}, {5, 4, 9, 8}});
    const PixelBuffer tiled = engine.filter.TILE(2);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) {
            const Point inTile{(x - 3) % 4 * 2, (y - 2) % 4 * 2};
            EXPECT_EQ(placeOf(tiled, x, y), engine.region->contains(x, y) ? inTile : (Point{x, y}));
        }
}

TEST(Tile, TilesMayBeginFarOutsideTheBuffer) {
    // 8 / 3 rounds to 3 columns; 2000000000 has the remainder 2.
    Engine engine(places(9, 9));
    engine.keepTo({{-2000000000, -2000000000, 2000000000, 2000000000}});
    const PixelBuffer tiled = engine.filter.TILE(3);
    EXPECT_EQ(columnsOf(tiled, 1), (Columns{5, 0, 3, 5, 0, 3, 5, 0, 3}));
    EXPECT_EQ(placeOf(tiled, 2, 3), (Point{3, 5}));
}

TEST(Tile, ReportsAfterEachRowOfTiles) {
    Engine engine(places(9, 9));
    EXPECT_EQ(reportsOf(engine, [](cBitFilter& f) { f.TILE(2); }), (Reports{0, 50, 100, 100}));
    Engine lower(places(9, 9));
    lower.keepTo({{0, 3, 9, 9}});
    EXPECT_EQ(reportsOf(lower, [](cBitFilter& f) { f.TILE(2); }), (Reports{37, 87, 100}));
}

TEST(TileMask, WithoutMaskColorBlendsEveryPixelOfTheMask) {
    // At 50 percent: (100 + 201) / 2 = 150.5 to the even 150, (101 + 0) / 2 = 50.5 to 50.
    Engine engine(plain(4, 3, {100, 101, 10, 7}));
    const PixelBuffer mask = drawBuffer(2, 2, [](int32_t x, int32_t) {
        return Pixel{201, 0, x == 0 ? uint8_t{255} : uint8_t{20}, 9};
    });
    const PixelBuffer result = engine.filter.TileMask(mask, 1, 1, false, 50, -1);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 4; ++x) {
            const bool covered = x >= 1 && x < 3 && y >= 1;
            const Pixel blended{150, 50, x == 1 ? uint8_t{132} : uint8_t{15}, 7};
            EXPECT_EQ(result.at(x, y), covered ? blended : engine.picture.at(x, y));
        }
}

TEST(TileMask, WithoutMaskColorEvenWhiteAndBlackAreBlended) {
    Engine engine(plain(2, 1, {100, 100, 100, 7}));
    const PixelBuffer mask = drawBuffer(2, 1, [](int32_t x, int32_t) {
        return x == 0 ? Pixel{255, 255, 255, 0} : Pixel{0, 0, 0, 0};
    });
    const PixelBuffer result = engine.filter.TileMask(mask, 0, 0, false, 0, -1);
    EXPECT_EQ(result.at(0, 0), (Pixel{255, 255, 255, 7}));
    EXPECT_EQ(result.at(1, 0), (Pixel{0, 0, 0, 7}));
}

TEST(TileMask, Transparency100GivesTheSourceAndTransparency0TheMask) {
    Engine engine(places(12, 10));
    const PixelBuffer mask = randomBuffer(12, 10, 2);
    EXPECT_EQ(engine.filter.TileMask(mask, 0, 0, false, 100, -1), engine.picture);
    const PixelBuffer covered = engine.filter.TileMask(mask, 0, 0, false, 0, -1);
    EXPECT_EQ(firstDifference(covered, mask), "");
    EXPECT_EQ(covered.at(5, 5).fourth, engine.picture.at(5, 5).fourth);
}

TEST(TileMask, MaskPixelsOfTheMaskColorAreLeftOut) {
    // The colour is red 3, green 2, blue 1; each of the other pixels differs in one part. The
    // highest byte of the argument says nothing.
    const std::vector<Pixel> pixels{{1, 2, 3, 0}, {0, 2, 3, 0}, {1, 0, 3, 0}, {1, 2, 0, 0}};
    const PixelBuffer mask =
        drawBuffer(4, 1, [&](int32_t x, int32_t) { return pixels[static_cast<size_t>(x)]; });
    Engine engine(plain(4, 1, {9, 9, 9, 7}));
    for (const int32_t colour : {0x010203, 0x7F010203, 0x010203 - 0x1000000}) {
        const PixelBuffer result = engine.filter.TileMask(mask, 0, 0, false, 0, colour);
        EXPECT_EQ(result.at(0, 0), (Pixel{9, 9, 9, 7}));
        EXPECT_EQ(result.at(1, 0), (Pixel{0, 2, 3, 7}));
        EXPECT_EQ(result.at(2, 0), (Pixel{1, 0, 3, 7}));
        EXPECT_EQ(result.at(3, 0), (Pixel{1, 2, 0, 7}));
    }
}

TEST(TileMask, TilesFromTheOffsetOnAndKeepsToTheRegion) {
    const PixelBuffer mask = places(3, 2);
    Engine engine(plain(10, 8, {200, 200, 200, 0}));
    engine.keepTo({{0, 0, 10, 5}, {4, 5, 8, 8}});
    const PixelBuffer result = engine.filter.TileMask(mask, 2, 1, true, 0, -1);
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 10; ++x)
            if (x >= 2 && y >= 1 && engine.region->contains(x, y))
                EXPECT_EQ(placeOf(result, x, y), (Point{(x - 2) % 3, (y - 1) % 2}));
            else
                EXPECT_EQ(result.at(x, y), engine.picture.at(x, y));
}

TEST(TileMask, OffsetsMayLieFarOutside) {
    // 2000000000 has the remainder 2 by 3 and 0 by 2.
    const PixelBuffer mask = places(3, 2);
    Engine engine(plain(7, 4, {200, 200, 200, 0}));
    const PixelBuffer result = engine.filter.TileMask(mask, -2000000000, -2000000000, true, 0, -1);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(placeOf(result, x, y), (Point{(x + 2) % 3, y % 2}));
    for (const int32_t offset : {-2147483647 - 1, -2000000000, 10, 2000000000, 2147483647})
        EXPECT_EQ(engine.filter.TileMask(mask, offset, offset, false, 0, -1), engine.picture);
    const PixelBuffer shifted = engine.filter.TileMask(mask, -1, -1, false, 0, -1);
    EXPECT_EQ(placeOf(shifted, 1, 0), (Point{2, 1}));
    EXPECT_EQ(shifted.at(2, 0), engine.picture.at(2, 0));
}

TEST(TileMask, ReportsFromItsOffsetToTheLastRow) {
    // Rows 1, 3 and 5 of 1 to 5; one tile reports its start.
    const PixelBuffer mask = places(2, 2);
    Engine tiled(places(4, 6));
    EXPECT_EQ(reportsOf(tiled, [&](cBitFilter& f) { f.TileMask(mask, 0, 1, true, 50, -1); }),
              (Reports{0, 50, 100, 100}));
    Engine once(places(4, 6));
    EXPECT_EQ(reportsOf(once, [&](cBitFilter& f) { f.TileMask(mask, 0, 1, false, 50, -1); }),
              (Reports{0, 100}));
}

TEST(TileMask, ADueReportFailsWhereTheOffsetIsTheLastRow) {
    Engine engine(places(4, 6));
    const PixelBuffer mask = places(2, 2);
    Reports reports;
    keepReports(engine.filter, reports);
    EXPECT_EQ(placeOf(engine.filter.TileMask(mask, 2, 5, false, 0, -1), 3, 5), (Point{1, 0}));
    EXPECT_EQ(reports, (Reports{100}));
    reports.clear();
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    EXPECT_THROW(engine.filter.TileMask(mask, 2, 5, false, 0, -1), StatementFailed);
    EXPECT_TRUE(reports.empty());
}

TEST(TileMask, ATransparencyFailsOnlyWhereItSendsAChannelOutOfRange) {
    // 150 percent: 100 * 1.5 - 50 * 0.5 = 125; 200 * 1.5 - 20 * 0.5 = 290.
    const PixelBuffer mask = plain(1, 1, {50, 50, 20, 0});
    Engine fits(plain(1, 1, {100, 100, 100, 7}));
    EXPECT_EQ(fits.filter.TileMask(mask, 0, 0, true, 150, -1).at(0, 0), (Pixel{125, 125, 140, 7}));
    Engine breaks(plain(1, 1, {100, 100, 200, 7}));
    EXPECT_THROW(breaks.filter.TileMask(mask, 0, 0, true, 150, -1), StatementFailed);
    // A mask pixel that is left out is not computed.
    EXPECT_EQ(breaks.filter.TileMask(mask, 0, 0, true, 150, 0x323214), breaks.picture);
}

TEST(TileMask, AMaskWithoutPixelsFailsWhereItsTilesWouldNeverEnd) {
    Engine engine(places(5, 4));
    EXPECT_THROW(engine.filter.TileMask(PixelBuffer(0, 3), 0, 0, true, 50, -1), StatementFailed);
    EXPECT_THROW(engine.filter.TileMask(PixelBuffer(3, 0), 0, 0, true, 50, -1), StatementFailed);
    // Beyond the last column no tile is begun; beyond the last row no row of them is.
    EXPECT_EQ(engine.filter.TileMask(PixelBuffer(0, 3), 5, 0, true, 50, -1), engine.picture);
    EXPECT_EQ(engine.filter.TileMask(PixelBuffer(0, 3), 0, 4, true, 50, -1), engine.picture);
    EXPECT_EQ(engine.filter.TileMask(PixelBuffer(0, 0), 0, 0, false, 50, -1), engine.picture);
}

TEST(TileMask, AMaskWithoutDimensionsFails) {
    Engine engine(places(5, 4));
    EXPECT_THROW(engine.filter.TileMask(PixelBuffer(), 0, 0, false, 50, -1), StatementFailed);
}

TEST(Shift, Tolerance0ChangesExactMatchesByTheFullInc) {
    const PixelBuffer picture = drawBuffer(5, 1, [](int32_t x, int32_t) {
        const std::vector<Pixel> pixels{
            {1, 2, 3, 4}, {2, 2, 3, 4}, {1, 3, 3, 4}, {1, 2, 2, 4}, {1, 2, 3, 9}};
        return pixels[static_cast<size_t>(x)];
    });
    Engine engine(picture);
    // The highest byte of the colour says nothing.
    for (const int32_t colour : {0x010203, -0x1000000 + 0x010203}) {
        const PixelBuffer result = engine.filter.Shift(colour, 10, 0);
        EXPECT_EQ(result.at(0, 0), (Pixel{11, 12, 13, 4}));
        EXPECT_EQ(result.at(4, 0), (Pixel{11, 12, 13, 9}));
        for (const int32_t x : {1, 2, 3})
            EXPECT_EQ(result.at(x, 0), picture.at(x, 0));
    }
}

TEST(Shift, FadesWithTheDistance) {
    // Tolerance 100: tol = 127.5 squared + 1 = 16257 (16257.25). The first pixel is 50 off in
    // blue: w = 1 - 2500 / 16257 = 0.846, 40 * w = 33.85. The second is 127 off: w = 0.0079. The
    // third, 128 off, is 16384 away and stays.
    Engine engine(drawBuffer(3, 1, [](int32_t x, int32_t) {
        return x == 0   ? Pixel{150, 100, 200, 7}
               : x == 1 ? Pixel{100, 227, 200, 7}
                        : Pixel{228, 100, 200, 7};
    }));
    const PixelBuffer result = engine.filter.Shift(0x6464C8, 40, 100);
    EXPECT_EQ(result.at(0, 0), (Pixel{184, 134, 234, 7}));
    EXPECT_EQ(result.at(1, 0), (Pixel{100, 227, 200, 7}));
    EXPECT_EQ(result.at(2, 0), (Pixel{228, 100, 200, 7}));
    // Red goes towards the limit of 255: 200 + 55 * 0.846 = 246.5 (246.54).
    EXPECT_EQ(engine.filter.Shift(0x6464C8, 90, 100).at(0, 0), (Pixel{226, 176, 247, 7}));
    EXPECT_EQ(engine.filter.Shift(0x6464C8, -300, 100).at(0, 0), (Pixel{23, 15, 31, 7}));
}

TEST(Shift, StaysInAByteForEveryArgument) {
    // Any failure would leave a pixel as it was; with a tolerance above all distances and the
    // colour itself in the picture, all go the full way.
    Engine engine(plain(3, 2, {10, 128, 250, 7}));
    for (const int32_t tolerance : {1, 300, 30000})
        for (const int32_t inc : {300, 2147483647 - 255, -300, -2147483647}) {
            const uint8_t limit = inc > 0 ? 255 : 0;
            EXPECT_EQ(engine.filter.Shift(0x0A80FA, inc, tolerance).at(1, 1),
                      (Pixel{limit, limit, limit, 7}));
        }
}

TEST(Shift, StaysInAByteOnTheWayToALimitToo) {
    // d = 100 and tol = 16257: w = 0.99385. The levels 0 and 255 go that share of the way to the
    // table's entry, which wraps before it is clamped: 255 + 2147483647 is below 0.
    Engine engine(plain(3, 2, {0, 255, 255, 7}));
    const int32_t colour = 0x00FFF5;
    EXPECT_EQ(engine.filter.Shift(colour, 300, 100).at(1, 1), (Pixel{253, 255, 255, 7}));
    EXPECT_EQ(engine.filter.Shift(colour, -300, 100).at(1, 1), (Pixel{0, 2, 2, 7}));
    EXPECT_EQ(engine.filter.Shift(colour, 2147483647, 100).at(1, 1), (Pixel{253, 2, 2, 7}));
    EXPECT_EQ(engine.filter.Shift(colour, -2147483647, 100).at(1, 1), (Pixel{0, 2, 2, 7}));
    // At the end of the reach, with d = 16256, next to nothing is left of the way.
    for (const int32_t inc : {300, -300, 2147483647, -2147483647})
        EXPECT_EQ(engine.filter.Shift(0x10FF80, inc, 100).at(1, 1), engine.picture.at(1, 1));
}

TEST(Shift, AToleranceWhoseSquareIsNoIntegerChangesNothing) {
    // From 36346 percent on the square leaves 32 bits and becomes the lowest integer.
    Engine engine(plain(3, 2, {10, 128, 250, 7}));
    EXPECT_EQ(engine.filter.Shift(0x0A80FA, 5, 36345).at(0, 0), (Pixel{15, 133, 255, 7}));
    EXPECT_EQ(engine.filter.Shift(0x0A80FA, 5, 36346), engine.picture);
    EXPECT_EQ(engine.filter.Shift(0x0A80FA, 5, -2147483647 - 1), engine.picture);
}

}  // namespace
}  // namespace tessarine::tests::deformation
