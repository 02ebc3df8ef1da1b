#include <FreeImage.h>
#include <unistd.h>
#include <memory>
#include <new>
#include "imagefiles/decode.h"
#include "imagefiles/decoders.h"
#include "imagefiles/encode.h"
#include "imagefiles/extension_table.h"
#include "imagefiles/image_library.h"
#include "imagefiles/devil.h"
namespace tessarine {
std::vector<std::string> companionPaths(const std::string& path, const std::string& e) { if (e=="pic") return {path}; return {}; }
std::vector<uint8_t> readWholeFile(int file) {
    std::vector<uint8_t> v; uint8_t b[65536]; ssize_t n; off_t at=0;
    while ((n = pread(file, b, sizeof b, at)) > 0) { v.insert(v.end(), b, b + n); at += n; }
    if (n < 0) throw FileRefused(FileError::unreadable, "cannot read");
    return v;
}
std::optional<PromisedSize> promisedSize(const PictureSource&, const std::string&) { return {}; }
ReadOutcome decodePicture(const PictureSource& s, const std::string& e) {
    ReadOutcome o; mFormat format; const OpenLibrary library(format);
    o.error = FileError::unreadable;
    try {
        if (e == "gif") { auto d = decodeGif(s.file); o.bitmap = d.bitmap; o.depth = d.depth; o.error=FileError::none; return o; }
        if (e == "wmf") { auto d = drawWmf(s.file); o.bitmap = d.bitmap; o.depth = d.depth; o.error=FileError::none; return o; }
        if (e == "emf") { auto d = drawEmf(s.file); o.bitmap = d.bitmap; o.depth = d.depth; o.error=FileError::none; return o; }
        if (e == "pxr") { startDevil(); return o; }
        const ExtensionRow* row = findExtension(e);
        if (!row) return o;
        if (row->takeOver) { auto d = row->takeOver(s.file, ""); if (d) { o.bitmap = d->bitmap; o.depth = d->depth; o.error=FileError::none; return o; } }
        FIMEMORY* m = FreeImage_OpenMemory(const_cast<BYTE*>(s.file.data()), s.file.size());
        FIBITMAP* b = FreeImage_LoadFromMemory(row->format, m, row->flags);
        FreeImage_CloseMemory(m);
        const std::unique_ptr<FIBITMAP, void (*)(FIBITMAP*)> dib(b, &FreeImage_Unload);
        if (dib && format.FreeImage_BMP_From_DIB(dib.get(), o.bitmap)) { o.depth = FreeImage_GetBPP(dib.get()); o.error=FileError::none; }
    } catch (const StatementFailed& w) { o.message = w.what(); }
    catch (const std::bad_alloc&) { o.error = FileError::tooLarge; }
    return o;
}
bool OutputFileAdopt(OutputFile&, int);
WriteOutcome encodePicture(const Bitmap& p, const std::string&, int16_t, OutputFile& f) {
    for (int y = 0; y < p.height(); ++y) f.write(p.row(y), p.width() * 4);
    return {f.failure().empty() ? FileError::none : FileError::cannotWrite, f.failure()};
}
}
#include <fcntl.h>
namespace tessarine {
struct Local : PictureFiles {
    ReadOutcome read(const std::string& path, const std::string& e) override {
        int fd = ::open(path.c_str(), O_RDONLY); auto b = readWholeFile(fd); ::close(fd);
        PictureSource s; s.file = b; s.companions.resize(companionPaths(path, e).size());
        return decodePicture(s, e);
    }
    WriteOutcome write(const Bitmap& p, const std::string& e, int16_t f, OutputFile& file) override { return encodePicture(p, e, f, file); }
};
PictureFiles& localFiles() { static Local l; return l; }
}
namespace tessarine {
std::string_view errorClass(FileError e) { static const char* n[] = {"", "unreadable", "too-large", "timed-out", "codec-died", "cannot-write"}; return n[(int)e]; }
}
