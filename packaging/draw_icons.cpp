#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include <cairo.h>
#include <librsvg/rsvg.h>

// Draws an SVG as a square PNG: desktops that know no SVG have icons too.

namespace {

using Drawing = std::unique_ptr<RsvgHandle, decltype(&g_object_unref)>;
using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Pen = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

void draw(const char* source, int side, const char* target) {
    const Drawing drawing(rsvg_handle_new_from_file(source, nullptr), g_object_unref);
    if (!drawing) throw std::runtime_error(std::string(source) + " is no SVG that can be read");
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side),
                          cairo_surface_destroy);
    const Pen pen(cairo_create(surface.get()), cairo_destroy);
    const RsvgRectangle place{0, 0, static_cast<double>(side), static_cast<double>(side)};
    if (!rsvg_handle_render_document(drawing.get(), pen.get(), &place, nullptr))
        throw std::runtime_error(std::string(source) + " cannot be drawn");
    if (cairo_surface_write_to_png(surface.get(), target) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string(target) + " cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
    const int side = argc == 4 ? std::atoi(argv[2]) : 0;
    if (side < 1 || side > 4096) {
        std::fputs("usage: tessarine-draw-icon SVG SIDE PNG\n", stderr);
        return 2;
    }
    try {
        draw(argv[1], side, argv[3]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tessarine-draw-icon: %s\n", failure.what());
        return 1;
    }
    return 0;
}
