#include "pixels/orientation.h"

#include <gtest/gtest.h>

#include "support/pictures.h"

namespace tessarine::tests {
namespace {

PixelBuffer mirrored(const PixelBuffer& picture) {
    return drawBuffer(picture.width(), picture.height(),
                      [&](int32_t x, int32_t y) { return picture.at(picture.width() - 1 - x, y); });
}

/// A quarter turn to the right, pixel by pixel.
PixelBuffer turnedRight(const PixelBuffer& picture) {
    return drawBuffer(picture.height(), picture.width(), [&](int32_t x, int32_t y) {
        return picture.at(y, picture.height() - 1 - x);
    });
}

/// The slow twin, made of those two alone.
PixelBuffer slowlyTurned(const PixelBuffer& picture, int32_t orientation) {
    switch (orientation) {
        case 2:
            return mirrored(picture);
        case 3:
            return turnedRight(turnedRight(picture));
        case 4:
            return mirrored(turnedRight(turnedRight(picture)));
        case 5:
            return mirrored(turnedRight(picture));
        case 6:
            return turnedRight(picture);
        case 7:
            return turnedRight(mirrored(picture));
        case 8:
            return turnedRight(turnedRight(turnedRight(picture)));
        default:
            return picture;
    }
}

TEST(Orientation, AllEightAreTurnedAsTheirSlowTwinsAre) {
    uint32_t seed = 1;
    for (const auto& [width, height] :
         {std::pair(1, 1), std::pair(2, 3), std::pair(1, 70), std::pair(90, 1), std::pair(31, 33),
          std::pair(32, 64), std::pair(257, 130), std::pair(500, 401)}) {
        const PixelBuffer picture = randomBuffer(width, height, ++seed);
        for (int32_t orientation = 1; orientation <= 8; ++orientation)
            EXPECT_TRUE(turnedUpright(picture, orientation) == slowlyTurned(picture, orientation))
                << orientation << " of " << width << " x " << height;
    }
}

// What lies in the corners is told apart from the definitions of the eight, not from code.
TEST(Orientation, TheTopLeftPixelIsTheOneThatCamerasMean) {
    const Pixel a{1, 0, 0, 0}, b{2, 0, 0, 0}, c{3, 0, 0, 0}, d{4, 0, 0, 0};
    // As it lies in the file: a b / c d
    const PixelBuffer picture = drawBuffer(
        2, 2, [&](int32_t x, int32_t y) { return y == 0 ? (x == 0 ? a : b) : (x == 0 ? c : d); });
    const Pixel expected[][2] = {{a, b}, {b, a}, {d, c}, {c, d}, {a, c}, {c, a}, {d, b}, {b, d}};
    for (int32_t orientation = 1; orientation <= 8; ++orientation) {
        const PixelBuffer turned = turnedUpright(picture, orientation);
        EXPECT_EQ(turned.at(0, 0), expected[orientation - 1][0]) << orientation;
        EXPECT_EQ(turned.at(1, 0), expected[orientation - 1][1]) << orientation;
    }
}

TEST(Orientation, OtherNumbersCountAsUpright) {
    const PixelBuffer picture = randomBuffer(5, 7, 3);
    for (const int32_t orientation : {-1, 0, 9, 1000})
        EXPECT_TRUE(turnedUpright(picture, orientation) == picture) << orientation;
}

}  // namespace
}  // namespace tessarine::tests
