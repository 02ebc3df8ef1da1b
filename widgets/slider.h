#pragma once

#include <cstdint>

#include <QIcon>
#include <QWidget>

namespace tessarine {

/// The program's slider: a thumb on a rail, with integer values and a small floating window that
/// shows the value while it is dragged. It takes no key; the field and the spin beside it do.
class cpvSlider : public QWidget {
    Q_OBJECT

  public:
    explicit cpvSlider(QWidget* parent = nullptr);
    ~cpvSlider() override;

    int32_t Min() const;
    int32_t Max() const;
    int32_t Value() const;
    /// Also sets Value to the new Min, with all that this does.
    /// \throws InvalidPropertyValue at or above Max
    void Min(int32_t value);
    /// Value stays, even above the new Max. \throws InvalidPropertyValue at or below Min
    void Max(int32_t value);
    /// \throws InvalidPropertyValue outside Min to Max
    void Value(int32_t value);
    /// Shows a range and a value that hold already: no signal is raised.
    void show(int32_t min, int32_t max, int32_t value);
    using QWidget::show;

    /// 0 horizontal, 1 vertical (the default).
    int32_t Orientation() const;
    void Orientation(int32_t orientation);
    /// 0 to 4 an edge of the platform, 99 RailPicture in the rail's place.
    int32_t RailStyle() const;
    void RailStyle(int32_t style);
    bool ShowValueTip() const;
    void ShowValueTip(bool shown);
    void SliderIcon(const QIcon& picture, QSize size);
    void RailPicture(const QPixmap& picture);

  signals:
    void Click();
    void ArrivedFirst();
    void ArrivedLast();
    void ValueChanged();
    void MouseDown(int16_t button);
    void MouseUp(int16_t button);
};

}  // namespace tessarine
