#include <charconv>
#include <string_view>
#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

constexpr int32_t swatchSide = 16;
constexpr int32_t swatchesPerRow = 16;

/// A colour table has no pixels of its own; it is shown as rows of sixteen square swatches, as
/// people see it in the programs that write it. Places without a colour are white.
Decoded showSwatches(const std::vector<Pixel>& colours) {
    if (colours.empty() || colours.size() > 65536) refuse("the colour table makes no sense");
    const auto rows = static_cast<int32_t>((colours.size() + swatchesPerRow - 1) / swatchesPerRow);
    Decoded decoded{Bitmap(swatchesPerRow * swatchSide, rows * swatchSide), 24};
    for (int32_t y = 0; y < decoded.bitmap.height(); ++y) {
        Pixel* row = decoded.bitmap.writableRow(y);
        for (int32_t x = 0; x < decoded.bitmap.width(); ++x) {
            const auto place =
                static_cast<size_t>(y / swatchSide * swatchesPerRow + x / swatchSide);
            row[x] = place < colours.size() ? colours[place] : greyPixel(255);
        }
    }
    return decoded;
}

/// Text with one colour a line, after a line each for the name, the version and the count.
std::vector<Pixel> readJascColours(Bytes file) {
    std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    const auto nextWord = [&] {
        const size_t start = text.find_first_not_of(" \t\r\n");
        if (start == std::string_view::npos) refuse("the file ends early");
        text.remove_prefix(start);
        const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
        text.remove_prefix(word.size());
        return word;
    };
    const auto nextNumber = [&](uint32_t top) {
        const std::string_view word = nextWord();
        uint32_t value = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (error != std::errc() || end != word.data() + word.size() || value > top)
            refuse("a colour table has numbers only");
        return value;
    };
    nextWord();
    nextWord();
    const uint32_t count = nextNumber(65536);
    std::vector<Pixel> colours;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t red = nextNumber(255);
        const uint32_t green = nextNumber(255);
        const uint32_t blue = nextNumber(255);
        colours.push_back(rgbPixel(static_cast<uint8_t>(red), static_cast<uint8_t>(green),
                                   static_cast<uint8_t>(blue)));
    }
    return colours;
}

std::vector<Pixel> readRiffColours(Bytes file) {
    ByteReader in(file);
    in.skip(8);
    if (!startsWith(in.take(4), "PAL ")) refuse("this is no colour table");
    while (!startsWith(in.take(4), "data")) {
        const uint64_t size = in.u32le();
        in.skip(size + size % 2);
    }
    in.skip(4 + 2);
    const uint32_t count = in.u16le();
    std::vector<Pixel> colours;
    for (uint32_t i = 0; i < count; ++i) {
        const Bytes colour = in.take(4);
        colours.push_back(rgbPixel(colour[0], colour[1], colour[2]));
    }
    return colours;
}

}  // namespace

/// 256 colours, behind which their number may stand.
std::optional<Decoded> takeOverAct(const PictureSource& source) {
    const Bytes file = source.file;
    if (file.size() != 768 && file.size() != 772) refuse("this is no colour table");
    size_t count = 256;
    if (file.size() == 772) {
        const size_t told = size_t{file[768]} << 8 | file[769];
        if (told >= 1 && told <= 256) count = told;
    }
    std::vector<Pixel> colours;
    for (size_t i = 0; i < count; ++i)
        colours.push_back(rgbPixel(file[3 * i], file[3 * i + 1], file[3 * i + 2]));
    return showSwatches(colours);
}

std::optional<Decoded> takeOverPal(const PictureSource& source) {
    const Bytes file = source.file;
    if (startsWith(file, "JASC-PAL")) return showSwatches(readJascColours(file));
    if (startsWith(file, "RIFF")) return showSwatches(readRiffColours(file));
    refuse("this is no colour table");
}

}  // namespace tessarine
