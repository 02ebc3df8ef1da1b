#pragma once

#include "imagefiles/metadata/blocks.h"

// The image resources of Photoshop's files, which JPEG files hold IPTC in.

namespace tessarine {

/// The blocks that resources hold; they end where they are damaged.
MetadataBlocks blocksInResources(Bytes resources);

/// IPTC as a resource.
ByteVector iptcResource(Bytes iptc);

MetadataBlocks blocksInPsd(Bytes file);
/// A whole file with the blocks in it. \throws StatementFailed where it is none of this format
ByteVector psdWith(Bytes file, const MetadataBlocks& blocks);

}  // namespace tessarine
