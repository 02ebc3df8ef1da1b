#include "codecs.h"

#include <cstdio>
#include <memory>
#include <png.h>

namespace floor_program {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

}  // namespace

void readFile(const std::string& path, std::vector<uint8_t>& bytes) {
    const File file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr) throw Failed(path + ": cannot be opened");
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    std::fseek(file.get(), 0, SEEK_END);
    bytes.resize(static_cast<size_t>(std::ftell(file.get())));
    std::rewind(file.get());
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        throw Failed(path + ": cannot be read");
}

void writeFile(const std::string& path, const uint8_t* bytes, size_t count) {
    const File file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (file == nullptr) throw Failed(path + ": cannot be made");
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    if (std::fwrite(bytes, 1, count, file.get()) != count)
        throw Failed(path + ": cannot be written");
}

JpegCodec::JpegCodec() : reader_(tjInitDecompress()), writer_(tjInitCompress()) {
    if (reader_ == nullptr || writer_ == nullptr) throw Failed("no memory for a JPEG codec");
}

JpegCodec::~JpegCodec() {
    tjDestroy(reader_);
    tjDestroy(writer_);
}

View JpegCodec::decode(const std::string& path, std::vector<uint8_t>& pixels) {
    readFile(path, file_);
    View view;
    int subsampling = 0, colours = 0;
    if (tjDecompressHeader3(reader_, file_.data(), file_.size(), &view.width, &view.height,
                            &subsampling, &colours) != 0)
        throw Failed(path + ": " + tjGetErrorStr2(reader_));
    const size_t bytes = view.rowBytes() * static_cast<size_t>(view.height);
    if (pixels.size() < bytes) pixels.resize(bytes);
    view.bytes = pixels.data();
    if (tjDecompress2(reader_, file_.data(), file_.size(), view.bytes, view.width, 0, view.height,
                      TJPF_BGRX, TJFLAG_ACCURATEDCT) != 0)
        throw Failed(path + ": " + tjGetErrorStr2(reader_));
    return view;
}

void JpegCodec::encode(View picture, const std::string& path) {
    const size_t most = tjBufSize(picture.width, picture.height, TJSAMP_420);
    if (encoded_.size() < most) encoded_.resize(most);
    uint8_t* target = encoded_.data();
    unsigned long count = encoded_.size();
    if (tjCompress2(writer_, picture.bytes, picture.width, 0, picture.height, TJPF_BGRX, &target,
                    &count, TJSAMP_420, 75, TJFLAG_ACCURATEDCT | TJFLAG_NOREALLOC) != 0)
        throw Failed(path + ": " + tjGetErrorStr2(writer_));
    writeFile(path, target, count);
}

void PngWriter::encode(View picture, const std::string& path) {
    encoded_.clear();
    const auto fail = [](png_structp, png_const_charp why) { throw Failed(why); };
    const auto append = [](png_structp png, png_bytep bytes, size_t count) {
        auto* target = static_cast<std::vector<uint8_t>*>(png_get_io_ptr(png));
        target->insert(target->end(), bytes, bytes + count);
    };
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, nullptr);
    if (png == nullptr) throw Failed("no memory for a PNG codec");
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &encoded_, append, nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_bgr(png);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (int y = 0; y < picture.height; ++y)
        png_write_row(png, picture.row(y));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    writeFile(path, encoded_.data(), encoded_.size());
}

}  // namespace floor_program
