#include <algorithm>
#include <array>
#include <bit>
#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

/// How the pixels of a surface are stored.
enum class Layout { plain, palette, bc1, bc2, bc3, bc4, unknown };

struct Surface {
    uint32_t width = 0;
    uint32_t height = 0;
    Layout layout = Layout::unknown;
    uint32_t bits = 0;
    std::array<uint32_t, 3> masks{};  ///< red, green, blue
};

constexpr uint32_t code(const char (&text)[5]) {
    return static_cast<uint32_t>(text[0]) | static_cast<uint32_t>(text[1]) << 8 |
           static_cast<uint32_t>(text[2]) << 16 | static_cast<uint32_t>(text[3]) << 24;
}

void setLayoutOfNumber(Surface& surface, uint32_t number) {
    switch (number) {
        case 71:
        case 72:
            surface.layout = Layout::bc1;
            break;
        case 74:
        case 75:
            surface.layout = Layout::bc2;
            break;
        case 77:
        case 78:
            surface.layout = Layout::bc3;
            break;
        case 80:
            surface.layout = Layout::bc4;
            break;
        case 28:
        case 29:
            surface.layout = Layout::plain;
            surface.bits = 32;
            surface.masks = {0xFF, 0xFF00, 0xFF0000};
            break;
        case 87:
        case 88:
        case 91:
        case 93:
            surface.layout = Layout::plain;
            surface.bits = 32;
            surface.masks = {0xFF0000, 0xFF00, 0xFF};
            break;
        default:
            break;
    }
}

Surface readHeader(ByteReader& in) {
    Surface surface;
    in.skip(12);
    surface.height = in.u32le();
    surface.width = in.u32le();
    in.skip(60);
    const uint32_t flags = in.u32le();
    const uint32_t fourCode = in.u32le();
    surface.bits = in.u32le();
    for (uint32_t& mask : surface.masks)
        mask = in.u32le();
    in.seek(128);
    constexpr uint32_t hasCode = 0x4;
    constexpr uint32_t hasPalette = 0x20;
    constexpr uint32_t isColour = 0x40;
    constexpr uint32_t isGrey = 0x20000;
    const bool wholeBytes =
        surface.bits == 8 || surface.bits == 16 || surface.bits == 24 || surface.bits == 32;
    if (flags & hasCode) {
        if (fourCode == code("DXT1")) surface.layout = Layout::bc1;
        if (fourCode == code("DXT2") || fourCode == code("DXT3")) surface.layout = Layout::bc2;
        if (fourCode == code("DXT4") || fourCode == code("DXT5")) surface.layout = Layout::bc3;
        if (fourCode == code("ATI1") || fourCode == code("BC4U")) surface.layout = Layout::bc4;
        if (fourCode == code("DX10")) {
            setLayoutOfNumber(surface, in.u32le());
            in.skip(16);
        }
    } else if (flags & hasPalette && surface.bits == 8) {
        surface.layout = Layout::palette;
    } else if (flags & isColour && wholeBytes) {
        surface.layout = Layout::plain;
    } else if (flags & isGrey && wholeBytes) {
        surface.layout = Layout::plain;
        surface.masks.fill(surface.masks[0]);
    }
    return surface;
}

uint8_t maskedSample(uint32_t value, uint32_t mask) {
    if (mask == 0) return 0;
    const int shift = std::countr_zero(mask);
    const uint64_t top = mask >> shift;
    return static_cast<uint8_t>((uint64_t{(value & mask) >> shift} * 255 + top / 2) / top);
}

void readPlain(ByteReader& in, const Surface& surface, Bitmap& bitmap) {
    const uint32_t bytes = surface.bits / 8;
    for (int32_t y = 0; y < bitmap.height(); ++y) {
        const Bytes line = in.take(uint64_t{surface.width} * bytes);
        Pixel* row = bitmap.writableRow(y);
        for (size_t x = 0; x < surface.width; ++x) {
            uint32_t value = 0;
            for (uint32_t b = 0; b < bytes; ++b)
                value |= uint32_t{line[x * bytes + b]} << 8 * b;
            row[x] = rgbPixel(maskedSample(value, surface.masks[0]),
                              maskedSample(value, surface.masks[1]),
                              maskedSample(value, surface.masks[2]));
        }
    }
}

void readIndexed(ByteReader& in, Bitmap& bitmap) {
    const Bytes colours = in.take(1024);
    for (int32_t y = 0; y < bitmap.height(); ++y) {
        const Bytes line = in.take(static_cast<uint64_t>(bitmap.width()));
        Pixel* row = bitmap.writableRow(y);
        for (size_t x = 0; x < line.size(); ++x) {
            const uint8_t* colour = colours.data() + size_t{line[x]} * 4;
            row[x] = rgbPixel(colour[0], colour[1], colour[2]);
        }
    }
}

using Block = std::array<Pixel, 16>;

/// Two colours of 5, 6 and 5 bits and what lies between them.
Block colourBlock(Bytes bytes, bool mayBeThreeColours) {
    ByteReader in(bytes);
    const uint32_t first = in.u16le();
    const uint32_t second = in.u16le();
    const auto colour = [](uint32_t v) {
        return rgbPixel(spread(v >> 11, 5), spread(v >> 5 & 63, 6), spread(v & 31, 5));
    };
    std::array<Pixel, 4> table{colour(first), colour(second), Pixel{}, Pixel{}};
    const auto between = [&](uint32_t a, uint32_t b) {
        const auto mix = [&](uint8_t x, uint8_t y) {
            return static_cast<uint8_t>((x * a + y * b) / (a + b));
        };
        return rgbPixel(mix(table[0].red, table[1].red), mix(table[0].green, table[1].green),
                        mix(table[0].blue, table[1].blue));
    };
    if (mayBeThreeColours && first <= second) {
        table[2] = between(1, 1);
    } else {
        table[2] = between(2, 1);
        table[3] = between(1, 2);
    }
    const uint32_t choices = in.u32le();
    Block block;
    for (size_t i = 0; i < 16; ++i)
        block[i] = table[choices >> 2 * i & 3];
    return block;
}

/// Two levels and what lies between them, of which 3 bits choose.
Block greyBlock(Bytes bytes) {
    const uint32_t first = bytes[0];
    const uint32_t second = bytes[1];
    std::array<uint32_t, 8> table{first, second, 0, 0, 0, 0, 0, 255};
    const uint32_t steps = first > second ? 7 : 5;
    for (uint32_t i = 1; i < steps; ++i)
        table[i + 1] = ((steps - i) * first + i * second) / steps;
    uint64_t choices = 0;
    for (size_t i = 0; i < 6; ++i)
        choices |= uint64_t{bytes[2 + i]} << 8 * i;
    Block block;
    for (size_t i = 0; i < 16; ++i)
        block[i] = greyPixel(static_cast<uint8_t>(table[choices >> 3 * i & 7]));
    return block;
}

void readBlocks(ByteReader& in, const Surface& surface, Bitmap& bitmap) {
    const bool isSmall = surface.layout == Layout::bc1 || surface.layout == Layout::bc4;
    for (int32_t top = 0; top < bitmap.height(); top += 4) {
        for (int32_t left = 0; left < bitmap.width(); left += 4) {
            // The alpha of the larger blocks comes first and is dropped.
            if (!isSmall) in.skip(8);
            const Bytes bytes = in.take(8);
            const Block block = surface.layout == Layout::bc4
                                    ? greyBlock(bytes)
                                    : colourBlock(bytes, surface.layout == Layout::bc1);
            for (int32_t y = top; y < std::min(top + 4, bitmap.height()); ++y)
                for (int32_t x = left; x < std::min(left + 4, bitmap.width()); ++x)
                    bitmap.writableRow(y)[x] = block[static_cast<size_t>((y - top) * 4 + x - left)];
        }
    }
}

int16_t depthOf(const Surface& surface) {
    switch (surface.layout) {
        case Layout::plain:
            return static_cast<int16_t>(surface.bits);
        case Layout::palette:
        case Layout::bc4:
            return 8;
        default:
            return 32;
    }
}

}  // namespace

/// DevIL darkens colours of 5 and 6 bits and knows no later header. It reads the layouts that are
/// not known here.
std::optional<Decoded> takeOverDds(const PictureSource& source) {
    const Bytes file = source.file;
    if (!startsWith(file, "DDS ")) refuse("this is no DDS picture");
    ByteReader in(file);
    const Surface surface = readHeader(in);
    if (surface.width < 1 || surface.height < 1 || surface.width > 0x4000 ||
        surface.height > 0x4000)
        refuse("the picture's size makes no sense");
    // The widest layouts that are left to DevIL take 16 bytes a pixel, the narrowest half a byte.
    Decoded decoded{bitmapFor(surface.width, surface.height, in.remaining(), 2), depthOf(surface)};
    switch (surface.layout) {
        case Layout::unknown:
            return std::nullopt;
        case Layout::plain:
            readPlain(in, surface, decoded.bitmap);
            break;
        case Layout::palette:
            readIndexed(in, decoded.bitmap);
            break;
        default:
            readBlocks(in, surface, decoded.bitmap);
            break;
    }
    return decoded;
}

}  // namespace tessarine
