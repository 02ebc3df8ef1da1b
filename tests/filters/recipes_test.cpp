#include <cstdint>

#include <gtest/gtest.h>

#include "member_checks.h"
#include "pixels/bit_filter.h"
#include "support/comparison.h"
#include "support/engine.h"

// The recipes by values worked out by hand. Pixels are written blue, green, red, fourth.

namespace tessarine::tests {
namespace {

/// A picture of all mixtures of levels at which roundings and comparisons turn.
PixelBuffer turningPoints() {
    constexpr uint8_t levels[] = {0,   1,   2,   3,   63,  64,  100, 126,
                                  127, 128, 129, 200, 252, 253, 254, 255};
    return drawBuffer(256, 16, [&](int32_t x, int32_t y) {
        return Pixel{levels[x % 16], levels[x / 16], levels[y], static_cast<uint8_t>(x)};
    });
}

TEST(Recipes, OldPhotoLeavesBlueFree) {
    Engine engine(rowOf({{255, 0, 0, 1}, {0, 100, 0, 2}, {0, 0, 100, 3}, {255, 255, 255, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.OLDPHOTO()),
              (Pixels{{255, 18, 18, 1}, {0, 71, 71, 2}, {0, 22, 22, 3}, {255, 255, 255, 4}}));
}

TEST(Recipes, OldPhotoRoundsToNearest) {
    // 0.071 * 7 = 0.497; 0.071 * 8 = 0.568; 0.707 * 2 + 0.071 = 1.485.
    Engine engine(rowOf({{7, 0, 0, 0}, {8, 0, 0, 0}, {1, 2, 0, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.OLDPHOTO()),
              (Pixels{{7, 0, 0, 0}, {8, 1, 1, 0}, {1, 1, 1, 0}}));
}

TEST(Recipes, SpecialColorsOfAllThreeChangesNothingAndOfNoneGivesBlack) {
    const PixelBuffer picture = randomBuffer(9, 9, 1);
    Engine engine(picture);
    EXPECT_EQ(engine.filter.SpecialColors(-1, -1, -1), picture);
    const PixelBuffer black = drawBuffer(9, 9, [&](int32_t x, int32_t y) {
        return x < 4 ? Pixel{0, 0, 0, picture.at(x, y).fourth} : picture.at(x, y);
    });
    engine.keepTo({{0, 0, 4, 9}});
    EXPECT_EQ(engine.filter.SpecialColors(0, 0, 0), black);
}

TEST(Recipes, SpecialColorsSwitchesEachChannelOffByItself) {
    Engine engine(rowOf({{1, 2, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SpecialColors(0, -1, -1)), (Pixels{{1, 2, 0, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SpecialColors(-1, 0, -1)), (Pixels{{1, 0, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SpecialColors(-1, -1, 0)), (Pixels{{0, 2, 3, 4}}));
}

TEST(Recipes, SpecialColorsTakesMinus1AloneForTrue) {
    Engine engine(rowOf({{1, 2, 3, 4}}));
    EXPECT_EQ(pixelsOf(engine.filter.SpecialColors(1, -2, 32767)), (Pixels{{0, 0, 0, 4}}));
}

TEST(Recipes, ClassyColorsHasNineRecipesThatChangeColours) {
    Engine engine(rowOf({{201, 100, 50, 4}}));
    const auto outcome = [&engine](int16_t effect) {
        return pixelsOf(engine.filter.ClassyColors(effect)).front();
    };
    // Means: of 50 and 100 74.25, of 50 and 201 124.245, of 100 and 201 148.995.
    // 201 * (arctan(100) / 1.9) = 201 * 0.82147 = 165.1.
    EXPECT_EQ(outcome(0), (Pixel{165, 74, 100, 4}));
    EXPECT_EQ(outcome(1), (Pixel{201, 74, 100, 4}));
    EXPECT_EQ(outcome(2), (Pixel{50, 100, 124, 4}));
    EXPECT_EQ(outcome(3), (Pixel{100, 149, 50, 4}));
    // 25 + 50.25; 12.5 + 50, to the even 62; 25 + 100.5, to the even 126.
    EXPECT_EQ(outcome(6), (Pixel{75, 62, 126, 4}));
    // (201 * 1.98 + 50 * 0.99) / 12 = 37.3: NOT 63, NOT 13, NOT 164.
    EXPECT_EQ(outcome(7), (Pixel{64, 14, 165, 4}));
    EXPECT_EQ(outcome(8), (Pixel{100, 50, 50, 4}));
    EXPECT_EQ(outcome(10), (Pixel{50, 25, 50, 4}));
    EXPECT_EQ(outcome(11), (Pixel{100, 201, 170, 4}));
}

TEST(Recipes, ClassyColorsOfAnyOtherNumberChangesNothing) {
    const PixelBuffer picture = randomBuffer(9, 9, 2);
    Engine engine(picture);
    for (const int16_t effect : {4, 5, 9, 12, 13, -1, 32767, -32768})
        EXPECT_EQ(engine.filter.ClassyColors(effect), picture) << effect;
}

TEST(Recipes, ClassyColors0TakesBlueAwayWhereThereIsNoGreen) {
    // Of green 1: 255 * (0.7854 / 1.9) = 105.4.
    Engine engine(rowOf({{255, 0, 0, 0}, {255, 1, 0, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ClassyColors(0)), (Pixels{{0, 0, 0, 0}, {105, 0, 1, 0}}));
}

TEST(Recipes, ClassyColors7OfBlackIs1InAllChannels) {
    Engine engine(rowOf({grey(0)}));
    EXPECT_EQ(pixelsOf(engine.filter.ClassyColors(7)), Pixels{grey(1)});
}

TEST(Recipes, ClassyColors7TakesTheAbsoluteValueAndItsLowEightBits) {
    // NOT 255 is -256, whose low eight bits are 0. In the other pixel (255 * 1.98) / 12 = 42.1
    // is taken off: NOT -42 = 41 and NOT 213 = -214.
    Engine engine(rowOf({{0, 255, 0, 0}, {255, 0, 0, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ClassyColors(7)), (Pixels{{0, 1, 1, 0}, {41, 41, 214, 0}}));
}

TEST(Recipes, ClassyColors10RoundsHalvesToTheEven) {
    Engine engine(rowOf({{9, 101, 103, 0}, {9, 3, 1, 0}}));
    EXPECT_EQ(pixelsOf(engine.filter.ClassyColors(10)), (Pixels{{50, 52, 103, 0}, {2, 0, 1, 0}}));
}

TEST(Recipes, ClassyColors11MakesRedConstantInTheRegion) {
    const PixelBuffer picture = randomBuffer(9, 9, 3);
    Engine engine(picture);
    engine.keepTo({{2, 3, 9, 9}});
    const PixelBuffer result = engine.filter.ClassyColors(11);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(result.at(x, y).red, x >= 2 && y >= 3 ? 170 : picture.at(x, y).red);
}

TEST(Recipes, ThermiqueKeepsTheStrongestChannelAlone) {
    Engine engine(rowOf({{1, 2, 3, 9}, {1, 3, 2, 9}, {3, 2, 1, 9}, {3, 2, 2, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.THERMIQUE()),
              (Pixels{{0, 0, 3, 9}, {0, 3, 0, 9}, {3, 0, 0, 9}, {3, 0, 0, 9}}));
}

TEST(Recipes, ThermiqueKeepsPixelsWithoutOne) {
    const Pixels ties{grey(7), {1, 9, 9, 0}, {9, 1, 9, 0}, {9, 9, 1, 0}, grey(0)};
    Engine engine(rowOf(ties));
    EXPECT_EQ(pixelsOf(engine.filter.THERMIQUE()), ties);
}

TEST(Recipes, XblackAndPhotocopTurnAtTheHalfLevel) {
    Engine engine(rowOf({grey(128), grey(127), {128, 255, 200, 9}, {127, 0, 1, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.XBLACK()),
              (Pixels{grey(0), grey(255), {0, 0, 0, 9}, {255, 255, 255, 9}}));
    EXPECT_EQ(pixelsOf(engine.filter.PHOTOCOP()),
              (Pixels{grey(255), grey(0), {255, 255, 255, 9}, {0, 0, 0, 9}}));
}

TEST(Recipes, XblackAndPhotocopKeepPixelsOnBothSidesOfIt) {
    const Pixels mixed{{0, 0, 255, 0}, {127, 128, 128, 0}, {128, 127, 128, 0}, {128, 128, 127, 0}};
    Engine engine(rowOf(mixed));
    EXPECT_EQ(pixelsOf(engine.filter.XBLACK()), mixed);
    EXPECT_EQ(pixelsOf(engine.filter.PHOTOCOP()), mixed);
}

TEST(Recipes, AWhiteImageTurnsBlackUnderXblackAndStaysUnderPhotocop) {
    const PixelBuffer white = drawBuffer(5, 4, [](int32_t, int32_t) { return grey(255); });
    const PixelBuffer black = drawBuffer(5, 4, [](int32_t, int32_t) { return grey(0); });
    Engine engine(white);
    EXPECT_EQ(engine.filter.XBLACK(), black);
    EXPECT_EQ(engine.filter.PHOTOCOP(), white);
}

TEST(Recipes, NoRecipeFails) {
    const PixelBuffer picture = turningPoints();
    Engine engine(picture);
    for (int16_t effect = 0; effect < 12; ++effect)
        EXPECT_NO_THROW(engine.filter.ClassyColors(effect)) << effect;
    EXPECT_NO_THROW(engine.filter.OLDPHOTO());
}

const NamedCall recipes[] = {
    {"OLDPHOTO", true, [](cBitFilter& f) { return f.OLDPHOTO(); }},
    {"SpecialColors", true, [](cBitFilter& f) { return f.SpecialColors(0, -1, -1); }},
    {"ClassyColors", false, [](cBitFilter& f) { return f.ClassyColors(7); }},
    {"THERMIQUE", true, [](cBitFilter& f) { return f.THERMIQUE(); }},
    {"XBLACK", true, [](cBitFilter& f) { return f.XBLACK(); }},
    {"PHOTOCOP", true, [](cBitFilter& f) { return f.PHOTOCOP(); }},
};

TEST(Recipes, AReportOfAPictureOneRowHighIsSkippedOrFailsAsTheMemberDoes) {
    expectTheRuleOfOneRow(recipes);
}

TEST(Recipes, EveryMemberReportsItsRowsAndItsEnd) { expectReportsOfEachRowAndTheEnd(recipes); }

TEST(Recipes, EveryMemberKeepsMarginFourthChannelSourceAndWhatLiesOutsideTheRegion) {
    expectOnlyTheRegionsColoursToChange(recipes);
}

TEST(Recipes, EveryMemberWithoutARegionGivesTheSourceAndReportsItsEnd) {
    expectNoRegionToGiveTheSource(recipes);
}

TEST(Recipes, EveryMemberTakesAnySizeAndAnyRegion) { expectNoSizeToMatter(recipes); }

}  // namespace
}  // namespace tessarine::tests
