#pragma once

#include <cstdint>
#include <span>

#include <QBrush>
#include <QColor>
#include <QImage>
#include <QPaintDevice>
#include <QPalette>
#include <QPen>
#include <QRect>

class QPainter;

namespace tessarine {

/// A drawing surface held off screen, from which parts are copied to the screen. It is as dense as
/// its parent context; all places and sizes are in logical pixels.
///
/// Conventions of the arguments:
/// - Colours are 0x00BBGGRR. Where the colour is -1, the brush or pen beside it is used.
/// - A right or bottom edge smaller than the left or top edge means the end of the surface. Right
///   and bottom edges are not included.
/// - In BitBlt no destination means the parent context, and a width or height of 0
///   that of the surface.
/// - Every member does nothing on a surface that is not created.
class cGradient {
  public:
    enum class Edge { raised, sunken };
    /// Red, green, blue at an end of a gradient; 255 * 255 is a full channel.
    using Vertex = std::span<const uint16_t, 3>;

    cGradient() = default;
    cGradient(const cGradient&) = delete;
    cGradient& operator=(const cGradient&) = delete;

    /// Makes the surface anew, black.
    /// \param hParentDC  gives the density, and is where copies go by default; may be absent
    /// \return the surface; null where a size below 1 or want of memory made none
    QImage* Init(int32_t PixelWidth, int32_t PixelHeight, QPaintDevice* hParentDC = nullptr);
    void Destroy();

    /// The surface, for other drawing on it; null where there is none.
    QImage* hdc() { return IsCreated() ? &surface_ : nullptr; }
    int32_t Width() const { return width_; }
    int32_t Height() const { return height_; }
    bool IsCreated() const { return !surface_.isNull(); }

    /// Fills the whole surface.
    void Cls(int32_t clrFill, const QBrush& hbrFill = {});
    void FillRect(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY, int32_t clrFill,
                  const QBrush& hbrFill = {});
    /// A frame one pixel wide, inside the rectangle.
    void FrameRect(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY, int32_t clrFill,
                   const QBrush& hbrFill = {});
    /// An edge two pixels wide, inside the rectangle, in the colours of a palette.
    void DrawEdge(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY, Edge edge,
                  const QPalette& colours);
    /// From the first point up to, not including, the second.
    void DrawLine(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2, int32_t clrLine,
                  const QPen& hpnLine = {});
    /// The outline of an ellipse that touches the rectangle's sides from inside.
    void DrawEllipse(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY,
                     int32_t clrOutline, const QPen& hpnOutline = {});
    /// A gradient between two stops, from left to right or from top to bottom. The first and the
    /// last row or column have the stops' own colours.
    void GradientFill(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY, Vertex first,
                      Vertex last, bool vertical);
    /// Draws a picture of 24 bits a pixel: blue, green, red; the bottom row first, rows padded to
    /// four bytes. Nothing is drawn where `aBits` is too short for that size.
    void SetDIBits(int32_t xDest, int32_t yDest, int32_t nWidth, int32_t nHeight,
                   std::span<const uint8_t> aBits);
    void BitBlt(QPaintDevice* hdcDest = nullptr, int32_t xDest = 0, int32_t yDest = 0,
                int32_t nWidth = 0, int32_t nHeight = 0, int32_t xSrc = 0, int32_t ySrc = 0) const;
    /// What follows draws inside this rectangle only; (0, 0, -1, -1) is the whole surface.
    void SetClipRect(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY);
    /// Puts the end of the surface in the place of an edge that means it.
    void NormalizeRect(int32_t LeftX, int32_t TopY, int32_t& RightX, int32_t& BottomY) const;
    static QColor TranslateColor(int32_t clrColor);

  private:
    QRect normalized(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY) const;
    void prepare(QPainter& painter) const;

    QImage surface_;
    int32_t width_ = 0;
    int32_t height_ = 0;
    QPaintDevice* parent_ = nullptr;
    QRect clip_;
};

}  // namespace tessarine
