#include "wizard/status_bar.h"

#include <QEvent>
#include <QPainter>

#include "wizard/file_names.h"
#include "wizard/file_types.h"

namespace tessarine {

namespace {

constexpr int iconSide = 16;
constexpr int textMargin = 5;

/// Between text and ground, so that a line is seen in light and in dark.
QColor lineColour(const QPalette& palette) {
    QColor colour = palette.color(QPalette::WindowText);
    colour.setAlpha(60);
    return colour;
}

}  // namespace

StatusPanelLabel::StatusPanelLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
}

void StatusPanelLabel::show(const QString& text, const QIcon& icon) {
    icon_ = icon;
    setText(text);
    updateToolTip();
    update();
}

int32_t StatusPanelLabel::textLeft() const {
    return textMargin + (icon_.isNull() ? 0 : iconSide + textMargin);
}

int32_t StatusPanelLabel::wantedWidth() const {
    return textLeft() + fontMetrics().horizontalAdvance(text()) + textMargin + 1;
}

QString StatusPanelLabel::shownText() const {
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, width() - textLeft() - textMargin);
}

void StatusPanelLabel::updateToolTip() {
    setToolTip(shownText() == text() ? QString() : plainToolTip(text()));
}

void StatusPanelLabel::resizeEvent(QResizeEvent*) { updateToolTip(); }

void StatusPanelLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(lineColour(palette()));
    painter.drawLine(width() - 1, 3, width() - 1, height() - 4);
    icon_.paint(&painter, textMargin, (height() - iconSide) / 2, iconSide, iconSide);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect().adjusted(textLeft(), 0, -textMargin, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shownText());
}

StatusBar::StatusBar(QWidget* parent) : QStatusBar(parent), pb_(new QProgressBar(this)) {
    setObjectName("SB");
    setSizeGripEnabled(false);
    for (size_t i = 0; i < panels_.size(); ++i) {
        panels_[i] = new StatusPanelLabel(this);
        panels_[i]->setObjectName(QString("SB(%1)").arg(i + 1));
    }
    pb_->setObjectName("pb");
    pb_->setAccessibleName(tr("Progress of the run"));
    pb_->setFormat("%v / %m");
    pb_->hide();
}

void StatusBar::showPanel(size_t index, const StatusPanel& panel) {
    panels_.at(index)->show(shownName(panel.text),
                            panel.icon.empty() ? QIcon() : fileTypeIcon(panel.icon));
    layOut();
}

void StatusBar::showProgress(const ProgressBar& progress) {
    pb_->setRange(0, progress.max);
    pb_->setValue(progress.value);
    pb_->setVisible(progress.visible);
    pb_->raise();
}

int32_t StatusBar::wantedHeight() const { return std::max(22, fontMetrics().height() + 8); }

void StatusBar::resizeEvent(QResizeEvent*) { layOut(); }

void StatusBar::changeEvent(QEvent* event) {
    QStatusBar::changeEvent(event);
    if (event->type() == QEvent::FontChange) layOut();
}

void StatusBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(lineColour(palette()));
    painter.drawLine(0, 0, width(), 0);
}

void StatusBar::layOut() {
    std::array<int32_t, panelCount> wanted{};
    for (size_t i = 0; i < wanted.size(); ++i)
        wanted[i] = panels_[i] == nullptr ? 0 : panels_[i]->wantedWidth();
    const Extent bar{width(), height()};
    const std::array<Box, panelCount> places = layOutPanels(bar, wanted);
    for (size_t i = 0; i < places.size(); ++i)
        if (panels_[i] != nullptr)
            panels_[i]->setGeometry(places[i].x, places[i].y, places[i].width, places[i].height);
    const Box progress = layOutProgressBar(bar, places[1]);
    pb_->setGeometry(progress.x, progress.y, progress.width, progress.height);
}

}  // namespace tessarine
