#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

#include "imagefiles/picture_source.h"

namespace tessarine {

// What a library takes for a file. Both behave as the C library's streams do, since that is what
// the libraries are made for: a position beyond the end is none of their business until they read.

/// Bytes that are read as a file is.
class MemoryReader {
  public:
    explicit MemoryReader(Bytes bytes) : bytes_(bytes) {}

    /// \return the whole items read; the rest of an item cut short is copied all the same
    size_t read(void* target, size_t itemSize, size_t count);
    /// \return false, and the position as it was, for one before the start
    bool seek(int64_t offset, int origin = SEEK_SET);
    int64_t tell() const { return position_; }
    /// From now on the byte at `place` reads as `value`, though the bytes stay as they are.
    void pretend(size_t place, uint8_t value) { pretended_ = {static_cast<int64_t>(place), value}; }
    bool isAtEnd() const { return position_ >= static_cast<int64_t>(bytes_.size()); }
    Bytes bytes() const { return bytes_; }

  private:
    struct Pretended {
        int64_t place;
        uint8_t value;
    };

    Bytes bytes_;
    int64_t position_ = 0;
    std::optional<Pretended> pretended_;
};

/// Bytes that are written as a file is. What a position beyond the end leaves out becomes 0.
class MemoryWriter {
  public:
    /// \return how many bytes were taken; none where memory does not suffice
    size_t write(const void* source, size_t count);
    bool seek(int64_t offset, int origin = SEEK_SET);
    int64_t tell() const { return position_; }
    Bytes bytes() const { return bytes_; }
    /// Whether memory did not suffice for a write.
    bool ranOut() const { return ranOut_; }

  private:
    std::vector<uint8_t> bytes_;
    int64_t position_ = 0;
    bool ranOut_ = false;
};

}  // namespace tessarine
