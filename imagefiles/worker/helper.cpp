#include "imagefiles/worker/helper.h"

#include <charconv>
#include <cstring>
#include <fontconfig/fontconfig.h>
#include <optional>
#include <unistd.h>

#include "imagefiles/decode.h"
#include "imagefiles/worker/blocks.h"
#include "imagefiles/worker/heap.h"
#include "imagefiles/worker/sandbox.h"

namespace tessarine {

namespace {

std::optional<int> numberOf(const char* word) {
    int number = 0;
    const char* end = word + std::strlen(word);
    const std::from_chars_result result = std::from_chars(word, end, number);
    if (result.ec != std::errc() || result.ptr != end || number < 0) return std::nullopt;
    return number;
}

/// What the program left open by mistake is no business of this process.
void closeOthers(unsigned socket) {
    if (socket > 3) close_range(3, socket - 1, 0);
    close_range(socket + 1, ~0u, 0);
}

/// Libraries that open files when they start do so now: a reading that fails starts them.
void startLibraries(HelperKind kind) {
    const uint8_t nothing[] = {0};
    const PictureSource source{nothing, {}};
    for (const char* extension : {"jpg", "psd", "tif", "pxr", "gif"})
        decodePicture(source, extension);
    if (kind == HelperKind::drawing) FcInit();
}

}  // namespace

int runHelper(int argc, char** argv, Interference* interference) {
    if (argc != 4) return helperMisused;
    const std::optional<int> socket = numberOf(argv[1]);
    const std::optional<HelperKind> kind = helperKindOf(argv[2]);
    const std::optional<int> parent = numberOf(argv[3]);
    if (!socket || *socket < 3 || !kind || !parent) return helperMisused;
    if (!dieWithParent(*parent)) return helperDone;
    closeOthers(static_cast<unsigned>(*socket));

    setUpHeap();
    renounceHabits();
    startLibraries(*kind);
    Service service;
    service.limits = RequestLimits::ofThisProcess();
    service.interference = interference;
    const std::string refused = lockIn(*kind);

    if (!sendPacket(*socket, packetOf(ToProgram(Ready{protocolVersion, refused})), {}))
        return helperDone;
    switch (serve(*socket, std::move(service))) {
        case ServiceEnd::closed:
            return helperDone;
        case ServiceEnd::renewal:
            return helperRenews;
        case ServiceEnd::refused:
            break;
    }
    return helperRefuses;
}

}  // namespace tessarine
