#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "support/pictures.h"

namespace tessarine::tests {

/// A region of a random kind for a picture of this size: none, the whole picture, a rectangle,
/// several overlapping ones, or one that reaches beyond the picture and its margin.
inline RegionHandle randomRegion(std::mt19937& random, int32_t width, int32_t height) {
    const auto between = [&random](int32_t low, int32_t high) {
        return std::uniform_int_distribution<int32_t>(low, high)(random);
    };
    const auto rectangle = [&](int32_t beyond) {
        const int32_t left = between(-beyond, width);
        const int32_t top = between(-beyond, height);
        return Rect{left, top, between(left, width + beyond), between(top, height + beyond)};
    };
    switch (between(0, 4)) {
        case 0:
            return std::make_shared<const Region>();
        case 1:
            return std::make_shared<const Region>(Rect{0, 0, width, height});
        case 2:
            return std::make_shared<const Region>(rectangle(0));
        case 3: {
            std::vector<Rect> rects;
            for (int32_t i = between(2, 6); i > 0; --i)
                rects.push_back(rectangle(0));
            return regionOf(rects);
        }
        default:
            return regionOf({rectangle(9), rectangle(9)});
    }
}

/// A factor: mostly near what a sheet allows, sometimes anywhere in 32 bits.
inline int32_t randomFactor(std::mt19937& random) {
    const auto bits = static_cast<int32_t>(random());
    switch (random() % 4) {
        case 0:
            return bits;
        case 1:
            return bits % 100000;
        default:
            return bits % 301;
    }
}

}  // namespace tessarine::tests
