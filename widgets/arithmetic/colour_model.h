#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

// The colours of the colour picker: packed, in four other forms, and as texts. A packed colour is
// 0x00BBGGRR, red in the low byte. These conversions are the picker's own; those of the filters
// differ from them.

namespace tessarine {

/// Hue in degrees (0 up to, not including, 360; -1: to be computed from the packed colour),
/// saturation and brightness in percent.
struct HSB {
    double hue = 0;
    double saturation = 0;
    double brightness = 0;

    bool operator==(const HSB&) const = default;
};

/// Percentages.
struct CMYK {
    uint8_t cyan = 0;
    uint8_t magenta = 0;
    uint8_t yellow = 0;
    uint8_t black = 0;

    bool operator==(const CMYK&) const = default;
};

struct XYZ {
    double X = 0;
    double Y = 0;
    double Z = 0;
};

/// L from 0 to 100; a and b on half the usual scale.
struct Lab {
    double L = 0;
    double a = 0;
    double b = 0;
};

constexpr uint8_t redOf(int32_t colour) { return static_cast<uint8_t>(colour & 255); }
constexpr uint8_t greenOf(int32_t colour) { return static_cast<uint8_t>(colour >> 8 & 255); }
constexpr uint8_t blueOf(int32_t colour) { return static_cast<uint8_t>(colour >> 16 & 255); }
constexpr int32_t packed(uint8_t red, uint8_t green, uint8_t blue) {
    return red | green << 8 | blue << 16;
}

/// The nearest integer, ties to even.
inline int32_t nearest(double value) { return static_cast<int32_t>(std::nearbyint(value)); }
/// The nearest byte, ties to even; what lies beyond a byte gives its end.
uint8_t nearestByte(double value);

/// A hue of 360 or more, or below 0, with a saturation above 0, gives black.
int32_t HsbToRgb(const HSB& colour);
/// Grey has the hue 0, black the saturation 0 as well.
HSB RgbToHsb(int32_t colour);
CMYK RgbToCmyk(int32_t colour);
XYZ RgbToXyz(int32_t colour);
Lab XyzToLab(const XYZ& colour);

/// The value bounded by both.
double ClampValue(double value, double lowest, double highest);

/// Hexadecimal digits in upper case: the last `width` of them, filled up with "0" on the left.
std::string HexPad(int32_t value, int32_t width);

/// The number at a text's start, blanks and a sign before it allowed; 0 where there is none.
double numericPrefix(std::string_view text);

/// The nearest of the levels 0, 51, 102, 153, 204, 255 for each byte.
inline constexpr std::array<uint8_t, 256> webSafeTable = [] {
    std::array<uint8_t, 256> table{};
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<uint8_t>((i + 25) / 51 * 51);
    return table;
}();

/// The colour with its three bytes passed through webSafeTable.
int32_t webSafe(int32_t colour);

/// What the picker's fields say of a colour.
struct ColourTexts {
    std::string red;
    std::string green;
    std::string blue;
    std::string hue;
    std::string sat;
    std::string bri;
    std::string cyan;
    std::string magenta;
    std::string yellow;
    std::string black;
    std::string labLuminance;
    std::string labA;
    std::string labB;
    std::string newColor;  ///< six hexadecimal digits: red, green, blue
};

/// \param hsb  the record kept beside the colour; its texts come from it, all others from `colour`
ColourTexts textsOf(int32_t colour, const HSB& hsb);

}  // namespace tessarine
