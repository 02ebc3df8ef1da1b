#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace tessarine::tests {

inline std::string readAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeAll(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace tessarine::tests
