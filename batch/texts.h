#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Texts and numbers as rows and list files hold them, and the parts of a path.

namespace tessarine {

/// A decimal text, blanks around it allowed, to a whole number, rounded, halves to even.
/// \throws StatementFailed where the text is no number or the number does not fit
int16_t toInteger16(std::string_view text);
int32_t toInteger32(std::string_view text);
/// A number to a 16-bit integer, rounded, halves to even. \throws StatementFailed as above
int16_t toInteger16(double value);
/// \throws StatementFailed where the text is no number that a single holds
float toSingle(std::string_view text);
/// "True" and "False" in any case, or a number: true where it is not 0.
/// \throws StatementFailed where the text is neither
bool toTruth(std::string_view text);

/// "True" or "False".
std::string truthText(bool value);
/// The shortest decimal text that reads back as the same single.
std::string singleText(float value);

/// Without blanks at both ends, or at the right end.
std::string trimmed(std::string_view text);
std::string rightTrimmed(std::string_view text);
/// A text on one line, whoever shows it: control characters, and those that end a line or turn it
/// around, as \xNN.
std::string onOneLine(std::string_view text);
/// ASCII letters in lower case, or in upper case.
std::string lowerCase(std::string_view text);
std::string upperCase(std::string_view text);

/// What stands behind the last "." of the path's last part, as it stands; empty where none does.
std::string extensionOf(std::string_view path);
/// The path's last part.
std::string fileNameOf(std::string_view path);
/// What stands before the path's last part, without the separator, except for the root.
std::string folderOf(std::string_view path);

}  // namespace tessarine
