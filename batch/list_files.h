#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The two list files as data, without a dialog. Both are records of one length without header or
// count. The number of records is the file's length divided by a record's, rounded, a half to the
// even number; a short last record reads as if 0 bytes followed it. A file that is written over
// is not cut, so the records of a longer list stay behind a shorter one.

namespace tessarine {

/// One record of a function list (qfk).
struct FunctionRecord {
    static constexpr size_t bytesOnDisk = 124;
    static constexpr size_t textLength = 30;

    std::string name;  ///< texts are cut at textLength bytes; blanks at the end are not kept
    std::string id;    ///< the function's id in decimal
    std::array<int32_t, 3> parameters{};
    std::array<int32_t, 2> colours{};  ///< 0x00BBGGRR
    int16_t option = 0;                ///< 0 or -1
    std::string style;
    float x = 0;  ///< the picked point in preview pixels
    float y = 0;

    /// The record's 124 bytes, texts padded with blanks.
    std::string toBytes() const;
    /// Reads a record; texts come without blanks at both ends.
    static FunctionRecord fromBytes(std::string_view bytes);
};

/// Bytes of one record of a picture list (qpkl): a path, padded with blanks or cut.
inline constexpr size_t pictureRecordBytes = 150;

/// The record of a picture list for a path. One that is too long for it, or has blanks at its ends
/// or a 0 byte, does not read back.
std::string pictureRecord(std::string_view path);

/// The records of a list's bytes.
std::vector<FunctionRecord> parseFunctionList(std::string_view bytes);
std::vector<std::string> parsePictureList(std::string_view bytes);

/// \throws std::system_error where the file cannot be opened or read
std::vector<FunctionRecord> readFunctionList(const std::string& path);
/// \throws std::system_error where the file cannot be opened or written
void writeFunctionList(const std::string& path, std::span<const FunctionRecord> records);

/// The paths of a picture list in their order, whether they exist or not.
/// \throws std::system_error where the file cannot be opened or read
std::vector<std::string> readPictureList(const std::string& path);
/// \throws std::system_error where the file cannot be opened or written
void writePictureList(const std::string& path, std::span<const std::string> pictures);

}  // namespace tessarine
