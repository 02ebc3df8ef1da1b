#include "batch/accepted_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "batch/platform.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 39> extensions{
    "bmp", "jpg", "jpeg", "cut",  "lbm",  "pcd", "pic", "png", "ppm", "pbm", "pgm", "sgi", "tga",
    "vst", "vda", "icb",  "tif",  "tiff", "lif", "mng", "jng", "dcx", "psd", "pdd", "psp", "pix",
    "pxr", "xpm", "rgb",  "rgba", "bw",   "gif", "wmf", "emf", "dib", "koa", "ras", "iff", "pcx"};

}  // namespace

std::span<const std::string_view> acceptedExtensions() { return extensions; }

bool isAcceptedPicture(std::string_view path) {
    const std::string extension = lowerCase(extensionOf(path));
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

std::vector<std::string> fileNamesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        std::error_code ignored;
        if (!at->is_regular_file(ignored)) continue;
        std::string name = at->path().filename().native();
        if (!Draft::isDraft(name)) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string joined(const std::string& folder, const std::string& name) {
    // Only the root's path ends in a separator of its own.
    return folder.size() == 1 ? folder + name : folder + folderSeparator + name;
}

std::string withoutSeparatorAtEnd(std::string path) {
    while (path.size() > 1 && path.ends_with(folderSeparator))
        path.pop_back();
    return path;
}

}  // namespace tessarine
