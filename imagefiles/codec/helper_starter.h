#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

#include "imagefiles/codec/helper.h"

namespace tessarine {

/// Starts helpers, all on one thread that lives as long as this object: a helper process ends with
/// the thread that started it.
class HelperStarter {
  public:
    using Start = std::function<std::unique_ptr<Helper>(HelperKind)>;
    /// A helper that is being started; get() throws StatementFailed where that fails.
    using Coming = std::future<std::unique_ptr<Helper>>;

    explicit HelperStarter(Start start) : start_(std::move(start)) {}
    /// Helpers that are processes end here, and those that are coming do not come.
    ~HelperStarter();
    HelperStarter(const HelperStarter&) = delete;
    HelperStarter& operator=(const HelperStarter&) = delete;

    /// Does not wait for the helper. Any thread may call.
    Coming start(HelperKind kind);

  private:
    using Order = std::packaged_task<std::unique_ptr<Helper>()>;

    void work();

    const Start start_;
    std::mutex guard_;
    std::condition_variable changed_;
    std::deque<Order> orders_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace tessarine
