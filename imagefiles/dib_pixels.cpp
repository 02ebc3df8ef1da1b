#include "imagefiles/dib_pixels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <FreeImage.h>

#include "imagefiles/decoders.h"
#include "imagefiles/decoding.h"
#include "imagefiles/memory_file.h"
#include "imagefiles/promises.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

/// Fills the bitmap from the dib's rows, which lie bottom-up. `convert` makes a Pixel of a sample.
template <class Sample, class Convert>
void fill(FIBITMAP* dib, Bitmap& bitmap, const Convert& convert) {
    for (int32_t y = 0; y < bitmap.height(); ++y) {
        const auto* source =
            reinterpret_cast<const Sample*>(FreeImage_GetScanLine(dib, bitmap.height() - 1 - y));
        Pixel* target = bitmap.writableRow(y);
        for (int32_t x = 0; x < bitmap.width(); ++x)
            target[x] = convert(source[x]);
    }
}

uint8_t unitTo8(double value) {
    // The comparison is false for what is no number, too.
    if (!(value > 0)) return 0;
    return static_cast<uint8_t>(std::nearbyint(std::min(value, 1.0) * 255));
}

/// Grey levels of a type without a fixed range. From 0 to 1 they are taken as they stand; any
/// other range, such as heights or measured values, is stretched over 0 to 255.
template <class Sample>
void fillMeasuredGrey(FIBITMAP* dib, Bitmap& bitmap) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int32_t y = 0; y < bitmap.height(); ++y) {
        const auto* row = reinterpret_cast<const Sample*>(FreeImage_GetScanLine(dib, y));
        for (int32_t x = 0; x < bitmap.width(); ++x) {
            const double value = static_cast<double>(row[x]);
            if (!std::isfinite(value)) continue;
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    if (!(low <= high)) return fill<Sample>(dib, bitmap, [](Sample) { return Pixel{}; });
    if (low >= 0 && high <= 1) low = 0, high = 1;
    const double range = high > low ? high - low : 1;
    fill<Sample>(dib, bitmap, [&](Sample value) {
        return greyPixel(unitTo8((static_cast<double>(value) - low) / range));
    });
}

void fillFromStandardType(FIBITMAP* dib, Bitmap& bitmap) {
    if (FreeImage_GetBPP(dib) == 32) {
        fill<RGBQUAD>(dib, bitmap,
                      [](const RGBQUAD& q) { return rgbPixel(q.rgbRed, q.rgbGreen, q.rgbBlue); });
        return;
    }
    const auto fill24 = [&](FIBITMAP* from) {
        fill<RGBTRIPLE>(from, bitmap, [](const RGBTRIPLE& t) {
            return rgbPixel(t.rgbtRed, t.rgbtGreen, t.rgbtBlue);
        });
    };
    if (FreeImage_GetBPP(dib) == 24) return fill24(dib);
    const std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)> in24(FreeImage_ConvertTo24Bits(dib),
                                                              &FreeImage_Unload);
    if (!in24) throw MemoryFailed("memory does not suffice for a 24-bit copy");
    fill24(in24.get());
}

unsigned DLL_CALLCONV readItems(void* target, unsigned size, unsigned count, fi_handle file) {
    return static_cast<unsigned>(static_cast<MemoryReader*>(file)->read(target, size, count));
}
unsigned DLL_CALLCONV writeNothing(void*, unsigned, unsigned, fi_handle) { return 0; }
int DLL_CALLCONV seekTo(fi_handle file, long offset, int origin) {
    return static_cast<MemoryReader*>(file)->seek(offset, origin) ? 0 : -1;
}
long DLL_CALLCONV tellPosition(fi_handle file) { return static_cast<MemoryReader*>(file)->tell(); }
FreeImageIO readingIo = {readItems, writeNothing, seekTo, tellPosition};

}  // namespace

Bitmap bitmapOfDib(FIBITMAP* dib) {
    const unsigned width = FreeImage_GetWidth(dib);
    const unsigned height = FreeImage_GetHeight(dib);
    if (uint64_t{width} * height > maxPixels) refuseTooLarge(width, height);
    Bitmap bitmap = Bitmap::toFill(static_cast<int32_t>(width), static_cast<int32_t>(height));
    switch (FreeImage_GetImageType(dib)) {
        case FIT_BITMAP:
            fillFromStandardType(dib, bitmap);
            break;
        case FIT_UINT16:
            fill<WORD>(dib, bitmap, [](WORD v) { return greyPixel(to8(v)); });
            break;
        case FIT_RGB16:
            fill<FIRGB16>(dib, bitmap, [](const FIRGB16& v) {
                return rgbPixel(to8(v.red), to8(v.green), to8(v.blue));
            });
            break;
        case FIT_RGBA16:
            fill<FIRGBA16>(dib, bitmap, [](const FIRGBA16& v) {
                return rgbPixel(to8(v.red), to8(v.green), to8(v.blue));
            });
            break;
        case FIT_RGBF:
            fill<FIRGBF>(dib, bitmap, [](const FIRGBF& v) {
                return rgbPixel(unitTo8(v.red), unitTo8(v.green), unitTo8(v.blue));
            });
            break;
        case FIT_RGBAF:
            fill<FIRGBAF>(dib, bitmap, [](const FIRGBAF& v) {
                return rgbPixel(unitTo8(v.red), unitTo8(v.green), unitTo8(v.blue));
            });
            break;
        case FIT_UINT32:
            fill<DWORD>(dib, bitmap, [](DWORD v) { return greyPixel(unitTo8(v / 4294967295.0)); });
            break;
        case FIT_INT16:
            fillMeasuredGrey<int16_t>(dib, bitmap);
            break;
        case FIT_INT32:
            fillMeasuredGrey<int32_t>(dib, bitmap);
            break;
        case FIT_FLOAT:
            fillMeasuredGrey<float>(dib, bitmap);
            break;
        case FIT_DOUBLE:
            fillMeasuredGrey<double>(dib, bitmap);
            break;
        default:
            refuse("a dib of this type holds no picture");
    }
    return bitmap;
}

FIBITMAP* loadDib(Bytes file, FREE_IMAGE_FORMAT format, int flags) {
    MemoryReader reader(file);
    // The library keeps the address of a TIFF's colour profile while it goes on to other
    // directories, which frees it. Nobody here wants that profile: so it bears another number.
    if (const auto place = format == FIF_TIFF ? placeOfProfileNumber(file) : std::nullopt)
        reader.pretend(*place, file[*place] - 1);
    return FreeImage_LoadFromHandle(format, &readingIo, &reader, flags);
}

FREE_IMAGE_FORMAT detectFormat(Bytes file) {
    MemoryReader reader(file);
    return FreeImage_GetFileTypeFromHandle(&readingIo, &reader, 16);
}

Decoded decodeEmbedded(Bytes data, FREE_IMAGE_FORMAT format, int flags) {
    refuseIfTooLarge(promiseOf(format, data));
    const std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)> dib(loadDib(data, format, flags),
                                                             &FreeImage_Unload);
    if (!dib) refuse("the picture inside the file cannot be read");
    return {bitmapOfDib(dib.get()), static_cast<int16_t>(FreeImage_GetBPP(dib.get()))};
}

}  // namespace tessarine
