#include <algorithm>
#include <string>

#include "expected_sheets.h"
#include "sheet_fixture.h"

namespace tessarine::tests {
namespace {

/// The pixel of the preview's result as a colour with red in its low byte.
uint32_t colourOf(const cBatch& batch, int x, int y) {
    const Bitmap shown = batch.iDst.drawn();
    const Pixel pixel = shown.row(y)[x];
    return pixel.red + 256U * pixel.green + 65536U * pixel.blue;
}

/// A preview on which every pixel has a colour of its own: red x, green y, blue 77.
Bitmap map(int width, int height) {
    Bitmap made(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            made.writableRow(y)[x] = {77, static_cast<uint8_t>(y), static_cast<uint8_t>(x), 0};
        }
    }
    return made;
}

uint32_t mapColour(int x, int y) {
    return static_cast<uint32_t>(x) + 256U * static_cast<uint32_t>(y) + 65536U * 77U;
}

std::string shownPanel(const cBatch& batch) {
    std::string panels;
    if (batch.frBanks) panels += "frBanks";
    if (batch.FrmGlass) panels += "FrmGlass";
    if (batch.FrmCurtain) panels += "FrmCurtain";
    if (batch.FrResize) panels += "FrResize";
    if (batch.FrRotate) panels += "FrRotate";
    return panels;
}

// ---- Before any selection ----

TEST_F(Sheet, ShowsNothingBeforeTheFirstSelection) {
    EXPECT_EQ(batch.functionId, 5);
    EXPECT_EQ(batch.CLab, "Functions Preview");
    EXPECT_EQ(shownPanel(batch), "");
    EXPECT_FALSE(batch.frFactors || batch.frOption || batch.frColor || batch.tmrSelect);
    EXPECT_FALSE(batch.sheetReady);
    EXPECT_EQ(batch.Col[0], 0x000000FFU);
    EXPECT_EQ(batch.Col[1], 0x000000C0U);
}

// ---- SelectNode ----

TEST_F(Sheet, SelectingANodeShowsItsSheetAndPreviewsOnce) {
    batch.SelectNode(3);
    EXPECT_EQ(batch.functionId, 2);
    EXPECT_EQ(batch.CLab, "[Contrast]");
    EXPECT_TRUE(batch.sheetReady);
    EXPECT_EQ(previews(), 1);
}

TEST_F(Sheet, EveryNodeSelectsItsFunction) {
    const auto nodes = catalogueTree();
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].functionId < 0) continue;
        batch.SelectNode(static_cast<int16_t>(i + 1));
        EXPECT_EQ(batch.functionId, nodes[i].functionId);
        EXPECT_EQ(batch.CLab, findFunction(nodes[i].functionId)->header);
    }
}

TEST_F(Sheet, AGroupOrAPlaceOutsideTheTreeIsIgnored) {
    select(2);
    for (const int16_t index : {1, 11, 31, 61, 0, -1, 74, 32767, -32768}) {
        batch.SelectNode(index);
        EXPECT_EQ(batch.functionId, 2) << index;
        EXPECT_EQ(batch.CLab, "[Contrast]") << index;
    }
    EXPECT_TRUE(platform.changes.empty());
    EXPECT_EQ(previews(), 0);
}

// ---- ShowSheet ----

TEST_F(Sheet, EverySheetShowsExactlyItsInputs) {
    for (const ExpectedSheet& expected : expectedSheets()) {
        SCOPED_TRACE(expected.header);
        batch.ShowSheet(expected.id);
        EXPECT_EQ(batch.CLab, expected.header);
        EXPECT_EQ(batch.frFactors, !expected.sliders.empty());
        for (size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(batch.sbFilter[i].visible, i < expected.sliders.size());
            if (i >= expected.sliders.size()) continue;
            const SheetSlider& shown = batch.sbFilter[i];
            const ExpectedSheet::Slider& slider = expected.sliders[i];
            EXPECT_EQ(shown.label, slider.label);
            EXPECT_EQ(shown.min, slider.min);
            EXPECT_EQ(shown.max, slider.max);
            EXPECT_EQ(shown.value, slider.initial);
            EXPECT_EQ(shown.Tag, "1");
            EXPECT_EQ(shown.step, 1.0F);
            EXPECT_EQ(shown.format, "0");
            EXPECT_EQ(shown.centreOffset, slider.centred ? slider.max / 2 : 0);
            EXPECT_EQ(shown.spinMin, slider.max);
            EXPECT_EQ(shown.spinMax, slider.min);
            EXPECT_EQ(shown.spinValue, slider.initial);
        }
        if (!expected.sliders.empty()) {
            EXPECT_EQ(batch.highestSlider, static_cast<int>(expected.sliders.size()) - 1);
        }
        EXPECT_EQ(batch.frOption, expected.option.has_value());
        if (expected.option) {
            EXPECT_EQ(batch.lblOption, expected.option->label);
            EXPECT_EQ(batch.chkOption, expected.option->on ? 1 : 0);
        }
        EXPECT_EQ(batch.frColor, !expected.swatches.empty());
        if (!expected.swatches.empty()) {
            for (const int i : {0, 1}) {
                EXPECT_EQ(batch.ColVisible[static_cast<size_t>(i)],
                          std::count(expected.swatches.begin(), expected.swatches.end(), i) == 1);
            }
        }
        EXPECT_EQ(batch.pickEnabled, expected.pick);
        EXPECT_EQ(batch.tmrSelect, expected.pick);
        EXPECT_EQ(shownPanel(batch), expected.panel);
        EXPECT_TRUE(batch.sheetReady);
    }
}

TEST_F(Sheet, AFunctionWithoutInputsShowsItsHeaderAlone) {
    for (int id = 41; id < 70; ++id) {
        if (id == 59 || id == 63) continue;
        // First a sheet with everything on it, in turn a panel.
        batch.ShowSheet(id % 2 == 0 ? 35 : 26);
        batch.ShowSheet(id);
        SCOPED_TRACE(batch.CLab);
        EXPECT_EQ(batch.CLab, "[" + std::string(findFunction(id)->name) + "]");
        EXPECT_EQ(shownPanel(batch), "");
        EXPECT_FALSE(batch.frFactors || batch.frOption || batch.frColor);
        EXPECT_FALSE(batch.pickEnabled || batch.tmrSelect);
        for (const SheetSlider& slider : batch.sbFilter)
            EXPECT_FALSE(slider.visible);
        EXPECT_TRUE(batch.sheetReady);
    }
}

TEST_F(Sheet, AnIdWithoutARowGetsTheHeaderOfTheSelectedNode) {
    for (const int32_t id : {63, 71, 1000, -1}) {
        select(38);
        batch.ShowSheet(id);
        EXPECT_EQ(batch.CLab, "[Scanliness]") << id;
        EXPECT_FALSE(batch.frFactors);
        EXPECT_TRUE(batch.sheetReady);
    }
}

TEST_F(Sheet, AnIdWithoutARowKeepsTheHeaderWhereNoNodeIsSelected) {
    batch.ShowSheet(63);
    EXPECT_EQ(batch.CLab, "Functions Preview");
    EXPECT_TRUE(batch.sheetReady);
}

TEST_F(Sheet, BuildingASheetPreviewsNothing) {
    select(39);
    for (const FunctionDef& function : functionTable())
        batch.ShowSheet(function.id);
    EXPECT_EQ(previews(), 0);
}

/// A screen whose slider reports back that it was set up.
class EchoingSlider : public Recorder {
  public:
    cBatch* batch = nullptr;
    int echoes = 0;

    void changed(std::string_view control) override {
        Recorder::changed(control);
        if (batch == nullptr || control != "sbFilter(0)") return;
        ++echoes;
        batch->ChangeSwatch(1, 0x112233);
    }
};

TEST(SheetBuilding, WhatTheScreenReportsMeanwhilePreviewsNothing) {
    EchoingSlider screen;
    cBatch batch(screen);
    batch.SelectNode(3);
    screen.batch = &batch;
    screen.giveWays = 0;
    batch.ShowSheet(1);
    EXPECT_EQ(screen.echoes, 1);
    EXPECT_EQ(batch.Col[1], 0x112233U);
    EXPECT_EQ(screen.giveWays, 0);
    batch.ChangeSwatch(1, 0);
    EXPECT_EQ(screen.giveWays, 1) << "with the sheet built, changes preview again";
}

TEST_F(Sheet, BuildingASheetTellsTheScreenWhatItChanged) {
    batch.ShowSheet(34);
    for (const char* control :
         {"CLab", "frFactors", "frFilter(0)", "frFilter(1)", "lblFInfo(0)", "sbFilter(0)",
          "sbFilterV(1)", "lblOption", "chkOption", "frOption"}) {
        EXPECT_TRUE(platform.hasChanged(control)) << control;
    }
    EXPECT_FALSE(platform.hasChanged("frFilter(2)"));
    forget();
    batch.ShowSheet(14);
    for (const char* control :
         {"CLab", "frFilter(1)", "frOption", "tmrSelect", "Col(0)", "Col(1)", "frColor"}) {
        EXPECT_TRUE(platform.hasChanged(control)) << control;
    }
    forget();
    batch.ShowSheet(26);
    for (const char* control : {"CLab", "frBanks", "frFactors", "frColor", "tmrSelect"}) {
        EXPECT_TRUE(platform.hasChanged(control)) << control;
    }
}

TEST_F(Sheet, SlidersAndOptionStartAtTheirDefaultsOnEachVisit) {
    select(34);
    batch.MoveSlider(0, 55);
    batch.ChangeOption(0);
    select(2);
    select(34);
    EXPECT_EQ(batch.sbFilter[0].value, 0);
    EXPECT_EQ(batch.chkOption, 1);
    EXPECT_TRUE(batch.funcOption);
}

TEST_F(Sheet, ASheetWithoutSlidersKeepsTheHighestSlider) {
    select(0);
    EXPECT_EQ(batch.highestSlider, 2);
    for (const int32_t id : {26, 39, 40, 59, 70, 41}) {
        batch.funcParam = {-1, -2, -3};
        batch.ShowSheet(id);
        EXPECT_EQ(batch.highestSlider, 2);
    }
    select(26);
    EXPECT_EQ(batch.funcParam, (std::array<int32_t, 3>{2, 1, 0})) << "no slider was read";
}

// ---- Sliders ----

TEST_F(Sheet, GammaShows100AndGives0) {
    select(4);
    EXPECT_EQ(batch.sbFilter[0].valueText, "100");
    EXPECT_EQ(batch.funcParam[0], 0);
    batch.MoveSlider(0, 0);
    EXPECT_EQ(batch.sbFilter[0].valueText, "0");
    EXPECT_EQ(batch.funcParam[0], -100);
    batch.MoveSlider(0, 200);
    EXPECT_EQ(batch.funcParam[0], 100);
}

TEST_F(Sheet, BlurHasThreePositions) {
    select(6);
    for (const int32_t value : {1, 2, 0}) {
        batch.MoveSlider(0, value);
        EXPECT_EQ(batch.funcParam[0], value);
    }
    for (const int32_t value : {3, -1}) {
        batch.MoveSlider(0, value);
        EXPECT_EQ(batch.sbFilter[0].value, 0);
    }
    EXPECT_EQ(previews(), 3);
}

TEST_F(Sheet, MovingASliderPreviewsWithItsValue) {
    select(5);
    batch.MoveSlider(1, 17);
    EXPECT_EQ(batch.sbFilter[1].value, 17);
    EXPECT_EQ(batch.sbFilter[1].spinValue, 17);
    EXPECT_EQ(batch.sbFilter[1].valueText, "17");
    EXPECT_EQ(batch.funcParam[1], 17);
    EXPECT_EQ(batch.funcParam[0], 2);
    EXPECT_EQ(previews(), 1);
    for (const char* control : {"sbFilter(1)", "sbFilterV(1)", "lblFilterV(1)"}) {
        EXPECT_TRUE(platform.hasChanged(control)) << control;
    }
}

TEST_F(Sheet, ASliderSetToItsOwnValueDoesNothing) {
    select(5);
    batch.MoveSlider(0, 2);
    batch.SpinSlider(0, 2);
    batch.TypeSliderValue(0, "2");
    EXPECT_TRUE(platform.changes.empty());
    EXPECT_EQ(previews(), 0);
}

TEST_F(Sheet, TheSpinMovesTheSlider) {
    select(1);
    batch.SpinSlider(0, 1);
    EXPECT_EQ(batch.sbFilter[0].value, 1);
    EXPECT_EQ(batch.sbFilter[0].spinValue, 1);
    EXPECT_EQ(batch.funcParam[0], 1);
    EXPECT_EQ(previews(), 1);
}

TEST_F(Sheet, ASliderThatIsNotThereDoesNothing) {
    select(5);
    for (const int16_t index : {-1, 3, 32767}) {
        batch.MoveSlider(index, 1);
        batch.SpinSlider(index, 1);
        batch.TypeSliderValue(index, "1");
        batch.SetSlider(index, "label", 0, 10, 1, 5, "0", false);
    }
    EXPECT_TRUE(platform.changes.empty());
    EXPECT_EQ(batch.highestSlider, 1);
}

TEST_F(Sheet, SetSliderDividesByTheStepAndRoundsHalvesToEven) {
    batch.SetSlider(1, "Share", -0.75F, 2.5F, 0.5F, 0.75F, "0.0", true);
    const SheetSlider& slider = batch.sbFilter[1];
    EXPECT_EQ(slider.label, "Share");
    EXPECT_EQ(slider.Tag, "0.5");
    EXPECT_EQ(slider.min, -2);  // -1.5
    EXPECT_EQ(slider.max, 5);
    EXPECT_EQ(slider.value, 2);         // 1.5
    EXPECT_EQ(slider.centreOffset, 2);  // 2.5
    EXPECT_EQ(slider.spinMin, 5);
    EXPECT_EQ(slider.spinMax, -2);
    EXPECT_EQ(slider.spinValue, 2);
    EXPECT_EQ(slider.format, "0.0");
    EXPECT_TRUE(slider.visible);
    EXPECT_TRUE(batch.frFactors);
    EXPECT_EQ(batch.highestSlider, 1);
    batch.SetSlider(1, "Share", 0, 10, 1, 5, "0", false);
    EXPECT_EQ(slider.centreOffset, 0);
}

TEST_F(Sheet, AStepOf0IsNoReasonToFail) {
    EXPECT_NO_THROW(batch.SetSlider(0, "x", 0, 10, 0, 5, "0", true));
    EXPECT_NO_THROW(batch.TypeSliderValue(0, "4"));
}

// ---- Typing a value ----

TEST_F(Sheet, TypingAboveTheRangeGivesItsEnd) {
    select(1);
    batch.TypeSliderValue(0, "999");
    EXPECT_EQ(batch.sbFilter[0].valueText, "250");
    EXPECT_EQ(batch.sbFilter[0].value, 250);
    EXPECT_EQ(batch.sbFilter[0].spinValue, 250);
    EXPECT_EQ(batch.funcParam[0], 250);
    EXPECT_EQ(previews(), 1);
    EXPECT_TRUE(platform.hasChanged("lblFilterV(0)"));
}

TEST_F(Sheet, TypingBelowTheRangeGivesItsStart) {
    select(8);
    batch.TypeSliderValue(0, "0");
    EXPECT_EQ(batch.sbFilter[0].valueText, "1");
    EXPECT_EQ(batch.sbFilter[0].value, 1);
    EXPECT_EQ(batch.funcParam[0], 1);
}

TEST_F(Sheet, AnEmptiedFieldBecomesTheStartOfTheRange) {
    select(1);
    batch.TypeSliderValue(0, "");
    EXPECT_EQ(batch.sbFilter[0].valueText, "-100");
    EXPECT_EQ(batch.sbFilter[0].value, -100);
    EXPECT_EQ(batch.sbFilter[0].spinValue, -100);
    EXPECT_EQ(batch.funcParam[0], -100);
    EXPECT_EQ(previews(), 1);
    EXPECT_TRUE(platform.hasChanged("lblFilterV(0)"));
}

TEST_F(Sheet, ATypedNumberInTheRangeIsTaken) {
    select(1);
    batch.TypeSliderValue(0, "7");
    batch.TypeSliderValue(0, "78");
    EXPECT_EQ(batch.sbFilter[0].valueText, "78");
    EXPECT_EQ(batch.sbFilter[0].value, 78);
    EXPECT_EQ(batch.funcParam[0], 78);
    EXPECT_EQ(previews(), 2);
}

TEST_F(Sheet, DigitsBehindTheProgramsOwnMinusCount) {
    select(1);
    batch.MoveSlider(0, -5);
    ASSERT_EQ(batch.sbFilter[0].valueText, "-5");
    batch.TypeSliderValue(0, "-53");
    EXPECT_EQ(batch.sbFilter[0].value, -53);
    batch.TypeSliderValue(0, "-530");
    EXPECT_EQ(batch.sbFilter[0].valueText, "-100");
    EXPECT_EQ(batch.sbFilter[0].value, -100);
}

TEST_F(Sheet, AMinusThatLostItsDigitsLeavesTheSlider) {
    select(1);
    batch.MoveSlider(0, -5);
    forget();
    batch.TypeSliderValue(0, "-");
    EXPECT_EQ(batch.sbFilter[0].valueText, "-");
    EXPECT_EQ(batch.sbFilter[0].value, -5);
    EXPECT_EQ(previews(), 0);
    batch.TypeSliderValue(0, "-6");
    EXPECT_EQ(batch.sbFilter[0].value, -6);
}

TEST_F(Sheet, WhatIsNoDigitIsNotAccepted) {
    select(1);
    batch.TypeSliderValue(0, "12");
    for (const char* text : {"12a", "1.5", " 12", "1-2", "--1", "+3", "1e2", "\xC3\xA4"}) {
        forget();
        batch.TypeSliderValue(0, text);
        EXPECT_EQ(batch.sbFilter[0].valueText, "12") << text;
        EXPECT_EQ(batch.sbFilter[0].value, 12) << text;
        EXPECT_EQ(previews(), 0) << text;
        EXPECT_TRUE(platform.hasChanged("lblFilterV(0)")) << "the old text has to come back";
    }
}

TEST_F(Sheet, ANumberOfAnyLengthIsTooLarge) {
    select(1);
    for (const size_t length : {10U, 20U, 400U}) {
        batch.TypeSliderValue(0, "5");
        batch.TypeSliderValue(0, std::string(length, '9'));
        EXPECT_EQ(batch.sbFilter[0].valueText, "250") << length;
        EXPECT_EQ(batch.sbFilter[0].value, 250) << length;
        batch.TypeSliderValue(0, "-" + std::string(length, '9'));
        EXPECT_EQ(batch.sbFilter[0].value, -100) << length;
    }
}

TEST_F(Sheet, LeadingZerosOfTheSameNumberMoveNothing) {
    select(4);
    batch.TypeSliderValue(0, "0100");
    EXPECT_EQ(batch.sbFilter[0].valueText, "0100");
    EXPECT_EQ(batch.sbFilter[0].value, 100);
    EXPECT_EQ(previews(), 0);
}

// ---- Option, point, swatches ----

TEST_F(Sheet, SetOptionShowsTheOptionWithItsDefault) {
    batch.SetOption("Round", true);
    EXPECT_EQ(batch.lblOption, "Round");
    EXPECT_EQ(batch.chkOption, 1);
    EXPECT_TRUE(batch.frOption);
    batch.SetOption("Square", false);
    EXPECT_EQ(batch.lblOption, "Square");
    EXPECT_EQ(batch.chkOption, 0);
}

TEST_F(Sheet, ChangingTheOptionPreviewsWithIt) {
    select(31);
    EXPECT_TRUE(batch.funcOption);
    batch.ChangeOption(0);
    EXPECT_EQ(batch.chkOption, 0);
    EXPECT_FALSE(batch.funcOption);
    EXPECT_EQ(previews(), 1);
    batch.ChangeOption(-1);
    EXPECT_EQ(batch.chkOption, 1);
    EXPECT_TRUE(batch.funcOption);
    EXPECT_EQ(previews(), 2);
}

TEST_F(Sheet, SelectingLensMovesTheMarkToTheCentreAndKeepsTheOldPoint) {
    batch.pickX = 12;
    batch.pickY = 34;
    batch.pickRelX = 0.06F;
    batch.pickRelY = 0.2F;
    select(27);
    EXPECT_TRUE(batch.pickEnabled);
    EXPECT_TRUE(batch.tmrSelect);
    EXPECT_EQ(batch.pickRelX, 0.5F);
    EXPECT_EQ(batch.pickRelY, 0.5F);
    EXPECT_EQ(batch.pickX, 12);
    EXPECT_EQ(batch.pickY, 34);
    select(2);
    EXPECT_FALSE(batch.pickEnabled);
    EXPECT_FALSE(batch.tmrSelect);
    EXPECT_EQ(batch.pickRelX, 0.5F) << "only the next point writes it";
}

TEST_F(Sheet, ShowingTheSwatchesTakesTheColourAtThePoint) {
    batch.iDst.setPicture(map(200, 174));
    batch.pickRelX = 0.25F;
    batch.pickRelY = 0.5F;
    batch.ShowSwatches(-1);
    EXPECT_EQ(batch.Col[0], mapColour(50, 87));
    EXPECT_TRUE(batch.ColVisible[0] && batch.ColVisible[1] && batch.frColor);
    EXPECT_EQ(batch.Col[1], 0x000000C0U);
}

TEST_F(Sheet, ThePointOfTheSwatchIsRoundedToAPixel) {
    batch.iDst.setPicture(map(200, 174));
    batch.pickRelX = 101.6F / 200;
    batch.pickRelY = 20.4F / 174;
    batch.ShowSwatches(-1);
    EXPECT_EQ(batch.Col[0], mapColour(102, 20));
}

TEST_F(Sheet, OneSwatchCanBeHidden) {
    batch.ShowSwatches(0);
    EXPECT_FALSE(batch.ColVisible[0]);
    EXPECT_TRUE(batch.ColVisible[1]);
    batch.ShowSwatches(1);
    EXPECT_TRUE(batch.ColVisible[0]);
    EXPECT_FALSE(batch.ColVisible[1]);
    batch.ShowSwatches(2);
    EXPECT_TRUE(batch.ColVisible[0] && batch.ColVisible[1]);
}

TEST_F(Sheet, AHiddenFirstSwatchTakesTheColourToo) {
    batch.iDst.setPicture(map(200, 174));
    batch.pickRelX = 0;
    batch.pickRelY = 0;
    batch.ShowSheet(11);
    EXPECT_FALSE(batch.ColVisible[0]);
    EXPECT_EQ(batch.Col[0], mapColour(0, 0));
}

TEST_F(Sheet, APointBesideThePreviewLeavesTheColour) {
    batch.Col[0] = 0x123456;
    for (const float place : {-0.5F, 1.0F, 3.0e20F}) {
        batch.pickRelX = place;
        batch.ShowSwatches(-1);
        EXPECT_EQ(batch.Col[0], 0x123456U) << place;
        EXPECT_TRUE(batch.frColor);
    }
    batch.pickRelX = 0.5F;
    batch.pickRelY = 1.0F;
    batch.ShowSwatches(-1);
    EXPECT_EQ(batch.Col[0], 0x123456U);
}

TEST_F(Sheet, SwatchesKeepTheirColoursFromSheetToSheet) {
    select(14);
    batch.ChangeSwatch(0, 0x010203);
    batch.ChangeSwatch(1, 0x0A0B0C);
    select(2);
    EXPECT_EQ(batch.Col[0], 0x010203U);
    EXPECT_EQ(batch.Col[1], 0x0A0B0CU);
    EXPECT_EQ(batch.funcColor, (std::array<int32_t, 2>{0x010203, 0x0A0B0C}));
    const uint32_t shown = colourOf(batch, 100, 87);
    select(16);
    EXPECT_EQ(batch.Col[0], shown);
    EXPECT_EQ(batch.Col[1], 0x0A0B0CU);
}

TEST_F(Sheet, ChangingASwatchPreviewsWithItsColour) {
    select(14);
    batch.ChangeSwatch(1, 0x00FF8040);
    EXPECT_EQ(batch.Col[1], 0x00FF8040U);
    EXPECT_EQ(batch.funcColor[1], 0x00FF8040);
    EXPECT_TRUE(platform.hasChanged("Col(1)"));
    EXPECT_EQ(previews(), 1);
    // The picker was left without a new colour.
    batch.ChangeSwatch(1, 0x00FF8040);
    EXPECT_EQ(previews(), 2);
    batch.ChangeSwatch(2, 0);
    batch.ChangeSwatch(-1, 0);
    EXPECT_EQ(previews(), 2);
}

}  // namespace
}  // namespace tessarine::tests
