#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/library.h"
#include "imagefiles/metadata/rich_xmp.h"
#include "pixels/failures.h"

// Files whose metadata the library finds, or puts into its place, by itself.

namespace tessarine {

namespace {

/// In a pointer that the language still has.
std::unique_ptr<Exiv2::Image> opened(Bytes file) {
    std::unique_ptr<Exiv2::Image> image(
        Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size())).release());
    image->readMetadata();
    return image;
}

ByteVector bytesOf(const Exiv2::DataBuf& buffer) {
    return {buffer.pData_, buffer.pData_ + buffer.size_};
}

// ---- The resolution of a TIFF file ----

constexpr uint16_t resolutionX = 282;
constexpr uint16_t resolutionY = 283;
constexpr uint16_t resolutionUnit = 296;

struct Entry {
    uint16_t tag;
    std::array<uint8_t, 10> rest;  ///< kind, count, and the value or its place
};

void appendLow(ByteVector& bytes, uint32_t number, size_t count) {
    for (size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<uint8_t>(number >> (8 * i)));
}

Entry entryOf(uint16_t tag, uint16_t kind, uint32_t value) {
    ByteVector bytes;
    appendLow(bytes, kind, 2);
    appendLow(bytes, 1, 4);
    appendLow(bytes, value, 4);
    Entry entry{tag, {}};
    std::copy(bytes.begin(), bytes.end(), entry.rest.begin());
    return entry;
}

/// A file with the dots an inch or a centimetre that EXIF tells. The library takes them for part of
/// how pixels are stored, and leaves them as the file has them: it gets a directory with them, at
/// its end. \throws StatementFailed where the file's bytes are in the other order
ByteVector withResolution(Bytes file, const Exiv2::ExifData& exif) {
    ByteVector bytes(file.begin(), file.end());
    const auto x = exif.findKey(Exiv2::ExifKey("Exif.Image.XResolution"));
    const auto y = exif.findKey(Exiv2::ExifKey("Exif.Image.YResolution"));
    const auto unit = exif.findKey(Exiv2::ExifKey("Exif.Image.ResolutionUnit"));
    if (x == exif.end() || y == exif.end()) return bytes;
    if (!startsWith(file, "II")) refuse("its numbers have the other order");

    ByteReader reader(file);
    reader.seek(4);
    reader.seek(reader.u32le());
    std::vector<Entry> entries(reader.u16le());
    for (Entry& entry : entries) {
        entry.tag = reader.u16le();
        const Bytes rest = reader.take(entry.rest.size());
        std::copy(rest.begin(), rest.end(), entry.rest.begin());
    }
    std::erase_if(entries, [](const Entry& entry) {
        return entry.tag == resolutionX || entry.tag == resolutionY || entry.tag == resolutionUnit;
    });
    const uint32_t next = reader.u32le();

    constexpr uint16_t shortKind = 3;
    constexpr uint16_t rationalKind = 5;
    bytes.resize((bytes.size() + 3) / 4 * 4);
    for (const auto& [tag, datum] : {std::pair(resolutionX, x), std::pair(resolutionY, y)}) {
        const Exiv2::Rational value = datum->toRational();
        entries.push_back(entryOf(tag, rationalKind, static_cast<uint32_t>(bytes.size())));
        appendLow(bytes, static_cast<uint32_t>(value.first), 4);
        appendLow(bytes, static_cast<uint32_t>(value.second), 4);
    }
    const long inches = 2;
    const long units = unit == exif.end() ? inches : unit->toLong();
    entries.push_back(entryOf(resolutionUnit, shortKind, static_cast<uint32_t>(units)));
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
    ByteVector place;
    appendLow(place, static_cast<uint32_t>(bytes.size()), 4);
    std::copy(place.begin(), place.end(), bytes.begin() + 4);
    appendLow(bytes, static_cast<uint32_t>(entries.size()), 2);
    for (const Entry& entry : entries) {
        appendLow(bytes, entry.tag, 2);
        append(bytes, Bytes(entry.rest));
    }
    appendLow(bytes, next, 4);
    return bytes;
}

}  // namespace

bool isBigTiffWithWords(Bytes file) {
    constexpr uint16_t orientation = 274;
    bool hasWords = false;
    attempt([&] {
        const bool isBigEndian = startsWith(file, "MM");
        if (!isBigEndian && !startsWith(file, "II")) return;
        ByteReader reader(file);
        const auto number = [&](size_t bytes) {
            uint64_t value = 0;
            const Bytes raw = reader.take(bytes);
            for (size_t i = 0; i < bytes; ++i)
                value = value << 8 | raw[isBigEndian ? i : bytes - 1 - i];
            return value;
        };
        reader.seek(2);
        if (number(2) != 43) return;
        reader.seek(8);
        reader.seek(number(8));
        for (uint64_t entries = number(8); entries > 0 && !hasWords; --entries) {
            const auto tag = static_cast<uint16_t>(number(2));
            reader.skip(10);  // kind and count
            const uint64_t value = number(8);
            const bool isUpright =
                tag == orientation && (isBigEndian ? value >> 48 : value & 0xFFFF) <= 1;
            hasWords = !isUpright && !isTagOfStorage(tag) && tag != resolutionX &&
                       tag != resolutionY && tag != resolutionUnit;
        }
    });
    return hasWords;
}

MetadataBlocks blocksInTiff(Bytes file, LeftOut& leftOut) {
    MetadataBlocks blocks;
    if (Exiv2::ImageFactory::getType(file.data(), static_cast<long>(file.size())) !=
        Exiv2::ImageType::tiff)
        return blocks;
    if (const std::optional<RichXmp> rich = richXmpIn(file)) {
        ByteVector copy(file.begin(), file.end());
        hide(*rich, copy);
        blocks = blocksInTiff(copy, leftOut);
        blocks.xmp.assign(rich->packet.begin(), rich->packet.end());
        return blocks;
    }
    const std::unique_ptr<Exiv2::Image> image = opened(file);
    blocks.exif = exifBlock(image->exifData(), image->byteOrder(), leftOut);
    if (!image->iptcData().empty())
        blocks.iptc = bytesOf(Exiv2::IptcParser::encode(image->iptcData()));
    const std::string& packet = image->xmpPacket();
    blocks.xmp.assign(packet.begin(), packet.end());
    if (image->iccProfileDefined()) blocks.icc = bytesOf(*image->iccProfile());
    return blocks;
}

ByteVector tiffWith(Bytes file, const MetadataBlocks& blocks) {
    Exiv2::ExifData exif;
    if (!blocks.exif.empty())
        Exiv2::ExifParser::decode(exif, blocks.exif.data(),
                                  static_cast<uint32_t>(blocks.exif.size()));
    const ByteVector source = withResolution(file, exif);
    const std::unique_ptr<Exiv2::Image> image = opened(source);
    Exiv2::ExifData& target = image->exifData();
    for (const Exiv2::Exifdatum& datum : exif) {
        if (tellsOfStorage(datum)) continue;
        const auto there = target.findKey(Exiv2::ExifKey(datum.key()));
        if (there != target.end()) target.erase(there);
        target.add(datum);
    }
    if (!blocks.iptc.empty()) image->setIptcData(iptcIn(blocks.iptc));
    if (!blocks.xmp.empty()) image->setXmpPacket(std::string(blocks.xmp.begin(), blocks.xmp.end()));
    if (!blocks.icc.empty()) {
        Exiv2::DataBuf profile(blocks.icc.data(), static_cast<long>(blocks.icc.size()));
        image->setIccProfile(profile);
    }
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    io.open();
    return bytesOf(io.read(static_cast<long>(io.size())));
}

}  // namespace tessarine
