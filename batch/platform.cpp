#include "batch/platform.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

#include "batch/texts.h"
#include "pixels/bit_filter.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

std::string homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == folderSeparator) return home;
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "/";
}

}  // namespace

bool Platform::folderExists(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

bool Platform::fileExists(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    return fs::exists(status) && !fs::is_directory(status);
}

std::string Platform::fileTypeName(const std::string& extension) {
    return upperCase(extension) + " File";
}

std::string Platform::programFolder() {
    std::string own = executableFolder();
    if (!own.empty() && access(own.c_str(), W_OK | X_OK) == 0) return own;
    return userConfigurationFolder();
}

uint32_t Platform::timeGetTime() { return systemClock(); }

std::string userConfigurationFolder() {
    const char* given = std::getenv("XDG_CONFIG_HOME");
    // A relative path in the variable stands for no place.
    const fs::path base = given != nullptr && *given == folderSeparator
                              ? fs::path(given)
                              : fs::path(homeFolder()) / ".config";
    const fs::path folder = base / "tessarine";
    std::error_code error;
    fs::create_directories(folder, error);
    return folder.string();
}

std::string executableFolder() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    return program.parent_path().string();
}

}  // namespace tessarine
