#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "chain_fixture.h"

// PreviewFunction: from the sheet to the picture beside it.

namespace tessarine::tests {
namespace {

using Numbers = std::array<int32_t, 3>;
using Colours = std::array<int32_t, 2>;

class Preview : public ChainFixture {
  protected:
    Preview() {
        batch.sheetReady = true;
        platform.changes.clear();
    }
};

TEST_F(Preview, ANewProgramShowsAndHoldsTheSample) {
    EXPECT_EQ(sample.width(), 200);
    EXPECT_EQ(sample.height(), 174);
    EXPECT_EQ(batch.iOri.drawn().pixels(), sample);
    EXPECT_EQ(batch.iDst.drawn().pixels(), sample);
    EXPECT_EQ(batch.originalBits, sample);
    expectResult(sample);
    EXPECT_EQ(batch.workWidth, 200);
    EXPECT_EQ(batch.workHeight, 174);
    EXPECT_EQ(batch.workRegion.RegionMain()->box(), (Rect{0, 0, 200, 174}));
    EXPECT_EQ(batch.cFilter.Invert(), inverted(sample)) << "filters cover the whole picture";
    EXPECT_EQ(batch.functionId, 5);
    EXPECT_EQ(batch.pickX, 0);
    EXPECT_EQ(batch.pickY, 0);
}

TEST_F(Preview, DoesNothingWhileTheSheetIsBeingBuilt) {
    batch.sheetReady = false;
    batch.funcParam = {1, 2, 3};
    batch.sbFilter[0].value = 50;
    batch.PreviewFunction(51);
    batch.PreviewFunction(1);
    batch.PreviewFunction(-1);
    EXPECT_EQ(batch.workBits, sample);
    EXPECT_EQ(batch.funcParam, (Numbers{1, 2, 3}));
    EXPECT_EQ(platform.giveWays, 0);
    EXPECT_TRUE(platform.changes.empty());
}

TEST_F(Preview, ReadsTheSheet) {
    batch.ShowSheet(25);
    batch.sbFilter[0].value = 10;
    batch.sbFilter[1].value = -20;
    batch.sbFilter[2].value = 30;
    batch.chkOption = 1;
    batch.Col = {0x00112233, 0x00445566};
    batch.PreviewFunction(25);
    EXPECT_EQ(batch.funcParam, (Numbers{10, -20, 30}));
    EXPECT_TRUE(batch.funcOption);
    EXPECT_EQ(batch.funcColor, (Colours{0x00112233, 0x00445566}));
    EXPECT_EQ(batch.sbFilter[1].valueText, "-20");
    EXPECT_TRUE(platform.hasChanged("lblFilterV(1)"));
    EXPECT_EQ(batch.workBits,
              filtered(sample, [](cBitFilter& f) { return f.ShiftRGB(10, -20, 30); }));
}

TEST_F(Preview, ReadsTheSlidersUpToTheHighestOfTheSheet) {
    batch.funcParam = {7, 8, 9};
    batch.highestSlider = 1;
    batch.sbFilter[0].value = 1;
    batch.sbFilter[1].value = 2;
    batch.sbFilter[2].value = 3;
    batch.PreviewFunction(-1);
    EXPECT_EQ(batch.funcParam, (Numbers{1, 2, 9}));
}

TEST_F(Preview, ShowsValueTimesStepInTheSlidersFormat) {
    SheetSlider& slider = batch.sbFilter[0];
    slider.step = 0.25F;
    slider.format = "0.00";
    slider.value = 7;
    slider.centreOffset = 3;
    batch.PreviewFunction(-1);
    EXPECT_EQ(slider.valueText, "1.75");
    EXPECT_EQ(batch.funcParam[0], 4) << "the parameter is the value less the centre's";
}

TEST_F(Preview, GammaIsCentred) {
    batch.ShowSheet(4);
    batch.sbFilter[0].value = 150;
    batch.PreviewFunction(4);
    EXPECT_EQ(batch.funcParam[0], 50);
    EXPECT_EQ(batch.sbFilter[0].valueText, "150");
    EXPECT_EQ(batch.workBits,
              filtered(sample, [](cBitFilter& f) { return f.GammaCorrection(50); }));
}

TEST_F(Preview, Minus1ReadsTheSheetComputesNothingAndRepaints) {
    batch.ShowSheet(1);
    batch.sbFilter[0].value = 77;
    batch.workBits = inverted(sample);
    platform.changes.clear();
    batch.PreviewFunction(-1);
    EXPECT_EQ(batch.funcParam[0], 77);
    EXPECT_EQ(batch.workBits, inverted(sample));
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample));
    EXPECT_EQ(platform.timesChanged("iDst"), 1);
}

TEST_F(Preview, FunctionsWithAPanelOrWithoutParametersLeaveTheSlidersUnread) {
    for (const int32_t id : {26, 39, 40, 41, 46, 51, 59, 63, 69, 71}) {
        batch.funcParam = {0, 1, 2};
        batch.funcOption = true;
        batch.funcColor = {3, 4};
        batch.sbFilter[0].value = 99;
        batch.highestSlider = 0;
        batch.chkOption = 0;
        batch.txtW = "none";
        batch.txtH = "none";
        batch.PreviewFunction(id);
        EXPECT_NE(batch.funcParam[0], 99) << id;
        EXPECT_EQ(batch.funcColor, (Colours{3, 4})) << id;
    }
    for (const int32_t id : {0, 5, 25, 27, 38, -1}) {
        batch.funcParam = {0, 1, 2};
        batch.PreviewFunction(id);
        EXPECT_EQ(batch.funcParam[0], 99) << id;
    }
}

TEST_F(Preview, OfAResizeReadsItsPanelAndShowsTheChainAsItIs) {
    batch.cFilter.Bits(inverted(sample));
    batch.txtW = "320";
    batch.txtH = "240.5";
    batch.chkKeepProportions = 1;
    batch.chkInterpolate = 0;
    batch.PreviewFunction(59);
    EXPECT_EQ(batch.funcParam, (Numbers{320, 240, 0}));
    EXPECT_TRUE(batch.funcOption);
    expectResult(inverted(sample));
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample));

    batch.chkKeepProportions = 0;
    batch.chkInterpolate = 1;
    batch.PreviewFunction(59);
    EXPECT_EQ(batch.funcParam[2], 1);
    EXPECT_FALSE(batch.funcOption);
}

TEST_F(Preview, OfAResizeKeepsWhatTheFieldsDoNotTell) {
    batch.funcParam = {5, 6, 7};
    batch.txtW = "";
    batch.txtH = "32768";
    batch.PreviewFunction(59);
    EXPECT_EQ(batch.funcParam, (Numbers{5, 6, 1}));
}

TEST_F(Preview, OfAGrowingRotationReadsDegreesAndSmoothing) {
    batch.funcParam = {5, 6, 7};
    batch.sbDegrees = -33;
    batch.chkAntialiasing = 1;
    batch.PreviewFunction(70);
    EXPECT_EQ(batch.funcParam, (Numbers{-33, 6, 7}));
    EXPECT_TRUE(batch.funcOption);
}

TEST_F(Preview, GivesWayOnceBetweenTheSheetAndTheFunction) {
    batch.ShowSheet(1);
    batch.sbFilter[0].value = 10;
    platform.giveWays = 0;
    platform.onGiveWay.push_back([this] { batch.funcParam[0] = 60; });
    batch.PreviewFunction(1);
    EXPECT_EQ(platform.giveWays, 1);
    EXPECT_EQ(batch.workBits, brightened(sample, 60));
}

TEST_F(Preview, AnEventMayStartASecondPreviewMeanwhile) {
    batch.ShowSheet(1);
    batch.sbFilter[0].value = 10;
    platform.giveWays = 0;
    platform.changes.clear();
    platform.onGiveWay.push_back([this] {
        batch.sbFilter[0].value = 30;
        batch.PreviewFunction(1);
    });
    batch.PreviewFunction(1);
    EXPECT_EQ(platform.giveWays, 2);
    EXPECT_EQ(platform.timesChanged("iDst"), 2);
    EXPECT_EQ(batch.funcParam[0], 30) << "the outer one goes on with what the inner one read";
    EXPECT_EQ(batch.workBits, brightened(sample, 30));
}

TEST_F(Preview, AlwaysStartsFromTheChainsResult) {
    batch.ShowSheet(1);
    for (const int32_t level : {10, 40, -25}) {
        batch.sbFilter[0].value = level;
        batch.PreviewFunction(1);
        EXPECT_EQ(batch.workBits, brightened(sample, level));
        EXPECT_EQ(batch.cFilter.Bits(), sample);
    }
}

TEST_F(Preview, PaintsTheResultWithoutItsMarginAndLeavesNoLastingPicture) {
    batch.ShowSheet(51);
    batch.PreviewFunction(51);
    EXPECT_EQ(batch.iDst.drawn(), Bitmap(inverted(sample)));
    EXPECT_FALSE(batch.iDst.picture().isValid());
    EXPECT_EQ(batch.iDst.width(), 200);
    EXPECT_EQ(batch.iDst.height(), 174);
    EXPECT_TRUE(platform.hasChanged("iDst"));
}

TEST_F(Preview, IdsThatStandForNoFunctionCallNothingAndPaint) {
    batch.workBits = inverted(sample);
    for (const int32_t id : {63, 71, 1000, -1, -7}) {
        batch.iDst.clearPicture();
        batch.PreviewFunction(id);
        EXPECT_EQ(batch.workBits, inverted(sample)) << id;
        EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample)) << id;
    }
}

TEST_F(Preview, AFailingMemberLeavesTheResultAndIsPaintedWithoutAWord) {
    batch.workBits = inverted(sample);
    batch.highestSlider = 0;
    batch.sbFilter[0].value = -1;  // a step of 0 fails
    batch.PreviewFunction(15);
    EXPECT_EQ(batch.workBits, inverted(sample));
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample));
    EXPECT_TRUE(platform.boxes.empty());
}

TEST_F(Preview, SwapRgbUsesTheBanksOfTheSheetAndTheBoxesAsTheyAre) {
    batch.funcParam = {0, 1, 2};
    batch.chkInvt = {0, 1, 0};
    batch.chkKill = {1, 0, 0};
    batch.PreviewFunction(26);
    EXPECT_EQ(batch.workBits, filtered(sample, [](cBitFilter& f) {
                  return f.SwapRGB(0, 1, 2, false, true, false, true, false, false);
              }));
}

TEST_F(Preview, APickedPointStaysUntilTheNextPick) {
    batch.ShowSheet(27);
    EXPECT_EQ(batch.pickRelX, 0.5F);
    EXPECT_EQ(batch.pickX, 0) << "the mark stands at the centre, the stored point does not";
    batch.PickPoint(50, 87);
    batch.ShowSheet(1);
    batch.PreviewFunction(1);
    EXPECT_EQ(batch.pickX, 50);
    EXPECT_EQ(batch.pickY, 87);
    batch.AddFunction("Brightness");
    EXPECT_EQ(batch.Ltray.back().column(8), "50");
    EXPECT_EQ(batch.Ltray.back().column(9), "87");
}

}  // namespace
}  // namespace tessarine::tests
