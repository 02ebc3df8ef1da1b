#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "pixels/pixel_buffer.h"
#include "pixels/pixel_memory.h"

namespace tessarine::tests {
namespace {

/// Counts what is taken of it.
class CountedMemory : public PixelMemory {
  public:
    std::shared_ptr<Pixel> take(size_t pixels) override {
        ++taken;
        return {static_cast<Pixel*>(std::malloc(pixels * sizeof(Pixel))), std::free};
    }
    void giveBack() override { ++givenBack; }

    int taken = 0;
    int givenBack = 0;
};

TEST(HandOverMemory, HoldsLargeBuffersThatAreSoonHandedOverAndNoOthers) {
    CountedMemory memory;
    const HandOverMemory use(memory);
    const PixelBuffer before(1024, 512);
    EXPECT_EQ(memory.taken, 0);
    {
        const SoonHandedOver soon;
        const PixelBuffer large(1024, 512);
        EXPECT_EQ(memory.taken, 1);
        const PixelBuffer small(16, 16);
        EXPECT_EQ(memory.taken, 1);
    }
    const PixelBuffer after(1024, 512);
    EXPECT_EQ(memory.taken, 1);
}

TEST(HandOverMemory, IsGivenBackWithTheHeaps) {
    CountedMemory memory;
    {
        const HandOverMemory use(memory);
        giveBackPixelMemory();
        EXPECT_EQ(memory.givenBack, 1);
    }
    giveBackPixelMemory();
    EXPECT_EQ(memory.givenBack, 1);
}

}  // namespace
}  // namespace tessarine::tests
