#pragma once

#include <string>

namespace tessarine {

// A killed program cannot tidy up. A hidden draft therefore carries the mark of its machine and is
// held while the program lives; one that bears this machine's mark and is held by nobody is a
// leftover.

/// Tells this machine from others that may share a folder with it but not its locks: 8 hexadecimal
/// digits.
const std::string& machineMark();

/// Holds an open file for as long as it stays open.
/// \return false where somebody takes it for a leftover at this moment
bool hold(int file);
/// Whether an open file still stands under its name.
bool standsUnder(const std::string& path, int file);

/// Removes the drafts in a folder that runs of this machine left when they were killed.
/// \return how many
int removeLeftDrafts(const std::string& folder);

}  // namespace tessarine
