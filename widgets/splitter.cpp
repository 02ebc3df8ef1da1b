#include "widgets/splitter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include "widgets/accessible_range.h"

namespace tessarine {

namespace {

QRect rectangle(const SplitterBar::Place& place) {
    return QRect(place.left, place.top, place.width, place.height);
}

}  // namespace

/// One of the two bars: picSplitter, which takes pointer and keys, or picMover, which is shown.
class Splitter::Bar : public QWidget, public AccessibleRange {
  public:
    Bar(const char* name, Splitter& splitter) : QWidget(&splitter), splitter_(splitter) {
        setObjectName(name);
    }

    void takeEvents() {
        setMouseTracking(true);
        setAttribute(Qt::WA_Hover);
        setFocusPolicy(Qt::TabFocus);
        setAccessibleName("Divider");
        setAccessibleDescription("Percentage of the room that the first pane takes");
    }

    QAccessible::Role accessibleRole() const override { return QAccessible::Splitter; }
    int32_t accessibleValue() const override { return splitter_.SplitterPosition(); }
    int32_t accessibleMinimum() const override { return splitter_.SplitterMin(); }
    int32_t accessibleMaximum() const override { return splitter_.SplitterMax(); }
    void setAccessibleValue(int32_t value) override { splitter_.SplitterPosition(value); }

  protected:
    // With a second button the drag goes on until none is held.
    void mousePressEvent(QMouseEvent* event) override {
        if (event->buttons() == event->button()) splitter_.arithmetic_.press();
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        splitter_.arithmetic_.move(event->position().x(), event->position().y());
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->buttons() == Qt::NoButton) splitter_.arithmetic_.release();
    }
    void leaveEvent(QEvent*) override { splitter_.arithmetic_.leave(); }
    void keyPressEvent(QKeyEvent* event) override {
        // A pointer that rests on the bar does not count.
        splitter_.arithmetic_.leave();
        const bool vertical = splitter_.Orientation() == 0;
        const int back = vertical ? Qt::Key_Left : Qt::Key_Up;
        const int forth = vertical ? Qt::Key_Right : Qt::Key_Down;
        if (event->key() == back)
            splitter_.SplitterPosition(splitter_.SplitterPosition() - 1);
        else if (event->key() == forth)
            splitter_.SplitterPosition(splitter_.SplitterPosition() + 1);
        else
            QWidget::keyPressEvent(event);
    }
    void focusInEvent(QFocusEvent*) override { update(); }
    void focusOutEvent(QFocusEvent*) override { update(); }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool mover = this == splitter_.mover_;
        const bool marked = mover || hasFocus() || (underMouse() && isEnabled());
        const QColor colour = splitter_.colour_;
        painter.fillRect(rect(), colour.isValid() ? colour : palette().color(QPalette::Window));
        if (marked) {
            QColor accent = palette().color(QPalette::Highlight);
            if (!mover && !hasFocus()) accent.setAlpha(90);
            painter.fillRect(rect(), accent);
        }
        // A grip of three dots in the middle tells that the bar can be moved.
        QColor dots = palette().color(marked ? QPalette::HighlightedText : QPalette::WindowText);
        dots.setAlpha(marked ? 255 : 130);
        painter.setPen(Qt::NoPen);
        painter.setBrush(dots);
        const QPointF middle = QRectF(rect()).center();
        const QPointF step = splitter_.Orientation() == 0 ? QPointF(0, 6) : QPointF(6, 0);
        for (int i = -1; i <= 1; ++i)
            painter.drawEllipse(middle + i * step, 1.25, 1.25);
    }

  private:
    Splitter& splitter_;
};

Splitter::Splitter(QWidget* parent)
    : QWidget(parent),
      arithmetic_(*this),
      bar_(new Bar("picSplitter", *this)),
      mover_(new Bar("picMover", *this)) {
    installAccessibleRanges();
    bar_->takeEvents();
    mover_->setAttribute(Qt::WA_TransparentForMouseEvents);
    mover_->hide();
    SplitterWidth(barThickness);
    Orientation(0);
}

void Splitter::Orientation(int32_t orientation) {
    bar_->setCursor(orientation == 0 ? Qt::SizeHorCursor : Qt::SizeVerCursor);
    arithmetic_.setOrientation(orientation);
    bar_->update();
}

void Splitter::SplitterPosition(int32_t percent) {
    arithmetic_.setPosition(percent);
    announceValue(bar_, SplitterPosition());
}

bool Splitter::Enabled() const { return bar_->isEnabled(); }

void Splitter::Enabled(bool enabled) {
    if (!enabled) endDrag();
    bar_->setEnabled(enabled);
}

void Splitter::SplitterColor(const QColor& colour) {
    colour_ = colour;
    bar_->update();
    mover_->update();
}

void Splitter::LeftOrTopControl(QWidget* control) {
    leftOrTop_ = control;
    adopt(control);
    Refresh();
}

void Splitter::RightOrBottomControl(QWidget* control) {
    rightOrBottom_ = control;
    adopt(control);
    Refresh();
}

void Splitter::adopt(QWidget* control) {
    if (!control) return;
    if (control->parentWidget() != this) {
        const bool hiddenOnPurpose =
            control->isHidden() && control->testAttribute(Qt::WA_WState_ExplicitShowHide);
        control->setParent(this);
        if (!hiddenOnPurpose) control->show();
    }
    // A neighbour that refuses to become small must not bury the bar.
    bar_->raise();
    // The tab key goes from the first neighbour over the bar to the second. That is said again
    // for the second: Qt takes the order of only two for a ring, which needs no change.
    QWidget* last = nullptr;
    for (QWidget* one = leftOrTop_; one && (one == leftOrTop_ || leftOrTop_->isAncestorOf(one));
         one = one->nextInFocusChain())
        if (one->focusPolicy() & Qt::TabFocus) last = one;
    if (last) setTabOrder(last, bar_);
}

void Splitter::resizeEvent(QResizeEvent*) { arithmetic_.resize(width(), height()); }

void Splitter::endDrag() {
    // The button's release does not reach a hidden or disabled bar.
    if (arithmetic_.moverVisible()) arithmetic_.release();
}

void Splitter::showBars() {
    bar_->setGeometry(rectangle(arithmetic_.bar()));
    mover_->setGeometry(rectangle(arithmetic_.mover()));
    if (arithmetic_.moverVisible()) mover_->raise();
    mover_->setVisible(arithmetic_.moverVisible());
}

void Splitter::moveNeighbours() {
    if (leftOrTop_) leftOrTop_->setGeometry(rectangle(arithmetic_.leftOrTop()));
    if (rightOrBottom_) rightOrBottom_->setGeometry(rectangle(arithmetic_.rightOrBottom()));
    emit Refreshed();
}

void Splitter::happened(SplitterBar::Event event) {
    switch (event) {
        case SplitterBar::Event::resize:
            emit Resize();
            break;
        case SplitterBar::Event::press:
            emit BarPressed();
            break;
        case SplitterBar::Event::move:
            emit BarMoved();
            break;
        case SplitterBar::Event::release:
            announceValue(bar_, SplitterPosition());
            emit BarReleased();
            break;
    }
}

}  // namespace tessarine

#include "moc_splitter.cpp"
