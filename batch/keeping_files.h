#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "batch/picture_task.h"
#include "imagefiles/picture_files.h"

namespace tessarine {

/// Reads and writes one picture, with what its file says beyond its pixels as a person wishes.
class KeepingFiles : public PictureFiles {
  public:
    KeepingFiles(PictureFiles& files, const MetadataWishes& wishes)
        : files_(files), wishes_(wishes) {}

    ReadOutcome read(const std::string& path, const std::string& extension) override;
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override;

    /// When the file that was read last was changed last; nothing where that is not kept.
    const std::optional<timespec>& fileTime() const { return fileTime_; }
    /// Notes something else that was left out.
    void leaveOut(const std::string& what) { leftOut_ += (leftOut_.empty() ? "" : "; ") + what; }
    /// What of the metadata was left out and why, in words; empty for nothing.
    std::string leftOut() const;

  private:
    PictureFiles& files_;
    MetadataWishes wishes_;
    MetadataToAdd metadata_;
    std::optional<timespec> fileTime_;
    std::string leftOut_;
};

}  // namespace tessarine
