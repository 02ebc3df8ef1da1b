#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "filters/colour.h"
#include "filters/near_trigonometry.h"
#include "pixels/bilinear.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"
#include "pixels/reserved.h"
#include "pixels/sources.h"

// Deformations: each pixel is taken from a computed source point. And Shift, which moves colours.
//
// A division of floats by zero is no failure: it gives an infinity or no number, and both round to
// the lowest integer, which is far outside every picture. So no pixel has a source in FOLD on a
// picture of one row or one column, nor in TWIRL on one of at most two columns but for the centre.
// A region that reaches out to the lowest coordinate contains that point all the same; what it
// gives is what any read beyond the buffer gives, black.

namespace tessarine {

namespace {

constexpr float radiansOfDegree = 0.017453288659453392F;

/// A value for each x (or y) of a buffer, margin included, made by `of(x)`.
template <class Value>
class AxisTable {
  public:
    /// \param last the highest x inside the margin
    /// \throws StatementFailed for want of memory
    template <class Of>
    AxisTable(int32_t last, Of of) : values_(reserved<Value>(int64_t{last} + 1 + 2 * margin)) {
        for (int32_t v = -margin; v <= last + margin; ++v)
            values_.push_back(of(v));
    }
    Value operator[](int32_t v) const {
        return values_[static_cast<size_t>(ptrdiff_t{v} + margin)];
    }

  private:
    static constexpr int32_t margin = PixelBuffer::margin;

    std::vector<Value> values_;
};

template <class Of>
AxisTable(int32_t, Of) -> AxisTable<std::invoke_result_t<Of, int32_t>>;

Uncovered uncoveredBy(bool CleanBack) { return CleanBack ? Uncovered::blacken : Uncovered::leave; }

/// The distance of a point from the origin. Its square is a 32-bit integer, and where that wraps
/// to a negative one the distance is no number.
double distanceOf(int32_t dx, int32_t dy) {
    return std::sqrt(static_cast<double>(dx * dx + dy * dy));
}

/// A turn by whole degrees.
struct Turn {
    explicit Turn(int32_t Degrees)
        : c(single(std::cos(Degrees * double{radiansOfDegree}))),
          s(single(std::sin(Degrees * double{radiansOfDegree}))) {}
    double c;
    double s;
};

/// How far GLASS displaces a coordinate: `amplitude` times a function of the coordinate itself.
struct Ripple {
    double amplitude;
    double (*wave)(double);

    int32_t moved(int32_t v) const { return roundToInteger(v + amplitude * wave(v)); }
};

double tangent(double v) { return std::tan(v); }
double sine(double v) { return std::sin(v); }
double cosine(double v) { return std::cos(v); }

/// The ripples of "vertical", "horizontal" and "squary" by Intensity 0 to 2.
Ripple rippleOf(const std::string& style, int16_t Intensity) {
    if (Intensity == 0) return {2, tangent};
    if (Intensity == 1) return {style == "squary" ? -5.0 : -3.0, sine};
    return {-10, cosine};
}

// The styles of GLASS: each gives the function that gives a row's source points.

/// "slanting", which goes by the number of a pixel in the whole scan.
struct Slanting {
    int32_t left;  ///< where the scan begins, which may be far outside the buffer
    int32_t top;
    int32_t width;  ///< pixels of the scan in a row
    int16_t Intensity;

    int32_t numberOf(int32_t x, int32_t y) const { return (y - top) * width - left + 1 + x; }
    Point placeOf(int32_t x, int32_t y) const {
        const double ripple = std::sin(numberOf(x, y));
        return Intensity == 0 ? Point{roundToInteger(x - 3 * ripple), y}
                              : Point{x, roundToInteger(y - 10 * ripple)};
    }
    Guess guessOf(int32_t x, int32_t y) const {
        constexpr double error = 1e-6;
        const double ripple = nearSineAndCosine(numberOf(x, y)).sine;
        const double moved = Intensity == 0 ? x - 3 * ripple : y - 10 * ripple;
        const Near<int32_t> whole = nearInteger(moved, error);
        return Intensity == 0 ? Guess{{whole.value, y}, whole.isSure}
                              : Guess{{x, whole.value}, whole.isSure};
    }
};

/// "vertical", "horizontal" and "squary", which displace columns, rows or both.
/// \param maxX the last column of the picture
auto rippled(int32_t maxX, const std::string& style, int16_t Intensity) {
    const Ripple ripple = rippleOf(style, Intensity);
    const bool acrossX = style != "horizontal";
    const bool acrossY = style != "vertical";
    AxisTable columns(maxX, [=](int32_t x) { return acrossX ? ripple.moved(x) : x; });
    return [=, columns = std::move(columns)](int32_t, int32_t y) {
        const int32_t sy = acrossY ? ripple.moved(y) : y;
        return [sy, &columns](int32_t x) { return Point{columns[x], sy}; };
    };
}

/// "curtain", whose source points do not go out from the pixel's own place.
/// \param maxX the last column of the picture
auto curtain(int32_t maxX, int16_t Intensity) {
    return [Intensity, tangents = AxisTable(maxX, tangent)](int32_t, int32_t y) {
        const double tanY = std::tan(y);
        return [=, &tangents](int32_t x) {
            const double tanX = tangents[x];
            const double moved = Intensity == 0   ? tanY
                                 : Intensity == 1 ? tanX
                                 : Intensity == 2 ? tanY * tanX
                                                  : tanX + tanY;
            const int32_t whole = roundInLoop(moved);
            return Intensity == 3 ? Point{x, whole} : Point{whole, y};
        };
    };
}

/// The source of the pixel that lies (i, j) from the centre of a lens.
/// \param p the height of the lens, a part of a ball, at its rim
/// \param R2 the square of its radius
Point sourceInLens(const Point& centre, int32_t i, int32_t j, double p, int32_t R2) {
    const int32_t z = roundToInteger(std::sqrt(static_cast<double>(R2 - i * i - j * j)));
    // z is 0 only in a disc so large that its square wraps, and only where p is 0 or nearly so. The
    // division fails, and the source of the pixel before would stay in use. By a p of 0 that is the
    // centre. Only a product that wraps makes p nearly 0: there the earlier source is not looked
    // after, so that no pixel hangs on another, and the centre stands in.
    if (z == 0) return centre;
    return {quotient(roundToInteger(i * p), z) + centre.x,
            quotient(roundToInteger(j * p), z) + centre.y};
}

}  // namespace

PixelBuffer cBitFilter::BEND(int32_t RadiusFactor, bool CleanBack) {
    constexpr float fullTurn = 6.283184F;
    const double k = single(RadiusFactor / 100.0 + 2);
    const int32_t cx = maxX_ / 2;
    const int32_t cy = maxY_ / 2;
    const double maxX = maxX_;
    const double maxY = maxY_;
    const auto placeBy = [=](int32_t dx, int32_t dy, float angle) {
        const float s = single(k * distanceOf(dx, dy));
        const float turned = single(double{-angle} + double{fullTurn});
        const float a = (dy < 0) | (dx > 0) ? turned : -angle;
        return Point{roundInLoop(maxX * double{a} / double{fullTurn}),
                     roundInLoop(maxY - double{s})};
    };
    // The row's offset stands first, so that the angle is 0 straight below the centre.
    const auto guessOf = [=](int32_t x, int32_t y) {
        const Near<float> angle = nearAngle(y - cy, x - cx);
        return Guess{placeBy(x - cx, y - cy, angle.value), angle.isSure};
    };
    const auto placeOf = [=](int32_t x, int32_t y) {
        return placeBy(x - cx, y - cy, GetAngle(y - cy, x - cx));
    };
    return filterGuessedSources(uncoveredBy(CleanBack), guessOf, placeOf);
}

PixelBuffer cBitFilter::FOLD(int32_t wFactor, int32_t hFactor, bool CleanBack) {
    const int32_t cx = maxX_ / 2;
    const int32_t cy = maxY_ / 2;
    const AxisTable stretchOfColumn(
        maxX_, [=, this](int32_t x) { return ((x - cx) / 100.0) * wFactor / maxX_ + 1; });
    return filterSources(uncoveredBy(CleanBack), [=, this, &stretchOfColumn](int32_t, int32_t y) {
        const int32_t dy = y - cy;
        const double stretchOfRow = (dy / 100.0) * hFactor / maxY_ + 1;
        return [=, &stretchOfColumn](int32_t x) {
            return Point{roundInLoop((x - cx) * stretchOfRow + cx),
                         roundInLoop(dy * stretchOfColumn[x] + cy)};
        };
    });
}

PixelBuffer cBitFilter::STRETCH(int32_t wFactor, int32_t hFactor, bool CleanBack) {
    const auto scaled = [](int32_t last, int32_t factor) {
        const float f = single(factor / 100.0 + 1);
        const int32_t centre = last / 2;
        return AxisTable(
            last, [=](int32_t v) { return roundToInteger((v - centre) * double{f} + centre); });
    };
    const AxisTable columns = scaled(maxX_, wFactor);
    const AxisTable rows = scaled(maxY_, hFactor);
    return filterSources(uncoveredBy(CleanBack), [&](int32_t, int32_t y) {
        return [&columns, sy = rows[y]](int32_t x) { return Point{columns[x], sy}; };
    });
}

PixelBuffer cBitFilter::TWIRL(int32_t Factor, int32_t OffsetDeg, bool CleanBack) {
    const int32_t cx = maxX_ / 2;
    const int32_t cy = maxY_ / 2;
    const double t = single((Factor / 10.0) / cx);
    const double o = single(OffsetDeg * double{radiansOfDegree});
    const auto turnedBy = [=](double r, float angle) {
        return double{single(double{angle} - r * t)} + o;
    };
    const auto placeOf = [=](int32_t x, int32_t y) {
        const int32_t dx = x - cx;
        const int32_t dy = y - cy;
        const int32_t r = roundToInteger(distanceOf(dx, dy));
        if (r == 0) return Point{cx, cy};
        const double turned = turnedBy(r, GetAngle(dx, dy));
        return Point{roundToInteger(r * std::cos(turned) + cx),
                     roundToInteger(r * std::sin(turned) + cy)};
    };
    const auto guessOf = [=](int32_t x, int32_t y) {
        constexpr double error = 1e-6;
        constexpr double largestRadius = error / sineError / 2;
        const double r = roundInLoop(distanceOf(x - cx, y - cy));
        const Near<float> angle = nearAngle(x - cx, y - cy);
        const double turned = turnedBy(r, angle.value);
        const SineAndCosine along = nearSineAndCosine(turned);
        const Near<int32_t> sx = nearInteger(r * along.cosine + cx, error);
        const Near<int32_t> sy = nearInteger(r * along.sine + cy, error);
        const bool isSure = angle.isSure & sx.isSure & sy.isSure & (r > 0) & (r < largestRadius) &
                            (std::abs(turned) < largestAngle);
        return Guess{{sx.value, sy.value}, isSure};
    };
    return filterGuessedSources(uncoveredBy(CleanBack), guessOf, placeOf);
}

PixelBuffer cBitFilter::ROTATE(int32_t Degrees, bool CleanBack) {
    const Turn turn(Degrees);
    const int32_t cx = maxX_ / 2;
    const int32_t cy = maxY_ / 2;
    return filterSources(uncoveredBy(CleanBack), [=](int32_t, int32_t y) {
        return [=, dyS = (y - cy) * turn.s, dyC = (y - cy) * turn.c](int32_t x) {
            const int32_t dx = x - cx;
            return Point{roundInLoop(dx * turn.c - dyS + cx), roundInLoop(dx * turn.s + dyC + cy)};
        };
    });
}

PixelBuffer cBitFilter::RotateSmooth(int32_t Degrees) {
    const Turn turn(Degrees);
    const int32_t cx = maxX_ / 2;
    const int32_t cy = maxY_ / 2;
    return filterMixed([=](int32_t, int32_t y) {
        return [=, dyS = (y - cy) * turn.s, dyC = (y - cy) * turn.c](int32_t x) {
            const int32_t dx = x - cx;
            return SinglePoint{single(dx * turn.c - dyS + cx), single(dx * turn.s + dyC + cy)};
        };
    });
}

PixelBuffer cBitFilter::GLASS(const std::string& style, int16_t Intensity) {
    constexpr auto leave = Uncovered::leave;
    const auto known = [=](int16_t count) { return Intensity >= 0 && Intensity < count; };
    SetScanRect(0);
    const Slanting slanting{scanLeft_, scanTop_, scanRight_ - scanLeft_ + 1, Intensity};
    if (style == "slanting" && known(2))
        return filterGuessedSources(
            leave, [=](int32_t x, int32_t y) { return slanting.guessOf(x, y); },
            [=](int32_t x, int32_t y) { return slanting.placeOf(x, y); });
    if ((style == "vertical" || style == "horizontal" || style == "squary") && known(3))
        return filterSources(leave, rippled(maxX_, style, Intensity));
    if (style == "curtain" && known(4)) return filterSources(leave, curtain(maxX_, Intensity));
    // No source point is ever computed: it stays where no region reaches.
    constexpr int32_t nowhere = std::numeric_limits<int32_t>::max();
    return filterSources(leave, [](int32_t, int32_t) {
        return [](int32_t) { return Point{nowhere, nowhere}; };
    });
}

PixelBuffer cBitFilter::LENS(float xRel, float yRel, float dRel, int32_t Factor) {
    const Point centre{roundToInteger(double{xRel} * maxX_), roundToInteger(double{yRel} * maxY_)};
    const int32_t R = roundToInteger(double{dRel} * std::max(maxX_, maxY_));
    const float p = single(R * (150 - Factor) / 150.0);
    const int32_t R2 = R * R;
    const float q = single(std::sqrt(R2 - double{p} * double{p}));
    const int32_t q2 = roundToInteger(double{q} * double{q});
    return filterSquare(OnFailure::skip, centre, R, [=, this](const RowRun& run) {
        const int32_t j = run.y - centre.y;
        for (size_t k = 0; k < run.result.size(); ++k) {
            const int32_t i = run.x + static_cast<int32_t>(k) - centre.x;
            if (i * i + j * j >= q2) continue;
            const Point from = sourceInLens(centre, i, j, double{p}, R2);
            takeColours(run.result[k], bits_.reached(from.x, from.y));
        }
    });
}

PixelBuffer cBitFilter::WAVES(int32_t fFactor, int32_t AFactor, int32_t Start) {
    const double f = single(fFactor);
    const double a = single(AFactor * 0.25);
    const AxisTable rows(maxY_, [=, this](int32_t j) {
        const double angle = (Start + f * j) * double{radiansOfDegree};
        return std::min(std::max(roundToInteger(j + a * std::sin(angle)), 0), maxY_);
    });
    return filterRows(OnFailure::skip, regionBox(0), [&](const RowRun& run) {
        const Pixel* source = bits_.row(rows[run.y]) + run.x;
        for (size_t k = 0; k < run.result.size(); ++k)
            takeColours(run.result[k], source[k]);
    });
}

PixelBuffer cBitFilter::TILE(int32_t Factor) {
    // By a Factor of 0 the quotient is an infinity, or no number where `last` is 0 too. Either
    // rounds to the lowest integer, and like every size below 1 that is raised to 1.
    const auto sizeOf = [=](int32_t last) {
        return std::max(roundToInteger(static_cast<double>(last) / Factor), 1);
    };
    const int32_t tw = sizeOf(maxX_);
    const int32_t th = sizeOf(maxY_);
    const float fx = single(static_cast<double>(maxX_) / tw);
    const float fy = single(static_cast<double>(maxY_) / th);
    // Tiles cover one line more than the step. The next tile leaves nothing of it, and after the
    // last tile that line lies outside the region's box.
    CellGrid grid = gridOverBox(tw, th, tw, th);
    grid.joined = true;
    const AxisTable columns(maxX_, [=](int32_t x) {
        const auto inTile = static_cast<int32_t>((int64_t{x} - grid.left) % tw);
        return roundToInteger(inTile * double{fx});
    });
    return filterCells(OnFailure::skip, grid, [&](const Cell& tiles) {
        paintRuns(tiles.result, tiles.shown, [&](const RowRun& run) {
            const Pixel* source = bits_.row(roundToInteger((run.y - tiles.place.top) * double{fy}));
            for (size_t k = 0; k < run.result.size(); ++k)
                takeColours(run.result[k], source[columns[run.x + static_cast<int32_t>(k)]]);
        });
    });
}

PixelBuffer cBitFilter::TileMask(const PixelBuffer& mskBits, int32_t xOffset, int32_t yOffset,
                                 bool Tiled, int32_t Transparency, int32_t MaskColor) {
    if (!mskBits.isDimensioned()) throw StatementFailed("a mask without dimensions has no bounds");
    const Pixel transparent = colourOf(MaskColor);
    const auto isOpaque = [=](const Pixel& p) {
        return MaskColor == -1 || p.blue != transparent.blue || p.green != transparent.green ||
               p.red != transparent.red;
    };
    const double T = single(Transparency / 100.0);
    const double U = single(1 - T);
    const auto blended = [=](const Pixel& image, const Pixel& mask) {
        const auto blend = [=](uint8_t a, uint8_t b) { return toByte(a * T + b * U); };
        return Pixel{blend(image.blue, mask.blue), blend(image.green, mask.green),
                     blend(image.red, mask.red), 0};
    };
    const CellGrid grid{.left = xOffset,
                        .top = yOffset,
                        .right = maxX_,
                        .bottom = maxY_,
                        .stepX = Tiled ? mskBits.width() : maxX_ - xOffset + 1,
                        .stepY = Tiled ? mskBits.height() : maxY_ - yOffset + 1,
                        .width = mskBits.width(),
                        .height = mskBits.height(),
                        .reportFrom = yOffset,
                        .reportWhole = maxY_ - yOffset,
                        .joined = Tiled};
    return filterCells(OnFailure::raise, grid, [&](const Cell& cell) {
        paintRuns(cell.result, cell.shown, [&](const RowRun& run) {
            const Pixel* mask = mskBits.row(run.y - cell.place.top);
            int32_t a = (run.x - cell.place.left) % mskBits.width();
            for (size_t k = 0; k < run.result.size(); ++k) {
                if (isOpaque(mask[a])) takeColours(run.result[k], blended(run.source[k], mask[a]));
                if (++a == mskBits.width()) a = 0;
            }
        });
    });
}

PixelBuffer cBitFilter::Shift(int32_t ColorFrom, int32_t Inc, int32_t Tolerance) {
    const Colour from = channelsOf(colourOf(ColorFrom));
    const double reach = (Tolerance * 127.5) / 100;
    const int32_t tol = roundToInteger(reach * reach + 1);
    return filterSome(
        OnFailure::skip, [=](const Colour& c) { return squaredDistance(c, from) < tol; },
        [=](const Colour& c) {
            const int32_t d = squaredDistance(c, from);
            const double share = single(1 - static_cast<double>(d) / tol);
            const double w = d >= tol ? 0 : share;
            return eachChannel(
                c, [=](int32_t v) { return roundFitting(v + (clampToLevel(v + Inc) - v) * w); });
        });
}

}  // namespace tessarine
