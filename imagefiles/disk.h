#pragma once

#include <ctime>
#include <string>

#include "imagefiles/output_file.h"

namespace tessarine {

/// A file that takes its target's name when it is whole. Until then it has no name at all, so that
/// nothing is left of it whatever ends the program; where the file system does not know such files
/// it is a hidden file beside its target. Without publish() it is gone.
class Draft {
  public:
    /// What became of publishing.
    enum class End {
        published,
        targetKept,  ///< the target exists and was not to be replaced
        failed,
    };
    enum class Kind { unnamed, hidden };

    /// Makes the file in the target's folder, with the mode of any new file.
    /// \param wanted  `unnamed` becomes `hidden` where the file system does not know it
    explicit Draft(const std::string& target, Kind wanted = Kind::unnamed);
    ~Draft();
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    /// Whether the file could be made; failure() tells why not.
    bool isOpen() const { return file_ >= 0; }
    Kind kind() const { return hidden_.empty() ? Kind::unnamed : Kind::hidden; }
    /// Has what `output` is given go into the file, from its beginning. Its messages name the
    /// target. \return whether it is open
    bool writeThrough(OutputFile& output);
    /// A path for those who open the file by one.
    std::string path() const;
    /// Whether a file's name is that of a draft, of this process or of one that was killed.
    static bool isDraft(const std::string& fileName);
    /// What the names of this machine's hidden drafts begin with.
    static std::string namePrefix();

    /// Has the file say that it was changed last at a time. When all writing is done.
    /// \return whether the file system takes that
    bool setTime(const timespec& time);
    /// Has the file's bytes reach the disk and gives it the target's name, in one step. A file
    /// that is replaced hands its permission bits on. A link is replaced, never followed; folders,
    /// pipes and devices are not replaced. Once, and when all writing is done.
    End publish(bool replaceTarget);
    /// Why it could not be made, written or published; names the target.
    const std::string& failure() const { return failure_; }

  private:
    bool openUnnamed();
    bool openHidden();
    int nameIt(const std::string& name) const;
    int takeTarget(bool replaceTarget);
    End fail(const std::string& what, const std::string& why);

    std::string target_;
    std::string hidden_;
    std::string failure_;
    int file_ = -1;
};

/// Has the names in a folder reach the disk, as far as its file system can.
void syncFolder(const std::string& folder);

/// Why the system does not give a file for reading; empty where it does. Folders, pipes and
/// devices are no picture files.
std::string whyNotReadable(const std::string& path);

}  // namespace tessarine
