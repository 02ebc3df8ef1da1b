#include <algorithm>
#include <cstdio>

#include "batch/batch.h"
#include "batch/items.h"
#include "batch/texts.h"
#include "imagefiles/format_table.h"
#include "pixels/numbers.h"

// The chain of functions: from the sheet or a stored row through one dispatch to the picture.

namespace tessarine {

namespace {

/// A slider's shown value in its format text, of which only the decimals count: "0", "0.00".
std::string shownText(double value, const std::string& format) {
    const size_t point = format.find('.');
    const size_t decimals = point == std::string::npos ? 0 : format.size() - point - 1;
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", static_cast<int>(decimals), value);
    return text;
}

/// Functions whose three numbers come from the sliders; the others' panels write them.
bool readsSliders(int32_t id) { return id < 41 && id != 26 && id != 39 && id != 40; }

}  // namespace

cBatch::cBatch(Platform& platform, PictureFiles& files) : platform_(platform), files_(files) {
    for (const FormatRow& row : formatTable())
        cboFormat.items.emplace_back(row.text);
    cFilter.timeGetTime = [this] { return platform_.timeGetTime(); };
    const Bitmap sample = samplePicture();
    for (PictureHolder* holder : {&iOri, &iDst, &iSrc})
        holder->setPicture(sample);
    takeIn(iOri);
}

std::string ChoiceList::text() const {
    return index >= 0 && index < static_cast<int32_t>(items.size())
               ? items[static_cast<size_t>(index)]
               : std::string();
}

void cBatch::PreviewFunction(int32_t id) {
    if (!sheetReady) return;
    if (readsSliders(id)) {
        for (int16_t i = 0; i <= highestSlider; ++i) {
            SheetSlider& slider = sbFilter.at(static_cast<size_t>(i));
            slider.valueText = shownText(double{slider.step} * slider.value, slider.format);
            platform_.changed("lblFilterV(" + std::to_string(i) + ")");
            funcParam.at(static_cast<size_t>(i)) = slider.value - slider.centreOffset;
        }
        funcOption = chkOption != 0;
        funcColor = {static_cast<int32_t>(Col[0]), static_cast<int32_t>(Col[1])};
    }
    if (id == 59) {
        attempt([&] { funcParam[0] = toInteger16(txtW); });
        attempt([&] { funcParam[1] = toInteger16(txtH); });
        funcOption = chkKeepProportions != 0;
        funcParam[2] = chkInterpolate == 1 ? 1 : 0;
        workBits = cFilter.Bits();
    }
    if (id == 70) {
        funcParam[0] = sbDegrees;
        funcOption = chkAntialiasing != 0;
    }
    platform_.giveWay();
    applyFunction(id, CallSite::preview);
    paintPreview();
}

void cBatch::ApplyRow(int16_t id, int16_t rowIndex, bool forRun) {
    attempt([&] {
        const TrayRow row = itemAt(Ltray, rowIndex - 1);
        loadColumns(row);
        loadPoint(row, forRun);
    });
    platform_.giveWay();
    applyFunction(id, CallSite::row);
    attempt([&] { cFilter.Bits(workBits); });
}

void cBatch::loadColumns(const TrayRow& row) {
    for (int k = 0; k < 3; ++k)
        attempt([&] { funcParam[static_cast<size_t>(k)] = toInteger16(row.column(k + 1)); });
    for (int k = 0; k < 2; ++k)
        attempt([&] { funcColor[static_cast<size_t>(k)] = toInteger32(row.column(k + 4)); });
    attempt([&] { funcOption = toTruth(row.column(6)); });
    funcStyle = row.column(7);
}

void cBatch::loadPoint(const TrayRow& row, bool forRun) {
    const auto relative = [forRun](int32_t place, int32_t work, int32_t source, int32_t preview) {
        // In a run the point keeps its place relative to the preview, in a picture of any size.
        if (forRun)
            return static_cast<float>(place * (static_cast<double>(source) / preview) / source);
        return static_cast<float>(static_cast<double>(std::max(std::min(place, work - 1), 0)) /
                                  work);
    };
    attempt([&] {
        pickRelX = relative(toInteger16(row.column(8)), workWidth, iSrc.width(), iDst.width());
    });
    attempt([&] {
        pickRelY = relative(toInteger16(row.column(9)), workHeight, iSrc.height(), iDst.height());
    });
}

void cBatch::applyFunction(int32_t id, CallSite site) {
    const FunctionDef* function = findFunction(id);
    if (function == nullptr || function->call == nullptr) return;
    attempt([&] { workBits = function->call(*this, site); });
}

void cBatch::paintPreview() {
    iDst.clearPicture();
    attempt([&] { iDst.paint(workBits, workBitmapInfo, iDst.width(), iDst.height()); });
    platform_.changed("iDst");
}

void cBatch::applyChain() {
    attempt([&] { cFilter.Bits(originalBits); });
    workBits = cFilter.Bits();
    int32_t row = 0;
    int32_t id = 0;
    const size_t count = LSelectedFunctions.size();
    for (size_t i = 0; i < count; ++i) {
        attempt([&] { row = itemAt(LSelectedFunctions, static_cast<int64_t>(i)).itemData; });
        attempt([&] { id = itemAt(Ltray, int64_t{row} - 1).Tag; });
        attempt([&] { ApplyRow(toInteger16(double(id)), toInteger16(double(row)), false); });
    }
}

void cBatch::RebuildChain() {
    if (LSelectedFunctions.empty()) return;
    applyChain();
    PreviewFunction(-1);
}

void cBatch::RebuildChainAndDraw() {
    if (LSelectedFunctions.empty()) return;
    applyChain();
    paintPreview();
}

void cBatch::CmdAdd() {
    if (selectedNode_ < 1) return;
    const TreeNode& node = catalogueTree()[static_cast<size_t>(selectedNode_ - 1)];
    if (node.functionId < 0) return;
    AddFunction(std::string(node.text));
}

void cBatch::AddFunction(const std::string& name) {
    attempt([&] { cFilter.Bits(workBits); });
    appendRow(name);
    platform_.changed("LSelectedFunctions");
}

void cBatch::appendRow(const std::string& name) {
    TrayRow row;
    row.text = name;
    row.Tag = functionId;
    for (int k = 0; k < 3; ++k)
        row.column(k + 1) = std::to_string(funcParam[static_cast<size_t>(k)]);
    for (int k = 0; k < 2; ++k)
        row.column(k + 4) = std::to_string(funcColor[static_cast<size_t>(k)]);
    row.column(6) = truthText(funcOption);
    row.column(7) = funcStyle;
    row.column(8) = singleText(pickX);
    row.column(9) = singleText(pickY);
    Ltray.push_back(std::move(row));
    LSelectedFunctions.push_back({name, static_cast<int32_t>(Ltray.size())});
}

void cBatch::restart() {
    attempt([&] { cFilter.Bits(originalBits); });
    workBits = cFilter.Bits();
    PreviewFunction(-1);
}

void cBatch::RemoveFunction(int32_t index) {
    if (index < 0 || index >= static_cast<int32_t>(LSelectedFunctions.size())) return;
    LSelectedFunctions.erase(LSelectedFunctions.begin() + index);
    // The selection passes to the entry that moves up, or at the end to the one before it.
    const auto count = static_cast<int32_t>(LSelectedFunctions.size());
    if (selectedFunction > index || selectedFunction >= count) --selectedFunction;
    platform_.changed("LSelectedFunctions");
    if (LSelectedFunctions.empty())
        restart();
    else
        RebuildChain();
}

void cBatch::swapWithUpper(int32_t index) {
    const auto place = static_cast<size_t>(index);
    std::swap(LSelectedFunctions[place - 1], LSelectedFunctions[place]);
    platform_.changed("LSelectedFunctions");
    RebuildChain();
}

void cBatch::MoveFunctionUp(int32_t index) {
    if (index < 1 || index >= static_cast<int32_t>(LSelectedFunctions.size())) return;
    selectedFunction = index - 1;
    swapWithUpper(index);
}

void cBatch::MoveFunctionDown(int32_t index) {
    if (index < 0 || int64_t{index} + 1 >= static_cast<int64_t>(LSelectedFunctions.size())) return;
    selectedFunction = index + 1;
    swapWithUpper(index + 1);
}

void cBatch::ClearFunctions() {
    if (LSelectedFunctions.empty()) return;
    LSelectedFunctions.clear();
    Ltray.clear();
    selectedFunction = -1;
    platform_.changed("LSelectedFunctions");
    restart();
}

void cBatch::TBTray(int16_t button) {
    switch (button) {
        case 1:
            CmdAdd();
            break;
        case 2:
            RemoveFunction(selectedFunction);
            break;
        case 3:
            ClearFunctions();
            break;
        case 4:
            LoadFunctionList();
            RebuildChain();
            break;
        case 5:
            SaveFunctionList();
            RebuildChain();
            break;
        case 7:
            MoveFunctionUp(selectedFunction);
            break;
        case 8:
            MoveFunctionDown(selectedFunction);
            break;
        default:
            break;
    }
}

void cBatch::PickPoint(float X, float Y) {
    platform_.changed("iOri");
    if (!pickEnabled) return;
    X = std::max(std::min(X, static_cast<float>(workWidth - 1)), 0.0F);
    Y = std::max(std::min(Y, static_cast<float>(workHeight - 1)), 0.0F);
    pickRelX = X / static_cast<float>(workWidth);
    pickRelY = Y / static_cast<float>(workHeight);
    pickX = X;
    pickY = Y;
    const int32_t x = roundToInteger(X);
    const int32_t y = roundToInteger(Y);
    if (x < workBits.width() && y < workBits.height()) {
        const Pixel& p = workBits.at(x, y);
        Col[0] = p.red | static_cast<uint32_t>(p.green) << 8 | static_cast<uint32_t>(p.blue) << 16;
        platform_.changed("Col(0)");
    }
    platform_.giveWay();
    DrawPickMark();
    previewCurrent();
}

void cBatch::DrawPickMark() {
    pickMark.x = roundToInteger(double{pickRelX} * iOri.width());
    pickMark.y = roundToInteger(double{pickRelY} * iOri.height());
    pickMark.colour = markColour_;
    platform_.changed("pickMark");
}

void cBatch::TickSelect() {
    constexpr uint32_t red = 255;
    markColour_ = markColour_ == red ? 0 : red;
    DrawPickMark();
}

void cBatch::SetPicture(PictureHolder& picture) {
    workWidth = picture.width();
    workHeight = picture.height();
    attempt([&] { workBits = picture.drawn().pixels(); });
    workBitmapInfo = {workWidth + 2 * PixelBuffer::margin, workHeight + 2 * PixelBuffer::margin};
    originalBits = workBits;
    picture.autoRedraw = false;
    workRect = {0, 0, workWidth, workHeight};
    workRegion.Init(0, 0, workWidth, workHeight);
}

void cBatch::CreateBlank(int32_t dX, int32_t dY) {
    if (dX < 1 || dY < 1) return;
    workBitmapInfo = {dX + 2 * PixelBuffer::margin, dY + 2 * PixelBuffer::margin};
    attempt([&] { workBits = PixelBuffer(dX, dY); });
    attempt([&] { iSrc.setSize(dX, dY); });
    workRect = {0, 0, dX, dY};
}

void cBatch::takeIn(PictureHolder& picture) {
    SetPicture(picture);
    workRegion.Init(0, 0, picture.width(), picture.height());
    attempt([&] { cFilter.Bits(workBits); });
    cFilter.BitsRegion(workRegion.RegionMain());
}

}  // namespace tessarine
