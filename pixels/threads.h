#pragma once

#include <cstdint>

namespace tessarine {

/// The threads that one filter may use from now on, its caller's among them. At first as many as
/// the machine has for this process, and so again for 0.
void setFilterThreads(int32_t threads);
int32_t filterThreads();

/// The pixels that one thread takes at a time: few enough to stay in its cache, many enough to be
/// worth the handing over. A picture of fewer is worked on by one thread alone.
void setBandPixels(int32_t pixels);
int32_t bandPixels();

/// The level of the processor that the pixel work at hand was built for, as compilers name it:
/// "x86-64-v3", or "baseline" for the lowest.
const char* processorLevel();

/// Calls `call(work, i)` for each i from 0 up to but without count, in any order, on the threads
/// that a filter may use, and returns when all are done. `call` throws nothing.
void callInParallel(int32_t count, void (*call)(const void* work, int32_t i), const void* work);

/// The same for `work(i)`.
template <class Work>
void inParallel(int32_t count, const Work& work) {
    callInParallel(
        count, [](const void* of, int32_t i) { (*static_cast<const Work*>(of))(i); }, &work);
}

}  // namespace tessarine
