#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

namespace tessarine {

/// A file as the system tells it from others, whatever path leads to it.
using FileIdentity = std::pair<dev_t, ino_t>;

/// Which file or folder a path leads to, links followed; nothing where there is none.
std::optional<FileIdentity> identityOf(const std::string& path);

/// A path behind all links at its end, also where there is nothing.
std::string behindLinks(const std::string& path);

}  // namespace tessarine
