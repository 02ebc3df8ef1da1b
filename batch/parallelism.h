#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarine {

/// How a run with each picture by itself shares the machine out.
struct Parallelism {
    int32_t jobs = 1;           ///< pictures in flight
    int32_t filterThreads = 1;  ///< threads that the filters of each may use
};

/// Keeps the processors busy: one picture more in flight than there are, for those that wait for
/// the disk, and for each picture its part of the processors.
/// \param pictures       of the run
/// \param jobs           as wished; 0 for as many as the machine suggests
/// \param filterThreads  likewise
Parallelism parallelismFor(size_t pictures, int32_t jobs = 0, int32_t filterThreads = 0);

}  // namespace tessarine
