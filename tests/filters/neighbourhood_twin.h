#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "pixels/failures.h"
#include "pixels/filter_kernel.h"
#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twins of the neighbourhood family, to be checked by eye.

namespace tessarine::tests::twin {

/// A source with its places told from the pixel at (x, y).
struct Place {
    const PixelBuffer& source;
    int32_t x;
    int32_t y;

    int32_t p(int c, int64_t dx, int64_t dy) const {
        return channel(read(source, x + dx, y + dy), c);
    }
    int32_t s8(int c) const {
        return p(c, -1, -1) + p(c, 0, -1) + p(c, 1, -1) + p(c, -1, 0) + p(c, 1, 0) + p(c, -1, 1) +
               p(c, 0, 1) + p(c, 1, 1);
    }
};

/// `change(place, pixel of the result, result)` row by row over the pixels of the region inside
/// its box less a margin. Nothing is put back: `change` keeps to the channels it may write.
template <class Change>
PixelBuffer scan(const PixelBuffer& source, const Region& region, int32_t margin, Change change) {
    PixelBuffer result = source;
    Pixel* block = result.writableBlock();
    const Rect box = region.box();
    const int32_t scanLeft = box.left + margin;
    const int32_t scanRight = box.right - margin - 1;
    const int32_t scanTop = box.top + margin;
    const int32_t scanBottom = box.bottom - margin - 1;
    for (int32_t y = -2; y <= source.height() + 1; ++y)
        for (int32_t x = -2; x <= source.width() + 1; ++x) {
            if (x < scanLeft || x > scanRight || y < scanTop || y > scanBottom) continue;
            if (!region.contains(x, y)) continue;
            change(Place{source, x, y}, block[result.offsetOfRow(y) + x], result);
        }
    return result;
}

/// Channels 0, 1 and 2 become `level(place, channel)`.
template <class Level>
PixelBuffer scanChannels(const PixelBuffer& source, const Region& region, int32_t margin,
                         Level level) {
    return scan(source, region, margin, [&](const Place& at, Pixel& target, const PixelBuffer&) {
        for (int c = 0; c <= 2; ++c)
            channel(target, c) = level(at, c);
    });
}

/// \throws StatementFailed for a divisor of 0
inline int32_t divide(int32_t a, int32_t b) {
    if (b == 0) throw StatementFailed("division by zero");
    return static_cast<int32_t>(int64_t{a} / b);
}

/// \throws StatementFailed where a Weight of 0 divides, or for a mask without bounds
inline PixelBuffer maskFilter(const PixelBuffer& source, const Region& region,
                              const KernelMask& mskBits, int32_t Weight, int32_t rFactor,
                              int32_t gFactor, int32_t bFactor, bool KeepMargins) {
    if (mskBits.side() == 0) throw StatementFailed("no bounds");
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    const int32_t n = mskBits.side() - 1;
    const int32_t h = n / 2;
    const Rect box = region.box();
    int32_t scanLeft = box.left - h;
    int32_t scanRight = box.right - 1 - h;
    int32_t scanTop = box.top - h;
    int32_t scanBottom = box.bottom - 1 - h;
    if (KeepMargins) {
        if (scanLeft < 0) scanLeft = 0;
        if (scanTop < 0) scanTop = 0;
        if (scanRight > maxX - n) scanRight = maxX - n;
        if (scanBottom > maxY - n) scanBottom = maxY - n;
    }
    PixelBuffer result = source;
    Pixel* block = result.writableBlock();
    for (int32_t y = scanTop; y <= scanBottom; ++y)
        for (int32_t x = scanLeft; x <= scanRight; ++x) {
            if (!holds(source, x + h, y + h) || !region.contains(x + h, y + h)) continue;
            int32_t sum[3] = {0, 0, 0};
            for (int32_t i = 0; i <= n; ++i)
                for (int32_t j = 0; j <= n; ++j)
                    for (int c = 0; c <= 2; ++c)
                        sum[c] += channel(read(source, x + i, y + j), c) * mskBits.at(j, i);
            Pixel& target = block[result.offsetOfRow(y + h) + x + h];
            target.blue = clamp(divide(sum[0], Weight) + bFactor);
            target.green = clamp(divide(sum[1], Weight) + gFactor);
            target.red = clamp(divide(sum[2], Weight) + rFactor);
        }
    return result;
}

inline PixelBuffer blurs(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const int64_t f = Factor;
    return scanChannels(source, region, 0, [&](const Place& at, int c) {
        const int32_t S = at.p(c, -f, -f) + at.p(c, 0, -f) + at.p(c, f, -f) + at.p(c, -f, 0) +
                          at.p(c, f, 0) + at.p(c, -f, f) + at.p(c, 0, f) + at.p(c, f, f);
        return static_cast<uint8_t>(S / 8);
    });
}

inline PixelBuffer soften(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const int32_t w = 101 - Factor;
    uint8_t kept[3] = {0, 0, 0};
    return scanChannels(source, region, 1, [&](const Place& at, int c) {
        const int32_t sum =
            w * at.p(c, 0, 0) + at.p(c, -1, 0) + at.p(c, 0, -1) + at.p(c, 0, 1) + at.p(c, 1, 0);
        if (w + 4 != 0) kept[c] = static_cast<uint8_t>(divide(sum, w + 4) & 255);
        return kept[c];
    });
}

inline PixelBuffer sharpen(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const int32_t a = 124 - Factor;
    const int32_t b = 108 - Factor;
    return scanChannels(source, region, 1, [&](const Place& at, int c) {
        int32_t v = at.s8(c);
        if (b != 0) v = divide(a * at.p(c, 0, 0) - 2 * v, b);
        return clamp(v);
    });
}

inline PixelBuffer edgeEnhance(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const int32_t a = Factor + 9;
    const int32_t b = Factor + 1;
    return scanChannels(source, region, 0, [&](const Place& at, int c) {
        int32_t v = at.s8(c);
        if (b != 0) v = divide(a * at.p(c, 0, 0) - v, b);
        return clamp(v);
    });
}

inline void paint(Pixel& target, int32_t colour) {
    target.red = static_cast<uint8_t>(colour & 255);
    target.green = static_cast<uint8_t>(colour >> 8 & 255);
    target.blue = static_cast<uint8_t>(colour >> 16 & 255);
}

inline PixelBuffer contour(const PixelBuffer& source, const Region& region, int32_t Factor,
                           int32_t BackColor) {
    return scan(source, region, 0, [&](const Place& at, Pixel& target, const PixelBuffer&) {
        uint8_t e[3];
        for (int c = 0; c <= 2; ++c)
            e[c] = clamp(8 * at.p(c, 0, 0) - at.s8(c) + 255);
        const int32_t L = (e[0] + e[1] + e[2]) / 3;
        if (L >= Factor) {
            paint(target, BackColor);
        } else {
            for (int c = 0; c <= 2; ++c)
                channel(target, c) = e[c];
        }
    });
}

inline PixelBuffer sketch(const PixelBuffer& source, const Region& region, int32_t Factor, bool BW,
                          int32_t BackColor) {
    return scan(source, region, 0, [&](const Place& at, Pixel& target, const PixelBuffer&) {
        int32_t e[3];
        for (int c = 0; c <= 2; ++c)
            e[c] = 8 * at.p(c, 0, 0) - at.s8(c) + 255;
        const int32_t L = (e[0] + e[1] + e[2]) / 3;
        const uint8_t v = L > Factor ? 255 : 0;
        if (BW) {
            for (int c = 0; c <= 2; ++c)
                channel(target, c) = v;
        } else if (v == 255) {
            paint(target, BackColor);
        }
    });
}

/// One pixel after the other, with the copies where the scan comes upon them.
inline PixelBuffer raised(const PixelBuffer& source, const Region& region, int32_t Factor,
                          bool sunken) {
    const float f = static_cast<float>(Factor / 10.0);
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    return scan(source, region, 0, [&](const Place& at, Pixel& target, const PixelBuffer& result) {
        if (at.x == maxX) {
            for (int c = 0; c <= 2; ++c)
                channel(target, c) = static_cast<uint8_t>(channel(result.at(at.x - 1, at.y), c));
        } else if (at.y == maxY) {
            for (int c = 0; c <= 2; ++c)
                channel(target, c) = static_cast<uint8_t>(channel(result.at(at.x, maxY - 1), c));
        } else {
            int32_t v[3];
            for (int c = 0; c <= 2; ++c) {
                const int32_t d =
                    sunken ? at.p(c, 1, 1) - at.p(c, 0, 0) : at.p(c, 0, 0) - at.p(c, 1, 1);
                v[c] = round(std::fabs(d * double{f} + 128));
            }
            const uint8_t g = clamp((v[0] + v[1] + v[2]) / 3);
            for (int c = 0; c <= 2; ++c)
                channel(target, c) = g;
        }
    });
}

inline PixelBuffer emboss(const PixelBuffer& source, const Region& region, int32_t Factor) {
    return raised(source, region, Factor, false);
}

inline PixelBuffer engrave(const PixelBuffer& source, const Region& region, int32_t Factor) {
    return raised(source, region, Factor, true);
}

inline PixelBuffer relief(const PixelBuffer& source, const Region& region) {
    return scan(source, region, 0, [&](const Place& at, Pixel& target, const PixelBuffer&) {
        for (int c = 1; c <= 3; ++c) {
            const int32_t e = 2 * at.p(c, -1, -1) + at.p(c, -1, 0) + at.p(c, 0, -1) -
                              at.p(c, 0, 1) - at.p(c, 1, 0) - 2 * at.p(c, 1, 1);
            channel(target, c) = clamp((at.p(c, 0, 0) + e) / 2 + 50);
        }
    });
}

inline PixelBuffer dilate(const PixelBuffer& source, const Region& region) {
    return scanChannels(source, region, 0, [&](const Place& at, int c) {
        int32_t v = 0;
        for (int32_t dy = -1; dy <= 1; ++dy)
            for (int32_t dx = -1; dx <= 1; ++dx)
                v = std::max(v, at.p(c, dx, dy));
        return static_cast<uint8_t>(v);
    });
}

inline PixelBuffer erode(const PixelBuffer& source, const Region& region) {
    return scanChannels(source, region, 0, [&](const Place& at, int c) {
        int32_t v = 255;
        for (int32_t dy = -1; dy <= 1; ++dy)
            for (int32_t dx = -1; dx <= 1; ++dx)
                v = std::min(v, at.p(c, dx, dy));
        return static_cast<uint8_t>(v);
    });
}

/// `diagonal`: the four diagonal neighbours instead of the four direct ones.
inline PixelBuffer rank(const PixelBuffer& source, const Region& region, int32_t fltType,
                        bool diagonal) {
    return scanChannels(source, region, 1 - fltType, [&](const Place& at, int c) {
        int32_t v = fltType == 0 ? 255 : 0;
        for (int32_t dy = -1; dy <= 1; ++dy)
            for (int32_t dx = -1; dx <= 1; ++dx) {
                const bool centre = dx == 0 && dy == 0;
                const bool corner = dx != 0 && dy != 0;
                if (!centre && corner != diagonal) continue;
                if (fltType == 0) v = std::min(v, at.p(c, dx, dy));
                if (fltType == 1) v = std::max(v, at.p(c, dx, dy));
            }
        return static_cast<uint8_t>(v);
    });
}

inline PixelBuffer rankFilterN4(const PixelBuffer& source, const Region& region, int32_t fltType) {
    return rank(source, region, fltType, false);
}

inline PixelBuffer rankFilterND(const PixelBuffer& source, const Region& region, int32_t fltType) {
    return rank(source, region, fltType, true);
}

/// The mean of the sector with the smallest spread, of the first `count` of the four.
inline PixelBuffer sectorMean(const PixelBuffer& source, const Region& region, int count) {
    const int32_t firstX[4] = {-2, 0, -2, 0};
    const int32_t firstY[4] = {-2, -2, 0, 0};
    return scanChannels(source, region, 0, [&](const Place& at, int c) {
        int32_t best = 999999;
        int32_t bestMean = 0;
        for (int s = 0; s < count; ++s) {
            int32_t sum = 0;
            for (int32_t dy = firstY[s]; dy <= firstY[s] + 2; ++dy)
                for (int32_t dx = firstX[s]; dx <= firstX[s] + 2; ++dx)
                    sum += at.p(c, dx, dy);
            const int32_t mean = sum / 9;
            int32_t spread = 0;
            for (int32_t dy = firstY[s]; dy <= firstY[s] + 2; ++dy)
                for (int32_t dx = firstX[s]; dx <= firstX[s] + 2; ++dx)
                    spread += std::abs(at.p(c, dx, dy) - mean);
            if (spread < best) {
                best = spread;
                bestMean = mean;
            }
        }
        return static_cast<uint8_t>(bestMean);
    });
}

inline PixelBuffer painting(const PixelBuffer& source, const Region& region) {
    return sectorMean(source, region, 3);
}

inline PixelBuffer dissolve(const PixelBuffer& source, const Region& region) {
    return sectorMean(source, region, 4);
}

}  // namespace tessarine::tests::twin
