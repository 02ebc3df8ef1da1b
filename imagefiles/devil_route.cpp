#include "imagefiles/devil_route.h"

#include <mutex>
#include <pthread.h>

#include <FreeImage.h>
#include <IL/il.h>

#include "imagefiles/temp_folder.h"

namespace tessarine {

namespace {

std::mutex& devilMutex() {
    static std::mutex* const mutex = [] {
        auto* made = new std::mutex;
        pthread_atfork([] { devilMutex().lock(); }, [] { devilMutex().unlock(); },
                       [] { devilMutex().unlock(); });
        return made;
    }();
    return *mutex;
}

}  // namespace

void withDevil(const std::function<void()>& work) {
    const std::lock_guard lock(devilMutex());
    work();
}

FIBITMAP* loadThroughDevil(const std::string& path, uint32_t type) {
    const LoadFolder folder;
    const std::string tempName = folder.path() + "4546643";
    bool handedOver = false;
    withDevil([&] {
        ilInit();
        while (ilGetError() != IL_NO_ERROR) {
        }
        ILuint image = 0;
        ilGenImages(1, &image);
        ilBindImage(image);
        // What a failed load leaves behind may be half made, so its name is not torn down.
        const ILboolean loaded = type == 0 ? ilLoadImage(path.c_str()) : ilLoad(type, path.c_str());
        if (loaded != 1) return;
        ilSave(IL_BMP, tempName.c_str());
        ilDeleteImages(1, &image);
        handedOver = true;
    });
    return handedOver ? FreeImage_Load(FIF_BMP, tempName.c_str(), 0) : nullptr;
}

}  // namespace tessarine
