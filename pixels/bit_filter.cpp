#include "pixels/bit_filter.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "pixels/frame.h"
#include "pixels/numbers.h"

namespace tessarine {

namespace {

/// The larger of two, as a sum: what sumRows adds up for GetLMax.
struct Largest {
    int32_t value;
    Largest& operator+=(const Largest& other) {
        value = std::max(value, other.value);
        return *this;
    }
};

struct Smallest {
    int32_t value;
    Smallest& operator+=(const Smallest& other) {
        value = std::min(value, other.value);
        return *this;
    }
};

/// A 32-bit integer like all sums, which wraps.
int32_t sumOfBrightness(std::span<const Pixel> row) {
    return sumOver(row.data(), row.size(), [](const Colour& c) { return brightness(c); });
}

}  // namespace

uint32_t systemClock() {
    using namespace std::chrono;
    // Counted from the first reading. Counted from the machine's start, a new engine's time of
    // the last report, 0, would lie in the future for half of every 50 days.
    static const steady_clock::time_point start = steady_clock::now() - seconds(1);
    return static_cast<uint32_t>(duration_cast<milliseconds>(steady_clock::now() - start).count());
}

void cBitFilter::Bits(PixelBuffer given) {
    bits_ = std::move(given);
    if (!bits_.isDimensioned()) throw StatementFailed("a buffer without dimensions has no bounds");
    maxX_ = bits_.width() - 1;
    maxY_ = bits_.height() - 1;
    fullRect_ = {0, 0, maxX_ + 1, maxY_ + 1};
}

PixelBuffer cBitFilter::filterLevels(OnFailure mode, const Levels& levels) {
    return fillRows(mode, regionBox(0), [&levels](const RowRun& run) {
        changeLevels(levels, run.source.data(), run.result.data(), run.source.size());
    });
}

PixelBuffer cBitFilter::filterSums(OnFailure mode, const ColoursOfSums& colours) {
    return fillRows(mode, regionBox(0), [&colours](const RowRun& run) {
        changeSums(colours, run.source.data(), run.result.data(), run.source.size());
    });
}

int32_t cBitFilter::GetLMax() const {
    const auto ofRow = [](std::span<const Pixel> row) {
        Largest largest{0};
        for (const Pixel& p : row)
            largest += Largest{brightness(p)};
        return largest;
    };
    return sumRows(Largest{0}, ofRow).value;
}

int32_t cBitFilter::GetLMin() const {
    const auto ofRow = [](std::span<const Pixel> row) {
        Smallest smallest{255};
        for (const Pixel& p : row)
            smallest += Smallest{brightness(p)};
        return smallest;
    };
    return sumRows(Smallest{255}, ofRow).value;
}

int32_t cBitFilter::GetLMed() const {
    const int32_t count = BitsWidth() * BitsHeight();
    if (!bits_.isDimensioned() || count == 0) throw StatementFailed("an empty image has no mean");
    return quotient(sumRows(int32_t{0}, sumOfBrightness), count);
}

float cBitFilter::GetAngle(int32_t dX, int32_t dY) {
    constexpr float pi = 3.141592F;
    if (dX == 0) return static_cast<float>(dY >= 1 ? double{pi} / 2 : -double{pi} / 2);
    const double angle = std::atan(static_cast<double>(dY) / dX);
    return static_cast<float>(dX < 0 ? angle + double{pi} : angle);
}

void cBitFilter::PrepareBitmap(BitmapHeader& header, PixelBuffer& given, int32_t width,
                               int32_t height) {
    given = PixelBuffer(width, height);
    header = {40, width + 2 * PixelBuffer::margin, -(height + 2 * PixelBuffer::margin), 1, 32};
}

PixelBuffer cBitFilter::NewDoc(uint8_t R, uint8_t G, uint8_t b) {
    PixelBuffer result = bits_;
    const Rect scan = regionBox(0).scan;
    Pixel* block = result.writableBlock();
    for (int32_t y = scan.top; y < scan.bottom; ++y) {
        for (int32_t x = scan.left; x < scan.right; ++x)
            takeColours(block[result.offsetOfRow(y) + x], {b, G, R, 0});
        isReportDue();
    }
    return result;
}

void cBitFilter::SetScanRect(int32_t margin) {
    const RegionHandle region = regionHandle_.lock();
    const Rect box = region ? region->box() : Rect{};
    scanLeft_ = box.left + margin;
    scanRight_ = box.right - margin - 1;
    scanTop_ = box.top + margin;
    scanBottom_ = box.bottom - margin - 1;
}

cBitFilter::Walk cBitFilter::regionBox(int32_t margin) {
    SetScanRect(margin);
    if (!bits_.isDimensioned()) return {};
    // The borders are inclusive, and one beyond the highest of them would not be an integer.
    const auto beyond = [](int32_t last, int32_t limit) { return std::min(last, limit) + 1; };
    const int32_t outside = PixelBuffer::margin;
    return {{std::max(scanLeft_, -outside), std::max(scanTop_, -outside),
             beyond(scanRight_, maxX_ + outside), beyond(scanBottom_, maxY_ + outside)}};
}

Rect cBitFilter::inBuffer(const Rect& rect) const {
    const int32_t margin = PixelBuffer::margin;
    return {std::max(rect.left, -margin), std::max(rect.top, -margin),
            std::min(rect.right, maxX_ + margin + 1), std::min(rect.bottom, maxY_ + margin + 1)};
}

CellGrid cBitFilter::gridOverBox(int32_t stepX, int32_t stepY, int32_t width, int32_t height) {
    SetScanRect(0);
    return {.left = scanLeft_,
            .top = scanTop_,
            .right = scanRight_,
            .bottom = scanBottom_,
            .stepX = stepX,
            .stepY = stepY,
            .width = width,
            .height = height,
            .reportWhole = maxY_};
}

int32_t cBitFilter::bandHeight() const {
    return static_cast<int32_t>(std::max<int64_t>(1, bandPixels() / bits_.stride()));
}

int32_t cBitFilter::rowsAtOnce() const {
    constexpr int64_t listenersPixels = int64_t{1} << 20;
    if (filterThreads() == 1) return bandHeight();
    if (!Progress) return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::max<int64_t>(bandHeight(), listenersPixels / bits_.stride()));
}

PixelBuffer cBitFilter::copyOfImage() const {
    if (!bits_.isDimensioned()) return bits_;
    PixelBuffer copy(bits_.width(), bits_.height(), PixelBuffer::Start::unset);
    Pixel* block = copy.writableBlock();
    forRows(
        -PixelBuffer::margin, bits_.height() + PixelBuffer::margin,
        [&](int32_t y) { copyImage(block, startOfRow(y), startOfRow(y + 1)); }, [](int32_t) {});
    return copy;
}

std::vector<int32_t> cBitFilter::steps(int32_t from, int32_t to, int32_t step, int64_t lowest,
                                       int64_t highest) {
    if (step == 0) {
        if (from <= to) throw StatementFailed("a step of 0 never ends");
        return {};
    }
    const bool up = step > 0;
    const int64_t stride = std::abs(int64_t{step});
    const int64_t first = up ? lowest : highest;
    const int64_t last = up ? std::min<int64_t>(to, highest) : std::max<int64_t>(to, lowest);
    const int64_t early = up ? first - from : from - first;
    int64_t value = from;
    if (early > 0) value += (early + stride - 1) / stride * step;
    std::vector<int32_t> values;
    for (; up ? value <= last : value >= last; value += step)
        values.push_back(static_cast<int32_t>(value));
    return values;
}

std::pair<size_t, size_t> cBitFilter::windowsInBuffer(int32_t x, int32_t y, size_t count,
                                                      const Stencil& stencil) const {
    // Counted in pixels along the block, so that a window may run over the end of a row.
    const int64_t reach = std::abs(int64_t{stencil.reach} * stencil.spacing) * (bits_.stride() + 1);
    const int64_t first = bits_.offsetOfRow(y) + x;
    const auto whole = static_cast<int64_t>(count);
    const int64_t from = std::clamp(reach - first, int64_t{0}, whole);
    const int64_t to =
        std::clamp(static_cast<int64_t>(bits_.pixelCount()) - reach - first, from, whole);
    return {static_cast<size_t>(from), static_cast<size_t>(to)};
}

void SurroundingsCopy::take(int32_t x, int32_t y) {
    const int64_t reach = stencil_.reach;
    places_.clear();
    for (int64_t dy = -reach; dy <= reach; ++dy)
        for (int64_t dx = -reach; dx <= reach; ++dx)
            places_.push_back(bits_.reached(x + dx * stencil_.spacing, y + dy * stencil_.spacing));
}

int32_t cBitFilter::reportedMean() {
    const int32_t sum =
        sumRows(int32_t{0}, sumOfBrightness, [this](int32_t y) { reportRow(y, OnFailure::skip); });
    raiseProgress(100);
    const int32_t count = BitsWidth() * BitsHeight();
    return count == 0 ? 0 : quotient(sum, count);
}

bool cBitFilter::isReportDue() {
    if (static_cast<int32_t>(timeGetTime() - lastTick_) <= reportInterval) return false;
    lastTick_ = timeGetTime();
    return true;
}

void cBitFilter::report(int32_t part, int32_t whole, OnFailure mode) {
    if (!isReportDue()) return;
    if (whole == 0) {
        if (mode == OnFailure::skip) return;
        throw StatementFailed("there is no percentage of nothing");
    }
    raiseProgress(quotient(part * 100, whole));
}

void cBitFilter::raiseProgress(int32_t percent) {
    if (Progress) Progress(percent);
}

}  // namespace tessarine
