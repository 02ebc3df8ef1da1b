#include "batch/texts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "batch/platform.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr char blank = ' ';

/// Magnitudes that are written in plain decimals; others take an exponent.
constexpr float smallestPlain = 1e-5F;
constexpr float largestPlain = 1e10F;

/// Whether a number that is out of range is so for being too close to 0.
bool isTiny(std::string_view number) {
    const size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) return number.substr(exponent + 1).starts_with('-');
    return number.find_first_not_of("-0") == number.find('.');
}

/// Reads a whole text as a number, by the same rules in every locale.
template <class Number>
Number parse(std::string_view text) {
    std::string_view rest = text;
    while (!rest.empty() && rest.front() == blank)
        rest.remove_prefix(1);
    while (!rest.empty() && rest.back() == blank)
        rest.remove_suffix(1);
    if (!rest.empty() && rest.front() == '+') {
        rest.remove_prefix(1);
        if (!rest.empty() && rest.front() == '-') rest = {};
    }
    Number number = 0;
    const char* const end = rest.data() + rest.size();
    const auto [stop, error] = std::from_chars(rest.data(), end, number);
    const bool complete = stop == end && !rest.empty();
    if (complete && error == std::errc::result_out_of_range && isTiny(rest)) return 0;
    // The words for infinity and not-a-number are read too; no text of ours means them.
    if (!complete || error != std::errc() || !std::isfinite(number)) {
        throw StatementFailed("no number: " + std::string(text));
    }
    return number;
}

template <class Integer>
Integer rounded(double value) {
    const double whole = std::nearbyint(value);
    if (!(whole >= double{std::numeric_limits<Integer>::min()} &&
          whole <= double{std::numeric_limits<Integer>::max()})) {
        throw StatementFailed("the number does not fit");
    }
    return static_cast<Integer>(whole);
}

/// The length of the control character, or of the one that upsets a line, that a text begins with;
/// 0 where it begins with none.
size_t upsettingLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < ' ' || first == 0x7F) return 1;
    // The control characters above ASCII, the ends of lines and paragraphs, and the overrides of
    // the writing direction.
    const auto second = static_cast<unsigned char>(text.size() > 1 ? text[1] : ' ');
    if (first == 0xC2 && second >= 0x80 && second <= 0x9F) return 2;
    for (const std::string_view one :
         {"\u2028", "\u2029", "\u202A", "\u202B", "\u202C", "\u202D", "\u202E"})
        if (text.starts_with(one)) return one.size();
    return 0;
}

/// A path without separators at its end.
std::string_view withoutTail(std::string_view path) {
    while (!path.empty() && path.back() == folderSeparator)
        path.remove_suffix(1);
    return path;
}

std::string_view lastPart(std::string_view path) {
    path = withoutTail(path);
    const size_t separator = path.rfind(folderSeparator);
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

}  // namespace

int16_t toInteger16(std::string_view text) { return toInteger16(parse<double>(text)); }

int32_t toInteger32(std::string_view text) { return rounded<int32_t>(parse<double>(text)); }

int16_t toInteger16(double value) { return rounded<int16_t>(value); }

float toSingle(std::string_view text) { return parse<float>(text); }

bool toTruth(std::string_view text) {
    const std::string word = lowerCase(trimmed(text));
    if (word == "true") return true;
    if (word == "false") return false;
    return parse<double>(text) != 0;
}

std::string truthText(bool value) { return value ? "True" : "False"; }

std::string singleText(float value) {
    const float size = std::fabs(value);
    const bool plain = size == 0 || (size >= smallestPlain && size < largestPlain);
    char text[64];
    const auto [end, error] =
        plain ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed)
              : std::to_chars(text, text + sizeof text, value, std::chars_format::scientific);
    (void)error;  // 64 characters hold any of them
    return {text, end};
}

std::string trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(blank);
    return first == std::string_view::npos ? std::string() : rightTrimmed(text.substr(first));
}

std::string rightTrimmed(std::string_view text) {
    return std::string(text.substr(0, text.find_last_not_of(blank) + 1));
}

std::string onOneLine(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string line;
    while (!text.empty()) {
        const size_t upsetting = upsettingLength(text);
        for (const char c : text.substr(0, upsetting)) {
            const auto byte = static_cast<unsigned char>(c);
            line += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        }
        if (upsetting == 0) line += text.front();
        text.remove_prefix(std::max<size_t>(upsetting, 1));
    }
    return line;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

std::string extensionOf(std::string_view path) {
    const std::string_view name = lastPart(path);
    const size_t point = name.rfind('.');
    return point == std::string_view::npos ? std::string() : std::string(name.substr(point + 1));
}

std::string fileNameOf(std::string_view path) { return std::string(lastPart(path)); }

std::string folderOf(std::string_view path) {
    const std::string_view whole = withoutTail(path);
    const size_t separator = whole.rfind(folderSeparator);
    if (separator == std::string_view::npos) return {};
    const std::string_view folder = withoutTail(whole.substr(0, separator));
    return folder.empty() ? std::string(1, folderSeparator) : std::string(folder);
}

}  // namespace tessarine
