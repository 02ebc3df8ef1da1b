#include "widgets/value_tip.h"

#include <QPainter>
#include <QToolTip>
#include <QWindow>

namespace tessarine {

std::shared_ptr<frmValueTip> frmValueTip::ofProgram() {
    static std::weak_ptr<frmValueTip> only;
    std::shared_ptr<frmValueTip> tip = only.lock();
    if (!tip) only = tip = std::make_shared<frmValueTip>();
    return tip;
}

frmValueTip::frmValueTip()
    : QFrame(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                          Qt::WindowDoesNotAcceptFocus),
      lblTip_(new QLabel(this)) {
    setObjectName("frmValueTip");
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    lblTip_->setObjectName("lblTip");
    lblTip_->setAlignment(Qt::AlignCenter);
    lblTip_->setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    setAutoFillBackground(true);
}

QSize frmValueTip::setValue(int value) {
    // The colours of tips are those of their own palette, which a desktop may change at any time.
    if (palette() != QToolTip::palette()) setPalette(QToolTip::palette());
    lblTip_->setText(QString::number(value));
    lblTip_->resize(lblTip_->sizeHint());
    return lblTip_->size();
}

void frmValueTip::showAt(const QRect& place, const QWidget& owner) {
    setGeometry(place);
    lblTip_->move(2, 1);
    if (isVisible()) return;
    // Some desktops place a window of this kind only beside another one.
    winId();
    windowHandle()->setTransientParent(owner.window()->windowHandle());
    show();
}

void frmValueTip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Light));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace tessarine

#include "moc_value_tip.cpp"
