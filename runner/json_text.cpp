#include "runner/json_text.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

namespace tessarine {

namespace {

using Json = nlohmann::ordered_json;

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isUtf8(const std::string& text) {
    if (isAscii(text)) return true;
    try {
        static_cast<void>(Json(text).dump());
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

}  // namespace

Json jsonOfText(const std::string& text) {
    if (isUtf8(text)) return text;
    std::string digits;
    for (const char c : text)
        digits += fmt::format("{:02x}", static_cast<unsigned char>(c));
    return {{"hex", digits}};
}

std::string textOfJson(const Json& json) {
    if (json.is_string()) return json.get<std::string>();
    const auto digits = json.at("hex").get<std::string>();
    std::string text;
    for (size_t at = 0; at < digits.size(); at += 2) {
        unsigned byte = 0;
        const char* const end = digits.data() + std::min(at + 2, digits.size());
        const auto [read, failure] = std::from_chars(digits.data() + at, end, byte, 16);
        if (failure != std::errc() || read != digits.data() + at + 2)
            throw Json::other_error::create(501, "a byte has two hexadecimal digits", nullptr);
        text += static_cast<char>(byte);
    }
    return text;
}

std::string oneLine(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace tessarine
