#include "timing.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "pixels/threads.h"

namespace tessarine::bench {

PixelBuffer testPicture() {
    PixelBuffer picture(pictureWidth, pictureHeight);
    Pixel* block = picture.writableBlock();
    uint32_t state = 1;
    for (int32_t y = 0; y < pictureHeight; ++y) {
        Pixel* row = block + picture.offsetOfRow(y);
        for (int32_t x = 0; x < pictureWidth; ++x) {
            state = state * 1664525U + 1013904223U;
            row[x] = {static_cast<uint8_t>(x / 16 + (state >> 29)),
                      static_cast<uint8_t>(y / 12 + (state >> 28)),
                      static_cast<uint8_t>((x + y) / 28 + (state >> 29)), 0};
        }
    }
    return picture;
}

double processorMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double wallMilliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Copy::Copy(const PixelBuffer& picture)
    : picture_(picture), target_(std::make_unique<Pixel[]>(picture.pixelCount())) {}

void Copy::copyHalf(int32_t half) {
    const size_t middle = picture_.pixelCount() / 2;
    const size_t from = half == 0 ? 0 : middle;
    const size_t count = half == 0 ? middle : picture_.pixelCount() - middle;
    std::memcpy(target_.get() + from, picture_.block() + from, count * sizeof(Pixel));
    asm volatile("" : : "r"(target_.get()) : "memory");
}

double Copy::twoThreadsFaster(int runs) {
    const auto withThreads = [this](int32_t threads) {
        return [this, threads](double (*clock)()) {
            setFilterThreads(threads);
            return millisecondsOf(clock,
                                  [this] { inParallel(2, [this](int32_t i) { copyHalf(i); }); });
        };
    };
    return ratioOf(runs, &wallMilliseconds, withThreads(1), withThreads(2));
}

double Copy::milliseconds() {
    const auto once = [this] {
        return millisecondsOf(&processorMilliseconds, [this] {
            std::memcpy(target_.get(), picture_.block(), picture_.byteCount());
            // The copy has to be made: somebody could look at it.
            asm volatile("" : : "r"(target_.get()) : "memory");
        });
    };
    return median({once(), once(), once()});
}

}  // namespace tessarine::bench
