#include <algorithm>
#include <array>
#include <string_view>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/library.h"
#include "imagefiles/metadata/structure.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

using Exiv2::ExifData;

template <class Predicate>
void eraseIf(ExifData& data, Predicate isUnwanted) {
    for (auto at = data.begin(); at != data.end();)
        at = isUnwanted(*at) ? data.erase(at) : std::next(at);
}

/// Keeps the kind of number that is there, so that the block can be changed in its place. A damaged
/// block may hold a word twice, and readers differ in which they believe.
void setNumber(ExifData& data, std::string_view key, uint32_t number) {
    for (Exiv2::Exifdatum& datum : data) {
        if (datum.key() != key) continue;
        if (datum.typeId() == Exiv2::unsignedShort && number <= 0xFFFF)
            datum = static_cast<uint16_t>(number);
        else
            datum = number;
    }
}

constexpr std::array widths{"Exif.Photo.PixelXDimension", "Exif.Iop.RelatedImageWidth",
                            "Exif.Image.ImageWidth"};
constexpr std::array heights{"Exif.Photo.PixelYDimension", "Exif.Iop.RelatedImageLength",
                             "Exif.Image.ImageLength"};

/// Of the first directory, which in EXIF is a word like others.
bool isSize(const Exiv2::Exifdatum& datum) {
    return datum.key() == widths.back() || datum.key() == heights.back();
}

bool isOtherNumber(const ExifData& data, std::string_view key, int32_t number) {
    return std::any_of(data.begin(), data.end(), [&](const Exiv2::Exifdatum& datum) {
        return datum.key() == key && (datum.count() == 0 || datum.toLong() != number);
    });
}

bool isOfMaker(const Exiv2::Exifdatum& datum) {
    const std::string group = datum.groupName();
    return group == "MakerNote" || Exiv2::ExifTags::isMakerGroup(group);
}

/// A small picture of the one that was read, in the maker's part.
bool isPreview(const Exiv2::Exifdatum& datum) {
    if (!isOfMaker(datum)) return false;
    const std::string name = datum.tagName();
    return datum.groupName().ends_with("Preview") || name.starts_with("Preview") ||
           name.starts_with("Thumbnail");
}

/// Those that hold other blocks of metadata, which have ways of their own: a copy in EXIF would
/// tell what was changed there.
constexpr std::array<uint16_t, 4> tagsOfOtherBlocks{700, 33723, 34377, 34675};
/// The directory of a place, wherever it hangs.
constexpr uint16_t tagOfPlaces = 0x8825;
/// Where on Earth the pixels of a map lie.
constexpr std::array<uint16_t, 5> tagsOfGeoreference{33550, 33920, 33922, 34264, 50844};
/// In what the coordinates of a map are, with names; and words that go with them.
constexpr std::array<uint16_t, 4> tagsOfMaps{34735, 34736, 34737, 42112};
/// May hold the part of the camera's maker once more.
constexpr uint16_t tagOfPrivateData = 50740;

template <size_t count>
bool isAmong(const Exiv2::Exifdatum& datum, const std::array<uint16_t, count>& tags) {
    return std::find(tags.begin(), tags.end(), datum.tag()) != tags.end();
}

bool isOtherBlock(const Exiv2::Exifdatum& datum) {
    return !isOfMaker(datum) && isAmong(datum, tagsOfOtherBlocks);
}

bool isGeoreference(const Exiv2::Exifdatum& datum) {
    return !isOfMaker(datum) && isAmong(datum, tagsOfGeoreference);
}

bool tellsLocation(const Exiv2::Exifdatum& datum) {
    // What a maker's part says of places, nobody can tell: cities in clear text have been seen.
    return datum.groupName() == "GPSInfo" || datum.key() == "Exif.Photo.MakerNote" ||
           isOfMaker(datum) || datum.tag() == tagOfPlaces || datum.tag() == tagOfPrivateData ||
           isGeoreference(datum) || isAmong(datum, tagsOfMaps);
}

/// Clears small pictures that a maker's part tells by place and length: once their tags are gone,
/// nobody would know of their bytes. \return whether there was any
bool clearPreviews(ByteVector& exif, const ExifData& data) {
    const auto numberOf = [&](const std::string& key) -> uint64_t {
        const auto found = std::find_if(data.begin(), data.end(), [&](const auto& datum) {
            return datum.key() == key && datum.count() > 0;
        });
        return found == data.end() ? 0 : static_cast<uint32_t>(found->toLong());
    };
    Structure structure(exif);
    bool isAnyCleared = false;
    for (const Exiv2::Exifdatum& datum : data) {
        if (!isPreview(datum)) continue;
        const std::string key = datum.key();
        const size_t word = key.ends_with("Offset") ? 6 : key.ends_with("Start") ? 5 : 0;
        if (word == 0) continue;
        const uint64_t length = numberOf(key.substr(0, key.size() - word) + "Length");
        // Some makers count from the block's start, others from that of their own part.
        for (const uint64_t start : {uint64_t{0}, numberOf("Exif.MakerNote.Offset")}) {
            const uint64_t place = start + numberOf(key);
            if (length == 0 || !structure.isJpegAt(place)) continue;
            structure.clear(place, length);
            isAnyCleared = true;
        }
    }
    return isAnyCleared;
}

/// The library drops large tags of blocks that have no room in a JPEG file, whatever they are for.
void tellOfLargeTags(const ExifData& before, const ByteVector& after, LeftOut& leftOut) {
    constexpr long small = 4096;
    const auto isLarge = [](const Exiv2::Exifdatum& datum) { return datum.size() > small; };
    if (std::none_of(before.begin(), before.end(), isLarge)) return;
    ExifData kept;
    Exiv2::ExifParser::decode(kept, after.data(), static_cast<uint32_t>(after.size()));
    for (const Exiv2::Exifdatum& datum : before)
        if (isLarge(datum) && kept.findKey(Exiv2::ExifKey(datum.key())) == kept.end())
            leftOut.add(datum.tagName() + " of EXIF, " + std::to_string(datum.size()) +
                        " bytes, for which a block has no room");
}

ByteVector encoded(const ExifData& data, Exiv2::ByteOrder order, LeftOut& leftOut) {
    Exiv2::Blob blob;
    if (data.empty()) return blob;
    Exiv2::ExifParser::encode(blob, order, data);
    tellOfLargeTags(data, blob, leftOut);
    return blob;
}

}  // namespace

bool isTagOfStorage(uint16_t tag) {
    static constexpr std::array<uint16_t, 45> tags{
        254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266, 273, 277, 278, 279,
        280, 281, 284, 288, 289, 290, 291, 292, 293, 317, 320, 321, 322, 323, 324,
        325, 330, 332, 333, 334, 336, 338, 339, 340, 341, 347, 529, 530, 531, 532};
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

bool tellsOfStorage(const Exiv2::Exifdatum& datum) {
    return datum.groupName() == "Image" && (isTagOfStorage(datum.tag()) || isOtherBlock(datum));
}

uint8_t orientationIn(const ByteVector& exif) {
    ExifData data;
    Exiv2::ExifParser::decode(data, exif.data(), static_cast<uint32_t>(exif.size()));
    const auto found = data.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
    if (found == data.end() || found->count() == 0) return 1;
    const long value = found->toLong();
    return value >= 1 && value <= 8 ? static_cast<uint8_t>(value) : 1;
}

ByteVector exifBlock(ExifData data, Exiv2::ByteOrder order, LeftOut& leftOut) {
    const auto isOfOtherPicture = [](const Exiv2::Exifdatum& datum) {
        const std::string group = datum.groupName();
        return group == "Thumbnail" || group.starts_with("SubImage") ||
               group.starts_with("SubThumb");
    };
    eraseIf(data, [&](const Exiv2::Exifdatum& datum) {
        return isOfOtherPicture(datum) || (tellsOfStorage(datum) && !isSize(datum));
    });
    // A size alone tells nothing that the picture itself does not.
    if (std::all_of(data.begin(), data.end(), isSize)) return {};
    return encoded(data, order == Exiv2::bigEndian ? order : Exiv2::littleEndian, leftOut);
}

bool tellsOtherSize(const ByteVector& exif, const MetadataChanges& changes) {
    ExifData data;
    Exiv2::ExifParser::decode(data, exif.data(), static_cast<uint32_t>(exif.size()));
    const auto isOther = [&](int32_t number) {
        return [&data, number](const char* key) { return isOtherNumber(data, key, number); };
    };
    return std::any_of(widths.begin(), widths.end(), isOther(changes.width)) ||
           std::any_of(heights.begin(), heights.end(), isOther(changes.height));
}

void adjustExif(ByteVector& exif, const MetadataChanges& changes, MetadataLibrary& library,
                LeftOut& leftOut) {
    cutThumbnail(exif);
    ExifData data;
    const auto decode = [&] {
        return Exiv2::ExifParser::decode(data, exif.data(), static_cast<uint32_t>(exif.size()));
    };
    library.sawDamage();
    Exiv2::ByteOrder order = decode();
    if (clearPreviews(exif, data)) {
        library.sawDamage();
        order = decode();
    }
    const bool isDamaged = library.sawDamage();

    for (const char* key : widths)
        setNumber(data, key, static_cast<uint32_t>(changes.width));
    for (const char* key : heights)
        setNumber(data, key, static_cast<uint32_t>(changes.height));
    if (changes.isTurned) setNumber(data, "Exif.Image.Orientation", 1);
    eraseIf(data, [&](const Exiv2::Exifdatum& datum) {
        const std::string key = datum.key();
        // Places in pixels of the picture that was read.
        const bool isElsewhere = (changes.isTurned || changes.hasOtherSize) &&
                                 (key == "Exif.Photo.SubjectArea" ||
                                  key == "Exif.Photo.SubjectLocation" || isGeoreference(datum));
        return isElsewhere || isPreview(datum) || isOtherBlock(datum) ||
               (changes.withoutLocation && tellsLocation(datum));
    });

    if (isDamaged) {
        leftOut.add("what is damaged of EXIF");
        exif = encoded(data, order, leftOut);
        return;
    }
    if (data.empty()) return exif.clear();
    Exiv2::Blob blob;
    const Exiv2::WriteMethod method = Exiv2::ExifParser::encode(
        blob, exif.data(), static_cast<uint32_t>(exif.size()), order, data);
    if (method != Exiv2::wmIntrusive) return;
    tellOfLargeTags(data, blob, leftOut);
    exif = std::move(blob);
}

}  // namespace tessarine
