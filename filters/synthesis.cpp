#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "filters/colour.h"
#include "filters/lookup.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"
#include "pixels/sources.h"
#include "pixels/words.h"

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

/// Sums of columns, for cells that lie side by side: rows are added to them, and the columns of a
/// cell together at the end.
class ColumnSums {
  public:
    /// \param width of the image
    explicit ColumnSums(int32_t width) {
        for (auto* sums : {&blue_, &green_, &red_, &count_})
            *sums = std::vector<int32_t>(static_cast<size_t>(width) + 2 * PixelBuffer::margin);
    }

    /// \param x the column of the run's first pixel, in the buffer
    void add(std::span<const Pixel> run, int32_t x) {
        const Word* __restrict words = wordsOf(run.data());
        const size_t first = placeOf(x);
        int32_t* __restrict blue = &blue_[first];
        int32_t* __restrict green = &green_[first];
        int32_t* __restrict red = &red_[first];
        int32_t* __restrict count = &count_[first];
        for (size_t i = 0; i < run.size(); ++i) {
            blue[i] += static_cast<int32_t>(words[i] >> blueShift & 255);
            green[i] += static_cast<int32_t>(words[i] >> greenShift & 255);
            red[i] += static_cast<int32_t>(words[i] >> redShift & 255);
            ++count[i];
        }
    }

    /// What columns add up to, as far as the buffer has them.
    ColourSums total(int32_t left, int64_t right) const {
        const auto last = static_cast<int64_t>(count_.size()) - PixelBuffer::margin;
        ColourSums sums;
        for (int32_t x = std::max(left, -PixelBuffer::margin); x < std::min(right, last); ++x) {
            const size_t k = placeOf(x);
            sums.blue += blue_[k];
            sums.green += green_[k];
            sums.red += red_[k];
            sums.count += count_[k];
        }
        return sums;
    }

  private:
    static size_t placeOf(int32_t x) {
        return static_cast<size_t>(ptrdiff_t{x} + PixelBuffer::margin);
    }

    std::vector<int32_t> blue_;
    std::vector<int32_t> green_;
    std::vector<int32_t> red_;
    std::vector<int32_t> count_;
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

/// Dots that lie side by side, column by column.
class DotRow {
  public:
    /// Up to here, squared distances in a dot do not wrap.
    static constexpr int32_t largestRadius = 16384;

    /// \param width of the image
    /// \param q the squared distance at which dots fade out, above 0
    DotRow(int32_t width, int32_t Radius, int32_t q)
        : Radius_(Radius),
          q_(q),
          squares_(static_cast<size_t>(width) + 2 * PixelBuffer::margin),
          colours_(squares_.size()) {}

    /// Adds the dot whose cell starts at column `left`; it takes a column from the one before.
    void add(int32_t left, const ColourSums& colour) {
        for (const int32_t level : {colour.blue, colour.green, colour.red})
            fitsBytes_ = fitsBytes_ && level >= 0 && level <= 255;
        const Word word = std::bit_cast<uint32_t>(
            Pixel{lowByte(colour.blue), lowByte(colour.green), lowByte(colour.red), 0});
        const auto columns = static_cast<int32_t>(squares_.size());
        const int32_t from = left + PixelBuffer::margin;
        for (int32_t x = std::max(from, 0); x < std::min(from + 2 * Radius_ + 1, columns); ++x) {
            const int32_t i = x - from - Radius_;
            squares_[static_cast<size_t>(x)] = i * i;
            colours_[static_cast<size_t>(x)] = word;
        }
    }
    /// Whether the levels of all dots are those of bytes.
    bool fitsBytes() const { return fitsBytes_; }

    /// Paints pixels that lie in the row j from the dots' centres.
    void paint(const RowRun& run, int32_t j) const {
        const auto first = static_cast<size_t>(ptrdiff_t{run.x} + PixelBuffer::margin);
        const int32_t* __restrict squares = &squares_[first];
        const Word* __restrict colours = &colours_[first];
        Word* __restrict words = wordsOf(run.result.data());
        const int32_t rowSquare = j * j;
        const double q = q_;
        const int32_t limit = q_;
        for (size_t n = 0; n < run.result.size(); ++n) {
            const int32_t d = squares[n] + rowSquare;
            const double share = single(1 - d / q);
            const double w = d > limit ? 0.0 : share;
            Word word = words[n] & ~coloursOfWord;
#pragma GCC unroll 3
            for (const int32_t shift : {blueShift, greenShift, redShift}) {
                const auto level = static_cast<int32_t>(colours[n] >> shift & 255);
                word |= static_cast<Word>(roundInLoop(w * level)) << shift;
            }
            words[n] = word;
        }
    }

  private:
    int32_t Radius_;
    int32_t q_;
    bool fitsBytes_ = true;
    std::vector<int32_t> squares_;  ///< of each column's distance from the middle of its dot
    std::vector<uint32_t> colours_;
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
    static constexpr RandomGenerator::Draws<2, stretchLength> pairs;
    const RandomGenerator first = random;
    // Every pixel of the scan takes two draws, those outside the buffer too.
    const auto drawsBefore = [this](int64_t x, int64_t y) {
        const int64_t width = int64_t{scanRight_} - scanLeft_ + 1;
        return 2 * (static_cast<uint64_t>(y - scanTop_) * static_cast<uint64_t>(width) +
                    static_cast<uint64_t>(x - scanLeft_));
    };
    PixelBuffer result = filterSources(Uncovered::leave, [&](int32_t left, int32_t row) {
        const uint64_t before = drawsBefore(left, row);
        return [=, y = row, acrossX = first.after(before + 1).state(),
                acrossY = first.after(before + 2).state()](int32_t x) {
            const auto i = static_cast<size_t>(x - left);
            return Point{roundInLoop(x + double{pairs.after(acrossX, i)} * wFactor - double{hw}),
                         roundInLoop(y + double{pairs.after(acrossY, i)} * hFactor - double{hh})};
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
    const auto coloured = [=](ColourSums colour) {
        const int32_t n = roundToInteger(colour.count / double{k});
        if (n > 0) {
            for (int32_t* sum : {&colour.blue, &colour.green, &colour.red})
                *sum = std::min(roundToInteger(static_cast<double>(*sum) / n), 255);
        }
        return colour;
    };
    const auto paintDot = [=, this](const Cell& cell, const ColourSums& colour) {
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
    };
    CellGrid cells = gridOverBox(step, step, side, side);
    // Rows of dots are painted at once where their squares do not wrap.
    cells.joined = Radius > 0 && Radius <= DotRow::largestRadius && q > 0;
    return filterCells(OnFailure::raise, cells, [&](const Cell& cell) {
        if (!cells.joined) {
            ColourSums colour;
            visitRuns(cell.place,
                      [&](std::span<const Pixel> run, int32_t, int32_t) { colour.add(run); });
            return paintDot(cell, coloured(colour));
        }
        ColumnSums columns(bits_.width());
        visitRuns(cell.place,
                  [&](std::span<const Pixel> run, int32_t x, int32_t) { columns.add(run, x); });
        DotRow row(bits_.width(), Radius, q);
        for (int32_t left = cell.place.left; left <= cell.place.right - side; left += step)
            row.add(left, coloured(columns.total(left, left + side)));
        if (row.fitsBytes())
            return paintRuns(cell.result, cell.shown, [&](const RowRun& run) {
                row.paint(run, run.y - cell.place.top - Radius);
            });
        for (int32_t left = cell.place.left; left <= cell.place.right - side; left += step) {
            Cell dot = cell;
            dot.place.left = dot.shown.left = left;
            dot.place.right = dot.shown.right = left + side;
            paintDot(dot, coloured(columns.total(left, left + side)));
        }
    });
}

// The means go on from pixel to pixel: one whose block starts outside the region takes those
// before it, in its row or in the rows above. Rows are therefore worked on in their order.
PixelBuffer cBitFilter::PIXELIZE(int32_t PixSize) {
    // Blocks without an edge have no pixels: no means are ever computed.
    const bool hasBlocks = PixSize > 0;
    if (hasBlocks && startsInBlocks(PixSize)) return pixelizeBlocks(PixSize);
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

bool cBitFilter::startsInBlocks(int32_t PixSize) const {
    const RegionHandle region = regionHandle_.lock();
    if (!region || region->rects().size() != 1 || !bits_.isDimensioned()) return false;
    const Rect box = region->box();
    return box.left >= 0 && box.top >= 0 && box.right <= bits_.width() &&
           box.bottom <= bits_.height() && box.left % PixSize == 0;
}

PixelBuffer cBitFilter::pixelizeBlocks(int32_t PixSize) {
    // The means first, as a picture of one pixel a block.
    PixelBuffer means(maxX_ / PixSize + 1, maxY_ / PixSize + 1, PixelBuffer::Start::unset);
    Pixel* block = means.writableBlock();
    const auto compute = [&](int32_t row) {
        ColumnSums columns(bits_.width());
        const int64_t bottom = std::min<int64_t>(int64_t{row} * PixSize + PixSize, bits_.height());
        for (int32_t y = row * PixSize; y < bottom; ++y)
            columns.add({bits_.row(y), static_cast<size_t>(bits_.width())}, 0);
        Pixel* rowOfMeans = block + means.offsetOfRow(row);
        for (int32_t column = 0; column < means.width(); ++column) {
            const int64_t left = int64_t{column} * PixSize;
            const ColourSums sums = columns.total(static_cast<int32_t>(left),
                                                  std::min<int64_t>(left + PixSize, bits_.width()));
            rowOfMeans[column] = {lowByte(sums.blue / sums.count), lowByte(sums.green / sums.count),
                                  lowByte(sums.red / sums.count), 0};
        }
    };
    forRows(0, means.height(), compute, [](int32_t) {});
    return filterRows(OnFailure::skip, regionBox(0), [&](const RowRun& run) {
        const Word* mean = wordsOf(means.row(run.y / PixSize)) + run.x / PixSize;
        Word* __restrict words = wordsOf(run.result.data());
        const auto count = static_cast<int32_t>(run.result.size());
        for (int32_t from = 0; from < count; ++mean) {
            const int32_t to = count - from > PixSize ? from + PixSize : count;
            for (; from < to; ++from)
                words[from] = *mean | (words[from] & ~coloursOfWord);
        }
    });
}

PixelBuffer cBitFilter::NOISE(int32_t Factor, bool Equalized) {
    static constexpr RandomGenerator::Draws<1, stretchLength> ones;
    static constexpr RandomGenerator::Draws<3, stretchLength> threes;
    const int32_t span = 2 * Factor + 1;
    const uint64_t drawsAPixel = Equalized ? 1 : 3;
    const RegionHandle region = regionHandle_.lock();
    const RegionOrder order(region.get());
    const RandomGenerator first = random;
    const auto addNoise = [=](const RowRun& run, const auto& draws, RandomGenerator before) {
        const uint32_t red = before.after(1).state();
        const uint32_t green = Equalized ? red : before.after(2).state();
        const uint32_t blue = Equalized ? red : before.after(3).state();
        const auto noisy = [=](uint32_t value, float draw) {
            const auto level = static_cast<int32_t>(value & 255);
            const int32_t moved = roundInLoop(level + (span * double{draw} - Factor));
            return static_cast<uint32_t>(std::min(std::max(moved, 0), 255));
        };
        const Word* __restrict source = wordsOf(run.source.data());
        Word* __restrict result = wordsOf(run.result.data());
        for (size_t i = 0; i < run.source.size(); ++i) {
            const uint32_t p = source[i];
            result[i] = noisy(p >> redShift, draws.after(red, i)) << redShift |
                        noisy(p >> greenShift, draws.after(green, i)) << greenShift |
                        noisy(p >> blueShift, draws.after(blue, i)) << blueShift |
                        (p & ~coloursOfWord);
        }
    };
    PixelBuffer result = filterRows(OnFailure::skip, regionBox(0), [&](const RowRun& whole) {
        const uint64_t before = drawsAPixel * order.before(whole.x, whole.y);
        inStretches(whole, [&](const RowRun& run) {
            const auto along = static_cast<uint64_t>(run.x - whole.x);
            const RandomGenerator start = first.after(before + drawsAPixel * along);
            if (Equalized)
                addNoise(run, ones, start);
            else
                addNoise(run, threes, start);
        });
    });
    random = first.after(drawsAPixel * order.count());
    return result;
}

// Departs from the frame: only every second row is walked and reported.
PixelBuffer cBitFilter::Scanlines(int32_t Factor) {
    const Levels levels = makeLevels([=](int32_t i) { return lowByte(std::max(i - Factor, 0)); });
    const auto darken = throughLevels(levels);
    PixelBuffer result = copyOfImage();
    const Rect scan = regionBox(0).scan;
    const int32_t outside = PixelBuffer::margin;
    Pixel* block = bits_.isDimensioned() ? result.writableBlock() : nullptr;
    const std::vector<int32_t> rows = steps(scanTop_, scanBottom_, 2, -outside, maxY_ + outside);
    const auto darkenRow = [&](int32_t number) {
        const int32_t y = rows[static_cast<size_t>(number)];
        paintRuns(block, {scan.left, y, scan.right, y + 1}, [&](const RowRun& run) {
            for (Pixel& p : run.result)
                takeColours(p, darken(p));
        });
    };
    forRows(0, static_cast<int32_t>(rows.size()), darkenRow,
            [&](int32_t number) { reportRow(rows[static_cast<size_t>(number)], OnFailure::skip); });
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
    PixelBuffer result = copyOfImage();
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
    // Lines of one direction by number, divided among threads.
    const auto drawAll = [&](const std::vector<int32_t>& lines, int32_t last, int32_t height,
                             const auto& pixelsOf) {
        const auto at = [&](int32_t number) { return lines[static_cast<size_t>(number)]; };
        forRows(
            0, static_cast<int32_t>(lines.size()),
            [&](int32_t number) { draw(pixelsOf(at(number))); },
            [&](int32_t number) { report(at(number), last, OnFailure::skip); }, height);
    };
    drawAll(steps(scanTop_, scanBottom_, VStep, -outside, maxY_ + outside), maxY_, 1,
            [&](int32_t y) {
                return Rect{scan.left, y, scan.right, y + 1};
            });
    if (ForceMargins) draw({scan.left, maxY_, scan.right, maxY_ + 1});
    // From the row whose number is that of the leftmost column. Each of a column's pixels fetches a
    // line of a cache.
    constexpr int64_t lineOfCache = 64 / sizeof(Pixel);
    const int64_t asDearAs = lineOfCache * (maxY_ + 1) / std::max(bits_.stride(), ptrdiff_t{1});
    drawAll(steps(scanLeft_, scanRight_, HStep, -outside, maxX_ + outside), maxX_,
            clampToInteger(std::max<int64_t>(asDearAs, 1)), [&](int32_t x) {
                return Rect{x, scanLeft_, x + 1, scan.bottom};
            });
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
