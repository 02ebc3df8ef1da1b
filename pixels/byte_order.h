#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

// Numbers as the program's files hold them: little-endian, on every machine.

namespace tessarine {

template <std::integral Number>
void appendLittleEndian(std::string& bytes, Number number) {
    auto rest = static_cast<std::make_unsigned_t<Number>>(number);
    for (size_t i = 0; i < sizeof(Number); ++i) {
        bytes.push_back(static_cast<char>(rest & 0xFF));
        if constexpr (sizeof(Number) > 1) rest >>= 8;
    }
}

/// The number at an offset; bytes that are missing count as 0.
template <std::integral Number>
Number littleEndianAt(std::string_view bytes, size_t offset) {
    using Unsigned = std::make_unsigned_t<Number>;
    Unsigned number = 0;
    for (size_t i = 0; i < sizeof(Number) && offset + i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[offset + i]);
        number = static_cast<Unsigned>(number | static_cast<Unsigned>(Unsigned{byte} << (8 * i)));
    }
    return static_cast<Number>(number);
}

}  // namespace tessarine
