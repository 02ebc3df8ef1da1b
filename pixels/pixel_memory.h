#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessarine {

struct Pixel;

/// Gives memory for pixel buffers. The first write to fresh memory costs eight times what a copy
/// into memory in use does, so that memory is kept and used again. Any thread may ask.
class PixelMemory {
  public:
    virtual ~PixelMemory() = default;
    /// Memory for so many pixels, which holds anything; it comes back when the last owner lets go.
    /// \return nothing where there is none to be had
    virtual std::shared_ptr<Pixel> take(size_t pixels) = 0;
    /// Gives to the system what is kept for later.
    virtual void giveBack() = 0;
};

/// Buffers of fewer pixels are left to the heap, which keeps them as well: a megabyte.
constexpr size_t sizablePixels = size_t{1} << 18;

/// The memory that buffers made on the calling thread lie in. By itself it is the heap's, at most
/// 256 MiB of it kept, or twice the largest buffer lately taken if that is more.
PixelMemory& pixelMemory();

/// Gives to the system what is kept for later.
void giveBackPixelMemory();

/// While this lives, buffers that are soon handed over lie in other memory. One at a time.
class HandOverMemory {
  public:
    explicit HandOverMemory(PixelMemory& memory);
    ~HandOverMemory();
    HandOverMemory(const HandOverMemory&) = delete;
    HandOverMemory& operator=(const HandOverMemory&) = delete;
};

/// While this lives, buffers made on this thread are those that are soon handed over. Memory that
/// another process sees too is had in small pages only, in which a filter takes a quarter longer,
/// so that other buffers keep out of it.
class SoonHandedOver {
  public:
    SoonHandedOver();
    ~SoonHandedOver();
    SoonHandedOver(const SoonHandedOver&) = delete;
    SoonHandedOver& operator=(const SoonHandedOver&) = delete;
};

}  // namespace tessarine
