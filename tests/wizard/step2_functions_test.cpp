#include <string>
#include <vector>

#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QToolButton>

#include "batch/list_files.h"
#include "step2_fixture.h"

// Choosing functions in the catalogue, and the Function Basket.

namespace tessarine::tests {
namespace {

using Texts = std::vector<std::string>;

// ---- The catalogue ----

TEST_F(Step2, TheTreeHoldsTheCatalogueWithAllGroupsExpanded) {
    ASSERT_EQ(tree.topLevelItemCount(), 4);
    int index = 0;
    for (const TreeNode& node : catalogueTree()) {
        ++index;
        const QTreeWidgetItem* item = tree.node(static_cast<int16_t>(index));
        ASSERT_NE(item, nullptr) << index;
        EXPECT_EQ(item->text(0).toStdString(), node.text);
        EXPECT_EQ(item->parent() == nullptr, node.functionId < 0) << index;
        EXPECT_EQ(item->isExpanded(), node.functionId < 0) << index;
    }
    EXPECT_EQ(index, 73);
    EXPECT_EQ(tree.node(74), nullptr);
    EXPECT_TRUE(tree.selectedItems().isEmpty());
    EXPECT_EQ(tree.itemAt(2, 2), tree.node(1)) << "the first group stands at the top";
}

TEST_F(Step2, NothingIsShownBeforeTheFirstSelection) {
    EXPECT_EQ(text("CLab"), "Functions Preview");
    EXPECT_EQ(batch.functionId, 5);
    for (const char* panel : {"frFactors", "frOption", "frColor", "frBanks", "FrmGlass",
                              "FrmCurtain", "FrResize", "FrRotate"})
        EXPECT_FALSE(shows(panel)) << panel;
    EXPECT_EQ(list.count(), 0);
}

TEST_F(Step2, AClickOnAFunctionShowsItsSheetAndPreviewsIt) {
    clickNode(negativeNode);
    EXPECT_EQ(batch.functionId, 51);
    EXPECT_EQ(text("CLab"), "[Negative]");
    const QColor plain = sampleAt(30, 40);
    EXPECT_EQ(shownAt(iOri, 30, 40), plain);
    EXPECT_EQ(shownAt(iDst, 30, 40),
              QColor(255 - plain.red(), 255 - plain.green(), 255 - plain.blue()));
}

TEST_F(Step2, AClickOnAGroupKeepsTheSheet) {
    clickNode(brightnessNode);
    dragSlider(0, 100);
    const int32_t level = batch.sbFilter[0].value;
    for (const int group : {1, 11, 31, 61}) {
        clickNode(group);
        EXPECT_EQ(batch.functionId, 1);
        EXPECT_EQ(text("CLab"), "[Brightness]");
        EXPECT_EQ(batch.sbFilter[0].value, level);
        EXPECT_TRUE(shows("frFactors"));
    }
}

TEST_F(Step2, TheArrowKeysAndEnterChooseAsAClickDoes) {
    clickNode(brightnessNode);
    tree.setFocus();
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(text("CLab"), "[Contrast]");
    dragSlider(0, 50);
    QTest::keyClick(&tree, Qt::Key_Return);
    EXPECT_EQ(batch.sbFilter[0].value, 0) << "the sheet starts afresh, as after a click";
    QTest::keyClick(&tree, Qt::Key_Up);
    QTest::keyClick(&tree, Qt::Key_Up);
    EXPECT_EQ(text("CLab"), "[Brightness]") << "the group ahead keeps the sheet";
    batch.CmdAdd();
    EXPECT_EQ(list.count(), 0);
}

TEST_F(Step2, AReleaseOverAnotherNodeLeavesNoSelectionWithoutItsSheet) {
    const QPoint brightness = placeOf(brightnessNode);
    QTest::mousePress(tree.viewport(), Qt::LeftButton, {}, brightness);
    QTest::mouseRelease(tree.viewport(), Qt::LeftButton, {}, placeOf(3));
    ASSERT_EQ(tree.selectedItems().size(), 1);
    EXPECT_EQ("[" + tree.selectedItems()[0]->text(0).toStdString() + "]", text("CLab"));
}

// ---- Adding ----

TEST_F(Step2, AddingWithoutASelectedNodeAddsNothing) {
    press("CmdAdd");
    press("TBTray(1)");
    EXPECT_EQ(list.count(), 0);
    EXPECT_TRUE(batch.Ltray.empty());
}

TEST_F(Step2, AddingAGroupAddsNothing) {
    clickNode(brightnessNode);
    for (const int group : {1, 11, 31, 61}) {
        clickNode(group);
        press("CmdAdd");
        press("TBTray(1)");
    }
    doubleClickNode(adjustmentsNode);
    EXPECT_EQ(list.count(), 0);
    EXPECT_TRUE(batch.Ltray.empty());
}

TEST_F(Step2, TheButtonAndTheToolbarAdd) {
    clickNode(brightnessNode);
    dragSlider(0, 100);
    const PixelBuffer previewed = batch.workBits;
    press("CmdAdd");
    press("TBTray(1)");
    EXPECT_EQ(listed(), (Texts{"Brightness", "Brightness"}));
    ASSERT_EQ(batch.Ltray.size(), 2U);
    EXPECT_EQ(batch.Ltray[0].Tag, 1);
    EXPECT_EQ(batch.Ltray[0].column(1), std::to_string(batch.sbFilter[0].value));
    EXPECT_EQ(batch.LSelectedFunctions[1].itemData, 2);
    EXPECT_EQ(batch.cFilter.Bits(), previewed);
}

TEST_F(Step2, TwoDoubleClicksAddTwoRowsOfWhichTheSecondWorksOnTheFirst) {
    doubleClickNode(negativeNode);
    EXPECT_EQ(listed(), Texts{"Negative"});
    EXPECT_NE(batch.workBits, batch.originalBits);
    doubleClickNode(negativeNode);
    EXPECT_EQ(listed(), (Texts{"Negative", "Negative"}));
    EXPECT_EQ(batch.workBits, batch.originalBits) << "the negative of the negative";
    doubleClickNode(blurNode);
    doubleClickNode(blurNode);
    ASSERT_EQ(list.count(), 4);
    EXPECT_EQ(batch.Ltray[3].Tag, 6);
}

TEST_F(Step2, ADoubleClickWithAnotherButtonAddsNothing) {
    const QPoint place = placeOf(negativeNode);
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        QTest::mouseClick(tree.viewport(), button, {}, place);
        QTest::mouseDClick(tree.viewport(), button, {}, place);
    }
    EXPECT_EQ(list.count(), 0);
}

TEST_F(Step2, AfterAddingTheSliderChangesOnlyTheNewPreview) {
    clickNode(brightnessNode);
    dragSlider(0, 20);
    press("CmdAdd");
    const PixelBuffer added = batch.cFilter.Bits();
    const std::string value = batch.Ltray[0].column(1);
    EXPECT_NEAR(std::stoi(value), 20, 2) << "as near as a pixel comes";
    dragSlider(0, 200);
    EXPECT_EQ(batch.Ltray[0].column(1), value);
    EXPECT_EQ(batch.cFilter.Bits(), added);
    EXPECT_NE(batch.workBits, added);
}

TEST_F(Step2, ADropOfTheFunctionAddsIt) {
    clickNode(brightnessNode);
    QMimeData dragged;
    dragged.setData(functionDragFormat, {});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &dragged, Qt::LeftButton, {});
    QApplication::sendEvent(list.viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &dragged, Qt::LeftButton, {});
    QApplication::sendEvent(list.viewport(), &drop);
    EXPECT_EQ(listed(), Texts{"Brightness"});
    EXPECT_EQ(batch.Ltray.size(), 1U);
    clickNode(adjustmentsNode);
    QApplication::sendEvent(list.viewport(), &drop);
    EXPECT_EQ(list.count(), 1) << "a group was selected";
}

TEST_F(Step2, TheListTakesNothingButFunctions) {
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile("/tmp/a.png")});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &files, Qt::LeftButton, {});
    enter.setAccepted(false);
    QApplication::sendEvent(list.viewport(), &enter);
    EXPECT_FALSE(enter.isAccepted());
}

TEST_F(Step2, AFunctionListDroppedOnTheBasketIsOpened) {
    const std::string path = (desktop.settings.path() / "chain.qfk").string();
    FunctionRecord record;
    record.name = "Negative";
    record.id = "51";
    writeFunctionList(path, std::vector{record});
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &files, Qt::LeftButton, {});
    QApplication::sendEvent(list.viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &files, Qt::LeftButton, {});
    QApplication::sendEvent(list.viewport(), &drop);
    EXPECT_EQ(listed(), Texts{"Negative"});
    EXPECT_NE(shownAt(iDst, 50, 50), sampleAt(50, 50));
}

// Without a screen a drag ends where it starts; what it carries can still be seen.
TEST_F(Step2, ADragStartsOnASelectedFunctionWithTheDropPicture) {
    clickNode(brightnessNode);
    dragSlider(0, 40);
    const QPoint from = placeOf(brightnessNode);
    QTest::mousePress(tree.viewport(), Qt::LeftButton, {}, from);
    drag(*tree.viewport(), from + QPoint(3, 3));
    drag(*tree.viewport(), from + QPoint(30, 30));
    const auto* started = tree.findChild<QDrag*>();
    ASSERT_NE(started, nullptr);
    EXPECT_TRUE(started->mimeData()->hasFormat(functionDragFormat));
    EXPECT_FALSE(started->pixmap().isNull());
    EXPECT_EQ(batch.sbFilter[0].value, 40) << "the sheet keeps its values";
}

TEST_F(Step2, ADragOfANodeThatWasOnlyPressedSelectsItFirst) {
    clickNode(brightnessNode);
    const QPoint from = placeOf(negativeNode);
    QTest::mousePress(tree.viewport(), Qt::LeftButton, {}, from);
    drag(*tree.viewport(), from + QPoint(3, 3));
    drag(*tree.viewport(), from + QPoint(30, 10));
    EXPECT_NE(tree.findChild<QDrag*>(), nullptr);
    EXPECT_EQ(batch.functionId, 51);
}

TEST_F(Step2, AGroupIsNotDragged) {
    clickNode(adjustmentsNode);
    const QPoint from = placeOf(adjustmentsNode);
    QTest::mousePress(tree.viewport(), Qt::LeftButton, {}, from);
    drag(*tree.viewport(), from + QPoint(3, 3));
    drag(*tree.viewport(), from + QPoint(30, 30));
    EXPECT_EQ(tree.findChild<QDrag*>(), nullptr);
}

// ---- The basket ----

class Basket : public Step2 {
  protected:
    Basket() {
        for (const char* name : {"Brightness", "Negative", "Greyscale"})
            doubleClickNode(findFunction(name)->treeIndex);
    }
    std::vector<int32_t> rows() const {
        std::vector<int32_t> result;
        for (const ChainEntry& entry : batch.LSelectedFunctions)
            result.push_back(entry.itemData);
        return result;
    }
    using Rows = std::vector<int32_t>;
};

TEST_F(Basket, RemovingWithoutASelectedEntryDoesNothing) {
    const PixelBuffer shown = batch.workBits;
    press("cmdRemove");
    press("TBTray(2)");
    EXPECT_EQ(list.count(), 3);
    EXPECT_EQ(batch.workBits, shown);
}

TEST_F(Basket, RemovingTakesTheEntryAndKeepsItsRow) {
    clickEntry(1);
    press("cmdRemove");
    EXPECT_EQ(listed(), (Texts{"Brightness", "Greyscale"}));
    EXPECT_EQ(batch.Ltray.size(), 3U);
    EXPECT_EQ(rows(), (Rows{1, 3}));
    EXPECT_EQ(list.currentRow(), 1) << "the entry that took its place is selected";
    press("TBTray(2)");
    EXPECT_EQ(listed(), Texts{"Brightness"});
    EXPECT_EQ(list.currentRow(), 0) << "at the end the one before it";
    clickNode(brightnessNode);
    dragSlider(0, 90);
    press("cmdRemove");
    EXPECT_EQ(list.count(), 0);
    EXPECT_EQ(batch.Ltray.size(), 3U);
    EXPECT_EQ(batch.workBits, batch.originalBits);
    EXPECT_EQ(batch.cFilter.Bits(), batch.originalBits);
    EXPECT_EQ(shownAt(iDst, 50, 50), sampleAt(50, 50));
}

TEST_F(Basket, TheDeleteKeyRemoves) {
    clickEntry(0);
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_EQ(listed(), (Texts{"Negative", "Greyscale"}));
}

TEST_F(Basket, StartingOverClearsListAndRows) {
    press("cmdStart");
    EXPECT_EQ(list.count(), 0);
    EXPECT_TRUE(batch.Ltray.empty());
    EXPECT_EQ(batch.workBits, batch.originalBits);
    EXPECT_EQ(shownAt(iDst, 50, 50), sampleAt(50, 50));
}

TEST_F(Basket, TheToolbarClears) {
    press("TBTray(3)");
    EXPECT_EQ(list.count(), 0);
    EXPECT_TRUE(batch.Ltray.empty());
}

TEST_F(Step2, StartingOverWithAnEmptyBasketKeepsThePreview) {
    clickNode(negativeNode);
    const QColor shown = shownAt(iDst, 50, 50);
    ASSERT_NE(shown, sampleAt(50, 50));
    press("cmdStart");
    press("TBTray(3)");
    EXPECT_EQ(shownAt(iDst, 50, 50), shown);
    EXPECT_NE(batch.workBits, batch.originalBits);
}

TEST_F(Basket, MovingUpAndDownTakesTheEntryWithItsRowAndSelectsIt) {
    clickEntry(2);
    press("TBTray(7)");
    EXPECT_EQ(listed(), (Texts{"Brightness", "Greyscale", "Negative"}));
    EXPECT_EQ(rows(), (Rows{1, 3, 2}));
    EXPECT_EQ(list.currentRow(), 1);
    press("TBTray(7)");
    EXPECT_EQ(listed(), (Texts{"Greyscale", "Brightness", "Negative"}));
    EXPECT_EQ(list.currentRow(), 0);
    press("TBTray(8)");
    EXPECT_EQ(listed(), (Texts{"Brightness", "Greyscale", "Negative"}));
    EXPECT_EQ(list.currentRow(), 1);
    EXPECT_TRUE(list.item(1)->isSelected());
    EXPECT_EQ(batch.Ltray[1].text, "Negative") << "rows stay where they are";
}

TEST_F(Basket, TheFirstGoesNoFurtherUpAndTheLastNoFurtherDown) {
    const Texts before = listed();
    clickEntry(0);
    press("TBTray(7)");
    EXPECT_EQ(listed(), before);
    EXPECT_EQ(list.currentRow(), 0);
    clickEntry(2);
    press("TBTray(8)");
    EXPECT_EQ(listed(), before);
    list.clearSelection();
    press("TBTray(7)");
    press("TBTray(8)");
    EXPECT_EQ(listed(), before);
}

TEST_F(Basket, ControlWithTheArrowsMovesTheEntry) {
    clickEntry(1);
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(listed(), (Texts{"Negative", "Brightness", "Greyscale"}));
    QTest::keyClick(&list, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(listed(), (Texts{"Brightness", "Negative", "Greyscale"}));
}

TEST_F(Basket, RefreshRebuildsTheChainAndDropsThePreview) {
    const PixelBuffer chain = batch.cFilter.Bits();
    clickNode(brightnessNode);
    dragSlider(0, 150);
    ASSERT_NE(batch.workBits, chain);
    press("cmdRefresh");
    EXPECT_EQ(batch.workBits, chain);
    dragSlider(0, 120);
    ASSERT_NE(batch.workBits, chain);
    QTest::keyClick(&step, Qt::Key_F5);
    EXPECT_EQ(batch.workBits, chain);
}

TEST_F(Basket, ListsAreSavedAndOpened) {
    const std::string path = (desktop.settings.path() / "chain.qfk").string();
    desktop.saveAnswers.push_back(path);
    press("TBTray(5)");
    EXPECT_EQ(desktop.saveFilters, Texts{"Function List(*.qfk)|*.qfk"});
    press("TBTray(3)");
    ASSERT_EQ(list.count(), 0);
    desktop.openAnswers.push_back(path);
    press("TBTray(4)");
    EXPECT_EQ(desktop.openFilters, Texts{"Functions List(*.qfk)|*.qfk"});
    EXPECT_EQ(listed(), (Texts{"Brightness", "Negative", "Greyscale"}));
    EXPECT_EQ(rows(), (Rows{1, 2, 3}));
    EXPECT_TRUE(list.selectedItems().isEmpty());
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(Step2, AListOpenedBeforeAnyFunctionIsChosenIsShownAsItIsEdited) {
    FunctionRecord negative;
    negative.name = "Negative";
    negative.id = "51";
    batch.AppendRecord(negative);
    batch.AppendRecord(negative);
    batch.RebuildChainAndDraw();
    ASSERT_EQ(shownAt(iDst, 50, 50), sampleAt(50, 50));
    batch.RemoveFunction(0);
    EXPECT_NE(shownAt(iDst, 50, 50), sampleAt(50, 50));
    press("cmdStart");
    EXPECT_EQ(shownAt(iDst, 50, 50), sampleAt(50, 50));
}

TEST_F(Basket, OpeningAndSavingRebuildEvenAfterACancel) {
    const PixelBuffer chain = batch.cFilter.Bits();
    for (const char* button : {"TBTray(4)", "TBTray(5)"}) {
        clickNode(brightnessNode);
        dragSlider(0, 150);
        ASSERT_NE(batch.workBits, chain);
        press(button);
        EXPECT_EQ(batch.workBits, chain) << button;
        EXPECT_EQ(list.count(), 3);
    }
}

TEST_F(Basket, AFileOfAnotherKindIsRefusedAndTheBasketStays) {
    desktop.openAnswers.push_back("/tmp/list.txt");
    press("TBTray(4)");
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0], (RecordedDesktop::Box{"This is  not a valid Function List!",
                                                      Icon::critical, "Invalid Functions List"}));
    EXPECT_EQ(list.count(), 3);
}

TEST_F(Basket, EveryButtonOfTheToolbarButTheSixthIsThere) {
    for (int i = 1; i <= 8; ++i) {
        const QString name = QString("TBTray(%1)").arg(i);
        EXPECT_EQ(step.findChild<QToolButton*>(name) != nullptr, i != 6) << i;
    }
    EXPECT_EQ(at<QPushButton>("CmdAdd").text().remove('&'), "<< Add Function");
    EXPECT_EQ(at<QPushButton>("cmdRemove").text().remove('&'), "Remove Function");
    EXPECT_EQ(at<QPushButton>("cmdStart").text().remove('&'), "Start Over");
    EXPECT_EQ(at<QPushButton>("cmdRefresh").text().remove('&'), "Refresh");
}

}  // namespace
}  // namespace tessarine::tests
