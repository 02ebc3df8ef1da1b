#include "runner/content_hash.h"

#include <cerrno>
#include <cstddef>
#include <memory>
#include <unistd.h>
#include <vector>
#include <xxhash.h>

#include <fmt/format.h>

#include "imagefiles/codec/channel.h"
#include "imagefiles/picture_source.h"
#include "pixels/failures.h"

namespace tessarine {

namespace {

std::string inDigits(const XXH128_hash_t& hash) {
    return fmt::format("{:016x}{:016x}", hash.high64, hash.low64);
}

std::string hashOf(int file) {
    const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(),
                                                                         &XXH3_freeState);
    if (!state || XXH3_128bits_reset(state.get()) == XXH_ERROR)
        throw StatementFailed("there is no memory for a hash");
    constexpr size_t atATime = size_t{1} << 18;
    std::vector<char> bytes(atATime);
    for (off_t at = 0;;) {
        const ssize_t got = ::pread(file, bytes.data(), bytes.size(), at);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw StatementFailed("the file cannot be read to its end");
        if (got == 0) return inDigits(XXH3_128bits_digest(state.get()));
        XXH3_128bits_update(state.get(), bytes.data(), static_cast<size_t>(got));
        at += got;
    }
}

}  // namespace

std::string hashOfText(std::string_view bytes) {
    return inDigits(XXH3_128bits(bytes.data(), bytes.size()));
}

std::optional<std::string> hashOfFile(const std::string& path) {
    std::optional<std::string> hash;
    attempt([&] { hash = hashOf(Descriptor(openPictureFile(path)).get()); });
    return hash;
}

}  // namespace tessarine
