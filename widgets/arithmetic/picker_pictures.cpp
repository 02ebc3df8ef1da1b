#include "widgets/arithmetic/picker_pictures.h"

namespace tessarine {

namespace {

/// A byte in the units of a strip's stops.
constexpr uint16_t unitsPerLevel = 255;
constexpr int32_t fullChannel = 255 * unitsPerLevel;

/// Writes the pixels of one picture, snapped to web colours or not.
class Writer {
  public:
    Writer(PixelRows& picture, bool webSafeOnly) : picture_(picture), webSafeOnly_(webSafeOnly) {}

    void startRow(int32_t y) { row_ = picture_.row(y); }
    void put(int32_t x, int32_t red, int32_t green, int32_t blue) {
        uint8_t* pixel = row_ + x * 3;
        pixel[0] = level(blue);
        pixel[1] = level(green);
        pixel[2] = level(red);
    }

  private:
    uint8_t level(int32_t value) const {
        return webSafeOnly_ ? webSafeTable[static_cast<size_t>(value)]
                            : static_cast<uint8_t>(value);
    }

    PixelRows& picture_;
    bool webSafeOnly_;
    uint8_t* row_ = nullptr;
};

/// Percent, saturation or brightness, in units of 1 / 2040.
int32_t fineUnits(double percent) { return nearest(percent * 2040) / 100; }

/// One row of a rectangle with the hue along x: six segments, mirrored in turn.
/// \param S, V  saturation and brightness in units of 1 / 2040
void writeHueRow(Writer& writer, int32_t width, int32_t S, int32_t V) {
    const int32_t n = width / 6;
    const int32_t hi = V / 8;
    const int32_t lo = V * (2040 - S) / 16320;
    for (int32_t k = 0; k < n; ++k) {
        const int32_t f = k * 256 / n;
        const int32_t mid = V * (522240 - S * (256 - f)) / 4177920;
        writer.put(k, hi, mid, lo);
        writer.put(2 * n - k - 1, mid, hi, lo);
        writer.put(2 * n + k, lo, hi, mid);
        writer.put(4 * n - k - 1, lo, mid, hi);
        writer.put(4 * n + k, mid, lo, hi);
        writer.put(6 * n - k - 1, hi, lo, mid);
    }
}

GradientStrip::Stop stopOf(const HSB& hsb) {
    const int32_t colour = HsbToRgb(hsb);
    return {static_cast<uint16_t>(redOf(colour) * unitsPerLevel),
            static_cast<uint16_t>(greenOf(colour) * unitsPerLevel),
            static_cast<uint16_t>(blueOf(colour) * unitsPerLevel)};
}

/// A strip for each column, from the colour at the top to the one at the bottom.
/// \param ends  the colour of a hue at an end
template <class Top, class Bottom>
std::vector<GradientStrip> hueColumns(int32_t width, int32_t height, Top top, Bottom bottom) {
    std::vector<GradientStrip> strips;
    strips.reserve(static_cast<size_t>(width));
    for (int32_t i = 0; i < width; ++i) {
        const double hue = i * 359.0 / (width - 1);
        strips.push_back({i, 0, i + 1, height, stopOf(top(hue)), stopOf(bottom(hue)), true});
    }
    return strips;
}

/// The places of red, green, blue in a rectangle: the channel that stands, the one along x and the
/// one along y.
struct Channels {
    size_t fixed;
    size_t across;
    size_t up;
};

Channels channelsOf(Axis channel) {
    switch (channel) {
        case Axis::red:
            return {0, 1, 2};
        case Axis::green:
            return {1, 0, 2};
        default:
            return {2, 0, 1};
    }
}

int32_t barColour(Axis axis, const HSB& hsb, int32_t i, int32_t top) {
    const auto level = static_cast<uint8_t>(i * 255 / top);
    switch (axis) {
        case Axis::hue:
            return HsbToRgb({i * 359.0 / top, 100, 100});
        case Axis::sat:
            return HsbToRgb({hsb.hue, i * 100.0 / top, hsb.brightness});
        case Axis::bri:
            return HsbToRgb({hsb.hue, hsb.saturation, i * 100.0 / top});
        case Axis::red:
            return packed(level, 0, 0);
        case Axis::green:
            return packed(0, level, 0);
        default:
            return packed(0, 0, level);
    }
}

}  // namespace

PixelRows::PixelRows(int32_t columns, int32_t rows) : width(columns), height(rows) {
    bytes.resize(stride() * static_cast<size_t>(rows));
}

int32_t PixelRows::at(int32_t x, int32_t y) const {
    const uint8_t* pixel = bytes.data() + static_cast<size_t>(y) * stride() + x * 3;
    return packed(pixel[2], pixel[1], pixel[0]);
}

PixelRows pvCreateRectHue(int32_t width, int32_t height, int32_t base, bool webSafeOnly) {
    PixelRows picture(width, height);
    Writer writer(picture, webSafeOnly);
    // Unsigned, because the products of a window of eight million pixels fill 32 bits.
    const auto across = static_cast<uint32_t>(width - 1);
    const uint32_t whole = static_cast<uint32_t>(height - 1) * across;
    for (int32_t row = 0; row < height; ++row) {
        const auto y = static_cast<uint32_t>(row);
        writer.startRow(row);
        for (uint32_t j = 0; j <= across; ++j) {
            const auto level = [&](uint32_t c) {
                return static_cast<int32_t>((c * y * across + j * (255 - c) * y) / whole);
            };
            writer.put(static_cast<int32_t>(across - j), level(redOf(base)), level(greenOf(base)),
                       level(blueOf(base)));
        }
    }
    return picture;
}

PixelRows pvCreateRectSaturation(int32_t width, int32_t height, double saturation,
                                 bool webSafeOnly) {
    PixelRows picture(width, height);
    Writer writer(picture, webSafeOnly);
    const int32_t S = fineUnits(saturation);
    for (int32_t y = 0; y < height; ++y) {
        writer.startRow(y);
        writeHueRow(writer, width, S, y * 2040 / (height - 1));
    }
    return picture;
}

PixelRows pvCreateRectBrightness(int32_t width, int32_t height, double brightness,
                                 bool webSafeOnly) {
    PixelRows picture(width, height);
    Writer writer(picture, webSafeOnly);
    const int32_t V = fineUnits(brightness);
    for (int32_t y = 0; y < height; ++y) {
        writer.startRow(y);
        writeHueRow(writer, width, y * 2040 / (height - 1), V);
    }
    return picture;
}

PixelRows pvCreateRectRGB(int32_t width, int32_t height, Axis channel, uint8_t level,
                          bool webSafeOnly) {
    PixelRows picture(width, height);
    Writer writer(picture, webSafeOnly);
    const Channels channels = channelsOf(channel);
    std::array<int32_t, 3> rgb{};
    rgb[channels.fixed] = level;
    for (int32_t y = 0; y < height; ++y) {
        writer.startRow(y);
        rgb[channels.up] = y * 255 / (height - 1);
        for (int32_t x = 0; x < width; ++x) {
            rgb[channels.across] = x * 255 / (width - 1);
            writer.put(x, rgb[0], rgb[1], rgb[2]);
        }
    }
    return picture;
}

PixelRows pvCreateBar(int32_t height, Axis axis, const HSB& hsb, bool webSafeOnly) {
    PixelRows picture(barWidth, height);
    Writer writer(picture, webSafeOnly);
    for (int32_t i = 0; i < height; ++i) {
        const int32_t colour = barColour(axis, hsb, i, height - 1);
        writer.startRow(i);
        for (int32_t x = 0; x < barWidth; ++x)
            writer.put(x, redOf(colour), greenOf(colour), blueOf(colour));
    }
    return picture;
}

std::vector<GradientStrip> pvCreateRectHueAccel(int32_t width, int32_t height, double hue) {
    std::vector<GradientStrip> strips;
    strips.reserve(static_cast<size_t>(height));
    for (int32_t i = 0; i < height; ++i) {
        const double brightness = 100 - i * 100.0 / (height - 1);
        strips.push_back({0, i, width, i + 1, stopOf({hue, 0, brightness}),
                          stopOf({hue, 100, brightness}), false});
    }
    return strips;
}

std::vector<GradientStrip> pvCreateRectSaturationAccel(int32_t width, int32_t height,
                                                       double saturation) {
    return hueColumns(
        width, height,
        [&](double hue) {
            return HSB{hue, saturation, 100};
        },
        [&](double hue) {
            return HSB{hue, saturation, 0};
        });
}

std::vector<GradientStrip> pvCreateRectBrightnessAccel(int32_t width, int32_t height,
                                                       double brightness) {
    return hueColumns(
        width, height,
        [&](double hue) {
            return HSB{hue, 100, brightness};
        },
        [&](double hue) {
            return HSB{hue, 0, brightness};
        });
}

std::vector<GradientStrip> pvCreateRectRGBAccel(int32_t width, int32_t height, Axis channel,
                                                uint8_t level) {
    const Channels channels = channelsOf(channel);
    std::vector<GradientStrip> strips;
    strips.reserve(static_cast<size_t>(height));
    for (int32_t i = 0; i < height; ++i) {
        GradientStrip strip{0, i, width, i + 1, {}, {}, false};
        strip.first[channels.fixed] = static_cast<uint16_t>(level * unitsPerLevel);
        strip.first[channels.up] =
            static_cast<uint16_t>((height - 1 - i) * fullChannel / (height - 1));
        strip.last = strip.first;
        strip.last[channels.across] = fullChannel;
        strips.push_back(strip);
    }
    return strips;
}

}  // namespace tessarine
