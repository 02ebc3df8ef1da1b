#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "pixels/pixel_buffer.h"
#include "pixels/region.h"

// What the slow twins of all families are made of: a plain loop over x and y and the roundings,
// to be checked by eye. The twins share nothing with the library but the buffer and the region
// type.

namespace tessarine::tests::twin {

/// Every pixel of the region that the buffer has becomes `change(pixel)`, margin included where
/// the region reaches there; the fourth byte stays.
template <class Change>
PixelBuffer loop(const PixelBuffer& source, const Region& region, Change change) {
    PixelBuffer result = source;
    Pixel* block = result.writableBlock();
    for (int32_t y = -2; y <= source.height() + 1; ++y)
        for (int32_t x = -2; x <= source.width() + 1; ++x) {
            if (!region.contains(x, y)) continue;
            Pixel& target = block[result.offsetOfRow(y) + x];
            const uint8_t fourth = target.fourth;
            target = change(source.at(x, y));
            target.fourth = fourth;
        }
    return result;
}

inline uint8_t clamp(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

/// To the nearest, ties to even; the lowest integer for what 32 bits do not hold.
inline int32_t round(double v) {
    const double whole = std::rint(v);
    if (whole > -2147483649.0 && whole < 2147483648.0) return static_cast<int32_t>(whole);
    return std::numeric_limits<int32_t>::min();
}

/// Channel 0, 1, 2 or 3 of a pixel: blue, green, red, fourth.
inline uint8_t& channel(Pixel& p, int c) {
    return c == 0 ? p.blue : c == 1 ? p.green : c == 2 ? p.red : p.fourth;
}
inline int32_t channel(const Pixel& p, int c) {
    return c == 0 ? p.blue : c == 1 ? p.green : c == 2 ? p.red : p.fourth;
}

/// The pixel at (x, y) as unchecked indexing finds it: beyond the margin's left or right end lies
/// the row before or after, and beyond the block the library gives black.
inline Pixel read(const PixelBuffer& bits, int64_t x, int64_t y) {
    const int64_t place = (y + 2) * (bits.width() + 4) + x + 2;
    if (place < 0 || place >= (int64_t{bits.width()} + 4) * (bits.height() + 4)) return {};
    return bits.block()[place];
}

/// Whether a buffer holds (x, y), its margin included.
inline bool holds(const PixelBuffer& bits, int64_t x, int64_t y) {
    return x >= -2 && x <= bits.width() + 1 && y >= -2 && y <= bits.height() + 1;
}

}  // namespace tessarine::tests::twin
