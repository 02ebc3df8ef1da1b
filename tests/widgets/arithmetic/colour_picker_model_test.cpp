#include "widgets/arithmetic/colour_picker_model.h"

#include <set>

#include <gtest/gtest.h>

namespace tessarine::tests {
namespace {

using Model = ColourPickerModel;
using Picture = Model::Picture;

constexpr Axis allAxes[] = {Axis::hue, Axis::sat, Axis::bri, Axis::red, Axis::green, Axis::blue};

/// A model of a rectangle with 300 by 201 pixels, and its timer.
class PickerModel : public testing::Test {
  protected:
    PickerModel() {
        model.startTimer = [this] { ++starts; };
        model.stopTimer = [this] { ++stops; };
        model.resize({300, 201});
    }

    void drag(Picture picture, Model::Place place) {
        model.press(picture, place);
        model.release(picture, place);
    }
    std::string rgb() const {
        return model.fieldText(Axis::red) + " " + model.fieldText(Axis::green) + " " +
               model.fieldText(Axis::blue);
    }
    std::string hsb() const {
        return model.fieldText(Axis::hue) + " " + model.fieldText(Axis::sat) + " " +
               model.fieldText(Axis::bri);
    }
    /// Types a text at once, as if the field had been selected.
    void type(Axis field, const std::string& text) { model.changeText(field, text); }

    Model model;
    int starts = 0;
    int stops = 0;
};

// ---- Opening and closing ----

TEST_F(PickerModel, HasNoColourBeforeTheFirst) { EXPECT_EQ(model.Color(), -1); }

TEST_F(PickerModel, OpensWithTheColourGivenAndKeepsItAsTheOldOne) {
    model.open(packed(67, 211, 54));
    EXPECT_EQ(model.Color(), packed(67, 211, 54));
    EXPECT_EQ(model.oldColour(), packed(67, 211, 54));
    EXPECT_EQ(rgb(), "67 211 54");
    EXPECT_EQ(hsb(), "115 74 83");
    EXPECT_FALSE(model.accepted());
}

TEST_F(PickerModel, TakesAllOnesForBlack) {
    model.open(-1);
    EXPECT_EQ(model.Color(), 0);
    EXPECT_EQ(model.oldColour(), 0);
    EXPECT_EQ(rgb(), "0 0 0");
}

TEST_F(PickerModel, IsAcceptedByOkOnly) {
    model.open(5);
    model.accept();
    EXPECT_TRUE(model.accepted());
    model.open(5);
    EXPECT_FALSE(model.accepted());
    model.accept();
    model.cancel();
    EXPECT_FALSE(model.accepted());
}

TEST_F(PickerModel, WorksAsAtFirstWhenItIsOpenedAgainAndAgain) {
    for (int i = 0; i < 4; ++i) {
        model.open(packed(40, 80, 120));
        EXPECT_EQ(model.hsb(), RgbToHsb(packed(40, 80, 120)));
        EXPECT_EQ(model.barMarker(), nearest(200 * (359 - 210) / 359.0));
    }
    drag(Picture::rectangle, {299, 0});
    EXPECT_EQ(model.Color(), HsbToRgb({210, 100, 100}));
}

TEST_F(PickerModel, ShowsNoEntryOfTheLastTimeWhenItIsOpenedAgain) {
    for (const int32_t colour : {0, packed(40, 80, 120)})
        for (const Axis field : allAxes) {
            SCOPED_TRACE(static_cast<int>(field));
            model.open(colour);
            model.open(colour);
            const std::string shown = model.fieldText(field);
            type(field, "77");
            model.cancel();
            model.open(colour);
            EXPECT_EQ(model.fieldText(field), shown);
            EXPECT_EQ(std::to_string(model.spinValue(field)), shown);
        }
}

// ---- Writing a colour ----

TEST_F(PickerModel, KeepsHueAndSaturationThroughBlack) {
    model.open(HsbToRgb({200, 60, 70}));
    const int32_t marker = model.barMarker();
    const HSB before = model.hsb();
    drag(Picture::rectangle, {180, 200});
    EXPECT_EQ(model.Color(), 0);
    EXPECT_EQ(model.hsb().hue, before.hue);
    EXPECT_EQ(model.barMarker(), marker);
    drag(Picture::rectangle, {0, 0});
    EXPECT_EQ(model.Color(), packed(255, 255, 255));
    drag(Picture::rectangle, {299, 0});
    EXPECT_EQ(model.Color(), HsbToRgb({before.hue, 100, 100}));
}

TEST_F(PickerModel, DoesNothingForTheColourAndRecordThatItHas) {
    model.open(packed(1, 2, 3));
    drag(Picture::rectangle, {150, 100});
    const auto* rows = model.rectangle().pixels.bytes.data();
    const int32_t colour = model.Color();
    model.Color(colour);
    EXPECT_EQ(model.Color(), colour);
    EXPECT_EQ(model.rectangle().pixels.bytes.data(), rows);
}

TEST_F(PickerModel, KeepsTheHueOfFieldsWhileTheColourStaysBlack) {
    model.open(0);
    type(Axis::hue, "200");
    model.timerEvent();
    EXPECT_EQ(model.Color(), 0);
    EXPECT_EQ(hsb(), "200 0 0");
    EXPECT_EQ(model.hsb().hue, 200);
}

TEST_F(PickerModel, ShowsNoHueBeyondTheHighestOfItsField) {
    model.open(packed(255, 0, 1));  // 359.76 degrees
    EXPECT_EQ(model.texts().hue, "360");
    EXPECT_EQ(model.fieldText(Axis::hue), "359");
    EXPECT_EQ(model.spinValue(Axis::hue), 359);
}

TEST_F(PickerModel, BringsTheOldColourBackWithItsTexts) {
    model.open(packed(67, 211, 54));
    drag(Picture::bar, {3, 17});
    drag(Picture::rectangle, {3, 200});
    model.restoreOld();
    EXPECT_EQ(model.Color(), packed(67, 211, 54));
    EXPECT_EQ(rgb(), "67 211 54");
    EXPECT_EQ(hsb(), "115 74 83");
    EXPECT_EQ(model.texts().newColor, "43D336");
}

// ---- Web colours and acceleration ----

TEST_F(PickerModel, HasOnlyWebColoursWhileThatIsAsked) {
    const std::set<int32_t> levels = {0, 51, 102, 153, 204, 255};
    const auto isWebSafe = [&](int32_t colour) {
        return levels.count(redOf(colour)) && levels.count(greenOf(colour)) &&
               levels.count(blueOf(colour));
    };
    model.open(packed(67, 211, 54));
    model.setWebSafeOnly(true);
    EXPECT_EQ(model.Color(), packed(51, 204, 51));
    EXPECT_EQ(hsb(), "120 75 80");
    for (const Axis axis : allAxes) {
        model.choose(axis);
        drag(Picture::rectangle, {71, 44});
        drag(Picture::bar, {0, 99});
        EXPECT_TRUE(isWebSafe(model.Color()));
        for (const PixelRows* picture : {&model.rectangle().pixels, &model.bar()}) {
            ASSERT_EQ(picture->height, 201);
            for (int32_t y = 0; y < picture->height; ++y)
                for (int32_t x = 0; x < picture->width; ++x)
                    ASSERT_TRUE(isWebSafe(picture->at(x, y)));
        }
    }
}

TEST_F(PickerModel, SnapsWhatItIsOpenedWithButNotTheOldColour) {
    model.open(0);
    model.setWebSafeOnly(true);
    model.open(packed(67, 211, 54));
    EXPECT_EQ(model.Color(), packed(51, 204, 51));
    EXPECT_EQ(model.oldColour(), packed(67, 211, 54));
}

TEST_F(PickerModel, KeepsTheSnappedColourWhenAllColoursAreAskedForAgain) {
    model.open(packed(67, 211, 54));
    model.setWebSafeOnly(true);
    model.setWebSafeOnly(false);
    EXPECT_EQ(model.Color(), packed(51, 204, 51));
}

TEST_F(PickerModel, AcceleratesOnlyWhereAllColoursAreAllowed) {
    model.open(packed(67, 211, 54));
    EXPECT_TRUE(model.acceleratedEnabled());
    model.setAccelerated(true);
    for (const Axis axis : allAxes) {
        model.choose(axis);
        EXPECT_FALSE(model.rectangle().strips.empty());
        EXPECT_TRUE(model.rectangle().pixels.bytes.empty());
        EXPECT_EQ(model.bar().height, 201);
    }
    model.setWebSafeOnly(true);
    EXPECT_FALSE(model.acceleratedEnabled());
    EXPECT_TRUE(model.rectangle().strips.empty());
    EXPECT_EQ(model.rectangle().pixels.width, 300);
}

TEST_F(PickerModel, EmptiesAllCachesWhenAccelerationChanges) {
    model.open(packed(67, 211, 54));
    for (const Axis axis : allAxes)
        model.choose(axis);
    model.setAccelerated(true);
    for (const Axis axis : allAxes) {
        model.choose(axis);
        EXPECT_FALSE(model.rectangle().strips.empty());
    }
}

// ---- Caches ----

TEST_F(PickerModel, MakesAPictureAnewOnlyWhenWhatItIsMadeFromChanges) {
    model.open(HsbToRgb({100, 60, 70}));
    const auto* rectangle = model.rectangle().pixels.bytes.data();
    const auto* bar = model.bar().bytes.data();
    drag(Picture::rectangle, {10, 20});
    EXPECT_EQ(model.rectangle().pixels.bytes.data(), rectangle);
    drag(Picture::bar, {0, 20});
    EXPECT_NE(model.rectangle().pixels.bytes.data(), rectangle);
    EXPECT_EQ(model.bar().bytes.data(), bar);
    model.setWebSafeOnly(true);
    EXPECT_NE(model.bar().bytes.data(), bar);
    bar = model.bar().bytes.data();
    model.resize({306, 201});
    EXPECT_EQ(model.rectangle().pixels.width, 306);
    EXPECT_EQ(model.bar().bytes.data(), bar);
}

TEST_F(PickerModel, KeepsThePicturesOfEachAxis) {
    model.open(packed(67, 211, 54));
    model.choose(Axis::red);
    const auto* rectangle = model.rectangle().pixels.bytes.data();
    model.choose(Axis::blue);
    EXPECT_NE(model.rectangle().pixels.bytes.data(), rectangle);
    model.choose(Axis::red);
    EXPECT_EQ(model.rectangle().pixels.bytes.data(), rectangle);
}

TEST_F(PickerModel, MakesTheBarsOfSaturationAndBrightnessFromTheTwoOthers) {
    const HSB hsb = RgbToHsb(packed(67, 211, 54));
    model.open(packed(67, 211, 54));
    model.choose(Axis::sat);
    EXPECT_EQ(model.bar().bytes, pvCreateBar(201, Axis::sat, hsb, false).bytes);
    EXPECT_EQ(model.rectangle().pixels.bytes,
              pvCreateRectSaturation(300, 201, hsb.saturation, false).bytes);
    model.choose(Axis::bri);
    EXPECT_EQ(model.bar().bytes, pvCreateBar(201, Axis::bri, hsb, false).bytes);
    EXPECT_EQ(model.rectangle().pixels.bytes,
              pvCreateRectBrightness(300, 201, hsb.brightness, false).bytes);
    model.choose(Axis::green);
    EXPECT_EQ(model.rectangle().pixels.bytes,
              pvCreateRectRGB(300, 201, Axis::green, 211, false).bytes);
    drag(Picture::bar, {0, 200});
    EXPECT_EQ(model.rectangle().pixels.bytes,
              pvCreateRectRGB(300, 201, Axis::green, 0, false).bytes);
}

TEST_F(PickerModel, GivesTheRectangleWhatTheWindowLeaves) {
    EXPECT_EQ(Model::rectangleSize({660, 420}, 280, 30), (Model::Size{300, 370}));
    EXPECT_EQ(Model::rectangleSize({661, 420}, 280, 30), (Model::Size{300, 370}));
    EXPECT_EQ(Model::rectangleSize({662, 421}, 280, 30), (Model::Size{306, 371}));
}

}  // namespace
}  // namespace tessarine::tests
