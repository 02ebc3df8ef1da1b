#include "recipes_twin.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "twin_comparison.h"

namespace tessarine::tests {
namespace {

TEST(RecipesTwin, OldPhotoAgrees) {
    comparePlain("OLDPHOTO", 31, &cBitFilter::OLDPHOTO, twin::oldPhoto);
}

TEST(RecipesTwin, SpecialColorsAgrees) {
    compare("SpecialColors", 32, [](std::mt19937& random) {
        const auto truth = [&random]() -> int16_t {
            const auto bits = random();
            return bits % 4 == 0 ? static_cast<int16_t>(bits >> 8) : bits % 4 == 1 ? 0 : -1;
        };
        const int16_t r = truth();
        const int16_t g = truth();
        const int16_t b = truth();
        return Call{
            "(" + std::to_string(r) + ", " + std::to_string(g) + ", " + std::to_string(b) + ")",
            [=](cBitFilter& f) { return f.SpecialColors(r, g, b); },
            [=](const PixelBuffer& p, const Region& region) {
                return twin::specialColors(p, region, r, g, b);
            }};
    });
}

TEST(RecipesTwin, ClassyColorsAgrees) {
    compare(
        "ClassyColors", 33,
        [](std::mt19937& random) {
            const auto bits = random();
            const auto effect = static_cast<int16_t>(bits % 16 == 0 ? bits >> 8 : bits % 13);
            return Call{"(" + std::to_string(effect) + ")",
                        [=](cBitFilter& f) { return f.ClassyColors(effect); },
                        [=](const PixelBuffer& p, const Region& region) {
                            return twin::classyColors(p, region, effect);
                        }};
        },
        1200);
}

TEST(RecipesTwin, ThermiqueAgrees) {
    comparePlain("THERMIQUE", 34, &cBitFilter::THERMIQUE, twin::thermique);
}

TEST(RecipesTwin, XblackAgrees) { comparePlain("XBLACK", 35, &cBitFilter::XBLACK, twin::xblack); }

TEST(RecipesTwin, PhotocopAgrees) {
    comparePlain("PHOTOCOP", 36, &cBitFilter::PHOTOCOP, twin::photocop);
}

}  // namespace
}  // namespace tessarine::tests
