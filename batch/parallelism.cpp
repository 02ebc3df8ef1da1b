#include "batch/parallelism.h"

#include <algorithm>

#include "pixels/machine.h"

namespace tessarine {

Parallelism parallelismFor(size_t pictures, int32_t jobs, int32_t filterThreads) {
    const int cores = availableCores();
    const auto most = static_cast<int>(std::clamp<size_t>(pictures, 1, 1024));
    Parallelism shares;
    shares.jobs = jobs > 0 ? jobs : std::min(cores + 1, most);
    const int inFlight = std::min(shares.jobs, most);
    shares.filterThreads = filterThreads > 0 ? filterThreads : std::max(1, cores / inFlight);
    return shares;
}

}  // namespace tessarine
