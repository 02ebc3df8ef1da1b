#include "imagefiles/promises.h"

#include <algorithm>

// Headers in which the size stands at a fixed place, or a few steps away. Those that take more to
// find their way through stand with their decoders.

namespace tessarine {

namespace {

PromisedSize littleWords(Bytes file, size_t place) {
    ByteReader in(file);
    in.seek(place);
    const uint64_t width = in.u16le();
    return {width, in.u16le()};
}

PromisedSize bigWords(Bytes file, size_t place) {
    ByteReader in(file);
    in.seek(place);
    const uint64_t width = in.u16be();
    return {width, in.u16be()};
}

PromisedSize littleNumbers(Bytes file, size_t place) {
    ByteReader in(file);
    in.seek(place);
    const uint64_t width = in.u32le();
    return {width, in.u32le()};
}

PromisedSize bigNumbers(Bytes file, size_t place) {
    ByteReader in(file);
    in.seek(place);
    const uint64_t width = in.u32be();
    return {width, in.u32be()};
}

PromisedSize turned(PromisedSize size) { return {size.height, size.width}; }

/// Seven bits a byte, the last byte without the eighth.
uint64_t longNumber(ByteReader& in) {
    uint64_t value = 0;
    for (;;) {
        const uint8_t byte = in.u8();
        value = value << 7 | (byte & 127);
        if (value > 0xFFFFFFFF) refuse("the picture's size makes no sense");
        if (!(byte & 128)) return value;
    }
}

bool isFrameStart(uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool standsAlone(uint8_t marker) { return marker == 1 || (marker >= 0xD0 && marker <= 0xD8); }

}  // namespace

std::optional<PromisedSize> promiseOfPng(Bytes file) {
    ByteReader in(file);
    const uint8_t first = in.u8();
    const Bytes name = in.take(3);
    if (first < 0x89 || first > 0x8B ||
        (!startsWith(name, "PNG") && !startsWith(name, "MNG") && !startsWith(name, "JNG")))
        return std::nullopt;
    in.skip(4);
    for (;;) {
        const uint64_t length = in.u32be();
        const Bytes chunk = in.take(4);
        if (startsWith(chunk, "IHDR") || startsWith(chunk, "JHDR"))
            return bigNumbers(file, in.position());
        in.skip(length + 4);
    }
}

std::optional<PromisedSize> promiseOfJpeg(Bytes file) {
    ByteReader in(file);
    if (in.u16be() != 0xFFD8) return std::nullopt;
    for (;;) {
        // The library passes over whatever stands between one segment and the next marker.
        while (in.u8() != 0xFF) {
        }
        uint8_t marker = in.u8();
        while (marker == 0xFF)
            marker = in.u8();
        if (marker == 0 || standsAlone(marker)) continue;
        if (isFrameStart(marker)) return turned(bigWords(file, in.position() + 3));
        if (marker == 0xDA || marker == 0xD9) return std::nullopt;
        const uint64_t length = in.u16be();
        if (length < 2) refuse("a segment of the picture is damaged");
        in.skip(length - 2);
    }
}

std::optional<PromisedSize> promiseOfGif(Bytes file) {
    if (!startsWith(file, "GIF8")) return std::nullopt;
    PromisedSize size = littleWords(file, 6);
    ByteReader in(file);
    in.seek(10);
    const uint8_t flags = in.u8();
    in.skip(2);
    if (flags & 0x80) in.skip(uint64_t{3} << ((flags & 7) + 1));
    while (in.u8() != 0x2C) {
        // An extension: its kind, and blocks up to an empty one.
        in.skip(1);
        while (const uint8_t length = in.u8())
            in.skip(length);
    }
    const PromisedSize frame = littleWords(file, in.position() + 4);
    return PromisedSize{std::max(size.width, frame.width), std::max(size.height, frame.height)};
}

std::optional<PromisedSize> promiseOfCut(Bytes file) { return littleWords(file, 0); }

std::optional<PromisedSize> promiseOfDds(Bytes file) {
    if (!startsWith(file, "DDS ")) return std::nullopt;
    return turned(littleNumbers(file, 12));
}

std::optional<PromisedSize> promiseOfKoa(Bytes) { return PromisedSize{320, 200}; }

std::optional<PromisedSize> promiseOfLif(Bytes file) { return littleNumbers(file, 16); }

std::optional<PromisedSize> promiseOfPcd(Bytes) { return PromisedSize{768, 512}; }

std::optional<PromisedSize> promiseOfPic(Bytes file) {
    if (ByteReader(file).u32be() != 0x5380F634) return std::nullopt;
    return bigWords(file, 92);
}

std::optional<PromisedSize> promiseOfPix(Bytes file) {
    ByteReader in(file);
    in.skip(8);
    const uint32_t depth = in.u16be();
    if (depth != 8 && depth != 24) return std::nullopt;
    return bigWords(file, 0);
}

std::optional<PromisedSize> promiseOfPsd(Bytes file) {
    if (!startsWith(file, "8BPS")) return std::nullopt;
    return turned(bigNumbers(file, 14));
}

std::optional<PromisedSize> promiseOfPxr(Bytes file) { return littleWords(file, 416); }

std::optional<PromisedSize> promiseOfRas(Bytes file) {
    if (ByteReader(file).u32be() != 0x59A66A95) return std::nullopt;
    return bigNumbers(file, 4);
}

std::optional<PromisedSize> promiseOfRaw(Bytes file) {
    ByteReader in(file);
    in.skip(8);
    if (in.u32le() != 1 || in.u8() > 4 || in.u8() != 1) return std::nullopt;
    return littleNumbers(file, 0);
}

std::optional<PromisedSize> promiseOfSgi(Bytes file) {
    if (ByteReader(file).u16be() != 474) return std::nullopt;
    return bigWords(file, 6);
}

std::optional<PromisedSize> promiseOfTga(Bytes file) {
    ByteReader in(file);
    in.skip(2);
    const uint32_t kind = in.u8() & ~8u;
    const PromisedSize size = littleWords(file, 12);
    // A picture of no size is none, whatever its kind.
    const bool isNone = size.width == 0 || size.height == 0;
    if (!isNone && (kind < 1 || kind > 3)) return std::nullopt;
    return size;
}

std::optional<PromisedSize> promiseOfWal(Bytes file) {
    const PromisedSize size = littleNumbers(file, 32);
    if (size.width > 0xFFFF || size.height > 0xFFFF) return std::nullopt;
    return size;
}

std::optional<PromisedSize> promiseOfWbmp(Bytes file) {
    ByteReader in(file);
    in.skip(2);
    const uint64_t width = longNumber(in);
    return PromisedSize{width, longNumber(in)};
}

}  // namespace tessarine
