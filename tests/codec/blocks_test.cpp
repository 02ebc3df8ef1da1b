#include "imagefiles/codec/blocks.h"

#include <fcntl.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "pixels/failures.h"

namespace tessarine::tests {
namespace {

constexpr uint64_t mebi = uint64_t{1} << 20;

TEST(Blocks, TheSizeOfABlockIsSealed) {
    BlockPool pool;
    const auto block = pool.take(100000);
    EXPECT_GE(block->bytes(), 100000U);
    EXPECT_NE(::ftruncate(block->descriptor(), 10), 0);
    EXPECT_NE(::ftruncate(block->descriptor(), 1 << 24), 0);
    EXPECT_NE(::fcntl(block->descriptor(), F_ADD_SEALS, F_SEAL_WRITE), 0);
    EXPECT_NE(::fcntl(block->descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(Blocks, IdsBeginAtOneAndAreNeverShared) {
    BlockPool pool;
    const auto first = pool.take(1);
    const auto second = pool.take(1);
    EXPECT_EQ(first->ref().id, 1U);
    EXPECT_EQ(second->ref().id, 2U);
}

TEST(Blocks, ABlockIsUsedAgainOnceItsLastOwnerLetGo) {
    BlockPool pool;
    auto block = pool.take(mebi);
    const uint32_t id = block->ref().id;
    auto other = block;
    block.reset();
    EXPECT_EQ(pool.freeBytes(), 0U);
    EXPECT_NE(pool.take(mebi)->ref().id, id);
    other.reset();
    EXPECT_EQ(pool.freeBytes(), 2 * mebi);
    EXPECT_EQ(pool.take(mebi)->ref().id, id);
}

TEST(Blocks, TheSmallestFreeBlockThatFitsIsTaken) {
    BlockPool pool;
    auto large = pool.take(5 * mebi);
    auto fitting = pool.take(4 * mebi);
    auto small = pool.take(2 * mebi);
    const uint32_t id = fitting->ref().id;
    fitting.reset();
    large.reset();
    small.reset();
    EXPECT_EQ(pool.take(3 * mebi)->ref().id, id);
}

TEST(Blocks, APictureTakesNoBlockOfMoreThanTwiceItsSize) {
    BlockPool pool;
    const uint32_t id = pool.take(4 * mebi)->ref().id;
    EXPECT_NE(pool.take(2 * mebi - 4096)->ref().id, id);
    EXPECT_EQ(pool.take(2 * mebi)->ref().id, id);
}

TEST(Blocks, FreeBlocksBeyondTheBoundAreLetGo) {
    BlockPool pool(8 * mebi);
    {
        std::vector<std::shared_ptr<Block>> blocks;
        for (int i = 0; i < 20; ++i)
            blocks.push_back(pool.take(mebi));
    }
    EXPECT_EQ(pool.freeBytes(), 8 * mebi);
}

TEST(Blocks, TheLargestBlockLatelyUsedIsKeptTwice) {
    BlockPool pool(mebi);
    {
        std::vector<std::shared_ptr<Block>> blocks;
        for (int i = 0; i < 5; ++i)
            blocks.push_back(pool.take(6 * mebi));
    }
    EXPECT_EQ(pool.freeBytes(), 12 * mebi);
    // Once it is not asked for any more it goes.
    for (int i = 0; i < 200; ++i)
        pool.take(4096);
    EXPECT_LE(pool.freeBytes(), mebi);
}

TEST(Blocks, SmallFreeBlocksDoNotUseUpAllDescriptors) {
    BlockPool pool;
    {
        std::vector<std::shared_ptr<Block>> blocks;
        for (int i = 0; i < 200; ++i)
            blocks.push_back(pool.take(1));
    }
    EXPECT_LE(pool.freeBytes(), 64U * 4096);
}

TEST(Blocks, APictureInABlockIsItsOnlyOwnerAndIsWrittenInPlace) {
    BlockPool pool;
    auto block = pool.take(blockBytesFor(10, 10));
    const Pixel* const pixels = block->pixels();
    PixelBuffer picture = pictureIn(std::move(block), 10, 10);
    EXPECT_EQ(picture.writableBlock(), pixels);
    PixelBuffer copy = picture;
    EXPECT_NE(copy.writableBlock(), pixels);
    EXPECT_EQ(picture.block(), pixels);
}

TEST(Blocks, APictureGivesItsBlockBack) {
    BlockPool pool;
    { const PixelBuffer picture = pictureIn(pool.take(blockBytesFor(10, 10)), 10, 10); }
    EXPECT_GT(pool.freeBytes(), 0U);
}

TEST(Blocks, APictureThatLiesInABlockIsKnown) {
    BlockPool pool;
    auto block = pool.take(blockBytesFor(10, 10));
    const uint32_t id = block->ref().id;
    const PixelBuffer picture = pictureIn(std::move(block), 10, 10);
    ASSERT_NE(pool.holding(picture), nullptr);
    EXPECT_EQ(pool.holding(picture)->ref().id, id);
    EXPECT_EQ(pool.holding(PixelBuffer(10, 10)), nullptr);
    EXPECT_EQ(pool.holding(PixelBuffer()), nullptr);
}

TEST(Blocks, APictureOutlivesThePool) {
    PixelBuffer picture;
    {
        BlockPool pool;
        picture = pictureIn(pool.take(blockBytesFor(100, 100)), 100, 100);
    }
    std::fill_n(picture.writableBlock(), picture.pixelCount(), Pixel{1, 2, 3, 0});
    EXPECT_EQ(picture.at(99, 99), (Pixel{1, 2, 3, 0}));
}

TEST(Blocks, MemoryThatIsNotToBeHadIsRefused) {
    BlockPool pool;
    EXPECT_THROW(pool.take(uint64_t{1} << 62), StatementFailed);
}

TEST(Blocks, ThreadsTakeBlocksSideBySide) {
    BlockPool pool(mebi);
    std::vector<std::thread> threads;
    for (uint32_t t = 0; t < 4; ++t)
        threads.emplace_back([&pool, t] {
            for (uint32_t i = 0; i < 300; ++i) {
                auto block = pool.take(4096 * (1 + (i * 7 + t) % 40));
                block->pixels()[0] = {static_cast<uint8_t>(t), 0, 0, 0};
                PixelBuffer picture = pictureIn(std::move(block), 1, 1);
                EXPECT_EQ(picture.block()->blue, t);
                EXPECT_NE(pool.holding(picture), nullptr);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_LE(pool.freeBytes(), mebi);
}

}  // namespace
}  // namespace tessarine::tests
