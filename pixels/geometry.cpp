#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>
#include <vector>

#include "pixels/bilinear.h"
#include "pixels/bit_filter.h"
#include "pixels/frame.h"
#include "pixels/numbers.h"
#include "pixels/reserved.h"
#include "pixels/sources.h"
#include "pixels/words.h"

// The members that reshape the image. They stand outside the frame: BitsBlack changes the image in
// place, Flip gives a new picture and the others replace the image; and all but BitsBlack and
// BitsCropMasked do without the region.
//
// Size is always derived from the buffer: with a new buffer the new size stands at once, also where
// a statement fails or a row is reported thereafter.

namespace tessarine {

namespace {

Rect sizeOf(const PixelBuffer& bits) { return {0, 0, bits.width(), bits.height()}; }

/// The rectangle that two have in common; all 0 where they have none.
Rect overlap(const Rect& a, const Rect& b) {
    const Rect both{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                    std::min(a.bottom, b.bottom)};
    return both.isEmpty() ? Rect{} : both;
}

/// A copy of a source that shares its memory, taken before the image is replaced: the image may be
/// the source itself.
/// \throws StatementFailed for a source without dimensions
PixelBuffer keep(const PixelBuffer& srcBits) {
    if (!srcBits.isDimensioned())
        throw StatementFailed("a buffer without dimensions has no bounds");
    return srcBits;
}

/// Whether a buffer holds all that `reads` covers.
bool holds(const PixelBuffer& source, const Rect& reads) {
    const int64_t margin = PixelBuffer::margin;
    return source.isDimensioned() && reads.left >= -margin && reads.top >= -margin &&
           reads.right <= source.width() + margin && reads.bottom <= source.height() + margin;
}

/// Calls `work(at)`, where at(x, y) reads a pixel of the source as unchecked indexing finds it.
/// Only where `reads` leaves the buffer is that any slower than a plain read.
template <class Work>
void withReads(const PixelBuffer& source, const Rect& reads, Work work) {
    if (holds(source, reads))
        work([&source](int32_t x, int32_t y) -> const Pixel& { return source.at(x, y); });
    else
        work([&source](int32_t x, int32_t y) { return source.reached(x, y); });
}

/// Where a column or row of a resized picture is taken from: the source's column or row, and the
/// fraction by which it goes on towards the next one.
struct Origin {
    int32_t place = 0;
    float fraction = 0;
    int32_t parts = 0;  ///< the fraction as fractionOf() counts it
};

/// The origins of `count` columns or rows.
class Origins {
  public:
    Origins() = default;
    /// \param count not below 0; for 0 the scale does not matter
    /// \throws StatementFailed for want of memory
    Origins(int32_t count, float scale) : origins_(reserved<Origin>(count)) {
        for (int32_t i = 0; i < count; ++i) {
            // The place goes by the product itself, the fraction by the single that is kept of it.
            const double exact = i * double{scale};
            const double place = std::floor(exact);
            const float fraction = single(double{single(exact)} - place);
            origins_.push_back({static_cast<int32_t>(place), fraction, fractionOf(fraction).parts});
        }
    }

    const Origin& operator[](int32_t i) const { return origins_[static_cast<size_t>(i)]; }
    std::span<const Origin> from(int32_t i) const {
        return std::span(origins_).subspan(static_cast<size_t>(i));
    }
    /// The places go up or down all along, so that the ends tell how far they reach.
    int32_t lowest() const { return std::min(ends().first, ends().second); }
    int32_t highest() const { return std::max(ends().first, ends().second); }

  private:
    std::pair<int32_t, int32_t> ends() const {
        if (origins_.empty()) return {0, 0};
        return {origins_.front().place, origins_.back().place};
    }

    std::vector<Origin> origins_;
};

/// What a resampling reads, given that it takes each place's next neighbour along.
Rect readsOf(const Origins& columns, const Origins& rows) {
    return {columns.lowest(), rows.lowest(), columns.highest() + 2, rows.highest() + 2};
}

/// The pixel between columns and rows of a source that `at(x, y)` reads.
template <class At>
Pixel mixedBetween(const At& at, const Origin& column, const Origin& row) {
    const int32_t x = column.place;
    const int32_t y = row.place;
    const Pixel& upperLeft = at(x, y);
    const Pixel& lowerLeft = at(x, y + 1);
    const Pixel& upperRight = at(x + 1, y);
    const Pixel& lowerRight = at(x + 1, y + 1);
    const auto blend = [](int32_t first, int32_t second, double fraction) {
        // Far within 32 bits whatever the fraction: what roundToInteger looks after cannot happen.
        return static_cast<int32_t>(std::lrint((1 - fraction) * first + fraction * second));
    };
    const auto blended = [&](uint8_t Pixel::*c) {
        return clampToByte(blend(blend(upperLeft.*c, lowerLeft.*c, row.fraction),
                                 blend(upperRight.*c, lowerRight.*c, row.fraction),
                                 column.fraction));
    };
    return {blended(&Pixel::blue), blended(&Pixel::green), blended(&Pixel::red), 0};
}

/// The same for a stretch whose fractions all can be counted, in a buffer that holds what is read.
void mixStretch(const PixelBuffer& source, std::span<const Origin> columns, const Origin& row,
                std::span<Pixel> result) {
    const auto count = static_cast<int32_t>(result.size());
    const int32_t first = columns[0].place;
    const Word* above = wordsOf(source.row(row.place)) + first;
    const auto placeOf = [&](int32_t i) { return columns[static_cast<size_t>(i)].place - first; };
    // Where places lie close to each other, each column between rows serves several of them.
    std::array<uint32_t, 2 * size_t{stretchLength}> between;
    const int32_t reach = placeOf(count - 1) + 2;
    if (reach <= static_cast<int32_t>(between.size())) {
        mixRows(above, above + source.stride(), reach, row.parts, between.data());
        OfStretch<uint32_t> left;
        OfStretch<uint32_t> right;
        OfStretch<int32_t> across;
        for (int32_t i = 0; i < count; ++i) {
            const auto k = static_cast<size_t>(i);
            const auto place = static_cast<size_t>(placeOf(i));
            left[k] = between[place];
            right[k] = between[place + 1];
            across[k] = columns[k].parts;
        }
        mixNeighbours(left, right, across, count, wordsOf(result.data()));
        return;
    }
    Corners corners;
    corners.down.fill(row.parts);
    for (int32_t i = 0; i < count; ++i) {
        corners.take(i, above + placeOf(i), source.stride());
        corners.across[static_cast<size_t>(i)] = columns[static_cast<size_t>(i)].parts;
    }
    mixCorners(corners, count, wordsOf(result.data()));
}

/// Columns or rows of the source to one of a resized picture. For a size of 0 the division fails,
/// and the scale stays 0.
float wholeScale(int32_t from, int32_t to) {
    return to == 0 ? 0 : single(static_cast<double>(from) / to);
}

}  // namespace

void cBitFilter::BitsBlack() {
    const Rect scan = regionBox(0).scan;
    if (!bits_.isDimensioned()) return;
    paintRuns(bits_.writableBlock(), scan,
              [](const RowRun& run) { std::fill(run.result.begin(), run.result.end(), Pixel{}); });
}

void cBitFilter::BitsCrop(const PixelBuffer& srcBits, int32_t X1, int32_t Y1, int32_t X2,
                          int32_t Y2) {
    const PixelBuffer source = keep(srcBits);
    const Rect part = overlap({X1, Y1, X2, Y2}, fullRect_);
    Bits(PixelBuffer(part.right - part.left, part.bottom - part.top, PixelBuffer::Start::unset));
    Pixel* block = bits_.writableBlock();
    const bool inSource = overlap(part, sizeOf(source)) == part;
    const auto work = [&](int32_t y) {
        Pixel* row = block + bits_.offsetOfRow(y);
        if (inSource)
            std::copy_n(source.row(part.top + y) + part.left, bits_.width(), row);
        else
            for (int32_t x = 0; x <= maxX_; ++x)
                row[x] = source.reached(int64_t{part.left} + x, int64_t{part.top} + y);
    };
    forRows(0, maxY_ + 1, work, [](int32_t) {});
    raiseProgress(100);
}

void cBitFilter::BitsCropMasked(const PixelBuffer& srcBits, int32_t X1, int32_t Y1, int32_t X2,
                                int32_t Y2) {
    const PixelBuffer source = keep(srcBits);
    const Rect part = overlap({X1, Y1, X2, Y2}, sizeOf(source));
    PixelBuffer cropped(part.right - part.left, part.bottom - part.top);
    Pixel* block = cropped.writableBlock();
    for (int32_t y = 0; y < cropped.height(); ++y)
        std::fill_n(block + cropped.offsetOfRow(y), cropped.width(), Pixel{0, 0, 0, 255});
    // The helper walks the region over the image: the source takes its place for so long.
    Bits(source);
    const auto copyRow = [&](int32_t row) {
        const Rect place{part.left, row, part.right, row + 1};
        visitRuns(place, [&](std::span<const Pixel> run, int32_t x, int32_t y) {
            std::copy(run.begin(), run.end(),
                      block + cropped.offsetOfRow(y - part.top) + (x - part.left));
        });
    };
    forRows(part.top, part.bottom, copyRow, [](int32_t) {});
    Bits(cropped);
    raiseProgress(100);
}

void cBitFilter::BitsResample(const PixelBuffer& srcBits, int32_t NewWidth, int32_t NewHeight) {
    const PixelBuffer source = keep(srcBits);
    PixelBuffer resized(NewWidth, NewHeight, PixelBuffer::Start::unset);
    resized.clearMargin();
    Bits(std::move(resized));
    // The failure leaves the empty image, and its size with it: a size that is not the buffer's
    // would lead the next member astray.
    if (NewWidth == 0 || NewHeight == 0) throw StatementFailed("no scale leads to a size of 0");
    Pixel* block = bits_.writableBlock();
    int32_t done = 0;
    try {
        const Origins columns(NewWidth, single((source.width() - 1.0) / NewWidth));
        const Origins rows(NewHeight, single((source.height() - 1.0) / NewHeight));
        // Fractions of a place below 1 may be too fine to count. Far out singles are so coarse that
        // fractions leave the range from 0 to 1.
        constexpr int32_t tooFar = 1 << 24;
        const bool isCounted = holds(source, readsOf(columns, rows)) &&
                               columns.highest() < tooFar && rows.highest() < tooFar;
        int32_t counted = 0;
        while (counted < NewWidth && !(isCounted && columns[counted].place >= 1))
            ++counted;
        withReads(source, readsOf(columns, rows), [&](auto at) {
            const auto work = [&](int32_t y) {
                Pixel* row = block + bits_.offsetOfRow(y);
                const int32_t from = rows[y].place >= 1 ? counted : NewWidth;
                for (int32_t x = 0; x < from; ++x)
                    row[x] = mixedBetween(at, columns[x], rows[y]);
                for (int32_t x = from; x < NewWidth; x += stretchLength) {
                    const auto count = static_cast<size_t>(std::min(NewWidth - x, stretchLength));
                    mixStretch(source, columns.from(x), rows[y], {row + x, count});
                }
            };
            forRows(0, maxY_ + 1, work, [&](int32_t y) {
                done = y + 1;
                reportRow(y, OnFailure::raise);
            });
        });
    } catch (...) {
        for (; done <= maxY_; ++done)
            std::fill_n(block + bits_.offsetOfRow(done), NewWidth, Pixel{});
        throw;
    }
    raiseProgress(100);
}

void cBitFilter::BitsResize(const PixelBuffer& srcBits, int32_t NewWidth, int32_t NewHeight) {
    const PixelBuffer source = srcBits;
    Origins columns;
    Origins rows;
    const bool dimensioned = attempt([&] {
        PixelBuffer resized(NewWidth, NewHeight);
        columns = Origins(NewWidth, wholeScale(source.width(), NewWidth));
        rows = Origins(NewHeight, wholeScale(source.height(), NewHeight));
        Bits(std::move(resized));
    });
    // The image that otherwise still stands has rows of its own, none of the asked size.
    if (dimensioned) {
        Pixel* block = bits_.writableBlock();
        withReads(source, readsOf(columns, rows), [&](auto at) {
            // A source row that repeats is written by the first row that has it, to all of them.
            const auto repeats = [&](int32_t y) {
                return y > 0 && y <= maxY_ && rows[y].place == rows[y - 1].place;
            };
            const auto work = [&](int32_t y) {
                if (repeats(y)) return;
                Pixel* row = block + bits_.offsetOfRow(y);
                for (int32_t x = 0; x <= maxX_; ++x)
                    takeColours(row[x], at(columns[x].place, rows[y].place));
                for (int32_t next = y + 1; repeats(next); ++next)
                    std::copy_n(row, bits_.width(), block + bits_.offsetOfRow(next));
            };
            forRows(0, maxY_ + 1, work, [this](int32_t y) { reportRow(y, OnFailure::skip); });
        });
    }
    raiseProgress(100);
}

void cBitFilter::BitsRotate90(const PixelBuffer& srcBits) {
    const PixelBuffer source = keep(srcBits);
    const int32_t lastColumn = maxX_;
    const int32_t lastRow = maxY_;
    // From here on the size is the turned one, and the reports go by the old last row.
    Bits(PixelBuffer(lastRow + 1, lastColumn + 1));
    Pixel* block = bits_.writableBlock();
    withReads(source, {0, 0, lastColumn + 1, lastRow + 1}, [&](auto at) {
        // A few rows at once: each column of them fills one stretch of a row of the result, and
        // what was fetched of the rows serves the columns that follow.
        constexpr int32_t band = 8;
        const auto turn = [&](int32_t number) {
            const int32_t top = number * band;
            const int32_t bottom = std::min(lastRow, top + band - 1);
            const ptrdiff_t stride = bits_.stride();
            Pixel* column = block + bits_.offsetOfRow(lastColumn);
            for (int32_t x = 0; x <= lastColumn; ++x, column -= stride)
                for (int32_t y = top; y <= bottom; ++y)
                    takeColours(column[y], at(x, y));
        };
        const auto reports = [&](int32_t number) {
            const int32_t top = number * band;
            for (int32_t y = top; y <= std::min(lastRow, top + band - 1); ++y)
                report(y, lastRow, OnFailure::raise);
        };
        forRows(0, lastRow / band + 1, turn, reports);
    });
    raiseProgress(100);
}

PixelBuffer cBitFilter::Flip(bool fH, bool fV) {
    if (!bits_.isDimensioned()) {
        raiseProgress(100);
        return bits_;
    }
    return rowByRow(OnFailure::skip, wholeImage(), [=, this](Pixel* block, int32_t y) {
        const Pixel* source = bits_.row(fV ? maxY_ - y : y);
        Pixel* row = block + bits_.offsetOfRow(y);
        const auto count = static_cast<size_t>(bits_.width());
        if (fH)
            takeMirrored(source, row, count, ~fourthBits);
        else
            takeBits(source, row, count, ~fourthBits);
    });
}

}  // namespace tessarine
