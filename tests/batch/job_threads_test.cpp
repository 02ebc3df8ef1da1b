#include "batch/job_threads.h"

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

TEST(JobThreads, AtItsEndAllJobsAreDone) {
    std::atomic<int> done = 0;
    {
        JobThreads threads(3);
        for (int i = 0; i < 100; ++i)
            threads.start([&done] { ++done; });
    }
    EXPECT_EQ(done, 100);
}

TEST(JobThreads, JobsAreBegunInTheirOrder) {
    std::vector<int> order;
    {
        JobThreads threads(1);
        for (int i = 0; i < 50; ++i)
            threads.start([&order, i] { order.push_back(i); });
    }
    ASSERT_EQ(order.size(), 50U);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(order[static_cast<size_t>(i)], i);
}

TEST(JobThreads, WithoutThreadsTheCallerDoesItsJobsAtOnce) {
    JobThreads threads(0);
    std::thread::id worker;
    threads.start([&worker] { worker = std::this_thread::get_id(); });
    EXPECT_EQ(worker, std::this_thread::get_id());
}

TEST(JobThreads, AsManyJobsAsThereAreThreadsGoSideBySide) {
    // Each waits until all of them have begun.
    constexpr int count = 4;
    std::atomic<int> begun = 0;
    {
        JobThreads threads(count);
        for (int i = 0; i < count; ++i)
            threads.start([&begun] {
                ++begun;
                while (begun < count)
                    std::this_thread::yield();
            });
    }
    EXPECT_EQ(begun, count);
}

}  // namespace
}  // namespace tessarine::tests
