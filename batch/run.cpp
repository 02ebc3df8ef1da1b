#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "batch/batch.h"
#include "batch/items.h"
#include "batch/shortage_watch.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"
#include "imagefiles/format_table.h"
#include "pixels/pixel_memory.h"

// The run over the basket as the window does it: what fails is passed over, and the next
// statement goes on with what stands.

namespace tessarine {

namespace {

constexpr const char* lineEnd = "\r\n";

std::string inQuotes(const std::string& text) { return "'" + text + "'"; }

/// A number of items as the run counts them: 0 where 16 bits do not hold it.
int16_t countOf(size_t items) {
    int16_t count = 0;
    attempt([&] { count = toInteger16(static_cast<double>(items)); });
    return count;
}

std::string whyNoPicture(const std::string& extension, const std::string& reason) {
    const std::string message = "no picture can be read from it as ." + extension;
    return reason.empty() ? message : message + ": " + reason;
}

void noteSave(const SaveOutcome& outcome, PictureReport& entry) {
    entry.bytes = outcome.bytes;
    switch (outcome.status) {
        case SaveOutcome::Status::saved:
            entry.status = PictureReport::Status::saved;
            break;
        case SaveOutcome::Status::kept:
            entry.status = PictureReport::Status::kept;
            break;
        case SaveOutcome::Status::failed:
            entry.status = PictureReport::Status::failed;
            entry.error = errorClass(outcome.error);
            entry.message = outcome.message;
            break;
    }
}

/// Pictures that are read ahead of the one whose turn it is.
constexpr size_t mostExpected = 2;

/// At the end of a run nothing is read ahead any more, and its helpers and memory are given back.
class NothingExpected {
  public:
    explicit NothingExpected(PictureFiles& files) : files_(files) {}
    ~NothingExpected() {
        files_.expect({});
        files_.prepareFor(1);
        giveBackPixelMemory();
    }
    NothingExpected(const NothingExpected&) = delete;
    NothingExpected& operator=(const NothingExpected&) = delete;

  private:
    PictureFiles& files_;
};

/// Whether a file lies in one of these folders, by whatever path, or that cannot be told.
bool mayLieIn(const std::string& file, const std::vector<std::string>& folders) {
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::path whole = fs::canonical(file, failure);
    if (failure) return true;
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
        std::error_code unknown;
        const bool isThere = fs::equivalent(whole.parent_path(), folder, unknown);
        // Where there is no such folder nothing lies in it.
        return isThere || (unknown && unknown != std::errc::no_such_file_or_directory);
    });
}

}  // namespace

std::string asFolder(std::string path) {
    if (!path.ends_with(folderSeparator)) path += folderSeparator;
    return path;
}

int64_t millisecondsSince(std::chrono::steady_clock::time_point start) {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now() - start).count();
}

std::string cBatch::formatExtension() const {
    if (cboFormat.index < 0 || cboFormat.index >= formatRowCount) return {};
    return std::string(formatTable()[static_cast<size_t>(cboFormat.index)].extension);
}

std::string cBatch::outputName(const std::string& destination, int32_t number,
                               const std::string& extension) const {
    return destination + txtName + std::to_string(number) + "." + extension;
}

void cBatch::CmdBatchAll() {
    stopRequested = false;
    if (runsUnderWay_ == 0) report.clear();
    ++runsUnderWay_;
    BatchAll();
    --runsUnderWay_;
}

void cBatch::BatchAll() {
    if (lvSelected.empty()) {
        platform_.messageBox("No File(s) selected for Batch Processing!", Icon::information,
                             "Tessarine");
        return;
    }
    const std::string destination = asFolder(txtDestination);
    if (!platform_.folderExists(destination)) {
        platform_.messageBox("Invalid Folder Path", Icon::information);
        return;
    }
    startupRecord.destinationFolder = destination;
    if (!platform_.folderExists(destination)) {
        platform_.messageBox("Please Specify a valid Destination Folder!", Icon::information,
                             "Kestrovane");
        return;
    }
    if (cboFormat.text().empty()) {
        platform_.messageBox("Please specify a file format for all the processed file(s)!",
                             Icon::information);
        return;
    }
    const std::string extension = formatExtension();

    workBits = {};
    pb.max = static_cast<int32_t>(lvSelected.size());
    openOverview(destination);
    pb.visible = true;
    platform_.changed("pb");

    const int16_t count = countOf(lvSelected.size());
    files_.prepareFor(std::clamp<size_t>(lvSelected.size(), 1, 1 + mostExpected));
    const NothingExpected atItsEnd(files_);
    std::string path;
    for (int32_t i = 1; i <= count; ++i) {
        platform_.giveWay();
        pb.value = i;
        platform_.changed("pb");
        if (stopRequested) break;
        const auto start = std::chrono::steady_clock::now();

        const ShortageWatch shortages;
        attempt([&] { path = itemAt(lvSelected, i - 1).Tag; });
        PictureReport entry;
        entry.number = i;
        entry.input = path;
        const bool loaded = loadIntoSource(path, entry);
        expectAfter(i, destination);
        takeIn(iSrc);

        append(std::string(lineEnd) + lineEnd + " Processing " + fileNameOf(path));
        applyRows(Overview::written);
        paintResultIntoSource();
        const bool isAsAsked = !shortages.sawOne();

        entry.output = outputName(destination, i, extension);
        const PictureReport asLoaded = entry;
        noteSave(SaveImageFile(format, iSrc, extension, entry.output, chkOverwrite != 0,
                               static_cast<int16_t>(cboFormat.index), files_),
                 entry);
        iSrc.clearSurface();
        append(std::string(lineEnd) + " Processed Image Saved as " + outputName({}, i, extension));

        if (!loaded) {
            entry.status = PictureReport::Status::failed;
            entry.error = asLoaded.error;
            entry.message = asLoaded.message + "; the picture before it was processed in its place";
        } else if (!isAsAsked && entry.status != PictureReport::Status::kept) {
            entry.message = ShortageWatch::message;
            if (entry.status == PictureReport::Status::saved)
                entry.message += "; it was saved without that";
            entry.status = PictureReport::Status::failed;
            entry.error = errorClass(FileError::tooLarge);
        }
        entry.ms = millisecondsSince(start);
        report.add(std::move(entry));
    }

    append(std::string(lineEnd) + lineEnd + " Processing Completed!");
    pb.visible = false;
    platform_.changed("pb");
    files_.expect({});
    restorePreview();
    if (chkShowDestination != 0) platform_.openPath(destination);
}

void cBatch::expectAfter(int32_t i, const std::string& destination) {
    // A generic name may lead to another folder than the destination.
    const std::vector<std::string> outputs{destination,
                                           folderOf(outputName(destination, i, formatExtension()))};
    std::vector<ExpectedFile> expected;
    for (size_t at = static_cast<size_t>(i);
         at < lvSelected.size() && expected.size() < mostExpected; ++at) {
        const std::string& path = lvSelected[at].Tag;
        // The run itself may change what lies there before its turn.
        if (mayLieIn(path, outputs)) continue;
        expected.push_back({path, lowerCase(extensionOf(path))});
    }
    files_.expect(expected);
}

void cBatch::append(const std::string& text) {
    RTF += text;
    platform_.changed("RTF");
}

void cBatch::openOverview(const std::string& destination) {
    // The block is inserted before the waiting line, and the label of its first line is lost
    // when the waiting line replaces the whole text: the overview opens with the bare count.
    RTF = std::to_string(lvSelected.size()) + lineEnd;
    RTF += "Total Number of functions to be Applied: " + std::to_string(Ltray.size()) + lineEnd;
    RTF += "Destination Folder: " + destination + lineEnd;
    RTF += "Format Selected to save the processed images: " + inQuotes(cboFormat.text()) + lineEnd;
    RTF += "Generic Name for the processed image: " + inQuotes(txtName) + lineEnd;
    RTF += std::string(" Please Wait... Batch Image Processing in Progress!") + lineEnd + lineEnd;
    platform_.changed("RTF");
}

bool cBatch::loadIntoSource(const std::string& path, PictureReport& entry) {
    const std::string extension = lowerCase(extensionOf(path));
    iSrc.autoRedraw = true;
    // Where nothing was read the holder keeps its picture and its size, and the run takes that
    // picture in once more.
    entry.error = errorClass(FileError::unreadable);
    entry.message = whyNotReadable(path);
    if (!entry.message.empty()) return false;
    try {
        if (isPlatformExtension(extension)) {
            LoadedPicture picture = LoadPicture(path, extension, files_);
            entry.depth = picture.depth;
            iSrc.setPicture(std::move(picture.bitmap));
        } else {
            std::optional<Bitmap> bitmap = LoadImageFile(format, path, extension, files_);
            if (!bitmap) throw FileRefused(format.lastFileError, format.lastFormatError);
            entry.depth = format.loadedDepth;
            // The bitmap's own size: the figures of the last load hold 16 bits only.
            iSrc.setSize(bitmap->width(), bitmap->height());
            format.FreeImage_RenderBitmap(bitmap, &iSrc, 0, 0, -1, -1, false);
            iSrc.keepDrawing();
        }
    } catch (const FileRefused& refusal) {
        entry.error = errorClass(refusal.error());
        entry.message = refusal.error() == FileError::unreadable
                            ? whyNoPicture(extension, refusal.what())
                            : refusal.what();
        return false;
    } catch (const MemoryFailed& failure) {
        entry.error = errorClass(FileError::tooLarge);
        entry.message = failure.what();
        return false;
    } catch (const StatementFailed& failure) {
        entry.message = whyNoPicture(extension, failure.what());
        return false;
    }
    platform_.changed("iSrc");
    entry.error.clear();
    entry.width = iSrc.width();
    entry.height = iSrc.height();
    return true;
}

void cBatch::applyRows(Overview overview) {
    const int16_t count = countOf(Ltray.size());
    for (int32_t j = 1; j <= count; ++j) {
        // What the last row makes is written to a file next, by a helper.
        std::optional<SoonHandedOver> last;
        if (j == count) last.emplace();
        attempt([&] {
            ApplyRow(toInteger16(static_cast<double>(itemAt(Ltray, j - 1).Tag)),
                     static_cast<int16_t>(j), true);
        });
        if (overview == Overview::silent) continue;
        append(std::string(lineEnd) + " Applied ");
        attempt([&] { append(itemAt(Ltray, j - 1).text); });
    }
}

void cBatch::paintResultIntoSource() {
    const Bitmap source = iSrc.picture();
    iSrc.clearPicture();
    iSrc.autoRedraw = true;
    // What no function changed is painted without looking through it.
    const bool isUnchanged = source.isValid() && workBits.block() == source.pixels().block() &&
                             iSrc.width() == source.width() && iSrc.height() == source.height();
    attempt([&] {
        if (isUnchanged)
            iSrc.render(source, 0, 0, source.width(), source.height(), false);
        else
            iSrc.paint(workBits, workBitmapInfo, iSrc.width(), iSrc.height());
    });
    attempt([&] { iSrc.keepDrawing(); });
    platform_.changed("iSrc");
}

void cBatch::restorePreview() {
    iSrc.setPicture(iOri.drawn());
    takeIn(iSrc);
    RebuildChain();
    paintPreview();
}

}  // namespace tessarine
