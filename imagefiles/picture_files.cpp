#include "imagefiles/picture_files.h"

#include "imagefiles/format_table.h"

namespace tessarine {

std::string_view errorClass(FileError error) {
    switch (error) {
        case FileError::none:
            break;
        case FileError::unreadable:
            return "unreadable";
        case FileError::tooLarge:
            return "too-large";
        case FileError::timedOut:
            return "timed-out";
        case FileError::codecDied:
            return "codec-died";
        case FileError::cannotWrite:
            return "cannot-write";
    }
    return {};
}

Bitmap savedBitmap(const PictureHolder& picture, const std::string& extension) {
    return routeOf(extension) == SaveRoute::devil ? picture.picture() : picture.drawn();
}

}  // namespace tessarine
