#include <chrono>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include "support/files.h"
#include "support/paths.h"
#include "support/window_driver.h"
#include "wizard/instance_lock.h"
#include "wizard/system_desktop.h"

namespace tessarine::tests {
namespace {

QDBusConnection nowhere() { return QDBusConnection("nowhere"); }

class DesktopTest : public testing::Test {
  protected:
    /// Does something with the dialog that opens next.
    template <class Act>
    void onDialog(Act act) {
        QTimer::singleShot(80, qApp, [this, act] {
            QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            dialogSeen = true;
            act(*dialog);
            if (dialog->isVisible()) dialog->close();
        });
    }

    const ScratchFolder scratch;
    SystemDesktop desktop{scratch / "lock", nowhere(), nowhere()};
    QWidget window;
    bool dialogSeen = false;
};

TEST_F(DesktopTest, AMessageBoxHasTextTitleIconAndOneOkButton) {
    const std::pair<Icon, QMessageBox::Icon> icons[] = {
        {Icon::information, QMessageBox::Information},
        {Icon::exclamation, QMessageBox::Warning},
        {Icon::critical, QMessageBox::Critical}};
    for (const auto& [asked, shown] : icons) {
        onDialog([shown = shown](QWidget& dialog) {
            auto& box = dynamic_cast<QMessageBox&>(dialog);
            EXPECT_EQ(box.text(), "First <b>line</b>\nsecond");
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.windowTitle(), "A title");
            EXPECT_EQ(box.icon(), shown);
            EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
            EXPECT_TRUE(box.textInteractionFlags() & Qt::TextSelectableByMouse);
            click(*box.button(QMessageBox::Ok));
        });
        desktop.messageBox(&window, "First <b>line</b>\r\nsecond", asked, "A title");
        EXPECT_TRUE(dialogSeen);
        dialogSeen = false;
    }
}

TEST_F(DesktopTest, AMessageBoxOfAHiddenWindowStandsOverTheOneThatIsSeen) {
    QWidget splash;
    splash.show();
    onDialog([&](QWidget& dialog) { EXPECT_EQ(dialog.parentWidget(), &splash); });
    desktop.messageBox(&window, "text", Icon::information, "title");
    EXPECT_TRUE(dialogSeen);
    window.show();
    onDialog([&](QWidget& dialog) { EXPECT_EQ(dialog.parentWidget(), &window); });
    desktop.messageBox(&window, "text", Icon::information, "title");
}

TEST(DialogFilter, IsTurnedIntoDescriptionAndPattern) {
    EXPECT_EQ(dialogFilter("Function List(*.qfk)|*.qfk"), "Function List (*.qfk)");
    EXPECT_EQ(dialogFilter("Picture List(*.qpkl)|*.qpkl"), "Picture List (*.qpkl)");
}

TEST_F(DesktopTest, TheSaveDialogStartsInItsFolderAndANameStaysAsItWasTyped) {
    onDialog([&](QWidget& dialog) {
        auto& files = dynamic_cast<QFileDialog&>(dialog);
        EXPECT_EQ(files.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(files.nameFilters(), QStringList{"Function List (*.qfk)"});
        EXPECT_EQ(files.directory().absolutePath().toStdString(), scratch.path().string());
        EXPECT_FALSE(files.testOption(QFileDialog::DontConfirmOverwrite));
        auto& name = control<QLineEdit>(dialog, "fileNameEdit");
        QTest::keyClicks(&name, "mine");
        QTest::keyClick(&name, Qt::Key_Return);
    });
    EXPECT_EQ(desktop.saveDialog(&window, "Function List(*.qfk)|*.qfk", scratch.path()),
              scratch / "mine");
    EXPECT_TRUE(dialogSeen);
}

TEST_F(DesktopTest, TheOpenDialogTakesAFileThatExists) {
    writeAll(scratch / "list.qpkl", "x");
    onDialog([&](QWidget& dialog) {
        EXPECT_EQ(dynamic_cast<QFileDialog&>(dialog).acceptMode(), QFileDialog::AcceptOpen);
        auto& name = control<QLineEdit>(dialog, "fileNameEdit");
        QTest::keyClicks(&name, "list.qpkl");
        QTest::keyClick(&name, Qt::Key_Return);
    });
    EXPECT_EQ(desktop.openDialog(&window, "Picture List(*.qpkl)|*.qpkl", scratch.path()),
              scratch / "list.qpkl");
    EXPECT_TRUE(dialogSeen);
}

TEST_F(DesktopTest, ACancelledDialogGivesNothing) {
    onDialog([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(desktop.openDialog(&window, "Picture List(*.qpkl)|*.qpkl", scratch.path()),
              std::nullopt);
    EXPECT_TRUE(dialogSeen);
}

TEST_F(DesktopTest, APathIsOpenedByTheSystemsOwnToolWithoutWaitingForIt) {
    const std::string tool = scratch / "xdg-open";
    writeAll(tool, "#!/bin/sh\nsleep 0.3\nprintf '%s' \"$1\" > \"" + (scratch / "new") +
                       "\"\nmv \"" + (scratch / "new") + "\" \"" + (scratch / "asked") + "\"\n");
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    const QByteArray before = qgetenv("PATH");
    qputenv("PATH", QByteArray::fromStdString(scratch.path().string()) + ":" + before);
    const auto begin = std::chrono::steady_clock::now();
    desktop.openPath("/some/folder with blanks/");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(250));
    const std::string asked = scratch / "asked";
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(asked); }, 5000));
    EXPECT_EQ(readAll(asked), "/some/folder with blanks/");
    qputenv("PATH", before);
}

TEST_F(DesktopTest, WithoutABusNothingHappensAndNothingWaits) {
    desktop.keepAwake(true);
    desktop.notify("title", "text");
    settle();
    desktop.keepAwake(false);
}

// ---- Other instances ----

TEST(InstanceLock, TheFirstIsAloneAndTheNextOnesAreNot) {
    const ScratchFolder scratch;
    const InstanceLock first(scratch / "lock");
    EXPECT_FALSE(first.othersRun());
    const InstanceLock second(scratch / "lock");
    EXPECT_TRUE(second.othersRun());
}

TEST(InstanceLock, AThirdMeetsTheSecondWhenTheFirstHasGone) {
    const ScratchFolder scratch;
    auto first = std::make_unique<InstanceLock>(scratch / "lock");
    const InstanceLock second(scratch / "lock");
    first.reset();
    EXPECT_TRUE(InstanceLock(scratch / "lock").othersRun());
}

TEST(InstanceLock, AnInstanceThatCrashedIsForgotten) {
    const ScratchFolder scratch;
    const pid_t child = fork();
    if (child == 0) {
        const InstanceLock held(scratch / "lock");
        kill(getpid(), SIGKILL);
    }
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(InstanceLock(scratch / "lock").othersRun());
}

TEST(InstanceLock, AProgramThatWasStartedDoesNotHoldIt) {
    const ScratchFolder scratch;
    QProcess sleeper;
    {
        const InstanceLock held(scratch / "lock");
        sleeper.start("sleep", {"30"});
        ASSERT_TRUE(sleeper.waitForStarted());
    }
    EXPECT_FALSE(InstanceLock(scratch / "lock").othersRun());
    sleeper.kill();
    sleeper.waitForFinished();
}

TEST(InstanceLock, APlaceThatCannotBeWrittenMeansThatNoOtherRuns) {
    EXPECT_FALSE(InstanceLock("/proc/none/lock").othersRun());
}

// ---- The buses ----

/// Answers as the services of a desktop do, and keeps what it was asked.
class Services : public QDBusVirtualObject {
  public:
    QStringList calls;
    int lockEnds[2] = {-1, -1};

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& connection) override {
        const QVariantList given = call.arguments();
        const QString member = call.interface() + "." + call.member();
        if (member == "org.freedesktop.login1.Manager.Inhibit") {
            calls << "login " + given[0].toString() + " " + given[3].toString();
            if (pipe2(lockEnds, O_CLOEXEC | O_NONBLOCK) != 0) return false;
            QDBusUnixFileDescriptor lock;
            lock.giveFileDescriptor(lockEnds[1]);
            connection.send(call.createReply(QVariant::fromValue(lock)));
        } else if (call.member() == "Inhibit") {
            calls << "session " + given[0].toString();
            connection.send(call.createReply(7U));
        } else if (call.member() == "UnInhibit") {
            calls << "release " + given[0].toString();
        } else if (member == "org.freedesktop.Notifications.Notify") {
            calls << "notify " + given[0].toString() + ": " + given[3].toString() + ": " +
                         given[4].toString();
        } else {
            return false;
        }
        return true;
    }
};

class Bus : public testing::Test {
  protected:
    void SetUp() override {
        if (QProcess::execute("dbus-daemon", {"--version"}) != 0)
            GTEST_SKIP() << "dbus-daemon is not installed";
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        ASSERT_TRUE(daemon_.waitForStarted());
        ASSERT_TRUE(daemon_.waitForReadyRead());
        const QString address = QString::fromUtf8(daemon_.readLine()).trimmed();
        server_.emplace(QDBusConnection::connectToBus(address, "services"));
        client_.emplace(QDBusConnection::connectToBus(address, "client"));
        ASSERT_TRUE(server_->isConnected() && client_->isConnected());
    }
    void TearDown() override {
        server_.reset();
        client_.reset();
        QDBusConnection::disconnectFromBus("services");
        QDBusConnection::disconnectFromBus("client");
        daemon_.kill();
        daemon_.waitForFinished();
    }
    void offer(const QString& service, const QString& path) {
        ASSERT_TRUE(server_->registerService(service));
        ASSERT_TRUE(server_->registerVirtualObject(path, &services));
    }
    bool heard(const QString& call) {
        return QTest::qWaitFor([&] { return services.calls.contains(call); }, 3000);
    }
    bool lockIsReleased() {
        return QTest::qWaitFor(
            [&] {
                char byte = 0;
                return read(services.lockEnds[0], &byte, 1) == 0;
            },
            3000);
    }

    Services services;
    std::optional<QDBusConnection> server_;
    std::optional<QDBusConnection> client_;

  private:
    QProcess daemon_;
};

TEST_F(Bus, TheLoginManagersLockIsHeldAndGivenBack) {
    offer("org.freedesktop.login1", "/org/freedesktop/login1");
    SleepInhibitor inhibitor(*client_, nowhere());
    inhibitor.keepAwake(true);
    ASSERT_TRUE(heard("login sleep:idle block"));
    QTest::qWait(50);
    char byte = 0;
    EXPECT_EQ(read(services.lockEnds[0], &byte, 1), -1);
    inhibitor.keepAwake(false);
    EXPECT_TRUE(lockIsReleased());
}

TEST_F(Bus, AnAnswerThatComesAfterTheEndIsGivenBack) {
    offer("org.freedesktop.login1", "/org/freedesktop/login1");
    SleepInhibitor inhibitor(*client_, nowhere());
    inhibitor.keepAwake(true);
    inhibitor.keepAwake(false);
    ASSERT_TRUE(heard("login sleep:idle block"));
    EXPECT_TRUE(lockIsReleased());
}

TEST_F(Bus, WithoutALoginManagerTheSessionIsAskedAndReleased) {
    offer("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver");
    SleepInhibitor inhibitor(nowhere(), *client_);
    inhibitor.keepAwake(true);
    ASSERT_TRUE(heard("session Tessarine"));
    QTest::qWait(50);
    inhibitor.keepAwake(false);
    EXPECT_TRUE(heard("release 7"));
}

TEST_F(Bus, ANotificationGoesToTheDesktop) {
    offer("org.freedesktop.Notifications", "/org/freedesktop/Notifications");
    const ScratchFolder scratch;
    SystemDesktop desktop(scratch / "lock", nowhere(), *client_);
    desktop.notify("Ombrel Tessarine", "3 pictures processed");
    EXPECT_TRUE(heard("notify Tessarine: Ombrel Tessarine: 3 pictures processed"));
}

}  // namespace
}  // namespace tessarine::tests
