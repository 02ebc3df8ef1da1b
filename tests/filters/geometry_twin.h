#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "pixels/failures.h"
#include "pixels/pixel_buffer.h"
#include "pixels/region.h"
#include "twin.h"

// The slow twin of the members that reshape the image: one plain loop over x and y for each, to be
// checked by eye. `image` is what the engine holds before the call, `source` what the member is
// given.

namespace tessarine::tests::twin {

/// The pixel (x, y) of a buffer for writing.
inline Pixel& put(PixelBuffer& bits, int32_t x, int32_t y) {
    return bits.writableBlock()[bits.offsetOfRow(y) + x];
}

inline PixelBuffer bitsBlack(const PixelBuffer& image, const Region& region) {
    PixelBuffer result = image;
    for (int32_t y = -2; y <= image.height() + 1; ++y)
        for (int32_t x = -2; x <= image.width() + 1; ++x)
            if (region.contains(x, y)) put(result, x, y) = {0, 0, 0, 0};
    return result;
}

/// (X1, Y1, X2, Y2) as far as it lies in (0, 0, width, height); all 0 where nothing does.
inline Rect cutTo(int32_t width, int32_t height, Rect given) {
    const Rect cut{std::max(given.left, 0), std::max(given.top, 0), std::min(given.right, width),
                   std::min(given.bottom, height)};
    if (cut.left >= cut.right || cut.top >= cut.bottom) return {0, 0, 0, 0};
    return cut;
}

inline PixelBuffer bitsCrop(const PixelBuffer& image, const PixelBuffer& source, Rect given) {
    const Rect cut = cutTo(image.width(), image.height(), given);
    PixelBuffer result(cut.right - cut.left, cut.bottom - cut.top);
    for (int32_t y = 0; y < result.height(); ++y)
        for (int32_t x = 0; x < result.width(); ++x)
            put(result, x, y) = read(source, cut.left + x, cut.top + y);
    return result;
}

inline PixelBuffer bitsCropMasked(const PixelBuffer& source, const Region& region, Rect given) {
    const Rect cut = cutTo(source.width(), source.height(), given);
    PixelBuffer result(cut.right - cut.left, cut.bottom - cut.top);
    for (int32_t y = 0; y < result.height(); ++y)
        for (int32_t x = 0; x < result.width(); ++x) {
            if (region.contains(x + cut.left, y + cut.top))
                put(result, x, y) = source.at(x + cut.left, y + cut.top);
            else
                put(result, x, y).fourth = 255;
        }
    return result;
}

inline PixelBuffer bitsResample(const PixelBuffer& source, int32_t NewWidth, int32_t NewHeight) {
    PixelBuffer result(NewWidth, NewHeight);
    if (NewWidth == 0 || NewHeight == 0) throw StatementFailed("division by zero");
    const auto Sx = static_cast<float>((source.width() - 1) / static_cast<double>(NewWidth));
    const auto Sy = static_cast<float>((source.height() - 1) / static_cast<double>(NewHeight));
    for (int32_t y = 0; y < NewHeight; ++y) {
        const auto iy = static_cast<int32_t>(std::floor(y * static_cast<double>(Sy)));
        const auto v = static_cast<float>(y * static_cast<double>(Sy));
        const auto fy = static_cast<float>(static_cast<double>(v) - iy);
        for (int32_t x = 0; x < NewWidth; ++x) {
            const auto ix = static_cast<int32_t>(std::floor(x * static_cast<double>(Sx)));
            const auto u = static_cast<float>(x * static_cast<double>(Sx));
            const auto fx = static_cast<float>(static_cast<double>(u) - ix);
            for (int c = 0; c <= 2; ++c) {
                const auto S = [&](int32_t i, int32_t j) {
                    return static_cast<double>(channel(read(source, i, j), c));
                };
                const int32_t left = round((1 - static_cast<double>(fy)) * S(ix, iy) +
                                           static_cast<double>(fy) * S(ix, iy + 1));
                const int32_t right = round((1 - static_cast<double>(fy)) * S(ix + 1, iy) +
                                            static_cast<double>(fy) * S(ix + 1, iy + 1));
                const int32_t out =
                    round((1 - static_cast<double>(fx)) * left + static_cast<double>(fx) * right);
                channel(put(result, x, y), c) = clamp(out);
            }
        }
    }
    return result;
}

inline PixelBuffer bitsResize(const PixelBuffer& image, const PixelBuffer& source, int32_t NewWidth,
                              int32_t NewHeight) {
    if (NewWidth < 0 || NewHeight < 0) return image;
    PixelBuffer result(NewWidth, NewHeight);
    for (int32_t y = 0; y < NewHeight; ++y)
        for (int32_t x = 0; x < NewWidth; ++x) {
            const auto Sx = static_cast<float>(source.width() / static_cast<double>(NewWidth));
            const auto Sy = static_cast<float>(source.height() / static_cast<double>(NewHeight));
            const auto ix = static_cast<int32_t>(std::floor(x * static_cast<double>(Sx)));
            const auto iy = static_cast<int32_t>(std::floor(y * static_cast<double>(Sy)));
            for (int c = 0; c <= 2; ++c)
                channel(put(result, x, y), c) =
                    static_cast<uint8_t>(channel(read(source, ix, iy), c));
        }
    return result;
}

inline PixelBuffer bitsRotate90(const PixelBuffer& image, const PixelBuffer& source) {
    PixelBuffer result(image.height(), image.width());
    for (int32_t y = 0; y < image.height(); ++y)
        for (int32_t x = 0; x < image.width(); ++x)
            for (int c = 0; c <= 2; ++c)
                channel(put(result, y, image.width() - 1 - x), c) =
                    static_cast<uint8_t>(channel(read(source, x, y), c));
    return result;
}

inline PixelBuffer flip(const PixelBuffer& image, bool fH, bool fV) {
    PixelBuffer result = image;
    for (int32_t y = 0; y < image.height(); ++y)
        for (int32_t x = 0; x < image.width(); ++x) {
            const int32_t column = fH ? image.width() - 1 - x : x;
            const int32_t row = fV ? image.height() - 1 - y : y;
            for (int c = 0; c <= 2; ++c)
                channel(put(result, x, y), c) =
                    static_cast<uint8_t>(channel(image.at(column, row), c));
        }
    return result;
}

}  // namespace tessarine::tests::twin
