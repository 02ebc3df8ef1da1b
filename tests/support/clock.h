#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "pixels/bit_filter.h"

namespace tessarine::tests {

/// A clock that moves on by `step` milliseconds with each reading.
class SteppingClock {
  public:
    SteppingClock(uint32_t first, uint32_t step) : next_(first), step_(step) {}

    uint32_t read() {
        const uint32_t now = next_;
        next_ += step_;
        ++readings_;
        return now;
    }
    int readings() const { return readings_; }

    /// Makes this the clock of a filter engine.
    void attachTo(cBitFilter& filter) {
        filter.timeGetTime = [this] { return read(); };
    }

  private:
    uint32_t next_;
    uint32_t step_;
    int readings_ = 0;
};

/// Collects what a filter engine reports, in order.
inline void keepReports(cBitFilter& filter, std::vector<int32_t>& reports) {
    filter.Progress = [&reports](int32_t& percent) { reports.push_back(percent); };
}

}  // namespace tessarine::tests
