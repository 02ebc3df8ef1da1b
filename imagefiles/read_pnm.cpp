#include "imagefiles/decoders.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

/// The numbers of a text header, between which blanks and comments may stand.
class TextReader {
  public:
    explicit TextReader(Bytes text) : text_(text) {}

    /// The next byte that is neither a blank nor part of a comment.
    uint8_t nextSign() {
        for (;;) {
            const uint8_t sign = text_.u8();
            if (sign == '#')
                while (text_.u8() != '\n') {
                }
            else if (sign != ' ' && (sign < '\t' || sign > '\r'))
                return sign;
        }
    }

    uint64_t number() {
        uint8_t sign = nextSign();
        uint64_t value = 0;
        while (sign >= '0' && sign <= '9') {
            value = value * 10 + (sign - '0');
            if (value > 0xFFFFFFFF) refuse("the picture's size makes no sense");
            sign = text_.u8();
        }
        return value;
    }

    size_t remaining() const { return text_.remaining(); }

  private:
    ByteReader text_;
};

}  // namespace

/// The file library wants blanks between the digits of a plain bitmap; the format does not.
std::optional<Decoded> takeOverPnm(const PictureSource& source) {
    const Bytes file = source.file;
    if (!startsWith(file, "P1")) return std::nullopt;
    TextReader in(file.subspan(2));
    const uint64_t width = in.number();
    const uint64_t height = in.number();
    Decoded decoded{bitmapFor(width, height, in.remaining(), 1), 1};
    for (uint32_t y = 0; y < height; ++y) {
        Pixel* row = decoded.bitmap.writableRow(static_cast<int32_t>(y));
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t digit = in.nextSign();
            if (digit != '0' && digit != '1') refuse("a bitmap has no digits but 0 and 1");
            row[x] = greyPixel(digit == '0' ? 255 : 0);
        }
    }
    return decoded;
}

std::optional<PromisedSize> promiseOfPnm(Bytes file) {
    if (file.size() < 2 || file[0] != 'P' || file[1] < '1' || file[1] > '6') return std::nullopt;
    TextReader in(file.subspan(2));
    const uint64_t width = in.number();
    return PromisedSize{width, in.number()};
}

}  // namespace tessarine
