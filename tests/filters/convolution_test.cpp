#include <cstdint>

#include <gtest/gtest.h>

#include "neighbourhood_pictures.h"

// MaskFilter by values worked out by hand.

namespace tessarine::tests {
namespace {

TEST(Convolution, Kernel0OnAUniformPictureKeepsTheInsideAndTheOutermostFrame) {
    const PixelBuffer picture = uniform(7, 5, 90);
    Engine engine(picture);
    EXPECT_EQ(convolve(engine.filter, 0, true), picture);
}

TEST(Convolution, MaskFilterKeepingMarginsLeavesTheOuterFrameOfHalfTheMask) {
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

TEST(Convolution, Kernel0OverTheMarginDarkensTheOutermostFrame) {
    Engine engine(uniform(4, 3, 90));
    // Six of nine places along an edge, four in a corner.
    EXPECT_EQ(greyLevelsOf(convolve(engine.filter, 0, false)),
              (Rows{{40, 60, 60, 40}, {60, 90, 90, 60}, {40, 60, 60, 40}}));
}

TEST(Convolution, Kernel12OnAUniformPictureIsGrey128ButWhereItReachesTheMargin) {
    Engine engine(uniform(4, 3, 90));
    EXPECT_EQ(greyLevelsOf(convolve(engine.filter, 12, false)),
              (Rows{{128, 128, 128, 218}, {128, 128, 128, 218}, {218, 218, 218, 218}}));
}

TEST(Convolution, MaskFilterReadsRowsByTheFirstIndexOfTheMask) {
    KernelMask mask(3);
    mask.at(0, 1) = 1;  // the place above
    mask.at(1, 2) = 2;  // the place to the right
    Engine engine(greys({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}));
    EXPECT_EQ(greyLevelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false)),
              (Rows{{4, 6, 0}, {11, 14, 3}, {20, 23, 6}}));
}

TEST(Convolution, MaskFilterTruncatesTheQuotientAddsEachChannelsFactorAndLimits) {
    KernelMask mask(1);
    mask.at(0, 0) = -3;
    Engine engine(drawBuffer(1, 1, [](int32_t, int32_t) { return Pixel{5, 5, 100, 9}; }));
    // -15 \ 2 = -7.
    EXPECT_EQ(engine.filter.MaskFilter(mask, 2, 500, 20, 7, false).at(0, 0),
              (Pixel{0, 13, 255, 9}));
    EXPECT_EQ(engine.filter.MaskFilter(mask, 2, -1, 8, 6, false).at(0, 0), (Pixel{0, 1, 0, 9}));
}

TEST(Convolution, MaskFilterSumsIn32Bits) {
    KernelMask mask(1);
    mask.at(0, 0) = 1 << 30;
    Engine engine(greys({{3, 4, 6}}));
    // 3 * 2^30 wraps to -2^30, 4 * 2^30 to 0 and 6 * 2^30 to -2^31, which by -1 wraps once more.
    EXPECT_EQ(greyLevelsOf(engine.filter.MaskFilter(mask, -(1 << 24), 0, 0, 0, false)),
              (Rows{{64, 0, 128}}));
    EXPECT_EQ(greyLevelsOf(engine.filter.MaskFilter(mask, -1, 0, 0, 0, false)),
              (Rows{{255, 0, 0}}));
}

TEST(Convolution, AMaskOfEvenSideHasItsCentreAtTheUpperLeft) {
    KernelMask mask(2);
    mask.at(1, 1) = 1;
    const Rows rows{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    Engine engine(greys(rows));
    EXPECT_EQ(greyLevelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false)),
              (Rows{{5, 6, 0}, {8, 9, 0}, {0, 0, 0}}));
    EXPECT_EQ(greyLevelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, true)),
              (Rows{{5, 6, 3}, {8, 9, 6}, {7, 8, 9}}));
}

TEST(Convolution, AMaskLargerThanThePictureReachesBeyondTheBuffer) {
    KernelMask mask(41);
    for (int32_t row = 0; row < 41; ++row)
        for (int32_t column = 0; column < 41; ++column)
            mask.at(row, column) = row == 20 && column == 20 ? 2 : 0;
    const PixelBuffer picture = uniform(6, 5, 90);
    Engine engine(picture);
    EXPECT_EQ(greyLevelsOf(engine.filter.MaskFilter(mask, 1, 0, 0, 0, false)),
              greyLevelsOf(uniform(6, 5, 180)));
    EXPECT_EQ(engine.filter.MaskFilter(mask, 1, 0, 0, 0, true), picture);
}

TEST(Convolution, AWeightOf0FailsToTheCallerAtTheFirstPixel) {
    const KernelMask mask = GetFilterKernel(0).mskBits;
    Engine engine(uniform(4, 4, 90));
    EXPECT_THROW(engine.filter.MaskFilter(mask, 0, 0, 0, 0, false), StatementFailed);
    EXPECT_TRUE(engine.reports.empty());
}

TEST(Convolution, AWeightOf0DividesNothingWhereNoCentreLiesInTheRegion) {
    const KernelMask mask = GetFilterKernel(0).mskBits;
    const PixelBuffer picture = uniform(2, 2, 90);
    Engine engine(picture);
    // Two pixels a side leave no room for a window.
    EXPECT_EQ(engine.filter.MaskFilter(mask, 0, 0, 0, 0, true), picture);
    engine.keepTo({});
    EXPECT_EQ(engine.filter.MaskFilter(mask, 0, 0, 0, 0, false), picture);
}

TEST(Convolution, AMaskWithoutWeightsFails) {
    Engine engine(uniform(4, 4, 90));
    EXPECT_THROW(engine.filter.MaskFilter(KernelMask(), 1, 0, 0, 0, false), StatementFailed);
}

TEST(Convolution, MaskFilterReportsTheRowsOfTheWindowsCorners) {
    Engine engine(uniform(5, 5, 90));
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

}  // namespace
}  // namespace tessarine::tests
