#include "imagefiles/worker/heap.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>

#include <climits>

#include "imagefiles/worker/build.h"

namespace tessarine {

namespace {

std::atomic<bool> refused = false;
std::atomic<bool> clearsLarge = true;

}  // namespace

void setUpHeap() {
    if (isSanitized) return;
    // Large blocks too come from the one heap that grows and is not given back at once.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
    mallopt(M_TOP_PAD, 1 << 20);
}

void clearLargeBlocks(bool wanted) { clearsLarge.store(wanted, std::memory_order_relaxed); }

void trimHeap() {
    constexpr size_t mostKept = size_t{256} << 20;
    if (!isSanitized && mallinfo2().fordblks > mostKept) malloc_trim(0);
}

void emptyHeap() {
    if (!isSanitized) malloc_trim(0);
}

size_t heapInUse() {
    if (isSanitized) return 0;
    const struct mallinfo2 figures = mallinfo2();
    return figures.uordblks + figures.hblkhd;
}

bool memoryWasRefused() { return refused.exchange(false, std::memory_order_relaxed); }

}  // namespace tessarine

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__)

extern "C" {

void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);

namespace {

/// From here on it pays that calloc knows which pages the kernel has just handed out as 0.
constexpr size_t large = 64 * 1024;

void* noted(void* block) {
    if (block == nullptr) tessarine::refused.store(true, std::memory_order_relaxed);
    return block;
}

}  // namespace

void* malloc(size_t bytes) {
    if (bytes >= large) {
        const bool clears = tessarine::clearsLarge.load(std::memory_order_relaxed);
        return noted(clears ? __libc_calloc(1, bytes) : __libc_malloc(bytes));
    }
    void* block = __libc_malloc(bytes);
    if (block != nullptr) std::memset(block, 0, malloc_usable_size(block));
    return noted(block);
}

void* calloc(size_t count, size_t bytes) { return noted(__libc_calloc(count, bytes)); }

void* realloc(void* block, size_t bytes) {
    if (block == nullptr) return malloc(bytes);
    const size_t before = malloc_usable_size(block);
    void* moved = __libc_realloc(block, bytes);
    if (moved == nullptr) return bytes == 0 ? nullptr : noted(nullptr);
    const size_t after = malloc_usable_size(moved);
    if (after > before) std::memset(static_cast<char*>(moved) + before, 0, after - before);
    return moved;
}
}

#endif
