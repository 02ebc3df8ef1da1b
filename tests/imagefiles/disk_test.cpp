#include "imagefiles/disk.h"

#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/files.h"
#include "support/paths.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

class Drafts : public testing::Test {
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

TEST_F(Drafts, StandBesideTheirTargetUnderAHiddenNameWithItsExtension) {
    const Draft draft(target);
    const fs::path path(draft.path());
    EXPECT_EQ(path.parent_path(), scratch.path());
    EXPECT_EQ(path.extension(), ".bmp");
    EXPECT_TRUE(Draft::isDraft(path.filename()));
    EXPECT_NE(Draft(target).path(), draft.path());
    EXPECT_EQ(fs::path(Draft(scratch / "a.b/plain").path()).extension(), "");
    EXPECT_EQ(fs::path(Draft("plain.png").path()).parent_path(), "");
}

TEST_F(Drafts, AreToldByTheirNames) {
    EXPECT_TRUE(Draft::isDraft(".tessarine-0123456789abcdef.png"));
    EXPECT_FALSE(Draft::isDraft("Sample1.png"));
    EXPECT_FALSE(Draft::isDraft("tessarine-1.png"));
    EXPECT_FALSE(Draft::isDraft("a.tessarine-1.png"));
    EXPECT_FALSE(Draft::isDraft(".tessarine"));
    EXPECT_FALSE(Draft::isDraft(""));
}

TEST_F(Drafts, TakeTheirTargetsNameWhenPublished) {
    {
        Draft draft(target);
        writeAll(draft.path(), "new");
        EXPECT_EQ(draft.publish(false), Draft::End::published);
    }
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_F(Drafts, ReplaceATargetOnlyWhereAsked) {
    writeAll(target, "old");
    {
        Draft draft(target);
        writeAll(draft.path(), "new");
        EXPECT_EQ(draft.publish(false), Draft::End::targetKept);
    }
    EXPECT_EQ(readAll(target), "old");
    {
        Draft draft(target);
        writeAll(draft.path(), "new");
        EXPECT_EQ(draft.publish(true), Draft::End::published);
    }
    EXPECT_EQ(readAll(target), "new");
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_F(Drafts, KeepATargetThatAppearsWhileTheyAreWritten) {
    Draft draft(target);
    writeAll(draft.path(), "new");
    EXPECT_FALSE(fs::exists(target));
    writeAll(target, "another's");
    EXPECT_EQ(draft.publish(false), Draft::End::targetKept);
    EXPECT_EQ(readAll(target), "another's");
}

TEST_F(Drafts, KeepATargetThatIsALinkToNowhere) {
    fs::create_symlink(scratch / "nowhere", target);
    Draft draft(target);
    writeAll(draft.path(), "new");
    EXPECT_EQ(draft.publish(false), Draft::End::targetKept);
    EXPECT_TRUE(fs::is_symlink(target));
}

TEST_F(Drafts, AreRemovedWithoutPublishing) {
    {
        const Draft draft(target);
        writeAll(draft.path(), "new");
        EXPECT_EQ(names().size(), 1U);
    }
    EXPECT_TRUE(names().empty());
}

TEST_F(Drafts, TellWhyTheyCannotBePublished) {
    Draft unwritten(target);
    EXPECT_EQ(unwritten.publish(true), Draft::End::failed);
    EXPECT_EQ(unwritten.failure(), "No such file or directory");
    fs::create_directory(target);
    {
        Draft draft(target);
        writeAll(draft.path(), "new");
        EXPECT_EQ(draft.publish(true), Draft::End::failed);
        EXPECT_EQ(draft.failure(), "Is a directory");
    }
    EXPECT_EQ(names(), (std::set<std::string>{"Sample1.bmp"}));
}

TEST_F(Drafts, OnlyRegularFilesThatMayBeReadAreReadable) {
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
