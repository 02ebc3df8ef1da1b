#include "imagefiles/devil.h"

#include <pthread.h>

#include <IL/il.h>
#include <IL/ilu.h>
#include <IL/ilut.h>

namespace tessarine {

std::mutex& devilLock() {
    // A process that forks while another thread saves must not leave its child a lock that
    // nobody will open.
    static std::mutex* const mutex = [] {
        auto* made = new std::mutex;
        pthread_atfork([] { devilLock().lock(); }, [] { devilLock().unlock(); },
                       [] { devilLock().unlock(); });
        return made;
    }();
    return *mutex;
}

void startDevil() {
    ilInit();
    iluInit();
    ilutInit();
    while (ilGetError() != IL_NO_ERROR) {
    }
}

}  // namespace tessarine
