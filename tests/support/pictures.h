#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "pixels/pixel_buffer.h"
#include "pixels/region.h"

namespace tessarine::tests {

/// A buffer whose image area is `color(x, y)`; the margin stays black.
template <class Color>
PixelBuffer drawBuffer(int32_t width, int32_t height, Color color) {
    PixelBuffer buffer(width, height);
    Pixel* block = buffer.writableBlock();
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            block[buffer.offsetOfRow(y) + x] = color(x, y);
    return buffer;
}

/// Random colours and fourth bytes, the same for the same seed.
inline PixelBuffer randomBuffer(int32_t width, int32_t height, uint32_t seed) {
    std::mt19937 random(seed);
    return drawBuffer(width, height, [&random](int32_t, int32_t) {
        const uint32_t bits = static_cast<uint32_t>(random());
        return Pixel{static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                     static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 24)};
    });
}

/// A binary pixmap of 8 bits a channel. \throws std::runtime_error for anything else
inline PixelBuffer readPixmap(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    int32_t width = 0;
    int32_t height = 0;
    int highest = 0;
    file >> magic >> width >> height >> highest;
    file.get();
    if (!file || magic != "P6" || highest != 255) throw std::runtime_error(path + ": no pixmap");
    return drawBuffer(width, height, [&](int32_t, int32_t) {
        char rgb[3];
        if (!file.read(rgb, 3)) throw std::runtime_error(path + ": ends early");
        return Pixel{static_cast<uint8_t>(rgb[2]), static_cast<uint8_t>(rgb[1]),
                     static_cast<uint8_t>(rgb[0]), 0};
    });
}

/// Writes the image area as a binary pixmap.
inline void writePixmap(const std::string& path, const PixelBuffer& picture) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << picture.width() << " " << picture.height() << "\n255\n";
    for (int32_t y = 0; y < picture.height(); ++y)
        for (int32_t x = 0; x < picture.width(); ++x) {
            const Pixel& p = picture.at(x, y);
            file << static_cast<char>(p.red) << static_cast<char>(p.green)
                 << static_cast<char>(p.blue);
        }
}

/// The CRC-32 of the whole block, margin and fourth bytes included.
inline uint32_t crcOf(const PixelBuffer& buffer) {
    uint32_t crc = 0xFFFFFFFFU;
    const auto* bytes = reinterpret_cast<const uint8_t*>(buffer.block());
    for (size_t i = 0; i < buffer.byteCount(); ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

/// An uncompressed bitmap file of 24 bits a pixel, rows bottom up.
/// \throws std::runtime_error for anything else
inline PixelBuffer readBitmapFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    const auto number = [&](size_t at) {
        uint32_t value = 0;
        for (size_t i = 4; i-- > 0;)
            value = value << 8 | static_cast<uint8_t>(bytes.at(at + i));
        return value;
    };
    if (bytes.size() < 54 || bytes.substr(0, 2) != "BM" || number(14) != 40 ||
        number(28) % 65536 != 24 || number(30) != 0)
        throw std::runtime_error(path + ": no plain bitmap of 24 bits");
    const auto width = static_cast<int32_t>(number(18));
    const auto height = static_cast<int32_t>(number(22));
    const size_t stride = (static_cast<size_t>(width) * 3 + 3) / 4 * 4;
    return drawBuffer(width, height, [&](int32_t x, int32_t y) {
        const size_t at =
            number(10) + static_cast<size_t>(height - 1 - y) * stride + static_cast<size_t>(x) * 3;
        return Pixel{static_cast<uint8_t>(bytes.at(at)), static_cast<uint8_t>(bytes.at(at + 1)),
                     static_cast<uint8_t>(bytes.at(at + 2)), 0};
    });
}

/// Where the image areas of two buffers differ in a colour; empty where they are alike.
inline std::string firstDifference(const PixelBuffer& actual, const PixelBuffer& expected) {
    if (actual.width() != expected.width() || actual.height() != expected.height())
        return "size " + std::to_string(actual.width()) + "x" + std::to_string(actual.height()) +
               " instead of " + std::to_string(expected.width()) + "x" +
               std::to_string(expected.height());
    for (int32_t y = 0; y < actual.height(); ++y)
        for (int32_t x = 0; x < actual.width(); ++x) {
            const Pixel& a = actual.at(x, y);
            const Pixel& e = expected.at(x, y);
            if (a.blue == e.blue && a.green == e.green && a.red == e.red) continue;
            const auto text = [](const Pixel& p) {
                return "(" + std::to_string(p.red) + ", " + std::to_string(p.green) + ", " +
                       std::to_string(p.blue) + ")";
            };
            return "at (" + std::to_string(x) + ", " + std::to_string(y) + "): " + text(a) +
                   " instead of " + text(e);
        }
    return {};
}

/// A region of several rectangles.
inline RegionHandle regionOf(const std::vector<Rect>& rects) {
    std::vector<int32_t> words{
        32, 1, static_cast<int32_t>(rects.size()), static_cast<int32_t>(rects.size() * 16), 0, 0,
        0,  0};
    for (const Rect& r : rects)
        words.insert(words.end(), {r.left, r.top, r.right, r.bottom});
    return Region::fromBlock(words);
}

inline RegionHandle wholeRegion(const PixelBuffer& buffer) {
    return std::make_shared<const Region>(Rect{0, 0, buffer.width(), buffer.height()});
}

}  // namespace tessarine::tests
