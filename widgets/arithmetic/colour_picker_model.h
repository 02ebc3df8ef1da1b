#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "widgets/arithmetic/colour_model.h"
#include "widgets/arithmetic/picker_pictures.h"

namespace tessarine {

/// The colour picker without a screen: its colour, its fields, its pictures, and what keys and
/// mouse do to them. The dialog hands events in and shows what stands here afterwards.
class ColourPickerModel {
  public:
    /// The two pictures, imgRect and imgBar.
    enum class Picture { rectangle, bar };
    struct Place {
        int32_t x = 0;
        int32_t y = 0;

        bool operator==(const Place&) const = default;
    };
    struct Size {
        int32_t width = 0;
        int32_t height = 0;

        bool operator==(const Size&) const = default;
    };
    /// The rectangle's picture: pixels, or strips where it was made by an accelerated routine.
    struct Rectangle {
        PixelRows pixels;
        std::vector<GradientStrip> strips;
    };

    /// How long tmrKeyboard waits after a key, in milliseconds.
    static constexpr int32_t keyboardDelay = 500;

    /// Starts tmrKeyboard anew; after keyboardDelay the owner calls timerEvent().
    std::function<void()> startTimer = [] {};
    std::function<void()> stopTimer = [] {};

    ColourPickerModel();

    // ---- The colour ----

    /// 0x00BBGGRR; -1 before the first.
    int32_t Color() const { return color_; }
    void Color(int32_t colour);
    /// The record kept beside the colour; it holds hue and saturation through black and grey.
    HSB hsb() const;
    int32_t oldColour() const { return oldColour_; }

    /// Before the window is shown. \param colour  -1 counts as 0
    void open(int32_t colour);
    /// cmdOK: an entry still pending is applied first.
    void accept();
    /// cmdCancel, and every other way to close the window.
    void cancel();
    bool accepted() const { return accepted_; }

    // ---- Options ----

    Axis axis() const { return axis_; }
    void choose(Axis axis);
    bool webSafeOnly() const { return webSafeOnly_; }
    void setWebSafeOnly(bool on);
    bool accelerated() const { return accelerated_; }
    void setAccelerated(bool on);
    bool acceleratedEnabled() const { return !webSafeOnly_; }
    /// A click on labOld.
    void restoreOld();

    // ---- Fields ----

    const std::string& fieldText(Axis field) const { return texts_[index(field)]; }
    int32_t spinValue(Axis field) const { return spins_[index(field)]; }
    /// The lowest value of every field is 0.
    static int32_t highest(Axis field);
    /// The text of a field was changed. \return whether the text it has now is to be selected
    bool changeText(Axis field, const std::string& text);
    /// A spin button was set to a value.
    void spin(Axis field, int32_t value);
    /// What tmrKeyboard does: the pending entry becomes the colour.
    void timerEvent();
    /// "rgb" or "hsb" while an entry of that family is pending, otherwise empty.
    const std::string& timerTag() const { return timerTag_; }
    /// The texts of the read-only fields.
    ColourTexts texts() const { return textsOf(color_, hsb()); }

    // ---- Pictures ----

    /// What runs along the rectangle's width and up its height.
    Axis acrossAxis() const;
    Axis upAxis() const;
    /// The rectangle's size in a window.
    /// \param numericWidth  of fraNumeric \param tickHeight  of chkWebSafe
    static Size rectangleSize(Size client, int32_t numericWidth, int32_t tickHeight);
    /// \param size  of the rectangle: the width a multiple of 6, 6 or more, the height 2 or more
    void resize(Size size);
    Size size() const { return size_; }
    const Rectangle& rectangle() const { return cached().rectangle; }
    const PixelRows& bar() const { return cached().bar; }

    /// Places are in pixels from a picture's top left corner and may lie outside.
    void press(Picture picture, Place place);
    void move(Picture picture, Place place);
    void release(Picture picture, Place place);
    /// Goes from the marker to the next place that gives another colour, or to the end.
    /// \param by  pixels to the right and down, not both 0; what runs along a direction without
    ///            pixels keeps its value
    void step(Picture picture, Place by);

    /// Where the circles' centre stands on the rectangle.
    Place rectangleMarker() const;
    /// The row of the bar at which the triangle points.
    int32_t barMarker() const;
    /// White on a dark colour, black on a light one.
    int32_t contrastColour() const;

  private:
    /// What a picture was made for.
    struct Made {
        Size size;
        std::array<double, 2> parameters{};
        bool webSafeOnly = false;

        bool operator==(const Made&) const = default;
    };
    struct Cached {
        Made rectangleMade;
        Rectangle rectangle;
        Made barMade;
        PixelRows bar;
    };

    /// Hue, saturation, brightness, red, green, blue.
    using Components = std::array<double, 6>;

    static size_t index(Axis axis) { return static_cast<size_t>(axis); }
    /// Whether the axis is hue, saturation or brightness.
    static bool isHsb(Axis axis) { return axis <= Axis::bri; }
    const Cached& cached() const { return cache_[index(axis_)]; }

    /// Writes the colour once more, with the record made anew from it.
    void refresh();
    void writeFields();
    void writeText(Axis field, const std::string& text);
    /// \return whether the text was empty
    bool bringSpinInLine(Axis field);
    void awaitEntry(Axis field);
    void dropEntry();
    double enteredValue(Axis field) const;

    void makePictures();
    Rectangle makeRectangle(double parameter) const;
    double rectangleParameter() const;
    std::array<double, 2> barParameters() const;

    /// A component's value and its highest one.
    double component(Axis axis) const;
    static double span(Axis axis);
    /// The components of the colour that a bar or rectangle has at a place.
    Components componentsAt(Picture picture, Place place) const;
    void setComponents(const Components& values);

    int32_t color_ = -1;
    int32_t oldColour_ = 0;
    HSB hsb_;
    HSB lastHsb_;
    bool accepted_ = false;
    Axis axis_ = Axis::hue;
    bool webSafeOnly_ = false;
    bool accelerated_ = false;
    Size size_{6, 2};
    std::array<Cached, 6> cache_;
    std::array<bool, 2> dragging_{};
    bool busy_ = false;  ///< the fields are being written; their changes are no entries
    std::array<std::string, 6> texts_;
    std::array<int32_t, 6> spins_{};
    std::string timerTag_;
};

}  // namespace tessarine
