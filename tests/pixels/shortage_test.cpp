#include "pixels/shortage.h"

#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "pixels/failures.h"
#include "pixels/pixel_buffer.h"

namespace tessarine {
namespace {

TEST(Shortage, APictureBeyondAllMemoryIsCounted) {
    const uint64_t before = memoryShortages();
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    EXPECT_THROW(PixelBuffer(highest, highest), MemoryFailed);
    EXPECT_EQ(memoryShortages(), before + 1);
}

TEST(Shortage, OtherFailuresAreNotCounted) {
    const uint64_t before = memoryShortages();
    EXPECT_FALSE(attempt([] { PixelBuffer(-1, 1); }));
    EXPECT_EQ(memoryShortages(), before);
}

TEST(Shortage, EachThreadCountsItsOwn) {
    const uint64_t before = memoryShortages();
    uint64_t there = 0;
    std::thread([&] {
        attempt([] { failForMemory("none"); });
        there = memoryShortages();
    }).join();
    EXPECT_EQ(there, 1U);
    EXPECT_EQ(memoryShortages(), before);
}

}  // namespace
}  // namespace tessarine
