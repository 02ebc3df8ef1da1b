#include "widgets/arithmetic/colour_picker_model.h"

#include <algorithm>

namespace tessarine {

namespace {

constexpr Axis allAxes[] = {Axis::hue, Axis::sat, Axis::bri, Axis::red, Axis::green, Axis::blue};

}  // namespace

ColourPickerModel::ColourPickerModel() { makePictures(); }

// ---- The colour ----

void ColourPickerModel::Color(int32_t colour) {
    if (webSafeOnly_) colour = webSafe(colour);
    if (colour == color_ && hsb_ == lastHsb_) return;
    color_ = colour;
    lastHsb_ = hsb_;
    if (hsb_.hue < 0) hsb_ = RgbToHsb(colour);
    writeFields();
    makePictures();
}

HSB ColourPickerModel::hsb() const { return hsb_.hue < 0 ? RgbToHsb(color_) : hsb_; }

void ColourPickerModel::open(int32_t colour) {
    if (colour == -1) colour = 0;
    dropEntry();
    dragging_ = {};
    hsb_.hue = -1;
    oldColour_ = colour;
    Color(colour);
    // The colour of the last time may hold still, below an entry that was dropped.
    writeFields();
    accepted_ = false;
}

void ColourPickerModel::accept() {
    timerEvent();
    accepted_ = true;
}

void ColourPickerModel::cancel() {
    dropEntry();
    accepted_ = false;
}

void ColourPickerModel::refresh() {
    const int32_t colour = color_;
    if (colour == -1) return makePictures();
    color_ = -1;
    hsb_.hue = -1;
    Color(colour);
}

// ---- Options ----

// A pending entry is applied before anything else acts on the colour, so that no typing is lost.

void ColourPickerModel::choose(Axis axis) {
    timerEvent();
    axis_ = axis;
    refresh();
}

void ColourPickerModel::setWebSafeOnly(bool on) {
    timerEvent();
    webSafeOnly_ = on;
    refresh();
}

void ColourPickerModel::setAccelerated(bool on) {
    timerEvent();
    accelerated_ = on;
    cache_ = {};
    refresh();
}

void ColourPickerModel::restoreOld() {
    timerEvent();
    // The record is that of another colour; it follows.
    hsb_.hue = -1;
    Color(oldColour_);
}

// ---- Fields ----

int32_t ColourPickerModel::highest(Axis field) {
    if (field == Axis::hue) return 359;
    return isHsb(field) ? 100 : 255;
}

void ColourPickerModel::writeFields() {
    busy_ = true;
    const ColourTexts texts = textsOf(color_, hsb());
    writeText(Axis::red, texts.red);
    writeText(Axis::green, texts.green);
    writeText(Axis::blue, texts.blue);
    writeText(Axis::hue, texts.hue);
    writeText(Axis::sat, texts.sat);
    writeText(Axis::bri, texts.bri);
    busy_ = false;
}

void ColourPickerModel::writeText(Axis field, const std::string& text) { changeText(field, text); }

bool ColourPickerModel::changeText(Axis field, const std::string& text) {
    texts_[index(field)] = text;
    const bool wasEmpty = bringSpinInLine(field);
    if (!busy_) awaitEntry(field);
    return wasEmpty;
}

bool ColourPickerModel::bringSpinInLine(Axis field) {
    std::string& text = texts_[index(field)];
    const bool wasEmpty = text.empty();
    if (wasEmpty) text = "0";
    const double number = numericPrefix(text);
    const double bounded = ClampValue(number, 0, highest(field));
    const int32_t value = nearest(bounded);
    if (bounded != number) text = std::to_string(value);
    spins_[index(field)] = value;
    return wasEmpty;
}

void ColourPickerModel::awaitEntry(Axis field) {
    const std::string tag = isHsb(field) ? "hsb" : "rgb";
    if (!timerTag_.empty() && timerTag_ != tag) {
        const std::string typed = fieldText(field);
        timerEvent();
        busy_ = true;
        writeText(field, typed);
        busy_ = false;
    }
    timerTag_ = tag;
    startTimer();
}

void ColourPickerModel::dropEntry() {
    stopTimer();
    timerTag_.clear();
}

double ColourPickerModel::enteredValue(Axis field) const {
    return ClampValue(numericPrefix(fieldText(field)), 0, highest(field));
}

void ColourPickerModel::timerEvent() {
    const std::string tag = timerTag_;
    dropEntry();
    if (tag == "rgb") {
        hsb_.hue = -1;
        Color(packed(nearestByte(enteredValue(Axis::red)), nearestByte(enteredValue(Axis::green)),
                     nearestByte(enteredValue(Axis::blue))));
    } else if (tag == "hsb") {
        hsb_ = {enteredValue(Axis::hue), enteredValue(Axis::sat), enteredValue(Axis::bri)};
        Color(HsbToRgb(hsb_));
    }
}

void ColourPickerModel::spin(Axis field, int32_t value) {
    changeText(field, std::to_string(value));
    timerEvent();
}

// ---- Pictures ----

ColourPickerModel::Size ColourPickerModel::rectangleSize(Size client, int32_t numericWidth,
                                                         int32_t tickHeight) {
    const int32_t width = (client.width - numericWidth - 16 - 60) / 6 * 6;
    return {std::max(width, 6), std::max(client.height - 20 - tickHeight, 2)};
}

void ColourPickerModel::resize(Size size) {
    size_ = size;
    makePictures();
}

double ColourPickerModel::rectangleParameter() const {
    if (axis_ == Axis::hue) return HsbToRgb({hsb().hue, 100, 100});
    return component(axis_);
}

std::array<double, 2> ColourPickerModel::barParameters() const {
    switch (axis_) {
        case Axis::sat:
            return {hsb().hue, hsb().brightness};
        case Axis::bri:
            return {hsb().hue, hsb().saturation};
        default:
            return {};
    }
}

void ColourPickerModel::makePictures() {
    Cached& cached = cache_[index(axis_)];
    const double parameter = rectangleParameter();
    const Made rectangle{size_, {parameter, 0}, webSafeOnly_};
    if (cached.rectangleMade != rectangle) {
        cached.rectangle = makeRectangle(parameter);
        cached.rectangleMade = rectangle;
    }
    const Made bar{{barWidth, size_.height}, barParameters(), webSafeOnly_};
    if (cached.barMade != bar) {
        cached.bar = pvCreateBar(size_.height, axis_, hsb(), webSafeOnly_);
        cached.barMade = bar;
    }
}

ColourPickerModel::Rectangle ColourPickerModel::makeRectangle(double parameter) const {
    const auto [width, height] = size_;
    const bool plain = webSafeOnly_ || !accelerated_;
    switch (axis_) {
        case Axis::hue: {
            const auto base = static_cast<int32_t>(parameter);
            if (plain) return {pvCreateRectHue(width, height, base, webSafeOnly_), {}};
            return {{}, pvCreateRectHueAccel(width, height, hsb().hue)};
        }
        case Axis::sat:
            if (plain) return {pvCreateRectSaturation(width, height, parameter, webSafeOnly_), {}};
            return {{}, pvCreateRectSaturationAccel(width, height, parameter)};
        case Axis::bri:
            if (plain) return {pvCreateRectBrightness(width, height, parameter, webSafeOnly_), {}};
            return {{}, pvCreateRectBrightnessAccel(width, height, parameter)};
        default: {
            const auto level = static_cast<uint8_t>(parameter);
            if (plain) return {pvCreateRectRGB(width, height, axis_, level, webSafeOnly_), {}};
            return {{}, pvCreateRectRGBAccel(width, height, axis_, level)};
        }
    }
}

// ---- Mouse and markers ----

double ColourPickerModel::component(Axis axis) const {
    switch (axis) {
        case Axis::hue:
            return hsb().hue;
        case Axis::sat:
            return hsb().saturation;
        case Axis::bri:
            return hsb().brightness;
        case Axis::red:
            return redOf(color_);
        case Axis::green:
            return greenOf(color_);
        default:
            return blueOf(color_);
    }
}

double ColourPickerModel::span(Axis axis) { return highest(axis); }

Axis ColourPickerModel::acrossAxis() const {
    switch (axis_) {
        case Axis::hue:
            return Axis::sat;
        case Axis::sat:
        case Axis::bri:
            return Axis::hue;
        case Axis::red:
            return Axis::green;
        default:
            return Axis::red;
    }
}

Axis ColourPickerModel::upAxis() const {
    switch (axis_) {
        case Axis::hue:
        case Axis::sat:
            return Axis::bri;
        case Axis::bri:
            return Axis::sat;
        case Axis::blue:
            return Axis::green;
        default:
            return Axis::blue;
    }
}

void ColourPickerModel::press(Picture picture, Place place) {
    timerEvent();
    dragging_[static_cast<size_t>(picture)] = true;
    move(picture, place);
}

ColourPickerModel::Components ColourPickerModel::componentsAt(Picture picture, Place place) const {
    // The value at a place between the first and the last pixel of a side.
    const auto along = [](int32_t at, int32_t side, Axis axis) {
        return ClampValue(at * span(axis) / (side - 1), 0, span(axis));
    };
    Components values{};
    for (const Axis axis : allAxes)
        values[index(axis)] = component(axis);
    if (picture == Picture::bar) {
        values[index(axis_)] = span(axis_) - along(place.y, size_.height, axis_);
    } else {
        const Axis across = acrossAxis();
        const Axis up = upAxis();
        values[index(across)] = along(place.x, size_.width, across);
        values[index(up)] = span(up) - along(place.y, size_.height, up);
    }
    return values;
}

void ColourPickerModel::setComponents(const Components& values) {
    if (isHsb(axis_)) {
        hsb_ = {values[0], values[1], values[2]};
        Color(HsbToRgb(hsb_));
    } else {
        hsb_.hue = -1;
        Color(packed(nearestByte(values[3]), nearestByte(values[4]), nearestByte(values[5])));
    }
}

void ColourPickerModel::move(Picture picture, Place place) {
    if (dragging_[static_cast<size_t>(picture)]) setComponents(componentsAt(picture, place));
}

void ColourPickerModel::release(Picture picture, Place place) {
    move(picture, place);
    dragging_[static_cast<size_t>(picture)] = false;
}

void ColourPickerModel::step(Picture picture, Place by) {
    timerEvent();
    const int32_t colourBefore = color_;
    const HSB hsbBefore = hsb();
    Place place = picture == Picture::bar ? Place{0, barMarker()} : rectangleMarker();
    const auto inside = [this](Place at) {
        return at.x >= 0 && at.x < size_.width && at.y >= 0 && at.y < size_.height;
    };
    // Neighbouring places may round or snap to the same bytes, where the key would do nothing.
    do {
        place = {place.x + by.x, place.y + by.y};
        Components values = componentsAt(picture, place);
        if (picture == Picture::rectangle) {
            const Axis stays = by.x == 0 ? acrossAxis() : upAxis();
            if (by.x == 0 || by.y == 0) values[index(stays)] = component(stays);
        }
        setComponents(values);
    } while (color_ == colourBefore && hsb() == hsbBefore && inside(place));
}

ColourPickerModel::Place ColourPickerModel::rectangleMarker() const {
    const Axis across = acrossAxis();
    const Axis up = upAxis();
    return {nearest((size_.width - 1) * component(across) / span(across)),
            nearest((size_.height - 1) * (span(up) - component(up)) / span(up))};
}

int32_t ColourPickerModel::barMarker() const {
    return nearest((size_.height - 1) * (span(axis_) - component(axis_)) / span(axis_));
}

int32_t ColourPickerModel::contrastColour() const {
    const double light = 0.299 * redOf(color_) + 0.587 * greenOf(color_) + 0.114 * blueOf(color_);
    return light <= 127 ? 0xFFFFFF : 0;
}

}  // namespace tessarine
