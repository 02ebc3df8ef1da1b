#include "pixels/helping_threads.h"

#include <algorithm>
#include <mutex>
#include <sched.h>
#include <unistd.h>
#include <vector>

namespace tessarine {

namespace {

std::mutex guard;
std::vector<pid_t> helping;
int keptOff = -1;  ///< the processor that all of them avoid; none at first

/// Enters the thread that makes it, and takes it out at its end.
struct Entry {
    Entry() {
        const std::lock_guard lock(guard);
        helping.push_back(::gettid());
        keptOff = -1;
    }
    ~Entry() {
        const std::lock_guard lock(guard);
        std::erase(helping, ::gettid());
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
};

}  // namespace

void joinHelpingThreads() { thread_local const Entry entry; }

void keepHelpingThreadsOff() {
    const int here = ::sched_getcpu();
    const std::lock_guard lock(guard);
    if (here < 0 || here == keptOff || helping.empty()) return;
    cpu_set_t others;
    if (::sched_getaffinity(0, sizeof others, &others) != 0) return;
    CPU_CLR(here, &others);
    if (CPU_COUNT(&others) == 0) return;
    // Where one refuses, it stays where it may be now.
    for (const pid_t thread : helping)
        ::sched_setaffinity(thread, sizeof others, &others);
    keptOff = here;
}

}  // namespace tessarine
