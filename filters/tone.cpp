#include <algorithm>
#include <array>
#include <cmath>

#include "filters/lookup.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Point operations: each pixel from itself alone.

namespace tessarine {

namespace {

Colour grey(int32_t level) { return {level, level, level}; }

/// (Factor + 100) percent as a single.
float percentFactor(int32_t Factor) { return static_cast<float>((Factor + 100) / 100.0); }

/// What `from` lacks or has too much goes half to each of the other two.
[[gnu::always_inline]] inline void spill(int32_t& from, int32_t& first, int32_t& second) {
    const int32_t bounded = clampToLevel(from);
    const int32_t half = (from - bounded) / 2;
    first += half;
    second += half;
    from = bounded;
}

/// A step on the way of three channels into range, on which the pixel keeps its brightness and
/// shifts in hue, rather than being clipped channel by channel.
[[gnu::always_inline]] inline Colour spilled(const Colour& c) {
    const bool isBlack = (c.blue <= 0) & (c.green <= 0) & (c.red <= 0);
    const bool isWhite = (c.blue >= 255) & (c.green >= 255) & (c.red >= 255);
    auto [b, g, r] = either(isBlack, grey(0), either(isWhite, grey(255), c));
    spill(b, g, r);
    spill(g, b, r);
    spill(r, g, b);
    return {b, g, r};
}

/// Counts of the 256 brightness levels.
struct Histogram {
    std::array<int32_t, 256> counts{};

    Histogram& operator+=(const Histogram& other) {
        for (size_t i = 0; i < counts.size(); ++i)
            counts[i] += other.counts[i];
        return *this;
    }
    void count(std::span<const uint8_t> levels) {
        for (const uint8_t level : levels)
            ++counts[level];
    }
};

/// The counts of a row by the brightness that Equalize goes by.
Histogram histogramOf(std::span<const Pixel> row) {
    constexpr size_t atOnce = 1024;
    std::array<uint8_t, atOnce> levels;
    Histogram histogram;
    for (; !row.empty(); row = row.subspan(std::min(atOnce, row.size()))) {
        const size_t count = std::min(atOnce, row.size());
        numbersOf(row.data(), levels.data(), count, [](const Colour& c) {
            return roundFitting(0.113 * c.blue + 0.586 * c.green + 0.301 * c.red);
        });
        histogram.count({levels.data(), count});
    }
    return histogram;
}

/// The level at which half of the pixels are darker; -1 where a picture has no pixel.
int32_t medianLevel(const Histogram& histogram, int32_t pixelCount) {
    const int32_t half = pixelCount / 2;
    int32_t sum = 0;
    for (int32_t i = 0; i < 256; ++i) {
        const int32_t count = histogram.counts[static_cast<size_t>(i)];
        sum += count;
        if (sum > half) return count / 2 <= sum - half ? i - 1 : i;
    }
    return -1;
}

/// One channel of a pixel, or its complement, or 0.
struct MixedChannel {
    Colour mask;  ///< 255 for the channel that is taken
    int32_t complement = 0;

    static bool holds(int32_t bank) { return bank >= 0 && bank <= 2; }
    MixedChannel(int32_t bank, bool inv, bool kill) {
        if (kill) return;
        mask = {bank == 0 ? 255 : 0, bank == 1 ? 255 : 0, bank == 2 ? 255 : 0};
        complement = inv ? 255 : 0;
    }
    int32_t operator()(const Colour& c) const {
        return ((c.blue & mask.blue) | (c.green & mask.green) | (c.red & mask.red)) ^ complement;
    }
};

/// The byte that lies `bank` bytes after a pixel's first one, 0 beyond the buffer.
uint8_t byteOfBank(const PixelBuffer& bits, const Pixel& pixel, int32_t bank) {
    const ptrdiff_t place = (&pixel - bits.block()) * static_cast<ptrdiff_t>(sizeof(Pixel)) + bank;
    if (place < 0 || place >= static_cast<ptrdiff_t>(bits.byteCount())) return 0;
    return reinterpret_cast<const uint8_t*>(bits.block())[place];
}

}  // namespace

PixelBuffer cBitFilter::BRIGHTNESS(int32_t Factor) {
    return filterPixels(OnFailure::raise, [=](const Colour& c) {
        return eachChannel(c, [=](int32_t v) { return clampToLevel(v + Factor); });
    });
}

// Departs from the frame: the mean is taken in a pass of its own, which reports like a filter.
PixelBuffer cBitFilter::Contrast(int32_t Factor) {
    const int32_t mean = reportedMean();
    const double factor = percentFactor(Factor);
    WideLevels spread;
    for (int32_t i = 0; i < 256; ++i)
        spread[static_cast<size_t>(i)] = roundToInteger((i - mean) * factor + mean);
    const auto filter = [this](auto level) {
        return filterSettled(
            OnFailure::skip, [=](const Colour& c) { return eachChannel(c, level); },
            [](const Colour& c) { return spilled(c); });
    };
    if (const std::optional<WholeLine> line = wholeLine(spread, factor)) return filter(*line);
    return filter([&spread](int32_t v) { return spread[static_cast<size_t>(v)]; });
}

PixelBuffer cBitFilter::GammaCorrection(int32_t Factor) {
    const float c = percentFactor(Factor);
    const Levels levels = makeLevels([=](int32_t v) {
        return c <= 0 ? uint8_t{0} : toByte(std::pow(v / 255.0, 1.0 / double{c}) * 255.0);
    });
    return filterLevels(OnFailure::skip, levels);
}

PixelBuffer cBitFilter::Equalize() {
    const int32_t med = medianLevel(sumRows(Histogram{}, histogramOf), BitsWidth() * BitsHeight());
    const auto up = static_cast<float>(127.0 / (255 - med));
    const auto low = static_cast<float>(127.0 / (med - 1));
    const Levels levels = makeLevels([=](int32_t v) {
        // A level that the stretch sends out of a byte's range stays as it is.
        auto level = static_cast<uint8_t>(v);
        attempt([&] {
            level = v >= med ? toByte((v - med) * double{up} + 128) : toByte(v * double{low});
        });
        return level;
    });
    return filterLevels(OnFailure::skip, levels);
}

PixelBuffer cBitFilter::SATURATION(int32_t Factor) {
    const double k = static_cast<float>(Factor / 100.0);
    return filterPixels(OnFailure::skip, [k](const Colour& c) {
        const int32_t level = brightness(c);
        return eachChannel(c, [=](int32_t v) {
            const double moved = v + k * (v - level);
            const double notBelow = moved > 0 ? moved : 0;
            return roundFitting(notBelow < 255 ? notBelow : 255);
        });
    });
}

PixelBuffer cBitFilter::Invert() {
    return filterPixels(OnFailure::raise, [](const Colour& c) {
        return eachChannel(c, [](int32_t v) { return 255 - v; });
    });
}

PixelBuffer cBitFilter::GreyScale() {
    return filterPixels(OnFailure::skip, [](const Colour& c) {
        return grey(roundFitting(0.071 * c.blue + 0.707 * c.green + 0.222 * c.red));
    });
}

PixelBuffer cBitFilter::Threshold(int32_t Factor) {
    // The lowest sum whose third is above the factor.
    const int32_t white = 3 * (std::clamp(Factor, -1, 255) + 1);
    return filterPixels(OnFailure::skip,
                        [white](const Colour& c) { return grey(sumOf(c) >= white ? 255 : 0); });
}

PixelBuffer cBitFilter::Reduction(int32_t Factor) {
    const int32_t step = Factor + 1;
    if (step == 0) throw StatementFailed("levels have no step of 0");
    const Levels levels = makeLevels([=](int32_t i) {
        return clampToByte(roundToInteger(static_cast<double>(i) / step) * step);
    });
    return filterLevels(OnFailure::raise, levels);
}

PixelBuffer cBitFilter::KillChannel(bool rChannel, bool gChannel, bool bChannel) {
    const Colour kept{bChannel ? 0 : 255, gChannel ? 0 : 255, rChannel ? 0 : 255};
    return filterPixels(OnFailure::skip, [kept](const Colour& c) { return c & kept; });
}

PixelBuffer cBitFilter::ShiftRGB(int32_t rFactor, int32_t gFactor, int32_t bFactor) {
    return filterPixels(OnFailure::skip, [=](const Colour& c) {
        return Colour{clampToLevel(c.blue + bFactor), clampToLevel(c.green + gFactor),
                      clampToLevel(c.red + rFactor)};
    });
}

PixelBuffer cBitFilter::SwapRGB(int32_t rBank, int32_t gBank, int32_t bBank, bool rInv, bool gInv,
                                bool bInv, bool rKill, bool gKill, bool bKill) {
    if (MixedChannel::holds(rBank) && MixedChannel::holds(gBank) && MixedChannel::holds(bBank)) {
        const MixedChannel blue(bBank, bInv, bKill);
        const MixedChannel green(gBank, gInv, gKill);
        const MixedChannel red(rBank, rInv, rKill);
        return filterPixels(OnFailure::skip, [=](const Colour& c) {
            return Colour{blue(c), green(c), red(c)};
        });
    }
    // Banks beyond a pixel's own three: they lead into its fourth byte and into other pixels.
    const auto mixed = [this](const Pixel& p, int32_t bank, bool inv, bool kill) -> uint8_t {
        if (kill) return 0;
        const uint8_t v = byteOfBank(bits_, p, bank);
        return inv ? static_cast<uint8_t>(255 - v) : v;
    };
    return filterWindows(OnFailure::skip, regionBox(0), Stencil{0}, [=](const Window& w, Pixel& p) {
        const Pixel& own = w.at(0, 0);
        takeColours(p, {mixed(own, bBank, bInv, bKill), mixed(own, gBank, gInv, gKill),
                        mixed(own, rBank, rInv, rKill), 0});
    });
}

PixelBuffer cBitFilter::SwapBanks(int32_t Modo) {
    const auto mixed = [this](int32_t blue, int32_t green, int32_t red) {
        return filterPixels(
            OnFailure::raise,
            [b = MixedChannel(blue, false, false), g = MixedChannel(green, false, false),
             r = MixedChannel(red, false, false)](const Colour& c) {
                return Colour{b(c), g(c), r(c)};
            });
    };
    switch (Modo) {
        case 1:
            return mixed(1, 2, 0);
        case 2:
            return mixed(2, 0, 1);
        case 3:
            return mixed(1, 0, 2);
        case 4:
            return mixed(2, 1, 0);
        case 5:
            return mixed(0, 2, 1);
        default:
            return mixed(0, 1, 2);
    }
}

}  // namespace tessarine
