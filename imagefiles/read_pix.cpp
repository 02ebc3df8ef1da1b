#include <algorithm>

#include "imagefiles/decoders.h"

namespace tessarine {

/// DevIL knows the 24-bit kind only, and reads past the end of damaged files.
std::optional<Decoded> takeOverPix(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    const uint32_t width = in.u16be();
    const uint32_t height = in.u16be();
    in.skip(4);
    const uint32_t depth = in.u16be();
    if (depth != 8 && depth != 24) refuse("this is no Alias picture");
    Decoded decoded{bitmapFor(width, height, in.remaining(), 128), static_cast<int16_t>(depth)};
    for (uint32_t y = 0; y < height; ++y) {
        Pixel* row = decoded.bitmap.writableRow(static_cast<int32_t>(y));
        for (uint32_t x = 0; x < width;) {
            const uint32_t count = in.u8();
            if (count == 0 || count > width - x) refuse("a run leaves its line");
            const Bytes c = in.take(depth / 8);
            const Pixel colour = depth == 8 ? greyPixel(c[0]) : rgbPixel(c[2], c[1], c[0]);
            std::fill_n(row + x, count, colour);
            x += count;
        }
    }
    return decoded;
}

}  // namespace tessarine
