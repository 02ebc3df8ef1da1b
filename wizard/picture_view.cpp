#include "wizard/picture_view.h"

#include <algorithm>
#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace tessarine {

namespace {

QImage imageOf(const Bitmap& bitmap) {
    QImage image(bitmap.width(), bitmap.height(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        const Pixel* source = bitmap.row(y);
        auto* target = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(source, source + image.width(), target,
                       [](const Pixel& p) { return qRgb(p.red, p.green, p.blue); });
    }
    return image;
}

}  // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PictureView::repaintPicture(const PictureHolder& holder) {
    picture_ = imageOf(holder.drawn());
    eraseMark();
}

void PictureView::drawMark(const PickMark& mark) {
    mark_ = mark;
    update();
}

void PictureView::eraseMark() {
    mark_.reset();
    update();
}

void PictureView::setPicking(bool picking) {
    picking_ = picking;
    if (picking)
        setCursor(Qt::CrossCursor);
    else
        unsetCursor();
    setFocusPolicy(picking ? Qt::StrongFocus : Qt::NoFocus);
}

void PictureView::setScale(int scale) {
    scale_ = std::max(scale, 1);
    update();
}

QSize PictureView::sizeFor(const PictureHolder& holder, int scale) {
    return {holder.width() * scale + 2 * border, holder.height() * scale + 2 * border};
}

void PictureView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect inner = rect().adjusted(border, border, -border, -border);
    painter.fillRect(rect(), palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
    painter.fillRect(inner, palette().color(QPalette::Base));
    const QRect target(inner.topLeft(), picture_.size() * scale_);
    painter.setClipRect(target & inner);
    // Between whole multiples of a pixel the screen's own pixels are of uneven size.
    const double density = devicePixelRatioF() * scale_;
    painter.setRenderHint(QPainter::SmoothPixmapTransform, density != std::floor(density));
    painter.drawImage(target, picture_);
    if (!mark_) return;
    const uint32_t colour = mark_->colour;
    const QColor ink(int(colour & 255), int(colour >> 8 & 255), int(colour >> 16 & 255));
    const auto bar = [&](int x, int y, int width, int height) {
        painter.fillRect(QRect(inner.left() + x * scale_, inner.top() + y * scale_, width * scale_,
                               height * scale_),
                         ink);
    };
    constexpr int before = 4;
    constexpr int behind = 5;
    bar(mark_->x - before, mark_->y, before + behind + 1, 1);
    bar(mark_->x, mark_->y - before, 1, before + behind + 1);
}

void PictureView::pick(const QPointF& position) {
    const auto pixel = [this](double place) {
        return static_cast<int>(std::floor((std::floor(place) - border) / scale_));
    };
    if (onPick) onPick(pixel(position.x()), pixel(position.y()));
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) pick(event->position());
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) pick(event->position());
}

void PictureView::keyPressEvent(QKeyEvent* event) {
    const int step = event->modifiers() & Qt::ShiftModifier ? 10 : 1;
    int dx = 0;
    int dy = 0;
    switch (event->key()) {
        case Qt::Key_Left:
            dx = -step;
            break;
        case Qt::Key_Right:
            dx = step;
            break;
        case Qt::Key_Up:
            dy = -step;
            break;
        case Qt::Key_Down:
            dy = step;
            break;
        default:
            QWidget::keyPressEvent(event);
            return;
    }
    if (picking_ && onNudge) onNudge(dx, dy);
}

}  // namespace tessarine
