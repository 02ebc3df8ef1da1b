#pragma once

#include <cstdio>
#include <string>

namespace tessarine {

/// Writes a picture list of what failed, by full paths, each as soon as it is known, so that a run
/// that is ended early leaves the list of what had failed by then.
class FailedList {
  public:
    /// \param target  a file, which is written anew; empty for none
    /// \throws Refusal (nothingStarts) where it cannot be written
    explicit FailedList(const std::string& target);
    ~FailedList();
    FailedList(const FailedList&) = delete;
    FailedList& operator=(const FailedList&) = delete;

    /// Names a path on standard error that such a list cannot hold.
    void add(const std::string& picture);
    /// \return whether the file took all of it
    bool isWhole() const { return whole_; }

  private:
    std::FILE* file_ = nullptr;
    bool whole_ = true;
};

}  // namespace tessarine
