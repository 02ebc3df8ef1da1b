#include "batch/natural_order.h"

#include <cstddef>

namespace tessarine {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

unsigned char folded(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

/// Takes the run of digits off the front, and gives it without the zeros that lead it.
std::string_view takeNumber(std::string_view& text) {
    size_t end = 0;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    while (!number.empty() && number.front() == '0')
        number.remove_prefix(1);
    return number;
}

}  // namespace

bool comesBefore(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            const std::string_view left = takeNumber(a);
            const std::string_view right = takeNumber(b);
            // More digits make the larger number; as many compare as texts do.
            if (left.size() != right.size()) return left.size() < right.size();
            if (left != right) return left < right;
            continue;
        }
        const unsigned char left = folded(a.front());
        const unsigned char right = folded(b.front());
        if (left != right) return left < right;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return a.empty() && !b.empty();
}

}  // namespace tessarine
