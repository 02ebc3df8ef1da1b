#pragma once

#include <cstdint>
#include <optional>

// What is left to us goes by these figures.
//
// 10 seconds of processor time and one more for each megapixel: the slowest honest pictures, large
// metafiles full of curves and text, take a small part of that.
//
// 512 MiB and 64 bytes a pixel, up to the ceiling: the hungriest decoders hold a picture of 16 bits
// a channel twice and its result once, 20 bytes a pixel; a metafile has the text of its drawing in
// memory too.
//
// A picture of 300 megapixels takes 1.2 GB as a result and, with most formats, 0.9 to 2.4 GB on the
// way: it passes where the ceiling is 4 GiB, on a machine of 8 GiB that is.

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

/// The limits for a picture of so many pixels: time as wished, or else in proportion to the pixels;
/// memory in proportion, never above the ceiling.
Limits limitsFor(uint64_t pixels, const LimitWishes& wishes);

/// The most memory that a helper may take whatever the picture: as wished, or else half of the
/// machine's (or of what this process's control group may use), between 1 and 8 GiB.
uint64_t memoryCeiling(const LimitWishes& wishes);

}  // namespace tessarine
