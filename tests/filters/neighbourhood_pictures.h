#pragma once

#include <cstdint>

#include "filters/kernels.h"
#include "pixels/bit_filter.h"
#include "support/engine.h"
#include "support/pictures.h"

// Pictures and a call that the tests of the neighbourhood members share.

namespace tessarine::tests {

/// One grey all over.
inline PixelBuffer uniform(int32_t width, int32_t height, uint8_t level) {
    return drawBuffer(width, height, [=](int32_t, int32_t) { return grey(level); });
}

/// A white dot in the middle of a black picture of 9 by 9.
inline PixelBuffer dot() {
    return drawBuffer(9, 9, [](int32_t x, int32_t y) { return grey(x == 4 && y == 4 ? 255 : 0); });
}

/// Whether a pixel belongs to the outermost `width` columns and rows.
inline bool onFrame(const PixelBuffer& picture, int32_t x, int32_t y, int32_t width = 1) {
    return x < width || y < width || x >= picture.width() - width || y >= picture.height() - width;
}

/// MaskFilter by the kernel of a number.
inline PixelBuffer convolve(cBitFilter& filter, int32_t number, bool keepMargins) {
    const tFilterKernel k = GetFilterKernel(number);
    return filter.MaskFilter(k.mskBits, k.Weight, k.rFactor, k.gFactor, k.bFactor, keepMargins);
}

}  // namespace tessarine::tests
