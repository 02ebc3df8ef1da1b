#include "imagefiles/leftovers.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "imagefiles/disk.h"
#include "imagefiles/image_files.h"
#include "support/files.h"
#include "support/paths.h"

// What killed programs leave, and who removes it.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

/// A process that does something and then waits to be killed.
class Child {
  public:
    explicit Child(const std::function<void()>& work) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        process_ = ::fork();
        if (process_ == 0) {
            work();
            EXPECT_EQ(::write(ends[1], "x", 1), 1);
            for (;;)
                ::pause();
        }
        ::close(ends[1]);
        char done = 0;
        EXPECT_EQ(::read(ends[0], &done, 1), 1);
        ::close(ends[0]);
    }
    ~Child() { kill(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void kill() {
        if (process_ == 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        process_ = 0;
    }

  private:
    pid_t process_ = 0;
};

class Leftovers : public testing::Test {
  protected:
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(scratch.path()))
            all.insert(entry.path().filename().string());
        return all;
    }
    std::string folder() const { return scratch.path().string(); }

    const ScratchFolder scratch;
};

TEST_F(Leftovers, TheMarkOfTheMachineIsEightDigitsAndStays) {
    EXPECT_EQ(machineMark().size(), 8U);
    EXPECT_EQ(machineMark().find_first_not_of("0123456789abcdef"), std::string::npos);
    const std::string here = machineMark();
    Child([&] { writeAll(scratch / "mark", machineMark()); }).kill();
    EXPECT_EQ(readAll(scratch / "mark"), here);
}

TEST_F(Leftovers, ADraftStaysWhileItsWriterLivesAndGoesWhenThatWasKilled) {
    const Draft own(scratch / "own.bmp", Draft::Kind::hidden);
    Child writer([&] { new Draft(scratch / "a.bmp", Draft::Kind::hidden); });
    EXPECT_EQ(names().size(), 2U);
    EXPECT_EQ(removeLeftDrafts(folder()), 0);
    EXPECT_EQ(names().size(), 2U);
    writer.kill();
    EXPECT_EQ(names().size(), 2U) << "nobody has tidied up yet";
    EXPECT_EQ(removeLeftDrafts(folder() + "/"), 1);
    EXPECT_EQ(names(), (std::set<std::string>{fs::path(own.path()).filename()}));
}

TEST_F(Leftovers, ADraftWithoutANameLeavesNothing) {
    Child writer([&] {
        auto* draft = new Draft(scratch / "a.bmp");
        if (draft->kind() == Draft::Kind::hidden) ::unlink(draft->path().c_str());
    });
    EXPECT_TRUE(names().empty());
    writer.kill();
    EXPECT_TRUE(names().empty());
}

TEST_F(Leftovers, WhatIsNoDraftOfThisMachineStays) {
    const std::string mark = machineMark() == "00000000" ? "00000001" : "00000000";
    const std::set<std::string> others{".tessarine-" + mark + "-0123456789abcdef.bmp",
                                       ".tessarine-0123456789abcdef.bmp", ".hidden.bmp",
                                       "Sample1.bmp", Draft::namePrefix().substr(1) + "1.bmp"};
    for (const std::string& name : others)
        writeAll(scratch / name, "another's");
    const std::string prefix = Draft::namePrefix();
    fs::create_directory(scratch / (prefix + "folder"));
    fs::create_symlink(scratch / "Sample1.bmp", scratch / (prefix + "link"));
    const std::set<std::string> before = names();
    EXPECT_EQ(removeLeftDrafts(folder()), 0);
    EXPECT_EQ(names(), before);
    writeAll(scratch / (prefix + "0123456789abcdef.bmp"), "left");
    EXPECT_EQ(removeLeftDrafts(folder()), 1);
    EXPECT_EQ(names(), before);
    EXPECT_EQ(removeLeftDrafts(scratch / "nowhere"), 0);
}

}  // namespace
}  // namespace tessarine::tests
