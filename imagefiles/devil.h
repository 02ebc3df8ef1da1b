#pragma once

#include <mutex>

namespace tessarine {

/// DevIL keeps its state for the whole process: whoever calls it holds this lock from the first
/// call to the last.
std::mutex& devilLock();

/// Starts DevIL and forgets the errors of whoever used it before. Call under the lock.
void startDevil();

}  // namespace tessarine
