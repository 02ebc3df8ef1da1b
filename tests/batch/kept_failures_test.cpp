#include <filesystem>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/recorder.h"

// The list of what failed in a careful run, kept as a picture list.

namespace tessarine::tests {
namespace {

using testing::HasSubstr;

class KeptFailures : public testing::Test {
  protected:
    void keepAs(const std::string& name) {
        recorder.saveAnswers.push_back(scratch / name);
        batch.KeepFailures();
    }
    std::vector<std::string> kept(const std::string& name) const {
        return readPictureList(scratch / name);
    }

    const ScratchFolder scratch;
    Recorder recorder;
    cBatch batch{recorder};
};

TEST_F(KeptFailures, ComeBackAsABasket) {
    for (const char* name : {"two.png", "one.png"}) {
        writeAll(scratch / name, "no picture");
        batch.failedPictures.push_back(scratch / name);
    }
    keepAs("failed.qpkl");
    EXPECT_EQ(recorder.saveFilters, std::vector<std::string>{"Picture List(*.qpkl)|*.qpkl"});
    EXPECT_EQ(kept("failed.qpkl"), batch.failedPictures);
    batch.OpenPictureList(scratch / "failed.qpkl");
    ASSERT_EQ(batch.lvSelected.size(), 2U);
    EXPECT_EQ(batch.lvSelected[0].Tag, scratch / "two.png");
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(KeptFailures, WithoutOneNothingIsAskedAndACancelWritesNothing) {
    batch.KeepFailures();
    EXPECT_TRUE(recorder.saveFilters.empty());
    batch.failedPictures = {"/a.png"};
    batch.KeepFailures();
    EXPECT_EQ(recorder.saveFilters.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
    EXPECT_EQ(batch.failedPictures.size(), 1U);
}

TEST_F(KeptFailures, NothingOfALongerListIsLeftBehindThem) {
    writePictureList(scratch / "list.qpkl", std::vector<std::string>{"/x.png", "/y.png", "/z.png"});
    batch.failedPictures = {"/a.png"};
    keepAs("list.qpkl");
    EXPECT_EQ(kept("list.qpkl"), std::vector<std::string>{"/a.png"});
}

TEST_F(KeptFailures, AListsExtensionIsAddedWhereItIsMissing) {
    batch.failedPictures = {"/a.png"};
    keepAs("failed");
    EXPECT_EQ(kept("failed.qpkl"), batch.failedPictures);
    keepAs("CAPITALS.QPKL");
    EXPECT_EQ(kept("CAPITALS.QPKL"), batch.failedPictures);
    EXPECT_TRUE(recorder.boxes.empty());
    // Nobody was asked whether that one may be written over.
    batch.failedPictures = {"/b.png"};
    keepAs("failed");
    EXPECT_EQ(kept("failed.qpkl"), std::vector<std::string>{"/a.png"});
    EXPECT_EQ(recorder.boxes,
              (std::vector<Recorder::Box>{{"There is a file '" + (scratch / "failed.qpkl") +
                                               "' already. Please choose another name for the "
                                               "list.",
                                           Icon::exclamation, "Tessarine"}}));
}

TEST_F(KeptFailures, AListThatCannotBeWrittenIsTold) {
    batch.failedPictures = {"/a.png"};
    keepAs("none/list.qpkl");
    EXPECT_EQ(recorder.boxes,
              (std::vector<Recorder::Box>{{"The list '" + (scratch / "none/list.qpkl") +
                                               "' could not be written: No such file or directory",
                                           Icon::critical, "Tessarine"}}));
}

TEST_F(KeptFailures, PathsThatAListCannotHoldAreLeftOutAndTold) {
    const std::string fits = "/" + std::string(149, 'f');
    batch.failedPictures = {fits, "/" + std::string(150, 'g'), "/blank at the end "};
    keepAs("list.qpkl");
    EXPECT_EQ(kept("list.qpkl"), std::vector<std::string>{fits});
    ASSERT_EQ(recorder.boxes.size(), 1U);
    EXPECT_EQ(recorder.boxes[0].icon, Icon::exclamation);
    EXPECT_THAT(recorder.boxes[0].text, HasSubstr("2 of the 3 paths are not in the list"));
    EXPECT_THAT(recorder.boxes[0].text, HasSubstr("at most 150 characters"));
}

}  // namespace
}  // namespace tessarine::tests
