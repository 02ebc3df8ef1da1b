#include "imagefiles/picture.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <gtest/gtest.h>

#include "pixels/failures.h"
#include "support/pictures.h"

// The device bitmap and the picture holder, without any file.

namespace tessarine::tests {
namespace {

/// Random colours with the fourth bytes that a bitmap has.
Bitmap randomBitmap(int32_t width, int32_t height, uint32_t seed) {
    return Bitmap(randomBuffer(width, height, seed));
}

PictureHolder holderOf(const Bitmap& picture) {
    PictureHolder holder;
    holder.setPicture(picture);
    return holder;
}

/// How a buffer is described to the painting call.
BitmapInfo infoOf(const PixelBuffer& buffer) { return {buffer.width() + 4, buffer.height() + 4}; }

/// Whether every margin byte and every fourth byte is 0.
bool hasBlackMarginAndFourths(const PixelBuffer& pixels) {
    for (int32_t y = -2; y < pixels.height() + 2; ++y)
        for (int32_t x = -2; x < pixels.width() + 2; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < pixels.width() && y < pixels.height();
            const Pixel& p = pixels.at(x, y);
            if (inside ? p.fourth != 0 : p != Pixel{}) return false;
        }
    return true;
}

Pixel colourOf(const Pixel& p) { return {p.blue, p.green, p.red, 0}; }

TEST(Bitmap, ADefaultOneIsNoValidBitmap) {
    const Bitmap none;
    EXPECT_FALSE(none.isValid());
    EXPECT_EQ(none.width(), 0);
    EXPECT_EQ(none.height(), 0);
    EXPECT_FALSE(Bitmap(PixelBuffer()).isValid());
}

TEST(Bitmap, ANewOneIsBlack) {
    const Bitmap bitmap(7, 5);
    EXPECT_TRUE(bitmap.isValid());
    EXPECT_EQ(bitmap.width(), 7);
    EXPECT_EQ(bitmap.height(), 5);
    EXPECT_EQ(bitmap.pixels(), PixelBuffer(7, 5));
    EXPECT_TRUE(Bitmap(0, 0).isValid());
    EXPECT_THROW(Bitmap(-1, 5), StatementFailed);
}

TEST(Bitmap, OfABufferHasItsColoursButNoMarginAndNoFourthBytes) {
    PixelBuffer buffer = randomBuffer(7, 5, 1);
    buffer.writableBlock()[3] = {1, 2, 3, 4};
    const Bitmap bitmap(buffer);
    EXPECT_TRUE(hasBlackMarginAndFourths(bitmap.pixels()));
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(bitmap.row(y)[x], colourOf(buffer.at(x, y)));
    EXPECT_EQ(buffer.block()[3], (Pixel{1, 2, 3, 4})) << "the buffer itself stays";
}

TEST(Bitmap, OfABufferFindsASinglePixelOfMarginOnEachSide) {
    for (const auto& [x, y] :
         {std::pair{-1, 0}, {-2, 2}, {3, 1}, {4, 2}, {1, -1}, {0, 3}, {4, 4}}) {
        PixelBuffer buffer(3, 3);
        buffer.writableBlock()[buffer.offsetOfRow(y) + x] = {0, 1, 0, 0};
        EXPECT_EQ(Bitmap(buffer).pixels(), PixelBuffer(3, 3)) << x << ", " << y;
    }
}

TEST(Bitmap, OfABufferInItsFormTakesNoCopy) {
    const PixelBuffer buffer = randomBitmap(7, 5, 1).pixels();
    EXPECT_EQ(Bitmap(buffer).pixels().block(), buffer.block());
}

TEST(Bitmap, CopiesAreIndependent) {
    Bitmap bitmap = randomBitmap(7, 5, 2);
    const Bitmap copy = bitmap;
    const Pixel before = bitmap.row(1)[1];
    bitmap.writableRow(1)[1] = {1, 2, 3, 0};
    EXPECT_EQ(copy.row(1)[1], before);
    EXPECT_FALSE(bitmap == copy);
}

TEST(PictureHolder, ANewOneIsEmpty) {
    const PictureHolder holder;
    EXPECT_EQ(holder.width(), 0);
    EXPECT_EQ(holder.height(), 0);
    EXPECT_FALSE(holder.picture().isValid());
    EXPECT_EQ(holder.drawn(), Bitmap(0, 0));
}

TEST(PictureHolder, TakesItsSizeFromThePictureAndShowsIt) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    PictureHolder holder = holderOf(picture);
    EXPECT_EQ(holder.width(), 7);
    EXPECT_EQ(holder.height(), 5);
    EXPECT_EQ(holder.drawn(), picture);

    const Bitmap next = randomBitmap(3, 9, 4);
    holder.setPicture(next);
    EXPECT_EQ(holder.width(), 3);
    EXPECT_EQ(holder.height(), 9);
    EXPECT_EQ(holder.drawn(), next);
}

TEST(PictureHolder, ANewPictureTakesAwayWhatWasDrawn) {
    PictureHolder holder = holderOf(randomBitmap(7, 5, 3));
    holder.render(randomBitmap(7, 5, 4), 0, 0, 7, 5, false);
    const Bitmap next = randomBitmap(7, 5, 5);
    holder.setPicture(next);
    EXPECT_EQ(holder.drawn(), next);
}

TEST(PictureHolder, WithoutAPictureKeepsItsSizeAndIsBlack) {
    PictureHolder holder = holderOf(randomBitmap(7, 5, 3));
    holder.render(randomBitmap(7, 5, 4), 0, 0, 7, 5, false);
    holder.clearPicture();
    EXPECT_EQ(holder.width(), 7);
    EXPECT_EQ(holder.height(), 5);
    EXPECT_FALSE(holder.picture().isValid());
    EXPECT_EQ(holder.drawn(), Bitmap(7, 5));
}

TEST(PictureHolder, AnotherSizeKeepsThePictureAtTheTopLeftAndIsBlackBesideIt) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    PictureHolder holder = holderOf(picture);
    holder.setSize(9, 4);
    EXPECT_EQ(holder.width(), 9);
    EXPECT_EQ(holder.height(), 4);
    const Bitmap drawn = holder.drawn();
    ASSERT_EQ(drawn.width(), 9);
    ASSERT_EQ(drawn.height(), 4);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(drawn.row(y)[x], x < 7 ? picture.row(y)[x] : Pixel{});
    EXPECT_EQ(holder.picture(), picture);
}

TEST(PictureHolder, ASideBelow1IsRefusedAndTheSizeStays) {
    PictureHolder holder = holderOf(randomBitmap(7, 5, 3));
    EXPECT_THROW(holder.setSize(0, 4), StatementFailed);
    EXPECT_THROW(holder.setSize(4, -1), StatementFailed);
    EXPECT_EQ(holder.width(), 7);
    EXPECT_EQ(holder.height(), 5);
}

TEST(PictureHolder, ClearingTheSurfaceShowsThePictureAgain) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    const Bitmap drawing = randomBitmap(7, 5, 4);
    PictureHolder holder = holderOf(picture);
    holder.render(drawing, 0, 0, 7, 5, false);
    EXPECT_EQ(holder.drawn(), drawing);
    EXPECT_EQ(holder.picture(), picture) << "a drawing is not lasting by itself";
    holder.clearSurface();
    EXPECT_EQ(holder.drawn(), picture);
}

TEST(PictureHolder, AKeptDrawingOutlastsTheSurface) {
    const Bitmap drawing = randomBitmap(7, 5, 4);
    PictureHolder holder = holderOf(randomBitmap(7, 5, 3));
    holder.render(drawing, 0, 0, 7, 5, false);
    holder.keepDrawing();
    holder.clearSurface();
    EXPECT_EQ(holder.picture(), drawing);
    EXPECT_EQ(holder.drawn(), drawing);
}

TEST(PictureHolder, AKeptDrawingHasTheHoldersSize) {
    PictureHolder holder = holderOf(randomBitmap(7, 5, 3));
    holder.setSize(3, 8);
    holder.keepDrawing();
    EXPECT_EQ(holder.picture().width(), 3);
    EXPECT_EQ(holder.picture().height(), 8);
}

TEST(PictureHolder, PaintingLeavesOutMarginAndFourthBytes) {
    PixelBuffer buffer = randomBuffer(7, 5, 6);
    buffer.writableBlock()[0] = {9, 9, 9, 9};
    PictureHolder holder = holderOf(Bitmap(7, 5));
    holder.paint(buffer, infoOf(buffer), 7, 5);
    EXPECT_EQ(holder.drawn(), Bitmap(buffer));
    EXPECT_TRUE(hasBlackMarginAndFourths(holder.drawn().pixels()));
    EXPECT_EQ(holder.picture(), Bitmap(7, 5)) << "painting does not touch the lasting picture";
}

TEST(PictureHolder, PaintingASmallerAreaKeepsWhatLiesBesideIt) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    const PixelBuffer buffer = randomBuffer(9, 9, 6);
    PictureHolder holder = holderOf(picture);
    holder.paint(buffer, infoOf(buffer), 4, 2);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(holder.drawn().row(y)[x],
                      x < 4 && y < 2 ? colourOf(buffer.at(x, y)) : picture.row(y)[x]);
}

TEST(PictureHolder, PaintingALargerAreaStopsAtTheHoldersEdge) {
    const PixelBuffer buffer = randomBuffer(9, 9, 6);
    PictureHolder holder = holderOf(Bitmap(7, 5));
    holder.paint(buffer, infoOf(buffer), 9, 9);
    EXPECT_EQ(holder.width(), 7);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(holder.drawn().row(y)[x], colourOf(buffer.at(x, y)));
}

TEST(PictureHolder, PaintingNoAreaDrawsNothing) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    const PixelBuffer buffer = randomBuffer(7, 5, 6);
    PictureHolder holder = holderOf(picture);
    holder.paint(buffer, infoOf(buffer), 0, 5);
    holder.paint(buffer, infoOf(buffer), 7, -1);
    EXPECT_EQ(holder.drawn(), picture);
}

TEST(PictureHolder, PaintingABufferSmallerThanTheHolderIsBlackBesideIt) {
    // Behind the image area lie the two columns and rows of margin, and then nothing.
    PixelBuffer buffer = randomBuffer(3, 2, 6);
    std::fill_n(buffer.writableBlock(), buffer.pixelCount(), Pixel{5, 6, 7, 8});
    PictureHolder holder = holderOf(randomBitmap(7, 5, 3));
    holder.paint(buffer, infoOf(buffer), 7, 5);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(holder.drawn().row(y)[x], x < 5 && y < 4 ? (Pixel{5, 6, 7, 0}) : Pixel{})
                << x << ", " << y;
}

TEST(PictureHolder, PaintingReadsTheBytesAsTheHeaderLaysThemOut) {
    // The block of a 6 by 4 image counts 10 by 8 pixels. Told rows of 8 pixels, the painter finds
    // pixel (x, y) at (y + 2) * 8 + x + 2 of them, and black behind the last one.
    PixelBuffer buffer(6, 4);
    for (size_t i = 0; i < buffer.pixelCount(); ++i)
        buffer.writableBlock()[i] = {static_cast<uint8_t>(i), 1, 2, 3};
    PictureHolder holder = holderOf(randomBitmap(4, 12, 3));
    holder.paint(buffer, {8, 16}, 4, 12);
    for (int32_t y = 0; y < 12; ++y)
        for (int32_t x = 0; x < 4; ++x) {
            const int32_t place = (y + 2) * 8 + x + 2;
            const Pixel expected =
                place < 10 * 8 ? Pixel{static_cast<uint8_t>(place), 1, 2, 0} : Pixel{};
            EXPECT_EQ(holder.drawn().row(y)[x], expected) << x << ", " << y;
        }
}

TEST(PictureHolder, PaintingBeyondTheHeadersRowsAndColumnsIsBlack) {
    PixelBuffer buffer(8, 8);
    std::fill_n(buffer.writableBlock(), buffer.pixelCount(), Pixel{5, 6, 7, 0});
    PictureHolder holder = holderOf(randomBitmap(8, 8, 3));
    // A header for an image of 3 by 2 has two more columns and rows of margin.
    holder.paint(buffer, {3 + 4, 2 + 4}, 8, 8);
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 8; ++x)
            EXPECT_EQ(holder.drawn().row(y)[x], x < 5 && y < 4 ? (Pixel{5, 6, 7, 0}) : Pixel{})
                << x << ", " << y;
}

TEST(PictureHolder, PaintingABufferWithoutDimensionsIsBlack) {
    PictureHolder holder = holderOf(randomBitmap(4, 3, 3));
    holder.paint(PixelBuffer(), {8, 7}, 4, 3);
    EXPECT_EQ(holder.drawn(), Bitmap(4, 3));
    holder.setPicture(randomBitmap(4, 3, 3));
    holder.paint(PixelBuffer(), {0, 0}, 4, 3);
    EXPECT_EQ(holder.drawn(), Bitmap(4, 3));
}

TEST(PictureHolder, RenderingCopiesToItsPlaceAndStopsAtTheEdges) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    const Bitmap drawing = randomBitmap(4, 4, 4);
    for (const auto& [x, y] :
         {std::pair{0, 0}, {2, 1}, {5, 3}, {-2, -1}, {-4, 0}, {7, 5}, {-9, 90}}) {
        PictureHolder holder = holderOf(picture);
        holder.render(drawing, x, y, 4, 4, false);
        for (int32_t row = 0; row < 5; ++row)
            for (int32_t column = 0; column < 7; ++column) {
                const bool covered = column >= x && column < x + 4 && row >= y && row < y + 4;
                EXPECT_EQ(holder.drawn().row(row)[column],
                          covered ? drawing.row(row - y)[column - x] : picture.row(row)[column]);
            }
    }
}

TEST(PictureHolder, RenderingTakesTheTopLeftAreaOfTheBitmap) {
    const Bitmap drawing = randomBitmap(7, 5, 4);
    PictureHolder holder = holderOf(Bitmap(7, 5));
    holder.render(drawing, 0, 0, 3, 2, false);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(holder.drawn().row(y)[x], x < 3 && y < 2 ? drawing.row(y)[x] : Pixel{});
    holder.render(drawing, 0, 0, 2147483647, 2147483647, false);
    EXPECT_EQ(holder.drawn(), drawing);
}

TEST(PictureHolder, RenderingInvertedTurnsTheThreeColoursOver) {
    const Bitmap drawing = randomBitmap(7, 5, 4);
    PictureHolder holder = holderOf(Bitmap(7, 5));
    holder.render(drawing, 0, 0, 7, 5, true);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x) {
            const Pixel& p = drawing.row(y)[x];
            EXPECT_EQ(holder.drawn().row(y)[x], (Pixel{static_cast<uint8_t>(255 - p.blue),
                                                       static_cast<uint8_t>(255 - p.green),
                                                       static_cast<uint8_t>(255 - p.red), 0}));
        }
    EXPECT_TRUE(hasBlackMarginAndFourths(holder.drawn().pixels()));
}

TEST(PictureHolder, RenderingNoValidBitmapDrawsNothing) {
    const Bitmap picture = randomBitmap(7, 5, 3);
    PictureHolder holder = holderOf(picture);
    holder.render(Bitmap(), 0, 0, 7, 5, false);
    EXPECT_EQ(holder.drawn(), picture);
}

TEST(PictureHolder, ADrawingIsAValueOfItsOwn) {
    Bitmap drawing = randomBitmap(7, 5, 4);
    const Bitmap kept = drawing;
    PictureHolder holder = holderOf(Bitmap(7, 5));
    holder.render(drawing, 0, 0, 7, 5, false);
    drawing.writableRow(0)[0] = {1, 2, 3, 0};
    EXPECT_EQ(holder.drawn(), kept);
    Bitmap taken = holder.drawn();
    taken.writableRow(2)[2] = {3, 2, 1, 0};
    EXPECT_EQ(holder.drawn(), kept);
}

}  // namespace
}  // namespace tessarine::tests
