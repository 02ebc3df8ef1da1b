#pragma once

#include <cstdint>

namespace tessarine {

/// Fails for want of memory, and counts it: where failing statements are left out, the count tells
/// that the result is not what was asked for.
/// \throws MemoryFailed
[[noreturn]] void failForMemory(const char* why);

/// How often that happened on this thread.
uint64_t memoryShortages();

}  // namespace tessarine
