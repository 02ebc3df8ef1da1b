#include "imagefiles/picture.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>

#include "pixels/failures.h"
#include "pixels/threads.h"

namespace tessarine {

namespace {

/// The most pixels that are gone over twice while they are at hand.
constexpr size_t fewPixels = 4096;

/// Calls `visit(from, count)` for parts of so many pixels, on the threads that a filter may use.
template <class Visit>
void forParts(size_t count, const Visit& visit) {
    const auto part = static_cast<size_t>(bandPixels());
    inParallel(static_cast<int32_t>((count + part - 1) / part), [&](int32_t i) {
        const size_t from = static_cast<size_t>(i) * part;
        visit(from, std::min(part, count - from));
    });
}

// Every picture that is read or saved comes by here, so eight pixels are looked at in one step.
constexpr size_t stepPixels = 8;
using Step = std::array<uint64_t, stepPixels / 2>;  ///< pairs of pixels

/// The fourth bytes of a pair of pixels.
constexpr auto fourthsOfPair = [] {
    constexpr Pixel fourth{0, 0, 0, 0xFF};
    return std::bit_cast<uint64_t>(std::array{fourth, fourth});
}();

/// Whether any fourth byte is not 0.
bool anyFourth(const Pixel* pixels, size_t count) {
    uint64_t found = 0;
    size_t i = 0;
    for (; i + stepPixels <= count; i += stepPixels) {
        Step pairs;
        std::memcpy(pairs.data(), pixels + i, sizeof pairs);
        found |= (pairs[0] | pairs[1]) | (pairs[2] | pairs[3]);
    }
    bool any = (found & fourthsOfPair) != 0;
    for (; i < count; ++i)
        any = any || pixels[i].fourth != 0;
    return any;
}

/// Sets every fourth byte to 0.
void clearFourths(Pixel* pixels, size_t count) {
    size_t i = 0;
    for (; i + stepPixels <= count; i += stepPixels) {
        Step pairs;
        std::memcpy(pairs.data(), pixels + i, sizeof pairs);
        for (uint64_t& pair : pairs)
            pair &= ~fourthsOfPair;
        std::memcpy(static_cast<void*>(pixels + i), pairs.data(), sizeof pairs);
    }
    for (; i < count; ++i)
        pixels[i].fourth = 0;
}

/// Whether margin and fourth bytes are all 0, as a bitmap keeps them.
bool hasBitmapForm(const PixelBuffer& pixels) {
    std::atomic<bool> isPlain = true;
    forParts(pixels.pixelCount(), [&](size_t from, size_t count) {
        if (isPlain && anyFourth(pixels.block() + from, count)) isPlain = false;
    });
    if (!isPlain) return false;

    const auto isBlack = [](const Pixel* first, const Pixel* last) {
        return std::all_of(first, last, [](const Pixel& p) { return p == Pixel{}; });
    };
    const ptrdiff_t band = PixelBuffer::margin * pixels.stride();
    const Pixel* end = pixels.block() + pixels.pixelCount();
    if (!isBlack(pixels.block(), pixels.block() + band) || !isBlack(end - band, end)) return false;
    for (int32_t y = 0; y < pixels.height(); ++y) {
        const Pixel* row = pixels.row(y);
        const Pixel* right = row + pixels.width();
        if (!isBlack(row - PixelBuffer::margin, row) ||
            !isBlack(right, right + PixelBuffer::margin))
            return false;
    }
    return true;
}

/// Sets the fourth bytes to 0, writing only where one is not.
void tidyFourths(Pixel* pixels, size_t count) {
    for (size_t from = 0; from < count; from += fewPixels) {
        const size_t some = std::min(fewPixels, count - from);
        if (anyFourth(pixels + from, some)) clearFourths(pixels + from, some);
    }
}

/// Copies the area that both bitmaps have at the given places.
void copyArea(const Bitmap& from, Bitmap& to, int32_t x, int32_t y, int32_t width, int32_t height,
              bool inverted) {
    const int64_t left = std::max<int64_t>(x, 0);
    const int64_t right =
        std::min({int64_t{x} + std::min(width, from.width()), static_cast<int64_t>(to.width())});
    const int64_t top = std::max<int64_t>(y, 0);
    const int64_t bottom =
        std::min({int64_t{y} + std::min(height, from.height()), static_cast<int64_t>(to.height())});
    if (left >= right) return;
    for (int64_t row = top; row < bottom; ++row) {
        const Pixel* source = from.row(static_cast<int32_t>(row - y)) + (left - x);
        Pixel* target = to.writableRow(static_cast<int32_t>(row)) + left;
        std::copy(source, source + (right - left), target);
        if (!inverted) continue;
        for (Pixel* p = target; p != target + (right - left); ++p)
            *p = {static_cast<uint8_t>(~p->blue), static_cast<uint8_t>(~p->green),
                  static_cast<uint8_t>(~p->red), 0};
    }
}

}  // namespace

Bitmap::Bitmap(PixelBuffer pixels) {
    if (pixels.isDimensioned() && !pixels.isShared()) {
        Pixel* const all = pixels.writableBlock();
        forParts(pixels.pixelCount(),
                 [all](size_t from, size_t count) { tidyFourths(all + from, count); });
        pixels.clearMargin();
        pixels_ = std::move(pixels);
        return;
    }
    if (!pixels.isDimensioned() || hasBitmapForm(pixels)) {
        pixels_ = std::move(pixels);
        return;
    }
    pixels_ = PixelBuffer(pixels.width(), pixels.height());
    for (int32_t y = 0; y < pixels.height(); ++y) {
        const Pixel* source = pixels.row(y);
        Pixel* target = writableRow(y);
        for (int32_t x = 0; x < pixels.width(); ++x)
            target[x] = {source[x].blue, source[x].green, source[x].red, 0};
    }
}

void PictureHolder::setPicture(Bitmap picture) {
    width_ = picture.width();
    height_ = picture.height();
    picture_ = std::move(picture);
    surface_ = {};
}

void PictureHolder::clearPicture() {
    picture_ = {};
    surface_ = {};
}

void PictureHolder::setSize(int32_t width, int32_t height) {
    if (width < 1 || height < 1) throw StatementFailed("a picture holder has no side below 1");
    width_ = width;
    height_ = height;
}

void PictureHolder::paint(const PixelBuffer& block, const BitmapInfo& info, int32_t width,
                          int32_t height) {
    const int32_t margin = PixelBuffer::margin;
    width = std::min(width, width_);
    height = std::min(height, height_);
    if (width < 1 || height < 1) return;

    const bool laidOutAsItIs =
        info.width == block.stride() && info.height == int64_t{block.height()} + 2 * margin;
    if (block.isDimensioned() && laidOutAsItIs && width == width_ && height == height_ &&
        block.width() == width && block.height() == height) {
        surface_ = Bitmap(block);
        return;
    }

    Bitmap painted = drawn();
    const auto count = static_cast<int64_t>(block.pixelCount());
    for (int32_t y = 0; y < height; ++y) {
        Pixel* target = painted.writableRow(y);
        for (int32_t x = 0; x < width; ++x) {
            const bool inLayout =
                int64_t{x} + margin < info.width && int64_t{y} + margin < info.height;
            const int64_t place = (int64_t{y} + margin) * info.width + x + margin;
            const Pixel source = inLayout && place < count ? block.block()[place] : Pixel{};
            target[x] = {source.blue, source.green, source.red, 0};
        }
    }
    surface_ = std::move(painted);
}

void PictureHolder::render(const Bitmap& bitmap, int32_t x, int32_t y, int32_t width,
                           int32_t height, bool inverted) {
    const bool coversAll = x == 0 && y == 0 && bitmap.width() == width_ &&
                           bitmap.height() == height_ && width >= width_ && height >= height_;
    if (coversAll && !inverted) {
        surface_ = bitmap;
        return;
    }
    Bitmap target = drawn();
    copyArea(bitmap, target, x, y, width, height, inverted);
    surface_ = std::move(target);
}

void PictureHolder::keepDrawing() {
    picture_ = drawn();
    surface_ = {};
}

void PictureHolder::clearSurface() { surface_ = {}; }

Bitmap PictureHolder::drawn() const {
    const Bitmap& source = shown();
    if (source.isValid() && source.width() == width_ && source.height() == height_) return source;
    Bitmap result(width_, height_);
    if (source.isValid()) copyArea(source, result, 0, 0, width_, height_, false);
    return result;
}

}  // namespace tessarine
