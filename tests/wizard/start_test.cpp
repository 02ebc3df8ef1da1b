#include <gtest/gtest.h>

#include "support/recorded_desktop.h"
#include "wizard/batch_window.h"

namespace tessarine::tests {
namespace {

TEST(Window, StartsWithTheSettingsOfANewProgram) {
    RecordedDesktop desktop;
    fBatch window(desktop);
    window.start();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.size(), QSize(640, 480));
    EXPECT_EQ(window.batch().txtName, "Sample");
}

}  // namespace
}  // namespace tessarine::tests
