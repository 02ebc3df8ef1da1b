#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "pixels/pixel_buffer.h"

// Loops over pixels that compilers turn into vector code. A pixel is taken as one number of 32 bits
// and its colours as three more, so that all lanes are of one width. What is called for a pixel has
// to be arithmetic without a branch: both sides of a choice are worked out, and a condition chooses
// one of two numbers.

namespace tessarine {

/// The colours of a pixel as numbers that may leave the range of a byte.
struct Colour {
    int32_t blue = 0;
    int32_t green = 0;
    int32_t red = 0;
};

inline int32_t sumOf(const Colour& c) { return c.blue + c.green + c.red; }
inline int32_t brightness(const Colour& c) { return sumOf(c) / 3; }

/// `change(level)` of each channel.
template <class Change>
[[gnu::always_inline]] inline Colour eachChannel(const Colour& c, Change change) {
    return {change(c.blue), change(c.green), change(c.red)};
}

/// The bits that both have.
inline Colour operator&(const Colour& a, const Colour& b) {
    return {a.blue & b.blue, a.green & b.green, a.red & b.red};
}

/// One of two colours.
[[gnu::always_inline]] inline Colour either(bool first, const Colour& a, const Colour& b) {
    return {first ? a.blue : b.blue, first ? a.green : b.green, first ? a.red : b.red};
}

/// A pixel as one number, as it lies in memory.
using PixelBits [[gnu::may_alias, gnu::aligned(1)]] = uint32_t;

/// By how much a pixel's number is shifted to the right for its byte `i`.
constexpr int shiftOf(int i) {
    return 8 * (std::endian::native == std::endian::little ? i : 3 - i);
}
constexpr uint32_t fourthBits = 255U << shiftOf(3);

inline Colour colourOfBits(uint32_t bits) {
    const auto byte = [=](int i) { return static_cast<int32_t>(bits >> shiftOf(i) & 255U); };
    return {byte(0), byte(1), byte(2)};
}

/// The number of a pixel of these colours, 0 to 255 each, without its fourth byte.
inline uint32_t bitsOfColour(const Colour& c) {
    return static_cast<uint32_t>(c.blue) << shiftOf(0) |
           static_cast<uint32_t>(c.green) << shiftOf(1) |
           static_cast<uint32_t>(c.red) << shiftOf(2);
}

/// What changes of colours give may be such a number already.
inline uint32_t bitsOfColour(uint32_t bits) { return bits; }

inline Colour channelsOf(const Pixel& p) { return {p.blue, p.green, p.red}; }

/// Each result pixel gets the colours `change(the source's colours)`, 0 to 255 each, and the
/// source's fourth byte. Works with a copy of `change`, out of the result's reach: large tables
/// are better held by reference.
template <class Change>
[[gnu::noinline]] void changeColours(const Pixel* source, Pixel* result, size_t count,
                                     const Change& change) {
    const Change own = change;
    const auto* __restrict from = reinterpret_cast<const PixelBits*>(source);
    auto* __restrict to = reinterpret_cast<PixelBits*>(result);
    for (size_t i = 0; i < count; ++i)
        to[i] = bitsOfColour(own(colourOfBits(from[i]))) | (from[i] & fourthBits);
}

/// The colours of each sum of a pixel's channels, as bitsOfColour() gives them.
using ColoursOfSums = std::array<uint32_t, 3 * 255 + 1>;

/// Each result pixel gets the colours of the sum of the source's, and the source's fourth byte.
void changeSums(const ColoursOfSums& colours, const Pixel* source, Pixel* result, size_t count);

/// The same by `join(the source's colours, numbers)`, where each pixel has numbers of its own, four
/// in a row with the last of no meaning.
template <class Join>
[[gnu::noinline]] void joinColours(const Pixel* source, const int16_t* __restrict numbers,
                                   Pixel* result, size_t count, const Join& join) {
    const Join own = join;
    const auto* __restrict from = reinterpret_cast<const PixelBits*>(source);
    auto* __restrict to = reinterpret_cast<PixelBits*>(result);
    for (size_t i = 0; i < count; ++i) {
        const Colour joined{numbers[4 * i], numbers[4 * i + 1], numbers[4 * i + 2]};
        to[i] = bitsOfColour(own(colourOfBits(from[i]), joined)) | (from[i] & fourthBits);
    }
}

/// Each result pixel gets the colours that `step` leads to from `start(the source's colours)`: it
/// is taken until all lie from 0 to 255, and has to leave alone those that do. Some pixels at a
/// time take as many steps as the one that needs most.
template <class Start, class Step>
[[gnu::noinline]] void settleColours(const Pixel* source, Pixel* result, size_t count,
                                     const Start& start, const Step& step) {
    constexpr size_t atOnce = 128;
    std::array<int32_t, atOnce> blue, green, red;
    const auto* __restrict from = reinterpret_cast<const PixelBits*>(source);
    auto* __restrict to = reinterpret_cast<PixelBits*>(result);
    const auto put = [&](size_t i, const Colour& c) __attribute__((always_inline)) {
        blue[i] = c.blue, green[i] = c.green, red[i] = c.red;
        return (c.blue | c.green | c.red) & ~255;
    };
    for (; count > 0; from += atOnce, to += atOnce) {
        const size_t some = std::min(count, atOnce);
        count -= some;
        int32_t outside = 0;
        for (size_t i = 0; i < some; ++i)
            outside |= put(i, start(colourOfBits(from[i])));
        while (outside != 0) {
            outside = 0;
            for (size_t i = 0; i < some; ++i)
                outside |= put(i, step(Colour{blue[i], green[i], red[i]}));
        }
        for (size_t i = 0; i < some; ++i)
            to[i] = bitsOfColour(Colour{blue[i], green[i], red[i]}) | (from[i] & fourthBits);
    }
}

/// Gives result pixels the bytes of `source` that `mask` has.
inline void takeBits(const Pixel* source, Pixel* result, size_t count, uint32_t mask) {
    const auto* __restrict from = reinterpret_cast<const PixelBits*>(source);
    auto* __restrict to = reinterpret_cast<PixelBits*>(result);
    for (size_t i = 0; i < count; ++i)
        to[i] = (to[i] & ~mask) | (from[i] & mask);
}

/// The same from the last pixel of the source to the first.
inline void takeMirrored(const Pixel* source, Pixel* result, size_t count, uint32_t mask) {
    const auto* __restrict from = reinterpret_cast<const PixelBits*>(source);
    auto* __restrict to = reinterpret_cast<PixelBits*>(result);
    for (size_t i = 0; i < count; ++i)
        to[i] = (to[i] & ~mask) | (from[count - 1 - i] & mask);
}

/// `of(the source's colours)` of each pixel.
template <class Number, class Of>
void numbersOf(const Pixel* source, Number* __restrict numbers, size_t count, const Of& of) {
    const auto* __restrict from = reinterpret_cast<const PixelBits*>(source);
    for (size_t i = 0; i < count; ++i)
        numbers[i] = static_cast<Number>(of(colourOfBits(from[i])));
}

/// Whether `concerns(the source's colours)` holds of any pixel.
template <class Concerns>
bool anyOf(const Pixel* source, size_t count, const Concerns& concerns) {
    const auto* from = reinterpret_cast<const PixelBits*>(source);
    int32_t any = 0;
    for (size_t i = 0; i < count; ++i)
        any |= concerns(colourOfBits(from[i])) ? 1 : 0;
    return any != 0;
}

/// The sum of `of(the source's colours)` over all pixels, which wraps at 32 bits.
template <class Of>
int32_t sumOver(const Pixel* source, size_t count, const Of& of) {
    const auto* from = reinterpret_cast<const PixelBits*>(source);
    int32_t sum = 0;
    for (size_t i = 0; i < count; ++i)
        sum += of(colourOfBits(from[i]));
    return sum;
}

}  // namespace tessarine
