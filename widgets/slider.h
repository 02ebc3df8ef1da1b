#pragma once

#include <cstdint>
#include <memory>

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QWidget>

#include "widgets/accessible_range.h"
#include "widgets/arithmetic/slider_track.h"

namespace tessarine {

class frmValueTip;

/// The program's slider: a thumb on a rail, with integer values and a small floating window that
/// shows the value while it is dragged. It takes no key; the field and the spin beside it do.
///
/// Across, the rail runs in the middle of the thumb as though the slider were as thick as its
/// thumb: give it the thickness of its sizeHint().
class cpvSlider : public QWidget, public AccessibleRange, private SliderTrack::Control {
    Q_OBJECT

  public:
    explicit cpvSlider(QWidget* parent = nullptr);
    ~cpvSlider() override;

    int32_t Min() const { return track_.Min(); }
    int32_t Max() const { return track_.Max(); }
    int32_t Value() const { return track_.Value(); }
    /// Also sets Value to the new Min, with all that this does.
    /// \throws InvalidPropertyValue at or above Max
    void Min(int32_t value) { track_.setMin(value); }
    /// Value stays, even above the new Max. \throws InvalidPropertyValue at or below Min
    void Max(int32_t value) { track_.setMax(value); }
    /// \throws InvalidPropertyValue outside Min to Max
    void Value(int32_t value) { track_.setValue(value); }
    /// Shows a range and a value that hold already: no signal is raised.
    void show(int32_t min, int32_t max, int32_t value) { track_.show(min, max, value); }
    using QWidget::show;

    /// 0 horizontal, 1 vertical (the default).
    int32_t Orientation() const { return track_.Orientation(); }
    void Orientation(int32_t orientation);
    /// 0 to 4 an edge of the rail (sunken, raised, sunken outer line only, raised inner line
    /// only, none), 99 RailPicture in the rail's place.
    int32_t RailStyle() const { return railStyle_; }
    void RailStyle(int32_t style);
    bool ShowValueTip() const { return track_.ShowValueTip(); }
    void ShowValueTip(bool shown) { track_.setShowValueTip(shown); }
    /// An invalid colour, the default, is the palette's.
    QColor BackColor() const { return backColor_; }
    void BackColor(const QColor& colour);
    /// The thumb's picture, `size` in pixels; without one a plain thumb is drawn.
    void SliderIcon(const QIcon& picture, QSize size);
    void RailPicture(const QPixmap& picture);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    QAccessible::Role accessibleRole() const override { return QAccessible::Slider; }
    int32_t accessibleValue() const override { return Value(); }
    int32_t accessibleMinimum() const override { return Min(); }
    int32_t accessibleMaximum() const override { return Max(); }
    void setAccessibleValue(int32_t value) override { Value(value); }

  signals:
    void Click();
    void ArrivedFirst();
    void ArrivedLast();
    void ValueChanged();
    void MouseDown(int16_t button);
    void MouseUp(int16_t button);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent*) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent*) override;
    void paintEvent(QPaintEvent*) override;

  private:
    void redraw() override;
    void showTip() override;
    void updateTip() override;
    void closeTip() override;
    void happened(SliderTrack::Event event) override;
    void pressed(int16_t button) override { emit MouseDown(button); }
    void released(int16_t button) override { emit MouseUp(button); }
    QRect placeTip();
    void endDrag();
    void paintRail(QPainter& painter) const;
    void paintThumb(QPainter& painter) const;

    SliderTrack track_;
    int32_t railStyle_ = 0;
    QColor backColor_;
    QIcon sliderIcon_;
    QPixmap railPicture_;
    std::shared_ptr<frmValueTip> tip_;
};

}  // namespace tessarine
