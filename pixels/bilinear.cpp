#include "pixels/bilinear.h"

#include "pixels/numbers.h"

namespace tessarine {

namespace {

/// (1 - fraction) * first + fraction * second as a whole number, ties to even.
int32_t blend(int32_t first, int32_t second, int32_t fraction) {
    // At most 255 * 2^23, so that half a unit more fits as well.
    const int32_t exact = first * wholeFraction + fraction * (second - first);
    const int32_t isOdd = exact >> 23 & 1;
    return (exact + wholeFraction / 2 - 1 + isOdd) >> 23;
}

int32_t channelOf(Word word, int32_t shift) { return static_cast<int32_t>(word >> shift & 255); }

/// The three colours of two pixels, blended.
[[gnu::always_inline]] inline Word blendWords(Word first, Word second, int32_t fraction) {
    const auto blended = [=](int32_t shift) {
        return static_cast<Word>(blend(channelOf(first, shift), channelOf(second, shift), fraction))
               << shift;
    };
    return blended(blueShift) | blended(greenShift) | blended(redShift);
}

}  // namespace

Pixel mixedAt(const PixelBuffer& bits, const SinglePoint& place) {
    const auto x = static_cast<int32_t>(place.x);
    const auto y = static_cast<int32_t>(place.y);
    const double across = place.x - static_cast<float>(x);
    const double down = place.y - static_cast<float>(y);
    const Pixel* above = &bits.at(x, y);
    const Pixel* below = above + bits.stride();
    const auto mixed = [=](uint8_t Pixel::*channel) {
        const int32_t left =
            roundToInteger((1 - down) * above[0].*channel + down * below[0].*channel);
        const int32_t right =
            roundToInteger((1 - down) * above[1].*channel + down * below[1].*channel);
        return clampToByte(roundToInteger(left * (1 - across) + right * across));
    };
    return {mixed(&Pixel::blue), mixed(&Pixel::green), mixed(&Pixel::red), 0};
}

void mixRows(const Word* upper, const Word* lower, int32_t count, int32_t down,
             Word* __restrict mixed) {
    for (int32_t i = 0; i < count; ++i)
        mixed[i] = blendWords(upper[i], lower[i], down);
}

void mixNeighbours(const OfStretch<uint32_t>& left, const OfStretch<uint32_t>& right,
                   const OfStretch<int32_t>& across, int32_t count, Word* __restrict mixed) {
    for (int32_t i = 0; i < count; ++i) {
        const auto k = static_cast<size_t>(i);
        mixed[i] = blendWords(left[k], right[k], across[k]);
    }
}

void mixCorners(const Corners& corners, int32_t count, Word* __restrict mixed) {
    for (int32_t i = 0; i < count; ++i) {
        const auto k = static_cast<size_t>(i);
        const Word left = blendWords(corners.upperLeft[k], corners.lowerLeft[k], corners.down[k]);
        const Word right =
            blendWords(corners.upperRight[k], corners.lowerRight[k], corners.down[k]);
        mixed[i] = blendWords(left, right, corners.across[k]);
    }
}

}  // namespace tessarine
