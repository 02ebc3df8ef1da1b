#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/bit_filter.h"
#include "support/clock.h"
#include "support/pictures.h"

// What every filter goes through, seen at Invert, which lets failures reach the caller, and at
// GreyScale, which skips them.

namespace tessarine::tests {
namespace {

constexpr int32_t width = 8;
constexpr int32_t height = 5;

/// An engine over a picture 8 by 5 whose reports are kept. The clock stands until one is set.
class Frame : public testing::Test {
  protected:
    Frame() {
        filter.timeGetTime = [] { return 0U; };
        keepReports(filter, reports);
        take(randomBuffer(width, height, 1));
    }

    void take(const PixelBuffer& given) {
        picture = given;
        filter.Bits(picture);
        keepTo(wholeRegion(picture));
    }

    void keepTo(RegionHandle given) {
        region = std::move(given);
        filter.BitsRegion(region);
    }

    /// The clock gives these readings, one after the other; asking for more fails the test.
    void readingsOf(const std::vector<uint32_t>& readings) {
        pending.assign(readings.begin(), readings.end());
        filter.timeGetTime = [this] {
            if (pending.empty()) {
                ADD_FAILURE() << "the clock is read more often than told";
                return 0U;
            }
            const uint32_t now = pending.front();
            pending.pop_front();
            return now;
        };
    }

    PixelBuffer picture;
    RegionHandle region;
    cBitFilter filter;
    std::vector<int32_t> reports;
    std::deque<uint32_t> pending;
};

using Reports = std::vector<int32_t>;

TEST_F(Frame, ARegionOfTheLeftHalfLeavesTheRightHalf) {
    keepTo(regionOf({{0, 0, width / 2, height}}));
    const PixelBuffer result = filter.Invert();
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const Pixel& p = picture.at(x, y);
            const Pixel inverted{static_cast<uint8_t>(255 - p.blue),
                                 static_cast<uint8_t>(255 - p.green),
                                 static_cast<uint8_t>(255 - p.red), p.fourth};
            EXPECT_EQ(result.at(x, y), x < width / 2 ? inverted : p);
        }
}

TEST_F(Frame, TheResultHasTheSourcesMarginAndFourthBytes) {
    PixelBuffer given = randomBuffer(width, height, 2);
    Pixel* block = given.writableBlock();
    for (int32_t x = -2; x < width + 2; ++x) {
        block[given.offsetOfRow(-2) + x] = {1, 2, 3, 4};
        block[given.offsetOfRow(height + 1) + x] = {5, 6, 7, 8};
    }
    take(given);
    const PixelBuffer result = filter.GreyScale();
    for (int32_t x = -2; x < width + 2; ++x) {
        EXPECT_EQ(result.at(x, -2), (Pixel{1, 2, 3, 4}));
        EXPECT_EQ(result.at(x, height + 1), (Pixel{5, 6, 7, 8}));
    }
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            EXPECT_EQ(result.at(x, y).fourth, given.at(x, y).fourth);
}

TEST_F(Frame, TheSourceAndItsSizeStay) {
    const PixelBuffer before = filter.Bits();
    const PixelBuffer result = filter.Invert();
    EXPECT_FALSE(result == before);
    EXPECT_EQ(filter.Bits(), before);
    EXPECT_EQ(filter.BitsWidth(), width);
    EXPECT_EQ(filter.BitsHeight(), height);
}

TEST_F(Frame, ARegionOfSeveralRectanglesIsKeptPixelByPixel) {
    keepTo(regionOf({{1, 0, 3, 2}, {5, 0, 7, 2}, {2, 1, 6, 4}}));
    const PixelBuffer result = filter.Invert();
    for (int32_t y = -2; y < height + 2; ++y)
        for (int32_t x = -2; x < width + 2; ++x)
            EXPECT_EQ(result.at(x, y) == picture.at(x, y), !region->contains(x, y))
                << x << ", " << y;
}

TEST_F(Frame, ARegionBeyondTheImageReachesTheMarginAndNothingBehindIt) {
    keepTo(regionOf({{-2000000000, -2000000000, 2000000000, 2000000000}}));
    const PixelBuffer result = filter.Invert();
    EXPECT_EQ(result.at(-2, -2), (Pixel{255, 255, 255, 0}));
    EXPECT_EQ(result.at(width + 1, height + 1), (Pixel{255, 255, 255, 0}));
    EXPECT_EQ(result.at(3, 3).red, 255 - picture.at(3, 3).red);
    keepTo(regionOf({{width + 2, 0, width + 50, height}, {0, -50, width, -2}}));
    EXPECT_EQ(filter.Invert(), picture);
}

TEST_F(Frame, TheFirstRowOfANewObjectReports) {
    SteppingClock clock(1000, 0);
    clock.attachTo(filter);
    filter.Invert();
    EXPECT_EQ(reports, (Reports{0, 100}));
}

TEST_F(Frame, ARowReportsAfterMoreThan10Milliseconds) {
    // Row 0 is late and stores 100; rows 1 and 2 are 9 and 10 later, row 3 is 11 later.
    readingsOf({100, 100, 109, 110, 111, 111, 112});
    filter.Invert();
    EXPECT_EQ(reports, (Reports{0, 75, 100}));
    EXPECT_TRUE(pending.empty()) << "one reading a row, a second one with each report";
}

TEST_F(Frame, ASecondReadingOfTheClockIsWhatIsKept) {
    // The first report reads 100 and then 105: 111 is 6 later, 115 is 10 later, 116 is late.
    readingsOf({100, 105, 111, 115, 116, 116, 117});
    filter.Invert();
    EXPECT_EQ(reports, (Reports{0, 75, 100}));
    EXPECT_TRUE(pending.empty());
}

TEST_F(Frame, ThePercentageIsOfTheWholeHeight) {
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    keepTo(regionOf({{0, 2, width, 4}}));
    filter.Invert();
    // Rows 2 and 3 of 0 to 4.
    EXPECT_EQ(reports, (Reports{50, 75, 100}));
}

TEST_F(Frame, ThePercentageIsTruncatedAndNegativeAboveTheImage) {
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    take(randomBuffer(2, 4, 3));
    keepTo(regionOf({{0, -1, 2, 3}}));
    filter.Invert();
    // -100 \ 3, 0, 100 \ 3, 200 \ 3.
    EXPECT_EQ(reports, (Reports{-33, 0, 33, 66, 100}));
}

TEST_F(Frame, ASecondFilterWithin10MillisecondsReportsItsEndOnly) {
    SteppingClock clock(1000, 0);
    clock.attachTo(filter);
    filter.Invert();
    reports.clear();
    filter.GreyScale();
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Frame, TheClockMayWrap) {
    // From 4294967290 on, 5 is 11 milliseconds later.
    readingsOf({2147483647, 4294967290, 5, 5, 6, 7, 8});
    take(randomBuffer(2, 5, 4));
    filter.Invert();
    EXPECT_EQ(reports, (Reports{0, 25, 100}));
    EXPECT_TRUE(pending.empty());
}

TEST_F(Frame, ADifferenceAboveHalfTheClocksRangeCountsAsNegative) {
    SteppingClock clock(0x80000001U, 0);
    clock.attachTo(filter);
    filter.Invert();
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Frame, AnEmptyScanGivesTheCopyAndReportsItsEnd) {
    for (const RegionHandle& empty :
         {RegionHandle(), RegionHandle(std::make_shared<const Region>())}) {
        reports.clear();
        keepTo(empty);
        EXPECT_EQ(filter.Invert(), picture);
        EXPECT_EQ(reports, (Reports{100}));
    }
}

TEST_F(Frame, ARegionThatItsOwnerDroppedIsScannedNoMore) {
    EXPECT_FALSE(filter.Invert() == picture);
    region.reset();
    reports.clear();
    EXPECT_EQ(filter.Invert(), picture);
    EXPECT_EQ(filter.GreyScale(), picture);
    EXPECT_EQ(reports, (Reports{100, 100}));
}

TEST_F(Frame, AnObjectWithoutABufferGivesNoneAndReportsItsEnd) {
    cBitFilter none;
    keepReports(none, reports);
    none.BitsRegion(region);
    EXPECT_FALSE(none.Invert().isDimensioned());
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Frame, OneRowHighARaisingMemberFailsAndGivesNoResult) {
    take(randomBuffer(width, 1, 5));
    SteppingClock clock(1000, 0);
    clock.attachTo(filter);
    PixelBuffer result = randomBuffer(2, 2, 6);
    const PixelBuffer before = result;
    EXPECT_THROW(result = filter.Invert(), StatementFailed);
    EXPECT_EQ(result, before);
    EXPECT_TRUE(reports.empty());
    // The time was kept before the percentage failed: the next call is not late.
    EXPECT_NO_THROW(filter.Invert());
    EXPECT_EQ(reports, (Reports{100}));
}

TEST_F(Frame, OneRowHighASkippingMemberLeavesOutTheReport) {
    take(randomBuffer(width, 1, 5));
    SteppingClock clock(1000, 0);
    clock.attachTo(filter);
    const PixelBuffer result = filter.GreyScale();
    EXPECT_EQ(reports, (Reports{100}));
    EXPECT_EQ(result.at(width - 1, 0).blue, result.at(width - 1, 0).red);
}

TEST_F(Frame, AListenerIsGivenThePercentageByReferenceAndCannotStopTheFilter) {
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    int calls = 0;
    filter.Progress = [&](int32_t& percent) {
        ++calls;
        percent = -1;
    };
    const PixelBuffer result = filter.Invert();
    EXPECT_EQ(calls, height + 1);
    EXPECT_EQ(result.at(width - 1, height - 1).green,
              255 - picture.at(width - 1, height - 1).green);
}

TEST_F(Frame, AFilterWithoutAListenerRuns) {
    filter.Progress = nullptr;
    SteppingClock clock(100, 11);
    clock.attachTo(filter);
    EXPECT_FALSE(filter.Invert() == picture);
}

}  // namespace
}  // namespace tessarine::tests
