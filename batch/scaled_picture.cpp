#include "batch/scaled_picture.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "pixels/failures.h"

namespace tessarine {

namespace {

/// The source pixels that one target pixel covers: `first` to `last`, all of them whole but for
/// the two at the ends.
struct Span {
    int32_t first = 0;
    int32_t last = 0;
    float firstShare = 1;
    float lastShare = 0;  ///< 0 where the span is one pixel
};

std::vector<Span> spansOf(int32_t from, int32_t to) {
    std::vector<Span> spans(static_cast<size_t>(to));
    for (int32_t i = 0; i < to; ++i) {
        // In whole numbers the ends of neighbouring spans meet exactly.
        const int64_t begin = int64_t{i} * from;
        const int64_t end = int64_t{i + 1} * from;
        Span& span = spans[static_cast<size_t>(i)];
        span.first = static_cast<int32_t>(begin / to);
        span.last = static_cast<int32_t>((end - 1) / to);
        span.firstShare = 1.0F - static_cast<float>(begin % to) / static_cast<float>(to);
        if (span.last > span.first)
            span.lastShare =
                static_cast<float>(end - int64_t{span.last} * to) / static_cast<float>(to);
    }
    return spans;
}

struct Sum {
    float blue = 0;
    float green = 0;
    float red = 0;
};

/// Adds a source row, shrunk across, to the sums of a target row.
void addRow(const Pixel* source, float share, const std::vector<Span>& columns,
            std::vector<Sum>& sums) {
    for (size_t x = 0; x < columns.size(); ++x) {
        const Span& span = columns[x];
        const Pixel& first = source[span.first];
        const Pixel& last = source[span.last];
        // Whole pixels are summed as integers: rows of large pictures are long.
        uint32_t blue = 0;
        uint32_t green = 0;
        uint32_t red = 0;
        for (int32_t i = span.first + 1; i < span.last; ++i) {
            blue += source[i].blue;
            green += source[i].green;
            red += source[i].red;
        }
        const auto total = [&](uint32_t inner, uint8_t left, uint8_t right) {
            return (static_cast<float>(inner) + span.firstShare * static_cast<float>(left) +
                    span.lastShare * static_cast<float>(right)) *
                   share;
        };
        sums[x].blue += total(blue, first.blue, last.blue);
        sums[x].green += total(green, first.green, last.green);
        sums[x].red += total(red, first.red, last.red);
    }
}

}  // namespace

Bitmap scaledDown(const Bitmap& picture, int32_t width, int32_t height) {
    if (!picture.isValid() || width < 1 || height < 1 || width > picture.width() ||
        height > picture.height())
        throw StatementFailed("no smaller size of a picture");
    if (width == picture.width() && height == picture.height()) return picture;

    const std::vector<Span> columns = spansOf(picture.width(), width);
    const std::vector<Span> rows = spansOf(picture.height(), height);
    const float area = static_cast<float>(picture.width()) / static_cast<float>(width) *
                       (static_cast<float>(picture.height()) / static_cast<float>(height));
    const auto mean = [area](float sum) {
        return static_cast<uint8_t>(std::min(std::lrint(sum / area), 255L));
    };
    Bitmap result(width, height);
    std::vector<Sum> sums(columns.size());
    for (int32_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), Sum{});
        const Span& span = rows[static_cast<size_t>(y)];
        addRow(picture.row(span.first), span.firstShare, columns, sums);
        for (int32_t row = span.first + 1; row < span.last; ++row)
            addRow(picture.row(row), 1, columns, sums);
        if (span.last > span.first) addRow(picture.row(span.last), span.lastShare, columns, sums);
        Pixel* target = result.writableRow(y);
        for (size_t x = 0; x < sums.size(); ++x)
            target[x] = {mean(sums[x].blue), mean(sums[x].green), mean(sums[x].red), 0};
    }
    return result;
}

}  // namespace tessarine
