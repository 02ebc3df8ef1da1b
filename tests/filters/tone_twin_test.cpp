#include "tone_twin.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

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
