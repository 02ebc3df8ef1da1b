#include "runner/pictures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <fmt/format.h>

#include "batch/accepted_files.h"
#include "batch/list_files.h"
#include "batch/texts.h"
#include "imagefiles/disk.h"
#include "runner/refusal.h"

namespace tessarine {

namespace {

namespace fs = std::filesystem;

BasketItem basketItem(const std::string& path) {
    const std::string extension = extensionOf(path);
    std::string name = fileNameOf(path);
    if (!extension.empty()) name.resize(name.size() - extension.size() - 1);
    return {name, lowerCase(extension), path, folderOf(path)};
}

/// Refuses a share of a folder that the shares save into: each would find others' outputs in it
/// among the pictures, and all numbers behind them would be others.
void refuseDestinationOfShards(const std::string& folder, const CommandLine& line) {
    std::error_code ignored;
    if (line.shard && fs::equivalent(folder, line.to, ignored))
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--shard: the folder '{}' is the destination and holds pictures "
                                  "of the run; expected another --to, or a list of the pictures",
                                  folder));
}

void addFolder(const std::string& folder, const CommandLine& line,
               std::vector<BasketItem>& basket) {
    refuseDestinationOfShards(folder, line);
    std::vector<std::string> files;
    std::vector<std::string> folders;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        std::error_code ignored;
        if (at->is_directory(ignored)) {
            if (!at->is_symlink(ignored)) folders.push_back(at->path().native());
        } else if (at->is_regular_file(ignored) && isAcceptedPicture(at->path().native()) &&
                   !Draft::isDraft(at->path().filename().native())) {
            files.push_back(at->path().native());
        }
    }
    if (failure)
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("the folder '{}' cannot be read: {}", folder, failure.message()));
    std::sort(files.begin(), files.end());
    for (const std::string& file : files)
        basket.push_back(basketItem(file));
    if (!line.recursive) return;
    std::sort(folders.begin(), folders.end());
    for (const std::string& below : folders)
        addFolder(below, line, basket);
}

void addPath(const std::string& path, const CommandLine& line, std::vector<BasketItem>& basket) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored))
        addFolder(path, line, basket);
    else
        basket.push_back(basketItem(path));
}

void addLines(std::istream& lines, const CommandLine& line, std::vector<BasketItem>& basket) {
    std::string path;
    while (std::getline(lines, path, line.nulBetweenPaths ? '\0' : '\n'))
        if (!path.empty()) addPath(path, line, basket);
}

void addPathsFrom(const std::string& file, const CommandLine& line,
                  std::vector<BasketItem>& basket) {
    if (file == "-") return addLines(std::cin, line, basket);
    std::ifstream lines(file, std::ios::binary);
    if (!lines || fs::is_directory(file))
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--from: '{}' cannot be read; expected a file with one path a "
                                  "line",
                                  file));
    addLines(lines, line, basket);
}

void addList(const std::string& file, std::vector<BasketItem>& basket) {
    const auto refuse = [&](const std::string& why) {
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--pictures: '{}' is no picture list: {}", file, why));
    };
    const std::string unreadable = whyNotReadable(file);
    if (!unreadable.empty()) refuse(unreadable);
    std::vector<std::string> paths;
    try {
        paths = readPictureList(file);
    } catch (const std::system_error& failure) {
        refuse(failure.code().message());
    }
    const auto isEmpty = [](const std::string& path) { return path.empty(); };
    if (fs::file_size(file) % pictureRecordBytes != 0 ||
        std::any_of(paths.begin(), paths.end(), isEmpty))
        refuse(fmt::format("expected a path in each {} bytes", pictureRecordBytes));
    for (const std::string& path : paths)
        basket.push_back(basketItem(path));
}

}  // namespace

std::vector<BasketItem> collectPictures(const CommandLine& line) {
    std::vector<BasketItem> basket;
    for (const GivenPictures& source : line.pictures) {
        switch (source.kind) {
            case GivenPictures::Kind::path:
                addPath(source.value, line, basket);
                break;
            case GivenPictures::Kind::list:
                addList(source.value, basket);
                break;
            case GivenPictures::Kind::from:
                addPathsFrom(source.value, line, basket);
                break;
        }
    }
    return basket;
}

}  // namespace tessarine
