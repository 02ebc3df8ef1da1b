#pragma once

#include <cstdint>

#include "imagefiles/output_file.h"
#include "imagefiles/picture.h"

namespace tessarine {

/// Writes a picture as a GIF of one frame with a global table of 2 to the power of `colourBits`
/// (2 to 8) colours, to a file that has been created. The caller finishes the file.
/// \throws StatementFailed for a picture without pixels, one with a side above 65535, or where
/// the file takes no more
void writeGif(const Bitmap& picture, int32_t colourBits, OutputFile& file);

}  // namespace tessarine
