#pragma once

#include <QColor>

namespace tessarine {

/// What thin strokes and small text need against what is behind them.
inline constexpr double readableContrast = 4.5;

/// How well two colours can be told apart by their brightness: 1 (not at all) to 21 (black on
/// white), as the guidelines for accessible web pages define it. Alpha is ignored.
double contrast(const QColor& first, const QColor& second);

/// `colour`, or what is nearest to it on its way to black or white and has `wanted` contrast to
/// `background`.
QColor readableOn(const QColor& background, const QColor& colour, double wanted = readableContrast);

}  // namespace tessarine
