#include "runner/telling_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "runner/refusal.h"

namespace tessarine {

namespace {

constexpr const char* standardOutput = "-";

bool isRegular(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

[[noreturn]] void refuse(const std::string& option, const std::string& target) {
    throw Refusal(ExitStatus::nothingStarts, fmt::format("{}: '{}' cannot be written: {}", option,
                                                         target, std::strerror(errno)));
}

}  // namespace

TellingFile::TellingFile(const std::string& option, const std::string& target)
    : option_(option), target_(target) {
    if (target.empty()) return;
    file_ = Descriptor(target == standardOutput
                           ? STDOUT_FILENO
                           : ::open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    if (!file_) refuse(option_, target_);
}

TellingFile::~TellingFile() {
    if (target_ == standardOutput) file_.release();
}

void TellingFile::beginAnew() {
    if (!file_ || target_ == standardOutput || !isRegular(file_.get())) return;
    if (::ftruncate(file_.get(), 0) != 0) refuse(option_, target_);
}

void TellingFile::add(std::string_view piece) {
    if (!file_) return;
    size_t taken = 0;
    while (taken < piece.size()) {
        const ssize_t now = ::write(file_.get(), piece.data() + taken, piece.size() - taken);
        if (now < 0 && errno == EINTR) continue;
        if (now <= 0) break;
        taken += static_cast<size_t>(now);
    }
    if (taken == piece.size()) return;
    whole_ = false;
    takeBack(taken);
}

void TellingFile::takeBack(size_t bytes) const {
    struct stat status {};
    const off_t end = ::lseek(file_.get(), 0, SEEK_CUR);
    // Standard output may be a file that others have written to since.
    if (bytes == 0 || !isRegular(file_.get()) || ::fstat(file_.get(), &status) != 0 ||
        status.st_size != end)
        return;
    const off_t start = end - static_cast<off_t>(bytes);
    if (::ftruncate(file_.get(), start) == 0)
        static_cast<void>(::lseek(file_.get(), start, SEEK_SET));
}

}  // namespace tessarine
