#pragma once

#include <cstdint>
#include <string>

#include "imagefiles/output_file.h"
#include "imagefiles/picture_files.h"

namespace tessarine {

/// Writes a picture in the format of a row of the format table to a file that is open for reading
/// and writing, which the caller finishes or discards. No other file is touched, and nothing is
/// thrown. Outputs depend on the pixels alone.
WriteOutcome encodePicture(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                           OutputFile& file);

/// The same with metadata, as addMetadata() adds it. The file begins at its first byte.
WriteOutcome encodePicture(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                           const MetadataToAdd& metadata, OutputFile& file);

}  // namespace tessarine
