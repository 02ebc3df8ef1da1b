#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/region.h"
#include "support/pictures.h"

// The points of a region one by one: whether it contains them, and in which order they come.

namespace tessarine::tests {
namespace {

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

/// Up to 12 rectangles, which may overlap and lie on both sides of 0.
std::vector<Rect> randomRects(std::mt19937& random) {
    std::vector<Rect> rects;
    const unsigned longest = random() % 2 == 0 ? 4 : 26;
    for (auto count = random() % 13; count > 0; --count) {
        const auto corner = [&] { return static_cast<int32_t>(random() % 40) - 12; };
        const auto edge = [&] { return static_cast<int32_t>(random() % longest) + 1; };
        const int32_t left = corner();
        const int32_t top = corner();
        rects.push_back({left, top, left + edge(), top + edge()});
    }
    return rects;
}

bool covers(const std::vector<Rect>& rects, int32_t x, int32_t y) {
    return std::any_of(rects.begin(), rects.end(), [=](const Rect& r) {
        return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
    });
}

// Around all random rectangles.
constexpr int32_t from = -15;
constexpr int32_t to = 60;

TEST(RegionTest, AgreesWithTheRectanglesAtEveryPoint) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        const std::vector<Rect> rects = randomRects(random);
        const RegionHandle region = regionOf(rects);
        const RegionTest test(region.get());
        for (int32_t y = from; y < to; ++y)
            for (int32_t x = from; x < to; ++x)
                ASSERT_EQ(test.contains(x, y), covers(rects, x, y))
                    << x << ", " << y << " in round " << round;
    }
}

TEST(RegionTest, NoRegionAndTheEmptyOneContainNothing) {
    const Region empty;
    for (const Region* region : {static_cast<const Region*>(nullptr), &empty}) {
        const RegionTest test(region);
        for (const int32_t x : {lowest, -1, 0, 1, highest})
            for (const int32_t y : {lowest, -1, 0, 1, highest})
                EXPECT_FALSE(test.contains(x, y)) << x << ", " << y;
    }
}

TEST(RegionTest, ReachesFromTheLowestToJustBelowTheHighestPlace) {
    const Region all(Rect{lowest, lowest, highest, highest});
    const RegionTest test(&all);
    EXPECT_TRUE(test.contains(lowest, lowest));
    EXPECT_TRUE(test.contains(highest - 1, highest - 1));
    EXPECT_FALSE(test.contains(highest, 0));
    EXPECT_FALSE(test.contains(0, highest));
}

TEST(RegionOrder, CountsThePointsBeforeEachPlaceRowByRow) {
    std::mt19937 random(2);
    for (int round = 0; round < 200; ++round) {
        const std::vector<Rect> rects = randomRects(random);
        const RegionHandle region = regionOf(rects);
        const RegionOrder order(region.get());
        uint64_t count = 0;
        for (int32_t y = from; y < to; ++y)
            for (int32_t x = from; x < to; ++x) {
                ASSERT_EQ(order.before(x, y), count) << x << ", " << y << " in round " << round;
                if (covers(rects, x, y)) ++count;
            }
        ASSERT_EQ(order.count(), count) << "in round " << round;
    }
}

TEST(RegionOrder, NoRegionAndTheEmptyOneHaveNoPoints) {
    const Region empty;
    for (const Region* region : {static_cast<const Region*>(nullptr), &empty}) {
        const RegionOrder order(region);
        EXPECT_EQ(order.count(), 0U);
        for (const int32_t x : {lowest, 0, highest})
            for (const int32_t y : {lowest, 0, highest})
                EXPECT_EQ(order.before(x, y), 0U) << x << ", " << y;
    }
}

TEST(RegionOrder, CountsRegionsOfTheWholeRange) {
    const uint64_t side = 0xFFFFFFFFU;
    const uint64_t half = uint64_t{1} << 31;
    const Region all(Rect{lowest, lowest, highest, highest});
    const RegionOrder order(&all);
    EXPECT_EQ(order.count(), side * side);
    EXPECT_EQ(order.before(lowest, lowest), 0U);
    EXPECT_EQ(order.before(0, 0), half * side + half);
    EXPECT_EQ(order.before(highest, highest - 1), side * side);
    EXPECT_EQ(order.before(0, highest), side * side);
    // Two halves with a gap of one column between them.
    const RegionHandle halves =
        regionOf({{lowest, lowest, 0, highest}, {1, lowest, highest, highest}});
    const RegionOrder split(halves.get());
    EXPECT_EQ(split.count(), (side - 1) * side);
    EXPECT_EQ(split.before(0, lowest), half);
    EXPECT_EQ(split.before(1, lowest), half);
    EXPECT_EQ(split.before(2, lowest), half + 1);
    EXPECT_EQ(split.before(lowest, lowest + 1), side - 1);
}

}  // namespace
}  // namespace tessarine::tests
