#include "pixels/bit_region.h"

#include <cmath>
#include <limits>
#include <set>
#include <system_error>

#include <gtest/gtest.h>

#include "support/files.h"
#include "support/paths.h"

namespace tessarine {
namespace {

using tests::readAll;
using tests::ScratchFolder;
using tests::writeAll;

RegionHandle handle(const std::vector<int32_t>& words) { return Region::fromBlock(words); }

RegionHandle rectangle(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    return std::make_shared<const Region>(Rect{left, top, right, bottom});
}

Rect boundsOf(const cBitRegion& region) {
    Rect box{-1, -2, -3, -4};
    region.BoundRect(box.left, box.top, box.right, box.bottom);
    return box;
}

TEST(BitRegion, ANewOneHasNoRegionsAndShowsAtItsOwnSize) {
    const cBitRegion region;
    EXPECT_EQ(region.RegionMain(), nullptr);
    EXPECT_EQ(region.Region(), nullptr);
    EXPECT_EQ(region.RegionScaled(), nullptr);
    EXPECT_EQ(region.ZoomFactor(), 1.0F);
    EXPECT_EQ(region.GetDataCount(), 0);
    EXPECT_TRUE(region.GetData().empty());
    EXPECT_EQ(region.brushIndex(), 0);
    EXPECT_TRUE(region.IsEmptyRegion());
}

TEST(BitRegion, InitMakesTheMainRegionAlone) {
    cBitRegion region;
    region.Region(rectangle(1, 1, 5, 5));
    region.Init(0, 0, 100, 50);
    ASSERT_NE(region.RegionMain(), nullptr);
    EXPECT_EQ(region.RegionMain()->box(), (Rect{0, 0, 100, 50}));
    EXPECT_TRUE(region.RegionMain()->contains(99, 49));
    EXPECT_FALSE(region.RegionMain()->contains(100, 0));
    EXPECT_EQ(region.Region(), nullptr);
    EXPECT_EQ(region.RegionScaled(), nullptr);
    EXPECT_EQ(region.GetDataCount(), 0);
}

TEST(BitRegion, InitLetsGoOfTheMainRegionBefore) {
    cBitRegion region;
    region.Init(0, 0, 4, 4);
    const std::weak_ptr<const Region> before = region.RegionMain();
    region.Init(0, 0, 5, 5);
    EXPECT_TRUE(before.expired());
}

TEST(BitRegion, AnEmptySelectionInvertsToTheMainRectangle) {
    cBitRegion region;
    region.Init(2, 3, 100, 50);
    region.Invert();
    ASSERT_NE(region.Region(), nullptr);
    EXPECT_EQ(*region.Region(), Region(Rect{2, 3, 100, 50}));
    EXPECT_EQ(region.GetData(), (std::vector<int32_t>{32, 1, 1, 16, 2, 3, 100, 50, 2, 3, 100, 50}));
    EXPECT_EQ(region.GetDataCount(), 12);
    ASSERT_NE(region.RegionScaled(), nullptr);
    EXPECT_EQ(*region.RegionScaled(), *region.Region());
}

TEST(BitRegion, InvertingTwiceGivesTheEmptySelectionBack) {
    cBitRegion region;
    region.Init(0, 0, 100, 50);
    region.Invert();
    EXPECT_FALSE(region.IsEmptyRegion());
    region.Invert();
    EXPECT_TRUE(region.IsEmptyRegion());
    EXPECT_EQ(region.GetData(), (std::vector<int32_t>{32, 1, 0, 0, 0, 0, 0, 0}));
    region.Invert();
    EXPECT_EQ(boundsOf(region), (Rect{0, 0, 100, 50}));
}

TEST(BitRegion, InvertLeavesWhatTheMainRegionHasBesideTheSelection) {
    cBitRegion region;
    region.Init(0, 0, 10, 10);
    region.Region(rectangle(0, 0, 4, 10));
    region.Invert();
    EXPECT_EQ(*region.Region(), Region(Rect{4, 0, 10, 10}));
    // What reaches beyond the main region stays selected there.
    region.Region(rectangle(0, 0, 12, 10));
    region.Invert();
    EXPECT_EQ(*region.Region(), Region(Rect{10, 0, 12, 10}));
}

TEST(BitRegion, WithoutAMainRegionNothingIsInvertedOrCropped) {
    cBitRegion region;
    region.Invert();
    ASSERT_NE(region.Region(), nullptr);
    EXPECT_TRUE(region.IsEmptyRegion());
    region.Region(rectangle(1, 1, 5, 5));
    region.Invert();
    EXPECT_EQ(boundsOf(region), (Rect{1, 1, 5, 5}));
    region.Crop();
    EXPECT_EQ(boundsOf(region), (Rect{1, 1, 5, 5}));
}

TEST(BitRegion, WithoutASelectionNothingIsCroppedMovedOrDrawn) {
    cBitRegion region;
    region.Init(0, 0, 10, 10);
    region.Crop();
    region.Offset(3, 3);
    PixelBuffer surface(10, 10);
    region.DrawToDC(surface, 0, 0);
    EXPECT_EQ(region.Region(), nullptr);
    EXPECT_EQ(region.RegionScaled(), nullptr);
    EXPECT_EQ(region.GetDataCount(), 0);
    EXPECT_EQ(surface, PixelBuffer(10, 10));
}

TEST(BitRegion, CropCutsToTheMainRegion) {
    cBitRegion region;
    region.Init(0, 0, 10, 10);
    region.Region(rectangle(-5, 4, 25, 6));
    region.Crop();
    EXPECT_EQ(boundsOf(region), (Rect{0, 4, 10, 6}));
    EXPECT_EQ(region.GetData(), region.Region()->block());
    EXPECT_EQ(*region.RegionScaled(), *region.Region());
}

TEST(BitRegion, OffsetMovesTheSelectionAndItsCopy) {
    cBitRegion region;
    region.Init(0, 0, 10, 10);
    region.ZoomFactor(3);
    region.Region(rectangle(1, 2, 3, 4));
    region.Offset(10, -20);
    EXPECT_EQ(boundsOf(region), (Rect{11, -18, 13, -16}));
    EXPECT_EQ(region.GetData(), region.Region()->block());
    EXPECT_EQ(region.RegionScaled()->box(), (Rect{33, -54, 39, -48}));
    EXPECT_EQ(region.RegionMain()->box(), (Rect{0, 0, 10, 10}));
}

TEST(BitRegion, ClearKeepsZoomAndBrush) {
    cBitRegion region;
    region.Init(0, 0, 10, 10);
    region.Invert();
    region.ZoomFactor(2);
    region.RotateBrush();
    region.Clear();
    EXPECT_EQ(region.RegionMain(), nullptr);
    EXPECT_EQ(region.Region(), nullptr);
    EXPECT_EQ(region.RegionScaled(), nullptr);
    EXPECT_EQ(region.GetDataCount(), 0);
    EXPECT_EQ(region.ZoomFactor(), 2.0F);
    EXPECT_EQ(region.brushIndex(), 1);
}

TEST(BitRegion, TheBoxIsWrittenOnlyWhereThereIsOne) {
    cBitRegion region;
    int32_t left = 1, top = 2, right = 3, bottom = 4;
    EXPECT_FALSE(region.BoundRect(left, top, right, bottom));
    EXPECT_EQ((Rect{left, top, right, bottom}), (Rect{1, 2, 3, 4}));
    region.Region(rectangle(0, 0, 0, 0));
    EXPECT_FALSE(region.BoundRect(left, top, right, bottom));
    EXPECT_EQ((Rect{left, top, right, bottom}), (Rect{1, 2, 3, 4}));
    region.Region(rectangle(7, 8, 9, 10));
    EXPECT_TRUE(region.BoundRect(left, top, right, bottom));
    EXPECT_EQ((Rect{left, top, right, bottom}), (Rect{7, 8, 9, 10}));
    EXPECT_FALSE(region.IsEmptyRegion());
}

TEST(BitRegion, TheSelectionIsACopyOfTheGivenRegion) {
    cBitRegion region;
    RegionHandle given = rectangle(1, 1, 5, 5);
    region.Region(given);
    EXPECT_NE(region.Region(), given);
    EXPECT_EQ(*region.Region(), *given);
    EXPECT_EQ(region.GetData(), given->block());
    given.reset();
    EXPECT_EQ(boundsOf(region), (Rect{1, 1, 5, 5}));
    region.Region(nullptr);
    EXPECT_EQ(boundsOf(region), (Rect{1, 1, 5, 5}));
}

TEST(BitRegion, ANegativeZoomBecomesAHundredth) {
    cBitRegion region;
    region.ZoomFactor(-1);
    EXPECT_EQ(region.ZoomFactor(), 0.01F);
    region.ZoomFactor(0);
    EXPECT_EQ(region.ZoomFactor(), 0.0F);
    region.ZoomFactor(1.5F);
    EXPECT_EQ(region.ZoomFactor(), 1.5F);
}

TEST(BitRegion, AZoomOfTwoDoublesEveryCoordinateAndKeepsTheCount) {
    cBitRegion region;
    region.Region(handle({32, 1, 2, 32, 0, 0, 0, 0, 1, 2, 3, 4, -7, 4, 6, 8}));
    region.ZoomFactor(2);
    EXPECT_EQ(region.RegionScaled()->block(),
              (std::vector<int32_t>{32, 1, 2, 32, -14, 4, 12, 16, 2, 4, 6, 8, -14, 8, 12, 16}));
    EXPECT_EQ(region.GetData(),
              (std::vector<int32_t>{32, 1, 2, 32, -7, 2, 6, 8, 1, 2, 3, 4, -7, 4, 6, 8}));
}

TEST(BitRegion, ScaledCoordinatesRoundWithHalvesToEven) {
    cBitRegion region;
    region.ZoomFactor(0.5F);
    region.Region(rectangle(1, 3, 5, 7));
    EXPECT_EQ(region.RegionScaled()->box(), (Rect{0, 2, 2, 4}));
    region.Region(rectangle(-7, -5, -3, -1));
    EXPECT_EQ(region.RegionScaled()->box(), (Rect{-4, -2, -2, 0}));
    // The product is not rounded to a single first: 16777217 * 1 keeps its last bit.
    region.ZoomFactor(1);
    region.Region(rectangle(0, 0, 16777217, 1));
    EXPECT_EQ(region.RegionScaled()->box().right, 16777217);
}

TEST(BitRegion, AZoomOfNothingLeavesTheCopyUnscaled) {
    cBitRegion region;
    region.Region(rectangle(1, 3, 5, 7));
    region.ZoomFactor(0);
    EXPECT_EQ(region.RegionScaled()->box(), (Rect{1, 3, 5, 7}));
}

TEST(BitRegion, ASelectionMayVanishAtASmallZoom) {
    cBitRegion region;
    region.Region(rectangle(1, 3, 5, 7));
    region.ZoomFactor(-1);
    ASSERT_NE(region.RegionScaled(), nullptr);
    EXPECT_TRUE(region.RegionScaled()->isEmpty());
    EXPECT_FALSE(region.IsEmptyRegion());
}

TEST(BitRegion, NoZoomBreaksTheScaledCopy) {
    cBitRegion region;
    region.Region(rectangle(-2000000000, -2000000000, 2000000000, 2000000000));
    for (const float zoom : {3.0F, 1e30F, std::numeric_limits<float>::infinity(),
                             std::numeric_limits<float>::quiet_NaN(), 1e-30F}) {
        region.ZoomFactor(zoom);
        EXPECT_NE(region.RegionScaled(), nullptr) << zoom;
    }
}

TEST(BitRegion, TheBrushesAreTheStripesMovedByOneRowEach) {
    const cBitRegion region;
    EXPECT_EQ(region.brushes()[0], (PatternBrush{240, 120, 60, 30, 15, 135, 195, 225}));
    EXPECT_EQ(region.brushes()[1], (PatternBrush{120, 60, 30, 15, 135, 195, 225, 240}));
    EXPECT_EQ(region.brushes()[7], (PatternBrush{225, 240, 120, 60, 30, 15, 135, 195}));
    const std::set<PatternBrush> distinct(region.brushes().begin(), region.brushes().end());
    EXPECT_EQ(distinct.size(), 8U);
}

TEST(BitRegion, EightTurnsComeBackToTheFirstBrush) {
    cBitRegion region;
    for (int32_t turn = 1; turn < 8; ++turn) {
        region.RotateBrush();
        EXPECT_EQ(region.brushIndex(), turn);
    }
    region.RotateBrush();
    EXPECT_EQ(region.brushIndex(), 0);
}

/// Whether brush `turns` is white at a place of the surface: stripes four pixels wide that run
/// down to the right.
bool stripe(int32_t x, int32_t y, int32_t turns) { return ((x - y - turns) % 8 + 8) % 8 < 4; }

TEST(BitRegion, TheOutlineIsDrawnOnePixelWideInStripesFromTheSurfacesOrigin) {
    for (int32_t turns = 0; turns < 8; ++turns) {
        cBitRegion region;
        region.Region(rectangle(0, 0, 9, 6));
        region.ZoomFactor(2);
        for (int32_t i = 0; i < turns; ++i)
            region.RotateBrush();
        PixelBuffer surface(30, 20);
        for (size_t i = 0; i < surface.pixelCount(); ++i) {
            surface.writableBlock()[i] = {1, 2, 3, 4};
        }
        region.DrawToDC(surface, 5, 3);
        for (int32_t y = -2; y < 22; ++y) {
            for (int32_t x = -2; x < 32; ++x) {
                const bool inside = x >= 5 && x < 23 && y >= 3 && y < 15;
                const bool edge = inside && (x == 5 || x == 22 || y == 3 || y == 14);
                const uint8_t level = stripe(x, y, turns) ? 255 : 0;
                const Pixel expected = edge ? Pixel{level, level, level, 4} : Pixel{1, 2, 3, 4};
                ASSERT_EQ(surface.at(x, y), expected) << x << ", " << y << ", brush " << turns;
            }
        }
    }
}

TEST(BitRegion, WhatLiesOutsideTheSurfaceIsLeftOut) {
    cBitRegion region;
    region.Region(rectangle(-3, -3, 4, 20));
    PixelBuffer surface(10, 10);
    region.DrawToDC(surface, 0, 0);
    for (int32_t y = -2; y < 12; ++y) {
        for (int32_t x = -2; x < 12; ++x) {
            const bool edge = x == 3 && y >= 0 && y < 10;
            const uint8_t level = edge && stripe(x, y, 0) ? 255 : 0;
            ASSERT_EQ(surface.at(x, y), (Pixel{level, level, level, 0})) << x << ", " << y;
        }
    }
}

TEST(BitRegion, DrawingLeavesTheScaledSelectionWhereItWas) {
    cBitRegion region;
    region.Region(rectangle(0, 0, 4, 4));
    PixelBuffer surface(10, 10);
    region.DrawToDC(surface, 3, 3);
    EXPECT_EQ(region.RegionScaled()->box(), (Rect{0, 0, 4, 4}));
}

TEST(BitRegion, DrawingTakesAnyOffsetAndAnySurface) {
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    cBitRegion region;
    region.Region(rectangle(lowest, lowest, highest, highest));
    PixelBuffer surface(6, 6);
    for (const int32_t x : {lowest, -1, 0, highest}) {
        for (const int32_t y : {lowest, 0, 1, highest})
            region.DrawToDC(surface, x, y);
    }
    EXPECT_EQ(surface, PixelBuffer(6, 6));  // all edges lie beyond the surface
    PixelBuffer nothing;
    region.DrawToDC(nothing, 0, 0);
    EXPECT_FALSE(nothing.isDimensioned());
    PixelBuffer flat(0, 0);
    region.DrawToDC(flat, 0, 0);
    EXPECT_EQ(flat, PixelBuffer(0, 0));
}

TEST(BitRegion, AnOutlineThatIsDrawnAtTheEndOfTheCoordinatesReachesTheSurface) {
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    cBitRegion region;
    region.Region(rectangle(lowest, lowest, lowest + 5, lowest + 5));
    PixelBuffer surface(8, 8);
    region.DrawToDC(surface, std::numeric_limits<int32_t>::max(),
                    std::numeric_limits<int32_t>::max());
    // Column lowest + 4 lies at 3 of the surface.
    for (int32_t y = 0; y < 4; ++y) {
        const uint8_t level = stripe(3, y, 0) ? 255 : 0;
        EXPECT_EQ(surface.at(3, y), (Pixel{level, level, level, 0})) << y;
    }
}

TEST(BitRegion, TheFileHoldsTheBlockAndNothingElse) {
    const ScratchFolder scratch;
    cBitRegion region;
    region.ZoomFactor(5);
    region.Region(handle({32, 1, 2, 32, 0, 0, 0, 0, 1, 2, 259, 4, -1, 4, 6, 8}));
    region.SaveToFile(scratch / "selection");
    const unsigned char expected[64] = {
        32,   0,    0,    0,    1, 0, 0, 0, 2, 0, 0, 0, 32, 0, 0, 0,  // header
        0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 3, 1, 0, 0, 8,  0, 0, 0,  // box
        1,    0,    0,    0,    2, 0, 0, 0, 3, 1, 0, 0, 4,  0, 0, 0,  //
        0xFF, 0xFF, 0xFF, 0xFF, 4, 0, 0, 0, 6, 0, 0, 0, 8,  0, 0, 0};
    EXPECT_EQ(readAll(scratch / "selection"),
              std::string(reinterpret_cast<const char*>(expected), sizeof(expected)));
}

TEST(BitRegion, ASavedBlockComesBackWordForWord) {
    const ScratchFolder scratch;
    cBitRegion region;
    region.Region(handle({32, 1, 3, 48, 0, 0, 0, 0, 1, 2, 3, 4, -7, 4, 6, 8, 9, 4, 12, 8}));
    region.SaveToFile(scratch / "selection");
    EXPECT_EQ(readAll(scratch / "selection").size(), 32U + 16U * 3U);
    cBitRegion other;
    other.Init(0, 0, 5, 5);
    other.ZoomFactor(2);
    other.LoadFromFile(scratch / "selection");
    EXPECT_EQ(other.GetData(), region.GetData());
    EXPECT_EQ(*other.Region(), *region.Region());
    EXPECT_EQ(other.RegionScaled()->box(), (Rect{-14, 4, 24, 16}));
    EXPECT_EQ(other.ZoomFactor(), 2.0F);
    EXPECT_EQ(other.RegionMain()->box(), (Rect{0, 0, 5, 5}));
}

TEST(BitRegion, ALongerFileKeepsItsTail) {
    const ScratchFolder scratch;
    writeAll(scratch / "selection", std::string(100, 'x'));
    cBitRegion region;
    region.Region(rectangle(1, 2, 3, 4));
    region.SaveToFile(scratch / "selection");
    const std::string bytes = readAll(scratch / "selection");
    ASSERT_EQ(bytes.size(), 100U);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\x20\0\0\0", 4));
    EXPECT_EQ(bytes.substr(47, 53), std::string("\0", 1) + std::string(52, 'x'));

    // The tail is read with the block and counts for nothing.
    cBitRegion other;
    other.LoadFromFile(scratch / "selection");
    EXPECT_EQ(other.GetDataCount(), 25);
    EXPECT_EQ(boundsOf(other), (Rect{1, 2, 3, 4}));
}

TEST(BitRegion, WithoutASelectionTheFileIsEmpty) {
    const ScratchFolder scratch;
    const cBitRegion region;
    region.SaveToFile(scratch / "selection");
    EXPECT_TRUE(std::filesystem::exists(scratch / "selection"));
    EXPECT_EQ(readAll(scratch / "selection"), "");
}

TEST(BitRegion, AFileThatHoldsNoBlockLeavesNoSelection) {
    const ScratchFolder scratch;
    for (const std::string& bytes :
         {std::string(), std::string("abc"), std::string(32, '\0'), std::string(200, 'x')}) {
        writeAll(scratch / "selection", bytes);
        cBitRegion region;
        region.Region(rectangle(1, 2, 3, 4));
        region.LoadFromFile(scratch / "selection");
        EXPECT_EQ(region.Region(), nullptr);
        EXPECT_TRUE(region.IsEmptyRegion());
        EXPECT_EQ(region.GetDataCount(), static_cast<int32_t>(bytes.size() / 4));
        // Without a selection nothing is scaled, and the copy for drawing stays.
        EXPECT_EQ(region.RegionScaled()->box(), (Rect{1, 2, 3, 4}));
    }
}

TEST(BitRegion, FilesThatCannotBeOpenedReachTheCaller) {
    const ScratchFolder scratch;
    cBitRegion region;
    region.Region(rectangle(1, 2, 3, 4));
    try {
        region.LoadFromFile(scratch / "missing");
        FAIL() << "a missing file was loaded";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
    EXPECT_THROW(region.LoadFromFile(scratch.path()), std::system_error);
    EXPECT_THROW(region.SaveToFile(scratch / "missing/selection"), std::system_error);
    EXPECT_THROW(region.SaveToFile(scratch.path()), std::system_error);
    EXPECT_EQ(boundsOf(region), (Rect{1, 2, 3, 4}));
}

TEST(BitRegion, AFileLargerThanAnyBlockIsRefused) {
    const ScratchFolder scratch;
    writeAll(scratch / "selection", "x");
    std::filesystem::resize_file(scratch / "selection", uintmax_t{1} << 40);
    cBitRegion region;
    EXPECT_THROW(region.LoadFromFile(scratch / "selection"), std::system_error);
}

TEST(BitRegion, AFailingSaveToAFullDeviceReachesTheCaller) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    cBitRegion region;
    region.Region(rectangle(1, 2, 3, 4));
    EXPECT_THROW(region.SaveToFile("/dev/full"), std::system_error);
}

}  // namespace
}  // namespace tessarine
