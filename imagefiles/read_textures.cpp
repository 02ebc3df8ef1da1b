#include "imagefiles/decoders.h"
#include "imagefiles/promises.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

Decoded showIndexed(Bytes indices, uint32_t width, uint32_t height, Bytes colours) {
    Decoded decoded{bitmapFor(width, height, indices.size(), 1), 8};
    for (uint32_t y = 0; y < height; ++y) {
        Pixel* row = decoded.bitmap.writableRow(static_cast<int32_t>(y));
        for (uint32_t x = 0; x < width; ++x) {
            const size_t index = 3 * size_t{indices[size_t{y} * width + x]};
            row[x] = rgbPixel(colours[index], colours[index + 1], colours[index + 2]);
        }
    }
    return decoded;
}

struct Texture {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t data = 0;
};

Texture findTexture(Bytes file) {
    ByteReader in(file);
    in.seek(180);
    const uint32_t count = in.u32le();
    const uint32_t list = in.u32le();
    if (count == 0) refuse("the model has no texture");
    in.seek(list);
    in.skip(64 + 4);
    Texture texture;
    texture.width = in.u32le();
    texture.height = in.u32le();
    texture.data = in.u32le();
    return texture;
}

/// The first texture of a model that carries its own colours.
Decoded readModelTexture(Bytes file) {
    const Texture texture = findTexture(file);
    if (texture.width > 0xFFFF || texture.height > 0xFFFF)
        refuse("the picture's size makes no sense");
    ByteReader in(file);
    in.seek(texture.data);
    const Bytes indices = in.take(uint64_t{texture.width} * texture.height);
    return showIndexed(indices, texture.width, texture.height, in.take(768));
}

/// Pictures of the game whose colours lie in one file for all: they can be shown where that file
/// has been unpacked beside them.
Bytes gamePalette(const PictureSource& source) {
    if (source.companions.empty() || source.companions[0].size() != 768)
        refuse("the colours of the game are not there");
    return source.companions[0];
}

/// The first skin of an older model.
Decoded readModelSkin(const PictureSource& source) {
    ByteReader in(source.file);
    in.seek(48);
    const uint32_t skins = in.u32le();
    const uint32_t width = in.u32le();
    const uint32_t height = in.u32le();
    if (skins == 0 || width > 0xFFFF || height > 0xFFFF) refuse("the model has no skin");
    in.seek(84);
    if (in.u32le() != 0) {  // a group: a count, and a duration for each of its pictures
        const uint64_t pictures = in.u32le();
        in.skip(pictures * 4);
    }
    const Bytes indices = in.take(uint64_t{width} * height);
    return showIndexed(indices, width, height, gamePalette(source));
}

/// Whether the columns of a patch, each a list of posts, all lie inside the file.
bool isPatch(Bytes file) {
    return attempt([&] {
        ByteReader in(file);
        const uint32_t width = in.u16le();
        const uint32_t height = in.u16le();
        in.skip(4);
        if (width < 1 || height < 1 || width > 4096 || height > 4096) refuse("this is no patch");
        for (uint32_t x = 0; x < width; ++x) {
            ByteReader column(file);
            column.seek(in.u32le());
            while (const uint32_t top = column.u8()) {
                if (top == 255) break;
                const uint32_t length = column.u8();
                if (top + length > height) refuse("this is no patch");
                column.skip(uint64_t{length} + 2);
            }
        }
    });
}

}  // namespace

/// DevIL shows models upside down, and knows one of the two kinds.
std::optional<Decoded> takeOverMdl(const PictureSource& source) {
    const Bytes file = source.file;
    if (startsWith(file, "IDST")) return readModelTexture(file);
    if (startsWith(file, "IDPO")) return readModelSkin(source);
    refuse("this is no model");
}

/// DevIL knows the patches and brings their colours along; it trusts their columns.
std::optional<Decoded> takeOverLmp(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    const uint64_t width = in.u32le();
    const uint64_t height = in.u32le();
    if (width <= 0xFFFF && height <= 0xFFFF && width * height + 8 == file.size())
        return showIndexed(in.rest(), static_cast<uint32_t>(width), static_cast<uint32_t>(height),
                           gamePalette(source));
    if (isPatch(file)) return std::nullopt;
    refuse("a lump of this kind cannot be shown");
}

/// DevIL brings the colours along; it trusts the sizes and places of the four reductions.
std::optional<Decoded> takeOverWal(const PictureSource& source) {
    const Bytes file = source.file;
    ByteReader in(file);
    in.skip(32);
    const uint64_t width = in.u32le();
    const uint64_t height = in.u32le();
    if (width < 8 || height < 8 || width > 4096 || height > 4096)
        refuse("the picture's size makes no sense");
    for (uint32_t level = 0; level < 4; ++level) {
        const uint64_t place = in.u32le();
        if (place + (width >> level) * (height >> level) > file.size())
            refuse("the file ends early");
    }
    return std::nullopt;
}

std::optional<PromisedSize> promiseOfMdl(Bytes file) {
    if (startsWith(file, "IDST")) {
        const Texture texture = findTexture(file);
        return PromisedSize{texture.width, texture.height};
    }
    if (!startsWith(file, "IDPO")) return std::nullopt;
    ByteReader in(file);
    in.seek(52);
    const uint64_t width = in.u32le();
    return PromisedSize{width, in.u32le()};
}

std::optional<PromisedSize> promiseOfLmp(Bytes file) {
    ByteReader in(file);
    if (isPatch(file)) {
        const uint64_t width = in.u16le();
        return PromisedSize{width, in.u16le()};
    }
    const uint64_t width = in.u32le();
    const uint64_t height = in.u32le();
    if (width > 0xFFFF || height > 0xFFFF) return std::nullopt;
    return PromisedSize{width, height};
}

}  // namespace tessarine
