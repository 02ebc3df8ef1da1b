#include <chrono>
#include <filesystem>
#include <new>

#include "batch/batch.h"
#include "batch/shortage_watch.h"
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

WriteOutcome writeTo(OutputFile& file, PictureFiles& files, const PictureHolder& picture,
                     const std::string& extension, int16_t formatIndex) {
    try {
        return files.write(savedBitmap(picture, extension), extension, formatIndex, file);
    } catch (const MemoryFailed& failure) {
        return {FileError::tooLarge, failure.what()};
    }
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

    const auto shortOfMemory = [&] {
        return failed(entry, std::string(errorClass(FileError::tooLarge)), ShortageWatch::message);
    };
    const ShortageWatch shortages;
    try {
        if (!loadIntoSource(entry.input, entry)) return entry;
        takeIn(iSrc);
        applyRows(Overview::silent);
        paintResultIntoSource();
    } catch (const std::bad_alloc&) {
        return shortOfMemory();
    }
    // A function that found no memory was left out; then this is not the picture asked for.
    if (shortages.sawOne()) return shortOfMemory();

    Draft draft(entry.output);
    OutputFile file;
    const std::string cannotWrite(errorClass(FileError::cannotWrite));
    if (!draft.writeThrough(file)) return failed(entry, cannotWrite, draft.failure());
    const WriteOutcome written =
        writeTo(file, files_, iSrc, extension, static_cast<int16_t>(cboFormat.index));
    if (written.error != FileError::none)
        return failed(entry, std::string(errorClass(written.error)), written.message);
    if (!file.finish()) return failed(entry, cannotWrite, file.failure());
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
