#include "imagefiles/metadata/structure.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "imagefiles/decoding.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr uint64_t bytesOfEntry = 12;

/// An entry of a directory.
struct Values {
    uint64_t place = 0;  ///< of the first value
    uint32_t kind = 0;
    uint32_t count = 0;
};

std::vector<uint32_t> numbersOf(const Structure& structure, const Values& values) {
    constexpr uint32_t most = 4096;  // thumbnails have few strips
    std::vector<uint32_t> numbers;
    const size_t size = values.kind == 3 ? 2 : 4;
    attempt([&] {
        for (uint32_t i = 0; i < std::min(values.count, most); ++i)
            numbers.push_back(structure.number(values.place + i * size, size));
    });
    return numbers;
}

/// \return the place of the next directory
uint64_t clearDirectory(Structure& structure, uint64_t directory) {
    // As a file of its own, in strips, or in tiles: places and lengths.
    constexpr std::array<std::pair<uint16_t, uint16_t>, 3> pictures{
        {{0x0201, 0x0202}, {0x0111, 0x0117}, {0x0144, 0x0145}}};
    std::array<std::pair<Values, Values>, pictures.size()> told{};
    std::vector<std::pair<uint64_t, uint64_t>> outside;
    const uint64_t entries = structure.number(directory, 2);
    const uint64_t end = directory + 2 + entries * bytesOfEntry + 4;
    for (uint64_t i = 0; i < entries; ++i) {
        const uint64_t entry = directory + 2 + i * bytesOfEntry;
        const uint32_t tag = structure.number(entry, 2);
        Values values{entry + 8, structure.number(entry + 2, 2), structure.number(entry + 4, 4)};
        const uint64_t bytes = bytesOfKind(values.kind) * values.count;
        if (bytes > 4) {
            values.place = structure.number(entry + 8, 4);
            outside.emplace_back(values.place, bytes);
        }
        for (size_t j = 0; j < pictures.size(); ++j) {
            if (tag == pictures[j].first) told[j].first = values;
            if (tag == pictures[j].second) told[j].second = values;
        }
    }
    for (const auto& [places, lengths] : told) {
        const std::vector<uint32_t> starts = numbersOf(structure, places);
        const std::vector<uint32_t> counts = numbersOf(structure, lengths);
        for (size_t i = std::min(starts.size(), counts.size()); i-- > 0;)
            structure.clearPicture(starts[i], counts[i], directory);
    }
    // Values in front may be shared with the first directory.
    for (const auto& [place, bytes] : outside)
        if (place >= end) structure.clear(place, bytes);
    const uint64_t next = structure.number(end - 4, 4);
    structure.clear(directory, end - directory);
    return next;
}

}  // namespace

uint64_t bytesOfKind(uint32_t kind) {
    constexpr uint64_t sizes[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return kind < std::size(sizes) ? sizes[kind] : 1;
}

Structure::Structure(ByteVector& bytes) : bytes_(bytes), isBig_(startsWith(bytes, "MM")) {}

uint32_t Structure::number(uint64_t place, size_t size) const {
    ByteReader reader(bytes_);
    reader.seek(place);
    if (size == 2) return isBig_ ? reader.u16be() : reader.u16le();
    return isBig_ ? reader.u32be() : reader.u32le();
}

void Structure::clear(uint64_t place, uint64_t count) {
    if (place >= bytes_.size()) return;
    const uint64_t end = std::min<uint64_t>(bytes_.size(), place + count);
    std::fill(bytes_.begin() + static_cast<ptrdiff_t>(place),
              bytes_.begin() + static_cast<ptrdiff_t>(end), uint8_t{0});
}

void Structure::clearPicture(uint64_t place, uint64_t count, uint64_t behind) {
    clear(place, count);
    if (count > 0 && place > behind && place < bytes_.size() && place + count >= bytes_.size())
        bytes_.resize(place);
}

bool Structure::isJpegAt(uint64_t place) const {
    return place < bytes_.size() && bytes_.size() - place > 2 && bytes_[place + 1] == 0xD8 &&
           bytes_[place + 2] == 0xFF;
}

void cutThumbnail(ByteVector& exif) {
    attempt([&] {
        Structure structure(exif);
        const uint64_t first = structure.number(4, 4);
        const uint64_t link = first + 2 + structure.number(first, 2) * bytesOfEntry;
        uint64_t next = structure.number(link, 4);
        structure.clear(link, 4);
        // Those that are cleared have no next one, so that a circle ends.
        while (next != 0 && next != first)
            next = clearDirectory(structure, next);
    });
}

}  // namespace tessarine
