#pragma once

#include <functional>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "pixels/bit_filter.h"
#include "support/comparison.h"
#include "support/pictures.h"
#include "support/random_regions.h"

// The library against its slow twins, on random pictures, regions and arguments.

namespace tessarine::tests {

/// A picture whose size, colours, margin and fourth bytes are random. One in four has few colours
/// and one in eight a single one, for the statistics.
inline PixelBuffer randomPicture(std::mt19937& random) {
    const auto side = [&random] { return static_cast<int32_t>(random() % 71); };
    int32_t width = side();
    int32_t height = side();
    if (random() % 8 == 0) width = 1;
    if (random() % 8 == 0) height = 1;
    PixelBuffer picture(width, height);
    const auto kind = random() % 8;
    const auto base = static_cast<uint32_t>(random());
    Pixel* block = picture.writableBlock();
    for (size_t i = 0; i < picture.pixelCount(); ++i) {
        const auto bits = static_cast<uint32_t>(random());
        const uint32_t colour = kind == 0 ? base : kind < 3 ? base ^ (bits & 0x03030303U) : bits;
        block[i] = {static_cast<uint8_t>(colour), static_cast<uint8_t>(colour >> 8),
                    static_cast<uint8_t>(colour >> 16), static_cast<uint8_t>(bits >> 24)};
    }
    return picture;
}

/// One call with its arguments fixed, on the library and on the twin.
struct Call {
    std::string text;
    std::function<PixelBuffer(cBitFilter&)> library;
    std::function<PixelBuffer(const PixelBuffer&, const Region&)> twin;
    /// Where both draw random numbers: the state from which the library starts, and what the twin
    /// leaves behind.
    std::optional<uint32_t> firstState = std::nullopt;
    std::function<uint32_t()> twinsState = nullptr;
};

inline std::optional<PixelBuffer> resultOf(const std::function<PixelBuffer()>& call) {
    try {
        return call();
    } catch (const StatementFailed&) {
        return std::nullopt;
    }
}

/// Compares `makeCall(random)` in many rounds, each with another picture, region and arguments.
inline void compare(const std::string& name, uint32_t seed,
                    const std::function<Call(std::mt19937&)>& makeCall, int rounds = 400) {
    std::mt19937 random(seed);
    for (int i = 0; i < rounds && !testing::Test::HasFailure(); ++i) {
        const PixelBuffer picture = randomPicture(random);
        const RegionHandle region = randomRegion(random, picture.width(), picture.height());
        const Call call = makeCall(random);
        cBitFilter filter;
        filter.timeGetTime = [] { return 0U; };
        filter.Bits(picture);
        filter.BitsRegion(region);
        if (call.firstState) filter.random = RandomGenerator(*call.firstState);

        const auto result = resultOf([&] { return call.library(filter); });
        const auto expected = resultOf([&] { return call.twin(picture, *region); });
        ASSERT_EQ(result.has_value(), expected.has_value()) << name << call.text;
        if (!expected) continue;
        ASSERT_TRUE(sameBuffer("twin-" + name, *result, *expected))
            << name << call.text << " in round " << i << " on " << picture.width() << " by "
            << picture.height();
        ASSERT_TRUE(filter.Bits() == picture) << name << " changed its source";
        if (call.twinsState) {
            ASSERT_EQ(filter.random.state(), call.twinsState()) << name << call.text;
        }
    }
}

/// A member of one factor.
inline void compareFactor(const std::string& name, uint32_t seed,
                          PixelBuffer (cBitFilter::*member)(int32_t),
                          PixelBuffer (*twin)(const PixelBuffer&, const Region&, int32_t)) {
    compare(name, seed, [=](std::mt19937& random) {
        const int32_t factor = randomFactor(random);
        return Call{"(" + std::to_string(factor) + ")",
                    [=](cBitFilter& f) { return (f.*member)(factor); },
                    [=](const PixelBuffer& p, const Region& r) { return twin(p, r, factor); }};
    });
}

inline void comparePlain(const std::string& name, uint32_t seed,
                         PixelBuffer (cBitFilter::*member)(),
                         PixelBuffer (*twin)(const PixelBuffer&, const Region&)) {
    compare(name, seed, [=](std::mt19937&) {
        return Call{"()", [=](cBitFilter& f) { return (f.*member)(); }, twin};
    });
}

}  // namespace tessarine::tests
