#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "filters/kernels.h"
#include "neighbourhood_pictures.h"
#include "pixels/bit_filter.h"
#include "support/comparison.h"
#include "support/engine.h"

// Convolution and stencils by values worked out by hand. Pixels are written blue, green, red,
// fourth.

namespace tessarine::tests {
namespace {

using Reports = std::vector<int32_t>;
using Rows = std::vector<std::vector<uint8_t>>;

TEST(Neighbourhood, Kernel0OnAUniformPictureKeepsTheInsideAndTheOutermostFrame) {
    const PixelBuffer picture = uniform(7, 5, 90);
    Engine engine(picture);
    EXPECT_EQ(convolve(engine.filter, 0, true), picture);
}

TEST(Neighbourhood, MaskFilterKeepingMarginsLeavesTheOuterFrameOfHalfTheMask) {
    const PixelBuffer picture = randomBuffer(9, 8, 1);
    Engine engine(picture);
    for (const int32_t number : {0, 1}) {
        const int32_t h = number == 0 ? 1 : 2;
        const PixelBuffer result = convolve(engine.filter, number, true);
        for (int32_t y = 0; y < 8; ++y)
            for (int32_t x = 0; x < 9; ++x)
                EXPECT_EQ(result.at(x, y) == picture.at(x, y), onFrame(picture, x, y, h))
                    << "kernel " << number << " at " << x << ", " << y;
    }
}

TEST(Neighbourhood, Kernel0OverTheMarginDarkensTheOutermostFrame) {
    Engine engine(uniform(4, 3, 90));
    // Six of nine places along an edge, four in a corner.
    EXPECT_TRUE(sameBuffer("neighbourhood", convolve(engine.filter, 0, false),
                           greys({{40, 60, 60, 40}, {60, 90, 90, 60}, {40, 60, 60, 40}})));
}

TEST(Neighbourhood, Kernel12OnAUniformPictureIsGrey128ButWhereItReachesTheMargin) {
    Engine engine(uniform(4, 3, 90));
    EXPECT_TRUE(
        sameBuffer("neighbourhood", convolve(engine.filter, 12, false),
                   greys({{128, 128, 128, 218}, {128, 128, 128, 218}, {218, 218, 218, 218}})));
}

TEST(Neighbourhood, MaskFilterReadsRowsByTheFirstIndexOfTheMask) {
    KernelMask mask(3);
    mask.at(0, 1) = 1;  // the place above
    mask.at(1, 2) = 2;  // the place to the right
    Engine engine(greys({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.MaskFilter(mask, 1, 0, 0, 0, false),
                           greys({{4, 6, 0}, {11, 14, 3}, {20, 23, 6}})));
}

TEST(Neighbourhood, MaskFilterTruncatesTheQuotientAddsEachChannelsFactorAndLimits) {
    KernelMask mask(1);
    mask.at(0, 0) = -3;
    Engine engine(drawBuffer(1, 1, [](int32_t, int32_t) { return Pixel{5, 5, 100, 9}; }));
    // -15 \ 2 = -7.
    EXPECT_EQ(engine.filter.MaskFilter(mask, 2, 500, 20, 7, false).at(0, 0),
              (Pixel{0, 13, 255, 9}));
    EXPECT_EQ(engine.filter.MaskFilter(mask, 2, -1, 8, 6, false).at(0, 0), (Pixel{0, 1, 0, 9}));
}

TEST(Neighbourhood, MaskFilterSumsIn32Bits) {
    KernelMask mask(1);
    mask.at(0, 0) = 1 << 30;
    Engine engine(greys({{3, 4, 6}}));
    // 3 * 2^30 wraps to -2^30, 4 * 2^30 to 0 and 6 * 2^30 to -2^31, which by -1 wraps once more.
    EXPECT_TRUE(sameBuffer("neighbourhood",
                           engine.filter.MaskFilter(mask, -(1 << 24), 0, 0, 0, false),
                           greys({{64, 0, 128}})));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.MaskFilter(mask, -1, 0, 0, 0, false),
                           greys({{255, 0, 0}})));
}

TEST(Neighbourhood, AMaskOfEvenSideHasItsCentreAtTheUpperLeft) {
    KernelMask mask(2);
    mask.at(1, 1) = 1;
    const Rows rows{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    Engine engine(greys(rows));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.MaskFilter(mask, 1, 0, 0, 0, false),
                           greys({{5, 6, 0}, {8, 9, 0}, {0, 0, 0}})));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.MaskFilter(mask, 1, 0, 0, 0, true),
                           greys({{5, 6, 3}, {8, 9, 6}, {7, 8, 9}})));
}

TEST(Neighbourhood, AMaskLargerThanThePictureReachesBeyondTheBuffer) {
    KernelMask mask(41);
    for (int32_t row = 0; row < 41; ++row)
        for (int32_t column = 0; column < 41; ++column)
            mask.at(row, column) = row == 20 && column == 20 ? 2 : 0;
    const PixelBuffer picture = uniform(6, 5, 90);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false), uniform(6, 5, 180));
    EXPECT_EQ(engine.filter.MaskFilter(mask, 1, 0, 0, 0, true), picture);
}

TEST(Neighbourhood, AWeightOf0FailsToTheCallerAtTheFirstPixel) {
    const KernelMask mask = GetFilterKernel(0).mskBits;
    Engine engine(uniform(4, 4, 90));
    EXPECT_THROW(engine.filter.MaskFilter(mask, 0, 0, 0, 0, false), StatementFailed);
    EXPECT_TRUE(engine.reports.empty());
}

TEST(Neighbourhood, AWeightOf0DividesNothingWhereNoCentreLiesInTheRegion) {
    const KernelMask mask = GetFilterKernel(0).mskBits;
    const PixelBuffer picture = uniform(2, 2, 90);
    Engine engine(picture);
    // Two pixels a side leave no room for a window.
    EXPECT_EQ(engine.filter.MaskFilter(mask, 0, 0, 0, 0, true), picture);
    engine.keepTo({});
    EXPECT_EQ(engine.filter.MaskFilter(mask, 0, 0, 0, 0, false), picture);
}

TEST(Neighbourhood, AMaskWithoutWeightsFails) {
    Engine engine(uniform(4, 4, 90));
    EXPECT_THROW(engine.filter.MaskFilter(KernelMask(), 1, 0, 0, 0, false), StatementFailed);
}

TEST(Neighbourhood, AMaskOfThousandsASideIsRefused) {
    const PixelBuffer picture = uniform(3, 2, 90);
    Engine engine(picture);
    // Below the limit and without a centre that keeps within the picture.
    EXPECT_EQ(engine.filter.MaskFilter(KernelMask(1024), 1, 0, 0, 0, true), picture);
    for (const int32_t side : {1025, 5000})
        EXPECT_THROW(engine.filter.MaskFilter(KernelMask(side), 1, 0, 0, 0, true), StatementFailed);
}

TEST(Neighbourhood, AMaskOfTheLargestSideIsSummedUp) {
    KernelMask mask(1024);
    mask.at(511, 511) = 1;
    mask.at(511, 512) = 1;
    Engine engine(greys({{10, 20}}));
    EXPECT_TRUE(sameBuffer("largest mask", engine.filter.MaskFilter(mask, 1, 0, 0, 0, false),
                           greys({{30, 20}})));
}

TEST(Neighbourhood, MaskFilterReportsTheRowsOfTheWindowsCorners) {
    Engine engine(uniform(5, 5, 90));
    engine.reports.clear();
    engine.reportAlways();
    convolve(engine.filter, 0, false);
    EXPECT_EQ(engine.reports, (Reports{-25, 0, 25, 50, 75, 100}));
    engine.reports.clear();
    convolve(engine.filter, 1, false);
    EXPECT_EQ(engine.reports, (Reports{-50, -25, 0, 25, 50, 100}));
    engine.reports.clear();
    convolve(engine.filter, 0, true);
    EXPECT_EQ(engine.reports, (Reports{0, 25, 50, 100}));
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
    EXPECT_TRUE(sameBuffer("Blurs", result, greys({{0, 10}, {0, 0}, {0, 0}})));
    EXPECT_TRUE(
        sameBuffer("neighbourhood", engine.filter.Blurs(1000), greys({{0, 0}, {0, 0}, {0, 0}})));
}

TEST(Neighbourhood, Soften101IsTheMeanOfTheFourNeighboursWithoutTheCentre) {
    Engine engine(greys({{0, 10, 0}, {20, 250, 31}, {0, 40, 0}}));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.SOFTEN(101),
                           greys({{0, 10, 0}, {20, 25, 31}, {0, 40, 0}})));
}

TEST(Neighbourhood, SoftenMixesTheCentreByItsWeightAndLeavesTheOutermostFrame) {
    Engine engine(greys({{9, 10, 9}, {20, 250, 31}, {9, 40, 9}}));
    // (11 * 250 + 101) \ 15.
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.SOFTEN(90),
                           greys({{9, 10, 9}, {20, 190, 31}, {9, 40, 9}})));
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
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.SHARPEN(100),
                           greys({{10, 10, 10}, {10, 35, 10}, {10, 10, 30}})));
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
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.EDGEENHANCE(9),
                           greys({{90, 78, 90}, {78, 60, 78}, {90, 78, 90}})));
}

TEST(Neighbourhood, EdgeEnhanceMinus1IsTheSumOfTheNeighbours) {
    Engine engine(uniform(3, 3, 20));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.EDGEENHANCE(-1),
                           greys({{60, 100, 60}, {100, 160, 100}, {60, 100, 60}})));
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
    EXPECT_TRUE(samePicture("EMBOSS", engine.filter.EMBOSS(0), uniform(6, 5, 128)));
    EXPECT_TRUE(samePicture("Engrave", engine.filter.Engrave(0), uniform(6, 5, 128)));
}

TEST(Neighbourhood, EmbossAndEngraveOnAUniformPictureAreGrey128ToTheLastColumnAndRow) {
    Engine engine(uniform(6, 5, 90));
    EXPECT_EQ(engine.filter.EMBOSS(30), uniform(6, 5, 128));
    EXPECT_EQ(engine.filter.Engrave(30), uniform(6, 5, 128));
}

TEST(Neighbourhood, EmbossRaisesWhatEngraveSinks) {
    const Rows rows{{10, 0, 0}, {0, 20, 0}, {0, 0, 30}};
    Engine engine(greys(rows));
    // Differences -10, 0 and 0, -10, by a factor of 1.5; the last row repeats the one above it,
    // the last column the one to its left.
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.EMBOSS(15),
                           greys({{113, 128, 128}, {128, 113, 113}, {128, 113, 113}})));
    EXPECT_TRUE(sameBuffer("neighbourhood", engine.filter.Engrave(15),
                           greys({{143, 128, 128}, {128, 143, 143}, {128, 143, 143}})));
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

TEST(Neighbourhood, EmbossAndEngraveTakeTheirFactorAsASingle) {
    // The single of 0.1 is a little above it: 5 * 0.1 + 128 rounds up, where 128.5 would go to the
    // even 128.
    Engine falling(greys({{5, 0}, {0, 0}}));
    EXPECT_EQ(falling.filter.EMBOSS(1).at(0, 0), grey(129));
    Engine rising(greys({{0, 0}, {0, 5}}));
    EXPECT_EQ(rising.filter.Engrave(1).at(0, 0), grey(129));
}

TEST(Neighbourhood, TheBottomRightCornerRepeatsItsLeftAndNotWhatIsAbove) {
    Engine engine(greys({{0, 0, 0}, {0, 20, 0}, {0, 77, 30}}));
    // All but (1, 2), which keeps its 77. Above the corner stands the 113 of (1, 1).
    engine.keepTo({{0, 0, 3, 2}, {0, 2, 1, 3}, {2, 2, 3, 3}});
    for (const PixelBuffer& result : {engine.filter.EMBOSS(15), engine.filter.Engrave(-15)}) {
        EXPECT_EQ(result.at(1, 2), grey(77));
        EXPECT_EQ(result.at(2, 1), grey(113));
        EXPECT_EQ(result.at(2, 2), grey(77));
    }
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
        EXPECT_EQ(engine.filter.EMBOSS(10), uniform(width, height, 0)) << width << " by " << height;
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

}  // namespace
}  // namespace tessarine::tests
