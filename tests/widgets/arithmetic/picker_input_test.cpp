#include <vector>

#include <gtest/gtest.h>

#include "widgets/arithmetic/colour_picker_model.h"

// What mouse and keys do to the colour picker.

namespace tessarine::tests {
namespace {

using Model = ColourPickerModel;
using Picture = Model::Picture;

constexpr Axis allAxes[] = {Axis::hue, Axis::sat, Axis::bri, Axis::red, Axis::green, Axis::blue};
constexpr int32_t width = 300;
constexpr int32_t height = 201;
constexpr int32_t start = packed(67, 211, 54);

class PickerInput : public testing::Test {
  protected:
    PickerInput() {
        model.startTimer = [this] {
            runs = true;
            ++starts;
        };
        model.stopTimer = [this] { runs = false; };
        model.resize({width, height});
        model.open(start);
    }

    void drag(Picture picture, Model::Place place) {
        model.press(picture, place);
        model.release(picture, place);
    }
    void type(Axis field, const std::string& text) { model.changeText(field, text); }

    Model model;
    bool runs = false;
    int starts = 0;
};

// ---- Mouse ----

TEST_F(PickerInput, BarAndRectangleSetTheRecordsFractionsByHue) {
    drag(Picture::bar, {5, 33});
    EXPECT_EQ(model.hsb().hue, 359 - 33 * 359 / 200.0);
    drag(Picture::rectangle, {100, 33});
    EXPECT_EQ(model.hsb().hue, 359 - 33 * 359 / 200.0);
    EXPECT_EQ(model.hsb().saturation, 100 * 100 / 299.0);
    EXPECT_EQ(model.hsb().brightness, 100 - 33 * 100 / 200.0);
    EXPECT_EQ(model.Color(), HsbToRgb(model.hsb()));
}

TEST_F(PickerInput, BarAndRectangleSetTheRecordsFractionsBySaturation) {
    model.choose(Axis::sat);
    drag(Picture::bar, {5, 33});
    EXPECT_EQ(model.hsb().saturation, 100 - 33 * 100 / 200.0);
    drag(Picture::rectangle, {100, 150});
    EXPECT_EQ(model.hsb().hue, 100 * 359 / 299.0);
    EXPECT_EQ(model.hsb().saturation, 100 - 33 * 100 / 200.0);
    EXPECT_EQ(model.hsb().brightness, 25);
    EXPECT_EQ(model.Color(), HsbToRgb(model.hsb()));
}

TEST_F(PickerInput, BarAndRectangleSetTheRecordsFractionsByBrightness) {
    model.choose(Axis::bri);
    drag(Picture::bar, {5, 50});
    EXPECT_EQ(model.hsb().brightness, 75);
    drag(Picture::rectangle, {100, 150});
    EXPECT_EQ(model.hsb().hue, 100 * 359 / 299.0);
    EXPECT_EQ(model.hsb().saturation, 25);
    EXPECT_EQ(model.hsb().brightness, 75);
    EXPECT_EQ(model.Color(), HsbToRgb(model.hsb()));
}

TEST_F(PickerInput, BarAndRectangleSetTheBytesByAChannel) {
    // 100 * 255 / 299 = 85.28; 255 - 150 * 255 / 200 = 63.75; 255 - 33 * 255 / 200 = 212.925
    model.choose(Axis::red);
    drag(Picture::bar, {5, 33});
    EXPECT_EQ(model.Color(), packed(213, 211, 54));
    drag(Picture::rectangle, {100, 150});
    EXPECT_EQ(model.Color(), packed(213, 85, 64));
    model.choose(Axis::green);
    drag(Picture::bar, {5, 33});
    EXPECT_EQ(model.Color(), packed(213, 213, 64));
    drag(Picture::rectangle, {0, 0});
    EXPECT_EQ(model.Color(), packed(0, 213, 255));
    model.choose(Axis::blue);
    drag(Picture::bar, {5, 200});
    EXPECT_EQ(model.Color(), packed(0, 213, 0));
    drag(Picture::rectangle, {299, 150});
    EXPECT_EQ(model.Color(), packed(255, 64, 0));
}

TEST_F(PickerInput, RecordFollowsBytes) {
    model.choose(Axis::red);
    drag(Picture::rectangle, {100, 150});
    EXPECT_EQ(model.hsb(), RgbToHsb(model.Color()));
    drag(Picture::rectangle, {100, 150});
    drag(Picture::rectangle, {100, 150});
    EXPECT_EQ(model.hsb(), RgbToHsb(model.Color()));
}

TEST_F(PickerInput, PlacesBeyondAPictureGiveItsEnds) {
    drag(Picture::bar, {0, 5000});
    EXPECT_EQ(model.hsb().hue, 0);
    drag(Picture::bar, {0, -5000});
    EXPECT_EQ(model.hsb().hue, 359);
    drag(Picture::rectangle, {-40, -40});
    EXPECT_EQ(model.Color(), packed(255, 255, 255));
    drag(Picture::rectangle, {4000, 4000});
    EXPECT_EQ(model.hsb().saturation, 100);
    EXPECT_EQ(model.hsb().brightness, 0);
    for (const Axis axis : {Axis::red, Axis::green, Axis::blue}) {
        model.choose(axis);
        drag(Picture::bar, {0, -1});
        drag(Picture::rectangle, {4000, -1});
        EXPECT_EQ(model.Color(), packed(255, 255, 255));
        drag(Picture::bar, {0, 9999});
        drag(Picture::rectangle, {-1, 9999});
        EXPECT_EQ(model.Color(), 0);
    }
}

TEST_F(PickerInput, AMoveActsOnlyWhileThatPictureIsHeld) {
    model.move(Picture::bar, {0, 0});
    model.release(Picture::rectangle, {0, 0});
    EXPECT_EQ(model.Color(), start);
    model.press(Picture::bar, {0, 0});
    const int32_t pressed = model.Color();
    EXPECT_NE(pressed, start);
    model.move(Picture::rectangle, {0, 0});
    EXPECT_EQ(model.Color(), pressed);
    model.move(Picture::bar, {0, 100});
    EXPECT_NE(model.Color(), pressed);
    model.release(Picture::bar, {0, 200});
    EXPECT_EQ(model.hsb().hue, 0);
    model.move(Picture::bar, {0, 0});
    EXPECT_EQ(model.hsb().hue, 0);
}

TEST_F(PickerInput, MarkersStandWhereTheMouseWas) {
    for (const Axis axis : allAxes) {
        SCOPED_TRACE(static_cast<int>(axis));
        model.choose(axis);
        // Places that bytes tell apart: every second column, every third row.
        for (int32_t at = 30; at <= 150; at += 30) {
            drag(Picture::bar, {0, at});
            EXPECT_NEAR(model.barMarker(), at, 1);
            drag(Picture::rectangle, {at, at + 10});
            EXPECT_NEAR(model.rectangleMarker().x, at, 1);
            EXPECT_NEAR(model.rectangleMarker().y, at + 10, 1);
        }
    }
}

TEST_F(PickerInput, MarkersStandAtTheInverseOfTheMousesTable) {
    const HSB hsb = RgbToHsb(start);
    EXPECT_EQ(model.rectangleMarker(), (Model::Place{nearest(299 * hsb.saturation / 100),
                                                     nearest(200 * (100 - hsb.brightness) / 100)}));
    EXPECT_EQ(model.barMarker(), nearest(200 * (359 - hsb.hue) / 359));
    model.choose(Axis::bri);
    EXPECT_EQ(model.rectangleMarker(), (Model::Place{nearest(299 * hsb.hue / 359),
                                                     nearest(200 * (100 - hsb.saturation) / 100)}));
    EXPECT_EQ(model.barMarker(), nearest(200 * (100 - hsb.brightness) / 100));
    model.choose(Axis::blue);
    EXPECT_EQ(model.rectangleMarker(),
              (Model::Place{nearest(299 * 67 / 255.0), nearest(200 * (255 - 211) / 255.0)}));
    EXPECT_EQ(model.barMarker(), nearest(200 * (255 - 54) / 255.0));
}

TEST_F(PickerInput, ContrastIsWhiteUpToALightnessOf127) {
    model.open(packed(127, 127, 126));
    EXPECT_EQ(model.contrastColour(), 0xFFFFFF);
    model.open(packed(128, 128, 128));
    EXPECT_EQ(model.contrastColour(), 0);
    model.open(packed(0, 255, 0));
    EXPECT_EQ(model.contrastColour(), 0);
    model.open(packed(255, 0, 255));
    EXPECT_EQ(model.contrastColour(), 0xFFFFFF);
}

// ---- Arrow keys ----

/// What runs along a picture's width or height, and every component of the present colour.
struct Standing {
    double moved;
    std::vector<double> others;
};

Standing standing(const Model& model, Axis moved) {
    const int32_t colour = model.Color();
    const HSB hsb = model.hsb();
    std::vector<double> values = {hsb.hue, hsb.saturation, hsb.brightness};
    if (moved >= Axis::red)
        values = {double(redOf(colour)), double(greenOf(colour)), double(blueOf(colour))};
    const auto at = values.begin() + static_cast<int>(moved) % 3;
    const double value = *at;
    values.erase(at);
    return {value, values};
}

TEST_F(PickerInput, EveryStepGoesOnAndLeavesTheOtherComponentsAlone) {
    for (const bool web : {false, true})
        for (const Axis axis : allAxes) {
            SCOPED_TRACE(static_cast<int>(axis));
            model.setWebSafeOnly(web);
            model.open(start);
            model.choose(axis);
            const auto goesTo = [this](Picture picture, Model::Place by, Axis moved, double end) {
                for (int i = 0; i < 1000 && standing(model, moved).moved != end; ++i) {
                    const Standing before = standing(model, moved);
                    model.step(picture, by);
                    const Standing after = standing(model, moved);
                    ASSERT_EQ(after.moved > before.moved, end > 0);
                    ASSERT_NE(after.moved, before.moved);
                    ASSERT_EQ(after.others, before.others);
                }
                EXPECT_EQ(standing(model, moved).moved, end);
                model.step(picture, by);
                EXPECT_EQ(standing(model, moved).moved, end);
            };
            const Axis across = model.acrossAxis();
            const Axis up = model.upAxis();
            goesTo(Picture::rectangle, {1, 0}, across, Model::highest(across));
            goesTo(Picture::rectangle, {-1, 0}, across, 0);
            goesTo(Picture::rectangle, {10, 0}, across, Model::highest(across));
            goesTo(Picture::rectangle, {0, -1}, up, Model::highest(up));
            goesTo(Picture::rectangle, {0, 10}, up, 0);
            goesTo(Picture::rectangle, {0, -10}, up, Model::highest(up));
            goesTo(Picture::bar, {0, -1}, axis, Model::highest(axis));
            goesTo(Picture::bar, {0, 1}, axis, 0);
        }
}

TEST_F(PickerInput, AStepGoesToTheNextPlace) {
    drag(Picture::rectangle, {100, 33});
    model.step(Picture::rectangle, {1, 0});
    EXPECT_EQ(model.rectangleMarker(), (Model::Place{101, 33}));
    model.step(Picture::rectangle, {0, 10});
    EXPECT_EQ(model.rectangleMarker(), (Model::Place{101, 43}));
    drag(Picture::bar, {0, 70});
    model.step(Picture::bar, {0, -1});
    EXPECT_EQ(model.barMarker(), 69);
}

TEST_F(PickerInput, AStepAppliesAPendingEntryFirst) {
    type(Axis::red, "10");
    model.choose(Axis::green);
    type(Axis::red, "20");
    model.step(Picture::bar, {0, -500});
    EXPECT_EQ(model.Color(), packed(20, 255, 54));
}

// ---- Fields and spins ----

TEST_F(PickerInput, FieldsEndAtTheHighestValueOfTheirSpin) {
    EXPECT_EQ(Model::highest(Axis::hue), 359);
    EXPECT_EQ(Model::highest(Axis::sat), 100);
    EXPECT_EQ(Model::highest(Axis::bri), 100);
    for (const Axis axis : allAxes) {
        type(axis, "99999999999999");
        EXPECT_EQ(model.fieldText(axis), std::to_string(Model::highest(axis)));
        EXPECT_EQ(model.spinValue(axis), Model::highest(axis));
        type(axis, "-4");
        EXPECT_EQ(model.fieldText(axis), "0");
        EXPECT_EQ(model.spinValue(axis), 0);
        type(axis, "042");
        EXPECT_EQ(model.fieldText(axis), "042");
        EXPECT_EQ(model.spinValue(axis), 42);
    }
}

TEST_F(PickerInput, AnEmptyTextBecomesTheLowestValueSelected) {
    EXPECT_TRUE(model.changeText(Axis::red, ""));
    EXPECT_EQ(model.fieldText(Axis::red), "0");
    EXPECT_EQ(model.spinValue(Axis::red), 0);
    EXPECT_FALSE(model.changeText(Axis::red, "5"));
}

TEST_F(PickerInput, AnEntryWaitsForTheTimer) {
    type(Axis::red, "5");
    EXPECT_TRUE(runs);
    EXPECT_EQ(model.timerTag(), "rgb");
    EXPECT_EQ(model.Color(), start);
    type(Axis::red, "51");
    EXPECT_EQ(starts, 2);
    model.timerEvent();
    EXPECT_FALSE(runs);
    EXPECT_EQ(model.timerTag(), "");
    EXPECT_EQ(model.Color(), packed(51, 211, 54));
    EXPECT_EQ(model.hsb(), RgbToHsb(model.Color()));
}

TEST_F(PickerInput, WritingTheFieldsIsNoEntry) {
    drag(Picture::rectangle, {1, 1});
    EXPECT_FALSE(runs);
    EXPECT_EQ(model.timerTag(), "");
}

TEST_F(PickerInput, AnEntryOfHueSaturationBrightnessGoesToTheRecord) {
    type(Axis::hue, "200");
    type(Axis::sat, "40");
    type(Axis::bri, "80");
    EXPECT_EQ(model.timerTag(), "hsb");
    model.timerEvent();
    EXPECT_EQ(model.hsb(), (HSB{200, 40, 80}));
    EXPECT_EQ(model.Color(), HsbToRgb({200, 40, 80}));
    EXPECT_EQ(model.fieldText(Axis::red), std::to_string(redOf(model.Color())));
}

TEST_F(PickerInput, TypingInTheOtherFamilyAppliesThePendingEntryFirst) {
    type(Axis::red, "255");
    type(Axis::bri, "50");
    EXPECT_EQ(model.Color(), packed(255, 211, 54));
    EXPECT_EQ(model.fieldText(Axis::bri), "50");
    EXPECT_EQ(model.spinValue(Axis::bri), 50);
    EXPECT_EQ(model.fieldText(Axis::hue), "47");
    EXPECT_EQ(model.timerTag(), "hsb");
    EXPECT_TRUE(runs);
    model.timerEvent();
    EXPECT_EQ(model.hsb().brightness, 50);
    EXPECT_EQ(model.hsb().hue, 47);
}

TEST_F(PickerInput, AnEntryThatWasAppliedIsNotAppliedAgain) {
    model.open(HsbToRgb({200, 100, 100}));
    type(Axis::red, "1");
    model.timerEvent();
    const double hue = model.hsb().hue;
    drag(Picture::rectangle, {200, 200});
    ASSERT_EQ(model.Color(), 0);
    type(Axis::bri, "60");
    EXPECT_EQ(model.hsb().hue, hue);
}

TEST_F(PickerInput, BlackInTheFieldsOfRedGreenBlueResetsTheHue) {
    type(Axis::red, "0");
    type(Axis::green, "0");
    type(Axis::blue, "0");
    model.timerEvent();
    EXPECT_EQ(model.Color(), 0);
    EXPECT_EQ(model.hsb(), (HSB{0, 0, 0}));
    EXPECT_EQ(model.fieldText(Axis::hue), "0");
}

TEST_F(PickerInput, ATextThatIsNoNumberIsZero) {
    type(Axis::green, "abc");
    model.timerEvent();
    EXPECT_EQ(model.Color(), packed(67, 0, 54));
    type(Axis::green, "12abc");
    model.timerEvent();
    EXPECT_EQ(model.Color(), packed(67, 12, 54));
}

TEST_F(PickerInput, ASpinIsAppliedAtOnce) {
    model.spin(Axis::blue, 200);
    EXPECT_EQ(model.fieldText(Axis::blue), "200");
    EXPECT_EQ(model.Color(), packed(67, 211, 200));
    EXPECT_FALSE(runs);
    model.spin(Axis::hue, 12);
    EXPECT_EQ(model.hsb().hue, 12);
    EXPECT_EQ(model.Color(), HsbToRgb(model.hsb()));
}

TEST_F(PickerInput, ASpinOfTheOtherFamilyAppliesThePendingEntryFirst) {
    type(Axis::red, "255");
    model.spin(Axis::hue, 12);
    EXPECT_EQ(model.hsb(), (HSB{12, 79, 100}));
}

TEST_F(PickerInput, AppliesAPendingEntryBeforeAnythingElseUsesTheColour) {
    type(Axis::red, "255");
    model.accept();
    EXPECT_EQ(model.Color(), packed(255, 211, 54));
    type(Axis::red, "10");
    model.choose(Axis::green);
    EXPECT_EQ(model.Color(), packed(10, 211, 54));
    type(Axis::red, "20");
    drag(Picture::bar, {0, 0});
    EXPECT_EQ(model.Color(), packed(20, 255, 54));
    type(Axis::hue, "20");
    model.restoreOld();
    EXPECT_EQ(model.Color(), start);
    EXPECT_FALSE(runs);
    type(Axis::red, "20");
    model.setWebSafeOnly(true);
    EXPECT_EQ(model.Color(), packed(0, 204, 51));
}

TEST_F(PickerInput, DropsAPendingEntryOnCancel) {
    type(Axis::red, "255");
    model.cancel();
    EXPECT_FALSE(runs);
    EXPECT_EQ(model.Color(), start);
    model.timerEvent();
    EXPECT_EQ(model.Color(), start);
}

TEST_F(PickerInput, ChoosingAnAxisMakesTheRecordAnew) {
    drag(Picture::rectangle, {200, 200});
    ASSERT_GT(model.hsb().hue, 0);
    model.choose(Axis::sat);
    EXPECT_EQ(model.hsb(), (HSB{0, 0, 0}));
}

}  // namespace
}  // namespace tessarine::tests
