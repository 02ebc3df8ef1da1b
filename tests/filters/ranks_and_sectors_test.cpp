#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "neighbourhood_pictures.h"
#include "pixels/bit_filter.h"
#include "support/comparison.h"
#include "support/engine.h"

// The neighbourhood members that pick one of their places, or the calmest of some sectors, by
// values worked out by hand. Pixels are written blue, green, red, fourth.

namespace tessarine::tests {
namespace {

using Reports = std::vector<int32_t>;
using Rows = std::vector<std::vector<uint8_t>>;

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

TEST(RanksAndSectors, ErodeOfWhiteGivesABlackFrameAndDilateOfBlackBlack) {
    Engine white(uniform(5, 4, 255));
    const PixelBuffer eroded = white.filter.ERODE();
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 5; ++x)
            EXPECT_EQ(eroded.at(x, y), grey(onFrame(eroded, x, y) ? 0 : 255)) << x << ", " << y;
    EXPECT_EQ(white.filter.DILATE(), white.filter.Bits());
    Engine black(uniform(5, 4, 0));
    EXPECT_EQ(black.filter.DILATE(), black.filter.Bits());
}

TEST(RanksAndSectors, DilateAndErodeTakeEachChannelByItself) {
    PixelBuffer picture = drawBuffer(3, 3, [](int32_t, int32_t) { return Pixel{50, 60, 70, 8}; });
    Pixel* block = picture.writableBlock();
    block[picture.offsetOfRow(0)] = {200, 1, 70, 0};
    block[picture.offsetOfRow(2) + 2] = {2, 60, 220, 255};
    Engine engine(picture);
    EXPECT_EQ(engine.filter.DILATE().at(1, 1), (Pixel{200, 60, 220, 8}));
    EXPECT_EQ(engine.filter.ERODE().at(1, 1), (Pixel{2, 1, 70, 8}));
}

TEST(RanksAndSectors, TheRankFiltersTakeTheirFivePlacesAndNoOther) {
    const Rows rows{{1, 20, 250}, {30, 100, 40}, {60, 200, 3}};
    Engine engine(greys(rows));
    EXPECT_EQ(engine.filter.RankFilterN4(0).at(1, 1), grey(20));
    EXPECT_EQ(engine.filter.RankFilterN4(1).at(1, 1), grey(200));
    EXPECT_EQ(engine.filter.RankFilterND(0).at(1, 1), grey(1));
    EXPECT_EQ(engine.filter.RankFilterND(1).at(1, 1), grey(250));
}

TEST(RanksAndSectors, TheSmallestOfFiveLeavesTheOutermostPixelsAndTheLargestDoesNot) {
    const PixelBuffer picture = randomBuffer(8, 7, 7);
    Engine engine(picture);
    for (const PixelBuffer& result : {engine.filter.RankFilterN4(0), engine.filter.RankFilterND(0)})
        for (int32_t y = 0; y < 7; ++y)
            for (int32_t x = 0; x < 8; ++x)
                if (onFrame(picture, x, y)) {
                    EXPECT_EQ(result.at(x, y), picture.at(x, y)) << x << ", " << y;
                }
    Engine dots(greys({{0, 9}, {0, 0}}));
    EXPECT_TRUE(sameBuffer("neighbourhood", dots.filter.RankFilterN4(1), greys({{9, 9}, {0, 9}})));
    EXPECT_TRUE(sameBuffer("neighbourhood", dots.filter.RankFilterND(1), greys({{0, 9}, {9, 0}})));
}

TEST(RanksAndSectors, AnyOtherRankGivesBlackInTheRegion) {
    const PixelBuffer picture = randomBuffer(6, 6, 8);
    Engine engine(picture);
    engine.keepTo({{1, 1, 4, 3}, {2, 3, 6, 5}});
    for (const int32_t type : {2, 5, 1000000}) {
        const PixelBuffer plus = engine.filter.RankFilterN4(type);
        EXPECT_EQ(engine.filter.RankFilterND(type), plus) << type;
        for (int32_t y = -2; y < 8; ++y)
            for (int32_t x = -2; x < 8; ++x) {
                const Pixel& p = picture.at(x, y);
                EXPECT_EQ(plus.at(x, y),
                          engine.region->contains(x, y) ? (Pixel{0, 0, 0, p.fourth}) : p)
                    << type << " at " << x << ", " << y;
            }
    }
}

TEST(RanksAndSectors, ARankBelow0NarrowsTheScanAndOneAbove1WidensIt) {
    Engine engine(uniform(7, 7, 90));
    // Margin 3: the middle alone.
    const PixelBuffer narrow = engine.filter.RankFilterN4(-2);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(narrow.at(x, y), grey(x == 3 && y == 3 ? 0 : 90)) << x << ", " << y;
    // A border of the scan that leaves the 32-bit range wraps, and nothing lies in between.
    EXPECT_EQ(engine.filter.RankFilterN4(lowest), engine.filter.Bits());
    EXPECT_EQ(engine.filter.RankFilterN4(highest), engine.filter.Bits());

    engine.reports.clear();
    engine.reportAlways();
    engine.filter.RankFilterND(2);
    // A row more above and below, of 0 to 6.
    EXPECT_EQ(engine.reports, (Reports{-16, 0, 16, 33, 50, 66, 83, 100, 116, 100}));
}

TEST(RanksAndSectors, AMarginOf1LeavesOutTheReportsOfTheFirstAndLastRow) {
    Engine engine(uniform(5, 5, 90));
    engine.reports.clear();
    engine.reportAlways();
    engine.filter.SHARPEN(3);
    engine.filter.SOFTEN(3);
    engine.filter.RankFilterN4(0);
    EXPECT_EQ(engine.reports, (Reports{25, 50, 75, 100, 25, 50, 75, 100, 25, 50, 75, 100}));
}

TEST(RanksAndSectors, DissolveLeavesAUniformPictureUpToItsCorners) {
    const PixelBuffer picture = uniform(7, 6, 90);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.Dissolve(), picture);
}

TEST(RanksAndSectors, PaintingHasNoSectorForTheUpperLeftCornerOfAPicture) {
    Engine engine(uniform(7, 6, 90));
    const PixelBuffer result = engine.filter.PAINTING();
    // (0, 0) has one pixel in the first sector, three in the next two: means 10 and 30, spreads
    // 160 and 360. (1, 0): two, three, four: 20, 30, 40. (2, 0): the third has six.
    EXPECT_EQ(result.at(0, 0), grey(10));
    EXPECT_EQ(result.at(1, 0), grey(20));
    EXPECT_EQ(result.at(2, 0), grey(90));
    EXPECT_EQ(result.at(3, 3), grey(90));
}

TEST(RanksAndSectors, OfSectorsWithEqualSpreadTheEarlierOneIsTaken) {
    // The sectors to the left of (2, 2) hold two columns of one level and the middle one, those to
    // the right the middle one and two of another.
    // 41 and 59 about 50: 396 \ 9 = 44, spread 6 * 3 + 3 * 6 = 36; 504 \ 9 = 56, spread 36.
    const PixelBuffer even = drawBuffer(5, 5, [](int32_t x, int32_t) {
        return grey(x < 2 ? 41 : x == 2 ? 50 : 59);
    });
    Engine tied(even);
    EXPECT_EQ(tied.filter.Dissolve().at(2, 2), grey(44));
    EXPECT_EQ(tied.filter.PAINTING().at(2, 2), grey(44));
    const PixelBuffer mirrored = drawBuffer(5, 5, [](int32_t x, int32_t) {
        return grey(x < 2 ? 59 : x == 2 ? 50 : 41);
    });
    Engine other(mirrored);
    EXPECT_EQ(other.filter.Dissolve().at(2, 2), grey(56));
    EXPECT_EQ(other.filter.PAINTING().at(2, 2), grey(56));
}

TEST(RanksAndSectors, TheLowerRightSectorBelongsToDissolveAlone) {
    // Calm to the lower right of the middle, restless everywhere else.
    PixelBuffer picture = drawBuffer(5, 5, [](int32_t x, int32_t y) {
        return x >= 2 && y >= 2 ? grey(100) : grey((x + y) % 2 == 0 ? 0 : 240);
    });
    Engine engine(picture);
    EXPECT_EQ(engine.filter.Dissolve().at(2, 2), grey(100));
    // To the upper right 0, 100 and 240 thrice: 1020 \ 9, spread 759; to the upper left 977.
    EXPECT_EQ(engine.filter.PAINTING().at(2, 2), grey(113));
}

}  // namespace
}  // namespace tessarine::tests
