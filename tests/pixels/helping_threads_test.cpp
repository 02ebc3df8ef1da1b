#include "pixels/helping_threads.h"

#include <future>
#include <sched.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "pixels/machine.h"

namespace tessarine::tests {
namespace {

/// The processors that a thread may run on.
cpu_set_t placesOf(pid_t thread) {
    cpu_set_t places;
    EXPECT_EQ(::sched_getaffinity(thread, sizeof places, &places), 0);
    return places;
}

/// Keeps the calling thread on one processor while it lives.
class Pinned {
  public:
    explicit Pinned(int processor) : before_(placesOf(0)) {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        EXPECT_EQ(::sched_setaffinity(0, sizeof one, &one), 0);
    }
    ~Pinned() { ::sched_setaffinity(0, sizeof before_, &before_); }
    Pinned(const Pinned&) = delete;
    Pinned& operator=(const Pinned&) = delete;

  private:
    cpu_set_t before_;
};

/// A thread that helps until it is let go.
class Helping {
  public:
    Helping()
        : thread_([this] {
              joinHelpingThreads();
              id_.set_value(::gettid());
              done_.get_future().wait();
          }),
          known_(id_.get_future().get()) {}
    ~Helping() {
        done_.set_value();
        thread_.join();
    }
    Helping(const Helping&) = delete;
    Helping& operator=(const Helping&) = delete;
    pid_t id() const { return known_; }

  private:
    std::promise<pid_t> id_;
    std::promise<void> done_;
    std::thread thread_;
    pid_t known_;
};

TEST(HelpingThreads, KeepOffTheProcessorOfTheThreadThatTheyHelp) {
    if (availableCores() < 2) GTEST_SKIP() << "there is one processor only";
    const Helping helping;
    keepHelpingThreadsOff();
    const cpu_set_t places = placesOf(helping.id());
    EXPECT_GE(CPU_COUNT(&places), 1);
    EXPECT_LT(CPU_COUNT(&places), CPU_SETSIZE);
    const cpu_set_t mine = placesOf(0);
    cpu_set_t common;
    CPU_AND(&common, &places, &mine);
    EXPECT_EQ(CPU_COUNT(&common), CPU_COUNT(&mine) - 1);
}

TEST(HelpingThreads, StayWhereTheyAreWhereThereIsNoOtherProcessor) {
    const Pinned pinned(::sched_getcpu());
    const Helping helping;
    const cpu_set_t before = placesOf(helping.id());
    keepHelpingThreadsOff();
    const cpu_set_t after = placesOf(helping.id());
    EXPECT_TRUE(CPU_EQUAL(&before, &after));
}

}  // namespace
}  // namespace tessarine::tests
