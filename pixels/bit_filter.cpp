#include "pixels/bit_filter.h"

#include <chrono>
#include <cmath>

#include "pixels/frame.h"

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

}  // namespace

uint32_t systemClock() {
    using namespace std::chrono;
    return static_cast<uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void cBitFilter::Bits(PixelBuffer given) {
    bits_ = std::move(given);
    if (!bits_.isDimensioned()) throw StatementFailed("a buffer without dimensions has no bounds");
    maxX_ = bits_.width() - 1;
    maxY_ = bits_.height() - 1;
    fullRect_ = {0, 0, maxX_ + 1, maxY_ + 1};
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
    const auto ofRow = [](std::span<const Pixel> row) {
        int32_t sum = 0;
        for (const Pixel& p : row)
            sum += brightness(p);
        return sum;
    };
    return sumRows(int32_t{0}, ofRow) / count;
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
    SetScanRect(0);
    if (!result.isDimensioned()) return result;
    const Rect scan = scanInBuffer();
    Pixel* block = result.writableBlock();
    for (int32_t y = scan.top; y < scan.bottom; ++y) {
        Pixel* row = block + result.offsetOfRow(y);
        for (int32_t x = scan.left; x < scan.right; ++x)
            row[x] = {b, G, R, row[x].fourth};
        if (static_cast<int32_t>(timeGetTime() - lastTick_) > reportInterval)
            lastTick_ = timeGetTime();
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

Rect cBitFilter::scanInBuffer() const {
    const int32_t margin = PixelBuffer::margin;
    return {std::max(scanLeft_, -margin), std::max(scanTop_, -margin),
            std::min(scanRight_, maxX_ + margin) + 1, std::min(scanBottom_, maxY_ + margin) + 1};
}

void cBitFilter::reportRow(int32_t y, OnFailure mode) {
    if (static_cast<int32_t>(timeGetTime() - lastTick_) <= reportInterval) return;
    lastTick_ = timeGetTime();
    if (maxY_ == 0) {
        if (mode == OnFailure::skip) return;
        throw StatementFailed("a picture one row high has no percentage done");
    }
    raiseProgress(y * 100 / maxY_);
}

void cBitFilter::raiseProgress(int32_t percent) {
    if (Progress) Progress(percent);
}

}  // namespace tessarine
