#pragma once

#include <string>

namespace tessarine {

/// All functions of the catalogue by group, each with its inputs as --apply takes them.
std::string functionListing();

/// All output formats: row, short name, extension and text.
std::string formatListing();

}  // namespace tessarine
