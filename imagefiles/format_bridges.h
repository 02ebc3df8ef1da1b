#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "imagefiles/picture.h"
#include "imagefiles/picture_files.h"

struct FIBITMAP;

namespace tessarine {

/// The bridges between the file library's images (FIBITMAP, "dib") and device bitmaps, and the
/// state that loading leaves behind. No bridge throws; each gives false or 0 on a failure and
/// leaves its text in lastFormatError.
class mFormat {
  public:
    /// Figures of the last bitmap that LoadImageFile made; unchanged when nothing was loaded.
    int16_t loadedWidth = 0;
    int16_t loadedHeight = 0;
    /// Bits per pixel of the file's own image.
    int16_t loadedDepth = 0;
    /// The first failure of the last bridge call, or the file library's last message.
    std::string lastFormatError;
    /// Why the last LoadImageFile, or the last FreeImage_BMP_From_DIB that had pixels to convert,
    /// gave nothing; none where it gave a bitmap.
    FileError lastFileError = FileError::none;

    /// Makes a device bitmap of a dib, 24 bits of colour; alpha is dropped. An image that a
    /// 24-bit bitmap does not hold (16 bits a channel, CMYK, floating point) is converted to
    /// what people know it as. A bitmap already in `bitmap` is deleted first.
    bool FreeImage_BMP_From_DIB(FIBITMAP* dib, std::optional<Bitmap>& bitmap);
    /// Makes a dib of 32 bits a pixel; one already in `dib` is unloaded first. The caller unloads
    /// the result.
    bool FreeImage_DIB_From_BMP(const std::optional<Bitmap>& bitmap, FIBITMAP*& dib);
    /// Copies a bitmap to (x, y) of a holder's surface. A width or height below 1 means the
    /// bitmap's own.
    bool FreeImage_RenderBitmap(const std::optional<Bitmap>& bitmap, PictureHolder* dc, int32_t x,
                                int32_t y, int32_t width, int32_t height, bool inverted);
    int32_t FreeImage_GetBitmapWidth(const std::optional<Bitmap>& bitmap);
    int32_t FreeImage_GetBitmapHeight(const std::optional<Bitmap>& bitmap);

    /// Stores a text in lastFormatError; with keepFirst only where none stands there.
    void SetFormatError(const std::string& text, bool keepFirst);
};

/// The size at which a picture of srcW by srcH fits into maxW by maxH without being enlarged, in
/// whole pixels, halves to the even number.
void FitInside(int32_t srcW, int32_t srcH, int32_t maxW, int32_t maxH, int32_t& outW,
               int32_t& outH);

}  // namespace tessarine
