#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/bit_filter.h"
#include "support/engine.h"
#include "support/pictures.h"

// What the frame promises of every member, for a family to ask of all of its own; and pictures of
// one row, pixels written blue, green, red, fourth.

namespace tessarine::tests {

using Pixels = std::vector<Pixel>;

/// A picture of one row.
inline PixelBuffer rowOf(const Pixels& pixels) {
    return drawBuffer(static_cast<int32_t>(pixels.size()), 1,
                      [&](int32_t x, int32_t) { return pixels[static_cast<size_t>(x)]; });
}

inline Pixels pixelsOf(const PixelBuffer& row) { return {row.row(0), row.row(0) + row.width()}; }

/// A member with plain arguments, which change a picture of random colours.
struct NamedCall {
    const char* name;
    bool skips;  ///< runs in skipping mode
    PixelBuffer (*call)(cBitFilter&);
};

/// A report that is due on a picture one row high, where there is no height to measure against, is
/// left out by members that skip and fails the others.
inline void expectTheRuleOfOneRow(std::span<const NamedCall> members) {
    const PixelBuffer picture = randomBuffer(9, 1, 12);
    for (const NamedCall& member : members) {
        Engine quiet(picture);
        const PixelBuffer expected = member.call(quiet.filter);
        Engine late(picture);
        late.reportAlways();
        if (member.skips) {
            EXPECT_EQ(member.call(late.filter), expected) << member.name;
            EXPECT_EQ(late.reports, std::vector<int32_t>{100}) << member.name;
        } else {
            EXPECT_THROW(member.call(late.filter), StatementFailed) << member.name;
            EXPECT_TRUE(late.reports.empty()) << member.name;
        }
    }
}

/// Rows report against the whole height, and the end reports 100.
inline void expectReportsOfEachRowAndTheEnd(std::span<const NamedCall> members) {
    for (const NamedCall& member : members) {
        Engine engine(randomBuffer(3, 5, 15));
        engine.keepTo({{0, 1, 2, 4}});
        engine.reportAlways();
        member.call(engine.filter);
        EXPECT_EQ(engine.reports, (std::vector<int32_t>{25, 50, 75, 100})) << member.name;
    }
}

/// Margin, fourth channel, the source and what lies outside the region stay.
inline void expectOnlyTheRegionsColoursToChange(std::span<const NamedCall> members) {
    // Fourth bytes and a margin of their own, and a region of two parts.
    PixelBuffer picture = randomBuffer(20, 12, 13);
    Pixel* block = picture.writableBlock();
    for (size_t i = 0; i < picture.pixelCount(); ++i)
        if (block[i] == Pixel{}) block[i] = {11, 22, 33, 44};
    for (const NamedCall& member : members) {
        Engine engine(picture);
        engine.keepTo({{0, 0, 10, 5}, {5, 5, 15, 9}});
        const PixelBuffer result = member.call(engine.filter);
        int changed = 0;
        for (int32_t y = -2; y < 14; ++y)
            for (int32_t x = -2; x < 22; ++x) {
                const Pixel& before = picture.at(x, y);
                const Pixel& after = result.at(x, y);
                EXPECT_EQ(after.fourth, before.fourth) << member.name;
                if (!engine.region->contains(x, y)) {
                    EXPECT_EQ(after, before) << member.name << " at " << x << ", " << y;
                }
                changed += after == before ? 0 : 1;
            }
        EXPECT_GT(changed, 0) << member.name;
        EXPECT_EQ(engine.filter.Bits(), picture) << member.name;
    }
}

/// An empty region, and none at all, give the source and a report of the end alone.
inline void expectNoRegionToGiveTheSource(std::span<const NamedCall> members) {
    const PixelBuffer picture = randomBuffer(20, 12, 14);
    for (const NamedCall& member : members)
        for (const RegionHandle& region : {RegionHandle(), std::make_shared<const Region>()}) {
            Engine engine(picture);
            engine.filter.BitsRegion(region);
            EXPECT_EQ(member.call(engine.filter), picture) << member.name;
            EXPECT_EQ(engine.reports, std::vector<int32_t>{100}) << member.name;
        }
}

/// Pictures without pixels, without dimensions, and regions of the whole 32-bit range.
inline void expectNoSizeToMatter(std::span<const NamedCall> members) {
    constexpr int32_t lowest = -2147483647 - 1;
    constexpr int32_t highest = 2147483647;
    for (const NamedCall& member : members) {
        cBitFilter none;
        EXPECT_FALSE(member.call(none).isDimensioned()) << member.name;
        for (const auto& [width, height] :
             {std::array{0, 0}, std::array{0, 7}, std::array{7, 0}, std::array{1, 1}}) {
            const PixelBuffer picture = randomBuffer(width, height, 16);
            Engine whole(picture);
            whole.keepTo({{-2, -2, width + 2, height + 2}});
            const PixelBuffer expected = member.call(whole.filter);
            EXPECT_EQ(expected.width(), width) << member.name;
            EXPECT_EQ(expected.height(), height) << member.name;
            // Rows beyond the buffer hold nothing to work on.
            Engine wide(picture);
            wide.keepTo({{lowest, -2, highest, height + 2}});
            EXPECT_EQ(member.call(wide.filter), expected) << member.name;
            Engine high(picture);
            high.keepTo({{lowest, lowest, highest, highest}});
            EXPECT_EQ(member.call(high.filter), expected) << member.name;
        }
    }
}

}  // namespace tessarine::tests
