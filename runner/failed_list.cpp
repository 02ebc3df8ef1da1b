#include "runner/failed_list.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "batch/list_files.h"
#include "runner/messages.h"
#include "runner/refusal.h"

namespace tessarine {

FailedList::FailedList(const std::string& target) {
    if (target.empty()) return;
    file_ = std::fopen(target.c_str(), "we");
    if (file_ == nullptr)
        throw Refusal(ExitStatus::nothingStarts, fmt::format("--failed-list: '{}' cannot be "
                                                             "written: {}",
                                                             target, std::strerror(errno)));
}

FailedList::~FailedList() {
    if (file_ != nullptr) std::fclose(file_);
}

void FailedList::add(const std::string& picture) {
    if (file_ == nullptr) return;
    // Whoever reads the list may stand in another folder.
    std::error_code failure;
    const std::string path = std::filesystem::absolute(picture, failure);
    const std::string record = pictureRecord(path);
    if (failure || parsePictureList(record).front() != path)
        return complain(
            fmt::format("--failed-list: '{}' is not in it; a picture list holds paths "
                        "of at most {} bytes without blanks at their ends",
                        path, pictureRecordBytes));
    const bool taken = std::fwrite(record.data(), 1, record.size(), file_) == record.size() &&
                       std::fflush(file_) == 0;
    whole_ = whole_ && taken;
}

}  // namespace tessarine
