#include "imagefiles/memory_file.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace tessarine {

namespace {

/// Moves a position as fseek does. \return false where it would lie before the start
bool movePosition(int64_t& position, int64_t end, int64_t offset, int origin) {
    const int64_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position : end;
    int64_t moved = 0;
    if (__builtin_add_overflow(base, offset, &moved) || moved < 0) return false;
    position = moved;
    return true;
}

}  // namespace

size_t MemoryReader::read(void* target, size_t itemSize, size_t count) {
    if (itemSize == 0 || count == 0 || isAtEnd()) return 0;
    const size_t there = bytes_.size() - static_cast<size_t>(position_);
    size_t wanted = 0;
    if (__builtin_mul_overflow(itemSize, count, &wanted)) wanted = there;
    const size_t taken = std::min(wanted, there);
    std::memcpy(target, bytes_.data() + position_, taken);
    if (pretended_) {
        const int64_t at = pretended_->place - position_;
        if (at >= 0 && at < static_cast<int64_t>(taken))
            static_cast<uint8_t*>(target)[at] = pretended_->value;
    }
    position_ += static_cast<int64_t>(taken);
    return taken / itemSize;
}

bool MemoryReader::seek(int64_t offset, int origin) {
    return movePosition(position_, static_cast<int64_t>(bytes_.size()), offset, origin);
}

size_t MemoryWriter::write(const void* source, size_t count) {
    if (count == 0) return 0;
    const auto start = static_cast<size_t>(position_);
    // The writer is a library that knows no exceptions.
    try {
        if (bytes_.size() < start + count) bytes_.resize(start + count);
    } catch (const std::exception&) {
        ranOut_ = true;
        return 0;
    }
    std::memcpy(bytes_.data() + start, source, count);
    position_ += static_cast<int64_t>(count);
    return count;
}

bool MemoryWriter::seek(int64_t offset, int origin) {
    return movePosition(position_, static_cast<int64_t>(bytes_.size()), offset, origin);
}

}  // namespace tessarine
