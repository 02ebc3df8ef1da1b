#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarine {

/// The 128 bits of XXH3 over bytes, as 32 hexadecimal digits. It tells contents apart that differ
/// by chance or by anybody's work on them, not by somebody who wants two files to look alike.
std::string hashOfText(std::string_view bytes);
/// The same of a file's content; nothing where it cannot be read to its end, or is no regular file.
std::optional<std::string> hashOfFile(const std::string& path);

}  // namespace tessarine
