#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "batch/batch.h"
#include "batch/sheet_controls.h"
#include "batch/texts.h"
#include "pixels/numbers.h"

namespace tessarine {

namespace {

/// The number that the text of a value field stands for. The field takes digits only; a minus
/// stands ahead of them where the program wrote it. Nothing where the text is no number yet.
std::optional<double> typedNumber(const std::string& text) {
    const bool negative = text.starts_with('-');
    const std::string_view digits = std::string_view(text).substr(negative ? 1 : 0);
    if (digits.empty()) return std::nullopt;
    double number = 0;
    for (const char digit : digits)
        number = number * 10 + (digit - '0');
    return negative ? -number : number;
}

/// Whether typing can lead to this text: digits, behind a minus that already stood there.
bool canStandInField(const std::string& text) {
    const size_t start = text.starts_with('-') ? 1 : 0;
    return text.find_first_not_of("0123456789", start) == std::string::npos;
}

}  // namespace

void cBatch::SelectNode(int16_t treeIndex) {
    const std::span<const TreeNode> nodes = catalogueTree();
    if (treeIndex < 1 || static_cast<size_t>(treeIndex) > nodes.size()) return;
    selectedNode_ = treeIndex;
    const int16_t id = nodes[static_cast<size_t>(treeIndex - 1)].functionId;
    if (id < 0) return;
    functionId = id;
    ShowSheet(functionId);
    previewCurrent();
}

void cBatch::hideSheet() {
    setControl(platform_, frBanks, false, "frBanks");
    setControl(platform_, FrmGlass, false, "FrmGlass");
    setControl(platform_, FrmCurtain, false, "FrmCurtain");
    setControl(platform_, FrRotate, false, "FrRotate");
    setControl(platform_, FrResize, false, "FrResize");
    setControl(platform_, frFactors, false, "frFactors");
    setControl(platform_, tmrSelect, false, "tmrSelect");
    pickEnabled = false;
    for (size_t i = 0; i < sbFilter.size(); ++i) {
        setControl(platform_, sbFilter[i].visible, false, indexed("frFilter", static_cast<int>(i)));
    }
    setControl(platform_, frOption, false, "frOption");
    setControl(platform_, frColor, false, "frColor");
}

void cBatch::ShowSheet(int32_t id) {
    hideSheet();
    sheetReady = false;
    if (const FunctionDef* function = findFunction(id)) {
        setControl(platform_, CLab, function->header, "CLab");
        for (size_t i = 0; i < function->sliders.size(); ++i) {
            const SliderDef& slider = function->sliders[i];
            SetSlider(static_cast<int16_t>(i), std::string(slider.label),
                      static_cast<float>(slider.min), static_cast<float>(slider.max), 1.0F,
                      static_cast<float>(slider.initial), "0", slider.centred);
        }
        showPanel(function->panel);
        if (function->option) {
            SetOption(std::string(function->option->label), function->option->initial);
        }
        if (function->picksPoint) EnablePick();
        if (function->swatches != Swatches::none) {
            ShowSwatches(static_cast<int16_t>(function->swatches));
        }
    } else if (selectedNode_ > 0) {
        const TreeNode& node = catalogueTree()[static_cast<size_t>(selectedNode_ - 1)];
        setControl(platform_, CLab, "[" + std::string(node.text) + "]", "CLab");
    }
    sheetReady = true;
}

void cBatch::SetSlider(int16_t index, const std::string& Label, float Min, float Max, float Step,
                       float Default, const std::string& Format, bool Centered) {
    if (!hasIndex(sbFilter, index)) return;
    SheetSlider& slider = sbFilter[static_cast<size_t>(index)];
    const double step = Step;
    slider.label = Label;
    slider.Tag = singleText(Step);
    slider.step = Step;
    slider.min = roundToInteger(Min / step);
    slider.max = roundToInteger(Max / step);
    slider.value = roundToInteger(Default / step);
    slider.format = Format;
    slider.spinMin = slider.max;
    slider.spinMax = slider.min;
    slider.spinValue = slider.value;
    slider.centreOffset = Centered ? roundToInteger(Max / step * 0.5) : 0;
    slider.visible = true;
    frFactors = true;
    highestSlider = index;
    for (const char* control : {"lblFInfo", "sbFilter", "sbFilterV", "frFilter"}) {
        platform_.changed(indexed(control, index));
    }
    platform_.changed("frFactors");
}

void cBatch::SetOption(const std::string& Label, bool Default) {
    setControl(platform_, lblOption, Label, "lblOption");
    setControl(platform_, chkOption, Default ? 1 : 0, "chkOption");
    setControl(platform_, frOption, true, "frOption");
}

void cBatch::EnablePick() {
    pickEnabled = true;
    pickRelX = 0.5F;
    pickRelY = 0.5F;
    setControl(platform_, tmrSelect, true, "tmrSelect");
}

void cBatch::ShowSwatches(int16_t hidden) {
    // Without a pixel at the point there is no colour to take, and the swatch keeps its own.
    attempt([&] {
        const Bitmap shown = iDst.drawn();
        const int32_t x = roundToInteger(double{pickRelX} * workWidth);
        const int32_t y = roundToInteger(double{pickRelY} * workHeight);
        if (x < 0 || y < 0 || x >= shown.width() || y >= shown.height()) return;
        const Pixel pixel = shown.row(y)[x];
        const uint32_t colour = pixel.red | uint32_t{pixel.green} << 8 | uint32_t{pixel.blue} << 16;
        setControl(platform_, Col[0], colour, "Col(0)");
    });
    for (size_t i = 0; i < ColVisible.size(); ++i) {
        const int at = static_cast<int>(i);
        setControl(platform_, ColVisible[i], at != hidden, indexed("Col", at));
    }
    setControl(platform_, frColor, true, "frColor");
}

bool cBatch::setSliderValue(int16_t index, int32_t value) {
    SheetSlider& slider = sbFilter[static_cast<size_t>(index)];
    if (value < slider.min || value > slider.max || value == slider.value) return false;
    slider.value = value;
    platform_.changed(indexed("sbFilter", index));
    setControl(platform_, slider.spinValue, value, indexed("sbFilterV", index));
    return true;
}

void cBatch::MoveSlider(int16_t index, int32_t value) {
    if (hasIndex(sbFilter, index) && setSliderValue(index, value)) previewCurrent();
}

void cBatch::SpinSlider(int16_t index, int32_t value) { MoveSlider(index, value); }

void cBatch::TypeSliderValue(int16_t index, const std::string& text) {
    if (!hasIndex(sbFilter, index)) return;
    SheetSlider& slider = sbFilter[static_cast<size_t>(index)];
    const std::string field = indexed("lblFilterV", index);
    if (!canStandInField(text)) {
        // The screen may show it already: the old text goes back there.
        platform_.changed(field);
        return;
    }
    slider.valueText = text.empty() ? std::to_string(slider.min) : text;
    std::optional<double> number = typedNumber(slider.valueText);
    if (number && *number < slider.min) {
        number = slider.min;
        slider.valueText = std::to_string(slider.min);
    }
    if (number && *number > slider.max) {
        number = slider.max;
        slider.valueText = std::to_string(slider.max);
    }
    if (slider.valueText != text) platform_.changed(field);
    if (!number) return;
    const bool moved = setSliderValue(index, roundToInteger(*number));
    setControl(platform_, slider.spinValue, slider.value, indexed("sbFilterV", index));
    if (moved) previewCurrent();
}

void cBatch::ChangeOption(int16_t ticked) {
    setControl(platform_, chkOption, ticked != 0 ? 1 : 0, "chkOption");
    previewCurrent();
}

void cBatch::ChangeSwatch(int16_t index, uint32_t colour) {
    if (!hasIndex(Col, index)) return;
    setControl(platform_, Col[static_cast<size_t>(index)], colour, indexed("Col", index));
    previewCurrent();
}

}  // namespace tessarine
