#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imagefiles/metadata.h"
#include "imagefiles/output_file.h"
#include "imagefiles/picture.h"
#include "pixels/failures.h"

namespace tessarine {

/// Why a picture file was not read, or a picture not written.
enum class FileError : uint8_t {
    none,
    unreadable,   ///< missing, damaged, or not of the format that its extension names
    tooLarge,     ///< more pixels or more memory than a picture may take
    timedOut,     ///< took longer than a picture may take
    codecDied,    ///< the helper process ended, or broke its rules, over it
    cannotWrite,  ///< the disk or the format does not take the picture
};

/// "unreadable", "too-large", "timed-out", "codec-died", "cannot-write"; empty for none.
std::string_view errorClass(FileError error);

/// A picture file that is refused.
class FileRefused : public StatementFailed {
  public:
    FileRefused(FileError error, const std::string& why) : StatementFailed(why), error_(error) {}
    FileError error() const { return error_; }

  private:
    FileError error_;
};

/// What came of reading a picture file: a bitmap, or an error with its reason in words.
struct ReadOutcome {
    std::optional<Bitmap> bitmap;
    int16_t depth = 0;  ///< bits per pixel of the file's own image
    FileError error = FileError::none;
    std::string message;
    FoundMetadata metadata{};  ///< of readWithMetadata()
};

/// What came of a look at a picture file's header.
struct LookOutcome {
    int32_t width = 0;  ///< pixels that the file promises; 0 with an error
    int32_t height = 0;
    FileError error = FileError::none;
    std::string message;
};

/// What came of writing a picture.
struct WriteOutcome {
    FileError error = FileError::none;
    std::string message;
    /// What writeWithMetadata() left out of the metadata and why, in words; empty for nothing.
    std::string leftOut{};
};

/// A file, and the extension by which it is read.
struct ExpectedFile {
    std::string path;
    std::string extension;

    friend bool operator==(const ExpectedFile&, const ExpectedFile&) = default;
};

/// Who reads and writes picture files: this process itself, or helper processes that a bad file
/// may take down.
class PictureFiles {
  public:
    virtual ~PictureFiles() = default;

    /// So many pictures are about to be read and written side by side, each on a thread of its own.
    virtual void prepareFor(size_t pictures) { static_cast<void>(pictures); }

    /// The same reading and writing for one of several pictures in flight, on a thread of its own.
    /// Reading may wait until the picture has room in memory beside the others; it keeps that room
    /// as long as the object lasts, which is not to outlive this one.
    virtual std::unique_ptr<PictureFiles> onePicture();

    /// The files that this thread is likely to read next, in this order, in place of those that it
    /// was said to before. They may be read ahead; what read() gives is the same as if they had not
    /// been. With none, what was read ahead is dropped.
    virtual void expect(const std::vector<ExpectedFile>& files) { static_cast<void>(files); }

    /// Reads a picture file by the route that its extension (in any case) names, and by nothing
    /// else. Nothing is thrown.
    virtual ReadOutcome read(const std::string& path, const std::string& extension) = 0;

    /// Writes a picture in the format of a row of the format table to an open file, which the
    /// caller finishes, or discards on an error. Nothing is thrown.
    /// \param extension  of the row; decides the route
    virtual WriteOutcome write(const Bitmap& picture, const std::string& extension,
                               int16_t formatIndex, OutputFile& file) = 0;

    /// The same as read(), with what the file says beyond its pixels. Damage to that alone is no
    /// error. Who knows of none finds none.
    virtual ReadOutcome readWithMetadata(const std::string& path, const std::string& extension,
                                         MetadataWanted wanted = MetadataWanted::all) {
        static_cast<void>(wanted);
        return read(path, extension);
    }
    /// The same as write(), with what is to be said beyond the pixels, in so far as the format
    /// holds any of it.
    virtual WriteOutcome writeWithMetadata(const Bitmap& picture, const std::string& extension,
                                           int16_t formatIndex, const MetadataToAdd& metadata,
                                           OutputFile& file) {
        static_cast<void>(metadata);
        return write(picture, extension, formatIndex, file);
    }
};

/// Reads and writes in this process: for pictures of our own making, and for measuring against.
PictureFiles& localFiles();

/// The bitmap of a holder that is saved: the lasting picture for rows that go through DevIL, what
/// is drawn on it for the others.
Bitmap savedBitmap(const PictureHolder& picture, const std::string& extension);

}  // namespace tessarine
