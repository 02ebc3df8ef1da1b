#include "pixels/pixel_buffer.h"

#include <cstdlib>
#include <cstring>

#include "pixels/failures.h"
#include "pixels/shortage.h"

namespace tessarine {

namespace {

std::shared_ptr<Pixel> adopt(void* memory) {
    if (memory == nullptr) failForMemory("not enough memory for a pixel buffer");
    return {static_cast<Pixel*>(memory), std::free};
}

thread_local BlockSource blockSource = nullptr;

}  // namespace

void setBlockSource(BlockSource source) { blockSource = source; }

PixelBuffer::PixelBuffer(int32_t width, int32_t height) : width_(width), height_(height) {
    if (width < 0 || height < 0) throw StatementFailed("a pixel buffer has no negative size");
    if (blockSource != nullptr) block_ = blockSource(width, height);
    if (block_ != nullptr) return;
    block_ = adopt(std::calloc(
        (static_cast<size_t>(width) + 2 * margin) * (static_cast<size_t>(height) + 2 * margin),
        sizeof(Pixel)));
}

size_t PixelBuffer::pixelCount() const {
    if (!isDimensioned()) return 0;
    return static_cast<size_t>(stride()) * (static_cast<size_t>(height_) + 2 * margin);
}

Pixel* PixelBuffer::writableBlock() {
    if (block_.use_count() > 1) {
        std::shared_ptr<Pixel> own = adopt(std::malloc(byteCount()));
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
