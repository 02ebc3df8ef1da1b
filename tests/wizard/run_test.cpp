#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include "support/files.h"
#include "support/recorder.h"
#include "support/window_fixture.h"

namespace tessarine::tests {
namespace {

constexpr int32_t brightnessNode = 2;

class WindowRun : public WindowTest {
  protected:
    WindowRun() {
        start();
        goToStep(4);
        saveAsBitmaps();
    }

    QPlainTextEdit& RTF() { return the<QPlainTextEdit>("RTF"); }
    void addBrightness(cBatch& program, int32_t level) {
        program.SelectNode(brightnessNode);
        program.MoveSlider(0, level);
        program.AddFunction("Brightness");
    }
    void addGreys(int count) {
        for (int i = 0; i < count; ++i)
            addGrey(static_cast<uint8_t>(10 * (i + 1)));
    }
    /// Does something while picture `number` is about to begin.
    void whenBefore(int number, std::function<void()> act) {
        auto* watch = new QTimer(&window);
        QObject::connect(watch, &QTimer::timeout, &window, [this, watch, number, act] {
            if (!batch.pb.visible || batch.pb.value != number - 1) return;
            watch->stop();
            watch->deleteLater();
            act();
        });
        watch->start(0);
    }
    void expectOneBox(const std::string& text, const std::string& title) {
        ASSERT_EQ(desktop.boxes.size(), 1U);
        EXPECT_EQ(desktop.boxes[0], (RecordedDesktop::Box{text, Icon::information, title}));
        EXPECT_EQ(RTF().toPlainText(), "");
        EXPECT_FALSE(the("pb").isVisible());
        EXPECT_TRUE(desktop.awake.empty());
        EXPECT_TRUE(outputs().empty());
    }
};

TEST_F(WindowRun, WithEmptyBasketsTheStepCanBeReachedAndTheRunTellsIt) {
    press("CmdBatchAll");
    expectOneBox("No File(s) selected for Batch Processing!", "Tessarine");
}

TEST_F(WindowRun, AFolderTypedByHandIsCheckedByTheRun) {
    addGreys(1);
    goToStep(3);
    auto& destination = the<QLineEdit>("txtDestination");
    destination.selectAll();
    QTest::keyClicks(&destination, QString::fromStdString(out + "/none"));
    EXPECT_TRUE(desktop.boxes.empty());
    goToStep(4);
    press("CmdBatchAll");
    expectOneBox("Invalid Folder Path", "Tessarine");
}

TEST_F(WindowRun, AMissingFormatIsTold) {
    addGreys(1);
    batch.cboFormat.index = -1;
    press("CmdBatchAll");
    expectOneBox("Please specify a file format for all the processed file(s)!", "Tessarine");
}

TEST_F(WindowRun, ItsOutputsAreThoseOfARunWithoutAWindowByteForByte) {
    for (int i = 0; i < 3; ++i)
        addGrey(static_cast<uint8_t>(40 * i), 20 + i, 16);
    addBrightness(batch, 33);
    press("CmdBatchAll");

    const std::string other = scratch / "other";
    std::filesystem::create_directory(other);
    Recorder platform;
    cBatch alone(platform);
    alone.lvSelected = batch.lvSelected;
    alone.txtName = "Sample";
    alone.txtDestination = other;
    alone.cboFormat.index = bmpRow;
    addBrightness(alone, 33);
    alone.CmdBatchAll();

    ASSERT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample3.bmp"}));
    for (const std::string& name : outputs())
        EXPECT_EQ(readAll(out + "/" + name), readAll(other + "/" + name)) << name;
    EXPECT_NE(readAll(out + "/Sample1.bmp"), readAll(out + "/Sample2.bmp"));
}

TEST_F(WindowRun, ShowsTheOverviewAndHidesTheProgressAtTheEnd) {
    addGreys(2);
    addBrightness(batch, 1);
    bool progressSeen = false;
    whenBefore(2, [&] {
        progressSeen =
            the<QProgressBar>("pb").isVisible() && the<QProgressBar>("pb").maximum() == 2;
    });
    press("CmdBatchAll");
    EXPECT_TRUE(progressSeen);
    EXPECT_FALSE(the("pb").isVisible());
    const std::string shown = RTF().toPlainText().toStdString();
    EXPECT_TRUE(
        shown.starts_with("2\nTotal Number of functions to be Applied: 1\n"
                          "Destination Folder: " +
                          out +
                          "/\n"
                          "Format Selected to save the processed images: "
                          "'BMP - Windows Bitmap '\n"
                          "Generic Name for the processed image: 'Sample'\n"
                          " Please Wait... Batch Image Processing in Progress!\n\n"));
    EXPECT_TRUE(
        shown.ends_with("\n Applied Brightness\n Processed Image Saved as Sample2.bmp\n\n"
                        " Processing Completed!"));
    EXPECT_TRUE(desktop.openedPaths.empty());
}

TEST_F(WindowRun, StopAtTheThirdOfFiveLeavesThreeAndOpensTheFolderIfAsked) {
    addGreys(5);
    press("chkShowDestination");
    whenBefore(4, [&] { press("CmdStop"); });
    press("CmdBatchAll");
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample3.bmp"}));
    EXPECT_TRUE(RTF().toPlainText().endsWith(" Processing Completed!"));
    EXPECT_EQ(desktop.openedPaths, std::vector<std::string>{out + "/"});
    EXPECT_TRUE(batch.stopRequested);
}

TEST_F(WindowRun, AfterAStopTheNextRunBeginsWithTheFirstPicture) {
    addGreys(3);
    whenBefore(2, [&] { press("CmdStop"); });
    press("CmdBatchAll");
    EXPECT_EQ(outputs(), std::set<std::string>{"Sample1.bmp"});
    press("CmdBatchAll");
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample3.bmp"}));
    EXPECT_TRUE(RTF().toPlainText().startsWith("3\n"));
    EXPECT_EQ(RTF().toPlainText().count(" Processing Completed!"), 1);
}

TEST_F(WindowRun, WithOverwritingOffOutputsStayAndTheOverviewSaysSavedAllTheSame) {
    addGreys(1);
    press("CmdBatchAll");
    writeAll(out + "/Sample1.bmp", "kept");
    batch.chkOverwrite = 0;
    press("CmdBatchAll");
    EXPECT_EQ(readAll(out + "/Sample1.bmp"), "kept");
    EXPECT_TRUE(RTF().toPlainText().contains(" Processed Image Saved as Sample1.bmp"));
}

TEST_F(WindowRun, EverythingStaysLive) {
    addGreys(3);
    whenBefore(2, [&] {
        goToStep(3);
        auto& name = the<QLineEdit>("txtName");
        EXPECT_TRUE(name.isEnabled());
        name.selectAll();
        QTest::keyClicks(&name, "Other");
        goToStep(4);
    });
    press("CmdBatchAll");
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Other2.bmp", "Other3.bmp"}));
}

TEST_F(WindowRun, ARunInsideARunIsDoneAndTheOuterOneGoesOn) {
    addGreys(3);
    whenBefore(3, [&] {
        batch.txtName = "Inner";
        press("CmdBatchAll");
        batch.txtName = "Outer";
    });
    press("CmdBatchAll");
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Inner1.bmp",
                                                "Inner2.bmp", "Inner3.bmp", "Outer3.bmp"}));
    std::string overview = batch.RTF;
    for (size_t at; (at = overview.find('\r')) != std::string::npos;)
        overview.erase(at, 1);
    EXPECT_EQ(RTF().toPlainText().toStdString(), overview);
    EXPECT_EQ(RTF().toPlainText().count(" Processing Completed!"), 2);
}

// ---- The desktop around a run ----

TEST_F(WindowRun, TheSystemStaysAwakeForTheTimeOfTheOutermostRun) {
    addGreys(2);
    whenBefore(2, [&] {
        EXPECT_EQ(desktop.awake, std::vector<bool>{true});
        press("CmdBatchAll");
        EXPECT_EQ(desktop.awake, std::vector<bool>{true});
    });
    press("CmdBatchAll");
    EXPECT_EQ(desktop.awake, (std::vector<bool>{true, false}));
}

TEST_F(WindowRun, WithTheWindowInFrontThereIsNoNotification) {
    addGreys(1);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    press("CmdBatchAll");
    EXPECT_TRUE(desktop.notifications.empty());
}

TEST_F(WindowRun, WithAnotherWindowInFrontTheEndIsNotifiedOnce) {
    addGreys(2);
    QApplication::setActiveWindow(nullptr);
    batch.chkShowDestination = 0;
    whenBefore(2, [&] { the<QPushButton>("CmdBatchAll").click(); });
    the<QPushButton>("CmdBatchAll").click();
    EXPECT_EQ(desktop.notifications,
              std::vector<std::string>{"Ombrel Tessarine: 4 pictures processed"});
}

// ---- Closing ----

TEST_F(WindowRun, ClosingStopsTheRunBeforeItsNextPictureAndShowsNothingMore) {
    addGreys(5);
    press("chkShowDestination");
    int closings = 0;
    QObject::connect(&window, &fBatch::closed, [&closings] { ++closings; });
    whenBefore(3, [&] { window.close(); });
    press("CmdBatchAll");
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(desktop.openedPaths.empty());
    EXPECT_TRUE(desktop.notifications.empty());
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_EQ(desktop.awake, (std::vector<bool>{true, false}));
    EXPECT_EQ(std::filesystem::file_size(desktop.settings / "tsStart.up"), 1058U);
}

TEST_F(WindowRun, ClosingStopsARunInsideARunAndTheOuterOneToo) {
    addGreys(4);
    int depth = 0;
    whenBefore(2, [&] {
        ++depth;
        batch.txtName = "Inner";
        whenBefore(3, [&] {
            ++depth;
            window.close();
        });
        press("CmdBatchAll");
    });
    press("CmdBatchAll");
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Inner1.bmp", "Inner2.bmp"}));
    EXPECT_EQ(RTF().toPlainText().count(" Processing Completed!"), 2);
}

}  // namespace
}  // namespace tessarine::tests
