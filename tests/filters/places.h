#pragma once

#include <cstdint>

#include "support/engine.h"
#include "support/pictures.h"

namespace tessarine::tests {

/// A picture of up to 250 pixels a side in which every pixel tells its own place.
inline PixelBuffer places(int32_t width, int32_t height) {
    return drawBuffer(width, height, [](int32_t x, int32_t y) {
        return Pixel{static_cast<uint8_t>(x + 1), static_cast<uint8_t>(y + 1), 255,
                     static_cast<uint8_t>(x * 7 + y * 13)};
    });
}

/// The place that the pixel (x, y) of a deformed places() was taken from; (-1, -1) for black.
inline Point placeOf(const PixelBuffer& deformed, int32_t x, int32_t y) {
    const Pixel& p = deformed.at(x, y);
    return {p.blue - 1, p.green - 1};
}

inline bool isBlack(const Pixel& p) { return p.blue == 0 && p.green == 0 && p.red == 0; }

}  // namespace tessarine::tests
