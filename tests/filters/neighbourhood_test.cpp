#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "filters/kernels.h"
#include "pixels/bit_filter.h"
#include "support/clock.h"
#include "support/pictures.h"

// The neighbourhood members by values worked out by hand. Pixels are written blue, green, red,
// fourth.

namespace tessarine::tests {
namespace {

using Reports = std::vector<int32_t>;

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

/// An engine over one picture, with the whole picture as its region and a clock that stands.
struct Engine {
    explicit Engine(const PixelBuffer& picture) : region(wholeRegion(picture)) {
        filter.timeGetTime = [] { return 0U; };
        filter.Bits(picture);
        filter.BitsRegion(region);
    }
    void keepTo(RegionHandle given) {
        region = std::move(given);
        filter.BitsRegion(region);
    }

    RegionHandle region;
    cBitFilter filter;
};

Pixel grey(uint8_t level, uint8_t fourth = 0) { return {level, level, level, fourth}; }

PixelBuffer uniform(int32_t width, int32_t height, uint8_t level) {
    return drawBuffer(width, height, [=](int32_t, int32_t) { return grey(level); });
}

/// A white dot in the middle of a black picture of 9 by 9.
PixelBuffer dot() {
    return drawBuffer(9, 9, [](int32_t x, int32_t y) { return grey(x == 4 && y == 4 ? 255 : 0); });
}

/// The levels of a grey picture, row by row.
using Rows = std::vector<std::vector<int>>;
PixelBuffer greys(const Rows& rows) {
    return drawBuffer(
        static_cast<int32_t>(rows.front().size()), static_cast<int32_t>(rows.size()),
        [&](int32_t x, int32_t y) {
            return grey(static_cast<uint8_t>(rows[static_cast<size_t>(y)][static_cast<size_t>(x)]));
        });
}
Rows levelsOf(const PixelBuffer& picture) {
    Rows rows;
    for (int32_t y = 0; y < picture.height(); ++y) {
        rows.emplace_back();
        for (int32_t x = 0; x < picture.width(); ++x) {
            const Pixel& p = picture.at(x, y);
            EXPECT_TRUE(p.blue == p.green && p.green == p.red) << x << ", " << y;
            rows.back().push_back(p.blue);
        }
    }
    return rows;
}

bool onFrame(const PixelBuffer& picture, int32_t x, int32_t y, int32_t width = 1) {
    return x < width || y < width || x >= picture.width() - width || y >= picture.height() - width;
}

PixelBuffer convolve(cBitFilter& filter, int32_t number, bool keepMargins) {
    const tFilterKernel k = GetFilterKernel(number);
    return filter.MaskFilter(k.mskBits, k.Weight, k.rFactor, k.gFactor, k.bFactor, keepMargins);
}

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
    EXPECT_EQ(levelsOf(convolve(engine.filter, 0, false)),
              (Rows{{40, 60, 60, 40}, {60, 90, 90, 60}, {40, 60, 60, 40}}));
}

TEST(Neighbourhood, Kernel12OnAUniformPictureIsGrey128ButWhereItReachesTheMargin) {
    Engine engine(uniform(4, 3, 90));
    EXPECT_EQ(levelsOf(convolve(engine.filter, 12, false)),
              (Rows{{128, 128, 128, 218}, {128, 128, 128, 218}, {218, 218, 218, 218}}));
}

TEST(Neighbourhood, MaskFilterReadsRowsByTheFirstIndexOfTheMask) {
    KernelMask mask(3);
    mask.at(0, 1) = 1;  // the place above
    mask.at(1, 2) = 2;  // the place to the right
    Engine engine(greys({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}));
    EXPECT_EQ(levelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false)),
              (Rows{{4, 6, 0}, {11, 14, 3}, {20, 23, 6}}));
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
    EXPECT_EQ(levelsOf(engine.filter.MaskFilter(mask, -(1 << 24), 0, 0, 0, false)),
              (Rows{{64, 0, 128}}));
    EXPECT_EQ(levelsOf(engine.filter.MaskFilter(mask, -1, 0, 0, 0, false)), (Rows{{255, 0, 0}}));
}

TEST(Neighbourhood, AMaskOfEvenSideHasItsCentreAtTheUpperLeft) {
    KernelMask mask(2);
    mask.at(1, 1) = 1;
    const Rows rows{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    Engine engine(greys(rows));
    EXPECT_EQ(levelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false)),
              (Rows{{5, 6, 0}, {8, 9, 0}, {0, 0, 0}}));
    EXPECT_EQ(levelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, true)),
              (Rows{{5, 6, 3}, {8, 9, 6}, {7, 8, 9}}));
}

TEST(Neighbourhood, AMaskLargerThanThePictureReachesBeyondTheBuffer) {
    KernelMask mask(41);
    for (int32_t row = 0; row < 41; ++row)
        for (int32_t column = 0; column < 41; ++column)
            mask.at(row, column) = row == 20 && column == 20 ? 2 : 0;
    const PixelBuffer picture = uniform(6, 5, 90);
    Engine engine(picture);
    EXPECT_EQ(levelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false)),
              levelsOf(uniform(6, 5, 180)));
    EXPECT_EQ(engine.filter.MaskFilter(mask, 1, 0, 0, 0, true), picture);
}

TEST(Neighbourhood, AWeightOf0FailsToTheCallerAtTheFirstPixel) {
    const KernelMask mask = GetFilterKernel(0).mskBits;
    Engine engine(uniform(4, 4, 90));
    Reports reports;
    keepReports(engine.filter, reports);
    EXPECT_THROW(engine.filter.MaskFilter(mask, 0, 0, 0, 0, false), StatementFailed);
    EXPECT_TRUE(reports.empty());
}

TEST(Neighbourhood, AWeightOf0DividesNothingWhereNoCentreLiesInTheRegion) {
    const KernelMask mask = GetFilterKernel(0).mskBits;
    const PixelBuffer picture = uniform(2, 2, 90);
    Engine engine(picture);
    // Two pixels a side leave no room for a window.
    EXPECT_EQ(engine.filter.MaskFilter(mask, 0, 0, 0, 0, true), picture);
    engine.keepTo(std::make_shared<const Region>());
    EXPECT_EQ(engine.filter.MaskFilter(mask, 0, 0, 0, 0, false), picture);
}

TEST(Neighbourhood, AMaskWithoutWeightsFails) {
    Engine engine(uniform(4, 4, 90));
    EXPECT_THROW(engine.filter.MaskFilter(KernelMask(), 1, 0, 0, 0, false), StatementFailed);
}

TEST(Neighbourhood, MaskFilterReportsTheRowsOfTheWindowsCorners) {
    Engine engine(uniform(5, 5, 90));
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    Reports reports;
    keepReports(engine.filter, reports);
    convolve(engine.filter, 0, false);
    EXPECT_EQ(reports, (Reports{-25, 0, 25, 50, 75, 100}));
    reports.clear();
    convolve(engine.filter, 1, false);
    EXPECT_EQ(reports, (Reports{-50, -25, 0, 25, 50, 100}));
    reports.clear();
    convolve(engine.filter, 0, true);
    EXPECT_EQ(reports, (Reports{0, 25, 50, 100}));
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
    EXPECT_EQ(levelsOf(result), (Rows{{0, 10}, {0, 0}, {0, 0}}));
    EXPECT_EQ(levelsOf(engine.filter.Blurs(1000)), (Rows{{0, 0}, {0, 0}, {0, 0}}));
}

TEST(Neighbourhood, Soften101IsTheMeanOfTheFourNeighboursWithoutTheCentre) {
    Engine engine(greys({{0, 10, 0}, {20, 250, 31}, {0, 40, 0}}));
    EXPECT_EQ(levelsOf(engine.filter.SOFTEN(101)), (Rows{{0, 10, 0}, {20, 25, 31}, {0, 40, 0}}));
}

TEST(Neighbourhood, SoftenMixesTheCentreByItsWeightAndLeavesTheOutermostFrame) {
    Engine engine(greys({{9, 10, 9}, {20, 250, 31}, {9, 40, 9}}));
    // (11 * 250 + 101) \ 15.
    EXPECT_EQ(levelsOf(engine.filter.SOFTEN(90)), (Rows{{9, 10, 9}, {20, 190, 31}, {9, 40, 9}}));
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
    EXPECT_EQ(levelsOf(engine.filter.SHARPEN(100)),
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
    EXPECT_EQ(levelsOf(engine.filter.EDGEENHANCE(9)),
              (Rows{{90, 78, 90}, {78, 60, 78}, {90, 78, 90}}));
}

TEST(Neighbourhood, EdgeEnhanceMinus1IsTheSumOfTheNeighbours) {
    Engine engine(uniform(3, 3, 20));
    EXPECT_EQ(levelsOf(engine.filter.EDGEENHANCE(-1)),
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
    EXPECT_EQ(engine.filter.SKETCH(254, true, 0).at(1, 1), grey(255, 7));
    EXPECT_EQ(engine.filter.SKETCH(255, true, 0).at(1, 1), grey(0, 7));
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
    EXPECT_EQ(levelsOf(engine.filter.EMBOSS(0)), levelsOf(uniform(6, 5, 128)));
    EXPECT_EQ(levelsOf(engine.filter.Engrave(0)), levelsOf(uniform(6, 5, 128)));
}

TEST(Neighbourhood, EmbossAndEngraveOnAUniformPictureAreGrey128ToTheLastColumnAndRow) {
    Engine engine(uniform(6, 5, 90));
    EXPECT_EQ(levelsOf(engine.filter.EMBOSS(30)), levelsOf(uniform(6, 5, 128)));
    EXPECT_EQ(levelsOf(engine.filter.Engrave(30)), levelsOf(uniform(6, 5, 128)));
}

TEST(Neighbourhood, EmbossRaisesWhatEngraveSinks) {
    const Rows rows{{10, 0, 0}, {0, 20, 0}, {0, 0, 30}};
    Engine engine(greys(rows));
    // Differences -10, 0 and 0, -10, by a factor of 1.5; the last row repeats the one above it,
    // the last column the one to its left.
    EXPECT_EQ(levelsOf(engine.filter.EMBOSS(15)),
              (Rows{{113, 128, 128}, {128, 113, 113}, {128, 113, 113}}));
    EXPECT_EQ(levelsOf(engine.filter.Engrave(15)),
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
    EXPECT_EQ(engine.filter.EMBOSS(10).at(0, 0), grey(195, 5));
}

TEST(Neighbourhood, TheRepeatedColumnTakesTheSourceWhereItsNeighbourIsOutsideTheRegion) {
    const PixelBuffer picture = randomBuffer(4, 4, 5);
    Engine engine(picture);
    engine.keepTo(regionOf({{3, 0, 4, 4}}));
    const PixelBuffer column = engine.filter.EMBOSS(10);
    engine.keepTo(regionOf({{0, 3, 3, 4}}));
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
        EXPECT_EQ(levelsOf(engine.filter.EMBOSS(10)), levelsOf(uniform(width, height, 0)))
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
    EXPECT_EQ(levelsOf(dots.filter.RankFilterN4(1)), (Rows{{9, 9}, {0, 9}}));
    EXPECT_EQ(levelsOf(dots.filter.RankFilterND(1)), (Rows{{0, 9}, {9, 0}}));
}

TEST(Neighbourhood, AnyOtherRankGivesBlackInTheRegion) {
    const PixelBuffer picture = randomBuffer(6, 6, 8);
    Engine engine(picture);
    engine.keepTo(regionOf({{1, 1, 4, 3}, {2, 3, 6, 5}}));
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

    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    Reports reports;
    keepReports(engine.filter, reports);
    engine.filter.RankFilterND(2);
    // A row more above and below, of 0 to 6.
    EXPECT_EQ(reports, (Reports{-16, 0, 16, 33, 50, 66, 83, 100, 116, 100}));
}

TEST(Neighbourhood, AMarginOf1LeavesOutTheReportsOfTheFirstAndLastRow) {
    Engine engine(uniform(5, 5, 90));
    SteppingClock clock(100, 11);
    clock.attachTo(engine.filter);
    Reports reports;
    keepReports(engine.filter, reports);
    engine.filter.SHARPEN(3);
    engine.filter.SOFTEN(3);
    engine.filter.RankFilterN4(0);
    EXPECT_EQ(reports, (Reports{25, 50, 75, 100, 25, 50, 75, 100, 25, 50, 75, 100}));
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

/// All members of the family with plain arguments.
struct NamedCall {
    const char* name;
    bool skips;  ///< runs in skipping mode
    PixelBuffer (*call)(cBitFilter&);
};

const NamedCall allMembers[] = {
    {"MaskFilter", false, [](cBitFilter& f) { return convolve(f, 4, false); }},
    {"MaskFilter of 5", false, [](cBitFilter& f) { return convolve(f, 1, false); }},
    {"MaskFilter of several factors", false,
     [](cBitFilter& f) { return f.MaskFilter(GetFilterKernel(4).mskBits, 7, 1, 2, 3, false); }},
    {"Blurs", false, [](cBitFilter& f) { return f.Blurs(1); }},
    {"SOFTEN", true, [](cBitFilter& f) { return f.SOFTEN(50); }},
    {"SHARPEN", true, [](cBitFilter& f) { return f.SHARPEN(50); }},
    {"EDGEENHANCE", true, [](cBitFilter& f) { return f.EDGEENHANCE(5); }},
    {"CONTOUR", false, [](cBitFilter& f) { return f.CONTOUR(200, 255); }},
    {"SKETCH", true, [](cBitFilter& f) { return f.SKETCH(200, true, 255); }},
    {"EMBOSS", true, [](cBitFilter& f) { return f.EMBOSS(20); }},
    {"Engrave", true, [](cBitFilter& f) { return f.Engrave(20); }},
    {"RELIEF", true, [](cBitFilter& f) { return f.RELIEF(); }},
    {"DILATE", true, [](cBitFilter& f) { return f.DILATE(); }},
    {"ERODE", true, [](cBitFilter& f) { return f.ERODE(); }},
    {"RankFilterN4", false, [](cBitFilter& f) { return f.RankFilterN4(1); }},
    {"RankFilterND", false, [](cBitFilter& f) { return f.RankFilterND(1); }},
    {"PAINTING", true, [](cBitFilter& f) { return f.PAINTING(); }},
    {"Dissolve", true, [](cBitFilter& f) { return f.Dissolve(); }},
};

TEST(Neighbourhood, AReportOfAPictureOneRowHighIsSkippedOrFailsAsTheMemberDoes) {
    const PixelBuffer picture = randomBuffer(9, 1, 9);
    for (const NamedCall& member : allMembers) {
        Engine late(picture);
        SteppingClock clock(100, 11);
        clock.attachTo(late.filter);
        Engine quiet(picture);
        const PixelBuffer expected = member.call(quiet.filter);
        Reports reports;
        keepReports(late.filter, reports);
        if (member.skips) {
            EXPECT_EQ(member.call(late.filter), expected) << member.name;
            EXPECT_EQ(reports, (Reports{100})) << member.name;
        } else {
            EXPECT_THROW(member.call(late.filter), StatementFailed) << member.name;
            EXPECT_TRUE(reports.empty()) << member.name;
        }
    }
}

TEST(Neighbourhood,
     EveryMemberKeepsSourceMarginAndWhatLiesOutsideTheRegionAndAllButReliefTheFourthByte) {
    // Fourth bytes and a margin of their own, and a region of two parts.
    PixelBuffer picture = randomBuffer(20, 12, 10);
    Pixel* block = picture.writableBlock();
    for (size_t i = 0; i < picture.pixelCount(); ++i)
        if (block[i] == Pixel{}) block[i] = {11, 22, 33, 44};
    const RegionHandle region = regionOf({{0, 0, 10, 5}, {5, 5, 15, 9}});
    for (const NamedCall& member : allMembers) {
        Engine engine(picture);
        engine.keepTo(region);
        const PixelBuffer result = member.call(engine.filter);
        const bool relief = std::string(member.name) == "RELIEF";
        int changed = 0;
        for (int32_t y = -2; y < 14; ++y)
            for (int32_t x = -2; x < 22; ++x) {
                const Pixel& before = picture.at(x, y);
                const Pixel& after = result.at(x, y);
                if (!relief) {
                    EXPECT_EQ(after.fourth, before.fourth) << member.name;
                }
                if (!region->contains(x, y)) {
                    EXPECT_EQ(after, before) << member.name << " at " << x << ", " << y;
                }
                changed += after == before ? 0 : 1;
            }
        EXPECT_GT(changed, 0) << member.name;
        EXPECT_EQ(engine.filter.Bits(), picture) << member.name;
    }
}

TEST(Neighbourhood, EveryMemberReadsTheSourceAndNotWhatItHasWritten) {
    // A region pixel by pixel gives what the whole region gives, but for the repeated lines.
    const PixelBuffer picture = randomBuffer(6, 5, 11);
    for (const NamedCall& member : allMembers) {
        const std::string name = member.name;
        if (name == "SOFTEN" || name == "SHARPEN") continue;  // a pixel less their margin is none
        Engine whole(picture);
        const PixelBuffer expected = member.call(whole.filter);
        for (int32_t y = 0; y < 4; ++y)
            for (int32_t x = 0; x < 5; ++x) {
                Engine one(picture);
                one.keepTo(regionOf({{x, y, x + 1, y + 1}}));
                EXPECT_EQ(member.call(one.filter).at(x, y), expected.at(x, y))
                    << name << " at " << x << ", " << y;
            }
    }
}

TEST(Neighbourhood, EveryMemberOnAnEmptyRegionGivesTheSourceAndReportsItsEnd) {
    const PixelBuffer picture = randomBuffer(20, 12, 12);
    for (const NamedCall& member : allMembers) {
        Engine engine(picture);
        engine.keepTo(std::make_shared<const Region>());
        SteppingClock clock(100, 11);
        clock.attachTo(engine.filter);
        Reports reports;
        keepReports(engine.filter, reports);
        EXPECT_EQ(member.call(engine.filter), picture) << member.name;
        EXPECT_EQ(reports, (Reports{100})) << member.name;
    }
}

TEST(Neighbourhood, EveryMemberOfAnObjectWithoutABufferGivesNone) {
    const auto region = std::make_shared<const Region>(Rect{0, 0, 5, 5});
    for (const NamedCall& member : allMembers) {
        cBitFilter none;
        none.BitsRegion(region);
        EXPECT_FALSE(member.call(none).isDimensioned()) << member.name;
    }
}

TEST(Neighbourhood, NoRegionAndNoArgumentLeadsOutOfTheBuffer) {
    const PixelBuffer picture = randomBuffer(7, 6, 13);
    Engine engine(picture);
    engine.keepTo(regionOf({{lowest, lowest, highest, highest}}));
    cBitFilter& f = engine.filter;
    const std::vector<PixelBuffer> inMargin = {f.EMBOSS(10), f.DILATE(), f.Dissolve()};
    for (const PixelBuffer& result : inMargin)
        EXPECT_EQ(result.width(), 7);
    for (const int32_t wild : {lowest, lowest + 1, -1, 0, 1, highest - 1, highest}) {
        EXPECT_EQ(f.Blurs(wild).height(), 6);
        EXPECT_EQ(f.SOFTEN(wild).height(), 6);
        EXPECT_EQ(f.SHARPEN(wild).height(), 6);
        EXPECT_EQ(f.EDGEENHANCE(wild).height(), 6);
        EXPECT_EQ(f.CONTOUR(wild, wild).height(), 6);
        EXPECT_EQ(f.SKETCH(wild, false, wild).height(), 6);
        EXPECT_EQ(f.EMBOSS(wild).height(), 6);
        EXPECT_EQ(f.Engrave(wild).height(), 6);
        EXPECT_EQ(f.RankFilterN4(wild).height(), 6);
        EXPECT_EQ(f.RankFilterND(wild).height(), 6);
        if (wild == 0) continue;
        for (const bool keep : {false, true})
            EXPECT_EQ(
                f.MaskFilter(GetFilterKernel(1).mskBits, wild, wild, wild, wild, keep).height(), 6);
    }
}

}  // namespace
}  // namespace tessarine::tests
