#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tessarine {

/// Threads that do jobs side by side, each begun in the order in which they came.
class JobThreads {
  public:
    /// \param most  as many threads as are started at most, each when a job finds none free; with 0
    ///              the caller does its jobs itself
    explicit JobThreads(size_t most) : most_(most) {}
    /// Waits until all jobs are done.
    ~JobThreads();
    JobThreads(const JobThreads&) = delete;
    JobThreads& operator=(const JobThreads&) = delete;

    /// Has a job done, which is not to throw. Where the system gives not a single thread it is done
    /// before this returns.
    void start(std::function<void()> job);

  private:
    void work();
    void addThread();

    const size_t most_;
    std::mutex guard_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    size_t free_ = 0;  ///< threads that wait for a job
    bool ending_ = false;
    std::vector<std::thread> threads_;  ///< the caller's alone
};

}  // namespace tessarine
