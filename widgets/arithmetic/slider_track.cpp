#include "widgets/arithmetic/slider_track.h"

#include <cmath>
#include <limits>

namespace tessarine {

namespace {

int32_t rounded(double value) { return int32_t(std::lrint(value)); }

}  // namespace

void SliderTrack::setMin(int32_t value) {
    if (value >= max_) throw InvalidPropertyValue();
    min_ = value;
    setValue(value);
    range_ = max_ - min_;
}

void SliderTrack::setMax(int32_t value) {
    if (value <= min_) throw InvalidPropertyValue();
    max_ = value;
    range_ = max_ - min_;
}

void SliderTrack::setValue(int32_t value) {
    if (value < min_ || value > max_) throw InvalidPropertyValue();
    value_ = value;
    if (value == previousValue_) return;
    if (!dragging_) placeThumb();
    redraw();
    previousValue_ = value;
    control_.happened(Event::ValueChanged);
    if (value == max_) control_.happened(Event::ArrivedLast);
    if (value == min_) control_.happened(Event::ArrivedFirst);
}

void SliderTrack::show(int32_t min, int32_t max, int32_t value) {
    min_ = min;
    max_ = max;
    value_ = previousValue_ = value;
    range_ = max_ - min_;
    if (!dragging_) placeThumb();
    redraw();
}

void SliderTrack::setOrientation(int32_t orientation) {
    orientation_ = orientation;
    layOut();
}

void SliderTrack::setThumbSize(Length2 size) {
    thumb_ = size;
    layOut();
}

void SliderTrack::resize(Length2 size) {
    size_ = size;
    layOut();
}

void SliderTrack::press(int16_t button, double x, double y) {
    if (button != leftButton || !enabled_) return;
    dragging_ = true;
    if (left_ <= x && x < left_ + thumb_.width && top_ <= y && y < top_ + thumb_.height) {
        grabX_ = float(x - left_);
        grabY_ = float(y - top_);
    } else {
        grabX_ = float(thumb_.width / 2);
        grabY_ = float(thumb_.height / 2);
        move(x, y);
    }
    // The move may have let events happen, and the button may be up by now.
    if (showValueTip_ && dragging_) control_.showTip();
    control_.pressed(button);
}

void SliderTrack::move(double x, double y) {
    if (!dragging_) return;
    const double free = freeLength();
    double& position = horizontal() ? left_ : top_;
    const double pointed = horizontal() ? x - grabX_ : y - grabY_;
    position = pointed < 0 ? 0 : pointed <= free ? pointed : free;

    // Where the thumb cannot travel, no value can be told from its place, and the old one stays.
    int32_t value = value_;
    valueAt(position, value);
    position = along(value);
    if (value >= min_ && value <= max_) setValue(value);
}

void SliderTrack::release(int16_t button, double x, double y) {
    const bool inside = x >= 0 && x < size_.width && y >= 0 && y < size_.height;
    if (button == leftButton && inside) control_.happened(Event::Click);
    if (dragging_) control_.released(button);
    dragging_ = false;
    control_.closeTip();
}

SliderTrack::Rail SliderTrack::rail() const {
    // Along the rail it begins and ends below the middle of the thumb; across, it runs in the
    // middle of a control that is as thick as its thumb.
    Rail rail;
    const double half = railThickness / 2.0;
    rail.left = rounded(thumb_.width * 0.5 - half);
    rail.top = rounded(thumb_.height * 0.5 - half);
    if (horizontal()) {
        rail.right = rounded(rail.left + size_.width - thumb_.width + railThickness);
        rail.bottom = rail.top + railThickness;
    } else {
        rail.right = rail.left + railThickness;
        rail.bottom = rounded(rail.top + size_.height - thumb_.height + railThickness);
    }
    return rail;
}

SliderTrack::Tip SliderTrack::tip(int32_t screenLeft, int32_t screenTop, int32_t labelWidth,
                                  int32_t labelHeight) const {
    double left = screenLeft + left_;
    double top = screenTop + top_;
    if (horizontal()) {
        left += (thumb_.width - labelWidth - 4) * 0.5;
        top += -labelHeight - 5;
    } else {
        left += -labelWidth - 6;
        top += (thumb_.height - labelHeight - 4) * 0.5;
    }
    return {rounded(left), rounded(top), labelWidth + 4, labelHeight + 3};
}

double SliderTrack::freeLength() const {
    return horizontal() ? size_.width - thumb_.width : size_.height - thumb_.height;
}

double SliderTrack::along(int32_t value) const {
    const double free = freeLength();
    const double fromLowEnd = range_ == 0 ? 0 : free * (value - min_) / range_;
    return horizontal() ? fromLowEnd : free - fromLowEnd;
}

bool SliderTrack::valueAt(double position, int32_t& value) const {
    const double free = freeLength();
    if (free == 0) return false;
    const double fromLowEnd = horizontal() ? position : free - position;
    const double exact = std::nearbyint(fromLowEnd / free * range_ + min_);
    if (exact < std::numeric_limits<int32_t>::min() || exact > std::numeric_limits<int32_t>::max())
        return false;
    value = int32_t(exact);
    return true;
}

void SliderTrack::placeThumb() { (horizontal() ? left_ : top_) = along(value_); }

void SliderTrack::layOut() {
    if (horizontal())
        top_ = (size_.height - thumb_.height) * 0.5;
    else
        left_ = (size_.width - thumb_.width) * 0.5;
    placeThumb();
    redraw();
}

void SliderTrack::redraw() {
    control_.redraw();
    if (dragging_ && showValueTip_) control_.updateTip();
}

}  // namespace tessarine
