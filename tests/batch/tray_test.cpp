#include <gtest/gtest.h>

#include "sheet_fixture.h"

// The tray's toolbar, the selected entry of the basket, and the cross at the picked point.

namespace tessarine::tests {
namespace {

class Tray : public Sheet {
  protected:
    void add(int32_t id) {
        select(id);
        batch.CmdAdd();
    }
    std::string names() const {
        std::string result;
        for (const ChainEntry& entry : batch.LSelectedFunctions)
            result += entry.text.substr(0, 1);
        return result;
    }
};

constexpr int brightness = 1;
constexpr int contrast = 2;
constexpr int lens = 27;
constexpr int negative = 51;

TEST_F(Tray, WithoutASelectedNodeOrWithAGroupNothingIsAdded) {
    batch.CmdAdd();
    batch.TBTray(1);
    select(brightness);
    for (const int16_t group : {1, 11, 31, 61}) {
        batch.SelectNode(group);
        batch.CmdAdd();
        batch.TBTray(1);
    }
    EXPECT_TRUE(batch.LSelectedFunctions.empty());
    EXPECT_TRUE(batch.Ltray.empty());
    EXPECT_EQ(batch.cFilter.Bits(), batch.originalBits);
}

TEST_F(Tray, AddingTakesTheNodesTextAndThePreviewedResult) {
    select(negative);
    batch.CmdAdd();
    ASSERT_EQ(batch.Ltray.size(), 1U);
    EXPECT_EQ(batch.Ltray[0].text, "Negative");
    EXPECT_EQ(batch.Ltray[0].Tag, negative);
    EXPECT_EQ(batch.cFilter.Bits(), batch.workBits);
    EXPECT_NE(batch.cFilter.Bits(), batch.originalBits);
    EXPECT_EQ(batch.selectedFunction, -1) << "adding selects nothing";
}

TEST_F(Tray, RemovingPassesTheSelectionToTheNextEntry) {
    for (const int id : {brightness, contrast, negative})
        add(id);
    batch.TBTray(2);
    EXPECT_EQ(names(), "BCN") << "no entry was selected";
    batch.selectedFunction = 1;
    batch.TBTray(2);
    EXPECT_EQ(names(), "BN");
    EXPECT_EQ(batch.selectedFunction, 1);
    batch.RemoveFunction(0);
    EXPECT_EQ(batch.selectedFunction, 0) << "the selected entry moved up";
    batch.TBTray(2);
    EXPECT_EQ(names(), "");
    EXPECT_EQ(batch.selectedFunction, -1);
    EXPECT_EQ(batch.Ltray.size(), 3U);
    EXPECT_EQ(batch.workBits, batch.originalBits);
}

TEST_F(Tray, TheEntryIsSelectedInItsNewPlaceBeforeTheChainIsRebuilt) {
    for (const int id : {brightness, contrast, negative})
        add(id);
    batch.selectedFunction = 2;
    forget();
    int32_t seen = -1;
    platform.onGiveWay.push_back([&] { seen = batch.selectedFunction; });
    batch.TBTray(7);
    EXPECT_EQ(names(), "BNC");
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(batch.selectedFunction, 1);
    batch.TBTray(8);
    EXPECT_EQ(names(), "BCN");
    EXPECT_EQ(batch.selectedFunction, 2);
    batch.TBTray(8);
    EXPECT_EQ(names(), "BCN");
    batch.selectedFunction = -1;
    batch.TBTray(7);
    batch.TBTray(8);
    batch.TBTray(6);
    batch.TBTray(0);
    batch.TBTray(9);
    EXPECT_EQ(names(), "BCN");
}

TEST_F(Tray, ClearingAlsoDropsTheSelection) {
    batch.TBTray(3);
    EXPECT_TRUE(platform.changes.empty()) << "there is nothing to clear";
    add(brightness);
    batch.selectedFunction = 0;
    batch.TBTray(3);
    EXPECT_TRUE(batch.Ltray.empty());
    EXPECT_EQ(batch.selectedFunction, -1);
}

TEST_F(Tray, OpeningAndSavingRebuildTheChain) {
    add(negative);
    const PixelBuffer chain = batch.workBits;
    for (const int16_t button : {4, 5}) {
        select(brightness);
        batch.MoveSlider(0, 200);
        ASSERT_NE(batch.workBits, chain);
        batch.TBTray(button);
        EXPECT_EQ(batch.workBits, chain) << button;
    }
    EXPECT_EQ(platform.openFilters.size(), 1U);
    EXPECT_EQ(platform.saveFilters.size(), 1U);
}

// ---- The picked point ----

TEST_F(Tray, PickingRepaintsGivesWayMarksAndPreviewsInThisOrder) {
    select(lens);
    platform.onGiveWay.push_back([this] { platform.changes.emplace_back("(events)"); });
    batch.PickPoint(50, 87);
    ASSERT_GE(platform.changes.size(), 4U);
    EXPECT_EQ(platform.changes[0], "iOri");
    EXPECT_EQ(platform.changes[1], "Col(0)");
    EXPECT_EQ(platform.changes[2], "(events)");
    EXPECT_EQ(platform.changes[3], "pickMark");
    EXPECT_EQ(platform.changes.back(), "iDst");
    EXPECT_EQ(platform.giveWays, 2);
}

TEST_F(Tray, WithoutAPointAskedForTheOriginalIsRepaintedAndNothingElse) {
    select(brightness);
    batch.PickPoint(50, 87);
    EXPECT_EQ(platform.changes, std::vector<std::string>{"iOri"});
    EXPECT_EQ(batch.pickX, 0);
    EXPECT_EQ(platform.giveWays, 0);
}

TEST_F(Tray, TheCrossStandsAtThePointAndChangesBetweenRedAndBlack) {
    select(lens);
    batch.TickSelect();
    EXPECT_EQ(batch.pickMark.x, 100);
    EXPECT_EQ(batch.pickMark.y, 87);
    EXPECT_EQ(batch.pickMark.colour, 255U);
    batch.PickPoint(500, -3);
    EXPECT_EQ(batch.pickMark.x, 199);
    EXPECT_EQ(batch.pickMark.y, 0);
    EXPECT_EQ(batch.pickMark.colour, 255U) << "the colour is the last tick's";
    batch.TickSelect();
    EXPECT_EQ(batch.pickMark.colour, 0U);
    batch.TickSelect();
    EXPECT_EQ(batch.pickMark.colour, 255U);
    EXPECT_EQ(platform.timesChanged("pickMark"), 4);
}

}  // namespace
}  // namespace tessarine::tests
