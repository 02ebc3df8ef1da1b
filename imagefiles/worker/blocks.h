#pragma once

#include <array>
#include <memory>
#include <optional>

#include "imagefiles/codec/channel.h"
#include "imagefiles/codec/messages.h"

namespace tessarine {

/// A block of the program's memory, mapped into this process.
class MappedBlock {
  public:
    MappedBlock(void* start, const BlockRef& ref, uint64_t device, uint64_t inode)
        : start_(start), ref_(ref), device_(device), inode_(inode) {}
    ~MappedBlock();
    MappedBlock(const MappedBlock&) = delete;
    MappedBlock& operator=(const MappedBlock&) = delete;

    Pixel* pixels() const { return static_cast<Pixel*>(start_); }
    uint32_t id() const { return ref_.id; }
    uint64_t bytes() const { return ref_.bytes; }
    bool isFile(uint64_t device, uint64_t inode) const {
        return device_ == device && inode_ == inode;
    }

  private:
    void* start_;
    BlockRef ref_;
    uint64_t device_;
    uint64_t inode_;
};

/// Keeps the blocks that the program used last mapped: their pages are warm.
class BlockCache {
  public:
    static constexpr size_t mostBlocks = 16;
    /// Blocks beyond this stay mapped no longer than the request that they came with.
    static constexpr uint64_t mostIdleBytes = uint64_t{512} << 20;

    /// What became of mapping a block.
    enum class End {
        mapped,
        refused,   ///< no memory block, shorter than it should be, or not sealed
        noMemory,  ///< there is no room for it
    };
    struct Result {
        End end = End::refused;
        std::shared_ptr<MappedBlock> block;
    };

    /// Maps a block, or finds it mapped.
    /// \param needed  bytes that it has to hold
    Result map(const BlockRef& ref, int descriptor, uint64_t needed);
    /// Between two requests: lets go what is too large to be kept.
    void trim();
    /// Lets all go.
    void clear() { blocks_.fill(nullptr); }

  private:
    std::array<std::shared_ptr<MappedBlock>, mostBlocks> blocks_;  ///< the last used one first
};

}  // namespace tessarine
