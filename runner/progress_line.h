#pragma once

#include <chrono>
#include <cstdint>

namespace tessarine {

/// How far a run is, on standard error: pictures done, rate, time left. On a terminal one line
/// that is written over, elsewhere a line a second.
class ProgressLine {
  public:
    /// \param shown     whether anything is to be written
    /// \param pictures  number of pictures of the run
    ProgressLine(bool shown, int64_t pictures);

    void update(int64_t done);
    /// Takes the line away, so that another text can be printed; the next update brings it back.
    void clear();

  private:
    using Clock = std::chrono::steady_clock;

    bool shown_;
    bool onTerminal_;
    int64_t pictures_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_;
};

}  // namespace tessarine
