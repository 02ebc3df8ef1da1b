#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "imagefiles/codec/helper.h"

namespace tessarine {

/// Starts helpers, all on one thread that lives as long as this object: a helper process ends with
/// the thread that started it.
class HelperStarter {
  public:
    using Start = std::function<std::unique_ptr<Helper>(HelperKind)>;

    /// What came of starting a helper. A failure crosses threads as words: how often an exception
    /// is held is counted where the thread sanitizer does not see it.
    struct Started {
        std::unique_ptr<Helper> helper;
        std::string whyNot;
    };

    /// A helper that is being started.
    class Coming {
      public:
        Coming() = default;
        explicit Coming(std::future<Started> started) : started_(std::move(started)) {}
        /// Waits for it. \throws StatementFailed where there is none
        std::unique_ptr<Helper> get();

      private:
        std::future<Started> started_;
    };

    explicit HelperStarter(Start start) : start_(std::move(start)) {}
    /// Helpers that are processes end here, and those that are coming do not come.
    ~HelperStarter();
    HelperStarter(const HelperStarter&) = delete;
    HelperStarter& operator=(const HelperStarter&) = delete;

    /// Does not wait for the helper. Any thread may call.
    Coming start(HelperKind kind);

  private:
    using Order = std::packaged_task<Started()>;

    void work();

    const Start start_;
    std::mutex guard_;
    std::condition_variable changed_;
    std::deque<Order> orders_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace tessarine
