#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "filters/colour.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// Gradients between two colours, or between a colour and the image.

namespace tessarine {

namespace {

constexpr double degree = 0.017453288659453392;

/// What the two gradients share: all but the ramp.
class Gradient {
  public:
    Gradient(int32_t dX, int32_t dY, int32_t Color1, int32_t Color2, int32_t Pressure,
             int32_t Frequency)
        : first_(colourOf(Color1)),
          second_(colourOf(Color2)),
          firstIsImage_(Color1 == -1),
          secondIsImage_(Color2 == -1),
          p_(single(Pressure / 100.0)),
          ip_(single(1 - double{p_})),
          freq_(single((Frequency - 1) * 3.141592025756836)) {
        const double x = dX;
        const double y = dY;
        rad_ = roundToInteger(std::sqrt(x * x + y * y));
        if (rad_ < freq_) freq_ = static_cast<float>(rad_);
    }

    /// The rounded distance of the two points; 0 only where there is none.
    int32_t rad() const { return rad_; }

    /// The share of the second colour, at most 1, at a place of the ramp.
    float share(float t) const {
        if (freq_ > 0) {
            t = single(std::sin(double{t} * freq_));
            t = single(double{t} * t);
        }
        return std::min(t, 1.0F);
    }

    /// A pixel under the gradient. A channel that would leave a byte's range stays as it is.
    Pixel over(const Pixel& pixel, float t) const {
        const float u = single(1 - double{t});
        const Pixel& a1 = firstIsImage_ ? pixel : first_;
        const Pixel& a2 = secondIsImage_ ? pixel : second_;
        const auto mixed = [&](uint8_t from, uint8_t to, uint8_t value) {
            const double level =
                double{p_} * (double{t} * to + double{u} * from) + value * double{ip_};
            return fitsByte(level) ? toByte(level) : value;
        };
        return {mixed(a1.blue, a2.blue, pixel.blue), mixed(a1.green, a2.green, pixel.green),
                mixed(a1.red, a2.red, pixel.red), pixel.fourth};
    }

  private:
    Pixel first_;
    Pixel second_;
    bool firstIsImage_;
    bool secondIsImage_;
    float p_;
    float ip_;
    float freq_;
    int32_t rad_;
};

/// The direction of (dX, dY) in radians, 0 to 2 pi; a single before the turns are added and after.
float directionOf(int32_t dX, int32_t dY) {
    const int32_t sign = (dY > 0) - (dY < 0);
    const float a = single(dX != 0 ? std::atan(static_cast<double>(dY) / dX) : sign * 90 * degree);
    if (dX < 0) return single(a + 180 * degree);
    if (dY < 0) return single(a + 360 * degree);
    return a;
}

}  // namespace

PixelBuffer cBitFilter::GradientCircular(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2,
                                         int32_t Color1, int32_t Color2, int32_t Pressure,
                                         int32_t Frequency) {
    const Gradient gradient(X2 - X1, Y2 - Y1, Color1, Color2, Pressure, Frequency);
    if (gradient.rad() == 0) return bits_;
    float t = 0;
    // More than 32767 pixels away the squares wrap. Where they have no root, the ramp goes on from
    // the pixel before, and there alone the order of the pixels matters.
    constexpr int64_t farthest = 32767;
    const auto isFar = [](int64_t last, int64_t centre) {
        return std::max(std::abs(centre), std::abs(last - centre)) > farthest;
    };
    Walk walk = wholeImage();
    const bool isInOrder = walk.isInOrder = isFar(maxX_, X1) || isFar(maxY_, Y1);
    return filterRows(OnFailure::skip, walk, [&](const RowRun& run) {
        const int32_t j = run.y - Y1;
        int32_t i = run.x - X1;
        float ramp = t;
        for (Pixel& pixel : run.result) {
            const int32_t squared = i * i + j * j;
            if (squared >= 0) ramp = single(std::sqrt(squared) / gradient.rad());
            ramp = gradient.share(ramp);
            pixel = gradient.over(pixel, ramp);
            ++i;
        }
        if (isInOrder) t = ramp;
    });
}

PixelBuffer cBitFilter::GradientLinear(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2,
                                       int32_t Color1, int32_t Color2, int32_t Pressure,
                                       int32_t Frequency) {
    const Gradient gradient(X2 - X1, Y2 - Y1, Color1, Color2, Pressure, Frequency);
    if (gradient.rad() == 0) return bits_;
    const float a = directionOf(X2 - X1, Y2 - Y1);
    const float ca = single(std::cos(double{a}) / gradient.rad());
    const float sa = single(std::sin(double{a}) / gradient.rad());
    return filterRows(OnFailure::skip, wholeImage(), [&](const RowRun& run) {
        const int32_t j = run.y - Y1;
        int32_t i = run.x - X1;
        for (Pixel& pixel : run.result) {
            const float t = single(i * double{ca} + j * double{sa});
            pixel = gradient.over(pixel, std::max(gradient.share(t), 0.0F));
            ++i;
        }
    });
}

}  // namespace tessarine
