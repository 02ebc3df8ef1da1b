#pragma once

#include <string>

namespace tessarine {

/// A file that is written beside its target and takes the target's name when it is whole. Until
/// then it has a hidden name of its own, with the target's extension; without publish() it is
/// removed.
class Draft {
  public:
    /// What became of publishing.
    enum class End {
        published,
        targetKept,  ///< the target exists and was not to be replaced
        failed,
    };

    explicit Draft(const std::string& target);
    ~Draft();
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    /// Where the file is to be written.
    const std::string& path() const { return path_; }
    /// Whether a file's name is that of a draft, of this process or of one that was killed.
    static bool isDraft(const std::string& fileName);

    /// Has the file's bytes reach the disk and gives it the target's name, in one step.
    End publish(bool replaceTarget);
    /// Why publishing failed.
    const std::string& failure() const { return failure_; }

  private:
    End fail(int error);

    std::string target_;
    std::string path_;
    std::string failure_;
};

/// Why the system does not give a file for reading; empty where it does. Folders, pipes and
/// devices are no picture files.
std::string whyNotReadable(const std::string& path);

}  // namespace tessarine
