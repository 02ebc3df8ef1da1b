#include "arithmetic.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace floor_program {

namespace {

/// Pixels that are looked at together: a few vectors of them.
constexpr int stretch = 64;

int16_t narrow(int value) { return static_cast<int16_t>(value); }

/// value * factor / 2^15, rounded: one instruction on vectors of such numbers.
int16_t share(int16_t value, int16_t factor) { return narrow((value * factor + 16384) >> 15); }

struct Planes {
    alignas(64) int16_t blue[stretch];
    alignas(64) int16_t green[stretch];
    alignas(64) int16_t red[stretch];
};

/// What one channel lacks or has too much goes half to each of the others.
[[gnu::always_inline]] inline void spill(int16_t& from, int16_t& first, int16_t& second) {
    const auto missing = std::min<int16_t>(from, 0);
    const auto excess = std::max<int16_t>(narrow(from - 255), 0);
    const int16_t moved = narrow(missing + excess);
    // Halves go towards zero.
    const int16_t half = narrow(narrow(moved - (moved >> 15)) >> 1);
    first = narrow(first + half);
    second = narrow(second + half);
    from = narrow(from - moved);
}

/// One round for a stretch. \return whether any channel is still out of range.
bool spillAll(Planes& planes) {
    int16_t outside = 0;
    for (int i = 0; i < stretch; ++i) {
        int16_t b = planes.blue[i], g = planes.green[i], r = planes.red[i];
        const int16_t largest = std::max(b, std::max(g, r));
        const int16_t smallest = std::min(b, std::min(g, r));
        const int16_t dark = largest <= 0 ? 0 : -1;
        const int16_t light = smallest >= 255 ? 255 : 0;
        b = light != 0 ? light : narrow(b & dark);
        g = light != 0 ? light : narrow(g & dark);
        r = light != 0 ? light : narrow(r & dark);
        spill(b, g, r);
        spill(g, b, r);
        spill(r, g, b);
        outside = narrow(outside | ((b | g | r) & ~255));
        planes.blue[i] = b;
        planes.green[i] = g;
        planes.red[i] = r;
    }
    return outside != 0;
}

// Pixels, and pairs of channels, as numbers.
using Word [[gnu::may_alias]] = uint32_t;
using Half [[gnu::may_alias]] = uint16_t;

}  // namespace

int brighten(View picture, uint8_t level) {
    const auto limit = static_cast<uint8_t>(255 - level);
    int64_t sum = 0;
    for (int y = 0; y < picture.height; ++y) {
        uint8_t* row = picture.row(y);
        for (size_t i = 0; i < picture.rowBytes(); ++i)
            row[i] = static_cast<uint8_t>(std::min(row[i], limit) + level);
        const auto* words = reinterpret_cast<const Word*>(row);
        uint32_t ofRow = 0;
        for (int x = 0; x < picture.width; ++x) {
            const uint32_t w = words[x];
            // Times 21846 / 65536 is divided by 3 for all sums that there are.
            ofRow += ((w & 255) + (w >> 8 & 255) + (w >> 16 & 255)) * 21846 >> 16;
        }
        sum += ofRow;
    }
    return static_cast<int>(sum / (int64_t{picture.width} * picture.height));
}

Contrast::Contrast(int percent, int mean)
    : mean_(mean), factor_(narrow(static_cast<int>(std::lround((percent + 100) * 163.84)))) {}

int16_t Contrast::spread(int level) const {
    return narrow(share(narrow((level - mean_) * 2), factor_) + mean_);
}

void Contrast::operator()(uint8_t* row, int width) const {
    constexpr int halves = 2 * stretch;
    static constexpr auto colours = [] {
        std::array<int16_t, halves> mask{};
        for (size_t i = 0; i < mask.size(); i += 2)
            mask[i] = -1;
        return mask;
    }();
    int from = 0;
    for (; from + stretch <= width; from += stretch) {
        uint8_t* pixels = row + 4 * static_cast<size_t>(from);
        auto* pairs = reinterpret_cast<Half*>(pixels);
        alignas(64) std::array<uint16_t, halves> results;
        int16_t outside = 0;
        for (size_t i = 0; i < halves; ++i) {
            const int16_t lower = spread(pairs[i] & 255);
            const int16_t upper = spread(pairs[i] >> 8);
            // The upper byte of every other pair is the one that nobody looks at.
            outside = narrow(outside | lower | (upper & colours[i]));
            results[i] = static_cast<uint16_t>((lower & 255) | upper << 8);
        }
        if ((outside & ~255) != 0)
            spillOver(pixels, stretch);
        else
            std::copy(results.begin(), results.end(), pairs);
    }
    if (from < width) spillOver(row + 4 * static_cast<size_t>(from), width - from);
}

void Contrast::spillOver(uint8_t* pixels, int count) const {
    Planes planes{};
    auto* words = reinterpret_cast<Word*>(pixels);
    for (int i = 0; i < count; ++i) {
        const uint32_t w = words[i];
        planes.blue[i] = spread(static_cast<int>(w & 255));
        planes.green[i] = spread(static_cast<int>(w >> 8 & 255));
        planes.red[i] = spread(static_cast<int>(w >> 16 & 255));
    }
    while (spillAll(planes)) {
    }
    for (int i = 0; i < count; ++i)
        words[i] =
            static_cast<uint32_t>(planes.blue[i] | planes.green[i] << 8 | planes.red[i] << 16);
}

Sharpen::Sharpen(int level) : centre_(narrow(124 - level)), shift_(0) {
    const int divisor = 108 - level;
    while (divisor >> (shift_ + 1) != 0)
        ++shift_;
    // Exact for all sums that there are: they stay below 2^15.
    const int dividend = 1 << (16 + shift_);
    inverse_ = static_cast<uint16_t>((dividend + divisor - 1) / divisor);
}

void Sharpen::operator()(const uint8_t* above, const uint8_t* row, const uint8_t* below,
                         uint8_t* result, int width) {
    const size_t bytes = static_cast<size_t>(width) * 4;
    columns_.resize(bytes);
    uint16_t* columns = columns_.data();
    for (size_t i = 0; i < bytes; ++i)
        columns[i] = static_cast<uint16_t>(above[i] + row[i] + below[i]);
    const auto centre = narrow(centre_ + 2);
    const uint16_t inverse = inverse_;
    const int shift = shift_;
    std::copy_n(row, 4, result);
    for (size_t i = 4; i < bytes - 4; ++i) {
        const auto nine = static_cast<int16_t>(columns[i - 4] + columns[i] + columns[i + 4]);
        const auto sum = std::max<int16_t>(narrow(centre * row[i] - 2 * nine), 0);
        const auto quotient = static_cast<uint16_t>(
            static_cast<uint32_t>(static_cast<uint16_t>(sum)) * inverse >> 16);
        result[i] = static_cast<uint8_t>(std::min<uint16_t>(quotient >> shift, 255));
    }
    std::copy_n(row + bytes - 4, 4, result + bytes - 4);
}

void Resize::fill(std::vector<Origin>& origins, int from, int to) {
    origins.clear();
    const double scale = (from - 1.0) / to;
    for (int i = 0; i < to; ++i) {
        const double place = std::floor(i * scale);
        const double fraction = (i * scale - place) * 32768;
        origins.push_back({static_cast<int32_t>(place),
                           static_cast<int16_t>(std::min(std::lround(fraction), 32767L))});
    }
}

void Resize::operator()(View source, View result) {
    fill(columns_, source.width, result.width);
    fill(rows_, source.height, result.height);
    blended_.resize(source.rowBytes());
    const auto blend = [](uint8_t first, uint8_t second, int16_t fraction) {
        return static_cast<uint8_t>(first + share(narrow(second - first), fraction));
    };
    for (int y = 0; y < result.height; ++y) {
        const Origin across = rows_[static_cast<size_t>(y)];
        const uint8_t* upper = source.row(across.place);
        const uint8_t* lower = source.row(std::min(across.place + 1, source.height - 1));
        uint8_t* between = blended_.data();
        for (size_t i = 0; i < source.rowBytes(); ++i)
            between[i] = blend(upper[i], lower[i], across.fraction);
        uint8_t* target = result.row(y);
        for (size_t x = 0; x < columns_.size(); ++x) {
            const uint8_t* left = between + 4 * static_cast<size_t>(columns_[x].place);
            for (size_t c = 0; c < 4; ++c)
                target[4 * x + c] = blend(left[c], left[4 + c], columns_[x].fraction);
        }
    }
}

}  // namespace floor_program
