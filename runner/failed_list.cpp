#include "runner/failed_list.h"

#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "batch/list_files.h"
#include "runner/messages.h"

namespace tessarine {

// A list is never for standard output: "-" is a name here.
FailedList::FailedList(const std::string& target)
    : file_("--failed-list", target == "-" ? "./-" : target) {}

void FailedList::add(const std::string& picture) {
    if (!file_.isOpen()) return;
    // Whoever reads the list may stand in another folder.
    std::error_code failure;
    const std::string path = std::filesystem::absolute(picture, failure);
    if (failure || !fitsPictureList(path))
        return complain(
            fmt::format("--failed-list: '{}' is not in it; a picture list holds paths "
                        "of at most {} bytes without blanks at their ends",
                        path, pictureRecordBytes));
    file_.add(pictureRecord(path));
}

}  // namespace tessarine
