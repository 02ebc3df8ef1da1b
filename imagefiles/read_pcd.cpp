#include "imagefiles/decoders.h"

namespace tessarine {

/// The file library shows whatever memory holds where a Photo CD ends before its base picture.
std::optional<Decoded> takeOverPcd(Bytes file, const std::string&) {
    constexpr size_t basePicture = 0x30000;
    constexpr size_t baseBytes = 768 * 512 * 3 / 2;
    if (file.size() < basePicture + baseBytes) refuse("the file is too short for its picture");
    return std::nullopt;
}

}  // namespace tessarine
