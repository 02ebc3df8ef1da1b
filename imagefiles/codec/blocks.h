#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "imagefiles/codec/messages.h"
#include "pixels/pixel_buffer.h"

namespace tessarine {

/// Memory that a program and its helpers share: a file without a name, whose size is sealed, mapped
/// here once. What a helper does to the pixels in it shows here; nothing that it does takes memory
/// away from under the program.
class Block {
  public:
    /// \throws StatementFailed where the system gives no such memory
    Block(uint32_t id, uint64_t bytes);
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    BlockRef ref() const { return {id_, bytes_}; }
    uint64_t bytes() const { return bytes_; }
    int descriptor() const { return file_; }
    Pixel* pixels() const { return pixels_; }

  private:
    uint32_t id_;
    uint64_t bytes_;
    int file_ = -1;
    Pixel* pixels_ = nullptr;
};

/// Blocks to be used again: memory that was used before costs a tenth of fresh memory. Any thread
/// may take blocks and let go of them; blocks outlive the pool where somebody still holds one.
class BlockPool {
  public:
    /// \param mostFreeBytes  how much is kept for later; twice the largest block lately taken, if
    ///                       that is more
    explicit BlockPool(uint64_t mostFreeBytes = uint64_t{256} << 20);

    /// A block of at least so many bytes: the smallest free one, if it has not more than twice as
    /// many, else a new one. What is in it is left from its last use. It goes back to the pool when
    /// the last of its owners lets go.
    /// \throws StatementFailed where the system gives no such memory
    std::shared_ptr<Block> take(uint64_t bytes);

    /// The block that a picture lies in, for as long as the picture does; nullptr where it lies
    /// elsewhere.
    std::shared_ptr<Block> holding(const PixelBuffer& picture) const;

    /// Bytes that are kept for later.
    uint64_t freeBytes() const;
    /// Lets go of them.
    void giveBack();

  private:
    struct State;

    std::shared_ptr<State> state_;
};

/// A block's memory, which the block lasts as long as.
std::shared_ptr<Pixel> pixelsIn(std::shared_ptr<Block> block);

/// A picture of this size in a block, which is given up to it: nothing is copied, and the picture
/// is the block's only owner. \param block  of at least blockBytesFor(width, height) bytes
PixelBuffer pictureIn(std::shared_ptr<Block> block, int32_t width, int32_t height);

}  // namespace tessarine
