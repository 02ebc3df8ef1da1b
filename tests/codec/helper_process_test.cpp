#include "imagefiles/codec/helper_process.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>

#include "pixels/failures.h"
#include "support/paths.h"
#include "support/program.h"

// The process, with shell scripts in place of the helper program.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class HelperProcesses : public testing::Test {
  protected:
    std::string script(const std::string& lines) const {
        const std::string path = scratch / "helper";
        writeFile(path, "#!/bin/sh\n" + lines + "\n");
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }
    /// Waits until the script has become `sleep`, with all that it inherited.
    static std::string folderOf(const HelperProcess& helper) {
        const std::string folder = "/proc/" + std::to_string(helper.process());
        for (int i = 0; i < 5000 && readFile(folder + "/comm") != "sleep\n"; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return folder;
    }
    static bool isThere(pid_t process) { return ::kill(process, 0) == 0; }

    const ScratchFolder scratch;
};

TEST_F(HelperProcesses, ItInheritsItsSocketAndNothingElse) {
    // As a library or a shell would leave them: they stay open in programs that are started.
    const int forgotten = ::open("/dev/zero", O_RDONLY);
    const int far = ::dup2(forgotten, 200);
    const HelperProcess helper(script("exec sleep 60"), HelperKind::files);
    const std::string folder = folderOf(helper);
    // Its loader has libraries open for a moment.
    std::map<std::string, std::string> files;
    for (int i = 0; i < 1000 && files.size() != 4; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        files.clear();
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(folder + "/fd"))
            files[entry.path().filename()] = fs::read_symlink(entry.path(), ignored);
    }
    ::close(forgotten);
    ::close(far);
    ASSERT_EQ(files.size(), 4U) << testing::PrintToString(files);
    for (const char* stream : {"0", "1", "2"})
        EXPECT_EQ(files[stream], "/dev/null");
    EXPECT_THAT(files["3"], StartsWith("socket:"));
}

TEST_F(HelperProcesses, ItIsToldItsSocketItsKindAndItsParent) {
    for (const auto& [kind, word] :
         {std::pair(HelperKind::files, "files"), std::pair(HelperKind::drawing, "drawing")}) {
        HelperProcess helper(script("echo \"$1 $2 $3\" > " + (scratch / "told")), kind);
        EXPECT_EQ(helper.awaitEnd().number, 0);
        EXPECT_EQ(readFile(scratch / "told"),
                  std::string("3 ") + word + " " + std::to_string(::getpid()) + "\n");
    }
}

TEST_F(HelperProcesses, OfTheEnvironmentItKnowsOnlyWhatFontsAndTextsNeed) {
    ::setenv("TESSARINE_SECRET", "word", 1);
    ::setenv("LC_TESSARINE", "C", 1);
    const HelperProcess helper(script("exec sleep 60"), HelperKind::files);
    const std::string environment = readFile(folderOf(helper) + "/environ");
    ::unsetenv("TESSARINE_SECRET");
    ::unsetenv("LC_TESSARINE");
    EXPECT_THAT(environment, Not(HasSubstr("TESSARINE_SECRET")));
    EXPECT_THAT(environment, HasSubstr("LC_TESSARINE=C"));
}

TEST_F(HelperProcesses, SignalsOfTheTerminalDoNotReachIt) {
    const HelperProcess helper(script("exec sleep 60"), HelperKind::files);
    folderOf(helper);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP})
        ::kill(helper.process(), signal);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::string status = readFile("/proc/" + std::to_string(helper.process()) + "/status");
    EXPECT_THAT(status, HasSubstr("State:\tS"));
}

TEST_F(HelperProcesses, WhatThisProgramIgnoresEndsIt) {
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
    HelperProcess helper(script("kill -PIPE $$; exit 7"), HelperKind::files);
    const HelperEnd end = helper.awaitEnd();
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(end.how, HelperEnd::How::signalled);
    EXPECT_EQ(end.number, SIGPIPE);
}

TEST_F(HelperProcesses, ItsEndIsKnownWhereThisProgramWasStartedToIgnoreEnds) {
    ::signal(SIGCHLD, SIG_IGN);
    HelperProcess helper(script("exit 7"), HelperKind::files);
    const HelperEnd end = helper.awaitEnd();
    ::signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(end.how, HelperEnd::How::exited);
    EXPECT_EQ(end.number, 7);
}

TEST_F(HelperProcesses, ItTellsHowItEnded) {
    const auto endOf = [&](const std::string& lines) {
        return HelperProcess(script(lines), HelperKind::files).awaitEnd();
    };
    EXPECT_EQ(endOf("exit 3").inWords(), "ended with status 3");
    EXPECT_EQ(endOf("kill -SEGV $$").inWords(), "was ended by SIGSEGV (Segmentation fault)");
    EXPECT_FALSE(endOf("kill -SEGV $$").isOutOfTime());
    EXPECT_TRUE(endOf("kill -XCPU $$").isOutOfTime());
    EXPECT_TRUE(endOf("kill -ALRM $$").isOutOfTime());
}

TEST_F(HelperProcesses, OneThatDoesNotEndIsEndedAndLeavesNothing) {
    HelperProcess helper(script("exec sleep 60"), HelperKind::files);
    const pid_t process = helper.process();
    EXPECT_EQ(helper.awaitEnd().how, HelperEnd::How::unknown);
    EXPECT_FALSE(isThere(process));
}

TEST_F(HelperProcesses, ItGoesWithItsObject) {
    pid_t process = 0;
    {
        const HelperProcess helper(script("exec sleep 60"), HelperKind::files);
        process = helper.process();
        EXPECT_TRUE(isThere(process));
    }
    EXPECT_FALSE(isThere(process));
}

TEST_F(HelperProcesses, AProgramThatIsNotThereIsNamed) {
    try {
        const HelperProcess helper(scratch / "nothing", HelperKind::files);
        FAIL() << "it started";
    } catch (const StatementFailed& failure) {
        EXPECT_THAT(failure.what(),
                    AllOf(HasSubstr(scratch / "nothing"), HasSubstr("No such file or directory")));
    }
}

}  // namespace
}  // namespace tessarine::tests
