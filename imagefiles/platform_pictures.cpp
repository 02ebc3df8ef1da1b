#include "imagefiles/decoders.h"
#include "imagefiles/image_files.h"
#include "pixels/failures.h"

namespace tessarine {

LoadedPicture LoadPicture(const std::string& path, const std::string& extension) {
    const std::vector<uint8_t> file = readWholeFile(path);
    Decoded decoded;
    if (extension == "gif")
        decoded = decodeGif(file);
    else if (extension == "dib")
        decoded = decodeBmp(file, startsWith(file, "BM"));
    else if (extension == "wmf")
        decoded = drawWmf(file);
    else if (extension == "emf")
        decoded = drawEmf(file);
    else
        refuse("the platform knows no pictures of this extension");
    return {std::move(decoded.bitmap), decoded.depth};
}

}  // namespace tessarine
