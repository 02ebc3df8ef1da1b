#pragma once

#include <cstdint>
#include <functional>

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QColor>
#include <QLineEdit>

class QKeyEvent;

// The colour picker's own controls.

namespace tessarine {

/// Name and description of a control for screen readers, which hear of a change only.
void nameForReaders(QWidget& control, const QString& name);
void describeForReaders(QWidget& control, const QString& description);

/// A place on a picture, to which the mouse and the arrow keys point. It draws nothing; the window
/// below shows through.
class PickArea : public QWidget {
    Q_OBJECT

  public:
    PickArea(const QString& name, QWidget* parent);

  signals:
    /// Pixels from the top left corner; outside while the mouse is held.
    void pressed(QPoint place);
    void moved(QPoint place);
    void released(QPoint place);
    void doubleClicked();
    /// An arrow key asks for the place this many pixels further.
    void stepped(QPoint by);
    void focusChanged();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};

/// A text field that takes only the keys 0 to 9 and backspace.
class DigitsEdit : public QLineEdit {
    Q_OBJECT

  public:
    using QLineEdit::QLineEdit;

    /// Whether a key would change a text in another way than by a digit or backspace.
    static bool drops(const QKeyEvent& event);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// The spin buttons of a component with its text field between its frame. What a text or a step
/// means is the owner's business.
class ComponentSpin : public QAbstractSpinBox {
    Q_OBJECT
    Q_PROPERTY(int value READ value WRITE setValue)
    Q_PROPERTY(int minimum READ minimum)
    Q_PROPERTY(int maximum READ maximum)
    Q_PROPERTY(int singleStep READ singleStep)

  public:
    /// The field's name begins with "txt", the spin's with "upd".
    ComponentSpin(const QString& name, const QString& accessibleName, int highest, QWidget* parent);

    QLineEdit& field() const { return *lineEdit(); }
    /// Shows a text and a value that hold already: no signal is raised.
    void show(const QString& text, int value);
    using QWidget::show;

    int value() const { return value_; }
    /// As a press of a spin button sets it.
    void setValue(int value);
    int minimum() const { return 0; }
    int maximum() const { return highest_; }
    int singleStep() const { return 1; }

    void stepBy(int steps) override { setValue(value_ + steps); }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  signals:
    void textChanged(const QString& text);
    void spun(int value);

  protected:
    StepEnabled stepEnabled() const override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    int highest_;
    int value_ = 0;
};

/// A text to read and to copy, in a field no wider than it needs.
class ReadOnlyField : public QLineEdit {
    Q_OBJECT

  public:
    /// \param widest  a text of the greatest width
    ReadOnlyField(const QString& name, const QString& widest, QWidget* parent);

    /// A text that stands already keeps what is selected of it.
    void show(const QString& text);
    using QWidget::show;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  private:
    QString widest_;
};

/// A pane of one colour.
class ColourPane : public QWidget {
    Q_OBJECT

  public:
    ColourPane(const QString& name, QWidget* parent);

    void setColour(const QColor& colour);
    QColor colour() const { return colour_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor colour_;
};

/// A pane of one colour that can be pressed.
class ColourButton : public QAbstractButton {
    Q_OBJECT

  public:
    ColourButton(const QString& name, QWidget* parent);

    void setColour(const QColor& colour);
    QColor colour() const { return colour_; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor colour_;
};

}  // namespace tessarine
