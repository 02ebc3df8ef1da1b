#pragma once

#include <cstdint>

#include "pixels/pixel_buffer.h"

namespace tessarine {

/// A picture turned upright.
/// \param orientation  how it lies, as cameras count: 1 is upright; 2 mirrored left to right;
///                     3 upside down; 4 mirrored top to bottom; 6 and 8 lie on their left and on
///                     their right side; 5 and 7 are mirrored besides. Others count as 1.
/// \return for 5 to 8 with width and height exchanged; pixels are moved, and none is changed
/// \throws MemoryFailed
PixelBuffer turnedUpright(const PixelBuffer& picture, int32_t orientation);

}  // namespace tessarine
