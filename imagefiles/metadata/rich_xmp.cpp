#include "imagefiles/metadata/rich_xmp.h"

#include <algorithm>

#include "imagefiles/decoding.h"
#include "imagefiles/metadata/structure.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

bool isItem(std::string_view element) {
    const std::string_view name = element.substr(0, element.find_first_of(" \t\r\n/>"));
    return name == "li" || name.ends_with(":li");
}

}  // namespace

bool isTooRich(Bytes xmp) {
    const std::string_view text(reinterpret_cast<const char*>(xmp.data()), xmp.size());
    size_t words = 0;
    for (size_t at = text.find_first_of("<="); at < text.size() && words <= mostWordsOfXmp;
         at = text.find_first_of("<=", at + 1)) {
        const std::string_view rest = text.substr(at + 1, 64);
        if (text[at] == '=')
            words += rest.starts_with('"') || rest.starts_with('\'') ? 1 : 0;
        else
            words += rest.find_first_of("/?!") == 0 || isItem(rest) ? 0 : 1;
    }
    return words > mostWordsOfXmp;
}

std::optional<RichXmp> richXmpIn(Bytes tiff) {
    constexpr uint16_t tagOfXmp = 700;
    std::optional<RichXmp> found;
    attempt([&] {
        const bool isBigEndian = startsWith(tiff, "MM");
        ByteReader reader(tiff);
        const auto word = [&] { return isBigEndian ? reader.u16be() : reader.u16le(); };
        const auto number = [&] { return isBigEndian ? reader.u32be() : reader.u32le(); };
        reader.seek(4);
        reader.seek(number());
        for (uint16_t entries = word(); entries > 0 && !found; --entries) {
            const uint16_t tag = word();
            const uint64_t size = bytesOfKind(word());
            const size_t placeOfCount = reader.position();
            const uint64_t bytes = size * number();
            const uint32_t place = number();
            if (tag != tagOfXmp || bytes <= 4 || place >= tiff.size()) continue;
            const Bytes packet =
                tiff.subspan(place, std::min<uint64_t>(bytes, tiff.size() - place));
            if (isTooRich(packet)) found = RichXmp{placeOfCount, packet};
        }
    });
    return found;
}

void hide(const RichXmp& xmp, ByteVector& tiff) {
    std::fill_n(tiff.begin() + static_cast<ptrdiff_t>(xmp.placeOfCount), 4, uint8_t{0});
}

}  // namespace tessarine
