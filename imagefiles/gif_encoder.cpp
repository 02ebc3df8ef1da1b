#include "imagefiles/gif_encoder.h"

#include <memory>
#include <string>

#include <gif_lib.h>

#include "imagefiles/colour_reduction.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr int32_t longestSide = 65535;

int writeBytes(GifFileType* gif, const GifByteType* bytes, int count) {
    auto* file = static_cast<OutputFile*>(gif->UserData);
    return static_cast<int>(file->write(bytes, static_cast<size_t>(count)));
}

/// Closes and frees the encoder, whatever way the writing ended.
struct CloseEncoder {
    void operator()(GifFileType* gif) const {
        int ignored = 0;
        EGifCloseFile(gif, &ignored);
    }
};

struct FreeMap {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};

/// The file knows better than the encoder why it took no more.
[[noreturn]] void failWith(int error, const OutputFile& file) {
    if (!file.failure().empty()) throw StatementFailed(file.failure());
    if (error == E_GIF_ERR_NOT_ENOUGH_MEM) throw MemoryFailed("not enough memory for the GIF file");
    const char* why = GifErrorString(error);
    throw StatementFailed(std::string("cannot write the GIF file: ") +
                          (why != nullptr ? why : "unknown error"));
}

}  // namespace

void writeGif(const Bitmap& picture, int32_t colourBits, OutputFile& file) {
    const int32_t width = picture.width();
    const int32_t height = picture.height();
    if (!picture.isValid() || width < 1 || height < 1)
        throw StatementFailed("there is no picture to save");
    if (width > longestSide || height > longestSide)
        throw StatementFailed("the picture is too large for GIF: a side has at most " +
                              std::to_string(longestSide) + " pixels");

    const int32_t tableSize = 1 << colourBits;
    IndexedPicture reduced = reduceColours(picture, tableSize);

    const std::unique_ptr<ColorMapObject, FreeMap> map(GifMakeMapObject(tableSize, nullptr));
    int error = E_GIF_ERR_NOT_ENOUGH_MEM;
    if (map == nullptr) failWith(error, file);
    for (size_t i = 0; i < reduced.colours.size(); ++i)
        map->Colors[i] = {reduced.colours[i].red, reduced.colours[i].green,
                          reduced.colours[i].blue};

    std::unique_ptr<GifFileType, CloseEncoder> gif(EGifOpen(&file, &writeBytes, &error));
    if (gif == nullptr) failWith(error, file);
    if (EGifPutScreenDesc(gif.get(), width, height, colourBits, 0, map.get()) == GIF_ERROR ||
        EGifPutImageDesc(gif.get(), 0, 0, width, height, false, nullptr) == GIF_ERROR)
        failWith(gif->Error, file);
    for (int32_t y = 0; y < height; ++y) {
        GifPixelType* row = reduced.indices.data() + static_cast<size_t>(y) * width;
        if (EGifPutLine(gif.get(), row, width) == GIF_ERROR) failWith(gif->Error, file);
    }
    if (EGifCloseFile(gif.release(), &error) == GIF_ERROR) failWith(error, file);
    if (!file.failure().empty()) throw StatementFailed(file.failure());
}

}  // namespace tessarine
