#include "imagefiles/metadata/png_chunks.h"

#include <zlib.h>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/resources.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

using namespace std::string_view_literals;

constexpr auto signature = "\x89PNG\r\n\x1a\n"sv;
constexpr size_t endOfHeader = 8 + 12 + 13;

void appendChunk(ByteVector& bytes, std::string_view kind, Bytes contents) {
    append32(bytes, contents.size());
    const size_t start = bytes.size();
    append(bytes, kind);
    append(bytes, contents);
    append32(bytes, crc32(0, bytes.data() + start, static_cast<uInt>(bytes.size() - start)));
}

void appendDeflated(ByteVector& bytes, Bytes contents) {
    const size_t start = bytes.size();
    uLongf room = compressBound(contents.size());
    bytes.resize(start + room);
    if (compress(bytes.data() + start, &room, contents.data(), contents.size()) != Z_OK)
        refuse("it cannot be packed");
    bytes.resize(start + room);
}

/// A block in hexadecimal digits with a head that tells its length: how PNG files hold what has no
/// chunk of its own.
ByteVector inDigits(std::string_view name, Bytes block) {
    constexpr size_t bytesInLine = 36;
    constexpr auto digits = "0123456789abcdef"sv;
    std::string length = std::to_string(block.size());
    length.insert(0, length.size() < 8 ? 8 - length.size() : 0, ' ');
    ByteVector text;
    append(text, "\n" + std::string(name) + "\n" + length);
    for (size_t i = 0; i < block.size(); ++i) {
        if (i % bytesInLine == 0) text.push_back('\n');
        text.push_back(static_cast<uint8_t>(digits[block[i] >> 4]));
        text.push_back(static_cast<uint8_t>(digits[block[i] & 15]));
    }
    text.push_back('\n');
    return text;
}

}  // namespace

bool appliesGamma(Bytes png) {
    bool applies = false;
    attempt([&] {
        ByteReader reader(png);
        reader.seek(signature.size());
        for (;;) {
            const uint32_t length = reader.u32be();
            const Bytes kind = reader.take(4);
            const Bytes contents = reader.take(length);
            reader.skip(4);
            if (startsWith(kind, "IDAT")) return;
            if (!startsWith(kind, "gAMA")) continue;
            // In parts of 100000. The library leaves tones alone that are off by less than 5%.
            const double exponent = ByteReader(contents).u32be() / 1e5 * 2.2;
            applies = exponent < 0.95 || exponent > 1.05;
            return;
        }
    });
    return applies;
}

ByteVector pngWith(Bytes file, const MetadataBlocks& blocks) {
    if (!startsWith(file, signature) || file.size() < endOfHeader) refuse("this is no PNG file");
    ByteVector ours;
    if (!blocks.icc.empty()) {
        ByteVector contents;
        append(contents, "ICC profile\0\0"sv);
        appendDeflated(contents, blocks.icc);
        appendChunk(ours, "iCCP", contents);
    }
    if (!blocks.exif.empty()) appendChunk(ours, "eXIf", blocks.exif);
    if (!blocks.iptc.empty()) {
        ByteVector contents;
        append(contents, "Raw profile type iptc\0\0"sv);
        appendDeflated(contents, inDigits("iptc", iptcResource(blocks.iptc)));
        appendChunk(ours, "zTXt", contents);
    }
    if (!blocks.xmp.empty()) {
        ByteVector contents;
        append(contents, "XML:com.adobe.xmp\0\0\0\0\0"sv);
        append(contents, blocks.xmp);
        appendChunk(ours, "iTXt", contents);
    }
    ByteVector bytes;
    bytes.reserve(file.size() + ours.size());
    append(bytes, file.first(endOfHeader));
    append(bytes, ours);
    append(bytes, file.subspan(endOfHeader));
    return bytes;
}

}  // namespace tessarine
