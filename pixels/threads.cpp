#include "pixels/threads.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#ifndef __SANITIZE_THREAD__
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/task_arena.h>
#endif

#include "pixels/helping_threads.h"
#include "pixels/machine.h"

namespace tessarine {

namespace {

std::atomic<int32_t> wanted = 0;
std::atomic<int32_t> pixelsOfBand = 32768;

/// The cores that this process may use.
int32_t cores() {
    static const int32_t count = availableCores();
    return count;
}

#ifdef __SANITIZE_THREAD__

// The sanitizer cannot see how the library's threads wait for each other, and would take all that
// they do for races. Threads of the standard library's do the same work here.
void callOnThreads(int32_t threads, int32_t count, void (*call)(const void*, int32_t),
                   const void* work) {
    std::atomic<int32_t> next = 0;
    const auto take = [&] {
        for (int32_t i = next++; i < count; i = next++)
            call(work, i);
    };
    std::vector<std::jthread> others;
    for (int32_t i = 1; i < std::min(threads, count); ++i)
        others.emplace_back(take);
    take();
}

#else

namespace tbb = oneapi::tbb;

/// The library by itself has no more threads than there are cores.
void allowThreads(int32_t threads) {
    static std::mutex guard;
    static std::unique_ptr<tbb::global_control> control;
    static int32_t allowed = cores();
    const std::lock_guard lock(guard);
    if (threads <= allowed) return;
    allowed = threads;
    control = std::make_unique<tbb::global_control>(tbb::global_control::max_allowed_parallelism,
                                                    static_cast<size_t>(threads));
}

void callOnThreads(int32_t threads, int32_t count, void (*call)(const void*, int32_t),
                   const void* work) {
    allowThreads(threads);
    keepHelpingThreadsOff();
    // One for each thread that calls: while it waits it takes part in no other caller's work.
    thread_local std::unique_ptr<tbb::task_arena> arena;
    if (arena == nullptr || arena->max_concurrency() != threads)
        arena = std::make_unique<tbb::task_arena>(threads);
    const auto caller = std::this_thread::get_id();
    const auto take = [=](int32_t i) {
        if (std::this_thread::get_id() != caller) joinHelpingThreads();
        call(work, i);
    };
    arena->execute([&] { tbb::parallel_for(0, count, take); });
}

#endif

}  // namespace

void setFilterThreads(int32_t threads) { wanted.store(threads, std::memory_order_relaxed); }

int32_t filterThreads() {
    const int32_t threads = wanted.load(std::memory_order_relaxed);
    return threads > 0 ? threads : cores();
}

void setBandPixels(int32_t pixels) { pixelsOfBand.store(pixels, std::memory_order_relaxed); }

int32_t bandPixels() { return pixelsOfBand.load(std::memory_order_relaxed); }

const char* processorLevel() {
#if defined(__AVX512F__)
    return "x86-64-v4";
#elif defined(__AVX2__)
    return "x86-64-v3";
#else
    return "baseline";
#endif
}

void callInParallel(int32_t count, void (*call)(const void* work, int32_t i), const void* work) {
    const int32_t threads = std::min(filterThreads(), count);
    if (threads > 1) return callOnThreads(filterThreads(), count, call, work);
    for (int32_t i = 0; i < count; ++i)
        call(work, i);
}

}  // namespace tessarine
