#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace tessarine {

/// One pixel as it lies in memory. Filters pass the fourth byte through.
struct Pixel {
    uint8_t blue = 0;
    uint8_t green = 0;
    uint8_t red = 0;
    uint8_t fourth = 0;

    friend bool operator==(const Pixel&, const Pixel&) = default;
};
static_assert(sizeof(Pixel) == 4);

/// Gives a pixel the three colours of another; its fourth byte stays.
inline void takeColours(Pixel& pixel, const Pixel& colours) {
    pixel = {colours.blue, colours.green, colours.red, pixel.fourth};
}

/// (B + G + R) \ 3, the brightness by which tone filters go.
inline int32_t brightness(const Pixel& p) { return (p.blue + p.green + p.red) / 3; }

/// An image of width() by height() pixels inside a margin of two pixels on all four sides: the
/// pixel block of a top-down 32-bit bitmap of (width + 4) by (height + 4) without row padding.
/// The byte (channel, x, y) lies at ((y + 2) * (width + 4) + (x + 2)) * 4 + channel.
///
/// A value: copies are independent, and share their memory until one of them is written.
class PixelBuffer {
  public:
    static constexpr int32_t margin = 2;

    /// A buffer without dimensions: it holds no bytes, not even a margin.
    PixelBuffer() = default;

    /// A buffer with every byte 0.
    /// \throws StatementFailed for a negative size, MemoryFailed where memory does not suffice.
    PixelBuffer(int32_t width, int32_t height) : PixelBuffer(width, height, Start::black) {}

    /// How the pixels inside the margin start.
    enum class Start { black, unset };
    /// A buffer with a margin of 0 bytes. Where its pixels start unset they hold anything, and the
    /// maker fills all of them.
    /// \throws as above
    PixelBuffer(int32_t width, int32_t height, Start start);

    /// A buffer of this size on memory that exists: at least (width + 4) * (height + 4) pixels.
    PixelBuffer(int32_t width, int32_t height, std::shared_ptr<Pixel> block)
        : width_(width), height_(height), block_(std::move(block)) {}

    bool isDimensioned() const { return block_ != nullptr; }
    /// Whether another buffer stands on the same memory.
    bool isShared() const { return block_.use_count() > 1; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }

    /// Pixels from one row to the next: width() + 4.
    ptrdiff_t stride() const { return ptrdiff_t{width_} + 2 * margin; }
    /// All pixels, margin included; 0 for a buffer without dimensions.
    size_t pixelCount() const;
    size_t byteCount() const { return pixelCount() * sizeof(Pixel); }

    /// The first pixel of the whole block, (-2, -2).
    const Pixel* block() const { return block_.get(); }
    /// The same for writing. Pointers from earlier calls on this buffer may go stale.
    /// \throws MemoryFailed where memory for a copy of its own is not to be had.
    Pixel* writableBlock();

    /// The pixel (0, y), from which x -2 to width() + 1 can be reached. y from -2 to height() + 1.
    const Pixel* row(int32_t y) const { return block() + offsetOfRow(y); }

    const Pixel& at(int32_t x, int32_t y) const { return row(y)[x]; }

    /// The pixel to which any x and y lead when they are counted along the block: beyond the
    /// margin's left or right end lies the neighbouring row. Black where the block ends.
    Pixel reached(int64_t x, int64_t y) const {
        const int64_t place = (y + margin) * stride() + x + margin;
        return place >= 0 && place < static_cast<int64_t>(pixelCount()) ? block()[place] : Pixel{};
    }

    /// Offset of the pixel (0, y) from the block's start, in pixels.
    ptrdiff_t offsetOfRow(int32_t y) const { return (ptrdiff_t{y} + margin) * stride() + margin; }

    /// Equal in size and in every byte, margin and fourth channel included.
    friend bool operator==(const PixelBuffer& a, const PixelBuffer& b);

    /// Sets the margin's bytes to 0. \throws as writableBlock()
    void clearMargin();

  private:
    int32_t width_ = 0;
    int32_t height_ = 0;
    std::shared_ptr<Pixel> block_;
};

/// Gives the memory for a new buffer of width by height, margin included; nothing where the heap is
/// to serve.
using BlockSource = std::shared_ptr<Pixel> (*)(int32_t width, int32_t height);

/// Where new buffers of this thread get their memory from; nullptr for the heap. A process that
/// decodes for another has its pictures made in memory that both share.
void setBlockSource(BlockSource source);

}  // namespace tessarine
