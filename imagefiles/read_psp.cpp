#include <algorithm>
#include <optional>
#include <vector>
#include <zlib.h>

#include "imagefiles/decoders.h"
#include "imagefiles/dib_pixels.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

enum Block : uint16_t {
    imageBlock = 0,
    paletteBlock = 2,
    layersBlock = 3,
    channelBlock = 5,
    compositeBlock = 9,
    compositesBlock = 16,
    compositeHeadBlock = 17,
    jpegBlock = 18,
};

constexpr uint32_t signature = 0x004B427E;  // "~BK" and a 0

struct Image {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t compression = 0;
    uint32_t depth = 0;
    bool isGrey = false;
    std::vector<Pixel> palette;
};

struct Area {
    int64_t left = 0, top = 0, right = 0, bottom = 0;
    uint64_t width() const { return right > left ? static_cast<uint64_t>(right - left) : 0; }
    uint64_t height() const { return bottom > top ? static_cast<uint64_t>(bottom - top) : 0; }
};

struct Layer {
    Area area;
    uint32_t opacity = 255;
    bool isVisible = true;
    bool isPlain = true;  ///< pixels of its own, laid over what is below without a mode of mixing
    std::vector<uint8_t> index, red, green, blue, alpha;
};

struct BlockHead {
    uint16_t kind = 0;
    Bytes data;
};

BlockHead nextBlock(ByteReader& in) {
    if (in.u32le() != signature) refuse("a block of the picture is damaged");
    BlockHead head;
    head.kind = in.u16le();
    const uint32_t length = in.u32le();
    head.data = in.take(length);
    return head;
}

/// The block's leading chunk, which tells its own length so that later versions may add to it.
ByteReader nextChunk(ByteReader& in) {
    const uint32_t length = in.u32le();
    if (length < 4) refuse("a block of the picture is damaged");
    return ByteReader(in.take(length - 4));
}

void readImage(ByteReader in, Image& image) {
    ByteReader chunk = nextChunk(in);
    image.width = chunk.u32le();
    image.height = chunk.u32le();
    chunk.skip(9);
    image.compression = chunk.u16le();
    image.depth = chunk.u16le();
    chunk.skip(2 + 4);
    image.isGrey = chunk.u8() != 0;
    if (image.depth != 1 && image.depth != 4 && image.depth != 8 && image.depth != 24)
        refuse("a picture of this depth cannot be read");
}

void readPalette(ByteReader in, Image& image) {
    ByteReader chunk = nextChunk(in);
    const uint32_t count = std::min(chunk.u32le(), 256u);
    image.palette.clear();
    for (uint32_t i = 0; i < count; ++i) {
        const Bytes c = in.take(4);
        image.palette.push_back(rgbPixel(c[2], c[1], c[0]));
    }
}

std::vector<uint8_t> unpackRuns(Bytes data, size_t size) {
    ByteReader in(data);
    std::vector<uint8_t> plain;
    while (plain.size() < size) {
        const size_t code = in.u8();
        const size_t room = size - plain.size();
        if (code > 128) {
            plain.insert(plain.end(), std::min(code - 128, room), in.u8());
        } else {
            const Bytes stretch = in.take(code);
            plain.insert(plain.end(), stretch.begin(),
                         stretch.begin() + static_cast<ptrdiff_t>(std::min(code, room)));
        }
    }
    return plain;
}

std::vector<uint8_t> unpackChannel(Bytes data, uint32_t compression, size_t size) {
    // No coding of the format makes more than 1032 bytes of one.
    if (size / 1100 > data.size()) refuse("the file is too short for its picture");
    if (compression == 1) return unpackRuns(data, size);
    if (compression == 0) {
        const Bytes plain = ByteReader(data).take(size);
        return {plain.begin(), plain.end()};
    }
    if (compression != 2) refuse("a picture of this coding cannot be read");
    std::vector<uint8_t> plain(size);
    uLongf length = size;
    const int status = uncompress(plain.data(), &length, data.data(), data.size());
    // Some programs tell one row too few; what is there counts.
    if ((status != Z_OK && status != Z_BUF_ERROR) || length < size) refuse("a channel is damaged");
    return plain;
}

void readChannel(ByteReader in, const Image& image, Layer& layer) {
    ByteReader chunk = nextChunk(in);
    const uint32_t packed = chunk.u32le();
    chunk.skip(4);
    const uint32_t use = chunk.u16le();
    const uint32_t channel = chunk.u16le();  // 0 all in one, 1 red, 2 green, 3 blue
    // 0 is a layer's picture and 8 the finished one, 1 and 9 their transparency; masks are left
    // out.
    const bool isPicture = use == 0 || use == 8;
    if (!isPicture && use != 1 && use != 9) return;
    const uint32_t bits = image.depth < 8 && isPicture ? image.depth : 8;
    // Rows of less than a byte a pixel are padded to four bytes.
    const uint64_t row = bits == 8 ? layer.area.width() : (layer.area.width() * bits + 31) / 32 * 4;
    std::vector<uint8_t> samples = unpackChannel(in.take(packed), image.compression,
                                                 static_cast<size_t>(row * layer.area.height()));
    if (bits < 8) {
        std::vector<uint8_t> wide;
        for (uint64_t y = 0; y < layer.area.height(); ++y)
            for (uint64_t x = 0; x < layer.area.width(); ++x)
                wide.push_back(samples[y * row + x * bits / 8] >> (8 - bits - x * bits % 8) &
                               ((1u << bits) - 1));
        samples = std::move(wide);
    }
    if (!isPicture)
        layer.alpha = std::move(samples);
    else
        (channel == 1   ? layer.red
         : channel == 2 ? layer.green
         : channel == 3 ? layer.blue
                        : layer.index) = std::move(samples);
}

Area readArea(ByteReader& in) {
    Area area;
    for (int64_t* side : {&area.left, &area.top, &area.right, &area.bottom})
        *side = static_cast<int32_t>(in.u32le());
    return area;
}

Layer readLayer(ByteReader in, const Image& image) {
    Layer layer;
    ByteReader chunk = nextChunk(in);
    const uint32_t nameLength = chunk.u16le();
    chunk.skip(nameLength);
    const uint32_t kind = chunk.u8();  // 1 and 2 have pixels; others are drawn or change colours
    const Area place = readArea(chunk);
    const Area saved = readArea(chunk);
    layer.opacity = chunk.u8();
    const uint32_t mixing = chunk.u8();
    layer.isPlain = kind <= 2 && mixing == 0;
    layer.isVisible = chunk.u8() & 1;
    layer.area = {place.left + saved.left, place.top + saved.top, place.left + saved.right,
                  place.top + saved.bottom};
    if (layer.area.width() > 0xFFFF || layer.area.height() > 0xFFFF ||
        layer.area.width() * layer.area.height() > maxPixels)
        refuseTooLarge(layer.area.width(), layer.area.height());
    // Blocks of extensions may stand before and behind the chunk that counts the channels.
    while (in.remaining() > 0) {
        ByteReader ahead = in;
        if (ahead.u32le() != signature) {
            nextChunk(in);
            continue;
        }
        const BlockHead block = nextBlock(in);
        if (block.kind == channelBlock) readChannel(ByteReader(block.data), image, layer);
    }
    return layer;
}

Pixel layerColour(const Image& image, const Layer& layer, size_t place) {
    if (!layer.index.empty()) {
        const uint8_t index = layer.index[place];
        if (image.isGrey || image.palette.empty()) return greyPixel(index);
        return index < image.palette.size() ? image.palette[index] : Pixel{};
    }
    const auto sample = [&](const std::vector<uint8_t>& channel) -> uint8_t {
        return channel.empty() ? 0 : channel[place];
    };
    return rgbPixel(sample(layer.red), sample(layer.green), sample(layer.blue));
}

void lay(const Image& image, const Layer& layer, Bitmap& bitmap) {
    if (!layer.isVisible || (layer.index.empty() && layer.red.empty())) return;
    for (uint64_t j = 0; j < layer.area.height(); ++j) {
        const int64_t y = layer.area.top + static_cast<int64_t>(j);
        if (y < 0 || y >= bitmap.height()) continue;
        Pixel* row = bitmap.writableRow(static_cast<int32_t>(y));
        for (uint64_t i = 0; i < layer.area.width(); ++i) {
            const int64_t x = layer.area.left + static_cast<int64_t>(i);
            if (x < 0 || x >= bitmap.width()) continue;
            const auto place = static_cast<size_t>(j * layer.area.width() + i);
            const uint32_t cover = layer.opacity * (layer.alpha.empty() ? 255 : layer.alpha[place]);
            const Pixel top = layerColour(image, layer, place);
            const auto mix = [&](uint8_t below, uint8_t above) {
                return static_cast<uint8_t>((below * (65025 - cover) + above * cover + 32512) /
                                            65025);
            };
            row[x] = rgbPixel(mix(row[x].red, top.red), mix(row[x].green, top.green),
                              mix(row[x].blue, top.blue));
        }
    }
}

void makeWhite(Bitmap& bitmap) {
    for (int32_t y = 0; y < bitmap.height(); ++y)
        std::fill_n(bitmap.writableRow(y), bitmap.width(), greyPixel(255));
}

/// The picture as the program that wrote it had put it together from the layers, if it is there.
std::optional<Bitmap> readComposite(ByteReader in, const Image& image) {
    struct Head {
        bool isWhole = false;
        uint32_t compression = 0;
    };
    std::vector<Head> heads;
    size_t next = 0;
    nextChunk(in);
    while (in.remaining() > 0) {
        const BlockHead block = nextBlock(in);
        ByteReader data(block.data);
        ByteReader chunk = nextChunk(data);
        if (block.kind == compositeHeadBlock) {
            const bool hasSize = chunk.u32le() == image.width && chunk.u32le() == image.height;
            const uint32_t depth = chunk.u16le();
            Head head;
            head.compression = chunk.u16le();
            chunk.skip(2 + 4);
            head.isWhole = chunk.u16le() == 0 && hasSize && depth == 24;
            heads.push_back(head);
            continue;
        }
        const Head head = next < heads.size() ? heads[next++] : Head{};
        if (!head.isWhole) continue;
        if (block.kind == jpegBlock)
            return decodeEmbedded(data.rest(), FIF_JPEG, JPEG_ACCURATE).bitmap;
        if (block.kind != compositeBlock) continue;
        Image whole = image;
        whole.compression = head.compression;
        whole.depth = 24;
        Layer layer;
        layer.area = {0, 0, image.width, image.height};
        while (data.remaining() > 0) {
            const BlockHead channel = nextBlock(data);
            if (channel.kind == channelBlock) readChannel(ByteReader(channel.data), whole, layer);
        }
        Bitmap bitmap = bitmapFor(image.width, image.height, block.data.size(), 65536);
        makeWhite(bitmap);
        lay(whole, layer, bitmap);
        return bitmap;
    }
    return std::nullopt;
}

/// Lays the layers over white. \return whether that is all of the picture
bool layAll(ByteReader layers, const Image& image, Bitmap& bitmap) {
    makeWhite(bitmap);
    bool isAll = true;
    while (layers.remaining() > 0) {
        const Layer layer = readLayer(ByteReader(nextBlock(layers).data), image);
        isAll = isAll && (layer.isPlain || !layer.isVisible);
        lay(image, layer, bitmap);
    }
    return isAll;
}

}  // namespace

std::optional<PromisedSize> promiseOfPsp(Bytes file) {
    if (!startsWith(file, "Paint Shop Pro Image File")) return std::nullopt;
    ByteReader in(file);
    in.skip(32 + 4);
    if (in.u32le() != signature || in.u16le() != imageBlock) return std::nullopt;
    // The lengths of the block and of its leading chunk; older files tell them the other way round.
    in.skip(4 + 4);
    const uint64_t width = in.u32le();
    return PromisedSize{width, in.u32le()};
}

/// DevIL knows neither the usual coding nor more than one layer. Layers of pixels are laid over
/// white, each by its opacity. Where a picture has drawn objects or modes of mixing, the finished
/// picture that its program stored beside the layers is shown.
std::optional<Decoded> takeOverPsp(const PictureSource& source) {
    const Bytes file = source.file;
    if (!startsWith(file, "Paint Shop Pro Image File\n\x1A")) refuse("this is no such picture");
    ByteReader in(file);
    in.skip(32);
    if (in.u16le() < 4) return std::nullopt;
    in.skip(2);

    Image image;
    std::optional<Bytes> composites;
    std::optional<Bytes> layers;
    while (in.remaining() > 0) {
        const BlockHead block = nextBlock(in);
        if (block.kind == imageBlock) readImage(ByteReader(block.data), image);
        if (block.kind == paletteBlock) readPalette(ByteReader(block.data), image);
        if (block.kind == compositesBlock) composites = block.data;
        if (block.kind == layersBlock) layers = block.data;
    }
    if (!layers) refuse("the file holds no picture");
    Decoded decoded{bitmapFor(image.width, image.height, file.size(), 65536),
                    static_cast<int16_t>(image.depth)};
    if (layAll(ByteReader(*layers), image, decoded.bitmap)) return decoded;
    std::optional<Bitmap> composite;
    if (composites) composite = readComposite(ByteReader(*composites), image);
    if (!composite) refuse("the drawn layers of the picture cannot be shown");
    decoded.bitmap = std::move(*composite);
    return decoded;
}

}  // namespace tessarine
