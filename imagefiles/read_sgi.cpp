#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

struct Header {
    bool coded = false;
    uint32_t sampleBytes = 1;  ///< 1 or 2
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t channels = 0;
};

uint8_t readLevel(ByteReader& in, const Header& header) {
    return header.sampleBytes == 1 ? in.u8() : to8(in.u16be());
}

/// One row of one channel; a run or a stretch of samples each, a count of 0 at the end.
void readCodedRow(ByteReader in, const Header& header, std::vector<uint8_t>& row) {
    for (size_t x = 0; x < row.size();) {
        const uint32_t code = header.sampleBytes == 1 ? in.u8() : in.u16be();
        const size_t count = code & 0x7F;
        if (count == 0 || count > row.size() - x) refuse("a run leaves its line");
        const bool stretch = code & 0x80;
        uint8_t level = stretch ? 0 : readLevel(in, header);
        for (size_t i = 0; i < count; ++i) {
            if (stretch) level = readLevel(in, header);
            row[x++] = level;
        }
    }
}

void setChannel(Pixel* row, const std::vector<uint8_t>& levels, uint32_t channel, bool isGrey) {
    for (size_t x = 0; x < levels.size(); ++x) {
        const uint8_t level = levels[x];
        if (isGrey)
            row[x] = greyPixel(level);
        else
            (channel == 0 ? row[x].red : channel == 1 ? row[x].green : row[x].blue) = level;
    }
}

/// Pictures of 8 bits have the depths that DevIL makes of them, 24 for grey ones too.
int16_t depthOf(const Header& header) {
    if (header.sampleBytes == 1) return header.channels == 4 ? 32 : 24;
    return static_cast<int16_t>(16 * header.channels);
}

}  // namespace

/// DevIL gives wrong levels for 16 bits a channel, and shows whatever memory holds where a file is
/// damaged.
std::optional<Decoded> takeOverSgi(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    if (in.u16be() != 474) refuse("this is no SGI picture");
    Header header;
    header.coded = in.u8() == 1;
    header.sampleBytes = in.u8();
    if (header.sampleBytes != 1 && header.sampleBytes != 2) refuse("a sample has 1 or 2 bytes");
    const uint32_t dimensions = in.u16be();
    header.width = in.u16be();
    header.height = in.u16be();
    header.channels = in.u16be();
    if (dimensions < 3) header.channels = 1;
    if (dimensions < 2) header.height = 1;
    if (header.channels < 1 || header.channels > 4) refuse("a picture has 1 to 4 channels");
    in.seek(512);

    Decoded decoded{bitmapFor(header.width, header.height, in.remaining(), 127), depthOf(header)};
    const uint32_t rows = header.height * header.channels;
    std::vector<uint32_t> starts;
    if (header.coded) {
        const Bytes table = in.take(uint64_t{rows} * 4);
        ByteReader entries(table);
        while (entries.remaining() > 0)
            starts.push_back(entries.u32be());
    } else if (in.remaining() < uint64_t{rows} * header.width * header.sampleBytes) {
        refuse("the file is too short for its picture");
    }
    const bool isGrey = header.channels < 3;
    std::vector<uint8_t> levels(header.width);
    for (uint32_t c = 0; c < (isGrey ? 1 : 3); ++c) {
        for (uint32_t y = 0; y < header.height; ++y) {
            const uint32_t index = c * header.height + y;
            ByteReader data(file);
            if (header.coded) {
                data.seek(starts[index]);
                readCodedRow(data, header, levels);
            } else {
                data.seek(512 + uint64_t{index} * header.width * header.sampleBytes);
                for (uint8_t& level : levels)
                    level = readLevel(data, header);
            }
            setChannel(decoded.bitmap.writableRow(static_cast<int32_t>(header.height - 1 - y)),
                       levels, c, isGrey);
        }
    }
    return decoded;
}

}  // namespace tessarine
