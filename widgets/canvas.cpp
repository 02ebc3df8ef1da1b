#include "widgets/canvas.h"

#include <algorithm>
#include <cmath>

#include <QPainter>

namespace tessarine {

namespace {

QBrush brushOf(int32_t clrFill, const QBrush& hbrFill) {
    return clrFill == -1 ? hbrFill : QBrush(cGradient::TranslateColor(clrFill));
}

QPen penOf(int32_t clrLine, const QPen& hpnLine) {
    return clrLine == -1 ? hpnLine : QPen(cGradient::TranslateColor(clrLine), 1);
}

/// The four sides of a frame one pixel wide, as rectangles: they stay crisp at every density.
void drawFrame(QPainter& painter, const QRect& rect, const QBrush& topLeft,
               const QBrush& bottomRight) {
    painter.fillRect(rect.left(), rect.top(), rect.width(), 1, topLeft);
    painter.fillRect(rect.left(), rect.top(), 1, rect.height(), topLeft);
    painter.fillRect(rect.left(), rect.bottom(), rect.width(), 1, bottomRight);
    painter.fillRect(rect.right(), rect.top(), 1, rect.height(), bottomRight);
}

/// A device pixel at one place of a gradient of `count` device pixels.
QRgb between(cGradient::Vertex first, cGradient::Vertex last, int32_t k, int32_t count) {
    const auto level = [&](size_t channel) {
        double units = first[channel];
        if (count > 1) units += (double(last[channel]) - first[channel]) * k / (count - 1);
        return std::min(255, static_cast<int>(std::nearbyint(units / 255)));
    };
    return qRgb(level(0), level(1), level(2));
}

}  // namespace

QImage* cGradient::Init(int32_t PixelWidth, int32_t PixelHeight, QPaintDevice* hParentDC) {
    Destroy();
    width_ = PixelWidth;
    height_ = PixelHeight;
    parent_ = hParentDC;
    clip_ = QRect(0, 0, width_, height_);
    const double density = hParentDC ? hParentDC->devicePixelRatioF() : 1.0;
    surface_ = QImage((QSizeF(width_, height_) * density).toSize(), QImage::Format_RGB32);
    surface_.setDevicePixelRatio(density);
    surface_.fill(Qt::black);
    return hdc();
}

void cGradient::Destroy() { surface_ = QImage(); }

void cGradient::Cls(int32_t clrFill, const QBrush& hbrFill) {
    FillRect(0, 0, width_, height_, clrFill, hbrFill);
}

void cGradient::FillRect(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY,
                         int32_t clrFill, const QBrush& hbrFill) {
    if (!IsCreated()) return;
    QPainter painter(&surface_);
    prepare(painter);
    painter.fillRect(normalized(LeftX, TopY, RightX, BottomY), brushOf(clrFill, hbrFill));
}

void cGradient::FrameRect(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY,
                          int32_t clrFill, const QBrush& hbrFill) {
    if (!IsCreated()) return;
    QPainter painter(&surface_);
    prepare(painter);
    const QBrush brush = brushOf(clrFill, hbrFill);
    drawFrame(painter, normalized(LeftX, TopY, RightX, BottomY), brush, brush);
}

void cGradient::DrawEdge(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY, Edge edge,
                         const QPalette& colours) {
    if (!IsCreated()) return;
    QPainter painter(&surface_);
    prepare(painter);
    const QRect rect = normalized(LeftX, TopY, RightX, BottomY);
    const QBrush& light = colours.brush(QPalette::Light);
    const QBrush& mid = colours.brush(QPalette::Mid);
    const QBrush& dark = colours.brush(QPalette::Dark);
    const QRect inner = rect.adjusted(1, 1, -1, -1);
    if (edge == Edge::sunken) {
        drawFrame(painter, rect, mid, light);
        drawFrame(painter, inner, dark, mid);
    } else {
        drawFrame(painter, rect, light, dark);
        drawFrame(painter, inner, colours.brush(QPalette::Midlight), mid);
    }
}

void cGradient::DrawLine(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2, int32_t clrLine,
                         const QPen& hpnLine) {
    if (!IsCreated() || (X1 == X2 && Y1 == Y2)) return;
    QPainter painter(&surface_);
    prepare(painter);
    painter.setPen(penOf(clrLine, hpnLine));
    // The last step of the longer side is left out.
    const int32_t steps = std::max(std::abs(X2 - X1), std::abs(Y2 - Y1));
    const auto oneShort = [steps](int32_t from, int32_t to) {
        return from + static_cast<double>(to - from) * (steps - 1) / steps;
    };
    const QPointF centre(0.5, 0.5);
    painter.drawLine(QPointF(X1, Y1) + centre,
                     QPointF(oneShort(X1, X2), oneShort(Y1, Y2)) + centre);
}

void cGradient::DrawEllipse(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY,
                            int32_t clrOutline, const QPen& hpnOutline) {
    if (!IsCreated()) return;
    QPainter painter(&surface_);
    prepare(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(penOf(clrOutline, hpnOutline));
    painter.drawEllipse(
        QRectF(normalized(LeftX, TopY, RightX, BottomY)).adjusted(0.5, 0.5, -0.5, -0.5));
}

void cGradient::GradientFill(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY,
                             Vertex first, Vertex last, bool vertical) {
    if (!IsCreated()) return;
    const double density = surface_.devicePixelRatio();
    const auto device = [density](int32_t at) {
        return static_cast<int32_t>(std::nearbyint(at * density));
    };
    const auto deviceRect = [&](const QRect& rect) {
        return QRect(QPoint(device(rect.left()), device(rect.top())),
                     QPoint(device(rect.right() + 1) - 1, device(rect.bottom() + 1) - 1));
    };
    const QRect whole = deviceRect(normalized(LeftX, TopY, RightX, BottomY));
    const QRect shown = whole & deviceRect(clip_) & surface_.rect();
    if (shown.isEmpty()) return;
    if (vertical) {
        for (int32_t y = shown.top(); y <= shown.bottom(); ++y) {
            const QRgb colour = between(first, last, y - whole.top(), whole.height());
            auto* row = reinterpret_cast<QRgb*>(surface_.scanLine(y));
            std::fill(row + shown.left(), row + shown.right() + 1, colour);
        }
        return;
    }
    auto* top = reinterpret_cast<QRgb*>(surface_.scanLine(shown.top()));
    for (int32_t x = shown.left(); x <= shown.right(); ++x)
        top[x] = between(first, last, x - whole.left(), whole.width());
    for (int32_t y = shown.top() + 1; y <= shown.bottom(); ++y)
        std::copy(top + shown.left(), top + shown.right() + 1,
                  reinterpret_cast<QRgb*>(surface_.scanLine(y)) + shown.left());
}

void cGradient::SetDIBits(int32_t xDest, int32_t yDest, int32_t nWidth, int32_t nHeight,
                          std::span<const uint8_t> aBits) {
    if (!IsCreated() || nWidth < 1 || nHeight < 1) return;
    const int64_t bytesPerRow = (static_cast<int64_t>(nWidth) * 3 + 3) / 4 * 4;
    if (static_cast<int64_t>(aBits.size()) / bytesPerRow < nHeight) return;
    const QImage rows(aBits.data(), nWidth, nHeight, bytesPerRow, QImage::Format_BGR888);
    QPainter painter(&surface_);
    prepare(painter);
    painter.translate(xDest, yDest + nHeight);
    painter.scale(1, -1);
    painter.drawImage(0, 0, rows);
}

void cGradient::BitBlt(QPaintDevice* hdcDest, int32_t xDest, int32_t yDest, int32_t nWidth,
                       int32_t nHeight, int32_t xSrc, int32_t ySrc) const {
    QPaintDevice* device = hdcDest ? hdcDest : parent_;
    if (!IsCreated() || !device) return;
    if (nWidth == 0) nWidth = width_;
    if (nHeight == 0) nHeight = height_;
    const double density = surface_.devicePixelRatio();
    const QRectF source(xSrc * density, ySrc * density, nWidth * density, nHeight * density);
    QPainter painter(device);
    painter.drawImage(QRect(xDest, yDest, nWidth, nHeight), surface_, source.toRect());
}

void cGradient::SetClipRect(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY) {
    if (!IsCreated()) return;
    clip_ = normalized(LeftX, TopY, RightX, BottomY);
}

void cGradient::NormalizeRect(int32_t LeftX, int32_t TopY, int32_t& RightX,
                              int32_t& BottomY) const {
    if (!IsCreated()) return;
    if (RightX < LeftX) RightX = width_;
    if (BottomY < TopY) BottomY = height_;
}

QColor cGradient::TranslateColor(int32_t clrColor) {
    return QColor(clrColor & 255, clrColor >> 8 & 255, clrColor >> 16 & 255);
}

QRect cGradient::normalized(int32_t LeftX, int32_t TopY, int32_t RightX, int32_t BottomY) const {
    NormalizeRect(LeftX, TopY, RightX, BottomY);
    return {QPoint(LeftX, TopY), QPoint(RightX - 1, BottomY - 1)};
}

void cGradient::prepare(QPainter& painter) const { painter.setClipRect(clip_); }

}  // namespace tessarine
