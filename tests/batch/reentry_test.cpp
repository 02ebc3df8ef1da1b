#include <functional>

#include "batch/list_files.h"
#include "chain_fixture.h"
#include "support/paths.h"

// Previews and rebuilds give way to events: what happens meanwhile comes later and holds.

namespace tessarine::tests {
namespace {

class Reentry : public ChainFixture {
  protected:
    void meanwhile(std::function<void()> event) { platform.onGiveWay.push_back(std::move(event)); }
    void select(int32_t id) { batch.SelectNode(findFunction(id)->treeIndex); }
};

TEST_F(Reentry, AFunctionChosenDuringAPreviewIsTheOneThatIsSeen) {
    select(1);
    meanwhile([this] { select(51); });
    batch.MoveSlider(0, 50);
    EXPECT_EQ(batch.functionId, 51);
    EXPECT_EQ(batch.workBits, inverted(sample));
    EXPECT_EQ(batch.iDst.drawn().pixels(), inverted(sample));
}

TEST_F(Reentry, ASliderMovedDuringItsPreviewIsSeenAtItsLastPlace) {
    select(1);
    meanwhile([this] { batch.MoveSlider(0, 80); });
    batch.MoveSlider(0, 50);
    EXPECT_EQ(batch.funcParam[0], 80);
    EXPECT_EQ(batch.workBits, brightened(sample, 80));
    EXPECT_EQ(batch.sbFilter[0].valueText, "80");
}

TEST_F(Reentry, AFunctionAddedDuringItsPreviewIsAddedWithItsResult) {
    select(1);
    meanwhile([this] { batch.CmdAdd(); });
    batch.MoveSlider(0, 50);
    ASSERT_EQ(batch.Ltray.size(), 1U);
    EXPECT_EQ(batch.Ltray[0].column(1), "50");
    expectResult(brightened(sample, 50));
}

TEST_F(Reentry, AnEntryRemovedDuringAPreviewIsNotInTheResult) {
    addRow(51);
    addRow(1, {"30"});
    batch.RebuildChain();
    select(1);
    meanwhile([this] { batch.RemoveFunction(1); });
    batch.MoveSlider(0, 50);
    expectResult(inverted(sample));
}

TEST_F(Reentry, ARebuildStartsOverWithTheChainAsItIsThen) {
    addRow(1, {"40"});
    addRow(51);
    addRow(1, {"-20"});
    meanwhile([] {});
    meanwhile([this] { batch.RemoveFunction(0); });
    batch.RebuildChain();
    expectResult(brightened(inverted(sample), -20));
}

TEST_F(Reentry, AChainClearedDuringItsRebuildLeavesTheSample) {
    addRow(1, {"40"});
    addRow(51);
    meanwhile([this] { batch.ClearFunctions(); });
    batch.RebuildChain();
    expectResult(sample);
}

TEST_F(Reentry, TheSheetDoesNotReachIntoARebuild) {
    select(1);
    addRow(1, {"40"});
    addRow(51);
    meanwhile([this] { batch.MoveSlider(0, 200); });
    batch.RebuildChain();
    expectResult(inverted(brightened(sample, 40)));
}

TEST_F(Reentry, ARebuildDuringARebuildIsNotMadeTwice) {
    batch.sheetReady = true;
    for (int i = 0; i < 10; ++i)
        addRow(51);
    meanwhile([this] { batch.RebuildChain(); });
    batch.RebuildChain();
    expectResult(sample);
    // The first row of the outer one, the inner one's ten, and the two that show the result.
    EXPECT_EQ(platform.giveWays, 1 + 10 + 2);
}

TEST_F(Reentry, ARowThatCannotBeAppliedDoesNotHoldARebuildUp) {
    addRow(100000);
    addRow(51);
    batch.LSelectedFunctions.push_back({"nowhere", 70000});
    batch.RebuildChain();
    expectResult(inverted(sample));
}

TEST_F(Reentry, ALongListIsShownOnceWhenItIsRead) {
    const ScratchFolder folder;
    const std::string path = (folder.path() / "long.qfk").string();
    FunctionRecord record;
    record.id = "63";
    writeFunctionList(path, std::vector<FunctionRecord>(2000, record));
    addRow(51);
    batch.OpenFunctionList(path);
    EXPECT_EQ(batch.LSelectedFunctions.size(), 2000U);
    EXPECT_EQ(platform.timesChanged("LSelectedFunctions"), 2) << "emptied, and filled";
}

}  // namespace
}  // namespace tessarine::tests
