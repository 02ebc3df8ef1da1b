#include "imagefiles/output_file.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace tessarine {

OutputFile::~OutputFile() {
    if (isOpen()) discard();
}

void OutputFile::start(std::FILE* file, const std::string& path, bool madeHere) {
    path_ = path;
    madeHere_ = madeHere;
    failure_.clear();
    size_ = 0;
    file_ = file;
}

bool OutputFile::create(const std::string& path) {
    if (isOpen()) discard();
    start(std::fopen(path.c_str(), "w+be"), path, true);
    if (!isOpen()) fail("cannot create the file");
    return isOpen();
}

bool OutputFile::adopt(int file, const std::string& name) {
    if (isOpen()) discard();
    start(::fdopen(file, "w+b"), name, false);
    if (isOpen()) return true;
    fail("cannot write the file");
    ::close(file);
    return false;
}

size_t OutputFile::write(const void* bytes, size_t count) {
    if (count == 0 || !isOpen()) return 0;
    const size_t taken = std::fwrite(bytes, 1, count, file_);
    if (taken != count) fail("cannot write the file");
    return taken;
}

size_t OutputFile::read(void* bytes, size_t count) {
    if (count == 0 || !isOpen()) return 0;
    const size_t got = std::fread(bytes, 1, count, file_);
    if (got != count) fail("cannot read back the file");
    return got;
}

bool OutputFile::seek(int64_t offset, int origin) {
    if (!isOpen()) return false;
    if (fseeko(file_, offset, origin) == 0) return true;
    fail("cannot write the file");
    return false;
}

int64_t OutputFile::tell() const { return isOpen() ? ftello(file_) : -1; }

bool OutputFile::cutHere() {
    if (!isOpen()) return false;
    const int64_t size = tell();
    if (size >= 0 && std::fflush(file_) == 0 && ::ftruncate(fileno(file_), size) == 0) return true;
    fail("cannot write the file");
    return false;
}

bool OutputFile::finish() {
    if (!isOpen()) return false;
    // Closing writes what is still buffered: a full disk may show here for the first time.
    if (std::fflush(file_) != 0) fail("cannot write the file");
    struct stat status {};
    if (fstat(fileno(file_), &status) == 0) size_ = status.st_size;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed) fail("cannot close the file");
    if (!failure_.empty() && madeHere_) unlink(path_.c_str());
    return failure_.empty();
}

void OutputFile::discard() {
    if (!isOpen()) return;
    std::fclose(file_);
    file_ = nullptr;
    if (madeHere_) unlink(path_.c_str());
}

void OutputFile::fail(const std::string& what) {
    if (failure_.empty()) failure_ = what + " " + path_ + ": " + std::strerror(errno);
}

}  // namespace tessarine
