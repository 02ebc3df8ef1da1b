#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "chain_fixture.h"

// Rows that change the picture's size, and the preview of the turning one.

namespace tessarine::tests {
namespace {

constexpr int16_t resize = 59;
constexpr int16_t rotate = 70;

class SizeRow : public ChainFixture {
  protected:
    /// Takes a picture in as a run does.
    void take(const PixelBuffer& picture) {
        batch.iSrc.setPicture(Bitmap(picture));
        batch.SetPicture(batch.iSrc);
        batch.cFilter.Bits(batch.workBits);
        batch.cFilter.BitsRegion(batch.workRegion.RegionMain());
    }
    void apply(int16_t id, std::initializer_list<std::string> columns) {
        addRow(id, columns);
        batch.ApplyRow(id, static_cast<int16_t>(batch.Ltray.size()), true);
    }
    void applyResize(const std::string& width, const std::string& height, bool smooth,
                     bool keepProportions) {
        apply(resize,
              {width, height, smooth ? "1" : "0", "0", "0", keepProportions ? "True" : "False"});
    }
    void applyRotate(bool smooth, const std::string& storedDegrees = "0") {
        apply(rotate, {storedDegrees, "0", "0", "0", "0", smooth ? "True" : "False"});
    }
    /// Image, result, source picture and everything that follows its size.
    void expectSize(int32_t width, int32_t height) const {
        EXPECT_EQ(batch.workBits.width(), width);
        EXPECT_EQ(batch.workBits.height(), height);
        EXPECT_EQ(batch.cFilter.Bits(), batch.workBits);
        EXPECT_EQ(batch.cFilter.BitsWidth(), width);
        EXPECT_EQ(batch.cFilter.BitsHeight(), height);
        EXPECT_EQ(batch.iSrc.width(), width);
        EXPECT_EQ(batch.iSrc.height(), height);
        EXPECT_EQ(batch.workBitmapInfo, (BitmapInfo{width + 4, height + 4}));
        EXPECT_EQ(batch.workRect, (Rect{0, 0, width, height}));
        ASSERT_NE(batch.workRegion.RegionMain(), nullptr);
        EXPECT_EQ(*batch.workRegion.RegionMain(), Region(Rect{0, 0, width, height}));
    }
};

PixelBuffer opaque(int32_t width, int32_t height, uint32_t seed) {
    return Bitmap(randomBuffer(width, height, seed)).pixels();
}

// ---- Resize ----

TEST_F(SizeRow, WithProportionsKeptTheHeightFollowsWhateverTheSecondColumnSays) {
    for (const bool smooth : {false, true})
        for (const char* height : {"150", "7", "0", "-300", "nonsense"}) {
            take(opaque(400, 300, 1));
            applyResize("200", height, smooth, true);
            expectSize(200, 150);
        }
}

TEST_F(SizeRow, WithoutProportionsBothColumnsCount) {
    take(opaque(40, 30, 1));
    applyResize("25", "70", false, false);
    expectSize(25, 70);
}

TEST_F(SizeRow, TheKeptHeightIsRoundedHalvesToEven) {
    // The width is divided first, and the quotient of doubles decides: 25 / 6 * 15 is a little
    // above 62.5, and 55 / 6 * 27 a little below 247.5.
    for (const auto& [width, height, asked, result] : {std::tuple{8, 3, "4", 2},
                                                       {8, 5, "4", 2},
                                                       {8, 7, "4", 4},
                                                       {3, 100, "2", 67},
                                                       {6, 15, "25", 63},
                                                       {6, 27, "55", 247}}) {
        take(opaque(width, height, 1));
        applyResize(asked, "1", false, true);
        expectSize(std::stoi(asked), result);
    }
}

TEST_F(SizeRow, TheThirdNumberChoosesBetweenSmoothedAndNearest) {
    const PixelBuffer picture = opaque(40, 30, 1);
    const auto expected = [&](auto member) {
        cBitFilter filter;
        filter.Bits(picture);
        (filter.*member)(picture, 57, 21);
        return filter.Bits();
    };
    const PixelBuffer nearest = expected(&cBitFilter::BitsResize);
    const PixelBuffer smoothed = expected(&cBitFilter::BitsResample);
    EXPECT_FALSE(nearest == smoothed);
    for (const char* number : {"0", "1", "2", "-1"}) {
        take(picture);
        apply(resize, {"57", "21", number, "0", "0", "False"});
        expectResult(number == std::string("1") ? smoothed : nearest);
    }
}

TEST_F(SizeRow, WhatFollowsAResizeCoversTheWholeNewPicture) {
    take(opaque(10, 8, 1));
    applyResize("30", "20", true, false);
    const PixelBuffer resized = batch.workBits;
    apply(51, {});
    expectResult(inverted(resized));
    expectSize(30, 20);
}

TEST_F(SizeRow, ASecondResizeGoesByTheSizeThatTheFirstOneGave) {
    take(opaque(40, 30, 1));
    applyResize("10", "20", false, false);
    applyResize("40", "0", true, true);
    expectSize(40, 80);
}

TEST_F(SizeRow, AResizeWorksOnTheLatestResult) {
    const PixelBuffer latest = opaque(4, 4, 2);
    take(opaque(4, 4, 1));
    batch.workBits = latest;
    applyResize("4", "4", false, false);
    expectResult(latest);
}

TEST_F(SizeRow, AResizeLeavesTheOriginalAndTheSizeTakenIn) {
    const PixelBuffer picture = opaque(40, 30, 1);
    take(picture);
    applyResize("10", "10", true, false);
    EXPECT_EQ(batch.originalBits, picture);
    EXPECT_EQ(batch.workWidth, 40);
    EXPECT_EQ(batch.workHeight, 30);
}

TEST_F(SizeRow, AResizeToNothingEmptiesTheImageAndLeavesTheSourcePicture) {
    for (const bool smooth : {false, true})
        for (const auto& [width, height] : {std::pair{0, 9}, {9, 0}, {0, 0}}) {
            take(opaque(40, 30, 1));
            applyResize(std::to_string(width), std::to_string(height), smooth, false);
            expectResult(PixelBuffer(width, height));
            EXPECT_EQ(batch.iSrc.width(), 40);
            EXPECT_EQ(batch.iSrc.height(), 30);
            EXPECT_EQ(batch.workBitmapInfo, (BitmapInfo{44, 34}));
            EXPECT_TRUE(batch.workRegion.RegionMain()->isEmpty());
        }
}

TEST_F(SizeRow, AResizeToANegativeSizeLeavesThePicture) {
    const PixelBuffer picture = opaque(40, 30, 1);
    for (const bool smooth : {false, true})
        for (const auto& [width, height] : {std::pair{"-5", "9"}, {"9", "-5"}, {"-5", "-5"}}) {
            take(picture);
            applyResize(width, height, smooth, false);
            expectResult(picture);
            EXPECT_EQ(batch.iSrc.width(), 40);
            EXPECT_EQ(batch.iSrc.drawn().pixels(), picture);
        }
}

TEST_F(SizeRow, AResizeBeyondAnyMemoryLeavesThePicture) {
    // The kept height is 32767 * 60000.
    const PixelBuffer picture = opaque(1, 60000, 1);
    for (const bool smooth : {false, true}) {
        take(picture);
        applyResize("32767", "0", smooth, true);
        expectResult(picture);
    }
}

TEST_F(SizeRow, WithoutASourcePictureThereAreNoProportions) {
    const PixelBuffer picture = opaque(5, 4, 1);
    take(picture);
    batch.iSrc.setPicture(Bitmap());
    applyResize("10", "10", true, true);
    expectResult(picture);
}

TEST_F(SizeRow, ARebuiltChainIsResizedOnTheSample) {
    batch.sheetReady = true;
    addRow(resize, {"50", "60", "1", "0", "0", "False"});
    addRow(51);
    batch.RebuildChain();
    expectSize(50, 60);
    // The preview keeps its size; the picture stands at its top left, and around it is nothing.
    const Bitmap shown = batch.iDst.drawn();
    ASSERT_EQ(shown.width(), 200);
    ASSERT_EQ(shown.height(), 174);
    EXPECT_EQ(shown.row(59)[49], batch.workBits.at(49, 59));
    EXPECT_EQ(shown.row(173)[199], Pixel{});
}

// ---- Rotate Intelligently in the preview ----

TEST_F(SizeRow, ThePreviewTurnsByTheSheetWithinThePicturesSize) {
    batch.sheetReady = true;
    for (const int16_t degrees : {int16_t{0}, int16_t{33}, int16_t{-120}, int16_t{180}}) {
        batch.sbDegrees = degrees;
        batch.chkAntialiasing = 0;
        batch.PreviewFunction(rotate);
        EXPECT_EQ(batch.workBits,
                  filtered(sample, [=](cBitFilter& f) { return f.ROTATE(degrees, true); }));
        batch.chkAntialiasing = 1;
        batch.PreviewFunction(rotate);
        EXPECT_EQ(batch.workBits,
                  filtered(sample, [=](cBitFilter& f) { return f.RotateSmooth(degrees); }));
        EXPECT_EQ(batch.iDst.drawn().pixels(), batch.workBits);
        EXPECT_EQ(batch.cFilter.Bits(), sample);
    }
}

TEST_F(SizeRow, ThePreviewGoesByTheTickAndNotByTheOptionThatStands) {
    batch.funcOption = true;
    batch.chkAntialiasing = 0;
    batch.sbDegrees = 20;
    batch.PreviewRotate();
    EXPECT_EQ(batch.workBits, filtered(sample, [](cBitFilter& f) { return f.ROTATE(20, true); }));
}

// ---- Rotate Intelligently in a row ----

/// A picture whose corners are of four colours: red, green, blue and white on grey.
PixelBuffer cornered(int32_t width, int32_t height) {
    return drawBuffer(width, height, [=](int32_t x, int32_t y) {
        const bool left = x < 6;
        const bool top = y < 6;
        if ((!left && x < width - 6) || (!top && y < height - 6)) return Pixel{90, 90, 90, 0};
        if (left) return top ? Pixel{0, 0, 255, 0} : Pixel{0, 255, 0, 0};
        return top ? Pixel{255, 0, 0, 0} : Pixel{255, 255, 255, 0};
    });
}

/// Pixels of each corner's colour: red, green, blue, white.
std::array<int, 4> cornersIn(const PixelBuffer& picture) {
    const std::array<Pixel, 4> colours{
        Pixel{0, 0, 255, 0}, {0, 255, 0, 0}, {255, 0, 0, 0}, {255, 255, 255, 0}};
    std::array<int, 4> counts{};
    for (int32_t y = 0; y < picture.height(); ++y)
        for (int32_t x = 0; x < picture.width(); ++x)
            for (size_t k = 0; k < 4; ++k)
                counts[k] += picture.at(x, y) == colours[k] ? 1 : 0;
    return counts;
}

TEST_F(SizeRow, ARotatedRowGrowsSoThatNothingIsLostWhereThePreviewCutsCorners) {
    take(cornered(60, 60));
    batch.sbDegrees = 45;
    batch.PreviewRotate();
    EXPECT_EQ(batch.workBits.width(), 60);
    EXPECT_EQ(batch.workBits.height(), 60);
    EXPECT_EQ(cornersIn(batch.workBits), (std::array<int, 4>{}));

    take(cornered(60, 60));
    applyRotate(false);
    expectSize(85, 85);  // 120 / square root of 2
    for (const int count : cornersIn(batch.workBits))
        EXPECT_NEAR(count, 36, 6) << "an area turned keeps its size";
}

/// A picture in the middle of a black square as wide as its diagonal, turned and cut to its new
/// size.
PixelBuffer turned(const PixelBuffer& picture, int32_t degrees, bool smooth) {
    const int32_t W = picture.width();
    const int32_t H = picture.height();
    const auto c = static_cast<double>(static_cast<float>(std::abs(std::cos(degrees * 0.0174533))));
    const auto s = static_cast<double>(static_cast<float>(std::abs(std::sin(degrees * 0.0174533))));
    const auto newW = static_cast<int32_t>(std::rint(W * c + H * s));
    const auto newH = static_cast<int32_t>(std::rint(W * s + H * c));
    const auto D = static_cast<int32_t>(std::rint(std::sqrt(W * W + H * H)));
    const PixelBuffer square = drawBuffer(D, D, [&](int32_t x, int32_t y) {
        const int32_t i = x - (D - W) / 2;
        const int32_t j = y - (D - H) / 2;
        return i >= 0 && j >= 0 && i < W && j < H ? picture.at(i, j) : Pixel{};
    });
    cBitFilter filter;
    const RegionHandle region = wholeRegion(square);
    filter.Bits(square);
    filter.BitsRegion(region);
    const PixelBuffer whole = smooth ? filter.RotateSmooth(degrees) : filter.ROTATE(degrees, true);
    return drawBuffer(newW, newH, [&](int32_t x, int32_t y) {
        return whole.at(x + (D - newW) / 2, y + (D - newH) / 2);
    });
}

TEST_F(SizeRow, ARotatedRowTurnsThePictureOnItsDiagonalsSquareAndCutsThat) {
    for (const auto& [width, height] : {std::pair{40, 30}, {31, 64}, {5, 2}, {17, 17}})
        for (const int16_t degrees : {int16_t{1}, int16_t{45}, int16_t{90}, int16_t{-77},
                                      int16_t{180}, int16_t{-180}, int16_t{137}})
            for (const bool smooth : {false, true}) {
                const PixelBuffer picture = opaque(width, height, 1);
                take(picture);
                batch.sbDegrees = degrees;
                applyRotate(smooth);
                const PixelBuffer expected = turned(picture, degrees, smooth);
                expectSize(expected.width(), expected.height());
                EXPECT_EQ(batch.workBits, expected)
                    << width << " by " << height << ", " << degrees << ", " << smooth;
            }
}

TEST_F(SizeRow, ARotatedRowGoesByTheSinglesOfAShortDegree) {
    // Sizes at a half, where the last digit of a degree decides (22 and 44: 21 and 45 by a degree
    // of 0.017453288659453392) and that of the singles (38: 39 by doubles, of either or both).
    struct Size {
        int32_t width, height;
        int16_t degrees;
        int32_t newWidth, newHeight;
    };
    for (const auto& [width, height, degrees, newWidth, newHeight] : {Size{2, 94, -12, 22, 92},
                                                                      {1, 71, 142, 44, 57},
                                                                      {22, 32, 27, 34, 38},
                                                                      {32, 22, -27, 38, 34}}) {
        take(opaque(width, height, 1));
        batch.sbDegrees = degrees;
        applyRotate(false);
        expectSize(newWidth, newHeight);
    }
}

TEST_F(SizeRow, ARotationBy0DegreesGivesBackAPictureOfTheOldSize) {
    for (const auto& [width, height] : {std::pair{40, 30}, {31, 64}, {17, 17}, {2, 2}, {7, 3}})
        for (const bool smooth : {false, true}) {
            const PixelBuffer picture = opaque(width, height, 1);
            take(picture);
            applyRotate(smooth, "90");
            expectSize(width, height);
            EXPECT_EQ(batch.workBits, picture) << width << " by " << height;
        }
}

TEST_F(SizeRow, TheAngleIsTheSheetsAtTheMomentOfApplicationAndNotTheRows) {
    const PixelBuffer picture = opaque(40, 30, 1);
    take(picture);
    batch.sbDegrees = 12;
    platform.onGiveWay.push_back([this] { batch.sbDegrees = 60; });
    applyRotate(false, "90");
    EXPECT_EQ(batch.workBits, turned(picture, 60, false));
    EXPECT_EQ(batch.funcParam[0], 90) << "the row is read, and its angle goes nowhere";
}

TEST_F(SizeRow, TheSmoothingOfARotatedRowIsTheRowsAndNotTheSheets) {
    const PixelBuffer picture = opaque(40, 30, 1);
    batch.sbDegrees = 30;
    batch.chkAntialiasing = 0;
    take(picture);
    applyRotate(true);
    EXPECT_EQ(batch.workBits, turned(picture, 30, true));
    batch.chkAntialiasing = 1;
    take(picture);
    applyRotate(false);
    EXPECT_EQ(batch.workBits, turned(picture, 30, false));
}

TEST_F(SizeRow, WhatFollowsARotationCoversTheWholeNewPicture) {
    take(opaque(40, 30, 1));
    batch.sbDegrees = 30;
    applyRotate(false);
    const PixelBuffer rotated = batch.workBits;
    apply(51, {});
    expectResult(inverted(rotated));
    EXPECT_EQ(batch.workBits.at(0, 0), (Pixel{255, 255, 255, 0})) << "the corner was black";
}

TEST_F(SizeRow, AStatementOfARotationThatFailsIsPassedOverByItself) {
    // Laying a picture of one pixel on its square fails where a report is due; the black square
    // then goes the rest of the way.
    const PixelBuffer picture = opaque(1, 1, 1);
    ASSERT_FALSE(picture.at(0, 0) == Pixel{});
    take(picture);
    batch.cFilter.timeGetTime = [] { return 0U; };
    applyRotate(false);
    expectSize(1, 1);
    expectResult(picture);

    take(picture);
    batch.cFilter.timeGetTime = [] { return 1000U; };
    applyRotate(false);
    expectSize(1, 1);
    expectResult(PixelBuffer(1, 1));
}

TEST_F(SizeRow, ARotationWithoutASourcePictureLeavesNothing) {
    take(opaque(5, 4, 1));
    batch.iSrc.setPicture(Bitmap());
    batch.sbDegrees = 30;
    applyRotate(true);
    expectResult(PixelBuffer(0, 0));
    EXPECT_TRUE(batch.workRegion.RegionMain()->isEmpty());
}

TEST_F(SizeRow, ARotationWhoseDiagonalIsTooLongForItsSquareHurtsNobody) {
    // The square of such a width is no 32-bit number any more.
    take(PixelBuffer(50000, 2));
    batch.sbDegrees = 30;
    applyRotate(false);
    expectResult(PixelBuffer(0, 0));
    EXPECT_TRUE(platform.boxes.empty());
}

// ---- Flips ----

TEST_F(SizeRow, FlipsMirrorInPreviewAndRowAlike) {
    batch.sheetReady = true;
    const auto flipped = [this](bool fH, bool fV) {
        return filtered(sample, [=](cBitFilter& f) { return f.Flip(fH, fV); });
    };
    EXPECT_FALSE(flipped(true, false) == flipped(false, true));
    for (const auto& [id, expected] :
         {std::pair{int16_t{68}, flipped(true, false)}, {int16_t{69}, flipped(false, true)}}) {
        batch.cFilter.Bits(sample);
        batch.PreviewFunction(id);
        EXPECT_EQ(batch.workBits, expected);
        EXPECT_EQ(batch.iDst.drawn().pixels(), expected);
        apply(id, {});
        expectResult(expected);
    }
}

}  // namespace
}  // namespace tessarine::tests
