#include <exception>
#include <memory>

#include "imagefiles/dib_pixels.h"
#include "imagefiles/extension_table.h"
#include "imagefiles/image_library.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

/// As the library's own reader of headers finds it.
std::optional<PromisedSize> promiseByLibrary(FREE_IMAGE_FORMAT format, Bytes file) {
    if (format == FIF_UNKNOWN || !FreeImage_FIFSupportsNoPixels(format)) return std::nullopt;
    const std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)> dib(
        loadDib(file, format, FIF_LOAD_NOPIXELS), &FreeImage_Unload);
    if (!dib) return std::nullopt;
    return PromisedSize{FreeImage_GetWidth(dib.get()), FreeImage_GetHeight(dib.get())};
}

std::optional<PromisedSize> promiseByExtension(Bytes file, const std::string& extension) {
    if (extension == "gif") return promiseOfGif(file);
    if (extension == "dib") return promiseOfBmp(file);
    if (extension == "wmf") return promiseOfWmf(file);
    if (extension == "emf") return promiseOfEmf(file);
    const ExtensionRow* row = findExtension(extension);
    if (row == nullptr) return std::nullopt;
    if (row->route == LoadRoute::detected) return promiseOf(detectFormat(file), file);
    return row->promise != nullptr ? row->promise(file) : std::nullopt;
}

}  // namespace

std::optional<PromisedSize> promiseOf(FREE_IMAGE_FORMAT format, Bytes file) {
    if (format == FIF_GIF) return promiseOfGif(file);
    if (format == FIF_JNG) return promiseOfPng(file);
    const ExtensionRow* row = findFormat(format);
    return row != nullptr ? row->promise(file) : promiseByLibrary(format, file);
}

void refuseIfTooLarge(const std::optional<PromisedSize>& promised) {
    if (promised && promised->height > 0 && promised->width > maxPixels / promised->height)
        refuseTooLarge(promised->width, promised->height);
}

std::optional<PromisedSize> promisedSize(const PictureSource& source,
                                         const std::string& extension) {
    try {
        // Else the TIFF library prints what it thinks of the file.
        mFormat format;
        const OpenLibrary library(format);
        return promiseByExtension(source.file, inLowerCase(extension));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace tessarine
