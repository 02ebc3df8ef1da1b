#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <vector>

#include <FreeImage.h>

#include "imagefiles/decoders.h"
#include "imagefiles/dib_pixels.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

enum Compression : uint32_t {
    plain = 0,
    runs8 = 1,
    runs4 = 2,
    masked = 3,
    jpeg = 4,
    png = 5,
    maskedWithAlpha = 6,
    runs24 = 100,  ///< OS/2 says 4
};

struct Header {
    uint32_t size = 0;
    int64_t width = 0;
    int64_t height = 0;
    bool topDown = false;
    uint32_t bits = 0;
    uint32_t compression = plain;
    uint32_t colours = 0;
    std::array<uint32_t, 3> masks{};  ///< red, green, blue
    size_t pixels = 0;                ///< where the pixels begin
    std::vector<Pixel> palette;

    bool isOs2() const { return size < 40 || size == 64; }
};

void readSizes(ByteReader& in, Header& header) {
    if (header.size == 12) {
        header.width = in.u16le();
        header.height = in.u16le();
        in.skip(2);
        header.bits = in.u16le();
        return;
    }
    header.width = static_cast<int32_t>(in.u32le());
    header.height = static_cast<int32_t>(in.u32le());
    in.skip(2);
    header.bits = in.u16le();
    if (header.size >= 20) header.compression = in.u32le();
    if (header.size >= 36) {
        in.skip(12);
        header.colours = in.u32le();
    }
    if (header.isOs2()) {
        if (header.compression == 3) refuse("a bitmap with Huffman coding cannot be read");
        if (header.compression == 4) header.compression = runs24;
    }
    if (header.height < 0) {
        header.topDown = true;
        header.height = -header.height;
    }
}

Header readHeader(Bytes file, bool fileHeader) {
    ByteReader in(file);
    uint32_t offset = 0;
    if (fileHeader) {
        in.skip(10);
        offset = in.u32le();
    }
    const size_t start = in.position();
    Header header;
    header.size = in.u32le();
    if (header.size < 12 || (header.size > 12 && header.size < 16) || header.size > 1024)
        refuse("this is no bitmap header");
    readSizes(in, header);

    uint64_t after = start + header.size;
    const bool hasMasks = header.compression == masked || header.compression == maskedWithAlpha;
    if (hasMasks) {
        in.seek(start + 40);
        for (uint32_t& mask : header.masks)
            mask = in.u32le();
        if (header.size == 40) after += header.compression == masked ? 12 : 16;
    } else if (header.bits == 16) {
        header.masks = {0x7C00, 0x03E0, 0x001F};
    } else {
        header.masks = {0xFF0000, 0x00FF00, 0x0000FF};
    }

    uint64_t colours = header.colours;
    if (header.bits <= 8 && colours == 0) colours = uint64_t{1} << header.bits;
    const uint64_t entry = header.size == 12 ? 3 : 4;
    const bool believable = fileHeader && offset >= after;
    header.pixels = believable ? offset : static_cast<size_t>(after + colours * entry);
    if (header.bits <= 8) {
        if (believable) colours = std::min(colours, (offset - after) / entry);
        in.seek(after);
        for (uint64_t i = 0; i < std::min<uint64_t>(colours, 256); ++i) {
            const Bytes colour = in.take(entry);
            header.palette.push_back(rgbPixel(colour[2], colour[1], colour[0]));
        }
        header.palette.resize(256);
    }
    return header;
}

uint8_t maskedSample(uint32_t value, uint32_t mask) {
    if (mask == 0) return 0;
    const int shift = std::countr_zero(mask);
    const uint64_t top = mask >> shift;
    return static_cast<uint8_t>((uint64_t{(value & mask) >> shift} * 255 + top / 2) / top);
}

void readPlainRow(Bytes source, const Header& header, Pixel* target) {
    for (int64_t x = 0; x < header.width; ++x) {
        if (header.bits <= 8) {
            const uint64_t bit = static_cast<uint64_t>(x) * header.bits;
            const uint32_t shift = 8 - header.bits - bit % 8;
            target[x] = header.palette[source[bit / 8] >> shift & ((1u << header.bits) - 1)];
            continue;
        }
        const uint8_t* p = source.data() + x * (header.bits / 8);
        uint32_t value = p[0] | p[1] << 8;
        if (header.bits >= 24) value |= uint32_t{p[2]} << 16;
        if (header.bits == 32) value |= uint32_t{p[3]} << 24;
        target[x] = header.bits == 24 ? rgbPixel(p[2], p[1], p[0])
                                      : rgbPixel(maskedSample(value, header.masks[0]),
                                                 maskedSample(value, header.masks[1]),
                                                 maskedSample(value, header.masks[2]));
    }
}

/// Writes run-length coded pixels bottom-up; what falls outside is dropped.
class RunPainter {
  public:
    RunPainter(Bitmap& bitmap, bool topDown) : bitmap_(bitmap), topDown_(topDown) {}

    void put(Pixel colour) {
        if (x_ < bitmap_.width() && y_ < bitmap_.height()) bitmap_.writableRow(row())[x_] = colour;
        ++x_;
    }
    void endLine() {
        x_ = 0;
        ++y_;
    }
    void move(int32_t right, int32_t up) {
        x_ += right;
        y_ += up;
    }
    bool isFull() const { return y_ >= bitmap_.height(); }

  private:
    int32_t row() const { return static_cast<int32_t>(topDown_ ? y_ : bitmap_.height() - 1 - y_); }

    Bitmap& bitmap_;
    bool topDown_;
    int64_t x_ = 0;
    int64_t y_ = 0;
};

Pixel readColour(ByteReader& in) {
    const Bytes b = in.take(3);
    return rgbPixel(b[2], b[1], b[0]);
}

void readRuns(ByteReader& in, const Header& header, Bitmap& bitmap) {
    for (int32_t y = 0; y < bitmap.height(); ++y)
        std::fill_n(bitmap.writableRow(y), bitmap.width(),
                    header.compression == runs24 ? Pixel{} : header.palette[0]);
    RunPainter painter(bitmap, header.topDown);
    const auto colourOf = [&](uint8_t byte, uint32_t place) {
        if (header.compression == runs8) return header.palette[byte];
        return header.palette[place % 2 == 0 ? byte >> 4 : byte & 15];
    };
    while (!painter.isFull()) {
        const uint32_t count = in.u8();
        if (count > 0) {
            const Pixel colour = header.compression == runs24 ? readColour(in) : Pixel{};
            const uint8_t byte = header.compression == runs24 ? 0 : in.u8();
            for (uint32_t i = 0; i < count; ++i)
                painter.put(header.compression == runs24 ? colour : colourOf(byte, i));
            continue;
        }
        const uint32_t order = in.u8();
        if (order == 0) {
            painter.endLine();
        } else if (order == 1) {
            return;
        } else if (order == 2) {
            const int32_t right = in.u8();
            painter.move(right, in.u8());
        } else {
            const size_t start = in.position();
            uint8_t byte = 0;
            for (uint32_t i = 0; i < order; ++i) {
                if (header.compression == runs24) {
                    painter.put(readColour(in));
                    continue;
                }
                if (header.compression == runs8 || i % 2 == 0) byte = in.u8();
                painter.put(colourOf(byte, i));
            }
            if ((in.position() - start) % 2 != 0) in.skip(1);
        }
    }
}

bool isReadableDepth(const Header& header) {
    switch (header.compression) {
        case plain:
            return header.bits == 1 || header.bits == 2 || header.bits == 4 || header.bits == 8 ||
                   header.bits == 16 || header.bits == 24 || header.bits == 32;
        case runs8:
            return header.bits == 8;
        case runs4:
            return header.bits == 4;
        case runs24:
            return header.bits == 24;
        case masked:
        case maskedWithAlpha:
            return header.bits == 16 || header.bits == 32;
        default:
            return false;
    }
}

}  // namespace

Decoded decodeBmp(Bytes file, bool fileHeader) {
    const Header header = readHeader(file, fileHeader);
    ByteReader in(file);
    in.seek(header.pixels);
    if (header.compression == jpeg) return decodeEmbedded(in.rest(), FIF_JPEG, JPEG_ACCURATE);
    if (header.compression == png) return decodeEmbedded(in.rest(), FIF_PNG, 0);
    if (!isReadableDepth(header)) refuse("a bitmap of this depth and coding cannot be read");
    if (header.width < 1) refuse("the picture's size makes no sense");

    const bool isPlain = header.compression == plain || header.compression == masked ||
                         header.compression == maskedWithAlpha;
    Decoded decoded{
        bitmapFor(static_cast<uint64_t>(header.width), static_cast<uint64_t>(header.height),
                  in.remaining(), isPlain ? 8 : 4096),
        static_cast<int16_t>(header.bits)};
    if (!isPlain) {
        readRuns(in, header, decoded.bitmap);
        return decoded;
    }
    const uint64_t bitsOfRow = static_cast<uint64_t>(header.width) * header.bits;
    const uint64_t padded = (bitsOfRow + 31) / 32 * 4;
    for (int64_t i = 0; i < header.height; ++i) {
        const int64_t y = header.topDown ? i : header.height - 1 - i;
        readPlainRow(in.take((bitsOfRow + 7) / 8), header,
                     decoded.bitmap.writableRow(static_cast<int32_t>(y)));
        // The padding of the last row is often left away.
        if (i + 1 < header.height) in.skip(padded - (bitsOfRow + 7) / 8);
    }
    return decoded;
}

std::optional<Decoded> takeOverBmp(const PictureSource& source) {
    const Bytes file = source.file;
    if (!startsWith(file, "BM")) return std::nullopt;
    ByteReader in(file);
    in.skip(14);
    const uint32_t size = in.u32le();
    if (size == 40) {
        const Header header = readHeader(file, true);
        // The file library takes memory for any claim. Whole numbers would wrap over the largest.
        const double claim = static_cast<double>(std::abs(header.width)) *
                             static_cast<double>(header.height) * header.bits / 8;
        if (claim / 2 > static_cast<double>(file.size() + 65536))
            refuse("the file is too short for its picture");
        if (header.compression == plain) return std::nullopt;
    }
    return decodeBmp(file, true);
}

std::optional<PromisedSize> promiseOfBmp(Bytes file) {
    const Header header = readHeader(file, startsWith(file, "BM"));
    if (header.compression == jpeg || header.compression == png) {
        ByteReader in(file);
        in.seek(header.pixels);
        return header.compression == jpeg ? promiseOfJpeg(in.rest()) : promiseOfPng(in.rest());
    }
    return PromisedSize{static_cast<uint64_t>(std::abs(header.width)),
                        static_cast<uint64_t>(header.height)};
}

}  // namespace tessarine
