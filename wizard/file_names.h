#pragma once

#include <string>
#include <vector>

#include <QString>
#include <QUrl>

class QMimeData;

// The names of files are bytes; here they come to the screen and go from program to program.

namespace tessarine {

/// A file's name or path on one line: what is no text in it, and what would break the line or
/// turn it around, shows as the sign for an unknown character.
QString shownName(const std::string& bytes);

/// A text as a tool tip that shows it as it stands, although it may look like markup.
QString plainToolTip(const QString& text);

/// The path of a file on this machine, its bytes as they are; empty for every other address.
std::string pathOf(const QUrl& url);

/// The address of a path, whatever its bytes are.
QUrl urlOf(const std::string& path);

/// The paths on this machine that a file manager hands over.
std::vector<std::string> localPaths(const QMimeData& data);

}  // namespace tessarine
