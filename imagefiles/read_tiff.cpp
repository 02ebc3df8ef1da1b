#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <tiffio.h>
#include <vector>

#include "imagefiles/decoders.h"
#include "imagefiles/memory_file.h"
#include "imagefiles/promises.h"

namespace tessarine {

namespace {

struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

tmsize_t readBytes(thandle_t file, void* target, tmsize_t count) {
    return static_cast<tmsize_t>(
        static_cast<MemoryReader*>(file)->read(target, 1, static_cast<size_t>(count)));
}
tmsize_t writeNothing(thandle_t, void*, tmsize_t) { return 0; }
toff_t seekTo(thandle_t file, toff_t offset, int origin) {
    auto* const reader = static_cast<MemoryReader*>(file);
    if (!reader->seek(static_cast<int64_t>(offset), origin)) return static_cast<toff_t>(-1);
    return static_cast<toff_t>(reader->tell());
}
int leaveOpen(thandle_t) { return 0; }
toff_t sizeOfFile(thandle_t file) {
    return static_cast<toff_t>(static_cast<MemoryReader*>(file)->bytes().size());
}
/// The library takes the address of bytes that may be written, and does not write them.
int mapBytes(thandle_t file, void** base, toff_t* size) {
    const Bytes bytes = static_cast<MemoryReader*>(file)->bytes();
    *base = const_cast<uint8_t*>(bytes.data());
    *size = bytes.size();
    return 1;
}
void unmapBytes(thandle_t, void*, toff_t) {}

std::unique_ptr<TIFF, Close> openTiff(MemoryReader& file) {
    return std::unique_ptr<TIFF, Close>(TIFFClientOpen("picture.tif", "r", &file, readBytes,
                                                       writeNothing, seekTo, leaveOpen, sizeOfFile,
                                                       mapBytes, unmapBytes));
}

struct Layout {
    uint32_t width = 0;
    uint32_t height = 0;
    uint16_t bits = 1;
    uint16_t samples = 1;
    uint16_t photometric = 0;
    uint16_t planes = PLANARCONFIG_CONTIG;
    uint16_t format = SAMPLEFORMAT_UINT;
    uint16_t compression = COMPRESSION_NONE;
    uint16_t orientation = ORIENTATION_TOPLEFT;
};

Layout readLayout(TIFF* tiff) {
    Layout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planes);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    return layout;
}

/// Deflate, the tightest coding, makes about a thousand bytes of one.
constexpr uint64_t pixelsPerByte = 8192;

Bitmap bitmapOf(const Layout& layout, size_t fileSize) {
    return bitmapFor(layout.width, layout.height, fileSize, pixelsPerByte);
}

/// By the TIFF library's own conversion to colours, with the rows as they are stored: how a
/// picture is to be turned is not looked at.
Bitmap readColours(TIFF* tiff, const Layout& layout, size_t fileSize) {
    Bitmap bitmap = bitmapOf(layout, fileSize);
    std::vector<uint32_t> raster(size_t{layout.width} * layout.height);
    TIFFRGBAImage image{};
    char message[1024] = "";
    if (!TIFFRGBAImageBegin(&image, tiff, 1, message)) refuse("this TIFF cannot be read");
    image.req_orientation = image.orientation;
    const bool done = TIFFRGBAImageGet(&image, raster.data(), layout.width, layout.height);
    TIFFRGBAImageEnd(&image);
    if (!done) refuse("the picture is damaged");
    for (int32_t y = 0; y < bitmap.height(); ++y) {
        const uint32_t* source = raster.data() + size_t{layout.width} * static_cast<uint32_t>(y);
        Pixel* row = bitmap.writableRow(y);
        for (int32_t x = 0; x < bitmap.width(); ++x)
            row[x] = rgbPixel(TIFFGetR(source[x]), TIFFGetG(source[x]), TIFFGetB(source[x]));
    }
    return bitmap;
}

/// A sample as a share of the full ink, from 0 to 1.
double ink(const uint8_t* sample, const Layout& layout) {
    if (layout.bits == 32) {
        float value = 0;
        std::memcpy(&value, sample, sizeof value);
        return value >= 0 ? std::min<double>(value, 1) : 0;
    }
    uint16_t value = 0;
    std::memcpy(&value, sample, sizeof value);
    return value / 65535.0;
}

/// Inks of 16 bits or as floats, which the file library does not know, or ends over.
Bitmap readInks(TIFF* tiff, const Layout& layout, size_t fileSize) {
    const bool isFloat = layout.bits == 32 && layout.format == SAMPLEFORMAT_IEEEFP;
    const bool isWord = layout.bits == 16 && layout.format == SAMPLEFORMAT_UINT;
    if ((!isFloat && !isWord) || layout.samples < 4 || layout.samples > 16 ||
        layout.planes != PLANARCONFIG_CONTIG || TIFFIsTiled(tiff))
        refuse("inks of this layout cannot be read");
    Bitmap bitmap = bitmapOf(layout, fileSize);
    const size_t sampleBytes = layout.bits / 8;
    const size_t rowBytes = size_t{layout.width} * layout.samples * sampleBytes;
    if (static_cast<size_t>(TIFFScanlineSize(tiff)) < rowBytes) refuse("the picture is damaged");
    std::vector<uint8_t> line(static_cast<size_t>(TIFFScanlineSize(tiff)));
    for (uint32_t y = 0; y < layout.height; ++y) {
        if (TIFFReadScanline(tiff, line.data(), y, 0) != 1) refuse("the picture is damaged");
        Pixel* row = bitmap.writableRow(static_cast<int32_t>(y));
        for (size_t x = 0; x < layout.width; ++x) {
            const uint8_t* p = line.data() + x * layout.samples * sampleBytes;
            const double black = ink(p + 3 * sampleBytes, layout);
            const auto level = [&](size_t channel) {
                const double light = (1 - ink(p + channel * sampleBytes, layout)) * (1 - black);
                return static_cast<uint8_t>(std::nearbyint(light * 255));
            };
            row[x] = rgbPixel(level(0), level(1), level(2));
        }
    }
    return bitmap;
}

/// Pictures of such colours the file library turns by itself, and some of them but half.
bool isTurnedByLibrary(const Layout& layout) {
    const bool hasSuchColours =
        layout.photometric == PHOTOMETRIC_YCBCR || layout.photometric == PHOTOMETRIC_CIELAB ||
        layout.photometric == PHOTOMETRIC_ICCLAB || layout.photometric == PHOTOMETRIC_ITULAB;
    return hasSuchColours && layout.orientation != ORIENTATION_TOPLEFT;
}

}  // namespace

/// The file library does not know samples of 2 bits nor plain YCbCr, reads freed memory for the
/// colour profile of palettes with alpha, and ends the process over inks of 32 bits.
std::optional<size_t> placeOfProfileNumber(Bytes file) {
    if (file.size() < 8) return std::nullopt;
    const bool isLittle = file[0] == 'I';
    const auto number = [&](uint64_t place, int bytes) {
        uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) {
            const uint64_t at = place + static_cast<uint64_t>(isLittle ? bytes - 1 - i : i);
            value = value << 8 | (at < file.size() ? file[at] : 0);
        }
        return value;
    };
    // The large kind counts and points in 64 bits.
    const bool isLarge = number(2, 2) == 43;
    const uint64_t directory = isLarge ? number(8, 8) : number(4, 4);
    if (directory >= file.size()) return std::nullopt;
    const uint64_t entrySize = isLarge ? 20 : 12;
    const uint64_t first = directory + (isLarge ? 8 : 2);
    const uint64_t count = std::min(number(directory, isLarge ? 8 : 2), file.size() / entrySize);
    for (uint64_t entry = first; entry < first + count * entrySize; entry += entrySize)
        if (number(entry, 2) == TIFFTAG_ICCPROFILE) return entry + (isLittle ? 0 : 1);
    return std::nullopt;
}

std::optional<Decoded> takeOverTiff(const PictureSource& source) {
    const Bytes file = source.file;
    MemoryReader reader(file);
    const std::unique_ptr<TIFF, Close> tiff = openTiff(reader);
    if (!tiff) return std::nullopt;
    const Layout layout = readLayout(tiff.get());
    const auto depth = static_cast<int16_t>(layout.bits * layout.samples);
    const bool hasInks = layout.photometric == PHOTOMETRIC_SEPARATED && layout.bits > 8;
    if (hasInks) return Decoded{readInks(tiff.get(), layout, file.size()), depth};
    const bool isPlainYcbcr = layout.photometric == PHOTOMETRIC_YCBCR &&
                              layout.compression != COMPRESSION_JPEG &&
                              layout.compression != COMPRESSION_OJPEG;
    const bool isPaletteWithAlpha = layout.photometric == PHOTOMETRIC_PALETTE && layout.samples > 1;
    const bool isLeftToOthers = source.isTurnedLater && isTurnedByLibrary(layout);
    if (isPlainYcbcr || isPaletteWithAlpha || isLeftToOthers || layout.bits == 2)
        return Decoded{readColours(tiff.get(), layout, file.size()), depth};
    return std::nullopt;
}

std::optional<PromisedSize> promiseOfTiff(Bytes file) {
    MemoryReader reader(file);
    const std::unique_ptr<TIFF, Close> tiff = openTiff(reader);
    if (!tiff) return std::nullopt;
    const Layout layout = readLayout(tiff.get());
    return PromisedSize{layout.width, layout.height};
}

}  // namespace tessarine
