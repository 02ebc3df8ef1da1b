#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "pixels/failures.h"

// The conversions of the pixel arithmetic. Integers wrap at 32 bits (the build says so to the
// compiler); a float becomes an integer by rounding to nearest, ties to even.

namespace tessarine {

/// Rounds to the nearest 32-bit integer, ties to even. What does not fit, not-a-number included,
/// gives the lowest integer on every machine.
inline int32_t roundToInteger(double value) {
    // Tested before rounding, so that rounding is one instruction: the halves at both ends go to
    // the even neighbour, below into the range and above out of it.
    if (value >= -2147483648.5 && value < 2147483647.5)
        return static_cast<int32_t>(std::llrint(value));
    return std::numeric_limits<int32_t>::min();
}

/// roundToInteger() without a branch, for loops over many numbers, which becomes vector code.
inline int32_t roundInLoop(double value) {
    // A double of this size has no fraction: adding it rounds, ties to even.
    constexpr double wholes = 6755399441055744.0;
    const bool fits = (value >= -2147483648.5) & (value < 2147483647.5);
    const double kept = fits ? value : -2147483648.0;
    return static_cast<int32_t>((kept + wholes) - wholes);
}

/// Stores a value with the precision of 32 bits, where an intermediate one is kept so.
constexpr float single(double value) { return static_cast<float>(value); }

/// roundToInteger() for loops over many numbers, which becomes vector code: none of them may lie
/// outside 32 bits. The sum has no room for a fraction, and so it is rounded as a sum; the whole
/// number is its lowest bits.
inline int32_t roundFitting(double value) {
    constexpr double wholeNumbers = 6755399441055744.0;  // 1.5 * 2^52
    return static_cast<int32_t>(std::bit_cast<int64_t>(value + wholeNumbers));
}

/// Limits an integer to the range of 32 bits.
inline int32_t clampToInteger(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

/// Whole-number division, truncated towards zero. The one quotient that 32 bits do not hold,
/// -2147483648 by -1, wraps.
/// \throws StatementFailed for a divisor of 0.
inline int32_t quotient(int32_t dividend, int32_t divisor) {
    if (divisor == 0) throw StatementFailed("division by zero");
    return divisor == -1 ? -dividend : dividend / divisor;
}

/// quotient() by way of doubles, for loops over many numbers, which becomes vector code. Doubles
/// hold every 32-bit integer, and no quotient of two of them is so near to a whole number that it
/// would round up to it. The divisor is not 0, and -2147483648 by -1 is not asked for.
inline int32_t quotientInLoop(int32_t dividend, int32_t divisor) {
    return static_cast<int32_t>(static_cast<double>(dividend) / divisor);
}

/// Division of numbers up to 32767 by one that stays the same, in lanes of 16 bits.
class NarrowDivisor {
  public:
    /// \param divisor 1 to 32767
    explicit NarrowDivisor(int32_t divisor) {
        // 2^shift_ is the lowest power not below the divisor, and the factor 2^(shift_ + 15) times
        // the divisor's inverse, rounded up: for no number does the error reach the next quotient.
        while (1 << shift_ < divisor)
            ++shift_;
        factor_ = static_cast<uint16_t>(((1 << (shift_ + 15)) + divisor - 1) / divisor);
    }
    /// \param dividend up to 32767
    uint16_t quotient(uint16_t dividend) const {
        const auto twice = static_cast<uint16_t>(2 * dividend);
        return static_cast<uint16_t>(static_cast<uint32_t>(twice) * factor_ >> 16 >> shift_);
    }

  private:
    int shift_ = 0;
    uint16_t factor_;
};

/// Limits an integer to the range of a byte.
inline uint8_t clampToByte(int32_t value) {
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

/// The same as a number of 32 bits, for loops over many.
constexpr int32_t clampToLevel(int32_t value) {
    const int32_t notBelow = value > 0 ? value : 0;
    return notBelow < 255 ? notBelow : 255;
}

/// The low eight bits of an integer: what a byte keeps of it where nothing limits it first.
inline uint8_t lowByte(int32_t value) { return static_cast<uint8_t>(value & 255); }

/// Whether toByte() does not fail.
inline bool fitsByte(double value) { return value >= -0.5 && value < 255.5; }

/// Rounds to a byte.
/// \throws StatementFailed where the rounded value is outside 0 to 255 or is not a number.
inline uint8_t toByte(double value) {
    if (!fitsByte(value)) throw StatementFailed("no byte holds this value");
    return static_cast<uint8_t>(std::llrint(value));
}

}  // namespace tessarine
