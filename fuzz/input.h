#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// Takes an input apart from front to back. Past its end everything is 0, so that every input is
/// a whole one and a fuzzer's mutations stay close to what they were made from.
class Input {
  public:
    Input(const uint8_t* data, size_t size) : left_(data, size) {}

    uint8_t u8() {
        if (left_.empty()) return 0;
        const uint8_t byte = left_.front();
        left_ = left_.subspan(1);
        return byte;
    }
    int16_t i16() { return static_cast<int16_t>(u8() | u8() << 8); }
    int32_t i32() {
        uint32_t word = 0;
        for (int shift = 0; shift < 32; shift += 8)
            word |= uint32_t{u8()} << shift;
        return static_cast<int32_t>(word);
    }
    /// From 0 up to but without `count`, at most 256.
    int32_t below(int32_t count) { return u8() % count; }
    bool flag() { return (u8() & 1) != 0; }
    /// At most `most` bytes.
    std::span<const uint8_t> take(size_t most) {
        const std::span<const uint8_t> taken = left_.first(std::min(most, left_.size()));
        left_ = left_.subspan(taken.size());
        return taken;
    }
    std::span<const uint8_t> rest() { return take(left_.size()); }

  private:
    std::span<const uint8_t> left_;
};

inline std::string textOf(std::span<const uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }
