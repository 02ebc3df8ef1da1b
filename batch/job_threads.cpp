#include "batch/job_threads.h"

#include <system_error>
#include <utility>

namespace tessarine {

JobThreads::~JobThreads() {
    {
        const std::lock_guard lock(guard_);
        ending_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void JobThreads::start(std::function<void()> job) {
    bool isFree = false;
    {
        const std::lock_guard lock(guard_);
        isFree = free_ > waiting_.size();
    }
    if (!isFree && threads_.size() < most_) addThread();
    if (threads_.empty()) return job();
    {
        const std::lock_guard lock(guard_);
        waiting_.push_back(std::move(job));
    }
    changed_.notify_one();
}

void JobThreads::addThread() {
    try {
        threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // The limit of processes is reached: those that there are do the work.
    }
}

void JobThreads::work() {
    std::unique_lock lock(guard_);
    for (;;) {
        ++free_;
        changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        --free_;
        if (waiting_.empty()) return;
        {
            const std::function<void()> job = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            job();
        }
        lock.lock();
    }
}

}  // namespace tessarine
