#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "geometry_fixture.h"

// The members that reshape the image, by values worked out by hand. Pixels are written blue,
// green, red, fourth.

namespace tessarine::tests::geometry {
namespace {

// ---- BitsBlack ----

TEST_F(Geometry, BlackClearsAllFourChannelsOfTheRegionsPixels) {
    const PixelBuffer picture = withMargin(6, 5, 1);
    take(picture);
    keepTo(regionOf({{1, 0, 3, 2}, {2, 1, 6, 7}}));
    filter.BitsBlack();
    for (int32_t y = -2; y < 7; ++y)
        for (int32_t x = -2; x < 8; ++x)
            EXPECT_EQ(filter.Bits().at(x, y), region->contains(x, y) ? Pixel{} : picture.at(x, y))
                << x << ", " << y;
    expectSize(6, 5);
}

TEST_F(Geometry, BlackRaisesNoProgress) {
    take(randomBuffer(6, 5, 1));
    reportEachRow();
    filter.BitsBlack();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(clock.readings(), 0);
}

TEST_F(Geometry, BlackOfARegionBeyondTheImageStopsAtTheMargin) {
    const PixelBuffer picture = withMargin(3, 2, 1);
    take(picture);
    keepTo(regionOf({{lowest, lowest, highest, highest}}));
    filter.BitsBlack();
    EXPECT_EQ(filter.Bits(), PixelBuffer(3, 2));
}

TEST_F(Geometry, BlackWithoutRegionOrImageChangesNothing) {
    const PixelBuffer picture = randomBuffer(3, 2, 1);
    take(picture);
    filter.BitsRegion(nullptr);
    filter.BitsBlack();
    EXPECT_EQ(filter.Bits(), picture);

    cBitFilter none;
    none.BitsRegion(region);
    none.BitsBlack();
    EXPECT_FALSE(none.Bits().isDimensioned());
}

TEST_F(Geometry, BlackLeavesACopyOfTheImageAlone) {
    const PixelBuffer picture = randomBuffer(3, 2, 1);
    take(picture);
    const PixelBuffer copy = filter.Bits();
    filter.BitsBlack();
    EXPECT_EQ(copy, picture);
}

// ---- BitsCrop ----

TEST_F(Geometry, ACropWhollyOutsideTheImageGivesNoWidthAndNoHeight) {
    for (const Rect& r : {Rect{6, 0, 9, 4},
                          {0, 5, 6, 9},
                          {-5, -5, 0, 5},
                          {3, 3, 3, 4},
                          {4, 0, 2, 4},
                          {lowest, lowest, -1, -1},
                          {highest, highest, lowest, lowest}}) {
        take(randomBuffer(6, 5, 1));
        filter.BitsCrop(filter.Bits(), r.left, r.top, r.right, r.bottom);
        expectSize(0, 0);
    }
}

TEST_F(Geometry, ACropBeyondTheImageKeepsTheOverlap) {
    const PixelBuffer picture = withMargin(6, 5, 1);
    take(picture);
    filter.BitsCrop(picture, 4, -3, highest, 2);
    expectSize(2, 2);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 2; ++x)
            EXPECT_EQ(filter.Bits().at(x, y), picture.at(x + 4, y)) << "fourth channel included";
    EXPECT_TRUE(marginIsBlack(filter.Bits())) << "the margin is no part of what is copied";
}

TEST_F(Geometry, ACropTakesAllFourChannelsFromItsSource) {
    const PixelBuffer source = randomBuffer(6, 5, 2);
    take(randomBuffer(6, 5, 1));
    filter.BitsCrop(source, 1, 2, 5, 4);
    expectSize(4, 2);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 4; ++x)
            EXPECT_EQ(filter.Bits().at(x, y), source.at(x + 1, y + 2));
}

TEST_F(Geometry, ACropIsLimitedByTheImageAndNotByItsSource) {
    const PixelBuffer source = randomBuffer(20, 20, 2);
    take(randomBuffer(6, 5, 1));
    filter.BitsCrop(source, 4, 0, 20, 20);
    expectSize(2, 5);
    EXPECT_EQ(filter.Bits().at(1, 4), source.at(5, 4));
}

TEST_F(Geometry, ACropOfASmallerSourceCountsOnAlongItsBlockAndIsBlackBeyond) {
    // Rows of 6 pixels: (4, 0) is the first one of row 1, margin included, and so (-2, 1).
    const PixelBuffer source = withMargin(2, 2, 3);
    take(randomBuffer(8, 6, 1));
    filter.BitsCrop(source, 0, 0, 8, 6);
    expectSize(8, 6);
    EXPECT_EQ(filter.Bits().at(1, 0), source.at(1, 0));
    EXPECT_EQ(filter.Bits().at(4, 0), source.at(-2, 1));
    EXPECT_EQ(filter.Bits().at(7, 0), source.at(1, 1));
    EXPECT_EQ(filter.Bits().at(3, 3), source.at(3, 3));
    EXPECT_EQ(filter.Bits().at(4, 3), Pixel{});
    EXPECT_EQ(filter.Bits().at(0, 4), Pixel{});
}

TEST_F(Geometry, ACropReportsItsEndOnly) {
    take(randomBuffer(6, 5, 1));
    reportEachRow();
    filter.BitsCrop(filter.Bits(), 0, 0, 6, 5);
    EXPECT_EQ(reports, (Reports{100}));
    EXPECT_EQ(clock.readings(), 0);
    take(randomBuffer(6, 1, 1));
    filter.BitsCrop(filter.Bits(), 0, 0, 6, 1);
    EXPECT_EQ(reports, (Reports{100, 100})) << "one row high it does not fail either";
}

TEST_F(Geometry, ACropKeepsTheRegionWhereItWas) {
    take(greys(4, {1, 2, 3, 4}));
    keepTo(regionOf({{2, 0, 3, 1}}));
    filter.BitsCrop(filter.Bits(), 1, 0, 4, 1);
    filter.BitsBlack();
    EXPECT_EQ(levelsOf(filter.Bits()), (Levels{2, 3, 0}));
}

TEST_F(Geometry, EveryOtherReshapingKeepsTheRegionWhereItWas) {
    // What BitsBlack then clears is the pixel of the old coordinates, (2, 0).
    using Reshape = void (*)(cBitFilter&, const PixelBuffer&);
    const PixelBuffer picture = greys(4, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    const std::vector<std::pair<Reshape, Levels>> reshapings{
        {[](cBitFilter& f, const PixelBuffer& p) { f.BitsResize(p, 3, 1); }, {1, 2, 0}},
        {[](cBitFilter& f, const PixelBuffer& p) { f.BitsResample(p, 3, 1); }, {1, 2, 0}},
        {[](cBitFilter& f, const PixelBuffer& p) { f.BitsRotate90(p); },
         {4, 8, 0, 3, 7, 11, 2, 6, 10, 1, 5, 9}},
    };
    for (const auto& [reshape, expected] : reshapings) {
        take(picture);
        keepTo(regionOf({{2, 0, 3, 1}}));
        reshape(filter, picture);
        const Levels reshaped = levelsOf(filter.Bits());
        EXPECT_NE(reshaped[2], 0);
        filter.BitsBlack();
        EXPECT_EQ(levelsOf(filter.Bits()), expected);
    }
    // A masked crop takes the region's pixel along, to (1, 0), and (2, 0) is cleared.
    take(picture);
    keepTo(regionOf({{2, 0, 3, 1}}));
    filter.BitsCropMasked(picture, 1, 0, 4, 1);
    EXPECT_EQ(filter.Bits().at(2, 0), (Pixel{0, 0, 0, 255}));
    filter.BitsBlack();
    EXPECT_EQ(filter.Bits().at(0, 0), (Pixel{0, 0, 0, 255}));
    EXPECT_EQ(filter.Bits().at(1, 0), (Pixel{3, 3, 3, 0}));
    EXPECT_EQ(filter.Bits().at(2, 0), Pixel{});
}

TEST_F(Geometry, WithoutAnImageNothingIsLeftToCrop) {
    filter.BitsCrop(randomBuffer(6, 5, 1), 0, 0, 6, 5);
    expectSize(0, 0);
}

// ---- BitsCropMasked ----

TEST_F(Geometry, AMaskedCropMarksWhatLiesOutsideTheRegion) {
    const PixelBuffer picture = randomBuffer(6, 5, 1);
    take(picture);
    keepTo(regionOf({{0, 0, 2, 2}, {3, 1, 9, 9}}));
    filter.BitsCropMasked(picture, 1, -1, 20, 4);
    expectSize(5, 4);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 5; ++x)
            EXPECT_EQ(filter.Bits().at(x, y),
                      region->contains(x + 1, y) ? picture.at(x + 1, y) : (Pixel{0, 0, 0, 255}))
                << x << ", " << y;
    EXPECT_TRUE(marginIsBlack(filter.Bits()));
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Geometry, AMaskedCropReportsItsEndOnly) {
    take(randomBuffer(6, 5, 1));
    reportEachRow();
    filter.BitsCropMasked(filter.Bits(), 0, 0, 6, 5);
    EXPECT_EQ(reports, (Reports{100}));
    EXPECT_EQ(clock.readings(), 0);
    take(randomBuffer(6, 1, 1));
    filter.BitsCropMasked(filter.Bits(), 0, 0, 6, 1);
    EXPECT_EQ(reports, (Reports{100, 100})) << "one row high it does not fail either";
}

TEST_F(Geometry, AMaskedCropIsLimitedByItsSourceAndNotByTheImage) {
    const PixelBuffer source = randomBuffer(9, 8, 2);
    take(randomBuffer(3, 2, 1));
    keepTo(wholeRegion(source));
    filter.BitsCropMasked(source, 0, 0, 100, 100);
    EXPECT_EQ(filter.Bits(), source);
    expectSize(9, 8);
}

TEST_F(Geometry, AMaskedCropWithoutARegionIsMaskOnly) {
    take(randomBuffer(2, 2, 1));
    filter.BitsRegion(nullptr);
    filter.BitsCropMasked(filter.Bits(), 0, 0, 2, 2);
    EXPECT_EQ(filter.Bits(), drawBuffer(2, 2, [](int32_t, int32_t) {
                  return Pixel{0, 0, 0, 255};
              }));
}

TEST_F(Geometry, AMaskedCropWhollyOutsideGivesNoWidthAndNoHeight) {
    take(randomBuffer(6, 5, 1));
    filter.BitsCropMasked(filter.Bits(), 6, 0, 9, 9);
    expectSize(0, 0);
}

// ---- BitsResample ----

TEST_F(Geometry, ResamplingARampToItsOwnSizeBlendsByFourFifthsOfAStep) {
    take(greys(5, {0, 10, 20, 30, 40}));
    filter.BitsResample(filter.Bits(), 5, 1);
    // Scale 4 / 5: places 0, 0.8, 1.6, 2.4, 3.2.
    EXPECT_EQ(levelsOf(filter.Bits()), (Levels{0, 8, 16, 24, 32}));
    expectSize(5, 1);
}

TEST_F(Geometry, ResamplingRoundsTheColumnsBeforeItBlendsThem) {
    // At (1, 1) both shares are a half: left 0.5 goes to 0, right is 1, and 0.5 goes to 0 again.
    // In one go it would be 0.75 and so 1.
    take(greys(2, {0, 1, 1, 1}));
    filter.BitsResample(filter.Bits(), 2, 2);
    EXPECT_EQ(levelsOf(filter.Bits()).back(), 0);
    // Left 1.5 goes to 2, right is 2: ties go to the even number.
    take(greys(2, {1, 2, 2, 2}));
    filter.BitsResample(filter.Bits(), 2, 2);
    EXPECT_EQ(levelsOf(filter.Bits()).back(), 2);
}

TEST_F(Geometry, ResamplingGoesByTheSizeLessOne) {
    // 3 by 3 to 4 by 1: scale 2 / 4 across and 2 / 1 down; places 0, 0.5, 1, 1.5.
    take(greys(3, {0, 100, 200, 9, 9, 9, 9, 9, 9}));
    filter.BitsResample(filter.Bits(), 4, 1);
    EXPECT_EQ(levelsOf(filter.Bits()), (Levels{0, 50, 100, 150}));
    // Upwards from one pixel the scale is 0.
    take(greys(1, {77}));
    filter.BitsResample(filter.Bits(), 3, 2);
    EXPECT_EQ(levelsOf(filter.Bits()), Levels(6, 77));
}

TEST_F(Geometry, ResizedPicturesHaveNoFourthChannelAndABlackMargin) {
    const PixelBuffer picture = withMargin(5, 4, 1);
    take(picture);
    filter.BitsResample(picture, 7, 6);
    EXPECT_EQ(filter.Bits(), withoutFourth(filter.Bits()));
    EXPECT_TRUE(marginIsBlack(filter.Bits()));
    filter.BitsResize(picture, 7, 6);
    EXPECT_EQ(filter.Bits(), withoutFourth(filter.Bits()));
    EXPECT_TRUE(marginIsBlack(filter.Bits()));
}

TEST_F(Geometry, TheChannelsAreResizedEachByItself) {
    const PixelBuffer picture = randomBuffer(9, 7, 1);
    for (uint8_t Pixel::*channel : {&Pixel::blue, &Pixel::green, &Pixel::red}) {
        take(picture);
        filter.BitsResample(picture, 13, 5);
        const PixelBuffer resampled = filter.Bits();
        filter.BitsResize(picture, 13, 5);
        const PixelBuffer resized = filter.Bits();
        filter.BitsResample(without(picture, channel), 13, 5);
        EXPECT_EQ(filter.Bits(), without(resampled, channel));
        filter.BitsResize(without(picture, channel), 13, 5);
        EXPECT_EQ(filter.Bits(), without(resized, channel));
    }
}

TEST_F(Geometry, ResamplingReportsAgainstTheNewHeight) {
    take(randomBuffer(3, 9, 1));
    reportEachRow();
    filter.BitsResample(filter.Bits(), 3, 5);
    EXPECT_EQ(reports, (Reports{0, 25, 50, 75, 100, 100}));
    EXPECT_EQ(clock.readings(), 10);
}

TEST_F(Geometry, ResamplingToOneRowFailsWhereAReportIsDue) {
    take(greys(2, {10, 20, 30, 40}));
    reportEachRow();
    EXPECT_THROW(filter.BitsResample(filter.Bits(), 2, 1), StatementFailed);
    EXPECT_TRUE(reports.empty());
    expectSize(2, 1);
    EXPECT_EQ(levelsOf(filter.Bits()), (Levels{10, 15})) << "the row itself was done";
}

TEST_F(Geometry, ResamplingToNoWidthOrHeightFailsAndLeavesTheAskedBounds) {
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {0, 0}}) {
        take(randomBuffer(3, 2, 1));
        EXPECT_THROW(filter.BitsResample(filter.Bits(), width, height), StatementFailed);
        expectSize(width, height);
        EXPECT_EQ(filter.Bits(), PixelBuffer(width, height));
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Geometry, SizesThatCannotBeHadLeaveTheImage) {
    const PixelBuffer picture = randomBuffer(3, 2, 1);
    take(picture);
    for (const auto& [width, height] :
         {std::pair{-1, 5}, {5, -1}, {lowest, lowest}, {highest, highest}, {0, lowest}}) {
        EXPECT_THROW(filter.BitsResample(filter.Bits(), width, height), StatementFailed);
        EXPECT_NO_THROW(filter.BitsResize(filter.Bits(), width, height));
        EXPECT_EQ(filter.Bits(), picture);
        expectSize(3, 2);
    }
    EXPECT_EQ(reports, Reports(5, 100)) << "the skipping member comes to its end";
}

TEST_F(Geometry, AnEmptyPictureIsResizedToBlack) {
    for (const PixelBuffer& empty : {PixelBuffer(0, 0), PixelBuffer(0, 7), PixelBuffer(7, 0)}) {
        take(empty);
        filter.BitsResample(empty, 4, 3);
        EXPECT_EQ(filter.Bits(), PixelBuffer(4, 3));
        filter.BitsResize(empty, 5, 2);
        EXPECT_EQ(filter.Bits(), PixelBuffer(5, 2));
    }
}

// ---- BitsResize ----

TEST_F(Geometry, ResizingToTwiceTheSizeRepeatsEachPixelTwiceInEachDirection) {
    const PixelBuffer picture = randomBuffer(4, 4, 1);
    take(picture);
    filter.BitsResize(picture, 8, 8);
    expectSize(8, 8);
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 8; ++x) {
            const Pixel& p = picture.at(x / 2, y / 2);
            EXPECT_EQ(filter.Bits().at(x, y), (Pixel{p.blue, p.green, p.red, 0}));
        }
}

TEST_F(Geometry, ResizingGoesByTheWholeSizeAndTheFloor) {
    // 5 to 3: scale 5 / 3, places 0, 1.67, 3.33.
    take(greys(5, {0, 10, 20, 30, 40}));
    filter.BitsResize(filter.Bits(), 3, 1);
    EXPECT_EQ(levelsOf(filter.Bits()), (Levels{0, 10, 30}));
}

TEST_F(Geometry, ResizingToItsOwnSizeGivesThePictureWithoutItsFourthChannel) {
    const PixelBuffer picture = randomBuffer(61, 43, 1);
    take(picture);
    filter.BitsResize(picture, 61, 43);
    EXPECT_EQ(filter.Bits(), withoutFourth(picture));
}

TEST_F(Geometry, ResizingToNoWidthOrHeightLeavesTheAskedBoundsAndGoesOn) {
    reportEachRow();
    take(randomBuffer(3, 2, 1));
    filter.BitsResize(filter.Bits(), 0, 3);
    expectSize(0, 3);
    EXPECT_EQ(reports, (Reports{0, 50, 100, 100}));
    reports.clear();
    take(randomBuffer(3, 2, 1));
    filter.BitsResize(filter.Bits(), 3, 0);
    expectSize(3, 0);
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Geometry, ResizingReportsAgainstTheNewHeightAndLeavesOutWhatFails) {
    take(randomBuffer(3, 9, 1));
    reportEachRow();
    filter.BitsResize(filter.Bits(), 3, 5);
    EXPECT_EQ(reports, (Reports{0, 25, 50, 75, 100, 100}));
    reports.clear();
    filter.BitsResize(filter.Bits(), 4, 1);
    EXPECT_EQ(reports, (Reports{100}));
    expectSize(4, 1);
}

// ---- BitsRotate90 ----

TEST_F(Geometry, AQuarterTurnBringsTheTopRightCornerToTheTopLeft) {
    take(greys(3, {1, 2, 3, 4, 5, 6}));
    filter.BitsRotate90(filter.Bits());
    expectSize(2, 3);
    EXPECT_EQ(levelsOf(filter.Bits()), (Levels{3, 6, 2, 5, 1, 4}));
}

TEST_F(Geometry, FourQuarterTurnsGiveThePictureWithoutItsFourthChannel) {
    for (const auto& [width, height] :
         {std::pair{37, 21}, {1, 9}, {9, 1}, {8, 16}, {0, 4}, {4, 0}}) {
        const PixelBuffer picture = randomBuffer(width, height, 1);
        take(picture);
        for (int i = 0; i < 4; ++i)
            filter.BitsRotate90(filter.Bits());
        EXPECT_EQ(filter.Bits(), withoutFourth(picture)) << width << " by " << height;
    }
}

TEST_F(Geometry, AQuarterTurnTakesNeitherMarginNorFourthChannelAlong) {
    const PixelBuffer picture = withMargin(5, 4, 1);
    take(picture);
    filter.BitsRotate90(picture);
    EXPECT_EQ(filter.Bits(), withoutFourth(filter.Bits()));
    EXPECT_TRUE(marginIsBlack(filter.Bits()));
}

TEST_F(Geometry, AQuarterTurnReportsAgainstTheOldHeight) {
    take(randomBuffer(20, 11, 1));
    reportEachRow();
    filter.BitsRotate90(filter.Bits());
    EXPECT_EQ(reports, (Reports{0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 100}));
}

TEST_F(Geometry, AQuarterTurnOfOneRowFailsWhereAReportIsDue) {
    take(randomBuffer(20, 1, 1));
    EXPECT_NO_THROW(filter.BitsRotate90(filter.Bits()));
    take(randomBuffer(20, 1, 1));
    reportEachRow();
    reports.clear();
    EXPECT_THROW(filter.BitsRotate90(filter.Bits()), StatementFailed);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Geometry, AQuarterTurnOfASourceOfAnotherSizeTurnsAsMuchAsTheImageHas) {
    const PixelBuffer larger = randomBuffer(30, 40, 2);
    take(PixelBuffer(3, 2));
    filter.BitsRotate90(larger);
    expectSize(2, 3);
    EXPECT_EQ(filter.Bits().at(0, 0).red, larger.at(2, 0).red);
    EXPECT_EQ(filter.Bits().at(1, 2).red, larger.at(0, 1).red);

    // Beyond a smaller one it counts on along the block: (4, 0) is (-2, 1), and then comes black.
    const PixelBuffer smaller = withMargin(2, 2, 3);
    take(PixelBuffer(9, 8));
    filter.BitsRotate90(smaller);
    expectSize(8, 9);
    EXPECT_EQ(filter.Bits().at(0, 9 - 1 - 4).red, smaller.at(-2, 1).red);
    EXPECT_EQ(filter.Bits().at(7, 0), Pixel{});
}

TEST_F(Geometry, ASourceWithoutDimensionsFailsAndLeavesTheImage) {
    const PixelBuffer picture = randomBuffer(3, 2, 1);
    const PixelBuffer none;
    take(picture);
    EXPECT_THROW(filter.BitsCrop(none, 0, 0, 3, 2), StatementFailed);
    EXPECT_THROW(filter.BitsCropMasked(none, 0, 0, 3, 2), StatementFailed);
    EXPECT_THROW(filter.BitsResample(none, 3, 2), StatementFailed);
    EXPECT_THROW(filter.BitsRotate90(none), StatementFailed);
    EXPECT_EQ(filter.Bits(), picture);
    EXPECT_TRUE(reports.empty());
    filter.BitsResize(none, 4, 3);
    EXPECT_EQ(filter.Bits(), PixelBuffer(4, 3));
    EXPECT_EQ(reports, (Reports{100}));
}

// ---- Flip ----

TEST_F(Geometry, AFlipWithoutADirectionGivesTheImageUnchangedAndReports) {
    const PixelBuffer picture = withMargin(4, 3, 1);
    take(picture);
    reportEachRow();
    EXPECT_EQ(filter.Flip(false, false), picture);
    EXPECT_EQ(reports, (Reports{0, 50, 100, 100}));
}

TEST_F(Geometry, AFlipMirrorsColumnsOrRowsOrBoth) {
    const PixelBuffer picture = greys(3, {1, 2, 3, 4, 5, 6});
    take(picture);
    EXPECT_EQ(levelsOf(filter.Flip(true, false)), (Levels{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(levelsOf(filter.Flip(false, true)), (Levels{4, 5, 6, 1, 2, 3}));
    EXPECT_EQ(levelsOf(filter.Flip(true, true)), (Levels{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(filter.Bits(), picture);
    expectSize(3, 2);
}

TEST_F(Geometry, AFlipLeavesTheFourthChannelAndTheMarginWhereTheyAre) {
    const PixelBuffer picture = withMargin(5, 4, 1);
    take(picture);
    const PixelBuffer result = filter.Flip(true, true);
    for (int32_t y = -2; y < 6; ++y)
        for (int32_t x = -2; x < 7; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < 5 && y < 4;
            Pixel expected = inside ? picture.at(4 - x, 3 - y) : picture.at(x, y);
            expected.fourth = picture.at(x, y).fourth;
            EXPECT_EQ(result.at(x, y), expected) << x << ", " << y;
        }
}

TEST_F(Geometry, AFlipTakesTheWholeImageWhateverTheRegion) {
    const PixelBuffer picture = randomBuffer(7, 6, 1);
    take(picture);
    const PixelBuffer whole = filter.Flip(true, false);
    EXPECT_FALSE(whole == picture);
    keepTo(regionOf({{2, 2, 3, 3}}));
    EXPECT_EQ(filter.Flip(true, false), whole);
    filter.BitsRegion(nullptr);
    EXPECT_EQ(filter.Flip(true, false), whole);
}

TEST_F(Geometry, AFlipOfOneRowLeavesOutTheReport) {
    take(greys(3, {1, 2, 3}));
    reportEachRow();
    EXPECT_EQ(levelsOf(filter.Flip(true, true)), (Levels{3, 2, 1}));
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Geometry, AFlipOfNothingGivesNothing) {
    EXPECT_FALSE(filter.Flip(true, true).isDimensioned());
    EXPECT_EQ(reports, (Reports{100}));
    EXPECT_THROW(filter.Bits(PixelBuffer()), StatementFailed);
    EXPECT_FALSE(filter.Flip(true, true).isDimensioned());
    for (const PixelBuffer& empty : {PixelBuffer(0, 0), PixelBuffer(0, 7), PixelBuffer(7, 0)}) {
        take(empty);
        EXPECT_EQ(filter.Flip(true, true), empty);
    }
}

}  // namespace
}  // namespace tessarine::tests::geometry
