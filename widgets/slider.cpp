#include "widgets/slider.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "widgets/value_tip.h"

namespace tessarine {

namespace {

constexpr int plainThumb = 17;  // odd, so that its middle is the rail's
constexpr int railPictureStyle = 99;

QColor mixed(const QColor& one, const QColor& other, double part) {
    const auto channel = [part](double a, double b) { return a + (b - a) * part; };
    return QColor::fromRgbF(float(channel(one.redF(), other.redF())),
                            float(channel(one.greenF(), other.greenF())),
                            float(channel(one.blueF(), other.blueF())));
}

}  // namespace

cpvSlider::cpvSlider(QWidget* parent)
    : QWidget(parent), track_(*this), tip_(frmValueTip::ofProgram()) {
    installAccessibleRanges();
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    track_.setThumbSize({plainThumb, plainThumb});
}

cpvSlider::~cpvSlider() {
    if (track_.dragging()) closeTip();
}

void cpvSlider::Orientation(int32_t orientation) {
    if (orientation == 0)
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    else
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    track_.setOrientation(orientation);
}

void cpvSlider::RailStyle(int32_t style) {
    railStyle_ = style;
    update();
}

void cpvSlider::BackColor(const QColor& colour) {
    backColor_ = colour;
    update();
}

void cpvSlider::SliderIcon(const QIcon& picture, QSize size) {
    sliderIcon_ = picture;
    if (picture.isNull()) size = QSize(plainThumb, plainThumb);
    track_.setThumbSize({double(size.width()), double(size.height())});
    updateGeometry();
}

void cpvSlider::RailPicture(const QPixmap& picture) {
    railPicture_ = picture;
    update();
}

QSize cpvSlider::sizeHint() const {
    const int thickness =
        int(Orientation() == 0 ? track_.thumbSize().height : track_.thumbSize().width);
    return Orientation() == 0 ? QSize(120, thickness) : QSize(thickness, 120);
}

QSize cpvSlider::minimumSizeHint() const {
    return QSize(int(track_.thumbSize().width), int(track_.thumbSize().height));
}

void cpvSlider::mousePressEvent(QMouseEvent* event) {
    track_.press(int16_t(event->button()), event->position().x(), event->position().y());
    update();
}

void cpvSlider::mouseMoveEvent(QMouseEvent* event) {
    track_.move(event->position().x(), event->position().y());
}

void cpvSlider::mouseReleaseEvent(QMouseEvent* event) {
    track_.release(int16_t(event->button()), event->position().x(), event->position().y());
    update();
}

void cpvSlider::resizeEvent(QResizeEvent*) { track_.resize({double(width()), double(height())}); }

void cpvSlider::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::EnabledChange) return;
    track_.setEnabled(isEnabled());
    if (!isEnabled()) endDrag();
}

void cpvSlider::hideEvent(QHideEvent*) { endDrag(); }

void cpvSlider::endDrag() {
    // The release will not reach a hidden or disabled control: it is one outside.
    if (track_.dragging()) track_.release(SliderTrack::leftButton, -1, -1);
}

void cpvSlider::redraw() { update(); }

QRect cpvSlider::placeTip() {
    const QSize text = tip_->setValue(Value());
    const QPoint origin = mapToGlobal(QPoint(0, 0));
    const SliderTrack::Tip place = track_.tip(origin.x(), origin.y(), text.width(), text.height());
    return QRect(place.left, place.top, place.width, place.height);
}

void cpvSlider::showTip() { tip_->showAt(placeTip(), *this); }

void cpvSlider::updateTip() {
    if (tip_->isVisible()) tip_->showAt(placeTip(), *this);
}

void cpvSlider::closeTip() { tip_->hide(); }

void cpvSlider::happened(SliderTrack::Event event) {
    switch (event) {
        case SliderTrack::Event::Click:
            emit Click();
            break;
        case SliderTrack::Event::ArrivedFirst:
            emit ArrivedFirst();
            break;
        case SliderTrack::Event::ArrivedLast:
            emit ArrivedLast();
            break;
        case SliderTrack::Event::ValueChanged:
            announceValue(this, Value());
            emit ValueChanged();
            break;
    }
}

void cpvSlider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (backColor_.isValid()) painter.fillRect(rect(), backColor_);
    paintRail(painter);
    paintThumb(painter);
}

void cpvSlider::paintRail(QPainter& painter) const {
    if (railStyle_ == railPictureStyle) {
        if (railPicture_.isNull()) return;
        const QSizeF size = railPicture_.deviceIndependentSize();
        const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
        painter.drawPixmap(QRectF(corner, size), railPicture_, QRectF(railPicture_.rect()));
        return;
    }
    const SliderTrack::Rail rail = track_.rail();
    const QRectF strip(QPointF(rail.left, rail.top), QPointF(rail.right, rail.bottom));
    const double roundness = SliderTrack::railThickness / 2.0;
    const QColor window = palette().color(QPalette::Window);
    const QColor text = palette().color(QPalette::WindowText);
    QPainterPath shape;
    shape.addRoundedRect(strip, roundness, roundness);
    painter.fillPath(shape, mixed(window, text, isEnabled() ? 0.22 : 0.12));

    // What lies between the low end and the thumb is filled.
    const double middle = Orientation() == 0 ? track_.thumbLeft() + track_.thumbSize().width / 2
                                             : track_.thumbTop() + track_.thumbSize().height / 2;
    QRectF passed = strip;
    if (Orientation() == 0)
        passed.setRight(middle);
    else
        passed.setTop(middle);
    if (isEnabled()) {
        painter.save();
        painter.setClipRect(passed);
        painter.fillPath(shape, palette().color(QPalette::Highlight));
        painter.restore();
    }

    // A sunken edge is dark at the top and light at the bottom, a raised one the other way.
    const auto line = [&](double inset, bool sunken) {
        const QColor dark(0, 0, 0, 60);
        const QColor light(255, 255, 255, 70);
        const QRectF edge = strip.adjusted(inset, inset, -inset, -inset);
        QLinearGradient shade(edge.topLeft(),
                              Orientation() == 0 ? edge.bottomLeft() : edge.topRight());
        shade.setColorAt(0.3, sunken ? dark : light);
        shade.setColorAt(0.7, sunken ? light : dark);
        painter.setPen(QPen(shade, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(edge, roundness - inset, roundness - inset);
    };
    if (railStyle_ == 0 || railStyle_ == 2) line(0.5, true);
    if (railStyle_ == 1) line(0.5, false);
    if (railStyle_ == 0) line(1.5, true);
    if (railStyle_ == 1 || railStyle_ == 3) line(1.5, false);
}

void cpvSlider::paintThumb(QPainter& painter) const {
    const QRectF thumb(track_.thumbLeft(), track_.thumbTop(), track_.thumbSize().width,
                       track_.thumbSize().height);
    if (!sliderIcon_.isNull()) {
        const QIcon::Mode mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
        const QPixmap picture =
            sliderIcon_.pixmap(thumb.size().toSize(), devicePixelRatioF(), mode);
        painter.drawPixmap(thumb, picture, QRectF(picture.rect()));
        return;
    }
    const QColor window = palette().color(QPalette::Window);
    const QColor text = palette().color(QPalette::WindowText);
    const QColor accent = palette().color(QPalette::Highlight);
    const bool hot = isEnabled() && (track_.dragging() || underMouse());
    // On a dark ground a thumb in the colour of buttons would hardly be seen.
    const QColor face = window.lightness() < 128 ? mixed(window, text, isEnabled() ? 0.75 : 0.4)
                                                 : palette().color(QPalette::Button).lighter(108);
    painter.setPen(QPen(hot ? accent : mixed(window, text, 0.5), 1));
    painter.setBrush(track_.dragging() ? accent : face);
    painter.drawEllipse(thumb.adjusted(0.5, 0.5, -0.5, -0.5));
}

}  // namespace tessarine

#include "moc_slider.cpp"
