#include "widgets/arithmetic/splitter_bar.h"

#include <algorithm>
#include <cmath>

namespace tessarine {

void SplitterBar::setOrientation(int32_t orientation) {
    orientation_ = orientation;
    placeMover();
    bar_ = mover_;
    control_.showBars();
}

void SplitterBar::setPosition(int32_t percent) {
    position_ = chosen_ = std::max(std::min(percent, maximum_), minimum_);
    placeAndRefresh();
}

void SplitterBar::setMinimum(int32_t percent) {
    minimum_ = percent;
    placeAndRefresh();
}

void SplitterBar::setMaximum(int32_t percent) {
    maximum_ = percent < 0 ? 1 : percent > 100 ? 99 : percent;
    placeAndRefresh();
}

void SplitterBar::setThickness(int32_t thickness) {
    thickness_ = thickness;
    bar_.width = thickness;
    placeAndRefresh();
}

void SplitterBar::resize(int32_t width, int32_t height) {
    width_ = width;
    height_ = height;
    control_.happened(Event::resize);
    position_ = chosen_;
    placeAndRefresh();
}

void SplitterBar::Refresh() {
    bar_ = mover_;
    control_.showBars();
    control_.moveNeighbours();
}

void SplitterBar::press() {
    mover_ = bar_;
    moverVisible_ = true;
    control_.showBars();
    control_.happened(Event::press);
}

void SplitterBar::move(double x, double y) {
    const int32_t along =
        vertical() ? bar_.left + int32_t(std::lrint(x)) : bar_.top + int32_t(std::lrint(y));
    if (along > percentOfSize(minimum_) && along < percentOfSize(maximum_)) {
        mover_ = placeAt(along);
        control_.showBars();
        // Rounded down from a quotient of a quotient: now and then one less than the plain
        // percentage, and never more.
        position_ = int32_t(std::floor(100 / (double(size()) / along)));
        if (moverVisible_) chosen_ = position_;
    }
    control_.happened(Event::move);
}

void SplitterBar::release() {
    moverVisible_ = false;
    Refresh();
    control_.happened(Event::release);
}

void SplitterBar::leave() {
    if (moverVisible_ || (position_ == chosen_ && mover_ == bar_)) return;
    position_ = chosen_;
    mover_ = bar_;
    control_.showBars();
}

SplitterBar::Place SplitterBar::leftOrTop() const {
    if (vertical()) return {0, 0, bar_.left, height_};
    return {0, 0, width_, bar_.top};
}

SplitterBar::Place SplitterBar::rightOrBottom() const {
    if (vertical()) return {bar_.left + thickness_, 0, width_ - bar_.left + thickness_, height_};
    return {0, bar_.top + thickness_, width_, height_ - bar_.top - thickness_};
}

int32_t SplitterBar::percentOfSize(int32_t percent) const {
    return int32_t(int64_t{percent} * size() / 100);
}

SplitterBar::Place SplitterBar::placeAt(int32_t along) const {
    if (vertical()) return {along, 0, thickness_, height_};
    return {0, along, width_, thickness_};
}

void SplitterBar::placeAndRefresh() {
    placeMover();
    Refresh();
}

}  // namespace tessarine
