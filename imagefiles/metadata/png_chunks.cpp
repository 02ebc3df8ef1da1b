#include "imagefiles/metadata/png_chunks.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <zlib.h>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/marks.h"
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

/// What went into a block and is larger than anything that is kept.
class TooLarge : public StatementFailed {
  public:
    TooLarge() : StatementFailed("it is too large") {}
};

/// \throws StatementFailed where the bytes are damaged, TooLarge for more than is kept
ByteVector inflated(Bytes bytes) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> atEnd(&stream, &inflateEnd);
    stream.next_in = const_cast<uint8_t*>(bytes.data());  // it is not written
    stream.avail_in = static_cast<uInt>(bytes.size());
    ByteVector contents;
    int result = Z_OK;
    while (result == Z_OK) {
        const size_t place = contents.size();
        if (place > mostMetadataBytes) throw TooLarge();
        contents.resize(std::max<size_t>(place * 2, 4096));
        stream.next_out = contents.data() + place;
        stream.avail_out = static_cast<uInt>(contents.size() - place);
        result = inflate(&stream, Z_NO_FLUSH);
        contents.resize(contents.size() - stream.avail_out);
    }
    if (result != Z_STREAM_END) refuse("it is damaged");
    return contents;
}

/// What stands before the next byte of 0, which is passed over.
std::string_view upToNull(ByteReader& reader) {
    const size_t start = reader.position();
    while (reader.u8() != 0) {
    }
    const size_t length = reader.position() - start - 1;
    reader.seek(start);
    const Bytes text = reader.take(length);
    reader.skip(1);
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

/// What stands behind the name of a chunk of text or of a profile, unpacked.
ByteVector contentsBehindName(Bytes kind, ByteReader reader) {
    bool isDeflated = startsWith(kind, "zTXt") || startsWith(kind, "iCCP");
    if (startsWith(kind, "iTXt")) isDeflated = reader.u8() != 0;
    if (!startsWith(kind, "tEXt") && reader.u8() != 0) refuse("it is packed in an unknown way");
    if (startsWith(kind, "iTXt")) {
        upToNull(reader);  // the language
        upToNull(reader);  // the name in it
    }
    const Bytes rest = reader.rest();
    return isDeflated ? inflated(rest) : ByteVector(rest.begin(), rest.end());
}

/// The other way of inDigits(). \throws StatementFailed where it is none
ByteVector fromDigits(Bytes text) {
    ByteReader reader(text);
    const auto line = [&] {
        std::string characters;
        for (uint8_t c = reader.u8(); c != '\n'; c = reader.u8())
            characters += static_cast<char>(c);
        return characters;
    };
    line();
    line();  // the name
    const std::string length = line();
    const size_t count = std::strtoul(length.c_str(), nullptr, 10);
    if (count > text.size() / 2) refuse("it ends early");
    ByteVector block;
    const auto digit = [&]() -> uint8_t {
        for (;;) {
            const uint8_t c = reader.u8();
            if (c >= '0' && c <= '9') return static_cast<uint8_t>(c - '0');
            const uint8_t lower = c | 0x20;
            if (lower >= 'a' && lower <= 'f') return static_cast<uint8_t>(lower - 'a' + 10);
            if (c != '\n' && c != '\r' && c != ' ') refuse("this is no digit");
        }
    };
    while (block.size() < count) {
        const uint8_t high = digit();
        block.push_back(static_cast<uint8_t>(high << 4 | digit()));
    }
    return block;
}

Bytes without(std::string_view mark, Bytes bytes) {
    return startsWith(bytes, mark) ? bytes.subspan(mark.size()) : bytes;
}

/// Takes the blocks out of chunks. The first of a kind counts.
class Chunks {
  public:
    Chunks(MetadataWanted wanted, LeftOut& leftOut)
        : wantsAll_(wanted == MetadataWanted::all), leftOut_(leftOut) {}

    void take(Bytes kind, Bytes contents) {
        if (startsWith(kind, "eXIf")) {
            into(blocks.exif, "EXIF", [&] { return asVector(without(marks::exif, contents)); });
        } else if (startsWith(kind, "iCCP")) {
            into(blocks.icc, "the colour profile", [&] {
                ByteReader reader(contents);
                upToNull(reader);
                return contentsBehindName(kind, reader);
            });
        } else if (startsWith(kind, "tEXt") || startsWith(kind, "zTXt") ||
                   startsWith(kind, "iTXt")) {
            attempt([&] {
                ByteReader reader(contents);
                const std::string_view name = upToNull(reader);
                takeText(name, kind, reader);
            });
        }
    }

    MetadataBlocks blocks;

  private:
    static ByteVector asVector(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

    void takeText(std::string_view name, Bytes kind, const ByteReader& reader) {
        const auto text = [&] { return contentsBehindName(kind, reader); };
        const auto block = [&] { return fromDigits(text()); };
        if (name == "XML:com.adobe.xmp")
            into(blocks.xmp, "XMP", text);
        else if (name == "Raw profile type xmp")
            into(blocks.xmp, "XMP", [&] { return asVector(without(marks::xmp, block())); });
        else if (name == "Raw profile type iptc")
            into(blocks.iptc, "IPTC", [&] { return iptcOf(block()); });
        else if (name == "Raw profile type exif" || name == "Raw profile type APP1")
            takeApp1(block);
    }
    /// What stands in the segment of a JPEG file: EXIF, or now and then XMP.
    template <class Make>
    void takeApp1(Make make) {
        ByteVector block;
        into(block, "EXIF", make);
        const bool isXmp = startsWith(block, marks::xmp);
        const std::string_view mark = isXmp ? marks::xmp : marks::exif;
        ByteVector& target = isXmp ? blocks.xmp : blocks.exif;
        if (target.empty()) target = asVector(without(mark, block));
    }
    static ByteVector iptcOf(const ByteVector& block) {
        const Bytes resources = without(marks::resources, block);
        return startsWith(resources, "8BIM") ? blocksInResources(resources).iptc : block;
    }
    template <class Make>
    void into(ByteVector& block, const char* name, Make make) {
        const bool isWanted = wantsAll_ || name == std::string_view("EXIF");
        if (!isWanted || !block.empty()) return;
        try {
            block = make();
        } catch (const TooLarge&) {
            leftOut_.add(name + std::string(", which is more than is kept of a picture"));
        } catch (const StatementFailed&) {
            leftOut_.add(name + std::string(", which is damaged"));
        }
    }

    bool wantsAll_;
    LeftOut& leftOut_;
};

}  // namespace

MetadataBlocks blocksInPng(Bytes file, MetadataWanted wanted, LeftOut& leftOut) {
    Chunks chunks(wanted, leftOut);
    attempt([&] {
        if (!startsWith(file, signature)) return;
        ByteReader reader(file);
        reader.seek(signature.size());
        for (;;) {
            const uint32_t length = reader.u32be();
            const Bytes kind = reader.take(4);
            const Bytes contents = reader.take(length);
            if (startsWith(kind, "IEND")) return;
            reader.skip(4);  // what its bytes add up to
            chunks.take(kind, contents);
        }
    });
    return std::move(chunks.blocks);
}

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
