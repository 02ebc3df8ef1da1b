#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include <cairo.h>
#include <emf2svg.h>
#include <librsvg/rsvg.h>

#include "imagefiles/decoders.h"
#include "imagefiles/metafile_size.h"
#include "imagefiles/picture_files.h"
#include "imagefiles/promises.h"

namespace tessarine {

MetafileSize checkedSize(double width, double height) {
    constexpr double longest = 16384;
    if (!(width >= 0.5 && height >= 0.5)) refuse("the metafile has no size");
    if (!(width <= longest && height <= longest))
        throw FileRefused(FileError::tooLarge, "the metafile is too large");
    return {static_cast<int32_t>(std::max(1.0, std::nearbyint(width))),
            static_cast<int32_t>(std::max(1.0, std::nearbyint(height)))};
}

namespace {

struct Rectangle {
    double left = 0, top = 0, right = 0, bottom = 0;
    double width() const { return right - left; }
    double height() const { return bottom - top; }
};

struct Header {
    Rectangle bounds;  ///< what is drawn, in pixels of the device that recorded it
    Rectangle frame;   ///< the picture, in hundredths of a millimetre
    Rectangle framePixels;
};

Rectangle readRectangle(ByteReader& in) {
    const auto side = [&] { return static_cast<double>(static_cast<int32_t>(in.u32le())); };
    Rectangle r;
    r.left = side();
    r.top = side();
    r.right = side();
    r.bottom = side();
    if (r.right < r.left) std::swap(r.left, r.right);
    if (r.bottom < r.top) std::swap(r.top, r.bottom);
    return r;
}

Header readHeader(Bytes file) {
    ByteReader in(file);
    if (in.u32le() != 1) refuse("this is no metafile");
    const uint32_t size = in.u32le();
    Header header;
    header.bounds = readRectangle(in);
    header.frame = readRectangle(in);
    if (!startsWith(in.take(4), " EMF")) refuse("this is no metafile");
    in.skip(28);
    const double across = in.u32le();
    const double down = in.u32le();
    double hundredthsAcross = in.u32le() * 100.0;
    double hundredthsDown = in.u32le() * 100.0;
    if (size >= 108 && file.size() >= 108) {  // later headers tell the device's size more closely
        in.seek(100);
        const double fineAcross = in.u32le() / 10.0;
        const double fineDown = in.u32le() / 10.0;
        if (fineAcross > 0 && fineDown > 0) {
            hundredthsAcross = fineAcross;
            hundredthsDown = fineDown;
        }
    }
    if (across < 1 || down < 1 || hundredthsAcross <= 0 || hundredthsDown <= 0)
        refuse("the metafile has no scale");
    header.framePixels = {header.frame.left * across / hundredthsAcross,
                          header.frame.top * down / hundredthsDown,
                          header.frame.right * across / hundredthsAcross,
                          header.frame.bottom * down / hundredthsDown};
    return header;
}

constexpr double unitsPerInch = 2540;

MetafileSize sizeOf(const Header& header) {
    return sizeOfInches(header.frame.width() / unitsPerInch, header.frame.height() / unitsPerInch);
}

/// The part of the drawing that fills the picture. Some programs write a frame that misses what
/// they draw; then all that is drawn fills it.
Rectangle shownPart(const Header& header) {
    const Rectangle& frame = header.framePixels;
    const Rectangle& bounds = header.bounds;
    const double across = std::min(frame.right, bounds.right) - std::max(frame.left, bounds.left);
    const double down = std::min(frame.bottom, bounds.bottom) - std::max(frame.top, bounds.top);
    const bool meets = across * 2 >= bounds.width() && down * 2 >= bounds.height();
    const Rectangle& shown = meets && frame.width() > 0 && frame.height() > 0 ? frame : bounds;
    // A line alone has no height.
    return {shown.left, shown.top, std::max(shown.right, shown.left + 1),
            std::max(shown.bottom, shown.top + 1)};
}

struct Free {
    void operator()(char* text) const { std::free(text); }
};
struct Unref {
    void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

std::unique_ptr<RsvgHandle, Unref> readDrawing(Bytes file) {
    // The converter takes the address of bytes that may be written.
    std::vector<char> copy(file.begin(), file.end());
    char nameSpace[] = "";
    generatorOptions options{};
    options.nameSpace = nameSpace;
    options.emfplus = true;
    options.svgDelimiter = true;
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
    const Header header = readHeader(file);
    const MetafileSize size = sizeOf(header);
    const std::unique_ptr<RsvgHandle, Unref> drawing = readDrawing(file);
    gdouble width = 0;
    gdouble height = 0;
    if (!rsvg_handle_get_intrinsic_size_in_pixels(drawing.get(), &width, &height))
        refuse("the metafile cannot be drawn");
    const std::unique_ptr<cairo_surface_t, Unref> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, size.width, size.height));
    const std::unique_ptr<cairo_t, Unref> context(cairo_create(surface.get()));
    if (cairo_status(context.get()) == CAIRO_STATUS_NO_MEMORY)
        throw MemoryFailed("memory does not suffice for the drawing");
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());

    // The drawing begins at the left top of the bounds, in pixels of the recording device.
    const Rectangle shown = shownPart(header);
    cairo_scale(context.get(), size.width / shown.width(), size.height / shown.height());
    cairo_translate(context.get(), header.bounds.left - shown.left, header.bounds.top - shown.top);
    const RsvgRectangle viewport{0, 0, width, height};
    if (!rsvg_handle_render_document(drawing.get(), context.get(), &viewport, nullptr) ||
        cairo_status(context.get()) != CAIRO_STATUS_SUCCESS)
        refuse("the metafile cannot be drawn");
    return {toBitmap(surface.get(), size), 24};
}

std::optional<PromisedSize> promiseOfEmf(Bytes file) {
    const Rectangle frame = readHeader(file).frame;
    return promiseOfInches(frame.width() / unitsPerInch, frame.height() / unitsPerInch);
}

}  // namespace tessarine
