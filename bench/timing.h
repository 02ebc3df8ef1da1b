#pragma once

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <vector>

#include "pixels/pixel_buffer.h"

// What the measurements of single functions share: the picture, the clock and the unit.

namespace tessarine::bench {

constexpr int32_t pictureWidth = 4000;
constexpr int32_t pictureHeight = 3000;
constexpr double picturePixels = double{pictureWidth} * pictureHeight;

/// 12 megapixels with every level in every channel, no two neighbours alike.
PixelBuffer testPicture();

/// Milliseconds that `work` takes once.
template <class Work>
double millisecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double median(std::vector<double> values);

/// The copy of a picture's buffer into memory in use: what a function is measured by. Memory is the
/// bound that a function can reach.
class Copy {
  public:
    explicit Copy(const PixelBuffer& picture);
    double milliseconds();

  private:
    PixelBuffer picture_;
    std::unique_ptr<Pixel[]> target_;
};

struct Timing {
    double milliseconds;
    double copies;  ///< the same in copies of the picture
};

/// The medians of `runs` calls after one that is not counted. Copies go before and after each call,
/// so that a slow moment of the machine falls on both. `prepare` precedes a call and does not
/// count.
template <class Prepare, class Work>
Timing timingOf(int runs, Copy& copy, Prepare prepare, Work work) {
    std::vector<double> times;
    std::vector<double> ratios;
    double before = copy.milliseconds();
    for (int i = -1; i < runs; ++i) {
        prepare();
        const double taken = millisecondsOf(work);
        const double after = copy.milliseconds();
        if (i >= 0) {
            times.push_back(taken);
            ratios.push_back(2 * taken / (before + after));
        }
        before = after;
    }
    return {median(times), median(ratios)};
}

}  // namespace tessarine::bench
