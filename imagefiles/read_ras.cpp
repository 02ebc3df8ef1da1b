#include <algorithm>
#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

constexpr uint32_t signature = 0x59A66A95;

/// Undoes the run-length coding, which knows no rows: 128 introduces a run, or stands for itself
/// when a 0 follows.
std::vector<uint8_t> unpackRuns(ByteReader in, size_t size) {
    std::vector<uint8_t> plain;
    plain.reserve(size);
    while (plain.size() < size) {
        const uint8_t byte = in.u8();
        if (byte != 128) {
            plain.push_back(byte);
            continue;
        }
        const uint8_t more = in.u8();
        const uint8_t value = more == 0 ? 128 : in.u8();
        plain.insert(plain.end(), std::min<size_t>(size_t{more} + 1, size - plain.size()), value);
    }
    return plain;
}

std::vector<Pixel> readPalette(ByteReader& in, uint32_t kind, uint32_t length, uint32_t depth) {
    std::vector<Pixel> palette;
    const Bytes map = in.take(length);
    if (kind == 1 && length >= 3) {
        const size_t count = length / 3;
        for (size_t i = 0; i < count; ++i)
            palette.push_back(rgbPixel(map[i], map[count + i], map[2 * count + i]));
    } else if (depth == 1) {
        palette = {greyPixel(255), greyPixel(0)};
    } else {
        for (uint32_t i = 0; i < 256; ++i)
            palette.push_back(greyPixel(static_cast<uint8_t>(i)));
    }
    palette.resize(256);
    return palette;
}

}  // namespace

/// The file library inverts bilevel rasters, swaps the channels of some and refuses palettes that
/// are not full.
std::optional<Decoded> takeOverRas(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    if (in.u32be() != signature) return std::nullopt;
    const uint32_t width = in.u32be();
    const uint32_t height = in.u32be();
    const uint32_t depth = in.u32be();
    in.skip(4);
    const uint32_t kind = in.u32be();
    const uint32_t mapKind = in.u32be();
    const uint32_t mapLength = in.u32be();
    if (depth != 1 && depth != 8 && depth != 24 && depth != 32)
        refuse("a raster of this depth cannot be read");
    if (kind > 3) refuse("a raster of this kind cannot be read");
    const std::vector<Pixel> palette = readPalette(in, mapKind, mapLength, depth);

    const bool hasRuns = kind == 2;
    Decoded decoded{bitmapFor(width, height, in.remaining(), hasRuns ? 1024 : 8),
                    static_cast<int16_t>(depth)};
    const size_t rowBytes = (size_t{width} * depth + 15) / 16 * 2;
    if (in.remaining() < rowBytes * height / (hasRuns ? 128 : 1))
        refuse("the file is too short for its picture");
    const std::vector<uint8_t> unpacked =
        hasRuns ? unpackRuns(in, rowBytes * height) : std::vector<uint8_t>{};
    const Bytes data = hasRuns ? Bytes(unpacked) : in.take(rowBytes * height);

    const bool redFirst = kind == 3;
    for (uint32_t y = 0; y < height; ++y) {
        const uint8_t* line = data.data() + y * rowBytes;
        Pixel* row = decoded.bitmap.writableRow(static_cast<int32_t>(y));
        for (uint32_t x = 0; x < width; ++x) {
            if (depth <= 8) {
                row[x] = palette[depth == 8 ? line[x] : line[x / 8] >> (7 - x % 8) & 1];
                continue;
            }
            const uint8_t* p = line + size_t{x} * (depth / 8) + (depth == 32 ? 1 : 0);
            row[x] = redFirst ? rgbPixel(p[0], p[1], p[2]) : rgbPixel(p[2], p[1], p[0]);
        }
    }
    return decoded;
}

}  // namespace tessarine
