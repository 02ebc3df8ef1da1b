#include "wizard/sheet_fields.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QStylePainter>

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
    QStylePainter painter(this);
    // A pressed swatch sinks in: light falls on its other edges, and its colour moves with it.
    const QColor light = palette().color(QPalette::Light);
    const QColor dark = palette().color(QPalette::Dark);
    const QRect box = rect().adjusted(0, 0, -1, -1);
    for (int ring = 0; ring < 2; ++ring) {
        const QRect edge = box.adjusted(ring, ring, -ring, -ring);
        painter.setPen(isDown() ? dark : light);
        painter.drawLine(edge.topLeft(), edge.topRight());
        painter.drawLine(edge.topLeft(), edge.bottomLeft());
        painter.setPen(isDown() ? light : dark);
        painter.drawLine(edge.bottomLeft(), edge.bottomRight());
        painter.drawLine(edge.topRight(), edge.bottomRight());
    }
    const QRect inner = rect().adjusted(2, 2, -2, -2);
    painter.fillRect(inner, palette().color(QPalette::Window));
    painter.fillRect(isDown() ? inner.adjusted(2, 2, 0, 0) : inner, colour_);
    if (!hasFocus()) return;
    // Visible on every colour.
    painter.setPen(QPen(qGray(colour_.rgb()) < 128 ? Qt::white : Qt::black, 1, Qt::DotLine));
    painter.drawRect(inner.adjusted(2, 2, -3, -3));
}

}  // namespace tessarine
