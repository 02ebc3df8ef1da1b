#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

// Which files of a folder are pictures to choose from, wherever they are chosen.

namespace tessarine {

/// The extensions of these files, in lower case.
std::span<const std::string_view> acceptedExtensions();

/// Whether a path's extension, in any case, is one of those that folders are searched for. Other
/// files may be readable, but have to be named one by one.
bool isAcceptedPicture(std::string_view path);

/// The names of the files directly in a folder, sorted by their bytes; drafts of files that are
/// being written are left out. Empty where the folder cannot be read.
std::vector<std::string> fileNamesIn(const std::string& folder);

/// A folder and the name of something in it as one path.
std::string joined(const std::string& folder, const std::string& name);

/// A path without separators at its end, but for the root.
std::string withoutSeparatorAtEnd(std::string path);

}  // namespace tessarine
