#include "imagefiles/codec/limits.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>
#include <unistd.h>

namespace tessarine {

namespace {

constexpr uint64_t mebi = uint64_t{1} << 20;
constexpr uint64_t gibi = uint64_t{1} << 30;

/// The number in a file of the kernel's; the largest there is where it tells none.
uint64_t numberIn(const std::string& path) {
    uint64_t number = 0;
    std::ifstream file(path);
    return file >> number ? number : std::numeric_limits<uint64_t>::max();
}

/// What this process's control group, and those around it, may use.
uint64_t groupMemory() {
    uint64_t most = std::numeric_limits<uint64_t>::max();
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        if (line.rfind("0::/", 0) != 0) continue;
        std::string group = line.substr(3);
        for (;;) {
            most = std::min(most, numberIn("/sys/fs/cgroup" + group + "/memory.max"));
            const size_t cut = group.rfind('/');
            if (cut == std::string::npos) break;
            group.resize(cut);
        }
    }
    return most;
}

uint64_t machineMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageBytes <= 0) return 2 * gibi;
    return static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageBytes);
}

}  // namespace

Limits limitsFor(uint64_t pixels, const LimitWishes& wishes) {
    constexpr uint64_t mostPixels = uint64_t{1} << 40;
    pixels = std::min(pixels, mostPixels);
    Limits limits;
    limits.seconds = wishes.seconds.value_or(10 + static_cast<double>(pixels) / 1e6);
    limits.memoryBytes = std::min(512 * mebi + 64 * pixels, memoryCeiling(wishes));
    return limits;
}

uint64_t memoryCeiling(const LimitWishes& wishes) {
    if (wishes.memoryBytes) return *wishes.memoryBytes;
    static const uint64_t ours =
        std::clamp(std::min(machineMemory(), groupMemory()) / 2, gibi, 8 * gibi);
    return ours;
}

}  // namespace tessarine
