#include "imagefiles/worker/folder_rules.h"

#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#include "imagefiles/codec/channel.h"

namespace tessarine {

namespace {

constexpr uint64_t readFile = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr uint64_t readFolder = LANDLOCK_ACCESS_FS_READ_DIR;

/// All rights that a kernel of this version can take away. The later bits are missing in the
/// headers of kernels that are older than the one that runs.
uint64_t rightsKnownTo(long version) {
    constexpr uint64_t first = (uint64_t{1} << 13) - 1;
    constexpr uint64_t refer = uint64_t{1} << 13;
    constexpr uint64_t truncate = uint64_t{1} << 14;
    constexpr uint64_t devices = uint64_t{1} << 15;
    uint64_t rights = first;
    if (version >= 2) rights |= refer;
    if (version >= 3) rights |= truncate;
    if (version >= 5) rights |= devices;
    return rights;
}

std::vector<std::string> readableFolders() {
    std::vector<std::string> folders{
        "/usr", "/lib", "/lib64", "/etc/fonts", "/etc/ld.so.cache", "/var/cache/fontconfig"};
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/')
        for (const char* place : {"/.fonts", "/.local/share/fonts", "/.config/fontconfig",
                                  "/.cache/fontconfig", "/.fontconfig"})
            folders.push_back(std::string(home) + place);
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') folders.push_back(std::string(data) + "/fonts");
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
        const char* folder = std::getenv(name);
        if (folder != nullptr && *folder == '/')
            folders.push_back(std::string(folder) + "/fontconfig");
    }
    return folders;
}

/// What is missing cannot be read anyway.
void allowReading(int rules, const std::string& path) {
    const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status {};
    if (!place || fstat(place.get(), &status) != 0) return;
    landlock_path_beneath_attr rule{};
    rule.allowed_access = S_ISDIR(status.st_mode) ? readFile | readFolder : readFile;
    rule.parent_fd = place.get();
    syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
}

}  // namespace

bool confineToFolders(HelperKind kind) {
    const long version =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) return false;
    landlock_ruleset_attr rights{};
    rights.handled_access_fs = rightsKnownTo(version);
    const Descriptor rules(static_cast<int>(
        syscall(SYS_landlock_create_ruleset, &rights, sizeof rights.handled_access_fs, 0)));
    if (!rules) return false;
    if (kind == HelperKind::drawing)
        for (const std::string& folder : readableFolders())
            allowReading(rules.get(), folder);
    return syscall(SYS_landlock_restrict_self, rules.get(), 0) == 0;
}

}  // namespace tessarine
