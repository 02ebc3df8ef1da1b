#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "pixels/failures.h"
#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twin of the synthesis family: plain loops over x and y, to be checked by eye. It shares
// nothing with the library but the buffer and the region type.

namespace tessarine::tests::twin {

/// The next draw of the generator whose state this is.
inline float draw(uint32_t& state) {
    state = static_cast<uint32_t>((uint64_t{state} * 16598013 + 12820163) % 16777216);
    return static_cast<float>(state / 16777216.0);
}

/// Rounded to a byte. \throws StatementFailed outside 0 to 255
inline uint8_t byte(double v) {
    const double whole = std::rint(v);
    if (!(whole >= 0 && whole <= 255)) throw StatementFailed("overflow");
    return static_cast<uint8_t>(whole);
}

/// Rounded to a byte, or what was there where that fails.
inline uint8_t byteOr(double v, uint8_t before) {
    const double whole = std::rint(v);
    return whole >= 0 && whole <= 255 ? static_cast<uint8_t>(whole) : before;
}

/// The scan rectangle of a filter with margin 0; right and bottom inclusive.
struct Scan {
    explicit Scan(const Region& region)
        : left(region.box().left),
          top(region.box().top),
          right(region.box().right - 1),
          bottom(region.box().bottom - 1) {}
    int64_t left;
    int64_t top;
    int64_t right;
    int64_t bottom;
};

/// for v from `from` to `to` in steps of `step`. A step of 0 that would never end is refused.
template <class Body>
void steps(int64_t from, int64_t to, int64_t step, Body body) {
    if (step == 0 && from <= to) throw StatementFailed("never ends");
    if (step > 0)
        for (int64_t v = from; v <= to; v += step)
            body(v);
    if (step < 0)
        for (int64_t v = from; v >= to; v += step)
            body(v);
}

/// A pixel of a buffer for writing.
inline Pixel& place(PixelBuffer& buffer, int64_t x, int64_t y) {
    return buffer.writableBlock()[buffer.offsetOfRow(static_cast<int32_t>(y)) + x];
}

/// Whether a pixel is worked on: it lies in the region, and there is one.
inline bool worked(const PixelBuffer& source, const Region& region, int64_t x, int64_t y) {
    return holds(source, x, y) && region.contains(static_cast<int32_t>(x), static_cast<int32_t>(y));
}

inline PixelBuffer diffuse(const PixelBuffer& source, const Region& region, int32_t wFactor,
                           int32_t hFactor, uint32_t& state) {
    PixelBuffer result = source;
    const float hw = static_cast<float>(wFactor / 2.0);
    const float hh = static_cast<float>(hFactor / 2.0);
    const Scan scan(region);
    for (int64_t y = scan.top; y <= scan.bottom; ++y)
        for (int64_t x = scan.left; x <= scan.right; ++x) {
            const double r1 = draw(state);
            const int32_t sx = round(static_cast<double>(x) + r1 * wFactor - double{hw});
            const double r2 = draw(state);
            const int32_t sy = round(static_cast<double>(y) + r2 * hFactor - double{hh});
            if (!region.contains(sx, sy) || !holds(source, x, y)) continue;
            Pixel& p = place(result, x, y);
            const Pixel from = read(source, sx, sy);
            p = {from.blue, from.green, from.red, p.fourth};
        }
    return result;
}

/// \throws StatementFailed for Radius 0 and for a channel out of range
inline PixelBuffer halftone(const PixelBuffer& source, const Region& region, int32_t Radius,
                            int32_t Definition, int32_t Intensity) {
    PixelBuffer result = source;
    if (Radius == 0) throw StatementFailed("division by zero");
    const int32_t q = round(static_cast<double>(Radius + Definition) / Radius * Radius * Radius);
    const float k = static_cast<float>((Intensity + 100) / 100.0);
    const int32_t step = 2 * Radius;
    const Scan scan(region);
    steps(scan.top, scan.bottom, step, [&](int64_t y) {
        steps(scan.left, scan.right, step, [&](int64_t x) {
            // Both squares are that from (x, y) to (x + 2 * Radius, y + 2 * Radius).
            const int64_t lastX = std::min<int64_t>(x + int64_t{2} * Radius, source.width() + 1);
            const int64_t lastY = std::min<int64_t>(y + int64_t{2} * Radius, source.height() + 1);
            std::array<int32_t, 3> sums{};
            int32_t count = 0;
            for (int64_t py = y; py <= lastY; ++py)
                for (int64_t px = x; px <= lastX; ++px) {
                    if (!worked(source, region, px, py)) continue;
                    const Pixel p = read(source, px, py);
                    for (int c = 0; c < 3; ++c)
                        sums.at(static_cast<size_t>(c)) += channel(p, c);
                    ++count;
                }
            const int32_t n = round(count / double{k});
            if (n > 0)
                for (int32_t& sum : sums)
                    sum = std::min(round(static_cast<double>(sum) / n), 255);
            for (int64_t py = y; py <= lastY; ++py)
                for (int64_t px = x; px <= lastX; ++px) {
                    if (!worked(source, region, px, py)) continue;
                    const auto i = static_cast<int32_t>(px - x - Radius);
                    const auto j = static_cast<int32_t>(py - y - Radius);
                    const int32_t d = i * i + j * j;
                    Pixel& p = place(result, px, py);
                    for (int c = 0; c < 3; ++c) {
                        if (d > q) {
                            channel(p, c) = 0;
                            continue;
                        }
                        const float w = static_cast<float>(1 - static_cast<double>(d) / q);
                        channel(p, c) = byte(double{w} * sums.at(static_cast<size_t>(c)));
                    }
                }
        });
    });
    return result;
}

inline PixelBuffer pixelize(const PixelBuffer& source, const Region& region, int32_t PixSize) {
    const int64_t maxX = source.width() - 1;
    const int64_t maxY = source.height() - 1;
    std::array<int32_t, 3> means{};
    PixelBuffer result = source;
    for (int32_t y = -2; y <= maxY + 2; ++y)
        for (int32_t x = -2; x <= maxX + 2; ++x) {
            if (!region.contains(x, y)) continue;
            if (PixSize != 0 && x % PixSize == 0) {
                const int64_t bx = x / PixSize * PixSize;
                const int64_t by = y / PixSize * PixSize;
                std::array<int32_t, 3> sums{};
                int32_t count = 0;
                for (int64_t i = bx; i <= bx + PixSize - 1 && i <= maxX; ++i)
                    for (int64_t j = by; j <= by + PixSize - 1 && j <= maxY; ++j) {
                        const Pixel p = read(source, i, j);
                        for (int c = 0; c < 3; ++c)
                            sums.at(static_cast<size_t>(c)) += channel(p, c);
                        ++count;
                    }
                if (count > 0)
                    for (size_t c = 0; c < 3; ++c)
                        means.at(c) = sums.at(c) / count;
            }
            for (int c = 0; c < 3; ++c)
                channel(place(result, x, y), c) =
                    static_cast<uint8_t>(means.at(static_cast<size_t>(c)));
        }
    return result;
}

inline PixelBuffer noise(const PixelBuffer& source, const Region& region, int32_t Factor,
                         bool Equalized, uint32_t& state) {
    PixelBuffer result = source;
    const int32_t span = 2 * Factor + 1;
    const Scan scan(region);
    for (int64_t y = scan.top; y <= scan.bottom; ++y)
        for (int64_t x = scan.left; x <= scan.right; ++x) {
            if (!region.contains(static_cast<int32_t>(x), static_cast<int32_t>(y))) continue;
            std::array<double, 3> r{};
            if (Equalized) {
                r.fill(draw(state));
            } else {
                r[2] = draw(state);
                r[1] = draw(state);
                r[0] = draw(state);
            }
            if (!holds(source, x, y)) continue;
            Pixel& p = place(result, x, y);
            for (int c = 0; c < 3; ++c)
                channel(p, c) =
                    clamp(round(channel(p, c) + (span * r.at(static_cast<size_t>(c)) - Factor)));
        }
    return result;
}

inline PixelBuffer scanlines(const PixelBuffer& source, const Region& region, int32_t Factor) {
    PixelBuffer result = source;
    const Scan scan(region);
    for (int64_t y = scan.top; y <= scan.bottom; y += 2)
        for (int64_t x = scan.left; x <= scan.right; ++x) {
            if (!worked(source, region, x, y)) continue;
            Pixel& p = place(result, x, y);
            for (int c = 0; c < 3; ++c) {
                const int32_t entry = channel(p, c) - Factor;
                channel(p, c) = static_cast<uint8_t>(entry < 0 ? 0 : entry);
            }
        }
    return result;
}

/// \throws StatementFailed for a step of 0 that would never end
inline PixelBuffer grid(const PixelBuffer& source, const Region& region, int32_t HStep,
                        int32_t VStep, bool ForceMargins, int32_t Color, int32_t Opacity) {
    PixelBuffer result = source;
    const int64_t maxX = source.width() - 1;
    const int64_t maxY = source.height() - 1;
    const std::array<int32_t, 3> line = {Color >> 16 & 255, Color >> 8 & 255, Color & 255};
    const float o = static_cast<float>(Opacity / 255.0);
    const float u = static_cast<float>(1 - double{o});
    const auto blend = [&](int64_t x, int64_t y) {
        if (!worked(source, region, x, y)) return;
        const Pixel from = read(source, x, y);
        Pixel& p = place(result, x, y);
        for (int c = 0; c < 3; ++c)
            channel(p, c) =
                byteOr(double{o} * line.at(static_cast<size_t>(c)) + channel(from, c) * double{u},
                       channel(p, c));
    };
    const Scan scan(region);
    steps(scan.top, scan.bottom, VStep, [&](int64_t y) {
        for (int64_t x = scan.left; x <= scan.right; ++x)
            blend(x, y);
    });
    if (ForceMargins)
        for (int64_t x = scan.left; x <= scan.right; ++x)
            blend(x, maxY);
    steps(scan.left, scan.right, HStep, [&](int64_t x) {
        for (int64_t y = scan.left; y <= scan.bottom; ++y)
            blend(x, y);
    });
    if (ForceMargins)
        for (int64_t y = scan.top; y <= scan.bottom; ++y)
            blend(maxX, y);
    return result;
}

/// \throws StatementFailed where the squares wrap to a sum without a root
inline PixelBuffer light(const PixelBuffer& source, const Region& region, float xRel, float yRel,
                         float dRel, int32_t iFactor, int32_t dFactor) {
    PixelBuffer result = source;
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    const int32_t lx = round(maxX * double{xRel});
    const int32_t ly = round(maxY * double{yRel});
    const int32_t rad = round((maxX > maxY ? maxX : maxY) * double{dRel});
    const float f = static_cast<float>(1 - dFactor / 100.0);
    for (int64_t y = -2; y <= maxY + 2; ++y)
        for (int64_t x = -2; x <= maxX + 2; ++x) {
            const int64_t i = x - lx;
            const int64_t j = y - ly;
            if (i < -int64_t{rad} || i > rad || j < -int64_t{rad} || j > rad) continue;
            const int32_t d = static_cast<int32_t>(i) * static_cast<int32_t>(i) +
                              static_cast<int32_t>(j) * static_cast<int32_t>(j);
            if (!(d < rad * rad) || !worked(source, region, x, y)) continue;
            if (d < 0) throw StatementFailed("no root");
            const int32_t a = round(iFactor * (1 - (double{f} * std::sqrt(double(d))) / rad));
            Pixel& p = place(result, x, y);
            for (int c = 0; c < 3; ++c) {
                const int32_t sum = channel(p, c) + a;
                channel(p, c) = static_cast<uint8_t>(sum > 255 ? 255 : sum);
            }
        }
    return result;
}

/// \throws StatementFailed for a step of 0 that would never end
inline PixelBuffer texturize(const PixelBuffer& source, const Region& region,
                             const PixelBuffer& mask) {
    PixelBuffer result = source;
    const int32_t mW = mask.width() - 1;
    const int32_t mH = mask.height() - 1;
    const Scan scan(region);
    // Refused before the first row of tiles.
    if (mW == 0) steps(scan.left, scan.right, mW, [](int64_t) {});
    steps(scan.top, scan.bottom, mH, [&](int64_t y) {
        steps(scan.left, scan.right, mW, [&](int64_t x) {
            for (int64_t j = 0; j <= mH; ++j)
                for (int64_t i = 0; i <= mW; ++i) {
                    if (!worked(source, region, x + i, y + j)) continue;
                    const float k = static_cast<float>(read(mask, i, j).blue / 128.0);
                    const Pixel from = read(source, x + i, y + j);
                    Pixel& p = place(result, x + i, y + j);
                    for (int c = 0; c < 3; ++c)
                        channel(p, c) = clamp(round(channel(from, c) * double{k}));
                }
        });
    });
    return result;
}

inline PixelBuffer stuckiBw(const PixelBuffer& source, const Region& region, int32_t PalWeight) {
    PixelBuffer result = source;
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    int32_t sum = 0;
    int32_t count = 0;
    for (int32_t y = 0; y <= maxY; ++y)
        for (int32_t x = 0; x <= maxX; ++x) {
            const Pixel p = read(source, x, y);
            sum += (p.blue + p.green + p.red) / 3;
            ++count;
        }
    const int32_t threshold = count == 0 ? 0 : sum / count;

    // Rows 1 to 3; what lies beyond the image has no errors.
    std::array<std::vector<int32_t>, 4> errors;
    errors.fill(std::vector<int32_t>(static_cast<size_t>(maxX + 1)));
    const auto error = [&](size_t row, int64_t x) -> int32_t* {
        return x >= 0 && x <= maxX ? &errors.at(row).at(static_cast<size_t>(x)) : nullptr;
    };
    const Scan scan(region);
    for (int64_t y = scan.top; y <= scan.bottom; ++y) {
        for (int64_t x = scan.left; x <= scan.right; ++x) {
            if (!worked(source, region, x, y)) continue;
            const Pixel from = read(source, x, y);
            int32_t g = (from.blue + from.green + from.red) / 3;
            if (PalWeight != 0 && error(1, x) != nullptr) g += *error(1, x) * 10 / PalWeight;
            g = std::clamp(g, 0, 255);
            const int32_t out = g < threshold ? 0 : 255;
            Pixel& p = place(result, x, y);
            for (int c = 0; c < 3; ++c)
                channel(p, c) = static_cast<uint8_t>(out);
            const int32_t e = g - out;
            const auto add = [&](size_t row, int64_t column, int32_t weight, bool guard) {
                if (guard && error(row, column) != nullptr) *error(row, column) += e * weight / 42;
            };
            add(1, x + 1, 8, x < maxX - 1);
            add(1, x + 2, 4, x < maxX - 2);
            add(2, x - 2, 2, y < maxY - 1 && x > 1);
            add(2, x - 1, 4, y < maxY - 1 && x > 0);
            add(2, x, 8, y < maxY - 1);
            add(2, x + 1, 4, y < maxY - 1 && x < maxX - 1);
            add(2, x + 2, 2, y < maxY - 1 && x < maxX - 2);
            add(3, x - 2, 1, y < maxY - 2 && x > 1);
            add(3, x - 1, 2, y < maxY - 2 && x > 0);
            add(3, x, 4, y < maxY - 2);
            add(3, x + 1, 2, y < maxY - 2 && x < maxX - 1);
            add(3, x + 2, 1, y < maxY - 2 && x < maxX - 2);
        }
        errors[1] = errors[2];
        errors[2] = errors[3];
        std::fill(errors[3].begin(), errors[3].end(), 0);
    }
    return result;
}

/// The arguments of the gradients.
struct GradientArguments {
    int32_t X1 = 0;
    int32_t Y1 = 0;
    int32_t X2 = 0;
    int32_t Y2 = 0;
    int32_t Color1 = 0;
    int32_t Color2 = 0;
    int32_t Pressure = 0;
    int32_t Frequency = 0;
};

inline PixelBuffer gradient(const PixelBuffer& source, const Region& region,
                            const GradientArguments& with, bool linear) {
    PixelBuffer result = source;
    const int32_t dX = with.X2 - with.X1;
    const int32_t dY = with.Y2 - with.Y1;
    const double dist = std::sqrt(double(dX) * dX + double(dY) * dY);
    if (dist == 0) return result;
    const int32_t rad = round(dist);
    const float p = static_cast<float>(with.Pressure / 100.0);
    const float ip = static_cast<float>(1 - double{p});
    float freq = static_cast<float>((with.Frequency - 1) * 3.141592025756836);
    if (rad < double{freq}) freq = static_cast<float>(rad);

    float a = 0;
    if (dX != 0)
        a = static_cast<float>(std::atan(double(dY) / double(dX)));
    else
        a = static_cast<float>((dY > 0 ? 1 : dY < 0 ? -1 : 0) * 90 * 0.017453288659453392);
    if (dX < 0)
        a = static_cast<float>(a + 180 * 0.017453288659453392);
    else if (dY < 0)
        a = static_cast<float>(a + 360 * 0.017453288659453392);
    const float ca = static_cast<float>(std::cos(double{a}) / rad);
    const float sa = static_cast<float>(std::sin(double{a}) / rad);

    std::array<int32_t, 3> a1 = {with.Color1 >> 16 & 255, with.Color1 >> 8 & 255,
                                 with.Color1 & 255};
    std::array<int32_t, 3> a2 = {with.Color2 >> 16 & 255, with.Color2 >> 8 & 255,
                                 with.Color2 & 255};
    float t = 0;
    for (int32_t y = 0; y < source.height(); ++y)
        for (int32_t x = 0; x < source.width(); ++x) {
            if (!region.contains(x, y)) continue;
            const int32_t i = x - with.X1;
            const int32_t j = y - with.Y1;
            if (linear)
                t = static_cast<float>(i * double{ca} + j * double{sa});
            else if (i * i + j * j >= 0)
                t = static_cast<float>(std::sqrt(double(i * i + j * j)) / rad);
            if (freq > 0) {
                t = static_cast<float>(std::sin(double{t} * double{freq}));
                t = static_cast<float>(double{t} * double{t});
            }
            if (t > 1) t = 1;
            if (linear && t < 0) t = 0;
            const float u = static_cast<float>(1 - double{t});
            Pixel& to = place(result, x, y);
            for (int c = 0; c < 3; ++c) {
                const int32_t v = channel(source.at(x, y), c);
                const auto k = static_cast<size_t>(c);
                if (with.Color1 == -1) a1.at(k) = v;
                if (with.Color2 == -1) a2.at(k) = v;
                channel(to, c) = byteOr(
                    double{p} * (double{t} * a2.at(k) + double{u} * a1.at(k)) + v * double{ip},
                    channel(to, c));
            }
        }
    return result;
}

}  // namespace tessarine::tests::twin
