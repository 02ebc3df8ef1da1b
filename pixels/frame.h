#pragma once

#include <algorithm>
#include <span>
#include <utility>

#include "pixels/bit_filter.h"

// The frame that filters share: the copy of the source, the scan rectangle, the region as spans
// of a row, the order of rows and the reports. A filter brings a lambda and nothing else.

namespace tessarine {

template <class Change>
PixelBuffer cBitFilter::filterRows(OnFailure mode, Change change) {
    PixelBuffer result = bits_;
    SetScanRect(0);
    const RegionHandle region = regionHandle_.lock();
    if (region && bits_.isDimensioned()) {
        const Rect scan = scanInBuffer();
        Pixel* block = result.writableBlock();
        for (int32_t y = scan.top; y < scan.bottom; ++y) {
            const Pixel* source = bits_.row(y);
            Pixel* target = block + result.offsetOfRow(y);
            for (const Rect& run : region->band(y)) {
                const int32_t from = std::max(run.left, scan.left);
                const int32_t to = std::min(run.right, scan.right);
                if (from >= to) continue;
                const auto count = static_cast<size_t>(to - from);
                change(std::span<const Pixel>(source + from, count),
                       std::span<Pixel>(target + from, count), from, y);
            }
            reportRow(y, mode);
        }
    }
    raiseProgress(100);
    return result;
}

template <class Change>
PixelBuffer cBitFilter::filterPixels(OnFailure mode, Change change) {
    return filterRows(
        mode, [&change](std::span<const Pixel> source, std::span<Pixel> result, int32_t, int32_t) {
            for (size_t i = 0; i < source.size(); ++i) {
                const Pixel changed = change(source[i]);
                result[i] = {changed.blue, changed.green, changed.red, source[i].fourth};
            }
        });
}

template <class Sum, class OfRow, class AfterRow>
Sum cBitFilter::sumRows(Sum start, OfRow ofRow, AfterRow afterRow) const {
    if (!bits_.isDimensioned()) return start;
    for (int32_t y = 0; y <= maxY_; ++y) {
        start += ofRow(std::span<const Pixel>(bits_.row(y), static_cast<size_t>(bits_.width())));
        afterRow(y);
    }
    return start;
}

}  // namespace tessarine
