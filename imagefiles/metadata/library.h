#pragma once

#include <exiv2/exiv2.hpp>
#include <mutex>
#include <string>

#include "imagefiles/metadata/blocks.h"

// What is known of the metadata library in other source files of this folder. It throws
// Exiv2::Error, and whatever the standard library throws.

namespace tessarine {

/// The library, for one thread at a time. Names that a packet of XMP gives to its own kinds of
/// words are forgotten with this object: no picture's output depends on those before it.
class MetadataLibrary {
  public:
    MetadataLibrary();
    ~MetadataLibrary();
    MetadataLibrary(const MetadataLibrary&) = delete;
    MetadataLibrary& operator=(const MetadataLibrary&) = delete;

    /// Whether it told of damage since this was asked last.
    bool sawDamage();

  private:
    std::lock_guard<std::mutex> lock_;
};

/// What is to become of metadata with its picture.
struct MetadataChanges {
    int32_t width = 0;  ///< of the picture that is written
    int32_t height = 0;
    bool isTurned = false;
    bool withoutLocation = false;
    /// The picture that was read told of another size, in whatever block.
    bool hasOtherSize = false;
};

/// Whether EXIF tells of another size than the picture has that is written. \throws as the library
bool tellsOtherSize(const ByteVector& exif, const MetadataChanges& changes);
/// Has a block tell of the picture that is written, and not of the one that was read.
/// \throws as the library, where it is too damaged for that
void adjustExif(ByteVector& exif, const MetadataChanges& changes, MetadataLibrary& library,
                LeftOut& leftOut);
/// Notes in the changes whether the packet tells of another size.
void adjustXmp(ByteVector& xmp, MetadataChanges& changes);
void adjustIptc(ByteVector& iptc, const MetadataChanges& changes);

/// 1 to 8. \throws as the library, where the block is damaged as a whole
uint8_t orientationIn(const ByteVector& exif);
/// \throws as the library, where the packet is damaged
Exiv2::XmpData xmpIn(const ByteVector& xmp);
/// \throws as the library, where the sets are damaged
Exiv2::IptcData iptcIn(const ByteVector& iptc);

/// Whether a tag of a TIFF file's directories tells how it stores pixels.
bool isTagOfStorage(uint16_t tag);
/// Whether a tag of the first directory tells how its file stores pixels, or holds another block.
bool tellsOfStorage(const Exiv2::Exifdatum& datum);
/// EXIF in pieces as one block; what tells how a TIFF file stores its pixels is left out.
ByteVector exifBlock(Exiv2::ExifData data, Exiv2::ByteOrder order, LeftOut& leftOut);

/// XMP that is too rich comes as it stands.
MetadataBlocks blocksInTiff(Bytes file, LeftOut& leftOut);
/// Whether a file is a TIFF file with places of 64 bits, which the library does not read, and its
/// first directory holds more than the storing of pixels takes.
bool isBigTiffWithWords(Bytes file);
/// A whole TIFF file with the blocks in it.
ByteVector tiffWith(Bytes file, const MetadataBlocks& blocks);

}  // namespace tessarine
