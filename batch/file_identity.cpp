#include "batch/file_identity.h"

#include <sys/stat.h>

namespace tessarine {

std::optional<FileIdentity> identityOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity(status.st_dev, status.st_ino);
}

}  // namespace tessarine
