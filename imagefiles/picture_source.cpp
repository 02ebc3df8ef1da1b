#include "imagefiles/picture_source.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "imagefiles/picture_files.h"

namespace tessarine {

namespace {

[[noreturn]] void refuseFile(const std::string& why) {
    throw FileRefused(FileError::unreadable, why);
}

void expectRegular(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) refuseFile("it is a folder");
    if (!S_ISREG(status.st_mode)) refuseFile("it is no regular file");
}

}  // namespace

std::string inLowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::vector<std::string> companionPaths(const std::string& path, const std::string& extension) {
    const std::string lower = inLowerCase(extension);
    std::filesystem::path beside(path);
    // A cut keeps its colours in a palette file of its own name, in the spelling of whatever
    // system it came from.
    if (lower == "cut")
        return {beside.replace_extension(".pal"), beside.replace_extension(".PAL"),
                beside.replace_extension(".Pal")};
    // Pictures of a game whose colours lie in one file for all.
    if (lower == "lmp" || lower == "mdl") return {beside.replace_filename("palette.lmp")};
    return {};
}

int openPictureFile(const std::string& path) {
    // Opening alone sets some devices going, and lets go who waits at a pipe: looked at first. It
    // may be another file by the time that it is open.
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) refuseFile(std::strerror(errno));
    expectRegular(status);
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) refuseFile(std::strerror(errno));
    try {
        if (::fstat(file, &status) != 0) refuseFile(std::strerror(errno));
        expectRegular(status);
    } catch (const FileRefused&) {
        ::close(file);
        throw;
    }
    return file;
}

std::vector<uint8_t> readWholeFile(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) refuseFile(std::strerror(errno));
    if (!S_ISREG(status.st_mode)) refuseFile("it is no regular file");
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size > maxFileBytes) throw FileRefused(FileError::tooLarge, "the file is too large");
    std::vector<uint8_t> bytes;
    try {
        bytes.resize(size);
    } catch (const std::exception&) {
        throw FileRefused(FileError::tooLarge, "memory does not suffice for the file");
    }
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t got =
            ::pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0)
            refuseFile(std::string("the file cannot be read to its end: ") + std::strerror(errno));
        if (got == 0) refuseFile("the file cannot be read to its end");
        done += static_cast<size_t>(got);
    }
    return bytes;
}

}  // namespace tessarine
