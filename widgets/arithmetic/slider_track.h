#pragma once

#include <cstdint>

#include "widgets/arithmetic/invalid_property.h"

namespace tessarine {

/// The arithmetic of a slider: value, thumb and rail, what a pointer does to them, and the order
/// of events. Lengths are in pixels of the control.
///
/// The low end of the scale is left in a horizontal slider and at the bottom in a vertical one.
class SliderTrack {
  public:
    enum class Event { Click, ArrivedFirst, ArrivedLast, ValueChanged };
    enum Button : int16_t { noButton = 0, leftButton = 1, rightButton = 2, middleButton = 4 };
    static constexpr int32_t railThickness = 4;

    struct Length2 {
        double width = 0;
        double height = 0;
    };
    struct Rail {
        int32_t left = 0;
        int32_t top = 0;
        int32_t right = 0;   ///< past the end
        int32_t bottom = 0;  ///< past the end
        bool operator==(const Rail&) const = default;
    };
    struct Tip {
        int32_t left = 0;
        int32_t top = 0;
        int32_t width = 0;
        int32_t height = 0;
        bool operator==(const Tip&) const = default;
    };

    /// The control around the arithmetic: it does what it is told, in the order told.
    class Control {
      public:
        virtual ~Control() = default;
        virtual void redraw() = 0;
        virtual void showTip() = 0;
        /// The value or the thumb's place changed under the tip; it is shown or about to be.
        virtual void updateTip() = 0;
        virtual void closeTip() = 0;
        virtual void happened(Event event) = 0;
        virtual void pressed(int16_t button) = 0;
        virtual void released(int16_t button) = 0;
    };

    explicit SliderTrack(Control& control) : control_(control) {}

    int32_t Min() const { return min_; }
    int32_t Max() const { return max_; }
    int32_t Value() const { return value_; }
    /// Also sets Value to the new Min. \throws InvalidPropertyValue at or above Max
    void setMin(int32_t value);
    /// Value stays. \throws InvalidPropertyValue at or below Min
    void setMax(int32_t value);
    /// \throws InvalidPropertyValue outside Min to Max
    void setValue(int32_t value);
    /// Takes a range and a value that hold already: no event is raised and nothing is checked.
    void show(int32_t min, int32_t max, int32_t value);

    /// 0 horizontal, 1 vertical.
    int32_t Orientation() const { return orientation_; }
    void setOrientation(int32_t orientation);
    bool Enabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }
    bool ShowValueTip() const { return showValueTip_; }
    void setShowValueTip(bool shown) { showValueTip_ = shown; }
    void setThumbSize(Length2 size);
    void resize(Length2 size);

    void press(int16_t button, double x, double y);
    void move(double x, double y);
    void release(int16_t button, double x, double y);

    bool dragging() const { return dragging_; }
    double thumbLeft() const { return left_; }
    double thumbTop() const { return top_; }
    Length2 thumbSize() const { return thumb_; }
    Rail rail() const;
    /// Where the tip stands on the screen.
    /// \param screenLeft, screenTop      the control's place on the screen
    /// \param labelWidth, labelHeight  the size of the text in the tip
    Tip tip(int32_t screenLeft, int32_t screenTop, int32_t labelWidth, int32_t labelHeight) const;

  private:
    bool horizontal() const { return orientation_ == 0; }
    double freeLength() const;
    double along(int32_t value) const;
    bool valueAt(double position, int32_t& value) const;
    void placeThumb();
    void layOut();
    void redraw();

    Control& control_;
    bool dragging_ = false;
    float grabX_ = 0;
    float grabY_ = 0;
    int32_t range_ = 10;
    int32_t previousValue_ = 0;
    bool enabled_ = true;
    int32_t orientation_ = 1;
    bool showValueTip_ = true;
    int32_t min_ = 0;
    int32_t max_ = 10;
    int32_t value_ = 0;
    double left_ = 0;
    double top_ = 0;
    Length2 thumb_;
    Length2 size_;
};

}  // namespace tessarine
