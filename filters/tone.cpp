#include <cmath>

#include "filters/lookup.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Point operations: each pixel from itself alone.

namespace tessarine {

namespace {

Pixel grey(uint8_t level) { return {level, level, level, 0}; }

/// (Factor + 100) percent as a single.
float percentFactor(int32_t Factor) { return static_cast<float>((Factor + 100) / 100.0); }

bool isByte(int32_t value) { return value >= 0 && value <= 255; }

/// What `from` lacks or has too much goes half to each of the other two.
void spill(int32_t& from, int32_t& first, int32_t& second) {
    const int32_t bound = from < 0 ? 0 : 255;
    if (isByte(from)) return;
    const int32_t half = (from - bound) / 2;
    first += half;
    second += half;
    from = bound;
}

/// Brings three channels into range so that the pixel keeps its brightness and shifts in hue,
/// rather than clipping channel by channel.
Pixel spillIntoRange(int32_t b, int32_t g, int32_t r) {
    while (!isByte(b) || !isByte(g) || !isByte(r)) {
        if (b <= 0 && g <= 0 && r <= 0) b = g = r = 0;
        if (b >= 255 && g >= 255 && r >= 255) b = g = r = 255;
        spill(b, g, r);
        spill(g, b, r);
        spill(r, g, b);
    }
    return {static_cast<uint8_t>(b), static_cast<uint8_t>(g), static_cast<uint8_t>(r), 0};
}

/// Counts of the 256 brightness levels.
struct Histogram {
    std::array<int32_t, 256> counts{};

    Histogram& operator+=(const Histogram& other) {
        for (size_t i = 0; i < counts.size(); ++i)
            counts[i] += other.counts[i];
        return *this;
    }
};

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

/// The byte that lies `bank` bytes after a pixel's first one, 0 beyond the buffer.
uint8_t byteOfBank(const PixelBuffer& bits, const Pixel& pixel, int32_t bank) {
    const ptrdiff_t place = (&pixel - bits.block()) * static_cast<ptrdiff_t>(sizeof(Pixel)) + bank;
    if (place < 0 || place >= static_cast<ptrdiff_t>(bits.byteCount())) return 0;
    return reinterpret_cast<const uint8_t*>(bits.block())[place];
}

}  // namespace

PixelBuffer cBitFilter::BRIGHTNESS(int32_t Factor) {
    const Levels levels = makeLevels([=](int32_t i) { return clampToByte(i + Factor); });
    return filterPixels(OnFailure::raise, throughLevels(levels));
}

// Departs from the frame: the mean is taken in a pass of its own, which reports like a filter.
PixelBuffer cBitFilter::Contrast(int32_t Factor) {
    const auto ofRow = [](std::span<const Pixel> row) {
        int32_t sum = 0;
        for (const Pixel& p : row)
            sum += brightness(p);
        return sum;
    };
    // The sum is a 32-bit integer like all others and wraps on very large bright pictures.
    const int32_t sum =
        sumRows(int32_t{0}, ofRow, [this](int32_t y) { reportRow(y, OnFailure::skip); });
    raiseProgress(100);
    const int32_t count = BitsWidth() * BitsHeight();
    const int32_t mean = count == 0 ? 0 : quotient(sum, count);

    const float c = percentFactor(Factor);
    std::array<int32_t, 256> spread{};
    for (int32_t i = 0; i < 256; ++i)
        spread[static_cast<size_t>(i)] = roundToInteger((i - mean) * double{c} + mean);
    return filterPixels(OnFailure::skip, [&spread](const Pixel& p) {
        return spillIntoRange(spread[p.blue], spread[p.green], spread[p.red]);
    });
}

PixelBuffer cBitFilter::GammaCorrection(int32_t Factor) {
    const float c = percentFactor(Factor);
    const Levels levels = makeLevels([=](int32_t v) {
        return c <= 0 ? uint8_t{0} : toByte(std::pow(v / 255.0, 1.0 / double{c}) * 255.0);
    });
    return filterPixels(OnFailure::skip, throughLevels(levels));
}

PixelBuffer cBitFilter::Equalize() {
    const auto ofRow = [](std::span<const Pixel> row) {
        Histogram histogram;
        for (const Pixel& p : row)
            ++histogram.counts[toByte(0.113 * p.blue + 0.586 * p.green + 0.301 * p.red)];
        return histogram;
    };
    const int32_t med = medianLevel(sumRows(Histogram{}, ofRow), BitsWidth() * BitsHeight());
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
    return filterPixels(OnFailure::skip, throughLevels(levels));
}

PixelBuffer cBitFilter::SATURATION(int32_t Factor) {
    const auto c = static_cast<float>(Factor / 100.0);
    return filterPixels(OnFailure::skip, [c](const Pixel& p) {
        const int32_t level = brightness(p);
        const auto moved = [=](int32_t v) {
            return toByte(std::clamp(v + double{c} * (v - level), 0.0, 255.0));
        };
        return Pixel{moved(p.blue), moved(p.green), moved(p.red), 0};
    });
}

PixelBuffer cBitFilter::Invert() {
    const Levels levels = makeLevels([](int32_t v) { return clampToByte(255 - v); });
    return filterPixels(OnFailure::raise, throughLevels(levels));
}

PixelBuffer cBitFilter::GreyScale() {
    return filterPixels(OnFailure::skip, [](const Pixel& p) {
        return grey(toByte(0.071 * p.blue + 0.707 * p.green + 0.222 * p.red));
    });
}

PixelBuffer cBitFilter::Threshold(int32_t Factor) {
    return filterPixels(OnFailure::skip,
                        [=](const Pixel& p) { return grey(brightness(p) > Factor ? 255 : 0); });
}

PixelBuffer cBitFilter::Reduction(int32_t Factor) {
    const int32_t step = Factor + 1;
    if (step == 0) throw StatementFailed("levels have no step of 0");
    const Levels levels = makeLevels([=](int32_t i) {
        return clampToByte(roundToInteger(static_cast<double>(i) / step) * step);
    });
    return filterPixels(OnFailure::raise, throughLevels(levels));
}

PixelBuffer cBitFilter::KillChannel(bool rChannel, bool gChannel, bool bChannel) {
    return filterPixels(OnFailure::skip, [=](const Pixel& p) {
        return Pixel{bChannel ? uint8_t{0} : p.blue, gChannel ? uint8_t{0} : p.green,
                     rChannel ? uint8_t{0} : p.red, 0};
    });
}

PixelBuffer cBitFilter::ShiftRGB(int32_t rFactor, int32_t gFactor, int32_t bFactor) {
    const auto shifted = [](int32_t factor) {
        return makeLevels([=](int32_t i) { return clampToByte(i + factor); });
    };
    return filterPixels(OnFailure::skip,
                        throughLevels(shifted(bFactor), shifted(gFactor), shifted(rFactor)));
}

PixelBuffer cBitFilter::SwapRGB(int32_t rBank, int32_t gBank, int32_t bBank, bool rInv, bool gInv,
                                bool bInv, bool rKill, bool gKill, bool bKill) {
    const auto mixed = [this](const Pixel& p, int32_t bank, bool inv, bool kill) -> uint8_t {
        if (kill) return 0;
        const uint8_t v = byteOfBank(bits_, p, bank);
        return inv ? static_cast<uint8_t>(255 - v) : v;
    };
    return filterPixels(OnFailure::skip, [=](const Pixel& p) {
        return Pixel{mixed(p, bBank, bInv, bKill), mixed(p, gBank, gInv, gKill),
                     mixed(p, rBank, rInv, rKill), 0};
    });
}

PixelBuffer cBitFilter::SwapBanks(int32_t Modo) {
    return filterPixels(OnFailure::raise, [=](const Pixel& p) {
        switch (Modo) {
            case 1:
                return Pixel{p.green, p.red, p.blue, 0};
            case 2:
                return Pixel{p.red, p.blue, p.green, 0};
            case 3:
                return Pixel{p.green, p.blue, p.red, 0};
            case 4:
                return Pixel{p.red, p.green, p.blue, 0};
            case 5:
                return Pixel{p.blue, p.red, p.green, 0};
            default:
                return p;
        }
    });
}

}  // namespace tessarine
