#include <string>
#include <vector>

#include "sheet_fixture.h"

namespace tessarine::tests {
namespace {

using Three = std::array<bool, 3>;
using Four = std::array<bool, 4>;
using Numbers = std::array<int32_t, 3>;
using Texts = std::vector<std::string>;

constexpr int banks = 26;
constexpr int glass = 39;
constexpr int curtain = 40;
constexpr int resize = 59;
constexpr int rotate = 70;

constexpr int red = 0;
constexpr int green = 1;
constexpr int blue = 2;

// ---- Swap RGB ----

TEST_F(Sheet, TheBanksStartAtTheIdentity) {
    EXPECT_EQ(batch.optRChannel, (Three{false, false, true}));
    EXPECT_EQ(batch.optGChannel, (Three{false, true, false}));
    EXPECT_EQ(batch.optBChannel, (Three{true, false, false}));
    EXPECT_EQ(batch.chkInvt, (std::array<int16_t, 3>{}));
    EXPECT_EQ(batch.chkKill, (std::array<int16_t, 3>{}));
    select(banks);
    EXPECT_EQ(batch.funcParam, (Numbers{2, 1, 0}));
    EXPECT_EQ(batch.workBits, batch.cFilter.Bits());
}

TEST_F(Sheet, TickingABankTakesItForItsColumn) {
    select(banks);
    batch.ChooseBank(red, 1);
    EXPECT_EQ(batch.optRChannel, (Three{false, true, false}));
    EXPECT_EQ(batch.funcParam, (Numbers{1, 1, 0}));
    batch.ChooseBank(green, 0);
    EXPECT_EQ(batch.optGChannel, (Three{true, false, false}));
    EXPECT_EQ(batch.funcParam, (Numbers{1, 0, 0}));
    batch.ChooseBank(blue, 2);
    EXPECT_EQ(batch.optBChannel, (Three{false, false, true}));
    EXPECT_EQ(batch.funcParam, (Numbers{1, 0, 2}));
    EXPECT_EQ(previews(), 3);
    EXPECT_TRUE(platform.hasChanged("optRChannel(1)"));
    EXPECT_TRUE(platform.hasChanged("optRChannel(2)"));
    EXPECT_FALSE(platform.hasChanged("optRChannel(0)"));
}

TEST_F(Sheet, TheTickedBankStaysTicked) {
    select(banks);
    batch.ChooseBank(red, 2);
    EXPECT_EQ(batch.optRChannel, (Three{false, false, true}));
    EXPECT_EQ(batch.funcParam, (Numbers{2, 1, 0}));
    EXPECT_FALSE(platform.hasChanged("optRChannel(2)"));
}

TEST_F(Sheet, ASecondVisitToTheBanksKeepsTheBoxesAndRestoresTheIdentity) {
    select(banks);
    batch.ChooseBank(red, 0);
    batch.ChangeInvert(1, 1);
    select(2);
    select(banks);
    EXPECT_EQ(batch.optRChannel, (Three{true, false, false}));
    EXPECT_EQ(batch.chkInvt[1], 1);
    EXPECT_EQ(batch.funcParam, (Numbers{2, 1, 0}));
    EXPECT_EQ(batch.workBits,
              batch.cFilter.SwapRGB(2, 1, 0, false, true, false, false, false, false));
}

/// A screen whose boxes report back whatever is written to them.
class EchoingBoxes : public Recorder {
  public:
    cBatch* batch = nullptr;
    int echoes = 0;

    void changed(std::string_view control) override {
        Recorder::changed(control);
        if (batch == nullptr || !control.starts_with("optRChannel(")) return;
        ++echoes;
        batch->ChooseBank(0, static_cast<int16_t>(control[12] - '0'));
    }
};

TEST(SheetBanks, ClearingAColumnDoesNotCallItself) {
    EchoingBoxes screen;
    cBatch batch(screen);
    batch.SelectNode(50);
    ASSERT_EQ(batch.functionId, 26);
    screen.batch = &batch;
    screen.giveWays = 0;
    batch.ChooseBank(red, 0);
    EXPECT_EQ(screen.echoes, 2);
    EXPECT_EQ(batch.optRChannel, (Three{true, false, false}));
    EXPECT_EQ(batch.funcParam, (Numbers{0, 1, 0}));
    EXPECT_EQ(screen.giveWays, 1);
}

TEST_F(Sheet, APersonMayTickAnotherBankWhileThePreviewGivesWay) {
    select(banks);
    platform.onGiveWay.push_back([this] { batch.ChooseBank(blue, 1); });
    batch.ChooseBank(red, 0);
    EXPECT_EQ(batch.funcParam, (Numbers{0, 1, 1}));
    EXPECT_EQ(batch.optBChannel, (Three{false, true, false}));
}

TEST_F(Sheet, InvertAndKillBoxesPreview) {
    select(banks);
    batch.ChangeInvert(0, 1);
    EXPECT_EQ(batch.chkInvt, (std::array<int16_t, 3>{1, 0, 0}));
    EXPECT_EQ(batch.workBits,
              batch.cFilter.SwapRGB(2, 1, 0, true, false, false, false, false, false));
    batch.ChangeKill(2, 1);
    EXPECT_EQ(batch.chkKill, (std::array<int16_t, 3>{0, 0, 1}));
    EXPECT_EQ(batch.workBits,
              batch.cFilter.SwapRGB(2, 1, 0, true, false, false, false, false, true));
    batch.ChangeInvert(0, 0);
    EXPECT_EQ(batch.chkInvt, (std::array<int16_t, 3>{}));
    EXPECT_EQ(previews(), 3);
    EXPECT_TRUE(platform.hasChanged("chkInvt(0)"));
    EXPECT_TRUE(platform.hasChanged("chkKill(2)"));
}

TEST_F(Sheet, BoxesThatAreNotThereDoNothing) {
    select(banks);
    for (const int16_t index : {-1, 3, 500}) {
        batch.ChooseBank(index, 0);
        batch.ChooseBank(red, index);
        batch.ChangeInvert(index, 1);
        batch.ChangeKill(index, 1);
    }
    EXPECT_TRUE(platform.changes.empty());
    EXPECT_EQ(batch.funcParam, (Numbers{2, 1, 0}));
    EXPECT_EQ(previews(), 0);
}

// ---- Glass ----

TEST_F(Sheet, GlassStartsSlantingAndLight) {
    batch.funcParam[0] = 9;
    select(glass);
    EXPECT_EQ(batch.funcStyle, "slanting");
    EXPECT_EQ(batch.funcParam[0], 0);
    EXPECT_EQ(batch.cbo.items, (Texts{"Light", "Tight"}));
    EXPECT_EQ(batch.cbo.text(), "Light");
    EXPECT_EQ(batch.oo, (Four{true, false, false, false}));
}

TEST_F(Sheet, TheKindOfGlassGivesStyleAndStrengths) {
    select(glass);
    const Texts styles{"slanting", "vertical", "horizontal", "squary"};
    for (const int16_t i : {1, 2, 3, 0}) {
        SCOPED_TRACE(i);
        batch.ChooseGlassStrength(1);
        forget();
        batch.ChooseGlass(i);
        EXPECT_EQ(batch.funcStyle, styles[static_cast<size_t>(i)]);
        EXPECT_EQ(batch.cbo.items,
                  i == 0 ? (Texts{"Light", "Tight"}) : (Texts{"Large", "Light", "Tight"}));
        EXPECT_EQ(batch.cbo.index, 0);
        EXPECT_EQ(batch.funcParam[0], 0);
        for (int16_t k = 0; k < 4; ++k)
            EXPECT_EQ(batch.oo[static_cast<size_t>(k)], k == i);
        EXPECT_EQ(previews(), 1);
        EXPECT_TRUE(platform.hasChanged("cbo"));
        EXPECT_TRUE(platform.hasChanged("oo(" + std::to_string(i) + ")"));
    }
}

TEST_F(Sheet, TheStrengthOfGlassIsItsPlaceInTheList) {
    select(glass);
    batch.ChooseGlassStrength(1);
    EXPECT_EQ(batch.cbo.text(), "Tight");
    EXPECT_EQ(batch.funcParam[0], 1);
    batch.ChooseGlass(3);
    batch.ChooseGlassStrength(1);
    EXPECT_EQ(batch.cbo.text(), "Light");
    EXPECT_EQ(batch.funcParam[0], 1);
    EXPECT_EQ(previews(), 3);
    for (const int32_t index : {-1, 3, 100})
        batch.ChooseGlassStrength(index);
    EXPECT_EQ(batch.funcParam[0], 1);
    EXPECT_EQ(batch.cbo.index, 1);
    EXPECT_EQ(previews(), 3);
}

TEST_F(Sheet, ASecondVisitToGlassRestoresSlantingButKeepsTheChoiceOnThePanel) {
    select(glass);
    batch.ChooseGlass(1);
    batch.ChooseGlassStrength(2);
    select(glass);
    EXPECT_EQ(batch.funcStyle, "slanting");
    EXPECT_EQ(batch.funcParam[0], 0);
    EXPECT_EQ(batch.cbo.items, (Texts{"Light", "Tight"}));
    EXPECT_EQ(batch.cbo.index, 0);
    EXPECT_EQ(batch.oo, (Four{false, true, false, false}));
    batch.ChooseGlass(2);
    EXPECT_EQ(batch.funcStyle, "horizontal");
    EXPECT_EQ(batch.cbo.items.size(), 3U);
}

// ---- Curtain ----

TEST_F(Sheet, TheKindOfCurtainIsItsNumber) {
    batch.funcParam[0] = 9;
    select(curtain);
    EXPECT_EQ(batch.funcStyle, "curtain");
    EXPECT_EQ(batch.funcParam[0], 0);
    for (const int16_t i : {3, 1, 2, 0}) {
        batch.funcStyle = "";
        batch.ChooseCurtain(i);
        EXPECT_EQ(batch.funcStyle, "curtain");
        EXPECT_EQ(batch.funcParam[0], i);
        for (int16_t k = 0; k < 4; ++k)
            EXPECT_EQ(batch.Curt[static_cast<size_t>(k)], k == i);
    }
    EXPECT_EQ(previews(), 4);
    EXPECT_TRUE(platform.hasChanged("Curt(3)"));
}

TEST_F(Sheet, ASecondVisitToCurtainKeepsTheChoiceOnThePanel) {
    select(curtain);
    batch.ChooseCurtain(2);
    select(glass);
    select(curtain);
    EXPECT_EQ(batch.funcStyle, "curtain");
    EXPECT_EQ(batch.funcParam[0], 0);
    EXPECT_EQ(batch.Curt, (Four{false, false, true, false}));
}

TEST_F(Sheet, ChoicesThatAreNotThereDoNothing) {
    select(glass);
    for (const int16_t index : {-1, 4}) {
        batch.ChooseGlass(index);
        batch.ChooseCurtain(index);
    }
    EXPECT_EQ(batch.funcStyle, "slanting");
    EXPECT_TRUE(platform.changes.empty());
    EXPECT_EQ(previews(), 0);
}

// ---- Resize ----

TEST_F(Sheet, ResizeStartsAt100KeepingProportionsAndSmoothing) {
    EXPECT_EQ(batch.txtW, "100");
    EXPECT_EQ(batch.txtH, "100");
    EXPECT_EQ(batch.chkKeepProportions, 1);
    EXPECT_EQ(batch.chkInterpolate, 1);
    EXPECT_FALSE(batch.txtHVisible);
    EXPECT_TRUE(batch.txtHHVisible);
    select(resize);
    EXPECT_EQ(batch.funcParam, (Numbers{100, 100, 1}));
    EXPECT_TRUE(batch.funcOption);
}

TEST_F(Sheet, AResizeIsNotPreviewedWhileItsFieldsChange) {
    select(resize);
    batch.ChangeWidth("640");
    batch.ChangeHeight("480");
    batch.ChangeKeepProportions(0);
    batch.ChangeInterpolate(0);
    EXPECT_EQ(batch.txtW, "640");
    EXPECT_EQ(batch.txtH, "480");
    EXPECT_EQ(batch.funcParam, (Numbers{640, 480, 0}));
    EXPECT_FALSE(batch.funcOption);
    EXPECT_EQ(previews(), 0);
}

TEST_F(Sheet, AnEmptiedSizeBecomes0) {
    select(resize);
    batch.ChangeWidth("");
    batch.ChangeHeight("");
    EXPECT_EQ(batch.txtW, "0");
    EXPECT_EQ(batch.txtH, "0");
    EXPECT_EQ(batch.funcParam[0], 0);
    EXPECT_EQ(batch.funcParam[1], 0);
    EXPECT_TRUE(platform.hasChanged("txtW"));
    EXPECT_TRUE(platform.hasChanged("txtH"));
}

TEST_F(Sheet, ASizeAcceptsDigitsOnly) {
    select(resize);
    batch.ChangeWidth("320");
    batch.ChangeHeight("200");
    for (const char* text : {"-5", "3x", " 7", "1.5", "1e3"}) {
        forget();
        batch.ChangeWidth(text);
        batch.ChangeHeight(text);
        EXPECT_EQ(batch.txtW, "320") << text;
        EXPECT_EQ(batch.txtH, "200") << text;
        EXPECT_EQ(batch.funcParam, (Numbers{320, 200, 1})) << text;
        EXPECT_TRUE(platform.hasChanged("txtW")) << "the old text has to come back";
        EXPECT_TRUE(platform.hasChanged("txtH"));
    }
}

TEST_F(Sheet, ASizeThatNoRowHoldsLeavesTheParameter) {
    select(resize);
    batch.ChangeWidth("3276");
    batch.ChangeWidth("32768");
    EXPECT_EQ(batch.txtW, "32768");
    EXPECT_EQ(batch.funcParam[0], 3276);
    batch.ChangeHeight("32767");
    EXPECT_EQ(batch.funcParam[1], 32767);
    batch.ChangeHeight(std::string(300, '9'));
    EXPECT_EQ(batch.funcParam[1], 32767);
}

TEST_F(Sheet, KeepingProportionsHidesTheHeight) {
    select(resize);
    batch.ChangeKeepProportions(0);
    EXPECT_EQ(batch.chkKeepProportions, 0);
    EXPECT_TRUE(batch.txtHVisible);
    EXPECT_FALSE(batch.txtHHVisible);
    EXPECT_FALSE(batch.funcOption);
    EXPECT_TRUE(platform.hasChanged("txtH"));
    EXPECT_TRUE(platform.hasChanged("txtHH"));
    batch.ChangeKeepProportions(1);
    EXPECT_EQ(batch.chkKeepProportions, 1);
    EXPECT_FALSE(batch.txtHVisible);
    EXPECT_TRUE(batch.txtHHVisible);
    EXPECT_TRUE(batch.funcOption);
}

TEST_F(Sheet, SmoothingIsTheThirdNumberOfAResize) {
    select(resize);
    batch.ChangeInterpolate(0);
    EXPECT_EQ(batch.chkInterpolate, 0);
    EXPECT_EQ(batch.funcParam[2], 0);
    batch.ChangeInterpolate(1);
    EXPECT_EQ(batch.chkInterpolate, 1);
    EXPECT_EQ(batch.funcParam[2], 1);
}

TEST_F(Sheet, TheSizeStaysFromTheLastVisit) {
    select(resize);
    batch.ChangeWidth("640");
    batch.ChangeKeepProportions(0);
    select(2);
    select(resize);
    EXPECT_EQ(batch.txtW, "640");
    EXPECT_EQ(batch.chkKeepProportions, 0);
    EXPECT_TRUE(batch.txtHVisible);
    EXPECT_EQ(batch.funcParam[0], 640);
}

// ---- Rotate Intelligently ----

TEST_F(Sheet, TheAngleGoesIntoItsFieldAndPreviews) {
    select(rotate);
    EXPECT_EQ(batch.txtDegrees, "0");
    EXPECT_EQ(batch.chkAntialiasing, 0);
    batch.ChangeDegrees(-37);
    EXPECT_EQ(batch.sbDegrees, -37);
    EXPECT_EQ(batch.txtDegrees, "-37");
    EXPECT_EQ(batch.funcParam[0], -37);
    EXPECT_EQ(previews(), 1);
    EXPECT_TRUE(platform.hasChanged("sbDegrees"));
    EXPECT_TRUE(platform.hasChanged("txtDegrees"));
    batch.ChangeDegrees(-37);
    EXPECT_EQ(previews(), 1);
}

TEST_F(Sheet, AnAngleBesideTheScrollBarIsRefused) {
    select(rotate);
    batch.ChangeDegrees(180);
    for (const int32_t degrees : {181, -181, 70000})
        batch.ChangeDegrees(degrees);
    EXPECT_EQ(batch.sbDegrees, 180);
    batch.ChangeDegrees(-180);
    EXPECT_EQ(batch.sbDegrees, -180);
    EXPECT_EQ(previews(), 2);
}

TEST_F(Sheet, AChangedFieldOfTheAnglePreviewsAndLeavesTheScrollBar) {
    select(rotate);
    batch.ChangeDegrees(10);
    forget();
    batch.TypeDegrees("25");
    EXPECT_EQ(batch.txtDegrees, "25");
    EXPECT_EQ(batch.sbDegrees, 10);
    EXPECT_EQ(batch.funcParam[0], 10);
    EXPECT_EQ(previews(), 1);
    batch.TypeDegrees("25");
    EXPECT_EQ(previews(), 1);
    batch.TypeDegrees("no angle");
    EXPECT_EQ(batch.sbDegrees, 10);
}

TEST_F(Sheet, TheButtonsTakeTheRemainderWithTheSignOfTheDividend) {
    select(rotate);
    const auto stepped = [this](int32_t from, int32_t step) {
        batch.ChangeDegrees(from);
        batch.StepDegrees(step);
        EXPECT_EQ(batch.txtDegrees, std::to_string(batch.sbDegrees));
        return batch.sbDegrees;
    };
    EXPECT_EQ(stepped(120, 90), 30);
    EXPECT_EQ(stepped(-120, -90), -30);
    EXPECT_EQ(stepped(0, 45), 45);
    EXPECT_EQ(stepped(0, -45), -45);
    EXPECT_EQ(stepped(135, 45), 0);
    EXPECT_EQ(stepped(-90, -90), 0);
    EXPECT_EQ(stepped(180, 45), 45);
    EXPECT_EQ(stepped(-180, -45), -45);
    EXPECT_EQ(stepped(-30, 90), 60);
    EXPECT_EQ(stepped(30, -90), -60);
}

TEST_F(Sheet, SmoothRotationPreviewsAndIsTheOption) {
    select(rotate);
    EXPECT_FALSE(batch.funcOption);
    batch.ChangeAntialiasing(1);
    EXPECT_EQ(batch.chkAntialiasing, 1);
    EXPECT_TRUE(batch.funcOption);
    batch.ChangeAntialiasing(0);
    EXPECT_EQ(batch.chkAntialiasing, 0);
    EXPECT_FALSE(batch.funcOption);
    EXPECT_EQ(previews(), 2);
}

TEST_F(Sheet, TheAngleStaysFromTheLastVisit) {
    select(rotate);
    batch.ChangeDegrees(33);
    batch.ChangeAntialiasing(1);
    select(2);
    select(rotate);
    EXPECT_EQ(batch.sbDegrees, 33);
    EXPECT_EQ(batch.txtDegrees, "33");
    EXPECT_EQ(batch.chkAntialiasing, 1);
    EXPECT_EQ(batch.funcParam[0], 33);
}

}  // namespace
}  // namespace tessarine::tests
