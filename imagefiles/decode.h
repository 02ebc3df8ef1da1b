#pragma once

#include <optional>
#include <string>

#include "imagefiles/picture_files.h"
#include "imagefiles/picture_source.h"

namespace tessarine {

/// Width and height in pixels that a file's header promises.
struct PromisedSize {
    uint64_t width = 0;
    uint64_t height = 0;
};

/// What the header promises, found without decoding pixels; nothing where the format, or the damage
/// to the file, does not tell. Nothing is thrown.
std::optional<PromisedSize> promisedSize(const PictureSource& source, const std::string& extension);

/// Decodes a picture by the route that its extension (in any case) names, and by nothing else.
/// Metafiles and the other platform formats included. Nothing is thrown; tooLarge stands for a size
/// beyond maxPixels and for memory that was not to be had. Margin and fourth bytes of the bitmap
/// are as the decoder leaves them: Bitmap(std::move(bitmap).takePixels()) has them 0. A helper
/// process need not do it, since whoever takes its pictures does not trust them.
ReadOutcome decodePicture(const PictureSource& source, const std::string& extension);

}  // namespace tessarine
