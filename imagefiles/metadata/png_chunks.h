#pragma once

#include "imagefiles/metadata.h"
#include "imagefiles/metadata/blocks.h"

namespace tessarine {

/// Whether decoding changes the tones of a file by its gamma: its colour profile then tells of
/// others.
bool appliesGamma(Bytes png);

/// The blocks of a file, each whole or told of as left out; they end where the file is damaged.
MetadataBlocks blocksInPng(Bytes file, MetadataWanted wanted, LeftOut& leftOut);

/// A whole file with the blocks in it. \throws StatementFailed where it is no PNG file
ByteVector pngWith(Bytes file, const MetadataBlocks& blocks);

}  // namespace tessarine
