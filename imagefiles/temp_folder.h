#pragma once

#include <string>

namespace tessarine {

/// A new empty folder of mode 0700 below TempFolder(), for one load; removed, with all in it, at
/// the end of its scope.
class LoadFolder {
  public:
    /// \throws StatementFailed where the folder cannot be made
    LoadFolder();
    ~LoadFolder();
    LoadFolder(const LoadFolder&) = delete;
    LoadFolder& operator=(const LoadFolder&) = delete;

    /// Ends in "/".
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace tessarine
