#include <QToolButton>

#include "step1_fixture.h"

namespace tessarine::tests {
namespace {

/// Where a control stands in the step's frame.
QRect placeOf(const QWidget& part, const QWidget& frame) {
    return QRect(part.mapTo(&frame, QPoint(0, 0)), part.size());
}

TEST_F(Step1, AClickedRowIsShownWithItsDescription) {
    picture("a.ppm", 40, 30);
    goToScratch();
    QWidget& image = control(window, "PPreview");
    EXPECT_FALSE(image.isVisible());
    clickRow(folder, 0);
    EXPECT_TRUE(image.isVisible());
    EXPECT_EQ(image.size(), QSize(40, 30));
    EXPECT_EQ(shown("LFileName"), "a.ppm");
    EXPECT_EQ(shown("LType"), "PPM");
    EXPECT_EQ(shown("LResolution"), "40 x 30");
    EXPECT_EQ(shown("LLocation"), scratch.path().string());
    EXPECT_EQ(batch.SB[3].text, " 40 x 30");
    EXPECT_EQ(batch.SB[3].icon, "ppm");
    const QImage drawn = image.grab().toImage();
    EXPECT_EQ(drawn.pixelColor(0, 0), QColor(0, 0, 40));
    EXPECT_EQ(drawn.pixelColor(39, 29), QColor(39, 29, 40));
}

TEST_F(Step1, ARowOfTheBasketIsShownTheSameWay) {
    picture("a.ppm", 40, 30);
    picture("b.ppm", 20, 10);
    goToScratch();
    pressButton("TBFolder(3)");
    clickRow(selected, 1);
    EXPECT_EQ(shown("LFileName"), "b.ppm");
    EXPECT_EQ(control(window, "PPreview").accessibleName(), "Preview of b.ppm");
    QTest::keyClick(&selected, Qt::Key_Up);
    EXPECT_EQ(shown("LFileName"), "a.ppm") << "keys that move from row to row do as a click";
}

TEST_F(Step1, ARowReachedByTypingItsNameIsShown) {
    picture("a.ppm", 40, 30);
    picture("b.ppm", 20, 10);
    goToScratch();
    clickRow(folder, 0);
    QTest::keyClick(&folder, Qt::Key_B);
    EXPECT_EQ(shown("LFileName"), "b.ppm");
}

TEST_F(Step1, AKeyHeldDownShowsOnlyTheRowWhereItIsLetGo) {
    for (const char* name : {"a.ppm", "b.ppm", "c.ppm"})
        picture(name);
    goToScratch();
    clickRow(folder, 0);
    QTest::keyPress(&folder, Qt::Key_Down);
    QTest::keyPress(&folder, Qt::Key_Down);
    EXPECT_EQ(shown("LFileName"), "a.ppm");
    QTest::keyRelease(&folder, Qt::Key_Down);
    EXPECT_EQ(shown("LFileName"), "c.ppm");
}

TEST_F(Step1, NamesThatAreNoTextOrNoLineAreShownOnOneLine) {
    picture("bad\xff.ppm");
    picture("new\nline.ppm");
    picture("turned\xe2\x80\xaegpj.ppm");
    goToScratch();
    EXPECT_THAT(column(folder, 0),
                testing::ElementsAre("bad\xef\xbf\xbd.ppm", "new\xef\xbf\xbdline.ppm",
                                     "turned\xef\xbf\xbdgpj.ppm"));
    for (int row = 0; row < 3; ++row) {
        clickRow(folder, row);
        EXPECT_EQ(shown("LFileName"), column(folder, 0).at(size_t(row)));
        EXPECT_TRUE(control(window, "PPreview").isVisible()) << row;
    }
}

TEST_F(Step1, ANameLikeMarkupIsShownAsItStands) {
    picture("<i>a.ppm");
    picture("100% %1 &b.ppm");
    goToScratch();
    clickRow(folder, 1);
    EXPECT_EQ(shown("LFileName"), "<i>a.ppm");
    EXPECT_EQ(control(window, "LFileName").toolTip(), "<span>&lt;i&gt;a.ppm</span>");
    clickRow(folder, 0);
    EXPECT_EQ(shown("LFileName"), "100% %1 &b.ppm");
    EXPECT_EQ(control(window, "LFileName").toolTip(), "100% %1 &b.ppm");
}

TEST_F(Step1, WithTwoRowsSelectedAClickLeavesThePreview) {
    picture("a.ppm", 40, 30);
    picture("b.ppm", 20, 10);
    goToScratch();
    clickRow(folder, 0);
    clickRow(folder, 1, Qt::ControlModifier);
    EXPECT_EQ(shown("LFileName"), "a.ppm");
}

TEST_F(Step1, AFileThatCannotBeReadHidesThePictureWithoutAMessage) {
    picture("a.ppm", 40, 30);
    file("b.png", 100);
    goToScratch();
    clickRow(folder, 0);
    clickRow(folder, 1);
    EXPECT_FALSE(control(window, "PPreview").isVisible());
    EXPECT_EQ(shown("LFileName"), "b.png");
    EXPECT_EQ(shown("LResolution"), "40 x 30");
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(Step1, ALargePictureStandsInTheMiddleOfWhatIsSeenOfThePanel) {
    picture("a.ppm", 900, 300);
    goToScratch();
    clickRow(folder, 0);
    const QWidget& frame = control(window, "Frame_step1");
    const QWidget& panel = control(window, "Preview");
    const QRect seen = placeOf(panel, frame).intersected(frame.rect());
    const QRect image = placeOf(control(window, "PPreview"), frame);
    EXPECT_LT(seen.width(), panel.width()) << "the panel reaches past the frame";
    EXPECT_EQ(image.width(), seen.width() - 10);
    EXPECT_EQ(image.left() - seen.left(), 5);
    EXPECT_NEAR(image.center().y(), seen.center().y(), 1);
}

// ---- Places ----

TEST_F(Step1, SplittersTakeTheirPanesAndPositions) {
    const auto panes = [this](const char* name) {
        const auto& bar = control<Splitter>(window, name);
        return std::pair(bar.LeftOrTopControl()->objectName().toStdString(),
                         bar.RightOrBottomControl()->objectName().toStdString());
    };
    using Names = std::pair<std::string, std::string>;
    EXPECT_EQ(panes("bs11"), Names("FT", "bs12"));
    EXPECT_EQ(panes("bs12"), Names("bs13", "bs14"));
    EXPECT_EQ(panes("bs13"), Names("plvFolder", "plvSelected"));
    EXPECT_EQ(panes("bs14"), Names("Preview", "Frame_Preview"));
    const auto position = [this](const char* name) {
        return control<Splitter>(window, name).SplitterPosition();
    };
    EXPECT_EQ(position("bs11"), 30);
    EXPECT_EQ(position("bs12"), 75);
    EXPECT_EQ(position("bs13"), 50);
    EXPECT_EQ(position("bs14"), 30);
    batch.bs13 = 95;
    batch.platform().changed("bs13");
    EXPECT_EQ(position("bs13"), 90);
    EXPECT_EQ(batch.bs13, 90) << "the member holds what the splitter took";
}

TEST_F(Step1, APointerThatPassesOverABarLeavesThePositionThatIsStored) {
    for (const auto& [name, stored] : {std::pair{"bs11", &batch.bs11},
                                       {"bs12", &batch.bs12},
                                       {"bs13", &batch.bs13},
                                       {"bs14", &batch.bs14}}) {
        const auto& splitter = control<Splitter>(window, name);
        auto& bar = *splitter.findChild<QWidget*>("picSplitter", Qt::FindDirectChildrenOnly);
        const int32_t before = *stored;
        const QPointF place(-20, -20);
        QMouseEvent passing(QEvent::MouseMove, place, bar.mapToGlobal(place), Qt::NoButton,
                            Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&bar, &passing);
        EXPECT_LT(splitter.SplitterPosition(), before) << name;
        EXPECT_EQ(*stored, before) << name;
    }
}

TEST_F(Step1, ADraggedBarLaysTheListsOutAndFitsThePreviewAgain) {
    picture("a.ppm", 900, 900);
    goToScratch();
    clickRow(folder, 0);
    const auto dragBar = [this](const char* name, QPoint by) {
        auto& splitter = control<Splitter>(window, name);
        auto& bar = *splitter.findChild<QWidget*>("picSplitter", Qt::FindDirectChildrenOnly);
        const QPoint start = bar.rect().center();
        QTest::mousePress(&bar, Qt::LeftButton, {}, start);
        QTest::mouseMove(&bar, start + by);
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, start + by);
    };
    const int listHeight = folder.height();
    dragBar("bs13", {0, 60});
    EXPECT_GT(batch.bs13, 50);
    EXPECT_NEAR(folder.height(), listHeight + 60, 3);
    EXPECT_EQ(batch.bs13, control<Splitter>(window, "bs13").SplitterPosition());

    const int listWidth = folder.width();
    const QSize before = control(window, "PPreview").size();
    dragBar("bs12", {-60, 0});
    EXPECT_NEAR(folder.width(), listWidth - 60, 3);
    EXPECT_GT(control(window, "PPreview").width(), before.width());

    const int width = control(window, "PPreview").width();
    dragBar("bs14", {0, -80});
    EXPECT_LT(control(window, "PPreview").height(), width);
    EXPECT_LT(batch.bs14, 30);

    const int wide = folder.width();
    dragBar("bs11", {-50, 0});
    EXPECT_GT(folder.width(), wide) << "bs11 passes its room on to the lists";
    EXPECT_LT(batch.bs11, 30);
}

/// Everything of the step that a person reads or presses.
std::vector<QWidget*> contents(QWidget& frame) {
    std::vector<QWidget*> parts;
    for (QWidget* part : frame.findChildren<QWidget*>()) {
        const bool isOne = qobject_cast<QToolButton*>(part) != nullptr ||
                           (qobject_cast<QLabel*>(part) != nullptr) ||
                           part->objectName() == "PPreview" || part->objectName() == "lvFolder" ||
                           part->objectName() == "lvSelected";
        if (isOne && part->isVisible()) parts.push_back(part);
    }
    return parts;
}

TEST_F(Step1, NothingIsCutOffOrOverlapsAtAnySizeAndFont) {
    picture("a picture with a rather long name that goes on and on.ppm", 900, 700);
    goToScratch();
    clickRow(folder, 0);
    QWidget& frame = control(window, "Frame_step1");
    const QFont before = QApplication::font();
    for (const char* family : {"DejaVu Sans", "Noto Sans", "Cantarell"})
        for (const int points : {9, 10, 11})
            for (const QSize size : {QSize(640, 480), QSize(1024, 768), QSize(1920, 1080)}) {
                QApplication::setFont(QFont(family, points));
                window.resize(size);
                settle();
                const std::vector<QWidget*> parts = contents(frame);
                ASSERT_GE(parts.size(), 15U);
                for (const QWidget* part : parts) {
                    const std::string where = part->objectName().toStdString() + " " + family +
                                              " " + std::to_string(points) + " at " +
                                              std::to_string(size.width());
                    EXPECT_TRUE(frame.rect().contains(placeOf(*part, frame))) << where;
                    EXPECT_TRUE(part->parentWidget()->rect().contains(part->geometry())) << where;
                    if (qobject_cast<const QToolButton*>(part) != nullptr) {
                        EXPECT_GE(part->width(), part->sizeHint().width()) << where;
                        EXPECT_GE(part->height(), part->sizeHint().height()) << where;
                    }
                    for (const QWidget* other : parts)
                        if (other < part && other->parentWidget() == part->parentWidget()) {
                            EXPECT_FALSE(part->geometry().intersects(other->geometry()))
                                << where << " and " << other->objectName().toStdString();
                        }
                }
            }
    QApplication::setFont(before);
}

TEST_F(Step1, ListsKeep17PixelsAtTheRightAndToolbarsStandAtTheTop) {
    for (const QSize size : {QSize(640, 480), QSize(1024, 768), QSize(1920, 1080)}) {
        window.resize(size);
        settle();
        for (const auto& [paneName, toolsName, list] :
             {std::tuple("plvFolder", "TBFolder", &folder),
              std::tuple("plvSelected", "TBSelected", &selected)}) {
            const QWidget& pane = control(window, paneName);
            const QWidget& tools = control(window, toolsName);
            EXPECT_EQ(tools.geometry().topLeft(), QPoint(0, 0));
            EXPECT_EQ(list->x(), 0);
            EXPECT_EQ(pane.width() - list->width(), 17);
            EXPECT_EQ(list->y(), tools.height());
            EXPECT_EQ(list->geometry().bottom() + 1, pane.height());
        }
    }
}

TEST_F(Step1, ButtonsShowCaptionsWhereThereIsRoomAndTellThemElse) {
    const auto& add = control<QToolButton>(window, "TBFolder(3)");
    window.resize(1920, 1080);
    settle();
    EXPECT_EQ(add.toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
    EXPECT_EQ(add.text(), "Add Checked File(s) to &Tray");
    batch.bs12 = 40;
    batch.platform().changed("bs12");
    window.resize(640, 480);
    settle();
    EXPECT_EQ(add.toolButtonStyle(), Qt::ToolButtonIconOnly);
    EXPECT_EQ(add.toolTip(), "Add Checked File(s) to Tray (Alt+T)");
    EXPECT_EQ(control(window, "TBSelected(1)").toolTip(), "Remove Selected File (Alt+R)");
    EXPECT_EQ(control(window, "TBSelected(2)").toolTip(), "Remove All (Alt+M)");
    EXPECT_EQ(control(window, "TBFolder(1)").toolTip(), "Check All (Alt+C)");
    EXPECT_EQ(control(window, "TBFolder(2)").toolTip(), "Uncheck All (Alt+U)");
}

TEST_F(Step1, ToolbarsGoOnInFurtherRowsInANarrowPane) {
    batch.bs12 = 10;
    batch.platform().changed("bs12");
    settle();
    const QWidget& pane = control(window, "plvSelected");
    for (int i = 1; i <= 4; ++i) {
        const std::string name = "TBSelected(" + std::to_string(i) + ")";
        const QWidget& button = control(window, name.c_str());
        EXPECT_TRUE(pane.rect().contains(placeOf(button, pane))) << name;
    }
    EXPECT_GT(selected.y(), control(window, "TBSelected(1)").height() * 2);
}

TEST_F(Step1, EveryControlHasANameForThoseWhoDoNotSeeIt) {
    for (const char* name : {"FT", "lvFolder", "lvSelected", "TBFolder(1)", "TBFolder(2)",
                             "TBFolder(3)", "TBSelected(1)", "TBSelected(2)", "TBSelected(3)",
                             "TBSelected(4)", "Frame_Preview", "Preview"})
        EXPECT_FALSE(control(window, name).accessibleName().isEmpty()) << name;
    EXPECT_EQ(control(window, "Frame_Preview").accessibleName(), "Image Preview & Description");
}

TEST_F(Step1, TheTabKeyGoesThroughTreeToolbarsAndLists) {
    std::vector<std::string> order;
    tree.setFocus();
    for (int i = 0; i < 30; ++i) {
        const std::string name = QApplication::focusWidget()->objectName().toStdString();
        if (!name.empty() && name != "picSplitter") order.push_back(name);
        if (name == "lvSelected") break;
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_THAT(order, testing::ElementsAre("FT", "TBFolder(1)", "TBFolder(2)", "TBFolder(3)",
                                            "lvFolder", "TBSelected(1)", "TBSelected(2)",
                                            "TBSelected(3)", "TBSelected(4)", "lvSelected"));
}

}  // namespace
}  // namespace tessarine::tests
