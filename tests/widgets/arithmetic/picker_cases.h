#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "support/cases.h"
#include "widgets/arithmetic/picker_pictures.h"

namespace tessarine::tests {

inline Axis axisOf(const std::string& name) {
    const char* const names[] = {"hue", "sat", "bri", "red", "green", "blue"};
    for (size_t i = 0; i < std::size(names); ++i)
        if (name == names[i]) return static_cast<Axis>(i);
    throw std::runtime_error("no such axis: " + name);
}

/// "R,G,B" as a packed colour.
inline int32_t colourOf(const std::string& text) {
    const std::vector<std::string> parts = split(text, ',');
    const auto level = [&](size_t i) { return static_cast<uint8_t>(std::stoi(parts.at(i))); };
    return packed(level(0), level(1), level(2));
}

inline HSB hsbOf(const std::string& text) {
    const std::vector<std::string> parts = split(text, ',');
    return {std::stod(parts.at(0)), std::stod(parts.at(1)), std::stod(parts.at(2))};
}

/// A picture of the cases as a binary pixmap has it: top row first, red, green, blue.
inline std::string pixmapOf(const PixelRows& picture) {
    std::string bytes =
        "P6\n" + std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n255\n";
    for (int32_t y = picture.height; y-- > 0;)
        for (int32_t x = 0; x < picture.width; ++x) {
            const int32_t colour = picture.at(x, y);
            bytes += {static_cast<char>(redOf(colour)), static_cast<char>(greenOf(colour)),
                      static_cast<char>(blueOf(colour))};
        }
    return bytes;
}

inline std::string caseFile(const std::string& name) {
    std::ifstream file(casesFolder() + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tessarine::tests
