#include "imagefiles/image_library.h"

#include <mutex>
#include <pthread.h>
#include <tiffio.h>
#include <vector>

#include <FreeImage.h>

namespace tessarine {

namespace {

/// Guards the library's count of its users, which is a plain number.
std::mutex& libraryMutex() {
    static std::mutex* const mutex = [] {
        auto* made = new std::mutex;
        pthread_atfork([] { libraryMutex().lock(); }, [] { libraryMutex().unlock(); },
                       [] { libraryMutex().unlock(); });
        return made;
    }();
    return *mutex;
}

/// Who gets the messages of this thread's calls: the format of the innermost open InitImageLibrary.
thread_local std::vector<mFormat*> listeners;

void keepMessage(FREE_IMAGE_FORMAT, const char* message) {
    if (!listeners.empty() && message != nullptr) listeners.back()->lastFormatError = message;
}

}  // namespace

void InitImageLibrary(mFormat& format) {
    {
        const std::lock_guard lock(libraryMutex());
        // One reference is held for the life of the process: the library's tables are then never
        // taken down under another thread that still loads.
        static const bool held = (FreeImage_Initialise(0), true);
        static_cast<void>(held);
        FreeImage_Initialise(0);
        FreeImage_SetOutputMessage(&keepMessage);
        // These print to standard error otherwise, dozens of lines for one file.
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
    }
    listeners.push_back(&format);
}

void CloseImageLibrary() {
    if (!listeners.empty()) listeners.pop_back();
    const std::lock_guard lock(libraryMutex());
    FreeImage_DeInitialise();
}

bool tellsOfNoMemory(const std::string& message) {
    for (const char* text : {"allocation failed", "Insufficient memory", "out of memory",
                             "Out of memory", "Not enough memory", "not enough memory"})
        if (message.find(text) != std::string::npos) return true;
    return false;
}

}  // namespace tessarine
