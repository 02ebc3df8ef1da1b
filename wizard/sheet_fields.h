#pragma once

#include <cstdint>
#include <string>

#include <QAbstractButton>
#include <QLineEdit>
#include <QSpinBox>

namespace tessarine {

/// A field that takes the digits 0 to 9 and Backspace from the keyboard.
class DigitsField : public QLineEdit {
  public:
    enum class OnFocus { asUsual, selectAll };

    explicit DigitsField(QWidget* parent, OnFocus onFocus = OnFocus::asUsual);

    /// Shows a text that another place holds; the caret stays where the text stays.
    void showText(const std::string& text);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    OnFocus onFocus_;
    bool gainedFocus_ = false;  ///< by the press that is still to come
};

/// The two arrows beside a value field, without a field of their own. Up means more.
class SpinArrows : public QSpinBox {
  public:
    explicit SpinArrows(QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
};

/// A colour that a press on it asks to change.
class Swatch : public QAbstractButton {
  public:
    explicit Swatch(QWidget* parent);

    /// \param colour  0x00BBGGRR
    void setColour(uint32_t colour);
    QSize sizeHint() const override { return {34, 22}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor colour_;
};

}  // namespace tessarine
