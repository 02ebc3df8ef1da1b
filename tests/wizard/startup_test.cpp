#include <csignal>

#include <QElapsedTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>
#include <gtest/gtest.h>

#include "support/children.h"
#include "support/files.h"
#include "support/paths.h"
#include "wizard/program.h"

namespace tessarine::tests {
namespace {

WindowCommandLine parsed(const std::vector<std::string>& arguments) {
    return WindowCommandLine::parse(arguments);
}

TEST(WindowCommandLineTest, FilesAreMadeAbsoluteAndAddressesOfFilesArePaths) {
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(parsed({"a.qfk", "/b c.jpg", "file:///d%20e.png"}).paths,
              (std::vector<std::string>{here + "/a.qfk", "/b c.jpg", "/d e.png"}));
}

TEST(WindowCommandLineTest, AfterTwoDashesEverythingIsAFile) {
    const WindowCommandLine line = parsed({"--", "--help", "--"});
    EXPECT_FALSE(line.help);
    EXPECT_EQ(line.paths.size(), 2U);
    EXPECT_EQ(line.refusal, "");
}

TEST(WindowCommandLineTest, AnOptionThatItDoesNotKnowIsNamed) {
    EXPECT_EQ(parsed({"--frobnicate"}).refusal, "unknown option --frobnicate");
    EXPECT_TRUE(parsed({"--version"}).version);
    EXPECT_TRUE(parsed({"-h"}).help);
}

/// The program itself, with settings of its own, on a platform without a screen.
class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("XDG_RUNTIME_DIR", QString::fromStdString(scratch.path().string()));
        environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/none");
        environment.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/none");
        program.setProcessEnvironment(environment);
        // The settings lie beside the program where that can be written: a copy has its own.
        const std::string copy = scratch / "tessarine";
        std::filesystem::copy_file(TESSARINE_PROGRAM, copy);
        program.setProgram(QString::fromStdString(copy));
    }
    ~ProgramTest() override {
        program.kill();
        program.waitForFinished();
    }
    int run(const QStringList& arguments) {
        program.setArguments(arguments);
        program.start();
        EXPECT_TRUE(program.waitForFinished(20000));
        return program.exitCode();
    }
    bool settingsAppear(uintmax_t bytes) {
        const std::string file = scratch / "tsStart.up";
        return QTest::qWaitFor(
            [&] {
                std::error_code error;
                return std::filesystem::file_size(file, error) == bytes && !error;
            },
            20000);
    }

    const ScratchFolder scratch;
    QProcess program;
};

TEST_F(ProgramTest, TellsItsVersionAndItsUsageWithoutAScreen) {
    QProcessEnvironment environment = program.processEnvironment();
    environment.insert("QT_QPA_PLATFORM", "none-such");
    program.setProcessEnvironment(environment);
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_TRUE(program.readAllStandardOutput().startsWith("tessarine "));
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_TRUE(program.readAllStandardOutput().startsWith("usage: tessarine "));
}

TEST_F(ProgramTest, WithoutAScreenItSaysSoPlainlyAndEnds) {
    QProcessEnvironment environment = program.processEnvironment();
    environment.insert("QT_QPA_PLATFORM", "none-such");
    program.setProcessEnvironment(environment);
    EXPECT_EQ(run({}), 3);
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    const QString said = QString::fromUtf8(program.readAllStandardError());
    EXPECT_TRUE(said.startsWith("tessarine: no window can be opened here: ")) << said.toStdString();
    EXPECT_TRUE(said.contains("none-such")) << said.toStdString();
    EXPECT_EQ(said.count('\n'), 2) << said.toStdString();
}

TEST_F(ProgramTest, RefusesAnOptionThatItDoesNotKnow) {
    EXPECT_EQ(run({"--frobnicate"}), 2);
    EXPECT_TRUE(program.readAllStandardError().contains("--frobnicate"));
}

TEST_F(ProgramTest, StartsBehindItsSplashWindowAndLeavesInPeaceWhenAsked) {
    QElapsedTimer clock;
    clock.start();
    program.start();
    ASSERT_TRUE(program.waitForStarted());
    // Start-up makes an empty file, and not before the splash window's time.
    ASSERT_TRUE(settingsAppear(0));
    EXPECT_GE(clock.elapsed(), 500);
    QTest::qWait(500);
    ASSERT_EQ(kill(static_cast<pid_t>(program.processId()), SIGTERM), 0);
    ASSERT_TRUE(program.waitForFinished(20000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(std::filesystem::file_size(scratch / "tsStart.up"), 1058U);
}

TEST_F(ProgramTest, WithoutItsHelperTheWindowOpensAllTheSameAndTellsWhatIsMissing) {
    program.start();
    ASSERT_TRUE(settingsAppear(0));
    kill(static_cast<pid_t>(program.processId()), SIGTERM);
    ASSERT_TRUE(program.waitForFinished(20000));
    EXPECT_EQ(program.exitCode(), 0);
    const QString said = QString::fromUtf8(program.readAllStandardError());
    EXPECT_TRUE(said.contains("tessarine: the helper program 'tessarine-codec' is missing"))
        << said.toStdString();
}

TEST_F(ProgramTest, ItsHelperStandsReadyAndIsGoneWithIt) {
    std::filesystem::create_symlink(TESSARINE_CODEC, scratch / "tessarine-codec");
    program.start();
    ASSERT_TRUE(settingsAppear(0));
    const std::vector<pid_t> helpers = children(static_cast<pid_t>(program.processId()));
    ASSERT_EQ(helpers.size(), 1U);
    program.kill();
    ASSERT_TRUE(program.waitForFinished(20000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return kill(helpers[0], 0) != 0; }, 20000));
}

}  // namespace
}  // namespace tessarine::tests
