#include "imagefiles/metadata/jpeg_segments.h"

#include <algorithm>
#include <map>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/marks.h"
#include "imagefiles/metadata/resources.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr size_t mostContents = 65533;

/// The segments of a file that metadata is in.
class Segments {
  public:
    explicit Segments(LeftOut& leftOut) : leftOut_(leftOut) {}

    void take(uint8_t kind, Bytes contents) {
        if (kind == 0xE1) {
            takeFirst(blocks_.exif, contents, marks::exif);
            takeFirst(blocks_.xmp, contents, marks::xmp);
            takeFirst(blocks_.xmp, contents, marks::oddXmp);
            hasMoreXmp_ = hasMoreXmp_ || startsWith(contents, marks::moreXmp);
        } else if (kind == 0xE2 && startsWith(contents, marks::profile)) {
            takeProfile(contents.subspan(marks::profile.size()));
        } else if (kind == 0xED && startsWith(contents, marks::resources)) {
            append(resources_, contents.subspan(marks::resources.size()));
        }
    }

    MetadataBlocks blocks() && {
        blocks_.iptc = blocksInResources(resources_).iptc;
        // Pictures in text: depths, and what the camera saw besides.
        if (hasMoreXmp_) leftOut_.add("the extended part of XMP");
        // Parts are counted from 1.
        const bool isWhole =
            profile_.empty() || (profile_.size() == profileParts_ && profile_.begin()->first == 1 &&
                                 profile_.rbegin()->first == profileParts_);
        for (const auto& [number, part] : profile_)
            append(blocks_.icc, part);
        if (!isWhole) {
            blocks_.icc.clear();
            leftOut_.add("the colour profile, of which a part is missing");
        }
        return std::move(blocks_);
    }

  private:
    static void takeFirst(ByteVector& block, Bytes contents, std::string_view mark) {
        if (!block.empty() || !startsWith(contents, mark)) return;
        const Bytes rest = contents.subspan(mark.size());
        block.assign(rest.begin(), rest.end());
    }
    void takeProfile(Bytes part) {
        if (part.size() < 2) return;
        profileParts_ = part[1];
        profile_.emplace(part[0], part.subspan(2));
    }

    LeftOut& leftOut_;
    MetadataBlocks blocks_;
    bool hasMoreXmp_ = false;
    ByteVector resources_;
    size_t profileParts_ = 0;
    std::map<uint8_t, Bytes> profile_;
};

void appendSegment(ByteVector& bytes, uint8_t kind, std::string_view mark, Bytes contents) {
    bytes.push_back(0xFF);
    bytes.push_back(kind);
    append16(bytes, mark.size() + contents.size() + 2);
    append(bytes, mark);
    append(bytes, contents);
}

void appendProfile(ByteVector& bytes, Bytes icc, LeftOut& leftOut) {
    const size_t most = mostContents - marks::profile.size() - 2;
    const size_t parts = (icc.size() + most - 1) / most;
    if (parts > 255) return leftOut.add("the colour profile, which is too large for a JPEG file");
    for (size_t i = 0; i < parts; ++i) {
        std::string mark(marks::profile);
        mark += static_cast<char>(i + 1);
        mark += static_cast<char>(parts);
        appendSegment(bytes, 0xE2, mark,
                      icc.subspan(i * most, std::min(most, icc.size() - i * most)));
    }
}

}  // namespace

MetadataBlocks blocksInJpeg(Bytes file, LeftOut& leftOut) {
    Segments segments(leftOut);
    attempt([&] {
        ByteReader reader(file);
        if (reader.u16be() != 0xFFD8) return;
        for (;;) {
            // As in decoding, whatever stands between one segment and the next mark is passed over.
            while (reader.u8() != 0xFF) {
            }
            uint8_t kind = 0xFF;
            while (kind == 0xFF)
                kind = reader.u8();
            const bool isAlone = kind <= 0x01 || (kind >= 0xD0 && kind <= 0xD8);
            if (kind == 0xDA || kind == 0xD9) return;  // pixels, or the end
            if (isAlone) continue;
            const uint16_t length = reader.u16be();
            if (length < 2) return;
            segments.take(kind, reader.take(length - 2u));
        }
    });
    return std::move(segments).blocks();
}

ByteVector jpegWith(Bytes file, const MetadataBlocks& blocks, LeftOut& leftOut) {
    ByteVector ours;
    if (blocks.exif.size() > mostExifBytes)
        leftOut.add("EXIF, which is too large for a JPEG file");
    else if (!blocks.exif.empty())
        appendSegment(ours, 0xE1, marks::exif, blocks.exif);
    if (blocks.xmp.size() > mostContents - marks::xmp.size())
        leftOut.add("XMP, which is too large for a JPEG file");
    else if (!blocks.xmp.empty())
        appendSegment(ours, 0xE1, marks::xmp, blocks.xmp);
    if (!blocks.iptc.empty()) {
        const ByteVector resource = iptcResource(blocks.iptc);
        if (resource.size() > mostContents - marks::resources.size())
            leftOut.add("IPTC, which is too large for a JPEG file");
        else
            appendSegment(ours, 0xED, marks::resources, resource);
    }
    appendProfile(ours, blocks.icc, leftOut);

    // Behind the segment that says what kind of file this is.
    ByteReader reader(file);
    if (reader.u16be() != 0xFFD8) refuse("this is no JPEG file");
    if (reader.u16be() == 0xFFE0)
        reader.skip(reader.u16be() - 2u);
    else
        reader.seek(2);
    ByteVector bytes;
    bytes.reserve(file.size() + ours.size());
    append(bytes, file.first(reader.position()));
    append(bytes, ours);
    append(bytes, reader.rest());
    return bytes;
}

}  // namespace tessarine
