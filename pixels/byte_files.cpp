#include "pixels/byte_files.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tessarine {

namespace {

class File {
  public:
    File(const std::string& path, int flags)
        : path_(path), handle_(open(path.c_str(), flags | O_CLOEXEC, 0666)) {
        if (handle_ < 0) fail(errno);
    }
    ~File() {
        if (handle_ >= 0) close(handle_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::string readAll(size_t most) const {
        struct stat status {};
        if (fstat(handle_, &status) != 0) fail(errno);
        if (status.st_size < 0 || static_cast<size_t>(status.st_size) > most) fail(EFBIG);
        return readFirst(static_cast<size_t>(status.st_size));
    }

    std::string readFirst(size_t count) const {
        std::string bytes;
        try {
            bytes.resize(count);
        } catch (const std::bad_alloc&) {
            fail(ENOMEM);
        }
        size_t done = 0;
        while (done < count) {
            const ssize_t got = read(handle_, bytes.data() + done, count - done);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) fail(errno);
            if (got == 0) break;
            done += static_cast<size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }

    void writeAll(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t put = write(handle_, bytes.data(), bytes.size());
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) fail(errno);
            bytes.remove_prefix(static_cast<size_t>(put));
        }
    }

    /// Closing tells of writes that were put off, on network file systems for one.
    void closeWritten() {
        const int handle = handle_;
        handle_ = -1;
        if (close(handle) != 0 && errno != EINTR) fail(errno);
    }

  private:
    [[noreturn]] void fail(int error) const {
        throw std::system_error(error, std::generic_category(), path_);
    }

    std::string path_;
    int handle_;
};

}  // namespace

std::string readBytes(const std::string& path, size_t most) {
    return File(path, O_RDONLY).readAll(most);
}

void writeBytes(const std::string& path, std::string_view bytes) {
    File file(path, O_WRONLY | O_CREAT);
    file.writeAll(bytes);
    file.closeWritten();
}

std::string readFirstOrMake(const std::string& path, size_t count) {
    return File(path, O_RDWR | O_CREAT).readFirst(count);
}

}  // namespace tessarine
