#include <ctime>
#include <map>

#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <gmock/gmock.h>

#include "batch/functions.h"
#include "batch/list_files.h"
#include "support/files.h"
#include "support/recorder.h"
#include "support/window_fixture.h"

// The careful run, used by mouse and keyboard.

namespace tessarine::tests {
namespace {

class CarefulWindow : public WindowTest {
  protected:
    CarefulWindow() {
        start();
        goToStep(4);
        saveAsBitmaps();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    QPlainTextEdit& RTF() { return the<QPlainTextEdit>("RTF"); }
    QCheckBox& chkCareful() { return the<QCheckBox>("chkCareful"); }
    QPushButton& CmdKeepFailures() { return the<QPushButton>("CmdKeepFailures"); }
    void tick() {
        QTest::mouseClick(&chkCareful(), Qt::LeftButton, {}, QPoint(8, chkCareful().height() / 2));
    }
    void keys(Qt::Key key) { QTest::keyClick(window.focusWidget(), key, Qt::AltModifier); }
    void addGreys(int count) {
        for (int i = 0; i < count; ++i)
            addGrey(static_cast<uint8_t>(i), 64, 48);
    }
    std::string addBroken(const std::string& name = "broken.png") {
        const std::string path = in + "/" + name;
        writeAll(path, "no picture");
        batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
        return path;
    }
    /// Does something once so many pictures of a run have ended.
    void whenEnded(int count, std::function<void()> act) {
        auto* watch = new QTimer(&window);
        QObject::connect(watch, &QTimer::timeout, &window, [this, watch, count, act] {
            if (!batch.runsCarefully() || batch.pb.value < count) return;
            watch->stop();
            watch->deleteLater();
            ++acts;
            act();
        });
        watch->start(0);
    }

    int acts = 0;  ///< of whenEnded
};

TEST_F(CarefulWindow, IsOffAtTheStartAndTickedByMouseAndKeyboard) {
    EXPECT_FALSE(chkCareful().isChecked());
    EXPECT_FALSE(CmdKeepFailures().isEnabled());
    tick();
    EXPECT_EQ(batch.chkCareful, 1);
    the("CmdBatchAll").setFocus();
    keys(Qt::Key_C);
    EXPECT_TRUE(QTest::qWaitFor([this] { return batch.chkCareful == 0; }));
    batch.chkCareful = 1;
    batch.platform().changed("chkCareful");
    EXPECT_TRUE(chkCareful().isChecked());
    window.close();
    RecordedDesktop other;
    std::filesystem::copy(desktop.settings.path(), other.settings.path(),
                          std::filesystem::copy_options::overwrite_existing |
                              std::filesystem::copy_options::recursive);
    fBatch again(other);
    again.start();
    EXPECT_FALSE(control<QCheckBox>(again, "chkCareful").isChecked());
    EXPECT_EQ(again.batch().chkCareful, 0);
}

TEST_F(CarefulWindow, ControlsTellWhatTheyAreAndHaveKeysOfTheirOwn) {
    EXPECT_EQ(chkCareful().text(), "&Careful run");
    EXPECT_EQ(chkCareful().accessibleName(), "Careful run");
    EXPECT_THAT(chkCareful().toolTip().toStdString(), testing::HasSubstr("leave out what cannot"));
    EXPECT_EQ(CmdKeepFailures().text(), "&Keep list of failures...");
    EXPECT_EQ(CmdKeepFailures().accessibleName(), "Keep list of failures");
    EXPECT_FALSE(CmdKeepFailures().toolTip().isEmpty());
    std::map<QString, int> keys;
    for (const QAbstractButton* button : the("Frame_step4").findChildren<QAbstractButton*>()) {
        const qsizetype at = button->text().indexOf('&');
        ASSERT_GE(at, 0) << button->text().toStdString();
        ++keys[button->text().mid(at + 1, 1).toUpper()];
    }
    EXPECT_EQ(keys, (std::map<QString, int>{{"B", 1}, {"S", 1}, {"D", 1}, {"C", 1}, {"K", 1}}));
}

TEST_F(CarefulWindow, AllControlsHaveTheirPlaceInWindowsOfAnyWidth) {
    const QWidget& commands = the("Frame_command");
    const char* names[] = {"CmdBatchAll", "CmdStop", "CmdKeepFailures", "chkShowDestination",
                           "chkCareful"};
    for (const QSize size : {QSize(500, 400), QSize(560, 400), QSize(640, 480), QSize(800, 600),
                             QSize(1024, 768), QSize(1920, 1080)}) {
        window.resize(size);
        settle();
        for (const char* name : names) {
            const QWidget& one = the(name);
            EXPECT_TRUE(commands.rect().contains(one.geometry())) << name << size.width();
            EXPECT_GE(one.width(), one.sizeHint().width()) << name << size.width();
            EXPECT_GE(one.height(), one.sizeHint().height()) << name << size.width();
            for (const char* other : names) {
                if (&one == &the(other)) continue;
                EXPECT_FALSE(one.geometry().intersects(the(other).geometry()))
                    << name << other << size.width();
            }
        }
        EXPECT_GT(RTF().height(), 100) << size.height();
    }
}

TEST_F(CarefulWindow, LeavesOutWhatCannotBeReadAndNamesItAtTheEnd) {
    addGreys(2);
    const std::string broken = addBroken();
    addGreys(2);
    batch.SelectNode(findFunction("Noise")->treeIndex);
    batch.AddFunction("Noise");
    tick();
    QTest::mouseClick(&the("CmdBatchAll"), Qt::LeftButton);
    EXPECT_EQ(outputs(),
              (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample4.bmp", "Sample5.bmp"}));
    const std::string shown = RTF().toPlainText().toStdString();
    EXPECT_THAT(shown, testing::StartsWith("5\nTotal Number of functions to be Applied: 1\n"));
    EXPECT_THAT(shown, testing::HasSubstr("\n Processed Image Saved as Sample2.bmp\n"
                                          " Failed: broken.png\n"
                                          " Processed Image Saved as Sample4.bmp\n"));
    EXPECT_THAT(shown, testing::HasSubstr("\n\n Processing Completed!\n"
                                          " 4 saved, 0 kept, 1 failed of 5 pictures\n\n"
                                          " Failures:\n " +
                                          broken + ": no picture can be read from it as .png"));
    EXPECT_FALSE(the("pb").isVisible());
    EXPECT_EQ(desktop.awake, (std::vector<bool>{true, false}));

    const std::string other = scratch / "other";
    std::filesystem::create_directory(other);
    Recorder platform;
    cBatch alone(platform);
    alone.lvSelected = batch.lvSelected;
    alone.Ltray = batch.Ltray;
    alone.txtName = "Sample";
    alone.txtDestination = other;
    alone.cboFormat.index = bmpRow;
    alone.BatchEach();
    for (const std::string& name : outputs())
        EXPECT_EQ(readAll(out + "/" + name), readAll(other + "/" + name)) << name;
}

TEST_F(CarefulWindow, TheFailuresAreKeptAsAPictureListByMouseOrKeyboard) {
    addGreys(1);
    const std::string broken = addBroken();
    const std::string second = addBroken("second.jpg");
    tick();
    press("CmdBatchAll");
    ASSERT_TRUE(CmdKeepFailures().isEnabled());
    desktop.saveAnswers = {in + "/failed.qpkl", in + "/again.qpkl"};
    press("CmdKeepFailures");
    keys(Qt::Key_K);
    EXPECT_TRUE(QTest::qWaitFor([this] { return desktop.saveFilters.size() == 2; }));
    EXPECT_EQ(desktop.saveFilters, (std::vector<std::string>(2, "Picture List(*.qpkl)|*.qpkl")));
    EXPECT_EQ(readPictureList(in + "/failed.qpkl"), (std::vector<std::string>{broken, second}));
    EXPECT_EQ(readAll(in + "/again.qpkl"), readAll(in + "/failed.qpkl"));
    // The list leads back into the basket.
    window.openPaths({in + "/failed.qpkl"});
    EXPECT_EQ(batch.lvSelected.size(), 2U);
    // With a run that has none there is nothing to be kept.
    batch.lvSelected.clear();
    addGreys(1);
    batch.chkOverwrite = 1;
    press("CmdBatchAll");
    EXPECT_FALSE(CmdKeepFailures().isEnabled());
}

TEST_F(CarefulWindow, EverythingStaysLiveAndNothingOfItCounts) {
    addGreys(30);
    tick();
    whenEnded(2, [this] {
        EXPECT_TRUE(the<QProgressBar>("pb").isVisible());
        EXPECT_EQ(the<QProgressBar>("pb").maximum(), 30);
        for (const int step : {1, 2, 3})
            goToStep(step);
        auto& name = the<QLineEdit>("txtName");
        EXPECT_TRUE(name.isEnabled());
        name.selectAll();
        QTest::keyClicks(&name, "Other");
        batch.RemoveAll();
        QTest::mouseMove(&name);
        goToStep(4);
        EXPECT_FALSE(RTF().toPlainText().isEmpty());
    });
    press("CmdBatchAll");
    EXPECT_EQ(acts, 1);
    EXPECT_EQ(outputs().size(), 30U);
    EXPECT_TRUE(outputs().contains("Sample30.bmp"));
    EXPECT_TRUE(batch.lvSelected.empty());
    EXPECT_EQ(batch.txtName, "Other");
}

TEST_F(CarefulWindow, BatchAllCannotBePressedDuringItAndTheKeyboardComesBackToIt) {
    addGreys(20);
    tick();
    the("CmdBatchAll").setFocus();
    whenEnded(1, [this] {
        EXPECT_FALSE(the("CmdBatchAll").isEnabled());
        EXPECT_EQ(window.focusWidget(), &RTF());
        QTest::mouseClick(&the("CmdBatchAll"), Qt::LeftButton);
        keys(Qt::Key_B);
        QTest::keyClick(window.focusWidget(), Qt::Key_Space);
        chkCareful().setChecked(false);
        EXPECT_FALSE(the("CmdBatchAll").isEnabled()) << "not for an ordinary run either";
    });
    QTest::keyClick(&the("CmdBatchAll"), Qt::Key_Space);
    EXPECT_EQ(acts, 1);
    EXPECT_EQ(outputs().size(), 20U);
    EXPECT_EQ(RTF().toPlainText().count(" Processing Completed!"), 1);
    EXPECT_TRUE(the("CmdBatchAll").isEnabled());
    EXPECT_EQ(window.focusWidget(), &the("CmdBatchAll"));
}

TEST_F(CarefulWindow, TickedDuringAnOrdinaryRunItWaitsForThatToEnd) {
    addGreys(3);
    auto* watch = new QTimer(&window);
    QObject::connect(watch, &QTimer::timeout, &window, [&, watch] {
        if (!batch.pb.visible || batch.pb.value != 1) return;
        watch->stop();
        tick();
        EXPECT_FALSE(the("CmdBatchAll").isEnabled());
        ++acts;
    });
    watch->start(0);
    press("CmdBatchAll");
    EXPECT_EQ(acts, 1);
    EXPECT_TRUE(the("CmdBatchAll").isEnabled());
    EXPECT_EQ(outputs().size(), 3U);
}

TEST_F(CarefulWindow, StopByKeyboardEndsItAndTheDestinationOpensIfAsked) {
    addGreys(200);
    press("chkShowDestination");
    tick();
    whenEnded(3, [this] { keys(Qt::Key_S); });
    press("CmdBatchAll");
    const size_t saved = outputs().size();
    EXPECT_GE(saved, 3U);
    EXPECT_LT(saved, 200U);
    EXPECT_THAT(RTF().toPlainText().toStdString(),
                testing::EndsWith(" Processing Stopped!\n " + std::to_string(saved) +
                                  " saved, 0 kept, 0 failed of 200 pictures, " +
                                  std::to_string(200 - saved) + " not begun"));
    EXPECT_EQ(desktop.openedPaths, std::vector<std::string>{out + "/"});
}

TEST_F(CarefulWindow, ClosingEndsItBehindWhatIsUnderWayAndShowsNothingMore) {
    addGreys(200);
    press("chkShowDestination");
    tick();
    int closings = 0;
    QObject::connect(&window, &fBatch::closed, [&closings] { ++closings; });
    whenEnded(3, [this] { window.close(); });
    press("CmdBatchAll");
    EXPECT_EQ(closings, 1);
    EXPECT_LT(outputs().size(), 200U);
    EXPECT_EQ(outputs().size(), batch.report.entries().size());
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(desktop.openedPaths.empty());
    EXPECT_TRUE(desktop.notifications.empty());
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_EQ(desktop.awake, (std::vector<bool>{true, false}));
    EXPECT_EQ(std::filesystem::file_size(desktop.settings / "tsStart.up"), 1058U);
}

TEST_F(CarefulWindow, WithAnotherWindowInFrontItsFailuresAreNotified) {
    addGreys(2);
    addBroken();
    chkCareful().setChecked(true);
    QApplication::setActiveWindow(nullptr);
    the<QPushButton>("CmdBatchAll").click();
    EXPECT_EQ(desktop.notifications,
              std::vector<std::string>{"Ombrel Tessarine: 3 pictures processed, 1 failed"});
}

TEST_F(CarefulWindow, WhatIsRefusedLeavesTheWindowAsItWas) {
    addGreys(1);
    const std::string own = out + "/Sample1.bmp";
    writeAll(own, "a picture");
    batch.lvSelected[0].Tag = own;
    batch.chkOverwrite = 1;
    tick();
    press("CmdBatchAll");
    ASSERT_EQ(desktop.boxes.size(), 1U);
    EXPECT_EQ(desktop.boxes[0].title, "Tessarine");
    EXPECT_THAT(desktop.boxes[0].text, testing::HasSubstr("replace one of its own pictures"));
    EXPECT_EQ(readAll(own), "a picture");
    EXPECT_EQ(RTF().toPlainText(), "");
    EXPECT_TRUE(desktop.awake.empty());
    EXPECT_TRUE(the("CmdBatchAll").isEnabled());
}

TEST_F(CarefulWindow, TheOverviewIsShownNowAndThenAndWholeAtTheEnd) {
    // A hundred thousand lines take the time of a few hundred.
    addGreys(1);
    tick();
    const std::string line = "\r\n Processed Image Saved as Sample123456.bmp";
    std::string lines;
    int changes = 0;
    whenEnded(1, [&] {
        const std::clock_t begin = std::clock();
        for (int i = 0; i < 100000; ++i) {
            batch.RTF += line;
            batch.platform().changed("RTF");
            if (i % 1000 == 0) settle();
        }
        ++changes;
        EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 10);
    });
    addGreys(30);
    press("CmdBatchAll");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(RTF().toPlainText().count("Sample123456.bmp"), 100000);
    EXPECT_EQ(RTF().toPlainText().remove('\n').size(),
              QString::fromStdString(batch.RTF).remove("\r\n").size());
}

}  // namespace
}  // namespace tessarine::tests
