#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "widgets/arithmetic/colour_model.h"

// The two pictures of the colour picker. One colour axis runs along the bar, the two others span
// the rectangle. Heights are 2 or more, widths of rectangles a positive multiple of 6.

namespace tessarine {

/// The six axes of a colour, and with them the option buttons, the fields and the spins.
enum class Axis { hue, sat, bri, red, green, blue };

/// Width of the bar in pixels.
inline constexpr int32_t barWidth = 16;

/// A picture of 24 bits a pixel: blue, green, red. The bottom row comes first, and each row is
/// padded to a multiple of four bytes.
struct PixelRows {
    PixelRows() = default;
    PixelRows(int32_t columns, int32_t rows);

    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> bytes;

    int32_t bytesPerRow() const { return (width * 3 + 3) / 4 * 4; }
    /// The first byte of a row, counted from the bottom.
    uint8_t* row(int32_t y) { return bytes.data() + static_cast<size_t>(y) * stride(); }
    /// The packed colour in a column of a row, the row counted from the bottom.
    int32_t at(int32_t x, int32_t y) const;

  private:
    size_t stride() const { return static_cast<size_t>(bytesPerRow()); }
};

/// A strip that runs evenly from one colour to another. Its place is in pixels from the top left
/// corner, right and bottom edge not included.
struct GradientStrip {
    /// Red, green, blue; 255 * 255 is a full channel.
    using Stop = std::array<uint16_t, 3>;

    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
    Stop first{};  ///< at the left, or at the top of a vertical strip
    Stop last{};
    bool vertical = false;
};

// The plain routines compute every pixel in whole numbers. With webSafeOnly each byte passes
// through webSafeTable.

/// Saturation along x, brightness along y. \param base  the top right corner's colour
PixelRows pvCreateRectHue(int32_t width, int32_t height, int32_t base, bool webSafeOnly);
/// Hue along x, brightness along y. \param saturation  percent
PixelRows pvCreateRectSaturation(int32_t width, int32_t height, double saturation,
                                 bool webSafeOnly);
/// Hue along x, saturation along y. \param brightness  percent
PixelRows pvCreateRectBrightness(int32_t width, int32_t height, double brightness,
                                 bool webSafeOnly);
/// The two other channels along x and y, in the order red, green, blue.
/// \param channel  red, green or blue
PixelRows pvCreateRectRGB(int32_t width, int32_t height, Axis channel, uint8_t level,
                          bool webSafeOnly);

/// The bar of an axis, its lowest value at the bottom. \param hsb  gives the two values that stand
PixelRows pvCreateBar(int32_t height, Axis axis, const HSB& hsb, bool webSafeOnly);

// The accelerated routines make the same pictures, but for rounding, of strips that the drawing
// surface fills. They know no web colours.

std::vector<GradientStrip> pvCreateRectHueAccel(int32_t width, int32_t height, double hue);
std::vector<GradientStrip> pvCreateRectSaturationAccel(int32_t width, int32_t height,
                                                       double saturation);
std::vector<GradientStrip> pvCreateRectBrightnessAccel(int32_t width, int32_t height,
                                                       double brightness);
std::vector<GradientStrip> pvCreateRectRGBAccel(int32_t width, int32_t height, Axis channel,
                                                uint8_t level);

}  // namespace tessarine
