#include "pixels/random_generator.h"

#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace tessarine {
namespace {

constexpr uint32_t period = 1U << 24;

/// The state after one more draw, by the plain formula.
uint32_t next(uint32_t state) {
    return static_cast<uint32_t>((uint64_t{state} * 16598013 + 12820163) % period);
}

TEST(RandomGenerator, ANewOneDrawsTheSameNumbersEachTime) {
    RandomGenerator generator;
    EXPECT_EQ(generator.state(), 327680U);
    for (const uint32_t state : {11837123U, 8949370U, 9722709U, 4858052U}) {
        EXPECT_EQ(generator.draw(), static_cast<float>(state / 16777216.0));
        EXPECT_EQ(generator.state(), state);
    }
}

TEST(RandomGenerator, EachDrawFollowsTheFormulaFromAnyState) {
    std::mt19937 random(1);
    for (int i = 0; i < 1000; ++i) {
        const uint32_t first = static_cast<uint32_t>(random()) % period;
        RandomGenerator generator(first);
        EXPECT_EQ(generator.draw() * 16777216.0F, static_cast<float>(next(first)));
        EXPECT_EQ(generator.state(), next(first));
    }
}

TEST(RandomGenerator, OnlyTheLow24BitsOfAStateCount) {
    EXPECT_EQ(RandomGenerator(0xFF000005U).state(), 5U);
    EXPECT_EQ(RandomGenerator(0xFF000005U).draw(), RandomGenerator(5).draw());
}

TEST(RandomGenerator, AWholePeriodDrawsEveryNumberFrom0UpToBut1Once) {
    RandomGenerator generator;
    std::vector<bool> drawn(period);
    for (uint32_t i = 0; i < period; ++i) {
        const float number = generator.draw();
        ASSERT_GE(number, 0.0F);
        ASSERT_LT(number, 1.0F);
        const auto place = static_cast<uint32_t>(number * 16777216.0F);
        ASSERT_FALSE(drawn[place]) << "drawn twice: " << number;
        drawn[place] = true;
    }
    EXPECT_EQ(generator.state(), RandomGenerator::firstState);
}

TEST(RandomGenerator, AJumpLeadsWherePlainDrawsLead) {
    RandomGenerator plain(12345);
    const RandomGenerator start = plain;
    for (uint64_t draws = 0; draws < 5000; ++draws) {
        ASSERT_EQ(start.after(draws).state(), plain.state()) << draws;
        plain.draw();
    }
    std::mt19937 random(2);
    for (int i = 0; i < 20; ++i) {
        const auto first = static_cast<uint32_t>(random());
        const auto draws = static_cast<uint32_t>(random()) % 200000;
        RandomGenerator walking(first);
        for (uint32_t k = 0; k < draws; ++k)
            walking.draw();
        EXPECT_EQ(RandomGenerator(first).after(draws).state(), walking.state())
            << first << " after " << draws;
    }
}

TEST(RandomGenerator, AJumpOverWholePeriodsCountsForNothing) {
    const RandomGenerator start(777);
    RandomGenerator five = start;
    for (int i = 0; i < 5; ++i)
        five.draw();
    EXPECT_EQ(start.after(0).state(), 777U);
    EXPECT_EQ(start.after(period).state(), 777U);
    EXPECT_EQ(start.after(uint64_t{period} + 5).state(), five.state());
    EXPECT_EQ(start.after(uint64_t{period} * 1000000 + 5).state(), five.state());
    EXPECT_EQ(start.after((uint64_t{1} << 63) + 5).state(), five.state());
    // 2^64 - 1 draws are one less than a number of whole periods.
    RandomGenerator last = start.after(UINT64_MAX);
    last.draw();
    EXPECT_EQ(last.state(), 777U);
}

TEST(RandomGenerator, JumpsAddUp) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 1000; ++i) {
        const RandomGenerator start(static_cast<uint32_t>(random()));
        // The sum may wrap: 2^64 is a number of whole periods.
        const uint64_t a = random();
        const uint64_t b = random();
        EXPECT_EQ(start.after(a).after(b).state(), start.after(a + b).state());
    }
}

TEST(RandomGenerator, AJumpLeavesTheGeneratorWhereItStands) {
    const RandomGenerator start(99);
    EXPECT_NE(start.after(7).state(), 99U);
    EXPECT_EQ(start.state(), 99U);
}

TEST(RandomGenerator, DrawsAtADistanceAreThoseOfTheSequence) {
    constexpr RandomGenerator::Draws<3, 50> threes;
    constexpr RandomGenerator::Draws<1, 50> ones;
    for (const uint32_t state : {0U, 1U, 777U, 0xFFFFFFU}) {
        for (size_t i = 0; i < 50; ++i) {
            RandomGenerator third = RandomGenerator(state).after(3 * i);
            RandomGenerator first = RandomGenerator(state).after(i);
            const uint32_t next = RandomGenerator(state).after(1).state();
            EXPECT_EQ(threes.after(next, i), third.draw()) << state << ", " << i;
            EXPECT_EQ(ones.after(next, i), first.draw()) << state << ", " << i;
        }
    }
}

}  // namespace
}  // namespace tessarine
