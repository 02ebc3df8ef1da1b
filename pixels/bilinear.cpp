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

void mixCorners(const Corners& corners, int32_t count, Word* __restrict mixed) {
    for (int32_t i = 0; i < count; ++i) {
        const auto k = static_cast<size_t>(i);
        Word word = 0;
#pragma GCC unroll 3
        for (const int32_t shift : {blueShift, greenShift, redShift}) {
            const int32_t left = blend(channelOf(corners.upperLeft[k], shift),
                                       channelOf(corners.lowerLeft[k], shift), corners.down[k]);
            const int32_t right = blend(channelOf(corners.upperRight[k], shift),
                                        channelOf(corners.lowerRight[k], shift), corners.down[k]);
            word |= static_cast<Word>(blend(left, right, corners.across[k])) << shift;
        }
        mixed[i] = word;
    }
}

}  // namespace tessarine
