#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "imagefiles/format_bridges.h"
#include "imagefiles/picture.h"
#include "imagefiles/picture_files.h"

namespace tessarine {

/// What came out of reading a file by the platform's picture loader.
struct LoadedPicture {
    Bitmap bitmap;
    int16_t depth = 0;  ///< bits per pixel of the file's own image; 24 for a drawn metafile
};

/// Reads a picture file by the route that its extension names, and by nothing else: a file of
/// another format under that extension is refused. Nothing is thrown.
/// \param extension  in any case, without a dot
/// \return the bitmap, and the figures in `format`; or nothing, with the figures as they were and
///         the reason in lastFileError and lastFormatError
std::optional<Bitmap> LoadImageFile(mFormat& format, const std::string& path,
                                    const std::string& extension,
                                    PictureFiles& files = localFiles());

/// Whether an extension (lower case) goes to LoadPicture: "wmf", "emf", "dib", "gif".
bool isPlatformExtension(const std::string& extension);

/// The platform's picture loader. A metafile is drawn at the size that its header gives, at 96
/// pixels an inch, on white.
/// \throws FileRefused where the file is missing or cannot be read as its extension says
LoadedPicture LoadPicture(const std::string& path, const std::string& extension,
                          PictureFiles& files = localFiles());

/// What became of a save. The run does not look at it; its report does.
struct SaveOutcome {
    enum class Status {
        saved,
        kept,  ///< the target existed and was not to be overwritten
        failed,
    };
    Status status = Status::failed;
    FileError error = FileError::none;
    std::string message;  ///< what went wrong, in words; empty where nothing did
    int64_t bytes = 0;    ///< size of the file written
};

/// Writes what is drawn on a picture holder to a file; the rows that go through DevIL write its
/// lasting picture. A file that did not become whole is removed again. Besides the target no file
/// is made.
/// \param extension    of the format row; decides the route
/// \param path         the whole output name
/// \param overwrite    an existing target is deleted before anything is tried; without it a
///                     target that exists is left alone
/// \param formatIndex  row of the format table
/// Nothing is thrown; lastFormatError keeps the message of a failure. Outputs depend on the pixels
/// alone.
SaveOutcome SaveImageFile(mFormat& format, PictureHolder& picture, const std::string& extension,
                          const std::string& path, bool overwrite, int16_t formatIndex,
                          PictureFiles& files = localFiles());

}  // namespace tessarine
