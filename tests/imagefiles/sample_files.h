#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "imagefiles/image_files.h"
#include "pixels/failures.h"
#include "support/files.h"
#include "support/paths.h"

namespace tessarine::tests {

/// Puts the bytes of a file together.
class FileBytes {
  public:
    FileBytes& u8(std::initializer_list<uint32_t> values) {
        for (const uint32_t value : values)
            bytes_ += static_cast<char>(value);
        return *this;
    }
    FileBytes& le16(std::initializer_list<uint32_t> values) {
        for (const uint32_t value : values)
            u8({value & 255, value >> 8 & 255});
        return *this;
    }
    FileBytes& be16(std::initializer_list<uint32_t> values) {
        for (const uint32_t value : values)
            u8({value >> 8 & 255, value & 255});
        return *this;
    }
    FileBytes& le32(std::initializer_list<uint32_t> values) {
        for (const uint32_t value : values)
            le16({value & 0xFFFF, value >> 16});
        return *this;
    }
    FileBytes& be32(std::initializer_list<uint32_t> values) {
        for (const uint32_t value : values)
            be16({value >> 16, value & 0xFFFF});
        return *this;
    }
    FileBytes& text(const std::string& letters) {
        bytes_ += letters;
        return *this;
    }
    FileBytes& zeros(size_t count) {
        bytes_.append(count, '\0');
        return *this;
    }
    /// A chunk of an IFF form: name, length, content, and a byte to make it even.
    FileBytes& chunk(const std::string& name, const std::string& content) {
        text(name).be32({static_cast<uint32_t>(content.size())}).text(content);
        return content.size() % 2 == 0 ? *this : zeros(1);
    }
    const std::string& str() const { return bytes_; }

  private:
    std::string bytes_;
};

/// Colours as 0xRRGGBB, row by row.
using Colours = std::vector<uint32_t>;

inline Colours coloursOf(const Bitmap& bitmap) {
    Colours colours;
    for (int32_t y = 0; y < bitmap.height(); ++y)
        for (int32_t x = 0; x < bitmap.width(); ++x) {
            const Pixel p = bitmap.row(y)[x];
            colours.push_back(static_cast<uint32_t>(p.red << 16 | p.green << 8 | p.blue));
        }
    return colours;
}

/// What came of loading one file.
struct Loaded {
    bool isThere = false;
    int32_t width = 0;
    int32_t height = 0;
    int16_t depth = 0;
    Colours colours;
};

/// Loads by the route that the extension takes in the program.
inline Loaded loadFile(const std::string& path, const std::string& extension) {
    Loaded loaded;
    mFormat format;
    std::optional<Bitmap> bitmap;
    int16_t depth = 0;
    if (isPlatformExtension(extension)) {
        attempt([&] {
            LoadedPicture picture = LoadPicture(path, extension);
            bitmap = std::move(picture.bitmap);
            depth = picture.depth;
        });
    } else {
        bitmap = LoadImageFile(format, path, extension);
        depth = format.loadedDepth;
    }
    if (!bitmap) return loaded;
    return {true, bitmap->width(), bitmap->height(), depth, coloursOf(*bitmap)};
}

/// Writes the bytes to a file of that extension, and loads it.
inline Loaded loadBytes(const std::string& bytes, const std::string& extension) {
    const ScratchFolder folder;
    const std::string path = folder / ("picture." + extension);
    writeAll(path, bytes);
    return loadFile(path, extension);
}

constexpr uint32_t red = 0xFF0000;
constexpr uint32_t green = 0x00FF00;
constexpr uint32_t blue = 0x0000FF;
constexpr uint32_t white = 0xFFFFFF;
constexpr uint32_t black = 0x000000;

/// Files of 2 by 2 pixels with red and green above blue and white, one for each of the room's own
/// decoders that can hold these colours: extension and bytes.
std::vector<std::pair<std::string, std::string>> smallFiles();

}  // namespace tessarine::tests
