#pragma once

#include "imagefiles/metadata/blocks.h"

namespace tessarine {

MetadataBlocks blocksInJpeg(Bytes file, LeftOut& leftOut);

/// The most bytes that EXIF may have in a JPEG file.
constexpr size_t mostExifBytes = 65533 - 6;

/// A whole file with the blocks in it, in so far as it can hold them.
/// \throws StatementFailed where it is no JPEG file
ByteVector jpegWith(Bytes file, const MetadataBlocks& blocks, LeftOut& leftOut);

}  // namespace tessarine
