#pragma once

#include <filesystem>
#include <string>

namespace tessarine {

/// The name under which a picture of a function stands: its catalogue name in lower case, "-"
/// for all that is no letter and no digit.
std::string pictureNameOf(std::string_view function);

/// Writes functions.md and, under pictures/functions/, the sample picture and what each function
/// makes of it, into `folder`, which is made where it is not there.
/// \param sample the sample picture as a file
/// \throws std::runtime_error where a file cannot be written, Refusal where an example of the
///         table is none
void writeFunctionsPage(const std::filesystem::path& folder, const std::filesystem::path& sample);

}  // namespace tessarine
