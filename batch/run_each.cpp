#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdio.h>
#include <unistd.h>

#include "batch/batch.h"
#include "batch/texts.h"
#include "imagefiles/format_table.h"

// The run with each picture by itself.

namespace tessarine {

namespace {

namespace fs = std::filesystem;

/// A file that is removed at the end of its scope unless it has become the output.
class Draft {
  public:
    explicit Draft(std::string path) : path_(std::move(path)) {}
    ~Draft() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    const std::string& path() const { return path_; }

    /// Has the file's bytes reach the disk and gives it its name. \return 0 or an errno value;
    /// EEXIST where the name is taken and is not to be overwritten
    int publish(const std::string& name, bool overwrite) {
        const int file = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        if (file < 0) return errno;
        const int synced = ::fsync(file) == 0 ? 0 : errno;
        ::close(file);
        if (synced != 0) return synced;
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, name.c_str(),
                        overwrite ? 0 : RENAME_NOREPLACE) != 0)
            return errno;
        path_.clear();
        return 0;
    }

  private:
    std::string path_;
};

/// Why a file cannot be read, as far as the system can tell; empty where it can be opened.
std::string whyNotOpened(const std::string& path) {
    std::error_code failure;
    if (fs::is_directory(path, failure)) return "it is a folder";
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return std::strerror(errno);
    ::close(file);
    return {};
}

int64_t millisecondsSince(std::chrono::steady_clock::time_point start) {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now() - start).count();
}

PictureReport failed(PictureReport entry, const std::string& error, const std::string& message) {
    entry.status = PictureReport::Status::failed;
    entry.error = error;
    entry.message = message;
    return entry;
}

}  // namespace

void cBatch::BatchEach() {
    stopRequested = false;
    report.clear();
    std::string destination = txtDestination;
    if (!destination.ends_with(folderSeparator)) destination += folderSeparator;
    for (size_t i = 0; i < lvSelected.size(); ++i) {
        platform_.giveWay();
        if (stopRequested) break;
        const auto start = std::chrono::steady_clock::now();
        PictureReport entry = processAlone(static_cast<int32_t>(i + 1), destination);
        entry.ms = millisecondsSince(start);
        report.add(std::move(entry));
    }
}

void cBatch::forgetEarlierPictures() {
    funcParam = {};
    funcColor = {};
    funcOption = false;
    funcStyle.clear();
    pickRelX = pickRelY = pickX = pickY = 0;
    format = {};
    iSrc.clearPicture();
}

PictureReport cBatch::processAlone(int32_t number, const std::string& destination) {
    const FormatRow& row = formatTable().at(static_cast<size_t>(cboFormat.index));
    const std::string extension(row.extension);
    PictureReport entry;
    entry.number = number;
    entry.input = lvSelected[static_cast<size_t>(number - 1)].Tag;
    entry.output = destination + txtName + std::to_string(number) + "." + extension;
    const bool overwrite = chkOverwrite != 0;

    std::error_code ignored;
    if (fs::is_directory(entry.output, ignored))
        return failed(entry, "cannot-write", "a folder stands under the output's name");
    if (!overwrite && platform_.fileExists(entry.output)) {
        entry.status = PictureReport::Status::kept;
        return entry;
    }

    forgetEarlierPictures();
    if (!loadIntoSource(entry.input, entry)) {
        const std::string why = whyNotOpened(entry.input);
        return failed(entry, "unreadable",
                      why.empty() ? "no picture of the format that its extension names" : why);
    }
    takeIn(iSrc);
    applyRows(false);
    paintResultIntoSource();

    // Written beside the target, so that the name appears only with the whole file behind it.
    const std::string folder = folderOf(entry.output);
    Draft draft(folder + (folder.ends_with(folderSeparator) ? "" : "/") + ".tessarine-" +
                std::to_string(::getpid()) + "-" + std::to_string(number) + "." + extension);
    const SaveOutcome outcome = SaveImageFile(format, iSrc, extension, draft.path(), true,
                                              static_cast<int16_t>(cboFormat.index));
    if (outcome.status != SaveOutcome::Status::saved)
        return failed(entry, "cannot-write", outcome.message);
    const int refused = draft.publish(entry.output, overwrite);
    if (refused == EEXIST && !overwrite) {
        entry.status = PictureReport::Status::kept;
        return entry;
    }
    if (refused != 0) return failed(entry, "cannot-write", std::strerror(refused));
    entry.status = PictureReport::Status::saved;
    entry.bytes = outcome.bytes;
    return entry;
}

}  // namespace tessarine
