#include "pixels/machine.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <limits>
#include <optional>
#include <sched.h>
#include <string_view>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tessarine {

namespace {

constexpr uint64_t unlimited = std::numeric_limits<uint64_t>::max();

/// The number at the beginning of a file of the kernel's; nothing where it has none, or "max".
std::optional<int64_t> numberIn(const std::string& path) {
    int64_t number = 0;
    std::ifstream file(path);
    if (!(file >> number)) return std::nullopt;
    return number;
}

/// The number behind a word in a file of lines such as "inactive_file 4096".
uint64_t numberBehind(const std::string& path, std::string_view word) {
    std::ifstream file(path);
    std::string found;
    for (uint64_t number = 0; file >> found;) {
        if (found != word) {
            file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
            continue;
        }
        return file >> number ? number : 0;
    }
    return 0;
}

/// Whether a list such as "cpu,cpuacct" holds a word.
bool holds(const std::string& list, std::string_view word) {
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find(',', at), list.size());
        if (std::string_view(list).substr(at, end - at) == word) return true;
        at = end + 1;
    }
    return false;
}

enum class Version { first, second };

/// Visits the folders of the control groups that this process is in, those around them included,
/// for a controller ("cpu", "memory").
void visitGroups(const std::string& root, std::string_view controller,
                 const std::function<void(const std::string& folder, Version version)>& visit) {
    std::ifstream groups(root + "/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        // "4:cpu,cpuacct:/some/group", and "0::/some/group" for the second version.
        const size_t first = line.find(':');
        const size_t second = first == std::string::npos ? first : line.find(':', first + 1);
        if (second == std::string::npos) continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        if (!controllers.empty() && !holds(controllers, controller)) continue;
        const Version version = controllers.empty() ? Version::second : Version::first;
        std::vector<std::string> tops{root + "/sys/fs/cgroup"};
        if (version == Version::first)
            tops = {root + "/sys/fs/cgroup/" + controllers,
                    root + "/sys/fs/cgroup/" + std::string(controller)};
        tops.erase(std::unique(tops.begin(), tops.end()), tops.end());
        for (const std::string& top : tops) {
            std::string group = line.substr(second + 1);
            while (group.ends_with('/'))
                group.pop_back();
            for (;;) {
                visit(top + group, version);
                const size_t cut = group.rfind('/');
                if (cut == std::string::npos) break;
                group.resize(cut);
            }
        }
    }
}

/// Processors' worth of time that a group may use; nothing where that is not limited.
std::optional<int64_t> quotaOf(const std::string& folder, Version version) {
    std::optional<int64_t> quota;
    std::optional<int64_t> period;
    if (version == Version::second) {
        // "150000 100000", or "max 100000".
        std::ifstream file(folder + "/cpu.max");
        int64_t first = 0;
        int64_t second = 0;
        if (file >> first >> second) {
            quota = first;
            period = second;
        }
    } else {
        quota = numberIn(folder + "/cpu.cfs_quota_us");
        period = numberIn(folder + "/cpu.cfs_period_us");
    }
    if (!quota || !period || *quota <= 0 || *period <= 0) return std::nullopt;
    return (*quota - 1) / *period + 1;
}

/// What a group may use of memory, and what it holds that cannot be dropped.
struct GroupMemory {
    uint64_t most = unlimited;
    uint64_t held = 0;
};

GroupMemory memoryOf(const std::string& folder, Version version) {
    const bool isSecond = version == Version::second;
    GroupMemory memory;
    const auto most = numberIn(folder + (isSecond ? "/memory.max" : "/memory.limit_in_bytes"));
    if (most && *most >= 0) memory.most = static_cast<uint64_t>(*most);
    const auto used = numberIn(folder + (isSecond ? "/memory.current" : "/memory.usage_in_bytes"));
    const uint64_t held = used && *used > 0 ? static_cast<uint64_t>(*used) : 0;
    const uint64_t files =
        numberBehind(folder + "/memory.stat", isSecond ? "inactive_file" : "total_inactive_file");
    memory.held = held - std::min(held, files);
    return memory;
}

int processorsToRunOn() {
    // The kernel refuses a set that is smaller than its own.
    for (int most = 1024; most <= 1 << 16; most *= 2) {
        cpu_set_t* const set = CPU_ALLOC(static_cast<size_t>(most));
        if (set == nullptr) break;
        const size_t bytes = CPU_ALLOC_SIZE(static_cast<size_t>(most));
        const int count = ::sched_getaffinity(0, bytes, set) == 0 ? CPU_COUNT_S(bytes, set) : 0;
        CPU_FREE(set);
        if (count > 0) return count;
    }
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

uint64_t machineMemory() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageBytes = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageBytes <= 0) return uint64_t{2} << 30;
    return static_cast<uint64_t>(pages) * static_cast<uint64_t>(pageBytes);
}

}  // namespace

int availableCores(const std::string& root) {
    int64_t cores = processorsToRunOn();
    visitGroups(root, "cpu", [&](const std::string& folder, Version version) {
        cores = std::min(cores, quotaOf(folder, version).value_or(cores));
    });
    return static_cast<int>(cores);
}

uint64_t availableMemory(const std::string& root) {
    const uint64_t kibibytes = numberBehind(root + "/proc/meminfo", "MemAvailable:");
    uint64_t bytes = kibibytes > 0 ? kibibytes * 1024 : machineMemory() / 2;
    visitGroups(root, "memory", [&](const std::string& folder, Version version) {
        const GroupMemory memory = memoryOf(folder, version);
        bytes = std::min(bytes, memory.most - std::min(memory.most, memory.held));
    });
    return bytes;
}

void allowManyFiles() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    static_cast<void>(::setrlimit(RLIMIT_NOFILE, &limit));
}

uint64_t wholeMemory(const std::string& root) {
    uint64_t bytes = machineMemory();
    visitGroups(root, "memory", [&](const std::string& folder, Version version) {
        bytes = std::min(bytes, memoryOf(folder, version).most);
    });
    return bytes;
}

}  // namespace tessarine
