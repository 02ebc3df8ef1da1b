#include "widgets/picker_controls.h"

#include <algorithm>
#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSpinBox>

namespace tessarine {

namespace {

/// The pixel that holds a place; on dense screens places lie between pixels.
QPoint pixelAt(const QMouseEvent& event) {
    return {static_cast<int>(std::floor(event.position().x())),
            static_cast<int>(std::floor(event.position().y()))};
}

QString digitsOf(const QColor& colour) { return colour.name().mid(1).toUpper(); }

QSize paneSize(const QWidget& pane) {
    const int height = pane.fontMetrics().height() * 2;
    return {height * 2, height};
}

/// Fills a pane, inside a frame that tells whether it has the focus. Rectangles instead of lines
/// stay crisp at every density.
void paintPane(QPainter& painter, const QWidget& pane, const QColor& colour) {
    const QPalette& colours = pane.palette();
    const QRect rect = pane.rect();
    const bool focused = pane.hasFocus();
    painter.fillRect(rect, colours.brush(focused ? QPalette::Highlight : QPalette::Mid));
    painter.fillRect(rect.adjusted(1, 1, -1, -1),
                     colours.brush(focused ? QPalette::Highlight : QPalette::Base));
    painter.fillRect(rect.adjusted(2, 2, -2, -2), colour);
}

}  // namespace

void nameForReaders(QWidget& control, const QString& name) {
    if (control.accessibleName() != name) control.setAccessibleName(name);
}

void describeForReaders(QWidget& control, const QString& description) {
    if (control.accessibleDescription() != description)
        control.setAccessibleDescription(description);
}

// ---- PickArea ----

PickArea::PickArea(const QString& name, QWidget* parent) : QWidget(parent) {
    setObjectName(name);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
}

void PickArea::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit pressed(pixelAt(*event));
}

void PickArea::mouseMoveEvent(QMouseEvent* event) { emit moved(pixelAt(*event)); }

void PickArea::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit released(pixelAt(*event));
}

void PickArea::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    emit pressed(pixelAt(*event));
    emit doubleClicked();
}

void PickArea::keyPressEvent(QKeyEvent* event) {
    const int by = event->modifiers() & Qt::ShiftModifier ? 10 : 1;
    switch (event->key()) {
        case Qt::Key_Left:
            emit stepped({-by, 0});
            break;
        case Qt::Key_Right:
            emit stepped({by, 0});
            break;
        case Qt::Key_Up:
            emit stepped({0, -by});
            break;
        case Qt::Key_Down:
            emit stepped({0, by});
            break;
        case Qt::Key_PageUp:
            emit stepped({0, -10});
            break;
        case Qt::Key_PageDown:
            emit stepped({0, 10});
            break;
        default:
            QWidget::keyPressEvent(event);
    }
}

void PickArea::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    emit focusChanged();
}

void PickArea::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    emit focusChanged();
}

// ---- DigitsEdit ----

bool DigitsEdit::drops(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Backspace) return false;
    for (const QKeySequence::StandardKey editing :
         {QKeySequence::Cut, QKeySequence::Paste, QKeySequence::Undo, QKeySequence::Redo,
          QKeySequence::Delete, QKeySequence::DeleteStartOfWord, QKeySequence::DeleteEndOfWord,
          QKeySequence::DeleteEndOfLine, QKeySequence::DeleteCompleteLine})
        if (event.matches(editing)) return true;
    if (event.key() == Qt::Key_U && event.modifiers() & Qt::ControlModifier) return true;
    const QString text = event.text();
    if (text.isEmpty() || !text.at(0).isPrint()) return false;
    return text.size() != 1 || text.at(0) < u'0' || text.at(0) > u'9';
}

void DigitsEdit::keyPressEvent(QKeyEvent* event) {
    if (drops(*event)) return event->accept();
    QLineEdit::keyPressEvent(event);
}

// ---- ComponentSpin ----

ComponentSpin::ComponentSpin(const QString& name, const QString& accessibleName, int highest,
                             QWidget* parent)
    : QAbstractSpinBox(parent), highest_(highest) {
    setObjectName("upd" + name);
    setAccessibleName(accessibleName);
    // The base class would read the text by itself while it is typed.
    setKeyboardTracking(false);
    setLineEdit(new DigitsEdit(this));
    field().setObjectName("txt" + name);
    field().setAccessibleName(accessibleName);
    field().setAlignment(Qt::AlignRight);
    field().setInputMethodHints(Qt::ImhDigitsOnly);
    connect(&field(), &QLineEdit::textChanged, this, &ComponentSpin::textChanged);
}

void ComponentSpin::show(const QString& text, int value) {
    value_ = value;
    if (field().text() != text) {
        const QSignalBlocker silence(field());
        field().setText(text);
    }
    update();
}

void ComponentSpin::setValue(int value) { emit spun(std::clamp(value, minimum(), maximum())); }

QSize ComponentSpin::sizeHint() const {
    ensurePolished();
    const QSize contents(fontMetrics().horizontalAdvance("0000"),
                         std::max(field().sizeHint().height(), fontMetrics().height()));
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_SpinBox, &option, contents, this);
}

QAbstractSpinBox::StepEnabled ComponentSpin::stepEnabled() const {
    StepEnabled enabled;
    if (value_ > minimum()) enabled |= StepDownEnabled;
    if (value_ < maximum()) enabled |= StepUpEnabled;
    return enabled;
}

void ComponentSpin::keyPressEvent(QKeyEvent* event) {
    if (DigitsEdit::drops(*event)) return event->accept();
    QAbstractSpinBox::keyPressEvent(event);
}

// ---- ReadOnlyField ----

ReadOnlyField::ReadOnlyField(const QString& name, const QString& widest, QWidget* parent)
    : QLineEdit(parent), widest_(widest) {
    setObjectName(name);
    setReadOnly(true);
    setAlignment(Qt::AlignRight);
}

void ReadOnlyField::show(const QString& given) {
    if (text() != given) setText(given);
}

QSize ReadOnlyField::sizeHint() const {
    // The base class asks for the width of 17 letters.
    QSize size = QLineEdit::sizeHint();
    size.rwidth() +=
        fontMetrics().horizontalAdvance(widest_ + ' ') - 17 * fontMetrics().horizontalAdvance('x');
    return size;
}

// ---- ColourPane, ColourButton ----

ColourPane::ColourPane(const QString& name, QWidget* parent) : QWidget(parent) {
    setObjectName(name);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ColourPane::setColour(const QColor& colour) {
    colour_ = colour;
    describeForReaders(*this, digitsOf(colour));
    update();
}

QSize ColourPane::sizeHint() const { return paneSize(*this); }

void ColourPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPane(painter, *this, colour_);
}

ColourButton::ColourButton(const QString& name, QWidget* parent) : QAbstractButton(parent) {
    setObjectName(name);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setCursor(Qt::PointingHandCursor);
}

void ColourButton::setColour(const QColor& colour) {
    colour_ = colour;
    describeForReaders(*this, digitsOf(colour));
    update();
}

QSize ColourButton::sizeHint() const { return paneSize(*this); }

void ColourButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPane(painter, *this, colour_);
}

}  // namespace tessarine
