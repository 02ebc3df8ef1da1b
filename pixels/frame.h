#pragma once

#include <algorithm>
#include <array>
#include <exception>
#include <limits>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "pixels/bit_filter.h"
#include "pixels/numbers.h"
#include "pixels/point_loops.h"
#include "pixels/threads.h"

// The frame that filters share: the copy of the source, the scan rectangle, the region as spans
// of a row, the threads among which rows are divided, and the reports. A filter brings a lambda and
// nothing else; the lambda is called from several threads at once and changes nothing but the
// pixels that it is given.

namespace tessarine {

/// Pixels of the region that stand side by side in one row.
struct RowRun {
    std::span<const Pixel> source;
    std::span<Pixel> result;  ///< as long as `source`; holds the source's values at first, unless
                              ///< it is to be filled
    int32_t x = 0;            ///< of the first pixel
    int32_t y = 0;

    /// At most `count` of its pixels, from the given one on.
    RowRun part(size_t from, size_t count) const {
        const size_t size = std::min(count, source.size() - from);
        return {source.subspan(from, size), result.subspan(from, size),
                x + static_cast<int32_t>(from), y};
    }
};

/// Which surroundings of a pixel a filter looks at.
struct Stencil {
    int32_t reach = 1;    ///< how many places a window goes out on all four sides
    int32_t spacing = 1;  ///< pixels from one place to the next
};

/// A pixel's surroundings in the source; offsets are counted in the stencil's spacing. Places in
/// the margin hold what the margin holds. Beyond it a place counts on into the neighbouring rows,
/// and beyond the buffer it is black.
class Window {
  public:
    Window(const Pixel* centre, ptrdiff_t column, ptrdiff_t row)
        : centre_(centre), column_(column), row_(row) {}
    const Pixel& at(int32_t dx, int32_t dy) const { return centre_[dx * column_ + dy * row_]; }

  private:
    const Pixel* centre_;
    ptrdiff_t column_;  ///< pixels from one place to the next
    ptrdiff_t row_;
};

/// The same for one channel.
class ChannelWindow {
  public:
    ChannelWindow(const uint8_t* centre, ptrdiff_t column, ptrdiff_t row)
        : centre_(centre), column_(column), row_(row) {}
    int32_t operator()(int32_t dx, int32_t dy) const { return centre_[dx * column_ + dy * row_]; }

  private:
    const uint8_t* centre_;
    ptrdiff_t column_;  ///< bytes from one place to the next
    ptrdiff_t row_;
};

/// A copy of one pixel's surroundings, for windows that reach out of the buffer.
class SurroundingsCopy {
  public:
    SurroundingsCopy(const PixelBuffer& bits, const Stencil& stencil)
        : bits_(bits), stencil_(stencil) {}
    /// Copies the surroundings of (x, y), in place of earlier ones.
    void take(int32_t x, int32_t y);
    const Pixel* centre() const { return &places_[places_.size() / 2]; }
    /// Places from one row to the next.
    ptrdiff_t row() const { return 2 * stencil_.reach + 1; }

  private:
    const PixelBuffer& bits_;
    Stencil stencil_;
    std::vector<Pixel> places_;
};

/// What a filter of source points does with a pixel whose source lies outside the region.
enum class Uncovered { leave, blacken };

/// Cells in rows, as a filter lays them over the image.
struct CellGrid {
    int32_t left = 0;  ///< the first cell's corner
    int32_t top = 0;
    int32_t right = 0;  ///< where the last cell may start, inclusive
    int32_t bottom = 0;
    int32_t stepX = 0;  ///< from one cell to the next
    int32_t stepY = 0;
    int32_t width = 0;  ///< pixels of one cell; where cells overlap the later one wins
    int32_t height = 0;
    int32_t reportFrom = 0;   ///< the row that reports 0 percent
    int32_t reportWhole = 0;  ///< rows from there to 100 percent
    bool joined = false;      ///< the cells of a row are painted at once, as one rectangle
};

/// One cell, or one row of joined cells.
struct Cell {
    Rect place;
    Rect shown;     ///< the part of it that the next row of cells leaves
    Pixel* result;  ///< what paintRuns() paints on
};

template <class Visit>
void cBitFilter::visitRuns(const Rect& rect, Visit visit) const {
    const RegionHandle region = regionHandle_.lock();
    if (!region || !bits_.isDimensioned()) return;
    const Rect clipped = inBuffer(rect);
    for (int32_t y = clipped.top; y < clipped.bottom; ++y) {
        const std::span<const Rect> band = region->band(y);
        auto part = std::partition_point(band.begin(), band.end(),
                                         [&](const Rect& r) { return r.right <= clipped.left; });
        for (; part != band.end() && part->left < clipped.right; ++part) {
            const int32_t from = std::max(part->left, clipped.left);
            const int32_t to = std::min(part->right, clipped.right);
            if (from >= to) continue;
            visit(std::span<const Pixel>(bits_.row(y) + from, static_cast<size_t>(to - from)), from,
                  y);
        }
    }
}

template <class Change>
void cBitFilter::paintRuns(Pixel* result, const Rect& rect, Change change) const {
    visitRuns(rect, [&](std::span<const Pixel> source, int32_t x, int32_t y) {
        change(RowRun{source, {result + bits_.offsetOfRow(y) + x, source.size()}, x, y});
    });
}

/// The first of the rows that failed, in their order.
class FirstFailure {
  public:
    /// Whether a row comes behind one that failed.
    bool isPast(int32_t y) {
        const std::lock_guard lock(guard_);
        return y > row_;
    }
    /// Notes the exception at hand.
    void note(int32_t y) {
        const std::lock_guard lock(guard_);
        if (y >= row_) return;
        row_ = y;
        what_ = std::current_exception();
    }
    void throwAt(int32_t y) const {
        if (y == row_) std::rethrow_exception(what_);
    }

  private:
    std::mutex guard_;
    int32_t row_ = std::numeric_limits<int32_t>::max();
    std::exception_ptr what_;
};

template <class Work, class AfterRow>
void cBitFilter::forRows(int32_t top, int32_t bottom, Work work, AfterRow afterRow,
                         int32_t height) const {
    const int32_t band = std::max(bandHeight() / height, 1);
    const int32_t atOnce = std::max(rowsAtOnce() / height, 1);
    for (int32_t from = top; from < bottom;) {
        const int32_t to = bottom - from > atOnce ? from + atOnce : bottom;
        FirstFailure failure;
        inParallel((to - from - 1) / band + 1, [&](int32_t number) {
            int32_t y = from + number * band;
            const int32_t end = to - y > band ? y + band : to;
            if (failure.isPast(y)) return;
            try {
                for (; y < end; ++y)
                    work(y);
            } catch (...) {
                failure.note(y);
            }
        });
        for (; from < to; ++from) {
            failure.throwAt(from);
            afterRow(from);
        }
    }
}

template <class Make>
PixelBuffer cBitFilter::makeRows(OnFailure mode, const Walk& walk, Make make) {
    if (walk.scan.top >= walk.scan.bottom) {
        raiseProgress(100);
        return bits_;
    }
    PixelBuffer result(bits_.width(), bits_.height(), PixelBuffer::Start::unset);
    Pixel* block = result.writableBlock();
    const auto copy = [&](int32_t y) { copyImage(block, startOfRow(y), startOfRow(y + 1)); };
    const auto nothing = [](int32_t) {};
    forRows(-PixelBuffer::margin, walk.scan.top, copy, nothing);
    forRows(walk.scan.bottom, bits_.height() + PixelBuffer::margin, copy, nothing);
    const auto report = [&](int32_t y) { reportRow(y + walk.reportShift, mode); };
    if (walk.isInOrder)
        for (int32_t y = walk.scan.top; y < walk.scan.bottom; ++y)
            make(block, y), report(y);
    else
        forRows(
            walk.scan.top, walk.scan.bottom, [&](int32_t y) { make(block, y); }, report);
    raiseProgress(100);
    return result;
}

// A row is copied when it is worked on: so it is fetched once.
template <class Work>
PixelBuffer cBitFilter::rowByRow(OnFailure mode, const Walk& walk, Work work) {
    return makeRows(mode, walk, [&](Pixel* block, int32_t y) {
        copyImage(block, startOfRow(y), startOfRow(y + 1));
        work(block, y);
    });
}

// What is set is not copied first: where memory is the bound, that would cost half as much again.
template <class Fill>
PixelBuffer cBitFilter::fillRows(OnFailure mode, const Walk& walk, Fill fill) {
    return makeRows(mode, walk, [&](Pixel* block, int32_t y) {
        ptrdiff_t done = startOfRow(y);
        paintRuns(block, {walk.scan.left, y, walk.scan.right, y + 1}, [&](const RowRun& run) {
            const ptrdiff_t from = run.result.data() - block;
            copyImage(block, done, from);
            fill(run);
            done = from + static_cast<ptrdiff_t>(run.result.size());
        });
        copyImage(block, done, startOfRow(y + 1));
    });
}

template <class Change>
PixelBuffer cBitFilter::filterRows(OnFailure mode, const Walk& walk, Change change) {
    return rowByRow(mode, walk, [&](Pixel* block, int32_t y) {
        paintRuns(block, {walk.scan.left, y, walk.scan.right, y + 1}, change);
    });
}

template <class Change>
PixelBuffer cBitFilter::filterPixels(OnFailure mode, Change change) {
    return fillRows(mode, regionBox(0), [&change](const RowRun& run) {
        changeColours(run.source.data(), run.result.data(), run.source.size(), change);
    });
}

template <class Concerns, class Change>
PixelBuffer cBitFilter::filterSome(OnFailure mode, Concerns concerns, Change change) {
    return fillRows(mode, regionBox(0), [&](const RowRun& run) {
        constexpr size_t atOnce = 64;
        for (size_t from = 0; from < run.source.size(); from += atOnce) {
            const RowRun part = run.part(from, atOnce);
            const size_t count = part.source.size();
            if (anyOf(part.source.data(), count, concerns))
                changeColours(part.source.data(), part.result.data(), count, change);
            else
                std::copy_n(part.source.data(), count, part.result.data());
        }
    });
}

template <class Start, class Step>
PixelBuffer cBitFilter::filterSettled(OnFailure mode, Start start, Step step) {
    return fillRows(mode, regionBox(0), [&](const RowRun& run) {
        settleColours(run.source.data(), run.result.data(), run.source.size(), start, step);
    });
}

template <class Change>
PixelBuffer cBitFilter::filterWindows(OnFailure mode, const Walk& walk, const Stencil& stencil,
                                      Change change) {
    const ptrdiff_t row = bits_.stride() * stencil.spacing;
    return filterRows(mode, walk, [&](const RowRun& run) {
        const auto [first, last] = windowsInBuffer(run.x, run.y, run.source.size(), stencil);
        SurroundingsCopy copy(bits_, stencil);
        for (size_t i = 0; i < run.source.size(); ++i) {
            if (i >= first && i < last) {
                change(Window(&run.source[i], stencil.spacing, row), run.result[i]);
                continue;
            }
            copy.take(run.x + static_cast<int32_t>(i), run.y);
            change(Window(copy.centre(), 1, copy.row()), run.result[i]);
        }
    });
}

template <class Number, class Of>
void cBitFilter::eachChannelWindow(const RowRun& run, const Stencil& stencil, Number* numbers,
                                   const Of& of) const {
    constexpr size_t size = sizeof(Pixel);
    const auto bytesOf = [](const Pixel* pixel) { return reinterpret_cast<const uint8_t*>(pixel); };
    // All four bytes alike, so that the loop has no steps in it, and one place that calls `of`, by
    // a copy out of the numbers' reach, so that it becomes part of the loop: only then does it turn
    // into vector code.
    const auto compute = [&of](const uint8_t* __restrict source, Number* __restrict result,
                               size_t bytes, ptrdiff_t column, ptrdiff_t row)
        __attribute__((noinline)) {
        const Of own = of;
        for (size_t k = 0; k < bytes; ++k)
            result[k] = own(ChannelWindow(source + k, column, row));
    };
    const size_t count = run.source.size();
    const auto [first, last] = windowsInBuffer(run.x, run.y, count, stencil);
    const ptrdiff_t column = ptrdiff_t{size} * stencil.spacing;
    compute(bytesOf(run.source.data()) + first * size, numbers + first * size,
            (last - first) * size, column, column * bits_.stride());
    if (first == 0 && last == count) return;
    SurroundingsCopy copy(bits_, stencil);
    for (size_t i = 0; i < count; ++i) {
        if (i >= first && i < last) continue;
        copy.take(run.x + static_cast<int32_t>(i), run.y);
        compute(bytesOf(copy.centre()), numbers + i * size, size, size, size * copy.row());
    }
}

template <class Change>
PixelBuffer cBitFilter::filterChannels(OnFailure mode, const Walk& walk, const Stencil& stencil,
                                       Channels channels, Change change) {
    const uint32_t kept = 255U << shiftOf(channels == Channels::blueGreenRed ? 3 : 0);
    return fillRows(mode, walk, [&](const RowRun& run) {
        eachChannelWindow(run, stencil, reinterpret_cast<uint8_t*>(run.result.data()), change);
        takeBits(run.source.data(), run.result.data(), run.source.size(), kept);
    });
}

template <class OfChannel, class Join>
PixelBuffer cBitFilter::filterJoined(OnFailure mode, const Walk& walk, const Stencil& stencil,
                                     OfChannel ofChannel, Join join) {
    return fillRows(mode, walk, [&](const RowRun& run) {
        constexpr size_t atOnce = 512;  // so that the numbers stay in the nearest cache
        std::array<int16_t, atOnce * sizeof(Pixel)> numbers;
        for (size_t from = 0; from < run.source.size(); from += atOnce) {
            const RowRun part = run.part(from, atOnce);
            eachChannelWindow(part, stencil, numbers.data(), ofChannel);
            joinColours(part.source.data(), numbers.data(), part.result.data(), part.source.size(),
                        join);
        }
    });
}

template <class Change>
PixelBuffer cBitFilter::filterSquare(OnFailure mode, Point centre, int32_t radius, Change change) {
    const int64_t reach = radius;
    const int32_t left = clampToInteger(centre.x - reach);
    const int32_t right = clampToInteger(centre.x + reach + 1);
    int64_t top = centre.y - reach;
    int64_t bottom = centre.y + reach;
    // Rows beyond the buffer hold no pixel and are reported like all others, unless the square is
    // larger than any picture: then each such stretch counts as one row.
    if (radius > largestWholeSquare) {
        const int64_t above = -PixelBuffer::margin - 1;
        const int64_t below = maxY_ + PixelBuffer::margin + 1;
        top = std::clamp(top, above, below);
        bottom = std::clamp(bottom, above, below);
    }
    PixelBuffer result = copyOfImage();
    Pixel* block = bits_.isDimensioned() ? result.writableBlock() : nullptr;
    const auto paint = [&](int32_t number) {
        const int64_t y = top + number;
        paintRuns(block, {left, clampToInteger(y), right, clampToInteger(y + 1)}, change);
    };
    const auto count = static_cast<int32_t>(std::max<int64_t>(bottom - top + 1, 0));
    forRows(0, count, paint, [&](int32_t number) {
        const int64_t done = std::clamp<int64_t>(top + number - centre.y + reach, 0, 2 * reach);
        report(static_cast<int32_t>(done), 2 * radius, mode);
    });
    raiseProgress(100);
    return result;
}

template <class PaintCell>
PixelBuffer cBitFilter::filterCells(OnFailure mode, const CellGrid& grid, PaintCell paintCell) {
    PixelBuffer result = copyOfImage();
    const int64_t outside = PixelBuffer::margin;
    const std::vector<int32_t> rows =
        steps(grid.top, grid.bottom, grid.stepY, 1 - outside - grid.height, maxY_ + outside);
    // Without a row of cells, a step from one to the next that never ends does not matter.
    const bool hasRows = grid.stepY < 0 ? grid.top >= grid.bottom : grid.top <= grid.bottom;
    std::vector<int32_t> columns;
    if (hasRows)
        columns =
            steps(grid.left, grid.right, grid.stepX, 1 - outside - grid.width, maxX_ + outside);
    Pixel* block = bits_.isDimensioned() ? result.writableBlock() : nullptr;
    const auto paintRow = [&](int32_t number) {
        const int32_t y = rows[static_cast<size_t>(number)];
        const int32_t bottom = clampToInteger(int64_t{y} + grid.height);
        // The next row of cells leaves nothing of what it shares with this one.
        const bool isLast = static_cast<size_t>(number) + 1 == rows.size();
        const int32_t shown = isLast || grid.stepY < 0
                                  ? bottom
                                  : std::min(bottom, rows[static_cast<size_t>(number) + 1]);
        const auto paint = [&](int32_t left, int32_t last) {
            const int32_t right = clampToInteger(int64_t{last} + grid.width);
            paintCell(Cell{{left, y, right, bottom}, {left, y, right, shown}, block});
        };
        if (grid.joined && !columns.empty())
            paint(columns.front(), columns.back());
        else
            for (const int32_t x : columns)
                paint(x, x);
    };
    const auto reportCells = [&](int32_t number) {
        report(rows[static_cast<size_t>(number)] - grid.reportFrom, grid.reportWhole, mode);
    };
    const auto count = static_cast<int32_t>(rows.size());
    if (grid.stepY < 0)
        for (int32_t number = 0; number < count; ++number)
            paintRow(number), reportCells(number);
    else
        forRows(0, count, paintRow, reportCells, std::max(grid.height, 1));
    raiseProgress(100);
    return result;
}

template <class Sum, class OfRow, class AfterRow>
Sum cBitFilter::sumRows(Sum start, OfRow ofRow, AfterRow afterRow) const {
    if (!bits_.isDimensioned()) return start;
    std::mutex guard;
    const auto add = [&](int32_t y) {
        const Sum sum =
            ofRow(std::span<const Pixel>(bits_.row(y), static_cast<size_t>(bits_.width())));
        const std::lock_guard lock(guard);
        start += sum;
    };
    forRows(0, maxY_ + 1, add, afterRow);
    return start;
}

}  // namespace tessarine
