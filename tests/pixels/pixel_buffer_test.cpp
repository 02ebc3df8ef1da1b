#include "pixels/pixel_buffer.h"

#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "pixels/failures.h"
#include "support/pictures.h"

namespace tessarine::tests {
namespace {

TEST(PixelBuffer, HasTwoPixelsOfMarginOnEachSideOfTheImage) {
    const PixelBuffer buffer(5, 3);
    EXPECT_EQ(buffer.width(), 5);
    EXPECT_EQ(buffer.height(), 3);
    EXPECT_EQ(buffer.stride(), 5 + 4);
    EXPECT_EQ(buffer.pixelCount(), 9U * 7U);
    EXPECT_EQ(buffer.byteCount(), 9U * 7U * 4U);
    EXPECT_EQ(&buffer.at(-2, -2), buffer.block());
    EXPECT_EQ(&buffer.at(5 + 1, 3 + 1), buffer.block() + buffer.pixelCount() - 1);
}

TEST(PixelBuffer, ByteOfAChannelLiesWhereABitmapHasIt) {
    PixelBuffer buffer(5, 3);
    auto* bytes = reinterpret_cast<uint8_t*>(buffer.writableBlock());
    for (size_t i = 0; i < buffer.byteCount(); ++i)
        bytes[i] = static_cast<uint8_t>(i);
    for (int32_t y = -2; y <= 4; ++y)
        for (int32_t x = -2; x <= 6; ++x) {
            const int32_t offset = ((y + 2) * (5 + 4) + (x + 2)) * 4;
            EXPECT_EQ(buffer.at(x, y).blue, static_cast<uint8_t>(offset));
            EXPECT_EQ(buffer.at(x, y).green, static_cast<uint8_t>(offset + 1));
            EXPECT_EQ(buffer.at(x, y).red, static_cast<uint8_t>(offset + 2));
            EXPECT_EQ(buffer.at(x, y).fourth, static_cast<uint8_t>(offset + 3));
            EXPECT_EQ(&buffer.row(y)[x], &buffer.at(x, y));
        }
}

TEST(PixelBuffer, NewOneHasEveryByte0) {
    const PixelBuffer buffer(70, 40);
    const auto* bytes = reinterpret_cast<const uint8_t*>(buffer.block());
    for (size_t i = 0; i < buffer.byteCount(); ++i)
        ASSERT_EQ(bytes[i], 0) << i;
}

TEST(PixelBuffer, WithoutAnImageKeepsItsMargin) {
    const PixelBuffer none(0, 0);
    EXPECT_TRUE(none.isDimensioned());
    EXPECT_EQ(none.byteCount(), 4U * 4U * 4U);
    const PixelBuffer flat(7, 0);
    EXPECT_TRUE(flat.isDimensioned());
    EXPECT_EQ(flat.byteCount(), 11U * 4U * 4U);
}

TEST(PixelBuffer, WithoutDimensionsHoldsNoByte) {
    const PixelBuffer buffer;
    EXPECT_FALSE(buffer.isDimensioned());
    EXPECT_EQ(buffer.width(), 0);
    EXPECT_EQ(buffer.height(), 0);
    EXPECT_EQ(buffer.byteCount(), 0U);
    EXPECT_EQ(buffer, PixelBuffer());
    EXPECT_FALSE(buffer == PixelBuffer(0, 0));
}

TEST(PixelBuffer, OfANegativeSizeOrMoreThanMemoryHoldsFails) {
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    EXPECT_THROW(PixelBuffer(-1, 5), StatementFailed);
    EXPECT_THROW(PixelBuffer(5, -1), StatementFailed);
    EXPECT_THROW(PixelBuffer(highest, highest), StatementFailed);
}

/// A buffer whose pixels hold their place in the block, margin included, from 1 on.
PixelBuffer numbered(int32_t width, int32_t height) {
    PixelBuffer buffer(width, height);
    Pixel* block = buffer.writableBlock();
    for (size_t i = 0; i < buffer.pixelCount(); ++i)
        block[i] = {static_cast<uint8_t>(i + 1), 2, 3, 4};
    return buffer;
}

TEST(PixelBuffer, ReachesImageAndMarginAsTheyLie) {
    const PixelBuffer buffer = numbered(5, 3);
    for (int32_t y = -2; y < 5; ++y)
        for (int32_t x = -2; x < 7; ++x)
            EXPECT_EQ(buffer.reached(x, y), buffer.at(x, y)) << x << ", " << y;
}

TEST(PixelBuffer, ReachesTheNeighbouringRowsBeyondTheEndsOfARow) {
    const PixelBuffer buffer = numbered(5, 3);
    EXPECT_EQ(buffer.reached(7, 0), buffer.at(-2, 1));
    EXPECT_EQ(buffer.reached(-3, 1), buffer.at(6, 0));
    EXPECT_EQ(buffer.reached(0, 2), buffer.reached(9, 1)) << "rows are 9 pixels apart";
    EXPECT_EQ(buffer.reached(2 * 9 + 1, -1), buffer.at(1, 1));
    EXPECT_EQ(buffer.reached(-100 * 9 + 2, 101), buffer.at(2, 1)) << "far to the left and down";
}

TEST(PixelBuffer, ReachesBlackWhereItsBlockEnds) {
    const PixelBuffer buffer = numbered(5, 3);
    EXPECT_EQ(buffer.reached(-2, -2), (Pixel{1, 2, 3, 4})) << "the first pixel";
    EXPECT_EQ(buffer.reached(-3, -2), Pixel{});
    EXPECT_EQ(buffer.reached(6, 4), (Pixel{63, 2, 3, 4})) << "the last one";
    EXPECT_EQ(buffer.reached(7, 4), Pixel{});
    EXPECT_EQ(buffer.reached(-2, 5), Pixel{});
    EXPECT_EQ(buffer.reached(0, -3), Pixel{});
}

TEST(PixelBuffer, ReachesBlackAnywhereFarAway) {
    constexpr int64_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int64_t highest = std::numeric_limits<int32_t>::max();
    const PixelBuffer buffer = numbered(5, 3);
    for (const int64_t x : {lowest, highest})
        for (const int64_t y : {lowest, int64_t{0}, highest})
            EXPECT_EQ(buffer.reached(x, y), Pixel{}) << x << ", " << y;
}

TEST(PixelBuffer, ReachesBlackWithoutAnImageOrDimensions) {
    const PixelBuffer none;
    const PixelBuffer empty(0, 0);
    for (int32_t y = -4; y < 5; ++y)
        for (int32_t x = -4; x < 5; ++x) {
            EXPECT_EQ(none.reached(x, y), Pixel{});
            EXPECT_EQ(empty.reached(x, y), Pixel{});
        }
    EXPECT_EQ(numbered(0, 0).reached(1, 1), (Pixel{16, 2, 3, 4})) << "a margin has 16 pixels";
    EXPECT_EQ(numbered(0, 0).reached(2, 1), Pixel{});
}

TEST(PixelBuffer, CopiesAreIndependentBothWays) {
    PixelBuffer original(2, 2);
    original.writableBlock()[original.offsetOfRow(0)] = {1, 2, 3, 4};
    PixelBuffer copy = original;
    EXPECT_EQ(copy.block(), original.block()) << "memory is shared until written";

    copy.writableBlock()[copy.offsetOfRow(0)] = {5, 6, 7, 8};
    EXPECT_EQ(original.at(0, 0), (Pixel{1, 2, 3, 4}));
    EXPECT_EQ(copy.at(0, 0), (Pixel{5, 6, 7, 8}));

    const PixelBuffer second = original;
    original.writableBlock()[0] = {9, 9, 9, 9};
    EXPECT_EQ(second.at(-2, -2), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(second.at(0, 0), (Pixel{1, 2, 3, 4}));
}

TEST(PixelBuffer, WritingTheOnlyHolderKeepsItsPlace) {
    PixelBuffer buffer(2, 2);
    const Pixel* before = buffer.block();
    { const PixelBuffer passing = buffer; }
    EXPECT_EQ(buffer.writableBlock(), before);
}

TEST(PixelBuffer, EqualityCoversSizeMarginAndFourthBytes) {
    const PixelBuffer buffer = randomBuffer(6, 4, 1);
    PixelBuffer other = randomBuffer(6, 4, 1);
    EXPECT_EQ(buffer, other);
    other.writableBlock()[0].fourth = 1;
    EXPECT_FALSE(buffer == other);
    EXPECT_FALSE(PixelBuffer(6, 4) == PixelBuffer(4, 6));
}

}  // namespace
}  // namespace tessarine::tests
