#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/bit_filter.h"
#include "support/clock.h"
#include "support/pictures.h"

// What the tests of the members that reshape the image share.

namespace tessarine::tests::geometry {

using Reports = std::vector<int32_t>;
using Levels = std::vector<uint8_t>;

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t highest = std::numeric_limits<int32_t>::max();

/// An engine whose reports are kept. The clock stands until another one is attached.
class Geometry : public testing::Test {
  protected:
    Geometry() {
        filter.timeGetTime = [] { return 0U; };
        keepReports(filter, reports);
    }

    /// The whole picture becomes image and region.
    void take(const PixelBuffer& given) {
        filter.Bits(given);
        keepTo(wholeRegion(given));
    }
    void keepTo(RegionHandle given) {
        region = std::move(given);
        filter.BitsRegion(region);
    }
    /// From now on each row is due for a report.
    void reportEachRow() { clock.attachTo(filter); }

    void expectSize(int32_t width, int32_t height) const {
        EXPECT_EQ(filter.BitsWidth(), width);
        EXPECT_EQ(filter.BitsHeight(), height);
        EXPECT_TRUE(filter.Bits().isDimensioned());
        EXPECT_EQ(filter.Bits().width(), width);
        EXPECT_EQ(filter.Bits().height(), height);
    }

    RegionHandle region;
    cBitFilter filter;
    Reports reports;
    SteppingClock clock{100, 11};
};

/// A picture by its grey levels, row by row.
inline PixelBuffer greys(int32_t width, const Levels& levels) {
    const auto height = static_cast<int32_t>(levels.size()) / width;
    return drawBuffer(width, height, [&](int32_t x, int32_t y) {
        const uint8_t level = levels[static_cast<size_t>(y * width + x)];
        return Pixel{level, level, level, 0};
    });
}

/// The grey levels of the image area; each pixel must be grey with a fourth byte of 0.
inline Levels levelsOf(const PixelBuffer& bits) {
    Levels levels;
    for (int32_t y = 0; y < bits.height(); ++y)
        for (int32_t x = 0; x < bits.width(); ++x) {
            const Pixel& p = bits.at(x, y);
            EXPECT_EQ(p, (Pixel{p.green, p.green, p.green, 0})) << x << ", " << y;
            levels.push_back(p.green);
        }
    return levels;
}

/// Every byte of a random picture, its margin as well.
inline PixelBuffer withMargin(int32_t width, int32_t height, uint32_t seed) {
    PixelBuffer bits(width, height);
    const PixelBuffer colours = randomBuffer(width + 4, height + 4, seed);
    Pixel* block = bits.writableBlock();
    for (int32_t y = 0; y < height + 4; ++y)
        std::copy_n(colours.row(y), width + 4, block + y * bits.stride());
    return bits;
}

inline PixelBuffer without(PixelBuffer bits, uint8_t Pixel::*channel) {
    Pixel* block = bits.writableBlock();
    for (size_t i = 0; i < bits.pixelCount(); ++i)
        block[i].*channel = 0;
    return bits;
}

inline PixelBuffer withoutFourth(const PixelBuffer& bits) { return without(bits, &Pixel::fourth); }

inline bool marginIsBlack(const PixelBuffer& bits) {
    for (int32_t y = -2; y < bits.height() + 2; ++y)
        for (int32_t x = -2; x < bits.width() + 2; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < bits.width() && y < bits.height();
            if (!inside && bits.at(x, y) != Pixel{}) return false;
        }
    return true;
}

}  // namespace tessarine::tests::geometry
