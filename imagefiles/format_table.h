#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tessarine {

/// How a format row's files are written.
enum class SaveRoute {
    encoder,  ///< GIF, value: bits of colour
    jpeg,     ///< JPEG, value: the file library's quality flag
    devil,    ///< all others, from a BMP in memory
};

/// One row of cboFormat.
struct FormatRow {
    std::string_view text;
    std::string_view extension;
    SaveRoute route;
    int32_t value;
    std::string_view shortName;  ///< as the command line takes it, e.g. "jpg-good"
};

constexpr int16_t formatRowCount = 18;

/// The output formats in the order of cboFormat.
const std::array<FormatRow, formatRowCount>& formatTable();

/// How files with an extension are written; nothing for an extension outside the table.
std::optional<SaveRoute> routeOf(std::string_view extension);

}  // namespace tessarine
