#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "batch/batch.h"
#include "batch/sheet_controls.h"
#include "batch/texts.h"

// The special panels: what they show when their sheet opens, and what their controls do.

namespace tessarine {

namespace {

/// What a field of digits holds after a text was entered: an emptied one holds "0", and what is
/// no digit is not accepted at all.
void enterDigits(Platform& platform, std::string& field, const std::string& text,
                 std::string_view control) {
    const bool accepted = text.find_first_not_of("0123456789") == std::string::npos;
    if (accepted) field = text.empty() ? "0" : text;
    // Where the field holds another text now than was entered, the screen has to follow.
    if (field != text) platform.changed(control);
}

}  // namespace

// Boxes, choices and fields keep what they showed on an earlier visit; only the working state and
// the list of strengths start afresh.
void cBatch::showPanel(Panel panel) {
    switch (panel) {
        case Panel::none:
            break;
        case Panel::frBanks:
            funcParam = {2, 1, 0};
            setControl(platform_, frBanks, true, "frBanks");
            break;
        case Panel::FrmGlass:
            funcStyle = "slanting";
            fillGlassStrengths(0);
            setControl(platform_, FrmGlass, true, "FrmGlass");
            break;
        case Panel::FrmCurtain:
            funcStyle = "curtain";
            funcParam[0] = 0;
            setControl(platform_, FrmCurtain, true, "FrmCurtain");
            break;
        case Panel::FrResize:
            setControl(platform_, FrResize, true, "FrResize");
            break;
        case Panel::FrRotate:
            setControl(platform_, FrRotate, true, "FrRotate");
            break;
    }
}

// ---- Swap RGB ----

void cBatch::ChooseBank(int16_t column, int16_t index) {
    if (choosingBank_) return;
    struct Column {
        std::array<bool, 3>& boxes;
        std::string_view name;
    };
    const std::array<Column, 3> columns{
        {{optRChannel, "optRChannel"}, {optGChannel, "optGChannel"}, {optBChannel, "optBChannel"}}};
    if (!hasIndex(columns, column) || !hasIndex(optRChannel, index)) return;
    const Column& chosen = columns[static_cast<size_t>(column)];
    choosingBank_ = true;
    funcParam[static_cast<size_t>(column)] = index;
    chooseOnly(platform_, chosen.boxes, index, chosen.name);
    choosingBank_ = false;
    previewCurrent();
}

void cBatch::ChangeInvert(int16_t index, int16_t ticked) {
    if (!hasIndex(chkInvt, index)) return;
    setControl(platform_, chkInvt[static_cast<size_t>(index)], ticked != 0 ? 1 : 0,
               indexed("chkInvt", index));
    previewCurrent();
}

void cBatch::ChangeKill(int16_t index, int16_t ticked) {
    if (!hasIndex(chkKill, index)) return;
    setControl(platform_, chkKill[static_cast<size_t>(index)], ticked != 0 ? 1 : 0,
               indexed("chkKill", index));
    previewCurrent();
}

// ---- Glass and Curtain ----

// The strengths of "Slanting" begin one later than those of the others, so that an index means
// another strength there. The member that is called counts likewise.
void cBatch::fillGlassStrengths(int16_t choice) {
    cbo.items = {"Light", "Tight"};
    if (choice != 0) cbo.items.insert(cbo.items.begin(), "Large");
    cbo.index = 0;
    funcParam[0] = 0;
    platform_.changed("cbo");
}

void cBatch::ChooseGlass(int16_t index) {
    if (!hasIndex(oo, index)) return;
    chooseOnly(platform_, oo, index, "oo");
    funcStyle = lowerCase(glassStyles[static_cast<size_t>(index)]);
    fillGlassStrengths(index);
    previewCurrent();
}

void cBatch::ChooseGlassStrength(int32_t index) {
    if (!hasIndex(cbo.items, index)) return;
    setControl(platform_, cbo.index, index, "cbo");
    funcParam[0] = index;
    previewCurrent();
}

void cBatch::ChooseCurtain(int16_t index) {
    if (!hasIndex(Curt, index)) return;
    chooseOnly(platform_, Curt, index, "Curt");
    funcStyle = "curtain";
    funcParam[0] = index;
    previewCurrent();
}

// ---- Resize: nothing here previews, since the preview keeps its size ----

void cBatch::ChangeWidth(const std::string& text) {
    enterDigits(platform_, txtW, text, "txtW");
    attempt([&] { funcParam[0] = toInteger16(txtW); });
}

void cBatch::ChangeHeight(const std::string& text) {
    enterDigits(platform_, txtH, text, "txtH");
    attempt([&] { funcParam[1] = toInteger16(txtH); });
}

void cBatch::ChangeKeepProportions(int16_t ticked) {
    const bool keep = ticked != 0;
    setControl(platform_, chkKeepProportions, keep ? 1 : 0, "chkKeepProportions");
    setControl(platform_, txtHVisible, !keep, "txtH");
    setControl(platform_, txtHHVisible, keep, "txtHH");
    funcOption = keep;
}

void cBatch::ChangeInterpolate(int16_t ticked) {
    setControl(platform_, chkInterpolate, ticked != 0 ? 1 : 0, "chkInterpolate");
    funcParam[2] = chkInterpolate;
}

// ---- Rotate Intelligently ----

void cBatch::ChangeDegrees(int32_t degrees) {
    if (degrees < lowestDegrees || degrees > highestDegrees || degrees == sbDegrees) return;
    setControl(platform_, sbDegrees, degrees, "sbDegrees");
    setControl(platform_, txtDegrees, std::to_string(degrees), "txtDegrees");
    previewCurrent();
}

// The field only shows the angle and calls for the preview; the scroll bar holds it.
void cBatch::TypeDegrees(const std::string& text) {
    if (text == txtDegrees) return;
    setControl(platform_, txtDegrees, text, "txtDegrees");
    previewCurrent();
}

void cBatch::StepDegrees(int32_t step) {
    ChangeDegrees(static_cast<int32_t>((int64_t{sbDegrees} + step) % 180));
}

void cBatch::ChangeAntialiasing(int16_t ticked) {
    setControl(platform_, chkAntialiasing, ticked != 0 ? 1 : 0, "chkAntialiasing");
    previewCurrent();
}

}  // namespace tessarine
