#pragma once

namespace tessarine {

/// Sanitizers reserve terabytes of address space, bring a heap of their own, and open, map and
/// trace whatever they like: in their builds this process is confined only as far as they can
/// bear.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif
#else
constexpr bool isSanitized = false;
#endif

constexpr bool limitsMemory = !isSanitized;

}  // namespace tessarine
