#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "filters/colour.h"
#include "filters/lookup.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"

// New content over the image, and coarser textures of it.

namespace tessarine {

namespace {

/// What a cell's pixels add up to. Sums are 32-bit integers like all others.
struct ColourSums {
    int32_t blue = 0;
    int32_t green = 0;
    int32_t red = 0;
    int32_t count = 0;

    void add(std::span<const Pixel> run) {
        for (const Pixel& p : run) {
            blue += p.blue;
            green += p.green;
            red += p.red;
        }
        count += static_cast<int32_t>(run.size());
    }
};

/// The means of a mosaic's blocks. Each block is added up when it is first asked for, and kept
/// until a block further down takes its place.
class Mosaic {
  public:
    /// \param size above 0, the edge of a block in pixels
    Mosaic(const PixelBuffer& bits, int32_t size)
        : bits_(bits), size_(size), blocks_(static_cast<size_t>(indexOf(bits.width() + 1)) + 1) {}

    /// The means of the block around (x, y), of which x is the left column; `before` where the
    /// block has no pixel of the image.
    Pixel meansAt(int32_t x, int32_t y, const Pixel& before) {
        Block& block = blocks_[static_cast<size_t>(indexOf(x))];
        const int32_t top = y / size_ * size_;
        if (block.top != top) block = added(x, top);
        return block.hasPixels ? block.means : before;
    }

  private:
    struct Block {
        int32_t top = std::numeric_limits<int32_t>::min();  ///< of no block in the buffer
        bool hasPixels = false;
        Pixel means;
    };

    /// Blocks that start in the margin come first.
    int32_t indexOf(int32_t x) const { return x / size_ + PixelBuffer::margin; }

    Block added(int32_t left, int32_t top) const {
        const int32_t right =
            clampToInteger(std::min<int64_t>(int64_t{left} + size_, bits_.width()));
        const int32_t bottom =
            clampToInteger(std::min<int64_t>(int64_t{top} + size_, bits_.height()));
        ColourSums sums;
        for (int32_t y = top; y < bottom && left < right; ++y)
            sums.add({bits_.row(y) + left, bits_.row(y) + right});
        if (sums.count == 0) return {top, false, {}};
        return {top,
                true,
                {lowByte(sums.blue / sums.count), lowByte(sums.green / sums.count),
                 lowByte(sums.red / sums.count), 0}};
    }

    const PixelBuffer& bits_;
    int32_t size_;
    std::vector<Block> blocks_;
};

/// What becomes of a channel's values under a line of one colour. A value that would leave a
/// byte's range stays as it is.
Levels underLine(uint8_t colour, int32_t Opacity) {
    const float o = single(Opacity / 255.0);
    const float u = single(1 - double{o});
    return makeLevels([=](int32_t v) {
        auto level = static_cast<uint8_t>(v);
        attempt([&] { level = toByte(double{o} * colour + v * double{u}); });
        return level;
    });
}

/// What an error of one pixel gives to pixels of weight 8, 4, 2 and 1, in 42nds.
struct Shares {
    int32_t eight;
    int32_t four;
    int32_t two;
    int32_t one;
};

/// The shares of every error from -255 to 255, the lowest first.
std::array<Shares, 511> makeShares() {
    std::array<Shares, 511> shares{};
    int32_t e = -255;
    for (Shares& share : shares) {
        share = {e * 8 / 42, e * 4 / 42, e * 2 / 42, e / 42};
        ++e;
    }
    return shares;
}

/// The errors that wait for the row at hand and for the two below it.
class PendingErrors {
  public:
    /// \param maxX, maxY the last column and row of the image
    PendingErrors(int32_t maxX, int32_t maxY) : maxX_(maxX), maxY_(maxY) {
        rows_.fill(std::vector<int32_t>(static_cast<size_t>(maxX + 1)));
    }

    /// Makes y, which never lies above the row before, the row at hand.
    void moveTo(int32_t y) {
        for (auto rows = std::min<int64_t>(int64_t{y} - y_, 3); rows > 0; --rows) {
            std::rotate(rows_.begin(), rows_.begin() + 1, rows_.end());
            std::fill(rows_.back().begin(), rows_.back().end(), 0);
        }
        y_ = y;
    }

    /// What waits for column x of the row at hand; nothing does outside the image.
    int32_t at(int32_t x) const {
        return x >= 0 && x <= maxX_ ? rows_[0][static_cast<size_t>(x)] : 0;
    }

    /// Hands on the error of column x of the row at hand.
    void spread(int32_t x, const Shares& e) {
        add(0, x, {0, 0, 0, e.eight, e.four});
        if (y_ < maxY_ - 1) add(1, x, {e.two, e.four, e.eight, e.four, e.two});
        if (y_ < maxY_ - 2) add(2, x, {e.one, e.two, e.four, e.two, e.one});
    }

  private:
    /// To the columns x - 2 to x + 2. The last column takes nothing from pixels left of it.
    void add(size_t row, int32_t x, const std::array<int32_t, 5>& shares) {
        for (int32_t k = 0; k < 5; ++k) {
            const int32_t column = x + k - 2;
            const int32_t last = k > 2 ? maxX_ - 1 : maxX_;
            if (column >= 0 && column <= last)
                rows_[row][static_cast<size_t>(column)] += shares[static_cast<size_t>(k)];
        }
    }

    int32_t maxX_;
    int32_t maxY_;
    int32_t y_ = -PixelBuffer::margin;
    std::array<std::vector<int32_t>, 3> rows_;
};

}  // namespace

PixelBuffer cBitFilter::DIFFUSE(int32_t wFactor, int32_t hFactor) {
    const float hw = single(wFactor / 2.0);
    const float hh = single(hFactor / 2.0);
    const RandomGenerator first = random;
    // Every pixel of the scan takes two draws, those outside the buffer too.
    const auto drawsBefore = [this](int64_t x, int64_t y) {
        const int64_t width = int64_t{scanRight_} - scanLeft_ + 1;
        return 2 * (static_cast<uint64_t>(y - scanTop_) * static_cast<uint64_t>(width) +
                    static_cast<uint64_t>(x - scanLeft_));
    };
    PixelBuffer result = filterSources(Uncovered::leave, [&](int32_t left, int32_t row) {
        return [=, y = row, draws = first.after(drawsBefore(left, row))](int32_t x) mutable {
            const int32_t sx = roundToInteger(x + double{draws.draw()} * wFactor - double{hw});
            const int32_t sy = roundToInteger(y + double{draws.draw()} * hFactor - double{hh});
            return Point{sx, sy};
        };
    });
    random = first.after(drawsBefore(scanLeft_, int64_t{scanBottom_} + 1));
    return result;
}

PixelBuffer cBitFilter::HALFTONE(int32_t Radius, int32_t Definition, int32_t Intensity) {
    if (Radius == 0) throw StatementFailed("dots have no radius of 0");
    const double reach = static_cast<double>(Radius + Definition) / Radius;
    const int32_t q = roundToInteger(reach * Radius * Radius);
    const float k = single((Intensity + 100) / 100.0);
    const int32_t step = 2 * Radius;
    const int32_t side = clampToInteger(2 * int64_t{Radius} + 1);
    const CellGrid cells = gridOverBox(step, step, side, side);
    return filterCells(OnFailure::raise, cells, [&](const Cell& cell) {
        ColourSums colour;
        visitRuns(cell.place,
                  [&](std::span<const Pixel> run, int32_t, int32_t) { colour.add(run); });
        const int32_t n = roundToInteger(colour.count / double{k});
        if (n > 0) {
            for (int32_t* sum : {&colour.blue, &colour.green, &colour.red})
                *sum = std::min(roundToInteger(static_cast<double>(*sum) / n), 255);
        }
        paintRuns(cell.result, cell.shown, [&](const RowRun& run) {
            const int32_t j = run.y - cell.place.top - Radius;
            int32_t i = run.x - cell.place.left - Radius;
            for (Pixel& pixel : run.result) {
                const int32_t d = i * i + j * j;
                ++i;
                if (d > q) {
                    takeColours(pixel, Pixel{});
                    continue;
                }
                const double w = single(1 - static_cast<double>(d) / q);
                pixel = {toByte(w * colour.blue), toByte(w * colour.green), toByte(w * colour.red),
                         pixel.fourth};
            }
        });
    });
}

// The means go on from pixel to pixel: one whose block starts outside the region takes those
// before it, in its row or in the rows above. Rows are therefore worked on in their order.
PixelBuffer cBitFilter::PIXELIZE(int32_t PixSize) {
    // Blocks without an edge have no pixels: no means are ever computed.
    const bool hasBlocks = PixSize > 0;
    Mosaic mosaic(bits_, hasBlocks ? PixSize : 1);
    Pixel means;
    Walk walk = regionBox(0);
    walk.isInOrder = true;
    return filterRows(OnFailure::skip, walk, [&](const RowRun& run) {
        int32_t x = run.x;
        for (Pixel& pixel : run.result) {
            if (hasBlocks && x % PixSize == 0) means = mosaic.meansAt(x, run.y, means);
            takeColours(pixel, means);
            ++x;
        }
    });
}

PixelBuffer cBitFilter::NOISE(int32_t Factor, bool Equalized) {
    const int32_t span = 2 * Factor + 1;
    const uint64_t drawsAPixel = Equalized ? 1 : 3;
    const RegionHandle region = regionHandle_.lock();
    const RegionOrder order(region.get());
    const RandomGenerator first = random;
    const auto noisy = [=](int32_t value, double draw) {
        return clampToByte(roundToInteger(value + (span * draw - Factor)));
    };
    PixelBuffer result = filterRows(OnFailure::skip, regionBox(0), [&](const RowRun& run) {
        RandomGenerator draws = first.after(drawsAPixel * order.before(run.x, run.y));
        for (Pixel& p : run.result) {
            const double red = draws.draw();
            const double green = Equalized ? red : draws.draw();
            const double blue = Equalized ? red : draws.draw();
            p = {noisy(p.blue, blue), noisy(p.green, green), noisy(p.red, red), p.fourth};
        }
    });
    random = first.after(drawsAPixel * order.count());
    return result;
}

// Departs from the frame: only every second row is walked and reported.
PixelBuffer cBitFilter::Scanlines(int32_t Factor) {
    const Levels levels = makeLevels([=](int32_t i) { return lowByte(std::max(i - Factor, 0)); });
    const auto darken = throughLevels(levels);
    PixelBuffer result = bits_;
    const Rect scan = regionBox(0).scan;
    const int32_t outside = PixelBuffer::margin;
    Pixel* block = bits_.isDimensioned() ? result.writableBlock() : nullptr;
    for (const int32_t y : steps(scanTop_, scanBottom_, 2, -outside, maxY_ + outside)) {
        paintRuns(block, {scan.left, y, scan.right, y + 1}, [&](const RowRun& run) {
            for (Pixel& p : run.result)
                takeColours(p, darken(p));
        });
        reportRow(y, OnFailure::skip);
    }
    raiseProgress(100);
    return result;
}

// Departs from the frame: it walks lines in both directions over one result and reports after
// each of them.
PixelBuffer cBitFilter::Grid(int32_t HStep, int32_t VStep, bool ForceMargins, int32_t Color,
                             int32_t Opacity) {
    const Pixel line = colourOf(Color);
    const auto blend = throughLevels(underLine(line.blue, Opacity), underLine(line.green, Opacity),
                                     underLine(line.red, Opacity));
    PixelBuffer result = bits_;
    Pixel* block = bits_.isDimensioned() ? result.writableBlock() : nullptr;
    const auto draw = [&](const Rect& pixels) {
        paintRuns(block, pixels, [&](const RowRun& run) {
            // From the source, so that a crossing is blended once.
            for (size_t i = 0; i < run.source.size(); ++i)
                takeColours(run.result[i], blend(run.source[i]));
        });
    };
    const Rect scan = regionBox(0).scan;
    const int32_t outside = PixelBuffer::margin;
    for (const int32_t y : steps(scanTop_, scanBottom_, VStep, -outside, maxY_ + outside)) {
        draw({scan.left, y, scan.right, y + 1});
        report(y, maxY_, OnFailure::skip);
    }
    if (ForceMargins) draw({scan.left, maxY_, scan.right, maxY_ + 1});
    for (const int32_t x : steps(scanLeft_, scanRight_, HStep, -outside, maxX_ + outside)) {
        // From the row whose number is that of the leftmost column.
        draw({x, scanLeft_, x + 1, scan.bottom});
        report(x, maxX_, OnFailure::skip);
    }
    if (ForceMargins) draw({maxX_, scan.top, maxX_ + 1, scan.bottom});
    raiseProgress(100);
    return result;
}

PixelBuffer cBitFilter::Light(float xRel, float yRel, float dRel, int32_t iFactor,
                              int32_t dFactor) {
    const Point centre{roundToInteger(maxX_ * double{xRel}), roundToInteger(maxY_ * double{yRel})};
    const int32_t rad = roundToInteger(std::max(maxX_, maxY_) * double{dRel});
    const float f = single(1 - dFactor / 100.0);
    return filterSquare(OnFailure::raise, centre, rad, [=](const RowRun& run) {
        const auto lit = [](int32_t value) { return lowByte(std::min(value, 255)); };
        const int32_t j = run.y - centre.y;
        int32_t i = run.x - centre.x;
        for (Pixel& p : run.result) {
            const int32_t d = i * i + j * j;
            ++i;
            if (d >= rad * rad) continue;
            if (d < 0) throw StatementFailed("a negative number has no root");
            const int32_t a = roundToInteger(iFactor * (1 - double{f} * std::sqrt(d) / rad));
            p = {lit(p.blue + a), lit(p.green + a), lit(p.red + a), p.fourth};
        }
    });
}

PixelBuffer cBitFilter::Texturize(const PixelBuffer& mskBits) {
    // Tiles overlap by one line: they lie as far apart as their first and last lines.
    const int32_t mW = mskBits.isDimensioned() ? mskBits.width() - 1 : 0;
    const int32_t mH = mskBits.isDimensioned() ? mskBits.height() - 1 : 0;
    CellGrid tiles = gridOverBox(mW, mH, mW + 1, mH + 1);
    tiles.joined = true;
    return filterCells(OnFailure::skip, tiles, [&](const Cell& row) {
        paintRuns(row.result, row.shown, [&](const RowRun& run) {
            const Pixel* texture = mskBits.row(run.y - row.place.top);
            int32_t i = (run.x - row.place.left) % mW;
            for (size_t n = 0; n < run.source.size(); ++n) {
                const double k = single(texture[i].blue / 128.0);
                const auto scaled = [k](uint8_t v) { return clampToByte(roundToInteger(v * k)); };
                const Pixel& p = run.source[n];
                takeColours(run.result[n], {scaled(p.blue), scaled(p.green), scaled(p.red), 0});
                // The next tile wins the line that it shares with this one.
                if (++i == mW) i = 0;
            }
        });
    });
}

// Departs from the frame: the mean is taken in a pass of its own, which reports like a filter. The
// errors go on from pixel to pixel and from row to row, so that rows are worked on in their order.
PixelBuffer cBitFilter::StuckiBW(int32_t PalWeight) {
    const std::array<Shares, 511> shares = makeShares();
    const int32_t threshold = reportedMean();
    PendingErrors errors(maxX_, maxY_);
    Walk walk = regionBox(0);
    walk.isInOrder = true;
    return filterRows(OnFailure::skip, walk, [&](const RowRun& run) {
        errors.moveTo(run.y);
        int32_t x = run.x;
        for (Pixel& p : run.result) {
            int32_t g = brightness(p);
            if (PalWeight != 0) g += quotient(errors.at(x) * 10, PalWeight);
            g = std::clamp(g, 0, 255);
            const uint8_t out = g >= threshold ? 255 : 0;
            const int32_t place = g - out + 255;
            errors.spread(x, shares[static_cast<size_t>(place)]);
            takeColours(p, {out, out, out, 0});
            ++x;
        }
    });
}

}  // namespace tessarine
