#include "widgets/picture_box.h"

#include <QMouseEvent>
#include <QPainter>

namespace tessarine {

PictureBox::PictureBox(const QIcon& picture, QSize size, QWidget* parent)
    : QWidget(parent), picture_(picture) {
    setFixedSize(size);
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->pos())) emit clicked();
}

void PictureBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    picture_.paint(&painter, rect());
}

}  // namespace tessarine

#include "moc_picture_box.cpp"
