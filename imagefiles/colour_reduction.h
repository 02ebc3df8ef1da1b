#pragma once

#include <cstdint>
#include <vector>

#include "imagefiles/picture.h"

namespace tessarine {

/// A picture of few colours: for each pixel, row by row from the top, its place in `colours`.
struct IndexedPicture {
    std::vector<Pixel> colours;  ///< fourth bytes 0
    std::vector<uint8_t> indices;
};

/// Reduces a picture to at most `maxColours` colours, 2 to 256. A picture that has no more keeps
/// every pixel as it is. The result depends on the pixels alone.
/// \throws StatementFailed where memory does not suffice
IndexedPicture reduceColours(const Bitmap& picture, int32_t maxColours);

}  // namespace tessarine
