#pragma once

#include <cstdint>
#include <vector>

#include "imagefiles/picture.h"

namespace tessarine {

/// A bitmap as the bytes of an uncompressed BMP file of 24 bits a pixel with the oldest common
/// header, which every reader of BMP knows.
/// \throws StatementFailed where there is no bitmap, and where it is too large for the format's
/// 32-bit sizes, std::bad_alloc for want of memory
std::vector<uint8_t> bmpOf(const Bitmap& bitmap);

}  // namespace tessarine
