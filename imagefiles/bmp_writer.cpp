#include "imagefiles/bmp_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr int64_t headerSize = 54;

std::array<uint8_t, headerSize> headerOf(int32_t width, int32_t height, int64_t pixelBytes) {
    std::array<uint8_t, headerSize> header{};
    const auto put = [&header](size_t place, int64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            header[place + i] = static_cast<uint8_t>(value >> (8 * i));
    };
    header[0] = 'B';
    header[1] = 'M';
    put(2, headerSize + pixelBytes, 4);
    put(10, headerSize, 4);
    put(14, 40, 4);
    put(18, width, 4);
    put(22, height, 4);
    put(26, 1, 2);
    put(28, 24, 2);
    put(34, pixelBytes, 4);
    return header;
}

}  // namespace

std::vector<uint8_t> bmpOf(const Bitmap& bitmap) {
    if (!bitmap.isValid() || bitmap.width() < 1 || bitmap.height() < 1)
        throw StatementFailed("there is no picture to save");
    const int64_t rowBytes = (int64_t{bitmap.width()} * 3 + 3) / 4 * 4;
    const int64_t pixelBytes = rowBytes * bitmap.height();
    // The readers of this file count in signed 32-bit numbers.
    if (headerSize + pixelBytes > std::numeric_limits<int32_t>::max())
        throw StatementFailed("the picture is too large for this format");

    std::vector<uint8_t> file(static_cast<size_t>(headerSize + pixelBytes));
    const auto header = headerOf(bitmap.width(), bitmap.height(), pixelBytes);
    std::copy(header.begin(), header.end(), file.begin());
    uint8_t* row = file.data() + headerSize;
    for (int32_t y = bitmap.height() - 1; y >= 0; --y, row += rowBytes) {
        const Pixel* source = bitmap.row(y);
        uint8_t* target = row;
        for (int32_t x = 0; x < bitmap.width(); ++x) {
            *target++ = source[x].blue;
            *target++ = source[x].green;
            *target++ = source[x].red;
        }
    }
    return file;
}

}  // namespace tessarine
