#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// EXIF by hand: made and read without the library that the system goes by.

namespace tessarine::tests {

using ByteString = std::vector<uint8_t>;

inline ByteString bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

inline void put(ByteString& bytes, uint64_t number, size_t count) {
    for (size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<uint8_t>(number >> (8 * i)));
}

/// One entry of a directory, with its value in the low byte first.
struct ExifEntry {
    uint16_t kind = 0;
    uint32_t count = 0;
    ByteString value;
};

inline ExifEntry asShort(uint16_t number) {
    ExifEntry entry{3, 1, {}};
    put(entry.value, number, 2);
    return entry;
}
inline ExifEntry asLong(uint32_t number) {
    ExifEntry entry{4, 1, {}};
    put(entry.value, number, 4);
    return entry;
}
inline ExifEntry asText(const std::string& text) {
    ExifEntry entry{2, static_cast<uint32_t>(text.size() + 1), bytesOf(text)};
    entry.value.push_back(0);
    return entry;
}
inline ExifEntry asBytes(const ByteString& bytes) {
    return {7, static_cast<uint32_t>(bytes.size()), bytes};
}
inline ExifEntry asRationals(const std::vector<std::pair<uint32_t, uint32_t>>& numbers) {
    ExifEntry entry{5, static_cast<uint32_t>(numbers.size()), {}};
    for (const auto& [above, below] : numbers) {
        put(entry.value, above, 4);
        put(entry.value, below, 4);
    }
    return entry;
}

using ExifDirectory = std::map<uint16_t, ExifEntry>;

/// A block of EXIF. Directories without entries are left out.
struct ExifToMake {
    ExifDirectory image, photo, gps;
    ByteString thumbnail;

    ByteString bytes() const {
        ByteString made = bytesOf("II*");
        put(made, 0, 1);
        put(made, 8, 4);
        ExifDirectory first = image;
        if (!photo.empty()) first[0x8769] = asLong(0);
        if (!gps.empty()) first[0x8825] = asLong(0);
        std::map<uint16_t, size_t> places;
        const size_t link = add(made, first, &places);
        if (!photo.empty()) point(made, places[0x8769], photo);
        if (!gps.empty()) point(made, places[0x8825], gps);
        if (!thumbnail.empty()) {
            set(made, link, made.size());
            std::map<uint16_t, size_t> values;
            add(made,
                {{0x0103, asShort(6)},
                 {0x0201, asLong(0)},
                 {0x0202, asLong(static_cast<uint32_t>(thumbnail.size()))}},
                &values);
            set(made, values[0x0201], made.size());
            made.insert(made.end(), thumbnail.begin(), thumbnail.end());
        }
        return made;
    }

  private:
    static void set(ByteString& made, size_t place, size_t number) {
        for (size_t i = 0; i < 4; ++i)
            made[place + i] = static_cast<uint8_t>(number >> (8 * i));
    }
    static void point(ByteString& made, size_t place, const ExifDirectory& directory) {
        set(made, place, made.size());
        add(made, directory, nullptr);
    }
    /// \return the place of the link to the next directory
    static size_t add(ByteString& made, const ExifDirectory& directory,
                      std::map<uint16_t, size_t>* places) {
        put(made, directory.size(), 2);
        size_t values = made.size() + directory.size() * 12 + 4;
        ByteString outside;
        for (const auto& [tag, entry] : directory) {
            put(made, tag, 2);
            put(made, entry.kind, 2);
            put(made, entry.count, 4);
            if (places != nullptr) (*places)[tag] = made.size();
            if (entry.value.size() <= 4) {
                made.insert(made.end(), entry.value.begin(), entry.value.end());
                made.resize(made.size() + 4 - entry.value.size());
            } else {
                put(made, values + outside.size(), 4);
                outside.insert(outside.end(), entry.value.begin(), entry.value.end());
                outside.resize((outside.size() + 1) / 2 * 2);
            }
        }
        const size_t link = made.size();
        put(made, 0, 4);
        made.insert(made.end(), outside.begin(), outside.end());
        return link;
    }
};

/// What a block of EXIF holds, low byte first.
class ExifRead {
  public:
    explicit ExifRead(ByteString bytes) : bytes_(std::move(bytes)) {
        if (bytes_.size() < 8) return;
        const size_t next = read(at(4, 4), image);
        if (const auto place = image.find(0x8769); place != image.end())
            read(numberOf(place->second), photo);
        if (const auto place = image.find(0x8825); place != image.end())
            read(numberOf(place->second), gps);
        hasThumbnail = next != 0;
    }

    ExifDirectory image, photo, gps;
    bool hasThumbnail = false;

    static uint32_t numberOf(const ExifEntry& entry) {
        uint32_t number = 0;
        for (size_t i = entry.value.size(); i-- > 0;)
            number = number << 8 | entry.value[i];
        return number;
    }
    static std::optional<uint32_t> numberIn(const ExifDirectory& directory, uint16_t tag) {
        const auto found = directory.find(tag);
        if (found == directory.end()) return std::nullopt;
        return numberOf(found->second);
    }
    const ByteString& bytes() const { return bytes_; }
    /// Where the value of an entry beyond four bytes lies.
    size_t placeOf(const ByteString& value) const {
        const auto found = std::search(bytes_.begin(), bytes_.end(), value.begin(), value.end());
        return static_cast<size_t>(found - bytes_.begin());
    }

  private:
    uint32_t at(size_t place, size_t count) const {
        uint32_t number = 0;
        for (size_t i = count; i-- > 0;)
            number = number << 8 | bytes_.at(place + i);
        return number;
    }
    size_t read(size_t place, ExifDirectory& directory) const {
        constexpr size_t sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
        const size_t entries = at(place, 2);
        for (size_t i = 0; i < entries; ++i) {
            const size_t entry = place + 2 + i * 12;
            ExifEntry& read = directory[static_cast<uint16_t>(at(entry, 2))];
            read.kind = static_cast<uint16_t>(at(entry + 2, 2));
            read.count = at(entry + 4, 4);
            const size_t size = sizes[read.kind] * read.count;
            const size_t value = size <= 4 ? entry + 8 : at(entry + 8, 4);
            read.value.assign(bytes_.begin() + static_cast<ptrdiff_t>(value),
                              bytes_.begin() + static_cast<ptrdiff_t>(value + size));
        }
        return at(place + 2 + entries * 12, 4);
    }

    ByteString bytes_;
};

/// A JPEG file with segments behind its first two bytes.
inline ByteString jpegWithSegments(const ByteString& jpeg,
                                   const std::vector<std::pair<uint8_t, ByteString>>& segments) {
    ByteString made(jpeg.begin(), jpeg.begin() + 2);
    for (const auto& [kind, contents] : segments) {
        made.push_back(0xFF);
        made.push_back(kind);
        made.push_back(static_cast<uint8_t>((contents.size() + 2) >> 8));
        made.push_back(static_cast<uint8_t>(contents.size() + 2));
        made.insert(made.end(), contents.begin(), contents.end());
    }
    made.insert(made.end(), jpeg.begin() + 2, jpeg.end());
    return made;
}

inline ByteString joined(ByteString first, const ByteString& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline ByteString exifSegment(const ByteString& exif) {
    return joined(bytesOf(std::string_view("Exif\0\0", 6)), exif);
}

/// A packet of XMP with these elements in it; common prefixes are known.
inline std::string xmpPacket(const std::string& elements) {
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
           "rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
           "xmlns:exif=\"http://ns.adobe.com/exif/1.0/\" "
           "xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" "
           "xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\" "
           "xmlns:Iptc4xmpExt=\"http://iptc.org/std/Iptc4xmpExt/2008-02-29/\" "
           "xmlns:Iptc4xmpCore=\"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/\" "
           "xmlns:odd=\"http://example.org/odd/\">" +
           elements + "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end=\"w\"?>";
}
inline ByteString xmpSegment(const std::string& packet) {
    return joined(bytesOf(std::string_view("http://ns.adobe.com/xap/1.0/\0", 29)), bytesOf(packet));
}

/// One data set of IPTC's application record.
inline ByteString iptcSet(uint8_t number, const std::string& text) {
    return joined({0x1C, 2, number, static_cast<uint8_t>(text.size() >> 8),
                   static_cast<uint8_t>(text.size())},
                  bytesOf(text));
}
inline ByteString iptcSegment(const ByteString& iptc) {
    ByteString made = bytesOf(std::string_view("Photoshop 3.0\0008BIM\x04\x04\0\0\0\0", 24));
    made.push_back(static_cast<uint8_t>(iptc.size() >> 8));
    made.push_back(static_cast<uint8_t>(iptc.size()));
    made = joined(made, iptc);
    if (iptc.size() % 2 != 0) made.push_back(0);
    return made;
}

/// A colour profile with a header that says so, and nothing in it but a filling.
inline ByteString profile(std::string_view space, size_t size = 200) {
    ByteString made(size, 7);
    for (size_t i = 0; i < 4; ++i)
        made[i] = static_cast<uint8_t>(size >> (8 * (3 - i)));
    std::copy(space.begin(), space.end(), made.begin() + 16);
    const std::string_view mark = "acsp";
    std::copy(mark.begin(), mark.end(), made.begin() + 36);
    return made;
}
inline ByteString profileSegment(const ByteString& part, uint8_t number, uint8_t of) {
    const ByteString numbers{number, of};
    return joined(joined(bytesOf(std::string_view("ICC_PROFILE\0", 12)), numbers), part);
}

}  // namespace tessarine::tests
