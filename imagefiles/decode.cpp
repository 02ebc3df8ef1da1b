#include "imagefiles/decode.h"

#include <exception>
#include <memory>
#include <new>

#include <FreeImage.h>

#include "imagefiles/decoders.h"
#include "imagefiles/devil_route.h"
#include "imagefiles/dib_pixels.h"
#include "imagefiles/extension_table.h"
#include "imagefiles/image_library.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

std::optional<Decoded> decodePlatform(Bytes file, const std::string& extension) {
    if (extension == "gif") return decodeGif(file);
    if (extension == "dib") return decodeBmp(file, startsWith(file, "BM"));
    if (extension == "wmf") return drawWmf(file);
    if (extension == "emf") return drawEmf(file);
    return std::nullopt;
}

FIBITMAP* loadByLibrary(const ExtensionRow& row, Bytes file) {
    switch (row.route) {
        case LoadRoute::freeImage:
            return loadDib(file, row.format, row.flags);
        case LoadRoute::detected:
            return loadDib(file, detectFormat(file), row.flags);
        case LoadRoute::devil:
            return loadThroughDevil(file, std::string(row.extension),
                                    static_cast<uint32_t>(row.flags));
        case LoadRoute::none:
            break;
    }
    return nullptr;
}

/// \throws StatementFailed, FileRefused, MemoryFailed
Decoded decode(mFormat& format, const PictureSource& source, const std::string& extension) {
    if (std::optional<Decoded> decoded = decodePlatform(source.file, extension))
        return std::move(*decoded);
    const ExtensionRow* row = findExtension(extension);
    if (row == nullptr) refuse("no format has this extension");
    if (row->takeOver != nullptr)
        if (std::optional<Decoded> decoded = row->takeOver(source)) return std::move(*decoded);

    const std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)> dib(loadByLibrary(*row, source.file),
                                                             &FreeImage_Unload);
    if (!dib) throw FileRefused(FileError::unreadable, format.lastFormatError);
    Decoded decoded;
    std::optional<Bitmap> bitmap;
    if (!format.FreeImage_BMP_From_DIB(dib.get(), bitmap))
        throw FileRefused(
            format.lastFileError == FileError::none ? FileError::unreadable : format.lastFileError,
            format.lastFormatError);
    decoded.bitmap = std::move(*bitmap);
    decoded.depth = static_cast<int16_t>(FreeImage_GetBPP(dib.get()));
    return decoded;
}

ReadOutcome refused(FileError error, const std::string& message) {
    ReadOutcome outcome;
    outcome.error = error;
    // Some libraries refuse a file without a word.
    outcome.message = message.empty() ? "the file is not as its extension says" : message;
    return outcome;
}

}  // namespace

ReadOutcome decodePicture(const PictureSource& source, const std::string& extension) {
    mFormat format;
    const OpenLibrary library(format);
    const std::optional<PromisedSize> promised = promisedSize(source, extension);
    // The library has one message for a size that makes no sense and for want of memory.
    const auto classOf = [&](FileError error) {
        constexpr uint64_t sizable = uint64_t{1} << 20;
        const bool isSmall =
            promised && (promised->height == 0 || promised->width < sizable / promised->height);
        return !isSmall && tellsOfNoMemory(format.lastFormatError) ? FileError::tooLarge : error;
    };
    try {
        refuseIfTooLarge(promised);
        Decoded decoded = decode(format, source, inLowerCase(extension));
        ReadOutcome outcome;
        outcome.bitmap = std::move(decoded.bitmap);
        outcome.depth = decoded.depth;
        return outcome;
    } catch (const MemoryFailed& failure) {
        return refused(FileError::tooLarge, failure.what());
    } catch (const std::bad_alloc&) {
        return refused(FileError::tooLarge, "memory does not suffice for the picture");
    } catch (const FileRefused& failure) {
        return refused(classOf(failure.error()), failure.what());
    } catch (const std::exception& failure) {
        return refused(classOf(FileError::unreadable), failure.what());
    }
}

}  // namespace tessarine
