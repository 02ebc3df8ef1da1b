#include <vector>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

/// A group of channels that is stored together.
struct Packet {
    uint8_t coding = 0;  ///< 0 plain, 1 runs, 2 runs and plain stretches
    uint8_t channels = 0;
    size_t bytes = 0;  ///< of one pixel
};

constexpr uint8_t red = 0x80;
constexpr uint8_t green = 0x40;
constexpr uint8_t blue = 0x20;
constexpr uint8_t alpha = 0x10;

std::vector<Packet> readPackets(ByteReader& in) {
    std::vector<Packet> packets;
    for (bool more = true; more;) {
        more = in.u8() != 0;
        if (in.u8() != 8) refuse("a picture of this depth cannot be read");
        Packet packet;
        packet.coding = in.u8() & 3;
        packet.channels = in.u8();
        for (const uint8_t channel : {red, green, blue, alpha})
            packet.bytes += (packet.channels & channel) != 0;
        if (packet.coding == 3 || packet.bytes == 0 || packets.size() == 8)
            refuse("the channels of the picture make no sense");
        packets.push_back(packet);
    }
    return packets;
}

void setChannels(Pixel& pixel, uint8_t channels, const uint8_t* source) {
    if (channels & red) pixel.red = *source++;
    if (channels & green) pixel.green = *source++;
    if (channels & blue) pixel.blue = *source++;
}

void readStretch(ByteReader& in, const Packet& packet, Pixel* row, uint32_t count) {
    const Bytes samples = in.take(count * packet.bytes);
    for (uint32_t i = 0; i < count; ++i)
        setChannels(row[i], packet.channels, samples.data() + i * packet.bytes);
}

void readRun(ByteReader& in, const Packet& packet, Pixel* row, uint32_t count) {
    const Bytes sample = in.take(packet.bytes);
    for (uint32_t i = 0; i < count; ++i)
        setChannels(row[i], packet.channels, sample.data());
}

void readLine(ByteReader& in, const Packet& packet, Pixel* row, uint32_t width) {
    if (packet.coding == 0) return readStretch(in, packet, row, width);
    for (uint32_t x = 0; x < width;) {
        const uint32_t code = in.u8();
        const bool mixed = packet.coding == 2;
        const bool stretch = mixed && code < 128;
        uint32_t count = code;
        if (mixed) count = stretch ? code + 1 : code == 128 ? in.u16be() : code - 127;
        if (count == 0 || count > width - x) refuse("a run leaves its line");
        (stretch ? readStretch : readRun)(in, packet, row + x, count);
        x += count;
    }
}

}  // namespace

/// DevIL writes past its buffer for every picture without alpha.
std::optional<Decoded> takeOverPic(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    if (in.u32be() != 0x5380F634) refuse("this is no Softimage picture");
    in.skip(4 + 80);
    if (!startsWith(in.take(4), "PICT")) refuse("this is no Softimage picture");
    const uint32_t width = in.u16be();
    const uint32_t height = in.u16be();
    in.skip(8);
    const std::vector<Packet> packets = readPackets(in);
    uint8_t all = 0;
    for (const Packet& packet : packets)
        all |= packet.channels;
    Decoded decoded{bitmapFor(width, height, in.remaining(), 65535),
                    static_cast<int16_t>(all & alpha ? 32 : 24)};
    for (uint32_t y = 0; y < height; ++y)
        for (const Packet& packet : packets)
            readLine(in, packet, decoded.bitmap.writableRow(static_cast<int32_t>(y)), width);
    return decoded;
}

}  // namespace tessarine
