#include <cstdio>
#include <cstdlib>
#include <string>

#include "pixels/threads.h"

// Lets the environment say on how many threads a program's tests run the filters, and for which
// level of the processor these are to be built.

namespace tessarine::tests {
namespace {

/// What ctest takes for a test that was left out.
constexpr int skipped = 77;

struct Variant {
    Variant() {
        if (const char* threads = std::getenv("TESSARINE_TEST_THREADS")) {
            setFilterThreads(std::atoi(threads));
            // The tests' pictures are small: a few rows each must be several bands.
            setBandPixels(64);
        }
        const char* level = std::getenv("TESSARINE_TEST_LEVEL");
        if (level != nullptr && std::string(level) != processorLevel()) {
            std::printf("skipped: this processor takes the build for %s, not %s\n",
                        processorLevel(), level);
            std::exit(skipped);
        }
    }
} const variant;

}  // namespace
}  // namespace tessarine::tests
