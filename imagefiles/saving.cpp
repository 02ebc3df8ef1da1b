#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <FreeImage.h>
#include <IL/il.h>

#include "imagefiles/bmp_writer.h"
#include "imagefiles/devil.h"
#include "imagefiles/devil_saving.h"
#include "imagefiles/format_table.h"
#include "imagefiles/gif_encoder.h"
#include "imagefiles/image_files.h"
#include "imagefiles/image_library.h"
#include "imagefiles/output_file.h"
#include "pixels/failures.h"

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

/// DevIL with an image of its own bound, and nobody else on it.
class DevilImage {
  public:
    DevilImage() : lock_(devilLock()) {
        startDevil();
        ilGenImages(1, &name_);
        ilBindImage(name_);
    }
    ~DevilImage() { ilDeleteImages(1, &name_); }
    DevilImage(const DevilImage&) = delete;
    DevilImage& operator=(const DevilImage&) = delete;

  private:
    std::lock_guard<std::mutex> lock_;
    ILuint name_ = 0;
};

struct UnloadDib {
    void operator()(FIBITMAP* dib) const { FreeImage_Unload(dib); }
};
using Dib = std::unique_ptr<FIBITMAP, UnloadDib>;

unsigned DLL_CALLCONV writeItems(void* bytes, unsigned size, unsigned count, fi_handle file) {
    if (size == 0) return 0;
    return static_cast<unsigned>(
        static_cast<OutputFile*>(file)->write(bytes, size_t{size} * count) / size);
}
int DLL_CALLCONV seekItem(fi_handle file, long offset, int origin) {
    return static_cast<OutputFile*>(file)->seek(offset, origin) ? 0 : -1;
}
long DLL_CALLCONV tellItem(fi_handle file) {
    return static_cast<long>(static_cast<OutputFile*>(file)->tell());
}

/// The quality flag of a JPEG row; nothing for any other index.
std::optional<int> qualityOf(int16_t formatIndex) {
    if (formatIndex < 3 || formatIndex > 7) return std::nullopt;
    return formatTable()[formatIndex].value;
}

void saveByDevil(const PictureHolder& picture, const std::string& saveTempName,
                 const std::string& path, OutputFile& file) {
    writeBmp(picture.picture(), saveTempName);
    saveThroughDevil(saveTempName, path, file);
}

void saveJpeg(mFormat& format, const PictureHolder& picture, int16_t formatIndex,
              const std::string& path, OutputFile& file) {
    FIBITMAP* made = nullptr;
    format.FreeImage_DIB_From_BMP(picture.drawn(), made);
    Dib dib(made);
    if (dib != nullptr && FreeImage_GetBPP(dib.get()) == 32)
        dib.reset(FreeImage_ConvertTo24Bits(dib.get()));
    const std::optional<int> quality = qualityOf(formatIndex);
    if (!quality) throw StatementFailed("no JPEG row has this number");
    if (dib == nullptr)
        throw StatementFailed("cannot take the picture over for saving: " + format.lastFormatError);

    if (!file.create(path)) throw StatementFailed(file.failure());
    format.lastFormatError.clear();
    FreeImageIO io = {nullptr, writeItems, seekItem, tellItem};
    const bool said = FreeImage_SaveToHandle(FIF_JPEG, dib.get(), &io, &file, *quality) != 0;
    if (!file.failure().empty()) throw StatementFailed(file.failure());
    if (!said)
        throw StatementFailed("cannot write the file " + path + ": " +
                              (format.lastFormatError.empty() ? "the library gives no reason"
                                                              : format.lastFormatError));
}

void saveGif(const PictureHolder& picture, int16_t formatIndex, const std::string& path,
             OutputFile& file) {
    if (formatIndex < 0 || formatIndex > 2) throw StatementFailed("no GIF row has this number");
    if (!file.create(path)) throw StatementFailed(file.failure());
    writeGif(picture.drawn(), formatTable()[formatIndex].value, file);
}

/// How files with an extension are written; nothing for an extension outside the table.
std::optional<SaveRoute> routeOf(const std::string& extension) {
    for (const FormatRow& row : formatTable())
        if (row.extension == extension) return row.route;
    return std::nullopt;
}

void save(mFormat& format, PictureHolder& picture, const std::string& extension,
          const std::string& saveTempName, const std::string& path, int16_t formatIndex,
          OutputFile& file) {
    const OpenLibrary library(format);
    std::optional<DevilImage> devil(std::in_place);
    const std::optional<SaveRoute> route = routeOf(extension);
    // The other routes take their time; a load through DevIL need not wait for them.
    if (route != SaveRoute::devil) devil.reset();

    if (route == SaveRoute::devil)
        saveByDevil(picture, saveTempName, path, file);
    else if (route == SaveRoute::encoder)
        saveGif(picture, formatIndex, path, file);
    else if (route == SaveRoute::jpeg)
        saveJpeg(format, picture, formatIndex, path, file);
    else
        throw StatementFailed("pictures are not saved as \"" + extension + "\"");
}

}  // namespace

SaveOutcome SaveImageFile(mFormat& format, PictureHolder& picture, const std::string& extension,
                          const std::string& path, bool overwrite, int16_t formatIndex) {
    SaveOutcome outcome;
    const auto failed = [&outcome](const std::string& why) {
        outcome.status = SaveOutcome::Status::failed;
        outcome.message = why;
        return outcome;
    };
    try {
        const std::string saveTempName = TempFolder() + "/t65s8s98";
        if (exists(saveTempName)) attempt([&] { deleteFile(saveTempName); });
        if (exists(path)) {
            if (!overwrite) {
                outcome.status = SaveOutcome::Status::kept;
                return outcome;
            }
            // A file that cannot be deleted may still be one that can be written anew.
            try {
                deleteFile(path);
            } catch (const StatementFailed& failure) {
                struct stat status {};
                if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
                    return failed(failure.what());
            }
        }

        OutputFile file;
        save(format, picture, extension, saveTempName, path, formatIndex, file);
        if (!file.finish()) return failed(file.failure());
        outcome.status = SaveOutcome::Status::saved;
        outcome.bytes = file.size();
        return outcome;
    } catch (const StatementFailed& failure) {
        return failed(failure.what());
    } catch (const std::bad_alloc&) {
        return failed("not enough memory to save the picture");
    }
}

}  // namespace tessarine
