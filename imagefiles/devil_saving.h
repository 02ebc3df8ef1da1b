#pragma once

#include <string>

#include "imagefiles/output_file.h"
#include "imagefiles/picture.h"

namespace tessarine {

/// Hands DevIL a picture as a BMP in memory and has it write the format of an extension (lower
/// case) to an open file. What the library leaves to chance in the file is made constant. The
/// caller finishes `file`.
/// \throws StatementFailed where the library cannot take, convert or write the picture,
/// MemoryFailed or std::bad_alloc where memory does not suffice
void saveThroughDevil(const Bitmap& picture, const std::string& extension, OutputFile& file);

}  // namespace tessarine
