#include "imagefiles/metadata/blocks.h"

#include <array>

#include "imagefiles/decoding.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

/// In the order in which they are packed: what a person would miss most comes first.
struct Part {
    const char* name;
    ByteVector MetadataBlocks::*block;
};
constexpr std::array<Part, 4> parts{{{"EXIF", &MetadataBlocks::exif},
                                     {"the colour profile", &MetadataBlocks::icc},
                                     {"IPTC", &MetadataBlocks::iptc},
                                     {"XMP", &MetadataBlocks::xmp}}};
constexpr size_t bytesOfLengths = parts.size() * 4;

}  // namespace

void append(ByteVector& bytes, Bytes more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void append(ByteVector& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void append16(ByteVector& bytes, size_t number) {
    bytes.push_back(static_cast<uint8_t>(number >> 8));
    bytes.push_back(static_cast<uint8_t>(number));
}

void append32(ByteVector& bytes, size_t number) {
    append16(bytes, number >> 16);
    append16(bytes, number);
}

ByteVector packed(const MetadataBlocks& blocks, size_t mostBytes, LeftOut& leftOut) {
    ByteVector bytes;
    if (blocks.areEmpty() || mostBytes < bytesOfLengths) return bytes;
    ByteVector contents;
    for (const Part& part : parts) {
        const ByteVector& block = blocks.*part.block;
        const bool fits = block.size() <= mostBytes - bytesOfLengths - contents.size();
        if (!fits)
            leftOut.add(part.name + std::string(" of ") + std::to_string(block.size()) +
                        " bytes, more than is kept of a picture");
        append32(bytes, fits ? block.size() : 0);
        if (fits) append(contents, block);
    }
    append(bytes, contents);
    return bytes;
}

std::optional<MetadataBlocks> unpacked(Bytes bytes) {
    MetadataBlocks blocks;
    if (bytes.empty()) return blocks;
    std::optional<MetadataBlocks> result;
    attempt([&] {
        ByteReader lengths(bytes);
        ByteReader contents(bytes);
        contents.seek(bytesOfLengths);
        for (const Part& part : parts) {
            const Bytes block = contents.take(lengths.u32be());
            (blocks.*part.block).assign(block.begin(), block.end());
        }
        if (contents.remaining() == 0) result = std::move(blocks);
    });
    return result;
}

void cutToSize(ByteVector& icc) {
    attempt([&] {
        const uint32_t size = ByteReader(icc).u32be();
        if (size < icc.size()) icc.resize(size);
    });
}

std::string whyNoProfile(Bytes icc) {
    constexpr size_t shortest = 132;  // the header, and the number of its tags
    constexpr size_t placeOfSpace = 16;
    constexpr size_t placeOfMark = 36;
    std::string why = "it is damaged";
    attempt([&] {
        ByteReader reader(icc);
        const uint32_t size = reader.u32be();
        if (size < shortest || size > icc.size()) return;
        reader.seek(placeOfMark);
        if (!startsWith(reader.take(4), "acsp")) return;
        reader.seek(placeOfSpace);
        const Bytes space = reader.take(4);
        const bool isGrey = startsWith(space, "GRAY");
        why = startsWith(space, "RGB ") ? ""
              : isGrey                  ? "it is for grey pictures, and this one is written in RGB"
              : startsWith(space, "CMYK") ? "it is for CMYK, and the picture is written in RGB"
                                          : "it is not for RGB, in which the picture is written";
    });
    return why;
}

}  // namespace tessarine
