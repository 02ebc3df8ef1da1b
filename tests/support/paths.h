#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tessarine::tests {

/// The material that lies beside a developer's checkout: sample files of many formats and
/// expected pictures. A user's clone has none; tests that need it skip.
inline std::filesystem::path sharedFolder() {
    return std::filesystem::path(TESSARINE_SOURCE_DIR) / ".." / "shared";
}

/// A folder of the test's own, removed at the end of its scope.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tessarine-test-XXXXXX");
        path_ = mkdtemp(pattern.data());
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

}  // namespace tessarine::tests
