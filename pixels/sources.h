#pragma once

#include <array>
#include <cstdint>

#include "pixels/frame.h"

// The part of the frame for filters that take each pixel from a computed place: rows are cut into
// stretches, and the loops over a stretch are plain ones over arrays, so that the places of several
// pixels are computed at once.

namespace tessarine {

/// The most pixels of a stretch.
constexpr int32_t stretchLength = 256;

/// A value for each pixel of a stretch.
template <class Value>
using OfStretch = std::array<Value, stretchLength>;

/// A computed place that may not be the right one: where it is not sure, it says nothing.
struct Guess {
    Point place;
    bool isSure = false;
};

/// Calls `work(part)` for the stretches of a run.
template <class Work>
void inStretches(const RowRun& run, Work work) {
    for (size_t from = 0; from < run.source.size(); from += stretchLength) {
        const size_t count = std::min<size_t>(run.source.size() - from, stretchLength);
        work(RowRun{run.source.subspan(from, count), run.result.subspan(from, count),
                    run.x + static_cast<int32_t>(from), run.y});
    }
}

/// Takes colours from places in an image, where these lie in the region.
class SourceTaker {
  public:
    /// \param region null for no region; it and the image must outlive the taker
    SourceTaker(const PixelBuffer& bits, const Region* region, Uncovered uncovered);

    /// Gives `count` neighbouring pixels, which hold the image's own, the colours at (xs[i],
    /// ys[i]).
    void take(Pixel* result, const int32_t* xs, const int32_t* ys, int32_t count) const;

  private:
    void takeInBox(Pixel* result, const int32_t* xs, const int32_t* ys, int32_t count) const;

    const PixelBuffer& bits_;
    RegionTest test_;
    Rect box_;
    bool isBoxInBuffer_;
    Uncovered uncovered_;
};

template <class Work>
PixelBuffer cBitFilter::filterStretches(OnFailure mode, Work work) {
    const Walk walk = regionBox(0);
    const Rect& scan = walk.scan;
    return rowByRow(mode, walk, [&](Pixel* block, int32_t y) {
        Pixel* row = block + bits_.offsetOfRow(y);
        for (int32_t x = scan.left; x < scan.right; x += stretchLength)
            work(row + x, x, y, std::min(scan.right - x, stretchLength));
    });
}

template <class RowOf>
PixelBuffer cBitFilter::filterSources(Uncovered uncovered, RowOf rowOf) {
    const RegionHandle region = regionHandle_.lock();
    const SourceTaker taker(bits_, region.get(), uncovered);
    const auto work = [&](Pixel* result, int32_t left, int32_t y, int32_t count) {
        const auto sourceOf = rowOf(left, y);
        OfStretch<int32_t> xs;
        OfStretch<int32_t> ys;
        for (int32_t i = 0; i < count; ++i) {
            const Point from = sourceOf(left + i);
            xs[static_cast<size_t>(i)] = from.x;
            ys[static_cast<size_t>(i)] = from.y;
        }
        taker.take(result, xs.data(), ys.data(), count);
    };
    return filterStretches(OnFailure::skip, work);
}

template <class GuessOf, class PlaceOf>
PixelBuffer cBitFilter::filterGuessedSources(Uncovered uncovered, GuessOf guessOf,
                                             PlaceOf placeOf) {
    const RegionHandle region = regionHandle_.lock();
    const SourceTaker taker(bits_, region.get(), uncovered);
    const auto work = [&](Pixel* result, int32_t left, int32_t y, int32_t count) {
        OfStretch<int32_t> xs;
        OfStretch<int32_t> ys;
        OfStretch<int32_t> sure;
        int32_t allSure = 1;
        // By a copy out of the arrays' reach: only so the loop turns into vector code.
        const GuessOf own = guessOf;
        for (int32_t i = 0; i < count; ++i) {
            const Guess guess = own(left + i, y);
            xs[static_cast<size_t>(i)] = guess.place.x;
            ys[static_cast<size_t>(i)] = guess.place.y;
            sure[static_cast<size_t>(i)] = guess.isSure ? 1 : 0;
            allSure &= guess.isSure ? 1 : 0;
        }
        for (int32_t i = 0; allSure == 0 && i < count; ++i) {
            if (sure[static_cast<size_t>(i)] != 0) continue;
            const Point from = placeOf(left + i, y);
            xs[static_cast<size_t>(i)] = from.x;
            ys[static_cast<size_t>(i)] = from.y;
        }
        taker.take(result, xs.data(), ys.data(), count);
    };
    return filterStretches(OnFailure::skip, work);
}

}  // namespace tessarine
