#pragma once

#include <string>

#include <QIcon>

namespace tessarine {

/// The small icon that the desktop's theme has for files of an extension (lower case), or the
/// program's own for a picture file.
QIcon fileTypeIcon(const std::string& extension);

/// What the system calls files of an extension (lower case), in the person's language: "JPEG
/// image"; "XYZ File" for a type that it does not know.
std::string fileTypeName(const std::string& extension);

}  // namespace tessarine
