#pragma once

#include <string>

#include "imagefiles/output_file.h"

namespace tessarine {

/// Reads a temporary BMP file and writes it in the format that the extension of `path` names, to
/// `path`, which must not exist. Call with an image bound, under DevIL's lock. What the library
/// leaves to chance in the file is made constant. The caller finishes `file`.
/// \throws StatementFailed where the library cannot read, convert or write
void saveThroughDevil(const std::string& temporaryBmp, const std::string& path, OutputFile& file);

}  // namespace tessarine
