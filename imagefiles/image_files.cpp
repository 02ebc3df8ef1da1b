#include "imagefiles/image_files.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

#include "imagefiles/picture_source.h"

// Loading and saving as the program knows them: what is read and written by whom is behind the
// seam, and no picture library is known here.

namespace tessarine {

namespace {

/// Whether anything has this name, be it a link that leads nowhere.
bool exists(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

/// Deletes a file or a link. Folders, devices and pipes are nothing that a picture replaces.
/// \throws StatementFailed
void deleteFile(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode))
        throw StatementFailed("cannot replace " + path + ": it is no file");
    if (unlink(path.c_str()) != 0)
        throw StatementFailed("cannot delete " + path + ": " + std::strerror(errno));
}

SaveOutcome failed(FileError error, const std::string& why) {
    SaveOutcome outcome;
    outcome.error = error;
    outcome.message = why;
    return outcome;
}

SaveOutcome save(const PictureHolder& picture, const std::string& extension,
                 const std::string& path, int16_t formatIndex, PictureFiles& files) {
    OutputFile file;
    if (!file.create(path)) return failed(FileError::cannotWrite, file.failure());
    const WriteOutcome written =
        files.write(savedBitmap(picture, extension), extension, formatIndex, file);
    if (written.error != FileError::none) {
        file.discard();
        return failed(written.error, written.message);
    }
    if (!file.finish()) return failed(FileError::cannotWrite, file.failure());
    SaveOutcome outcome;
    outcome.status = SaveOutcome::Status::saved;
    outcome.bytes = file.size();
    return outcome;
}

/// Makes room for the output. \return what came of the save, where that is decided here
std::optional<SaveOutcome> makeRoom(const std::string& path, bool overwrite) {
    if (!exists(path)) return std::nullopt;
    if (!overwrite) {
        SaveOutcome outcome;
        outcome.status = SaveOutcome::Status::kept;
        return outcome;
    }
    // A file that cannot be deleted may still be one that can be written anew.
    try {
        deleteFile(path);
    } catch (const StatementFailed& failure) {
        struct stat status {};
        if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
            return failed(FileError::cannotWrite, failure.what());
    }
    return std::nullopt;
}

}  // namespace

std::optional<Bitmap> LoadImageFile(mFormat& format, const std::string& path,
                                    const std::string& extension, PictureFiles& files) {
    const std::string lower = inLowerCase(extension);
    ReadOutcome read;
    if (isPlatformExtension(lower)) {
        read.error = FileError::unreadable;
        read.message = "the platform's loader reads files of this extension";
    } else {
        read = files.read(path, lower);
    }
    if (!read.bitmap) {
        format.lastFileError = read.error;
        format.SetFormatError(read.message, false);
        return std::nullopt;
    }
    format.lastFileError = FileError::none;
    format.loadedWidth = static_cast<int16_t>(format.FreeImage_GetBitmapWidth(read.bitmap));
    format.loadedHeight = static_cast<int16_t>(format.FreeImage_GetBitmapHeight(read.bitmap));
    format.loadedDepth = read.depth;
    return std::move(read.bitmap);
}

bool isPlatformExtension(const std::string& extension) {
    return extension == "wmf" || extension == "emf" || extension == "dib" || extension == "gif";
}

LoadedPicture LoadPicture(const std::string& path, const std::string& extension,
                          PictureFiles& files) {
    if (!isPlatformExtension(extension))
        throw FileRefused(FileError::unreadable,
                          "the platform knows no pictures of this extension");
    ReadOutcome read = files.read(path, extension);
    if (!read.bitmap) throw FileRefused(read.error, read.message);
    return {std::move(*read.bitmap), read.depth};
}

SaveOutcome SaveImageFile(mFormat& format, PictureHolder& picture, const std::string& extension,
                          const std::string& path, bool overwrite, int16_t formatIndex,
                          PictureFiles& files) {
    SaveOutcome outcome;
    try {
        if (const std::optional<SaveOutcome> decided = makeRoom(path, overwrite))
            outcome = *decided;
        else
            outcome = save(picture, extension, path, formatIndex, files);
    } catch (const MemoryFailed&) {
        outcome = failed(FileError::tooLarge, "not enough memory to save the picture");
    } catch (const std::bad_alloc&) {
        outcome = failed(FileError::tooLarge, "not enough memory to save the picture");
    } catch (const StatementFailed& failure) {
        outcome = failed(FileError::cannotWrite, failure.what());
    }
    if (outcome.status == SaveOutcome::Status::failed)
        format.SetFormatError(outcome.message, false);
    return outcome;
}

}  // namespace tessarine
