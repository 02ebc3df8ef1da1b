#include "imagefiles/decoding.h"

#include <algorithm>
#include <bit>

#include "imagefiles/picture_files.h"

namespace tessarine {

void refuse(const char* why) { throw StatementFailed(why); }

void refuseTooLarge(uint64_t width, uint64_t height) {
    throw FileRefused(FileError::tooLarge, "the picture is too large: " + std::to_string(width) +
                                               " x " + std::to_string(height) + " pixels");
}

Bitmap bitmapFor(uint64_t width, uint64_t height, uint64_t dataBytes, uint64_t pixelsPerByte) {
    if (width < 1 || height < 1) refuse("the picture's size makes no sense");
    if (width > maxPixels / height) refuseTooLarge(width, height);
    if (width > 0xFFFF || height > 0xFFFF) refuse("the picture's size makes no sense");
    const uint64_t pixels = width * height;
    if (dataBytes < pixels / pixelsPerByte) refuse("the file is too short for its picture");
    return Bitmap(static_cast<int32_t>(width), static_cast<int32_t>(height));
}

void ByteReader::seek(uint64_t position) {
    if (position > bytes_.size()) refuse("the file ends early");
    position_ = static_cast<size_t>(position);
}

Bytes ByteReader::take(uint64_t count) {
    if (count > remaining()) refuse("the file ends early");
    const Bytes taken = bytes_.subspan(position_, static_cast<size_t>(count));
    position_ += static_cast<size_t>(count);
    return taken;
}

uint16_t ByteReader::u16le() {
    const Bytes b = take(2);
    return static_cast<uint16_t>(b[0] | b[1] << 8);
}

uint16_t ByteReader::u16be() {
    const Bytes b = take(2);
    return static_cast<uint16_t>(b[0] << 8 | b[1]);
}

uint32_t ByteReader::u32le() {
    const Bytes b = take(4);
    return b[0] | uint32_t{b[1]} << 8 | uint32_t{b[2]} << 16 | uint32_t{b[3]} << 24;
}

uint32_t ByteReader::u32be() {
    const Bytes b = take(4);
    return uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
}

float ByteReader::f32be() { return std::bit_cast<float>(u32be()); }

bool startsWith(Bytes bytes, std::string_view text) {
    return bytes.size() >= text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin(),
                      [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; });
}

}  // namespace tessarine
