#include "filters/near_trigonometry.h"

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/bit_filter.h"

namespace tessarine {
namespace {

TEST(NearTrigonometry, TheArctangentIsKnownToThirteenDigits) {
    for (int32_t i = 0; i <= 200000; ++i) {
        const double value = i / 200000.0;
        const double exact = std::atan(value);
        ASSERT_LE(std::abs(nearArctangent(value) - exact), 1e-13 * exact) << value;
    }
}

TEST(NearTrigonometry, SineAndCosineStayWithinTheirError) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(-largestAngle, largestAngle);
    std::vector<double> angles{0, largestAngle, -largestAngle};
    for (int32_t i = 0; i < 100000; ++i) {
        angles.push_back(anywhere(random));
        angles.push_back(anywhere(random) / largestAngle * 20);
        angles.push_back(i);
        // Around the borders between the quarters, and in their middles.
        angles.push_back((i - 50000) * 0.78539816339744831);
    }
    for (const double angle : angles) {
        const SineAndCosine near = nearSineAndCosine(angle);
        ASSERT_LE(std::abs(near.sine - std::sin(angle)), sineError) << angle;
        ASSERT_LE(std::abs(near.cosine - std::cos(angle)), sineError) << angle;
    }
}

TEST(NearTrigonometry, AnAngleThatIsSureIsTheAngleAndNearlyAllAre) {
    int32_t unsure = 0;
    int32_t count = 0;
    const auto check = [&](int32_t dX, int32_t dY) {
        const Near<float> angle = nearAngle(dX, dY);
        ++count;
        if (angle.isSure == 0)
            ++unsure;
        else
            ASSERT_EQ(angle.value, cBitFilter::GetAngle(dX, dY)) << dX << ", " << dY;
    };
    for (int32_t dY = -200; dY <= 200; ++dY)
        for (int32_t dX = -200; dX <= 200; ++dX)
            check(dX, dY);
    std::mt19937 random(2);
    for (int32_t i = 0; i < 1000000; ++i)
        check(static_cast<int32_t>(random()) >> random() % 32,
              static_cast<int32_t>(random()) >> random() % 32);
    EXPECT_LT(unsure, count / 1000);
    EXPECT_EQ(nearAngle(0, 0).isSure, 1);
}

TEST(NearTrigonometry, AnIntegerIsSureWhereNoValueInReachRoundsToAnother) {
    EXPECT_EQ(nearInteger(7.25, 1e-6).isSure, 1);
    EXPECT_EQ(nearInteger(7.25, 1e-6).value, 7);
    EXPECT_EQ(nearInteger(-7.75, 1e-6).value, -8);
    EXPECT_EQ(nearInteger(7.5 - 1e-5, 1e-6).isSure, 1);
    EXPECT_EQ(nearInteger(7.5 - 1e-5, 1e-6).value, 7);
    EXPECT_EQ(nearInteger(7.5 + 1e-5, 1e-6).value, 8);
    for (const double unsure : {7.5, 7.5 - 1e-7, 7.5 + 1e-7, -7.5, 1e300, -1e10, double{NAN}})
        EXPECT_EQ(nearInteger(unsure, 1e-6).isSure, 0) << unsure;
}

}  // namespace
}  // namespace tessarine
