#include "imagefiles/bmp_writer.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "imagefiles/output_file.h"
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

void writeBmp(const Bitmap& bitmap, const std::string& path) {
    if (!bitmap.isValid() || bitmap.width() < 1 || bitmap.height() < 1)
        throw StatementFailed("there is no picture to save");
    const int64_t rowBytes = (int64_t{bitmap.width()} * 3 + 3) / 4 * 4;
    const int64_t pixelBytes = rowBytes * bitmap.height();
    // The readers of this file count in signed 32-bit numbers.
    if (headerSize + pixelBytes > std::numeric_limits<int32_t>::max())
        throw StatementFailed("the picture is too large for this format");

    OutputFile file;
    if (!file.create(path)) throw StatementFailed(file.failure());
    const auto header = headerOf(bitmap.width(), bitmap.height(), pixelBytes);
    bool going = file.write(header.data(), header.size()) == header.size();
    std::vector<uint8_t> row(static_cast<size_t>(rowBytes));
    for (int32_t y = bitmap.height() - 1; y >= 0 && going; --y) {
        const Pixel* source = bitmap.row(y);
        uint8_t* target = row.data();
        for (int32_t x = 0; x < bitmap.width(); ++x) {
            *target++ = source[x].blue;
            *target++ = source[x].green;
            *target++ = source[x].red;
        }
        going = file.write(row.data(), row.size()) == row.size();
    }
    if (!file.finish()) throw StatementFailed(file.failure());
}

}  // namespace tessarine
