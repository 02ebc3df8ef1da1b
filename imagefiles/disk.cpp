#include "imagefiles/disk.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

#include "imagefiles/leftovers.h"

namespace tessarine {

namespace {

constexpr const char* draftPrefix = ".tessarine-";
constexpr mode_t modeOfNewFiles = 0666;

std::string folderOfTarget(const std::string& target) {
    const size_t name = target.find_last_of('/') + 1;
    return name == 0 ? "." : target.substr(0, name);
}

/// A name that no other process uses, on this machine or on another that shares the folder.
std::string hiddenNameBeside(const std::string& target) {
    std::random_device random;
    const uint64_t number = uint64_t{random()} << 32 | random();
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
    const size_t name = target.find_last_of('/') + 1;
    const size_t dot = target.find_last_of('.');
    const std::string extension =
        dot == std::string::npos || dot < name ? std::string() : target.substr(dot);
    return target.substr(0, name) + Draft::namePrefix() + text + extension;
}

}  // namespace

Draft::Draft(const std::string& target, Kind wanted) : target_(target) {
    // Why a file without a name cannot be made is of no interest: the other kind either works or
    // fails for a reason that can be told.
    if ((wanted == Kind::unnamed && openUnnamed()) || openHidden()) return;
    fail("cannot create the file", std::strerror(errno));
}

Draft::~Draft() {
    // While it is held nobody else removes it.
    if (!hidden_.empty()) ::unlink(hidden_.c_str());
    if (file_ >= 0) ::close(file_);
}

bool Draft::openUnnamed() {
    file_ = ::open(folderOfTarget(target_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, modeOfNewFiles);
    if (file_ < 0) return false;
    // It gets its name by way of that folder, which some sandboxes lack.
    struct stat entry {};
    if (::stat(path().c_str(), &entry) == 0) {
        return hold(file_);  // nobody else knows of it
    }
    ::close(file_);
    file_ = -1;
    return false;
}

bool Draft::openHidden() {
    // Another run that starts at this very moment may take the file for a leftover before it is
    // held; that does not happen every time.
    constexpr int attempts = 100;
    for (int i = 0; i < attempts; ++i) {
        const std::string name = hiddenNameBeside(target_);
        file_ = ::open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, modeOfNewFiles);
        if (file_ < 0) return false;
        if (hold(file_) && standsUnder(name, file_)) {
            hidden_ = name;
            return true;
        }
        ::close(file_);
        file_ = -1;
    }
    errno = EAGAIN;
    return false;
}

bool Draft::writeThrough(OutputFile& output) {
    if (!isOpen()) return false;
    const int copy = ::fcntl(file_, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) {
        fail("cannot write the file", std::strerror(errno));
        return false;
    }
    if (output.adopt(copy, target_)) return true;
    failure_ = output.failure();
    return false;
}

std::string Draft::path() const {
    return hidden_.empty() ? "/proc/self/fd/" + std::to_string(file_) : hidden_;
}

bool Draft::isDraft(const std::string& fileName) {
    return fileName.compare(0, std::strlen(draftPrefix), draftPrefix) == 0;
}

std::string Draft::namePrefix() { return draftPrefix + machineMark() + "-"; }

Draft::End Draft::fail(const std::string& what, const std::string& why) {
    failure_ = what + " " + target_ + ": " + why;
    return End::failed;
}

int Draft::nameIt(const std::string& name) const {
    return ::linkat(AT_FDCWD, path().c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0
               ? 0
               : errno;
}

/// Gives a file the target's name. \return 0, or the system's error
int Draft::takeTarget(bool replaceTarget) {
    if (hidden_.empty()) {
        const int error = nameIt(target_);
        if (error != EEXIST || !replaceTarget) return error;
        // A name that is taken goes to another file only from a name.
        const std::string name = hiddenNameBeside(target_);
        if (const int failed = nameIt(name)) return failed;
        hidden_ = name;
    }
    if (replaceTarget) {
        if (::rename(hidden_.c_str(), target_.c_str()) != 0) return errno;
    } else if (::renameat2(AT_FDCWD, hidden_.c_str(), AT_FDCWD, target_.c_str(),
                           RENAME_NOREPLACE) != 0) {
        // Network file systems do not know that call; a second name does the same in two steps,
        // and the first one goes with the draft.
        if (errno != EINVAL && errno != ENOSYS) return errno;
        return ::link(hidden_.c_str(), target_.c_str()) == 0 ? 0 : errno;
    }
    hidden_.clear();
    return 0;
}

bool Draft::setTime(const timespec& time) {
    const timespec times[2] = {{0, UTIME_OMIT}, time};
    return isOpen() && ::futimens(file_, times) == 0;
}

Draft::End Draft::publish(bool replaceTarget) {
    if (!isOpen()) return End::failed;
    struct stat target {};
    if (replaceTarget && ::lstat(target_.c_str(), &target) == 0) {
        if (S_ISDIR(target.st_mode)) return fail("cannot replace", "it is a folder");
        if (!S_ISREG(target.st_mode) && !S_ISLNK(target.st_mode))
            return fail("cannot replace", "it is no file");
        if (S_ISREG(target.st_mode))
            static_cast<void>(::fchmod(file_, target.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO)));
    }
    if (::fsync(file_) != 0) return fail("cannot write the file", std::strerror(errno));
    const int error = takeTarget(replaceTarget);
    if (error == EEXIST && !replaceTarget) return End::targetKept;
    if (error != 0)
        return fail(replaceTarget ? "cannot replace" : "cannot create the file",
                    std::strerror(error));
    return End::published;
}

void syncFolder(const std::string& folder) {
    const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    static_cast<void>(::fsync(file));
    ::close(file);
}

std::string whyNotReadable(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::strerror(errno);
    if (S_ISDIR(status.st_mode)) return "it is a folder";
    if (!S_ISREG(status.st_mode)) return "it is no regular file";
    if (::access(path.c_str(), R_OK) != 0) return std::strerror(errno);
    return {};
}

}  // namespace tessarine
