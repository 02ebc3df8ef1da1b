#include <cstdint>
#include <utility>

#include <gtest/gtest.h>

#include "neighbourhood_pictures.h"

// The neighbourhood members by values worked out by hand. Pixels are written blue, green, red,
// fourth.

namespace tessarine::tests {
namespace {

constexpr int32_t lowest = -2147483647 - 1;
constexpr int32_t highest = 2147483647;

/// A white dot in the middle of a black picture of 9 by 9.
PixelBuffer dot() {
    return drawBuffer(9, 9, [](int32_t x, int32_t y) { return grey(x == 4 && y == 4 ? 255 : 0); });
}

TEST(Neighbourhood, BlursSpreadsADotOverItsNeighboursAndNotToItself) {
    Engine engine(dot());
    const PixelBuffer near = engine.filter.Blurs(1);
    const PixelBuffer far = engine.filter.Blurs(3);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) {
            const bool centre = x == 4 && y == 4;
            const bool beside = !onFrame(near, x, y, 3) && !centre;
            EXPECT_EQ(near.at(x, y), grey(beside ? 31 : 0)) << x << ", " << y;
            const bool apart = (x - 4) % 3 == 0 && (y - 4) % 3 == 0 && !centre;
            EXPECT_EQ(far.at(x, y), grey(apart ? 31 : 0)) << x << ", " << y;
        }
    EXPECT_EQ(engine.filter.Blurs(-3), far);
}

TEST(Neighbourhood, BlursByNothingTakesEightTimesThePixelItself) {
    const PixelBuffer picture = randomBuffer(5, 5, 2);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.Blurs(0), picture);
}

TEST(Neighbourhood, BlursBeyondTheMarginReadsTheNeighbouringRowAndBlackBeyondTheBuffer) {
    // A row of two pixels and its margin is six long: five to the right of (1, 0) lies (0, 1). All
    // other places are black.
    Engine engine(greys({{0, 0}, {80, 0}, {0, 0}}));
    const PixelBuffer result = engine.filter.Blurs(5);
    EXPECT_EQ(greyLevelsOf(result), (Rows{{0, 10}, {0, 0}, {0, 0}}));
    EXPECT_EQ(greyLevelsOf(engine.filter.Blurs(1000)), (Rows{{0, 0}, {0, 0}, {0, 0}}));
}

TEST(Neighbourhood, Soften101IsTheMeanOfTheFourNeighboursWithoutTheCentre) {
    Engine engine(greys({{0, 10, 0}, {20, 250, 31}, {0, 40, 0}}));
    EXPECT_EQ(greyLevelsOf(engine.filter.SOFTEN(101)),
              (Rows{{0, 10, 0}, {20, 25, 31}, {0, 40, 0}}));
}

TEST(Neighbourhood, SoftenMixesTheCentreByItsWeightAndLeavesTheOutermostFrame) {
    Engine engine(greys({{9, 10, 9}, {20, 250, 31}, {9, 40, 9}}));
    // (11 * 250 + 101) \ 15.
    EXPECT_EQ(greyLevelsOf(engine.filter.SOFTEN(90)),
              (Rows{{9, 10, 9}, {20, 190, 31}, {9, 40, 9}}));
}

TEST(Neighbourhood, SoftenStoresTheLowEightBits) {
    Engine engine(greys({{0, 0, 0}, {0, 90, 0}, {0, 0, 0}}));
    // -90 \ 3 = -30; -2 * 90 \ 2 = -90; -5 * 90 \ -1 = 450.
    EXPECT_EQ(engine.filter.SOFTEN(102).at(1, 1), grey(226));
    EXPECT_EQ(engine.filter.SOFTEN(103).at(1, 1), grey(166));
    EXPECT_EQ(engine.filter.SOFTEN(106).at(1, 1), grey(450 - 256));
}

TEST(Neighbourhood, Soften105IsBlackInsideTheOutermostFrame) {
    const PixelBuffer picture = randomBuffer(6, 5, 3);
    Engine engine(picture);
    const PixelBuffer result = engine.filter.SOFTEN(105);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 6; ++x) {
            const Pixel& p = picture.at(x, y);
            EXPECT_EQ(result.at(x, y), onFrame(picture, x, y) ? p : (Pixel{0, 0, 0, p.fourth}));
        }
}

TEST(Neighbourhood, SharpenLeavesAUniformPicture) {
    const PixelBuffer picture = uniform(6, 5, 90);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.SHARPEN(0), picture);
}

TEST(Neighbourhood, SharpenSetsAPixelOffFromItsNeighbours) {
    Engine engine(greys({{10, 10, 10}, {10, 20, 10}, {10, 10, 30}}));
    // (24 * 20 - 2 * 100) \ 8.
    EXPECT_EQ(greyLevelsOf(engine.filter.SHARPEN(100)),
              (Rows{{10, 10, 10}, {10, 35, 10}, {10, 10, 30}}));
}

TEST(Neighbourhood, Sharpen108IsTheSumOfTheNeighbours) {
    Engine bright(greys({{10, 10, 10}, {10, 20, 10}, {10, 10, 30}}));
    EXPECT_EQ(bright.filter.SHARPEN(108).at(1, 1), grey(100));
    Engine tooBright(uniform(3, 3, 90));
    EXPECT_EQ(tooBright.filter.SHARPEN(108).at(1, 1), grey(255));
}

TEST(Neighbourhood, EdgeEnhanceReadsTheMarginsBlack) {
    Engine engine(uniform(3, 3, 60));
    // Factor 9: (18 * 60 - sum) \ 10, with three, five or eight neighbours in the picture.
    EXPECT_EQ(greyLevelsOf(engine.filter.EDGEENHANCE(9)),
              (Rows{{90, 78, 90}, {78, 60, 78}, {90, 78, 90}}));
}

TEST(Neighbourhood, EdgeEnhanceMinus1IsTheSumOfTheNeighbours) {
    Engine engine(uniform(3, 3, 20));
    EXPECT_EQ(greyLevelsOf(engine.filter.EDGEENHANCE(-1)),
              (Rows{{60, 100, 60}, {100, 160, 100}, {60, 100, 60}}));
}

TEST(Neighbourhood, ContourPaintsFlatAreasInTheBackColourUpToAFactorOf255) {
    Engine engine(uniform(5, 5, 90));
    // Red 0x11 in the low byte, green 0x22, blue 0x33.
    EXPECT_EQ(engine.filter.CONTOUR(255, 0x332211).at(2, 2), (Pixel{0x33, 0x22, 0x11, 0}));
    EXPECT_EQ(engine.filter.CONTOUR(256, 0x332211).at(2, 2), grey(255));
}

TEST(Neighbourhood, ContourKeepsEdgesInTheirOwnColour) {
    const PixelBuffer picture = drawBuffer(3, 3, [](int32_t x, int32_t y) {
        return x == 1 && y == 1 ? Pixel{100, 90, 101, 7} : Pixel{110, 100, 100, 0};
    });
    Engine engine(picture);
    // 800 - 880 + 255, 720 - 800 + 255, 808 - 800 + 255 limited: their mean is 201.
    EXPECT_EQ(engine.filter.CONTOUR(202, 0).at(1, 1), (Pixel{175, 175, 255, 7}));
    EXPECT_EQ(engine.filter.CONTOUR(201, 0).at(1, 1), (Pixel{0, 0, 0, 7}));
}

TEST(Neighbourhood, SketchIsWhiteAboveTheFactorAndBlackUpToIt) {
    Engine engine(uniform(5, 5, 90));
    EXPECT_EQ(engine.filter.SKETCH(254, true, 0).at(2, 2), grey(255));
    EXPECT_EQ(engine.filter.SKETCH(255, true, 0).at(2, 2), grey(0));
}

TEST(Neighbourhood, SketchDoesNotLimitItsLevels) {
    // Blue 8 * 100 + 255, the others 255 - 8 * 50: their mean is (1055 - 145 - 145) \ 3 = 255.
    const PixelBuffer picture = drawBuffer(3, 3, [](int32_t x, int32_t y) {
        return x == 1 && y == 1 ? Pixel{100, 0, 0, 7} : Pixel{0, 50, 50, 0};
    });
    Engine engine(picture);
    EXPECT_EQ(engine.filter.SKETCH(254, true, 0).at(1, 1), (Pixel{255, 255, 255, 7}));
    EXPECT_EQ(engine.filter.SKETCH(255, true, 0).at(1, 1), (Pixel{0, 0, 0, 7}));
}

TEST(Neighbourhood, SketchInColoursKeepsEdgesAndPaintsTheRestInTheBackColour) {
    const PixelBuffer picture = drawBuffer(5, 3, [](int32_t x, int32_t y) {
        return x == 1 && y == 1 ? Pixel{1, 2, 3, 7} : Pixel{90, 90, 90, 8};
    });
    Engine engine(picture);
    const PixelBuffer result = engine.filter.SKETCH(200, false, 0x332211);
    EXPECT_EQ(result.at(1, 1), (Pixel{1, 2, 3, 7}));
    EXPECT_EQ(result.at(2, 1), (Pixel{0x33, 0x22, 0x11, 8}));
}

TEST(Neighbourhood, EmbossAndEngraveWithoutWeightAreGrey128InTheWholeRegion) {
    Engine engine(randomBuffer(6, 5, 4));
    EXPECT_EQ(greyLevelsOf(engine.filter.EMBOSS(0)), greyLevelsOf(uniform(6, 5, 128)));
    EXPECT_EQ(greyLevelsOf(engine.filter.Engrave(0)), greyLevelsOf(uniform(6, 5, 128)));
}

TEST(Neighbourhood, EmbossAndEngraveOnAUniformPictureAreGrey128ToTheLastColumnAndRow) {
    Engine engine(uniform(6, 5, 90));
    EXPECT_EQ(greyLevelsOf(engine.filter.EMBOSS(30)), greyLevelsOf(uniform(6, 5, 128)));
    EXPECT_EQ(greyLevelsOf(engine.filter.Engrave(30)), greyLevelsOf(uniform(6, 5, 128)));
}

TEST(Neighbourhood, EmbossRaisesWhatEngraveSinks) {
    const Rows rows{{10, 0, 0}, {0, 20, 0}, {0, 0, 30}};
    Engine engine(greys(rows));
    // Differences -10, 0 and 0, -10, by a factor of 1.5; the last row repeats the one above it,
    // the last column the one to its left.
    EXPECT_EQ(greyLevelsOf(engine.filter.EMBOSS(15)),
              (Rows{{113, 128, 128}, {128, 113, 113}, {128, 113, 113}}));
    EXPECT_EQ(greyLevelsOf(engine.filter.Engrave(15)),
              (Rows{{143, 128, 128}, {128, 143, 143}, {128, 143, 143}}));
}

TEST(Neighbourhood, EmbossFoldsLevelsBelow0AndRoundsTiesToEven) {
    // -255 * 1 + 128 = -127, whose size counts; 5 * 0.5 + 128 = 130.5 and 7 * 0.5 + 128 = 131.5.
    Engine steep(greys({{0, 0}, {0, 255}}));
    EXPECT_EQ(steep.filter.EMBOSS(10).at(0, 0), grey(127));
    Engine five(greys({{5, 0}, {0, 0}}));
    EXPECT_EQ(five.filter.EMBOSS(5).at(0, 0), grey(130));
    Engine seven(greys({{7, 0}, {0, 0}}));
    EXPECT_EQ(seven.filter.EMBOSS(5).at(0, 0), grey(132));
}

TEST(Neighbourhood, EmbossTakesTheMeanOfTheChannelsBeforeItLimits) {
    const PixelBuffer picture = drawBuffer(2, 2, [](int32_t x, int32_t y) {
        return x == 0 && y == 0 ? Pixel{200, 0, 1, 5} : Pixel{};
    });
    Engine engine(picture);
    // 328, 128 and 129: 585 \ 3.
    EXPECT_EQ(engine.filter.EMBOSS(10).at(0, 0), (Pixel{195, 195, 195, 5}));
}

TEST(Neighbourhood, TheRepeatedColumnTakesTheSourceWhereItsNeighbourIsOutsideTheRegion) {
    const PixelBuffer picture = randomBuffer(4, 4, 5);
    Engine engine(picture);
    engine.keepTo({{3, 0, 4, 4}});
    const PixelBuffer column = engine.filter.EMBOSS(10);
    engine.keepTo({{0, 3, 3, 4}});
    const PixelBuffer row = engine.filter.Engrave(10);
    for (int32_t i = 0; i < 3; ++i) {
        const Pixel& left = picture.at(2, i);
        EXPECT_EQ(column.at(3, i),
                  (Pixel{left.blue, left.green, left.red, picture.at(3, i).fourth}));
        const Pixel& above = picture.at(i, 2);
        EXPECT_EQ(row.at(i, 3),
                  (Pixel{above.blue, above.green, above.red, picture.at(i, 3).fourth}));
    }
}

TEST(Neighbourhood, EmbossOfOneColumnOrRowRepeatsTheMargin) {
    for (const auto& [width, height] : {std::pair{1, 4}, std::pair{4, 1}, std::pair{1, 1}}) {
        Engine engine(uniform(width, height, 90));
        EXPECT_EQ(greyLevelsOf(engine.filter.EMBOSS(10)), greyLevelsOf(uniform(width, height, 0)))
            << width << " by " << height;
    }
}

TEST(Neighbourhood, ReliefComputesGreenRedAndTheFourthByteAndKeepsBlue) {
    const PixelBuffer picture = randomBuffer(9, 8, 6);
    Engine engine(picture);
    const PixelBuffer result = engine.filter.RELIEF();
    int fourths = 0;
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 9; ++x) {
            EXPECT_EQ(result.at(x, y).blue, picture.at(x, y).blue);
            fourths += result.at(x, y).fourth == picture.at(x, y).fourth ? 0 : 1;
        }
    EXPECT_GT(fourths, 36);
}

TEST(Neighbourhood, ReliefWeighsTheTwoDiagonalEndsTwice) {
    const Rows rows{{10, 20, 99}, {30, 41, 5}, {99, 7, 9}};
    Engine engine(drawBuffer(3, 3, [&](int32_t x, int32_t y) {
        const auto v = static_cast<uint8_t>(rows[static_cast<size_t>(y)][static_cast<size_t>(x)]);
        return Pixel{77, v, static_cast<uint8_t>(2 * v), 0};
    }));
    // 2 * 10 + 30 + 20 - 7 - 5 - 2 * 9 = 40; (41 + 40) \ 2 + 50 and (82 + 80) \ 2 + 50. The fourth
    // bytes are 0: 0 + 50.
    EXPECT_EQ(engine.filter.RELIEF().at(1, 1), (Pixel{77, 90, 131, 50}));
}

TEST(Neighbourhood, ErodeOfWhiteGivesABlackFrameAndDilateOfBlackBlack) {
    Engine white(uniform(5, 4, 255));
    const PixelBuffer eroded = white.filter.ERODE();
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 5; ++x)
            EXPECT_EQ(eroded.at(x, y), grey(onFrame(eroded, x, y) ? 0 : 255)) << x << ", " << y;
    EXPECT_EQ(white.filter.DILATE(), white.filter.Bits());
    Engine black(uniform(5, 4, 0));
    EXPECT_EQ(black.filter.DILATE(), black.filter.Bits());
}

TEST(Neighbourhood, DilateAndErodeTakeEachChannelByItself) {
    PixelBuffer picture = drawBuffer(3, 3, [](int32_t, int32_t) { return Pixel{50, 60, 70, 8}; });
    Pixel* block = picture.writableBlock();
    block[picture.offsetOfRow(0)] = {200, 1, 70, 0};
    block[picture.offsetOfRow(2) + 2] = {2, 60, 220, 255};
    Engine engine(picture);
    EXPECT_EQ(engine.filter.DILATE().at(1, 1), (Pixel{200, 60, 220, 8}));
    EXPECT_EQ(engine.filter.ERODE().at(1, 1), (Pixel{2, 1, 70, 8}));
}

TEST(Neighbourhood, TheRankFiltersTakeTheirFivePlacesAndNoOther) {
    const Rows rows{{1, 20, 250}, {30, 100, 40}, {60, 200, 3}};
    Engine engine(greys(rows));
    EXPECT_EQ(engine.filter.RankFilterN4(0).at(1, 1), grey(20));
    EXPECT_EQ(engine.filter.RankFilterN4(1).at(1, 1), grey(200));
    EXPECT_EQ(engine.filter.RankFilterND(0).at(1, 1), grey(1));
    EXPECT_EQ(engine.filter.RankFilterND(1).at(1, 1), grey(250));
}

TEST(Neighbourhood, TheSmallestOfFiveLeavesTheOutermostPixelsAndTheLargestDoesNot) {
    const PixelBuffer picture = randomBuffer(8, 7, 7);
    Engine engine(picture);
    for (const PixelBuffer& result : {engine.filter.RankFilterN4(0), engine.filter.RankFilterND(0)})
        for (int32_t y = 0; y < 7; ++y)
            for (int32_t x = 0; x < 8; ++x)
                if (onFrame(picture, x, y)) {
                    EXPECT_EQ(result.at(x, y), picture.at(x, y)) << x << ", " << y;
                }
    Engine dots(greys({{0, 9}, {0, 0}}));
    EXPECT_EQ(greyLevelsOf(dots.filter.RankFilterN4(1)), (Rows{{9, 9}, {0, 9}}));
    EXPECT_EQ(greyLevelsOf(dots.filter.RankFilterND(1)), (Rows{{0, 9}, {9, 0}}));
}

TEST(Neighbourhood, AnyOtherRankGivesBlackInTheRegion) {
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

TEST(Neighbourhood, ARankBelow0NarrowsTheScanAndOneAbove1WidensIt) {
    Engine engine(uniform(7, 7, 90));
    // Margin 3: the middle alone.
    const PixelBuffer narrow = engine.filter.RankFilterN4(-2);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(narrow.at(x, y), grey(x == 3 && y == 3 ? 0 : 90)) << x << ", " << y;
    // A border of the scan that leaves the 32-bit range wraps, and nothing lies in between.
    EXPECT_EQ(engine.filter.RankFilterN4(lowest), engine.filter.Bits());
    EXPECT_EQ(engine.filter.RankFilterN4(highest), engine.filter.Bits());

    engine.reportAlways();
    engine.reports.clear();
    engine.filter.RankFilterND(2);
    // A row more above and below, of 0 to 6.
    EXPECT_EQ(engine.reports, (Reports{-16, 0, 16, 33, 50, 66, 83, 100, 116, 100}));
}

TEST(Neighbourhood, AMarginOf1LeavesOutTheReportsOfTheFirstAndLastRow) {
    Engine engine(uniform(5, 5, 90));
    engine.reportAlways();
    engine.filter.SHARPEN(3);
    engine.filter.SOFTEN(3);
    engine.filter.RankFilterN4(0);
    EXPECT_EQ(engine.reports, (Reports{25, 50, 75, 100, 25, 50, 75, 100, 25, 50, 75, 100}));
}

TEST(Neighbourhood, DissolveLeavesAUniformPictureUpToItsCorners) {
    const PixelBuffer picture = uniform(7, 6, 90);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.Dissolve(), picture);
}

TEST(Neighbourhood, PaintingHasNoSectorForTheUpperLeftCornerOfAPicture) {
    Engine engine(uniform(7, 6, 90));
    const PixelBuffer result = engine.filter.PAINTING();
    // (0, 0) has one pixel in the first sector, three in the next two: means 10 and 30, spreads
    // 160 and 360. (1, 0): two, three, four: 20, 30, 40. (2, 0): the third has six.
    EXPECT_EQ(result.at(0, 0), grey(10));
    EXPECT_EQ(result.at(1, 0), grey(20));
    EXPECT_EQ(result.at(2, 0), grey(90));
    EXPECT_EQ(result.at(3, 3), grey(90));
}

TEST(Neighbourhood, OfSectorsWithEqualSpreadTheEarlierOneIsTaken) {
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

TEST(Neighbourhood, TheLowerRightSectorBelongsToDissolveAlone) {
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
