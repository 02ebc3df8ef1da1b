#include "batch/run_report.h"

namespace tessarine {

void RunReport::add(PictureReport entry) {
    entries_.push_back(std::move(entry));
    if (onEntry) onEntry(entries_.back());
}

std::string statusText(PictureReport::Status status) {
    switch (status) {
        case PictureReport::Status::saved:
            return "saved";
        case PictureReport::Status::kept:
            return "kept";
        case PictureReport::Status::failed:
            break;
    }
    return "failed";
}

}  // namespace tessarine
