#include "runner/real_names.h"

#include <filesystem>

#include "batch/accepted_files.h"
#include "batch/texts.h"

namespace tessarine {

std::string RealNames::ofFolder(const std::string& path) {
    namespace fs = std::filesystem;
    const size_t name = path.find_last_of('/') + 1;
    const std::string folder = name == 0 ? "." : path.substr(0, name);
    const auto known = folders_.find(folder);
    if (known != folders_.end()) return known->second;
    std::error_code failure;
    fs::path real = fs::weakly_canonical(folder, failure);
    if (failure) real = fs::absolute(folder, failure).lexically_normal();
    // Where nothing of it is there, the beginning may still hang on the current folder.
    real = fs::absolute(real, failure);
    return folders_.emplace(folder, withoutSeparatorAtEnd(real.native())).first->second;
}

std::string RealNames::of(const std::string& path) {
    return joined(ofFolder(path), fileNameOf(path));
}

}  // namespace tessarine
