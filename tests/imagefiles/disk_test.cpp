#include "imagefiles/disk.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <set>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "imagefiles/output_file.h"
#include "support/files.h"
#include "support/other_disks.h"
#include "support/paths.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

class Disk : public testing::Test {
  protected:
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(scratch.path()))
            all.insert(entry.path().filename().string());
        return all;
    }

    const ScratchFolder scratch;
    const std::string target = scratch / "Sample1.bmp";
};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

/// Both kinds of drafts, which cannot be told apart by their ends.
class Drafts : public Disk, public testing::WithParamInterface<Draft::Kind> {
  protected:
    void SetUp() override {
        if (Draft(target, GetParam()).kind() != GetParam())
            GTEST_SKIP() << "this file system knows no files without a name";
    }
    /// A draft with a few bytes in it.
    std::unique_ptr<Draft> written(const std::string& bytes) {
        auto draft = std::make_unique<Draft>(target, GetParam());
        OutputFile file;
        EXPECT_TRUE(draft->writeThrough(file)) << draft->failure();
        EXPECT_EQ(file.write(bytes.data(), bytes.size()), bytes.size());
        EXPECT_TRUE(file.finish()) << file.failure();
        return draft;
    }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Drafts, testing::Values(Draft::Kind::unnamed, Draft::Kind::hidden));

TEST_P(Drafts, TakeTheirTargetsNameWhenPublished) {
    EXPECT_EQ(written("new")->publish(false), Draft::End::published);
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_P(Drafts, ReplaceATargetOnlyWhereAsked) {
    writeAll(target, "old");
    EXPECT_EQ(written("new")->publish(false), Draft::End::targetKept);
    EXPECT_EQ(readAll(target), "old");
    EXPECT_EQ(written("new")->publish(true), Draft::End::published);
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_P(Drafts, TakeAFreeNameAlsoWhereTheyMayReplace) {
    EXPECT_EQ(written("new")->publish(true), Draft::End::published);
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_P(Drafts, KeepATargetThatAppearsWhileTheyAreWritten) {
    const auto draft = written("new");
    EXPECT_FALSE(fs::exists(target));
    writeAll(target, "another's");
    EXPECT_EQ(draft->publish(false), Draft::End::targetKept);
    EXPECT_EQ(readAll(target), "another's");
}

TEST_P(Drafts, KeepATargetThatIsALinkToNowhere) {
    fs::create_symlink(scratch / "nowhere", target);
    EXPECT_EQ(written("new")->publish(false), Draft::End::targetKept);
    EXPECT_TRUE(fs::is_symlink(target));
}

TEST_P(Drafts, ReplaceALinkAndNotWhatItLeadsTo) {
    writeAll(scratch / "other", "other's");
    fs::create_symlink(scratch / "other", target);
    EXPECT_EQ(written("new")->publish(true), Draft::End::published);
    EXPECT_FALSE(fs::is_symlink(target));
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(readAll(scratch / "other"), "other's");
}

TEST_P(Drafts, LeaveTheOtherNamesOfAReplacedFileAlone) {
    writeAll(scratch / "other", "other's");
    fs::create_hard_link(scratch / "other", target);
    EXPECT_EQ(written("new")->publish(true), Draft::End::published);
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(readAll(scratch / "other"), "other's");
}

TEST_P(Drafts, AreGoneWithoutPublishing) {
    {
        const auto draft = written("new");
        EXPECT_EQ(names().size(), GetParam() == Draft::Kind::unnamed ? 0U : 1U);
    }
    EXPECT_TRUE(names().empty());
}

TEST_P(Drafts, CanBeWrittenByPath) {
    Draft draft(target, GetParam());
    writeAll(draft.path(), "by path");
    EXPECT_EQ(draft.publish(false), Draft::End::published);
    EXPECT_EQ(readAll(target), "by path");
}

TEST_P(Drafts, HaveTheModeOfNewFiles) {
    const mode_t before = ::umask(027);
    EXPECT_EQ(written("new")->publish(false), Draft::End::published);
    ::umask(before);
    EXPECT_EQ(modeOf(target), 0640U);
}

TEST_P(Drafts, TakeOverThePermissionsOfTheFileThatTheyReplace) {
    for (const mode_t mode : {0600U, 0664U, 0444U}) {
        writeAll(target, "old");
        ASSERT_EQ(::chmod(target.c_str(), mode), 0);
        EXPECT_EQ(written("new")->publish(true), Draft::End::published);
        EXPECT_EQ(modeOf(target), mode);
        fs::remove(target);
    }
    // A program that is replaced by a picture hands on no more than that.
    writeAll(target, "old");
    ASSERT_EQ(::chmod(target.c_str(), 04755), 0);
    EXPECT_EQ(written("new")->publish(true), Draft::End::published);
    EXPECT_EQ(modeOf(target), 0755U);
}

TEST_P(Drafts, ReplaceFilesAndLinksAlone) {
    fs::create_directory(target);
    const auto onFolder = written("new");
    EXPECT_EQ(onFolder->publish(true), Draft::End::failed);
    EXPECT_EQ(onFolder->failure(), "cannot replace " + target + ": it is a folder");
    fs::remove(target);
    ASSERT_EQ(::mkfifo(target.c_str(), 0600), 0);
    const auto onPipe = written("new");
    EXPECT_EQ(onPipe->publish(true), Draft::End::failed);
    EXPECT_EQ(onPipe->failure(), "cannot replace " + target + ": it is no file");
    EXPECT_TRUE(fs::is_fifo(target));
}

TEST_P(Drafts, TellWhyTheyCannotBeMade) {
    Draft draft(scratch / "gone/Sample1.bmp", GetParam());
    EXPECT_FALSE(draft.isOpen());
    const std::string why =
        "cannot create the file " + (scratch / "gone/Sample1.bmp") + ": No such file or directory";
    EXPECT_EQ(draft.failure(), why);
    OutputFile file;
    EXPECT_FALSE(draft.writeThrough(file));
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(draft.publish(true), Draft::End::failed);
    EXPECT_EQ(draft.failure(), why);
}

TEST_P(Drafts, TellWhenTheirFolderHasGone) {
    const std::string folder = scratch / "folder";
    fs::create_directory(folder);
    Draft draft(folder + "/Sample1.bmp", GetParam());
    ASSERT_TRUE(draft.isOpen());
    fs::remove_all(folder);
    EXPECT_EQ(draft.publish(false), Draft::End::failed);
    EXPECT_EQ(draft.failure(),
              "cannot create the file " + folder + "/Sample1.bmp: No such file or directory");
    EXPECT_TRUE(names().empty());
}

TEST_P(Drafts, ReplaceNothingWhereTheTargetMayNotBeReplaced) {
    // A file that something is mounted on cannot be replaced by anybody.
    writeAll(target, "old");
    writeAll(scratch / "other", "other's");
    const int end = inChild([&] {
        if (!ownMounts()) return noDisk;
        const std::string other = scratch / "other";
        if (::mount(other.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) != 0) return noDisk;
        const auto draft = written("new");
        if (draft->publish(true) != Draft::End::failed) return 1;
        const std::string why = "cannot replace " + target + ": " + std::strerror(EBUSY);
        if (draft->failure() != why) return 2;
        return readAll(target) == "other's" ? 0 : 3;
    });
    if (end == noDisk) GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(end, 0);
    EXPECT_EQ(readAll(target), "old");
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp", "other"}));
}

TEST_F(Disk, DraftsWithANameStandHiddenBesideTheirTargetWithItsExtension) {
    const Draft draft(target, Draft::Kind::hidden);
    const fs::path path(draft.path());
    EXPECT_EQ(path.parent_path(), scratch.path());
    EXPECT_EQ(path.extension(), ".bmp");
    EXPECT_TRUE(Draft::isDraft(path.filename()));
    EXPECT_TRUE(path.filename().native().starts_with(Draft::namePrefix()));
    EXPECT_NE(Draft(target, Draft::Kind::hidden).path(), draft.path());
    fs::create_directory(scratch / "a.b");
    EXPECT_EQ(fs::path(Draft(scratch / "a.b/plain", Draft::Kind::hidden).path()).extension(), "");
}

TEST_F(Disk, ATargetWithoutAFolderStandsInTheCurrentOne) {
    const fs::path before = fs::current_path();
    fs::current_path(scratch.path());
    for (const Draft::Kind kind : {Draft::Kind::unnamed, Draft::Kind::hidden}) {
        Draft draft("plain.png", kind);
        EXPECT_EQ(draft.publish(true), Draft::End::published) << draft.failure();
        EXPECT_EQ(names(), (std::set<std::string>{"plain.png"}));
    }
    fs::current_path(before);
}

TEST_F(Disk, DraftsAreHiddenWhereTheFileSystemKnowsNoFilesWithoutAName) {
    const int end = inChild([&] {
        if (!refuseUnnamedFiles()) return noDisk;
        Draft draft(target);
        if (draft.kind() != Draft::Kind::hidden) return 1;
        return draft.publish(false) == Draft::End::published ? 0 : 2;
    });
    if (end == noDisk) GTEST_SKIP() << "system calls cannot be refused here";
    EXPECT_EQ(end, 0);
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_F(Disk, DraftsAreToldByTheirNames) {
    EXPECT_TRUE(Draft::isDraft(".tessarine-0123456789abcdef.png"));
    EXPECT_TRUE(Draft::isDraft(Draft::namePrefix() + "0123456789abcdef.png"));
    EXPECT_FALSE(Draft::isDraft("Sample1.png"));
    EXPECT_FALSE(Draft::isDraft("tessarine-1.png"));
    EXPECT_FALSE(Draft::isDraft("a.tessarine-1.png"));
    EXPECT_FALSE(Draft::isDraft(".tessarine"));
    EXPECT_FALSE(Draft::isDraft(""));
}

TEST_F(Disk, AFileThatWasGivenIsWrittenAndNeverRemoved) {
    writeAll(target, "");
    {
        OutputFile file;
        ASSERT_TRUE(file.adopt(::open(target.c_str(), O_RDWR | O_CLOEXEC), "a name"));
        file.write("half", 4);
        file.discard();
        EXPECT_FALSE(file.isOpen());
    }
    EXPECT_TRUE(fs::exists(target));
    OutputFile file;
    EXPECT_FALSE(file.adopt(-1, "a name"));
    EXPECT_EQ(file.failure(), "cannot write the file a name: Bad file descriptor");
    ASSERT_TRUE(file.adopt(::open("/dev/full", O_RDWR | O_CLOEXEC), "a name"));
    file.write("bytes", 5);
    EXPECT_FALSE(file.finish());
    EXPECT_EQ(file.failure(), "cannot write the file a name: No space left on device");
    ASSERT_TRUE(file.adopt(::open(target.c_str(), O_RDWR | O_TRUNC | O_CLOEXEC), "a name"));
    file.write("whole", 5);
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(file.size(), 5);
    EXPECT_EQ(readAll(target), "whole");
}

TEST_F(Disk, OnlyRegularFilesThatMayBeReadAreReadable) {
    EXPECT_EQ(whyNotReadable(target), "No such file or directory");
    writeAll(target, "picture");
    EXPECT_EQ(whyNotReadable(target), "");
    fs::create_symlink(target, scratch / "link");
    EXPECT_EQ(whyNotReadable(scratch / "link"), "");
    EXPECT_EQ(whyNotReadable(target + "/inside"), "Not a directory");
    EXPECT_EQ(whyNotReadable(scratch.path()), "it is a folder");
    ASSERT_EQ(::mkfifo((scratch / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(whyNotReadable(scratch / "pipe"), "it is no regular file");
    EXPECT_EQ(whyNotReadable("/dev/null"), "it is no regular file");
    if (geteuid() == 0) return;  // root may read every file
    fs::permissions(target, fs::perms::none);
    EXPECT_EQ(whyNotReadable(target), "Permission denied");
}

}  // namespace
}  // namespace tessarine::tests
