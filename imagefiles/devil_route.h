#pragma once

#include <cstdint>
#include <string>

#include "imagefiles/picture_source.h"

struct FIBITMAP;

namespace tessarine {

/// Reads a file by DevIL and hands it over as a BMP in memory. DevIL goes by the extension (lower
/// case), or by its own number of a type, where that is not 0. The caller unloads the result;
/// nothing where DevIL cannot read the file.
/// \throws MemoryFailed where memory does not suffice
FIBITMAP* loadThroughDevil(Bytes file, const std::string& extension, uint32_t type);

}  // namespace tessarine
