#pragma once

#include "imagefiles/metadata/blocks.h"

namespace tessarine {

/// Bytes of one value of a kind in a TIFF structure; 1 for kinds that do not exist.
uint64_t bytesOfKind(uint32_t kind);

/// The numbers of a TIFF structure.
class Structure {
  public:
    explicit Structure(ByteVector& bytes);

    /// \param size  2 or 4 bytes
    /// \throws StatementFailed for a place outside
    uint32_t number(uint64_t place, size_t size) const;
    size_t size() const { return bytes_.size(); }
    /// Sets bytes to 0, in so far as they are there.
    void clear(uint64_t place, uint64_t count);
    /// The same for a picture; one at the end is cut off, if it lies behind a place.
    void clearPicture(uint64_t place, uint64_t count, uint64_t behind);
    /// Whether a JPEG file begins here; some cameras spoil its first byte.
    bool isJpegAt(uint64_t place) const;

  private:
    ByteVector& bytes_;
    bool isBig_;
};

/// Takes the second directory of EXIF out, which is the thumbnail's, and those behind it, and
/// clears their pictures and values. All else stays at its place: makers count places from the
/// block's start.
void cutThumbnail(ByteVector& exif);

}  // namespace tessarine
