#include "imagefiles/png.h"

#include <csetjmp>
#include <cstddef>
#include <png.h>
#include <string>

#include "imagefiles/image_library.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

/// The library's writer, and the first reason why it refused.
struct Writer {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::string refusal;

    Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { png_destroy_write_struct(&png, &info); }
};

void refuseWriting(png_structp png, png_const_charp why) {
    static_cast<Writer*>(png_get_error_ptr(png))->refusal = why;
    png_longjmp(png, 1);
}

void passOver(png_structp, png_const_charp) {}

void writeBytes(png_structp png, png_bytep bytes, size_t count) {
    auto* file = static_cast<OutputFile*>(png_get_io_ptr(png));
    if (file->write(bytes, count) != count) png_error(png, "the file takes no more");
}

void flushNothing(png_structp) {}

/// Holds no object that has to be taken down: the library leaves it by a jump.
/// \return whether all of it was written
bool writeRows(Writer& writer, const Bitmap& picture) {
    if (setjmp(png_jmpbuf(writer.png)) != 0) return false;
    // By far most of the time goes into packing. The level at which a photograph takes a fifth of
    // the library's usual time makes it a tenth larger, or smaller.
    constexpr int level = 2;
    png_set_compression_level(writer.png, level);
    png_set_user_limits(writer.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(picture.width()),
                 static_cast<png_uint_32>(picture.height()), 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(writer.png, writer.info);
    png_set_bgr(writer.png);
    png_set_filler(writer.png, 0, PNG_FILLER_AFTER);
    for (int32_t y = 0; y < picture.height(); ++y)
        png_write_row(writer.png, reinterpret_cast<png_const_bytep>(picture.row(y)));
    png_write_end(writer.png, nullptr);
    return true;
}

}  // namespace

void writePng(const Bitmap& picture, OutputFile& file) {
    Writer writer;
    writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &writer, &refuseWriting, &passOver);
    if (writer.png != nullptr) writer.info = png_create_info_struct(writer.png);
    if (writer.info == nullptr) throw MemoryFailed("not enough memory to write a PNG");
    png_set_write_fn(writer.png, &file, &writeBytes, &flushNothing);
    const bool isWhole = writeRows(writer, picture);
    if (!file.failure().empty()) throw StatementFailed(file.failure());
    if (isWhole) return;
    if (tellsOfNoMemory(writer.refusal)) throw MemoryFailed(writer.refusal);
    throw StatementFailed("the library does not write the picture: " + writer.refusal);
}

}  // namespace tessarine
