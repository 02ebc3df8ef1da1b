#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "pixels/pixel_buffer.h"

namespace tessarine {

/// A device bitmap: top-down rows of blue, green, red and a 0. Kept in the form of a pixel buffer
/// (black margin, fourth bytes 0), so that a picture becomes one without a copy. A value, shared
/// until written. A default-made one is no valid bitmap.
class Bitmap {
  public:
    Bitmap() = default;
    /// A black bitmap. \throws StatementFailed for a negative size or for want of memory.
    Bitmap(int32_t width, int32_t height) : pixels_(width, height) {}
    /// The image area of a buffer; margin and fourth bytes become 0, in place where nobody shares
    /// the buffer.
    explicit Bitmap(PixelBuffer pixels);
    /// A bitmap whose maker fills every pixel.
    static Bitmap toFill(int32_t width, int32_t height) {
        return inForm(PixelBuffer(width, height, PixelBuffer::Start::unset));
    }
    /// A buffer whose margin and fourth bytes are known to be 0: nobody looks.
    static Bitmap inForm(PixelBuffer pixels) {
        Bitmap bitmap;
        bitmap.pixels_ = std::move(pixels);
        return bitmap;
    }

    bool isValid() const { return pixels_.isDimensioned(); }
    int32_t width() const { return pixels_.width(); }
    int32_t height() const { return pixels_.height(); }
    const Pixel* row(int32_t y) const { return pixels_.row(y); }
    /// Row y for writing; keep the fourth bytes 0.
    Pixel* writableRow(int32_t y) { return pixels_.writableBlock() + pixels_.offsetOfRow(y); }
    const PixelBuffer& pixels() const { return pixels_; }
    PixelBuffer takePixels() && { return std::move(pixels_); }

    friend bool operator==(const Bitmap&, const Bitmap&) = default;

  private:
    PixelBuffer pixels_;
};

/// How a block of pixels is laid out, as the painting call is told: top-down rows of 32-bit
/// pixels, `width` and `height` including the margin.
struct BitmapInfo {
    int32_t width = 0;
    int32_t height = 0;  ///< number of rows

    friend bool operator==(const BitmapInfo&, const BitmapInfo&) = default;
};

/// The picture holder: a size in pixels, a lasting picture, and a drawing surface of its own,
/// which shows the picture until something is drawn on it.
class PictureHolder {
  public:
    /// Whether the owner wants drawings kept while the holder is hidden. The surface here keeps
    /// them in either case, so that nothing else depends on it.
    bool autoRedraw = false;

    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    /// The lasting picture; not valid where there is none.
    const Bitmap& picture() const { return picture_; }

    /// Sets the lasting picture; the size follows it, and the surface shows it.
    void setPicture(Bitmap picture);
    /// Drops the lasting picture and what is drawn; the size stays.
    void clearPicture();
    /// Gives the holder another size; what is drawn stays at the top left.
    /// \throws StatementFailed for a side below 1: the size then stays.
    void setSize(int32_t width, int32_t height);
    /// Paints an area of `width` by `height` pixels of a block, from position (2, 2) of it, at
    /// (0, 0). The block's bytes are read as `info` lays them out, whatever buffer they came
    /// from; what lies behind their end is painted black.
    void paint(const PixelBuffer& block, const BitmapInfo& info, int32_t width, int32_t height);
    /// Copies a bitmap's top left area to (x, y) of the surface, inverted or plainly.
    void render(const Bitmap& bitmap, int32_t x, int32_t y, int32_t width, int32_t height,
                bool inverted);
    /// What is drawn, at the holder's size, becomes the lasting picture.
    void keepDrawing();
    /// Clears what is drawn; the picture stays and shows again.
    void clearSurface();
    /// What is drawn on the holder, at its size; black where nothing is.
    Bitmap drawn() const;

  private:
    const Bitmap& shown() const { return surface_.isValid() ? surface_ : picture_; }

    int32_t width_ = 0;
    int32_t height_ = 0;
    Bitmap picture_;
    Bitmap surface_;  ///< not valid while nothing is drawn
};

}  // namespace tessarine
