#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <FreeImage.h>

#include "imagefiles/decoders.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

/// The quoted strings of a C source, comments left out.
std::vector<std::string_view> quotedStrings(std::string_view text) {
    std::vector<std::string_view> strings;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 2) == "/*") {
            const size_t end = text.find("*/", i + 2);
            if (end == std::string_view::npos) break;
            i = end + 1;
        } else if (text[i] == '"') {
            const size_t end = text.find('"', i + 1);
            if (end == std::string_view::npos) refuse("the file ends early");
            strings.push_back(text.substr(i + 1, end - i - 1));
            i = end;
        }
    }
    return strings;
}

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> found;
    for (;;) {
        const size_t start = text.find_first_not_of(" \t");
        if (start == std::string_view::npos) return found;
        text.remove_prefix(start);
        found.push_back(text.substr(0, text.find_first_of(" \t")));
        text.remove_prefix(found.back().size());
    }
}

uint32_t numberOf(std::string_view word) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size()) refuse("this is no number");
    return value;
}

/// "#" and 1 to 4 hexadecimal digits for each channel.
Pixel hexColour(std::string_view digits) {
    const size_t each = digits.size() / 3;
    if (digits.size() % 3 != 0 || each < 1 || each > 4) refuse("this is no colour");
    std::array<uint8_t, 3> levels{};
    for (size_t c = 0; c < 3; ++c) {
        const std::string_view part = digits.substr(c * each, each);
        uint32_t value = 0;
        const auto [end, error] =
            std::from_chars(part.data(), part.data() + part.size(), value, 16);
        if (error != std::errc() || end != part.data() + part.size()) refuse("this is no colour");
        const uint32_t top = (1u << 4 * each) - 1;
        levels[c] = static_cast<uint8_t>((value * 255 + top / 2) / top);
    }
    return rgbPixel(levels[0], levels[1], levels[2]);
}

/// A colour by its name; white for none, on which people see transparent icons.
Pixel colourOf(const std::string& name) {
    if (name == "None" || name == "none" || name == "NONE") return greyPixel(255);
    if (name.starts_with('#')) return hexColour(std::string_view(name).substr(1));
    BYTE red = 0;
    BYTE green = 0;
    BYTE blue = 0;
    // "light blue" and "lightblue" are the same; the library knows the latter.
    std::string joined = name;
    std::erase(joined, ' ');
    if (!FreeImage_LookupX11Color(joined.c_str(), &red, &green, &blue))
        refuse("the picture names an unknown colour");
    return rgbPixel(red, green, blue);
}

/// The value of the best visual that a colour line gives: colour before grey before mono, and a
/// symbolic name only where nothing else is there.
Pixel bestColour(std::string_view line) {
    constexpr std::array<std::string_view, 5> visuals{"c", "g", "g4", "m", "s"};
    std::array<std::string, visuals.size()> values;
    std::string* current = nullptr;
    for (const std::string_view word : words(line)) {
        const auto* visual = std::find(visuals.begin(), visuals.end(), word);
        if (visual != visuals.end() && (current == nullptr || !current->empty())) {
            current = &values[static_cast<size_t>(visual - visuals.begin())];
        } else if (current != nullptr) {
            if (!current->empty()) *current += ' ';
            *current += word;
        }
    }
    for (const std::string& value : values)
        if (!value.empty()) return colourOf(value);
    refuse("a colour has no value");
}

}  // namespace

/// DevIL falls over on nearly every file of this kind.
std::optional<Decoded> takeOverXpm(const PictureSource& source) {
    const Bytes file = source.file;
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    const size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos || !text.substr(start).starts_with("/*"))
        refuse("this is no XPM picture");
    const std::vector<std::string_view> strings = quotedStrings(text);
    if (strings.empty()) refuse("this is no XPM picture");
    const std::vector<std::string_view> values = words(strings[0]);
    if (values.size() < 4) refuse("this is no XPM picture");
    const uint32_t width = numberOf(values[0]);
    const uint32_t height = numberOf(values[1]);
    const uint32_t colours = numberOf(values[2]);
    const uint32_t signs = numberOf(values[3]);
    if (signs < 1 || signs > 16 || uint64_t{colours} + height + 1 > strings.size())
        refuse("the file ends early");

    std::unordered_map<std::string_view, Pixel> table;
    for (uint32_t i = 1; i <= colours; ++i) {
        if (strings[i].size() < signs) refuse("a colour has no sign");
        table[strings[i].substr(0, signs)] = bestColour(strings[i].substr(signs));
    }
    Decoded decoded{bitmapFor(width, height, file.size(), 1),
                    static_cast<int16_t>(colours > 256 ? 24 : 8)};
    for (uint32_t y = 0; y < height; ++y) {
        const std::string_view line = strings[1 + colours + y];
        if (line.size() < size_t{width} * signs) refuse("a line is too short");
        Pixel* row = decoded.bitmap.writableRow(static_cast<int32_t>(y));
        for (uint32_t x = 0; x < width; ++x) {
            const auto found = table.find(line.substr(size_t{x} * signs, signs));
            if (found == table.end()) refuse("a pixel has no colour");
            row[x] = found->second;
        }
    }
    return decoded;
}

std::optional<PromisedSize> promiseOfXpm(Bytes file) {
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    const std::vector<std::string_view> strings = quotedStrings(text);
    if (strings.empty()) return std::nullopt;
    const std::vector<std::string_view> values = words(strings[0]);
    if (values.size() < 4) return std::nullopt;
    return PromisedSize{numberOf(values[0]), numberOf(values[1])};
}

}  // namespace tessarine
