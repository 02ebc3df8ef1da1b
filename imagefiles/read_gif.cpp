#include <algorithm>
#include <memory>

#include <FreeImage.h>

#include "imagefiles/decoders.h"
#include "imagefiles/dib_pixels.h"

namespace tessarine {

namespace {

using Dib = std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)>;

/// A number that the library keeps beside the frame; 0 where it keeps none.
int32_t frameNumber(FIBITMAP* frame, const char* name) {
    FITAG* tag = nullptr;
    if (!FreeImage_GetMetadata(FIMD_ANIMATION, frame, name, &tag)) return 0;
    return *static_cast<const uint16_t*>(FreeImage_GetTagValue(tag));
}

/// A number of `bits` bits, 1, 4 or 8, from a row of the file library's.
BYTE numberAt(const BYTE* row, int32_t x, int32_t bits) {
    if (bits == 8) return row[x];
    if (bits == 4) return x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 0x0F;
    return row[x / 8] >> (7 - x % 8) & 1;
}

}  // namespace

// The library's own way to put a frame on its screen goes wrong where the frame reaches beyond it,
// so the frame is read by itself and put there here.
Decoded decodeGif(Bytes file) {
    if (!startsWith(file, "GIF87a") && !startsWith(file, "GIF89a")) refuse("this is no GIF");
    const Dib frame(loadDib(file, FIF_GIF, 0), &FreeImage_Unload);
    if (!frame || FreeImage_GetBPP(frame.get()) > 8) refuse("the file holds no frame");

    const auto width = static_cast<int32_t>(FreeImage_GetWidth(frame.get()));
    const auto height = static_cast<int32_t>(FreeImage_GetHeight(frame.get()));
    const int32_t left = frameNumber(frame.get(), "FrameLeft");
    const int32_t top = frameNumber(frame.get(), "FrameTop");
    const int32_t screenWidth = frameNumber(frame.get(), "LogicalWidth");
    const int32_t screenHeight = frameNumber(frame.get(), "LogicalHeight");

    // A screen without a size is that of its frame. It may be far larger than its frame.
    constexpr uint64_t anySize = uint64_t{1} << 32;
    Decoded decoded;
    decoded.depth = static_cast<int16_t>(FreeImage_GetBPP(frame.get()));
    decoded.bitmap = bitmapFor(
        static_cast<uint64_t>(screenWidth > 0 ? screenWidth : left + width),
        static_cast<uint64_t>(screenHeight > 0 ? screenHeight : top + height), 1, anySize);
    Bitmap& screen = decoded.bitmap;
    for (int32_t y = 0; y < screen.height(); ++y)
        std::fill_n(screen.writableRow(y), screen.width(), greyPixel(255));

    const int transparent = FreeImage_GetTransparentIndex(frame.get());
    const RGBQUAD* palette = FreeImage_GetPalette(frame.get());
    for (int32_t y = 0; y < std::min(height, screen.height() - top); ++y) {
        Pixel* target = screen.writableRow(top + y) + left;
        const BYTE* numbers = FreeImage_GetScanLine(frame.get(), height - 1 - y);
        for (int32_t x = 0; x < std::min(width, screen.width() - left); ++x) {
            const BYTE number = numberAt(numbers, x, decoded.depth);
            if (number == transparent) continue;
            const RGBQUAD& colour = palette[number];
            target[x] = rgbPixel(colour.rgbRed, colour.rgbGreen, colour.rgbBlue);
        }
    }
    return decoded;
}

}  // namespace tessarine
