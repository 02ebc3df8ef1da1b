#include <algorithm>
#include <memory>
#include <vector>

#include <gif_lib.h>

#include "imagefiles/decoders.h"

namespace tessarine {

namespace {

int readBytes(GifFileType* gif, GifByteType* target, int count) {
    auto& in = *static_cast<ByteReader*>(gif->UserData);
    const size_t given = std::min(static_cast<size_t>(std::max(count, 0)), in.remaining());
    const Bytes bytes = in.take(given);
    std::copy(bytes.begin(), bytes.end(), target);
    return static_cast<int>(given);
}

/// Skips an extension. \return the index of the transparent colour where this extension names one
std::optional<int> readExtension(GifFileType* gif, std::optional<int> transparent) {
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) refuse("an extension is damaged");
    GraphicsControlBlock control{};
    if (code == GRAPHICS_EXT_FUNC_CODE && block != nullptr &&
        DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
        transparent = std::nullopt;
        if (control.TransparentColor != NO_TRANSPARENT_COLOR)
            transparent = control.TransparentColor;
    }
    while (block != nullptr)
        if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) refuse("an extension is damaged");
    return transparent;
}

/// The rows of an interlaced picture in the order of the file.
std::vector<int> rowOrder(int height, bool interlaced) {
    std::vector<int> rows;
    if (!interlaced) {
        for (int y = 0; y < height; ++y)
            rows.push_back(y);
        return rows;
    }
    constexpr int passes[][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    for (const auto& [first, step] : passes)
        for (int y = first; y < height; y += step)
            rows.push_back(y);
    return rows;
}

Decoded readFrame(GifFileType* gif, std::optional<int> transparent, size_t fileSize) {
    if (DGifGetImageDesc(gif) == GIF_ERROR) refuse("the first frame is damaged");
    const GifImageDesc& frame = gif->Image;
    const ColorMapObject* colours = frame.ColorMap != nullptr ? frame.ColorMap : gif->SColorMap;
    // A screen of size 0 is that of its only frame.
    const int screenWidth = gif->SWidth > 0 ? gif->SWidth : frame.Left + frame.Width;
    const int screenHeight = gif->SHeight > 0 ? gif->SHeight : frame.Top + frame.Height;
    if (frame.Width < 1 || frame.Height < 1) refuse("the picture's size makes no sense");
    // One code of 9 to 12 bits stands for 4096 pixels at most.
    if (uint64_t(frame.Width) * static_cast<uint64_t>(frame.Height) / 4096 > fileSize)
        refuse("the file is too short for its picture");

    constexpr uint64_t noMeasure = uint64_t{1} << 32;  // the screen may be larger than its frame
    Decoded decoded{bitmapFor(static_cast<uint64_t>(screenWidth),
                              static_cast<uint64_t>(screenHeight), fileSize, noMeasure),
                    static_cast<int16_t>(colours != nullptr ? colours->BitsPerPixel : 8)};
    Bitmap& bitmap = decoded.bitmap;
    for (int y = 0; y < bitmap.height(); ++y)
        std::fill_n(bitmap.writableRow(y), bitmap.width(), greyPixel(255));

    std::vector<GifPixelType> line(static_cast<size_t>(frame.Width));
    for (const int row : rowOrder(frame.Height, frame.Interlace)) {
        if (DGifGetLine(gif, line.data(), frame.Width) == GIF_ERROR)
            refuse("the first frame is damaged");
        const int y = frame.Top + row;
        if (y >= bitmap.height()) continue;
        Pixel* target = bitmap.writableRow(y);
        for (int i = 0; i < frame.Width && frame.Left + i < bitmap.width(); ++i) {
            const int index = line[static_cast<size_t>(i)];
            if (index == transparent) continue;
            if (colours == nullptr) {
                // Without a table viewers show an even ramp from black to white.
                target[frame.Left + i] = greyPixel(static_cast<uint8_t>(index));
                continue;
            }
            const GifColorType colour =
                index < colours->ColorCount ? colours->Colors[index] : GifColorType{};
            target[frame.Left + i] = rgbPixel(colour.Red, colour.Green, colour.Blue);
        }
    }
    return decoded;
}

}  // namespace

Decoded decodeGif(Bytes file) {
    ByteReader in(file);
    int error = 0;
    const auto close = [](GifFileType* gif) { DGifCloseFile(gif, nullptr); };
    const std::unique_ptr<GifFileType, decltype(close)> gif(DGifOpen(&in, &readBytes, &error),
                                                            close);
    if (!gif) refuse("this is no GIF picture");
    std::optional<int> transparent;
    for (;;) {
        GifRecordType record = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif.get(), &record) == GIF_ERROR) refuse("the file ends early");
        if (record == EXTENSION_RECORD_TYPE)
            transparent = readExtension(gif.get(), transparent);
        else if (record == IMAGE_DESC_RECORD_TYPE)
            return readFrame(gif.get(), transparent, file.size());
        else
            refuse("the file holds no picture");
    }
}

}  // namespace tessarine
