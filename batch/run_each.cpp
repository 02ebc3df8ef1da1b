#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>

#include "batch/batch.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"

// The run with each picture by itself.

namespace tessarine {

namespace {

PictureReport failed(PictureReport entry, const std::string& error, const std::string& message) {
    entry.status = PictureReport::Status::failed;
    entry.error = error;
    entry.message = message;
    return entry;
}

/// A message about one file, as one about the file that it stands for.
std::string aboutOutput(std::string message, const std::string& written,
                        const std::string& output) {
    const size_t at = message.find(written);
    if (at == std::string::npos) return "cannot write the file " + output + ": " + message;
    return message.replace(at, written.size(), output);
}

/// Writes a picture to an open file, by way of a temporary one. \return why it failed; empty where
/// it did not
std::string writePicture(mFormat& format, PictureHolder& picture, const std::string& extension,
                         int16_t formatIndex, const std::string& output, OutputFile& file) {
    const std::string temporary = TempFolder() + "output." + extension;
    const SaveOutcome outcome =
        SaveImageFile(format, picture, extension, temporary, true, formatIndex);
    if (outcome.status != SaveOutcome::Status::saved)
        return aboutOutput(outcome.message, temporary, output);
    std::ifstream saved(temporary, std::ios::binary);
    std::array<char, 1 << 16> bytes;
    while (saved.read(bytes.data(), bytes.size()), saved.gcount() > 0)
        file.write(bytes.data(), static_cast<size_t>(saved.gcount()));
    saved.close();
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    file.finish();
    return file.failure();
}

/// The filter engine of picture `number`. Its clock stands still, so that no report by row is ever
/// due and none can fail, and its random numbers hang on the number alone; those of picture 1 are
/// a new program's.
cBitFilter engineFor(int32_t number) {
    // Draws from one picture's start to the next. Being odd, it leads to all 2^24 states before one
    // comes again; being large, it keeps pictures that follow each other apart.
    constexpr uint64_t drawsApart = 10368889;
    cBitFilter engine;
    engine.timeGetTime = [] { return 0U; };
    engine.random = RandomGenerator().after((static_cast<uint64_t>(number) - 1) * drawsApart);
    return engine;
}

}  // namespace

/// What rows leave in the working state for the rows after them.
struct cBatch::RowState {
    std::array<int32_t, 3> funcParam;
    std::array<int32_t, 2> funcColor;
    bool funcOption;
    std::string funcStyle;
    float pickRelX;
    float pickRelY;
};

cBatch::RowState cBatch::rowState() const {
    return {funcParam, funcColor, funcOption, funcStyle, pickRelX, pickRelY};
}

void cBatch::restoreRowState(const RowState& state) {
    funcParam = state.funcParam;
    funcColor = state.funcColor;
    funcOption = state.funcOption;
    funcStyle = state.funcStyle;
    pickRelX = state.pickRelX;
    pickRelY = state.pickRelY;
}

void cBatch::BatchEach() {
    stopRequested = false;
    report.clear();
    const std::string destination = asFolder(txtDestination);
    const RowState atStart = rowState();
    const cBitFilter engineAtStart = cFilter;
    for (size_t i = 0; i < lvSelected.size(); ++i) {
        platform_.giveWay();
        if (stopRequested) break;
        restoreRowState(atStart);
        cFilter = engineFor(static_cast<int32_t>(i + 1));
        cFilter.Progress = engineAtStart.Progress;
        const auto start = std::chrono::steady_clock::now();
        PictureReport entry = processAlone(static_cast<int32_t>(i + 1), destination);
        entry.ms = millisecondsSince(start);
        report.add(std::move(entry));
    }
    restoreRowState(atStart);
    cFilter = engineAtStart;
}

PictureReport cBatch::processAlone(int32_t number, const std::string& destination) {
    PictureReport entry;
    entry.number = number;
    entry.input = lvSelected[static_cast<size_t>(number - 1)].Tag;
    const std::string extension = formatExtension();
    entry.output = outputName(destination, number, extension);
    const bool overwrite = chkOverwrite != 0;

    std::error_code ignored;
    if (std::filesystem::is_directory(entry.output, ignored))
        return failed(entry, "cannot-write", "cannot replace " + entry.output + ": it is a folder");
    if (!overwrite && platform_.fileExists(entry.output)) {
        entry.status = PictureReport::Status::kept;
        return entry;
    }

    if (!loadIntoSource(entry.input, entry)) return entry;
    takeIn(iSrc);
    applyRows(Overview::silent);
    paintResultIntoSource();

    Draft draft(entry.output);
    OutputFile file;
    if (!draft.writeThrough(file)) return failed(entry, "cannot-write", draft.failure());
    const std::string whyNotWritten = writePicture(
        format, iSrc, extension, static_cast<int16_t>(cboFormat.index), entry.output, file);
    if (!whyNotWritten.empty()) return failed(entry, "cannot-write", whyNotWritten);
    switch (draft.publish(overwrite)) {
        case Draft::End::published:
            entry.status = PictureReport::Status::saved;
            entry.bytes = file.size();
            break;
        case Draft::End::targetKept:
            entry.status = PictureReport::Status::kept;
            break;
        case Draft::End::failed:
            return failed(entry, "cannot-write", draft.failure());
    }
    return entry;
}

}  // namespace tessarine
