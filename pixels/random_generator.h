#pragma once

#include <array>
#include <cstddef>
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
        return numberOf(state_);
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

    /// The number that a state gives when it is drawn.
    static constexpr float numberOf(uint32_t state) {
        // As an integer with a sign, which all processors convert in one step.
        return static_cast<float>(static_cast<int32_t>(state)) / 16777216.0F;
    }

    /// Draws that follow each other at a fixed distance, each computed by itself, so that many are
    /// computed at once.
    template <uint32_t distance, size_t length>
    class Draws {
      public:
        constexpr Draws() {
            uint32_t factor = 1;
            uint32_t addend = 0;
            for (size_t i = 0; i < length; ++i) {
                factors_[i] = factor;
                addends_[i] = addend;
                for (uint32_t k = 0; k < distance; ++k) {
                    factor *= multiplier;
                    addend = addend * multiplier + increment;
                }
            }
        }
        /// The number that is drawn i * distance draws after the one that led to `state`.
        float after(uint32_t state, size_t i) const {
            return numberOf((factors_[i] * state + addends_[i]) & mask);
        }

      private:
        std::array<uint32_t, length> factors_{};
        std::array<uint32_t, length> addends_{};
    };

  private:
    static constexpr uint32_t mask = 0xFFFFFF;
    static constexpr uint32_t multiplier = 16598013;
    static constexpr uint32_t increment = 12820163;

    uint32_t state_;
};

}  // namespace tessarine
