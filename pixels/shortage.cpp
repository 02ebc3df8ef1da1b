#include "pixels/shortage.h"

#include "pixels/failures.h"

namespace tessarine {

namespace {

thread_local uint64_t shortages = 0;

}  // namespace

void failForMemory(const char* why) {
    ++shortages;
    throw MemoryFailed(why);
}

uint64_t memoryShortages() { return shortages; }

}  // namespace tessarine
