#include "runner/output_names.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

#include <fmt/format.h>

#include "batch/accepted_files.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

constexpr size_t longestFileName = 255;

[[noreturn]] void refuse(const std::string& why) { throw Refusal(ExitStatus::nothingStarts, why); }

/// The folder of an output below the destination, ending in a separator; empty for the destination.
std::string placeOf(const std::string& output, const std::string& destination) {
    const size_t name = output.find_last_of('/') + 1;
    if (!output.starts_with(destination) || name < destination.size() || name == output.size())
        refuse(
            fmt::format("the output '{}' is not below the destination '{}'; expected one that is",
                        output, destination));
    return output.substr(destination.size(), name - destination.size());
}

/// Calls with each folder on the way to a place, the outermost first.
void eachFolder(
    const std::string& place, const std::string& destination,
    const std::function<void(const std::string& folder, const std::string& name)>& call) {
    for (size_t start = 0, end; (end = place.find('/', start)) != std::string::npos;
         start = end + 1)
        call(destination + place.substr(0, end), place.substr(start, end - start));
}

bool liesIn(const fs::path& path, const fs::path& folder) {
    return std::mismatch(path.begin(), path.end(), folder.begin(), folder.end()).second ==
           folder.end();
}

void checkFolder(const std::string& folder, const fs::path& realDestination) {
    std::error_code failure;
    if (!fs::exists(fs::symlink_status(folder, failure))) return;
    const fs::path real = fs::canonical(folder, failure);
    if (failure || !fs::is_directory(real, failure))
        refuse(fmt::format("'{}' is no folder; expected one, or nothing, where outputs are to lie",
                           folder));
    if (!liesIn(real, realDestination))
        refuse(fmt::format("'{}' leads to '{}', out of the destination; expected a folder in it",
                           folder, real.native()));
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        refuse(fmt::format("the folder '{}' cannot be written to; expected one that can", folder));
}

}  // namespace

OutputNames::OutputNames(const cBatch& batch, const CommandLine& line,
                         std::vector<std::string> places)
    : batch_(batch),
      destination_(asFolder(batch.txtDestination)),
      extension_(batch.formatExtension()),
      keepNames_(line.keepNames),
      places_(std::move(places)) {
    for (const BasketItem& item : batch_.lvSelected) {
        if (!keepNames_) break;
        const std::string name = item.text + "." + extension_;
        if (name.size() > longestFileName)
            refuse(
                fmt::format("--keep-names: the name '{}' has more than {} bytes; expected "
                            "shorter names, or numbers",
                            name, longestFileName));
        if (Draft::isDraft(name))
            refuse(
                fmt::format("--keep-names: '{}' has a name as drafts of killed runs have; "
                            "expected another",
                            item.Tag));
    }
}

OutputNames::OutputNames(const cBatch& batch, std::vector<std::string> outputs)
    : batch_(batch), destination_(asFolder(batch.txtDestination)), told_(std::move(outputs)) {}

std::string OutputNames::of(size_t place) const {
    if (!told_.empty()) return told_[place];
    std::string folder = destination_;
    if (!places_.empty() && !places_[place].empty()) folder += asFolder(places_[place]);
    if (keepNames_) return folder + batch_.lvSelected[place].text + "." + extension_;
    return batch_.outputName(folder, static_cast<int32_t>(place + 1), extension_);
}

PictureTask OutputNames::taskOf(size_t place) const {
    return {static_cast<int32_t>(place + 1), inputOf(place), of(place)};
}

void checkFolders(const OutputNames& outputs) {
    const std::string& destination = outputs.destination();
    std::error_code failure;
    const fs::path real = fs::canonical(destination, failure);
    std::set<std::string> checked;
    for (size_t i = 0; i < outputs.count(); ++i) {
        const std::string output = outputs.of(i);
        const std::string place = placeOf(output, destination);
        if (place.empty() || checked.count(place) != 0) continue;
        eachFolder(place, destination, [&](const std::string& folder, const std::string& name) {
            if (name.empty() || name == "." || name == "..")
                refuse(
                    fmt::format("the output '{}' has no plain way from the destination to it; "
                                "expected names of folders",
                                output));
            if (checked.insert(folder.substr(destination.size()) + "/").second)
                checkFolder(folder, real);
        });
    }
}

void findCollisions(const OutputNames& outputs, RealNames& names, const FoundConflict& found) {
    if (outputs.areNumbers()) return;
    std::unordered_map<std::string, size_t> places;
    std::set<std::string> folders;
    for (size_t place = 0; place < outputs.count(); ++place) {
        const std::string output = outputs.of(place);
        fs::path folder = names.ofFolder(output);
        while (folders.insert(folder.native()).second)
            folder = folder.parent_path();
        const auto [first, isNew] = places.emplace(names.of(output), place);
        if (!isNew)
            found(place,
                  fmt::format("'{}' and '{}' would both be saved as '{}'; expected pictures "
                              "of different names",
                              outputs.inputOf(first->second), outputs.inputOf(place), output));
    }
    for (const std::string& folder : folders) {
        const auto output = places.find(folder);
        if (output != places.end())
            found(output->second,
                  fmt::format("'{}' would be saved as '{}', which is to be a folder "
                              "of other outputs; expected another name",
                              outputs.inputOf(output->second), folder));
    }
}

std::vector<std::string> foldersOf(const std::vector<PictureTask>& tasks,
                                   const std::string& destination) {
    std::set<std::string> folders{destination};
    for (const PictureTask& task : tasks) {
        const std::string place = placeOf(task.output, destination);
        if (folders.count(withoutSeparatorAtEnd(destination + place)) != 0) continue;
        eachFolder(place, destination,
                   [&](const std::string& folder, const std::string&) { folders.insert(folder); });
    }
    return {folders.begin(), folders.end()};
}

void makeFolders(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        if (::mkdir(folder.c_str(), 0777) == 0 || errno == EEXIST) continue;
        const int error = errno;
        struct stat status {};
        // The root, and folders that others keep, tell other errors than that they are there.
        if (::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) continue;
        refuse(
            fmt::format("the folder '{}' cannot be made: {}; expected a destination in which "
                        "folders can be made",
                        folder, std::strerror(error)));
    }
}

}  // namespace tessarine
