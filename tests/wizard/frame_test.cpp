#include <fstream>

#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>

#include "support/buttons.h"
#include "support/files.h"
#include "support/window_fixture.h"

namespace tessarine::tests {
namespace {

using State = cBatch::WindowState;

class Frame : public WindowTest {
  protected:
    QTabWidget& strip() { return the<QTabWidget>("sTab"); }
    QTabBar& captions() { return *strip().tabBar(); }
    /// Which of the four frames can be seen.
    std::vector<int> visibleFrames() {
        std::vector<int> visible;
        for (int i = 1; i <= 4; ++i)
            if (the(("Frame_step" + std::to_string(i)).c_str()).isVisible()) visible.push_back(i);
        return visible;
    }
    StartupRecord stored() {
        return StartupRecord::fromBytes(readAll(desktop.settings / "tsStart.up"));
    }
};

TEST_F(Frame, HasTheCaptionAndTheFourStepsAsTold) {
    start();
    EXPECT_EQ(window.windowTitle(), "Ombrel Tessarine");
    ASSERT_EQ(strip().count(), 4);
    const char* captionsTold[] = {"Step 1 : Select Images", "Step 2 : Select Functions",
                                  "Step 3 : Save Settings", "Step 4 : Get Ready"};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(strip().tabText(i).remove('&'), captionsTold[i]);
}

TEST_F(Frame, SelectingACaptionShowsItsFrameAndHidesTheOthers) {
    start();
    EXPECT_EQ(visibleFrames(), std::vector<int>{1});
    for (const int i : {2, 0, 3, 1}) {
        QTest::mouseClick(&captions(), Qt::LeftButton, {}, captions().tabRect(i).center());
        EXPECT_EQ(visibleFrames(), std::vector<int>{i + 1});
    }
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(Frame, AltAndADigitSelectsAStep) {
    start();
    QApplication::setActiveWindow(&window);
    for (const int i : {3, 2, 4, 1}) {
        QTest::keyClick(&window, static_cast<Qt::Key>(Qt::Key_0 + i), Qt::AltModifier);
        EXPECT_EQ(visibleFrames(), std::vector<int>{i});
    }
}

TEST_F(Frame, TheArrowKeysWalkAlongTheCaptions) {
    start();
    captions().setFocus();
    QTest::keyClick(&captions(), Qt::Key_Right);
    QTest::keyClick(&captions(), Qt::Key_Right);
    EXPECT_EQ(visibleFrames(), std::vector<int>{3});
    QTest::keyClick(&captions(), Qt::Key_Left);
    EXPECT_EQ(visibleFrames(), std::vector<int>{2});
}

TEST_F(Frame, TheStripAndTheFramesTakeTheSizesOfTheRules) {
    start();
    for (const QSize size : {QSize(640, 480), QSize(1024, 768), QSize(500, 400)}) {
        window.resize(size);
        settle();
        const int bar = the("SB").height();
        EXPECT_EQ(strip().size(), QSize(size.width() - 3, size.height() - bar));
        EXPECT_EQ(the("SB").geometry().bottom() + 1, size.height());
        for (int i = 1; i <= 4; ++i) {
            goToStep(i);
            const QWidget& frame = the(("Frame_step" + std::to_string(i)).c_str());
            EXPECT_EQ(frame.size(), QSize(size.width() - 13, size.height() - bar - 30)) << i;
            EXPECT_TRUE(
                strip().rect().contains(QRect(frame.mapTo(&strip(), QPoint(0, 0)), frame.size())));
        }
    }
}

TEST_F(Frame, BelowTheLeastSizeTheWindowSnapsBack) {
    start();
    window.resize(300, 700);
    settle();
    EXPECT_EQ(window.size(), QSize(500, 700));
    window.resize(700, 200);
    settle();
    EXPECT_EQ(window.size(), QSize(700, 400));
    window.resize(100, 100);
    settle();
    EXPECT_EQ(window.size(), QSize(500, 400));
}

TEST_F(Frame, AMinimisedWindowIsLeftAlone) {
    start();
    window.showMinimized();
    settle();
    window.resize(160, 24);
    settle();
    EXPECT_EQ(window.size(), QSize(160, 24));
    EXPECT_EQ(batch.windowState, State::minimized);
    window.showNormal();
    settle();
    EXPECT_EQ(window.size(), QSize(500, 400));
    EXPECT_EQ(batch.windowState, State::normal);
}

TEST_F(Frame, TheLogicKnowsTheWindowsStateAndSize) {
    start();
    window.resize(801, 602);
    settle();
    EXPECT_EQ(batch.windowState, State::normal);
    EXPECT_EQ(batch.windowWidth, 801);
    EXPECT_EQ(batch.windowHeight, 602);
    window.showMaximized();
    settle();
    EXPECT_EQ(batch.windowState, State::maximized);
}

TEST_F(Frame, NoCaptionIsCutOffAtTheLeastSizeWithTheUsualFonts) {
    start();
    const QFont before = QApplication::font();
    for (const char* family : {"DejaVu Sans", "Noto Sans", "Cantarell"})
        for (const double points : {9.0, 10.0, 11.0}) {
            QFont font(family);
            font.setPointSizeF(points);
            QApplication::setFont(font);
            for (const QSize size : {QSize(500, 400), QSize(640, 480), QSize(1920, 1080)}) {
                window.resize(size);
                settle();
                for (int i = 0; i < 4; ++i)
                    EXPECT_EQ(captions().tabToolTip(i), "") << family << points << size.width();
                const int end =
                    captions().mapTo(&window, QPoint(captions().tabRect(3).right(), 0)).x();
                EXPECT_LT(end, the("cmdOnline").mapTo(&window, QPoint(0, 0)).x());
            }
        }
    QApplication::setFont(before);
}

// ---- The status bar ----

TEST_F(Frame, TheFirstPanelHoldsTheNameAndAPanelShowsWhatWasWrittenToIt) {
    start();
    EXPECT_EQ(the<QLabel>("SB(1)").text(), "Ombrel Tessarine");
    batch.SB[2].text = "Basket: 7 file(s)";
    batch.platform().changed("SB(3)");
    EXPECT_EQ(the<QLabel>("SB(3)").text(), "Basket: 7 file(s)");
}

TEST_F(Frame, ALongPanelLosesItsMiddleAndTellsTheWholeInItsToolTip) {
    start();
    batch.SB[4].text = "Current Directory : /" + std::string(300, 'x');
    batch.platform().changed("SB(5)");
    EXPECT_EQ(the<QLabel>("SB(5)").toolTip().toStdString(), batch.SB[4].text);
    batch.SB[4].text = "Current Directory : /";
    batch.platform().changed("SB(5)");
    EXPECT_EQ(the<QLabel>("SB(5)").toolTip(), "");
}

TEST_F(Frame, TheProgressBarLiesOverTheSecondPanelWhileItIsWanted) {
    start();
    auto& pb = the<QProgressBar>("pb");
    EXPECT_FALSE(pb.isVisible());
    batch.pb = {true, 40, 13};
    batch.platform().changed("pb");
    EXPECT_TRUE(pb.isVisible());
    EXPECT_EQ(pb.maximum(), 40);
    EXPECT_EQ(pb.value(), 13);
    const QWidget& panel = the("SB(2)");
    EXPECT_EQ(pb.x(), panel.x());
    EXPECT_EQ(pb.width(), panel.width());
    EXPECT_EQ(pb.height(), the("SB").height() - 2);
}

TEST_F(Frame, ThePanelsStandInOneRowInsideTheBar) {
    start();
    for (const int width : {500, 640, 1024}) {
        window.resize(width, 480);
        settle();
        for (int i = 1; i < 5; ++i) {
            const QWidget& left = the(("SB(" + std::to_string(i) + ")").c_str());
            const QWidget& right = the(("SB(" + std::to_string(i + 1) + ")").c_str());
            EXPECT_GT(right.x(), left.geometry().right());
            EXPECT_GT(left.width(), 0);
        }
        EXPECT_TRUE(the("SB").rect().contains(the("SB(5)").geometry()));
    }
}

// ---- The buttons ----

TEST_F(Frame, OnlineOpensTheWebPage) {
    start();
    press("cmdOnline");
    ASSERT_EQ(desktop.openedPaths.size(), 1U);
    EXPECT_TRUE(desktop.openedPaths[0].starts_with("https://")) << desktop.openedPaths[0];
}

TEST_F(Frame, HelpOpensThePageBesideTheProgram) {
    start();
    std::filesystem::create_directory(desktop.application / "Help");
    writeAll(desktop.application / "Help/default.htm", "<p>");
    press("cmdHelp");
    EXPECT_EQ(desktop.openedPaths,
              std::vector<std::string>{desktop.application / "Help/default.htm"});
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(Frame, MissingHelpIsTold) {
    start();
    press("cmdHelp");
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0],
              (RecordedDesktop::Box{"Help Files are Missing! Please Re-install Tessarine Again",
                                    Icon::information, "Help Files Missing!"}));
    EXPECT_TRUE(desktop.openedPaths.empty());
}

TEST_F(Frame, TheButtonsHaveKeys) {
    start();
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_F1);
    EXPECT_TRUE(buttonsRest(window));
    EXPECT_EQ(desktop.boxes.size(), 1U);
    QTest::keyClick(&window, Qt::Key_F1, Qt::ControlModifier);
    EXPECT_TRUE(buttonsRest(window));
    EXPECT_EQ(desktop.openedPaths.size(), 1U);
}

TEST_F(Frame, AboutShowsTheBoxUntilItIsClosed) {
    start();
    bool shown = false;
    QTimer::singleShot(50, &window, [&] {
        QWidget* box = QApplication::activeModalWidget();
        ASSERT_NE(box, nullptr);
        shown = box->inherits("tessarine::fAbout");
        click(control(*box, "cmdOK"));
    });
    press("cmdAbout");
    EXPECT_TRUE(shown);
}

// ---- Loading, unloading, closing ----

TEST_F(Frame, ClosingWritesTheSettingsOnce) {
    start();
    window.resize(700, 500);
    settle();
    int closings = 0;
    QObject::connect(&window, &fBatch::closed, [&closings] { ++closings; });
    batch.txtName = "  Trip ";
    window.close();
    EXPECT_EQ(closings, 1);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(stored().windowWidth, 700 * 15);
    EXPECT_EQ(stored().windowHeight, 500 * 15);
    EXPECT_EQ(stored().maximized, 0);
    EXPECT_EQ(stored().genericName.rightTrimmed(), "Trip");
    std::filesystem::remove(desktop.settings / "tsStart.up");
    window.close();
    EXPECT_EQ(closings, 1);
    EXPECT_FALSE(std::filesystem::exists(desktop.settings / "tsStart.up"));
}

TEST_F(Frame, ClosedWhileMaximisedItKeepsTheLastNormalSizeAndComesBackMaximised) {
    start();
    window.resize(700, 500);
    settle();
    window.close();
    {
        fBatch again(desktop);
        again.start();
        settle();
        EXPECT_EQ(again.size(), QSize(700, 500));
        again.showMaximized();
        settle();
        again.close();
    }
    EXPECT_EQ(stored().maximized, -1);
    EXPECT_EQ(stored().windowWidth, 700 * 15);
    fBatch third(desktop);
    third.start();
    settle();
    EXPECT_TRUE(third.isMaximized());
    third.showNormal();
    settle();
    EXPECT_EQ(third.size(), QSize(700, 500));
}

TEST_F(Frame, ClosedWhileMinimisedItKeepsTheLastStoredSizeAndState) {
    start();
    window.resize(700, 500);
    settle();
    window.close();
    {
        fBatch again(desktop);
        again.start();
        again.resize(900, 600);
        again.showMinimized();
        settle();
        again.close();
    }
    EXPECT_EQ(stored().windowWidth, 700 * 15);
    EXPECT_EQ(stored().windowHeight, 500 * 15);
    EXPECT_EQ(stored().maximized, 0);
}

TEST_F(Frame, TellsThatItComesBeforeItIsSeenAndThatItStandsAfterwards) {
    std::vector<std::pair<std::string, bool>> told;
    QObject::connect(&window, &fBatch::showing,
                     [&] { told.emplace_back("showing", window.isVisible()); });
    QObject::connect(&window, &fBatch::ready,
                     [&] { told.emplace_back("ready", window.isVisible()); });
    start();
    EXPECT_EQ(told,
              (std::vector<std::pair<std::string, bool>>{{"showing", false}, {"ready", true}}));
}

TEST_F(Frame, ASecondInstanceIsWarnedWritesTheSettingsAndStartsAllTheSame) {
    desktop.another = true;
    bool stoodAtTheWarning = true;
    desktop.onBox = [&] { stoodAtTheWarning = window.isVisible(); };
    int ready = 0;
    QObject::connect(&window, &fBatch::ready, [&ready] { ++ready; });
    start();
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0], (RecordedDesktop::Box{"Tessarine is already running!",
                                                      Icon::information, "Tessarine"}));
    EXPECT_FALSE(stoodAtTheWarning);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(ready, 1);
    EXPECT_EQ(std::filesystem::file_size(desktop.settings / "tsStart.up"), 1058U);
    EXPECT_EQ(window.findChildren<QTabWidget*>("sTab").size(), 1);
    EXPECT_EQ(window.findChildren<QWidget*>("SB").size(), 1);
    EXPECT_EQ(visibleFrames(), std::vector<int>{1});
    // The second window is as live as a first one.
    batch.txtName = "Other";
    batch.platform().changed("txtName");
    EXPECT_EQ(the<QLineEdit>("txtName").text(), "Other");
}

TEST_F(Frame, TakingTheWindowDownLeavesNoControl) {
    auto second = std::make_unique<fBatch>(desktop);
    second->start();
    settle();
    QList<QPointer<QWidget>> controls;
    for (QWidget* one : second->findChildren<QWidget*>())
        controls.push_back(one);
    ASSERT_GT(controls.size(), 20);
    second.reset();
    for (const QPointer<QWidget>& one : controls)
        EXPECT_TRUE(one.isNull());
}

TEST_F(Frame, AWindowThatWasNeverStartedGoesWithoutATrace) {
    { const fBatch unused(desktop); }
    EXPECT_FALSE(std::filesystem::exists(desktop.settings / "tsStart.up"));
}

TEST_F(Frame, ASizeOfNothingBecomesTheLeastSize) {
    writeAll(desktop.settings / "tsStart.up", "0123456789");
    start();
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_EQ(window.size(), QSize(500, 400));
    EXPECT_EQ(batch.txtName, "0123456789");
}

}  // namespace
}  // namespace tessarine::tests
