#include "input.h"
#include "runner/function_arguments.h"
#include "runner/refusal.h"
#include "small_batch.h"

using namespace tessarine;

namespace {

/// The lines as --apply arguments of one command line.
CommandLine lineOf(const std::string& text) {
    constexpr size_t mostArguments = 6;
    CommandLine line;
    size_t at = 0;
    while (at <= text.size() && line.functions.size() < mostArguments) {
        const size_t end = std::min(text.find('\n', at), text.size());
        line.functions.push_back({FunctionSource::Kind::apply, text.substr(at, end - at)});
        at = end + 1;
    }
    return line;
}

void boundRow(TrayRow& row) {
    if (row.Tag != 59) return;
    int32_t width = toInteger32(row.column(1));
    int32_t height = toInteger32(row.column(2));
    boundResize(width, height, toTruth(row.column(6)));
    row.column(1) = std::to_string(width);
    row.column(2) = std::to_string(height);
}

}  // namespace

// Text of any bytes is refused in one line, or becomes a row for each of its lines that holds what
// the sheet of its function allows; the rows are then applied to a picture.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const CommandLine line = lineOf(textOf(input.rest()));
    SmallBatch program(randomPicture(5 + static_cast<int32_t>(size % 31), 19, 3));
    cBatch& batch = program.batch;
    try {
        addFunctions(batch, line);
    } catch (const Refusal& refusal) {
        expect(refusal.status() == ExitStatus::commandLine);
        expect(std::string(refusal.what()).starts_with("--apply: "));
        return 0;
    }
    expect(batch.Ltray.size() == line.functions.size());

    program.takeIn(randomPicture(13, 1 + static_cast<int32_t>(size % 29), 4));
    int turns = 0;
    for (size_t i = 0; i < batch.Ltray.size(); ++i) {
        TrayRow& row = batch.Ltray[i];
        const FunctionDef* function = findFunction(row.Tag);
        expect(function != nullptr && function->treeIndex > 0);
        expect(lowerCase(row.text) == lowerCase(function->name));
        for (size_t k = 0; k < function->sliders.size(); ++k) {
            const SliderDef& slider = function->sliders[k];
            const int32_t centre = slider.centred ? slider.max / 2 : 0;
            const int32_t shown = toInteger32(row.column(static_cast<int>(k) + 1)) + centre;
            expect(shown >= slider.min && shown <= slider.max);
        }
        boundRow(row);
        if (row.Tag == 70 && ++turns > 2) continue;
        batch.ApplyRow(static_cast<int16_t>(row.Tag), static_cast<int16_t>(i + 1), true);
        expect(batch.workBits.width() <= longestSide && batch.workBits.height() <= longestSide);
    }
    return 0;
}
