#include "pixels/bit_filter.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "support/clock.h"
#include "support/pictures.h"

// The engine's own members. What all filters have in common is tested with them.

namespace tessarine::tests {
namespace {

TEST(BitFilter, WithoutABufferHasBounds0) {
    // The upper bounds are 0, not -1: the size of an object without a picture reads 1 by 1.
    const cBitFilter filter;
    EXPECT_FALSE(filter.Bits().isDimensioned());
    EXPECT_EQ(filter.BitsWidth(), 1);
    EXPECT_EQ(filter.BitsHeight(), 1);
}

TEST(BitFilter, TakesItsSizeFromTheBuffer) {
    cBitFilter filter;
    filter.Bits(PixelBuffer(130, 18));
    EXPECT_EQ(filter.BitsWidth(), 130);
    EXPECT_EQ(filter.BitsHeight(), 18);
    filter.Bits(PixelBuffer(0, 5));
    EXPECT_EQ(filter.BitsWidth(), 0);
    EXPECT_EQ(filter.BitsHeight(), 5);
}

TEST(BitFilter, BitsGiveAndTakeCopiesMarginIncluded) {
    PixelBuffer given = randomBuffer(4, 3, 1);
    given.writableBlock()[0] = {1, 2, 3, 4};
    const PixelBuffer kept = given;
    cBitFilter filter;
    filter.Bits(given);
    given.writableBlock()[1] = {9, 9, 9, 9};
    EXPECT_EQ(filter.Bits(), kept);

    PixelBuffer taken = filter.Bits();
    taken.writableBlock()[2] = {8, 8, 8, 8};
    EXPECT_EQ(filter.Bits(), kept);
}

TEST(BitFilter, ABufferWithoutDimensionsIsTakenButLeavesTheSize) {
    cBitFilter filter;
    filter.Bits(PixelBuffer(4, 3));
    EXPECT_THROW(filter.Bits(PixelBuffer()), StatementFailed);
    EXPECT_FALSE(filter.Bits().isDimensioned());
    EXPECT_EQ(filter.BitsWidth(), 4);
    EXPECT_EQ(filter.BitsHeight(), 3);
}

TEST(BitFilter, WritingBitsKeepsTheRegion) {
    const RegionHandle region = regionOf({{1, 0, 2, 1}});
    cBitFilter filter;
    filter.Bits(PixelBuffer(2, 1));
    filter.BitsRegion(region);
    filter.Bits(PixelBuffer(3, 2));
    const PixelBuffer result = filter.NewDoc(3, 2, 1);
    EXPECT_EQ(result.at(0, 0), Pixel());
    EXPECT_EQ(result.at(1, 0), (Pixel{1, 2, 3, 0}));
    EXPECT_EQ(result.at(2, 0), Pixel());
    EXPECT_EQ(result.at(1, 1), Pixel());
}

TEST(BitFilter, WritingBitsKeepsTheTimeOfTheLastReport) {
    const PixelBuffer picture(2, 2);
    const RegionHandle region = wholeRegion(picture);
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(region);
    SteppingClock clock(100, 1);
    clock.attachTo(filter);
    // Row 0 reads 100 and, being late, 101; row 1 reads 102.
    filter.NewDoc(1, 2, 3);
    EXPECT_EQ(clock.readings(), 3);
    filter.Bits(picture);
    // 103 and 104 are not late: one reading a row.
    filter.NewDoc(1, 2, 3);
    EXPECT_EQ(clock.readings(), 5);
}

TEST(BitFilter, BrightnessStatisticsCoverTheWholeImageAndNothingElse) {
    // (1 + 2 + 5) \ 3 = 2, (100 + 101 + 101) \ 3 = 100, (255 + 255 + 254) \ 3 = 254; the mean of
    // 2, 100, 254 and 0 is 356 \ 4 = 89. A white margin and a region count for nothing.
    PixelBuffer picture(2, 2);
    Pixel* block = picture.writableBlock();
    std::fill_n(block, picture.pixelCount(), Pixel{255, 255, 255, 255});
    block[picture.offsetOfRow(0)] = {1, 2, 5, 200};
    block[picture.offsetOfRow(0) + 1] = {100, 101, 101, 200};
    block[picture.offsetOfRow(1)] = {255, 255, 254, 200};
    block[picture.offsetOfRow(1) + 1] = {0, 0, 0, 200};
    const RegionHandle region = regionOf({{0, 0, 1, 1}});
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(region);
    EXPECT_EQ(filter.GetLMax(), 254);
    EXPECT_EQ(filter.GetLMin(), 0);
    EXPECT_EQ(filter.GetLMed(), 89);
}

TEST(BitFilter, LowestBrightnessIsNot0WherePicturesAreBright) {
    cBitFilter filter;
    filter.Bits(drawBuffer(3, 1, [](int32_t x, int32_t) {
        const auto level = static_cast<uint8_t>(40 + x);
        return Pixel{level, level, level, 0};
    }));
    EXPECT_EQ(filter.GetLMin(), 40);
    EXPECT_EQ(filter.GetLMax(), 42);
    EXPECT_EQ(filter.GetLMed(), 41);
}

TEST(BitFilter, StatisticsOfAnEmptyImage) {
    for (const PixelBuffer& empty : {PixelBuffer(0, 0), PixelBuffer(0, 4), PixelBuffer(4, 0)}) {
        cBitFilter filter;
        filter.Bits(empty);
        EXPECT_EQ(filter.GetLMax(), 0);
        EXPECT_EQ(filter.GetLMin(), 255);
        EXPECT_THROW(filter.GetLMed(), StatementFailed);
    }
    const cBitFilter none;
    EXPECT_EQ(none.GetLMax(), 0);
    EXPECT_EQ(none.GetLMin(), 255);
    EXPECT_THROW(none.GetLMed(), StatementFailed);
}

TEST(BitFilter, NewDocFillsTheBoxOfARegionCornersIncluded) {
    const PixelBuffer picture = randomBuffer(6, 5, 2);
    // An L turned over: its box is (1, 1) to (4, 4).
    const RegionHandle region = regionOf({{1, 1, 4, 2}, {1, 2, 2, 4}});
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(region);
    const PixelBuffer result = filter.NewDoc(30, 20, 10);
    for (int32_t y = -2; y < 7; ++y)
        for (int32_t x = -2; x < 8; ++x) {
            const Pixel& before = picture.at(x, y);
            const bool inBox = x >= 1 && x < 4 && y >= 1 && y < 4;
            EXPECT_EQ(result.at(x, y), inBox ? (Pixel{10, 20, 30, before.fourth}) : before)
                << x << ", " << y;
        }
    EXPECT_EQ(filter.Bits(), picture);
}

TEST(BitFilter, NewDocOfARegionBeyondTheBufferStopsAtTheMargin) {
    const PixelBuffer picture(3, 2);
    const RegionHandle region = regionOf({{-2000000000, -2000000000, 2000000000, 2000000000}});
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(region);
    const PixelBuffer result = filter.NewDoc(30, 20, 10);
    for (size_t i = 0; i < result.pixelCount(); ++i)
        EXPECT_EQ(result.block()[i], (Pixel{10, 20, 30, 0}));
}

TEST(BitFilter, NewDocRaisesNoProgressButRefreshesTheTimeOfTheLastReport) {
    const PixelBuffer picture(3, 3);
    const RegionHandle region = wholeRegion(picture);
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(region);
    std::vector<int32_t> reports;
    keepReports(filter, reports);
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    filter.NewDoc(1, 2, 3);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(clock.readings(), 6) << "each row is late and reads the clock twice";
}

TEST(BitFilter, NewDocOfAPictureOneRowHighNeedsNoPercentage) {
    const PixelBuffer picture(3, 1);
    const RegionHandle region = wholeRegion(picture);
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(region);
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    EXPECT_EQ(filter.NewDoc(3, 2, 1).at(2, 0), (Pixel{1, 2, 3, 0}));
}

TEST(BitFilter, NewDocWithoutRegionOrBufferChangesNothing) {
    const PixelBuffer picture = randomBuffer(3, 3, 3);
    cBitFilter filter;
    EXPECT_FALSE(filter.NewDoc(1, 2, 3).isDimensioned());
    filter.Bits(picture);
    EXPECT_EQ(filter.NewDoc(1, 2, 3), picture);
    filter.BitsRegion(std::make_shared<const Region>(Rect{0, 0, 3, 3}));
    EXPECT_EQ(filter.NewDoc(1, 2, 3), picture) << "its owner has let go of the region";
}

TEST(BitFilter, AnglesGoOnceAroundWithARoundedPi) {
    EXPECT_EQ(cBitFilter::GetAngle(1, 0), 0.0F);
    EXPECT_EQ(cBitFilter::GetAngle(-1, 0), 3.141592F);
    EXPECT_EQ(cBitFilter::GetAngle(0, 1), 3.141592F / 2);
    EXPECT_EQ(cBitFilter::GetAngle(0, 0), -3.141592F / 2);
    EXPECT_EQ(cBitFilter::GetAngle(0, -7), -3.141592F / 2);
    EXPECT_FLOAT_EQ(cBitFilter::GetAngle(3, 3), 0.78539816F);
    EXPECT_FLOAT_EQ(cBitFilter::GetAngle(-3, 3), 2.3561938F);
    EXPECT_FLOAT_EQ(cBitFilter::GetAngle(-3, -3), 3.9269902F);
}

TEST(BitFilter, ABufferIsPreparedWithItsMarginAndDescribedTopDown) {
    BitmapHeader header;
    PixelBuffer buffer;
    cBitFilter::PrepareBitmap(header, buffer, 10, 20);
    EXPECT_EQ(buffer, PixelBuffer(10, 20));
    EXPECT_EQ(header.size, 40);
    EXPECT_EQ(header.width, 14);
    EXPECT_EQ(header.height, -24);
    EXPECT_EQ(header.planes, 1);
    EXPECT_EQ(header.bitCount, 32);
}

TEST(BitFilter, TheSystemClockNeverRunsBackwards) {
    const uint32_t first = systemClock();
    const uint32_t second = systemClock();
    EXPECT_LT(second - first, 60000U);
}

TEST(BitFilter, TheSystemClockCountsFromItsFirstReadingOn) {
    // However long the machine has been up, a new engine's first row is late.
    EXPECT_GT(systemClock(), 10U);
    EXPECT_LT(systemClock(), 24U * 60 * 60 * 1000);
    cBitFilter filter;
    std::vector<int32_t> reports;
    keepReports(filter, reports);
    const PixelBuffer picture = randomBuffer(2, 2, 1);
    const RegionHandle whole = wholeRegion(picture);
    filter.Bits(picture);
    filter.BitsRegion(whole);
    filter.Flip(true, false);
    EXPECT_EQ(reports.at(0), 0);
}

TEST(BitFilter, ANewDocReadsTheClockForEachRowOfTheBox) {
    const PixelBuffer picture = randomBuffer(6, 5, 1);
    const RegionHandle beside = regionOf({{100, 0, 110, 5}});
    cBitFilter filter;
    filter.Bits(picture);
    filter.BitsRegion(beside);
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    EXPECT_EQ(filter.NewDoc(1, 2, 3), picture);
    EXPECT_EQ(clock.readings(), 10) << "two a row, since each is late";
}

}  // namespace
}  // namespace tessarine::tests
