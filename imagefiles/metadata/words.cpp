#include <algorithm>
#include <array>
#include <string_view>

#include "imagefiles/metadata/library.h"

// Adjusting what is said in words: XMP and IPTC.

namespace tessarine {

namespace {

using namespace std::string_view_literals;

template <size_t count>
bool isAmong(std::string_view word, const std::array<std::string_view, count>& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

/// The property itself, without the items and fields below it.
std::string propertyOf(const Exiv2::Xmpdatum& datum) {
    const std::string path = datum.tagName();
    return path.substr(0, path.find_first_of("[/"));
}

/// Words for pictures, sounds and files that came along with the one that was read and do not with
/// the one that is written.
bool tellsOfCompany(const Exiv2::Xmpdatum& datum) {
    static constexpr std::array kinds{"xmpNote"sv,   "GImage"sv, "GAudio"sv,     "GDepth"sv,
                                      "Container"sv, "hdrgm"sv,  "GContainer"sv, "HDRGainMap"sv};
    const std::string property = propertyOf(datum);
    return isAmong(datum.groupName(), kinds) || property == "Thumbnails" ||
           property.starts_with("MotionPhoto") || property.starts_with("MicroVideo");
}

/// Parts of the picture by their places in it.
bool tellsOfParts(const Exiv2::Xmpdatum& datum) {
    static constexpr std::array kinds{"mwg-rs"sv, "MP"sv, "MPRI"sv, "MPReg"sv};
    const std::string property = propertyOf(datum);
    return isAmong(datum.groupName(), kinds) || property == "ImageRegion" ||
           property == "SubjectArea" || property == "SubjectLocation";
}

std::string inLowerLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

/// Whether a property or a field, without its namespace and in lower case, is a place.
bool isPlace(std::string_view name) {
    static constexpr std::array names{"location"sv,      "locationcreated"sv,
                                      "locationshown"sv, "locationname"sv,
                                      "shotlocation"sv,  "sublocation"sv,
                                      "city"sv,          "municipality"sv,
                                      "county"sv,        "state"sv,
                                      "province"sv,      "provincestate"sv,
                                      "stateprovince"sv, "country"sv,
                                      "countrycode"sv,   "countryname"sv,
                                      "worldregion"sv,   "continent"sv,
                                      "island"sv,        "locality"sv,
                                      "lat"sv,           "long"sv,
                                      "lng"sv,           "lon"sv,
                                      "alt"sv,           "coordinates"sv,
                                      "coverage"sv,      "spatial"sv,
                                      "geotag"sv,        "geohash"sv,
                                      "geolocation"sv,   "footprintwkt"sv};
    static constexpr std::array parts{"gps"sv,      "latitude"sv,         "longitude"sv,
                                      "altitude"sv, "verbatimlocality"sv, "verbatimcoordinates"sv};
    return isAmong(name, names) || std::any_of(parts.begin(), parts.end(), [&](auto part) {
               return name.find(part) != std::string_view::npos;
           });
}

/// Whether a property, or a field on the way to this one, is a place.
bool tellsLocation(const Exiv2::Xmpdatum& datum) {
    const std::string path = inLowerLetters(datum.tagName());
    for (size_t start = 0; start <= path.size();) {
        const size_t end = std::min(path.find('/', start), path.size());
        std::string_view name = std::string_view(path).substr(start, end - start);
        name = name.substr(0, name.find('['));
        if (const size_t colon = name.rfind(':'); colon != std::string_view::npos)
            name.remove_prefix(colon + 1);
        if (isPlace(name)) return true;
        start = end + 1;
    }
    return false;
}

bool setText(Exiv2::XmpData& data, const char* key, int32_t number) {
    const auto found = data.findKey(Exiv2::XmpKey(key));
    const std::string text = std::to_string(number);
    if (found == data.end() || found->toString() == text) return false;
    found->setValue(text);
    return true;
}

[[noreturn]] void throwDamaged() { throw Exiv2::Error(Exiv2::kerCorruptedMetadata); }

}  // namespace

Exiv2::XmpData xmpIn(const ByteVector& xmp) {
    Exiv2::XmpData data;
    if (Exiv2::XmpParser::decode(data, std::string(xmp.begin(), xmp.end())) != 0) throwDamaged();
    return data;
}

Exiv2::IptcData iptcIn(const ByteVector& iptc) {
    Exiv2::IptcData data;
    // Of sets that end early it tells nothing, and gives none.
    if (Exiv2::IptcParser::decode(data, iptc.data(), static_cast<uint32_t>(iptc.size())) != 0 ||
        data.empty())
        throwDamaged();
    return data;
}

void adjustXmp(ByteVector& xmp, MetadataChanges& changes) {
    // Written by hand a packet has kilobytes of blanks; a long one may need to do without.
    constexpr size_t large = 60000;
    Exiv2::XmpData data = xmpIn(xmp);
    bool isChanged = xmp.size() > large;
    const size_t before = static_cast<size_t>(data.count());
    const auto setSize = [&](const char* key, int32_t number) {
        const bool isOther = setText(data, key, number);
        isChanged = isChanged || isOther;
        changes.hasOtherSize = changes.hasOtherSize || isOther;
    };
    for (const char* key : {"Xmp.exif.PixelXDimension", "Xmp.tiff.ImageWidth"})
        setSize(key, changes.width);
    for (const char* key : {"Xmp.exif.PixelYDimension", "Xmp.tiff.ImageLength"})
        setSize(key, changes.height);
    if (changes.isTurned) isChanged = setText(data, "Xmp.tiff.Orientation", 1) || isChanged;
    for (auto at = data.begin(); at != data.end();) {
        const bool isUnwanted = tellsOfCompany(*at) ||
                                ((changes.isTurned || changes.hasOtherSize) && tellsOfParts(*at)) ||
                                (changes.withoutLocation && tellsLocation(*at));
        at = isUnwanted ? data.erase(at) : at + 1;
    }
    if (data.empty()) return xmp.clear();
    if (!isChanged && static_cast<size_t>(data.count()) == before) return;
    std::string packet;
    if (Exiv2::XmpParser::encode(packet, data) != 0) throwDamaged();
    xmp.assign(packet.begin(), packet.end());
}

void adjustIptc(ByteVector& iptc, const MetadataChanges& changes) {
    // Content location code and name, city, sublocation, province, country code and name.
    static constexpr std::array<uint16_t, 7> places{26, 27, 90, 92, 95, 100, 101};
    if (!changes.withoutLocation) return;
    Exiv2::IptcData data = iptcIn(iptc);
    bool isChanged = false;
    for (auto at = data.begin(); at != data.end();) {
        const bool isPlace = at->record() == Exiv2::IptcDataSets::application2 &&
                             std::count(places.begin(), places.end(), at->tag()) != 0;
        isChanged = isChanged || isPlace;
        at = isPlace ? data.erase(at) : at + 1;
    }
    if (!isChanged) return;
    const Exiv2::DataBuf encoded = Exiv2::IptcParser::encode(data);
    iptc.assign(encoded.pData_, encoded.pData_ + encoded.size_);
}

}  // namespace tessarine
