#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twin of the recipes: one plain loop over x and y for each member, to be checked by
// eye. It shares nothing with the library but the buffer and the region type.

namespace tessarine::tests::twin {

inline PixelBuffer oldPhoto(const PixelBuffer& source, const Region& region) {
    return loop(source, region, [](Pixel p) {
        const int32_t L = round(p.blue * 0.071 + p.green * 0.707 + p.red * 0.222);
        p.green = static_cast<uint8_t>(L);
        p.red = static_cast<uint8_t>(L);
        return p;
    });
}

inline PixelBuffer specialColors(const PixelBuffer& source, const Region& region, int16_t R,
                                 int16_t G, int16_t B) {
    return loop(source, region, [&](Pixel p) {
        if (B != -1) p.blue = 0;
        if (G != -1) p.green = 0;
        if (R != -1) p.red = 0;
        return p;
    });
}

/// m(a, b) of the recipes.
inline uint8_t mixed(int32_t a, int32_t b) {
    return static_cast<uint8_t>(round((a * 0.99 + b * 0.99) / 2.0));
}

inline uint8_t ofNot(int32_t v) { return static_cast<uint8_t>(std::abs(-v - 1) & 255); }

inline PixelBuffer classyColors(const PixelBuffer& source, const Region& region, int16_t Effect) {
    return loop(source, region, [&](const Pixel p) {
        const int32_t B = p.blue;
        const int32_t G = p.green;
        const int32_t R = p.red;
        Pixel q = p;
        if (Effect == 0) {
            q.green = mixed(R, G);
            q.red = static_cast<uint8_t>(G);
            q.blue = static_cast<uint8_t>(round(B * (std::atan(static_cast<double>(G)) / 1.9)));
        }
        if (Effect == 1) {
            q.green = mixed(R, G);
            q.red = static_cast<uint8_t>(G);
        }
        if (Effect == 2) {
            q.red = mixed(R, B);
            q.blue = static_cast<uint8_t>(R);
        }
        if (Effect == 3) {
            q.green = mixed(G, B);
            q.blue = static_cast<uint8_t>(G);
        }
        if (Effect == 6) {
            q.blue = static_cast<uint8_t>(round(R / 2.0 + B / 4.0));
            q.green = static_cast<uint8_t>(round(R / 4.0 + G / 2.0));
            q.red = static_cast<uint8_t>(round(G / 4.0 + B / 2.0));
        }
        if (Effect == 7) {
            const int32_t t = round((B * 0.99 * 2.0 + R * 0.99) / 12.0);
            q.blue = ofNot(G - t);
            q.green = ofNot(R - t);
            q.red = ofNot(B - t);
        }
        if (Effect == 8) {
            q.blue = static_cast<uint8_t>(G);
            q.green = static_cast<uint8_t>(R);
        }
        if (Effect == 10) {
            q.blue = static_cast<uint8_t>(round(G / 2.0));
            q.green = static_cast<uint8_t>(round(R / 2.0));
        }
        if (Effect == 11) {
            q.red = 170;
            q.green = static_cast<uint8_t>(B);
            q.blue = static_cast<uint8_t>(G);
        }
        return q;
    });
}

inline PixelBuffer thermique(const PixelBuffer& source, const Region& region) {
    return loop(source, region, [](Pixel p) {
        if (p.red > p.green && p.red > p.blue) {
            p.green = 0;
            p.blue = 0;
        } else if (p.green > p.red && p.green > p.blue) {
            p.red = 0;
            p.blue = 0;
        } else if (p.blue > p.green && p.blue > p.red) {
            p.red = 0;
            p.green = 0;
        }
        return p;
    });
}

/// All pixels with every channel above the half-level become `light`, all below it `dark`.
inline PixelBuffer mirror(const PixelBuffer& source, const Region& region, uint8_t light,
                          uint8_t dark) {
    return loop(source, region, [&](Pixel p) {
        const bool above = p.blue > 127.5 && p.green > 127.5 && p.red > 127.5;
        const bool below = p.blue < 127.5 && p.green < 127.5 && p.red < 127.5;
        if (above) return Pixel{light, light, light, 0};
        if (below) return Pixel{dark, dark, dark, 0};
        return p;
    });
}

inline PixelBuffer xblack(const PixelBuffer& source, const Region& region) {
    return mirror(source, region, 0, 255);
}

inline PixelBuffer photocop(const PixelBuffer& source, const Region& region) {
    return mirror(source, region, 255, 0);
}

}  // namespace tessarine::tests::twin
