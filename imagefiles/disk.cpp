#include "imagefiles/disk.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace tessarine {

namespace {

constexpr const char* draftPrefix = ".tessarine-";

/// A name that no other process uses, on this machine or on another that shares the folder.
std::string draftBeside(const std::string& target) {
    std::random_device random;
    const uint64_t number = uint64_t{random()} << 32 | random();
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
    const size_t name = target.find_last_of('/') + 1;
    const size_t dot = target.find_last_of('.');
    const std::string extension =
        dot == std::string::npos || dot < name ? std::string() : target.substr(dot);
    return target.substr(0, name) + draftPrefix + text + extension;
}

int syncFile(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return errno;
    const int error = ::fsync(file) == 0 ? 0 : errno;
    ::close(file);
    return error;
}

}  // namespace

Draft::Draft(const std::string& target) : target_(target), path_(draftBeside(target)) {}

Draft::~Draft() {
    if (!path_.empty()) ::unlink(path_.c_str());
}

bool Draft::isDraft(const std::string& fileName) {
    return fileName.compare(0, std::strlen(draftPrefix), draftPrefix) == 0;
}

Draft::End Draft::fail(int error) {
    failure_ = std::strerror(error);
    return End::failed;
}

Draft::End Draft::publish(bool replaceTarget) {
    if (const int error = syncFile(path_)) return fail(error);
    int error = 0;
    if (replaceTarget) {
        if (::rename(path_.c_str(), target_.c_str()) != 0) error = errno;
    } else {
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) != 0)
            error = errno;
        // Network file systems do not know that call; a second name does the same in two steps.
        if (error == EINVAL || error == ENOSYS) {
            error = ::link(path_.c_str(), target_.c_str()) == 0 ? 0 : errno;
            if (error == 0) return End::published;
        }
    }
    if (error == EEXIST && !replaceTarget) return End::targetKept;
    if (error != 0) return fail(error);
    path_.clear();
    return End::published;
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
