#pragma once

#include <optional>

#include "imagefiles/output_file.h"
#include "imagefiles/picture.h"

namespace tessarine {

/// Writes a picture with a quarter of the colour samples, at 72 dots an inch.
/// \param quality  1 to 100, as the JPEG Group's library scales its tables
/// \throws StatementFailed where the library or the file refuses, MemoryFailed for want of memory
void writeJpeg(const Bitmap& picture, int quality, OutputFile& file);

}  // namespace tessarine
