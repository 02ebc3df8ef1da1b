#pragma once

#include <cstdlib>

/// Ends the fuzzer with the input in hand where something does not hold.
inline void expect(bool holds) {
    if (!holds) std::abort();
}
