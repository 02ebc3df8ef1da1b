#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine {

/// A share of a basket. Of every `count` neighbours each share has one, so that each has its part
/// of a folder of large pictures; which one of them changes from one row of neighbours to the next,
/// so that none has all the large ones where every second is large. It hangs on number and count
/// alone: the shares of one run may be taken by different machines and versions of this program.
struct Shard {
    int32_t index = 0;  ///< from 0 to count - 1
    int32_t count = 1;

    /// Its places, from 0 and rising, among so many pictures.
    std::vector<size_t> placesIn(size_t pictures) const;
    /// "K/N", as on the command line.
    std::string text() const;

    /// Which share of `count` has a place, as its index.
    static int32_t ownerOf(size_t place, int32_t count);
    /// Reads "K/N"; nothing where it is none.
    static std::optional<Shard> fromText(std::string_view text);
};

/// Reads a variable of the environment; null where it is not set.
using Environment = std::function<const char*(const char*)>;

/// The share that --shard names: "K/N", or "auto" for that of this task of a job array, which the
/// scheduler tells in the environment.
/// \throws Refusal (commandLine) where it is neither, or the environment does not tell it
Shard shardOf(const std::string& text, const Environment& environment);

}  // namespace tessarine
