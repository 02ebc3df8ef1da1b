#include "imagefiles/devil_route.h"

#include <FreeImage.h>
#include <IL/il.h>

#include "imagefiles/devil_io.h"
#include "imagefiles/dib_pixels.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

constexpr const char* noMemory = "memory does not suffice for the picture";

/// The picture as DevIL writes it in its BMP; nothing where DevIL cannot read the file.
std::optional<MemoryWriter> bmpByDevil(Bytes file, const std::string& name, uint32_t type) {
    DevilImage image;
    MemoryReader source(file);
    const DevilReads reading(source);
    const ILboolean loaded = type == 0 ? ilLoadImage(name.c_str()) : ilLoad(type, name.c_str());
    bool outOfMemory = false;
    takeDevilError(&outOfMemory);
    if (loaded != 1) {
        image.leaveBroken();
        if (outOfMemory) throw MemoryFailed(noMemory);
        return std::nullopt;
    }
    std::optional<MemoryWriter> bmp(std::in_place);
    const DevilWrites writing(*bmp);
    ilSave(IL_BMP, "picture.bmp");
    takeDevilError(&outOfMemory);
    if (outOfMemory || bmp->ranOut()) throw MemoryFailed(noMemory);
    return bmp;
}

}  // namespace

FIBITMAP* loadThroughDevil(Bytes file, const std::string& extension, uint32_t type) {
    const std::optional<MemoryWriter> bmp = bmpByDevil(file, "picture." + extension, type);
    return bmp ? loadDib(bmp->bytes(), FIF_BMP, 0) : nullptr;
}

}  // namespace tessarine
