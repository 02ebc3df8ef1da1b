#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/helper.h"

namespace tessarine {

class HelperRequest;

/// A helper, with what it was asked and the clock beside it. One request at a time.
class HelperLink {
  public:
    enum class End {
        answered,  ///< by the rules
        notTaken,  ///< the helper ended, or lost its way, before it looked at the request
        timedOut,
        died,  ///< it ended, or broke its rules
    };
    struct Outcome {
        End end = End::answered;
        std::string message;  ///< in words; empty where it answered
    };

    /// \param onWaiting  called about every 50 ms while the helper takes longer than 200 ms; to
    ///                   outlive this
    HelperLink(std::unique_ptr<Helper> helper, const std::function<void()>& onWaiting);

    bool isReady() const { return ready_; }
    /// Whether it says nothing unasked, and is there.
    bool isQuiet() const;
    /// Waits until the helper has made itself ready.
    /// \return what of its confinement the system does not grant; empty where all holds
    /// \throws StatementFailed where it does not come to that
    std::string awaitReady();
    /// Has a request served. After any other end than `answered` the helper is gone.
    Outcome ask(HelperRequest& request, uint32_t number);

  private:
    using Clock = std::chrono::steady_clock;

    /// Waits for the next packet until `patience` has passed since `start`. Time in which this
    /// program stood still moves `start`.
    Received receive(Clock::time_point& start, std::chrono::duration<double> patience) const;
    /// Whether it has said something that nobody heard yet.
    bool talks() const;
    Outcome served(HelperRequest& request, uint32_t number);

    std::unique_ptr<Helper> helper_;
    const std::function<void()>& onWaiting_;
    bool ready_ = false;
    bool answered_ = false;  ///< an earlier request
};

}  // namespace tessarine
