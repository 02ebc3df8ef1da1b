#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "pixels/sources.h"
#include "pixels/words.h"

// Bilinear interpolation in whole numbers, many pixels at once. The fractions of places are
// singles; those of places from 1 on count in 23rd powers of a half at the finest, and by such a
// fraction doubles lose nothing: whole numbers give the very same.

namespace tessarine {

/// What a fraction of 1 counts.
constexpr int32_t wholeFraction = 1 << 23;

/// A fraction from 0 to 1 in whole parts; sure where it counts that many exactly.
struct Fraction {
    int32_t parts = 0;
    int32_t isSure = 0;  ///< 1 or 0; a bool in memory keeps loops from becoming vector code
};
inline Fraction fractionOf(float fraction) {
    const float scaled = fraction * static_cast<float>(wholeFraction);  // exact, a power of 2
    const auto parts = static_cast<int32_t>(scaled);
    return {parts, static_cast<float>(parts) == scaled ? 1 : 0};
}

/// The four pixels around the place of each pixel of a stretch, and how far the place goes on
/// towards the right and the lower ones.
struct Corners {
    OfStretch<uint32_t> upperLeft;
    OfStretch<uint32_t> upperRight;
    OfStretch<uint32_t> lowerLeft;
    OfStretch<uint32_t> lowerRight;
    OfStretch<int32_t> across;
    OfStretch<int32_t> down;

    /// Takes the pixel at `place` and its neighbours right, below and right below, for pixel i.
    void take(int32_t i, const Word* place, ptrdiff_t stride) {
        const auto k = static_cast<size_t>(i);
        upperLeft[k] = place[0];
        upperRight[k] = place[1];
        lowerLeft[k] = place[stride];
        lowerRight[k] = place[stride + 1];
    }
};

/// Mixes the colours of two rows of pixels: `down` parts of the way from the upper to the lower
/// one, rounded, ties to even. The fourth bytes are 0.
void mixRows(const Word* upper, const Word* lower, int32_t count, int32_t down,
             Word* __restrict mixed);

/// The same of the first `count` pixels and their right neighbours, each with parts of its own.
void mixNeighbours(const OfStretch<uint32_t>& left, const OfStretch<uint32_t>& right,
                   const OfStretch<int32_t>& across, int32_t count, Word* __restrict mixed);

/// Mixes the colours of the first `count` pixels' corners: left and right ones each first, rounded,
/// ties to even. The fourth bytes are 0.
void mixCorners(const Corners& corners, int32_t count, Word* __restrict mixed);

/// A place between pixels.
struct SinglePoint {
    float x = 0;
    float y = 0;
};

/// The image at a place in it, by floats: left and right pixels are mixed each first and rounded,
/// ties to even.
Pixel mixedAt(const PixelBuffer& bits, const SinglePoint& place);

/// The colours of a stretch are mixed in whole numbers, and by floats where a fraction is too fine.
template <class RowOf>
PixelBuffer cBitFilter::filterMixed(RowOf rowOf) {
    const auto stride = static_cast<int32_t>(bits_.stride());
    // Places are counted in 32 bits.
    const int32_t countable = bits_.pixelCount() <= size_t{std::numeric_limits<int32_t>::max()};
    const auto width = static_cast<float>(fullRect_.right);
    const auto height = static_cast<float>(fullRect_.bottom);
    const auto work = [&](Pixel* result, int32_t left, int32_t y, int32_t count) {
        const auto pointOf = rowOf(left, y);
        Corners corners;
        OfStretch<int32_t> places;
        OfStretch<uint32_t> inside;
        OfStretch<int32_t> sure;
        OfStretch<uint32_t> mixed;
        Word anyInside = 0;
        int32_t allSure = 1;
        for (int32_t i = 0; i < count; ++i) {
            const auto k = static_cast<size_t>(i);
            const SinglePoint at = pointOf(left + i);
            const bool isInside = (at.x >= 0) & (at.y >= 0) & (at.x < width) & (at.y < height);
            const float x = isInside ? at.x : 0.0F;
            const float y0 = isInside ? at.y : 0.0F;
            // The floor is the integer part of what is not negative.
            const auto column = static_cast<int32_t>(x);
            const auto row = static_cast<int32_t>(y0);
            const Fraction across = fractionOf(x - static_cast<float>(column));
            const Fraction down = fractionOf(y0 - static_cast<float>(row));
            corners.across[k] = across.parts;
            corners.down[k] = down.parts;
            places[k] = row * stride + column;
            inside[k] = isInside ? coloursOfWord : 0;
            sure[k] = across.isSure & down.isSure & countable;
            anyInside |= inside[k];
            allSure &= sure[k];
        }
        Word* __restrict words = wordsOf(result);
        if (anyInside == 0) {
            for (int32_t i = 0; i < count; ++i)
                words[i] &= ~coloursOfWord;
            return;
        }
        if (countable != 0) {
            const Word* origin = wordsOf(bits_.row(0));
            for (int32_t i = 0; i < count; ++i) {
                fetchAhead(origin + stride, places, i, count);
                corners.take(i, origin + places[static_cast<size_t>(i)], stride);
            }
            mixCorners(corners, count, mixed.data());
        }
        for (int32_t i = 0; i < count; ++i) {
            const auto k = static_cast<size_t>(i);
            words[i] = (mixed[k] & inside[k]) | (words[i] & ~coloursOfWord);
        }
        for (int32_t i = 0; allSure == 0 && i < count; ++i) {
            const auto k = static_cast<size_t>(i);
            if (sure[k] == 0 && inside[k] != 0)
                takeColours(result[i], mixedAt(bits_, pointOf(left + i)));
        }
    };
    return filterStretches(OnFailure::skip, work);
}

}  // namespace tessarine
