#pragma once

#include <string>

namespace tessarine {

/// Writes a line to standard error, "tessarine-batch: " before it. Never fails: there may be
/// nobody who reads it.
void complain(const std::string& message);

/// Writes to standard error as it is. Never fails.
void writeToTerminal(const std::string& text);

/// Writes to standard output. \return whether all of it was taken
bool writeToOutput(const std::string& text);

/// A text on one line: control characters as \xNN.
std::string onOneLine(const std::string& text);

}  // namespace tessarine
