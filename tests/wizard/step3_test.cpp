#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>

#include "support/buttons.h"
#include "support/window_fixture.h"
#include "widgets/folder_tree.h"

namespace tessarine::tests {
namespace {

class Step3 : public WindowTest {
  protected:
    Step3() {
        start();
        goToStep(3);
    }

    /// Browses, and does something with the folder dialog while it is open.
    template <class Act>
    void browse(Act act) {
        bool open = false;
        QTimer::singleShot(50, &window, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            open = dialog != nullptr;
            if (open) act(*dialog);
        });
        press("cmdBrowse");
        ASSERT_TRUE(open);
    }
    static void choose(QWidget& dialog, const std::string& folder) {
        auto* tree = dialog.findChild<FolderTree*>();
        ASSERT_NE(tree, nullptr);
        ASSERT_TRUE(tree->setPath(QString::fromStdString(folder)));
        click(control(dialog, "cmdOK"));
    }
};

TEST_F(Step3, TheTextsStandAsTold) {
    const auto text = [this](const char* name) {
        return the<QLabel>(name).text().remove('&').toStdString();
    };
    EXPECT_EQ(text("Label3"), "Destination Folder");
    EXPECT_EQ(text("Label9"),
              "You can save the processed Images to any of the following Formats with different "
              "quality arrangements.");
    EXPECT_EQ(text("Label2"), "Choose a file format to save all the processed file(s).");
    EXPECT_EQ(text("Label1"), "Generic Name");
    EXPECT_EQ(text("Label8"),
              "Generic Name will be applicable to all processed Images, but each image will be "
              "differentiated with an iterative number system.. i.e, if you type Generic Name as "
              "'Sample', then first image will be named as 'Sample1','Sample2', "
              "'Sample3'..........'SampleN' where N is the Total Images Processed.");
    EXPECT_EQ(the<QCheckBox>("chkOverwrite").text().remove('&'), "Overwrite if file(s) exist");
}

TEST_F(Step3, TheNoteListsTheEighteenFormatRowsAndCannotBeWritten) {
    auto& note = the<QPlainTextEdit>("Text1");
    const QStringList lines = note.toPlainText().split('\n');
    ASSERT_EQ(lines.size(), 18);
    EXPECT_EQ(lines.mid(0, 4), (QStringList{"GIF-64 Colors", "GIF-128 Colors", "GIF-256 Colors",
                                            "JPEG - Bad Quality"}));
    EXPECT_EQ(lines.back(), "SGI - Silicon Graphics");
    EXPECT_TRUE(note.isReadOnly());
    QTest::keyClicks(&note, "x");
    EXPECT_EQ(note.toPlainText().split('\n'), lines);
}

TEST_F(Step3, ShowsTheSettingsOfANewProgram) {
    EXPECT_EQ(the<QLineEdit>("txtDestination").text().toStdString(),
              desktop.settings.path().string());
    EXPECT_EQ(the<QLineEdit>("txtName").text(), "Sample");
    EXPECT_EQ(the<QComboBox>("cboFormat").count(), 18);
    EXPECT_EQ(the<QComboBox>("cboFormat").currentText(), "JPEG - Good Quality");
    EXPECT_TRUE(the<QCheckBox>("chkOverwrite").isChecked());
}

TEST_F(Step3, WhatAPersonSetsReachesTheRun) {
    auto& destination = the<QLineEdit>("txtDestination");
    destination.selectAll();
    QTest::keyClicks(&destination, "/no/such folder");
    EXPECT_EQ(batch.txtDestination, "/no/such folder");
    auto& name = the<QLineEdit>("txtName");
    name.selectAll();
    QTest::keyClick(&name, Qt::Key_Delete);
    EXPECT_EQ(batch.txtName, "");
    QTest::keyClicks(&name, "Trip");
    EXPECT_EQ(batch.txtName, "Trip");
    QTest::keyClick(&the("cboFormat"), Qt::Key_End);
    EXPECT_EQ(batch.cboFormat.index, 17);
    QTest::keyClick(&the("chkOverwrite"), Qt::Key_Space);
    EXPECT_EQ(batch.chkOverwrite, 0);
    // A folder typed by hand is checked by the run alone.
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(Step3, ShowsWhatTheProgramSets) {
    batch.txtName = "Other";
    batch.platform().changed("txtName");
    batch.cboFormat.index = -1;
    batch.platform().changed("cboFormat");
    batch.chkOverwrite = 0;
    batch.platform().changed("chkOverwrite");
    EXPECT_EQ(the<QLineEdit>("txtName").text(), "Other");
    EXPECT_EQ(the<QComboBox>("cboFormat").currentText(), "");
    EXPECT_FALSE(the<QCheckBox>("chkOverwrite").isChecked());
    EXPECT_EQ(batch.cboFormat.index, -1);
}

TEST_F(Step3, ANameThatIsNoTextOfOursStaysWhenItIsOnlyShown) {
    const std::string bytes = "/tmp/\xE9t\xE9";
    batch.txtDestination = bytes;
    batch.platform().changed("txtDestination");
    EXPECT_EQ(batch.txtDestination, bytes);
}

TEST_F(Step3, TheKeysGoToTheirControls) {
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_D, Qt::AltModifier);
    EXPECT_TRUE(the("txtDestination").hasFocus());
    QTest::keyClick(&window, Qt::Key_G, Qt::AltModifier);
    EXPECT_TRUE(the("txtName").hasFocus());
    QTest::keyClick(&window, Qt::Key_F, Qt::AltModifier);
    EXPECT_TRUE(the("cboFormat").hasFocus());
    QTest::keyClick(&window, Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(buttonsRest(window));
    EXPECT_EQ(batch.chkOverwrite, 0);
}

TEST_F(Step3, AChosenFolderBecomesTheDestination) {
    browse([this](QWidget& dialog) { choose(dialog, out); });
    EXPECT_EQ(batch.txtDestination, out);
    EXPECT_EQ(the<QLineEdit>("txtDestination").text().toStdString(), out);
}

TEST_F(Step3, ACancelledDialogLeavesTheDestination) {
    const std::string before = batch.txtDestination;
    browse([this](QWidget& dialog) {
        dialog.findChild<FolderTree*>()->setPath(QString::fromStdString(out));
        click(control(dialog, "cmdCancel"));
    });
    EXPECT_EQ(batch.txtDestination, before);
    EXPECT_EQ(batch.selectedFolder, "");
}

TEST_F(Step3, ClosedOtherwiseTheFolderOfAnEarlierUseIsTakenAgain) {
    browse([this](QWidget& dialog) { choose(dialog, out); });
    the<QLineEdit>("txtDestination").setText("/elsewhere");
    browse([](QWidget& dialog) { dialog.close(); });
    EXPECT_EQ(batch.txtDestination, out);
}

TEST_F(Step3, AChosenFolderThatVanishedIsToldAndTheDialogStays) {
    const std::string doomed = out + "/doomed";
    std::filesystem::create_directory(doomed);
    const std::string before = batch.txtDestination;
    browse([&](QWidget& dialog) {
        ASSERT_TRUE(dialog.findChild<FolderTree*>()->setPath(QString::fromStdString(doomed)));
        std::filesystem::remove(doomed);
        click(control(dialog, "cmdOK"));
        ASSERT_EQ(desktop.boxes.size(), 1U);
        EXPECT_EQ(desktop.boxes[0],
                  (RecordedDesktop::Box{"Invalid Path", Icon::information, "Tessarine"}));
        EXPECT_TRUE(dialog.isVisible());
        click(control(dialog, "cmdCancel"));
    });
    EXPECT_EQ(batch.txtDestination, before);
}

TEST_F(Step3, NothingOverlapsAndNothingLeavesTheFrame) {
    const QFont before = QApplication::font();
    for (const double points : {9.0, 11.0}) {
        QFont font("DejaVu Sans");
        font.setPointSizeF(points);
        QApplication::setFont(font);
        for (const QSize size :
             {QSize(640, 480), QSize(500, 400), QSize(1024, 768), QSize(1920, 1080)}) {
            window.resize(size);
            settle();
            const QWidget& frame = the("Frame_step3");
            const auto controls =
                frame.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
            for (const QWidget* one : controls) {
                if (!one->isVisible()) continue;
                EXPECT_TRUE(frame.rect().contains(one->geometry()))
                    << one->objectName().toStdString() << " at " << size.width() << ", " << points;
                for (const QWidget* other : controls)
                    EXPECT_TRUE(other == one || !other->isVisible() ||
                                !one->geometry().intersects(other->geometry()))
                        << one->objectName().toStdString() << " and "
                        << other->objectName().toStdString() << " at " << size.width();
            }
            for (const char* name : {"Label2", "Label8", "Label9"}) {
                const auto& text = the<QLabel>(name);
                EXPECT_GE(text.height(), text.heightForWidth(text.width())) << name;
            }
        }
    }
    QApplication::setFont(before);
}

TEST_F(Step3, InAWideWindowTheFieldsDoNotStretchAcrossIt) {
    window.resize(1920, 1080);
    settle();
    for (const char* name : {"cboFormat", "txtName", "Text1"})
        EXPECT_LE(the(name).width(), 620) << name;
    EXPECT_EQ(the("cboFormat").geometry().right(), the("cmdBrowse").geometry().right());
    EXPECT_EQ(the("Text1").x(), the("txtDestination").x());
}

TEST_F(Step3, TheBannerKeepsItsProportionsInsideTheFrameAndHidesWhereThereIsNoRoom) {
    window.resize(1024, 768);
    settle();
    const QSize large = the("iB").size();
    EXPECT_TRUE(the("iB").isVisible());
    window.resize(720, 600);
    settle();
    const QSize small = the("iB").size();
    EXPECT_LT(small.width(), large.width());
    EXPECT_NEAR(double(small.width()) / small.height(), double(large.width()) / large.height(),
                0.05);
    window.resize(500, 400);
    settle();
    EXPECT_FALSE(the("iB").isVisible());
}

}  // namespace
}  // namespace tessarine::tests
