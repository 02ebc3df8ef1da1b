#pragma once

#include <cstdint>
#include <vector>

#include "imagefiles/picture.h"

namespace tessarine {

/// Pixels of like colour: how many there are, and the sums of their channels.
struct ColourCell {
    uint32_t count = 0;
    uint64_t red = 0;
    uint64_t green = 0;
    uint64_t blue = 0;
    bool isOneColour = true;  ///< whether a cell of this histogram is a single colour
};

/// The colours of a picture in the order in which they first appear, row by row. Colours are told
/// apart as finely as at most 65536 cells allow: exactly, or by cubes of 2, 4 or 8 levels a side.
std::vector<ColourCell> colourHistogram(const Bitmap& picture);

}  // namespace tessarine
