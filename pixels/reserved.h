#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "pixels/shortage.h"

namespace tessarine {

/// An empty vector with room for `count` values, for tables as long as a picture's side.
/// \param count from 0 to 2^32
/// \throws MemoryFailed
template <class Value>
std::vector<Value> reserved(int64_t count) {
    std::vector<Value> values;
    try {
        values.reserve(static_cast<size_t>(count));
    } catch (const std::bad_alloc&) {
        failForMemory("not enough memory for a table of this length");
    }
    return values;
}

}  // namespace tessarine
