#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "pixels/failures.h"
#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twin of the tone family: one plain loop over x and y for each member, to be checked by
// eye. It shares nothing with the library but the buffer and the region type.

namespace tessarine::tests::twin {

inline PixelBuffer brightness(const PixelBuffer& source, const Region& region, int32_t Factor) {
    return loop(source, region, [&](Pixel p) {
        return Pixel{clamp(p.blue + Factor), clamp(p.green + Factor), clamp(p.red + Factor), 0};
    });
}

inline PixelBuffer contrast(const PixelBuffer& source, const Region& region, int32_t Factor) {
    int32_t sum = 0;
    int32_t count = 0;
    for (int32_t y = 0; y < source.height(); ++y)
        for (int32_t x = 0; x < source.width(); ++x) {
            const Pixel& p = source.at(x, y);
            sum += (p.blue + p.green + p.red) / 3;
            ++count;
        }
    const int32_t mean = count == 0 ? 0 : sum / count;
    const float c = static_cast<float>((Factor + 100) / 100.0);
    return loop(source, region, [&](Pixel p) {
        int32_t b = round((p.blue - mean) * double{c} + mean);
        int32_t g = round((p.green - mean) * double{c} + mean);
        int32_t r = round((p.red - mean) * double{c} + mean);
        while (b < 0 || b > 255 || g < 0 || g > 255 || r < 0 || r > 255) {
            if (!(b > 0) && !(g > 0) && !(r > 0)) {
                b = 0;
                g = 0;
                r = 0;
            }
            if (!(b < 255) && !(g < 255) && !(r < 255)) {
                b = 255;
                g = 255;
                r = 255;
            }
            if (b < 0) {
                g += b / 2;
                r += b / 2;
                b = 0;
            }
            if (b > 255) {
                g += (b - 255) / 2;
                r += (b - 255) / 2;
                b = 255;
            }
            if (g < 0) {
                b += g / 2;
                r += g / 2;
                g = 0;
            }
            if (g > 255) {
                b += (g - 255) / 2;
                r += (g - 255) / 2;
                g = 255;
            }
            if (r < 0) {
                g += r / 2;
                b += r / 2;
                r = 0;
            }
            if (r > 255) {
                g += (r - 255) / 2;
                b += (r - 255) / 2;
                r = 255;
            }
        }
        return Pixel{static_cast<uint8_t>(b), static_cast<uint8_t>(g), static_cast<uint8_t>(r), 0};
    });
}

inline PixelBuffer gammaCorrection(const PixelBuffer& source, const Region& region,
                                   int32_t Factor) {
    const float c = static_cast<float>((Factor + 100) / 100.0);
    const auto level = [&](uint8_t v) {
        if (c <= 0) return uint8_t{0};
        return static_cast<uint8_t>(round(std::pow(v / 255.0, 1 / double{c}) * 255));
    };
    return loop(source, region, [&](Pixel p) {
        return Pixel{level(p.blue), level(p.green), level(p.red), 0};
    });
}

inline PixelBuffer equalize(const PixelBuffer& source, const Region& region) {
    std::array<int32_t, 256> hist{};
    for (int32_t y = 0; y < source.height(); ++y)
        for (int32_t x = 0; x < source.width(); ++x) {
            const Pixel& p = source.at(x, y);
            ++hist.at(static_cast<size_t>(round(0.113 * p.blue + 0.586 * p.green + 0.301 * p.red)));
        }
    const int32_t half = source.width() * source.height() / 2;
    int32_t med = -1;  // what the library takes where there is no pixel to find a median of
    int32_t sum = 0;
    for (int32_t i = 0; i < 256; ++i) {
        const int32_t here = hist.at(static_cast<size_t>(i));
        sum += here;
        if (sum > half) {
            med = here / 2 <= sum - half ? i - 1 : i;
            break;
        }
    }
    const float up = static_cast<float>(127.0 / (255 - med));
    const float low = static_cast<float>(127.0 / (med - 1));
    const auto level = [&](uint8_t v) {
        const double stretched = v >= med ? (v - med) * double{up} + 128 : v * double{low};
        const double whole = std::rint(stretched);
        return whole >= 0 && whole <= 255 ? static_cast<uint8_t>(whole) : v;
    };
    return loop(source, region, [&](Pixel p) {
        return Pixel{level(p.blue), level(p.green), level(p.red), 0};
    });
}

inline PixelBuffer saturation(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const float c = static_cast<float>(Factor / 100.0);
    return loop(source, region, [&](Pixel p) {
        const int32_t L = (p.blue + p.green + p.red) / 3;
        const auto level = [&](uint8_t v) {
            const double whole = std::rint(v + double{c} * (v - L));
            return static_cast<uint8_t>(whole < 0 ? 0 : whole > 255 ? 255 : whole);
        };
        return Pixel{level(p.blue), level(p.green), level(p.red), 0};
    });
}

inline PixelBuffer invert(const PixelBuffer& source, const Region& region) {
    return loop(source, region, [](Pixel p) {
        return Pixel{static_cast<uint8_t>(255 - p.blue), static_cast<uint8_t>(255 - p.green),
                     static_cast<uint8_t>(255 - p.red), 0};
    });
}

inline PixelBuffer greyScale(const PixelBuffer& source, const Region& region) {
    return loop(source, region, [](Pixel p) {
        const auto v =
            static_cast<uint8_t>(round(0.071 * p.blue + 0.707 * p.green + 0.222 * p.red));
        return Pixel{v, v, v, 0};
    });
}

inline PixelBuffer threshold(const PixelBuffer& source, const Region& region, int32_t Factor) {
    return loop(source, region, [&](Pixel p) {
        const int32_t avg = (p.blue + p.green + p.red) / 3;
        return avg > Factor ? Pixel{255, 255, 255, 0} : Pixel{0, 0, 0, 0};
    });
}

/// \throws StatementFailed for Factor -1
inline PixelBuffer reduction(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const int32_t s = Factor + 1;
    if (s == 0) throw StatementFailed("division by zero");
    const auto level = [&](uint8_t v) {
        const int32_t t = round(static_cast<double>(v) / s) * s;
        return static_cast<uint8_t>(t > 255 ? 255 : t);
    };
    return loop(source, region, [&](Pixel p) {
        return Pixel{level(p.blue), level(p.green), level(p.red), 0};
    });
}

inline PixelBuffer killChannel(const PixelBuffer& source, const Region& region, bool rChannel,
                               bool gChannel, bool bChannel) {
    return loop(source, region, [&](Pixel p) {
        if (bChannel) p.blue = 0;
        if (gChannel) p.green = 0;
        if (rChannel) p.red = 0;
        return p;
    });
}

inline PixelBuffer shiftRgb(const PixelBuffer& source, const Region& region, int32_t rFactor,
                            int32_t gFactor, int32_t bFactor) {
    return loop(source, region, [&](Pixel p) {
        return Pixel{clamp(p.blue + bFactor), clamp(p.green + gFactor), clamp(p.red + rFactor), 0};
    });
}

/// The arguments of the channel mixer for one colour.
struct Mix {
    int32_t bank = 0;  ///< 0 to 2
    bool inv = false;
    bool kill = false;
};

inline PixelBuffer swapRgb(const PixelBuffer& source, const Region& region, Mix red, Mix green,
                           Mix blue) {
    const auto mixed = [](Pixel p, Mix mix) {
        int32_t v = mix.bank == 0 ? p.blue : mix.bank == 1 ? p.green : p.red;
        if (mix.inv) v = 255 - v;
        if (mix.kill) v = 0;
        return static_cast<uint8_t>(v);
    };
    return loop(source, region, [&](Pixel p) {
        return Pixel{mixed(p, blue), mixed(p, green), mixed(p, red), 0};
    });
}

inline PixelBuffer swapBanks(const PixelBuffer& source, const Region& region, int32_t Modo) {
    return loop(source, region, [&](Pixel p) {
        const uint8_t B = p.blue;
        const uint8_t G = p.green;
        const uint8_t R = p.red;
        if (Modo == 1) return Pixel{G, R, B, 0};
        if (Modo == 2) return Pixel{R, B, G, 0};
        if (Modo == 3) return Pixel{G, B, R, 0};
        if (Modo == 4) return Pixel{R, G, B, 0};
        if (Modo == 5) return Pixel{B, R, G, 0};
        return p;
    });
}

}  // namespace tessarine::tests::twin
