#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace tessarine::tests {

/// The processes that a process has started and that are there still, dead ones that nobody took
/// note of included.
inline std::vector<pid_t> children(pid_t parent = ::getpid()) {
    std::vector<pid_t> found;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream file(entry.path() / "stat");
        std::string stat;
        std::getline(file, stat);
        // The name stands in brackets and may hold anything; state and parent follow it.
        const size_t bracket = stat.rfind(')');
        if (bracket == std::string::npos || bracket + 4 >= stat.size()) continue;
        if (std::atoi(stat.c_str() + bracket + 4) == parent) found.push_back(std::stoi(name));
    }
    return found;
}

}  // namespace tessarine::tests
