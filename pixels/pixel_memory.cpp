#include "pixels/pixel_memory.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <sys/mman.h>
#include <utility>
#include <vector>

#include "pixels/free_pieces.h"
#include "pixels/pixel_buffer.h"

namespace tessarine {

namespace {

constexpr uint64_t mostFreeBytes = uint64_t{256} << 20;

/// A stretch of the heap's.
class Stretch {
  public:
    explicit Stretch(uint64_t bytes) : bytes_((bytes + largePage - 1) / largePage * largePage) {
        memory_ = std::aligned_alloc(largePage, bytes_);
        // Large pages are cleared and found in a tenth of the time. Without them it works as well.
        if (memory_ != nullptr) ::madvise(memory_, bytes_, MADV_HUGEPAGE);
    }
    ~Stretch() { std::free(memory_); }
    Stretch(const Stretch&) = delete;
    Stretch& operator=(const Stretch&) = delete;

    uint64_t bytes() const { return bytes_; }
    Pixel* pixels() const { return static_cast<Pixel*>(memory_); }

  private:
    static constexpr uint64_t largePage = uint64_t{2} << 20;

    uint64_t bytes_;
    void* memory_;
};

class HeapMemory : public PixelMemory {
  public:
    std::shared_ptr<Pixel> take(size_t pixels) override {
        const uint64_t bytes = uint64_t{pixels} * sizeof(Pixel);
        std::unique_ptr<Stretch> stretch;
        {
            const std::lock_guard lock(state_->guard);
            stretch = state_->free.take(bytes);
        }
        if (stretch == nullptr) stretch = std::make_unique<Stretch>(bytes);
        if (stretch->pixels() == nullptr) return nullptr;
        Pixel* const memory = stretch->pixels();
        const std::shared_ptr<Stretch> shared(stretch.release(), [state = state_](Stretch* whole) {
            std::vector<std::unique_ptr<Stretch>> tooMuch;
            const std::lock_guard lock(state->guard);
            tooMuch = state->free.keep(std::unique_ptr<Stretch>(whole));
        });
        return {shared, memory};
    }

    void giveBack() override {
        std::vector<std::unique_ptr<Stretch>> all;
        const std::lock_guard lock(state_->guard);
        all = state_->free.takeAll();
    }

  private:
    /// Outlives the object while buffers do.
    struct State {
        std::mutex guard;
        FreePieces<Stretch> free{mostFreeBytes};
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

HeapMemory& heapMemory() {
    static HeapMemory heap;
    return heap;
}

std::atomic<PixelMemory*> handOver = nullptr;
thread_local int soonHandedOver = 0;

}  // namespace

PixelMemory& pixelMemory() {
    PixelMemory* const other = handOver.load(std::memory_order_acquire);
    return other != nullptr && soonHandedOver > 0 ? *other : heapMemory();
}

void giveBackPixelMemory() {
    heapMemory().giveBack();
    if (PixelMemory* const other = handOver.load(std::memory_order_acquire)) other->giveBack();
}

HandOverMemory::HandOverMemory(PixelMemory& memory) {
    handOver.store(&memory, std::memory_order_release);
}

HandOverMemory::~HandOverMemory() { handOver.store(nullptr, std::memory_order_release); }

SoonHandedOver::SoonHandedOver() { ++soonHandedOver; }

SoonHandedOver::~SoonHandedOver() { --soonHandedOver; }

}  // namespace tessarine
