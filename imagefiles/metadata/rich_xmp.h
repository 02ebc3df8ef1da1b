#pragma once

#include <optional>

#include "imagefiles/metadata/blocks.h"

// XMP of more words than can be taken apart: the library looks through all of a packet's words for
// each of them.

namespace tessarine {

/// The most properties and fields of a packet that is kept. Items of lists do not count: long lists
/// are common, and cost little.
constexpr size_t mostWordsOfXmp = 8000;

/// Whether a packet has more words than that, as they are counted without taking it apart.
bool isTooRich(Bytes xmp);

/// A packet of that kind in the first directory of a TIFF structure.
struct RichXmp {
    size_t placeOfCount = 0;  ///< in the structure: how many bytes the packet is said to have
    Bytes packet;
};

/// The first of them; nothing where there is none.
std::optional<RichXmp> richXmpIn(Bytes tiff);
/// Has a structure say that its packet is empty, so that the library does not take it apart.
void hide(const RichXmp& xmp, ByteVector& tiff);

}  // namespace tessarine
