#pragma once

#include <array>
#include <cstdint>

#include "pixels/pixel_buffer.h"
#include "pixels/point_loops.h"

// Look-up tables that filters of one channel value share.

namespace tessarine {

/// What becomes of each of the 256 values of a channel.
using Levels = std::array<uint8_t, 256>;

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

/// The same for filterPixels(), whose lambdas work with colours as numbers. The table has to stay
/// where it is.
inline auto byLevels(const Levels& levels) {
    return [&levels](const Colour& c) {
        return eachChannel(c, [&](int32_t v) { return int32_t{levels[static_cast<size_t>(v)]}; });
    };
}
auto byLevels(Levels&&) = delete;

}  // namespace tessarine
