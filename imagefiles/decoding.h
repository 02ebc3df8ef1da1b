#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "imagefiles/picture.h"
#include "imagefiles/picture_source.h"

namespace tessarine {

/// What a decoder makes of a file.
struct Decoded {
    Bitmap bitmap;      ///< its fourth bytes hold anything
    int16_t depth = 0;  ///< bits per pixel as the file stores them
};

/// The largest number of pixels that is decoded: 2 gigabytes as a bitmap, about twice that while a
/// library decodes it, and three times that while filters work on it. More is beyond the machines
/// that this is made for.
constexpr uint64_t maxPixels = uint64_t{1} << 29;

/// A black bitmap, once the claimed size is believable.
/// \param dataBytes     bytes that the file has for its pixels
/// \param pixelsPerByte the most pixels that one byte of the format can stand for
/// \throws StatementFailed for a side of 0 or above 65535, and for a size that the data cannot
/// fill, FileRefused for more than maxPixels
Bitmap bitmapFor(uint64_t width, uint64_t height, uint64_t dataBytes, uint64_t pixelsPerByte);

/// Reads a block of bytes from front to back. Each member throws StatementFailed, and moves
/// nothing, where the block ends before what it is asked for.
class ByteReader {
  public:
    explicit ByteReader(Bytes bytes) : bytes_(bytes) {}

    size_t position() const { return position_; }
    size_t size() const { return bytes_.size(); }
    size_t remaining() const { return bytes_.size() - position_; }

    void seek(uint64_t position);
    void skip(uint64_t count) { take(count); }
    Bytes take(uint64_t count);
    Bytes rest() { return take(remaining()); }

    uint8_t u8() { return take(1)[0]; }
    uint16_t u16le();
    uint16_t u16be();
    uint32_t u32le();
    uint32_t u32be();
    float f32be();

  private:
    Bytes bytes_;
    size_t position_ = 0;
};

/// Whether a block starts with a text.
bool startsWith(Bytes bytes, std::string_view text);

/// Refuses the file with a reason.
[[noreturn]] void refuse(const char* why);
/// Refuses the file for its size: more pixels than maxPixels.
[[noreturn]] void refuseTooLarge(uint64_t width, uint64_t height);

/// 16 bits a channel to 8, to the nearest.
constexpr uint8_t to8(uint16_t sample) {
    return static_cast<uint8_t>((uint32_t{sample} * 255 + 32767) / 65535);
}

/// A sample of `bits` bits (1 to 8) spread over 0 to 255, to the nearest.
constexpr uint8_t spread(uint32_t sample, uint32_t bits) {
    const uint32_t top = (1u << bits) - 1;
    return static_cast<uint8_t>((sample * 255 + top / 2) / top);
}

constexpr Pixel greyPixel(uint8_t level) { return {level, level, level, 0}; }
constexpr Pixel rgbPixel(uint8_t red, uint8_t green, uint8_t blue) { return {blue, green, red, 0}; }

}  // namespace tessarine
