#include "letters.h"

#include "solids.h"

namespace draw {

namespace {

/// The strokes of a letter as corners on a grid of 5 by 8 steps, one pair of digits a corner;
/// a blank lifts the pen.
std::string_view strokes(char letter) {
    switch (letter) {
        case 'A':
            return "002840 1333";
        case 'B':
            return "000838474534 0434434130 3000";
        case 'C':
            return "4637180701102041";
        case 'E':
            return "48080040 0434";
        case 'I':
            return "2028";
        case 'N':
            return "00084048";
        case 'R':
            return "000838474534 0434 2440";
        case 'S':
            return "4738180705142433412010 1001";
        case 'T':
            return "0848 2820";
        default:
            return "";
    }
}

}  // namespace

double toLetter(char letter, Vec2 p) {
    const std::string_view pen = strokes(letter);
    const auto corner = [&](size_t i) {
        return Vec2{0.1 + 0.2 * (pen[i] - '0'), 0.175 * (pen[i + 1] - '0')};
    };
    double nearest = 1e9;
    for (size_t i = 0; i + 3 < pen.size();) {
        if (pen[i + 2] == ' ') {
            i += 3;
            continue;
        }
        nearest = std::min(nearest, toSegment(p, corner(i), corner(i + 2)));
        i += 2;
    }
    return nearest;
}

double toLine(std::string_view text, Vec2 p, double advance) {
    double nearest = 1e9;
    for (size_t i = 0; i < text.size(); ++i) {
        nearest =
            std::min(nearest, toLetter(text[i], {p.x - advance * static_cast<double>(i), p.y}));
    }
    return nearest;
}

}  // namespace draw
