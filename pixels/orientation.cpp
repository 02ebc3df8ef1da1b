#include "pixels/orientation.h"

#include <algorithm>

#include "pixels/threads.h"

namespace tessarine {

namespace {

/// Where pixels come from: the pixel (x, y) of the result lies `start + x * perColumn + y * perRow`
/// pixels behind the source's first one.
struct Way {
    ptrdiff_t start = 0;
    ptrdiff_t perColumn = 0;
    ptrdiff_t perRow = 0;
};

Way wayTo(const PixelBuffer& picture, int32_t orientation) {
    const ptrdiff_t right = picture.width() - 1;
    const ptrdiff_t row = picture.stride();
    const ptrdiff_t down = (picture.height() - 1) * row;
    switch (orientation) {
        case 2:
            return {right, -1, row};
        case 3:
            return {down + right, -1, -row};
        case 4:
            return {down, 1, -row};
        case 5:
            return {0, row, 1};
        case 6:
            return {down, -row, 1};
        case 7:
            return {down + right, -row, -1};
        default:
            return {right, row, -1};
    }
}

/// Rows and columns of a part of the picture that stays in the cache with what it comes from.
constexpr int32_t part = 32;

}  // namespace

PixelBuffer turnedUpright(const PixelBuffer& picture, int32_t orientation) {
    if (orientation < 2 || orientation > 8 || picture.width() < 1 || picture.height() < 1)
        return picture;
    const bool isOnItsSide = orientation > 4;
    const int32_t width = isOnItsSide ? picture.height() : picture.width();
    const int32_t height = isOnItsSide ? picture.width() : picture.height();
    PixelBuffer result(width, height, PixelBuffer::Start::unset);
    Pixel* const block = result.writableBlock();
    const Pixel* const first = picture.row(0);
    const Way way = wayTo(picture, orientation);
    inParallel((height + part - 1) / part, [&](int32_t band) {
        const int32_t end = std::min(height, (band + 1) * part);
        for (int32_t left = 0; left < width; left += part) {
            const int32_t right = std::min(width, left + part);
            for (int32_t y = band * part; y < end; ++y) {
                const Pixel* from = first + way.start + left * way.perColumn + y * way.perRow;
                Pixel* to = block + result.offsetOfRow(y) + left;
                for (int32_t x = left; x < right; ++x, from += way.perColumn)
                    *to++ = *from;
            }
        }
    });
    return result;
}

}  // namespace tessarine
