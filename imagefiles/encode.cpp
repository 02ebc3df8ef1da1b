#include "imagefiles/encode.h"

#include <exception>
#include <memory>
#include <new>

#include <FreeImage.h>

#include "imagefiles/devil_saving.h"
#include "imagefiles/format_table.h"
#include "imagefiles/gif_encoder.h"
#include "imagefiles/image_library.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

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

void writeJpeg(const Bitmap& picture, int16_t formatIndex, OutputFile& file) {
    if (formatIndex < 3 || formatIndex > 7) throw StatementFailed("no JPEG row has this number");
    mFormat format;
    const OpenLibrary library(format);
    FIBITMAP* made = nullptr;
    format.FreeImage_DIB_From_BMP(picture, made);
    Dib dib(made);
    if (dib != nullptr && FreeImage_GetBPP(dib.get()) == 32)
        dib.reset(FreeImage_ConvertTo24Bits(dib.get()));
    if (dib == nullptr) {
        const std::string why =
            "cannot take the picture over for saving: " + format.lastFormatError;
        if (tellsOfNoMemory(why)) throw MemoryFailed(why);
        throw StatementFailed(why);
    }

    format.lastFormatError.clear();
    FreeImageIO io = {nullptr, writeItems, seekItem, tellItem};
    const int quality = formatTable()[static_cast<size_t>(formatIndex)].value;
    const bool said = FreeImage_SaveToHandle(FIF_JPEG, dib.get(), &io, &file, quality) != 0;
    if (!file.failure().empty()) throw StatementFailed(file.failure());
    if (said) return;
    if (tellsOfNoMemory(format.lastFormatError)) throw MemoryFailed(format.lastFormatError);
    throw StatementFailed(
        "the library does not write the picture: " +
        (format.lastFormatError.empty() ? "it gives no reason" : format.lastFormatError));
}

void encode(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
            OutputFile& file) {
    const std::optional<SaveRoute> route = routeOf(extension);
    if (!route) throw StatementFailed("pictures are not saved as \"" + extension + "\"");
    switch (*route) {
        case SaveRoute::devil:
            return saveThroughDevil(picture, extension, file);
        case SaveRoute::encoder:
            if (formatIndex < 0 || formatIndex > 2)
                throw StatementFailed("no GIF row has this number");
            return writeGif(picture, formatTable()[static_cast<size_t>(formatIndex)].value, file);
        case SaveRoute::jpeg:
            return writeJpeg(picture, formatIndex, file);
    }
}

}  // namespace

WriteOutcome encodePicture(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                           OutputFile& file) {
    try {
        encode(picture, extension, formatIndex, file);
        return {};
    } catch (const MemoryFailed&) {
    } catch (const std::bad_alloc&) {
    } catch (const std::exception& failure) {
        return {FileError::cannotWrite, failure.what()};
    }
    return {FileError::tooLarge, "not enough memory to save the picture"};
}

}  // namespace tessarine
