#include <algorithm>
#include <memory>
#include <vector>

#include <libwmf/api.h>
#include <libwmf/gd.h>

#include "imagefiles/decoders.h"
#include "imagefiles/metafile_size.h"
#include "imagefiles/promises.h"
#include "imagefiles/wmf_fonts.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr uint32_t placeableKey = 0x9AC6CDD7;

struct Inches {
    double width = 0;
    double height = 0;
};

/// The size that a placeable header tells.
std::optional<Inches> placeableSize(Bytes file) {
    ByteReader in(file);
    if (in.u32le() != placeableKey) return std::nullopt;
    in.skip(2);
    const auto left = static_cast<int16_t>(in.u16le());
    const auto top = static_cast<int16_t>(in.u16le());
    const auto right = static_cast<int16_t>(in.u16le());
    const auto bottom = static_cast<int16_t>(in.u16le());
    const uint32_t unitsPerInch = in.u16le();
    if (unitsPerInch == 0) refuse("the metafile has no scale");
    return Inches{std::abs(right - left) / static_cast<double>(unitsPerInch),
                  std::abs(bottom - top) / static_cast<double>(unitsPerInch)};
}

/// A metafile without a placeable header is as large as what it draws.
MetafileSize drawnSize(wmfAPI* api) {
    unsigned width = 0;
    unsigned height = 0;
    if (wmf_display_size(api, &width, &height, pixelsPerInch, pixelsPerInch) != wmf_E_None)
        refuse("the metafile draws nothing");
    return checkedSize(width, height);
}

/// What the drawing library painted. Its alpha goes from 0, opaque, to 127.
Bitmap onWhite(const int* pixels, MetafileSize size) {
    Bitmap bitmap(size.width, size.height);
    for (int32_t y = 0; y < size.height; ++y) {
        Pixel* row = bitmap.writableRow(y);
        for (int32_t x = 0; x < size.width; ++x) {
            const auto colour = static_cast<uint32_t>(
                pixels[size_t(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x)]);
            const uint32_t clear = colour >> 24 & 127;
            const auto mix = [&](uint32_t level) {
                return static_cast<uint8_t>((level * (127 - clear) + 255 * clear + 63) / 127);
            };
            row[x] = rgbPixel(mix(colour >> 16 & 255), mix(colour >> 8 & 255), mix(colour & 255));
        }
    }
    return bitmap;
}

struct Destroy {
    void operator()(wmfAPI* api) const { wmf_api_destroy(api); }
};

}  // namespace

Decoded drawWmf(Bytes file) {
    std::optional<MetafileSize> told;
    if (const std::optional<Inches> inches = placeableSize(file))
        told = sizeOfInches(inches->width, inches->height);
    wmfAPI_Options options{};
    options.function = &wmf_gd_function;
    // The library prints its complaints otherwise, and gives up at the first odd record.
    const unsigned long flags =
        WMF_OPT_FUNCTION | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
    wmfAPI* created = nullptr;
    const wmf_error_t status = wmf_api_create(&created, flags, &options);
    std::optional<WmfFonts> fonts;
    const std::unique_ptr<wmfAPI, Destroy> api(created);
    if (status != wmf_E_None || !api) refuse("metafiles cannot be drawn");
    fonts.emplace(api.get());

    // The library may write to the block that it is given.
    std::vector<uint8_t> copy(file.begin(), file.end());
    if (wmf_mem_open(api.get(), copy.data(), static_cast<long>(copy.size())) != wmf_E_None)
        refuse("this is no metafile");
    wmfD_Rect box{};
    if (wmf_scan(api.get(), 0, &box) != wmf_E_None) refuse("this is no metafile");
    const MetafileSize size = told ? *told : drawnSize(api.get());

    wmf_gd_t* canvas = WMF_GD_GetData(api.get());
    canvas->type = wmf_gd_image;
    canvas->bbox = box;
    canvas->width = static_cast<unsigned>(size.width);
    canvas->height = static_cast<unsigned>(size.height);
    const wmf_error_t played = wmf_play(api.get(), 0, &box);
    if (played == wmf_E_InsMem) throw MemoryFailed("memory does not suffice for the drawing");
    if (played != wmf_E_None || canvas->gd_image == nullptr) refuse("the metafile cannot be drawn");
    const int* pixels = wmf_gd_image_pixels(canvas->gd_image);
    if (pixels == nullptr) refuse("the metafile cannot be drawn");
    Decoded decoded{onWhite(pixels, size), 24};
    wmf_mem_close(api.get());
    return decoded;
}

std::optional<PromisedSize> promiseOfWmf(Bytes file) {
    const std::optional<Inches> inches = placeableSize(file);
    if (!inches) return std::nullopt;
    return promiseOfInches(inches->width, inches->height);
}

}  // namespace tessarine
