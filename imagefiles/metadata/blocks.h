#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "imagefiles/picture_source.h"

namespace tessarine {

using ByteVector = std::vector<uint8_t>;

/// The blocks of metadata as all containers hold them; empty where there is none.
struct MetadataBlocks {
    ByteVector exif;  ///< a TIFF structure, from its byte order on
    ByteVector iptc;  ///< data sets, from their first mark on
    ByteVector xmp;   ///< a packet
    ByteVector icc;   ///< a colour profile

    bool areEmpty() const { return exif.empty() && iptc.empty() && xmp.empty() && icc.empty(); }

    friend bool operator==(const MetadataBlocks&, const MetadataBlocks&) = default;
};

/// Collects what was left out.
class LeftOut {
  public:
    void add(const std::string& what) { text_ += (text_.empty() ? "" : "; ") + what; }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

/// One piece of bytes, in so far as it fits: what does not is left out whole.
ByteVector packed(const MetadataBlocks& blocks, size_t mostBytes, LeftOut& leftOut);
/// The other way round; nothing where the bytes are no such piece.
std::optional<MetadataBlocks> unpacked(Bytes bytes);

/// Cuts off what stands behind the end of a colour profile: some files have it filled up.
void cutToSize(ByteVector& icc);
/// Why a colour profile does not fit a picture in red, green and blue; empty where it does.
std::string whyNoProfile(Bytes icc);

void append(ByteVector& bytes, Bytes more);
void append(ByteVector& bytes, std::string_view text);
void append16(ByteVector& bytes, size_t number);  ///< the high byte first
void append32(ByteVector& bytes, size_t number);

}  // namespace tessarine
