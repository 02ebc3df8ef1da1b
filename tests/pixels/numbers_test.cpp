#include "pixels/numbers.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

// The conversions of the pixel arithmetic, under the compile rules that all rooms share.

namespace tessarine::tests {
namespace {

/// The nearest float to a positive normal double, by its bits: 52 places cut to 23, ties to even.
double nearestFloat(double value) {
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const uint64_t cut = bits & ((1ULL << 29) - 1);
    bits -= cut;
    const uint64_t half = 1ULL << 28;
    if (cut > half || (cut == half && (bits >> 29 & 1) != 0)) bits += 1ULL << 29;
    double result = 0;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

/// Stores neighbouring values as singles, as a pixel's channels are: without a loop, so that a
/// compiler may join them.
[[gnu::noinline]] void storeTwo(const int32_t* levels, double* shares) {
    const double first = single(levels[0] / 255.0);
    const double second = single(levels[1] / 255.0);
    shares[0] = first;
    shares[1] = second;
}

[[gnu::noinline]] void storeFour(const double* values, double* stored) {
    const double a = single(values[0]);
    const double b = single(values[1]);
    const double c = single(values[2]);
    const double d = single(values[3]);
    stored[0] = a * 3;
    stored[1] = b * 3;
    stored[2] = c * 3;
    stored[3] = d * 3;
}

TEST(Numbers, SinglesOfNeighboursAreRoundedEach) {
    // Not known to the compiler, which would work the results out itself.
    std::mt19937 random(1);
    for (int round = 0; round < 100; ++round) {
        const std::array<int32_t, 2> levels{static_cast<int32_t>(random() % 255 + 1),
                                            static_cast<int32_t>(random() % 255 + 1)};
        std::array<double, 2> shares{};
        storeTwo(levels.data(), shares.data());
        for (size_t i = 0; i < shares.size(); ++i)
            ASSERT_EQ(shares[i], nearestFloat(levels[i] / 255.0)) << levels[i];

        std::array<double, 4> values{};
        for (double& value : values)
            value = (random() + 1.0) / 1000;
        std::array<double, 4> stored{};
        storeFour(values.data(), stored.data());
        for (size_t i = 0; i < stored.size(); ++i)
            ASSERT_EQ(stored[i], nearestFloat(values[i]) * 3) << values[i];
    }
}

TEST(Numbers, SinglesInALoopAreRoundedEach) {
    std::array<double, 1000> values{};
    std::array<double, 1000> stored{};
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = 0.1 + static_cast<double>(i) / 7;
    for (size_t i = 0; i < values.size(); ++i)
        stored[i] = double{single(values[i])} * 3;
    for (size_t i = 0; i < values.size(); ++i)
        ASSERT_EQ(stored[i], nearestFloat(values[i]) * 3) << i;
}

TEST(Numbers, ANarrowDivisorAgreesAtBothSidesOfEachQuotient) {
    for (int32_t divisor = 1; divisor <= 32767; ++divisor) {
        const NarrowDivisor narrow(divisor);
        for (int32_t multiple = 0; multiple <= 32767; multiple += divisor) {
            ASSERT_EQ(narrow.quotient(static_cast<uint16_t>(multiple)), multiple / divisor)
                << multiple << " by " << divisor;
            const int32_t last = std::min(multiple + divisor - 1, 32767);
            ASSERT_EQ(narrow.quotient(static_cast<uint16_t>(last)), last / divisor)
                << last << " by " << divisor;
        }
    }
}

TEST(Numbers, RoundingInALoopAgreesWithinTheRange) {
    for (int32_t whole = -3000; whole <= 3000; ++whole)
        for (const double part : {0.0, 0.25, 0.5, 0.75}) {
            const double value = whole + part;
            ASSERT_EQ(roundFitting(value), roundToInteger(value)) << value;
            ASSERT_EQ(roundFitting(std::nextafter(value, 1e9)),
                      roundToInteger(std::nextafter(value, 1e9)));
            ASSERT_EQ(roundFitting(std::nextafter(value, -1e9)),
                      roundToInteger(std::nextafter(value, -1e9)));
        }
    for (const double value : {2147483647.0, 2147483646.5, -2147483648.0, -2147483647.5, -0.0})
        ASSERT_EQ(roundFitting(value), roundToInteger(value)) << value;
}

}  // namespace
}  // namespace tessarine::tests
