#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

struct Header {
    bool coded = false;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t channels = 0;
};

/// One row of one channel; a run or a stretch of samples each, a count of 0 at the end.
void readCodedRow(ByteReader in, std::vector<uint16_t>& row) {
    for (size_t x = 0; x < row.size();) {
        const uint16_t code = in.u16be();
        const size_t count = code & 0x7F;
        if (count == 0 || count > row.size() - x) refuse("a run leaves its line");
        const bool stretch = code & 0x80;
        uint16_t sample = stretch ? 0 : in.u16be();
        for (size_t i = 0; i < count; ++i) {
            if (stretch) sample = in.u16be();
            row[x++] = sample;
        }
    }
}

void setChannel(Pixel* row, const std::vector<uint16_t>& samples, uint32_t channel, bool isGrey) {
    for (size_t x = 0; x < samples.size(); ++x) {
        const uint8_t level = to8(samples[x]);
        if (isGrey)
            row[x] = greyPixel(level);
        else
            (channel == 0 ? row[x].red : channel == 1 ? row[x].green : row[x].blue) = level;
    }
}

}  // namespace

/// DevIL gives wrong levels for 16 bits a channel; all else is its own to read.
std::optional<Decoded> takeOverSgi(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    if (in.u16be() != 474) refuse("this is no SGI picture");
    Header header;
    header.coded = in.u8() == 1;
    if (in.u8() != 2) return std::nullopt;
    const uint32_t dimensions = in.u16be();
    header.width = in.u16be();
    header.height = in.u16be();
    header.channels = in.u16be();
    if (dimensions < 3) header.channels = 1;
    if (dimensions < 2) header.height = 1;
    if (header.channels < 1 || header.channels > 4) refuse("a picture has 1 to 4 channels");
    in.seek(512);

    Decoded decoded{bitmapFor(header.width, header.height, in.remaining(), 64),
                    static_cast<int16_t>(16 * header.channels)};
    const uint32_t rows = header.height * header.channels;
    std::vector<uint32_t> starts;
    if (header.coded) {
        const Bytes table = in.take(uint64_t{rows} * 4);
        ByteReader entries(table);
        while (entries.remaining() > 0)
            starts.push_back(entries.u32be());
    } else if (in.remaining() < uint64_t{rows} * header.width * 2) {
        refuse("the file is too short for its picture");
    }
    const bool isGrey = header.channels < 3;
    std::vector<uint16_t> samples(header.width);
    for (uint32_t c = 0; c < (isGrey ? 1 : 3); ++c) {
        for (uint32_t y = 0; y < header.height; ++y) {
            const uint32_t index = c * header.height + y;
            ByteReader data(file);
            if (header.coded) {
                data.seek(starts[index]);
                readCodedRow(data, samples);
            } else {
                data.seek(512 + uint64_t{index} * header.width * 2);
                for (uint16_t& sample : samples)
                    sample = data.u16be();
            }
            setChannel(decoded.bitmap.writableRow(static_cast<int32_t>(header.height - 1 - y)),
                       samples, c, isGrey);
        }
    }
    return decoded;
}

}  // namespace tessarine
