#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "filters/colour.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Neighbourhood filters: each pixel from a window around it.

namespace tessarine {

namespace {

/// Brings the centre and the eight places around it together, two by two.
template <class Join>
[[gnu::always_inline]] inline uint8_t joinNine(const ChannelWindow& p, Join join) {
    return join(join(join(join(p(-1, -1), p(0, -1)), join(p(1, -1), p(-1, 0))),
                     join(join(p(0, 0), p(1, 0)), join(p(-1, 1), p(0, 1)))),
                p(1, 1));
}

// Of bytes, so that a vector holds as many as can be.
constexpr auto smaller = [](uint8_t a, uint8_t b) { return a < b ? a : b; };
constexpr auto larger = [](uint8_t a, uint8_t b) { return a > b ? a : b; };

/// The sum of the eight places around a centre.
template <class Places>
[[gnu::always_inline]] inline int32_t sumOfEight(const Places& p) {
    return p(-1, -1) + p(0, -1) + p(1, -1) + p(-1, 0) + p(1, 0) + p(-1, 1) + p(0, 1) + p(1, 1);
}

/// How far a centre stands out of its eight neighbours: 255 where it does not.
constexpr auto edgeAt = [](const ChannelWindow& p) {
    return static_cast<int16_t>(8 * p(0, 0) - sumOfEight(p) + 255);
};

/// A whole number as a number of 16 bits, where it fits.
bool fitsNarrow(int64_t value) { return value >= -32768 && value <= 32767; }

/// (a * centre - b * sum of the eight around it) \ divisor as a level, in numbers of 16 bits.
struct NarrowDifference {
    int16_t a;
    int16_t b;
    NarrowDivisor divisor;

    /// Whether no difference leaves 16 bits and the divisor is above 0.
    static bool holds(int32_t a, int32_t b, int32_t divisor) {
        const int64_t most = int64_t{a} * 255;
        const int64_t least = int64_t{b} * 8 * 255;
        return a >= 0 && b >= 0 && fitsNarrow(most) && fitsNarrow(-least) && divisor > 0 &&
               fitsNarrow(divisor);
    }
    uint8_t operator()(const ChannelWindow& p) const {
        const auto sum = static_cast<int16_t>(sumOfEight(p));
        const auto difference = static_cast<int16_t>(a * p(0, 0) - b * sum);
        const auto notBelow = static_cast<uint16_t>(difference > 0 ? difference : 0);
        const uint16_t quotient = divisor.quotient(notBelow);
        return static_cast<uint8_t>(quotient < 255 ? quotient : 255);
    }
};

/// The nine places around a middle. Numbers no wider than they must be: so more of them are
/// worked on at once.
struct Sector {
    uint8_t mean;
    uint16_t spread;  ///< the sum of the distances from the mean
};

[[gnu::always_inline]] inline Sector sectorAt(const ChannelWindow& p, int32_t x, int32_t y) {
    const auto a = static_cast<uint8_t>(p(x - 1, y - 1));
    const auto b = static_cast<uint8_t>(p(x, y - 1));
    const auto c = static_cast<uint8_t>(p(x + 1, y - 1));
    const auto d = static_cast<uint8_t>(p(x - 1, y));
    const auto e = static_cast<uint8_t>(p(x, y));
    const auto f = static_cast<uint8_t>(p(x + 1, y));
    const auto g = static_cast<uint8_t>(p(x - 1, y + 1));
    const auto h = static_cast<uint8_t>(p(x, y + 1));
    const auto i = static_cast<uint8_t>(p(x + 1, y + 1));
    const auto sum = static_cast<uint16_t>(a + b + c + d + e + f + g + h + i);
    const auto mean = static_cast<uint8_t>(sum / 9);
    const auto distance = [mean](uint8_t v) __attribute__((always_inline)) {
        const uint8_t high = v > mean ? v : mean;
        const uint8_t low = v < mean ? v : mean;
        return static_cast<uint8_t>(high - low);
    };
    return {mean, static_cast<uint16_t>(distance(a) + distance(b) + distance(c) + distance(d) +
                                        distance(e) + distance(f) + distance(g) + distance(h) +
                                        distance(i))};
}

/// The calmer of two sectors, the first on a tie.
[[gnu::always_inline]] inline Sector calmer(const Sector& a, const Sector& b) {
    return {b.spread < a.spread ? b.mean : a.mean, b.spread < a.spread ? b.spread : a.spread};
}

/// The calmest of the sectors to the upper left, the upper right and the lower left of a centre,
/// which they all contain.
[[gnu::always_inline]] inline Sector calmestOfThree(const ChannelWindow& p) {
    return calmer(calmer(sectorAt(p, -1, -1), sectorAt(p, 1, -1)), sectorAt(p, -1, 1));
}

/// A mask of 3 or 5 a side and the same terms for all channels, in numbers of 16 bits.
template <size_t side>
class SmallMask {
  public:
    static constexpr auto reach = static_cast<int32_t>(side / 2);

    explicit SmallMask(const tFilterKernel& kernel)
        : divisor_(std::abs(kernel.Weight)), addend_(static_cast<int16_t>(kernel.bFactor)) {
        // Quotients are truncated, so that a negative divisor is one of negative weights.
        const int32_t sign = kernel.Weight < 0 ? -1 : 1;
        for (size_t i = 0; i < weights_.size(); ++i)
            weights_[i] =
                static_cast<int16_t>(sign * kernel.mskBits.at(static_cast<int32_t>(i / side),
                                                              static_cast<int32_t>(i % side)));
    }

    /// Whether the channels are alike and no number on the way to a level leaves 16 bits.
    static bool holds(const tFilterKernel& kernel) {
        const KernelMask& mask = kernel.mskBits;
        if (mask.side() != static_cast<int32_t>(side) || kernel.rFactor != kernel.gFactor ||
            kernel.gFactor != kernel.bFactor || std::abs(int64_t{kernel.bFactor}) > mostAddend ||
            kernel.Weight == 0 || std::abs(int64_t{kernel.Weight}) > 32767)
            return false;
        int64_t largest = 0;
        for (int32_t row = 0; row < mask.side(); ++row)
            for (int32_t column = 0; column < mask.side(); ++column)
                largest += 255 * std::abs(int64_t{mask.at(row, column)});
        return largest <= 32767;
    }

    uint8_t operator()(const ChannelWindow& p) const {
        return at(p, std::make_index_sequence<side * side>());
    }

  private:
    /// Larger quotients give the same levels, whatever is added.
    static constexpr int16_t mostQuotient = 16383;
    static constexpr int16_t mostAddend = mostQuotient - 255;

    template <size_t... i>
    [[gnu::always_inline]] uint8_t at(const ChannelWindow& p, std::index_sequence<i...>) const {
        int16_t sum = 0;
        ((sum =
              static_cast<int16_t>(sum + weights_[i] * p(static_cast<int32_t>(i % side) - reach,
                                                         static_cast<int32_t>(i / side) - reach))),
         ...);
        const auto opposite = static_cast<int16_t>(-sum);
        const auto size = static_cast<uint16_t>(sum < 0 ? opposite : sum);
        const auto quotient = static_cast<int16_t>(divisor_.quotient(size));
        const int16_t most = quotient < mostQuotient ? quotient : mostQuotient;
        const auto negative = static_cast<int16_t>(-most);
        const auto level = static_cast<int16_t>((sum < 0 ? negative : most) + addend_);
        const int16_t notBelow = level > 0 ? level : int16_t{0};
        return static_cast<uint8_t>(notBelow < 255 ? notBelow : 255);
    }

    std::array<int16_t, side * side> weights_{};
    NarrowDivisor divisor_;
    int16_t addend_;
};

}  // namespace

// Departs from the frame: the rows are reported by the windows' upper left corners.
PixelBuffer cBitFilter::MaskFilter(const KernelMask& mskBits, int32_t Weight, int32_t rFactor,
                                   int32_t gFactor, int32_t bFactor, bool KeepMargins) {
    if (mskBits.side() == 0) throw StatementFailed("a mask without weights has no bounds");
    if (mskBits.side() > largestMask) throw StatementFailed("a mask larger than any kernel");
    const int32_t n = mskBits.side() - 1;
    const int32_t h = n / 2;
    Walk walk = regionBox(0);
    walk.reportShift = -h;
    if (KeepMargins) {
        const Rect& box = walk.scan;
        walk.scan = {std::max(box.left, h), std::max(box.top, h),
                     std::min(box.right, maxX_ - n + h + 1),
                     std::min(box.bottom, maxY_ - n + h + 1)};
    }
    return convolve(walk, {mskBits, Weight, rFactor, gFactor, bFactor});
}

PixelBuffer cBitFilter::convolve(const Walk& walk, const tFilterKernel& kernel) {
    // The common masks: narrow sums, of which many are worked on at once.
    const auto filter = [&](auto small) {
        return filterChannels(OnFailure::raise, walk, Stencil{small.reach}, Channels::blueGreenRed,
                              small);
    };
    if (SmallMask<3>::holds(kernel)) return filter(SmallMask<3>(kernel));
    if (SmallMask<5>::holds(kernel)) return filter(SmallMask<5>(kernel));
    // A side of even length has its centre up and left of the middle, so that the mask goes out
    // farther to the right and down: as far as the window has to reach.
    const int32_t n = kernel.mskBits.side() - 1;
    const int32_t h = n / 2;
    return filterWindows(OnFailure::raise, walk, Stencil{n - h}, [&](const Window& w, Pixel& p) {
        Colour sum{};
        for (int32_t j = 0; j <= n; ++j)
            for (int32_t i = 0; i <= n; ++i) {
                const Pixel& place = w.at(i - h, j - h);
                const int32_t weight = kernel.mskBits.at(j, i);
                sum.blue += place.blue * weight;
                sum.green += place.green * weight;
                sum.red += place.red * weight;
            }
        const auto level = [&](int32_t channelSum, int32_t factor) {
            return clampToByte(quotient(channelSum, kernel.Weight) + factor);
        };
        takeColours(p, {level(sum.blue, kernel.bFactor), level(sum.green, kernel.gFactor),
                        level(sum.red, kernel.rFactor), 0});
    });
}

PixelBuffer cBitFilter::Blurs(int32_t Factor) {
    return filterChannels(
        OnFailure::raise, regionBox(0), Stencil{1, Factor}, Channels::blueGreenRed,
        [](const ChannelWindow& p) { return static_cast<uint8_t>(sumOfEight(p) / 8); });
}

PixelBuffer cBitFilter::SOFTEN(int32_t Factor) {
    const auto filter = [this](auto change) {
        return filterChannels(OnFailure::skip, regionBox(1), Stencil{}, Channels::blueGreenRed,
                              change);
    };
    const int32_t w = 101 - Factor;
    const int32_t divisor = w + 4;
    // Without a divisor each pixel gets the value of the one before, from 0 on.
    if (divisor == 0) return filter([](const ChannelWindow&) { return uint8_t{0}; });
    // A mean of levels, with sums of 16 bits.
    if (w >= 0 && divisor <= 128)
        return filter([weight = static_cast<int16_t>(w),
                       narrow = NarrowDivisor(divisor)](const ChannelWindow& p) {
            const auto sum = static_cast<int16_t>(p(-1, 0) + p(0, -1) + p(0, 1) + p(1, 0));
            return static_cast<uint8_t>(
                narrow.quotient(static_cast<uint16_t>(weight * p(0, 0) + sum)));
        });
    return filter([=](const ChannelWindow& p) {
        const int32_t sum = w * p(0, 0) + p(-1, 0) + p(0, -1) + p(0, 1) + p(1, 0);
        return lowByte(quotientInLoop(sum, divisor));
    });
}

PixelBuffer cBitFilter::setOff(const Walk& walk, int32_t a, int32_t b, int32_t divisor) {
    const auto filter = [&](auto change) {
        return filterChannels(OnFailure::skip, walk, Stencil{}, Channels::blueGreenRed, change);
    };
    // Without a divisor the sum of the neighbours stands as it is.
    if (divisor == 0)
        return filter([](const ChannelWindow& p) { return clampToByte(sumOfEight(p)); });
    if (NarrowDifference::holds(a, b, divisor))
        return filter(NarrowDifference{static_cast<int16_t>(a), static_cast<int16_t>(b),
                                       NarrowDivisor(divisor)});
    return filter([=](const ChannelWindow& p) {
        return clampToByte(quotientInLoop(a * p(0, 0) - b * sumOfEight(p), divisor));
    });
}

PixelBuffer cBitFilter::SHARPEN(int32_t Factor) {
    return setOff(regionBox(1), 124 - Factor, 2, 108 - Factor);
}

PixelBuffer cBitFilter::EDGEENHANCE(int32_t Factor) {
    return setOff(regionBox(0), Factor + 9, 1, Factor + 1);
}

PixelBuffer cBitFilter::CONTOUR(int32_t Factor, int32_t BackColor) {
    const Colour back = channelsOf(colourOf(BackColor));
    // The lowest sum whose third reaches the factor.
    const int32_t flat = 3 * std::clamp(Factor, 0, 256);
    return filterJoined(OnFailure::raise, regionBox(0), Stencil{}, edgeAt,
                        [=](const Colour&, const Colour& edges) {
                            const Colour edge = eachChannel(edges, clampToLevel);
                            return either(sumOf(edge) >= flat, back, edge);
                        });
}

PixelBuffer cBitFilter::SKETCH(int32_t Factor, bool BW, int32_t BackColor) {
    const Colour back = BW ? Colour{255, 255, 255} : channelsOf(colourOf(BackColor));
    const Colour kept = BW ? Colour{} : Colour{255, 255, 255};
    return filterJoined(OnFailure::skip, regionBox(0), Stencil{}, edgeAt,
                        [=](const Colour& c, const Colour& edges) {
                            return either(brightness(edges) > Factor, back, c & kept);
                        });
}

// Departs from the frame in the last column and row, which repeat what has been written beside
// and above them: once all others are there, in whatever order, and thus after the report of the
// end, which these few pixels do not put off.
PixelBuffer cBitFilter::plate(float slope) {
    const double k = slope;
    const auto difference = [](const ChannelWindow& p) {
        return static_cast<int16_t>(p(0, 0) - p(1, 1));
    };
    const auto filter = [&](auto round) {
        return filterJoined(OnFailure::skip, regionBox(0), Stencil{}, difference,
                            [=](const Colour&, const Colour& differences) {
                                const Colour heights = eachChannel(differences, [=](int32_t d) {
                                    return round(std::fabs(d * k + 128));
                                });
                                const int32_t mean = clampToLevel(sumOf(heights) / 3);
                                return Colour{mean, mean, mean};
                            });
    };
    // Up to there no height comes near the end of 32 bits.
    PixelBuffer result = std::fabs(k) <= 1e6
                             ? filter([](double height) { return roundFitting(height); })
                             : filter([](double height) { return roundToInteger(height); });
    const auto repeat = [](ptrdiff_t distance) {
        return [distance](const RowRun& run) {
            for (Pixel& p : run.result)
                takeColours(p, *(&p - distance));
        };
    };
    const int32_t outside = PixelBuffer::margin;
    const Rect whole = {-outside, -outside, maxX_ + 1 + outside, maxY_ + 1 + outside};
    // The column comes last: its pixel in the last row repeats one that the row has repeated.
    if (!result.isDimensioned()) return result;
    Pixel* block = result.writableBlock();
    paintRuns(block, {whole.left, maxY_, whole.right, maxY_ + 1}, repeat(result.stride()));
    paintRuns(block, {maxX_, whole.top, maxX_ + 1, whole.bottom}, repeat(1));
    return result;
}

PixelBuffer cBitFilter::EMBOSS(int32_t Factor) { return plate(single(Factor / 10.0)); }

PixelBuffer cBitFilter::Engrave(int32_t Factor) { return plate(-single(Factor / 10.0)); }

PixelBuffer cBitFilter::RELIEF() {
    return filterChannels(OnFailure::skip, regionBox(0), Stencil{}, Channels::greenRedFourth,
                          [](const ChannelWindow& p) {
                              const int32_t e = 2 * p(-1, -1) + p(-1, 0) + p(0, -1) - p(0, 1) -
                                                p(1, 0) - 2 * p(1, 1);
                              return clampToByte((p(0, 0) + e) / 2 + 50);
                          });
}

PixelBuffer cBitFilter::DILATE() {
    return filterChannels(OnFailure::skip, regionBox(0), Stencil{}, Channels::blueGreenRed,
                          [](const ChannelWindow& p) { return joinNine(p, larger); });
}

PixelBuffer cBitFilter::ERODE() {
    return filterChannels(OnFailure::skip, regionBox(0), Stencil{}, Channels::blueGreenRed,
                          [](const ChannelWindow& p) { return joinNine(p, smaller); });
}

template <class OverFive>
PixelBuffer cBitFilter::rankFilter(int32_t fltType, OverFive overFive) {
    const auto filter = [&](auto rank) {
        return filterChannels(OnFailure::raise, regionBox(1 - fltType), Stencil{},
                              Channels::blueGreenRed, rank);
    };
    switch (fltType) {
        case 0:
            return filter(
                [=](const ChannelWindow& p) { return static_cast<uint8_t>(overFive(p, smaller)); });
        case 1:
            return filter(
                [=](const ChannelWindow& p) { return static_cast<uint8_t>(overFive(p, larger)); });
        default:
            return filter([](const ChannelWindow&) { return uint8_t{0}; });
    }
}

PixelBuffer cBitFilter::RankFilterN4(int32_t fltType) {
    return rankFilter(fltType, [](const ChannelWindow& p, auto join) {
        return join(p(0, 0), join(join(p(0, -1), p(-1, 0)), join(p(1, 0), p(0, 1))));
    });
}

PixelBuffer cBitFilter::RankFilterND(int32_t fltType) {
    return rankFilter(fltType, [](const ChannelWindow& p, auto join) {
        return join(p(0, 0), join(join(p(-1, -1), p(1, -1)), join(p(-1, 1), p(1, 1))));
    });
}

PixelBuffer cBitFilter::PAINTING() {
    return filterChannels(
        OnFailure::skip, regionBox(0), Stencil{2}, Channels::blueGreenRed,
        [](const ChannelWindow& p) { return static_cast<uint8_t>(calmestOfThree(p).mean); });
}

PixelBuffer cBitFilter::Dissolve() {
    return filterChannels(OnFailure::skip, regionBox(0), Stencil{2}, Channels::blueGreenRed,
                          [](const ChannelWindow& p) {
                              const Sector calmest = calmer(calmestOfThree(p), sectorAt(p, 1, 1));
                              return static_cast<uint8_t>(calmest.mean);
                          });
}

}  // namespace tessarine
