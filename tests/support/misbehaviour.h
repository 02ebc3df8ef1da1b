#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "pixels/pixel_buffer.h"

// What `tessarine-codec-misbehaving` does on command. It is an ordinary helper but for this:
//
// - a picture file whose bytes are "tessarine-misbehave: WORD [ARGUMENT]" has it do what the word
//   says, in place of decoding, whatever its extension;
// - a picture to be written whose top left pixel is (1, 2, 3), blue first, has it do what the word
//   says whose number is the blue of the pixel to its right, in place of encoding.

namespace tessarine::tests {

/// Whether a helper is held to an amount of memory. Sanitizers reserve terabytes, so that in their
/// builds one that takes all it can is ended by the clock.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool helpersHaveMemoryLimits = false;
#else
constexpr bool helpersHaveMemoryLimits = true;
#endif

/// crash, abort, exit    ends by SIGSEGV, by SIGABRT, with status 7
/// hang, spin            never answers: asleep, or at work
/// allocate              fills memory until none is given, and answers what is true then
/// flood                 sends packets without end, and writes to its standard output and error
/// lie-number            answers another request
/// lie-size              answers another size than it asked a block for: one that does not fit it
/// lie-block             answers with a block that it was not given
/// lie-early             answers with a block before it asked for one
/// silent-close          closes its socket, and goes on living
/// leak                  loses 40 MiB of memory, and answers "unreadable"
constexpr std::array<std::string_view, 13> misbehaviours{
    "crash",    "abort",     "exit",       "hang",      "spin",         "allocate", "flood",
    "lie-size", "lie-block", "lie-number", "lie-early", "silent-close", "leak"};

/// Its bytes stand in a picture file.
inline std::string misbehavingFile(const std::string& words) {
    return "tessarine-misbehave: " + words;
}

/// A picture that has its writer misbehave.
inline PixelBuffer misbehavingPicture(std::string_view word, int32_t width = 16,
                                      int32_t height = 16) {
    PixelBuffer picture(width, height);
    const auto* const place = std::find(misbehaviours.begin(), misbehaviours.end(), word);
    Pixel* first = picture.writableBlock() + picture.offsetOfRow(0);
    first[0] = {1, 2, 3, 0};
    first[1].blue = static_cast<uint8_t>(place - misbehaviours.begin());
    return picture;
}

// Words that try what a helper must not be able to do. It answers "unreadable" with a message:
// "done" where it could, else the name of the error.
//
// probe-open PATH, probe-open-write PATH, probe-unlink PATH
// probe-socket, probe-exec, probe-ptrace, probe-kill (its parent), probe-fork, probe-thread
// probe-setrlimit       raising the hard limit of its own memory
// probe-limit-parent    giving its parent a limit
// probe-code            memory that holds code
// probe-descriptors     how many descriptors are open
// probe-fresh-memory    how many bytes of newly allocated memory are not 0
// probe-output          how many of its three standard streams lead elsewhere than nowhere

}  // namespace tessarine::tests
