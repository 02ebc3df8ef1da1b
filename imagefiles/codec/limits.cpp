#include "imagefiles/codec/limits.h"

#include <algorithm>

#include "pixels/machine.h"

namespace tessarine {

namespace {

constexpr uint64_t mebi = uint64_t{1} << 20;
constexpr uint64_t gibi = uint64_t{1} << 30;

}  // namespace

Limits limitsFor(uint64_t pixels, const LimitWishes& wishes) {
    constexpr uint64_t mostPixels = uint64_t{1} << 40;
    pixels = std::min(pixels, mostPixels);
    Limits limits;
    limits.seconds = wishes.seconds.value_or(10 + static_cast<double>(pixels) / 1e6);
    limits.memoryBytes = std::min(512 * mebi + 64 * pixels, memoryCeiling(wishes));
    return limits;
}

uint64_t memoryCeiling(const LimitWishes& wishes) {
    if (wishes.memoryBytes) return *wishes.memoryBytes;
    static const uint64_t ours = std::clamp(wholeMemory() / 2, gibi, 8 * gibi);
    return ours;
}

}  // namespace tessarine
