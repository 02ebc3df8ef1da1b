#pragma once

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "filters/kernels.h"
#include "member_checks.h"
#include "support/engine.h"

// What the tests of the neighbourhood family share.

namespace tessarine::tests {

using Reports = std::vector<int32_t>;
using Rows = std::vector<std::vector<uint8_t>>;

inline PixelBuffer uniform(int32_t width, int32_t height, uint8_t level) {
    return drawBuffer(width, height, [=](int32_t, int32_t) { return grey(level); });
}

/// The levels of a picture, row by row, of which each pixel must be grey.
inline Rows greyLevelsOf(const PixelBuffer& picture) {
    for (int32_t y = 0; y < picture.height(); ++y)
        for (int32_t x = 0; x < picture.width(); ++x) {
            const Pixel& p = picture.at(x, y);
            EXPECT_TRUE(p.blue == p.green && p.green == p.red) << x << ", " << y;
        }
    return levelsOf(picture);
}

/// Whether (x, y) is one of the outermost `width` pixels.
inline bool onFrame(const PixelBuffer& picture, int32_t x, int32_t y, int32_t width = 1) {
    return x < width || y < width || x >= picture.width() - width || y >= picture.height() - width;
}

/// Convolution with a kernel's own terms.
inline PixelBuffer convolve(cBitFilter& filter, int32_t number, bool keepMargins) {
    const tFilterKernel k = GetFilterKernel(number);
    return filter.MaskFilter(k.mskBits, k.Weight, k.rFactor, k.gFactor, k.bFactor, keepMargins);
}

}  // namespace tessarine::tests
