#include <gtest/gtest.h>

#include "batch/batch.h"
#include "support/paths.h"
#include "support/recorder.h"

namespace tessarine::tests {
namespace {

class Destination : public testing::Test {
  protected:
    Destination() { batch.txtDestination = "/before"; }

    const ScratchFolder scratch;
    Recorder platform;
    cBatch batch{platform};
};

TEST_F(Destination, TakesTheSelectedFolderWhereItExists) {
    batch.selectedFolder = scratch.path();
    batch.TakeSelectedFolder();
    EXPECT_EQ(batch.txtDestination, scratch.path().string());
    EXPECT_EQ(platform.timesChanged("txtDestination"), 1);
}

TEST_F(Destination, StaysWhereNothingOrNoFolderWasSelected) {
    for (const std::string& selected : {std::string(), scratch / "none"}) {
        batch.selectedFolder = selected;
        batch.TakeSelectedFolder();
        EXPECT_EQ(batch.txtDestination, "/before");
    }
    EXPECT_TRUE(platform.changes.empty());
}

}  // namespace
}  // namespace tessarine::tests
