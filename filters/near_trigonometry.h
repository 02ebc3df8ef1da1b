#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "pixels/numbers.h"

// Angles, sines and cosines to about twelve digits, as arithmetic without a branch, which becomes
// vector code where a call of the library does not. What is rounded afterwards is nearly always
// known from so many digits; where it is not, these say so, and the library is asked.

namespace tessarine {

/// A rounded value that is the right one where it is sure.
template <class Value>
struct Near {
    Value value = 0;
    bool isSure = false;
};

/// Rounds what is known to within `error`, which is far below 1.
inline Near<int32_t> nearInteger(double value, double error) {
    constexpr double wholes = 6755399441055744.0;
    constexpr double tooLarge = 1073741824.0;
    const double whole = (value + wholes) - wholes;
    const bool isSure = (std::abs(value - whole) < 0.5 - error) & (std::abs(whole) < tooLarge);
    return {static_cast<int32_t>(isSure ? whole : 0.0), isSure};
}

/// The arctangent of a number from 0 to 1, to within 1e-13 of itself.
inline double nearArctangent(double value) {
    // A polynomial in the square, through the arctangent at Chebyshev's points of 0 to 1.
    constexpr double factors[] = {
        -0.00010950133737292665, 0.0009961348991062624, -0.0042695010966784085,
        0.011594726016119614,    -0.02279206378279654,  0.0354478304883713,
        -0.047005235904944216,   0.056826465091119466,  -0.06613494495894422,
        0.07681984916045911,     -0.0908950250900279,   0.11110983774962185,
        -0.14285707246678706,    0.19999999793953496,   -0.33333333330931053,
        0.9999999999999531};
    const double square = value * value;
    double sum = 0;
#pragma GCC unroll 16
    for (const double factor : factors)
        sum = sum * square + factor;
    return value * sum;
}

/// cBitFilter::GetAngle(dX, dY).
inline Near<float> nearAngle(int32_t dX, int32_t dY) {
    constexpr double pi = 3.141592F;
    constexpr double quarter = 1.5707963267948966;
    constexpr double error = 1e-12;
    const double width = std::abs(static_cast<double>(dX));
    const double height = std::abs(static_cast<double>(dY));
    const double flat = nearArctangent(std::min(width, height) / std::max(width, height));
    const double steep = height > width ? quarter - flat : flat;
    const bool isOnAxis = dX == 0;
    const double size = isOnAxis ? pi / 2 : steep;
    const double play = isOnAxis ? 0 : size * error;
    const double turn = dX < 0 ? pi : 0;
    const double sign = (isOnAxis ? dY < 1 : (dY < 0) != (dX < 0)) ? -1 : 1;
    const float low = single(sign * (size - play) + turn);
    const float high = single(sign * (size + play) + turn);
    return {low, low == high};
}

struct SineAndCosine {
    double sine = 0;
    double cosine = 0;
};

/// Both of an angle of at most 2^31 radians, to within `sineError`.
constexpr double sineError = 1e-11;
constexpr double largestAngle = 2147483648.0;
inline SineAndCosine nearSineAndCosine(double angle) {
    // The angle less a whole number of quarter turns, which is at most an eighth of a turn. A
    // quarter turn is cut in pieces that have few enough digits for exact products.
    constexpr double quartersOfRadian = 0.6366197723675814;
    constexpr double quarterHigh = 0x1.921fbp+0;
    constexpr double quarterMiddle = 0x1.5110bp-22;
    constexpr double quarterLow = 0x1.18469898cc517p-44;
    constexpr double wholes = 6755399441055744.0;
    const double shifted = angle * quartersOfRadian + wholes;
    const auto quarters = std::bit_cast<uint64_t>(shifted);
    const double k = shifted - wholes;
    const double a = ((angle - k * quarterHigh) - k * quarterMiddle) - k * quarterLow;

    const double square = a * a;
    double sum = 1.0 / 6227020800;
    sum = sum * square - 1.0 / 39916800;
    sum = sum * square + 1.0 / 362880;
    sum = sum * square - 1.0 / 5040;
    sum = sum * square + 1.0 / 120;
    sum = sum * square - 1.0 / 6;
    const double sine = a + a * square * sum;
    sum = 1.0 / 479001600;
    sum = sum * square - 1.0 / 3628800;
    sum = sum * square + 1.0 / 40320;
    sum = sum * square - 1.0 / 720;
    sum = sum * square + 1.0 / 24;
    sum = sum * square - 0.5;
    const double cosine = 1 + square * sum;

    // An odd quarter exchanges the two; the signs go by the two lowest bits.
    const bool isOdd = (quarters & 1) != 0;
    const auto negated = [](double value, uint64_t isNegative) {
        return std::bit_cast<double>(std::bit_cast<uint64_t>(value) ^ isNegative << 63);
    };
    return {negated(isOdd ? cosine : sine, quarters >> 1 & 1),
            negated(isOdd ? sine : cosine, (quarters + 1) >> 1 & 1)};
}

}  // namespace tessarine
