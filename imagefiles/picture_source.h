#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tessarine {

using Bytes = std::span<const uint8_t>;

/// What a picture is decoded from: the bytes of its file, and of those files beside it that some
/// formats keep their colours in. Decoding opens nothing by itself.
struct PictureSource {
    Bytes file;
    /// In the order of companionPaths(); empty where there is no such file.
    std::vector<Bytes> companions;
    /// Pixels are wanted as they are stored, though the file may say how the picture lies: somebody
    /// else turns it. Otherwise the libraries do as they always did, which turns some pictures.
    bool isTurnedLater = false;
};

/// The letters A to Z in lower case, as extensions are compared.
std::string inLowerCase(std::string text);

/// The files beside a picture file that decoding by this extension (in any case) asks for. None of
/// them need exist.
std::vector<std::string> companionPaths(const std::string& path, const std::string& extension);

/// Opens a picture file for reading. Folders, pipes and devices are none, and nothing waits for the
/// writer of a pipe.
/// \return the descriptor, which the caller closes
/// \throws FileRefused with the system's reason
int openPictureFile(const std::string& path);

/// The most bytes that a picture file may have.
constexpr uint64_t maxFileBytes = uint64_t{1} << 31;

/// The bytes of an open regular file, from its start.
/// \throws FileRefused where it cannot be read to its end, or is larger than maxFileBytes
std::vector<uint8_t> readWholeFile(int file);

}  // namespace tessarine
