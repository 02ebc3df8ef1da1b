#include "imagefiles/iff.h"

namespace tessarine {

namespace {

struct Element {
    uint32_t kind = 0;  ///< 1 red, 2 green, 3 blue
};

struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t compression = 0;
    std::vector<Element> elements;
    Bytes body;
};

void readElements(ByteReader& in, Picture& picture) {
    const uint32_t count = in.u32be();
    if (count > 16) refuse("the channels of the picture make no sense");
    picture.elements.clear();
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t kind = in.u16be();
        if (in.u16be() != 8) refuse("a picture of this depth cannot be read");
        picture.elements.push_back({kind});
    }
}

Decoded readBody(Bytes body, const Picture& picture) {
    const size_t unit = picture.elements.size();
    if (unit == 0 || picture.compression > 1) refuse("a picture of this coding cannot be read");
    Decoded decoded{bitmapFor(picture.width, picture.height, body.size(), 128),
                    static_cast<int16_t>(8 * unit)};
    ByteReader in(body);
    const size_t size = size_t{picture.width} * picture.height * unit;
    std::vector<uint8_t> unpacked;
    if (picture.compression == 1) unpacked = unpackByteRuns(in, size, unit);
    const Bytes samples = picture.compression == 1 ? Bytes(unpacked) : in.take(size);
    size_t place = 0;
    for (int32_t y = 0; y < decoded.bitmap.height(); ++y) {
        Pixel* row = decoded.bitmap.writableRow(y);
        for (int32_t x = 0; x < decoded.bitmap.width(); ++x) {
            for (const Element& element : picture.elements) {
                const uint8_t sample = samples[place++];
                if (element.kind == 1) row[x].red = sample;
                if (element.kind == 2) row[x].green = sample;
                if (element.kind == 3) row[x].blue = sample;
            }
        }
    }
    return decoded;
}

Picture readChunks(Bytes form) {
    Picture picture;
    for (IffChunks chunks(form); chunks.next();) {
        ByteReader in(chunks.data());
        if (chunks.name() == "DGBL") {
            picture.width = in.u16be();
            picture.height = in.u16be();
            picture.compression = in.u16be();
        } else if (chunks.name() == "DLOC") {
            picture.width = in.u16be();
            picture.height = in.u16be();
        } else if (chunks.name() == "DPEL") {
            readElements(in, picture);
        } else if (chunks.name() == "DBOD") {
            picture.body = chunks.data();
            return picture;
        }
    }
    refuse("the form holds no picture");
}

}  // namespace

Decoded decodeDeep(Bytes form) {
    const Picture picture = readChunks(form);
    return readBody(picture.body, picture);
}

PromisedSize promiseOfDeep(Bytes form) {
    const Picture picture = readChunks(form);
    return {picture.width, picture.height};
}

}  // namespace tessarine
