#include "wizard/instance_lock.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "batch/platform.h"

namespace tessarine {

InstanceLock::InstanceLock(const std::string& path)
    : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (file_ < 0) return;
    // The first instance could have the file for itself. Then all of them share it, so that the
    // one that comes next meets those that are left, whichever they are.
    othersRun_ = flock(file_, LOCK_EX | LOCK_NB) != 0;
    // Nobody holds it alone for longer than this takes.
    flock(file_, LOCK_SH);
}

InstanceLock::~InstanceLock() {
    if (file_ >= 0) close(file_);
}

std::string InstanceLock::usersFile() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const bool usable =
        runtime != nullptr && *runtime == folderSeparator && access(runtime, W_OK | X_OK) == 0;
    return (usable ? std::string(runtime) : userConfigurationFolder()) + "/tessarine.lock";
}

}  // namespace tessarine
