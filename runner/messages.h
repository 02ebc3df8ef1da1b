#pragma once

#include <string>

#include "batch/texts.h"

namespace tessarine {

/// Writes a text onOneLine() to standard error, "tessarine-batch: " before it. Never fails: there
/// may be nobody who reads it.
void complain(const std::string& message);

/// Writes to standard error as it is. Never fails.
void writeToTerminal(const std::string& text);

/// Writes to standard output. \return whether all of it was taken
bool writeToOutput(const std::string& text);

}  // namespace tessarine
