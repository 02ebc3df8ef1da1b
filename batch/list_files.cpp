#include "batch/list_files.h"

#include <bit>
#include <cmath>

#include "batch/texts.h"
#include "pixels/byte_files.h"
#include "pixels/byte_order.h"

namespace tessarine {

namespace {

/// More than any list of pictures that one run could work through.
constexpr size_t mostBytes = size_t{1} << 30;

void appendPadded(std::string& bytes, std::string_view text, size_t length) {
    const std::string_view kept = text.substr(0, length);
    bytes.append(kept).append(length - kept.size(), ' ');
}

/// A text without the blanks around it. A text ends at a 0 byte at the latest: records that are
/// cut short, or padded by another program, hold such bytes where ours have blanks.
std::string textOf(std::string_view field) { return trimmed(field.substr(0, field.find('\0'))); }

size_t recordCount(size_t bytes, size_t bytesOfRecord) {
    return static_cast<size_t>(
        std::nearbyint(static_cast<double>(bytes) / static_cast<double>(bytesOfRecord)));
}

std::string_view record(std::string_view bytes, size_t index, size_t bytesOfRecord) {
    return bytes.substr(index * bytesOfRecord, bytesOfRecord);
}

}  // namespace

std::string FunctionRecord::toBytes() const {
    std::string bytes;
    bytes.reserve(bytesOnDisk);
    appendPadded(bytes, name, textLength);
    appendPadded(bytes, id, textLength);
    for (const int32_t parameter : parameters)
        appendLittleEndian(bytes, parameter);
    for (const int32_t colour : colours)
        appendLittleEndian(bytes, colour);
    appendLittleEndian(bytes, option);
    appendPadded(bytes, style, textLength);
    appendLittleEndian(bytes, std::bit_cast<uint32_t>(x));
    appendLittleEndian(bytes, std::bit_cast<uint32_t>(y));
    appendLittleEndian(bytes, uint32_t{0});
    return bytes;
}

FunctionRecord FunctionRecord::fromBytes(std::string_view bytes) {
    std::string whole(bytes.substr(0, bytesOnDisk));
    whole.resize(bytesOnDisk, '\0');
    const std::string_view fields = whole;
    FunctionRecord record;
    record.name = textOf(fields.substr(0, textLength));
    record.id = textOf(fields.substr(30, textLength));
    for (size_t k = 0; k < 3; ++k) {
        record.parameters[k] = littleEndianAt<int32_t>(fields, 60 + 4 * k);
    }
    for (size_t k = 0; k < 2; ++k) {
        record.colours[k] = littleEndianAt<int32_t>(fields, 72 + 4 * k);
    }
    record.option = littleEndianAt<int16_t>(fields, 80);
    record.style = textOf(fields.substr(82, textLength));
    record.x = std::bit_cast<float>(littleEndianAt<uint32_t>(fields, 112));
    record.y = std::bit_cast<float>(littleEndianAt<uint32_t>(fields, 116));
    return record;
}

std::vector<FunctionRecord> parseFunctionList(std::string_view bytes) {
    constexpr size_t length = FunctionRecord::bytesOnDisk;
    std::vector<FunctionRecord> records(recordCount(bytes.size(), length));
    for (size_t i = 0; i < records.size(); ++i) {
        records[i] = FunctionRecord::fromBytes(record(bytes, i, length));
    }
    return records;
}

std::vector<FunctionRecord> readFunctionList(const std::string& path) {
    return parseFunctionList(readBytes(path, mostBytes));
}

void writeFunctionList(const std::string& path, std::span<const FunctionRecord> records) {
    std::string bytes;
    for (const FunctionRecord& record : records)
        bytes += record.toBytes();
    writeBytes(path, bytes);
}

std::vector<std::string> parsePictureList(std::string_view bytes) {
    std::vector<std::string> pictures(recordCount(bytes.size(), pictureRecordBytes));
    for (size_t i = 0; i < pictures.size(); ++i) {
        pictures[i] = textOf(record(bytes, i, pictureRecordBytes));
    }
    return pictures;
}

std::vector<std::string> readPictureList(const std::string& path) {
    return parsePictureList(readBytes(path, mostBytes));
}

std::string pictureRecord(std::string_view path) {
    std::string bytes;
    appendPadded(bytes, path, pictureRecordBytes);
    return bytes;
}

void writePictureList(const std::string& path, std::span<const std::string> pictures) {
    std::string bytes;
    for (const std::string& picture : pictures)
        bytes += pictureRecord(picture);
    writeBytes(path, bytes);
}

}  // namespace tessarine
