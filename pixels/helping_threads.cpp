#include "pixels/helping_threads.h"

#include <algorithm>
#include <mutex>
#include <sched.h>
#include <unistd.h>
#include <vector>

namespace tessarine {

namespace {

struct Helping {
    std::mutex guard;
    std::vector<pid_t> threads;
    int keptOff = -1;  ///< the processor that all of them avoid; none at first
};

/// Never destroyed: at the program's end threads may still be leaving when all else is gone.
Helping& helping() {
    static auto* const all = new Helping;
    return *all;
}

/// Enters the thread that makes it, and takes it out at its end.
struct Entry {
    Entry() {
        const std::lock_guard lock(helping().guard);
        helping().threads.push_back(::gettid());
        helping().keptOff = -1;
    }
    ~Entry() {
        const std::lock_guard lock(helping().guard);
        std::erase(helping().threads, ::gettid());
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
};

}  // namespace

void joinHelpingThreads() { thread_local const Entry entry; }

void keepHelpingThreadsOff() {
    const int here = ::sched_getcpu();
    const std::lock_guard lock(helping().guard);
    if (here < 0 || here == helping().keptOff || helping().threads.empty()) return;
    cpu_set_t others;
    if (::sched_getaffinity(0, sizeof others, &others) != 0) return;
    CPU_CLR(here, &others);
    if (CPU_COUNT(&others) == 0) return;
    // Where one refuses, it stays where it may be now.
    for (const pid_t thread : helping().threads)
        ::sched_setaffinity(thread, sizeof others, &others);
    helping().keptOff = here;
}

}  // namespace tessarine
