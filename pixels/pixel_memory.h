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

/// Buffers of fewer pixels are left to the heap, which keeps them as well.
constexpr size_t sizablePixels = 16384;

/// The memory of this process's buffers: by itself the heap's, at most 256 MiB of it kept, or twice
/// the largest buffer lately taken if that is more.
PixelMemory& pixelMemory();

/// While this lives, the process's buffers lie in other memory. One at a time.
class UsePixelMemory {
  public:
    explicit UsePixelMemory(PixelMemory& memory);
    ~UsePixelMemory();
    UsePixelMemory(const UsePixelMemory&) = delete;
    UsePixelMemory& operator=(const UsePixelMemory&) = delete;
};

}  // namespace tessarine
