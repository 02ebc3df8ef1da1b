#include "wizard/sheet_fields.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSpinBox>

#include "wizard/contrast.h"

namespace tessarine {

DigitsField::DigitsField(QWidget* parent, OnFocus onFocus) : QLineEdit(parent), onFocus_(onFocus) {
    setInputMethodHints(Qt::ImhDigitsOnly);
}

void DigitsField::showText(const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (shown != this->text()) setText(shown);
}

void DigitsField::keyPressEvent(QKeyEvent* event) {
    const QString typed = event->text();
    const bool refused = !typed.isEmpty() && typed.front().isPrint() &&
                         (typed.front() < QLatin1Char('0') || typed.front() > QLatin1Char('9'));
    if (refused)
        event->accept();
    else
        QLineEdit::keyPressEvent(event);
}

void DigitsField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    if (onFocus_ != OnFocus::selectAll) return;
    selectAll();
    gainedFocus_ = event->reason() == Qt::MouseFocusReason;
}

void DigitsField::mousePressEvent(QMouseEvent* event) {
    QLineEdit::mousePressEvent(event);
    // The press that brings the focus would place the caret and so undo the selection.
    if (gainedFocus_) selectAll();
    gainedFocus_ = false;
}

SpinArrows::SpinArrows(QWidget* parent) : QSpinBox(parent) {
    lineEdit()->setReadOnly(true);
    lineEdit()->hide();
}

QSize SpinArrows::sizeHint() const {
    // As wide as the style makes the arrows of any box, with nothing left for a text.
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    option.rect = QRect(0, 0, 200, 24);
    const QRect arrow =
        style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, this);
    return {option.rect.width() - arrow.left() + 1, option.rect.height()};
}

Swatch::Swatch(QWidget* parent) : QAbstractButton(parent) { setFocusPolicy(Qt::StrongFocus); }

void Swatch::setColour(uint32_t colour) {
    colour_ = QColor(int(colour & 255), int(colour >> 8 & 255), int(colour >> 16 & 255));
    update();
}

void Swatch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor ground = palette().color(QPalette::Base);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlpha(isDown() ? 200 : 110);
    if (hasFocus())
        edge = readableOn(palette().color(QPalette::Window), palette().color(QPalette::Highlight));
    const int line = hasFocus() ? 2 : 1;
    painter.fillRect(rect(), edge);
    const QRect within = rect().adjusted(line, line, -line, -line);
    painter.fillRect(within, ground);
    // A pressed swatch sinks in: its edge darkens, and its colour moves away from the light.
    const QRect colour = within.adjusted(1, 1, -1, -1);
    painter.fillRect(isDown() ? colour.adjusted(2, 2, 0, 0) : colour, colour_);
}

}  // namespace tessarine
