#include "imagefiles/devil_route.h"

#include <mutex>

#include <FreeImage.h>
#include <IL/il.h>

#include "imagefiles/devil.h"
#include "imagefiles/temp_folder.h"

namespace tessarine {

FIBITMAP* loadThroughDevil(const std::string& path, uint32_t type) {
    const LoadFolder folder;
    const std::string tempName = folder.path() + "4546643";
    {
        const std::lock_guard lock(devilLock());
        startDevil();
        ILuint image = 0;
        ilGenImages(1, &image);
        ilBindImage(image);
        // What a failed load leaves behind may be half made, so its name is not torn down.
        const ILboolean loaded = type == 0 ? ilLoadImage(path.c_str()) : ilLoad(type, path.c_str());
        if (loaded != 1) return nullptr;
        ilSave(IL_BMP, tempName.c_str());
        ilDeleteImages(1, &image);
    }
    return FreeImage_Load(FIF_BMP, tempName.c_str(), 0);
}

}  // namespace tessarine
