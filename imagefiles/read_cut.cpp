#include <algorithm>
#include <array>

#include "imagefiles/decoders.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

using Palette = std::array<Pixel, 256>;

/// The palette file of the paint program that writes cuts.
Palette readPalette(Bytes file) {
    ByteReader in(file);
    if (!startsWith(in.take(2), "AH")) refuse("this is no palette of a cut");
    in.skip(4);
    if (in.u8() != 10) refuse("this is no palette of a cut");
    in.skip(5);
    const uint32_t last = in.u16le();
    std::array<uint32_t, 3> top{};
    for (uint32_t& value : top)
        value = in.u16le();
    in.skip(20);
    Palette palette{};
    for (uint32_t i = 0; i <= std::min<uint32_t>(last, 255); ++i) {
        // The colours lie in blocks of 512 bytes, and none crosses from one into the next.
        const size_t inBlock = in.position() % 512;
        if (inBlock > 512 - 6) in.skip(512 - inBlock);
        std::array<uint8_t, 3> levels{};
        for (size_t c = 0; c < 3; ++c) {
            const uint32_t value = in.u16le();
            const uint32_t range = top[c] == 0 ? 255 : top[c];
            levels[c] =
                static_cast<uint8_t>(std::min(uint64_t{value} * 255 / range, uint64_t{255}));
        }
        palette[i] = rgbPixel(levels[0], levels[1], levels[2]);
    }
    return palette;
}

std::optional<Palette> paletteBeside(const PictureSource& source) {
    for (const Bytes companion : source.companions) {
        std::optional<Palette> palette;
        if (attempt([&] { palette = readPalette(companion); })) return palette;
    }
    return std::nullopt;
}

void readLine(ByteReader in, const Palette& palette, Pixel* row, uint32_t width) {
    for (uint32_t x = 0; x < width;) {
        const uint32_t code = in.u8();
        const uint32_t count = code & 0x7F;
        if (count == 0 || count > width - x) refuse("a run leaves its line");
        if (code & 0x80) {
            std::fill_n(row + x, count, palette[in.u8()]);
        } else {
            for (uint32_t i = 0; i < count; ++i)
                row[x + i] = palette[in.u8()];
        }
        x += count;
    }
}

}  // namespace

/// A cut names no colours. With a palette beside it, it is shown in those; else the file library
/// shows it in grey.
std::optional<Decoded> takeOverCut(const PictureSource& source) {
    const std::optional<Palette> palette = paletteBeside(source);
    if (!palette) return std::nullopt;
    ByteReader in(source.file);
    const uint32_t width = in.u16le();
    const uint32_t height = in.u16le();
    in.skip(2);
    Decoded decoded{bitmapFor(width, height, in.remaining(), 64), 8};
    for (uint32_t y = 0; y < height; ++y) {
        const uint32_t length = in.u16le();
        readLine(ByteReader(in.take(length)), *palette,
                 decoded.bitmap.writableRow(static_cast<int32_t>(y)), width);
    }
    return decoded;
}

}  // namespace tessarine
