#pragma once

#include <cstdint>

#include "pixels/pixel_buffer.h"
#include "pixels/point_loops.h"

// Colour arguments: red + 256 * green + 65536 * blue.

namespace tessarine {

/// The parts of a colour argument, whose highest byte says nothing.
inline Pixel colourOf(int32_t value) {
    const auto bits = static_cast<uint32_t>(value);
    return {static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 8),
            static_cast<uint8_t>(bits), 0};
}

/// The squared distance of two colours of levels, 0 to 195075.
inline int32_t squaredDistance(const Colour& a, const Colour& b) {
    const int32_t blue = a.blue - b.blue;
    const int32_t green = a.green - b.green;
    const int32_t red = a.red - b.red;
    return blue * blue + green * green + red * red;
}

}  // namespace tessarine
