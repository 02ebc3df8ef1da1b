#include <algorithm>
#include <array>
#include <vector>

#include "imagefiles/decoders.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

struct Header {
    uint8_t version = 0;
    bool coded = false;
    uint32_t bits = 0;
    uint32_t planes = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bytesPerLine = 0;
    std::array<Pixel, 256> palette{};
    std::array<uint8_t, 48> colours{};

    uint32_t depth() const { return bits * planes; }
};

bool isPcx(Bytes file) {
    return file.size() >= 128 && file[0] == 10 && file[1] <= 5 && file[1] != 1 && file[2] <= 1;
}

Header readHeader(Bytes file) {
    if (!isPcx(file)) refuse("this is no PCX picture");
    ByteReader in(file);
    Header header;
    in.skip(1);
    header.version = in.u8();
    header.coded = in.u8() == 1;
    header.bits = in.u8();
    const uint16_t left = in.u16le();
    const uint16_t top = in.u16le();
    const uint16_t right = in.u16le();
    const uint16_t bottom = in.u16le();
    if (right < left || bottom < top) refuse("the picture's size makes no sense");
    header.width = uint32_t{right} - left + 1;
    header.height = uint32_t{bottom} - top + 1;
    in.skip(4);
    const Bytes colours = in.take(48);
    std::copy(colours.begin(), colours.end(), header.colours.begin());
    in.skip(1);
    header.planes = in.u8();
    header.bytesPerLine = in.u16le();
    const bool known =
        (header.planes == 1 && (header.bits == 1 || header.bits == 2 || header.bits == 4 ||
                                header.bits == 8 || header.bits == 24)) ||
        (header.bits == 1 && header.planes <= 4 && header.planes > 0) ||
        (header.bits == 8 && (header.planes == 3 || header.planes == 4)) ||
        (header.bits == 2 && header.planes == 2);
    if (!known) refuse("a PCX picture of this depth cannot be read");
    if (uint64_t{header.bytesPerLine} * 8 < uint64_t{header.width} * header.bits)
        refuse("the lines of the picture are too short");
    return header;
}

/// The sixteen colours that adapters show where a picture brings none.
std::array<Pixel, 16> adapterColours() {
    std::array<Pixel, 16> colours;
    for (uint32_t i = 0; i < 16; ++i) {
        const uint8_t low = i & 8 ? 85 : 0;
        const auto level = [&](uint32_t bit) {
            return static_cast<uint8_t>((i & bit ? 170 : 0) + low);
        };
        colours[i] = rgbPixel(level(4), level(2), level(1));
    }
    colours[6] = rgbPixel(170, 85, 0);
    return colours;
}

/// The four colours of the CGA adapter as the header's first bytes choose them.
void setCgaColours(Header& header) {
    const std::array<Pixel, 16> adapter = adapterColours();
    header.palette[0] = adapter[header.colours[0] >> 4];
    const uint8_t choice = header.colours[3];
    const uint32_t bright = choice & 0x20 ? 8 : 0;
    const bool second = choice & 0x40;
    header.palette[1] = adapter[(second ? 3 : 2) + bright];
    header.palette[2] = adapter[(second ? 5 : 4) + bright];
    header.palette[3] = adapter[(second ? 7 : 6) + bright];
}

void setPalette(Header& header, Bytes file) {
    const uint32_t depth = header.depth();
    if (depth > 8) return;
    if (depth == 8) {
        if (file.size() >= 128 + 769 && file[file.size() - 769] == 12) {
            const Bytes colours = file.last(768);
            for (size_t i = 0; i < 256; ++i)
                header.palette[i] =
                    rgbPixel(colours[3 * i], colours[3 * i + 1], colours[3 * i + 2]);
        } else {
            for (uint32_t i = 0; i < 256; ++i)
                header.palette[i] = greyPixel(static_cast<uint8_t>(i));
        }
        return;
    }
    for (size_t i = 0; i < 16; ++i)
        header.palette[i] =
            rgbPixel(header.colours[3 * i], header.colours[3 * i + 1], header.colours[3 * i + 2]);
    if (depth == 1) {
        // The two entries are filled in only by some programs; all mean black and white.
        header.palette[0] = greyPixel(0);
        header.palette[1] = greyPixel(255);
        return;
    }
    const bool noColours = std::all_of(header.colours.begin(), header.colours.begin() + 16,
                                       [&](uint8_t c) { return c == header.colours[0]; });
    // Programs of that time left the third colour and all later ones empty.
    const bool isCga = std::all_of(header.colours.begin() + 6, header.colours.end(),
                                   [](uint8_t c) { return c == 0; });
    if (header.bits == 2 && header.planes == 1 && (header.version < 5 || noColours || isCga)) {
        setCgaColours(header);
    } else if (header.version == 3 || noColours) {
        const std::array<Pixel, 16> adapter = adapterColours();
        std::copy(adapter.begin(), adapter.end(), header.palette.begin());
    }
}

/// Fills one line of all planes; runs may reach over the end of a line.
class LineReader {
  public:
    LineReader(Bytes data, bool coded) : in_(data), coded_(coded) {}

    void read(std::vector<uint8_t>& line) {
        for (uint8_t& byte : line)
            byte = next();
    }

  private:
    uint8_t next() {
        while (count_ == 0) {
            value_ = in_.u8();
            count_ = 1;
            if (coded_ && value_ >= 0xC0) {
                count_ = value_ & 0x3F;
                value_ = in_.u8();
            }
        }
        --count_;
        return value_;
    }

    ByteReader in_;
    bool coded_;
    uint32_t count_ = 0;
    uint8_t value_ = 0;
};

void paintLine(const Header& header, const std::vector<uint8_t>& line, Pixel* row) {
    const auto plane = [&](uint32_t p) { return line.data() + size_t{p} * header.bytesPerLine; };
    for (uint32_t x = 0; x < header.width; ++x) {
        if (header.depth() >= 24) {
            row[x] = header.bits == 24 ? rgbPixel(line[3 * x], line[3 * x + 1], line[3 * x + 2])
                                       : rgbPixel(plane(0)[x], plane(1)[x], plane(2)[x]);
            continue;
        }
        const uint32_t bit = x * header.bits;
        const uint32_t shift = 8 - header.bits - bit % 8;
        uint32_t index = 0;
        for (uint32_t p = 0; p < header.planes; ++p)
            index |= (plane(p)[bit / 8] >> shift & ((1u << header.bits) - 1)) << p * header.bits;
        row[x] = header.palette[index];
    }
}

Decoded decodePcx(Bytes file) {
    Header header = readHeader(file);
    setPalette(header, file);
    Decoded decoded{bitmapFor(header.width, header.height, file.size() - 128, 256),
                    static_cast<int16_t>(header.depth())};
    std::vector<uint8_t> line(size_t{header.bytesPerLine} * header.planes);
    LineReader in(file.subspan(128), header.coded);
    for (uint32_t y = 0; y < header.height; ++y) {
        in.read(line);
        paintLine(header, line, decoded.bitmap.writableRow(static_cast<int32_t>(y)));
    }
    return decoded;
}

/// The first page of a list of PCX pictures.
Bytes firstPage(Bytes file) {
    ByteReader in(file);
    if (in.u32le() != 0x3ADE68B1) refuse("this is no DCX file");
    const uint32_t first = in.u32le();
    const uint32_t second = in.u32le();
    if (first > file.size()) refuse("the file ends early");
    const bool closed = second > first && second <= file.size();
    return file.subspan(first, closed ? second - first : file.size() - first);
}

}  // namespace

/// The file library knows three of the layouts, and wants an exact length of lines.
std::optional<Decoded> takeOverPcx(const PictureSource& source) {
    const Bytes file = source.file;
    if (!isPcx(file)) return std::nullopt;
    return decodePcx(file);
}

/// A list of PCX pictures, of which the first is shown.
std::optional<Decoded> takeOverDcx(const PictureSource& source) {
    return decodePcx(firstPage(source.file));
}

std::optional<PromisedSize> promiseOfPcx(Bytes file) {
    if (!isPcx(file)) return std::nullopt;
    const Header header = readHeader(file);
    return PromisedSize{header.width, header.height};
}

std::optional<PromisedSize> promiseOfDcx(Bytes file) { return promiseOfPcx(firstPage(file)); }

}  // namespace tessarine
