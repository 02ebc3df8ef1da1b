#include "imagefiles/decoders.h"

namespace tessarine {

/// DevIL's own raw files: a header of 14 bytes, then rows from the top, red first.
/// Bytes without a header could be any picture, so they are refused.
std::optional<Decoded> takeOverRaw(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    const uint64_t width = in.u32le();
    const uint64_t height = in.u32le();
    const uint32_t slices = in.u32le();
    const uint32_t channels = in.u8();
    const uint32_t bytesOfSample = in.u8();
    if (slices != 1 || bytesOfSample != 1 || (channels != 1 && channels != 3 && channels != 4) ||
        width > 0xFFFF || height > 0xFFFF || in.remaining() != width * height * channels)
        refuse("raw bytes do not tell their picture");
    Decoded decoded{bitmapFor(width, height, in.remaining(), 1),
                    static_cast<int16_t>(8 * channels)};
    for (int32_t y = 0; y < decoded.bitmap.height(); ++y) {
        Pixel* row = decoded.bitmap.writableRow(y);
        for (int32_t x = 0; x < decoded.bitmap.width(); ++x) {
            const Bytes p = in.take(channels);
            row[x] = channels == 1 ? greyPixel(p[0]) : rgbPixel(p[0], p[1], p[2]);
        }
    }
    return decoded;
}

}  // namespace tessarine
