#pragma once

#include <cstdint>
#include <string>

#include "imagefiles/output_file.h"
#include "imagefiles/picture_files.h"

namespace tessarine {

/// Writes a picture in the format of a row of the format table to an open file, in memory until
/// then; nothing else is touched. Nothing is thrown.
WriteOutcome encodePicture(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                           OutputFile& file);

}  // namespace tessarine
