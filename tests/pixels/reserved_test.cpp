#include "pixels/reserved.h"

#include <array>
#include <cstdint>

#include <gtest/gtest.h>

#include "pixels/failures.h"

namespace tessarine::tests {
namespace {

TEST(Reserved, HasRoomForTheValuesAndHoldsNone) {
    EXPECT_TRUE(reserved<int32_t>(1000).empty());
    EXPECT_GE(reserved<int32_t>(1000).capacity(), 1000U);
    EXPECT_TRUE(reserved<int32_t>(0).empty());
}

TEST(Reserved, FailsAsAStatementForWantOfMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers end the program where memory is not to be had";
#else
    using Huge = std::array<char, size_t{1} << 30>;
    EXPECT_THROW(reserved<Huge>(int64_t{1} << 32), MemoryFailed);
#endif
}

}  // namespace
}  // namespace tessarine::tests
