#include "widgets/arithmetic/colour_model.h"

#include <gtest/gtest.h>

#include "widgets/arithmetic/picker_cases.h"

namespace tessarine::tests {
namespace {

constexpr int32_t white = packed(255, 255, 255);
constexpr int32_t magenta = packed(255, 0, 255);

TEST(ColourCases, GiveTheExpectedNumbersAndTexts) {
    int cases = 0;
    for (const CaseRow& row : readCases("colours.tsv")) {
        SCOPED_TRACE(row.at("rgb"));
        const int32_t colour = colourOf(row.at("rgb"));
        EXPECT_EQ(std::to_string(colour), row.at("packed"));
        const ColourTexts texts = textsOf(colour, RgbToHsb(colour));
        EXPECT_EQ(texts.red + "," + texts.green + "," + texts.blue, row.at("rgb"));
        EXPECT_EQ(texts.hue + " " + texts.sat + " " + texts.bri, row.at("hsb-text"));
        EXPECT_EQ(texts.cyan + " " + texts.magenta + " " + texts.yellow + " " + texts.black,
                  row.at("cmyk"));
        EXPECT_EQ(texts.labLuminance + " " + texts.labA + " " + texts.labB, row.at("lab-text"));
        EXPECT_EQ(texts.newColor, row.at("hex"));
        const int32_t snapped = webSafe(colour);
        EXPECT_EQ(std::to_string(redOf(snapped)) + " " + std::to_string(greenOf(snapped)) + " " +
                      std::to_string(blueOf(snapped)),
                  row.at("websafe"));
        EXPECT_EQ(textsOf(snapped, RgbToHsb(snapped)).newColor, row.at("websafe-hex"));
        ++cases;
    }
    EXPECT_EQ(cases, 46);
}

TEST(HsbToRgb, GivesThePureColoursAtTheirAngles) {
    EXPECT_EQ(HsbToRgb({0, 100, 100}), packed(255, 0, 0));
    EXPECT_EQ(HsbToRgb({60, 100, 100}), packed(255, 255, 0));
    EXPECT_EQ(HsbToRgb({120, 100, 100}), packed(0, 255, 0));
    EXPECT_EQ(HsbToRgb({180, 100, 100}), packed(0, 255, 255));
    EXPECT_EQ(HsbToRgb({240, 100, 100}), packed(0, 0, 255));
    EXPECT_EQ(HsbToRgb({300, 100, 100}), magenta);
}

TEST(HsbToRgb, RoundsHalvesToTheEvenByte) {
    EXPECT_EQ(HsbToRgb({0, 0, 50}), packed(128, 128, 128));
    EXPECT_EQ(HsbToRgb({0, 0, 10}), packed(26, 26, 26));  // 25.5
    EXPECT_EQ(HsbToRgb({0, 50, 100}), packed(255, 128, 128));
}

TEST(HsbToRgb, GivesWhiteWithoutSaturationWhateverTheHue) {
    for (const double hue : {-1.0, 0.0, 77.7, 359.0, 360.0, 1000.0})
        EXPECT_EQ(HsbToRgb({hue, 0, 100}), white) << hue;
    EXPECT_EQ(HsbToRgb({120, -5, 100}), white);
}

TEST(HsbToRgb, GivesBlackForAHueOutsideTheCircle) {
    EXPECT_EQ(HsbToRgb({360, 100, 100}), 0);
    EXPECT_EQ(HsbToRgb({-1, 100, 100}), 0);
}

TEST(RgbToHsb, KnowsNoHueOfGreyAndNoSaturationOfBlack) {
    EXPECT_EQ(RgbToHsb(white), (HSB{0, 0, 100}));
    EXPECT_EQ(RgbToHsb(0), (HSB{0, 0, 0}));
    EXPECT_EQ(RgbToHsb(packed(51, 51, 51)), (HSB{0, 0, 20}));
}

TEST(RgbToHsb, LetsRedAndThenGreenWinATie) {
    EXPECT_EQ(RgbToHsb(magenta), (HSB{300, 100, 100}));
    EXPECT_EQ(RgbToHsb(packed(255, 255, 0)), (HSB{60, 100, 100}));
    EXPECT_EQ(RgbToHsb(packed(0, 255, 255)), (HSB{180, 100, 100}));
}

TEST(RgbToHsb, TurnsBackIntoTheSameColour) {
    for (int32_t colour = 0; colour <= 0xFFFFFF; colour += 4099)
        ASSERT_EQ(HsbToRgb(RgbToHsb(colour)), colour);
}

TEST(RgbToHsb, ReadsTheThreeLowBytesOnly) {
    EXPECT_EQ(RgbToHsb(0x7F000000 | magenta), RgbToHsb(magenta));
}

TEST(RgbToCmyk, TakesTheBlackOutOfTheOthers) {
    EXPECT_EQ(RgbToCmyk(white), (CMYK{0, 0, 0, 0}));
    EXPECT_EQ(RgbToCmyk(0), (CMYK{0, 0, 0, 100}));
    EXPECT_EQ(RgbToCmyk(packed(255, 0, 0)), (CMYK{0, 100, 100, 0}));
}

TEST(RgbToCmyk, Truncates) { EXPECT_EQ(RgbToCmyk(packed(1, 255, 255)), (CMYK{99, 0, 0, 0})); }

TEST(RgbToXyz, GivesWhiteTheSumsOfTheMatrixRows) {
    const XYZ xyz = RgbToXyz(white);
    EXPECT_NEAR(xyz.X, 0.950456, 1e-12);
    EXPECT_NEAR(xyz.Y, 1.0, 1e-12);
    EXPECT_NEAR(xyz.Z, 1.088754, 1e-12);
}

TEST(RgbToXyz, HasNoStraightPieceNearBlack) {
    EXPECT_DOUBLE_EQ(RgbToXyz(packed(1, 0, 0)).Y, 0.212671 * std::pow(1 / 255.0, 1 / 0.45));
}

TEST(XyzToLab, GivesWhiteTheFullLuminanceAndNoColour) {
    const Lab lab = XyzToLab(RgbToXyz(white));
    EXPECT_NEAR(lab.L, 100, 1e-9);
    EXPECT_NEAR(lab.a, 0, 1e-9);
    EXPECT_NEAR(lab.b, 0, 1e-9);
}

TEST(XyzToLab, IsStraightInTheLuminanceOfTheDarkOnly) {
    EXPECT_DOUBLE_EQ(XyzToLab({0, 0.008, 0}).L, 903.3 * 0.008);
    EXPECT_DOUBLE_EQ(XyzToLab({0, 0.008856, 0}).L, 116 * std::pow(0.008856, 1.0 / 3) - 16);
    EXPECT_DOUBLE_EQ(XyzToLab({0, 0.001, 0}).a, -std::pow(0.001, 1.0 / 3) * 250);
    EXPECT_DOUBLE_EQ(XyzToLab({0, 0.001, 0}).b, std::pow(0.001, 1.0 / 3) * 100);
}

TEST(ClampValue, KeepsToBothBounds) {
    EXPECT_EQ(ClampValue(-0.5, 0, 100), 0);
    EXPECT_EQ(ClampValue(100.5, 0, 100), 100);
    EXPECT_EQ(ClampValue(99.5, 0, 100), 99.5);
}

TEST(HexPad, FillsUpAndCutsOnTheLeft) {
    EXPECT_EQ(HexPad(10, 2), "0A");
    EXPECT_EQ(HexPad(0x1234, 2), "34");
    EXPECT_EQ(HexPad(0xABC, 6), "000ABC");
    EXPECT_EQ(HexPad(-1, 4), "FFFF");
    EXPECT_EQ(HexPad(7, 0), "");
    EXPECT_EQ(textsOf(packed(255, 0, 0), {}).newColor, "FF0000");
}

TEST(WebSafeTable, HasSixLevelsWithTwentyFiveBytesOnEitherSide) {
    EXPECT_EQ(webSafeTable[25], 0);
    EXPECT_EQ(webSafeTable[26], 51);
    EXPECT_EQ(webSafeTable[76], 51);
    EXPECT_EQ(webSafeTable[77], 102);
    EXPECT_EQ(webSafeTable[255], 255);
    for (size_t level = 0; level <= 255; level += 51)
        EXPECT_EQ(webSafeTable[level], level);
}

TEST(NumericPrefix, ReadsAsFarAsThereIsANumber) {
    EXPECT_EQ(numericPrefix("12ab"), 12);
    EXPECT_EQ(numericPrefix("ab12"), 0);
    EXPECT_EQ(numericPrefix(""), 0);
    EXPECT_EQ(numericPrefix("-3"), -3);
    EXPECT_EQ(numericPrefix(" +7 8"), 7);
    EXPECT_EQ(numericPrefix("2.5.5"), 2.5);
    EXPECT_EQ(numericPrefix("."), 0);
    EXPECT_EQ(numericPrefix("-"), 0);
}

}  // namespace
}  // namespace tessarine::tests
