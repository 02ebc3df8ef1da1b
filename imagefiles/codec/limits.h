#pragma once

#include <cstdint>
#include <optional>

namespace tessarine {

/// What one picture may take of a helper process.
struct Limits {
    double seconds = 0;  ///< of processor time; the clock on the wall may show three times that
    uint64_t memoryBytes = 0;  ///< of address space beyond what the idle helper has
};

/// What a person asked for; nothing where it is left to us.
struct LimitWishes {
    std::optional<double> seconds;        ///< --timeout: processor time and wall clock alike
    std::optional<uint64_t> memoryBytes;  ///< --memory
};

/// The limits for a picture of so many pixels: as wished, or else in proportion to the pixels.
Limits limitsFor(uint64_t pixels, const LimitWishes& wishes);

/// The most memory that a helper may take whatever the picture: as wished, or else half of the
/// machine's, between 1 and 8 GiB.
uint64_t memoryCeiling(const LimitWishes& wishes);

}  // namespace tessarine
