#include "batch/parallelism.h"

#include <gtest/gtest.h>

#include "pixels/machine.h"

namespace tessarine {
namespace {

TEST(ParallelismTest, OnePictureMoreThanProcessorsIsInFlight) {
    EXPECT_EQ(parallelismFor(1000).jobs, availableCores() + 1);
    EXPECT_EQ(parallelismFor(1000).filterThreads, 1);
}

TEST(ParallelismTest, NoMoreAreInFlightThanThereAreAndOneAloneHasAllProcessors) {
    EXPECT_EQ(parallelismFor(1).jobs, 1);
    EXPECT_EQ(parallelismFor(1).filterThreads, availableCores());
    EXPECT_EQ(parallelismFor(0).jobs, 1);
    EXPECT_EQ(parallelismFor(0).filterThreads, availableCores());
}

TEST(ParallelismTest, WishesAreGranted) {
    EXPECT_EQ(parallelismFor(1000, 7).jobs, 7);
    EXPECT_EQ(parallelismFor(1000, 0, 5).filterThreads, 5);
    EXPECT_EQ(parallelismFor(1000, 1).filterThreads, availableCores());
    // Of seven jobs for one picture six have nothing to do.
    EXPECT_EQ(parallelismFor(1, 7).filterThreads, availableCores());
}

}  // namespace
}  // namespace tessarine
