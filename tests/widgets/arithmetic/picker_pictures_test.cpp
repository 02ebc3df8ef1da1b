#include "widgets/arithmetic/picker_pictures.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "widgets/arithmetic/picker_cases.h"

namespace tessarine::tests {
namespace {

PixelRows rectangleOf(Axis axis, int32_t width, int32_t height, int32_t colour, const HSB& hsb,
                      bool webSafeOnly) {
    switch (axis) {
        case Axis::hue:
            return pvCreateRectHue(width, height, HsbToRgb({hsb.hue, 100, 100}), webSafeOnly);
        case Axis::sat:
            return pvCreateRectSaturation(width, height, hsb.saturation, webSafeOnly);
        case Axis::bri:
            return pvCreateRectBrightness(width, height, hsb.brightness, webSafeOnly);
        case Axis::red:
            return pvCreateRectRGB(width, height, axis, redOf(colour), webSafeOnly);
        case Axis::green:
            return pvCreateRectRGB(width, height, axis, greenOf(colour), webSafeOnly);
        default:
            return pvCreateRectRGB(width, height, axis, blueOf(colour), webSafeOnly);
    }
}

TEST(PickerCases, GiveTheExpectedPictures) {
    int cases = 0;
    for (const CaseRow& row : readCases("picker.tsv")) {
        SCOPED_TRACE(row.at("picture"));
        const Axis axis = axisOf(row.at("axis"));
        const int32_t width = std::stoi(row.at("width"));
        const int32_t height = std::stoi(row.at("height"));
        const HSB hsb = hsbOf(row.at("hue,sat,bri"));
        const bool webSafeOnly = row.at("web-safe") == "1";
        const PixelRows picture =
            row.at("what") == "bar"
                ? pvCreateBar(height, axis, hsb, webSafeOnly)
                : rectangleOf(axis, width, height, colourOf(row.at("colour")), hsb, webSafeOnly);
        EXPECT_EQ(picture.width, width);
        EXPECT_TRUE(pixmapOf(picture) == caseFile(row.at("picture")));
        ++cases;
    }
    EXPECT_EQ(cases, 24);
}

TEST(PixelRows, ArePaddedToFourBytesAndBottomUp) {
    PixelRows rows(6, 2);
    EXPECT_EQ(rows.bytesPerRow(), 20);
    EXPECT_EQ(rows.bytes.size(), 40U);
    rows.row(0)[3] = 9;
    EXPECT_EQ(rows.at(1, 0), packed(0, 0, 9));
    EXPECT_EQ(rows.bytes[3], 9);
}

TEST(RectHue, HasTheBaseColourWhiteAndBlackInItsCorners) {
    const int32_t base = packed(17, 200, 255);
    const PixelRows picture = pvCreateRectHue(60, 40, base, false);
    EXPECT_EQ(picture.at(59, 39), base);
    EXPECT_EQ(picture.at(0, 39), packed(255, 255, 255));
    for (int32_t x = 0; x < 60; ++x)
        EXPECT_EQ(picture.at(x, 0), 0);
}

TEST(RectHue, StaysRightInAVeryLargeWindow) {
    const PixelRows picture = pvCreateRectHue(3840, 4000, packed(255, 128, 0), false);
    EXPECT_EQ(picture.at(3839, 3999), packed(255, 128, 0));
    EXPECT_EQ(picture.at(0, 3999), packed(255, 255, 255));
    EXPECT_EQ(picture.at(0, 0), 0);
}

/// One strip's colour at a place along it, rounded as a byte.
int32_t stripColour(const GradientStrip& strip, int32_t k, int32_t count) {
    const auto level = [&](size_t i) {
        return nearestByte(
            (strip.first[i] + (double(strip.last[i]) - strip.first[i]) * k / (count - 1)) / 255);
    };
    return packed(level(0), level(1), level(2));
}

/// The largest difference of a channel between strips and the pixels of a plain picture.
int32_t farthest(const std::vector<GradientStrip>& strips, const PixelRows& plain) {
    int32_t worst = 0;
    int32_t covered = 0;
    for (const GradientStrip& strip : strips)
        for (int32_t y = strip.top; y < strip.bottom; ++y)
            for (int32_t x = strip.left; x < strip.right; ++x) {
                const int32_t made =
                    strip.vertical ? stripColour(strip, y - strip.top, strip.bottom - strip.top)
                                   : stripColour(strip, x - strip.left, strip.right - strip.left);
                const int32_t wanted = plain.at(x, plain.height - 1 - y);
                worst = std::max({worst, std::abs(redOf(made) - redOf(wanted)),
                                  std::abs(greenOf(made) - greenOf(wanted)),
                                  std::abs(blueOf(made) - blueOf(wanted))});
                ++covered;
            }
    return covered == plain.width * plain.height ? worst : 256;
}

TEST(AcceleratedRectangles, AreThePlainOnesButForRounding) {
    // The plain routines truncate where these round, by stops that are rounded themselves.
    constexpr int32_t rounding = 2;
    // Besides, a column's hue is a 299th of 359 degrees further than the one before it, instead of
    // a 300th of 360, and every second segment is mirrored about the edge of a column instead of
    // its middle: off by one column of 6 * 255 / 300 levels.
    constexpr int32_t column = 6;
    constexpr int32_t width = 300;
    constexpr int32_t height = 200;
    EXPECT_LE(farthest(pvCreateRectHueAccel(width, height, 86),
                       pvCreateRectHue(width, height, HsbToRgb({86, 100, 100}), false)),
              rounding);
    for (const Axis axis : {Axis::red, Axis::green, Axis::blue})
        EXPECT_LE(farthest(pvCreateRectRGBAccel(width, height, axis, 77),
                           pvCreateRectRGB(width, height, axis, 77, false)),
                  rounding);
    EXPECT_LE(farthest(pvCreateRectSaturationAccel(width, height, 55),
                       pvCreateRectSaturation(width, height, 55, false)),
              rounding + column);
    EXPECT_LE(farthest(pvCreateRectBrightnessAccel(width, height, 80),
                       pvCreateRectBrightness(width, height, 80, false)),
              rounding + column);
}

TEST(AcceleratedRectangles, GoRowByRowAndColumnByColumn) {
    const auto rows = pvCreateRectHueAccel(60, 21, 120);
    ASSERT_EQ(rows.size(), 21U);
    EXPECT_FALSE(rows[0].vertical);
    EXPECT_EQ(rows[0].first, (GradientStrip::Stop{65025, 65025, 65025}));
    EXPECT_EQ(rows[0].last, (GradientStrip::Stop{0, 65025, 0}));
    EXPECT_EQ(rows[10].last, (GradientStrip::Stop{0, 128 * 255, 0}));
    const auto columns = pvCreateRectSaturationAccel(60, 21, 100);
    ASSERT_EQ(columns.size(), 60U);
    EXPECT_TRUE(columns[0].vertical);
    EXPECT_EQ(columns[0].first, (GradientStrip::Stop{65025, 0, 0}));
    EXPECT_EQ(columns[0].last, (GradientStrip::Stop{0, 0, 0}));
    const auto brightness = pvCreateRectBrightnessAccel(60, 21, 100);
    EXPECT_EQ(brightness[0].first, (GradientStrip::Stop{65025, 0, 0}));
    EXPECT_EQ(brightness[0].last, (GradientStrip::Stop{65025, 65025, 65025}));
}

TEST(AcceleratedRectangles, HaveTheRowsComponentInSixteenBits) {
    const auto rows = pvCreateRectRGBAccel(60, 4, Axis::green, 10);
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[0].first, (GradientStrip::Stop{0, 2550, 65025}));
    EXPECT_EQ(rows[1].first, (GradientStrip::Stop{0, 2550, 43350}));
    EXPECT_EQ(rows[3].first, (GradientStrip::Stop{0, 2550, 0}));
    EXPECT_EQ(rows[3].last, (GradientStrip::Stop{65025, 2550, 0}));
}

TEST(Bars, HaveSixteenEqualPixelsInARow) {
    const PixelRows bar = pvCreateBar(30, Axis::hue, {}, false);
    EXPECT_EQ(bar.width, 16);
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 1; x < 16; ++x)
            ASSERT_EQ(bar.at(x, y), bar.at(0, y));
}

}  // namespace
}  // namespace tessarine::tests
