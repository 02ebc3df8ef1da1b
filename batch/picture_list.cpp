#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <system_error>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "batch/texts.h"
#include "pixels/byte_files.h"

namespace tessarine {

namespace {

constexpr const char* pictureListFilter = "Picture List(*.qpkl)|*.qpkl";

BasketItem itemOf(const std::string& path) {
    const std::string extension = lowerCase(extensionOf(path));
    const std::string file = fileNameOf(path);
    BasketItem item;
    // The point is taken off with the extension, and so is the last character of a name that has
    // neither.
    item.text = file.substr(0, file.size() - extension.size() - 1);
    item.smallIcon = extension;
    item.Tag = path;
    item.column1 = folderOf(path);
    return item;
}

}  // namespace

void cBatch::SaveList() {
    if (lvSelected.empty()) return;
    const std::optional<std::string> path = platform_.saveDialog(pictureListFilter);
    if (!path) return;
    std::vector<std::string> pictures;
    for (const BasketItem& item : lvSelected)
        pictures.push_back(item.Tag);
    attemptOnFile([&] { writePictureList(*path, pictures); });
}

void cBatch::KeepFailures() {
    if (failedPictures.empty()) return;
    std::optional<std::string> path = platform_.saveDialog(pictureListFilter);
    if (!path) return;
    const auto tell = [this](const std::string& what, Icon icon) {
        platform_.messageBox(what, icon);
    };
    if (lowerCase(extensionOf(*path)) != "qpkl") {
        // A list is known by its extension alone. The dialog has asked about the name as it was.
        *path += ".qpkl";
        if (platform_.fileExists(*path))
            return tell("There is a file '" + onOneLine(*path) +
                            "' already. Please choose another name for the list.",
                        Icon::exclamation);
    }
    std::vector<std::string> pictures;
    std::copy_if(failedPictures.begin(), failedPictures.end(), std::back_inserter(pictures),
                 fitsPictureList);
    const size_t unfit = failedPictures.size() - pictures.size();
    try {
        writePictureList(*path, pictures);
        // What a longer list leaves behind did not fail.
        const size_t bytes = pictures.size() * pictureRecordBytes;
        if (std::filesystem::file_size(*path) > bytes) std::filesystem::resize_file(*path, bytes);
    } catch (const std::system_error& failure) {
        return tell(
            "The list '" + onOneLine(*path) + "' could not be written: " + failure.code().message(),
            Icon::critical);
    }
    if (unfit > 0)
        tell(std::to_string(unfit) + " of the " + std::to_string(failedPictures.size()) +
                 " paths are not in the list: a picture list holds paths of at most " +
                 std::to_string(pictureRecordBytes) + " characters.",
             Icon::exclamation);
}

void LoadList(Platform& dialog, std::vector<BasketItem>& list) {
    const std::optional<std::string> path = dialog.openDialog(pictureListFilter);
    if (path) OpenPictureList(dialog, *path, list);
}

void OpenPictureList(Platform& dialog, const std::string& path, std::vector<BasketItem>& list) {
    if (lowerCase(extensionOf(path)) != "qpkl") {
        dialog.messageBox("This is  not a valid picture List!", Icon::critical,
                          "INVALID PICTURE LIST");
        return;
    }
    std::vector<std::string> pictures;
    int16_t count = 0;
    attemptOnFile([&] {
        pictures = readPictureList(path);
        count = toInteger16(static_cast<double>(pictures.size()));
    });
    list.clear();
    int32_t missing = 0;
    for (int32_t i = 0; i < count; ++i) {
        const std::string& picture = pictures[static_cast<size_t>(i)];
        if (dialog.fileExists(picture)) {
            list.push_back(itemOf(picture));
        } else {
            ++missing;
        }
    }
    dialog.changed("lvSelected");
    if (missing > 0) {
        dialog.messageBox(
            std::to_string(missing) +
                " files in this picture List are no longer valid! They will be not listed.",
            Icon::critical, "INVALID FILE ASSOCIATIONS!");
    }
}

}  // namespace tessarine
