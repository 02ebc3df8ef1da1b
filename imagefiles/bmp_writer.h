#pragma once

#include <string>

#include "imagefiles/picture.h"

namespace tessarine {

/// Writes a bitmap as an uncompressed BMP file of 24 bits a pixel with the oldest common header,
/// which every reader of BMP knows.
/// \throws StatementFailed where there is no bitmap, where it is too large for the format's 32-bit
/// sizes, or where the file cannot be written; no file is left then.
void writeBmp(const Bitmap& bitmap, const std::string& path);

}  // namespace tessarine
