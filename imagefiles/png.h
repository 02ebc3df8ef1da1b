#pragma once

#include "imagefiles/output_file.h"
#include "imagefiles/picture.h"

namespace tessarine {

/// Writes a picture of three channels of 8 bits, without a time or a comment.
/// \throws StatementFailed where the library or the file refuses, MemoryFailed for want of memory
void writePng(const Bitmap& picture, OutputFile& file);

}  // namespace tessarine
