#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

#include "pixels/failures.h"

// The program's own small files. They are read whole, and written without being cut.

namespace tessarine {

/// All bytes of a file.
/// \throws std::system_error where the file cannot be opened or read, or is longer than `most`
std::string readBytes(const std::string& path, size_t most);

/// Writes the bytes from the file's first one on. A missing file is made; a longer one keeps its
/// tail.
/// \throws std::system_error where the file cannot be opened or written
void writeBytes(const std::string& path, std::string_view bytes);

/// Opens a file for reading and writing and reads its first bytes, at most `count`; a missing
/// file is made, empty.
/// \throws std::system_error where the file cannot be opened or read
std::string readFirstOrMake(const std::string& path, size_t count);

/// Runs one statement on a file: as `attempt`, and a file that cannot be opened, read or written
/// is a failing statement too.
/// \return whether the statement did its work.
template <class Statement>
bool attemptOnFile(Statement&& statement) {
    try {
        return attempt(statement);
    } catch (const std::system_error&) {
        return false;
    }
}

}  // namespace tessarine
