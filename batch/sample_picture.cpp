#include <cstddef>
#include <cstdio>
#include <stdexcept>

#include "batch/batch.h"

namespace tessarine {

/// The bytes of assets/sample.ppm: a binary pixmap (P6) of 8 bits a channel.
extern const unsigned char sampleBytes[];
extern const std::size_t sampleBytesSize;

namespace {

Bitmap unpackSample() {
    int width = 0;
    int height = 0;
    int headerLength = 0;
    const std::string header(reinterpret_cast<const char*>(sampleBytes), 32);
    if (std::sscanf(header.c_str(), "P6 %d %d 255%n", &width, &height, &headerLength) != 2 ||
        headerLength == 0 ||
        sampleBytesSize != static_cast<size_t>(headerLength) + 1 +
                               static_cast<size_t>(width) * static_cast<size_t>(height) * 3)
        throw std::logic_error("the built-in sample picture is no pixmap");

    const unsigned char* rgb = sampleBytes + headerLength + 1;
    Bitmap sample(width, height);
    for (int32_t y = 0; y < height; ++y) {
        Pixel* row = sample.writableRow(y);
        for (int32_t x = 0; x < width; ++x, rgb += 3)
            row[x] = {rgb[2], rgb[1], rgb[0], 0};
    }
    return sample;
}

}  // namespace

Bitmap samplePicture() {
    static const Bitmap sample = unpackSample();
    return sample;
}

}  // namespace tessarine
