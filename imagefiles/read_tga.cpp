#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

struct Header {
    uint32_t kind = 0;  ///< 1 palette, 2 colour, 3 grey
    bool coded = false;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bits = 0;
    bool fromRight = false;
    bool fromTop = false;
    uint32_t firstColour = 0;
    std::vector<Pixel> palette;
};

Pixel colourOf(Bytes bytes, uint32_t bits) {
    if (bits >= 24) return rgbPixel(bytes[2], bytes[1], bytes[0]);
    const uint32_t value = bytes[0] | bytes[1] << 8;
    return rgbPixel(spread(value >> 10 & 31, 5), spread(value >> 5 & 31, 5), spread(value & 31, 5));
}

void readPalette(ByteReader& in, Header& header, uint32_t count, uint32_t bits) {
    if (bits != 15 && bits != 16 && bits != 24 && bits != 32)
        refuse("a palette of this depth cannot be read");
    for (uint32_t i = 0; i < count; ++i)
        header.palette.push_back(colourOf(in.take((bits + 7) / 8), bits));
}

Header readHeader(ByteReader& in) {
    Header header;
    const uint32_t idLength = in.u8();
    const bool hasPalette = in.u8() == 1;
    const uint32_t kind = in.u8();
    header.kind = kind & 7;
    header.coded = kind & 8;
    header.firstColour = in.u16le();
    const uint32_t colours = in.u16le();
    const uint32_t colourBits = in.u8();
    in.skip(4);
    header.width = in.u16le();
    header.height = in.u16le();
    header.bits = in.u8();
    const uint8_t descriptor = in.u8();
    header.fromRight = descriptor & 0x10;
    header.fromTop = descriptor & 0x20;
    in.skip(idLength);
    if (hasPalette) readPalette(in, header, colours, colourBits);
    return header;
}

bool isReadable(const Header& header) {
    switch (header.kind) {
        case 1:
            return header.bits == 8 && !header.palette.empty();
        case 2:
            return header.bits == 15 || header.bits == 16 || header.bits == 24 || header.bits == 32;
        case 3:
            return header.bits == 8 || header.bits == 16;
        default:
            return false;
    }
}

/// Hands out the pixels in the order of the file; runs may reach over the end of a line.
class PixelReader {
  public:
    PixelReader(ByteReader in, const Header& header)
        : in_(in), header_(header), bytes_((header.bits + 7) / 8) {}

    Pixel next() {
        if (!header_.coded) return read();
        if (count_ == 0) {
            const uint8_t code = in_.u8();
            count_ = (code & 0x7F) + 1;
            isRun_ = code & 0x80;
            if (isRun_) pixel_ = read();
        }
        --count_;
        return isRun_ ? pixel_ : read();
    }

  private:
    Pixel read() {
        const Bytes bytes = in_.take(bytes_);
        if (header_.kind == 3) return greyPixel(bytes[0]);
        if (header_.kind == 2) return colourOf(bytes, header_.bits);
        const uint32_t index = bytes[0] - header_.firstColour;
        return index < header_.palette.size() ? header_.palette[index] : Pixel{};
    }

    ByteReader in_;
    const Header& header_;
    size_t bytes_;
    uint32_t count_ = 0;
    bool isRun_ = false;
    Pixel pixel_;
};

}  // namespace

/// The file library mirrors pictures that begin at the right, and knows no grey with alpha.
std::optional<Decoded> takeOverTga(const PictureSource& source) {
    const Bytes file = source.file;
    if (file.size() < 18) refuse("the file ends early");
    ByteReader in(file);
    const uint32_t kind = file[2] & 7;
    // One byte stands for 128 pixels at most; the file library takes memory for any claim.
    const uint64_t claim = uint64_t{file[12] + 256u * file[13]} * (file[14] + 256u * file[15]);
    if (claim / 128 > file.size()) refuse("the file is too short for its picture");
    const bool startsAtRight = file[17] & 0x10;
    const bool hasGreyAlpha = kind == 3 && file[16] == 16;
    if (!startsAtRight && !hasGreyAlpha) return std::nullopt;
    const Header header = readHeader(in);
    if (!isReadable(header)) refuse("this is no Targa picture");

    // Colours are asked for as 24 bits; what has 8 keeps them.
    Decoded decoded{bitmapFor(header.width, header.height, in.remaining(), 128),
                    static_cast<int16_t>(header.kind == 2 ? 24 : header.bits)};
    PixelReader pixels(in, header);
    const int32_t width = decoded.bitmap.width();
    const int32_t height = decoded.bitmap.height();
    for (int32_t i = 0; i < height; ++i) {
        Pixel* row = decoded.bitmap.writableRow(header.fromTop ? i : height - 1 - i);
        for (int32_t j = 0; j < width; ++j)
            row[header.fromRight ? width - 1 - j : j] = pixels.next();
    }
    return decoded;
}

}  // namespace tessarine
