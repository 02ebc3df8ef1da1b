#include <cstdint>

#include <gtest/gtest.h>

#include "chain_fixture.h"

// How a picture is taken in, how a blank one is made, and with which header the preview is painted.

namespace tessarine::tests {
namespace {

class Pictures : public ChainFixture {};

TEST_F(Pictures, TakingInMakesBothBuffersOfWhatIsDrawn) {
    const Bitmap drawing(randomBuffer(31, 17, 1));
    PictureHolder holder;
    holder.setPicture(Bitmap(31, 17));
    holder.render(drawing, 0, 0, 31, 17, false);
    holder.autoRedraw = true;
    batch.SetPicture(holder);

    EXPECT_EQ(batch.workBits, drawing.pixels());
    EXPECT_EQ(batch.originalBits, batch.workBits);
    EXPECT_EQ(batch.workWidth, 31);
    EXPECT_EQ(batch.workHeight, 17);
    EXPECT_EQ(batch.workBitmapInfo, (BitmapInfo{35, 21}));
    EXPECT_EQ(batch.workRect, (Rect{0, 0, 31, 17}));
    ASSERT_NE(batch.workRegion.RegionMain(), nullptr);
    EXPECT_EQ(*batch.workRegion.RegionMain(), Region(Rect{0, 0, 31, 17}));
    EXPECT_FALSE(holder.autoRedraw);
    EXPECT_EQ(holder.drawn(), drawing);
}

TEST_F(Pictures, TakingInLeavesMarginAndFourthBytes0) {
    PictureHolder holder;
    holder.setPicture(Bitmap(31, 17));
    const PixelBuffer painted = randomBuffer(31, 17, 2);
    holder.paint(painted, {35, 21}, 31, 17);
    batch.SetPicture(holder);
    for (int32_t y = -2; y < 19; ++y)
        for (int32_t x = -2; x < 33; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < 31 && y < 17;
            const Pixel& p = painted.at(x, y);
            EXPECT_EQ(batch.workBits.at(x, y),
                      inside ? (Pixel{p.blue, p.green, p.red, 0}) : Pixel{});
        }
}

TEST_F(Pictures, TheTwoBuffersOfAPictureTakenInAreIndependent) {
    PictureHolder holder;
    holder.setPicture(Bitmap(3, 3));
    batch.SetPicture(holder);
    batch.workBits.writableBlock()[0] = {1, 2, 3, 4};
    EXPECT_EQ(batch.originalBits, PixelBuffer(3, 3));
    EXPECT_EQ(holder.drawn(), Bitmap(3, 3));
}

TEST_F(Pictures, TakingInDoesNotTouchTheFilter) {
    PictureHolder holder;
    holder.setPicture(Bitmap(3, 3));
    batch.SetPicture(holder);
    EXPECT_EQ(batch.cFilter.Bits(), sample);
}

TEST_F(Pictures, APictureWithoutPixelsGivesAMarginAndAnEmptyRegion) {
    PictureHolder nothing;
    batch.SetPicture(nothing);
    EXPECT_TRUE(batch.workBits.isDimensioned());
    EXPECT_EQ(batch.workBits, PixelBuffer(0, 0));
    EXPECT_EQ(batch.originalBits, PixelBuffer(0, 0));
    EXPECT_EQ(batch.workBitmapInfo, (BitmapInfo{4, 4}));
    EXPECT_TRUE(!batch.workRegion.RegionMain() || batch.workRegion.RegionMain()->isEmpty());
}

TEST_F(Pictures, ABlankOneIsBlackAndSizesTheSourcePicture) {
    batch.CreateBlank(40, 25);
    EXPECT_EQ(batch.workBits, PixelBuffer(40, 25));
    EXPECT_EQ(batch.workBitmapInfo, (BitmapInfo{44, 29}));
    EXPECT_EQ(batch.workRect, (Rect{0, 0, 40, 25}));
    EXPECT_EQ(batch.iSrc.width(), 40);
    EXPECT_EQ(batch.iSrc.height(), 25);
}

TEST_F(Pictures, ABlankOneLeavesTheRestToItsCaller) {
    batch.CreateBlank(40, 25);
    EXPECT_EQ(batch.originalBits, sample);
    EXPECT_EQ(batch.workWidth, 200);
    EXPECT_EQ(batch.workHeight, 174);
    EXPECT_EQ(batch.workRegion.RegionMain()->box(), (Rect{0, 0, 200, 174}));
    EXPECT_EQ(batch.cFilter.Bits(), sample);
    EXPECT_EQ(batch.iDst.width(), 200);
}

TEST_F(Pictures, ABlankOneWithoutASideLeavesEverythingAsItWas) {
    const BitmapInfo info = batch.workBitmapInfo;
    const Rect rect = batch.workRect;
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {0, 0}, {-4, 5}, {5, -4}}) {
        batch.CreateBlank(width, height);
        EXPECT_EQ(batch.workBits, sample);
        EXPECT_EQ(batch.workBitmapInfo, info);
        EXPECT_EQ(batch.workRect, rect);
        EXPECT_EQ(batch.iSrc.width(), 200);
        EXPECT_EQ(batch.iSrc.height(), 174);
    }
}

TEST_F(Pictures, ThePreviewIsPaintedWithTheHeaderThatABlankOneLeft) {
    batch.sheetReady = true;
    addRow(51);
    batch.CreateBlank(150, 60);
    batch.RebuildChain();
    ASSERT_EQ(batch.workBits, inverted(sample));

    // Rows of 154 pixels and 64 of them, read from a block with rows of 204.
    const Bitmap shown = batch.iDst.drawn();
    ASSERT_EQ(shown.width(), 200);
    ASSERT_EQ(shown.height(), 174);
    for (int32_t y = 0; y < 174; ++y)
        for (int32_t x = 0; x < 200; ++x) {
            const bool told = x + 2 < 154 && y + 2 < 64;
            const Pixel p = told ? batch.workBits.block()[(y + 2) * 154 + x + 2] : Pixel{};
            ASSERT_EQ(shown.row(y)[x], (Pixel{p.blue, p.green, p.red, 0})) << x << ", " << y;
        }

    batch.SetPicture(batch.iOri);
    batch.PreviewFunction(-1);
    EXPECT_EQ(batch.iDst.drawn().pixels(), sample);
}

}  // namespace
}  // namespace tessarine::tests
