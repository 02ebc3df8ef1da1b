#pragma once

#include <cstdint>
#include <string>

struct FIBITMAP;

namespace tessarine {

/// Reads a file by DevIL and hands it over through a temporary BMP file. DevIL goes by the
/// extension of the path, or by its own number of a type, where that is not 0. The caller unloads
/// the result; nothing where DevIL cannot read the file. \throws StatementFailed where no temporary
/// folder can be made
FIBITMAP* loadThroughDevil(const std::string& path, uint32_t type);

}  // namespace tessarine
