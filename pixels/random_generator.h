#pragma once

#include <cstdint>

namespace tessarine {

/// The random numbers of the filters: a linear congruential generator on 24 bits. Each draw takes
/// the state s to (16598013 * s + 12820163) modulo 2^24.
class RandomGenerator {
  public:
    static constexpr uint32_t firstState = 327680;

    /// Only the low 24 bits of `state` count.
    explicit constexpr RandomGenerator(uint32_t state = firstState) : state_(state & mask) {}

    constexpr uint32_t state() const { return state_; }

    /// The next number, from 0 up to but excluding 1.
    constexpr float draw() {
        state_ = (state_ * multiplier + increment) & mask;
        return static_cast<float>(state_) / 16777216.0F;
    }

    /// The generator as it stands after `draws` more draws. Takes steps by the logarithm of
    /// `draws`: each step doubles the distance that one application of the map covers.
    constexpr RandomGenerator after(uint64_t draws) const {
        uint32_t state = state_;
        uint32_t factor = multiplier;
        uint32_t addend = increment;
        // The sequence repeats after 2^24 draws.
        for (auto left = static_cast<uint32_t>(draws) & mask; left != 0; left >>= 1) {
            if ((left & 1) != 0) state = (state * factor + addend) & mask;
            addend = (factor + 1) * addend;
            factor *= factor;
        }
        return RandomGenerator(state);
    }

  private:
    static constexpr uint32_t mask = 0xFFFFFF;
    static constexpr uint32_t multiplier = 16598013;
    static constexpr uint32_t increment = 12820163;

    uint32_t state_;
};

}  // namespace tessarine
