#include "runner/pictures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
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

void addFolder(const std::string& folder, const CommandLine& line, GivenBasket& basket) {
    if (line.shard)
        if (const auto identity = identityOf(folder)) basket.searched.insert(*identity);
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
        basket.pictures.push_back(basketItem(file));
    if (!line.recursive) return;
    std::sort(folders.begin(), folders.end());
    for (const std::string& below : folders)
        addFolder(below, line, basket);
}

void addPath(const std::string& path, const CommandLine& line, GivenBasket& basket) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored))
        addFolder(path, line, basket);
    else
        basket.pictures.push_back(basketItem(path));
}

void addLines(std::istream& lines, const CommandLine& line, GivenBasket& basket) {
    std::string path;
    while (std::getline(lines, path, line.nulBetweenPaths ? '\0' : '\n'))
        if (!path.empty()) addPath(path, line, basket);
}

void addPathsFrom(const std::string& file, const CommandLine& line, GivenBasket& basket) {
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

/// A path from the root, without "." and "..".
fs::path wholePath(const fs::path& path) {
    fs::path whole = fs::absolute(path).lexically_normal();
    // A separator at the end would count as one more part.
    return whole.has_filename() ? whole : whole.parent_path();
}

/// The deepest folder that holds the files of all pictures from `first` on.
fs::path commonFolder(const std::vector<BasketItem>& pictures, size_t first) {
    fs::path common = wholePath(pictures[first].Tag).parent_path();
    for (size_t i = first + 1; i < pictures.size(); ++i) {
        const fs::path folder = wholePath(pictures[i].Tag).parent_path();
        const auto end =
            std::mismatch(common.begin(), common.end(), folder.begin(), folder.end()).first;
        fs::path shared;
        for (auto part = common.begin(); part != end; ++part)
            shared /= *part;
        common = std::move(shared);
    }
    return common;
}

/// Where a folder lies below another; nothing where it does not.
std::optional<std::string> placeBelow(const fs::path& folder, const fs::path& above) {
    const auto [rest, end] =
        std::mismatch(folder.begin(), folder.end(), above.begin(), above.end());
    if (end != above.end()) return std::nullopt;
    fs::path place;
    for (auto part = rest; part != folder.end(); ++part)
        place /= *part;
    return place.native();
}

/// Adds the places of the pictures from `first` on, which one source of the command line gave.
void addPlaces(const GivenPictures& source, const std::string& below, size_t first,
               GivenBasket& basket) {
    const std::vector<BasketItem>& pictures = basket.pictures;
    if (first == pictures.size()) return;
    std::error_code ignored;
    fs::path above;
    if (!below.empty())
        above = wholePath(below);
    else if (source.kind != GivenPictures::Kind::path)
        above = commonFolder(pictures, first);
    else if (fs::is_directory(source.value, ignored))
        above = wholePath(source.value);
    for (size_t i = first; i < pictures.size(); ++i) {
        const fs::path folder = wholePath(pictures[i].Tag).parent_path();
        std::optional<std::string> place = "";
        if (!above.empty()) place = placeBelow(folder, above);
        // Two names of a folder, one of them by a link, may hide that one lies in the other.
        if (!place)
            place = placeBelow(fs::weakly_canonical(folder, ignored),
                               fs::weakly_canonical(above, ignored));
        if (!place)
            throw Refusal(ExitStatus::nothingStarts,
                          fmt::format("--below: '{}' does not lie below '{}'; expected a folder "
                                      "that holds all pictures",
                                      pictures[i].Tag, below));
        basket.places.push_back(std::move(*place));
    }
}

}  // namespace

BasketItem basketItem(const std::string& path) {
    const std::string extension = extensionOf(path);
    std::string name = fileNameOf(path);
    if (!extension.empty()) name.resize(name.size() - extension.size() - 1);
    return {name, lowerCase(extension), path, folderOf(path)};
}

GivenBasket collectPictures(const CommandLine& line) {
    GivenBasket basket;
    for (const GivenPictures& source : line.pictures) {
        const size_t first = basket.pictures.size();
        switch (source.kind) {
            case GivenPictures::Kind::path:
                addPath(source.value, line, basket);
                break;
            case GivenPictures::Kind::list:
                addList(source.value, basket.pictures);
                break;
            case GivenPictures::Kind::from:
                addPathsFrom(source.value, line, basket);
                break;
        }
        if (line.keepTree) addPlaces(source, line.below, first, basket);
    }
    return basket;
}

void refuseOutputsAmongSources(const GivenBasket& basket, const CommandLine& line) {
    if (basket.searched.empty()) return;
    std::set<std::string> places(basket.places.begin(), basket.places.end());
    if (places.empty()) places.insert(std::string());
    const fs::path destination = line.to;
    for (const std::string& place : places) {
        const fs::path named = place.empty() ? destination : destination / place;
        // A folder that is not there yet comes to be below another, which may be one that the next
        // share searches with all that is in it.
        fs::path folder = named;
        std::error_code ignored;
        while (line.recursive && folder != destination && !fs::exists(folder, ignored))
            folder = folder.parent_path();
        const auto identity = identityOf(folder.native());
        if (!identity || basket.searched.count(*identity) == 0) continue;
        throw Refusal(ExitStatus::nothingStarts,
                      fmt::format("--shard: the folder '{}' {} pictures of the run; expected "
                                  "another --to, or a list of the pictures",
                                  named.native(),
                                  place.empty() ? "is the destination and holds"
                                                : "is to hold outputs and is searched for"));
    }
}

}  // namespace tessarine
