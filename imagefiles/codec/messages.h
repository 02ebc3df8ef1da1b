#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "imagefiles/picture_files.h"
#include "imagefiles/picture_source.h"

// What the program and its helper process say to each other, one packet a message. Numbers travel
// with the low byte first. A packet that is too short, too long, or holds a value that does not
// exist is no message.

namespace tessarine {

/// The longest packet, in bytes.
constexpr size_t longestPacket = 4096;
/// The longest text in a packet; longer ones are cut.
constexpr size_t longestText = 2048;

/// A block of shared memory. Its size is sealed by the program, which made it.
struct BlockRef {
    uint32_t id = 0;  ///< 0 for none
    uint64_t bytes = 0;

    friend bool operator==(const BlockRef&, const BlockRef&) = default;
};

// ---- From the program to its helper ----

/// Read a picture. Descriptors: the file, then each companion whose bit is set, then the block for
/// metadata, if its id is not 0.
struct ReadRequest {
    uint32_t number = 0;       ///< of the request; each answer repeats it
    double seconds = 0;        ///< wished limit of processor time; 0 for one in proportion
    uint64_t memoryBytes = 0;  ///< ceiling of address space
    uint32_t companions = 0;   ///< bit i: companion i of companionPaths() is passed
    std::string extension;
    BlockRef metadata{};  ///< where the picture's metadata goes; id 0 where it is not wanted
    /// Only the size is asked for: no block is, and ReadDone tells width and height alone.
    bool sizeOnly = false;
    /// Of the metadata only the orientation is asked for: nothing goes into its block.
    bool orientationOnly = false;
};

/// Write the picture in a block. Descriptors: the output, the block, then the block with metadata,
/// if its id is not 0.
struct WriteRequest {
    uint32_t number = 0;
    double seconds = 0;
    uint64_t memoryBytes = 0;
    int32_t width = 0;
    int32_t height = 0;
    int16_t formatIndex = 0;
    BlockRef block;
    std::string extension;
    BlockRef metadata{};
    uint32_t metadataBytes = 0;  ///< of that block
    bool isTurned = false;       ///< as in MetadataToAdd
    bool withoutLocation = false;
};

/// The answer to NeedBlock. Descriptors: the block, if its id is not 0; 0 says that the picture is
/// too large.
struct BlockGrant {
    uint32_t number = 0;
    BlockRef block;
};

// ---- From the helper to the program ----

/// The helper is ready. `refused` names what of its sandbox the kernel did not grant; empty where
/// everything holds.
struct Ready {
    uint32_t version = 0;
    std::string refused;
};

/// The picture's size is known; it is decoded into the block that is granted.
struct NeedBlock {
    uint32_t number = 0;
    int32_t width = 0;
    int32_t height = 0;
};

/// The end of a reading. With error none, `block` holds the picture as a PixelBuffer of width by
/// height holds it, margin included, and the message tells what of the metadata was left out.
struct ReadDone {
    uint32_t number = 0;
    FileError error = FileError::none;
    int32_t width = 0;
    int32_t height = 0;
    int16_t depth = 0;
    uint32_t blockId = 0;
    std::string message;
    uint8_t orientation = 1;     ///< as in FoundMetadata; 1 where no metadata is wanted
    uint32_t metadataBytes = 0;  ///< in the block for metadata
};

/// What a helper's messages call the file that it writes: it is told no names.
constexpr const char* nameOfOutput = "for the picture";

/// The end of a writing. With error none, the message tells what of the metadata was left out.
struct WriteDone {
    uint32_t number = 0;
    FileError error = FileError::none;
    std::string message;
};

constexpr uint32_t protocolVersion = 3;

using ToHelper = std::variant<ReadRequest, WriteRequest, BlockGrant>;
using ToProgram = std::variant<Ready, NeedBlock, ReadDone, WriteDone>;

using Packet = std::vector<uint8_t>;

Packet packetOf(const ToHelper& message);
Packet packetOf(const ToProgram& message);
std::optional<ToHelper> messageToHelper(Bytes packet);
std::optional<ToProgram> messageToProgram(Bytes packet);

/// Bytes that a picture of this size fills in a block: a PixelBuffer's, margin included. 0 for a
/// side outside 1 to 2^30 and for more bytes than 2^40.
uint64_t blockBytesFor(int64_t width, int64_t height);

}  // namespace tessarine
