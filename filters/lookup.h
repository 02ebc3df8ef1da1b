#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

#include "pixels/levels.h"
#include "pixels/pixel_buffer.h"

// Look-up tables that filters of one channel value share.

namespace tessarine {

/// The table of `level(i)` for i from 0 to 255.
template <class Level>
Levels makeLevels(Level level) {
    Levels levels;
    for (int32_t i = 0; i < 256; ++i)
        levels[static_cast<size_t>(i)] = level(i);
    return levels;
}

/// Sends blue, green and red through a table each.
inline auto throughLevels(const Levels& blue, const Levels& green, const Levels& red) {
    return [=](const Pixel& p) { return Pixel{blue[p.blue], green[p.green], red[p.red], 0}; };
}

/// Sends all three channels through one table.
inline auto throughLevels(const Levels& levels) { return throughLevels(levels, levels, levels); }

/// A whole number for each of the 256 values of a channel.
using WideLevels = std::array<int32_t, 256>;

/// A straight line in whole numbers, (rise * v + start) / 2^16 rounded down.
struct WholeLine {
    int32_t rise = 0;
    int32_t start = 0;

    int32_t operator()(int32_t v) const { return (rise * v + start) >> 16; }
};

/// The line that gives exactly these levels, if there is one near the slope told. Numbers that were
/// rounded from a line lie on one, but where some fell in the middle and went to the even one.
inline std::optional<WholeLine> wholeLine(const WideLevels& levels, double slope) {
    constexpr double one = 65536;
    // The products of 255 and both numbers stay within 32 bits.
    if (!(std::abs(slope) <= 64) || std::abs(int64_t{levels[0]}) > 8192) return std::nullopt;
    const auto rise = static_cast<int64_t>(std::lround(slope * one));
    int64_t lowest = std::numeric_limits<int64_t>::min();
    int64_t highest = std::numeric_limits<int64_t>::max();
    for (int64_t v = 0; v < 256; ++v) {
        const int64_t level = int64_t{levels[static_cast<size_t>(v)]} * 65536 - v * rise;
        lowest = std::max(lowest, level);
        highest = std::min(highest, level + 65535);
    }
    if (lowest > highest) return std::nullopt;
    return WholeLine{static_cast<int32_t>(rise), static_cast<int32_t>(lowest)};
}

}  // namespace tessarine
