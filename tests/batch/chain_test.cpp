#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chain_fixture.h"

// Stored rows, the dispatch, and the chain over the pool of rows.

namespace tessarine::tests {
namespace {

using Numbers = std::array<int32_t, 3>;
using Colours = std::array<int32_t, 2>;

class Row : public ChainFixture {};
class Chain : public ChainFixture {};

constexpr int16_t noFunction = 63;

TEST_F(Row, IsReadIntoTheWorkingState) {
    addRow(noFunction, {"12.5", "-13.5", " 7 ", "16711680", "-1", "True", "slanting", "3", "4"});
    batch.ApplyRow(noFunction, 1, false);
    EXPECT_EQ(batch.funcParam, (Numbers{12, -14, 7})) << "halves go to the even number";
    EXPECT_EQ(batch.funcColor, (Colours{16711680, -1}));
    EXPECT_TRUE(batch.funcOption);
    EXPECT_EQ(batch.funcStyle, "slanting");
}

TEST_F(Row, TextsThatAreNoNumbersLeaveTheWorkingValues) {
    addRow(noFunction, {"abc", "", "1;2", "red", "#FF", "maybe", "", "left", ""});
    batch.funcParam = {1, 2, 3};
    batch.funcColor = {4, 5};
    batch.funcOption = true;
    batch.funcStyle = "curtain";
    batch.pickRelX = 0.25F;
    batch.pickRelY = 0.75F;
    for (const bool forRun : {false, true}) {
        batch.ApplyRow(noFunction, 1, forRun);
        EXPECT_EQ(batch.funcParam, (Numbers{1, 2, 3}));
        EXPECT_EQ(batch.funcColor, (Colours{4, 5}));
        EXPECT_TRUE(batch.funcOption);
        EXPECT_EQ(batch.funcStyle, "") << "any text is a style word";
        EXPECT_EQ(batch.pickRelX, 0.25F);
        EXPECT_EQ(batch.pickRelY, 0.75F);
    }
}

TEST_F(Row, NumbersThatDoNotFitLeaveTheWorkingValues) {
    addRow(noFunction, {"32768", "-32769", "32767", "2147483648", "-2147483649", "False", "",
                        "40000", "-40000"});
    batch.funcParam = {1, 2, 3};
    batch.funcColor = {4, 5};
    batch.pickRelX = 0.25F;
    batch.pickRelY = 0.75F;
    batch.ApplyRow(noFunction, 1, false);
    EXPECT_EQ(batch.funcParam, (Numbers{1, 2, 32767}));
    EXPECT_EQ(batch.funcColor, (Colours{4, 5}));
    EXPECT_EQ(batch.pickRelX, 0.25F);
    EXPECT_EQ(batch.pickRelY, 0.75F);
}

TEST_F(Row, IsAppliedWithTheValuesThatItsFailingColumnsLeave) {
    addRow(1, {"99999"});
    batch.funcParam[0] = 10;
    batch.ApplyRow(1, 1, true);
    expectResult(brightened(sample, 10));
}

TEST_F(Row, ThatIsNotInThePoolIsAppliedWithTheValuesThatStand) {
    batch.funcParam[0] = 10;
    batch.ApplyRow(1, 0, false);
    expectResult(brightened(sample, 10));
    batch.ApplyRow(1, 5, true);
    expectResult(brightened(brightened(sample, 10), 10));
}

TEST_F(Row, ResultStandsInBothBuffers) {
    addRow(51);
    batch.ApplyRow(51, 1, true);
    expectResult(inverted(sample));
}

TEST_F(Row, IsCarriedOutAsTheIdGivenAndNotAsItsTag) {
    addRow(1, {"10"});
    batch.ApplyRow(51, 1, false);
    expectResult(inverted(sample));
}

TEST_F(Row, WorksOnTheFiltersPictureAndNotOnTheLatestResult) {
    addRow(51);
    batch.workBits = brightened(sample, 90);
    batch.ApplyRow(51, 1, false);
    expectResult(inverted(sample));
}

TEST_F(Row, OfAnIdThatStandsForNoFunctionHandsOnTheLatestResult) {
    addRow(noFunction);
    for (const int16_t id : {noFunction, int16_t{71}, int16_t{300}, int16_t{-1}, int16_t{-300},
                             std::numeric_limits<int16_t>::max()}) {
        batch.cFilter.Bits(sample);
        batch.workBits = inverted(sample);
        batch.ApplyRow(id, 1, true);
        expectResult(inverted(sample));
    }
}

TEST_F(Row, OfThresholdRunsThoughNoNodeStandsForIt) {
    addRow(13, {"100"});
    batch.ApplyRow(13, 1, true);
    expectResult(filtered(sample, [](cBitFilter& f) { return f.Threshold(100); }));
}

TEST_F(Row, ThatFailsLeavesTheLatestResultAndHandsItOn) {
    addRow(15, {"-1"});
    batch.workBits = inverted(sample);
    batch.ApplyRow(15, 1, true);
    expectResult(inverted(sample));
    EXPECT_TRUE(platform.boxes.empty());
}

TEST_F(Row, GivesWayOnceBetweenReadingAndApplying) {
    addRow(1, {"10"});
    platform.onGiveWay.push_back([this] {
        EXPECT_EQ(batch.funcParam[0], 10);
        batch.funcParam[0] = 60;
    });
    batch.ApplyRow(1, 1, false);
    EXPECT_EQ(platform.giveWays, 1);
    expectResult(brightened(sample, 60));
}

TEST_F(Row, AnEventMayApplyAnotherRowMeanwhile) {
    addRow(1, {"10"});
    addRow(51);
    platform.onGiveWay.push_back([this] { batch.ApplyRow(51, 2, true); });
    batch.ApplyRow(1, 1, true);
    // The inner row has read its own columns, whose first is 0, and handed its result on.
    expectResult(inverted(sample));
    EXPECT_EQ(batch.funcParam[0], 0);
}

TEST_F(Row, InARebuildThePointIsAFractionOfThePictureAndStaysInIt) {
    addRow(noFunction, {"0", "0", "0", "0", "0", "False", "", "100", "87"});
    batch.ApplyRow(noFunction, 1, false);
    EXPECT_EQ(batch.pickRelX, 0.5F);
    EXPECT_EQ(batch.pickRelY, 0.5F);
    batch.Ltray[0].column(8) = "500";
    batch.Ltray[0].column(9) = "-3";
    batch.ApplyRow(noFunction, 1, false);
    EXPECT_EQ(batch.pickRelX, static_cast<float>(199.0 / 200));
    EXPECT_EQ(batch.pickRelY, 0.0F);
}

TEST_F(Row, ThePointIsRoundedToWholePixelsFirst) {
    addRow(noFunction, {"0", "0", "0", "0", "0", "False", "", "20.5", "43.75"});
    batch.ApplyRow(noFunction, 1, false);
    EXPECT_EQ(batch.pickRelX, static_cast<float>(20.0 / 200));
    EXPECT_EQ(batch.pickRelY, static_cast<float>(44.0 / 174));
}

TEST_F(Row, InARunThePointKeepsItsRelativePlaceInAPictureOfAnySize) {
    addRow(noFunction, {"0", "0", "0", "0", "0", "False", "", "100", "87"});
    for (const auto& [width, height] : {std::pair{400, 300}, {200, 174}, {31, 1000}, {1, 1}}) {
        batch.iSrc.setPicture(Bitmap(width, height));
        batch.ApplyRow(noFunction, 1, true);
        EXPECT_FLOAT_EQ(batch.pickRelX, 0.5F) << width;
        EXPECT_FLOAT_EQ(batch.pickRelY, 0.5F) << height;
    }
}

TEST_F(Row, InARunThePointIsNotBroughtIntoThePicture) {
    addRow(noFunction, {"0", "0", "0", "0", "0", "False", "", "500", "-87"});
    batch.iSrc.setPicture(Bitmap(400, 300));
    batch.ApplyRow(noFunction, 1, true);
    EXPECT_FLOAT_EQ(batch.pickRelX, 2.5F);
    EXPECT_FLOAT_EQ(batch.pickRelY, -0.5F);
}

TEST_F(Row, LeavesTheStoredPointOfTheLastPick) {
    addRow(noFunction, {"0", "0", "0", "0", "0", "False", "", "100", "87"});
    batch.pickX = 3;
    batch.pickY = 4;
    batch.ApplyRow(noFunction, 1, false);
    EXPECT_EQ(batch.pickX, 3);
    EXPECT_EQ(batch.pickY, 4);
}

TEST_F(Row, OfSwapRgbReadsTheBoxesAtTheMomentOfApplication) {
    addRow(26, {"0", "1", "2"});
    batch.chkInvt = {1, 0, 0};
    const auto expected = [this] {
        return filtered(sample, [this](cBitFilter& f) {
            return f.SwapRGB(0, 1, 2, batch.chkInvt[0] != 0, batch.chkInvt[1] != 0,
                             batch.chkInvt[2] != 0, batch.chkKill[0] != 0, batch.chkKill[1] != 0,
                             batch.chkKill[2] != 0);
        });
    };
    batch.ApplyRow(26, 1, false);
    expectResult(expected());

    batch.cFilter.Bits(sample);
    platform.onGiveWay.push_back([this] {
        batch.chkInvt = {0, 0, 1};
        batch.chkKill = {0, 1, 0};
    });
    batch.ApplyRow(26, 1, true);
    expectResult(expected());
}

TEST_F(Chain, AddingMovesTheResultOnAndWritesTheWholeWorkingState) {
    batch.functionId = 12;
    batch.funcParam = {-5, 70000, 0};
    batch.funcColor = {0x00FFFFFF, -1};
    batch.funcOption = true;
    batch.funcStyle = "squary";
    batch.pickX = 12.5F;
    batch.pickY = 100;
    batch.workBits = inverted(sample);
    batch.AddFunction("Sketch");

    expectResult(inverted(sample));
    ASSERT_EQ(batch.Ltray.size(), 1U);
    const TrayRow& row = batch.Ltray[0];
    EXPECT_EQ(row.text, "Sketch");
    EXPECT_EQ(row.Tag, 12);
    EXPECT_EQ(row.columns, (std::array<std::string, 9>{"-5", "70000", "0", "16777215", "-1", "True",
                                                       "squary", "12.5", "100"}));
    ASSERT_EQ(batch.LSelectedFunctions.size(), 1U);
    EXPECT_EQ(batch.LSelectedFunctions[0].text, "Sketch");
    EXPECT_EQ(batch.LSelectedFunctions[0].itemData, 1);
}

TEST_F(Chain, ASecondFunctionWorksOnTheResultOfTheFirst) {
    batch.ShowSheet(1);
    batch.functionId = 1;
    batch.sbFilter[0].value = 20;
    batch.PreviewFunction(1);
    batch.AddFunction("Brightness");
    batch.sbFilter[0].value = 35;
    batch.PreviewFunction(1);
    EXPECT_EQ(batch.Ltray[0].column(1), "20") << "an added row does not change any more";
    EXPECT_EQ(batch.workBits, brightened(brightened(sample, 20), 35));
    batch.AddFunction("Brightness");
    EXPECT_EQ(batch.LSelectedFunctions[1].itemData, 2);
    EXPECT_EQ(batch.cFilter.Bits(), brightened(brightened(sample, 20), 35));
}

TEST_F(Chain, RebuildingAnEmptyOneDoesNothing) {
    batch.sheetReady = true;
    batch.workBits = inverted(sample);
    batch.cFilter.Bits(inverted(sample));
    batch.RebuildChain();
    batch.RebuildChainAndDraw();
    expectResult(inverted(sample));
    EXPECT_EQ(platform.giveWays, 0);
    EXPECT_TRUE(platform.changes.empty());
}

TEST_F(Chain, RebuildingStartsFromTheOriginalAndFollowsTheEntries) {
    batch.sheetReady = true;
    addRow(1, {"200"});
    addRow(51);
    std::swap(batch.LSelectedFunctions[0], batch.LSelectedFunctions[1]);
    batch.cFilter.Bits(PixelBuffer(3, 3));
    batch.workBits = PixelBuffer(3, 3);
    batch.RebuildChain();
    // Inverted first: the other order gives another picture.
    expectResult(brightened(inverted(sample), 200));
    EXPECT_FALSE(batch.workBits == inverted(brightened(sample, 200)));
    EXPECT_EQ(batch.iDst.drawn().pixels(), batch.workBits);
}

TEST_F(Chain, RebuildingReadsTheSheetAgainAndDrawingDoesNot) {
    batch.ShowSheet(1);
    batch.sbFilter[0].value = 7;
    addRow(1, {"40"});
    batch.RebuildChainAndDraw();
    EXPECT_EQ(batch.funcParam[0], 40);
    EXPECT_EQ(batch.iDst.drawn().pixels(), brightened(sample, 40));
    batch.RebuildChain();
    EXPECT_EQ(batch.funcParam[0], 7);
    EXPECT_EQ(batch.iDst.drawn().pixels(), brightened(sample, 40));
}

TEST_F(Chain, WithoutASheetRebuildingComputesAndOnlyDrawingShows) {
    batch.sheetReady = false;
    addRow(51);
    batch.RebuildChain();
    expectResult(inverted(sample));
    EXPECT_EQ(batch.iDst.drawn().pixels(), sample);
    batch.RebuildChainAndDraw();
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample));
}

TEST_F(Chain, AnEntryWithoutItsRowRepeatsTheIdBeforeIt) {
    addRow(1, {"10"});
    batch.LSelectedFunctions.push_back({"lost", 99});
    batch.RebuildChain();
    expectResult(brightened(brightened(sample, 10), 10));
}

TEST_F(Chain, AnIdThatDoesNotFit16BitsIsPassedOver) {
    addRow(1, {"10"});
    addRow(51 + 65536);
    batch.RebuildChain();
    expectResult(brightened(sample, 10));
}

TEST_F(Chain, AnEntryThatGoesWhileTheChainIsBuiltRepeatsTheOneBefore) {
    addRow(1, {"10"});
    addRow(51);
    platform.onGiveWay.push_back([this] { batch.LSelectedFunctions.pop_back(); });
    batch.RebuildChain();
    expectResult(brightened(brightened(sample, 10), 10));
}

/// Applies the pool as a run does.
void applyPool(cBatch& batch) {
    for (size_t j = 1; j <= batch.Ltray.size(); ++j)
        batch.ApplyRow(static_cast<int16_t>(batch.Ltray[j - 1].Tag), static_cast<int16_t>(j), true);
}

TEST_F(Chain, ARemovedFunctionLeavesThePreviewButNotThePool) {
    batch.sheetReady = true;
    addRow(51);
    addRow(1, {"60"});
    batch.RemoveFunction(0);
    ASSERT_EQ(batch.LSelectedFunctions.size(), 1U);
    EXPECT_EQ(batch.LSelectedFunctions[0].itemData, 2);
    ASSERT_EQ(batch.Ltray.size(), 2U);
    expectResult(brightened(sample, 60));
    EXPECT_EQ(batch.iDst.drawn().pixels(), brightened(sample, 60));

    batch.cFilter.Bits(sample);
    applyPool(batch);
    expectResult(brightened(inverted(sample), 60));
}

TEST_F(Chain, RemovingTheLastFunctionShowsTheSampleAgain) {
    batch.sheetReady = true;
    addRow(51);
    batch.RebuildChain();
    batch.RemoveFunction(0);
    EXPECT_TRUE(batch.LSelectedFunctions.empty());
    EXPECT_EQ(batch.Ltray.size(), 1U);
    expectResult(sample);
    EXPECT_EQ(batch.iDst.drawn().pixels(), sample);
}

TEST_F(Chain, RemovingWithoutAChosenEntryDoesNothing) {
    addRow(51);
    batch.RemoveFunction(-1);
    batch.RemoveFunction(1);
    EXPECT_EQ(batch.LSelectedFunctions.size(), 1U);
    expectResult(sample);
    EXPECT_TRUE(platform.changes.empty());
}

TEST_F(Chain, MovingAFunctionMovesItsEntryAndNotItsRow) {
    batch.sheetReady = true;
    addRow(51);
    addRow(1, {"200"});
    batch.MoveFunctionDown(0);
    EXPECT_EQ(batch.LSelectedFunctions[0].itemData, 2);
    EXPECT_EQ(batch.LSelectedFunctions[1].itemData, 1);
    EXPECT_EQ(batch.Ltray[0].Tag, 51);
    expectResult(inverted(brightened(sample, 200)));
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(brightened(sample, 200)));

    batch.cFilter.Bits(sample);
    applyPool(batch);
    expectResult(brightened(inverted(sample), 200));

    batch.MoveFunctionUp(1);
    EXPECT_EQ(batch.LSelectedFunctions[0].itemData, 1);
    expectResult(brightened(inverted(sample), 200));
}

TEST_F(Chain, TheFirstEntryDoesNotMoveUpNorTheLastDown) {
    addRow(51);
    addRow(1, {"10"});
    batch.MoveFunctionUp(0);
    batch.MoveFunctionDown(1);
    batch.MoveFunctionUp(-1);
    batch.MoveFunctionUp(2);
    batch.MoveFunctionDown(-1);
    batch.MoveFunctionDown(std::numeric_limits<int32_t>::max());
    EXPECT_EQ(batch.LSelectedFunctions[0].itemData, 1);
    expectResult(sample);
    EXPECT_EQ(platform.giveWays, 0);
}

TEST_F(Chain, ClearingEmptiesChainAndPoolAndShowsTheSample) {
    batch.sheetReady = true;
    addRow(51);
    addRow(1, {"10"});
    batch.RemoveFunction(1);
    batch.ClearFunctions();
    EXPECT_TRUE(batch.LSelectedFunctions.empty());
    EXPECT_TRUE(batch.Ltray.empty());
    expectResult(sample);
    EXPECT_EQ(batch.iDst.drawn().pixels(), sample);
}

TEST_F(Chain, ClearingAnEmptyOneKeepsThePreviewedResultAndThePool) {
    batch.ShowSheet(51);
    batch.PreviewFunction(51);
    addRow(1, {"10"});
    batch.LSelectedFunctions.clear();
    batch.ClearFunctions();
    EXPECT_EQ(batch.Ltray.size(), 1U);
    EXPECT_EQ(batch.workBits, inverted(sample));
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample));
}

}  // namespace
}  // namespace tessarine::tests
