#include <algorithm>
#include <cerrno>

#include <FreeImage.h>

#include "imagefiles/dib_pixels.h"
#include "imagefiles/format_bridges.h"
#include "pixels/failures.h"

// The two bridges that touch the file library's images. They stand by themselves, so that a program
// that leaves decoding to another process is not linked to the library.

namespace tessarine {

bool mFormat::FreeImage_BMP_From_DIB(FIBITMAP* dib, std::optional<Bitmap>& bitmap) {
    const std::string name = "[FreeImage_BMP_From_DIB] ";
    const auto fail = [&](const std::string& text) {
        SetFormatError(name + text, true);
        return false;
    };
    lastFormatError.clear();
    bitmap.reset();
    if (dib == nullptr) return fail("No DIB specified to convert");
    if (FreeImage_GetInfoHeader(dib) == nullptr)
        return fail("FreeImage_GetInfoHeader failed to get the DIB header");
    if (FreeImage_GetInfo(dib) == nullptr)
        return fail("FreeImage_GetInfo failed to get the DIB info");
    if (FreeImage_GetBits(dib) == nullptr)
        return fail("FreeImage_GetBits failed to get the DIB's bits");
    // A bitmap in memory needs no device context, so none can fail to be had.
    lastFileError = FileError::none;
    try {
        bitmap = bitmapOfDib(dib);
        return true;
    } catch (const FileRefused& refusal) {
        lastFileError = refusal.error();
    } catch (const MemoryFailed&) {
        lastFileError = FileError::tooLarge;
    } catch (const StatementFailed&) {
        lastFileError = FileError::unreadable;
    }
    return fail("CreateDIBitmap failed to create the BITMAP from the DIB reporting error code " +
                std::to_string(ENOMEM));
}

bool mFormat::FreeImage_DIB_From_BMP(const std::optional<Bitmap>& bitmap, FIBITMAP*& dib) {
    const std::string name = "[FreeImage_DIB_From_BMP] ";
    const auto fail = [&](const std::string& text) {
        SetFormatError(name + text, true);
        return false;
    };
    lastFormatError.clear();
    if (dib != nullptr) {
        FreeImage_Unload(dib);
        dib = nullptr;
    }
    if (!bitmap) return fail("No bitmap specified to convert");
    if (!bitmap->isValid())
        return fail("GetObjectAPI failed with error code " + std::to_string(EINVAL));
    FIBITMAP* made = FreeImage_Allocate(bitmap->width(), bitmap->height(), 32, 0, 0, 0);
    if (made == nullptr) return fail("FreeImage_Allocate failed to create a DIB to work with");
    if (FreeImage_GetInfo(made) == nullptr) {
        FreeImage_Unload(made);
        return fail("FreeImage_GetInfo failed to get the DIB info");
    }
    if (FreeImage_GetBits(made) == nullptr) {
        FreeImage_Unload(made);
        return fail("FreeImage_GetBits failed to get the DIB bits");
    }
    for (int32_t y = 0; y < bitmap->height(); ++y) {
        const Pixel* source = bitmap->row(y);
        auto* target =
            reinterpret_cast<Pixel*>(FreeImage_GetScanLine(made, bitmap->height() - 1 - y));
        std::copy(source, source + bitmap->width(), target);
    }
    dib = made;
    return true;
}

}  // namespace tessarine
