#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "pixels/failures.h"
#include "pixels/numbers.h"

namespace tessarine::tests {
namespace {

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

/// Whether the quotient by way of doubles is the whole-number one.
void expectExact(int64_t dividend, int32_t divisor) {
    if (dividend < lowest || dividend > highest || (dividend == lowest && divisor == -1)) return;
    const auto n = static_cast<int32_t>(dividend);
    ASSERT_EQ(quotientInLoop(n, divisor), n / divisor) << n << " by " << divisor;
}

TEST(Quotient, OfDoublesIsExactBesideEveryWholeQuotientOfSmallNumbers) {
    for (int32_t divisor = -700; divisor <= 700; ++divisor)
        for (int64_t whole = -700; divisor != 0 && whole <= 700; ++whole)
            for (int64_t beside = -1; beside <= 1; ++beside)
                expectExact(whole * divisor + beside, divisor);
}

TEST(Quotient, OfDoublesIsExactBesideWholeQuotientsInAll32Bits) {
    std::mt19937 random(1);
    for (int i = 0; i < 1000000; ++i) {
        const auto shift = random() % 31;
        const int32_t divisor = static_cast<int32_t>(random()) >> shift;
        if (divisor == 0) continue;
        const int64_t any = static_cast<int32_t>(random());
        expectExact(any, divisor);
        const int64_t whole = any / divisor * divisor;
        for (int64_t beside = -1; beside <= 1; ++beside)
            expectExact(whole + beside, divisor);
    }
}

TEST(Quotient, OfDoublesIsExactAtTheEndsOf32Bits) {
    for (const int32_t divisor : {lowest, lowest + 1, -3, -2, -1, 1, 2, 3, highest - 1, highest})
        for (int64_t beside = 0; beside <= 3; ++beside) {
            expectExact(lowest + beside, divisor);
            expectExact(highest - beside, divisor);
        }
}

TEST(Quotient, OfWholeNumbersTruncatesWrapsAndFailsFor0) {
    EXPECT_EQ(quotient(7, -2), -3);
    EXPECT_EQ(quotient(-7, 2), -3);
    EXPECT_EQ(quotient(lowest, -1), lowest);
    EXPECT_THROW(quotient(1, 0), StatementFailed);
}

}  // namespace
}  // namespace tessarine::tests
