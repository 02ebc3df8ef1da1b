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

/// What happens on the asking thread while a helper is asked.
struct Waiting {
    /// Called about every 50 ms while an answer takes longer than 200 ms; may be empty.
    std::function<void()> meanwhile;
    /// Asked about every 50 ms: whether nobody wants the answer any more; may be empty.
    std::function<bool()> isOff;
};

/// A helper, with what it was asked and the clock beside it. One request at a time.
class HelperLink {
  public:
    enum class End {
        answered,  ///< by the rules
        notTaken,  ///< the helper ended, or lost its way, before it looked at the request
        timedOut,
        died,  ///< it ended, or broke its rules
        off,   ///< nobody wants it any more
    };
    struct Outcome {
        End end = End::answered;
        std::string message;  ///< in words; empty where it answered
    };

    explicit HelperLink(std::unique_ptr<Helper> helper);

    bool isReady() const { return ready_; }
    /// Whether it says nothing unasked, and is there.
    bool isQuiet() const;
    /// Waits until the helper has made itself ready.
    /// \return what of its confinement the system does not grant; empty where all holds
    /// \throws StatementFailed where it does not come to that
    std::string awaitReady(const Waiting& waiting);
    /// Has a request served. After any other end than `answered` the helper is gone. What the
    /// request itself does with an answer, waiting for memory above all, costs the helper no time.
    Outcome ask(HelperRequest& request, uint32_t number, const Waiting& waiting);

  private:
    using Clock = std::chrono::steady_clock;

    /// Waits for the next packet until `patience` has passed since `start`. Time in which this
    /// program stood still moves `start`.
    Received receive(Clock::time_point& start, std::chrono::duration<double> patience,
                     const Waiting& waiting) const;
    /// Whether it has said something that nobody heard yet.
    bool talks() const;
    Outcome served(HelperRequest& request, uint32_t number, const Waiting& waiting);

    std::unique_ptr<Helper> helper_;
    bool ready_ = false;
    bool answered_ = false;  ///< an earlier request
};

}  // namespace tessarine
