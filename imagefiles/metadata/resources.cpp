#include "imagefiles/metadata/resources.h"

#include <algorithm>
#include <array>

#include "imagefiles/decoding.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

struct Resource {
    uint16_t number;
    ByteVector MetadataBlocks::*block;
};
constexpr std::array<Resource, 4> known{{{0x0404, &MetadataBlocks::iptc},
                                         {0x040F, &MetadataBlocks::icc},
                                         {0x0422, &MetadataBlocks::exif},
                                         {0x0424, &MetadataBlocks::xmp}}};

constexpr size_t bytesOfHeader = 26;

void appendResource(ByteVector& bytes, uint16_t number, Bytes contents) {
    append(bytes, "8BIM");
    append16(bytes, number);
    append16(bytes, 0);  // no name
    append32(bytes, contents.size());
    append(bytes, contents);
    if (contents.size() % 2 != 0) bytes.push_back(0);
}

/// A reader that stands where the resources' length does.
ByteReader atResources(Bytes file) {
    ByteReader reader(file);
    if (!startsWith(file, "8BPS")) refuse("this is no Photoshop file");
    reader.seek(bytesOfHeader);
    reader.skip(reader.u32be());
    return reader;
}

}  // namespace

MetadataBlocks blocksInResources(Bytes resources) {
    MetadataBlocks blocks;
    attempt([&] {
        ByteReader reader(resources);
        while (reader.remaining() > 0) {
            const Bytes mark = reader.take(4);
            const std::string_view marks[] = {"8BIM", "PHUT", "AgHg", "DCSR", "MeSa"};
            if (std::none_of(std::begin(marks), std::end(marks),
                             [&](std::string_view one) { return startsWith(mark, one); }))
                return;
            const uint16_t number = reader.u16be();
            reader.skip(reader.u8() | 1u);  // the name fills up pairs with its length
            const Bytes contents = reader.take(reader.u32be());
            for (const Resource& resource : known)
                if (resource.number == number && (blocks.*resource.block).empty())
                    (blocks.*resource.block).assign(contents.begin(), contents.end());
            if (contents.size() % 2 != 0 && reader.remaining() > 0) reader.skip(1);
        }
    });
    return blocks;
}

ByteVector iptcResource(Bytes iptc) {
    ByteVector bytes;
    appendResource(bytes, 0x0404, iptc);
    return bytes;
}

MetadataBlocks blocksInPsd(Bytes file) {
    MetadataBlocks blocks;
    attempt([&] {
        ByteReader reader = atResources(file);
        const uint32_t length = reader.u32be();
        blocks = blocksInResources(reader.take(length));
    });
    return blocks;
}

ByteVector psdWith(Bytes file, const MetadataBlocks& blocks) {
    ByteReader reader = atResources(file);
    const size_t place = reader.position();
    const Bytes there = reader.take(reader.u32be());
    ByteVector ours;
    for (const Resource& resource : known)
        if (!(blocks.*resource.block).empty())
            appendResource(ours, resource.number, blocks.*resource.block);
    ByteVector bytes;
    bytes.reserve(file.size() + ours.size());
    append(bytes, file.first(place));
    append32(bytes, there.size() + ours.size());
    append(bytes, there);
    append(bytes, ours);
    append(bytes, reader.rest());
    return bytes;
}

}  // namespace tessarine
