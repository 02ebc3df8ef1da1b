#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

using Palette = std::vector<Pixel>;

Palette readPalette(ByteReader& in, uint8_t flags) {
    Palette palette;
    if (!(flags & 0x80)) return palette;
    const uint32_t count = 2u << (flags & 7);
    for (uint32_t i = 0; i < count; ++i) {
        const Bytes c = in.take(3);
        palette.push_back(rgbPixel(c[0], c[1], c[2]));
    }
    return palette;
}

/// The blocks of data that follow, up to an empty one, as one. The end of the file ends them too.
std::vector<uint8_t> readBlocks(ByteReader& in) {
    std::vector<uint8_t> data;
    while (in.remaining() > 0) {
        const size_t size = in.u8();
        if (size == 0) break;
        const Bytes block = in.take(std::min(size, in.remaining()));
        data.insert(data.end(), block.begin(), block.end());
    }
    return data;
}

/// Undoes the coding of a frame: codes of rising width, low bits first, each for a string of
/// pixels.
class CodeReader {
  public:
    CodeReader(Bytes data, uint32_t firstBits)
        : data_(data), firstBits_(firstBits), clear_(1u << firstBits) {
        if (firstBits < 1 || firstBits > 11) refuse("the coding of the frame makes no sense");
        restart();
    }

    /// \throws StatementFailed where the data ends before there are `count` pixels
    std::vector<uint8_t> read(size_t count) {
        std::vector<uint8_t> pixels;
        pixels.reserve(count);
        int32_t last = none;
        while (pixels.size() < count) {
            const uint32_t code = nextCode();
            if (code == clear_) {
                restart();
                last = none;
                continue;
            }
            if (code == clear_ + 1) refuse("the frame ends early");
            const bool isKnown = code < clear_ || (code > clear_ + 1 && code < next_);
            if (!isKnown && (last == none || code != next_)) refuse("the frame is damaged");
            const uint8_t first = firstOf(isKnown ? code : static_cast<uint32_t>(last));
            if (last != none && next_ < table_.size()) {
                table_[next_] = {static_cast<uint16_t>(last), first};
                if (++next_ == 1u << bits_ && bits_ < 12) ++bits_;
            }
            if (!isKnown && code >= next_) refuse("the frame is damaged");
            append(code, pixels);
            last = static_cast<int32_t>(code);
        }
        pixels.resize(count);
        return pixels;
    }

  private:
    static constexpr int32_t none = -1;

    struct Entry {
        uint16_t before = 0;
        uint8_t pixel = 0;
    };

    void restart() {
        bits_ = firstBits_ + 1;
        next_ = clear_ + 2;
    }

    uint32_t nextCode() {
        while (held_ < bits_) {
            if (place_ == data_.size()) refuse("the frame ends early");
            buffer_ |= uint32_t{data_[place_++]} << held_;
            held_ += 8;
        }
        const uint32_t code = buffer_ & ((1u << bits_) - 1);
        buffer_ >>= bits_;
        held_ -= bits_;
        return code;
    }

    // An entry stands only for codes below its own, so that these walks end.
    uint8_t firstOf(uint32_t code) const {
        while (code >= clear_)
            code = table_[code].before;
        return static_cast<uint8_t>(code);
    }

    void append(uint32_t code, std::vector<uint8_t>& pixels) {
        string_.clear();
        for (; code >= clear_; code = table_[code].before)
            string_.push_back(table_[code].pixel);
        string_.push_back(static_cast<uint8_t>(code));
        pixels.insert(pixels.end(), string_.rbegin(), string_.rend());
    }

    Bytes data_;
    uint32_t firstBits_;
    uint32_t clear_;
    uint32_t bits_ = 0;
    uint32_t next_ = 0;
    std::array<Entry, 4096> table_{};
    std::vector<uint8_t> string_;
    size_t place_ = 0;
    uint32_t buffer_ = 0;
    uint32_t held_ = 0;
};

/// The rows of a frame in the order of the file.
std::vector<uint32_t> rowOrder(uint32_t height, bool interlaced) {
    constexpr uint32_t passes[][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    std::vector<uint32_t> rows;
    for (const auto& [first, step] : passes)
        for (uint32_t y = interlaced ? first : 0; y < height; y += interlaced ? step : 1)
            if (rows.size() < height) rows.push_back(y);
    return rows;
}

struct Screen {
    uint32_t width = 0;
    uint32_t height = 0;
    Palette palette;
    std::optional<uint8_t> transparent;
};

void readExtension(ByteReader& in, Screen& screen) {
    const uint8_t kind = in.u8();
    const std::vector<uint8_t> data = readBlocks(in);
    constexpr uint8_t graphicControl = 0xF9;
    if (kind != graphicControl || data.size() < 4) return;
    screen.transparent.reset();
    if (data[0] & 1) screen.transparent = data[3];
}

Decoded readFrame(ByteReader& in, const Screen& screen) {
    const uint32_t left = in.u16le();
    const uint32_t top = in.u16le();
    const uint32_t width = in.u16le();
    const uint32_t height = in.u16le();
    const uint8_t flags = in.u8();
    Palette palette = readPalette(in, flags);
    if (palette.empty()) palette = screen.palette;
    int16_t depth = 8;
    if (palette.empty()) {
        // Without colours viewers show a ramp from black to white.
        for (uint32_t i = 0; i < 256; ++i)
            palette.push_back(greyPixel(static_cast<uint8_t>(i)));
    }
    while (palette.size() <= size_t{1} << (depth - 1) && depth > 1)
        --depth;
    palette.resize(256);

    const uint32_t firstBits = in.u8();
    const std::vector<uint8_t> data = readBlocks(in);
    // One code of at least 3 bits stands for at most 4096 pixels.
    if (uint64_t{width} * height / (4096 * 3) > data.size())
        refuse("the file is too short for its picture");
    if (width < 1 || height < 1) refuse("the picture's size makes no sense");
    const std::vector<uint8_t> numbers = CodeReader(data, firstBits).read(size_t{width} * height);

    // A screen without a size is that of its frame. It may be far larger than its frame.
    constexpr uint64_t anySize = uint64_t{1} << 32;
    Decoded decoded{bitmapFor(screen.width > 0 ? screen.width : left + width,
                              screen.height > 0 ? screen.height : top + height, 1, anySize),
                    depth};
    Bitmap& bitmap = decoded.bitmap;
    const auto screenWidth = static_cast<uint32_t>(bitmap.width());
    const auto screenHeight = static_cast<uint32_t>(bitmap.height());
    for (uint32_t y = 0; y < screenHeight; ++y)
        std::fill_n(bitmap.writableRow(static_cast<int32_t>(y)), screenWidth, greyPixel(255));
    const uint8_t* source = numbers.data();
    for (const uint32_t row : rowOrder(height, flags & 0x40)) {
        if (top + row < screenHeight) {
            Pixel* target = bitmap.writableRow(static_cast<int32_t>(top + row));
            for (uint32_t x = 0; x < width && left + x < screenWidth; ++x)
                if (source[x] != screen.transparent) target[left + x] = palette[source[x]];
        }
        source += width;
    }
    return decoded;
}

}  // namespace

Decoded decodeGif(Bytes file) {
    ByteReader in(file);
    if (!startsWith(file, "GIF87a") && !startsWith(file, "GIF89a")) refuse("this is no GIF");
    in.skip(6);
    Screen screen;
    screen.width = in.u16le();
    screen.height = in.u16le();
    const uint8_t flags = in.u8();
    in.skip(2);
    screen.palette = readPalette(in, flags);
    for (;;) {
        const uint8_t kind = in.u8();
        if (kind == '!')
            readExtension(in, screen);
        else if (kind == ',')
            return readFrame(in, screen);
        else
            refuse("the file holds no picture");
    }
}

}  // namespace tessarine
