#include "pixels/region.h"

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/failures.h"

namespace tessarine {
namespace {

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

std::vector<Rect> rectsOf(const Region& region) {
    return {region.rects().begin(), region.rects().end()};
}

/// A block as a file of any origin might hold it; the box is wrong on purpose.
std::vector<int32_t> blockOf(const std::vector<Rect>& rects) {
    std::vector<int32_t> words = {32, 1, static_cast<int32_t>(rects.size()), -5, 9, 9, 9, 9};
    for (const Rect& r : rects)
        words.insert(words.end(), {r.left, r.top, r.right, r.bottom});
    return words;
}

Region regionOf(const std::vector<Rect>& rects) {
    const RegionHandle made = Region::fromBlock(blockOf(rects));
    EXPECT_NE(made, nullptr);
    return made == nullptr ? Region() : *made;
}

/// The same set of pixels as a plain bitmap from (-12, -12) to (51, 51).
class Bitmap {
  public:
    static constexpr int32_t from = -12;
    static constexpr int32_t to = 52;

    bool at(int32_t x, int32_t y) const {
        if (x < from || x >= to || y < from || y >= to) return false;
        return set_[index(x, y)];
    }
    void paint(const Rect& r) {
        for (int32_t y = r.top; y < r.bottom; ++y) {
            for (int32_t x = r.left; x < r.right; ++x)
                set_[index(x, y)] = true;
        }
    }
    template <class Rule>
    static Bitmap make(Rule rule) {
        Bitmap made;
        for (int32_t y = from; y < to; ++y) {
            for (int32_t x = from; x < to; ++x)
                made.set_[index(x, y)] = rule(x, y);
        }
        return made;
    }
    /// Rows of runs; equal touching rows are one band.
    std::vector<Rect> canonicalRects() const {
        std::vector<Rect> all;
        std::vector<Rect> above;
        for (int32_t y = from; y < to; ++y) {
            std::vector<Rect> row;
            for (int32_t x = from; x < to; ++x) {
                if (!at(x, y)) continue;
                if (at(x - 1, y)) {
                    ++row.back().right;
                } else {
                    row.push_back({x, y, x + 1, y + 1});
                }
            }
            const bool same =
                !row.empty() && row.size() == above.size() &&
                std::equal(row.begin(), row.end(), above.begin(), [](const Rect& a, const Rect& b) {
                    return a.left == b.left && a.right == b.right;
                });
            if (same) {
                for (size_t i = all.size() - row.size(); i < all.size(); ++i)
                    ++all[i].bottom;
            } else {
                all.insert(all.end(), row.begin(), row.end());
            }
            above = row;
        }
        return all;
    }

  private:
    static size_t index(int32_t x, int32_t y) {
        return static_cast<size_t>(y - from) * (to - from) + static_cast<size_t>(x - from);
    }
    std::array<bool, (to - from) * (to - from)> set_{};
};

struct Sample {
    Region region;
    Bitmap bitmap;
};

/// Up to 20 rectangles within (0, 0, 40, 40), some without area, some turned over.
Sample randomSample(std::mt19937& random) {
    std::vector<Rect> rects;
    Sample sample;
    const int32_t span = random() % 2 == 0 ? 8 : 40;
    for (auto count = random() % 21; count > 0; --count) {
        const auto coordinate = [&] { return static_cast<int32_t>(random() % 41); };
        const auto extent = [&] { return static_cast<int32_t>(random() % (span + 2)) - 1; };
        Rect r{coordinate(), coordinate(), 0, 0};
        r.right = std::min(r.left + extent(), 40);
        r.bottom = std::min(r.top + extent(), 40);
        rects.push_back(r);
        sample.bitmap.paint(r);
    }
    sample.region = regionOf(rects);
    return sample;
}

TEST(Region, HasTheSamePixelsAsABitmapThroughAllOperations) {
    std::mt19937 random(20240611);
    for (int turn = 0; turn < 400; ++turn) {
        SCOPED_TRACE(turn);
        const Sample a = randomSample(random);
        const Sample b = randomSample(random);
        ASSERT_EQ(rectsOf(a.region), a.bitmap.canonicalRects());

        const Bitmap both =
            Bitmap::make([&](int x, int y) { return a.bitmap.at(x, y) && b.bitmap.at(x, y); });
        ASSERT_EQ(rectsOf(a.region & b.region), both.canonicalRects());

        const Bitmap either =
            Bitmap::make([&](int x, int y) { return a.bitmap.at(x, y) != b.bitmap.at(x, y); });
        ASSERT_EQ(rectsOf(a.region ^ b.region), either.canonicalRects());

        const int32_t dx = static_cast<int32_t>(random() % 23) - 11;
        const int32_t dy = static_cast<int32_t>(random() % 23) - 11;
        const Bitmap moved =
            Bitmap::make([&](int x, int y) { return a.bitmap.at(x - dx, y - dy); });
        ASSERT_EQ(rectsOf(a.region.offset(dx, dy)), moved.canonicalRects());

        const auto w = static_cast<int32_t>(random() % 4);
        const auto h = static_cast<int32_t>(random() % 4);
        const Bitmap border = Bitmap::make([&](int x, int y) {
            return a.bitmap.at(x, y) && !(a.bitmap.at(x - w, y) && a.bitmap.at(x + w, y) &&
                                          a.bitmap.at(x, y - h) && a.bitmap.at(x, y + h));
        });
        ASSERT_EQ(rectsOf(a.region.frame(w, h)), border.canonicalRects());

        const RegionHandle again = Region::fromBlock(a.region.block());
        ASSERT_NE(again, nullptr);
        ASSERT_EQ(*again, a.region);
        ASSERT_EQ(again->box(), a.region.box());
    }
}

TEST(Region, AnswersForEveryPixelAndRow) {
    std::mt19937 random(7);
    for (int turn = 0; turn < 60; ++turn) {
        const Sample a = randomSample(random);
        Rect box;
        bool any = false;
        for (int32_t y = -2; y < 43; ++y) {
            for (int32_t x = -2; x < 43; ++x) {
                ASSERT_EQ(a.region.contains(x, y), a.bitmap.at(x, y)) << x << ", " << y;
                if (!a.bitmap.at(x, y)) continue;
                if (!any) box = {x, y, x + 1, y + 1};
                any = true;
                box = {std::min(box.left, x), box.top, std::max(box.right, x + 1), y + 1};
            }
            int32_t pixels = 0;
            int32_t right = lowest;
            for (const Rect& r : a.region.band(y)) {
                ASSERT_LE(r.top, y);
                ASSERT_GT(r.bottom, y);
                ASSERT_GT(r.left, right);
                right = r.right;
                for (int32_t x = r.left; x < r.right; ++x)
                    ASSERT_TRUE(a.bitmap.at(x, y));
                pixels += r.right - r.left;
            }
            int32_t expected = 0;
            for (int32_t x = 0; x < 40; ++x)
                expected += a.bitmap.at(x, y) ? 1 : 0;
            ASSERT_EQ(pixels, expected);
        }
        ASSERT_EQ(a.region.isEmpty(), !any);
        ASSERT_EQ(a.region.box(), box);
    }
}

TEST(Region, ARectanglesRightAndBottomAreOutside) {
    const Region region(Rect{0, 0, 100, 50});
    EXPECT_EQ(region.box(), (Rect{0, 0, 100, 50}));
    EXPECT_TRUE(region.contains(0, 0));
    EXPECT_TRUE(region.contains(99, 49));
    EXPECT_FALSE(region.contains(100, 0));
    EXPECT_FALSE(region.contains(0, 50));
    EXPECT_FALSE(region.contains(-1, 0));
    EXPECT_FALSE(region.contains(0, -1));
}

TEST(Region, ReversedCornersArePutInOrder) {
    EXPECT_EQ(Region(Rect{7, 9, 2, 3}), Region(Rect{2, 3, 7, 9}));
    EXPECT_EQ(Region(Rect{highest, highest, lowest, lowest}).box(),
              (Rect{lowest, lowest, highest, highest}));
}

TEST(Region, ARectangleWithoutAreaIsEmpty) {
    for (const Rect rect : {Rect{3, 3, 3, 9}, Rect{3, 3, 9, 3}, Rect{}}) {
        const Region region(rect);
        EXPECT_TRUE(region.isEmpty());
        EXPECT_EQ(region.box(), Rect());
        EXPECT_TRUE(region.band(3).empty());
        EXPECT_EQ(region, Region());
    }
}

TEST(Region, TheBlockOfTwoBandsIsLaidOutWordByWord) {
    const Region region = regionOf({{10, 20, 30, 25}, {5, 25, 8, 40}, {12, 25, 14, 40}});
    EXPECT_EQ(region.block(), (std::vector<int32_t>{32, 1,  3, 48, 5, 20, 30, 40, 10, 20,
                                                    30, 25, 5, 25, 8, 40, 12, 25, 14, 40}));
    EXPECT_EQ(Region().block(), (std::vector<int32_t>{32, 1, 0, 0, 0, 0, 0, 0}));
}

TEST(Region, ABlockOfAnotherKindIsRefused) {
    const std::vector<int32_t> good = blockOf({{0, 0, 4, 4}});
    ASSERT_NE(Region::fromBlock(good), nullptr);
    for (size_t count = 0; count < 8; ++count) {
        EXPECT_EQ(Region::fromBlock(std::span(good).first(count)), nullptr) << count;
    }
    for (const int32_t size : {0, 31, 33, -32, 16}) {
        std::vector<int32_t> words = good;
        words[0] = size;
        EXPECT_EQ(Region::fromBlock(words), nullptr) << size;
    }
    for (const int32_t type : {0, 2, -1}) {
        std::vector<int32_t> words = good;
        words[1] = type;
        EXPECT_EQ(Region::fromBlock(words), nullptr) << type;
    }
}

TEST(Region, ACountBeyondTheWordsIsRefused) {
    for (const int32_t count : {2, 3, 1000, highest, -1, lowest, 0x40000000, 0x10000001}) {
        std::vector<int32_t> words = blockOf({{0, 0, 4, 4}});
        words[2] = count;
        EXPECT_EQ(Region::fromBlock(words), nullptr) << count;
    }
    // One word short of its single rectangle.
    const std::vector<int32_t> words = blockOf({{0, 0, 4, 4}});
    EXPECT_EQ(Region::fromBlock(std::span(words).first(11)), nullptr);
}

TEST(Region, WordsBehindTheCountedRectanglesAreNotRead) {
    std::vector<int32_t> words = blockOf({{0, 0, 4, 4}, {10, 0, 14, 4}});
    words[2] = 1;
    const RegionHandle region = Region::fromBlock(words);
    ASSERT_NE(region, nullptr);
    EXPECT_EQ(*region, Region(Rect{0, 0, 4, 4}));
    words[2] = 0;
    const RegionHandle none = Region::fromBlock(words);
    ASSERT_NE(none, nullptr);
    EXPECT_TRUE(none->isEmpty());
}

TEST(Region, RectanglesWithoutAreaInABlockCountForNothing) {
    EXPECT_EQ(regionOf({{5, 5, 5, 9}, {9, 9, 2, 2}, {1, 1, 3, 3}, {highest, 0, lowest, 9}}),
              Region(Rect{1, 1, 3, 3}));
    EXPECT_TRUE(regionOf({{5, 5, 5, 9}}).isEmpty());
}

TEST(Region, TouchingAndRepeatedRectanglesBecomeOne) {
    EXPECT_EQ(regionOf({{0, 0, 2, 2}, {2, 0, 4, 2}, {0, 2, 4, 4}, {0, 2, 4, 4}, {1, 1, 3, 3}}),
              Region(Rect{0, 0, 4, 4}));
}

TEST(Region, ReachesTheEndsOfTheCoordinates) {
    const Rect whole{lowest, lowest, highest, highest};
    const Region all(whole);
    EXPECT_TRUE(all.contains(lowest, lowest));
    EXPECT_TRUE(all.contains(highest - 1, highest - 1));
    EXPECT_FALSE(all.contains(highest, 0));
    EXPECT_EQ(regionOf({whole, {-4, -4, 4, 4}}), all);
    EXPECT_EQ(regionOf({{lowest, lowest, 0, highest}, {0, lowest, highest, highest}}), all);

    const Region hole = all ^ Region(Rect{-4, -4, 4, 4});
    EXPECT_EQ(hole.rects().size(), 4U);
    EXPECT_EQ(hole ^ all, Region(Rect{-4, -4, 4, 4}));
    EXPECT_EQ(hole & all, hole);
    EXPECT_EQ(all & all, all);
    EXPECT_TRUE((all ^ all).isEmpty());

    // The outermost pixels have no neighbour beyond them.
    EXPECT_EQ(all ^ all.frame(1, 1),
              Region(Rect{lowest + 1, lowest + 1, highest - 1, highest - 1}));
    // The one pixel that lies as far as that from all four sides.
    EXPECT_EQ(all ^ all.frame(highest, highest), Region(Rect{-1, -1, 0, 0}));
    EXPECT_EQ(all.frame(lowest, lowest), all);
}

TEST(Region, WhatMovesBeyondTheCoordinatesIsCutOff) {
    const Region all(Rect{lowest, lowest, highest, highest});
    EXPECT_EQ(all.offset(1, 0), Region(Rect{lowest + 1, lowest, highest, highest}));
    EXPECT_EQ(all.offset(0, -1), Region(Rect{lowest, lowest, highest, highest - 1}));
    EXPECT_EQ(all.offset(highest, lowest), Region(Rect{-1, lowest, highest, -1}));

    // Bands that differ only in what is cut off become one.
    const Region steps = regionOf({{0, 0, 10, 5}, {0, 5, 20, 10}});
    EXPECT_EQ(steps.offset(highest - 8, 0), Region(Rect{highest - 8, 0, highest, 10}));
    EXPECT_TRUE(steps.offset(highest, 0).isEmpty());
    EXPECT_TRUE(steps.offset(0, highest).isEmpty());
}

TEST(Region, ABandIsFoundByAnyOfItsRows) {
    const Region region = regionOf({{0, 0, 2, 4}, {5, 0, 8, 4}, {0, 10, 2, 12}});
    EXPECT_EQ(region.band(0).size(), 2U);
    EXPECT_EQ(region.band(3).size(), 2U);
    EXPECT_EQ(region.band(3)[1], (Rect{5, 0, 8, 4}));
    EXPECT_TRUE(region.band(4).empty());
    EXPECT_TRUE(region.band(-1).empty());
    EXPECT_EQ(region.band(11).size(), 1U);
    EXPECT_TRUE(region.band(12).empty());
    EXPECT_TRUE(region.band(lowest).empty());
    EXPECT_TRUE(region.band(highest).empty());
}

TEST(Region, TheFrameOfARectangleIsItsRing) {
    const Region ring = Region(Rect{2, 3, 10, 9}).frame(1, 1);
    EXPECT_EQ(rectsOf(ring),
              (std::vector<Rect>{{2, 3, 10, 4}, {2, 4, 3, 8}, {9, 4, 10, 8}, {2, 8, 10, 9}}));
    EXPECT_EQ(Region(Rect{0, 0, 2, 2}).frame(1, 1), Region(Rect{0, 0, 2, 2}));
    EXPECT_TRUE(Region().frame(1, 1).isEmpty());
    EXPECT_TRUE(Region(Rect{0, 0, 5, 5}).frame(0, 0).isEmpty());
    EXPECT_EQ(rectsOf(Region(Rect{0, 0, 9, 4}).frame(2, 0)),
              (std::vector<Rect>{{0, 0, 2, 4}, {7, 0, 9, 4}}));
}

/// `count` bars of one pixel, two pixels apart.
Region bars(int32_t count, bool lying) {
    std::vector<Rect> rects;
    for (int32_t i = 0; i < count; ++i) {
        const Rect bar =
            lying ? Rect{0, i * 2, count * 2, i * 2 + 1} : Rect{i * 2, 0, i * 2 + 1, count * 2};
        rects.push_back(bar);
    }
    return regionOf(rects);
}

TEST(Region, ManyRectanglesThatHideBehindOthersCostLittle) {
    // Quadratic work on 300,000 rectangles would take minutes.
    std::vector<Rect> nested;
    constexpr int32_t count = 300000;
    for (int32_t i = 0; i < count; ++i)
        nested.push_back({i, i, 2 * count - i, 2 * count - i});
    EXPECT_EQ(regionOf(nested), Region(Rect{0, 0, 2 * count, 2 * count}));

    std::vector<Rect> stairs;
    for (int32_t i = 0; i < count; ++i)
        stairs.push_back({i, i, i + count, i + count});
    EXPECT_EQ(regionOf(stairs).rects().size(), 2U * count - 1);

    std::vector<Rect> comb;
    for (int32_t i = 0; i < count; ++i)
        comb.push_back({i * 2, 0, i * 2 + 1, count});
    for (int32_t i = 0; i < count; ++i)
        comb.push_back({0, i, 1, i + 1});
    EXPECT_EQ(regionOf(comb).rects().size(), static_cast<size_t>(count));
}

TEST(Region, AnIntersectionCostsNoMoreThanWhatIsShared) {
    constexpr int32_t count = 300000;
    std::vector<Rect> comb;
    std::vector<Rect> drops;
    for (int32_t i = 0; i < count; ++i) {
        comb.push_back({i * 2, 0, i * 2 + 1, count});
        drops.push_back({i * 2, i, i * 2 + 2, i + 1});
    }
    const Region shared = regionOf(comb) & regionOf(drops);
    EXPECT_EQ(shared.rects().size(), static_cast<size_t>(count));
    EXPECT_EQ(shared.rects().back(), (Rect{2 * count - 2, count - 1, 2 * count - 1, count}));
}

TEST(Region, ARegionOfTooManyRectanglesFails) {
    // The holes of a grid of 4,200 by 4,200 bars are more than a region holds.
    const Region lying = bars(4200, true);
    const Region standing = bars(4200, false);
    EXPECT_THROW(lying ^ standing, StatementFailed);
    EXPECT_THROW(lying & standing, StatementFailed);
    std::vector<Rect> both = rectsOf(lying);
    both.insert(both.end(), standing.rects().begin(), standing.rects().end());
    EXPECT_EQ(Region::fromBlock(blockOf(both)), nullptr);
}

}  // namespace
}  // namespace tessarine
