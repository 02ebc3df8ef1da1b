#include "pixels/pixel_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "pixels/failures.h"
#include "pixels/pixel_memory.h"
#include "pixels/shortage.h"

namespace tessarine {

namespace {

/// Memory that holds anything.
std::shared_ptr<Pixel> memoryFor(size_t count) {
    if (count >= sizablePixels)
        if (std::shared_ptr<Pixel> memory = pixelMemory().take(count)) return memory;
    auto* const memory = static_cast<Pixel*>(std::malloc(count * sizeof(Pixel)));
    if (memory == nullptr) failForMemory("not enough memory for a pixel buffer");
    return {memory, std::free};
}

thread_local BlockSource blockSource = nullptr;

}  // namespace

void setBlockSource(BlockSource source) { blockSource = source; }

PixelBuffer::PixelBuffer(int32_t width, int32_t height, Start start)
    : width_(width), height_(height) {
    if (width < 0 || height < 0) throw StatementFailed("a pixel buffer has no negative size");
    const size_t count =
        (static_cast<size_t>(width) + 2 * margin) * (static_cast<size_t>(height) + 2 * margin);
    if (blockSource != nullptr) block_ = blockSource(width, height);
    if (block_ == nullptr) block_ = memoryFor(count);
    if (start == Start::black)
        std::fill_n(block_.get(), count, Pixel{});
    else
        clearMargin();
}

void PixelBuffer::clearMargin() {
    Pixel* own = writableBlock();
    const ptrdiff_t band = margin * stride();
    std::fill_n(own, band, Pixel{});
    std::fill_n(own + offsetOfRow(height_) - margin, band, Pixel{});
    for (int32_t y = 0; y < height_; ++y) {
        Pixel* row = own + offsetOfRow(y);
        std::fill_n(row - margin, margin, Pixel{});
        std::fill_n(row + width_, margin, Pixel{});
    }
}

size_t PixelBuffer::pixelCount() const {
    if (!isDimensioned()) return 0;
    return static_cast<size_t>(stride()) * (static_cast<size_t>(height_) + 2 * margin);
}

Pixel* PixelBuffer::writableBlock() {
    if (isShared()) {
        std::shared_ptr<Pixel> own = memoryFor(pixelCount());
        std::memcpy(own.get(), block_.get(), byteCount());
        block_ = std::move(own);
    }
    return block_.get();
}

bool operator==(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.isDimensioned() != b.isDimensioned()) return false;
    if (a.width_ != b.width_ || a.height_ != b.height_) return false;
    return a.block_ == b.block_ || std::memcmp(a.block(), b.block(), a.byteCount()) == 0;
}

}  // namespace tessarine
