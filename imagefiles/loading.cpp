#include <memory>
#include <new>
#include <vector>

#include <FreeImage.h>

#include "imagefiles/devil_route.h"
#include "imagefiles/disk.h"
#include "imagefiles/extension_table.h"
#include "imagefiles/image_files.h"
#include "imagefiles/image_library.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

std::string inLowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

FIBITMAP* loadByLibrary(const ExtensionRow& row, const std::string& path,
                        FREE_IMAGE_FORMAT detected) {
    switch (row.route) {
        case LoadRoute::freeImage:
            return FreeImage_Load(row.format, path.c_str(), row.flags);
        case LoadRoute::detected:
            return FreeImage_Load(detected, path.c_str(), row.flags);
        case LoadRoute::devil:
            return loadThroughDevil(path, static_cast<uint32_t>(row.flags));
        case LoadRoute::none:
            break;
    }
    return nullptr;
}

void keepFigures(mFormat& format, const std::optional<Bitmap>& bitmap, unsigned depth) {
    format.loadedWidth = static_cast<int16_t>(format.FreeImage_GetBitmapWidth(bitmap));
    format.loadedHeight = static_cast<int16_t>(format.FreeImage_GetBitmapHeight(bitmap));
    format.loadedDepth = static_cast<int16_t>(depth);
}

}  // namespace

std::optional<Bitmap> LoadImageFile(mFormat& format, const std::string& path,
                                    const std::string& extension) {
    const OpenLibrary library(format);
    // A library that opens a pipe would wait for its writer.
    const std::string unreadable = whyNotReadable(path);
    if (!unreadable.empty()) {
        format.SetFormatError(unreadable, false);
        return std::nullopt;
    }
    const FREE_IMAGE_FORMAT detected = FreeImage_GetFileType(path.c_str(), 16);
    const ExtensionRow* row = findExtension(inLowerCase(extension));
    if (row == nullptr) {
        format.SetFormatError("no format has this extension", false);
        return std::nullopt;
    }

    std::optional<Bitmap> bitmap;
    if (row->takeOver != nullptr) {
        std::optional<Decoded> decoded;
        try {
            decoded = row->takeOver(readWholeFile(path), path);
        } catch (const StatementFailed& why) {
            format.SetFormatError(why.what(), false);
            return std::nullopt;
        } catch (const std::bad_alloc&) {
            format.SetFormatError("memory does not suffice for the picture", false);
            return std::nullopt;
        }
        if (decoded) {
            bitmap = std::move(decoded->bitmap);
            keepFigures(format, bitmap, static_cast<unsigned>(decoded->depth));
            return bitmap;
        }
    }

    FIBITMAP* loaded = nullptr;
    attempt([&] { loaded = loadByLibrary(*row, path, detected); });
    const std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)> dib(loaded, &FreeImage_Unload);
    if (dib && format.FreeImage_BMP_From_DIB(dib.get(), bitmap))
        keepFigures(format, bitmap, FreeImage_GetBPP(dib.get()));
    return bitmap;
}

bool isPlatformExtension(const std::string& extension) {
    return extension == "wmf" || extension == "emf" || extension == "dib" || extension == "gif";
}

}  // namespace tessarine
