#include "imagefiles/decoders.h"

namespace tessarine {

/// The file library shows whatever memory holds where a Photo CD ends before its base picture.
std::optional<Decoded> takeOverPcd(const PictureSource& source) {
    const Bytes file = source.file;
    constexpr size_t basePicture = 0x30000;
    constexpr size_t baseBytes = 768 * 512 * 3 / 2;
    if (file.size() < basePicture + baseBytes) refuse("the file is too short for its picture");
    return std::nullopt;
}

/// Koala pictures have no signature, and the file library takes anything for one. What they have
/// is a size, or the address to which they are loaded.
std::optional<Decoded> takeOverKoa(const PictureSource& source) {
    const Bytes file = source.file;
    constexpr size_t picture = 8000 + 1000 + 1000 + 1;
    const bool hasAddress = file.size() >= picture + 2 && file[0] == 0 && file[1] == 0x60;
    if (!hasAddress && file.size() != picture) refuse("this is no Koala picture");
    return std::nullopt;
}

}  // namespace tessarine
