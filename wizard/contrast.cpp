#include "wizard/contrast.h"

#include <algorithm>
#include <cmath>

namespace tessarine {

namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

QColor mixed(const QColor& from, const QColor& to, float share) {
    const auto between = [share](float a, float b) {
        return std::clamp(a + (b - a) * share, 0.0F, 1.0F);
    };
    return QColor::fromRgbF(between(from.redF(), to.redF()), between(from.greenF(), to.greenF()),
                            between(from.blueF(), to.blueF()));
}

}  // namespace

double contrast(const QColor& first, const QColor& second) {
    const double a = luminance(first) + 0.05;
    const double b = luminance(second) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

QColor readableOn(const QColor& background, const QColor& colour, double wanted) {
    const bool toWhite = contrast(background, Qt::white) > contrast(background, Qt::black);
    const QColor end = toWhite ? Qt::white : Qt::black;
    constexpr int steps = 20;
    for (int i = 0; i < steps; ++i) {
        const QColor tried = mixed(colour, end, float(i) / steps);
        if (contrast(background, tried) >= wanted) return tried;
    }
    return end;
}

}  // namespace tessarine
