#include "imagefiles/jpeg.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <turbojpeg.h>

#include "imagefiles/decoders.h"
#include "imagefiles/image_library.h"
#include "pixels/failures.h"
#include "pixels/shortage.h"

// The common kinds of JPEG by the library that the file library stands on, without the copies that
// lie between: pixels are decoded where they stay, and encoded from where they are.

namespace tessarine {

namespace {

using Turbo = std::unique_ptr<void, int (*)(tjhandle)>;

int bytesPerRow(const Bitmap& bitmap) {
    return static_cast<int>(bitmap.pixels().stride() * static_cast<ptrdiff_t>(sizeof(Pixel)));
}

/// Has the header say 72 dots an inch. The library writes a JFIF segment without a density, always
/// at the same place: its unit is byte 13, and two 16-bit numbers follow.
void setDensity(uint8_t* jpeg, size_t bytes) {
    constexpr std::array<uint8_t, 5> density{1, 0, 72, 0, 72};
    constexpr size_t place = 13;
    if (bytes >= place + density.size()) std::copy(density.begin(), density.end(), jpeg + place);
}

}  // namespace

std::optional<Decoded> takeOverJpeg(const PictureSource& source) {
    const Bytes file = source.file;
    const Turbo turbo(tjInitDecompress(), &tjDestroy);
    if (turbo == nullptr) return std::nullopt;
    int width = 0, height = 0, subsampling = 0, colours = 0;
    if (tjDecompressHeader3(turbo.get(), file.data(), file.size(), &width, &height, &subsampling,
                            &colours) != 0)
        return std::nullopt;
    const bool isGrey = colours == TJCS_GRAY;
    if (!isGrey && colours != TJCS_YCbCr && colours != TJCS_RGB) return std::nullopt;
    if (uint64_t(width) * uint64_t(height) > maxPixels) refuseTooLarge(width, height);

    Decoded decoded;
    decoded.bitmap = Bitmap::toFill(width, height);
    // A mere warning too gives the file to the library, which knows what to show of damaged ones.
    if (tjDecompress2(turbo.get(), file.data(), file.size(),
                      reinterpret_cast<uint8_t*>(decoded.bitmap.writableRow(0)), width,
                      bytesPerRow(decoded.bitmap), height, TJPF_BGRX,
                      TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING) != 0)
        return std::nullopt;
    decoded.depth = isGrey ? 8 : 24;
    return decoded;
}

void writeJpeg(const Bitmap& picture, int quality, OutputFile& file) {
    const Turbo turbo(tjInitCompress(), &tjDestroy);
    if (turbo == nullptr) failForMemory("not enough memory to write a JPEG");
    uint8_t* made = nullptr;
    unsigned long bytes = 0;
    const int end = tjCompress2(turbo.get(), reinterpret_cast<const uint8_t*>(picture.row(0)),
                                picture.width(), bytesPerRow(picture), picture.height(), TJPF_BGRX,
                                &made, &bytes, TJSAMP_420, quality, TJFLAG_ACCURATEDCT);
    const std::unique_ptr<uint8_t, void (*)(uint8_t*)> jpeg(made, &tjFree);
    if (end != 0) {
        const std::string why = tjGetErrorStr2(turbo.get());
        if (tellsOfNoMemory(why)) throw MemoryFailed(why);
        throw StatementFailed("the library does not write the picture: " + why);
    }
    setDensity(jpeg.get(), bytes);
    file.write(jpeg.get(), bytes);
    if (!file.failure().empty()) throw StatementFailed(file.failure());
}

}  // namespace tessarine
