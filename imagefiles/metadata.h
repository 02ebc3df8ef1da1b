#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "imagefiles/picture_source.h"

namespace tessarine {

class OutputFile;

/// The most bytes of metadata that are kept of a picture, packed; what is beyond is left out.
constexpr size_t mostMetadataBytes = size_t{16} << 20;

/// What of a file's metadata is of interest.
enum class MetadataWanted {
    all,
    orientation,  ///< how the picture lies alone: nothing is packed, and what else is damaged not
                  ///< told
};

/// What a picture file says beyond its pixels.
struct FoundMetadata {
    /// How the picture lies, 1 to 8 as EXIF counts; 1 is upright, and stands for no word of it too.
    uint8_t orientation = 1;
    /// EXIF, IPTC, XMP and the colour profile, for MetadataToAdd and nobody else; empty for none.
    std::vector<uint8_t> packed;
    /// What could not be kept and why, in words; empty for nothing.
    std::string leftOut;
};

/// What is to be said in a file beyond its pixels.
struct MetadataToAdd {
    std::vector<uint8_t> packed;
    bool isTurned = false;  ///< the picture was turned upright since it was read
    bool withoutLocation = false;
};

/// Finds the metadata of a picture file by its extension (in any case). Nothing is thrown; what is
/// damaged is left out.
/// \param mostBytes  of `packed`
FoundMetadata metadataIn(Bytes file, const std::string& extension,
                         size_t mostBytes = mostMetadataBytes,
                         MetadataWanted wanted = MetadataWanted::all);

/// Adds metadata to a picture file that was just encoded, in so far as the format holds any: what
/// tells of the old size tells the new one, thumbnails go. Nothing is thrown; file.failure() tells
/// whether the file took it.
/// \return what was left out and why, in words; empty for nothing
std::string addMetadata(const MetadataToAdd& metadata, const std::string& extension, int32_t width,
                        int32_t height, OutputFile& file);

/// Whether files of a format hold metadata.
bool holdsMetadata(const std::string& extension);

}  // namespace tessarine
