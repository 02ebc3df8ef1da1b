#include "wizard/step_strip.h"

#include <cmath>

#include <QEvent>
#include <QStackedWidget>
#include <QStyleOptionFocusRect>
#include <QStyleOptionTab>
#include <QStyleOptionTabWidgetFrame>
#include <QStylePainter>

namespace tessarine {

namespace {

constexpr int iconSide = 16;
constexpr int iconGap = 5;
constexpr int buttonSide = captionHeight - 2;

}  // namespace

StepCaptions::StepCaptions(QWidget* parent) : QTabBar(parent) {
    setExpanding(false);
    setUsesScrollButtons(false);
    setElideMode(Qt::ElideNone);
    setDrawBase(false);
    setIconSize({iconSide, iconSide});
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(tr("Steps"));
}

QFont StepCaptions::fontOf(double scale) const {
    QFont scaled = font();
    if (scaled.pointSizeF() > 0) {
        scaled.setPointSizeF(scaled.pointSizeF() * scale);
    } else {
        scaled.setPixelSize(std::max(1, static_cast<int>(scaled.pixelSize() * scale)));
    }
    return scaled;
}

int32_t StepCaptions::textWidth(int index, double scale) const {
    const QFontMetricsF metrics(fontOf(scale));
    return static_cast<int32_t>(
        std::ceil(metrics.size(Qt::TextShowMnemonic, tabText(index)).width()));
}

void StepCaptions::fitInto(int32_t width) {
    const CaptionFit fit = fitCaptions(width, count(), iconSide + iconGap, [this](double scale) {
        int32_t all = 0;
        for (int i = 0; i < count(); ++i)
            all += textWidth(i, scale);
        return all;
    });
    if (fit == fit_) return;
    fit_ = fit;
    for (int i = 0; i < count(); ++i)
        setTabToolTip(i, fit_.whole ? QString() : QString(tabText(i)).remove('&'));
    // The only way to have the tabs measured anew.
    setIconSize(iconSize());
    updateGeometry();
    update();
}

QSize StepCaptions::sizeHint() const {
    int width = 0;
    for (int i = 0; i < count(); ++i)
        width += tabSizeHint(i).width();
    return {width, captionHeight};
}

QSize StepCaptions::tabSizeHint(int index) const {
    const int icon = fit_.icons ? iconSide + iconGap : 0;
    return {textWidth(index, fit_.scale) + icon + 2 * fit_.padding, captionHeight};
}

void StepCaptions::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    // The selected caption lies over its neighbours.
    for (int i = 0; i < count(); ++i)
        if (i != currentIndex()) paintCaption(painter, i);
    if (currentIndex() >= 0) paintCaption(painter, currentIndex());
}

void StepCaptions::paintCaption(QStylePainter& painter, int index) const {
    QStyleOptionTab option;
    initStyleOption(&option, index);
    painter.drawControl(QStyle::CE_TabBarTabShape, option);

    QRect place = option.rect.adjusted(fit_.padding, 0, -fit_.padding, 0);
    if (index != currentIndex()) place.translate(0, 1);
    if (fit_.icons) {
        const QRect icon(place.left(), place.center().y() - iconSide / 2 + 1, iconSide, iconSide);
        tabIcon(index).paint(&painter, icon);
        place.setLeft(icon.right() + 1 + iconGap);
    }
    painter.setFont(fontOf(fit_.scale));
    painter.drawItemText(place, Qt::AlignCenter | Qt::TextShowMnemonic | Qt::TextSingleLine,
                         option.palette, isEnabled(), tabText(index), QPalette::WindowText);
    if (hasFocus() && index == currentIndex()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = option.rect.adjusted(2, 3, -2, -2);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
    }
}

StepStrip::StepStrip(QWidget* parent) : QTabWidget(parent), captions_(new StepCaptions(this)) {
    setTabBar(captions_);
    setUsesScrollButtons(false);
}

void StepStrip::setButtons(const QList<QWidget*>& buttons) {
    buttons_ = buttons;
    placeParts();
}

void StepStrip::placeFrames(const Box& place) {
    frames_ = place;
    placeParts();
}

bool StepStrip::event(QEvent* event) {
    // The base class would lay the frames out by the style, for a moment.
    if (event->type() == QEvent::LayoutRequest) {
        placeParts();
        return true;
    }
    const bool handled = QTabWidget::event(event);
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange) placeParts();
    return handled;
}

void StepStrip::resizeEvent(QResizeEvent*) { placeParts(); }

void StepStrip::showEvent(QShowEvent*) { placeParts(); }

void StepStrip::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionTabWidgetFrame option;
    initStyleOption(&option);
    option.rect = rect().adjusted(0, captionHeight - 1, 0, 0);
    painter.drawPrimitive(QStyle::PE_FrameTabWidget, option);
}

void StepStrip::placeParts() {
    int right = width();
    for (auto button = buttons_.rbegin(); button != buttons_.rend(); ++button) {
        right -= buttonSide;
        (*button)->setGeometry(right, 0, buttonSide, buttonSide);
    }
    const int room = right - 4;
    captions_->fitInto(room);
    captions_->setGeometry(0, 0, std::min(captions_->sizeHint().width(), room), captionHeight);
    if (auto* frames = findChild<QStackedWidget*>(QString(), Qt::FindDirectChildrenOnly))
        frames->setGeometry(frames_.x, frames_.y, frames_.width, frames_.height);
}

}  // namespace tessarine
