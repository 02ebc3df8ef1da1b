#include "imagefiles/temp_folder.h"

#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "imagefiles/image_files.h"
#include "imagefiles/leftovers.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

/// A folder that nobody else can have put there. mkdtemp makes it with mode 0700.
std::string makeFolderUnder(const std::string& parent, const std::string& prefix) {
    std::string pattern = parent + prefix + "XXXXXX";
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
            make();
        }
        return path_;
    }

  private:
    void make() {
        const std::string parent = systemFolder();
        removeLeftTemporaryFolders(parent);
        // Another program that starts at this very moment may take the folder for a leftover
        // before it is held.
        bool isOurs = false;
        while (!isOurs) {
            path_ = makeFolderUnder(parent, temporaryFolderPrefix());
            if (held_ >= 0) ::close(held_);
            held_ = ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            isOurs = held_ < 0 ? isFolder(path_)  // out of descriptors: it will do unheld
                               : hold(held_) && standsUnder(path_, held_);
        }
        owner_ = getpid();
    }

    void remove() {
        const std::lock_guard lock(mutex_);
        if (owner_ != getpid()) return;
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
        owner_ = 0;
    }

    std::mutex mutex_;
    std::string path_;
    int held_ = -1;
    pid_t owner_ = 0;
};

}  // namespace

std::string TempFolder() { return ProcessFolder::instance().path(); }

LoadFolder::LoadFolder() : path_(makeFolderUnder(TempFolder(), "load-")) {}

LoadFolder::~LoadFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace tessarine
