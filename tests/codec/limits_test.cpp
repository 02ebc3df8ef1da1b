#include "imagefiles/codec/limits.h"

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

constexpr uint64_t mebi = uint64_t{1} << 20;
constexpr uint64_t gibi = uint64_t{1} << 30;

TEST(LimitsOfAPicture, GrowWithItsPixels) {
    LimitWishes wishes;
    wishes.memoryBytes = 8 * gibi;
    EXPECT_EQ(limitsFor(0, wishes).seconds, 10);
    EXPECT_EQ(limitsFor(0, wishes).memoryBytes, 512 * mebi);
    EXPECT_EQ(limitsFor(12'000'000, wishes).seconds, 22);
    EXPECT_EQ(limitsFor(12'000'000, wishes).memoryBytes, 512 * mebi + 768'000'000);
}

TEST(LimitsOfAPicture, NeverPassTheCeiling) {
    LimitWishes wishes;
    for (const uint64_t ceiling : {64 * mebi, 2 * gibi}) {
        wishes.memoryBytes = ceiling;
        EXPECT_EQ(memoryCeiling(wishes), ceiling);
        EXPECT_EQ(limitsFor(300'000'000, wishes).memoryBytes, ceiling);
        EXPECT_EQ(limitsFor(~uint64_t{0}, wishes).memoryBytes, ceiling);
    }
}

TEST(LimitsOfAPicture, TimeIsAsWished) {
    LimitWishes wishes;
    wishes.seconds = 0.5;
    EXPECT_EQ(limitsFor(0, wishes).seconds, 0.5);
    EXPECT_EQ(limitsFor(300'000'000, wishes).seconds, 0.5);
}

TEST(LimitsOfAPicture, TheCeilingLiesBetweenOneAndEightGibibytes) {
    EXPECT_GE(memoryCeiling({}), gibi);
    EXPECT_LE(memoryCeiling({}), 8 * gibi);
    EXPECT_EQ(memoryCeiling({}), memoryCeiling({}));
}

}  // namespace
}  // namespace tessarine::tests
