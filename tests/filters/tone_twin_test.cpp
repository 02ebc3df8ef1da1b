#include "tone_twin.h"

#include <functional>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "pixels/bit_filter.h"
#include "support/comparison.h"
#include "support/pictures.h"
#include "support/random_regions.h"

// The library against its slow twin, on random pictures, regions and arguments.

namespace tessarine::tests {
namespace {

constexpr int rounds = 400;

/// A picture whose size, colours, margin and fourth bytes are random. One in four has few colours
/// and one in eight a single one, for the statistics.
PixelBuffer randomPicture(std::mt19937& random) {
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
};

std::optional<PixelBuffer> resultOf(const std::function<PixelBuffer()>& call) {
    try {
        return call();
    } catch (const StatementFailed&) {
        return std::nullopt;
    }
}

/// Compares `makeCall(random)` in many rounds, each with another picture, region and arguments.
void compare(const std::string& name, uint32_t seed,
             const std::function<Call(std::mt19937&)>& makeCall) {
    std::mt19937 random(seed);
    for (int i = 0; i < rounds && !testing::Test::HasFailure(); ++i) {
        const PixelBuffer picture = randomPicture(random);
        const RegionHandle region = randomRegion(random, picture.width(), picture.height());
        const Call call = makeCall(random);
        cBitFilter filter;
        filter.timeGetTime = [] { return 0U; };
        filter.Bits(picture);
        filter.BitsRegion(region);

        const auto result = resultOf([&] { return call.library(filter); });
        const auto expected = resultOf([&] { return call.twin(picture, *region); });
        ASSERT_EQ(result.has_value(), expected.has_value()) << name << call.text;
        if (!expected) continue;
        ASSERT_TRUE(sameBuffer("twin-" + name, *result, *expected))
            << name << call.text << " in round " << i << " on " << picture.width() << " by "
            << picture.height();
        ASSERT_TRUE(filter.Bits() == picture) << name << " changed its source";
    }
}

/// A member of one factor.
void compareFactor(const std::string& name, uint32_t seed,
                   PixelBuffer (cBitFilter::*member)(int32_t),
                   PixelBuffer (*twin)(const PixelBuffer&, const Region&, int32_t)) {
    compare(name, seed, [=](std::mt19937& random) {
        const int32_t factor = randomFactor(random);
        return Call{"(" + std::to_string(factor) + ")",
                    [=](cBitFilter& f) { return (f.*member)(factor); },
                    [=](const PixelBuffer& p, const Region& r) { return twin(p, r, factor); }};
    });
}

void comparePlain(const std::string& name, uint32_t seed, PixelBuffer (cBitFilter::*member)(),
                  PixelBuffer (*twin)(const PixelBuffer&, const Region&)) {
    compare(name, seed, [=](std::mt19937&) {
        return Call{"()", [=](cBitFilter& f) { return (f.*member)(); }, twin};
    });
}

TEST(ToneTwin, BrightnessAgrees) {
    compareFactor("BRIGHTNESS", 1, &cBitFilter::BRIGHTNESS, twin::brightness);
}

TEST(ToneTwin, ContrastAgrees) {
    compareFactor("Contrast", 2, &cBitFilter::Contrast, twin::contrast);
}

TEST(ToneTwin, GammaCorrectionAgrees) {
    compareFactor("GammaCorrection", 3, &cBitFilter::GammaCorrection, twin::gammaCorrection);
}

TEST(ToneTwin, EqualizeAgrees) {
    comparePlain("Equalize", 4, &cBitFilter::Equalize, twin::equalize);
}

TEST(ToneTwin, SaturationAgrees) {
    compareFactor("SATURATION", 5, &cBitFilter::SATURATION, twin::saturation);
}

TEST(ToneTwin, InvertAgrees) { comparePlain("Invert", 6, &cBitFilter::Invert, twin::invert); }

TEST(ToneTwin, GreyScaleAgrees) {
    comparePlain("GreyScale", 7, &cBitFilter::GreyScale, twin::greyScale);
}

TEST(ToneTwin, ThresholdAgrees) {
    compareFactor("Threshold", 8, &cBitFilter::Threshold, twin::threshold);
}

TEST(ToneTwin, ReductionAgreesAndFailsWhereItsTwinFails) {
    compareFactor("Reduction", 9, &cBitFilter::Reduction, twin::reduction);
    compare("Reduction", 10, [](std::mt19937& random) {
        const int32_t factor = static_cast<int32_t>(random() % 5) - 3;
        return Call{
            "(" + std::to_string(factor) + ")", [=](cBitFilter& f) { return f.Reduction(factor); },
            [=](const PixelBuffer& p, const Region& r) { return twin::reduction(p, r, factor); }};
    });
}

TEST(ToneTwin, KillChannelAgrees) {
    compare("KillChannel", 11, [](std::mt19937& random) {
        const auto bits = random();
        const bool r = bits & 1;
        const bool g = bits & 2;
        const bool b = bits & 4;
        return Call{"(" + std::to_string(bits & 7) + ")",
                    [=](cBitFilter& f) { return f.KillChannel(r, g, b); },
                    [=](const PixelBuffer& p, const Region& region) {
                        return twin::killChannel(p, region, r, g, b);
                    }};
    });
}

TEST(ToneTwin, ShiftRgbAgrees) {
    compare("ShiftRGB", 12, [](std::mt19937& random) {
        const int32_t r = randomFactor(random);
        const int32_t g = randomFactor(random);
        const int32_t b = randomFactor(random);
        return Call{
            "(" + std::to_string(r) + ", " + std::to_string(g) + ", " + std::to_string(b) + ")",
            [=](cBitFilter& f) { return f.ShiftRGB(r, g, b); },
            [=](const PixelBuffer& p, const Region& region) {
                return twin::shiftRgb(p, region, r, g, b);
            }};
    });
}

TEST(ToneTwin, SwapRgbAgreesForTheThreeChannels) {
    compare("SwapRGB", 13, [](std::mt19937& random) {
        const auto mix = [&random] {
            const auto bits = random();
            return twin::Mix{static_cast<int32_t>(bits % 3), (bits & 8) != 0, (bits & 48) == 0};
        };
        const twin::Mix r = mix();
        const twin::Mix g = mix();
        const twin::Mix b = mix();
        return Call{"(" + std::to_string(r.bank) + ", " + std::to_string(g.bank) + ", " +
                        std::to_string(b.bank) + ", ...)",
                    [=](cBitFilter& f) {
                        return f.SwapRGB(r.bank, g.bank, b.bank, r.inv, g.inv, b.inv, r.kill,
                                         g.kill, b.kill);
                    },
                    [=](const PixelBuffer& p, const Region& region) {
                        return twin::swapRgb(p, region, r, g, b);
                    }};
    });
}

TEST(ToneTwin, SwapBanksAgrees) {
    compare("SwapBanks", 14, [](std::mt19937& random) {
        const int32_t modo =
            random() % 5 == 0 ? randomFactor(random) : static_cast<int32_t>(random() % 7);
        return Call{"(" + std::to_string(modo) + ")",
                    [=](cBitFilter& f) { return f.SwapBanks(modo); },
                    [=](const PixelBuffer& p, const Region& region) {
                        return twin::swapBanks(p, region, modo);
                    }};
    });
}

}  // namespace
}  // namespace tessarine::tests
