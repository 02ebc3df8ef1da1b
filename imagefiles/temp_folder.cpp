#include "imagefiles/temp_folder.h"

#include <filesystem>
#include <mutex>
#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "imagefiles/image_files.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

/// A folder that nobody else can have put there. mkdtemp makes it with mode 0700.
std::string makeFolderUnder(const std::string& parent) {
    std::string pattern = parent + "tessarine-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr)
        throw StatementFailed("no temporary folder can be made under " + parent);
    return pattern + "/";
}

std::string systemFolder() {
    const char* chosen = getenv("TMPDIR");
    std::string folder = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
    if (folder.back() != '/') folder += '/';
    return folder;
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// The folder of the running process. A process that forked off does not take its parent's along:
/// it gets one of its own when it first needs one, and only the process that made a folder
/// removes it.
class ProcessFolder {
  public:
    static ProcessFolder& instance() {
        // Never destroyed: a load may still run on another thread while the process ends.
        static ProcessFolder* const only = [] {
            auto* made = new ProcessFolder;
            pthread_atfork([] { instance().mutex_.lock(); }, [] { instance().mutex_.unlock(); },
                           [] { instance().mutex_.unlock(); });
            std::atexit([] { instance().remove(); });
            return made;
        }();
        return *only;
    }

    std::string path() {
        const std::lock_guard lock(mutex_);
        // Someone who tidies the system's temp folder may have taken it away.
        if (owner_ != getpid() || !isFolder(path_)) {
            path_ = makeFolderUnder(systemFolder());
            owner_ = getpid();
        }
        return path_;
    }

  private:
    void remove() {
        const std::lock_guard lock(mutex_);
        if (owner_ != getpid()) return;
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
        owner_ = 0;
    }

    std::mutex mutex_;
    std::string path_;
    pid_t owner_ = 0;
};

}  // namespace

std::string TempFolder() { return ProcessFolder::instance().path(); }

LoadFolder::LoadFolder() : path_(makeFolderUnder(TempFolder())) {}

LoadFolder::~LoadFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace tessarine
