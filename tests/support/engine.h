#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "pixels/bit_filter.h"
#include "support/clock.h"
#include "support/pictures.h"

namespace tessarine::tests {

/// An engine over one picture, with the whole picture as its region and a clock that stands.
struct Engine {
    explicit Engine(PixelBuffer given) : picture(std::move(given)), region(wholeRegion(picture)) {
        filter.timeGetTime = [] { return 0U; };
        keepReports(filter, reports);
        if (picture.isDimensioned()) filter.Bits(picture);
        filter.BitsRegion(region);
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    void keepTo(const std::vector<Rect>& rects) {
        region = regionOf(rects);
        filter.BitsRegion(region);
    }
    /// From now on every report is due.
    void reportAlways() { clock.attachTo(filter); }

    PixelBuffer picture;
    RegionHandle region;
    cBitFilter filter;
    std::vector<int32_t> reports;
    SteppingClock clock{100, 11};
};

inline Pixel grey(uint8_t level) { return {level, level, level, 0}; }

/// Grey levels as a picture, row by row.
inline PixelBuffer greys(const std::vector<std::vector<uint8_t>>& rows) {
    return drawBuffer(static_cast<int32_t>(rows.at(0).size()), static_cast<int32_t>(rows.size()),
                      [&](int32_t x, int32_t y) {
                          return grey(rows.at(static_cast<size_t>(y)).at(static_cast<size_t>(x)));
                      });
}

/// The blue levels of a picture, row by row.
inline std::vector<std::vector<uint8_t>> levelsOf(const PixelBuffer& picture) {
    std::vector<std::vector<uint8_t>> rows;
    for (int32_t y = 0; y < picture.height(); ++y) {
        rows.emplace_back();
        for (int32_t x = 0; x < picture.width(); ++x)
            rows.back().push_back(picture.at(x, y).blue);
    }
    return rows;
}

}  // namespace tessarine::tests
