#include "neighbourhood_twin.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "filters/kernels.h"
#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

/// A factor near one at which a member divides by 0, or any other.
int32_t factorNear(std::mt19937& random, int32_t middle) {
    return random() % 3 == 0 ? middle - 3 + static_cast<int32_t>(random() % 7)
                             : randomFactor(random);
}

using FactorMember = PixelBuffer (cBitFilter::*)(int32_t);
using FactorTwin = PixelBuffer (*)(const PixelBuffer&, const Region&, int32_t);

void compareNear(const std::string& name, uint32_t seed, int32_t middle, FactorMember member,
                 FactorTwin twin, int rounds = 400) {
    compare(
        name, seed,
        [=](std::mt19937& random) {
            const int32_t factor = factorNear(random, middle);
            return Call{"(" + std::to_string(factor) + ")",
                        [=](cBitFilter& f) { return (f.*member)(factor); },
                        [=](const PixelBuffer& p, const Region& r) { return twin(p, r, factor); }};
        },
        rounds);
}

/// The arguments of a convolution.
struct Convolution {
    tFilterKernel kernel;
    bool keepMargins = false;

    Call call() const {
        const tFilterKernel k = kernel;
        const bool keep = keepMargins;
        std::string text = "(";
        for (int32_t row = 0; row < k.mskBits.side(); ++row)
            for (int32_t column = 0; column < k.mskBits.side(); ++column)
                text += std::to_string(k.mskBits.at(row, column)) + "|";
        text += " / " + std::to_string(k.Weight) + ", " + std::to_string(k.rFactor) + ", " +
                std::to_string(k.gFactor) + ", " + std::to_string(k.bFactor) +
                (keep ? ", keeping margins)" : ")");
        return {text,
                [=](cBitFilter& f) {
                    return f.MaskFilter(k.mskBits, k.Weight, k.rFactor, k.gFactor, k.bFactor, keep);
                },
                [=](const PixelBuffer& p, const Region& r) {
                    return twin::maskFilter(p, r, k.mskBits, k.Weight, k.rFactor, k.gFactor,
                                            k.bFactor, keep);
                }};
    }
};

TEST(NeighbourhoodTwin, MaskFilterAgreesForTheKernels) {
    compare(
        "MaskFilter", 1,
        [](std::mt19937& random) {
            Convolution convolution{GetFilterKernel(static_cast<int32_t>(random() % 14))};
            convolution.keepMargins = random() % 2 == 0;
            return convolution.call();
        },
        2000);
}

TEST(NeighbourhoodTwin, MaskFilterAgreesForAnyMask) {
    compare(
        "MaskFilter-any", 2,
        [](std::mt19937& random) {
            Convolution convolution;
            tFilterKernel& k = convolution.kernel;
            const auto side =
                static_cast<int32_t>(random() % 3 == 0 ? random() % 10 : 3 + 2 * (random() % 2));
            k.mskBits = KernelMask(side);
            // From weights whose sums fit 16 bits, over such as just don't, to wild ones.
            const auto kind = random() % 4;
            for (int32_t row = 0; row < side; ++row)
                for (int32_t column = 0; column < side; ++column) {
                    const auto bits = static_cast<int32_t>(random());
                    k.mskBits.at(row, column) = kind == 0   ? bits % 4
                                                : kind == 1 ? bits % 20
                                                : kind == 2 ? bits % 1000
                                                            : randomFactor(random);
                }
            const auto divisor = static_cast<int32_t>(random());
            k.Weight = random() % 4 == 0 ? randomFactor(random) : divisor % 20;
            k.bFactor = randomFactor(random);
            k.gFactor = random() % 2 == 0 ? k.bFactor : randomFactor(random);
            k.rFactor = random() % 2 == 0 ? k.bFactor : randomFactor(random);
            convolution.keepMargins = random() % 2 == 0;
            return convolution.call();
        },
        2000);
}

TEST(NeighbourhoodTwin, MaskFilterAgreesWhereSumsAreAtTheBoundsOf16Bits) {
    // 255 * 128 = 32640 still fits, 255 * 129 = 32895 does not.
    compare(
        "MaskFilter-bounds", 3,
        [](std::mt19937& random) {
            Convolution convolution;
            tFilterKernel& k = convolution.kernel;
            const int32_t side = random() % 2 == 0 ? 3 : 5;
            k.mskBits = KernelMask(side);
            int32_t left = 127 + static_cast<int32_t>(random() % 4);
            while (left > 0) {
                const int32_t part = std::min(left, 1 + static_cast<int32_t>(random() % 60));
                const auto place = static_cast<int32_t>(random() % (side * side));
                int32_t& weight = k.mskBits.at(place / side, place % side);
                weight += weight < 0 || (weight == 0 && random() % 4 == 0) ? -part : part;
                left -= part;
            }
            k.Weight = static_cast<int32_t>(random() % 300) - 150;
            k.rFactor = k.gFactor = k.bFactor = static_cast<int32_t>(random() % 256);
            return convolution.call();
        },
        200);
}

TEST(NeighbourhoodTwin, BlursAgreesForNearAndFarDistances) {
    compareNear("Blurs", 4, 2, &cBitFilter::Blurs, twin::blurs);
}

TEST(NeighbourhoodTwin, SoftenAgrees) {
    compareNear("SOFTEN", 5, 105, &cBitFilter::SOFTEN, twin::soften);
}

TEST(NeighbourhoodTwin, SharpenAgrees) {
    compareNear("SHARPEN", 6, 108, &cBitFilter::SHARPEN, twin::sharpen);
}

TEST(NeighbourhoodTwin, EdgeEnhanceAgrees) {
    compareNear("EDGEENHANCE", 7, -1, &cBitFilter::EDGEENHANCE, twin::edgeEnhance);
}

TEST(NeighbourhoodTwin, ContourAgrees) {
    compare("CONTOUR", 8, [](std::mt19937& random) {
        const int32_t factor = factorNear(random, 254);
        const auto colour = static_cast<int32_t>(random());
        return Call{"(" + std::to_string(factor) + ", " + std::to_string(colour) + ")",
                    [=](cBitFilter& f) { return f.CONTOUR(factor, colour); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::contour(p, r, factor, colour);
                    }};
    });
}

TEST(NeighbourhoodTwin, SketchAgrees) {
    compare("SKETCH", 9, [](std::mt19937& random) {
        const int32_t factor = factorNear(random, 254);
        const bool bw = random() % 2 == 0;
        const auto colour = static_cast<int32_t>(random());
        return Call{"(" + std::to_string(factor) + ", " + std::to_string(bw) + ", " +
                        std::to_string(colour) + ")",
                    [=](cBitFilter& f) { return f.SKETCH(factor, bw, colour); },
                    [=](const PixelBuffer& p, const Region& r) {
                        return twin::sketch(p, r, factor, bw, colour);
                    }};
    });
}

// The copies of the last column and row meet most often on the smallest pictures.
TEST(NeighbourhoodTwin, EmbossAgreesWithItsSequence) {
    compareNear("EMBOSS", 10, 10, &cBitFilter::EMBOSS, twin::emboss, 1200);
}

TEST(NeighbourhoodTwin, EngraveAgreesWithItsSequence) {
    compareNear("Engrave", 11, 10, &cBitFilter::Engrave, twin::engrave, 1200);
}

TEST(NeighbourhoodTwin, EmbossAgreesOnAllTinyPicturesWithRegionsIntoTheMargin) {
    std::mt19937 random(12);
    for (int32_t width = 0; width <= 3; ++width)
        for (int32_t height = 0; height <= 3; ++height)
            for (int32_t left = -2; left <= 1; ++left)
                for (int32_t top = -2; top <= 1; ++top)
                    for (int32_t right = left + 1; right <= width + 2; ++right)
                        for (int32_t bottom = top + 1; bottom <= height + 2; ++bottom) {
                            PixelBuffer picture(width, height);
                            Pixel* block = picture.writableBlock();
                            for (size_t i = 0; i < picture.pixelCount(); ++i) {
                                const auto bits = static_cast<uint32_t>(random());
                                block[i] = {
                                    static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                                    static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(i)};
                            }
                            const auto region = regionOf({{left, top, right, bottom}});
                            cBitFilter filter;
                            filter.timeGetTime = [] { return 0U; };
                            filter.Bits(picture);
                            filter.BitsRegion(region);
                            ASSERT_TRUE(sameBuffer("tiny-EMBOSS", filter.EMBOSS(7),
                                                   twin::emboss(picture, *region, 7)))
                                << width << " by " << height << ", region " << left << ", " << top
                                << ", " << right << ", " << bottom;
                        }
}

TEST(NeighbourhoodTwin, ReliefAgrees) {
    comparePlain("RELIEF", 13, &cBitFilter::RELIEF, twin::relief);
}

TEST(NeighbourhoodTwin, DilateAgrees) {
    comparePlain("DILATE", 14, &cBitFilter::DILATE, twin::dilate);
}

TEST(NeighbourhoodTwin, ErodeAgrees) { comparePlain("ERODE", 15, &cBitFilter::ERODE, twin::erode); }

TEST(NeighbourhoodTwin, RankFilterN4AgreesForAnyType) {
    compareNear("RankFilterN4", 16, 1, &cBitFilter::RankFilterN4, twin::rankFilterN4);
}

TEST(NeighbourhoodTwin, RankFilterNDAgreesForAnyType) {
    compareNear("RankFilterND", 17, 1, &cBitFilter::RankFilterND, twin::rankFilterND);
}

TEST(NeighbourhoodTwin, PaintingAgrees) {
    comparePlain("PAINTING", 18, &cBitFilter::PAINTING, twin::painting);
}

TEST(NeighbourhoodTwin, DissolveAgrees) {
    comparePlain("Dissolve", 19, &cBitFilter::Dissolve, twin::dissolve);
}

}  // namespace
}  // namespace tessarine::tests
