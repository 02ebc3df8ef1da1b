#pragma once

#include <string>

#include "runner/telling_file.h"

namespace tessarine {

/// Writes a picture list of what failed, by full paths, each as soon as it is known, so that a run
/// that is ended early leaves the list of what had failed by then.
class FailedList {
  public:
    /// \param target  a file; empty for none
    /// \throws Refusal (nothingStarts) where it cannot be written
    explicit FailedList(const std::string& target);

    /// Takes away an older list. Comes before the first picture.
    /// \throws Refusal (nothingStarts)
    void beginAnew() { file_.beginAnew(); }
    /// Names a path on standard error that such a list cannot hold.
    void add(const std::string& picture);
    /// \return whether the file took all of it
    bool isWhole() const { return file_.isWhole(); }

  private:
    TellingFile file_;
};

}  // namespace tessarine
