#include "arithmetic.h"

#include <algorithm>
#include <cmath>

namespace floor_program {

namespace {

/// What the three planes of a stretch of pixels take, so that a stretch stays in registers' reach.
constexpr int stretch = 64;

struct Planes {
    alignas(64) int16_t blue[stretch];
    alignas(64) int16_t green[stretch];
    alignas(64) int16_t red[stretch];
};

int16_t low(int value) { return static_cast<int16_t>(value); }

/// What one channel lacks or has too much goes half to each of the others.
[[gnu::always_inline]] inline void spill(int16_t& from, int16_t& first, int16_t& second) {
    const int16_t excess = low(std::min<int16_t>(from, 0) + std::max<int16_t>(low(from - 255), 0));
    const int16_t half = low(low(excess - (excess >> 15)) >> 1);
    first = low(first + half);
    second = low(second + half);
    from = low(from - excess);
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
        b = light != 0 ? light : low(b & dark);
        g = light != 0 ? light : low(g & dark);
        r = light != 0 ? light : low(r & dark);
        spill(b, g, r);
        spill(g, b, r);
        spill(r, g, b);
        outside = low(outside | ((b | g | r) & ~255));
        planes.blue[i] = b;
        planes.green[i] = g;
        planes.red[i] = r;
    }
    return outside != 0;
}

}  // namespace

int brighten(View picture, int level) {
    int64_t sum = 0;
    for (int y = 0; y < picture.height; ++y) {
        uint8_t* row = picture.row(y);
        const auto more = static_cast<uint8_t>(std::clamp(level, 0, 255));
        const auto less = static_cast<uint8_t>(std::clamp(-level, 0, 255));
        for (size_t i = 0; i < picture.rowBytes(); ++i) {
            const auto raised = static_cast<uint8_t>(std::min(row[i] + more, 255));
            row[i] = static_cast<uint8_t>(std::max(raised - less, 0));
        }
        int32_t ofRow = 0;
        for (int x = 0; x < picture.width; ++x)
            ofRow += (row[4 * x] + row[4 * x + 1] + row[4 * x + 2]) * 21846 >> 16;
        sum += ofRow;
    }
    return static_cast<int>(sum / (int64_t{picture.width} * picture.height));
}

Contrast::Contrast(int percent, int mean)
    : mean_(mean), factor_(static_cast<int>(std::lround((percent + 100) / 100.0 * 16384))) {}

void Contrast::operator()(uint8_t* row, int width) const {
    for (int from = 0; from < width; from += stretch) {
        const int count = std::min(stretch, width - from);
        uint8_t* pixels = row + 4 * static_cast<size_t>(from);
        Planes planes{};
        const auto spread = [this](uint8_t v) {
            return low((((v - mean_) * factor_ + 8192) >> 14) + mean_);
        };
        for (int i = 0; i < count; ++i) {
            planes.blue[i] = spread(pixels[4 * i]);
            planes.green[i] = spread(pixels[4 * i + 1]);
            planes.red[i] = spread(pixels[4 * i + 2]);
        }
        while (spillAll(planes)) {
        }
        for (int i = 0; i < count; ++i) {
            pixels[4 * i] = static_cast<uint8_t>(planes.blue[i]);
            pixels[4 * i + 1] = static_cast<uint8_t>(planes.green[i]);
            pixels[4 * i + 2] = static_cast<uint8_t>(planes.red[i]);
        }
    }
}

void sharpenRow(const uint8_t* above, const uint8_t* row, const uint8_t* below, uint8_t* result,
                int width, int level) {
    const int centre = 124 - level;
    const int divisor = 108 - level;
    // For sums up to 2^15 and divisors below 128 this factor divides exactly.
    const auto inverse = static_cast<uint32_t>(((1 << 22) + divisor - 1) / divisor);
    const size_t bytes = static_cast<size_t>(width) * 4;
    std::copy_n(row, 4, result);
    for (size_t i = 4; i < bytes - 4; ++i) {
        const int around = above[i - 4] + above[i] + above[i + 4] + row[i - 4] + row[i + 4] +
                           below[i - 4] + below[i] + below[i + 4];
        const auto sum = static_cast<uint32_t>(std::max(centre * row[i] - 2 * around, 0));
        result[i] = static_cast<uint8_t>(std::min(sum * inverse >> 22, 255U));
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
    const auto blend = [](int first, int second, int16_t fraction) {
        return static_cast<uint8_t>(first + (((second - first) * fraction + 16384) >> 15));
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
