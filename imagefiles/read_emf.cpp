#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include <cairo.h>
#include <emf2svg.h>
#include <librsvg/rsvg.h>

#include "imagefiles/decoders.h"
#include "imagefiles/metafile_size.h"

namespace tessarine {

MetafileSize checkedSize(double width, double height) {
    constexpr double longest = 16384;
    if (!(width >= 0.5 && height >= 0.5)) refuse("the metafile has no size");
    if (!(width <= longest && height <= longest)) refuse("the metafile is too large");
    return {static_cast<int32_t>(std::max(1.0, std::nearbyint(width))),
            static_cast<int32_t>(std::max(1.0, std::nearbyint(height)))};
}

namespace {

MetafileSize headerSize(Bytes file) {
    ByteReader in(file);
    if (in.u32le() != 1) refuse("this is no metafile");
    in.skip(4 + 16);
    const auto side = [&] { return static_cast<double>(static_cast<int32_t>(in.u32le())); };
    const double left = side();
    const double top = side();
    const double right = side();
    const double bottom = side();
    if (!startsWith(in.take(4), " EMF")) refuse("this is no metafile");
    constexpr double unitsPerInch = 2540;  // hundredths of a millimetre
    return sizeOfInches(std::abs(right - left) / unitsPerInch,
                        std::abs(bottom - top) / unitsPerInch);
}

struct Free {
    void operator()(char* text) const { std::free(text); }
};
struct Unref {
    void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

std::unique_ptr<RsvgHandle, Unref> readDrawing(Bytes file, MetafileSize size) {
    // The converter takes the address of bytes that may be written.
    std::vector<char> copy(file.begin(), file.end());
    char nameSpace[] = "";
    generatorOptions options{};
    options.nameSpace = nameSpace;
    options.emfplus = true;
    options.svgDelimiter = true;
    options.imgWidth = size.width;
    options.imgHeight = size.height;
    char* text = nullptr;
    size_t length = 0;
    const int done = emf2svg(copy.data(), copy.size(), &text, &length, &options);
    const std::unique_ptr<char, Free> drawing(text);
    if (done != 1 || !drawing) refuse("the metafile cannot be drawn");
    std::unique_ptr<RsvgHandle, Unref> handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(drawing.get()), length, nullptr));
    if (!handle) refuse("the metafile cannot be drawn");
    return handle;
}

Bitmap toBitmap(cairo_surface_t* surface, MetafileSize size) {
    cairo_surface_flush(surface);
    Bitmap bitmap(size.width, size.height);
    const uint8_t* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int32_t y = 0; y < size.height; ++y) {
        const auto* source = reinterpret_cast<const uint32_t*>(data + ptrdiff_t{y} * stride);
        Pixel* row = bitmap.writableRow(y);
        for (int32_t x = 0; x < size.width; ++x)
            row[x] = rgbPixel(source[x] >> 16 & 255, source[x] >> 8 & 255, source[x] & 255);
    }
    return bitmap;
}

}  // namespace

Decoded drawEmf(Bytes file) {
    const MetafileSize size = headerSize(file);
    const std::unique_ptr<RsvgHandle, Unref> drawing = readDrawing(file, size);
    const std::unique_ptr<cairo_surface_t, Unref> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, size.width, size.height));
    const std::unique_ptr<cairo_t, Unref> context(cairo_create(surface.get()));
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    const RsvgRectangle viewport{0, 0, static_cast<double>(size.width),
                                 static_cast<double>(size.height)};
    if (!rsvg_handle_render_document(drawing.get(), context.get(), &viewport, nullptr) ||
        cairo_status(context.get()) != CAIRO_STATUS_SUCCESS)
        refuse("the metafile cannot be drawn");
    return {toBitmap(surface.get(), size), 24};
}

}  // namespace tessarine
