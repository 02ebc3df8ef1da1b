#include <string>
#include <vector>

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gmock/gmock.h>

#include "support/qt_printers.h"
#include "support/window_driver.h"
#include "widgets/about.h"
#include "widgets/folder_dialog.h"
#include "widgets/folder_tree.h"
#include "widgets/splash.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QIcon picture(const QColor& colour) {
    QPixmap pixels(40, 30);
    pixels.fill(colour);
    return QIcon(pixels);
}

/// The folder dialog of a temporary folder with one folder "pictures" in it.
class TheFolderDialog : public testing::Test {
  protected:
    TheFolderDialog() { EXPECT_TRUE(QDir(root).mkdir("pictures")); }

    /// Opens the dialog, does something in it, and waits until it has gone.
    void runDialog(const QString& destination, const std::function<void(fBrowse&)>& act) {
        fBrowse dialog(destination, selected,
                       [this](const QString& text) { messages.push_back(text.toStdString()); });
        QTimer::singleShot(0, &dialog, [&] {
            EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
            act(dialog);
            if (dialog.isVisible()) ADD_FAILURE() << "the dialog stays open";
            dialog.done(0);
        });
        dialog.exec();
    }
    static FolderTree& tree(fBrowse& dialog) { return control<FolderTree>(dialog, "FT"); }
    static QLabel& fileName(fBrowse& dialog) { return control<QLabel>(dialog, "FileName"); }
    static QPushButton& ok(fBrowse& dialog) { return control<QPushButton>(dialog, "cmdOK"); }
    static QPushButton& cancel(fBrowse& dialog) {
        return control<QPushButton>(dialog, "cmdCancel");
    }

    QTemporaryDir folder;
    QString root = QDir(folder.path()).canonicalPath();
    QString selected = "before";
    std::vector<std::string> messages;
};

TEST_F(TheFolderDialog, ShowsItsTexts) {
    runDialog(root, [&](fBrowse& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Select Folder");
        EXPECT_EQ(ok(dialog).text().remove('&'), "Select");
        EXPECT_EQ(cancel(dialog).text().remove('&'), "Cancel");
        click(cancel(dialog));
    });
}

TEST_F(TheFolderDialog, OpensAtTheDestination) {
    runDialog("  " + root + " ", [&](fBrowse& dialog) {
        EXPECT_EQ(tree(dialog).path(), root);
        EXPECT_EQ(fileName(dialog).text(), root);
        EXPECT_TRUE(ok(dialog).isEnabled());
        click(cancel(dialog));
    });
}

TEST_F(TheFolderDialog, OpensAtItsDefaultPlaceForADestinationThatIsNotThere) {
    for (const QString& destination : {root + "/missing", QString(), QString("   ")})
        runDialog(destination, [&](fBrowse& dialog) {
            EXPECT_EQ(tree(dialog).path(), "");
            EXPECT_EQ(fileName(dialog).text(), "");
            EXPECT_FALSE(ok(dialog).isEnabled());
            click(cancel(dialog));
        });
}

TEST_F(TheFolderDialog, HandsOverTheFolderThatWasChosen) {
    runDialog(root, [&](fBrowse& dialog) {
        tree(dialog).setPath(root + "/pictures");
        EXPECT_EQ(fileName(dialog).text(), root + "/pictures");
        click(ok(dialog));
    });
    EXPECT_EQ(selected, root + "/pictures");
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(TheFolderDialog, SaysThatAPathIsInvalidAndStays) {
    runDialog(root + "/pictures", [&](fBrowse& dialog) {
        ASSERT_TRUE(QDir(root).rmdir("pictures"));
        click(ok(dialog));
        EXPECT_THAT(messages, ElementsAre("Invalid Path"));
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(selected, "before");
        // The same when the tree has noticed meanwhile.
        EXPECT_TRUE(QTest::qWaitFor([&] { return tree(dialog).path().isEmpty(); }));
        EXPECT_EQ(fileName(dialog).text(), root + "/pictures");
        click(ok(dialog));
        EXPECT_EQ(messages.size(), 2U);
        EXPECT_TRUE(dialog.isVisible());
        click(cancel(dialog));
    });
}

TEST_F(TheFolderDialog, EmptiesTheSelectedFolderOnCancel) {
    runDialog(root, [&](fBrowse& dialog) { click(cancel(dialog)); });
    EXPECT_EQ(selected, "");
}

TEST_F(TheFolderDialog, TakesEscapeForCancel) {
    runDialog(root, [&](fBrowse& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(selected, "");
}

TEST_F(TheFolderDialog, LeavesTheSelectedFolderWhenItIsClosedOtherwise) {
    runDialog(root, [&](fBrowse& dialog) { dialog.close(); });
    EXPECT_EQ(selected, "before");
}

TEST_F(TheFolderDialog, TakesADoubleClickForSelect) {
    runDialog(root + "/pictures", [&](fBrowse& dialog) {
        FolderTree& FT = tree(dialog);
        // The name stays at its place once all around it has been loaded.
        QRect name;
        ASSERT_TRUE(QTest::qWaitFor([&] {
            QTest::qWait(50);
            return std::exchange(name, FT.visualRect(FT.currentIndex())) ==
                   FT.visualRect(FT.currentIndex());
        }));
        const QPoint place(name.left() + 10, name.center().y());
        ASSERT_TRUE(FT.viewport()->rect().contains(place));
        QTest::mouseClick(FT.viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(FT.viewport(), Qt::LeftButton, {}, place);
    });
    EXPECT_EQ(selected, root + "/pictures");
}

TEST_F(TheFolderDialog, IsWorkedWithTheKeyboardAlone) {
    runDialog(root + "/pictures",
              [&](fBrowse& dialog) { QTest::keyClick(&tree(dialog), Qt::Key_Return); });
    EXPECT_EQ(selected, root + "/pictures");
    selected = "before";
    // A button that is pressed by its mnemonic shows that for a moment.
    const auto press = [](fBrowse& dialog, Qt::Key key) {
        QTest::keyClick(&dialog, key, Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); }));
    };
    runDialog(root, [&](fBrowse& dialog) { press(dialog, Qt::Key_S); });
    EXPECT_EQ(selected, root);
    runDialog(root, [&](fBrowse& dialog) { press(dialog, Qt::Key_C); });
    EXPECT_EQ(selected, "");
}

TEST(TheSplashWindow, TicksOnceHalfASecondAfterItIsShown) {
    fSplash splash(picture(Qt::red), QSize(40, 30));
    const auto* timer = splash.findChild<QTimer*>("tSplash");
    ASSERT_TRUE(timer);
    EXPECT_EQ(timer->interval(), 500);
    EXPECT_FALSE(timer->isActive());
    int ticks = 0;
    QObject::connect(&splash, &fSplash::tSplash, [&] { ++ticks; });
    splash.show();
    EXPECT_FALSE(splash.isModal());
    QTest::qWait(300);
    EXPECT_EQ(ticks, 0);
    splash.hide();
    splash.show();
    QTest::qWait(1000);
    EXPECT_EQ(ticks, 1);
}

TEST(TheSplashWindow, ClosesOnAClickAndTicksAllTheSame) {
    fSplash splash(picture(Qt::red), QSize(40, 30));
    int ticks = 0;
    QObject::connect(&splash, &fSplash::tSplash, [&] { ++ticks; });
    int lastWindows = 0;
    const auto counted =
        QObject::connect(qApp, &QGuiApplication::lastWindowClosed, [&] { ++lastWindows; });
    splash.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&splash));
    click(control(splash, "picSplash"));
    EXPECT_FALSE(splash.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return ticks == 1; }, 2000));
    EXPECT_EQ(lastWindows, 0);
    QObject::disconnect(counted);
}

TEST(TheSplashWindow, ClosesOnAClickOnItsGround) {
    fSplash splash(picture(Qt::red), QSize(40, 30));
    splash.show();
    click(splash);
    EXPECT_FALSE(splash.isVisible());
}

TEST(TheSplashWindow, IsItsPicture) {
    fSplash splash(picture(Qt::red), QSize(40, 30));
    splash.show();
    EXPECT_EQ(splash.size(), QSize(40, 30));
    EXPECT_EQ(splash.grab().toImage().pixelColor(20, 15), QColor(Qt::red));
}

TEST(TheAboutBox, ClosesOnItsButton) {
    fAbout about(picture(Qt::blue), QSize(40, 30), "What it says");
    QTimer::singleShot(0, &about, [&] { click(control(about, "cmdOK")); });
    EXPECT_EQ(about.exec(), QDialog::Accepted);
}

TEST(TheAboutBox, ClosesOnAClickOnItsPicture) {
    fAbout about(picture(Qt::blue), QSize(40, 30), "What it says");
    QTimer::singleShot(0, &about, [&] { click(control(about, "Image1")); });
    EXPECT_EQ(about.exec(), QDialog::Accepted);
}

TEST(TheAboutBox, ClosesOnEnterAndOnEscape) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        fAbout about(picture(Qt::blue), QSize(40, 30), "What it says");
        QTimer::singleShot(0, &about, [&] { QTest::keyClick(&about, key); });
        about.exec();
        EXPECT_FALSE(about.isVisible());
    }
}

TEST(TheAboutBox, ShowsAndTellsItsPicture) {
    fAbout about(picture(Qt::blue), QSize(40, 30), "What it says");
    QWidget& Image1 = control(about, "Image1");
    EXPECT_EQ(Image1.accessibleName(), "What it says");
    EXPECT_EQ(Image1.size(), QSize(40, 30));
    EXPECT_EQ(Image1.grab().toImage().pixelColor(20, 15), QColor(Qt::blue));
}

}  // namespace
}  // namespace tessarine::tests
