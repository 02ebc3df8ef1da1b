#pragma once

#include <cstddef>
#include <vector>

#include "pixels/failures.h"
#include "pixels/region.h"

namespace tessarine {

/// Writes the rectangles of a region band by band, top down, and keeps them canonical: a band
/// without rectangles is left out, and one that continues its neighbour above joins it.
class BandWriter {
  public:
    /// Begins a band; it must not start above the end of the one before.
    void begin(int32_t top, int32_t bottom) {
        top_ = top;
        bottom_ = bottom;
        start_ = rects_.size();
    }

    /// Adds the next rectangle of the band from the left; it must not overlap the one before, and
    /// joins it where they touch.
    /// \throws StatementFailed beyond Region::maxRects rectangles
    void add(int32_t left, int32_t right) {
        if (rects_.size() > start_ && rects_.back().right == left) {
            rects_.back().right = right;
            return;
        }
        if (rects_.size() >= Region::maxRects) {
            throw StatementFailed("a region of too many rectangles");
        }
        rects_.push_back({left, top_, right, bottom_});
    }

    void end() {
        if (rects_.size() == start_) return;
        if (continuesBandAbove()) {
            rects_.resize(start_);
            for (size_t i = above_; i < start_; ++i)
                rects_[i].bottom = bottom_;
        } else {
            above_ = start_;
        }
    }

    std::vector<Rect> take() { return std::move(rects_); }

  private:
    bool continuesBandAbove() const {
        if (start_ == 0 || rects_[start_ - 1].bottom != top_) return false;
        const size_t count = start_ - above_;
        if (rects_.size() - start_ != count) return false;
        for (size_t i = 0; i < count; ++i) {
            const Rect& upper = rects_[above_ + i];
            const Rect& lower = rects_[start_ + i];
            if (upper.left != lower.left || upper.right != lower.right) return false;
        }
        return true;
    }

    std::vector<Rect> rects_;
    size_t above_ = 0;  // where the last finished band starts
    size_t start_ = 0;  // where the band in hand starts
    int32_t top_ = 0;
    int32_t bottom_ = 0;
};

}  // namespace tessarine
