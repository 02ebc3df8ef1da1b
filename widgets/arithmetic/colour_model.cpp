#include "widgets/arithmetic/colour_model.h"

#include <algorithm>
#include <charconv>

namespace tessarine {

namespace {

/// One digit after the point, whatever the locale; no minus before a zero.
std::string oneDecimal(double value) {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 1).ptr;
    const std::string text(digits, end);
    return text == "-0.0" ? "0.0" : text;
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

uint8_t nearestByte(double value) {
    return static_cast<uint8_t>(nearest(std::clamp(value, 0.0, 255.0)));
}

int32_t HsbToRgb(const HSB& colour) {
    if (colour.saturation <= 0) {
        const uint8_t grey = nearestByte(colour.brightness * 255 / 100);
        return packed(grey, grey, grey);
    }
    const double h = colour.hue / 60;
    const double v = colour.brightness / 100;
    const double s = colour.saturation / 100;
    const double i = std::floor(h);
    const double f = h - i;
    const double p = (1 - s) * v;
    const double q = (1 - s * f) * v;
    const double t = (1 - (1 - f) * s) * v;
    const auto pack = [](double red, double green, double blue) {
        return packed(nearestByte(red * 255), nearestByte(green * 255), nearestByte(blue * 255));
    };
    switch (static_cast<int32_t>(i)) {
        case 0:
            return pack(v, t, p);
        case 1:
            return pack(q, v, p);
        case 2:
            return pack(p, v, t);
        case 3:
            return pack(p, q, v);
        case 4:
            return pack(t, p, v);
        case 5:
            return pack(v, p, q);
        default:
            return 0;
    }
}

HSB RgbToHsb(int32_t colour) {
    const int32_t r = redOf(colour);
    const int32_t g = greenOf(colour);
    const int32_t b = blueOf(colour);
    const int32_t mx = std::max({r, g, b});
    const int32_t delta = mx - std::min({r, g, b});
    HSB result;
    result.brightness = mx * 100 / 255.0;
    if (mx == 0) return result;
    result.saturation = static_cast<double>(delta) / mx * 100;
    if (delta == 0) return result;
    const double d = delta;
    const double e = mx == r ? (g - b) / d : mx == g ? (b - r) / d + 2 : (r - g) / d + 4;
    result.hue = e * 60;
    if (result.hue < 0) result.hue += 360;
    return result;
}

CMYK RgbToCmyk(int32_t colour) {
    const auto percent = [](uint8_t level) { return (255 - level) * 100 / 255; };
    const int32_t c = percent(redOf(colour));
    const int32_t m = percent(greenOf(colour));
    const int32_t y = percent(blueOf(colour));
    const int32_t k = std::min({c, m, y});
    return {static_cast<uint8_t>(c - k), static_cast<uint8_t>(m - k), static_cast<uint8_t>(y - k),
            static_cast<uint8_t>(k)};
}

XYZ RgbToXyz(int32_t colour) {
    const auto linear = [](uint8_t level) { return std::pow(level / 255.0, 1 / 0.45); };
    const double R = linear(redOf(colour));
    const double G = linear(greenOf(colour));
    const double B = linear(blueOf(colour));
    return {0.412453 * R + 0.35758 * G + 0.180423 * B, 0.212671 * R + 0.71516 * G + 0.072169 * B,
            0.019334 * R + 0.119193 * G + 0.950227 * B};
}

Lab XyzToLab(const XYZ& colour) {
    const double fx = std::pow(colour.X / 0.950456, 1.0 / 3);
    const double fy = std::pow(colour.Y / 1, 1.0 / 3);
    const double fz = std::pow(colour.Z / 1.088754, 1.0 / 3);
    return {colour.Y >= 0.008856 ? 116 * fy - 16 : 903.3 * colour.Y, (fx - fy) * 500 / 2,
            (fy - fz) * 200 / 2};
}

double ClampValue(double value, double lowest, double highest) {
    if (value < lowest) return lowest;
    if (value > highest) return highest;
    return value;
}

std::string HexPad(int32_t value, int32_t width) {
    const char* const digits = "0123456789ABCDEF";
    std::string text(static_cast<size_t>(std::max(width, 0)), '0');
    auto rest = static_cast<uint32_t>(value);
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, rest >>= 4)
        *digit = digits[rest & 15];
    return text;
}

double numericPrefix(std::string_view text) {
    size_t at = std::min(text.find_first_not_of(" \t"), text.size());
    const bool negative = at < text.size() && text[at] == '-';
    if (negative || (at < text.size() && text[at] == '+')) ++at;
    double value = 0;
    for (; at < text.size() && isDigit(text[at]); ++at)
        value = value * 10 + (text[at] - '0');
    if (at < text.size() && text[at] == '.')
        for (double unit = 0.1; ++at < text.size() && isDigit(text[at]); unit /= 10)
            value += (text[at] - '0') * unit;
    return negative ? -value : value;
}

int32_t webSafe(int32_t colour) {
    return packed(webSafeTable[redOf(colour)], webSafeTable[greenOf(colour)],
                  webSafeTable[blueOf(colour)]);
}

ColourTexts textsOf(int32_t colour, const HSB& hsb) {
    const CMYK cmyk = RgbToCmyk(colour);
    const Lab lab = XyzToLab(RgbToXyz(colour));
    ColourTexts texts;
    texts.red = std::to_string(redOf(colour));
    texts.green = std::to_string(greenOf(colour));
    texts.blue = std::to_string(blueOf(colour));
    texts.hue = std::to_string(nearest(hsb.hue));
    texts.sat = std::to_string(nearest(hsb.saturation));
    texts.bri = std::to_string(nearest(hsb.brightness));
    texts.cyan = std::to_string(cmyk.cyan);
    texts.magenta = std::to_string(cmyk.magenta);
    texts.yellow = std::to_string(cmyk.yellow);
    texts.black = std::to_string(cmyk.black);
    texts.labLuminance = oneDecimal(lab.L);
    texts.labA = oneDecimal(lab.a);
    texts.labB = oneDecimal(lab.b);
    texts.newColor =
        HexPad(redOf(colour), 2) + HexPad(greenOf(colour), 2) + HexPad(blueOf(colour), 2);
    return texts;
}

}  // namespace tessarine
