#include "batch/functions.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "expected_sheets.h"
#include "support/recorder.h"

namespace tessarine::tests {
namespace {

struct ExpectedNode {
    std::string text;
    int id;
};

constexpr int group = -1;

const std::vector<ExpectedNode>& expectedTree() {
    static const std::vector<ExpectedNode> tree{
        {"Adjustments", group},
        {"Brightness", 1},
        {"Contrast", 2},
        {"Gamma Correction", 4},
        {"Reduction (Level)", 15},
        {"Flip Horizontally", 68},
        {"Flip Vertically", 69},
        {"Resize", 59},
        {"Rotate", 31},
        {"Rotate Intelligently", 70},
        {"Filters", group},
        {"Blur", 6},
        {"Bump Mapping", 42},
        {"Contour", 11},
        {"Diffuse", 5},
        {"Dilate", 44},
        {"Edge Enhance", 45},
        {"Emboss", 9},
        {"Engrave", 10},
        {"Equalize", 46},
        {"Erode", 47},
        {"Halftone", 7},
        {"Negative", 51},
        {"Noise", 37},
        {"Pixelize", 8},
        {"Painting", 54},
        {"Relief", 58},
        {"Saturation", 3},
        {"Sharpen", 19},
        {"Soften", 20},
        {"Colors", group},
        {"Blue", 41},
        {"Green", 48},
        {"Colorize", 0},
        {"Isolate", 14},
        {"Hue Rotation", 22},
        {"Hue Stretch", 24},
        {"Grey Rotation", 23},
        {"Greyscale", 49},
        {"Magenta", 50},
        {"Retro", 60},
        {"Orange", 53},
        {"Old Photo", 52},
        {"Photocop", 55},
        {"Purple", 56},
        {"Red", 57},
        {"Replace Colors", 16},
        {"Replace Hue & Stretch", 17},
        {"Replace Luminous", 18},
        {"Swap RGB", 26},
        {"Sepiatone", 61},
        {"Spotted", 62},
        {"Thermique", 64},
        {"Tweak RGB", 25},
        {"X -Black", 66},
        {"Yellow", 67},
        {"Shift", 21},
        {"Sketch", 12},
        {"Wet Paper", 65},
        {"Cyan", 43},
        {"Deformations", group},
        {"Bend", 29},
        {"Curtain", 40},
        {"Flare", 36},
        {"Fold", 30},
        {"Glass", 39},
        {"Grid", 35},
        {"Lens", 27},
        {"Scanliness", 38},
        {"Stretch", 32},
        {"Tile", 33},
        {"Twirl", 34},
        {"Waves", 28},
    };
    return tree;
}

std::string panelName(Panel panel) {
    switch (panel) {
        case Panel::none:
            return "";
        case Panel::frBanks:
            return "frBanks";
        case Panel::FrmGlass:
            return "FrmGlass";
        case Panel::FrmCurtain:
            return "FrmCurtain";
        case Panel::FrResize:
            return "FrResize";
        case Panel::FrRotate:
            return "FrRotate";
    }
    return "no panel";
}

std::vector<int> shownSwatches(Swatches swatches) {
    switch (swatches) {
        case Swatches::none:
            return {};
        case Swatches::both:
            return {0, 1};
        case Swatches::onlyFirst:
            return {0};
        case Swatches::onlySecond:
            return {1};
    }
    return {-1};
}

// ---- The tree ----

TEST(CatalogueTree, HoldsThe73NodesInTheirOrder) {
    const auto nodes = catalogueTree();
    ASSERT_EQ(expectedTree().size(), 73U);
    ASSERT_EQ(nodes.size(), expectedTree().size());
    for (size_t i = 0; i < nodes.size(); ++i) {
        EXPECT_EQ(nodes[i].text, expectedTree()[i].text) << "tree index " << i + 1;
        EXPECT_EQ(nodes[i].functionId, expectedTree()[i].id) << "tree index " << i + 1;
    }
}

TEST(CatalogueTree, GroupsStandAt1And11And31And61) {
    const auto nodes = catalogueTree();
    std::vector<size_t> groups;
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].functionId < 0) groups.push_back(i + 1);
    }
    EXPECT_EQ(groups, (std::vector<size_t>{1, 11, 31, 61}));
}

TEST(CatalogueTree, EachFunctionKnowsItsPlace) {
    for (size_t i = 0; i < expectedTree().size(); ++i) {
        if (expectedTree()[i].id == group) continue;
        const FunctionDef* function = findFunction(expectedTree()[i].id);
        ASSERT_NE(function, nullptr) << expectedTree()[i].text;
        EXPECT_EQ(function->treeIndex, static_cast<int>(i) + 1) << expectedTree()[i].text;
        EXPECT_EQ(function->name, expectedTree()[i].text);
    }
}

// ---- The table ----

TEST(FunctionTable, HoldsEveryIdFrom0To70But63ByRisingId) {
    std::vector<int> ids;
    for (const FunctionDef& function : functionTable())
        ids.push_back(function.id);
    std::vector<int> expected;
    for (int id = 0; id <= 70; ++id) {
        if (id != 63) expected.push_back(id);
    }
    EXPECT_EQ(ids, expected);
}

TEST(FunctionTable, OnlyThresholdHasNoNode) {
    for (const FunctionDef& function : functionTable()) {
        EXPECT_EQ(function.treeIndex == 0, function.id == 13) << function.name;
    }
}

TEST(FunctionTable, EverySheetAsksForItsInputs) {
    ASSERT_EQ(expectedSheets().size(), 43U);
    for (const ExpectedSheet& expected : expectedSheets()) {
        SCOPED_TRACE(expected.header);
        const FunctionDef* function = findFunction(expected.id);
        ASSERT_NE(function, nullptr);
        EXPECT_EQ(function->header, expected.header);
        ASSERT_EQ(function->sliders.size(), expected.sliders.size());
        for (size_t i = 0; i < expected.sliders.size(); ++i) {
            EXPECT_EQ(function->sliders[i].label, expected.sliders[i].label);
            EXPECT_EQ(function->sliders[i].min, expected.sliders[i].min);
            EXPECT_EQ(function->sliders[i].max, expected.sliders[i].max);
            EXPECT_EQ(function->sliders[i].initial, expected.sliders[i].initial);
            EXPECT_EQ(function->sliders[i].centred, expected.sliders[i].centred);
        }
        ASSERT_EQ(function->option.has_value(), expected.option.has_value());
        if (expected.option) {
            EXPECT_EQ(function->option->label, expected.option->label);
            EXPECT_EQ(function->option->initial, expected.option->on);
        }
        EXPECT_EQ(shownSwatches(function->swatches), expected.swatches);
        EXPECT_EQ(function->picksPoint, expected.pick);
        EXPECT_EQ(panelName(function->panel), expected.panel);
    }
}

TEST(FunctionTable, AllOtherFunctionsHaveNoInputsAndTheirNameAsHeader) {
    std::set<int> withInputs;
    for (const ExpectedSheet& expected : expectedSheets())
        withInputs.insert(expected.id);
    int others = 0;
    for (const FunctionDef& function : functionTable()) {
        if (withInputs.count(function.id) != 0) continue;
        SCOPED_TRACE(function.name);
        ++others;
        EXPECT_EQ(function.header, "[" + std::string(function.name) + "]");
        EXPECT_TRUE(function.sliders.empty());
        EXPECT_FALSE(function.option.has_value());
        EXPECT_EQ(function.swatches, Swatches::none);
        EXPECT_FALSE(function.picksPoint);
        EXPECT_EQ(function.panel, Panel::none);
    }
    EXPECT_EQ(others, 27);
}

TEST(FunctionTable, NoTwoFunctionsShareANameOrASentence) {
    std::set<std::string_view> names;
    std::set<std::string_view> sentences;
    for (const FunctionDef& function : functionTable()) {
        EXPECT_TRUE(names.insert(function.name).second) << function.name;
        EXPECT_TRUE(sentences.insert(function.sentence).second) << function.sentence;
    }
}

TEST(FunctionTable, EverySentenceIsOne) {
    for (const FunctionDef& function : functionTable()) {
        SCOPED_TRACE(function.name);
        const std::string_view sentence = function.sentence;
        ASSERT_FALSE(sentence.empty());
        EXPECT_TRUE(sentence.front() >= 'A' && sentence.front() <= 'Z');
        EXPECT_EQ(sentence.find('.'), sentence.size() - 1);
        EXPECT_EQ(sentence.find("  "), std::string_view::npos);
        EXPECT_EQ(sentence.find(" ."), std::string_view::npos);
    }
}

TEST(FunctionTable, EveryDefaultLiesInItsRange) {
    for (const FunctionDef& function : functionTable()) {
        SCOPED_TRACE(function.name);
        EXPECT_LE(function.sliders.size(), 3U);
        std::set<std::string_view> labels;
        for (const SliderDef& slider : function.sliders) {
            EXPECT_TRUE(labels.insert(slider.label).second) << slider.label;
            EXPECT_LT(slider.min, slider.max) << slider.label;
            EXPECT_LE(slider.min, slider.initial) << slider.label;
            EXPECT_LE(slider.initial, slider.max) << slider.label;
            // Half of the range is taken off a centred slider: it must begin at 0 and be even.
            if (slider.centred) {
                EXPECT_EQ(slider.min, 0) << slider.label;
                EXPECT_EQ(slider.max % 2, 0) << slider.label;
            }
        }
    }
}

TEST(FunctionTable, APanelStandsAlone) {
    for (const FunctionDef& function : functionTable()) {
        if (function.panel == Panel::none) continue;
        SCOPED_TRACE(function.name);
        EXPECT_TRUE(function.sliders.empty());
        EXPECT_FALSE(function.option.has_value());
        EXPECT_EQ(function.swatches, Swatches::none);
        EXPECT_FALSE(function.picksPoint);
    }
}

// ---- Finding a function ----

TEST(FindFunction, GivesNoneForAnIdThatStandsForNone) {
    for (const int id : {-1, -100, 63, 71, 1000, -65536 + 5, 65536 + 5}) {
        EXPECT_EQ(findFunction(id), nullptr) << id;
    }
}

TEST(FindFunction, GivesTheRowOfAnId) {
    for (const FunctionDef& function : functionTable()) {
        EXPECT_EQ(findFunction(function.id), &function);
    }
}

TEST(FindFunction, TakesANameInAnyCase) {
    EXPECT_EQ(findFunction("Gamma Correction"), findFunction(4));
    EXPECT_EQ(findFunction("gamma correction"), findFunction(4));
    EXPECT_EQ(findFunction("X -BLACK"), findFunction(66));
    EXPECT_EQ(findFunction("rEPLACE hUE & sTRETCH"), findFunction(17));
    for (const FunctionDef& function : functionTable()) {
        if (function.treeIndex == 0) continue;
        EXPECT_EQ(findFunction(function.name), &function);
    }
}

TEST(FindFunction, KnowsCatalogueNamesOnly) {
    for (const char* name : {"", "Threshold", "Filters", "Light", "X-Black", "Reduction", " Blur",
                             "Blur ", "no such function"}) {
        EXPECT_EQ(findFunction(name), nullptr) << name;
    }
}

// ---- What is called ----

class Dispatch : public ::testing::Test {
  protected:
    Recorder platform;
    cBatch batch{platform};
    cBitFilter engine;  ///< the same picture and region, called with arguments spelt out

    Dispatch() {
        batch.cFilter.Bits(picture());
        batch.workBits = batch.cFilter.Bits();
        batch.workRegion.Init(0, 0, width, height);
        batch.cFilter.BitsRegion(batch.workRegion.RegionMain());
        engine.Bits(picture());
        engine.BitsRegion(batch.workRegion.RegionMain());
    }

    /// Levels spread over the whole range, different in each channel.
    static PixelBuffer picture() {
        PixelBuffer made(width, height);
        Pixel* block = made.writableBlock();
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const int n = y * width + x;
                block[made.offsetOfRow(y) + x] = {static_cast<uint8_t>(n * 37 + 11),
                                                  static_cast<uint8_t>(n * 91 + 5),
                                                  static_cast<uint8_t>(n * 151 + 200), 0};
            }
        }
        return made;
    }

    PixelBuffer call(int32_t id, std::array<int32_t, 3> parameters) {
        batch.funcParam = parameters;
        const FunctionDef* function = findFunction(id);
        EXPECT_NE(function, nullptr);
        EXPECT_NE(function->call, nullptr);
        PixelBuffer preview = function->call(batch, CallSite::preview);
        EXPECT_EQ(function->call(batch, CallSite::row), preview);
        EXPECT_EQ(batch.cFilter.Bits(), picture()) << "the image itself stays";
        return preview;
    }

    static constexpr int width = 16;
    static constexpr int height = 9;
};

TEST_F(Dispatch, TheFirstParameterIsTheFactorOfTheToneMembers) {
    const std::array<int32_t, 3> p{40, -7, 99};
    EXPECT_EQ(call(1, p), engine.BRIGHTNESS(40));
    EXPECT_EQ(call(2, p), engine.Contrast(40));
    EXPECT_EQ(call(3, p), engine.SATURATION(40));
    EXPECT_EQ(call(4, p), engine.GammaCorrection(40));
    EXPECT_EQ(call(13, p), engine.Threshold(40));
    EXPECT_EQ(call(15, p), engine.Reduction(40));
}

TEST_F(Dispatch, EachToneMemberIsCalledForItsOwnId) {
    const std::array<int32_t, 3> p{40, -7, 99};
    const std::vector<int> ids{1, 2, 3, 4, 13, 15, 25, 46, 49, 51};
    for (size_t i = 0; i < ids.size(); ++i) {
        EXPECT_FALSE(call(ids[i], p) == picture()) << ids[i];
        for (size_t k = 0; k < i; ++k) {
            EXPECT_FALSE(call(ids[i], p) == call(ids[k], p)) << ids[i] << " and " << ids[k];
        }
    }
}

TEST_F(Dispatch, TweakRgbAddsTheParametersToRedGreenAndBlue) {
    EXPECT_EQ(call(25, {10, 20, 30}), engine.ShiftRGB(10, 20, 30));
    const Pixel before = batch.cFilter.Bits().at(0, 0);
    const Pixel after = call(25, {10, 20, 30}).at(0, 0);
    EXPECT_EQ(after.red - before.red, 10);
    EXPECT_EQ(after.green - before.green, 20);
    EXPECT_EQ(after.blue - before.blue, 30);
}

TEST_F(Dispatch, SwapRgbTakesTheBanksFromTheParameters) {
    const Pixel before = batch.cFilter.Bits().at(3, 2);
    const Pixel after = call(26, {0, 2, 1}).at(3, 2);
    EXPECT_EQ(after.red, before.blue);
    EXPECT_EQ(after.green, before.red);
    EXPECT_EQ(after.blue, before.green);
    EXPECT_EQ(call(26, {2, 1, 0}), picture());
}

TEST_F(Dispatch, SwapRgbReadsTheInvertAndKillBoxesAtTheCall) {
    const Pixel before = batch.cFilter.Bits().at(3, 2);
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        batch.chkInvt = {};
        batch.chkKill = {};
        batch.chkInvt[static_cast<size_t>(i)] = 1;
        Pixel expected = before;
        uint8_t& channel = i == 0 ? expected.red : i == 1 ? expected.green : expected.blue;
        channel = static_cast<uint8_t>(255 - channel);
        EXPECT_EQ(call(26, {2, 1, 0}).at(3, 2), expected);
        batch.chkInvt = {};
        batch.chkKill[static_cast<size_t>(i)] = 1;
        channel = 0;
        EXPECT_EQ(call(26, {2, 1, 0}).at(3, 2), expected);
    }
}

TEST_F(Dispatch, FunctionsWithoutArgumentsTakeNothingFromTheRow) {
    for (const int32_t p : {0, 77}) {
        EXPECT_EQ(call(46, {p, p, p}), engine.Equalize());
        EXPECT_EQ(call(49, {p, p, p}), engine.GreyScale());
        EXPECT_EQ(call(51, {p, p, p}), engine.Invert());
    }
}

TEST_F(Dispatch, ARowOfThresholdRunsThoughNoNodeMakesOne) {
    TrayRow row;
    row.text = "Threshold";
    row.Tag = 13;
    row.columns = {"90", "0", "0", "0", "0", "False", "", "0", "0"};
    batch.Ltray.push_back(row);
    batch.ApplyRow(13, 1, false);
    EXPECT_EQ(batch.workBits, engine.Threshold(90));
    EXPECT_EQ(batch.cFilter.Bits(), batch.workBits);
}

TEST_F(Dispatch, AFreeIdChangesNothingAndStillHandsTheResultOn) {
    TrayRow row;
    row.columns = {"90", "0", "0", "0", "0", "False", "", "0", "0"};
    batch.Ltray.push_back(row);
    batch.workBits = engine.Invert();
    for (const int16_t id : {int16_t{63}, int16_t{71}, int16_t{-1}}) {
        batch.cFilter.Bits(picture());
        batch.ApplyRow(id, 1, false);
        EXPECT_EQ(batch.workBits, engine.Invert()) << id;
        EXPECT_EQ(batch.cFilter.Bits(), batch.workBits) << id;
    }
}

}  // namespace
}  // namespace tessarine::tests
