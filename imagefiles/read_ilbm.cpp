#include <algorithm>
#include <optional>

#include "imagefiles/iff.h"

namespace tessarine {

namespace {

constexpr uint32_t halfBright = 0x80;
constexpr uint32_t holdAndModify = 0x800;

struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t planes = 0;
    bool hasMaskPlane = false;
    uint32_t compression = 0;
    uint32_t mode = 0;
    std::vector<Pixel> palette;
    Bytes changes;  ///< PCHG chunk
    std::optional<Bytes> body;
};

Picture readChunks(Bytes form) {
    Picture picture;
    for (IffChunks chunks(form); chunks.next();) {
        ByteReader in(chunks.data());
        if (chunks.name() == "BMHD") {
            picture.width = in.u16be();
            picture.height = in.u16be();
            in.skip(4);
            picture.planes = in.u8();
            picture.hasMaskPlane = in.u8() == 1;
            picture.compression = in.u8();
        } else if (chunks.name() == "CMAP") {
            while (in.remaining() >= 3 && picture.palette.size() < 256) {
                const Bytes colour = in.take(3);
                picture.palette.push_back(rgbPixel(colour[0], colour[1], colour[2]));
            }
        } else if (chunks.name() == "CAMG") {
            picture.mode = in.u32be();
        } else if (chunks.name() == "PCHG") {
            picture.changes = chunks.data();
        } else if (chunks.name() == "BODY") {
            picture.body = chunks.data();
            break;
        }
    }
    if (!picture.body) refuse("the form holds no picture");
    return picture;
}

/// Fills up the palette: the dark half of half-bright pictures, and grey where none is given.
void completePalette(Picture& picture) {
    std::vector<Pixel>& palette = picture.palette;
    const uint32_t planes = std::min(picture.planes, 8u);
    const bool isHam = picture.mode & holdAndModify;
    if (palette.empty()) {
        for (uint32_t i = 0; i < 1u << planes; ++i)
            palette.push_back(greyPixel(spread(i, planes)));
    }
    const bool saysHalfBright = picture.mode & halfBright;
    if (!isHam && planes == 6 && (saysHalfBright || palette.size() == 32)) {
        palette.resize(64);
        for (size_t i = 0; i < 32; ++i) {
            const Pixel p = palette[i];
            palette[i + 32] = rgbPixel(p.red / 2, p.green / 2, p.blue / 2);
        }
    }
    palette.resize(256);
}

/// New colours from a line on, as some programs store them beside a picture of few planes.
class PaletteChanges {
  public:
    explicit PaletteChanges(Bytes chunk) : in_(chunk) {
        if (chunk.empty()) return;
        if (in_.u16be() != 0) refuse("coded palette changes cannot be read");
        flags_ = in_.u16be();
        start_ = static_cast<int16_t>(in_.u16be());
        lines_ = in_.u16be();
        in_.skip(12);
        mask_ = in_.take(uint64_t{(lines_ + 31) / 32} * 4);
    }

    void apply(int32_t line, std::vector<Pixel>& palette) {
        while (next_ <= line - start_ && next_ < static_cast<int32_t>(lines_)) {
            const auto place = static_cast<size_t>(next_);
            if (mask_[place / 8] >> (7 - place % 8) & 1) readLine(palette);
            ++next_;
        }
    }

  private:
    void readLine(std::vector<Pixel>& palette) {
        if (flags_ & 1) {
            const uint32_t low = in_.u8();
            const uint32_t high = in_.u8();
            for (uint32_t i = 0; i < low + high; ++i) {
                const uint32_t change = in_.u16be();
                palette[(change >> 12) + (i < low ? 0 : 16)] =
                    rgbPixel(spread(change >> 8 & 15, 4), spread(change >> 4 & 15, 4),
                             spread(change & 15, 4));
            }
            return;
        }
        const uint32_t count = in_.u16be();
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t place = in_.u16be();
            const Bytes c = in_.take(4);  // alpha, red, blue, green
            if (place < palette.size()) palette[place] = rgbPixel(c[1], c[3], c[2]);
        }
    }

    ByteReader in_;
    uint32_t flags_ = 0;
    int32_t start_ = 0;
    uint32_t lines_ = 0;
    Bytes mask_;
    int32_t next_ = 0;
};

/// The pixels' numbers of one line, from bit planes that follow each other.
void gatherPlanes(const std::vector<uint8_t>& line, uint32_t planes, size_t planeBytes,
                  std::vector<uint32_t>& numbers) {
    std::fill(numbers.begin(), numbers.end(), 0);
    for (uint32_t plane = 0; plane < planes; ++plane) {
        const uint8_t* bits = line.data() + plane * planeBytes;
        for (size_t x = 0; x < numbers.size(); ++x)
            numbers[x] |= static_cast<uint32_t>(bits[x / 8] >> (7 - x % 8) & 1) << plane;
    }
}

void paintHam(const std::vector<uint32_t>& numbers, uint32_t planes,
              const std::vector<Pixel>& palette, Pixel* row) {
    const uint32_t bits = planes - 2;
    Pixel held = palette[0];
    for (size_t x = 0; x < numbers.size(); ++x) {
        const uint32_t value = numbers[x] & ((1u << bits) - 1);
        switch (numbers[x] >> bits) {
            case 0:
                held = palette[value];
                break;
            case 1:
                held.blue = spread(value, bits);
                break;
            case 2:
                held.red = spread(value, bits);
                break;
            default:
                held.green = spread(value, bits);
                break;
        }
        row[x] = held;
    }
}

void paint(const Picture& picture, const std::vector<uint32_t>& numbers,
           const std::vector<Pixel>& palette, Pixel* row) {
    if (picture.planes <= 8 && picture.mode & holdAndModify && picture.planes >= 5)
        return paintHam(numbers, picture.planes, palette, row);
    for (size_t x = 0; x < numbers.size(); ++x) {
        const uint32_t n = numbers[x];
        row[x] = picture.planes <= 8 ? palette[n] : rgbPixel(n & 255, n >> 8 & 255, n >> 16 & 255);
    }
}

}  // namespace

Decoded decodeIlbm(Bytes form, bool bytePerPixel) {
    Picture picture = readChunks(form);
    const uint32_t planes = picture.planes;
    if (planes < 1 || (planes > 8 && planes != 24 && planes != 32) ||
        (bytePerPixel && planes > 8) || picture.compression > 1)
        refuse("a picture of this depth and coding cannot be read");
    completePalette(picture);

    const size_t planeBytes =
        bytePerPixel ? (picture.width + 1) / 2 * 2 : (size_t{picture.width} + 15) / 16 * 2;
    const size_t lineBytes =
        bytePerPixel ? planeBytes : planeBytes * (planes + (picture.hasMaskPlane ? 1 : 0));
    Decoded decoded{bitmapFor(picture.width, picture.height, picture.body->size(), 1024),
                    static_cast<int16_t>(planes)};
    ByteReader in(*picture.body);
    PaletteChanges changes(picture.changes);
    std::vector<Pixel> palette = picture.palette;
    std::vector<uint32_t> numbers(picture.width);
    for (int32_t y = 0; y < decoded.bitmap.height(); ++y) {
        std::vector<uint8_t> line;
        if (picture.compression == 1) {
            line = unpackByteRuns(in, lineBytes, 1);
        } else {
            const Bytes plain = in.take(lineBytes);
            line.assign(plain.begin(), plain.end());
        }
        changes.apply(y, palette);
        if (bytePerPixel)
            std::copy(line.begin(), line.begin() + picture.width, numbers.begin());
        else
            gatherPlanes(line, planes, planeBytes, numbers);
        paint(picture, numbers, palette, decoded.bitmap.writableRow(y));
    }
    return decoded;
}

PromisedSize promiseOfIlbm(Bytes form) {
    const Picture picture = readChunks(form);
    return {picture.width, picture.height};
}

}  // namespace tessarine
