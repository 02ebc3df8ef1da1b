#include "widgets/canvas.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

constexpr int32_t red = 0x0000FF;
constexpr int32_t green = 0x00FF00;
constexpr int32_t blue = 0xFF0000;
constexpr int32_t white = 0xFFFFFF;
constexpr cGradient::Edge sunken = cGradient::Edge::sunken;

using Stop = std::array<uint16_t, 3>;

/// A surface of 20 by 10 pixels, all white.
class Canvas : public testing::Test {
  protected:
    Canvas() {
        canvas.Init(20, 10);
        canvas.Cls(white);
    }
    /// The packed colour at a place.
    int32_t pixel(int x, int y) {
        const QImage& surface = *canvas.hdc();
        const QRgb colour = surface.pixel((QPointF(x, y) * surface.devicePixelRatio()).toPoint());
        return qRed(colour) | qGreen(colour) << 8 | qBlue(colour) << 16;
    }
    int count(int32_t colour) {
        int found = 0;
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 20; ++x)
                found += pixel(x, y) == colour;
        return found;
    }

    cGradient canvas;
};

TEST(NoCanvas, DoesNothing) {
    cGradient none;
    QImage screen(4, 4, QImage::Format_RGB32);
    screen.fill(Qt::red);
    none.Cls(green);
    none.FillRect(0, 0, 4, 4, green);
    none.DrawEdge(0, 0, 4, 4, sunken, QPalette());
    none.DrawLine(0, 0, 4, 4, green);
    none.DrawEllipse(0, 0, 4, 4, green);
    none.GradientFill(0, 0, 4, 4, Stop{}, Stop{}, false);
    none.SetDIBits(0, 0, 1, 1, std::vector<uint8_t>(4));
    none.SetClipRect(0, 0, 1, 1);
    none.BitBlt(&screen);
    int32_t right = -1;
    int32_t bottom = -1;
    none.NormalizeRect(0, 0, right, bottom);
    EXPECT_EQ(right, -1);
    EXPECT_FALSE(none.IsCreated());
    EXPECT_EQ(screen.pixelColor(2, 2), QColor(Qt::red));
}

TEST(NoCanvas, ComesOfASizeBelowOne) {
    cGradient canvas;
    EXPECT_EQ(canvas.Init(0, 5), nullptr);
    EXPECT_FALSE(canvas.IsCreated());
}

TEST_F(Canvas, IsMadeAnewByInitAndGoneByDestroy) {
    EXPECT_TRUE(canvas.IsCreated());
    EXPECT_EQ(canvas.Init(7, 8), canvas.hdc());
    EXPECT_EQ(canvas.Width(), 7);
    EXPECT_EQ(canvas.Height(), 8);
    EXPECT_EQ(pixel(6, 7), 0);
    canvas.Destroy();
    EXPECT_FALSE(canvas.IsCreated());
    EXPECT_EQ(canvas.hdc(), nullptr);
}

TEST_F(Canvas, TakesTheColourOrTheBrushBesideIt) {
    canvas.FillRect(0, 0, 1, 1, red, QBrush(Qt::green));
    canvas.FillRect(1, 0, 2, 1, -1, QBrush(Qt::green));
    EXPECT_EQ(pixel(0, 0), red);
    EXPECT_EQ(pixel(1, 0), green);
    canvas.DrawLine(0, 5, 4, 5, -1, QPen(Qt::blue));
    EXPECT_EQ(pixel(2, 5), blue);
}

TEST_F(Canvas, TakesASmallerEdgeForTheEndOfTheSurface) {
    canvas.FillRect(15, 8, 14, 7, red);
    EXPECT_EQ(pixel(19, 9), red);
    EXPECT_EQ(count(red), 5 * 2);
    int32_t right = 3;
    int32_t bottom = -1;
    canvas.NormalizeRect(3, 0, right, bottom);
    EXPECT_EQ(right, 3);
    EXPECT_EQ(bottom, 10);
}

TEST_F(Canvas, FramesInsideTheRectangle) {
    canvas.FrameRect(2, 2, 8, 6, blue);
    EXPECT_EQ(count(blue), 2 * 6 + 2 * 2);
    EXPECT_EQ(pixel(2, 2), blue);
    EXPECT_EQ(pixel(7, 5), blue);
    EXPECT_EQ(pixel(3, 3), white);
}

TEST_F(Canvas, DrawsAnEdgeOfTwoPixels) {
    canvas.DrawEdge(0, 0, 20, 10, sunken, QPalette(Qt::red, Qt::blue));
    EXPECT_EQ(count(white), 16 * 6);
    canvas.Cls(white);
    canvas.DrawEdge(0, 0, 20, 10, cGradient::Edge::raised, QPalette(Qt::red, Qt::blue));
    EXPECT_EQ(count(white), 16 * 6);
}

TEST_F(Canvas, DrawsLinesWithoutTheirLastPoint) {
    canvas.DrawLine(1, 1, 5, 1, red);
    EXPECT_EQ(count(red), 4);
    EXPECT_EQ(pixel(1, 1), red);
    EXPECT_EQ(pixel(4, 1), red);
    canvas.DrawLine(8, 6, 8, 2, green);
    EXPECT_EQ(count(green), 4);
    EXPECT_EQ(pixel(8, 3), green);
    canvas.DrawLine(9, 9, 9, 9, blue);
    EXPECT_EQ(count(blue), 0);
}

TEST_F(Canvas, DrawsEllipsesThatTouchTheRectangle) {
    canvas.DrawEllipse(2, 2, 9, 9, 0);
    EXPECT_LE(pixel(5, 2), 0x404040);
    EXPECT_LE(pixel(2, 5), 0x404040);
    EXPECT_LE(pixel(8, 5), 0x404040);
    EXPECT_EQ(pixel(5, 5), white);
    EXPECT_EQ(pixel(1, 5), white);
    EXPECT_EQ(pixel(9, 5), white);
}

TEST_F(Canvas, FillsFromOneStopToTheOther) {
    canvas.GradientFill(2, 1, 8, 4, Stop{0, 0, 65025}, Stop{65025, 0, 0}, false);
    EXPECT_EQ(pixel(2, 1), blue);
    EXPECT_EQ(pixel(3, 2), 0xCC0033);
    EXPECT_EQ(pixel(7, 3), red);
    EXPECT_EQ(pixel(8, 3), white);
    canvas.GradientFill(10, 0, 12, -1, Stop{0, 0, 0}, Stop{65025, 65025, 65025}, true);
    EXPECT_EQ(pixel(11, 0), 0);
    EXPECT_EQ(pixel(10, 3), 0x555555);
    EXPECT_EQ(pixel(11, 9), white);
    canvas.GradientFill(-3, 9, 0, 30, Stop{}, Stop{}, false);
    canvas.GradientFill(19, 9, 30, 30, Stop{0, 65025, 0}, Stop{}, true);
    EXPECT_EQ(pixel(0, 9), white);
    EXPECT_EQ(pixel(19, 9), green);
}

TEST_F(Canvas, DrawsRowsOfThreeBytesBottomUp) {
    // Two pixels a row, padded to eight bytes.
    const std::vector<uint8_t> rows = {255, 0, 0,   0,  255, 0,  0, 0,   // blue, green
                                       0,   0, 255, 10, 20,  30, 0, 0};  // red, another
    canvas.SetDIBits(4, 3, 2, 2, rows);
    EXPECT_EQ(pixel(4, 4), blue);
    EXPECT_EQ(pixel(5, 4), green);
    EXPECT_EQ(pixel(4, 3), red);
    EXPECT_EQ(pixel(5, 3), 0x0A141E);
    EXPECT_EQ(count(white), 200 - 4);
    canvas.Cls(white);
    canvas.SetDIBits(4, 3, 2, 3, rows);
    EXPECT_EQ(count(white), 200);
}

TEST_F(Canvas, DrawsInsideTheClipOnly) {
    canvas.SetClipRect(3, 3, 6, 6);
    canvas.Cls(red);
    EXPECT_EQ(count(red), 9);
    canvas.GradientFill(0, 0, -1, -1, Stop{0, 65025, 0}, Stop{0, 65025, 0}, true);
    EXPECT_EQ(count(green), 9);
    canvas.SetClipRect(0, 0, -1, -1);
    canvas.Cls(blue);
    EXPECT_EQ(count(blue), 200);
}

TEST_F(Canvas, CopiesToTheParentOrAnotherDestination) {
    QImage parent(20, 10, QImage::Format_RGB32);
    QImage other(20, 10, QImage::Format_RGB32);
    parent.fill(Qt::black);
    other.fill(Qt::black);
    canvas.Init(20, 10, &parent);
    canvas.Cls(white);
    canvas.FillRect(5, 5, 6, 6, red);
    canvas.BitBlt();
    EXPECT_EQ(parent.pixelColor(5, 5), QColor(Qt::red));
    EXPECT_EQ(parent.pixelColor(19, 9), QColor(Qt::white));
    canvas.BitBlt(&other, 1, 2, 3, 4, 5, 5);
    EXPECT_EQ(other.pixelColor(1, 2), QColor(Qt::red));
    EXPECT_EQ(other.pixelColor(3, 5), QColor(Qt::white));
    EXPECT_EQ(other.pixelColor(4, 5), QColor(Qt::black));
    EXPECT_EQ(other.pixelColor(3, 6), QColor(Qt::black));
}

TEST_F(Canvas, IsAsDenseAsItsParent) {
    QImage parent(40, 20, QImage::Format_RGB32);
    parent.setDevicePixelRatio(2);
    canvas.Init(20, 10, &parent);
    EXPECT_EQ(canvas.hdc()->size(), QSize(40, 20));
    canvas.Cls(white);
    canvas.FillRect(3, 3, 4, 4, red);
    canvas.GradientFill(10, 0, 12, 1, Stop{0, 0, 0}, Stop{65025, 0, 0}, false);
    canvas.SetDIBits(15, 5, 1, 1, std::vector<uint8_t>{255, 0, 0, 0});
    canvas.BitBlt();
    EXPECT_EQ(parent.pixelColor(6, 6), QColor(Qt::red));
    EXPECT_EQ(parent.pixelColor(7, 7), QColor(Qt::red));
    EXPECT_EQ(parent.pixelColor(8, 7), QColor(Qt::white));
    EXPECT_EQ(parent.pixelColor(21, 1), QColor(85, 0, 0));
    EXPECT_EQ(parent.pixelColor(23, 1), QColor(Qt::red));
    EXPECT_EQ(parent.pixelColor(31, 11), QColor(Qt::blue));
    EXPECT_EQ(pixel(15, 5), blue);
}

}  // namespace
}  // namespace tessarine::tests
