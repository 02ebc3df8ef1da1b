#include "pixels/point_loops.h"

namespace tessarine {

namespace {

/// Looks the sums of pixels up. Not as vector code: on many processors the instruction that reads
/// from several places is slower than reading one after the other.
__attribute__((noinline, optimize("no-tree-vectorize"))) void takeColours(
    const ColoursOfSums& colours, const uint16_t* sums, const PixelBits* from,
    PixelBits* __restrict to, size_t count) {
    for (size_t i = 0; i < count; ++i)
        to[i] = colours[sums[i]] | (from[i] & fourthBits);
}

}  // namespace

void changeSums(const ColoursOfSums& colours, const Pixel* source, Pixel* result, size_t count) {
    constexpr size_t atOnce = 512;
    std::array<uint16_t, atOnce> sums;
    for (; count > 0; source += atOnce, result += atOnce) {
        const size_t some = std::min(count, atOnce);
        count -= some;
        numbersOf(source, sums.data(), some, [](const Colour& c) { return sumOf(c); });
        takeColours(colours, sums.data(), reinterpret_cast<const PixelBits*>(source),
                    reinterpret_cast<PixelBits*>(result), some);
    }
}

}  // namespace tessarine
