#include "widgets/splash.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include "widgets/picture_box.h"

namespace tessarine {

fSplash::fSplash(const QIcon& picture, QSize size)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint), timer_(new QTimer(this)) {
    setObjectName("fSplash");
    setWindowTitle("Ombrel Tessarine");
    // Clicked away, it must not end the program whose main window is still to come.
    setAttribute(Qt::WA_QuitOnClose, false);

    auto* picSplash = new PictureBox(picture, size, this);
    picSplash->setObjectName("picSplash");
    picSplash->setAccessibleName("Ombrel Tessarine is starting");
    connect(picSplash, &PictureBox::clicked, this, &QWidget::close);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(picSplash);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    timer_->setObjectName("tSplash");
    // An ordinary timer may come a twentieth early.
    timer_->setTimerType(Qt::PreciseTimer);
    timer_->setInterval(500);
    timer_->setSingleShot(true);
    connect(timer_, &QTimer::timeout, this, &fSplash::tSplash);
    move(screen()->availableGeometry().center() - QRect(QPoint(0, 0), size).center());
}

void fSplash::showEvent(QShowEvent*) {
    if (!std::exchange(shownBefore_, true)) timer_->start();
}

void fSplash::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) close();
}

}  // namespace tessarine

#include "moc_splash.cpp"
