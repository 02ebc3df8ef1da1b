#include "batch/file_identity.h"

#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace tessarine {

std::optional<FileIdentity> identityOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity(status.st_dev, status.st_ino);
}

std::string behindLinks(const std::string& path) {
    namespace fs = std::filesystem;
    constexpr int mostLinks = 40;  // as many as the system follows
    std::error_code failure;
    fs::path end = path;
    for (int i = 0; i < mostLinks && fs::is_symlink(fs::symlink_status(end, failure)); ++i)
        end = end.parent_path() / fs::read_symlink(end, failure);
    return end;
}

}  // namespace tessarine
