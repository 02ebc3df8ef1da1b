#include <algorithm>
#include <array>
#include <string_view>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/library.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

using Exiv2::ExifData;

template <class Predicate>
void eraseIf(ExifData& data, Predicate isUnwanted) {
    for (auto at = data.begin(); at != data.end();)
        at = isUnwanted(*at) ? data.erase(at) : std::next(at);
}

/// Keeps the kind of number that is there, so that the block can be changed in its place.
void setNumber(ExifData& data, const char* key, uint32_t number) {
    const auto found = data.findKey(Exiv2::ExifKey(key));
    if (found == data.end()) return;
    if (found->typeId() == Exiv2::unsignedShort && number <= 0xFFFF)
        *found = static_cast<uint16_t>(number);
    else
        *found = number;
}

bool isNumber(const ExifData& data, const char* key, int32_t number) {
    const auto found = data.findKey(Exiv2::ExifKey(key));
    return found == data.end() || (found->count() > 0 && found->toLong() == number);
}

bool isOfMaker(const Exiv2::Exifdatum& datum) {
    const std::string group = datum.groupName();
    return group == "MakerNote" || Exiv2::ExifTags::isMakerGroup(group);
}

/// A small picture of the one that was read, in the maker's part.
bool isPreview(const Exiv2::Exifdatum& datum) {
    if (!isOfMaker(datum)) return false;
    const std::string name = datum.tagName();
    return datum.groupName() == "NikonPreview" || name.find("PreviewImage") != std::string::npos ||
           name == "Thumbnail" || name == "ThumbnailImage";
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

/// The numbers of a TIFF structure.
class Structure {
  public:
    explicit Structure(ByteVector& bytes) : bytes_(bytes), isBig_(startsWith(bytes, "MM")) {}

    uint32_t number(uint64_t place, size_t size) const {
        ByteReader reader(bytes_);
        reader.seek(place);
        if (size == 2) return isBig_ ? reader.u16be() : reader.u16le();
        return isBig_ ? reader.u32be() : reader.u32le();
    }
    /// Sets bytes to 0, in so far as they are there.
    void clear(uint64_t place, uint64_t count) {
        if (place >= bytes_.size()) return;
        const uint64_t end = std::min<uint64_t>(bytes_.size(), place + count);
        std::fill(bytes_.begin() + static_cast<ptrdiff_t>(place),
                  bytes_.begin() + static_cast<ptrdiff_t>(end), uint8_t{0});
    }

  private:
    ByteVector& bytes_;
    bool isBig_;
};

/// Takes the second directory out, which is the thumbnail's, and clears its picture. All else stays
/// at its place: makers count places from the block's start.
void cutThumbnail(ByteVector& exif) {
    constexpr uint64_t bytesOfEntry = 12;
    constexpr uint16_t placeOfPicture = 0x0201;
    constexpr uint16_t lengthOfPicture = 0x0202;
    attempt([&] {
        Structure structure(exif);
        const uint64_t first = structure.number(4, 4);
        const uint64_t link = first + 2 + structure.number(first, 2) * bytesOfEntry;
        const uint64_t second = structure.number(link, 4);
        if (second == 0) return;
        structure.clear(link, 4);
        uint64_t place = 0, length = 0;
        const uint64_t entries = structure.number(second, 2);
        for (uint64_t i = 0; i < entries; ++i) {
            const uint64_t entry = second + 2 + i * bytesOfEntry;
            const uint32_t tag = structure.number(entry, 2);
            if (tag == placeOfPicture) place = structure.number(entry + 8, 4);
            if (tag == lengthOfPicture) length = structure.number(entry + 8, 4);
        }
        structure.clear(second, 2 + entries * bytesOfEntry + 4);
        structure.clear(place, length);
        if (length > 0 && place > second && place + length >= exif.size()) exif.resize(place);
    });
}

ByteVector encoded(const ExifData& data, Exiv2::ByteOrder order) {
    Exiv2::Blob blob;
    if (!data.empty()) Exiv2::ExifParser::encode(blob, order, data);
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

ByteVector exifBlock(ExifData data, Exiv2::ByteOrder order) {
    eraseIf(data, tellsOfStorage);
    return encoded(data, order == Exiv2::bigEndian ? order : Exiv2::littleEndian);
}

void adjustExif(ByteVector& exif, const MetadataChanges& changes, MetadataLibrary& library,
                LeftOut& leftOut) {
    cutThumbnail(exif);
    ExifData data;
    library.sawDamage();
    const Exiv2::ByteOrder order =
        Exiv2::ExifParser::decode(data, exif.data(), static_cast<uint32_t>(exif.size()));
    const bool isDamaged = library.sawDamage();

    const bool hasSize = isNumber(data, "Exif.Photo.PixelXDimension", changes.width) &&
                         isNumber(data, "Exif.Photo.PixelYDimension", changes.height);
    for (const char* key : {"Exif.Photo.PixelXDimension", "Exif.Iop.RelatedImageWidth"})
        setNumber(data, key, static_cast<uint32_t>(changes.width));
    for (const char* key : {"Exif.Photo.PixelYDimension", "Exif.Iop.RelatedImageLength"})
        setNumber(data, key, static_cast<uint32_t>(changes.height));
    if (changes.isTurned) setNumber(data, "Exif.Image.Orientation", 1);
    eraseIf(data, [&](const Exiv2::Exifdatum& datum) {
        const std::string key = datum.key();
        // Places in pixels of the picture that was read.
        const bool isElsewhere =
            (changes.isTurned || !hasSize) &&
            (key == "Exif.Photo.SubjectArea" || key == "Exif.Photo.SubjectLocation");
        return isElsewhere || isPreview(datum) || isOtherBlock(datum) ||
               (changes.withoutLocation && tellsLocation(datum));
    });

    if (isDamaged) {
        leftOut.add("what is damaged of EXIF");
        exif = encoded(data, order);
        return;
    }
    if (data.empty()) return exif.clear();
    Exiv2::Blob blob;
    const Exiv2::WriteMethod method = Exiv2::ExifParser::encode(
        blob, exif.data(), static_cast<uint32_t>(exif.size()), order, data);
    if (method == Exiv2::wmIntrusive) exif = std::move(blob);
}

}  // namespace tessarine
