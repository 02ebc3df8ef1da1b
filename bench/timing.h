#pragma once

#include <algorithm>
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

/// Milliseconds that this thread has spent on a processor. What it waits while others have that
/// processor does not count.
double processorMilliseconds();
/// Milliseconds on the wall, for work of several threads.
double wallMilliseconds();

/// What `clock` counts while `work` is done once.
template <class Work>
double millisecondsOf(double (*clock)(), Work work) {
    const double start = clock();
    work();
    return clock() - start;
}

double median(std::vector<double> values);

/// The copy of a picture's buffer into memory in use: what a function is measured by. Memory is the
/// bound that a function can reach.
class Copy {
  public:
    explicit Copy(const PixelBuffer& picture);
    /// The median of three.
    double milliseconds();
    /// How many times as fast two threads are, each with a half: the median of so many pairs.
    double twoThreadsFaster(int runs);

  private:
    void copyHalf(int32_t half);

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
        const double taken = millisecondsOf(&processorMilliseconds, work);
        const double after = copy.milliseconds();
        if (i >= 0) {
            times.push_back(taken);
            ratios.push_back(2 * taken / (before + after));
        }
        before = after;
    }
    return {median(times), median(ratios)};
}

/// The median ratio of the times of two works that take turns, of `runs` pairs after one.
template <class First, class Second>
double ratioOf(int runs, double (*clock)(), First first, Second second) {
    std::vector<double> ratios;
    for (int i = -1; i < runs; ++i) {
        const double ofFirst = first(clock);
        const double ofSecond = second(clock);
        if (i >= 0) ratios.push_back(ofFirst / ofSecond);
    }
    return median(ratios);
}

}  // namespace tessarine::bench
