#include "imagefiles/leftovers.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "imagefiles/disk.h"

namespace tessarine {

namespace {

/// Neither number alone will do: containers share their image's, and many hosts have one name.
std::string describeMachine() {
    std::string text;
    std::ifstream("/etc/machine-id") >> text;
    std::array<char, 256> host{};
    if (::gethostname(host.data(), host.size() - 1) == 0) text += std::string(":") + host.data();
    return text;
}

/// The 32-bit hash of Fowler, Noll and Vo.
uint32_t hashOf(const std::string& text) {
    uint32_t hash = 2166136261U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return hash;
}

std::vector<std::string> namesIn(const std::string& folder,
                                 const std::function<bool(const std::string&)>& wanted) {
    std::vector<std::string> names;
    DIR* const listing = ::opendir(folder.c_str());
    if (listing == nullptr) return names;
    while (const dirent* entry = ::readdir(listing))
        if (wanted(entry->d_name)) names.emplace_back(entry->d_name);
    ::closedir(listing);
    return names;
}

/// Takes hold of a file that stands under a name, if nobody has it.
class Leftover {
  public:
    explicit Leftover(const std::string& path)
        : file_(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
        if (file_ < 0) return;
        struct stat status {};
        // Without the lock nothing is known: where a file system has none, all stays.
        isOurs_ = ::fstat(file_, &status) == 0 && S_ISREG(status.st_mode) &&
                  ::flock(file_, LOCK_EX | LOCK_NB) == 0;
    }
    ~Leftover() {
        if (file_ >= 0) ::close(file_);
    }
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;

    bool isOurs() const { return isOurs_; }

  private:
    int file_;
    bool isOurs_ = false;
};

std::string within(const std::string& folder, const std::string& name) {
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

}  // namespace

const std::string& machineMark() {
    static const std::string mark = [] {
        char text[9];
        std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(hashOf(describeMachine())));
        return std::string(text);
    }();
    return mark;
}

bool hold(int file) { return ::flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

bool standsUnder(const std::string& path, int file) {
    struct stat held {};
    struct stat named {};
    return ::fstat(file, &held) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

int removeLeftDrafts(const std::string& folder) {
    const std::string prefix = Draft::namePrefix();
    int removed = 0;
    for (const std::string& name :
         namesIn(folder, [&](const std::string& name) { return name.starts_with(prefix); })) {
        const std::string path = within(folder, name);
        const Leftover draft(path);
        if (draft.isOurs() && ::unlink(path.c_str()) == 0) ++removed;
    }
    return removed;
}

}  // namespace tessarine
