#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/pictures.h"

namespace tessarine::tests {

/// Writes the image area of a buffer as a binary pixmap of 8 bits a channel.
inline void writePixmap(const std::filesystem::path& path, const PixelBuffer& buffer) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << buffer.width() << ' ' << buffer.height() << "\n255\n";
    for (int32_t y = 0; y < buffer.height(); ++y)
        for (int32_t x = 0; x < buffer.width(); ++x) {
            const Pixel& p = buffer.at(x, y);
            const char rgb[3] = {static_cast<char>(p.red), static_cast<char>(p.green),
                                 static_cast<char>(p.blue)};
            file.write(rgb, 3);
        }
}

/// Black where two buffers agree; a channel that differs is at least half bright, so that a
/// difference of one level is seen as well. Covers the area that both have.
inline PixelBuffer differenceOf(const PixelBuffer& actual, const PixelBuffer& expected) {
    const auto level = [](uint8_t a, uint8_t e) {
        return static_cast<uint8_t>(a == e ? 0 : 127 + std::abs(a - e) / 2);
    };
    return drawBuffer(
        std::min(actual.width(), expected.width()), std::min(actual.height(), expected.height()),
        [&](int32_t x, int32_t y) {
            const Pixel& a = actual.at(x, y);
            const Pixel& e = expected.at(x, y);
            return Pixel{level(a.blue, e.blue), level(a.green, e.green), level(a.red, e.red), 0};
        });
}

/// Where failing comparisons leave their pictures.
inline std::filesystem::path failuresFolder() {
    return std::filesystem::path(TESSARINE_BUILD_DIR) / "failures";
}

/// Leaves NAME-actual.ppm, NAME-expected.ppm and NAME-difference.ppm in failuresFolder().
inline void keepFailure(const std::string& name, const PixelBuffer& actual,
                        const PixelBuffer& expected) {
    std::filesystem::create_directories(failuresFolder());
    const auto path = [&](const char* what) {
        return failuresFolder() / (name + "-" + what + ".ppm");
    };
    writePixmap(path("actual"), actual);
    writePixmap(path("expected"), expected);
    writePixmap(path("difference"), differenceOf(actual, expected));
}

/// Whether the image areas agree in size and colours; where not, says where and leaves the
/// pictures of keepFailure().
inline testing::AssertionResult samePicture(const std::string& name, const PixelBuffer& actual,
                                            const PixelBuffer& expected) {
    const std::string difference = firstDifference(actual, expected);
    if (difference.empty()) return testing::AssertionSuccess();
    keepFailure(name, actual, expected);
    return testing::AssertionFailure()
           << name << ' ' << difference << "; see " << failuresFolder().string();
}

/// Whether two buffers agree in every byte, margin and fourth channel included.
inline testing::AssertionResult sameBuffer(const std::string& name, const PixelBuffer& actual,
                                           const PixelBuffer& expected) {
    if (actual == expected) return testing::AssertionSuccess();
    if (const auto colours = samePicture(name, actual, expected); !colours) return colours;
    keepFailure(name, actual, expected);
    for (int32_t y = -2; y < expected.height() + 2; ++y)
        for (int32_t x = -2; x < expected.width() + 2; ++x)
            if (actual.at(x, y) != expected.at(x, y))
                return testing::AssertionFailure() << name << " differs at (" << x << ", " << y
                                                   << ") in the margin or the fourth channel";
    return testing::AssertionFailure() << name << ": one buffer has no dimensions";
}

}  // namespace tessarine::tests
