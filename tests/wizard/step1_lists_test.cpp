#include <memory>

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QToolButton>
#include <QUrl>

#include "batch/list_files.h"
#include "step1_fixture.h"
#include "support/buttons.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

TEST_F(Step1, AFolderOfTheTreeIsListedWithIconsSizesAndTypes) {
    file("b.png", 1536);
    file("a.JPG", 10);
    file("text.txt");
    goToScratch();
    EXPECT_THAT(column(folder, 0), ElementsAre("a.JPG", "b.png"));
    EXPECT_THAT(column(folder, 1), ElementsAre("0 KB", "1.5 KB"));
    for (const std::string& type : column(folder, 2))
        EXPECT_FALSE(type.empty());
    EXPECT_THAT(checks(folder), ElementsAre(true, true));
    EXPECT_EQ(batch.SB[3].text, "Selected File(s):2");
    EXPECT_EQ(batch.SB[4].text, "Current Directory : " + scratch.path().string());
    const auto heading = [this](int number) {
        return folder.model()->headerData(number, Qt::Horizontal).toString().toStdString();
    };
    EXPECT_EQ(heading(0), "File Name");
    EXPECT_EQ(heading(1), "Size");
    EXPECT_EQ(heading(2), "Type");
    EXPECT_TRUE(folder.model()->index(0, 0).data(Qt::DecorationRole).canConvert<QIcon>());
}

TEST_F(Step1, AnotherFolderOfTheTreeReplacesTheList) {
    file("one/a.jpg");
    file("two/b.jpg");
    goTo(scratch / "one");
    EXPECT_THAT(column(folder, 0), ElementsAre("a.jpg"));
    // The tree reads its folders by and by.
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return tree.indexBelow(tree.currentIndex()).data().toString() == "two"; }));
    tree.setFocus();
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(tree.path().toStdString(), scratch / "two");
    EXPECT_THAT(column(folder, 0), ElementsAre("b.jpg"));
    EXPECT_EQ(batch.startupRecord.lastFolder.rightTrimmed(), scratch / "two");
}

TEST_F(Step1, WithoutAFolderFromTheSettingsTheTreeStartsAtHome) {
    const QByteArray home = qgetenv("HOME");
    file("a.jpg");
    RecordedDesktop other;
    StartupRecord record = StartupRecord::defaults(other.programFolder());
    record.lastFolder = "/no/such/folder";
    writeAll(other.settings / "tsStart.up", record.toBytes());
    qputenv("HOME", scratch.path().c_str());
    fBatch second(other);
    second.start();
    control<Frame_step1>(second, "Frame_step1").start();
    EXPECT_EQ(control<FolderTree>(second, "FT").path().toStdString(), scratch.path());
    EXPECT_THAT(column(control<QTreeView>(second, "lvFolder"), 0), ElementsAre("a.jpg"));
    qputenv("HOME", home);
}

TEST_F(Step1, AStartLeavesTheFolderOfTheSettings) {
    goToScratch();
    control<Frame_step1>(window, "Frame_step1").start();
    EXPECT_EQ(tree.path().toStdString(), scratch.path());
}

TEST_F(Step1, TicksAreSetByClickSpaceAndButtons) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        file(name);
    goToScratch();
    const QRect first = folder.visualRect(folder.model()->index(0, 0));
    QTest::mouseClick(folder.viewport(), Qt::LeftButton, {},
                      {first.left() + 10, first.center().y()});
    EXPECT_THAT(checks(folder), ElementsAre(false, true, true));
    pressButton("TBFolder(2)");
    EXPECT_THAT(checks(folder), ElementsAre(false, false, false));
    clickRow(folder, 1);
    clickRow(folder, 2, Qt::ShiftModifier);
    QTest::keyClick(&folder, Qt::Key_Space);
    EXPECT_THAT(checks(folder), ElementsAre(false, true, true));
    pressButton("TBFolder(1)");
    EXPECT_THAT(checks(folder), ElementsAre(true, true, true));
    EXPECT_EQ(folder.selectionModel()->selectedRows().size(), 2) << "ticks leave the selection";
}

TEST_F(Step1, TheButtonAddsTheCheckedRowsAndTellsOfDuplicates) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        file(name);
    goToScratch();
    batch.CheckRows({1}, false);
    pressButton("TBFolder(3)");
    EXPECT_THAT(column(selected, 0), ElementsAre("a.jpg", "c.jpg"));
    EXPECT_THAT(column(selected, 1), ElementsAre(scratch.path().string(), scratch.path().string()));
    EXPECT_EQ(batch.SB[2].text, "Basket: 2 file(s)");
    EXPECT_THAT(desktop.boxes, IsEmpty());
    pressButton("TBFolder(1)");
    pressButton("TBFolder(3)");
    EXPECT_THAT(column(selected, 0), ElementsAre("a.jpg", "c.jpg", "b.jpg"));
    EXPECT_EQ(desktop.boxes, duplicatesBox("2"));
    EXPECT_EQ(selected.model()->headerData(1, Qt::Horizontal).toString(), "Parent Folder");
}

TEST_F(Step1, EnterAddsTheSelectedRowsInTheListsOrder) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "d.jpg"})
        file(name);
    goToScratch();
    clickRow(folder, 3);
    clickRow(folder, 1, Qt::ControlModifier);
    QTest::keyClick(&folder, Qt::Key_Return);
    EXPECT_THAT(column(selected, 0), ElementsAre("b.jpg", "d.jpg"));
    QTest::keyClick(&folder, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(desktop.boxes, duplicatesBox("2"));
}

TEST_F(Step1, DeleteRemovesExactlyTheSelectedRows) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "d.jpg", "e.jpg"})
        file(name);
    goToScratch();
    pressButton("TBFolder(3)");
    clickRow(selected, 4);
    clickRow(selected, 0, Qt::ControlModifier);
    clickRow(selected, 2, Qt::ControlModifier);
    QTest::keyClick(&selected, Qt::Key_Delete);
    EXPECT_THAT(basket(), ElementsAre("b.jpg", "d.jpg"));
    EXPECT_THAT(column(selected, 0), ElementsAre("b.jpg", "d.jpg"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 2 file(s)");
    clickRow(selected, 0);
    pressButton("TBSelected(1)");
    EXPECT_THAT(column(selected, 0), ElementsAre("d.jpg"));
    pressButton("TBSelected(2)");
    EXPECT_THAT(column(selected, 0), IsEmpty());
    EXPECT_EQ(batch.SB[2].text, "Basket: 0 file(s)");
}

TEST_F(Step1, RemovedRowsLeaveTheCurrentOneAndThePlaceInTheList) {
    for (int i = 0; i < 1000; ++i)
        batch.lvSelected.push_back(
            {"p", "jpg", "/elsewhere/" + std::to_string(i) + ".jpg", "/elsewhere"});
    batch.platform().changed("lvSelected");
    clickRow(selected, 700);
    clickRow(selected, 702, Qt::ControlModifier);
    clickRow(selected, 704, Qt::ControlModifier);
    const int place = selected.verticalScrollBar()->value();
    QTest::keyClick(&selected, Qt::Key_Delete);
    EXPECT_EQ(selected.model()->rowCount(), 997);
    EXPECT_NEAR(selected.currentIndex().row(), 701, 2);
    EXPECT_NEAR(selected.verticalScrollBar()->value(), place, selected.height());
}

TEST_F(Step1, EnterHeldDownAddsOnce) {
    file("a.jpg");
    goToScratch();
    clickRow(folder, 0);
    QKeyEvent first(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r");
    QKeyEvent next(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", true);
    QApplication::sendEvent(&folder, &first);
    QApplication::sendEvent(&folder, &next);
    EXPECT_THAT(basket(), ElementsAre("a.jpg"));
    EXPECT_THAT(desktop.boxes, IsEmpty());
}

TEST_F(Step1, ListsAreSavedAndOpenedByTheirButtons) {
    file("a.jpg");
    file("b.jpg");
    goToScratch();
    pressButton("TBFolder(3)");
    desktop.saveAnswers.push_back(scratch / "list.qpkl");
    pressButton("TBSelected(4)");
    pressButton("TBSelected(2)");
    desktop.openAnswers.push_back(scratch / "list.qpkl");
    pressButton("TBSelected(3)");
    EXPECT_THAT(column(selected, 0), ElementsAre("a", "b"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 2 file(s)");
    EXPECT_THAT(desktop.saveFilters, ElementsAre("Picture List(*.qpkl)|*.qpkl"));
    EXPECT_THAT(desktop.openFilters, ElementsAre("Picture List(*.qpkl)|*.qpkl"));
}

TEST_F(Step1, TheListShowsWhatIsLeftWhileTheMessageIsOpen) {
    const std::string picture = file("a.jpg");
    goToScratch();
    pressButton("TBFolder(3)");
    writePictureList(scratch / "list.qpkl",
                     std::vector<std::string>{"/gone.jpg", picture, picture});
    desktop.openAnswers.push_back(scratch / "list.qpkl");
    int rows = -1;
    desktop.onBox = [&] { rows = selected.model()->rowCount(); };
    pressButton("TBSelected(3)");
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(desktop.boxes.size(), 1U);
}

TEST_F(Step1, KeysReachEveryButton) {
    file("a.jpg");
    goToScratch();
    ASSERT_TRUE(window.isActiveWindow());
    const auto press = [this](Qt::Key key, Qt::KeyboardModifier modifier) {
        QTest::keyClick(&window, key, modifier);
        EXPECT_TRUE(buttonsRest(window));
    };
    const auto alt = [&](Qt::Key key) { press(key, Qt::AltModifier); };
    const auto control = [&](Qt::Key key) { press(key, Qt::ControlModifier); };
    alt(Qt::Key_U);
    EXPECT_THAT(checks(folder), ElementsAre(false));
    alt(Qt::Key_C);
    EXPECT_THAT(checks(folder), ElementsAre(true));
    alt(Qt::Key_T);
    EXPECT_THAT(basket(), ElementsAre("a.jpg"));
    clickRow(selected, 0);
    alt(Qt::Key_R);
    EXPECT_THAT(basket(), IsEmpty());
    alt(Qt::Key_T);
    alt(Qt::Key_M);
    EXPECT_THAT(basket(), IsEmpty());
    control(Qt::Key_O);
    EXPECT_EQ(desktop.openFilters.size(), 1U);
    alt(Qt::Key_T);
    control(Qt::Key_S);
    EXPECT_EQ(desktop.saveFilters.size(), 1U);
}

TEST_F(Step1, HeadingsSortAndTheSelectionStaysWithItsRows) {
    file("pic10.png", 100);
    file("Pic9.png", 3000);
    file("alpha.gif", 200);
    goToScratch();
    EXPECT_THAT(column(folder, 0), ElementsAre("Pic9.png", "alpha.gif", "pic10.png"));
    clickRow(folder, 0);
    const auto clickHeading = [this](int number) {
        QHeaderView& header = *folder.header();
        const int x = header.sectionViewportPosition(number) + header.sectionSize(number) / 2;
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, {x, header.height() / 2});
    };
    const auto selectedName = [this] {
        return folder.selectionModel()->selectedRows().value(0).data().toString().toStdString();
    };
    clickHeading(0);
    EXPECT_THAT(column(folder, 0), ElementsAre("alpha.gif", "Pic9.png", "pic10.png"));
    EXPECT_EQ(selectedName(), "Pic9.png");
    clickHeading(0);
    EXPECT_THAT(column(folder, 0), ElementsAre("pic10.png", "Pic9.png", "alpha.gif"));
    clickHeading(1);
    EXPECT_THAT(column(folder, 0), ElementsAre("pic10.png", "alpha.gif", "Pic9.png"));
    EXPECT_EQ(selectedName(), "Pic9.png");
    clickHeading(2);
    EXPECT_EQ(column(folder, 0).size(), 3U);
    EXPECT_EQ(selectedName(), "Pic9.png");
    pressButton("TBFolder(3)");
    EXPECT_EQ(basket(), column(folder, 0)) << "rows are added as they stand";
}

// ---- Dragging ----

/// Drops something on a list, as the window system tells it.
bool drop(QAbstractItemView& view, const QMimeData& data) {
    const QPoint place = view.viewport()->rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &enter);
    QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &move);
    if (!enter.isAccepted() || !move.isAccepted()) return false;
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &event);
    settle();
    return event.isAccepted();
}

/// What a file manager's drop does.
bool dropUrls(QAbstractItemView& view, const std::vector<std::string>& paths) {
    QMimeData data;
    QList<QUrl> urls;
    for (const std::string& path : paths)
        urls.append(QUrl::fromLocalFile(QString::fromStdString(path)));
    data.setUrls(urls);
    return drop(view, data);
}

TEST_F(Step1, PressingOnASelectedRowAndMovingStartsADragOfAllSelectedRows) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        file(name);
    goToScratch();
    clickRow(folder, 0);
    clickRow(folder, 2, Qt::ControlModifier);
    const QPoint start = cell(folder, 2);
    QTest::mousePress(folder.viewport(), Qt::LeftButton, {}, start);
    const auto moveTo = [this](QPoint place) {
        QMouseEvent move(QEvent::MouseMove, place, folder.viewport()->mapToGlobal(place),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(folder.viewport(), &move);
    };
    moveTo(start + QPoint(15, 5));
    moveTo(start + QPoint(30, 8));
    // The platform of the tests ends a drag at once; what was dragged is there until events are
    // given way to.
    const auto* dragged = folder.findChild<QDrag*>();
    ASSERT_NE(dragged, nullptr);
    EXPECT_EQ(dragged->mimeData()->urls(),
              (QList<QUrl>{QUrl::fromLocalFile(QString::fromStdString(scratch / "a.jpg")),
                           QUrl::fromLocalFile(QString::fromStdString(scratch / "c.jpg"))}));
    EXPECT_EQ(dragged->pixmap().deviceIndependentSize(), QSizeF(32, 32));
    QTest::mouseRelease(folder.viewport(), Qt::LeftButton, {}, start);
}

TEST_F(Step1, DraggedRowsAreDroppedOnTheBasketAndNowhereElse) {
    for (const char* name : {"A.jpg", "a.jpg", "c.jpg"})
        file(name);
    goToScratch();
    const auto rowsData = [this](std::initializer_list<int> rows) {
        QModelIndexList indexes;
        for (const int row : rows)
            indexes.append(folder.model()->index(row, 0));
        return std::unique_ptr<QMimeData>(folder.model()->mimeData(indexes));
    };
    EXPECT_TRUE(drop(selected, *rowsData({2, 0})));
    EXPECT_THAT(basket(), ElementsAre("A.jpg", "c.jpg"));
    EXPECT_THAT(column(selected, 0), ElementsAre("A", "c"));
    EXPECT_TRUE(drop(selected, *rowsData({0, 1})));
    EXPECT_EQ(desktop.boxes, duplicatesBox("2")) << "compared in lower case";
    EXPECT_FALSE(drop(folder, *rowsData({0})));
}

TEST_F(Step1, AFileManagersFilesAndFoldersGoToTheBasket) {
    const std::string one = file("one.jpg");
    file("more/b.png");
    file("more/a.gif");
    EXPECT_TRUE(dropUrls(selected, {one, scratch / "more", file("text.txt")}));
    EXPECT_THAT(column(selected, 0), ElementsAre("one", "a", "b"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 3 file(s)");
}

TEST_F(Step1, DroppedNamesKeepTheBytesThatAreNoText) {
    const std::string bad = file("bad\xff 100%.jpg");
    goToScratch();
    const std::unique_ptr<QMimeData> dragged(
        folder.model()->mimeData({folder.model()->index(0, 0)}));
    QMimeData elsewhere;
    elsewhere.setData("text/uri-list", dragged->data("text/uri-list"));
    EXPECT_TRUE(drop(selected, elsewhere));
    ASSERT_EQ(batch.lvSelected.size(), 1U);
    EXPECT_EQ(batch.lvSelected[0].Tag, bad);
}

TEST_F(Step1, OnlyFilesOfThisMachineAreTaken) {
    const std::string one = file("one.jpg");
    QMimeData data;
    data.setUrls({QUrl("https://example.org/a.jpg"),
                  QUrl("file://localhost" + QString::fromStdString(one)),
                  QUrl("file://another.example" + QString::fromStdString(file("two.jpg"))),
                  QUrl("trash:///b.jpg")});
    EXPECT_TRUE(drop(selected, data));
    EXPECT_THAT(basket(), ElementsAre("one.jpg"));
    EXPECT_THAT(desktop.boxes, IsEmpty());
}

TEST_F(Step1, AFolderThatIsDeletedLeavesAWorkingList) {
    picture("gone/a.ppm");
    file("stays/b.jpg");
    goTo(scratch / "gone");
    std::filesystem::remove_all(scratch.path() / "gone");
    ASSERT_TRUE(QTest::qWaitFor([this] { return tree.path().isEmpty(); }));
    clickRow(folder, 0);
    EXPECT_FALSE(control(window, "PPreview").isVisible());
    EXPECT_THAT(desktop.boxes, IsEmpty());
    goTo(scratch / "stays");
    EXPECT_THAT(column(folder, 0), ElementsAre("b.jpg"));
}

TEST_F(Step1, AFileManagersFolderIsGoneToInTheList) {
    file("more/b.png");
    EXPECT_TRUE(dropUrls(folder, {scratch / "more"}));
    EXPECT_EQ(tree.path().toStdString(), scratch / "more");
    EXPECT_THAT(column(folder, 0), ElementsAre("b.png"));
    EXPECT_TRUE(dropUrls(folder, {file("a.jpg")}));
    EXPECT_EQ(tree.path().toStdString(), scratch.path());
    EXPECT_THAT(column(folder, 0), ElementsAre("a.jpg"));
}

// ---- Many rows ----

TEST_F(Step1, ThousandsOfRowsAreListedSortedAddedAndRemoved) {
    for (int i = 0; i < 2000; ++i)
        file("many/picture " + std::to_string(i) + ".jpg", size_t(i % 50));
    goTo(scratch / "many");
    EXPECT_EQ(folder.model()->rowCount(), 2000);
    folder.sortByColumn(0, Qt::AscendingOrder);
    EXPECT_EQ(column(folder, 0).at(10), "picture 10.jpg");
    for (int i = 0; i < 8000; ++i)
        batch.lvSelected.push_back(
            {"p", "jpg", "/elsewhere/" + std::to_string(i) + ".jpg", "/elsewhere"});
    pressButton("TBFolder(3)");
    EXPECT_EQ(selected.model()->rowCount(), 10000);
    selected.scrollToBottom();
    clickRow(selected, 9999);
    clickRow(selected, 5000, Qt::ShiftModifier);
    QTest::keyClick(&selected, Qt::Key_Delete);
    EXPECT_EQ(selected.model()->rowCount(), 5000);
    QTest::keyClick(&selected, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&selected, Qt::Key_Delete);
    EXPECT_EQ(selected.model()->rowCount(), 0);
    EXPECT_THAT(batch.lvSelected, IsEmpty());
}

}  // namespace
}  // namespace tessarine::tests
