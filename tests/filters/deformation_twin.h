#pragma once

#include <cmath>
#include <cstdint>
#include <string>

#include "pixels/failures.h"
#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twin of the deformations: plain loops over x and y, to be checked by eye. It shares
// nothing with the library but the buffer and the region type.

namespace tessarine::tests::twin::deformation {

struct Place {
    int32_t x = 0;
    int32_t y = 0;
};

constexpr float degree = 0.017453288659453392F;

inline void copyColours(PixelBuffer& result, int32_t x, int32_t y, const Pixel& from) {
    Pixel& target = result.writableBlock()[result.offsetOfRow(y) + x];
    target = {from.blue, from.green, from.red, target.fourth};
}

/// Each pixel of the region's box is taken from `sourceOf(x, y)`, if the region contains that.
template <class SourceOf>
PixelBuffer deform(const PixelBuffer& source, const Region& region, bool CleanBack,
                   SourceOf sourceOf) {
    PixelBuffer result = source;
    for (int32_t y = region.box().top; y < region.box().bottom; ++y)
        for (int32_t x = region.box().left; x < region.box().right; ++x) {
            const Place from = sourceOf(x, y);
            if (!holds(source, x, y)) continue;
            if (region.contains(from.x, from.y))
                copyColours(result, x, y, read(source, from.x, from.y));
            else if (CleanBack)
                copyColours(result, x, y, Pixel{});
        }
    return result;
}

inline float angle(int32_t dX, int32_t dY) {
    const double pi = 3.141592F;
    if (dX == 0) return static_cast<float>(dY >= 1 ? pi / 2 : -pi / 2);
    double a = std::atan(static_cast<double>(dY) / static_cast<double>(dX));
    if (dX < 0) a = a + pi;
    return static_cast<float>(a);
}

inline PixelBuffer bend(const PixelBuffer& source, const Region& region, int32_t RadiusFactor,
                        bool CleanBack) {
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    const int32_t cx = maxX / 2;
    const int32_t cy = maxY / 2;
    const double turn = 6.283184F;
    const float k = static_cast<float>(RadiusFactor / 100.0 + 2);
    return deform(source, region, CleanBack, [&](int32_t x, int32_t y) {
        const int32_t dx = x - cx;
        const int32_t dy = y - cy;
        const double r = std::sqrt(static_cast<double>(dx * dx + dy * dy));
        const float s = static_cast<float>(k * r);
        float a = -angle(dy, dx);
        if (dy < 0 || dx > 0) a = static_cast<float>(a + turn);
        return Place{round(maxX * static_cast<double>(a) / turn),
                     round(maxY - static_cast<double>(s))};
    });
}

inline PixelBuffer fold(const PixelBuffer& source, const Region& region, int32_t wFactor,
                        int32_t hFactor, bool CleanBack) {
    const double maxX = source.width() - 1;
    const double maxY = source.height() - 1;
    const int32_t cx = (source.width() - 1) / 2;
    const int32_t cy = (source.height() - 1) / 2;
    return deform(source, region, CleanBack, [&](int32_t x, int32_t y) {
        const double dx = x - cx;
        const double dy = y - cy;
        return Place{round(dx * ((dy / 100) * hFactor / maxY + 1) + cx),
                     round(dy * ((dx / 100) * wFactor / maxX + 1) + cy)};
    });
}

inline PixelBuffer stretch(const PixelBuffer& source, const Region& region, int32_t wFactor,
                           int32_t hFactor, bool CleanBack) {
    const int32_t cx = (source.width() - 1) / 2;
    const int32_t cy = (source.height() - 1) / 2;
    const float fw = static_cast<float>(wFactor / 100.0 + 1);
    const float fh = static_cast<float>(hFactor / 100.0 + 1);
    return deform(source, region, CleanBack, [&](int32_t x, int32_t y) {
        return Place{round((x - cx) * double{fw} + cx), round((y - cy) * double{fh} + cy)};
    });
}

inline PixelBuffer twirl(const PixelBuffer& source, const Region& region, int32_t Factor,
                         int32_t OffsetDeg, bool CleanBack) {
    const int32_t cx = (source.width() - 1) / 2;
    const int32_t cy = (source.height() - 1) / 2;
    const float t = static_cast<float>((Factor / 10.0) / cx);
    const float o = static_cast<float>(OffsetDeg * double{degree});
    return deform(source, region, CleanBack, [&](int32_t x, int32_t y) {
        const int32_t dx = x - cx;
        const int32_t dy = y - cy;
        const int32_t r = round(std::sqrt(static_cast<double>(dx * dx + dy * dy)));
        if (r == 0) return Place{cx, cy};
        const float a = static_cast<float>(angle(dx, dy) - r * double{t});
        return Place{round(r * std::cos(double{a} + double{o}) + cx),
                     round(r * std::sin(double{a} + double{o}) + cy)};
    });
}

inline PixelBuffer rotate(const PixelBuffer& source, const Region& region, int32_t Degrees,
                          bool CleanBack) {
    const int32_t cx = (source.width() - 1) / 2;
    const int32_t cy = (source.height() - 1) / 2;
    const double c = static_cast<float>(std::cos(Degrees * double{degree}));
    const double s = static_cast<float>(std::sin(Degrees * double{degree}));
    return deform(source, region, CleanBack, [&](int32_t x, int32_t y) {
        const int32_t dx = x - cx;
        const int32_t dy = y - cy;
        return Place{round(dx * c - dy * s + cx), round(dx * s + dy * c + cy)};
    });
}

inline PixelBuffer rotateSmooth(const PixelBuffer& source, const Region& region, int32_t Degrees) {
    const int32_t cx = (source.width() - 1) / 2;
    const int32_t cy = (source.height() - 1) / 2;
    const double c = static_cast<float>(std::cos(Degrees * double{degree}));
    const double s = static_cast<float>(std::sin(Degrees * double{degree}));
    PixelBuffer result = source;
    for (int32_t y = region.box().top; y < region.box().bottom; ++y)
        for (int32_t x = region.box().left; x < region.box().right; ++x) {
            if (!holds(source, x, y)) continue;
            const int32_t dx = x - cx;
            const int32_t dy = y - cy;
            const float rx = static_cast<float>(dx * c - dy * s + cx);
            const float ry = static_cast<float>(dx * s + dy * c + cy);
            const auto ix = static_cast<int32_t>(std::floor(rx));
            const auto iy = static_cast<int32_t>(std::floor(ry));
            if (ix < 0 || ix >= source.width() || iy < 0 || iy >= source.height()) {
                copyColours(result, x, y, Pixel{});
                continue;
            }
            const double fx = static_cast<float>(rx - static_cast<float>(ix));
            const double fy = static_cast<float>(ry - static_cast<float>(iy));
            Pixel mixed;
            for (int ch = 0; ch < 3; ++ch) {
                const auto value = [&](int32_t a, int32_t b) {
                    return static_cast<double>(channel(read(source, a, b), ch));
                };
                const int32_t left = round((1 - fy) * value(ix, iy) + fy * value(ix, iy + 1));
                const int32_t right =
                    round((1 - fy) * value(ix + 1, iy) + fy * value(ix + 1, iy + 1));
                channel(mixed, ch) = clamp(round(left * (1 - fx) + right * fx));
            }
            copyColours(result, x, y, mixed);
        }
    return result;
}

inline PixelBuffer glass(const PixelBuffer& source, const Region& region, const std::string& style,
                         int32_t Intensity) {
    uint32_t counter = 0;
    Place from{-2147483647 - 1, 0};  // where nothing is assigned: outside every region of the test
    return deform(source, region, false, [&](int32_t x, int32_t y) {
        ++counter;
        const double n = static_cast<int32_t>(counter);
        const double X = x;
        const double Y = y;
        const std::string row = style + " " + std::to_string(Intensity);
        if (row == "slanting 0") from = {round(X - 3 * std::sin(n)), y};
        if (row == "slanting 1") from = {x, round(Y - 10 * std::sin(n))};
        if (row == "vertical 0") from = {round(X + 2 * std::tan(X)), y};
        if (row == "vertical 1") from = {round(X - 3 * std::sin(X)), y};
        if (row == "vertical 2") from = {round(X - 10 * std::cos(X)), y};
        if (row == "horizontal 0") from = {x, round(Y + 2 * std::tan(Y))};
        if (row == "horizontal 1") from = {x, round(Y - 3 * std::sin(Y))};
        if (row == "horizontal 2") from = {x, round(Y - 10 * std::cos(Y))};
        if (row == "squary 0") from = {round(X + 2 * std::tan(X)), round(Y + 2 * std::tan(Y))};
        if (row == "squary 1") from = {round(X - 5 * std::sin(X)), round(Y - 5 * std::sin(Y))};
        if (row == "squary 2") from = {round(X - 10 * std::cos(X)), round(Y - 10 * std::cos(Y))};
        if (row == "curtain 0") from = {round(std::tan(Y)), y};
        if (row == "curtain 1") from = {round(std::tan(X)), y};
        if (row == "curtain 2") from = {round(std::tan(Y) * std::tan(X)), y};
        if (row == "curtain 3") from = {x, round(std::tan(X) + std::tan(Y))};
        return from;
    });
}

inline PixelBuffer lens(const PixelBuffer& source, const Region& region, float xRel, float yRel,
                        float dRel, int32_t Factor) {
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    const int32_t lx = round(double{xRel} * maxX);
    const int32_t ly = round(double{yRel} * maxY);
    const int32_t R = maxX > maxY ? round(double{dRel} * maxX) : round(double{dRel} * maxY);
    const float p = static_cast<float>(R * (150 - Factor) / 150.0);
    const float q = static_cast<float>(std::sqrt(R * R - double{p} * double{p}));
    const int32_t R2 = R * R;
    const int32_t q2 = round(double{q} * double{q});
    PixelBuffer result = source;
    int32_t sx = lx;
    int32_t sy = ly;
    // All destinations (lx + i, ly + j) that the buffer has, j outer and i inner.
    for (int32_t y = -2; y <= maxY + 2; ++y)
        for (int32_t x = -2; x <= maxX + 2; ++x) {
            const int64_t iWide = int64_t{x} - lx;
            const int64_t jWide = int64_t{y} - ly;
            if (iWide < -int64_t{R} || iWide > R || jWide < -int64_t{R} || jWide > R) continue;
            const auto i = static_cast<int32_t>(iWide);
            const auto j = static_cast<int32_t>(jWide);
            if (!(i * i + j * j < q2)) continue;
            if (!region.contains(x, y)) continue;
            const int32_t z = round(std::sqrt(static_cast<double>(R2 - i * i - j * j)));
            if (z != 0) {  // a division by zero is skipped
                sx = static_cast<int32_t>(int64_t{round(i * double{p})} / z) + lx;
                sy = static_cast<int32_t>(int64_t{round(j * double{p})} / z) + ly;
            }
            copyColours(result, x, y, read(source, sx, sy));
        }
    return result;
}

inline PixelBuffer waves(const PixelBuffer& source, const Region& region, int32_t fFactor,
                         int32_t AFactor, int32_t Start) {
    const int32_t maxY = source.height() - 1;
    const double f = static_cast<float>(fFactor);
    const double a = static_cast<float>(AFactor * 0.25);
    PixelBuffer result = source;
    for (int32_t y = -2; y <= source.height() + 1; ++y)
        for (int32_t x = -2; x <= source.width() + 1; ++x) {
            if (!region.contains(x, y)) continue;
            int32_t entry = round(y + a * std::sin((Start + f * y) * double{degree}));
            if (entry < 0) entry = 0;
            if (entry > maxY) entry = maxY;
            copyColours(result, x, y, read(source, x, entry));
        }
    return result;
}

inline PixelBuffer tile(const PixelBuffer& source, const Region& region, int32_t Factor) {
    const double maxX = source.width() - 1;
    const double maxY = source.height() - 1;
    int32_t tw = Factor == 0 ? 0 : round(maxX / Factor);
    int32_t th = Factor == 0 ? 0 : round(maxY / Factor);
    if (tw < 1) tw = 1;
    if (th < 1) th = 1;
    const double fx = static_cast<float>(maxX / tw);
    const double fy = static_cast<float>(maxY / th);
    PixelBuffer result = source;
    for (int32_t y = region.box().top; y <= region.box().bottom - 1; y += th)
        for (int32_t x = region.box().left; x <= region.box().right - 1; x += tw)
            for (int32_t j = y; j <= y + th; ++j)
                for (int32_t i = x; i <= x + tw; ++i)
                    if (region.contains(i, j) && holds(source, i, j))
                        copyColours(result, i, j,
                                    read(source, round((i - x) * fx), round((j - y) * fy)));
    return result;
}

/// \throws StatementFailed where a byte does not hold the value
inline uint8_t byteOf(double v) {
    const int32_t whole = round(v);
    if (whole < 0 || whole > 255) throw StatementFailed("overflow");
    return static_cast<uint8_t>(whole);
}

/// Whether a loop from `from` to `to` goes on at v. \throws StatementFailed if it never ends
inline bool goesOn(int64_t v, int32_t to, int32_t step) {
    if (step < 0) return v >= to;
    if (step == 0 && v <= to) throw StatementFailed("never ends");
    return v <= to;
}

/// \throws StatementFailed for a tile without size, or where a byte does not hold a mixture
inline PixelBuffer tileMask(const PixelBuffer& source, const Region& region,
                            const PixelBuffer& mask, int32_t xOffset, int32_t yOffset, bool Tiled,
                            int32_t Transparency, int32_t MaskColor) {
    const int32_t maxX = source.width() - 1;
    const int32_t maxY = source.height() - 1;
    const int32_t mW = mask.width() - 1;
    const int32_t mH = mask.height() - 1;
    const int32_t mR = MaskColor & 255;
    const int32_t mG = MaskColor >> 8 & 255;
    const int32_t mB = MaskColor >> 16 & 255;
    const int32_t stepX = Tiled ? mW + 1 : maxX - xOffset + 1;
    const int32_t stepY = Tiled ? mH + 1 : maxY - yOffset + 1;
    const double T = static_cast<float>(Transparency / 100.0);
    const double U = static_cast<float>(1 - T);
    PixelBuffer result = source;
    for (int64_t y = yOffset; goesOn(y, maxY, stepY); y += stepY)
        for (int64_t x = xOffset; goesOn(x, maxX, stepX); x += stepX)
            for (int64_t j = y; j <= y + mH; ++j)
                for (int64_t i = x; i <= x + mW; ++i) {
                    if (!holds(source, i, j)) continue;
                    const auto toX = static_cast<int32_t>(i);
                    const auto toY = static_cast<int32_t>(j);
                    if (!region.contains(toX, toY)) continue;
                    const Pixel m = read(mask, i - x, j - y);
                    if (MaskColor != -1 && m.red == mR && m.green == mG && m.blue == mB) continue;
                    const Pixel p = source.at(toX, toY);
                    copyColours(result, toX, toY,
                                {byteOf(p.blue * T + m.blue * U), byteOf(p.green * T + m.green * U),
                                 byteOf(p.red * T + m.red * U), 0});
                }
    return result;
}

inline PixelBuffer shift(const PixelBuffer& source, const Region& region, int32_t ColorFrom,
                         int32_t Inc, int32_t Tolerance) {
    const int32_t fR = ColorFrom & 255;
    const int32_t fG = ColorFrom >> 8 & 255;
    const int32_t fB = ColorFrom >> 16 & 255;
    const int32_t tol = round(std::pow((Tolerance * 127.5) / 100, 2) + 1);
    return loop(source, region, [&](Pixel p) {
        const int32_t d = (p.blue - fB) * (p.blue - fB) + (p.green - fG) * (p.green - fG) +
                          (p.red - fR) * (p.red - fR);
        if (!(d < tol)) return p;
        const double w = static_cast<float>(1 - static_cast<double>(d) / static_cast<double>(tol));
        for (int ch = 0; ch < 3; ++ch) {
            const int32_t v = channel(p, ch);
            channel(p, ch) = static_cast<uint8_t>(round(v + (clamp(v + Inc) - v) * w));
        }
        return p;
    });
}

}  // namespace tessarine::tests::twin::deformation
