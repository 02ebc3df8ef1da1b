#include <map>
#include <string>

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>

#include "../batch/expected_sheets.h"
#include "step2_fixture.h"

// The parameter sheet on the screen.

namespace tessarine::tests {
namespace {

constexpr int brightness = 1;
constexpr int gammaCorrection = 4;
constexpr int diffuse = 5;
constexpr int blur = 6;
constexpr int halftone = 7;
constexpr int sketch = 12;
constexpr int banks = 26;
constexpr int glass = 39;
constexpr int curtain = 40;
constexpr int resize = 59;
constexpr int rotate = 70;

using Numbers = std::array<int32_t, 3>;

std::string numbered(const char* name, size_t index) {
    return std::string(name) + "(" + std::to_string(index) + ")";
}

TEST_F(Step2, EverySheetShowsItsInputsAndNoOthers) {
    std::map<int, ExpectedSheet> expected;
    for (const ExpectedSheet& sheet : expectedSheets())
        expected[sheet.id] = sheet;
    int functions = 0;
    int treeIndex = 0;
    for (const TreeNode& node : catalogueTree()) {
        ++treeIndex;
        if (node.functionId < 0) continue;
        ++functions;
        SCOPED_TRACE(node.text);
        ExpectedSheet sheet;
        sheet.header = "[" + std::string(node.text) + "]";
        if (const auto found = expected.find(node.functionId); found != expected.end())
            sheet = found->second;

        clickNode(treeIndex);
        EXPECT_EQ(text("CLab"), sheet.header);
        EXPECT_EQ(shows("frFactors"), !sheet.sliders.empty());
        for (size_t i = 0; i < 3; ++i) {
            ASSERT_EQ(shows(numbered("frFilter", i)), i < sheet.sliders.size()) << i;
            if (i >= sheet.sliders.size()) continue;
            const ExpectedSheet::Slider& wanted = sheet.sliders[i];
            EXPECT_EQ(text(numbered("lblFInfo", i)), wanted.label);
            const auto& slider = at<cpvSlider>(numbered("sbFilter", i));
            EXPECT_EQ(slider.Min(), wanted.min);
            EXPECT_EQ(slider.Max(), wanted.max);
            EXPECT_EQ(slider.Value(), wanted.initial);
            EXPECT_EQ(fieldText(numbered("lblFilterV", i)), std::to_string(wanted.initial));
            const auto& spin = at<QSpinBox>(numbered("sbFilterV", i));
            EXPECT_EQ(spin.minimum(), wanted.min);
            EXPECT_EQ(spin.maximum(), wanted.max);
            EXPECT_EQ(spin.value(), wanted.initial);
        }
        ASSERT_EQ(shows("frOption"), sheet.option.has_value());
        if (sheet.option) {
            EXPECT_EQ(text("lblOption"), sheet.option->label);
            EXPECT_EQ(at<QCheckBox>("chkOption").isChecked(), sheet.option->on);
        }
        EXPECT_EQ(shows("frColor"), !sheet.swatches.empty());
        for (int i = 0; i < 2; ++i) {
            const bool wanted = std::count(sheet.swatches.begin(), sheet.swatches.end(), i) > 0;
            EXPECT_EQ(shows(numbered("Col", static_cast<size_t>(i))), wanted) << i;
        }
        EXPECT_EQ(batch.pickEnabled, sheet.pick);
        EXPECT_EQ(iOri.cursor().shape() == Qt::CrossCursor, sheet.pick);
        for (const char* panel : {"frBanks", "FrmGlass", "FrmCurtain", "FrResize", "FrRotate"})
            EXPECT_EQ(shows(panel), panel == sheet.panel) << panel;
    }
    EXPECT_EQ(functions, 69);
}

TEST_F(Step2, SlidersAreStackedByTheirNumber) {
    const auto top = [this](size_t i) { return at(numbered("frFilter", i)).y(); };
    selectFunction(brightness);
    EXPECT_EQ(top(0), 720 / 15);
    selectFunction(diffuse);
    EXPECT_EQ(top(0), 495 / 15);
    EXPECT_EQ(top(1), 1020 / 15);
    selectFunction(halftone);
    EXPECT_EQ(top(0), 360 / 15);
    EXPECT_EQ(top(1), 840 / 15);
    EXPECT_EQ(top(2), 1320 / 15);
    EXPECT_TRUE(at("frFactors").rect().contains(at("frFilter(2)").geometry()));
}

// ---- Sliders, fields and arrows ----

TEST_F(Step2, GammaShowsTheSlidersValueAndTakesItLessTheMiddle) {
    selectFunction(gammaCorrection);
    EXPECT_EQ(fieldText("lblFilterV(0)"), "100");
    EXPECT_EQ(batch.funcParam[0], 0);
    dragSlider(0, 0);
    EXPECT_EQ(fieldText("lblFilterV(0)"), "0");
    EXPECT_EQ(batch.funcParam[0], -100);
    EXPECT_EQ(at<QSpinBox>("sbFilterV(0)").value(), 0);
}

TEST_F(Step2, BlurHasThreePlaces) {
    selectFunction(blur);
    for (const int level : {2, 1, 0, 1}) {
        dragSlider(0, level);
        EXPECT_EQ(batch.funcParam[0], level);
        EXPECT_EQ(fieldText("lblFilterV(0)"), std::to_string(level));
    }
}

TEST_F(Step2, ASliderPreviewsWhileItIsDragged) {
    selectFunction(brightness);
    dragSlider(0, 250);
    EXPECT_EQ(batch.workBits, batch.cFilter.BRIGHTNESS(250));
    const Pixel pixel = batch.workBits.at(20, 90);
    EXPECT_EQ(shownAt(iDst, 20, 90), QColor(pixel.red, pixel.green, pixel.blue));
    EXPECT_EQ(shownAt(iOri, 20, 90), sampleAt(20, 90));
}

TEST_F(Step2, ANumberAboveTheRangeBecomesItsEnd) {
    selectFunction(brightness);
    at<QLineEdit>("lblFilterV(0)").selectAll();
    type("lblFilterV(0)", "999");
    EXPECT_EQ(fieldText("lblFilterV(0)"), "250");
    EXPECT_EQ(at<cpvSlider>("sbFilter(0)").Value(), 250);
    EXPECT_EQ(at<QSpinBox>("sbFilterV(0)").value(), 250);
    EXPECT_EQ(batch.funcParam[0], 250);
}

TEST_F(Step2, AnEmptiedFieldBecomesTheLowestNumberSelected) {
    selectFunction(halftone);
    auto& field = at<QLineEdit>("lblFilterV(0)");
    dragSlider(0, 9);
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_End);
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(field.text(), "1");
    EXPECT_EQ(field.selectedText(), "1");
    QTest::keyClicks(&field, "17");
    EXPECT_EQ(field.text(), "17");
    EXPECT_EQ(batch.funcParam[0], 17);
    EXPECT_EQ(at<cpvSlider>("sbFilter(0)").Value(), 17);
}

TEST_F(Step2, AFieldTakesDigitsAndBackspaceOnly) {
    selectFunction(brightness);
    auto& field = at<QLineEdit>("lblFilterV(0)");
    field.selectAll();
    type("lblFilterV(0)", "1a-2 .+e5");
    EXPECT_EQ(field.text(), "125");
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(field.text(), "12");
    EXPECT_EQ(batch.funcParam[0], 12);
    dragSlider(0, -57);
    // How near a pixel comes to the value depends on the slider's width, and so on the font.
    const int32_t reached = batch.funcParam[0];
    EXPECT_NEAR(reached, -57, 2) << "only the slider reaches below 0";
    EXPECT_EQ(field.text(), QString::number(reached));
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_End);
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(batch.funcParam[0], reached / 10);
}

TEST_F(Step2, TheArrowsMoveTheSliderAndUpMeansMore) {
    selectFunction(brightness);
    auto& spin = at<QSpinBox>("sbFilterV(0)");
    QTest::keyClick(&spin, Qt::Key_Up);
    QTest::keyClick(&spin, Qt::Key_Up);
    EXPECT_EQ(batch.funcParam[0], 2);
    EXPECT_EQ(at<cpvSlider>("sbFilter(0)").Value(), 2);
    const QPoint down(spin.width() / 2, spin.height() * 3 / 4);
    for (int i = 0; i < 3; ++i)
        QTest::mouseClick(&spin, Qt::LeftButton, {}, down);
    EXPECT_EQ(batch.funcParam[0], -1);
    EXPECT_EQ(fieldText("lblFilterV(0)"), "-1");
}

TEST_F(Step2, AClickOnTheOptionsLabelTicksItsBox) {
    selectFunction(sketch);
    click(at("lblOption"));
    EXPECT_TRUE(at<QCheckBox>("chkOption").isChecked());
    EXPECT_TRUE(batch.funcOption);
    QTest::keyClick(&at("chkOption"), Qt::Key_Space);
    EXPECT_FALSE(batch.funcOption);
    const int width = at("lblOption").sizeHint().width() + at("chkOption").sizeHint().width();
    EXPECT_EQ(at("frOption").width(), width + 150 / 15);
}

// ---- Swap RGB ----

TEST_F(Step2, TheBanksStandInRowsOfRedGreenAndBlue) {
    selectFunction(banks);
    EXPECT_EQ(text("lblRed"), "Red");
    EXPECT_EQ(text("lblGreen"), "Green");
    EXPECT_EQ(text("lblBlue"), "Blue");
    EXPECT_EQ(text("lblInvert"), "Invert");
    EXPECT_EQ(text("lblKill"), "Kill");
    const char* captions[] = {"B", "G", "R"};
    for (const char* column : {"optRChannel", "optGChannel", "optBChannel"}) {
        for (size_t i = 0; i < 3; ++i)
            EXPECT_EQ(at<QRadioButton>(numbered(column, i)).text(), captions[i]);
        EXPECT_LT(at(numbered(column, 2)).y(), at(numbered(column, 1)).y());
        EXPECT_LT(at(numbered(column, 1)).y(), at(numbered(column, 0)).y());
    }
    for (const char* column : {"chkInvt", "chkKill"}) {
        for (size_t i = 0; i < 3; ++i) {
            const int middle = at(numbered(column, i)).geometry().center().y();
            EXPECT_NEAR(middle, at(numbered("optRChannel", 2 - i)).geometry().center().y(), 2);
            EXPECT_FALSE(at<QCheckBox>(numbered(column, i)).isChecked());
        }
    }
    EXPECT_TRUE(at<QRadioButton>("optRChannel(2)").isChecked());
    EXPECT_TRUE(at<QRadioButton>("optGChannel(1)").isChecked());
    EXPECT_TRUE(at<QRadioButton>("optBChannel(0)").isChecked());
}

TEST_F(Step2, TickingABankClearsTheOthersOfItsColumn) {
    selectFunction(banks);
    press("optRChannel(0)");
    EXPECT_EQ(batch.funcParam, (Numbers{0, 1, 0}));
    EXPECT_FALSE(at<QRadioButton>("optRChannel(2)").isChecked());
    EXPECT_TRUE(at<QRadioButton>("optGChannel(1)").isChecked());
    press("optRChannel(0)");
    EXPECT_TRUE(at<QRadioButton>("optRChannel(0)").isChecked());
    EXPECT_EQ(batch.funcParam, (Numbers{0, 1, 0}));
    press("chkInvt(1)");
    press("chkKill(2)");
    EXPECT_EQ(batch.workBits,
              batch.cFilter.SwapRGB(0, 1, 0, false, true, false, false, false, true));
}

TEST_F(Step2, ASecondVisitShowsTheBoxesOfTheFirst) {
    selectFunction(banks);
    press("optRChannel(0)");
    selectFunction(brightness);
    selectFunction(banks);
    EXPECT_TRUE(at<QRadioButton>("optRChannel(0)").isChecked());
    EXPECT_EQ(batch.funcParam, (Numbers{2, 1, 0}));
    press("optRChannel(0)");
    EXPECT_EQ(batch.funcParam, (Numbers{0, 1, 0})) << "a press puts in force what the box shows";
}

// ---- Glass and Curtain ----

TEST_F(Step2, TheListOfStrengthsMovesBesideTheChosenGlass) {
    selectFunction(glass);
    auto& cbo = at<QComboBox>("cbo");
    const char* captions[] = {"Slanting", "Vertical", "Horizontal", "Squary"};
    for (const size_t chosen : {1U, 2U, 3U, 0U}) {
        press(numbered("oo", chosen));
        EXPECT_EQ(cbo.count(), chosen == 0 ? 2 : 3);
        EXPECT_EQ(cbo.itemText(0), chosen == 0 ? "Light" : "Large");
        EXPECT_EQ(cbo.currentIndex(), 0);
        for (size_t i = 0; i < 4; ++i) {
            const auto& choice = at<QRadioButton>(numbered("oo", i));
            EXPECT_EQ(choice.text(), captions[i]);
            EXPECT_EQ(choice.isChecked(), i == chosen);
            EXPECT_EQ(choice.font().bold(), i == chosen) << i;
            if (i != chosen) continue;
            EXPECT_NEAR(cbo.geometry().center().y(), choice.geometry().center().y(), 1);
            EXPECT_GT(cbo.x(), choice.geometry().right());
        }
        for (size_t i = 0; i < 4; ++i)
            EXPECT_FALSE(cbo.geometry().intersects(at(numbered("oo", i)).geometry())) << i;
    }
    press("oo(2)");
    cbo.setFocus();
    QTest::keyClick(&cbo, Qt::Key_Down);
    EXPECT_EQ(batch.funcParam[0], 1);
    EXPECT_EQ(batch.workBits, batch.cFilter.GLASS("horizontal", 1));
}

TEST_F(Step2, ASecondVisitToGlassStartsSlantingBesideTheOldChoice) {
    selectFunction(glass);
    press("oo(1)");
    selectFunction(glass);
    EXPECT_EQ(batch.funcStyle, "slanting");
    EXPECT_EQ(at<QComboBox>("cbo").count(), 2);
    EXPECT_TRUE(at<QRadioButton>("oo(1)").isChecked());
    press("oo(3)");
    EXPECT_EQ(batch.funcStyle, "squary");
}

TEST_F(Step2, TheKindOfCurtainIsChosen) {
    selectFunction(curtain);
    const char* captions[] = {"Horizontal", "Vertical", "Classy", "Whity"};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(at<QRadioButton>(numbered("Curt", i)).text(), captions[i]);
    press("Curt(3)");
    EXPECT_EQ(batch.funcParam[0], 3);
    EXPECT_EQ(batch.funcStyle, "curtain");
    EXPECT_TRUE(at<QRadioButton>("Curt(3)").isChecked());
    EXPECT_FALSE(at<QRadioButton>("Curt(0)").isChecked());
}

// ---- Resize ----

TEST_F(Step2, KeepingProportionsShowsATextInTheHeightsPlace) {
    selectFunction(resize);
    EXPECT_EQ(at<QCheckBox>("chkKeepProportions").text(), "&Keep proportions");
    EXPECT_EQ(at<QCheckBox>("chkInterpolate").text(), "&Anti-Alias");
    EXPECT_EQ(text("txtHH"), "will be adjusted at runtime");
    EXPECT_TRUE(shows("txtHH"));
    EXPECT_FALSE(shows("txtH"));
    settle();
    const QPoint place = at("txtHH").pos();
    press("chkKeepProportions");
    settle();
    EXPECT_FALSE(shows("txtHH"));
    EXPECT_TRUE(shows("txtH"));
    EXPECT_EQ(at("txtH").x(), place.x());
    EXPECT_FALSE(batch.funcOption);
    press("chkInterpolate");
    EXPECT_EQ(batch.funcParam[2], 0);
}

TEST_F(Step2, AnEmptiedSizeIs0WithTheCaretBehindIt) {
    selectFunction(resize);
    auto& txtW = at<QLineEdit>("txtW");
    EXPECT_EQ(txtW.text(), "100");
    txtW.setFocus();
    EXPECT_EQ(txtW.selectedText(), "100");
    QTest::keyClick(&txtW, Qt::Key_Backspace);
    EXPECT_EQ(txtW.text(), "0");
    EXPECT_EQ(txtW.cursorPosition(), 1);
    EXPECT_TRUE(txtW.selectedText().isEmpty());
    EXPECT_EQ(batch.funcParam[0], 0);
    QTest::keyClicks(&txtW, "6x4");
    EXPECT_EQ(txtW.text(), "064");
    EXPECT_EQ(batch.funcParam[0], 64);
}

TEST_F(Step2, ASizeIsSelectedWholeWhenItGainsTheFocus) {
    selectFunction(resize);
    press("chkKeepProportions");
    auto& txtW = at<QLineEdit>("txtW");
    auto& txtH = at<QLineEdit>("txtH");
    click(txtW);
    EXPECT_EQ(txtW.selectedText(), "100");
    QTest::keyClick(&txtW, Qt::Key_Tab);
    ASSERT_TRUE(txtH.hasFocus());
    EXPECT_EQ(txtH.selectedText(), "100");
    QTest::keyClicks(&txtH, "75");
    EXPECT_EQ(batch.funcParam[1], 75);
    click(txtH);
    EXPECT_TRUE(txtH.selectedText().isEmpty()) << "a second click places the caret";
}

// ---- Rotate Intelligently ----

TEST_F(Step2, TheScrollBarOfTheAngleWritesItsFieldAndPreviews) {
    selectFunction(rotate);
    auto& bar = at<QScrollBar>("sbDegrees");
    EXPECT_EQ(bar.minimum(), -180);
    EXPECT_EQ(bar.maximum(), 180);
    EXPECT_EQ(bar.pageStep(), 5);
    EXPECT_EQ(bar.singleStep(), 1);
    EXPECT_EQ(text("lblDegrees"), "Degrees");
    EXPECT_EQ(fieldText("txtDegrees"), "0");
    bar.setFocus();
    QTest::keyClick(&bar, Qt::Key_PageUp);
    QTest::keyClick(&bar, Qt::Key_Left);
    EXPECT_EQ(batch.sbDegrees, bar.value());
    EXPECT_EQ(bar.value(), 4);
    EXPECT_EQ(fieldText("txtDegrees"), std::to_string(bar.value()));
    EXPECT_EQ(batch.workBits, batch.cFilter.ROTATE(bar.value(), true));
}

TEST_F(Step2, TheButtonsTurnByTheRemainder) {
    selectFunction(rotate);
    EXPECT_EQ(at<QPushButton>("cmd45(0)").text(), "+ 45");
    EXPECT_EQ(at<QPushButton>("cmd45(1)").text(), "- 45");
    EXPECT_EQ(at<QPushButton>("cmd90(0)").text(), "+ 90");
    EXPECT_EQ(at<QPushButton>("cmd90(1)").text(), "- 90");
    auto& bar = at<QScrollBar>("sbDegrees");
    bar.setValue(120);
    press("cmd90(0)");
    EXPECT_EQ(bar.value(), 30);
    bar.setValue(-120);
    press("cmd90(1)");
    EXPECT_EQ(bar.value(), -30);
    EXPECT_EQ(fieldText("txtDegrees"), "-30");
    press("cmd45(0)");
    EXPECT_EQ(bar.value(), 15);
    press("cmd45(1)");
    EXPECT_EQ(bar.value(), -30);
}

TEST_F(Step2, AngleAndBoxStayFromTheLastVisit) {
    selectFunction(rotate);
    press("cmd45(0)");
    EXPECT_EQ(at<QCheckBox>("chkAntialiasing").text(), "&Antialiasing");
    EXPECT_FALSE(at<QCheckBox>("chkAntialiasing").isChecked());
    press("chkAntialiasing");
    EXPECT_EQ(batch.workBits, batch.cFilter.RotateSmooth(45));
    selectFunction(brightness);
    selectFunction(rotate);
    EXPECT_EQ(at<QScrollBar>("sbDegrees").value(), 45);
    EXPECT_EQ(fieldText("txtDegrees"), "45");
    EXPECT_TRUE(at<QCheckBox>("chkAntialiasing").isChecked());
}

TEST_F(Step2, AChangedFieldOfTheAnglePreviewsWithTheScrollBarsAngle) {
    selectFunction(rotate);
    press("cmd45(0)");
    batch.workBits = batch.originalBits;
    type("txtDegrees", "7");
    EXPECT_EQ(batch.workBits, batch.cFilter.ROTATE(45, true));
    EXPECT_EQ(at<QScrollBar>("sbDegrees").value(), 45);
}

}  // namespace
}  // namespace tessarine::tests
