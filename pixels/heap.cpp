#include "pixels/heap.h"

#include <malloc.h>

namespace tessarine {

void keepFreedMemory() {
    // The most that the heap takes for itself; larger blocks come from the system one by one.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
}

}  // namespace tessarine
