#include "batch/keeping_files.h"

#include <sys/stat.h>
#include <utility>

#include "pixels/orientation.h"

namespace tessarine {

ReadOutcome KeepingFiles::read(const std::string& path, const std::string& extension) {
    metadata_ = {};
    fileTime_.reset();
    leftOut_.clear();
    struct stat status {};
    if (wishes_.keep && ::stat(path.c_str(), &status) == 0) fileTime_ = status.st_mtim;
    ReadOutcome outcome = files_.readWithMetadata(
        path, extension, wishes_.keep ? MetadataWanted::all : MetadataWanted::orientation);
    if (!outcome.bitmap) return outcome;
    metadata_.withoutLocation = wishes_.stripLocation;
    leftOut_ = std::exchange(outcome.metadata.leftOut, {});
    if (wishes_.keep) metadata_.packed = std::exchange(outcome.metadata.packed, {});
    if (!wishes_.autoOrient || outcome.metadata.orientation == 1) return outcome;
    try {
        outcome.bitmap =
            Bitmap::inForm(turnedUpright(outcome.bitmap->pixels(), outcome.metadata.orientation));
        metadata_.isTurned = true;
    } catch (const MemoryFailed& failure) {
        outcome = {};
        outcome.error = FileError::tooLarge;
        outcome.message = failure.what();
    }
    return outcome;
}

WriteOutcome KeepingFiles::write(const Bitmap& picture, const std::string& extension,
                                 int16_t formatIndex, OutputFile& file) {
    if (metadata_.packed.empty()) return files_.write(picture, extension, formatIndex, file);
    WriteOutcome outcome =
        files_.writeWithMetadata(picture, extension, formatIndex, metadata_, file);
    if (!outcome.leftOut.empty()) leaveOut(std::exchange(outcome.leftOut, {}));
    return outcome;
}

std::string KeepingFiles::leftOut() const {
    return leftOut_.empty() ? leftOut_ : "left out of the metadata: " + leftOut_;
}

}  // namespace tessarine
